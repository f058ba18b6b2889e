#include "mesh.h"

#include "geometry_error.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace trovek::geometry {

namespace {

/** As long as twice the triangle's area, out of the mesh. */
Vector areaNormal(const Mesh& mesh, const std::array<std::uint32_t, 3>& triangle)
{
    const Vector& first = mesh.vertices[triangle[0]];
    return cross(mesh.vertices[triangle[1]] - first, mesh.vertices[triangle[2]] - first);
}

} // namespace

Mesh transformed(const Mesh& mesh, const RigidTransform& transform)
{
    Mesh result = mesh;
    for (Vector& vertex : result.vertices)
        vertex = transform.point(vertex);
    return result;
}

Box boundingBox(const Mesh& mesh)
{
    if (mesh.vertices.empty())
        throw EmptyError("The mesh is empty");
    return boundingBoxOf(mesh.vertices);
}

bool isClosed(const Mesh& mesh)
{
    using Edge = std::pair<std::uint32_t, std::uint32_t>;
    std::vector<Edge> edges;
    edges.reserve(mesh.triangles.size() * 3);
    for (const auto& [a, b, c] : mesh.triangles)
        edges.insert(edges.end(), {{a, b}, {b, c}, {c, a}});
    std::sort(edges.begin(), edges.end());
    if (edges.empty() || std::adjacent_find(edges.begin(), edges.end()) != edges.end())
        return false;
    return std::all_of(edges.begin(), edges.end(), [&edges](const Edge& edge) {
        return edge.first != edge.second &&
               std::binary_search(edges.begin(), edges.end(), Edge(edge.second, edge.first));
    });
}

double volume(const Mesh& mesh)
{
    if (mesh.triangles.empty())
        return 0;
    // From a point nearby: from far away the volumes of large tetrahedra would cancel out.
    const Vector apex = mesh.vertices[mesh.triangles.front()[0]];
    double sum = 0;
    for (const std::array<std::uint32_t, 3>& triangle : mesh.triangles)
        sum += dot(mesh.vertices[triangle[0]] - apex, areaNormal(mesh, triangle));
    return sum / 6;
}

double area(const Mesh& mesh)
{
    return std::accumulate(mesh.triangles.begin(), mesh.triangles.end(), 0.0,
                           [&mesh](double sum, const std::array<std::uint32_t, 3>& triangle) {
                               return sum + length(areaNormal(mesh, triangle)) / 2;
                           });
}

} // namespace trovek::geometry
