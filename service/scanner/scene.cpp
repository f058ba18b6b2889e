#include "scanner/scene.h"

#include "geometry/geometry_error.h"
#include "geometry/ray_caster.h"
#include "scanner/calibration_board.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace trovek::service {

using geometry::RigidTransform;
using geometry::Vector;

namespace {

/** The room behind the scanner is dark. */
constexpr double kBackground = 0.03;
/** Of the sheet of light: its brightness in the middle, and how wide it is, in millimetres. */
constexpr double kLaserLight = 1.6;
constexpr double kLaserSigma = 0.35;

struct Color
{
    double red = 0;
    double green = 0;
    double blue = 0;
};

constexpr Color kDark{kBackground, kBackground, kBackground};

Color operator+(const Color& a, const Color& b)
{
    return {a.red + b.red, a.green + b.green, a.blue + b.blue};
}

Color operator*(double factor, const Color& color)
{
    return {factor * color.red, factor * color.green, factor * color.blue};
}

/** How bright a sheet of light is there, before what may stand in its way. */
double laserLight(const LaserPlane& plane, const Vector& point)
{
    const double off = (dot(plane.normal, point) - plane.distance) / kLaserSigma;
    return std::abs(off) > 4 ? 0 : kLaserLight * std::exp(-off * off / 2);
}

/** A part of a picture, in pixels. */
struct Frame
{
    double left = 1e9;
    double right = -1e9;
    double top = 1e9;
    double bottom = -1e9;

    void include(PixelPoint place)
    {
        left = std::min(left, place.x);
        right = std::max(right, place.x);
        top = std::min(top, place.y);
        bottom = std::max(bottom, place.y);
    }
    bool contains(int x, int y) const
    {
        return x + 1 > left && x < right && y + 1 > top && y < bottom;
    }
};

/** Where the board is, with some room: a bent edge may lie outside of its corners. */
Frame frameOfBoard(const CameraModel& camera, const RigidTransform& boardToCamera)
{
    constexpr double kRoom = 3;
    Frame frame;
    for (const double x : {-board::kMargin - kRoom, board::kWidth + board::kMargin + kRoom}) {
        for (const double y : {-board::kMargin - kRoom, board::kHeight + board::kMargin + kRoom}) {
            if (const auto corner = camera.project(boardToCamera.point({x, y, 0})))
                frame.include(*corner);
        }
    }
    return frame;
}

/** Asks for the color of each pixel. */
template <typename Look>
LightMap lookEverywhere(const CameraModel& camera, const KeepsOn& keepsOn, Look look)
{
    LightMap light;
    light.width = camera.width;
    light.height = camera.height;
    light.values.reserve(static_cast<std::size_t>(camera.width) *
                         static_cast<std::size_t>(camera.height) * 3);
    for (int y = 0; y < camera.height; ++y) {
        if (!keepsOn())
            throw geometry::Canceled();
        for (int x = 0; x < camera.width; ++x) {
            const Color color = look(x, y);
            light.values.push_back(static_cast<float>(color.red));
            light.values.push_back(static_cast<float>(color.green));
            light.values.push_back(static_cast<float>(color.blue));
        }
    }
    return light;
}

} // namespace

LightMap lookAtBoard(const ScannerBuild& scanner, const RigidTransform& boardToCamera,
                     const LasersOn& lasers, const KeepsOn& keepsOn)
{
    const CameraModel& camera = *scanner.truth.camera;
    const RigidTransform toBoard = boardToCamera.inverse();
    const Vector eye = toBoard.translation;

    const Frame frame = frameOfBoard(camera, boardToCamera);

    const auto lookAlong = [&](const Vector& view) {
        const Vector direction = toBoard.direction(view);
        const double depth = -eye.z / direction.z;
        if (!(depth > 0))
            return kDark;
        const auto brightness =
            board::brightness(eye.x + depth * direction.x, eye.y + depth * direction.y);
        if (!brightness)
            return kDark;
        Color color{1, 1, 1};
        for (const Laser laser : {kLeftLaser, kRightLaser}) {
            if (lasers[laser])
                color.red += laserLight((*scanner.truth.lasers)[laser], depth * view);
        }
        return *brightness * color;
    };
    return lookEverywhere(camera, keepsOn, [&](int x, int y) {
        if (!frame.contains(x, y))
            return kDark;
        Color sum;
        for (const double partX : {0.25, 0.75}) {
            for (const double partY : {0.25, 0.75})
                sum = sum + lookAlong(camera.viewDirection({x + partX, y + partY}));
        }
        return 0.25 * sum;
    });
}

LightMap lookAtModel(const ScannerBuild& scanner, const geometry::RayCaster& model,
                     const LasersOn& lasers, const KeepsOn& keepsOn)
{
    const CameraModel& camera = *scanner.truth.camera;
    const RigidTransform toCamera = scanner.truth.turntable->toCamera(0);
    const RigidTransform toTable = toCamera.inverse();
    const Vector eye = toTable.translation;
    // The room's lamp hangs over the camera's left shoulder.
    const Vector lamp = eye + Vector{-120, 0, 200};

    return lookEverywhere(camera, keepsOn, [&](int x, int y) {
        const Vector view = toTable.direction(camera.viewDirection({x + 0.5, y + 0.5}));
        const auto hit = model.firstHit(eye, view);
        if (!hit)
            return kDark;
        constexpr Color kClay{0.75, 0.66, 0.55};
        const double facing = std::max(0.0, dot(hit->normal, normalized(lamp - hit->point)));
        Color color = (0.25 + 0.75 * facing) * kClay;
        for (const Laser laser : {kLeftLaser, kRightLaser}) {
            if (!lasers[laser])
                continue;
            const double light =
                laserLight((*scanner.truth.lasers)[laser], toCamera.point(hit->point));
            const Vector source = toTable.point(scanner.laserSources[laser]);
            const double slope = dot(hit->normal, normalized(source - hit->point));
            if (light > 0.01 && slope > 0 && model.isVisible(hit->point, source))
                color.red += light * slope;
        }
        return color;
    });
}

double autoExposure(const LightMap& light)
{
    // A few reflections may be lost; what the rest is like counts.
    std::vector<float> brightest;
    for (std::size_t i = 0; i + 2 < light.values.size(); i += 3) {
        const float most = std::max({light.values[i], light.values[i + 1], light.values[i + 2]});
        if (most > 2 * kBackground)
            brightest.push_back(most);
    }
    if (brightest.empty())
        return kUsualExposureMs;
    const auto place =
        brightest.begin() + static_cast<std::ptrdiff_t>(0.98 * double(brightest.size() - 1));
    std::nth_element(brightest.begin(), place, brightest.end());
    return std::clamp(kUsualExposureMs / double(*place), kShortestExposureMs, kLongestExposureMs);
}

Picture expose(const LightMap& light, double milliseconds, double noise, unsigned seed)
{
    constexpr double kWhite = 235;
    std::mt19937 random(seed);
    // Drawn again and again: three fresh ones for each pixel would take longer than all else.
    std::normal_distribution<double> normal(0, 1);
    std::array<double, 1 << 14> grains;
    for (double& grain : grains)
        grain = noise * normal(random);

    Picture picture(light.width, light.height);
    for (std::size_t i = 0; i < light.values.size(); ++i) {
        const double level = kWhite * milliseconds / kUsualExposureMs * double(light.values[i]) +
                             grains[random() % grains.size()];
        picture.bytes[i] = static_cast<std::uint8_t>(std::clamp(std::lround(level), 0L, 255L));
    }
    return picture;
}

} // namespace trovek::service
