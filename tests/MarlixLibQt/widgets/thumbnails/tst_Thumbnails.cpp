#include <MarlixLibQt/widgets/thumbnails/ThumbnailManager.h>

#include <MarlixLib/io/CborDeserializer.h>
#include <MarlixLib/io/CborSerializer.h>

#include <MarlixTestScene/TestScene.h>

#include <QApplication>
#include <QPixmapCache>
#include <QTest>
#include <QThread>

#include <atomic>
#include <mutex>
#include <set>

using namespace Marlix;

namespace {

/// Paints the whole bitmap in one colour and remembers on which threads it ran.
class SolidProvider : public IThumbnailProvider
{
public:
    Bitmap renderThumbnail(const EntityHolder<Entity>&, int width, int height) override
    {
        const std::lock_guard lock(mutex);
        threads.push_back(QThread::currentThread());
        return Bitmap(width, height, colour);
    }

    void setColour(RgbaBytes value)
    {
        const std::lock_guard lock(mutex);
        colour = value;
    }
    Array<QThread*> renderThreads()
    {
        const std::lock_guard lock(mutex);
        return threads;
    }

private:
    std::mutex mutex;
    RgbaBytes colour { 255, 0, 0, 255 };
    Array<QThread*> threads;
};

/// What a client's change callback received.
struct ChangeLog
{
    Array<std::uint64_t> ids;
    Array<QThread*> threads;

    ThumbnailManager::ChangedCallback callback()
    {
        return [this](ArrayView<const EntityHolder<Entity>> changed) {
            threads.push_back(QThread::currentThread());
            for (const auto& entity : changed)
                ids.push_back(entity->getId());
        };
    }
};

QImage solidImage(QSize size, QColor colour)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(colour);
    return image;
}

Array<std::byte> saveCache(const ThumbnailManager& manager)
{
    CborSerializer out;
    manager.serializeThumbnailCache(out, [](const EntityHolder<Entity>&) { return true; });
    return out.getBytes();
}

} // namespace

class tst_Thumbnails : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void makeThumbnailShapes_data();
    void makeThumbnailShapes();
    void rendersOffTheGuiThreadAndTellsClients();
    void invalidationRendersAgainAndDropsOldKeys();
    void manyEntitiesThroughOneClient();
    void forgetsEntities_data();
    void forgetsEntities();
    void cacheStreamRoundTrip();
    void badStreamLeavesCache_data();
    void badStreamLeavesCache();

private:
    /// A manager with a provider for materials that has rendered `entity` once.
    void renderOnce(ThumbnailManager& manager, ThumbnailClient& client, ChangeLog& log, const EntityHolder<Entity>& entity);
};

void tst_Thumbnails::initTestCase()
{
    TestScene::registerTypes();
}

void tst_Thumbnails::cleanup()
{
    QPixmapCache::clear();
}

void tst_Thumbnails::makeThumbnailShapes_data()
{
    QTest::addColumn<QImage>("image");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("ratio");
    QTest::addColumn<QSize>("expectedPixels");
    QTest::addColumn<bool>("bandsAboveAndBelow");

    QTest::newRow("null image") << QImage() << QSize(16, 12) << 1.5 << QSize(24, 18) << false;
    QTest::newRow("wide image in a square") << solidImage({ 64, 16 }, Qt::blue) << QSize(16, 16) << 1.0 << QSize(16, 16)
                                            << true;
    QTest::newRow("wide image at ratio 2") << solidImage({ 80, 20 }, Qt::blue) << QSize(10, 10) << 2.0 << QSize(20, 20)
                                           << true;
    QTest::newRow("half rounds away from zero") << solidImage({ 8, 8 }, Qt::blue) << QSize(5, 5) << 1.5 << QSize(8, 8)
                                                << false;
}

