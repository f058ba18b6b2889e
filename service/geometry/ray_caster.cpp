#include "ray_caster.h"

#include "cgal_kernel.h"
#include "mesh.h"

#include <CGAL/AABB_traits.h>
#include <CGAL/AABB_tree.h>
#include <CGAL/AABB_triangle_primitive.h>

#include <vector>

namespace trovek::geometry {

namespace {

using Triangles = std::vector<Kernel::Triangle_3>;
using Primitive = CGAL::AABB_triangle_primitive<Kernel, Triangles::const_iterator>;
using Tree = CGAL::AABB_tree<CGAL::AABB_traits<Kernel, Primitive>>;

/** What is left out at both ends of a line of sight, where it may touch the mesh. */
constexpr double kTouching = 1e-6;

} // namespace

class RayCaster::Private
{
public:
    explicit Private(const Mesh& mesh)
    {
        for (std::uint32_t number = 0; number < mesh.triangles.size(); ++number) {
            const auto& [a, b, c] = mesh.triangles[number];
            const Kernel::Triangle_3 triangle(toPoint(mesh.vertices[a]), toPoint(mesh.vertices[b]),
                                              toPoint(mesh.vertices[c]));
            if (triangle.is_degenerate())
                continue;
            triangles.push_back(triangle);
            numbers.push_back(number);
        }
        if (triangles.empty())
            throw EmptyError("The mesh is empty");
        tree.insert(triangles.cbegin(), triangles.cend());
        // Now: a tree builds itself when it is asked first, by whichever thread that is.
        tree.build();
    }

    Triangles triangles;
    /** Of the triangles in the mesh. */
    std::vector<std::uint32_t> numbers;
    Tree tree;
};

RayCaster::RayCaster(const Mesh& mesh)
    : d(askCgal("The mesh could not be prepared for rays",
                [&mesh] { return std::make_unique<Private>(mesh); }))
{}

RayCaster::~RayCaster() = default;

std::optional<RayCaster::Hit> RayCaster::firstHit(const Vector& origin,
                                                  const Vector& direction) const
{
    const Kernel::Point_3 from = toPoint(origin);
    const auto met = d->tree.first_intersection(Kernel::Ray_3(from, toDirection(direction)));
    if (!met)
        return std::nullopt;
    Hit hit;
    if (const auto* point = boost::get<Kernel::Point_3>(&met->first)) {
        hit.point = fromCgal(*point);
    } else {
        // Along a triangle, edge on.
        const auto& segment = boost::get<Kernel::Segment_3>(met->first);
        hit.point =
            fromCgal(CGAL::has_smaller_distance_to_point(from, segment.source(), segment.target())
                         ? segment.source()
                         : segment.target());
    }
    const Kernel::Triangle_3& triangle = *met->second;
    hit.normal = normalized(
        fromCgal(CGAL::cross_product(triangle[1] - triangle[0], triangle[2] - triangle[0])));
    hit.distance = length(hit.point - origin);
    hit.triangle = d->numbers[std::size_t(met->second - d->triangles.cbegin())];
    return hit;
}

bool RayCaster::isVisible(const Vector& point, const Vector& from) const
{
    const Vector end = kTouching * (from - point);
    const Kernel::Segment_3 line(toPoint(from - end), toPoint(point + end));
    return line.is_degenerate() || !d->tree.do_intersect(line);
}

} // namespace trovek::geometry
