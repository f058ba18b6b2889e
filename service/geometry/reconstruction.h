#pragma once

#include "geometry_error.h"

namespace trovek::geometry {

struct Mesh;
struct PointCloud;

/**
 * The closed surface that the points were taken from; where they leave a part open it is closed
 * smoothly. Normals of the cloud are used; those of a cloud without any are estimated. A cloud with
 * very many points, or dense along lines, is thinned first. The same cloud gives the same mesh, but
 * for rounding.
 * @throws EmptyError, Canceled
 * @throws GeometryError when there are too few points, they lie in one plane, or no closed surface
 * is found
 */
Mesh reconstructed(const PointCloud& cloud, const Progress& progress = {});

} // namespace trovek::geometry
