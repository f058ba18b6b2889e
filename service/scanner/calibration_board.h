#pragma once

#include "geometry/vector.h"

#include <optional>

namespace trovek::service {

/**
 * What the scanner is calibrated with: a white board with rows of black dots. Three larger ones
 * tell which way round it is.
 *
 * In its own coordinates x points to the right, y up and z out of its front; the origin is the
 * middle of the lower left dot. Its lower edge stands on the platform.
 */
namespace board {

constexpr int kColumns = 9;
constexpr int kRows = 7;
constexpr int kDots = kColumns * kRows;
/** Millimetres, as all that follows. */
constexpr double kSpacing = 10;
constexpr double kRadius = 2.5;
constexpr double kLargeRadius = 3.8;
constexpr double kMargin = 8;
constexpr double kWidth = (kColumns - 1) * kSpacing;
constexpr double kHeight = (kRows - 1) * kSpacing;

struct Place
{
    int column;
    int row;
};
/** The corner of an L; its long arm ends three dots to the right, the short one a dot above. */
constexpr Place kCorner{3, 3};
constexpr Place kRight{6, 3};
constexpr Place kAbove{3, 4};

constexpr bool isLarge(int column, int row)
{
    for (const Place place : {kCorner, kRight, kAbove}) {
        if (place.column == column && place.row == row)
            return true;
    }
    return false;
}

constexpr double radius(int column, int row)
{
    return isLarge(column, row) ? kLargeRadius : kRadius;
}

inline geometry::Vector middle(int column, int row)
{
    return {column * kSpacing, row * kSpacing, 0};
}

/** The part of the light that comes back from there; nothing beside the board. */
std::optional<double> brightness(double x, double y);

} // namespace board

} // namespace trovek::service
