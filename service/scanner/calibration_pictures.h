#pragma once

#include "geometry/geometry_error.h"
#include "geometry/rigid_transform.h"
#include "scanner/scanner_build.h"
#include "scanner/scene.h"

#include <functional>
#include <string>
#include <vector>

namespace trovek::service {

/** One picture of the calibration board. */
struct BoardPicture
{
    /** Of its file, in the folder of the pictures. */
    std::string fileName;
    /** Where the board is, in the coordinates of the turntable that has not turned. */
    geometry::RigidTransform boardToTable;
    LasersOn lasers;
};

/** The board as a user holds it in front of the camera, turned every way. */
std::vector<BoardPicture> cameraPictures();

/** How the board on the turntable is looked at: by how much the table has turned, radians. */
std::vector<double> turntableAngles();

/** The files of one of those angles. */
struct TurntableFiles
{
    std::string dark;
    std::array<std::string, kLasers> lit;
};
TurntableFiles turntableFiles(std::size_t index);

/** The board as it stands on the table, for each angle without and with each laser. */
std::vector<BoardPicture> turntablePictures();

/**
 * Takes the pictures: the bytes of the PNG files, in order.
 * @param noise standard deviation in grey levels
 * @throws geometry::Canceled
 */
std::vector<std::string> takePictures(const ScannerBuild& scanner,
                                      const std::vector<BoardPicture>& pictures, double noise,
                                      unsigned seed, const geometry::Progress& progress);

/** The contents of a file of the folder with the pictures. */
using ReadFile = std::function<std::string(const std::string& fileName)>;

/**
 * What the pictures tell. Those that do not show the whole board are left out.
 * @param design what to begin with
 * @throws CalibrationError, geometry::FileFormatError, geometry::Canceled, and what `read` throws
 */
CameraModel calibrateCamera(const CameraModel& design, const ReadFile& read,
                            const geometry::Progress& progress);
std::array<LaserPlane, kLasers> calibrateLasers(const CameraModel& camera, const ReadFile& read,
                                                const geometry::Progress& progress);
Turntable calibrateTurntable(const CameraModel& camera, const ReadFile& read,
                             const geometry::Progress& progress);

} // namespace trovek::service