void tst_Thumbnails::makeThumbnailShapes()
{
    QFETCH(QImage, image);
    QFETCH(QSize, size);
    QFETCH(double, ratio);
    QFETCH(QSize, expectedPixels);
    QFETCH(bool, bandsAboveAndBelow);

    const QPixmap pixmap = makeThumbnail(image, size, ratio);
    QCOMPARE(pixmap.size(), expectedPixels);
    QCOMPARE(pixmap.devicePixelRatio(), ratio);
    const QImage result = pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
    const int midX = result.width() / 2;
    const int midY = result.height() / 2;
    if (image.isNull()) {
        for (int y = 0; y < result.height(); ++y)
            for (int x = 0; x < result.width(); ++x)
                QCOMPARE(qAlpha(result.pixel(x, y)), 0);
        return;
    }
    QCOMPARE(result.pixelColor(midX, midY), QColor(Qt::blue));
    QCOMPARE(qAlpha(result.pixel(midX, 0)), bandsAboveAndBelow ? 0 : 255);
    QCOMPARE(qAlpha(result.pixel(midX, result.height() - 1)), bandsAboveAndBelow ? 0 : 255);
    // Letterboxed, never cropped: the whole width is image.
    QCOMPARE(qAlpha(result.pixel(0, midY)), 255);
    QCOMPARE(qAlpha(result.pixel(result.width() - 1, midY)), 255);
}

void tst_Thumbnails::renderOnce(
    ThumbnailManager& manager, ThumbnailClient& client, ChangeLog& log, const EntityHolder<Entity>& entity)
{
    Q_UNUSED(manager);
    const std::size_t before = log.ids.size();
    client.getThumbnail(entity);
    QTRY_VERIFY(log.ids.size() > before);
}

void tst_Thumbnails::rendersOffTheGuiThreadAndTellsClients()
{
    auto manager = makeSharedPtr<ThumbnailManager>();
    auto provider = makeSharedPtr<SolidProvider>();
    const EntityClassInfo classes[] = { TestScene::materialClass() };
    manager->registerProvider(classes, {}, provider);
    ChangeLog log;
    ThumbnailClient client(manager, { 16, 16 }, log.callback(), 0);

    const auto material = TestScene::materialClass().create();
    QVERIFY(client.canGenerateThumbnailFor(material));
    QVERIFY(client.getThumbnail(material).isNull());

    QTRY_COMPARE(log.ids.size(), std::size_t(1));
    QCOMPARE(log.ids.front(), material->getId());
    QCOMPARE(log.threads.front(), QThread::currentThread());
    const auto threads = provider->renderThreads();
    QCOMPARE(threads.size(), std::size_t(1));
    QVERIFY(threads.front() != QThread::currentThread());

    const QPixmap pixmap = client.getThumbnail(material);
    QCOMPARE(pixmap.deviceIndependentSize().toSize(), QSize(16, 16));
    QCOMPARE(pixmap.toImage().pixelColor(8, 8), QColor(Qt::red));
    // A current image is not rendered again.
    QCoreApplication::processEvents();
    QCOMPARE(provider->renderThreads().size(), std::size_t(1));
}

void tst_Thumbnails::invalidationRendersAgainAndDropsOldKeys()
{
    auto manager = makeSharedPtr<ThumbnailManager>();
    auto provider = makeSharedPtr<SolidProvider>();
    const EntityClassInfo classes[] = { TestScene::materialClass() };
    manager->registerProvider(classes, {}, provider);
    ChangeLog log;
    ThumbnailClient small(manager, { 16, 16 }, log.callback(), 0, nullptr);
    ThumbnailClient large(manager, { 32, 32 }, {}, 0, nullptr);
    const auto material = TestScene::materialClass().create();
    renderOnce(*manager, small, log, material);

    const double ratio = qApp->devicePixelRatio();
    QVERIFY(!large.getThumbnail(material).isNull());
    const QString largeKey = ThumbnailManager::makePixmapKey(material->getId(), { 32, 32 }, ratio, 0);
    QPixmap cached;
    QVERIFY(QPixmapCache::find(largeKey, &cached));
    // Served again from the pixmap cache, and made again when the cache dropped it.
    for (int i = 0; i < 2; ++i)
        QCOMPARE(small.getThumbnail(material).toImage().pixelColor(8, 8), QColor(Qt::red));
    QPixmapCache::remove(largeKey);
    QCOMPARE(large.getThumbnail(material).toImage().pixelColor(16, 16), QColor(Qt::red));
    QVERIFY(QPixmapCache::find(largeKey, &cached));

    provider->setColour({ 0, 255, 0, 255 });
    const EntityHolder<Entity> changed[] = { material };
    manager->invalidateEntities(changed);
    renderOnce(*manager, small, log, material);
    QCOMPARE(provider->renderThreads().size(), std::size_t(2));

    QCOMPARE(small.getThumbnail(material).toImage().pixelColor(8, 8), QColor(Qt::green));
    QVERIFY(!QPixmapCache::find(largeKey, &cached));
    QCOMPARE(large.getThumbnail(material).toImage().pixelColor(16, 16), QColor(Qt::green));

    // A client that changes its size is served the new size at once, not what it remembers of the old one.
    small.setThumbnailSize({ 24, 24 });
    QCOMPARE(small.getThumbnail(material).deviceIndependentSize().toSize(), QSize(24, 24));
}

