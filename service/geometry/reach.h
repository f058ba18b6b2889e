#pragma once

#include "vector.h"

namespace trovek::geometry {

/** Far beyond any machine: what lies farther out is no part, and squares of it are no numbers. */
constexpr double kFarthestCoordinate = 1e9;

/** Whether its coordinates are numbers up to kFarthestCoordinate. */
inline bool isWithinReach(const Vector& point)
{
    const auto isNear = [](double coordinate) {
        return std::abs(coordinate) <= kFarthestCoordinate;
    };
    return isNear(point.x) && isNear(point.y) && isNear(point.z);
}

} // namespace trovek::geometry
