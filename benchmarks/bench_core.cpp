#include "RatioReporter.h"

#include <MarlixLib/Lib.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/data/GenericPropertyAccessor.h>
#include <MarlixLib/io/SceneSerializer.h>

#include <MarlixTestScene/TestScene.h>

#include <QCoreApplication>
#include <QObject>
#include <QVariant>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <memory>
#include <new>

using namespace Marlix;

// Every heap block of the process goes through these, so the memory benchmarks see what an object really costs,
// Qt's private data included. Counting is off outside a measurement; the check is one relaxed load.
namespace {
std::atomic<bool> counting { false };
std::atomic<std::size_t> liveBlocks { 0 };
std::atomic<std::size_t> allocatedBlocks { 0 };

void* allocate(std::size_t size, std::size_t alignment)
{
    void* block = nullptr;
    if (alignment <= alignof(std::max_align_t))
        block = std::malloc(size ? size : 1);
    else if (posix_memalign(&block, alignment, size ? size : 1) != 0)
        block = nullptr;
    if (!block)
        throw std::bad_alloc();
    if (counting.load(std::memory_order_relaxed)) {
        liveBlocks.fetch_add(1, std::memory_order_relaxed);
        allocatedBlocks.fetch_add(1, std::memory_order_relaxed);
    }
    return block;
}

void release(void* block) noexcept
{
    if (!block)
        return;
    if (counting.load(std::memory_order_relaxed))
        liveBlocks.fetch_sub(1, std::memory_order_relaxed);
    std::free(block);
}
} // namespace

