#include "scanner/calibration_board.h"

#include <algorithm>
#include <cmath>

namespace trovek::service::board {

std::optional<double> brightness(double x, double y)
{
    constexpr double kWhite = 0.9;
    constexpr double kBlack = 0.06;
    if (x < -kMargin || x > kWidth + kMargin || y < -kMargin || y > kHeight + kMargin)
        return std::nullopt;
    const int column = std::clamp(static_cast<int>(std::lround(x / kSpacing)), 0, kColumns - 1);
    const int row = std::clamp(static_cast<int>(std::lround(y / kSpacing)), 0, kRows - 1);
    const double distance = std::hypot(x - column * kSpacing, y - row * kSpacing);
    return distance <= radius(column, row) ? kBlack : kWhite;
}

} // namespace trovek::service::board
