#include "scanner/point_cloud_methods.h"

#include "geometry/alignment.h"
#include "geometry/point_cloud.h"
#include "geometry/point_cloud_file.h"
#include "geometry/point_cloud_filter.h"
#include "geometry/reach.h"
#include "scanner/shape_arguments.h"
#include "scanner/shape_list.h"

#include <trovek/methods.h>
#include <trovek/wire.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace trovek::service {

using namespace geometry;

namespace {

JsonRpcException invalidArgument(const std::string& text)
{
    return wire::makeError(wire::error::kInvalidArgument, text);
}

void checkNotEmpty(const PointCloud& cloud)
{
    if (cloud.positions.empty())
        throw EmptyError("The point cloud has no points");
}

/** Puts a new cloud in the place of the first, and tells what it has. */
Json::Value replace(ShapeTask& task, PointCloud cloud)
{
    Json::Value answer(Json::objectValue);
    answer["points"] = static_cast<Json::UInt64>(cloud.positions.size());
    task.result = Shape(std::move(cloud));
    return answer;
}

Json::Value moved(ShapeTask& task, const Alignment& alignment)
{
    PointCloud cloud = transformed(task.cloud(0), alignment.transform);
    if (!std::isfinite(alignment.error) ||
        !std::all_of(cloud.positions.begin(), cloud.positions.end(), isWithinReach))
        throw GeometryError("The point cloud cannot be moved there");
    Json::Value answer = toJson(alignment.transform);
    answer["error"] = alignment.error;
    task.result = Shape(std::move(cloud));
    return answer;
}

PointCloud loadCloud(const std::string& path, PointCloudFormat format, const Progress& progress)
{
    return readPointCloud(readClientFile(path), format, progress);
}

class PointCloudMethods
{
public:
    explicit PointCloudMethods(ShapeList& shapes)
        : m_shapes(shapes)
    {}

    Json::Value create(const Call& call) const
    {
        return m_shapes.create(ShapeKind::PointCloud, call.client);
    }

    Json::Value destroy(const Call& call) const
    {
        m_shapes.destroy(cloudArgument(call.params), call.client);
        return Json::Value();
    }

    void load(const Call& call) const
    {
        const ShapeUse id = cloudArgument(call.params);
        const bool appends = call.params.has("append") && call.params.boolean("append");
        if (call.params.has("source") == call.params.has("path"))
            throw invalidArgument("Either \"source\" or \"path\" says where the points come from");
        if (call.params.has("path")) {
            const std::string path = call.params.string("path");
            const std::optional<PointCloudFormat> format = pointCloudFormatOfPath(path);
            if (!format) {
                throw wire::makeError(wire::error::kFileFormat,
                                      "Not a file of points by its name: " + path);
            }
            change(call, {id}, [path, format, appends](ShapeTask& task) {
                PointCloud loaded = loadCloud(path, *format, task.progress);
                return replace(task, appends ? joined(task.cloud(0), loaded) : std::move(loaded));
            });
            return;
        }
        change(call, {id, cloudArgument(call.params, "source")}, [appends](ShapeTask& task) {
            checkNotEmpty(task.cloud(1));
            if (appends)
                return replace(task, joined(task.cloud(0), task.cloud(1)));
            task.result = task.shapes[1];
            Json::Value answer(Json::objectValue);
            answer["points"] = static_cast<Json::UInt64>(task.shapes[1].size());
            return answer;
        });
    }

    void save(const Call& call) const
    {
        const std::string path = call.params.string("path");
        const std::optional<PointCloudFormat> format =
            pointCloudFormat(call.params.string("format"));
        if (!format)
            throw invalidArgument("Member \"format\" must be \"ply\", \"ply_text\" or \"xyz\"");
        m_shapes.run({call.client,
                      {cloudArgument(call.params)},
                      ShapeAccess::Reads,
                      [path, format](ShapeTask& task) {
                          checkNotEmpty(task.cloud(0));
                          writeClientFile(path, [&](const ByteSink& sink) {
                              writePointCloud(task.cloud(0), *format, sink, task.progress);
                          });
                          return Json::Value();
                      },
                      call.respond,
                      {},
                      {}});
    }

    void crop(const Call& call) const
    {
        const Box box{vectorArgument(call.params, "minimum"),
                      vectorArgument(call.params, "maximum")};
        change(call, {cloudArgument(call.params)},
               [box](ShapeTask& task) { return replace(task, cropped(task.cloud(0), box)); });
    }

    void process(const Call& call) const
    {
        const double gridSize = call.params.number("grid_size");
        if (gridSize < 0)
            throw invalidArgument("Member \"grid_size\" must not be below 0");
        change(call, {cloudArgument(call.params)}, [gridSize](ShapeTask& task) {
            const auto half = [&task](double from) {
                return [&task, from](double done) {
                    return task.progress(from + done / 2);
                };
            };
            PointCloud cloud = withoutOutliers(task.cloud(0), half(0));
            if (gridSize > 0)
                cloud = thinned(cloud, gridSize, half(0.5));
            return replace(task, std::move(cloud));
        });
    }

    void alignCoarsely(const Call& call) const
    {
        const std::vector<geometry::Vector> points = vectorsArgument(call.params, "points");
        const std::vector<geometry::Vector> targets = vectorsArgument(call.params, "target_points");
        change(call, {cloudArgument(call.params), cloudArgument(call.params, "target")},
               [points, targets](ShapeTask& task) {
                   checkNotEmpty(task.cloud(0));
                   checkNotEmpty(task.cloud(1));
                   return moved(task, alignPairs(points, targets));
               });
    }

    void alignFinely(const Call& call) const
    {
        change(call, {cloudArgument(call.params), cloudArgument(call.params, "target")},
               [](ShapeTask& task) {
                   return moved(task, alignClouds(task.cloud(0), task.cloud(1), task.progress));
               });
    }

private:
    void change(const Call& call, std::vector<ShapeUse> uses, ShapeWork work) const
    {
        m_shapes.run({call.client,
                      std::move(uses),
                      ShapeAccess::ChangesFirst,
                      std::move(work),
                      call.respond,
                      {},
                      {}});
    }

    ShapeList& m_shapes;
};

} // namespace

void addPointCloudMethods(MethodTable& table, ShapeList& shapes)
{
    using namespace trovek::methods;
    const PointCloudMethods methods(shapes);
    table.add(point_cloud_create::kName,
              [methods](const Call& call) { return methods.create(call); });
    table.add(point_cloud_destroy::kName,
              [methods](const Call& call) { return methods.destroy(call); });
    table.addLate(point_cloud_load_from_id::kName,
                  [methods](const Call& call) { methods.load(call); });
    table.addLate(point_cloud_save::kName, [methods](const Call& call) { methods.save(call); });
    table.addLate(point_cloud_crop::kName, [methods](const Call& call) { methods.crop(call); });
    table.addLate(point_cloud_process::kName,
                  [methods](const Call& call) { methods.process(call); });
    table.addLate(point_cloud_coarse_alignment::kName,
                  [methods](const Call& call) { methods.alignCoarsely(call); });
    table.addLate(point_cloud_fine_alignment::kName,
                  [methods](const Call& call) { methods.alignFinely(call); });
}

} // namespace trovek::service
