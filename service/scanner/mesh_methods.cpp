#include "scanner/mesh_methods.h"

#include "geometry/mesh.h"
#include "geometry/mesh_file.h"
#include "geometry/placement.h"
#include "geometry/plane_cut.h"
#include "geometry/point_cloud.h"
#include "geometry/reconstruction.h"
#include "scanner/shape_arguments.h"
#include "scanner/shape_list.h"

#include <trovek/methods.h>
#include <trovek/wire.h>

#include <optional>

namespace trovek::service {

using namespace geometry;

namespace {

Json::Value answerOf(const Mesh& mesh)
{
    Json::Value answer(Json::objectValue);
    answer["vertices"] = static_cast<Json::UInt64>(mesh.vertices.size());
    answer["triangles"] = static_cast<Json::UInt64>(mesh.triangles.size());
    return answer;
}

/** Puts a new mesh in the place of the first, and tells what it has. */
Json::Value replace(ShapeTask& task, Mesh mesh)
{
    Json::Value answer = answerOf(mesh);
    task.result = Shape(std::move(mesh));
    return answer;
}

void checkNotEmpty(const Mesh& mesh)
{
    if (mesh.triangles.empty())
        throw EmptyError("The mesh has no triangles");
}

class MeshMethods
{
public:
    explicit MeshMethods(ShapeList& shapes)
        : m_shapes(shapes)
    {}

    Json::Value create(const Call& call) const
    {
        return m_shapes.create(ShapeKind::Mesh, call.client);
    }

    Json::Value destroy(const Call& call) const
    {
        m_shapes.destroy(meshArgument(call.params), call.client);
        return Json::Value();
    }

    void copy(const Call& call) const
    {
        change(call, {meshArgument(call.params), meshArgument(call.params, "source")},
               [](ShapeTask& task) {
                   checkNotEmpty(task.mesh(1));
                   task.result = task.shapes[1];
                   return answerOf(task.mesh(1));
               });
    }

    void load(const Call& call) const
    {
        const std::string path = call.params.string("path");
        const std::optional<MeshFormat> format = meshFormatOfPath(path);
        if (!format) {
            throw wire::makeError(wire::error::kFileFormat, "Not a mesh file by its name: " + path);
        }
        change(call, {meshArgument(call.params)}, [path, format](ShapeTask& task) {
            return replace(task, readMesh(readClientFile(path), *format, task.progress));
        });
    }

    void save(const Call& call) const
    {
        const std::string path = call.params.string("path");
        const std::optional<MeshFormat> format = meshFormat(call.params.string("format"));
        if (!format) {
            throw wire::makeError(
                wire::error::kInvalidArgument,
                "Member \"format\" must be \"stl\", \"stl_text\", \"obj\" or \"ply\"");
        }
        m_shapes.run({call.client,
                      {meshArgument(call.params)},
                      ShapeAccess::Reads,
                      [path, format](ShapeTask& task) {
                          checkNotEmpty(task.mesh(0));
                          writeClientFile(path, [&](const ByteSink& sink) {
                              writeMesh(task.mesh(0), *format, sink, task.progress);
                          });
                          return Json::Value();
                      },
                      call.respond,
                      {},
                      {}});
    }

    void cut(const Call& call) const
    {
        const geometry::Vector point = vectorArgument(call.params, "point");
        const geometry::Vector normal = vectorArgument(call.params, "normal");
        if (!(length(normal) > 0)) {
            throw wire::makeError(wire::error::kInvalidArgument,
                                  "Member \"normal\" must have a direction");
        }
        change(call, {meshArgument(call.params)}, [point, normal](ShapeTask& task) {
            return replace(task, cutByPlane(task.mesh(0), point, normal, task.progress));
        });
    }

    void place(const Call& call) const
    {
        change(call, {meshArgument(call.params)}, [](ShapeTask& task) {
            return replace(task, placedOnPlatform(task.mesh(0), task.progress));
        });
    }

    void reconstruct(const Call& call) const
    {
        change(call, {meshArgument(call.params), cloudArgument(call.params, "point_cloud")},
               [](ShapeTask& task) {
                   return replace(task, reconstructed(task.cloud(1), task.progress));
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

void addMeshMethods(MethodTable& table, ShapeList& shapes)
{
    using namespace trovek::methods;
    const MeshMethods methods(shapes);
    table.add(mesh_create::kName, [methods](const Call& call) { return methods.create(call); });
    table.add(mesh_destroy::kName, [methods](const Call& call) { return methods.destroy(call); });
    table.addLate(mesh_copy::kName, [methods](const Call& call) { methods.copy(call); });
    table.addLate(mesh_load::kName, [methods](const Call& call) { methods.load(call); });
    table.addLate(mesh_save::kName, [methods](const Call& call) { methods.save(call); });
    table.addLate(mesh_cut_plane::kName, [methods](const Call& call) { methods.cut(call); });
    table.addLate(mesh_place_on_platform::kName,
                  [methods](const Call& call) { methods.place(call); });
    table.addLate(mesh_reconstruct_point_cloud::kName,
                  [methods](const Call& call) { methods.reconstruct(call); });
}

} // namespace trovek::service
