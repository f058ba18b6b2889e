#include "scanner/scanner_build.h"

#include "scanner/scanner_settings.h"

#include <cmath>
#include <random>

namespace trovek::service {

using geometry::RigidTransform;
using geometry::Vector;

namespace {

constexpr double kPi = 3.14159265358979323846;

// The design, in the table's coordinates, millimetres: the camera looks a little down at what
// stands on the table, the lasers stand left and right of it and light the table's axis.
constexpr Vector kCameraPlace{0, -260, 100};
constexpr Vector kLookedAt{0, 0, 45};
constexpr Vector kUp{0, 0, 1};
constexpr std::array<Vector, kLasers> kLaserPlaces = {Vector{-135, -225, 70},
                                                      Vector{135, -225, 70}};

double radians(double degrees)
{
    return degrees * kPi / 180;
}

/** The table's coordinates to the camera's. */
RigidTransform lookingAt(const Vector& place, const Vector& target)
{
    const Vector ahead = normalized(target - place);
    const Vector right = normalized(cross(ahead, kUp));
    RigidTransform toCamera;
    toCamera.rotation = {right, cross(ahead, right), ahead};
    toCamera.translation = -toCamera.direction(place);
    return toCamera;
}

/** A standing sheet of light from the source through the table's axis. */
LaserPlane sheetThroughAxis(const Vector& source)
{
    return {normalized(cross(kUp, -source)), 0};
}

LaserPlane transformed(const LaserPlane& plane, const RigidTransform& by)
{
    const Vector normal = by.direction(plane.normal);
    return {normal, dot(normal, by.point(plane.distance * plane.normal))};
}

} // namespace

ScannerBuild designedScanner(const ScannerSettings& settings)
{
    const RigidTransform toCamera = lookingAt(kCameraPlace, kLookedAt);
    ScannerBuild build;
    CameraModel camera;
    camera.width = settings.width;
    camera.height = settings.height;
    camera.focalX = settings.width / 2.0 / std::tan(radians(settings.fieldOfView) / 2);
    camera.focalY = camera.focalX;
    camera.centerX = settings.width / 2.0;
    camera.centerY = settings.height / 2.0;
    build.truth.camera = camera;
    build.truth.turntable = Turntable{toCamera.translation, toCamera.direction(kUp)};
    build.truth.lasers.emplace();
    for (const Laser laser : {kLeftLaser, kRightLaser}) {
        (*build.truth.lasers)[laser] = transformed(sheetThroughAxis(kLaserPlaces[laser]), toCamera);
        build.laserSources[laser] = toCamera.point(kLaserPlaces[laser]);
    }
    return build;
}

ScannerBuild builtScanner(const ScannerSettings& settings)
{
    std::mt19937 random(settings.seed);
    const auto off = [&random, &settings](double most) {
        return std::uniform_real_distribution<double>(-most, most)(random) * settings.tolerance;
    };
    ScannerBuild build = designedScanner(settings);

    CameraModel& camera = *build.truth.camera;
    camera.focalX *= 1 + off(0.03);
    camera.focalY = camera.focalX * (1 + off(0.002));
    camera.centerX += off(0.015) * camera.width;
    camera.centerY += off(0.015) * camera.height;
    camera.distortion = off(0.08);

    Turntable& table = *build.truth.turntable;
    table.origin = table.origin + Vector{off(2), off(2), off(3)};
    table.axis =
        RigidTransform::turning(Vector{1, 0, 0}, radians(off(1)))
            .direction(
                RigidTransform::turning(Vector{0, 0, 1}, radians(off(1))).direction(table.axis));

    for (const Laser laser : {kLeftLaser, kRightLaser}) {
        // A laser is turned about itself and tilted; its light still comes from it.
        LaserPlane& plane = (*build.truth.lasers)[laser];
        const Vector& source = build.laserSources[laser];
        const Vector towardsTable = normalized(table.origin - source);
        plane.normal =
            RigidTransform::turning(table.axis, radians(off(1)))
                .direction(
                    RigidTransform::turning(towardsTable, radians(off(1))).direction(plane.normal));
        plane.distance = dot(plane.normal, source);
    }
    return build;
}

} // namespace trovek::service
