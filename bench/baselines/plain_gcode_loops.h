#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

/** What the simplest programs take for a file, as a measure for the parser. */
namespace baseline {

struct Point
{
    float x = 0;
    float y = 0;
    float z = 0;
    float e = 0;
};

/** Lines found by memchr(). */
std::uint64_t countLines(std::string_view text);

/** The end points of G0 and G1, numbers read by std::from_chars, and nothing else understood. */
std::vector<Point> readMoves(std::string_view text);

} // namespace baseline
