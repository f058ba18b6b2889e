#include "baselines/plain_gcode_loops.h"
#include "bench_data.h"
#include "goal_table.h"

#include <pathscope/gcode_parser.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <string>

using namespace pathscope;

namespace {

constexpr int kRuns = 7;

/** Bytes in a second of processor time, by name of what was measured. */
std::map<std::string, double>& speeds()
{
    static std::map<std::string, double> all;
    return all;
}

/**
 * Runs something over so many bytes a few times and keeps its best speed.
 *
 * Processor time and the best run, since a row is compared with others that ran at other times.
 */
void measure(benchmark::State& state, const std::string& name, double bytes,
             const std::function<void()>& run)
{
    double best = std::numeric_limits<double>::infinity();
    for (auto _ : state) {
        const std::clock_t start = std::clock();
        run();
        best = std::min(best, double(std::clock() - start) / CLOCKS_PER_SEC);
    }
    speeds()[name] = bytes / best;
    state.counters["MB/s"] = bytes / best / 1e6;
}

double ratio(const std::string& name, const std::string& to)
{
    return speeds()[name] / speeds()[to];
}

std::string textOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void measureBaseline(benchmark::State& state, const std::string& name,
                     void (*run)(std::string_view text))
{
    const std::string text = textOf(benchFile("large"));
    if (text.empty())
        return state.SkipWithError("there is no test set");
    measure(state, name, double(text.size()), [&] { run(text); });
}

void lineScan(benchmark::State& state)
{
    measureBaseline(state, "scan", [](std::string_view text) {
        benchmark::DoNotOptimize(baseline::countLines(text));
    });
    state.SetLabel("baseline: line ends of large by memchr");
}

void fromChars(benchmark::State& state)
{
    measureBaseline(state, "plain", [](std::string_view text) {
        benchmark::DoNotOptimize(baseline::readMoves(text).data());
    });
    state.SetLabel("baseline: G0 and G1 of large by std::from_chars");
}

void parseFile(benchmark::State& state, const std::string& name)
{
    const std::string path = benchFile(name);
    if (path.empty())
        return state.SkipWithError("there is no test set");
    std::shared_ptr<const Toolpaths> paths = parseGCodeFile(path);
    const auto bytes = double(paths->bytes);
    std::size_t held = paths->layers.size() * sizeof(Layer) +
                       paths->styles.size() * (sizeof(MoveStyle) + sizeof(Amount));
    for (const std::shared_ptr<const PointChunk>& chunk : paths->chunks)
        held += chunk->points.capacity() * sizeof(PathPoint);
    state.counters["bytes_a_move"] = double(held) / double(paths->segmentCount);
    paths.reset();
    measure(state, name, bytes, [&] { benchmark::DoNotOptimize(parseGCodeFile(path)->bytes); });
}

void large(benchmark::State& state)
{
    parseFile(state, "large");
    state.counters["of_plain"] = ratio("large", "plain");
    state.counters["of_scan"] = ratio("large", "scan");
    state.SetLabel("goal: of_plain 1.15 (aim 1.5), of_scan 0.13 (aim 0.17), 24 bytes a move");
}

void otherFile(benchmark::State& state, const char* name)
{
    parseFile(state, name);
    state.counters["of_large"] = ratio(name, "large");
    state.SetLabel("goal: of_large 0.8 (aim 0.9)");
}

/** The lines of medium, as other slicers would write them. */
std::string rewritten(const std::function<void(const std::string& line, std::string* out)>& rewrite)
{
    const std::string text = textOf(benchFile("medium"));
    std::string out;
    out.reserve(text.size() * 3 / 2);
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        rewrite(text.substr(begin, end - begin), &out);
        begin = end + 1;
    }
    return out;
}

bool isMove(const std::string& line)
{
    return line.rfind("G1 X", 0) == 0;
}

/** "\r\n" and no line that tells widths, heights or layers. */
void bare(const std::string& line, std::string* out)
{
    if (line.rfind(';', 0) != 0)
        *out += line + "\r\n";
}

/** The feed first, as in "G1 F1800 X10 Y10 E1". */
void feedFirst(const std::string& line, std::string* out)
{
    *out += isMove(line) ? "G1 F1800" + line.substr(2) : line;
    *out += '\n';
}

/** A comment behind every move. */
void verbose(const std::string& line, std::string* out)
{
    *out += isMove(line) ? line + " ; perimeter\n" : line + '\n';
}

/** Every move an arc. */
void arcs(const std::string& line, std::string* out)
{
    *out += isMove(line) ? "G2" + line.substr(2) + " R40\n" : line + '\n';
}

/** Line numbers and checksums. */
void numbered(const std::string& line, std::string* out)
{
    static int number = 0;
    *out += "N" + std::to_string(++number) + " " + line + "*71\n";
}

void otherText(benchmark::State& state, const char* name,
               void (*rewrite)(const std::string&, std::string*), const char* label)
{
    const std::string text = rewritten(rewrite);
    if (text.empty())
        return state.SkipWithError("there is no test set");
    measure(state, name, double(text.size()),
            [&] { benchmark::DoNotOptimize(parseGCode(text)->bytes); });
    state.counters["of_large"] = ratio(name, "large");
    state.SetLabel(label);
}

} // namespace

int main(int argc, char** argv)
{
    const auto add = [](const char* name, auto function, auto... arguments) {
        benchmark::RegisterBenchmark(name, function, arguments...)
            ->Iterations(kRuns)
            ->Unit(benchmark::kMillisecond);
    };
    add("lineScan", lineScan);
    add("fromChars", fromChars);
    add("large", large);
    for (const char* const name : {"small", "medium", "dual"})
        add(name, otherFile, name);
    add("feed first", otherText, "feed first", feedFirst, "goal: of_large 0.8 (aim 0.9)");
    add("verbose", otherText, "verbose", verbose, "goal: of_large 0.8 (aim 0.9)");
    add("bare, CR LF", otherText, "bare, CR LF", bare, "goal: of_large 0.8 (aim 0.9)");
    add("line numbers", otherText, "line numbers", numbered, "goal: of_large 0.8 (aim 0.9)");
    add("arcs", otherText, "arcs", arcs, "for comparison: many chords a line");
    return runWithBaselines(argc, argv, {{"large", "fromChars"}});
}
