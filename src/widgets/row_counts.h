#pragma once

#include <cstddef>
#include <vector>

namespace trovek {

/**
 * How many rows each block of a growing list takes, summed without walking the list.
 *
 * A binary indexed tree: what is kept at i is the sum of the blocks from i down to the next index
 * that has fewer trailing one bits, so that every operation touches at most one number a bit.
 */
class RowCounts
{
public:
    void append(int rows)
    {
        const std::size_t end = m_sums.size() + 1;
        for (std::size_t step = 1; step < lowestBit(end); step *= 2)
            rows += m_sums[end - step - 1];
        m_sums.push_back(rows);
    }

    void grow(std::size_t block, int rows)
    {
        for (std::size_t end = block + 1; end <= m_sums.size(); end += lowestBit(end))
            m_sums[end - 1] += rows;
    }

    /** The rows of all blocks before this one; of all when it is the number of blocks. */
    int before(std::size_t block) const
    {
        int rows = 0;
        for (std::size_t end = block; end > 0; end -= lowestBit(end))
            rows += m_sums[end - 1];
        return rows;
    }

    /** The rows of all blocks after this one. */
    int after(std::size_t block) const { return before(m_sums.size()) - before(block + 1); }

private:
    static std::size_t lowestBit(std::size_t number) { return number & (~number + 1); }

    std::vector<int> m_sums;
};

} // namespace trovek
