#pragma once

#include "byte_sink.h"
#include "geometry_error.h"
#include "mesh.h"

#include <string_view>

namespace trovek::geometry {

/** Vertices and faces; materials, textures, lines and curves are left out. As readMesh(). */
Mesh readObj(std::string_view bytes, const Progress& progress);

void writeObj(const Mesh& mesh, const ByteSink& sink, const Progress& progress);

} // namespace trovek::geometry
