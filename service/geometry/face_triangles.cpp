#include "face_triangles.h"

#include "surface_mesh.h"

#include <CGAL/Polygon_mesh_processing/triangulate_faces.h>

#include <algorithm>

namespace trovek::geometry {

namespace {

using Corners = std::vector<std::uint32_t>;
using Triangle = std::array<std::uint32_t, 3>;

std::vector<Triangle> fan(const Corners& corners)
{
    std::vector<Triangle> triangles;
    for (std::size_t corner = 2; corner < corners.size(); ++corner)
        triangles.push_back({corners[0], corners[corner - 1], corners[corner]});
    return triangles;
}

Vector areaNormal(const Mesh& mesh, const Triangle& triangle)
{
    const Vector& first = mesh.vertices[triangle[0]];
    return cross(mesh.vertices[triangle[1]] - first, mesh.vertices[triangle[2]] - first);
}

/** Whether none of the triangles lies outside the face, over another one. */
bool fits(const Mesh& mesh, const std::vector<Triangle>& triangles)
{
    Vector sum;
    for (const Triangle& triangle : triangles)
        sum = sum + areaNormal(mesh, triangle);
    return std::all_of(triangles.begin(), triangles.end(), [&](const Triangle& triangle) {
        return dot(areaNormal(mesh, triangle), sum) >= 0;
    });
}

std::vector<Triangle> trianglesOfConcave(const Mesh& mesh, const Corners& corners)
{
    SurfaceMesh surface;
    std::vector<SurfaceMesh::Vertex_index> vertices;
    for (const std::uint32_t corner : corners)
        vertices.push_back(surface.add_vertex(toPoint(mesh.vertices[corner])));
    surface.add_face(vertices);
    if (!CGAL::Polygon_mesh_processing::triangulate_faces(surface))
        return fan(corners);
    std::vector<Triangle> triangles = fromCgal(surface).triangles;
    for (Triangle& triangle : triangles) {
        for (std::uint32_t& vertex : triangle)
            vertex = corners[vertex];
    }
    return triangles;
}

std::vector<Triangle> trianglesOf(const Mesh& mesh, const Corners& corners)
{
    const std::vector<Triangle> triangles = fan(corners);
    if (fits(mesh, triangles))
        return triangles;
    return askCgal("A face of the mesh could not be taken apart",
                   [&] { return trianglesOfConcave(mesh, corners); });
}

} // namespace

void appendFace(Mesh& mesh, Corners corners)
{
    corners.erase(std::unique(corners.begin(), corners.end()), corners.end());
    while (corners.size() > 1 && corners.front() == corners.back())
        corners.pop_back();
    if (corners.size() == 3) {
        mesh.triangles.push_back({corners[0], corners[1], corners[2]});
        return;
    }
    for (const Triangle& triangle : trianglesOf(mesh, corners)) {
        // A face that touches itself.
        if (triangle[0] != triangle[1] && triangle[1] != triangle[2] && triangle[2] != triangle[0])
            mesh.triangles.push_back(triangle);
    }
}

} // namespace trovek::geometry
