#include "RatioReporter.h"

#include <MarlixLibQt/widgets/thumbnails/ThumbnailManager.h>

#include <MarlixTestScene/TestScene.h>

#include <QGuiApplication>
#include <QPixmapCache>

#include <benchmark/benchmark.h>

using namespace Marlix;

namespace {

/// A flat grey square: the benchmark measures the cache, not the rendering.
class GreyProvider : public IThumbnailProvider
{
public:
    Bitmap renderThumbnail(const EntityHolder<Entity>&, int width, int height) override
    {
        return Bitmap(width, height, RgbaBytes { 128, 128, 128, 255 });
    }
};

/// One manager with one rendered material, shared by both measurements so that they read the same cache entry.
struct Fixture
{
    Fixture()
        : manager(makeSharedPtr<ThumbnailManager>())
        , material(TestScene::materialClass().create())
        , client(manager, { 32, 32 }, [this](ArrayView<const EntityHolder<Entity>>) { rendered = true; }, 0)
    {
        const EntityClassInfo classes[] = { TestScene::materialClass() };
        manager->registerProvider(classes, {}, makeSharedPtr<GreyProvider>());
        client.getThumbnail(material);
        while (!rendered)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        // The first request after the render makes the pixmap; every later one is a cache hit.
        client.getThumbnail(material);
        key = ThumbnailManager::makePixmapKey(material->getId(), { 32, 32 }, qApp->devicePixelRatio(), 0);
    }

    SharedPtr<ThumbnailManager> manager;
    EntityHolder<Entity> material;
    bool rendered = false;
    ThumbnailClient client;
    QString key;
};

// Made in main() so that it goes away while the application still exists.
Fixture* current = nullptr;

Fixture& fixture()
{
    return *current;
}

void BM_QPixmapCacheFind(benchmark::State& state)
{
    const QString key = fixture().key;
    QPixmap pixmap;
    for (auto _ : state) {
        const bool found = QPixmapCache::find(key, &pixmap);
        benchmark::DoNotOptimize(found);
        benchmark::DoNotOptimize(pixmap);
    }
}
BENCHMARK(BM_QPixmapCacheFind);

// The lookup as paint code writes it, into a pixmap of its own: unlike above, where the pixmap holds the found data
// already and the assignment leaves the reference count alone, the count goes up and down once per lookup, as it
// does for every pixmap handed out by value.
void BM_QPixmapCacheFindIntoLocal(benchmark::State& state)
{
    const QString key = fixture().key;
    for (auto _ : state) {
        QPixmap pixmap;
        const bool found = QPixmapCache::find(key, &pixmap);
        benchmark::DoNotOptimize(found);
        benchmark::DoNotOptimize(pixmap);
    }
}
BENCHMARK(BM_QPixmapCacheFindIntoLocal);

void BM_ThumbnailClientHit(benchmark::State& state)
{
    Fixture& f = fixture();
    for (auto _ : state) {
        QPixmap pixmap = f.client.getThumbnail(f.material);
        benchmark::DoNotOptimize(pixmap);
    }
    if (f.client.getThumbnail(f.material).isNull())
        state.SkipWithError("the thumbnail was not cached");
}
BENCHMARK(BM_ThumbnailClientHit);

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    Fixture instance;
    current = &instance;
    Benchmarks::RatioReporter reporter(Benchmarks::Clock::Real,
        { { "BM_ThumbnailClientHit", "BM_QPixmapCacheFind", "thumbnail hit / QPixmapCache::find",
            "goal 1.5x or less" },
            { "BM_ThumbnailClientHit", "BM_QPixmapCacheFindIntoLocal",
                "thumbnail hit / QPixmapCache::find into a local pixmap" } });
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
