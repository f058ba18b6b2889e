#pragma once

#include "geometry_error.h"
#include "rigid_transform.h"

#include <vector>

namespace trovek::geometry {

struct PointCloud;

struct Alignment
{
    /** Takes the moved one to the target. */
    RigidTransform transform;
    /** What is left between them: the root of the mean square, millimetres. */
    double error = 0;
};

/**
 * The best move of points onto as many others, the first onto the first and so on. The error is
 * that of the distances of the pairs.
 * @throws GeometryError when there are fewer than three pairs, as many points as targets are not
 * given, either lie on one line, or a number is not finite
 */
Alignment alignPairs(const std::vector<Vector>& points, const std::vector<Vector>& targets);

/**
 * Moves a cloud onto another that it nearly fits; they need to overlap only in part. The error is
 * that of the distances of the overlapping points from the target's surface.
 * @throws EmptyError, Canceled
 * @throws GeometryError when a cloud has too few points, they do not overlap, or no fit is found
 */
Alignment alignClouds(const PointCloud& cloud, const PointCloud& target,
                      const Progress& progress = {});

} // namespace trovek::geometry
