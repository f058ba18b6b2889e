#include "placement.h"

#include "mesh.h"
#include "progress_part.h"
#include "surface_mesh.h"

#include <CGAL/boost/graph/helpers.h>
#include <CGAL/convex_hull_3.h>

#include <algorithm>
#include <optional>
#include <set>
#include <vector>

namespace trovek::geometry {

namespace {

/** Triangles of the hull that differ less make one side: what was scanned is never quite flat. */
constexpr double kFlatRadians = 0.02;
/** Of a side's size: those that differ less are of one size. */
constexpr double kSameSize = 1e-3;
constexpr Vector kDown{0, 0, -1};

const char* const kFlat = "The mesh is flat: it cannot stand";

/** Of the volume; of the hull where the mesh encloses none. */
Vector centreOfMass(const Mesh& mesh)
{
    const Vector apex = mesh.vertices.front();
    double total = 0;
    Vector sum;
    for (const auto& [a, b, c] : mesh.triangles) {
        const Vector toA = mesh.vertices[a] - apex;
        const Vector toB = mesh.vertices[b] - apex;
        const Vector toC = mesh.vertices[c] - apex;
        const double volume = dot(toA, cross(toB, toC));
        total += volume;
        sum = sum + volume / 4 * (toA + toB + toC);
    }
    return apex + 1 / total * sum;
}

SurfaceMesh convexHull(const Mesh& mesh)
{
    std::vector<Kernel::Point_3> points;
    points.reserve(mesh.triangles.size() * 3);
    for (const std::array<std::uint32_t, 3>& triangle : mesh.triangles) {
        for (const std::uint32_t vertex : triangle)
            points.push_back(toPoint(mesh.vertices[vertex]));
    }
    SurfaceMesh hull;
    CGAL::convex_hull_3(points.begin(), points.end(), hull);
    // Of points in a plane or on a line CGAL makes what has no inside.
    if (hull.num_faces() < 4 || !CGAL::is_closed(hull))
        throw GeometryError(kFlat);
    return hull;
}

/** On which the mesh may lie. */
struct Side
{
    double area = 0;
    Vector normal;
};

class Sides
{
public:
    Sides(const SurfaceMesh& hull, const Vector& centre)
        : m_hull(hull)
        , m_centre(centre)
        , m_size(0)
        , m_seenAt(hull.num_faces(), 0)
    {
        for (const SurfaceMesh::Face_index face : hull.faces()) {
            const auto edge = hull.halfedge(face);
            const Vector corner = fromCgal(hull.point(hull.source(edge)));
            const Vector along = fromCgal(hull.point(hull.target(edge))) - corner;
            const Vector across = fromCgal(hull.point(hull.target(hull.next(edge)))) - corner;
            const Vector normal = cross(along, across);
            const double size = length(normal);
            m_normals.push_back(size > 0 ? 1 / size * normal : Vector());
            m_areas.push_back(size / 2);
            m_size = std::max(m_size, length(corner - centre));
        }
    }

    /** The largest that the mesh does not tip over from; among equals the one that points most
     * downward. */
    Side best(const ProgressPart& progress)
    {
        std::vector<Side> stable;
        std::size_t done = 0;
        for (const SurfaceMesh::Face_index face : m_hull.faces()) {
            progress.report(double(done++) / double(m_areas.size()));
            if (const std::optional<Side> side = sideAround(face))
                stable.push_back(*side);
        }
        if (stable.empty())
            return {0, nearest()};
        const auto smaller = [](const Side& a, const Side& b) {
            return a.area < b.area;
        };
        const double largest = std::max_element(stable.begin(), stable.end(), smaller)->area;
        stable.erase(
            std::remove_if(stable.begin(), stable.end(),
                           [&](const Side& side) { return side.area < (1 - kSameSize) * largest; }),
            stable.end());
        return *std::max_element(stable.begin(), stable.end(), [](const Side& a, const Side& b) {
            return dot(a.normal, kDown) < dot(b.normal, kDown);
        });
    }

private:
    /** What lies nearest to the centre of mass: nothing tips over from there. */
    Vector nearest() const
    {
        double least = HUGE_VAL;
        Vector normal = kDown;
        for (const SurfaceMesh::Face_index face : m_hull.faces()) {
            const Vector corner = fromCgal(m_hull.point(m_hull.source(m_hull.halfedge(face))));
            const double distance = dot(corner - m_centre, m_normals[face]);
            if (m_areas[face] > 0 && distance < least) {
                least = distance;
                normal = m_normals[face];
            }
        }
        return normal;
    }

