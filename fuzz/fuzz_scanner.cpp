#include "fuzz_target.h"

#include <geometry/geometry_error.h>
#include <rpcwire/json_text.h>
#include <scanner/calibration.h>
#include <scanner/dot_finder.h>
#include <scanner/picture.h>
#include <scanner/scanner_build.h>
#include <scanner/scanner_settings.h>

#include <cmath>
#include <stdexcept>
#include <string>

using namespace trovek;
using namespace trovek::service;

namespace {

constexpr int kWidth = 160;
constexpr int kHeight = 120;

void readCalibration(const Json::Value& value)
{
    Calibration calibration;
    try {
        calibration = calibrationFromJson(value);
    } catch (const std::runtime_error& error) {
        fuzz::require(std::string(error.what()).rfind("Calibration: ", 0) == 0,
                      "a refusal says that it is about a calibration");
        return;
    }
    const std::string saved = rpcwire::toJsonLine(toJson(calibration));
    Json::Value again;
    fuzz::require(rpcwire::parseJson(saved, &again, nullptr), "what is saved is JSON");
    fuzz::require(rpcwire::toJsonLine(toJson(calibrationFromJson(again))) == saved,
                  "what is saved comes back");
    if (calibration.isComplete()) {
        for (const PixelPoint place : {PixelPoint{0, 0}, PixelPoint{300.5, 200.25}})
            surfacePoint(calibration, kLeftLaser, place, 1.5);
    }
}

void readSettings(const Json::Value& value)
{
    ScannerSettings settings;
    try {
        settings = scannerSettingsFromJson(value);
    } catch (const std::runtime_error& error) {
        fuzz::require(std::string(error.what()).rfind("Scanner settings: ", 0) == 0,
                      "a refusal says that it is about the settings");
        return;
    }
    const ScannerBuild build = builtScanner(settings);
    fuzz::require(build.truth.isComplete(), "a scanner has all its parts");
    fuzz::require(std::isfinite(build.truth.camera->focalX), "its camera has a focal length");
    fuzz::require(build.truth.turntable->toCamera(0).translation.z > 100,
                  "its table is ahead of its camera");
}

void readPicture(std::string_view bytes)
{
    Picture picture;
    try {
        picture = decodePng(bytes, kWidth, kHeight);
    } catch (const geometry::FileFormatError&) {
        return;
    }
    findDots(picture);
    findLaserLine(picture, Picture(kWidth, kHeight));
}

} // namespace

/** A file; its first byte says whether it is a calibration, settings, or a picture. */
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view bytes = fuzz::textOf(data + 1, size - 1);
    if (data[0] % 3 == 2) {
        readPicture(bytes);
        return 0;
    }
    Json::Value value;
    if (!rpcwire::parseJson(bytes, &value, nullptr))
        return 0;
    if (data[0] % 3 == 0)
        readCalibration(value);
    else
        readSettings(value);
    return 0;
}
