#include "reconstruction.h"

#include "eigen_vector.h"
#include "even_density.h"
#include "mesh.h"
#include "point_cloud.h"
#include "progress_part.h"
#include "surface_mesh.h"

#include <CGAL/IO/facets_in_complex_2_to_triangle_mesh.h>
#include <CGAL/Implicit_surface_3.h>
#include <CGAL/Poisson_reconstruction_function.h>
#include <CGAL/Polygon_mesh_processing/orientation.h>
#include <CGAL/Surface_mesh_default_triangulation_3.h>
#include <CGAL/compute_average_spacing.h>
#include <CGAL/jet_estimate_normals.h>
#include <CGAL/make_surface_mesh.h>
#include <CGAL/mst_orient_normals.h>
#include <CGAL/property_map.h>

#include <Eigen/Eigenvalues>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace trovek::geometry {

namespace {

/** A surface of fewer would tell nothing. */
constexpr std::size_t kFewestPoints = 30;
/** More cost minutes, and what they add is far below a scanner's noise. */
constexpr std::size_t kMostPoints = 100000;
/** Of the nearest points: what tells the direction of the surface, and how dense the points are. */
constexpr unsigned kNormalNeighbors = 18;
constexpr unsigned kSpacingNeighbors = 6;
/** Of the cloud's length: thinner ones lie in a plane. */
constexpr double kFlat = 1e-5;
/** Triangles: the smallest angle; size and distance from the surface in average spacings. */
constexpr double kDegrees = 20;
constexpr double kSize = 3;
constexpr double kDistance = 0.25;
/** Points that the mesher begins at: so many at most, and for as many points at least; and how far
 * from the cloud's the surface may be there, in average spacings. */
constexpr std::size_t kSeeds = 300;
constexpr std::size_t kPointsPerSeed = 50;
constexpr double kSeedReach = 3;
/** About how often the mesher looks at the function for each point, and how often it may: it goes
 * on for ever about a surface that is none. */
constexpr std::size_t kExpectedLooks = 40;
constexpr std::size_t kMostLooks = 2000;
constexpr std::size_t kFewestLooks = 2000000;

const char* const kNoSurface = "No closed surface was found around the points";

using OrientedPoint = std::pair<Kernel::Point_3, Kernel::Vector_3>;
using OrientedPoints = std::vector<OrientedPoint>;
using PointMap = CGAL::First_of_pair_property_map<OrientedPoint>;
using NormalMap = CGAL::Second_of_pair_property_map<OrientedPoint>;
using PoissonFunction = CGAL::Poisson_reconstruction_function<Kernel>;
using Triangulation = CGAL::Surface_mesh_default_triangulation_3;

auto maps()
{
    return CGAL::parameters::point_map(PointMap()).normal_map(NormalMap());
}

void requireThickness(const std::vector<Vector>& positions)
{
    Eigen::Vector3d mean = Eigen::Vector3d::Zero();
    for (const Vector& position : positions)
        mean += toEigen(position) / double(positions.size());
    Eigen::Matrix3d spread = Eigen::Matrix3d::Zero();
    for (const Vector& position : positions) {
        const Eigen::Vector3d from = toEigen(position) - mean;
        spread += from * from.transpose();
    }
    const Eigen::Vector3d squares =
        Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(spread).eigenvalues();
    if (squares[0] <= kFlat * kFlat * squares[2])
        throw GeometryError("The points of the cloud lie in one plane");
}

double averageSpacing(const OrientedPoints& points, const ProgressPart& progress)
{
    return CGAL::compute_average_spacing<CGAL::Sequential_tag>(
        points, kSpacingNeighbors, maps().callback(progress.callback()));
}

OrientedPoints pointsOf(const PointCloud& cloud)
{
    OrientedPoints points;
    points.reserve(cloud.positions.size());
    for (std::size_t number = 0; number < cloud.positions.size(); ++number) {
        points.emplace_back(toPoint(cloud.positions[number]),
                            cloud.normals.empty() ? Kernel::Vector_3(0, 0, 0)
                                                  : toDirection(cloud.normals[number]));
    }
    return points;
}

/** Out of the surface. Neighbours agree, and the highest of those that hang together points up. */
void estimateNormals(OrientedPoints& points, const ProgressPart& progress)
{
    CGAL::jet_estimate_normals<CGAL::Sequential_tag>(
        points, kNormalNeighbors, maps().callback(progress.part(0, 0.7).callback()));
    // Parts that do not hang together are oriented one after the other; tiny ones are noise.
    const std::size_t fewest = std::max<std::size_t>(kNormalNeighbors, points.size() / 100);
    OrientedPoints oriented;
    while (points.size() > fewest) {
        progress.report(0.7);
        const auto rest = CGAL::mst_orient_normals(points, kNormalNeighbors, maps());
        if (rest == points.begin())
            break;
        oriented.insert(oriented.end(), points.begin(), rest);
        points.erase(points.begin(), rest);
    }
    points = std::move(oriented);
    progress.report(1);
}

/** Counts the points that become part of the function. */
struct InsertionWatch
{
    void before_insertion() const
    {
        if (++*inserted % 256 == 0)
            progress->report(double(*inserted) / double(expected));
    }

    std::size_t* inserted;
    std::size_t expected;
    const ProgressPart* progress;
};

/** What is below zero inside the surface; may end the mesher, which asks it all the time. */
class WatchedFunction
{
public:
    using FT = Kernel::FT;
    using Point = Kernel::Point_3;
    using Geom_traits = Kernel;

