#include <MarlixLibQt/widgets/Model.h>

#include <QCoreApplication>
#include <QObject>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

using Marlix::CallbackLifetime;
using Marlix::Widgets::VariableModel;

namespace {

/// What every observer and slot does with the value: enough work that the call cannot be dropped.
struct Sink
{
    double total = 0.0;
    void take(double value) { total += value; }
};

} // namespace

/// The baseline: a Qt signal carrying the value to three slots.
class ValueSource : public QObject
{
    Q_OBJECT

public:
    void set(double newValue)
    {
        value = newValue;
        Q_EMIT valueChanged(value);
    }

Q_SIGNALS:
    void valueChanged(double value);

private:
    double value = 0.0;
};

class ValueSlots : public QObject
{
    Q_OBJECT

public:
    explicit ValueSlots(Sink& sink)
        : sink(sink)
    {
    }

public Q_SLOTS:
    void first(double value) { sink.take(value); }
    void second(double value) { sink.take(value * 2.0); }
    void third(double value) { sink.take(value * 3.0); }

private:
    Sink& sink;
};

static void modelSetWithThreeObservers(benchmark::State& state)
{
    Sink sink;
    VariableModel<double> model;
    const CallbackLifetime a = model.addCallback([&sink](double v) { sink.take(v); });
    const CallbackLifetime b = model.addCallback([&sink](double v) { sink.take(v * 2.0); });
    const CallbackLifetime c = model.addCallback([&sink](double v) { sink.take(v * 3.0); });
    double value = 0.0;
    for (auto _ : state) {
        model.set(value);
        value += 1.0;
    }
    benchmark::DoNotOptimize(sink.total);
}
BENCHMARK(modelSetWithThreeObservers);

static void signalWithThreeSlots(benchmark::State& state)
{
    Sink sink;
    ValueSource source;
    ValueSlots receiver(sink);
    QObject::connect(&source, &ValueSource::valueChanged, &receiver, &ValueSlots::first);
    QObject::connect(&source, &ValueSource::valueChanged, &receiver, &ValueSlots::second);
    QObject::connect(&source, &ValueSource::valueChanged, &receiver, &ValueSlots::third);
    double value = 0.0;
    for (auto _ : state) {
        source.set(value);
        value += 1.0;
    }
    benchmark::DoNotOptimize(sink.total);
}
BENCHMARK(signalWithThreeSlots);

namespace {
/// Prints the usual table, then the time of the model relative to the signal.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        // With repetitions, the median stands for the benchmark: the machine may be shared.
        for (const Run& run : runs) {
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (run.iterations == 0 || (run.run_type != Run::RT_Iteration && !median))
                continue;
            Figure& figure = perIteration[run.run_name.str()];
            if (figure.fromMedian && !median)
                continue;
            figure = { run.GetAdjustedRealTime(), median };
        }
        ConsoleReporter::ReportRuns(runs);
    }
    void Finalize() override
    {
        ConsoleReporter::Finalize();
        const auto model = perIteration.find("modelSetWithThreeObservers");
        const auto signal = perIteration.find("signalWithThreeSlots");
        if (model != perIteration.end() && signal != perIteration.end() && signal->second.time > 0.0)
            std::printf("ratio model / signal: %.3f (goal 0.8 or less)\n", model->second.time / signal->second.time);
    }

private:
    struct Figure
    {
        double time = 0.0;
        bool fromMedian = false;
    };
    std::map<std::string, Figure> perIteration;
};
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

#include "bench_model.moc"
