#include "coarse_paths.h"

#include <algorithm>
#include <cmath>

namespace pathscope {

namespace {

/** Millimetres that a straightened path may lie beside the true one, for each layer of height. */
constexpr float kTolerance = 0.04F;
constexpr float kMaxTolerance = 0.4F;

bool isSeenFromOutside(Feature feature)
{
    switch (feature) {
    case Feature::InnerWall:
    case Feature::SparseInfill:
    case Feature::SolidInfill:
    case Feature::Bridge:
    case Feature::GapFill:
        return false;
    default:
        return true;
    }
}

bool extrudes(const PathPoint& point)
{
    return point.kind() == MoveKind::Extrude;
}

std::uint32_t asTravel(std::uint32_t style)
{
    return std::uint32_t(MoveKind::Travel) << 28 | style;
}

float squaredLength(const PathPoint& from, const PathPoint& to)
{
    const float x = to.x - from.x;
    const float y = to.y - from.y;
    const float z = to.z - from.z;
    return x * x + y * y + z * z;
}

/** How far a point lies from the line through two others, squared. */
float squaredDistance(const PathPoint& point, const PathPoint& from, const PathPoint& to)
{
    const float length = squaredLength(from, to);
    const float toPoint = squaredLength(from, point);
    if (length <= 0)
        return toPoint;
    const float along = (point.x - from.x) * (to.x - from.x) +
                        (point.y - from.y) * (to.y - from.y) + (point.z - from.z) * (to.z - from.z);
    return toPoint - along * along / length;
}

/** Straightens one path after the other into a list of points. */
class Straightener
{
public:
    Straightener(std::vector<PathPoint>& points, float tolerance)
        : m_points(points)
        , m_begin(points.size())
        , m_squaredTolerance(tolerance * tolerance)
    {}

    void begin(const PathPoint& start, std::uint32_t style)
    {
        finish();
        if (m_points.size() == m_begin || squaredLength(m_points.back(), start) > 0) {
            m_points.push_back(start);
            m_points.back().kindAndStyle = asTravel(style);
        }
    }

    void add(const PathPoint& point)
    {
        if (m_hasLast) {
            const PathPoint& anchor = m_points.back();
            const bool straight = m_last.kindAndStyle == point.kindAndStyle &&
                                  m_skipped < kMostSkipped &&
                                  squaredDistance(m_last, anchor, point) <= m_squaredTolerance &&
                                  squaredDistance(m_middle, anchor, point) <= m_squaredTolerance;
            if (straight) {
                ++m_skipped;
                if (m_skipped % 2 == 1)
                    m_middle = m_last;
            } else {
                finish();
            }
        }
        if (!m_hasLast)
            m_middle = point;
        m_last = point;
        m_hasLast = true;
    }

    void finish()
    {
        if (m_hasLast)
            m_points.push_back(m_last);
        m_hasLast = false;
        m_skipped = 0;
    }

private:
    /** Only the last point and one in the middle are compared, so the run must not get long. */
    static constexpr int kMostSkipped = 12;

    std::vector<PathPoint>& m_points;
    const std::size_t m_begin;
    const float m_squaredTolerance;
    PathPoint m_last;
    PathPoint m_middle;
    bool m_hasLast = false;
    int m_skipped = 0;
};

} // namespace

CoarsePaths::CoarsePaths(std::size_t maxPoints)
    : m_maxPoints(maxPoints)
{}

void CoarsePaths::clear()
{
    m_stride = 1;
    m_layers = 0;
    m_points.clear();
    m_kept.clear();
    ++m_revision;
}

void CoarsePaths::append(const Toolpaths& toolpaths, std::size_t layers, std::uint64_t maxSegments)
{
    std::uint64_t looked = 0;
    while (m_layers < layers && looked < maxSegments) {
        // The last layer of each group is kept: made higher, it reaches down over the others.
        if (m_layers % m_stride == m_stride - 1) {
            looked += toolpaths.layers[m_layers].segments.count();
            take(toolpaths, m_layers);
        }
        ++m_layers;
        while (m_points.size() > m_maxPoints && m_kept.size() > 1)
            thinOut();
    }
}

void CoarsePaths::take(const Toolpaths& toolpaths, std::size_t layer)
{
    ++m_revision;
    m_kept.push_back({layer, m_points.size()});
    const float tolerance = std::min(kTolerance * float(m_stride), kMaxTolerance);
    Straightener paths(m_points, tolerance);
    const SegmentRange range = toolpaths.layers[layer].segments;
    bool inPath = false;
    for (std::uint64_t segment = range.first; segment < range.end; ++segment) {
        const PathPoint& end = toolpaths.endOf(segment);
        const bool wanted =
            extrudes(end) && isSeenFromOutside(toolpaths.styles[end.style()].feature);
        if (wanted && !inPath)
            paths.begin(toolpaths.startOf(segment), end.style());
        if (wanted)
            paths.add(end);
        inPath = wanted;
    }
    paths.finish();
}

void CoarsePaths::thinOut()
{
    ++m_revision;
    m_stride *= 2;
    std::vector<KeptLayer> kept;
    std::size_t size = 0;
    for (std::size_t i = 0; i < m_kept.size(); ++i) {
        if (m_kept[i].layer % m_stride != m_stride - 1)
            continue;
        const std::size_t begin = m_kept[i].begin;
        const std::size_t end = i + 1 < m_kept.size() ? m_kept[i + 1].begin : m_points.size();
        kept.push_back({m_kept[i].layer, size});
        std::copy(m_points.begin() + std::ptrdiff_t(begin), m_points.begin() + std::ptrdiff_t(end),
                  m_points.begin() + std::ptrdiff_t(size));
        size += end - begin;
    }
    m_points.resize(size);
    m_kept = std::move(kept);
}

CoarsePaths::Part CoarsePaths::part(std::size_t first, std::size_t last) const
{
    const auto isBelow = [](const KeptLayer& kept, std::size_t layer) {
        return kept.layer < layer;
    };
    const auto begin = std::lower_bound(m_kept.begin(), m_kept.end(), first, isBelow);
    const auto end = std::lower_bound(begin, m_kept.end(), last + 1, isBelow);
    if (begin == end)
        return {};
    const std::size_t stop = end == m_kept.end() ? m_points.size() : end->begin;
    // Segment n ends at point n + 1, and the one that leads to a part's first point is none of it.
    return {{begin->begin, stop == 0 ? 0 : stop - 1}, long(std::prev(end)->layer)};
}

} // namespace pathscope
