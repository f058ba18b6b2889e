#include "point_cloud_file.h"

#include "ply_file.h"
#include "point_cloud.h"
#include "progress_part.h"
#include "text_words.h"
#include "whole_file.h"
#include "xyz_file.h"

#include <cmath>

namespace trovek::geometry {

namespace {

/** Less than that is what writing and reading them again changes. */
constexpr double kUnitTolerance = 1e-6;

void normalizeNormals(PointCloud& cloud)
{
    for (Vector& normal : cloud.normals) {
        const double size = length(normal);
        if (!std::isfinite(size) || size == 0) {
            cloud.normals.clear();
            return;
        }
        if (std::abs(size - 1) > kUnitTolerance)
            normal = normalized(normal);
    }
}

} // namespace

std::optional<PointCloudFormat> pointCloudFormat(std::string_view name)
{
    const std::string lower = lowerCase(name);
    if (lower == "ply")
        return PointCloudFormat::Ply;
    if (lower == "ply_text")
        return PointCloudFormat::PlyText;
    if (lower == "xyz")
        return PointCloudFormat::Xyz;
    return std::nullopt;
}

std::optional<PointCloudFormat> pointCloudFormatOfPath(std::string_view path)
{
    const std::string ending = endingOf(path);
    return ending == "ply_text" ? std::nullopt : pointCloudFormat(ending);
}

PointCloud readPointCloud(std::string_view bytes, PointCloudFormat format, const Progress& progress)
{
    const ProgressPart whole(progress);
    whole.report(0);
    if (bytes.empty())
        throw FileFormatError("The file is empty");
    PointCloud cloud =
        format == PointCloudFormat::Xyz ? readXyz(bytes, progress) : readPlyPoints(bytes, progress);
    normalizeNormals(cloud);
    whole.report(1);
    return cloud;
}

void writePointCloud(const PointCloud& cloud, PointCloudFormat format, const ByteSink& sink,
                     const Progress& progress)
{
    if (cloud.positions.empty())
        throw EmptyError("The point cloud is empty");
    switch (format) {
    case PointCloudFormat::Ply:
        return writePlyPoints(cloud, sink, progress);
    case PointCloudFormat::PlyText:
        return writePlyPointsAsText(cloud, sink, progress);
    case PointCloudFormat::Xyz:
        return writeXyz(cloud, sink, progress);
    }
}

PointCloud loadPointCloud(const std::string& path, const Progress& progress)
{
    const std::optional<PointCloudFormat> format = pointCloudFormatOfPath(path);
    if (!format)
        throw FileFormatError(path + ": A point cloud is read from .ply and .xyz files");
    return readFile(
        path, [&](std::string_view bytes) { return readPointCloud(bytes, *format, progress); });
}

void savePointCloud(const PointCloud& cloud, const std::string& path, PointCloudFormat format,
                    const Progress& progress)
{
    if (cloud.positions.empty())
        throw EmptyError("The point cloud is empty");
    replaceFile(path,
                [&](const ByteSink& sink) { writePointCloud(cloud, format, sink, progress); });
}

} // namespace trovek::geometry
