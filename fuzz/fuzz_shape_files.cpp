#include "fuzz_target.h"

#include <geometry/geometry_error.h>
#include <geometry/mesh.h>
#include <geometry/mesh_file.h>
#include <geometry/point_cloud.h>
#include <geometry/point_cloud_file.h>

#include <algorithm>
#include <string>

using namespace trovek::geometry;

namespace {

void readCloud(std::string_view bytes, PointCloudFormat format)
{
    PointCloud cloud;
    try {
        cloud = readPointCloud(bytes, format);
    } catch (const FileFormatError&) {
        return;
    }
    const std::size_t count = cloud.positions.size();
    fuzz::require(count > 0, "a cloud that is read has points");
    fuzz::require(cloud.normals.empty() || cloud.normals.size() == count,
                  "all points have normals");
    fuzz::require(cloud.colors.empty() || cloud.colors.size() == count, "all points have colors");
    std::string saved;
    writePointCloud(cloud, PointCloudFormat::Ply,
                    [&saved](const char* piece, std::size_t size) { saved.append(piece, size); });
    fuzz::require(readPointCloud(saved, PointCloudFormat::Ply).positions == cloud.positions,
                  "what is saved comes back");
}

void readShape(std::string_view bytes, MeshFormat format)
{
    Mesh mesh;
    try {
        mesh = readMesh(bytes, format);
    } catch (const FileFormatError&) {
        return;
    }
    fuzz::require(!mesh.triangles.empty(), "a mesh that is read has triangles");
    for (const auto& triangle : mesh.triangles) {
        for (const std::uint32_t vertex : triangle) {
            fuzz::require(vertex < mesh.vertices.size(), "corners are at vertices");
            fuzz::require(isFinite(mesh.vertices[vertex]), "vertices have places");
        }
    }
    std::string saved;
    writeMesh(mesh, MeshFormat::Obj,
              [&saved](const char* piece, std::size_t size) { saved.append(piece, size); });
    fuzz::require(readMesh(saved, MeshFormat::Obj).vertices == mesh.vertices,
                  "what is saved comes back");
}

} // namespace

/** A file; its first byte says of which format. */
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view bytes = fuzz::textOf(data + 1, size - 1);
    switch (data[0] % 5) {
    case 0:
        readCloud(bytes, PointCloudFormat::Ply);
        break;
    case 1:
        readCloud(bytes, PointCloudFormat::Xyz);
        break;
    case 2:
        readShape(bytes, MeshFormat::Stl);
        break;
    case 3:
        readShape(bytes, MeshFormat::Obj);
        break;
    default:
        readShape(bytes, MeshFormat::Ply);
    }
    return 0;
}
