#pragma once

#include "byte_sink.h"
#include "geometry_error.h"
#include "mesh.h"
#include "point_cloud.h"

#include <string_view>

namespace trovek::geometry {

/** The points of a PLY file, whatever else is in it. As readPointCloud(). */
PointCloud readPlyPoints(std::string_view bytes, const Progress& progress);
/** Its points and faces. As readMesh(). */
Mesh readPlyMesh(std::string_view bytes, const Progress& progress);

void writePlyPoints(const PointCloud& cloud, const ByteSink& sink, const Progress& progress);
void writePlyPointsAsText(const PointCloud& cloud, const ByteSink& sink, const Progress& progress);
void writePlyMesh(const Mesh& mesh, const ByteSink& sink, const Progress& progress);

} // namespace trovek::geometry
