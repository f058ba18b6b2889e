#pragma once

#include "geometry/geometry_error.h"
#include "geometry/point_cloud.h"
#include "scanner/scanner_build.h"
#include "scanner/scene.h"

namespace trovek::geometry {
class RayCaster;
}

namespace trovek::service {

/** How one turn of the table is scanned. */
struct LineScan
{
    /** How the scanner is. */
    ScannerBuild scanner;
    /** What is known of it; complete. */
    Calibration calibration;
    LasersOn lasers;
    /** Pictures for one turn; each laser takes one of its own. */
    int steps = 0;
    std::size_t pointsAtMost = 0;
    /** See ScannerSettings. */
    double lineNoise = 0;
    double strayLight = 0;
    unsigned seed = 0;
};

/**
 * The points of a model's surface that a laser lights and the camera sees, as the calibration has
 * them; in the coordinates of the turntable that has not turned.
 * @param model in the table's coordinates
 * @throws geometry::EmptyError when nothing is seen
 * @throws geometry::GeometryError when there are more points than may be
 * @throws geometry::Canceled
 */
geometry::PointCloud scanLines(const LineScan& scan, const geometry::RayCaster& model,
                               const geometry::Progress& progress);

} // namespace trovek::service
