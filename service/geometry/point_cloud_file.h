#pragma once

#include "byte_sink.h"
#include "geometry_error.h"

#include <optional>
#include <string>
#include <string_view>

namespace trovek::geometry {

struct PointCloud;

enum class PointCloudFormat {
    /** Binary when written; text and either byte order are read. */
    Ply,
    /** PLY as text. */
    PlyText,
    /** Text: a line for each point, with the normal behind the position if there is one. */
    Xyz,
};

/** Of "ply", "ply_text", "xyz", in upper or lower case. */
std::optional<PointCloudFormat> pointCloudFormat(std::string_view name);
/** By the last letters of the path: ".ply", ".xyz". */
std::optional<PointCloudFormat> pointCloudFormatOfPath(std::string_view path);

/**
 * Reads a cloud from the whole contents of a file. Of a PLY file with faces the vertices are taken.
 * Normals come out with length 1; they are dropped when one of them has none.
 * @throws FileFormatError for a user, beginning with what is wrong: cut off, a number that is not
 * finite, no points, ...
 * @throws Canceled
 */
PointCloud readPointCloud(std::string_view bytes, PointCloudFormat format,
                          const Progress& progress = {});

/**
 * Every number comes back as it was.
 * @throws EmptyError before anything is written
 * @throws Canceled, and what the sink throws
 */
void writePointCloud(const PointCloud& cloud, PointCloudFormat format, const ByteSink& sink,
                     const Progress& progress = {});

/**
 * @param path absolute, UTF-8; its ending tells the format
 * @throws FileFormatError, Canceled
 * @throws std::runtime_error with the path, when there is no such regular file or it cannot be read
 */
PointCloud loadPointCloud(const std::string& path, const Progress& progress = {});

/**
 * Replaces the file as a whole, or leaves what was there. Which files a client may write is for the
 * caller to say.
 * @param path absolute, UTF-8
 * @throws EmptyError, Canceled
 * @throws std::runtime_error with the path, when it cannot be written
 */
void savePointCloud(const PointCloud& cloud, const std::string& path, PointCloudFormat format,
                    const Progress& progress = {});

} // namespace trovek::geometry
