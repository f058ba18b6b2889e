#pragma once

#include "byte_sink.h"
#include "geometry_error.h"
#include "mesh.h"

#include <string_view>

namespace trovek::geometry {

/** Binary or text. As readMesh(). */
Mesh readStl(std::string_view bytes, const Progress& progress);

void writeStl(const Mesh& mesh, const ByteSink& sink, const Progress& progress);
void writeStlAsText(const Mesh& mesh, const ByteSink& sink, const Progress& progress);

} // namespace trovek::geometry
