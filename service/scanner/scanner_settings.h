#pragma once

#include "geometry/rigid_transform.h"
#include "geometry/vector.h"

#include <json/value.h>

#include <array>
#include <string>

namespace trovek::service {

/** What stands on the turntable of the virtual scanner. */
struct ScannedModel
{
    /** A mesh file, absolute; empty for the built-in model. */
    std::string path;
    /** How it was put there: turned by degrees about x, then y, then z, and moved by millimetres.
     */
    geometry::Vector turn;
    geometry::Vector position;

    geometry::RigidTransform toTable() const;
};

/** A virtual scanner, as docs/formats/scanner_settings.md describes it. */
struct ScannerSettings
{
    bool pluggedIn = true;
    std::string devicePath = "/dev/video-virtual-scanner";
    /** Major, minor, revision. */
    std::array<int, 3> version = {1, 2, 0};
    /** Of the camera's pictures. */
    int width = 1280;
    int height = 960;
    /** Degrees, from left to right. */
    double fieldOfView = 40;
    /** Grey levels, of 255: standard deviation. */
    double pictureNoise = 1.5;
    /** Pixels: standard deviation of where the middle of a laser line is seen. */
    double lineNoise = 0.15;
    /** The part of a line's places where something else is taken for it. */
    double strayLight = 0.002;
    /** How far this unit is from its design: 1 as they usually come out, 0 not at all. */
    double tolerance = 1;
    /** Of all that is random. */
    unsigned seed = 1;
    ScannedModel model;
};

/**
 * Members that are missing have the values above.
 * @throws std::runtime_error for a user, naming the member that is wrong or unknown
 */
ScannerSettings scannerSettingsFromJson(const Json::Value& value);

/** @throws std::runtime_error for a user */
ScannedModel scannedModelFromJson(const Json::Value& value);
Json::Value toJson(const ScannedModel& model);

} // namespace trovek::service
