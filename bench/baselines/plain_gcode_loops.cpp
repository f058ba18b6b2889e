#include "plain_gcode_loops.h"

#include <charconv>
#include <cstring>

namespace baseline {
namespace {

const char* lineEnd(const char* begin, const char* end)
{
    const void* const found = std::memchr(begin, '\n', static_cast<std::size_t>(end - begin));
    return found != nullptr ? static_cast<const char*>(found) : end;
}

/** The present values of the words of a move. */
struct Words
{
    double x = 0;
    double y = 0;
    double z = 0;
    double e = 0;
    double f = 0;
};

void readWords(const char* p, const char* end, Words* words)
{
    while (p < end) {
        double* value = nullptr;
        switch (*p++) {
        case ' ':
            continue;
        case 'X':
            value = &words->x;
            break;
        case 'Y':
            value = &words->y;
            break;
        case 'Z':
            value = &words->z;
            break;
        case 'E':
            value = &words->e;
            break;
        case 'F':
            value = &words->f;
            break;
        default:
            return;
        }
        p = std::from_chars(p, end, *value).ptr;
    }
}

} // namespace

std::uint64_t countLines(std::string_view text)
{
    std::uint64_t lines = 0;
    const char* const end = text.data() + text.size();
    for (const char* p = text.data(); p < end; p = lineEnd(p, end) + 1)
        ++lines;
    return lines;
}

std::vector<Point> readMoves(std::string_view text)
{
    std::vector<Point> points;
    points.reserve(text.size() / 28);
    Words words;
    const char* const end = text.data() + text.size();
    for (const char* p = text.data(); p < end;) {
        const char* const next = lineEnd(p, end);
        if (next - p > 2 && p[0] == 'G' && (p[1] == '0' || p[1] == '1') && p[2] == ' ') {
            readWords(p + 3, next, &words);
            points.push_back({static_cast<float>(words.x), static_cast<float>(words.y),
                              static_cast<float>(words.z), static_cast<float>(words.e)});
        }
        p = next + 1;
    }
    return points;
}

} // namespace baseline
