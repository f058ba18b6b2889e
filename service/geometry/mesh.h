#pragma once

#include "rigid_transform.h"
#include "vector.h"

#include <array>
#include <cstdint>
#include <vector>

namespace trovek::geometry {

/** Triangles over shared vertices, counter-clockwise as seen from outside. */
struct Mesh
{
    std::vector<Vector> vertices;
    /** Indices of vertices. */
    std::vector<std::array<std::uint32_t, 3>> triangles;
};

Mesh transformed(const Mesh& mesh, const RigidTransform& transform);

/** Of its vertices. @throws EmptyError */
Box boundingBox(const Mesh& mesh);

/**
 * Whether the triangles enclose a volume: each edge belongs to two triangles that run along it in
 * opposite directions. A mesh without triangles is not closed.
 */
bool isClosed(const Mesh& mesh);

/** Cubic millimetres; of a closed mesh. Negative when the mesh is inside out. */
double volume(const Mesh& mesh);

/** Square millimetres. */
double area(const Mesh& mesh);

} // namespace trovek::geometry
