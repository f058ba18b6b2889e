#pragma once

#include "pathscope/toolpaths.h"

#include <array>
#include <cstdint>
#include <vector>

namespace pathscope {

/**
 * Gives equal styles one index, in the order in which they first come.
 *
 * There are never more than kCapacity: that many fit into the smallest buffer texture that OpenGL
 * 3.3 promises. A file with more gets similar ones instead.
 */
class StyleTable
{
public:
    static constexpr std::size_t kCapacity = 65536;

    StyleTable();

    /** The index of the style, or of one much like it. */
    std::uint32_t indexOf(const MoveStyle& style);

    const std::vector<MoveStyle>& styles() const { return m_styles; }

private:
    /** The index of a style; with none like it the table grows up to a limit. -1 when full. */
    std::int64_t findOrAdd(const MoveStyle& style, std::size_t limit);
    std::uint32_t ofSameFeatureAndTool(const MoveStyle& style);
    void rehash(std::size_t slots);

    std::vector<MoveStyle> m_styles;
    /** Open addressing: an index + 1, or 0. */
    std::vector<std::uint32_t> m_slots;
    /** By feature and tool and whether it extrudes; the index + 1. */
    std::array<std::uint32_t, std::size_t{kFeatureCount} * kToolCount * 2> m_lastResort{};
};

} // namespace pathscope
