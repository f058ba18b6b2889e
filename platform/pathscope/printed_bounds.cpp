#include "pathscope/printed_bounds.h"

#include <algorithm>
#include <limits>

namespace pathscope {

namespace {

FeatureSet allBut(std::initializer_list<Feature> others)
{
    FeatureSet features;
    features.fill(true);
    for (const Feature other : others)
        features[static_cast<std::size_t>(other)] = false;
    return features;
}

struct Reach
{
    bool counts = false;
    float sideways = 0;
    float down = 0;
};

class Walk
{
public:
    void add(const PathPoint& point, const Reach& reach)
    {
        m_min[0] = std::min(m_min[0], point.x - reach.sideways);
        m_min[1] = std::min(m_min[1], point.y - reach.sideways);
        m_min[2] = std::min(m_min[2], point.z - reach.down);
        m_max[0] = std::max(m_max[0], point.x + reach.sideways);
        m_max[1] = std::max(m_max[1], point.y + reach.sideways);
        m_max[2] = std::max(m_max[2], point.z);
    }

    Bounds bounds() const
    {
        Bounds bounds;
        bounds.valid = m_min[0] <= m_max[0];
        for (std::size_t axis = 0; bounds.valid && axis < 3; ++axis) {
            bounds.min[axis] = m_min[axis];
            bounds.max[axis] = m_max[axis];
        }
        return bounds;
    }

private:
    static constexpr float kLimit = std::numeric_limits<float>::max();
    std::array<float, 3> m_min = {kLimit, kLimit, kLimit};
    std::array<float, 3> m_max = {-kLimit, -kLimit, -kLimit};
};

} // namespace

FeatureSet shownOnPictures()
{
    return allBut({Feature::Skirt, Feature::Brim, Feature::PrimeTower, Feature::Custom});
}

FeatureSet partOfTheObject()
{
    return allBut({Feature::Skirt, Feature::Brim, Feature::PrimeTower, Feature::Custom,
                   Feature::Support, Feature::SupportInterface, Feature::Raft});
}

Bounds printedBounds(const Toolpaths& toolpaths, const FeatureSet& features)
{
    std::vector<Reach> reaches;
    reaches.reserve(toolpaths.styles.size());
    for (const MoveStyle& style : toolpaths.styles) {
        reaches.push_back(
            {features[static_cast<std::size_t>(style.feature)], style.width / 2, style.height});
    }

    Walk walk;
    std::uint64_t segment = 0;
    for (const auto& chunk : toolpaths.chunks) {
        const std::vector<PathPoint>& points = chunk->points;
        for (std::size_t i = 1; i < points.size() && segment < toolpaths.segmentCount;
             ++i, ++segment) {
            if (points[i].kind() != MoveKind::Extrude)
                continue;
            const Reach& reach = reaches[points[i].style()];
            if (!reach.counts)
                continue;
            walk.add(points[i - 1], reach);
            walk.add(points[i], reach);
        }
    }
    const Bounds bounds = walk.bounds();
    return bounds.valid ? bounds : toolpaths.bounds;
}

} // namespace pathscope