void* operator new(std::size_t size)
{
    return allocate(size, 0);
}
void* operator new[](std::size_t size)
{
    return allocate(size, 0);
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return allocate(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return allocate(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return allocate(size, 0);
    } catch (...) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return allocate(size, 0);
    } catch (...) {
        return nullptr;
    }
}
void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }
void operator delete[](void* block, std::size_t) noexcept { release(block); }
void operator delete(void* block, std::align_val_t) noexcept { release(block); }
void operator delete[](void* block, std::align_val_t) noexcept { release(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { release(block); }
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept { release(block); }

namespace {

/// What every observer and slot does with the value: enough work that the call cannot be dropped.
struct Sink
{
    double total = 0.0;
    void take(double value) { total += value; }
};

/// Heap cost of `count` objects made by `make`: bytes in use by malloc (chunk headers included) and blocks taken
/// through operator new, per object.
template <class Make> std::pair<double, double> heapPerObject(std::size_t count, Make make)
{
    using Object = decltype(make());
    std::vector<Object> objects;
    objects.reserve(count);
    malloc_trim(0);
    const std::size_t bytesBefore = mallinfo2().uordblks;
    liveBlocks = 0;
    counting = true;
    for (std::size_t i = 0; i < count; ++i)
        objects.push_back(make());
    counting = false;
    const std::size_t bytesAfter = mallinfo2().uordblks;
    const double blocks = double(liveBlocks.load()) / double(count);
    return { double(bytesAfter - bytesBefore) / double(count), blocks };
}

/// The core started with the sample classes, and the scenes the benchmarks use, built once for the whole run.
struct CoreSession
{
    CoreSession()
    {
        Lib::startup();
        TestScene::registerTypes();
        TestScene::populate(sample);
    }
    ~CoreSession()
    {
        sample.replaceEntities({});
        large.replaceEntities({});
        TestScene::unregisterTypes();
        Lib::shutdown();
    }

    EntityGraphTracker sample;
    EntityGraphTracker large;
    Array<std::byte> largeBytes;
};

CoreSession* session = nullptr;

/// The write benchmarks edit the "Steel" material of the sample scene.
EntityHolder<Entity> steel()
{
    for (const auto& entity : session->sample.getEntitiesOfClass(TestScene::materialClass()))
        if (entity->getPropertyValue<String>("name") == "Steel")
            return entity;
    std::fprintf(stderr, "the sample scene has no Steel material\n");
    std::abort();
}

constexpr std::size_t LARGE_SCENE_SIZE = 100000;

const EntityGraphTracker& largeScene()
{
    if (session->large.isEmpty())
        TestScene::populateLarge(session->large, LARGE_SCENE_SIZE);
    return session->large;
}

const Array<std::byte>& largeSceneBytes()
{
    if (session->largeBytes.empty())
        session->largeBytes = SceneSerializer::saveToBytes(largeScene());
    return session->largeBytes;
}

} // namespace

/// The baseline of the write: a Qt property whose NOTIFY signal reaches one slot.
class QtMaterial : public QObject
{
    Q_OBJECT
    Q_PROPERTY(double roughness READ roughness WRITE setRoughness NOTIFY roughnessChanged)

public:
    double roughness() const { return roughnessValue; }
    void setRoughness(double value)
    {
        if (value == roughnessValue)
            return;
        roughnessValue = value;
        Q_EMIT roughnessChanged(value);
    }

Q_SIGNALS:
    void roughnessChanged(double value);

private:
    double roughnessValue = 0.5;
};

class QtSinkSlot : public QObject
{
    Q_OBJECT

public:
    explicit QtSinkSlot(Sink& sink)
        : sink(sink)
    {
    }

public Q_SLOTS:
    void take(double value) { sink.take(value); }

private:
    Sink& sink;
};

/// The baseline of the memory comparison: twenty double properties of a QObject, each with its NOTIFY signal.
class QtTwentyDoubles : public QObject
{
    Q_OBJECT
    Q_PROPERTY(double value0 MEMBER value0 NOTIFY value0Changed)
    Q_PROPERTY(double value1 MEMBER value1 NOTIFY value1Changed)
    Q_PROPERTY(double value2 MEMBER value2 NOTIFY value2Changed)
    Q_PROPERTY(double value3 MEMBER value3 NOTIFY value3Changed)
    Q_PROPERTY(double value4 MEMBER value4 NOTIFY value4Changed)
    Q_PROPERTY(double value5 MEMBER value5 NOTIFY value5Changed)
    Q_PROPERTY(double value6 MEMBER value6 NOTIFY value6Changed)
    Q_PROPERTY(double value7 MEMBER value7 NOTIFY value7Changed)
    Q_PROPERTY(double value8 MEMBER value8 NOTIFY value8Changed)
    Q_PROPERTY(double value9 MEMBER value9 NOTIFY value9Changed)
    Q_PROPERTY(double value10 MEMBER value10 NOTIFY value10Changed)
    Q_PROPERTY(double value11 MEMBER value11 NOTIFY value11Changed)
    Q_PROPERTY(double value12 MEMBER value12 NOTIFY value12Changed)
    Q_PROPERTY(double value13 MEMBER value13 NOTIFY value13Changed)
    Q_PROPERTY(double value14 MEMBER value14 NOTIFY value14Changed)
    Q_PROPERTY(double value15 MEMBER value15 NOTIFY value15Changed)
    Q_PROPERTY(double value16 MEMBER value16 NOTIFY value16Changed)
    Q_PROPERTY(double value17 MEMBER value17 NOTIFY value17Changed)
    Q_PROPERTY(double value18 MEMBER value18 NOTIFY value18Changed)
    Q_PROPERTY(double value19 MEMBER value19 NOTIFY value19Changed)

Q_SIGNALS:
    void value0Changed();
    void value1Changed();
    void value2Changed();
    void value3Changed();
    void value4Changed();
    void value5Changed();
    void value6Changed();
    void value7Changed();
    void value8Changed();
    void value9Changed();
    void value10Changed();
    void value11Changed();
    void value12Changed();
    void value13Changed();
    void value14Changed();
    void value15Changed();
    void value16Changed();
    void value17Changed();
    void value18Changed();
    void value19Changed();

private:
    double value0 = 0, value1 = 0, value2 = 0, value3 = 0, value4 = 0, value5 = 0, value6 = 0, value7 = 0, value8 = 0,
           value9 = 0, value10 = 0, value11 = 0, value12 = 0, value13 = 0, value14 = 0, value15 = 0, value16 = 0,
           value17 = 0, value18 = 0, value19 = 0;
};

static void entityWriteWithOneObserver(benchmark::State& state)
{
    Sink sink;
    const auto material = steel();
    const auto index = static_cast<std::uint32_t>(material->indexOfProperty("roughness"));
    const CallbackLifetime lifetime = material->addPropertyObserver(
        index, [&sink](const ObservedProperty& p) { sink.take(p.getObject().getProperty(p.getPropertyIndex()).get<double>()); });
    double value = 0.0;
    for (auto _ : state) {
        material->mutateProperty("roughness", [&](GenericProperty& property) { property.set(value); });
        value += 1.0;
    }
    benchmark::DoNotOptimize(sink.total);
}
BENCHMARK(entityWriteWithOneObserver);

// What an editor keeps: the path resolved once into a handle, every write through it.
static void handleWriteWithOneObserver(benchmark::State& state)
{
    Sink sink;
    const auto material = steel();
    const GenericPropertyHandle handle = material->resolveHandle("roughness");
    const auto observer = [&sink](const ObservedProperty& p) {
        sink.take(p.getObject().getProperty(p.getPropertyIndex()).get<double>());
    };
    const CallbackLifetime lifetime = material->addPropertyObserver(handle.getRootIndex(), observer);
    double value = 0.0;
    for (auto _ : state) {
        material->mutateProperty(handle, [&](GenericProperty& property) { property.set(value); });
        value += 1.0;
    }
    benchmark::DoNotOptimize(sink.total);
}
BENCHMARK(handleWriteWithOneObserver);

// What a property editor does: one accessor on the selection, a typed write through it.
static void accessorWriteWithOneObserver(benchmark::State& state)
{
    Sink sink;
    const GenericPropertyAccessor accessor(steel(), "roughness");
    CallbacksOwner owner;
    accessor.addObserver(
        owner, [&sink](const ObservedProperty& p) { sink.take(p.getObject().getProperty(p.getPropertyIndex()).get<double>()); });
    double value = 0.0;
    for (auto _ : state) {
        accessor.setValue(value);
        value += 1.0;
    }
    benchmark::DoNotOptimize(sink.total);
}
BENCHMARK(accessorWriteWithOneObserver);

static void qtSetPropertyWithOneSlot(benchmark::State& state)
{
    Sink sink;
    QtMaterial material;
    QtSinkSlot receiver(sink);
    QObject::connect(&material, &QtMaterial::roughnessChanged, &receiver, &QtSinkSlot::take);
    double value = 0.0;
    for (auto _ : state) {
        material.setProperty("roughness", value);
        value += 1.0;
    }
    benchmark::DoNotOptimize(sink.total);
}
BENCHMARK(qtSetPropertyWithOneSlot);

static void entityWithTwentyDoubles(benchmark::State& state)
{
    const auto [bytes, blocks] = heapPerObject(1000, [] { return TestScene::twentyDoublesClass().create(); });
    for (auto _ : state)
        benchmark::DoNotOptimize(TestScene::twentyDoublesClass().create());
    state.counters["heapBytes"] = bytes;
    state.counters["heapBlocks"] = blocks;
}
BENCHMARK(entityWithTwentyDoubles);

static void qObjectWithTwentyProperties(benchmark::State& state)
{
    const auto [bytes, blocks] = heapPerObject(1000, [] { return std::make_unique<QtTwentyDoubles>(); });
    for (auto _ : state)
        benchmark::DoNotOptimize(std::make_unique<QtTwentyDoubles>());
    state.counters["heapBytes"] = bytes;
    state.counters["heapBlocks"] = blocks;
}
BENCHMARK(qObjectWithTwentyProperties);

static void saveLargeScene(benchmark::State& state)
{
    const EntityGraphTracker& scene = largeScene();
    std::size_t size = 0;
    for (auto _ : state) {
        const auto bytes = SceneSerializer::saveToBytes(scene);
        size = bytes.size();
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * size));
    state.counters["entities"] = double(scene.size());
}
BENCHMARK(saveLargeScene)->Unit(benchmark::kMillisecond);

static void loadLargeScene(benchmark::State& state)
{
    const auto& bytes = largeSceneBytes();
    for (auto _ : state) {
        EntityGraphTracker target;
        if (!SceneSerializer::loadFromBytes(target, bytes)) {
            state.SkipWithError("the saved scene does not load");
            break;
        }
        state.PauseTiming();
        target.replaceEntities({});
        state.ResumeTiming();
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * bytes.size()));
}
BENCHMARK(loadLargeScene)->Unit(benchmark::kMillisecond);

