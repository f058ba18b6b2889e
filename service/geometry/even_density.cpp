#include "even_density.h"

#include "cgal_kernel.h"
#include "eigen_vector.h"
#include "point_cloud_filter.h"
#include "progress_part.h"

#include <CGAL/Orthogonal_k_neighbor_search.h>
#include <CGAL/Search_traits_3.h>
#include <CGAL/Search_traits_adapter.h>
#include <CGAL/property_map.h>

#include <Eigen/Eigenvalues>
#include <boost/pending/disjoint_sets.hpp>

#include <algorithm>
#include <numeric>
#include <utility>

namespace trovek::geometry {

namespace {

using NumberedPoint = std::pair<Kernel::Point_3, std::size_t>;
using PointMap = CGAL::First_of_pair_property_map<NumberedPoint>;
using SearchTraits =
    CGAL::Search_traits_adapter<NumberedPoint, PointMap, CGAL::Search_traits_3<Kernel>>;
using NeighborSearch = CGAL::Orthogonal_k_neighbor_search<SearchTraits>;

/** Of the cloud's size: points that are closer are one. */
constexpr double kSame = 1e-7;
/** Squares of the extents across and along: less is a line. All around it would be 1. */
constexpr double kLine = 0.1;
/** Of all points: so many may have neighbours on a line, or be in parts smaller than that. */
constexpr double kOdd = 0.1;
constexpr double kCoarser = 1.4;
/** The average distance of neighbours: a grid of that part leaves about as many points. */
constexpr double kGridInSpacings = 0.5;
/** Fewer say nothing about a shape. */
constexpr std::size_t kFewest = 300;
constexpr std::size_t kPointsPerReport = 1024;

struct Surroundings
{
    /** Between neighbours, on average. */
    double spacing = 0;
    bool areEven = false;
};

bool isLine(const std::vector<Eigen::Vector3d>& points)
{
    Eigen::Vector3d mean = Eigen::Vector3d::Zero();
    for (const Eigen::Vector3d& point : points)
        mean += point / double(points.size());
    Eigen::Matrix3d spread = Eigen::Matrix3d::Zero();
    for (const Eigen::Vector3d& point : points)
        spread += (point - mean) * (point - mean).transpose();
    Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver;
    solver.computeDirect(spread, Eigen::EigenvaluesOnly);
    return solver.eigenvalues()[1] < kLine * solver.eigenvalues()[2];
}

/** How many points are in parts of the cloud that hang together, but are no more than a tenth. */
std::size_t looseCount(boost::disjoint_sets_with_storage<>& parts, std::size_t count)
{
    std::vector<std::size_t> sizes(count, 0);
    for (std::size_t number = 0; number < count; ++number)
        ++sizes[parts.find_set(number)];
    return std::accumulate(sizes.begin(), sizes.end(), std::size_t(0),
                           [count](std::size_t sum, std::size_t size) {
                               return double(size) < kOdd * double(count) ? sum + size : sum;
                           });
}

Surroundings surroundings(const std::vector<Vector>& positions, unsigned neighbors,
                          const ProgressPart& progress)
{
    std::vector<NumberedPoint> points;
    points.reserve(positions.size());
    for (const Vector& position : positions)
        points.emplace_back(toPoint(position), points.size());
    NeighborSearch::Tree tree(points.begin(), points.end());
    tree.build();
    boost::disjoint_sets_with_storage<> parts(points.size());
    for (std::size_t number = 0; number < points.size(); ++number)
        parts.make_set(number);
    Surroundings result;
    std::size_t lines = 0;
    std::vector<Eigen::Vector3d> around;
    for (const auto& [point, number] : points) {
        if (number % kPointsPerReport == 0)
            progress.report(double(number) / double(points.size()));
        around.clear();
        // The point itself is the nearest.
        const NeighborSearch search(tree, point, neighbors + 1);
        for (const auto& [neighbor, squaredDistance] : search) {
            around.push_back(toEigen(fromCgal(neighbor.first)));
            parts.union_set(number, neighbor.second);
            result.spacing +=
                std::sqrt(squaredDistance) / double(neighbors) / double(points.size());
        }
        lines += isLine(around) ? 1 : 0;
    }
    const std::size_t loose = looseCount(parts, points.size());
    result.areEven = double(std::max(lines, loose)) <= kOdd * double(points.size());
    return result;
}

/** Every so-manieth of the points, the most at most. */
std::vector<Vector> sample(const std::vector<Vector>& positions, std::size_t most)
{
    std::vector<Vector> result;
    for (std::size_t number = 0; number < most; ++number)
        result.push_back(positions[number * positions.size() / most]);
    return result;
}

} // namespace

PointCloud evenlyThinned(const PointCloud& cloud, unsigned neighbors, std::size_t most,
                         const ProgressPart& progress)
{
    const Box box = boundingBox(cloud);
    const ProgressPart thinning = progress.part(0, 0.1);
    PointCloud fine =
        thinned(cloud, kSame * length(box.maximum - box.minimum), thinning.callback());
    double done = 0.1;
    const auto part = [&progress, &done] {
        const double begin = done;
        done = (1 + done) / 2;
        return progress.part(begin, done);
    };
    if (fine.positions.size() > most) {
        const std::vector<Vector> few = sample(fine.positions, most);
        fine = thinned(fine, kGridInSpacings * surroundings(few, neighbors, part()).spacing);
    }
    PointCloud rest = fine;
    double gridSize = 0;
    while (rest.positions.size() >= kFewest) {
        const Surroundings now = surroundings(rest.positions, neighbors, part());
        if (now.areEven)
            return rest;
        gridSize = std::max(kCoarser * gridSize, kGridInSpacings * now.spacing);
        rest = thinned(fine, gridSize);
    }
    return fine;
}

} // namespace trovek::geometry
