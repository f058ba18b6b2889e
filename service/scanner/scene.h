#pragma once

#include "geometry/rigid_transform.h"
#include "scanner/picture.h"
#include "scanner/scanner_build.h"

#include <array>
#include <functional>
#include <vector>

namespace trovek::geometry {
class RayCaster;
}

namespace trovek::service {

/** What is switched on beside the light of the room. */
using LasersOn = std::array<bool, kLasers>;

/** The light that reaches each pixel: what a picture is before it is exposed. */
struct LightMap
{
    int width = 0;
    int height = 0;
    /** Red, green, blue; 1 is white paper in the room's light. */
    std::vector<float> values;
};

/** Asked for each row: false gives up, by geometry::Canceled. */
using KeepsOn = std::function<bool()>;

/** The calibration board, held in front of the camera. */
LightMap lookAtBoard(const ScannerBuild& scanner, const geometry::RigidTransform& boardToCamera,
                     const LasersOn& lasers, const KeepsOn& keepsOn);

/** What stands on the table. @param model in the table's coordinates */
LightMap lookAtModel(const ScannerBuild& scanner, const geometry::RayCaster& model,
                     const LasersOn& lasers, const KeepsOn& keepsOn);

constexpr double kShortestExposureMs = 0.1;
constexpr double kLongestExposureMs = 500;
/** With which white paper becomes nearly white. */
constexpr double kUsualExposureMs = 20;

/** Milliseconds after which the brightest parts of a scene are bright, but not blinding. */
double autoExposure(const LightMap& light);

/** @param noise standard deviation in grey levels */
Picture expose(const LightMap& light, double milliseconds, double noise, unsigned seed);

} // namespace trovek::service
