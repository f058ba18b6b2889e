#pragma once

#include "scanner/calibration_board.h"
#include "scanner/camera_model.h"

#include <array>
#include <optional>
#include <vector>

namespace trovek::service {

struct Picture;

/** Where the middles of the board's dots are seen, row by row from the lower left one. */
using BoardDots = std::array<PixelPoint, board::kDots>;

constexpr std::size_t dotIndex(int column, int row)
{
    return static_cast<std::size_t>(row * board::kColumns + column);
}

/** Nothing unless every dot is seen. */
std::optional<BoardDots> findDots(const Picture& picture);

/**
 * Where a laser line crosses the rows of a picture, at most once each, and on plain paper only.
 * @param without the same scene with the laser off
 */
std::vector<PixelPoint> findLaserLine(const Picture& with, const Picture& without);

} // namespace trovek::service