    /** The faces around one that point where it does; none when the mesh would tip over. */
    std::optional<Side> sideAround(SurfaceMesh::Face_index seed)
    {
        if (m_areas[seed] <= 0)
            return std::nullopt;
        ++m_round;
        const double flat = std::cos(kFlatRadians);
        std::vector<SurfaceMesh::Face_index> faces{seed};
        m_seenAt[seed] = m_round;
        std::vector<SurfaceMesh::Halfedge_index> border;
        Side side;
        Vector sum;
        for (std::size_t next = 0; next < faces.size(); ++next) {
            const SurfaceMesh::Face_index face = faces[next];
            side.area += m_areas[face];
            sum = sum + m_areas[face] * m_normals[face];
            for (const auto edge : m_hull.halfedges_around_face(m_hull.halfedge(face))) {
                const SurfaceMesh::Face_index other = m_hull.face(m_hull.opposite(edge));
                if (m_seenAt[other] == m_round)
                    continue;
                if (m_areas[other] > 0 && dot(m_normals[other], m_normals[seed]) < flat) {
                    border.push_back(edge);
                    continue;
                }
                m_seenAt[other] = m_round;
                faces.push_back(other);
            }
        }
        side.normal = normalized(sum);
        for (const SurfaceMesh::Halfedge_index edge : border) {
            const Vector from = fromCgal(m_hull.point(m_hull.source(edge)));
            const Vector along = fromCgal(m_hull.point(m_hull.target(edge))) - from;
            const Vector outward = cross(along, side.normal);
            if (dot(m_centre - from, outward) > -1e-9 * m_size * length(outward))
                return std::nullopt;
        }
        return side;
    }

    const SurfaceMesh& m_hull;
    const Vector m_centre;
    double m_size;
    std::vector<Vector> m_normals;
    std::vector<double> m_areas;
    /** The round in which a face was met last. */
    std::vector<std::size_t> m_seenAt;
    std::size_t m_round = 0;
};

} // namespace

RigidTransform placementOnPlatform(const Mesh& mesh, const Progress& progress)
{
    if (mesh.triangles.empty())
        throw EmptyError("The mesh is empty");
    const ProgressPart whole(progress);
    whole.report(0);
    return askCgal("No side was found that the mesh can stand on", [&] {
        const SurfaceMesh hull = convexHull(mesh);
        whole.report(0.4);
        const Mesh solid = isClosed(mesh) && volume(mesh) != 0 ? mesh : fromCgal(hull);
        const Vector centre = centreOfMass(solid);
        if (!isFinite(centre))
            throw GeometryError(kFlat);
        const Side side = Sides(hull, centre).best(whole.part(0.5, 0.9));
        // Turned about the centre of mass.
        const RigidTransform turn = RigidTransform::turning(side.normal, kDown);
        RigidTransform result = RigidTransform::moving(centre - turn.point(centre)) * turn;
        double lowest = HUGE_VAL;
        for (const SurfaceMesh::Vertex_index vertex : hull.vertices())
            lowest = std::min(lowest, result.point(fromCgal(hull.point(vertex))).z);
        result.translation.z -= lowest;
        whole.report(1);
        return result;
    });
}

Mesh placedOnPlatform(const Mesh& mesh, const Progress& progress)
{
    Mesh result = transformed(mesh, placementOnPlatform(mesh, progress));
    const double lowest = boundingBox(result).minimum.z;
    for (Vector& vertex : result.vertices)
        vertex.z -= lowest;
    return result;
}

} // namespace trovek::geometry
