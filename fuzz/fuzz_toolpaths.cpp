#include "fuzz_target.h"

#include <pathscope/gcode_parser.h>

#include <algorithm>
#include <cmath>
#include <string>

using namespace pathscope;

namespace {

void checkLayers(const Toolpaths& paths)
{
    std::uint64_t next = 0;
    double seconds = 0;
    for (const Layer& layer : paths.layers) {
        fuzz::require(layer.segments.first == next, "layers follow each other without a gap");
        fuzz::require(layer.segments.end > next, "a layer has segments");
        fuzz::require(std::isfinite(layer.z) && layer.height >= 0, "a layer lies somewhere");
        next = layer.segments.end;
        seconds += layer.amount.seconds;
    }
    fuzz::require(std::abs(seconds - paths.total.seconds) <= 1e-6 * (1 + paths.total.seconds),
                  "layers take the time of the whole");
    fuzz::require(next == paths.segmentCount, "layers cover all segments");
}

void check(const Toolpaths& paths)
{
    checkLayers(paths);
    fuzz::require(paths.styles.size() == paths.styleAmounts.size(), "a style has its amount");
    for (std::uint64_t i = 0; i < paths.segmentCount; ++i) {
        const PathPoint& p = paths.endOf(i);
        fuzz::require(std::abs(p.x) <= 1e6F && std::abs(p.y) <= 1e6F && std::abs(p.z) <= 1e6F,
                      "points can be drawn");
        fuzz::require(p.kind() <= MoveKind::ToolChange && p.style() < paths.styles.size(),
                      "a segment has a kind and a style");
        const bool extrudes = p.kind() == MoveKind::Extrude;
        fuzz::require(extrudes == (paths.styles[p.style()].width > 0),
                      "what extrudes has a width, and nothing else has");
    }
    fuzz::require(paths.extrudingCount + paths.travelCount + paths.retractionCount +
                          paths.toolChangeCount ==
                      paths.segmentCount,
                  "every segment is counted once");
    fuzz::require(paths.bounds.valid == (paths.extrudingCount > 0),
                  "there are bounds when something is extruded");
    fuzz::require(std::isfinite(paths.total.seconds) && std::isfinite(paths.total.filament),
                  "totals are numbers");
}

bool areSame(const Toolpaths& a, const Toolpaths& b)
{
    if (a.segmentCount != b.segmentCount || a.layers.size() != b.layers.size() ||
        a.styles.size() != b.styles.size() || a.skipped.lines != b.skipped.lines ||
        a.skipped.examples != b.skipped.examples || a.thumbnails.size() != b.thumbnails.size() ||
        a.generator != b.generator || a.total.seconds != b.total.seconds)
        return false;
    for (std::uint64_t i = 0; i < a.segmentCount; ++i) {
        const PathPoint& p = a.endOf(i);
        const PathPoint& q = b.endOf(i);
        if (p.x != q.x || p.y != q.y || p.z != q.z || p.kindAndStyle != q.kindAndStyle)
            return false;
    }
    return true;
}

/** A blank before each line: it means the same, but never goes the parser's fast way. */
std::string indented(std::string_view text)
{
    std::string out;
    bool lineBegins = true;
    for (const char c : text) {
        if (lineBegins && c != '\n' && c != '\r')
            out += ' ';
        out += c;
        lineBegins = c == '\n' || c == '\r';
    }
    return out;
}

} // namespace

/** A file; the first byte says in how large blocks it is read. */
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view text = fuzz::textOf(data + 1, size - 1);
    ParseOptions options;
    options.blockBytes = text.size();
    const auto whole = parseGCode(text, options);
    check(*whole);
    fuzz::require(whole->complete && whole->bytes == text.size(), "everything is read");
    options.blockBytes = std::max<std::size_t>(1, data[0]);
    fuzz::require(areSame(*whole, *parseGCode(text, options)), "blocks do not matter");
    const auto slow = parseGCode(indented(text), options);
    fuzz::require(whole->segmentCount == slow->segmentCount &&
                      whole->total.seconds == slow->total.seconds &&
                      whole->skipped.lines == slow->skipped.lines,
                  "the fast way leads where the slow one does");
    return 0;
}
