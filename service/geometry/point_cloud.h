#pragma once

#include "rigid_transform.h"
#include "vector.h"

#include <array>
#include <cstdint>
#include <vector>

namespace trovek::geometry {

/** Red, green, blue. */
using Color = std::array<std::uint8_t, 3>;

/** Points of a surface, in no order. */
struct PointCloud
{
    std::vector<Vector> positions;
    /** Unit directions out of the surface, one for each position; or none at all. */
    std::vector<Vector> normals;
    /** One for each position, or none at all. */
    std::vector<Color> colors;
};

PointCloud transformed(const PointCloud& cloud, const RigidTransform& transform);

/** Both clouds' points; keeps normals and colors only where both have them. */
PointCloud joined(const PointCloud& first, const PointCloud& second);

/** @throws EmptyError */
Box boundingBox(const PointCloud& cloud);

} // namespace trovek::geometry
