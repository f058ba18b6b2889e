#pragma once

#include "geometry_error.h"
#include "point_cloud.h"

namespace trovek::geometry {

/**
 * The points in the box and on its sides.
 * @throws EmptyError when the cloud has no points, or would have none left
 * @throws GeometryError when the box has a minimum above its maximum, or a corner is not finite
 */
PointCloud cropped(const PointCloud& cloud, const Box& box);

/**
 * Without the points that lie much farther from their neighbours than the others do. A cloud of a
 * few points comes back as it is.
 * @throws EmptyError, Canceled
 */
PointCloud withoutOutliers(const PointCloud& cloud, const Progress& progress = {});

/**
 * No two points are closer than the grid size, and none was dropped that has no other as close.
 * @param gridSize millimetres, above zero
 * @throws EmptyError, Canceled
 * @throws GeometryError when the grid size is not a number above zero
 */
PointCloud thinned(const PointCloud& cloud, double gridSize, const Progress& progress = {});

} // namespace trovek::geometry
