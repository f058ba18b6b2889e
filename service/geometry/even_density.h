#pragma once

#include "point_cloud.h"

namespace trovek::geometry {

class ProgressPart;

/**
 * Thins a cloud until the neighbours of its points lie all around them and hang together.
 *
 * A scan is dense along its lines and sparse between them: the nearest neighbours of a point would
 * all be of its own line, which tells nothing of the surface's direction. A cloud that cannot be
 * made even, such as one of a wire, only has equal points made one and is brought down to the most
 * points.
 * @param neighbors of a point, that its surroundings are told by
 * @param most about how many points may be left
 */
PointCloud evenlyThinned(const PointCloud& cloud, unsigned neighbors, std::size_t most,
                         const ProgressPart& progress);

} // namespace trovek::geometry
