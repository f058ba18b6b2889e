#include "plane_cut.h"

#include "mesh.h"
#include "progress_part.h"
#include "surface_mesh.h"

#include <CGAL/Polygon_mesh_processing/clip.h>
#include <CGAL/Polygon_mesh_processing/measure.h>
#include <CGAL/Polygon_mesh_processing/orient_polygon_soup.h>
#include <CGAL/Polygon_mesh_processing/orientation.h>
#include <CGAL/Polygon_mesh_processing/polygon_soup_to_polygon_mesh.h>
#include <CGAL/Polygon_mesh_processing/repair_polygon_soup.h>
#include <CGAL/Polygon_mesh_processing/stitch_borders.h>

#include <algorithm>
#include <string>
#include <vector>

namespace trovek::geometry {

namespace {

namespace pmp = CGAL::Polygon_mesh_processing;

/** Of the mesh's size: what is closer to a plane lies on it. */
constexpr double kOnPlane = 1e-9;
/** Of the mesh's size: how far a cut is moved that would leave parts hanging together by an edge.
 */
constexpr double kNudge = 1e-7;

/** As a mesh that CGAL can walk along, whatever the order of its triangles. */
SurfaceMesh closedSurface(const Mesh& mesh)
{
    std::vector<Kernel::Point_3> points;
    points.reserve(mesh.vertices.size());
    for (const Vector& vertex : mesh.vertices)
        points.push_back(toPoint(vertex));
    std::vector<std::vector<std::size_t>> triangles;
    triangles.reserve(mesh.triangles.size());
    for (const auto& [a, b, c] : mesh.triangles)
        triangles.push_back({a, b, c});
    pmp::repair_polygon_soup(points, triangles);
    pmp::orient_polygon_soup(points, triangles);
    SurfaceMesh surface;
    pmp::polygon_soup_to_polygon_mesh(points, triangles, surface);
    pmp::stitch_borders(surface);
    if (!CGAL::is_closed(surface)) {
        const auto edges = surface.edges();
        const auto open = std::count_if(edges.begin(), edges.end(), [&surface](const auto edge) {
            return surface.is_border(edge);
        });
        throw GeometryError("The mesh is not closed: " + std::to_string(open) +
                            (open == 1 ? " edge is open" : " edges are open"));
    }
    if (pmp::volume(surface) < 0)
        pmp::reverse_face_orientations(surface);
    return surface;
}

/** Behind the plane, in units of the normal. */
struct Range
{
    double lowest;
    double highest;
};

Range heights(const Mesh& mesh, const Vector& point, const Vector& normal)
{
    Range range{HUGE_VAL, -HUGE_VAL};
    for (const std::array<std::uint32_t, 3>& triangle : mesh.triangles) {
        for (const std::uint32_t vertex : triangle) {
            const double height = dot(mesh.vertices[vertex] - point, normal);
            range = {std::min(range.lowest, height), std::max(range.highest, height)};
        }
    }
    return range;
}

bool clip(SurfaceMesh& surface, const Vector& point, const Vector& normal)
{
    try {
        return pmp::clip(surface, Kernel::Plane_3(toPoint(point), toDirection(normal)),
                         CGAL::parameters::clip_volume(true).throw_on_self_intersection(true));
    } catch (const pmp::Corefinement::Self_intersection_exception&) {
        throw GeometryError("The mesh intersects itself where it is cut");
    }
}

} // namespace

Mesh cutByPlane(const Mesh& mesh, const Vector& point, const Vector& normal,
                const Progress& progress)
{
    if (mesh.triangles.empty())
        throw EmptyError("The mesh is empty");
    const double normalLength = length(normal);
    if (!isFinite(point) || !std::isfinite(normalLength))
        throw GeometryError("The plane of the cut is not a number");
    if (normalLength == 0)
        throw GeometryError("The plane of the cut has no direction");
    const Vector upward = normalized(normal);
    const Box box = boundingBox(mesh);
    const double size = length(box.maximum - box.minimum);
    const Range range = heights(mesh, point, upward);
    if (range.lowest >= -kOnPlane * size)
        throw EmptyError("Nothing of the mesh lies behind the plane of the cut");
    if (range.highest <= kOnPlane * size)
        return mesh;

    const ProgressPart whole(progress);
    whole.report(0);
    return askCgal("The mesh could not be cut", [&] {
        const SurfaceMesh surface = closedSurface(mesh);
        whole.report(0.3);
        for (const double nudge : {0.0, 1.0, -1.0}) {
            SurfaceMesh rest = surface;
            if (!clip(rest, point + nudge * kNudge * size * upward, upward))
                continue;
            whole.report(0.9);
            Mesh result = fromCgal(rest);
            if (!isClosed(result))
                continue;
            whole.report(1);
            return result;
        }
        throw GeometryError("The mesh could not be cut");
    });
}

} // namespace trovek::geometry
