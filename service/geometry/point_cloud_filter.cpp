#include "point_cloud_filter.h"

#include "cgal_kernel.h"
#include "progress_part.h"

#include <CGAL/compute_average_spacing.h>
#include <CGAL/property_map.h>
#include <CGAL/remove_outliers.h>

#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <utility>

namespace trovek::geometry {

namespace {

using NumberedPoint = std::pair<Kernel::Point_3, std::size_t>;
using PointMap = CGAL::First_of_pair_property_map<NumberedPoint>;

/** How many of the nearest points tell how dense a cloud is at a point. */
constexpr unsigned kNeighbors = 12;
/** Times the average distance of neighbours. At the corner of a surface it is about twice that. */
constexpr double kOutlierFactor = 3;
constexpr std::size_t kPointsPerReport = 10000;
/** Millimetres: of smaller ones there are more than a number counts, as far out as points may lie.
 */
constexpr double kSmallestCell = 1e-6;

template <typename Item>
std::vector<Item> picked(const std::vector<Item>& items, const std::vector<std::size_t>& numbers)
{
    std::vector<Item> result;
    if (items.empty())
        return result;
    result.reserve(numbers.size());
    for (const std::size_t number : numbers)
        result.push_back(items[number]);
    return result;
}

PointCloud picked(const PointCloud& cloud, const std::vector<std::size_t>& numbers)
{
    return {picked(cloud.positions, numbers), picked(cloud.normals, numbers),
            picked(cloud.colors, numbers)};
}

void requirePoints(const PointCloud& cloud)
{
    if (cloud.positions.empty())
        throw EmptyError("The point cloud is empty");
}

/**
 * Points of which no two are closer than a distance. CGAL's own grid keeps one point of
 * each cell, and with it pairs that are close on both sides of a cell's border.
 */
class SparsePoints
{
public:
    SparsePoints(const std::vector<Vector>& positions, double distance)
        : m_positions(positions)
        , m_distance(distance)
        , m_cellSize(std::max(distance, kSmallestCell))
    {}

    bool hasCloser(const Vector& position) const
    {
        const Vector cell = cellOf(position);
        for (const double x : {-1.0, 0.0, 1.0}) {
            for (const double y : {-1.0, 0.0, 1.0}) {
                for (const double z : {-1.0, 0.0, 1.0}) {
                    if (hasCloserInCell(position, cell + Vector{x, y, z}))
                        return true;
                }
            }
        }
        return false;
    }

    void add(std::size_t number)
    {
        const auto [entry, isNew] =
            m_newestInCell.try_emplace(cellOf(m_positions[number]), m_numbers.size());
        m_olderInCell.push_back(isNew ? kNone : entry->second);
        entry->second = m_numbers.size();
        m_numbers.push_back(number);
    }

    const std::vector<std::size_t>& numbers() const { return m_numbers; }

private:
    static constexpr std::size_t kNone = SIZE_MAX;

    struct CellHash
    {
        std::size_t operator()(const Vector& cell) const
        {
            const std::hash<double> hash;
            return (hash(cell.x) * 31 + hash(cell.y)) * 31 + hash(cell.z);
        }
    };

    // Whole numbers, but possibly more of them than an integer of 32 bits has.
    Vector cellOf(const Vector& position) const
    {
        return {std::floor(position.x / m_cellSize), std::floor(position.y / m_cellSize),
                std::floor(position.z / m_cellSize)};
    }

    bool hasCloserInCell(const Vector& position, const Vector& cell) const
    {
        const auto newest = m_newestInCell.find(cell);
        std::size_t entry = newest == m_newestInCell.end() ? kNone : newest->second;
        for (; entry != kNone; entry = m_olderInCell[entry]) {
            if (length(m_positions[m_numbers[entry]] - position) < m_distance)
                return true;
        }
        return false;
    }

    const std::vector<Vector>& m_positions;
    const double m_distance;
    const double m_cellSize;
    std::vector<std::size_t> m_numbers;
    std::unordered_map<Vector, std::size_t, CellHash> m_newestInCell;
    std::vector<std::size_t> m_olderInCell;
};

} // namespace

PointCloud cropped(const PointCloud& cloud, const Box& box)
{
    requirePoints(cloud);
    if (!isFinite(box.minimum) || !isFinite(box.maximum))
        throw GeometryError("A corner of the box is not a number");
    if (box.minimum.x > box.maximum.x || box.minimum.y > box.maximum.y ||
        box.minimum.z > box.maximum.z)
        throw GeometryError("The box's minimum lies above its maximum");
    std::vector<std::size_t> kept;
    for (std::size_t number = 0; number < cloud.positions.size(); ++number) {
        if (box.contains(cloud.positions[number]))
            kept.push_back(number);
    }
    if (kept.empty())
        throw EmptyError("No point of the cloud lies in the box");
    return picked(cloud, kept);
}

PointCloud withoutOutliers(const PointCloud& cloud, const Progress& progress)
{
    requirePoints(cloud);
    if (cloud.positions.size() <= kNeighbors)
        return cloud;
    return askCgal("The outliers of the point cloud could not be found", [&] {
        std::vector<NumberedPoint> points;
        points.reserve(cloud.positions.size());
        for (const Vector& position : cloud.positions)
            points.emplace_back(toPoint(position), points.size());
        const ProgressPart whole(progress);
        const auto parameters = CGAL::parameters::point_map(PointMap());
        const double spacing = CGAL::compute_average_spacing<CGAL::Sequential_tag>(
            points, kNeighbors, parameters.callback(whole.part(0, 0.5).callback()));
        // Nothing lies farther off where all neighbours lie at one place.
        if (!(spacing > 0))
            return cloud;
        const auto end = CGAL::remove_outliers<CGAL::Sequential_tag>(
            points, kNeighbors,
            parameters.threshold_percent(100)
                .threshold_distance(kOutlierFactor * spacing)
                .callback(whole.part(0.5, 1).callback()));
        std::vector<std::size_t> kept;
        for (auto point = points.begin(); point != end; ++point)
            kept.push_back(point->second);
        if (kept.empty())
            throw EmptyError("No point of the cloud has as many others near it as a surface");
        // They come out by their distances.
        std::sort(kept.begin(), kept.end());
        whole.report(1);
        return picked(cloud, kept);
    });
}

PointCloud thinned(const PointCloud& cloud, double gridSize, const Progress& progress)
{
    requirePoints(cloud);
    if (!std::isfinite(gridSize) || gridSize <= 0)
        throw GeometryError("The grid size must be above zero");
    const ProgressPart whole(progress);
    const std::size_t count = cloud.positions.size();
    SparsePoints points(cloud.positions, gridSize);
    for (std::size_t number = 0; number < count; ++number) {
        if (number % kPointsPerReport == 0)
            whole.report(double(number) / double(count));
        if (!points.hasCloser(cloud.positions[number]))
            points.add(number);
    }
    whole.report(1);
    return picked(cloud, points.numbers());
}

} // namespace trovek::geometry
