#pragma once

#include "scanner/calibration.h"

namespace trovek::service {

struct ScannerSettings;

/** Where the parts of a scanner really are; camera coordinates, with every part of the calibration.
 */
struct ScannerBuild
{
    Calibration truth;
    /** Where the light of each laser comes from. */
    std::array<geometry::Vector, kLasers> laserSources;
};

/** As it is drawn: what a calibration begins with. */
ScannerBuild designedScanner(const ScannerSettings& settings);
/** As this unit came out. */
ScannerBuild builtScanner(const ScannerSettings& settings);

} // namespace trovek::service