void tst_Thumbnails::manyEntitiesThroughOneClient()
{
    // More entities than a client remembers at once: each is still served its own pixmap, every time.
    auto manager = makeSharedPtr<ThumbnailManager>();
    const EntityClassInfo classes[] = { TestScene::materialClass() };
    manager->registerProvider(classes, {}, makeSharedPtr<SolidProvider>());
    ChangeLog log;
    ThumbnailClient client(manager, { 16, 16 }, log.callback(), 0, nullptr);
    Array<EntityHolder<Entity>> materials;
    for (int i = 0; i < 40; ++i)
        materials.push_back(TestScene::materialClass().create());
    for (const auto& material : materials)
        client.getThumbnail(material);
    QTRY_COMPARE(log.ids.size(), materials.size());

    Array<qint64> pixmaps;
    for (const auto& material : materials)
        pixmaps.push_back(client.getThumbnail(material).cacheKey());
    QCOMPARE(std::set<qint64>(pixmaps.begin(), pixmaps.end()).size(), materials.size());
    for (int round = 0; round < 2; ++round)
        for (std::size_t i = 0; i < materials.size(); ++i)
            QCOMPARE(client.getThumbnail(materials[i]).cacheKey(), pixmaps[i]);
}

void tst_Thumbnails::forgetsEntities_data()
{
    QTest::addColumn<bool>("rendered");
    QTest::newRow("released by the scene") << true;
    QTest::newRow("no provider renders it") << false;
}

void tst_Thumbnails::forgetsEntities()
{
    QFETCH(bool, rendered);
    auto manager = makeSharedPtr<ThumbnailManager>();
    auto provider = makeSharedPtr<SolidProvider>();
    const EntityClassInfo classes[] = { TestScene::sceneObjectClass() };
    const EntityClassInfo excluded[] = { TestScene::meshClass() };
    manager->registerProvider(classes, excluded, provider);
    ChangeLog log;
    ThumbnailClient client(manager, { 16, 16 }, log.callback(), ThumbnailManager::OPTION_PLACEHOLDER);
    const auto kept = TestScene::materialClass().create();
    renderOnce(*manager, client, log, kept);
    auto entity = (rendered ? TestScene::materialClass() : TestScene::meshClass()).create();
    QCOMPARE(client.canGenerateThumbnailFor(entity), rendered);
    if (rendered)
        renderOnce(*manager, client, log, entity);
    const QPixmap shown = client.getThumbnail(entity); // a transparent placeholder without a provider
    QCOMPARE(shown.deviceIndependentSize().toSize(), QSize(16, 16));
    QCOMPARE(qAlpha(shown.toImage().pixel(4, 4)), rendered ? 255 : 0);
    const QString key = ThumbnailManager::makePixmapKey(
        entity->getId(), { 16, 16 }, qApp->devicePixelRatio(), ThumbnailManager::OPTION_PLACEHOLDER);
    QPixmap pixmap;
    QVERIFY(QPixmapCache::find(key, &pixmap));

    const WeakPtr<Entity> handle = entity;
    if (rendered) {
        entity.reset();
        QVERIFY(handle.expired());
    }
    QCOMPARE(manager->pruneEntries(), std::size_t(1));
    QVERIFY(!QPixmapCache::find(key, &pixmap));
    QCOMPARE(manager->pruneEntries(), std::size_t(0));
    QCOMPARE(client.getThumbnail(kept).toImage().pixelColor(8, 8), QColor(Qt::red));
    QCOMPARE(provider->renderThreads().size(), std::size_t(rendered ? 2 : 1));
}

