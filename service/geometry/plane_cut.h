#pragma once

#include "geometry_error.h"
#include "vector.h"

namespace trovek::geometry {

struct Mesh;

/**
 * What of a closed mesh lies behind a plane, closed along the cut. A plane that misses the mesh, or
 * only touches it, and has all of it behind it leaves it as it is.
 * @param normal any length but zero; what it points to is dropped
 * @throws EmptyError when the mesh has no triangles, or would have none left
 * @throws GeometryError when the mesh is not closed or intersects itself, or the plane is not
 * finite or without a direction
 * @throws Canceled
 */
Mesh cutByPlane(const Mesh& mesh, const Vector& point, const Vector& normal,
                const Progress& progress = {});

} // namespace trovek::geometry
