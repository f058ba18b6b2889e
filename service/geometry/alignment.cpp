#include "alignment.h"

#include "cgal_kernel.h"
#include "eigen_vector.h"
#include "point_cloud.h"
#include "progress_part.h"

#include <CGAL/Orthogonal_k_neighbor_search.h>
#include <CGAL/Search_traits_3.h>
#include <CGAL/Search_traits_adapter.h>
#include <CGAL/compute_average_spacing.h>
#include <CGAL/pca_estimate_normals.h>
#include <CGAL/property_map.h>

#include <Eigen/Cholesky>
#include <Eigen/SVD>

#include <algorithm>
#include <string>
#include <utility>

namespace trovek::geometry {

namespace {

using OrientedPoint = std::pair<Kernel::Point_3, Kernel::Vector_3>;
using PointMap = CGAL::First_of_pair_property_map<OrientedPoint>;
using NormalMap = CGAL::Second_of_pair_property_map<OrientedPoint>;
using SearchTraits =
    CGAL::Search_traits_adapter<OrientedPoint, PointMap, CGAL::Search_traits_3<Kernel>>;
using NeighborSearch = CGAL::Orthogonal_k_neighbor_search<SearchTraits>;

constexpr std::size_t kFewestPairs = 3;
/** Of the longest extent: what is narrower is a line. */
constexpr double kNarrow = 1e-6;

constexpr std::size_t kFewestPoints = 30;
/** That many points of the moved cloud say as much as all. */
constexpr std::size_t kMostMoved = 10000;
constexpr std::size_t kMostTargets = 200000;
constexpr unsigned kNeighbors = 12;
/** Of the target's size: how far off a cloud that nearly fits may be. */
constexpr double kFarthest = 0.15;
/** Average spacings of the target: what lies farther off than this in the end is not of both. */
constexpr double kNearest = 3;
/** Of the moved cloud: what has to lie on the target in the end. */
constexpr double kOverlap = 0.2;
constexpr int kMostRounds = 60;
/** Average spacings: who gets less nearer has arrived; or, where noise lets pairs change again and
 * again, who does after the most rounds. */
constexpr double kArrived = 1e-3;
constexpr double kArrivedInNoise = 0.05;
/** Keeps the cloud from sliding where the shapes say nothing, as a ball in its socket. */
constexpr double kHold = 1e-4;

Eigen::Matrix3Xd matrixOf(const std::vector<Vector>& points)
{
    Eigen::Matrix3Xd matrix(3, Eigen::Index(points.size()));
    for (Eigen::Index column = 0; column < matrix.cols(); ++column)
        matrix.col(column) = toEigen(points[std::size_t(column)]);
    return matrix;
}

bool isOnOneLine(const Eigen::Matrix3Xd& points)
{
    const Eigen::Matrix3Xd centred = points.colwise() - points.rowwise().mean();
    const Eigen::VectorXd extents = Eigen::JacobiSVD<Eigen::Matrix3Xd>(centred).singularValues();
    return extents[1] <= kNarrow * extents[0];
}

bool areFinite(const std::vector<Vector>& points)
{
    return std::all_of(points.begin(), points.end(), isFinite);
}

/** Evenly taken from all of them. */
std::vector<std::size_t> sample(std::size_t count, std::size_t most)
{
    std::vector<std::size_t> numbers(std::min(count, most));
    for (std::size_t number = 0; number < numbers.size(); ++number)
        numbers[number] = number * count / numbers.size();
    return numbers;
}

/** What a cloud is moved onto. */
class Target
{
public:
    Target(const PointCloud& cloud, const ProgressPart& progress)
    {
        for (const std::size_t number : sample(cloud.positions.size(), kMostTargets))
            m_points.emplace_back(toPoint(cloud.positions[number]), Kernel::Vector_3(0, 0, 0));
        const auto parameters = CGAL::parameters::point_map(PointMap()).normal_map(NormalMap());
        m_spacing = CGAL::compute_average_spacing<CGAL::Sequential_tag>(
            m_points, kNeighbors, parameters.callback(progress.part(0, 0.4).callback()));
        // Which way they point does not matter here.
        CGAL::pca_estimate_normals<CGAL::Sequential_tag>(
            m_points, kNeighbors, parameters.callback(progress.part(0.4, 0.9).callback()));
        m_tree.insert(m_points.begin(), m_points.end());
        m_tree.build();
        progress.report(1);
    }

