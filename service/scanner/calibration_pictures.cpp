#include "scanner/calibration_pictures.h"

#include "scanner/calibration_board.h"
#include "scanner/calibration_solver.h"
#include "scanner/dot_finder.h"
#include "scanner/picture.h"

#include <cmath>
#include <cstdio>

namespace trovek::service {

using geometry::RigidTransform;
using geometry::Vector;

namespace {

constexpr double kPi = 3.14159265358979323846;
/** So dark that a laser on white paper is not lost in the white. */
constexpr double kExposureMs = kUsualExposureMs * 0.4;
constexpr LasersOn kNoLaser = {false, false};

RigidTransform turned(const Vector& axis, double degrees)
{
    return RigidTransform::turning(axis, degrees * kPi / 180);
}

/** The board with its middle at the origin, upright, its front to the camera. */
RigidTransform upright()
{
    return turned({1, 0, 0}, 90) *
           RigidTransform::moving({-board::kWidth / 2, -board::kHeight / 2, 0});
}

std::string numbered(const char* name, std::size_t index, const char* ending)
{
    char text[40];
    std::snprintf(text, sizeof text, "%s_%02u%s.png", name, unsigned(index), ending);
    return text;
}

/** @throws geometry::Canceled */
void tell(const geometry::Progress& progress, std::size_t done, std::size_t of)
{
    if (progress && !progress(double(done) / double(of)))
        throw geometry::Canceled();
}

Picture readPicture(const CameraModel& camera, const ReadFile& read, const std::string& fileName)
{
    try {
        return decodePng(read(fileName), camera.width, camera.height);
    } catch (const geometry::FileFormatError& error) {
        throw geometry::FileFormatError(fileName + ": " + error.what());
    }
}

} // namespace

std::vector<BoardPicture> cameraPictures()
{
    struct Pose
    {
        Vector middle;
        /** Degrees: back, to the side, and in its plane. */
        double tilt;
        double turn;
        double roll;
    };
    const Pose poses[] = {
        {{0, -20, 45}, 0, 0, 0},       {{-25, -10, 55}, 25, 0, 0},  {{25, -10, 35}, -25, 0, 5},
        {{-20, 10, 40}, 0, 30, -5},    {{20, 10, 50}, 0, -30, 0},   {{15, -40, 48}, 15, 20, 10},
        {{-15, -40, 42}, -15, -20, 0}, {{30, 40, 60}, 20, -25, -8}, {{-30, 40, 30}, -20, 25, 8},
        {{30, 50, 25}, -30, -10, 0},   {{-30, 50, 65}, 30, 10, 0},  {{0, 0, 45}, 12, -12, 90},
    };
    std::vector<BoardPicture> pictures;
    for (const Pose& pose : poses) {
        pictures.push_back({numbered("camera", pictures.size(), ""),
                            RigidTransform::moving(pose.middle) * turned({0, 0, 1}, pose.turn) *
                                turned({1, 0, 0}, pose.tilt) * turned({0, 1, 0}, pose.roll) *
                                upright(),
                            kNoLaser});
    }
    return pictures;
}

std::vector<double> turntableAngles()
{
    std::vector<double> angles;
    for (int degrees = -40; degrees <= 40; degrees += 10)
        angles.push_back(degrees * kPi / 180);
    return angles;
}

TurntableFiles turntableFiles(std::size_t index)
{
    return {numbered("turntable", index, ""),
            {numbered("turntable", index, "_left"), numbered("turntable", index, "_right")}};
}

std::vector<BoardPicture> turntablePictures()
{
    // Beside the axis, so that the lasers sweep over the table while it turns.
    constexpr double kBesideAxis = 25;
    const RigidTransform standing =
        RigidTransform::moving({0, -kBesideAxis, board::kMargin + board::kHeight / 2}) * upright();
    std::vector<BoardPicture> pictures;
    const std::vector<double> angles = turntableAngles();
    for (std::size_t i = 0; i < angles.size(); ++i) {
        const RigidTransform place = RigidTransform::turning(Vector{0, 0, 1}, angles[i]) * standing;
        const TurntableFiles files = turntableFiles(i);
        pictures.push_back({files.dark, place, kNoLaser});
        pictures.push_back({files.lit[kLeftLaser], place, {true, false}});
        pictures.push_back({files.lit[kRightLaser], place, {false, true}});
    }
    return pictures;
}

std::vector<std::string> takePictures(const ScannerBuild& scanner,
                                      const std::vector<BoardPicture>& pictures, double noise,
                                      unsigned seed, const geometry::Progress& progress)
{
    const RigidTransform tableToCamera = scanner.truth.turntable->toCamera(0);
    std::vector<std::string> files;
    for (const BoardPicture& picture : pictures) {
        const auto keepsOn = [&] {
            tell(progress, files.size(), pictures.size());
            return true;
        };
        const LightMap light =
            lookAtBoard(scanner, tableToCamera * picture.boardToTable, picture.lasers, keepsOn);
        files.push_back(
            encodePng(expose(light, kExposureMs, noise, seed + unsigned(files.size()))));
    }
    tell(progress, 1, 1);
    return files;
}

CameraModel calibrateCamera(const CameraModel& design, const ReadFile& read,
                            const geometry::Progress& progress)
{
    const std::vector<BoardPicture> pictures = cameraPictures();
    std::vector<BoardDots> views;
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        tell(progress, i, pictures.size() + 1);
        if (const auto dots = findDots(readPicture(design, read, pictures[i].fileName)))
            views.push_back(*dots);
    }
    tell(progress, pictures.size(), pictures.size() + 1);
    return solveCamera(design, views);
}

std::array<LaserPlane, kLasers> calibrateLasers(const CameraModel& camera, const ReadFile& read,
                                                const geometry::Progress& progress)
{
    std::array<std::vector<Vector>, kLasers> points;
    const std::size_t count = turntableAngles().size();
    for (std::size_t i = 0; i < count; ++i) {
        tell(progress, i, count);
        const TurntableFiles files = turntableFiles(i);
        const Picture dark = readPicture(camera, read, files.dark);
        const auto dots = findDots(dark);
        if (!dots)
            continue;
        const RigidTransform board = solveBoard(camera, *dots);
        for (const Laser laser : {kLeftLaser, kRightLaser}) {
            const auto line = findLaserLine(readPicture(camera, read, files.lit[laser]), dark);
            const std::vector<Vector> found = pointsOnBoard(camera, board, line);
            points[laser].insert(points[laser].end(), found.begin(), found.end());
        }
    }
    return {solveLaser(points[kLeftLaser]), solveLaser(points[kRightLaser])};
}

Turntable calibrateTurntable(const CameraModel& camera, const ReadFile& read,
                             const geometry::Progress& progress)
{
    std::vector<RigidTransform> boards;
    std::vector<double> angles;
    const std::vector<double> planned = turntableAngles();
    for (std::size_t i = 0; i < planned.size(); ++i) {
        tell(progress, i, planned.size());
        const auto dots = findDots(readPicture(camera, read, turntableFiles(i).dark));
        if (!dots)
            continue;
        boards.push_back(solveBoard(camera, *dots));
        angles.push_back(planned[i]);
    }
    return solveTurntable(boards, angles);
}

} // namespace trovek::service