// The codec underneath the serializer on the same stream: what saving and loading cost beyond encoding the bytes.
static void cborCodecEncode(benchmark::State& state)
{
    const auto& bytes = largeSceneBytes();
    const auto document = nlohmann::json::from_cbor(reinterpret_cast<const std::uint8_t*>(bytes.data()),
        reinterpret_cast<const std::uint8_t*>(bytes.data()) + bytes.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(nlohmann::json::to_cbor(document));
    state.SetBytesProcessed(std::int64_t(state.iterations() * bytes.size()));
}
BENCHMARK(cborCodecEncode)->Unit(benchmark::kMillisecond);

static void cborCodecDecode(benchmark::State& state)
{
    const auto& bytes = largeSceneBytes();
    for (auto _ : state)
        benchmark::DoNotOptimize(nlohmann::json::from_cbor(reinterpret_cast<const std::uint8_t*>(bytes.data()),
            reinterpret_cast<const std::uint8_t*>(bytes.data()) + bytes.size()));
    state.SetBytesProcessed(std::int64_t(state.iterations() * bytes.size()));
}
BENCHMARK(cborCodecDecode)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    CoreSession core;
    session = &core;
    benchmark::Initialize(&argc, argv);
    // CPU time, since the machine may be shared.
    Benchmarks::RatioReporter reporter(Benchmarks::Clock::Cpu,
        {
            { "entityWriteWithOneObserver", "qtSetPropertyWithOneSlot", {}, "the path looked up on every write" },
            { "handleWriteWithOneObserver", "qtSetPropertyWithOneSlot", {}, "goal 0.5 or less" },
            { "accessorWriteWithOneObserver", "qtSetPropertyWithOneSlot", {}, "goal 0.5 or less" },
            { "entityWithTwentyDoubles", "qObjectWithTwentyProperties", {}, {}, "heapBytes" },
            { "saveLargeScene", "cborCodecEncode", {}, "goal 2 or less: the codec alone encoding the same stream" },
            { "loadLargeScene", "cborCodecEncode", {}, "goal 2 or less: the codec alone encoding the same stream" },
            { "loadLargeScene", "cborCodecDecode", {}, "the codec alone decoding the same stream into a tree" },
        },
        [](const Benchmarks::RatioReporter& figures) {
            if (const auto* entity = figures.find("entityWithTwentyDoubles"))
                std::printf(
                    "heap bytes of an entity with 20 doubles: %.0f (goal 512 or less)\n", entity->counter("heapBytes"));
            for (const char* name : { "saveLargeScene", "loadLargeScene" })
                if (const auto* scene = figures.find(name))
                    std::printf("%s: %.1f MB/s\n", name, scene->counter("bytes_per_second") / 1e6);
        });
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

#include "bench_core.moc"
