#include "pathscope/toolpaths.h"

#include <algorithm>
#include <cmath>

namespace pathscope {

std::size_t Toolpaths::layerOf(std::uint64_t segment) const
{
    const auto after = std::upper_bound(
        layers.begin(), layers.end(), segment,
        [](std::uint64_t s, const Layer& layer) { return s < layer.segments.end; });
    return static_cast<std::size_t>(after - layers.begin());
}

std::size_t Toolpaths::layerAt(float z) const
{
    std::size_t nearest = 0;
    for (std::size_t i = 1; i < layers.size(); ++i) {
        if (std::abs(layers[i].z - z) < std::abs(layers[nearest].z - z))
            nearest = i;
    }
    return nearest;
}

} // namespace pathscope
