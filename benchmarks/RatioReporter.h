#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Marlix::Benchmarks {

/// Which of a run's two clocks the comparisons read.
enum class Clock
{
    // For benchmarks whose cost is the process's own work: a shared machine's other load stays out of it.
    Cpu,
    // For benchmarks whose cost includes waiting (event loops, painting, locks), which CPU time would not show.
    Real,
};

/// One figure of a benchmark set against the same figure of its baseline.
struct Ratio
{
    std::string measured;
    std::string baseline;
    // Printed after "ratio "; when empty, "<measured> / <baseline> (<figure>)".
    std::string label = {};
    // Printed in parentheses after the number when not empty.
    std::string goal = {};
    // Empty for the time of one iteration, otherwise the name of a counter of both benchmarks.
    std::string counter = {};
    // The clock of this comparison when it is not the reporter's: one run may hold benchmarks of both kinds.
    std::optional<Clock> clock = {};
};

/// What was kept of one benchmark: its time per iteration and its counters.
struct BenchmarkFigures
{
    // By the reporter's clock.
    double nanoseconds = 0.0;
    double cpuNanoseconds = 0.0;
    double realNanoseconds = 0.0;
    std::map<std::string, double> counters;
    bool fromAggregate = false;

    double counter(const std::string& name) const
    {
        const auto found = counters.find(name);
        return found == counters.end() ? 0.0 : found->second;
    }
};

/// Prints the usual table, then each library figure against its baseline as a "ratio" line.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    // Further lines printed after the ratios, from the same figures.
    using Notes = std::function<void(const RatioReporter&)>;

    RatioReporter(Clock clock, std::vector<Ratio> ratios, Notes notes = {})
        : clock(clock)
        , ratios(std::move(ratios))
        , notes(std::move(notes))
    {
    }

    /// The aggregate that stands for a benchmark run with repetitions; the median unless changed.
    void setStatistic(std::string name) { statistic = std::move(name); }

    const BenchmarkFigures* find(const std::string& name) const
    {
        const auto found = results.find(name);
        return found == results.end() ? nullptr : &found->second;
    }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        // With repetitions one aggregate stands for the benchmark, since single runs on a shared machine scatter;
        // without them the single run does.
        for (const Run& run : runs) {
            const bool aggregate = run.run_type == Run::RT_Aggregate && run.aggregate_name == statistic;
            if (failed(run) || run.iterations == 0 || (run.run_type != Run::RT_Iteration && !aggregate))
                continue;
            BenchmarkFigures& figures = results[run.run_name.str()];
            if (figures.fromAggregate && !aggregate)
                continue;
            figures.fromAggregate = aggregate;
            // Two benchmarks may print in different units; the ratios must not see that.
            figures.cpuNanoseconds = run.GetAdjustedCPUTime() * nanosecondsPer(run.time_unit);
            figures.realNanoseconds = run.GetAdjustedRealTime() * nanosecondsPer(run.time_unit);
            figures.nanoseconds = clock == Clock::Cpu ? figures.cpuNanoseconds : figures.realNanoseconds;
            figures.counters.clear();
            for (const auto& [name, counter] : run.counters)
                figures.counters[name] = counter.value;
        }
        ConsoleReporter::ReportRuns(runs);
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        for (const Ratio& ratio : ratios)
            print(ratio);
        if (notes)
            notes(*this);
    }

private:
    template <class R> static bool failed(const R& run)
    {
        // The flag of a run that skipped itself with an error was renamed between versions of the library.
        if constexpr (requires { run.error_occurred; })
            return run.error_occurred;
        else
            return run.skipped;
    }

    static double nanosecondsPer(benchmark::TimeUnit unit)
    {
        switch (unit) {
        case benchmark::kSecond:
            return 1e9;
        case benchmark::kMillisecond:
            return 1e6;
        case benchmark::kMicrosecond:
            return 1e3;
        case benchmark::kNanosecond:
            return 1.0;
        }
        return 1.0;
    }

    void print(const Ratio& ratio) const
    {
        const BenchmarkFigures* measured = find(ratio.measured);
        const BenchmarkFigures* baseline = find(ratio.baseline);
        if (!measured || !baseline)
            return;
        const bool time = ratio.counter.empty();
        const auto timeOf = [&ratio](const BenchmarkFigures& figures) {
            if (!ratio.clock)
                return figures.nanoseconds;
            return *ratio.clock == Clock::Cpu ? figures.cpuNanoseconds : figures.realNanoseconds;
        };
        const double x = time ? timeOf(*measured) : measured->counter(ratio.counter);
        const double y = time ? timeOf(*baseline) : baseline->counter(ratio.counter);
        if (y <= 0.0)
            return;
        const std::string label = !ratio.label.empty()
            ? ratio.label
            : ratio.measured + " / " + ratio.baseline + " (" + (time ? std::string("time") : ratio.counter) + ")";
        const std::string goal = ratio.goal.empty() ? std::string() : " (" + ratio.goal + ")";
        std::printf("ratio %s: %.3f%s\n", label.c_str(), x / y, goal.c_str());
    }

    Clock clock;
    std::vector<Ratio> ratios;
    Notes notes;
    std::string statistic = "median";
    std::map<std::string, BenchmarkFigures> results;
};

} // namespace Marlix::Benchmarks
