#include <MarlixLib/Lib.h>
#include <MarlixLibQt/widgets/entities/EntityHandleModel.h>
#include <MarlixTestScene/TestScene.h>

#include <QTest>

using namespace Marlix;
using namespace Marlix::Widgets;

namespace {

/// A context whose expirations the test reports, and which can stop accepting an entity that still lives.
class ReportingContext : public DefaultEntityHandleContext
{
public:
    bool isEntityReferenceValid(const EntityHolder<Entity>& entity) const override
    {
        return entity->getId() != refused;
    }
    CallbackLifetime addExpirationObserver(Function<void()> onExpired, const EntityClassInfo*) override
    {
        return expirations.add(std::move(onExpired));
    }
    CallbackList<> expirations;
    std::uint64_t refused = 0;
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
    QTest::addColumn<bool>("deleted"); // else the context stops accepting the entity
    QTest::newRow("entity deleted") << true;
    QTest::newRow("refused by the context") << false;
}

void TestEntityHandleModel::readsEmptyOnceGoneAndSaysSo()
{
    QFETCH(bool, deleted);
    ReportingContext context;
    EntityHolder<Entity> kept = TestScene::materialClass().create();
    const std::uint64_t id = kept->getId();
    EntityHandleModel<EntityHandle> handles(context);
    EntityHandleModel<EntityHolder<Entity>> holders(context);
    int notified = 0;
    const CallbackLifetime a = handles.addCallback([&](const EntityHandle&) { ++notified; });
    const CallbackLifetime b = holders.addCallback([&](const EntityHolder<Entity>&) { ++notified; });
    handles.set(EntityHandle(kept));
    holders.set(kept);
    QVERIFY(handles.get().getId() == id && holders.get() == kept);

    // The models hold the entity weakly; an expiration of something else is no news to them.
    context.expirations.call();
    QCOMPARE(notified, 2);
    if (deleted)
        kept.reset();
    else
        context.refused = id;
    QVERIFY(handles.get().isEmpty() && !holders.get());
    context.expirations.call();
    context.expirations.call();
    QCOMPARE(notified, 4);
    QCOMPARE(handles.getHandle().getId(), id);
}

QTEST_GUILESS_MAIN(TestEntityHandleModel)
#include "tst_EntityHandleModel.moc"
