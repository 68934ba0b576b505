#include "RatioReporter.h"

#include <MarlixLibQt/widgets/Model.h>

#include <QCoreApplication>
#include <QObject>

#include <benchmark/benchmark.h>

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

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    Marlix::Benchmarks::RatioReporter reporter(Marlix::Benchmarks::Clock::Real,
        { { "modelSetWithThreeObservers", "signalWithThreeSlots", "model / signal", "goal 0.8 or less" } });
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

#include "bench_model.moc"
