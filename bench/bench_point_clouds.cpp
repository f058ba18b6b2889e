#include "goal_table.h"

#include <geometry/point_cloud.h>
#include <geometry/point_cloud_file.h>

#include <benchmark/benchmark.h>

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using namespace trovek::geometry;

namespace {

constexpr int kRuns = 7;
constexpr std::size_t kPoints = 1000000;

const PointCloud& scan()
{
    static const PointCloud& cloud = *new PointCloud([] {
        PointCloud made;
        for (std::size_t point = 0; point < kPoints; ++point) {
            const double turn = double(point) * 0.001;
            made.positions.push_back({30 * std::cos(turn), 30 * std::sin(turn), turn / 7});
        }
        return made;
    }());
    return cloud;
}

const std::string& path()
{
    static const QTemporaryDir& folder = *new QTemporaryDir;
    static const std::string& name =
        *new std::string(folder.filePath(QStringLiteral("scan.ply")).toStdString());
    return name;
}

/** As many as a saved cloud has, header and all. */
const std::vector<char>& bytes()
{
    static const std::vector<char>& all = *new std::vector<char>([] {
        savePointCloud(scan(), path(), PointCloudFormat::Ply);
        return std::size_t(QFile(QString::fromStdString(path())).size());
    }());
    return all;
}

void measure(benchmark::State& state, const char* label, const std::function<void()>& run)
{
    // Once before: the first write finds no pages, the first read none in memory.
    run();
    std::vector<double> seconds;
    for (int number = 0; number < kRuns; ++number) {
        const auto start = std::chrono::steady_clock::now();
        run();
        seconds.push_back(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    std::nth_element(seconds.begin(), seconds.begin() + kRuns / 2, seconds.end());
    for (auto _ : state)
        state.SetIterationTime(seconds[kRuns / 2]);
    state.counters["MB"] = double(bytes().size()) / 1e6;
    state.SetLabel(label);
}

void writeBare(benchmark::State& state)
{
    const std::vector<char>& all = bytes();
    measure(state, "baseline: fwrite, then to the disk, as what is saved", [&] {
        std::FILE* const file = std::fopen(path().c_str(), "wb");
        std::fwrite(all.data(), 1, all.size(), file);
        std::fflush(file);
#ifdef Q_OS_UNIX
        ::fsync(fileno(file));
#endif
        std::fclose(file);
    });
}

void save(benchmark::State& state)
{
    measure(state, "goal: 3 x", [] { savePointCloud(scan(), path(), PointCloudFormat::Ply); });
}

void readBare(benchmark::State& state)
{
    savePointCloud(scan(), path(), PointCloudFormat::Ply);
    const std::size_t size = bytes().size();
    // Whoever loads has the file's bytes and the numbers; finding fresh pages for them takes most
    // of the time.
    measure(state, "baseline: fread, then copied into fresh numbers", [size] {
        const std::unique_ptr<char[]> read(new char[size]);
        std::FILE* const file = std::fopen(path().c_str(), "rb");
        benchmark::DoNotOptimize(std::fread(read.get(), 1, size, file));
        std::fclose(file);
        const std::unique_ptr<double[]> numbers(new double[size / sizeof(double)]);
        std::memcpy(numbers.get(), read.get(), size / sizeof(double) * sizeof(double));
        benchmark::DoNotOptimize(numbers.get());
    });
}

void load(benchmark::State& state)
{
    savePointCloud(scan(), path(), PointCloudFormat::Ply);
    measure(state, "goal: 2 x",
            [] { benchmark::DoNotOptimize(loadPointCloud(path()).positions.data()); });
}

} // namespace

int main(int argc, char** argv)
{
    const auto add = [](const char* name, void (*function)(benchmark::State&)) {
        benchmark::RegisterBenchmark(name, function)
            ->Iterations(1)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    };
    add("writeBare", writeBare);
    add("save", save);
    add("readBare", readBare);
    add("load", load);
    return runWithBaselines(argc, argv, {{"save", "writeBare"}, {"load", "readBare"}});
}
