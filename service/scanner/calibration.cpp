#include "scanner/calibration.h"

#include <cmath>
#include <stdexcept>
#include <string>

namespace trovek::service {

using geometry::RigidTransform;
using geometry::Vector;

namespace {

constexpr char kVersion[] = "version";
constexpr int kThisVersion = 1;
constexpr int kPixelsAtMost = 16384;

[[noreturn]] void fail(const std::string& text)
{
    throw std::runtime_error("Calibration: " + text);
}

const Json::Value& member(const Json::Value& object, const std::string& path, const char* name)
{
    if (!object.isObject())
        fail("\"" + path + "\" is not an object");
    return object[name];
}

double number(const Json::Value& object, const std::string& path, const char* name, double least,
              double most)
{
    const Json::Value& value = member(object, path, name);
    if (!value.isNumeric() || !(value.asDouble() >= least && value.asDouble() <= most)) {
        fail("\"" + path + "." + name + "\" must be a number from " + std::to_string(least) +
             " to " + std::to_string(most));
    }
    return value.asDouble();
}

int pixels(const Json::Value& object, const std::string& path, const char* name)
{
    const Json::Value& value = member(object, path, name);
    if (!value.isInt() || value.asInt() < 1 || value.asInt() > kPixelsAtMost) {
        fail("\"" + path + "." + name + "\" must be a whole number from 1 to " +
             std::to_string(kPixelsAtMost));
    }
    return value.asInt();
}

Vector vector(const Json::Value& object, const std::string& path, const char* name)
{
    const Json::Value& value = member(object, path, name);
    constexpr double kFarAway = 1e5;
    const auto isNear = [](const Json::Value& coordinate) {
        return coordinate.isNumeric() && std::abs(coordinate.asDouble()) <= kFarAway;
    };
    if (!value.isArray() || value.size() != 3 || !isNear(value[0]) || !isNear(value[1]) ||
        !isNear(value[2]))
        fail("\"" + path + "." + name + "\" must be three numbers");
    return {value[0].asDouble(), value[1].asDouble(), value[2].asDouble()};
}

Vector direction(const Json::Value& object, const std::string& path, const char* name)
{
    const Vector value = vector(object, path, name);
    if (length(value) < 1e-6)
        fail("\"" + path + "." + name + "\" has no direction");
    // What was saved comes back to the last digit.
    return std::abs(length(value) - 1) < 1e-12 ? value : normalized(value);
}

Json::Value listOf(const Vector& vector)
{
    Json::Value list(Json::arrayValue);
    for (const double coordinate : {vector.x, vector.y, vector.z})
        list.append(coordinate);
    return list;
}

CameraModel cameraFromJson(const Json::Value& value)
{
    const std::string path = "camera";
    CameraModel camera;
    camera.width = pixels(value, path, "width");
    camera.height = pixels(value, path, "height");
    camera.focalX = number(value, path, "focal_x", 1, 1e6);
    camera.focalY = number(value, path, "focal_y", 1, 1e6);
    camera.centerX = number(value, path, "center_x", -1e6, 1e6);
    camera.centerY = number(value, path, "center_y", -1e6, 1e6);
    camera.distortion = number(value, path, "distortion", -0.5, 0.5);
    return camera;
}

LaserPlane laserFromJson(const Json::Value& lasers, const char* name)
{
    const std::string path = std::string("lasers.") + name;
    const Json::Value& value = member(lasers, "lasers", name);
    return {direction(value, path, "normal"), number(value, path, "distance", -1e5, 1e5)};
}

} // namespace

RigidTransform Turntable::toCamera(double angle) const
{
    const Vector z = axis;
    const Vector y = normalized(origin - dot(origin, z) * z);
    const Vector x = cross(y, z);
    // The table's directions are the columns.
    RigidTransform standing;
    standing.rotation = {{{x.x, y.x, z.x}, {x.y, y.y, z.y}, {x.z, y.z, z.z}}};
    standing.translation = origin;
    return standing * RigidTransform::turning(Vector{0, 0, 1}, angle);
}

std::optional<Vector> surfacePoint(const Calibration& calibration, Laser laser, PixelPoint place,
                                   double angle)
{
    const Vector view = calibration.camera->viewDirection(place);
    const LaserPlane& plane = (*calibration.lasers)[laser];
    const double slope = dot(plane.normal, view);
    // Along the sheet of light a place tells nothing of the depth.
    if (std::abs(slope) < 1e-3)
        return std::nullopt;
    const double depth = plane.distance / slope;
    if (!(depth > 0))
        return std::nullopt;
    return calibration.turntable->toCamera(angle).inverse().point(depth * view);
}

Json::Value toJson(const Calibration& calibration)
{
    Json::Value value(Json::objectValue);
    value[kVersion] = kThisVersion;
    if (const auto& camera = calibration.camera) {
        value["camera"]["width"] = camera->width;
        value["camera"]["height"] = camera->height;
        value["camera"]["focal_x"] = camera->focalX;
        value["camera"]["focal_y"] = camera->focalY;
        value["camera"]["center_x"] = camera->centerX;
        value["camera"]["center_y"] = camera->centerY;
        value["camera"]["distortion"] = camera->distortion;
    }
    if (const auto& lasers = calibration.lasers) {
        for (const Laser laser : {kLeftLaser, kRightLaser}) {
            Json::Value& entry = value["lasers"][laser == kLeftLaser ? "left" : "right"];
            entry["normal"] = listOf((*lasers)[laser].normal);
            entry["distance"] = (*lasers)[laser].distance;
        }
    }
    if (const auto& turntable = calibration.turntable) {
        value["turntable"]["origin"] = listOf(turntable->origin);
        value["turntable"]["axis"] = listOf(turntable->axis);
    }
    return value;
}

Calibration calibrationFromJson(const Json::Value& value)
{
    if (!value.isObject())
        fail("not an object");
    if (!value[kVersion].isInt() || value[kVersion].asInt() != kThisVersion)
        fail("\"version\" must be " + std::to_string(kThisVersion));
    Calibration calibration;
    if (value.isMember("camera"))
        calibration.camera = cameraFromJson(value["camera"]);
    if (value.isMember("lasers")) {
        const Json::Value& lasers = value["lasers"];
        calibration.lasers = {laserFromJson(lasers, "left"), laserFromJson(lasers, "right")};
    }
    if (value.isMember("turntable")) {
        calibration.turntable = Turntable{vector(value["turntable"], "turntable", "origin"),
                                          direction(value["turntable"], "turntable", "axis")};
        const Turntable& table = *calibration.turntable;
        if (length(cross(table.origin, table.axis)) < 1)
            fail("the camera cannot lie on the turntable's axis");
    }
    return calibration;
}

} // namespace trovek::service
