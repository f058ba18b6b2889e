#pragma once

#include "byte_sink.h"
#include "geometry_error.h"
#include "point_cloud.h"

#include <string_view>

namespace trovek::geometry {

/** Lines of three numbers, or of six with a normal; blank ones and those with "#" before them are
 * left out. As readPointCloud(). */
PointCloud readXyz(std::string_view bytes, const Progress& progress);

/** Without colors. */
void writeXyz(const PointCloud& cloud, const ByteSink& sink, const Progress& progress);

} // namespace trovek::geometry
