#include "face_triangles.h"

#include "cgal_kernel.h"
#include "mesh.h"

#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Projection_traits_3.h>
#include <CGAL/Triangulation_face_base_with_info_2.h>
#include <CGAL/Triangulation_vertex_base_with_info_2.h>

#include <algorithm>

namespace trovek::geometry {

namespace {

using Corners = std::vector<std::uint32_t>;
using Triangle = std::array<std::uint32_t, 3>;

using Projection = CGAL::Projection_traits_3<Kernel>;
/** Knows its corner. */
using PlaneVertex = CGAL::Triangulation_vertex_base_with_info_2<std::uint32_t, Projection>;
/** Knows whether it lies outside. */
using PlaneFace = CGAL::Constrained_triangulation_face_base_2<
    Projection, CGAL::Triangulation_face_base_with_info_2<bool, Projection>>;
using Plane = CGAL::Constrained_Delaunay_triangulation_2<
    Projection, CGAL::Triangulation_data_structure_2<PlaneVertex, PlaneFace>,
    CGAL::No_constraint_intersection_tag>;

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

/** The face's own; its length is twice the area. */
Vector areaNormal(const Mesh& mesh, const std::vector<Triangle>& triangles)
{
    Vector sum;
    for (const Triangle& triangle : triangles)
        sum = sum + areaNormal(mesh, triangle);
    return sum;
}

void markOutside(Plane& plane)
{
    for (const Plane::Face_handle face : plane.all_face_handles())
        face->info() = false;
    std::vector<Plane::Face_handle> outside{plane.infinite_face()};
    while (!outside.empty()) {
        const Plane::Face_handle face = outside.back();
        outside.pop_back();
        if (face->info())
            continue;
        face->info() = true;
        for (const int side : {0, 1, 2}) {
            if (!face->is_constrained(side))
                outside.push_back(face->neighbor(side));
        }
    }
}

/** None when the outline, seen along the normal, crosses or touches itself: CGAL's function for the
 * faces of a mesh can crash then. */
std::vector<Triangle> trianglesOfConcave(const Mesh& mesh, const Corners& corners,
                                         const Vector& normal)
{
    Plane plane(Projection(toDirection(normal)));
    std::vector<Plane::Vertex_handle> vertices;
    for (const std::uint32_t corner : corners) {
        vertices.push_back(plane.insert(toPoint(mesh.vertices[corner])));
        vertices.back()->info() = corner;
    }
    if (plane.dimension() != 2 || plane.number_of_vertices() != corners.size())
        return {};
    try {
        for (std::size_t number = 0; number < vertices.size(); ++number)
            plane.insert_constraint(vertices[number], vertices[(number + 1) % vertices.size()]);
    } catch (const Plane::Intersection_of_constraints_exception&) {
        return {};
    }
    markOutside(plane);
    std::vector<Triangle> triangles;
    for (const Plane::Face_handle face : plane.finite_face_handles()) {
        if (!face->info())
            triangles.push_back(
                {face->vertex(0)->info(), face->vertex(1)->info(), face->vertex(2)->info()});
    }
    // Fewer with a corner on another side, which would open that to its neighbour.
    return triangles.size() == corners.size() - 2 ? triangles : std::vector<Triangle>();
}

std::vector<Triangle> trianglesOf(const Mesh& mesh, const Corners& corners)
{
    const std::vector<Triangle> simple = fan(corners);
    const Vector normal = areaNormal(mesh, simple);
    // Whether none of them lies outside the face, over another one.
    const bool fits = std::all_of(simple.begin(), simple.end(), [&](const Triangle& triangle) {
        return dot(areaNormal(mesh, triangle), normal) >= 0;
    });
    if (fits || !(length(normal) > 0))
        return simple;
    const std::vector<Triangle> triangles =
        askCgal("A face of the mesh could not be taken apart",
                [&] { return trianglesOfConcave(mesh, corners, normalized(normal)); });
    return triangles.empty() ? simple : triangles;
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