void tst_Thumbnails::cacheStreamRoundTrip()
{
    auto source = makeSharedPtr<ThumbnailManager>();
    auto provider = makeSharedPtr<SolidProvider>();
    provider->setColour({ 10, 20, 30, 200 });
    const EntityClassInfo classes[] = { TestScene::materialClass() };
    source->registerProvider(classes, {}, provider);
    ChangeLog log;
    ThumbnailClient client(source, { 16, 16 }, log.callback(), 0);
    const auto kept = TestScene::materialClass().create();
    const auto filtered = TestScene::materialClass().create();
    renderOnce(*source, client, log, kept);
    renderOnce(*source, client, log, filtered);

    CborSerializer out;
    source->serializeThumbnailCache(out, [&](const EntityHolder<Entity>& entity) { return entity != filtered; });
    const Array<std::byte> bytes = out.getBytes();

    // The target has no provider: whatever it shows came from the stream.
    auto target = makeSharedPtr<ThumbnailManager>();
    CborDeserializer in(bytes);
    QVERIFY(target->deserializeThumbnailCache(in).has_value());
    ThumbnailClient reader(target, { ThumbnailManager::RENDER_SIZE, ThumbnailManager::RENDER_SIZE }, {}, 0);
    const QImage restored = target->getThumbnail(kept, reader.getThumbnailSize(), 1.0, 0).toImage();
    const QImage original = source->getThumbnail(kept, reader.getThumbnailSize(), 1.0, 0).toImage();
    QVERIFY(!restored.isNull());
    QCOMPARE(restored, original);
    QCOMPARE(restored.pixelColor(5, 5).alpha(), 200);
    QVERIFY(target->getThumbnail(filtered, reader.getThumbnailSize(), 1.0, 0).isNull());
}

void tst_Thumbnails::badStreamLeavesCache_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<QString>("message");

    const auto toBytes = [](const Array<std::byte>& bytes) {
        return QByteArray(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size()));
    };
    const auto item = [](CborSerializer& out, std::uint64_t id, std::int64_t width, std::int64_t height,
                          std::size_t dataSize) {
        out.beginRecord("item");
        out.writeEntityReference("entity", id);
        out.beginRecord("dimensions");
        out.writeInt("width", width);
        out.writeInt("height", height);
        out.endRecord();
        const Array<std::byte> data(dataSize, std::byte { 0x7f });
        out.writeBytes("data", data);
        out.endRecord();
    };
    {
        CborSerializer out;
        out.serializeFormatVersion(ThumbnailManager::FORMAT_VERSION + 1);
        QTest::newRow("unknown version") << toBytes(out.getBytes()) << QStringLiteral("Unknown format version");
    }
    {
        CborSerializer out;
        out.serializeFormatVersion(ThumbnailManager::FORMAT_VERSION);
        item(out, 77, 2, 2, 16);
        item(out, 78, 2, 2, 15);
        QTest::newRow("data of the wrong length") << toBytes(out.getBytes()) << QStringLiteral("The stream is corrupted.");
    }
    {
        CborSerializer out;
        out.serializeFormatVersion(ThumbnailManager::FORMAT_VERSION);
        item(out, 77, 2, 2, 16);
        QByteArray truncated = toBytes(out.getBytes());
        truncated.chop(5);
        QTest::newRow("truncated") << truncated << QStringLiteral("The stream is corrupted.");
    }
}

void tst_Thumbnails::badStreamLeavesCache()
{
    QFETCH(QByteArray, stream);
    QFETCH(QString, message);

    auto manager = makeSharedPtr<ThumbnailManager>();
    auto provider = makeSharedPtr<SolidProvider>();
    const EntityClassInfo classes[] = { TestScene::materialClass() };
    manager->registerProvider(classes, {}, provider);
    ChangeLog log;
    ThumbnailClient client(manager, { 16, 16 }, log.callback(), 0);
    const auto material = TestScene::materialClass().create();
    renderOnce(*manager, client, log, material);
    const Array<std::byte> before = saveCache(*manager);

    CborDeserializer in(ArrayView<const std::byte>(reinterpret_cast<const std::byte*>(stream.constData()),
        std::size_t(stream.size())));
    const auto result = manager->deserializeThumbnailCache(in);
    QVERIFY(!result.has_value());
    QCOMPARE(QString::fromStdString(result.error()), message);
    QVERIFY(saveCache(*manager) == before);
    QCOMPARE(client.getThumbnail(material).toImage().pixelColor(8, 8), QColor(Qt::red));
}

QTEST_MAIN(tst_Thumbnails)
#include "tst_Thumbnails.moc"
