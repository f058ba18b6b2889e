#include "goal_table.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <utility>
#include <vector>

namespace {

/** A row a benchmark; its label says the goal. */
class GoalTable : public benchmark::BenchmarkReporter
{
public:
    explicit GoalTable(std::map<std::string, std::string> baselines)
        : m_baselines(std::move(baselines))
    {}

    bool ReportContext(const Context&) override
    {
        std::printf("%-40s %12s %8s  %s\n", "", "time", "ratio", "goal");
        return true;
    }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            print(run);
        std::fflush(stdout);
    }

private:
    void print(const Run& run)
    {
        const std::string name =
            run.run_name.function_name + (run.run_name.args.empty() ? "" : "/" + run.run_name.args);
        const double time = run.GetAdjustedRealTime();
        m_times[name] = time;
        std::printf("%-40s %9.3f %-2s %8s  %s%s\n", name.c_str(), time,
                    benchmark::GetTimeUnitString(run.time_unit), ratio(name, time).c_str(),
                    run.report_label.c_str(), counters(run).c_str());
    }

    std::string ratio(const std::string& name, double time) const
    {
        const auto baseline = m_baselines.find(name);
        if (baseline == m_baselines.end() || m_times.count(baseline->second) == 0)
            return "";
        char text[32];
        std::snprintf(text, sizeof text, "%.2f x", time / m_times.at(baseline->second));
        return text;
    }

    static std::string counters(const Run& run)
    {
        std::string all;
        for (const auto& [name, counter] : run.counters) {
            char text[64];
            std::snprintf(text, sizeof text, "; %s %.3g", name.c_str(), double(counter));
            all += text;
        }
        return all;
    }

    const std::map<std::string, std::string> m_baselines;
    std::map<std::string, double> m_times;
};

} // namespace

int runWithBaselines(int argc, char** argv, std::map<std::string, std::string> baselines)
{
    benchmark::Initialize(&argc, argv);
    GoalTable table(std::move(baselines));
    benchmark::RunSpecifiedBenchmarks(&table);
    return 0;
}
