#include <MarlixLib/Lib.h>
#include <MarlixLibQt/widgets/entities/EntityHandleModel.h>
#include <MarlixTestScene/TestScene.h>

#include <QTest>

using namespace Marlix;
using namespace Marlix::Widgets;
using namespace Marlix::TestScene;

namespace {

/// A context whose expirations the test reports, and which can stop accepting an entity that still lives.
class ReportingContext : public DefaultEntityHandleContext
{
public:
    bool isEntityReferenceValid(const EntityHolder<Entity>& reference) const override
    {
        return reference && reference->getId() != refusedId;
    }
    CallbackLifetime addExpirationObserver(Function<void()> onExpired, const EntityClassInfo*) override
    {
        return expirations.add(std::move(onExpired));
    }
    CallbackList<> expirations;
    std::uint64_t refusedId = 0;
};

} // namespace

class TestEntityHandleModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { Lib::startup(); }
    void cleanupTestCase() { Lib::shutdown(); }
    void readsEmptyOnceGoneAndSaysSo_data();
    void readsEmptyOnceGoneAndSaysSo();
};

void TestEntityHandleModel::readsEmptyOnceGoneAndSaysSo_data()
{
    QTest::addColumn<bool>("asHandle");
    QTest::addColumn<bool>("deleted"); // else the context stops accepting it
    QTest::newRow("handle, entity deleted") << true << true;
    QTest::newRow("holder, entity deleted") << false << true;
    QTest::newRow("handle, refused by the context") << true << false;
}

void TestEntityHandleModel::readsEmptyOnceGoneAndSaysSo()
{
    QFETCH(bool, asHandle);
    QFETCH(bool, deleted);
    ReportingContext context;
    EntityHolder<Entity> kept = materialClass().create();
    const EntityHolder<Entity> other = materialClass().create();
    const std::uint64_t id = kept->getId();
    EntityHandleModel<EntityHandle> handles(context);
    EntityHandleModel<EntityHolder<Entity>> holders(context);
    int notified = 0;
    const CallbackLifetime a = handles.addCallback([&](const EntityHandle&) { ++notified; });
    const CallbackLifetime b = holders.addCallback([&](const EntityHolder<Entity>&) { ++notified; });
    const auto reads = [&] { return asHandle ? handles.get().getId() : (holders.get() ? holders.get()->getId() : 0); };
    asHandle ? handles.set(EntityHandle(kept)) : holders.set(kept);
    QCOMPARE(reads(), id);
    QCOMPARE(notified, 1);

    // The model holds the entity weakly; an expiration of something else is no news.
    context.expirations.call();
    QCOMPARE(notified, 1);
    if (deleted)
        kept.reset();
    else
        context.refusedId = id;
    QCOMPARE(reads(), 0u);
    context.expirations.call();
    QCOMPARE(notified, 2);
    context.expirations.call();
    QCOMPARE(notified, 2);
    QCOMPARE((asHandle ? handles.getHandle() : holders.getHandle()).getId(), id);

    asHandle ? handles.set(EntityHandle(other)) : holders.set(other);
    QCOMPARE(reads(), other->getId());
}

QTEST_GUILESS_MAIN(TestEntityHandleModel)
#include "tst_EntityHandleModel.moc"
