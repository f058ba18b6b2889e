#pragma once

#include "mesh.h"

#include <cstdint>
#include <vector>

namespace trovek::geometry {

/**
 * Appends the triangles of a face to a mesh. Corners that follow themselves count once; a face with
 * fewer than three corners has no triangles.
 * @param corners numbers of the mesh's vertices, in order around the face
 */
void appendFace(Mesh& mesh, std::vector<std::uint32_t> corners);

} // namespace trovek::geometry