    WatchedFunction(const PoissonFunction& function, std::size_t points, std::size_t& looks,
                    const ProgressPart& progress)
        : m_function(&function)
        , m_points(points)
        , m_looks(&looks)
        , m_progress(&progress)
    {}

    FT operator()(const Point& point) const
    {
        if (++*m_looks % 4096 == 0) {
            m_progress->report(double(*m_looks) / double(m_points * kExpectedLooks));
            if (*m_looks > std::max(kFewestLooks, m_points * kMostLooks))
                throw GeometryError(kNoSurface);
        }
        return (*m_function)(point);
    }

private:
    const PoissonFunction* m_function;
    std::size_t m_points;
    std::size_t* m_looks;
    const ProgressPart* m_progress;
};

void computeFunction(PoissonFunction& function, std::size_t points, const ProgressPart& progress)
{
    using Matrix = CGAL::Eigen_sparse_symmetric_matrix<double>::EigenType;
    using Solver = CGAL::Eigen_solver_traits<Eigen::ConjugateGradient<Matrix>>;
    std::size_t inserted = 0;
    if (!function.compute_implicit_function(Solver(), InsertionWatch{&inserted, points, &progress}))
        throw GeometryError(kNoSurface);
}

/** Points on the surface for the mesher to begin at; by itself it would find the largest part only.
 */
template <typename Surface>
void insertSeeds(Triangulation& triangulation, const Surface& surface, const OrientedPoints& points,
                 double spacing)
{
    using Oracle = typename CGAL::Surface_mesh_traits_generator_3<Surface>::type;
    const Oracle oracle;
    const std::size_t step = std::max(kPointsPerSeed, points.size() / kSeeds);
    for (std::size_t number = 0; number < points.size(); number += step) {
        const auto& [point, normal] = points[number];
        const Kernel::Vector_3 across = kSeedReach * spacing * normal;
        const Kernel::Segment_3 segment(point - across, point + across);
        const CGAL::Object met = oracle.intersect_3_object()(surface, segment);
        if (const auto* const seed = CGAL::object_cast<Triangulation::Point>(&met))
            triangulation.insert(*seed);
    }
}

SurfaceMesh meshOf(const PoissonFunction& function, const OrientedPoints& points, double spacing,
                   const ProgressPart& progress)
{
    const double radius = 5 * std::sqrt(function.bounding_sphere().squared_radius());
    std::size_t looks = 0;
    const CGAL::Implicit_surface_3<Kernel, WatchedFunction> surface(
        WatchedFunction(function, points.size(), looks, progress),
        Kernel::Sphere_3(function.get_inner_point(), radius * radius),
        kDistance * spacing / 1000 / radius);
    Triangulation triangulation;
    insertSeeds(triangulation, surface, points, spacing);
    CGAL::Surface_mesh_complex_2_in_triangulation_3<Triangulation> facets(triangulation);
    CGAL::make_surface_mesh(facets, surface,
                            CGAL::Surface_mesh_default_criteria_3<Triangulation>(
                                kDegrees, kSize * spacing, kDistance * spacing),
                            CGAL::Manifold_tag());
    SurfaceMesh mesh;
    CGAL::facets_in_complex_2_to_triangle_mesh(facets, mesh);
    return mesh;
}

/** CGAL keeps them by where they lie in memory, which differs each time. */
void orderTriangles(Mesh& mesh)
{
    for (std::array<std::uint32_t, 3>& triangle : mesh.triangles)
        std::rotate(triangle.begin(), std::min_element(triangle.begin(), triangle.end()),
                    triangle.end());
    std::sort(mesh.triangles.begin(), mesh.triangles.end());
}

} // namespace

Mesh reconstructed(const PointCloud& cloud, const Progress& progress)
{
    if (cloud.positions.empty())
        throw EmptyError("The point cloud is empty");
    if (cloud.positions.size() < kFewestPoints)
        throw GeometryError("The point cloud has too few points: a surface needs " +
                            std::to_string(kFewestPoints));
    const ProgressPart whole(progress);
    whole.report(0);
    return askCgal(kNoSurface, [&] {
        requireThickness(cloud.positions);
        OrientedPoints points =
            pointsOf(evenlyThinned(cloud, kNormalNeighbors, kMostPoints, whole.part(0, 0.15)));
        if (points.size() < kFewestPoints)
            throw GeometryError("Too many points of the cloud are the same");
        if (cloud.normals.empty())
            estimateNormals(points, whole.part(0.15, 0.25));
        if (points.size() < kFewestPoints)
            throw GeometryError(kNoSurface);
        const double spacing = averageSpacing(points, whole.part(0.25, 0.3));
        PoissonFunction function(points.begin(), points.end(), PointMap(), NormalMap());
        computeFunction(function, points.size(), whole.part(0.3, 0.7));
        SurfaceMesh surface = meshOf(function, points, spacing, whole.part(0.7, 0.99));
        if (surface.is_empty() || !CGAL::is_closed(surface))
            throw GeometryError(kNoSurface);
        // Each part comes out either way.
        CGAL::Polygon_mesh_processing::orient_to_bound_a_volume(surface);
        Mesh mesh = fromCgal(surface);
        orderTriangles(mesh);
        whole.report(1);
        return mesh;
    });
}

} // namespace trovek::geometry
