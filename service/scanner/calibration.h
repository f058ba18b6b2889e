#pragma once

#include "geometry/rigid_transform.h"
#include "geometry/vector.h"
#include "scanner/camera_model.h"

#include <json/value.h>

#include <array>
#include <optional>

namespace trovek::service {

/** As seen from the camera; also the places in arrays. */
enum Laser { kLeftLaser, kRightLaser };
constexpr int kLasers = 2;

/** The sheet of light of a laser: all points with dot(normal, point) = distance. */
struct LaserPlane
{
    geometry::Vector normal;
    double distance = 0;
};

/**
 * Where the turntable stands. Its own coordinates are those of scanned points: the origin is where
 * the axis meets the platform, z points up, y away from the camera.
 */
struct Turntable
{
    geometry::Vector origin;
    /** Up, of length 1. */
    geometry::Vector axis;

    /**
     * From coordinates of what stands on the table to the camera's.
     * @param angle radians that the table has turned, counter-clockwise as seen from above
     */
    geometry::RigidTransform toCamera(double angle) const;
};

/** What has to be known of a scanner to take points from its pictures; camera coordinates. */
struct Calibration
{
    std::optional<CameraModel> camera;
    std::optional<std::array<LaserPlane, kLasers>> lasers;
    std::optional<Turntable> turntable;

    bool isComplete() const { return camera && lasers && turntable; }
};

/**
 * The point on the table that a laser lights at a place of the picture.
 * @param calibration complete
 * @param angle       radians that the table has turned
 */
std::optional<geometry::Vector> surfacePoint(const Calibration& calibration, Laser laser,
                                             PixelPoint place, double angle);

/** The parts that are known. */
Json::Value toJson(const Calibration& calibration);

/** @throws std::runtime_error for a user, naming the member that is wrong */
Calibration calibrationFromJson(const Json::Value& value);

} // namespace trovek::service
