#include "pathscope/style_table.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace pathscope {
namespace {

/** Beyond so many only rounded styles are added, ... */
constexpr std::size_t kExactStyles = 49152;
/** ... and beyond so many only one for each feature and tool, for which the rest is kept. */
constexpr std::size_t kRoundedStyles =
    StyleTable::kCapacity - std::size_t{kFeatureCount} * kToolCount * 2;

std::uint32_t bitsOf(float value)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

std::uint64_t mixed(std::uint64_t hash, std::uint64_t value)
{
    hash = (hash ^ value) * 0x9e3779b97f4a7c15U;
    return hash ^ (hash >> 32);
}

std::uint64_t hashOf(const MoveStyle& style)
{
    std::uint64_t hash = static_cast<std::uint64_t>(style.feature) << 8 | style.tool;
    hash = mixed(hash, std::uint64_t(bitsOf(style.width)) << 32 | bitsOf(style.height));
    hash = mixed(hash, std::uint64_t(bitsOf(style.speed)) << 32 | bitsOf(style.celsius));
    return mixed(hash, bitsOf(style.fan));
}

bool areEqual(const MoveStyle& a, const MoveStyle& b)
{
    return a.feature == b.feature && a.tool == b.tool && a.width == b.width &&
           a.height == b.height && a.speed == b.speed && a.celsius == b.celsius && a.fan == b.fan;
}

float roundedTo(float value, float step)
{
    return std::round(value / step) * step;
}

} // namespace

StyleTable::StyleTable()
    : m_slots(1024)
{}

std::uint32_t StyleTable::indexOf(const MoveStyle& style)
{
    std::int64_t index = findOrAdd(style, kExactStyles);
    if (index >= 0)
        return static_cast<std::uint32_t>(index);
    MoveStyle rounded = style;
    // Not down to nothing, which would say that it does not extrude.
    rounded.width = style.width > 0 ? std::max(0.05F, roundedTo(style.width, 0.05F)) : 0;
    rounded.height = roundedTo(style.height, 0.05F);
    rounded.speed = roundedTo(style.speed, 5);
    rounded.celsius = roundedTo(style.celsius, 5);
    rounded.fan = roundedTo(style.fan, 0.25F);
    index = findOrAdd(rounded, kRoundedStyles);
    return index >= 0 ? static_cast<std::uint32_t>(index) : ofSameFeatureAndTool(style);
}

std::int64_t StyleTable::findOrAdd(const MoveStyle& style, std::size_t limit)
{
    const std::size_t last = m_slots.size() - 1;
    std::size_t slot = hashOf(style) & last;
    while (m_slots[slot] != 0) {
        const std::uint32_t index = m_slots[slot] - 1;
        if (areEqual(m_styles[index], style))
            return index;
        slot = (slot + 1) & last;
    }
    if (m_styles.size() >= limit)
        return -1;
    m_styles.push_back(style);
    m_slots[slot] = static_cast<std::uint32_t>(m_styles.size());
    if (m_styles.size() * 2 > m_slots.size())
        rehash(m_slots.size() * 2);
    return static_cast<std::int64_t>(m_styles.size()) - 1;
}

std::uint32_t StyleTable::ofSameFeatureAndTool(const MoveStyle& style)
{
    const std::size_t extrudes = style.width > 0 ? 1 : 0;
    std::uint32_t& kept =
        m_lastResort[(static_cast<std::size_t>(style.feature) * kToolCount + style.tool) * 2 +
                     extrudes];
    if (kept == 0) {
        m_styles.push_back(style);
        kept = static_cast<std::uint32_t>(m_styles.size());
    }
    return kept - 1;
}

void StyleTable::rehash(std::size_t slots)
{
    m_slots.assign(slots, 0);
    for (std::size_t i = 0; i < m_styles.size(); ++i) {
        std::size_t slot = hashOf(m_styles[i]) & (slots - 1);
        while (m_slots[slot] != 0)
            slot = (slot + 1) & (slots - 1);
        m_slots[slot] = static_cast<std::uint32_t>(i + 1);
    }
}

} // namespace pathscope
