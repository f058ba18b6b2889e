#pragma once

#include "geometry/rigid_transform.h"
#include "scanner/calibration.h"
#include "scanner/dot_finder.h"

#include <stdexcept>
#include <vector>

namespace trovek::service {

/** What was seen does not tell what is looked for; in words for a user. */
class CalibrationError : public std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/**
 * The camera that sees the board as it was seen from several sides.
 * @param design what to begin with
 * @throws CalibrationError when there are too few views, or no camera sees them like that
 */
CameraModel solveCamera(const CameraModel& design, const std::vector<BoardDots>& views);

/** Where the board is: from its coordinates to the camera's. @throws CalibrationError */
geometry::RigidTransform solveBoard(const CameraModel& camera, const BoardDots& dots);

/** Where a laser line lies on the board. */
std::vector<geometry::Vector> pointsOnBoard(const CameraModel& camera,
                                            const geometry::RigidTransform& boardToCamera,
                                            const std::vector<PixelPoint>& line);

/** The sheet of light through points. @throws CalibrationError when they do not lie on one */
LaserPlane solveLaser(const std::vector<geometry::Vector>& points);

/**
 * The table that the board stood on, by its lower edge, while it turned.
 * @param boards where the board was
 * @param angles radians of the table, one for each
 * @throws CalibrationError
 */
Turntable solveTurntable(const std::vector<geometry::RigidTransform>& boards,
                         const std::vector<double>& angles);

} // namespace trovek::service