    /** Between neighbouring points. */
    double spacing() const { return m_spacing; }

    OrientedPoint nearest(const Eigen::Vector3d& point) const
    {
        return NeighborSearch(m_tree, {point.x(), point.y(), point.z()}, 1).begin()->first;
    }

private:
    std::vector<OrientedPoint> m_points;
    double m_spacing = 0;
    NeighborSearch::Tree m_tree;
};

/** A point of the moved cloud, and the target's surface nearest to it. */
struct Pair
{
    Eigen::Vector3d point;
    Eigen::Vector3d target;
    Eigen::Vector3d normal;
    /** Less for those far apart, so that none comes or goes all of a sudden. */
    double weight;

    double distance() const { return (point - target).norm(); }
    double height() const { return normal.dot(point - target); }
};

std::vector<Pair> pairs(const Eigen::Matrix3Xd& points, const Target& target, double farthest)
{
    std::vector<Pair> result;
    for (Eigen::Index column = 0; column < points.cols(); ++column) {
        const OrientedPoint nearest = target.nearest(points.col(column));
        Pair pair{points.col(column), toEigen(fromCgal(nearest.first)),
                  toEigen(fromCgal(nearest.second)), 1};
        const double part = pair.distance() / farthest;
        if (part > 1)
            continue;
        pair.weight = (1 - part * part) * (1 - part * part);
        result.push_back(pair);
    }
    return result;
}

/** What brings the points nearer to the planes of their targets. */
Eigen::Isometry3d step(const std::vector<Pair>& pairs)
{
    Eigen::Vector3d centre = Eigen::Vector3d::Zero();
    for (const Pair& pair : pairs)
        centre += pair.point / double(pairs.size());
    double size = 0;
    for (const Pair& pair : pairs)
        size = std::max(size, (pair.point - centre).norm());
    // Turns in units of the size, so that they count as much as moves.
    Eigen::Matrix<double, 6, 6> left = Eigen::Matrix<double, 6, 6>::Zero();
    Eigen::Matrix<double, 6, 1> right = Eigen::Matrix<double, 6, 1>::Zero();
    for (const Pair& pair : pairs) {
        Eigen::Matrix<double, 6, 1> row;
        row << (pair.point - centre).cross(pair.normal) / size, pair.normal;
        left += pair.weight * row * row.transpose();
        right -= pair.weight * row * pair.height();
    }
    left.diagonal().array() += kHold * left.trace();
    const Eigen::Matrix<double, 6, 1> solved = left.ldlt().solve(right);
    const Eigen::Vector3d turn = solved.head<3>() / size;
    const double radians = turn.norm();
    Eigen::Isometry3d result = Eigen::Isometry3d::Identity();
    result.translate(centre + solved.tail<3>());
    if (radians > 0)
        result.rotate(Eigen::AngleAxisd(radians, turn / radians));
    result.translate(-centre);
    return result;
}

/** How much nearer, root of the mean square; sliding along the surface does not count. */
double gain(const std::vector<Pair>& pairs, const Eigen::Isometry3d& move)
{
    double squares = 0;
    for (const Pair& pair : pairs) {
        const double nearer = pair.normal.dot(move * pair.point - pair.point);
        squares += nearer * nearer;
    }
    return std::sqrt(squares / double(pairs.size()));
}

/** A cloud on its way to a target. */
class MovedCloud
{
public:
    MovedCloud(const PointCloud& cloud, const Target& target)
        : m_target(target)
    {
        std::vector<Vector> positions;
        for (const std::size_t number : sample(cloud.positions.size(), kMostMoved))
            positions.push_back(cloud.positions[number]);
        m_points = matrixOf(positions);
        m_fewestPairs =
            std::max(kFewestPoints / 2, std::size_t(kOverlap * double(positions.size())));
    }

    const Eigen::Isometry3d& transform() const { return m_transform; }

    /** Moves to where the target's points are no farther off than that, and returns how much nearer
     * the last step was. */
    double approach(double farthest, double enough, const ProgressPart& progress)
    {
        double gained = HUGE_VAL;
        for (int round = 0; round < kMostRounds && gained > enough; ++round) {
            progress.report(double(round) / kMostRounds);
            const std::vector<Pair> near = pairs(m_points, m_target, farthest);
            if (near.size() < m_fewestPairs)
                throw GeometryError("The point clouds do not overlap: align them roughly first");
            const Eigen::Isometry3d move = step(near);
            gained = gain(near, move);
            m_points = move * m_points;
            m_transform = move * m_transform;
        }
        return gained;
    }

    /** Root of the mean square of the distances from the target's surface. */
    double error(double farthest) const
    {
        const std::vector<Pair> near = pairs(m_points, m_target, farthest);
        double squares = 0;
        for (const Pair& pair : near)
            squares += pair.height() * pair.height() / double(near.size());
        return std::sqrt(squares);
    }

private:
    const Target& m_target;
    Eigen::Matrix3Xd m_points;
    std::size_t m_fewestPairs;
    Eigen::Isometry3d m_transform = Eigen::Isometry3d::Identity();
};

Alignment align(const PointCloud& cloud, const PointCloud& targetCloud,
                const ProgressPart& progress)
{
    const Target target(targetCloud, progress.part(0, 0.4));
    MovedCloud moved(cloud, target);
    const Box box = boundingBox(targetCloud);
    const double size = length(box.maximum - box.minimum);
    const double nearest = std::max(kNearest * target.spacing(), kNarrow * size);
    // From far to near: in the end only what both clouds have counts. Far off, about right is
    // enough.
    double done = 0.4;
    for (double farthest = kFarthest * size; farthest > nearest; farthest /= 2) {
        moved.approach(farthest, 0.1 * target.spacing(), progress.part(done, (done + 0.8) / 2));
        done = (done + 0.8) / 2;
    }
    if (moved.approach(nearest, kArrived * target.spacing(), progress.part(done, 1)) >
        kArrivedInNoise * target.spacing())
        throw GeometryError("No position was found in which the point clouds fit");
    progress.report(1);
    return {fromEigen(moved.transform()), moved.error(nearest)};
}

void requireExtent(const PointCloud& cloud)
{
    if (cloud.positions.empty())
        throw EmptyError("The point cloud is empty");
    if (cloud.positions.size() < kFewestPoints)
        throw GeometryError("The point cloud has too few points: an alignment needs " +
                            std::to_string(kFewestPoints));
    const Box box = boundingBox(cloud);
    if (box.minimum == box.maximum)
        throw GeometryError("All points of the cloud are the same");
}

} // namespace

Alignment alignPairs(const std::vector<Vector>& points, const std::vector<Vector>& targets)
{
    if (points.size() != targets.size())
        throw GeometryError("There are " + std::to_string(points.size()) + " points, but " +
                            std::to_string(targets.size()) + " to move them onto");
    if (points.size() < kFewestPairs)
        throw GeometryError("An alignment needs three pairs of points");
    if (!areFinite(points) || !areFinite(targets))
        throw GeometryError("A point is not a number");
    const Eigen::Matrix3Xd from = matrixOf(points);
    const Eigen::Matrix3Xd to = matrixOf(targets);
    if (isOnOneLine(from) || isOnOneLine(to))
        throw GeometryError("The points lie on one line");
    Eigen::Isometry3d transform;
    transform.matrix() = Eigen::umeyama(from, to, false);
    const double squares = ((transform * from) - to).colwise().squaredNorm().mean();
    return {fromEigen(transform), std::sqrt(squares)};
}

Alignment alignClouds(const PointCloud& cloud, const PointCloud& target, const Progress& progress)
{
    requireExtent(cloud);
    requireExtent(target);
    const ProgressPart whole(progress);
    whole.report(0);
    return askCgal("The point clouds could not be aligned",
                   [&] { return align(cloud, target, whole); });
}

} // namespace trovek::geometry
