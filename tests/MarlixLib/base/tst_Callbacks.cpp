#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/base/Exception.h>

#include <QtTest/QTest>

#include <memory>
#include <thread>

using namespace Marlix;

class TestCallbacks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void callsInRegistrationOrder();
    void removalWhileCalling_data();
    void removalWhileCalling();
    void removedCallableIsReleased();
    void additionWhileCallingWaitsForNextRound();
    void lifetimeOutlivesList();
    void listDestroyedByItsOwnCallback();
    void exceptionDoesNotStopOtherCallbacks();
    void ownerEndsEveryRegistration();
    void concurrentAddAndCall();
    void listMutexExcludesOtherThreads();
    void stopExceptionNamesUnitAndLine();
};

void TestCallbacks::callsInRegistrationOrder()
{
    CallbackList<int> list;
    Array<int> seen;
    auto a = list.add([&](int v) { seen.push_back(v * 10 + 1); });
    auto b = list.add([&](int v) { seen.push_back(v * 10 + 2); });
    list.call(4);
    QCOMPARE(seen, (Array<int> { 41, 42 }));
    b.reset();
    list.call(5);
    QCOMPARE(seen, (Array<int> { 41, 42, 51 }));
    QCOMPARE(list.size(), std::size_t(1));
}

void TestCallbacks::removalWhileCalling_data()
{
    QTest::addColumn<int>("removedIndex");
    QTest::addColumn<QList<int>>("expected");
    // Callback 0 removes entry `removedIndex`: an entry removed before its turn is never called.
    QTest::newRow("itself") << 0 << QList<int> { 0, 1, 2, 1, 2 };
    QTest::newRow("the next one") << 1 << QList<int> { 0, 2, 0, 2 };
    QTest::newRow("the last one") << 2 << QList<int> { 0, 1, 0, 1 };
}

void TestCallbacks::removalWhileCalling()
{
    QFETCH(int, removedIndex);
    QFETCH(QList<int>, expected);
    CallbackList<> list;
    QList<int> seen;
    std::array<CallbackLifetime, 3> lifetimes;
    lifetimes[0] = list.add([&] {
        seen.push_back(0);
        lifetimes[static_cast<std::size_t>(removedIndex)].reset();
    });
    lifetimes[1] = list.add([&] { seen.push_back(1); });
    lifetimes[2] = list.add([&] { seen.push_back(2); });
    list.call();
    list.call();
    QCOMPARE(seen, expected);
}

void TestCallbacks::removedCallableIsReleased()
{
    // Another entry's captures go at once; a running entry that removes itself keeps them until the round ends.
    CallbackList<> list;
    auto otherResource = std::make_shared<int>(1);
    auto selfResource = std::make_shared<int>(2);
    const std::weak_ptr<int> other = otherResource;
    const std::weak_ptr<int> self = selfResource;
    CallbackLifetime remover;
    CallbackLifetime removed = list.add([r = std::move(otherResource)] { });
    bool otherGoneInsideTheRound = false;
    bool selfAliveInsideTheRound = false;
    remover = list.add([&, r = std::move(selfResource)] {
        removed.reset();
        otherGoneInsideTheRound = other.expired();
        remover.reset();
        selfAliveInsideTheRound = !self.expired() && *r == 2;
    });
    list.call();
    QVERIFY(otherGoneInsideTheRound);
    QVERIFY(selfAliveInsideTheRound);
    QVERIFY(self.expired());
    QCOMPARE(list.size(), std::size_t(0));
}

void TestCallbacks::additionWhileCallingWaitsForNextRound()
{
    CallbackList<> list;
    int added = 0;
    Array<CallbackLifetime> extra;
    auto adder = list.add([&] { extra.push_back(list.add([&] { ++added; })); });
    list.call();
    QCOMPARE(added, 0);
    list.call();
    QCOMPARE(added, 1);
    QCOMPARE(list.size(), std::size_t(3));
}

void TestCallbacks::lifetimeOutlivesList()
{
    CallbackLifetime lifetime;
    {
        CallbackList<> list;
        lifetime = list.add([] { });
        QVERIFY(lifetime.isActive());
    }
    QVERIFY(!lifetime.isActive());
    lifetime.reset();
}

void TestCallbacks::listDestroyedByItsOwnCallback()
{
    // The round in progress finishes on the list's state; the lifetimes end harmlessly once it is gone.
    auto list = std::make_unique<CallbackList<int>>();
    QList<int> seen;
    CallbackLifetime removedAfterDestruction;
    auto first = list->add([&](int v) {
        seen.push_back(v);
        if (v == 1)
            list->call(2); // a nested round, so that the list goes while two rounds run
    });
    auto destroyer = list->add([&](int v) {
        seen.push_back(-v);
        if (v == 2)
            list.reset();
    });
    removedAfterDestruction = list->add([&](int v) {
        seen.push_back(10 * v);
        removedAfterDestruction.reset();
    });
    list->call(1);
    QVERIFY(!list);
    // The outer round goes on after the nested one destroyed the list, without the entry that removed itself.
    QCOMPARE(seen, (QList<int> { 1, 2, -2, 20, -1 }));
    QVERIFY(!first.isActive());
    QVERIFY(!removedAfterDestruction.isActive());
}

void TestCallbacks::exceptionDoesNotStopOtherCallbacks()
{
    CallbackList<int> list;
    int third = 0;
    auto a = list.add([](int) { });
    auto b = list.add([](int) { throw Exception("second failed"); });
    auto c = list.add([&](int v) { third = v; });
    auto d = list.add([](int) { throw Exception("fourth failed"); });
    try {
        list.call(7);
        QFAIL("the exception must reach the caller");
    } catch (const Exception& e) {
        QCOMPARE(QString::fromStdString(e.getMessage()), QStringLiteral("second failed"));
    }
    QCOMPARE(third, 7);
}

void TestCallbacks::ownerEndsEveryRegistration()
{
    CallbackList<> list;
    int calls = 0;
    {
        CallbacksOwner owner;
        owner.add(list.add([&] { ++calls; }));
        owner.add(list.add([&] { ++calls; }));
        CallbacksOwner moved = std::move(owner);
        list.call();
        QCOMPARE(calls, 2);
    }
    list.call();
    QCOMPARE(calls, 2);
    QVERIFY(list.isEmpty());
}

void TestCallbacks::concurrentAddAndCall()
{
    CallbackList<int> list;
    std::atomic<int> sum = 0;
    auto base = list.add([&](int v) { sum += v; });
    std::thread other([&] {
        for (int i = 0; i < 2000; ++i) {
            auto lifetime = list.add([&](int v) { sum += v; });
        }
    });
    for (int i = 0; i < 2000; ++i)
        list.call(1);
    other.join();
    QVERIFY(sum >= 2000);
    QCOMPARE(list.size(), std::size_t(1));
}

void TestCallbacks::listMutexExcludesOtherThreads()
{
    Detail::ReentrantMutex mutex;
    QVERIFY(mutex.lock());
    QVERIFY(!mutex.lock()); // taken again by the holder: nothing to release for that
    mutex.unlock();
    // A plain counter stays exact only if no two increments overlap. Each holder yields between reading and writing,
    // so the others keep arriving while the mutex is held and have to sleep until it is released.
    long counter = 0;
    const auto work = [&] {
        for (int i = 0; i < 1000; ++i) {
            const Detail::ReentrantLock lock(mutex);
            const long read = counter;
            std::this_thread::yield();
            counter = read + 1;
        }
    };
    std::thread a(work);
    std::thread b(work);
    work();
    a.join();
    b.join();
    QCOMPARE(counter, 3000L);
}

void TestCallbacks::stopExceptionNamesUnitAndLine()
{
    try {
        Detail::throwStopException("widgets/Slider", 123);
    } catch (const StopException& e) {
        QCOMPARE(QString::fromStdString(e.getUnit()), QStringLiteral("widgets/Slider"));
        QCOMPARE(e.getLine(), 123);
        QCOMPARE(QString::fromUtf8(e.what()), QStringLiteral("Stopped at widgets/Slider:123"));
        return;
    }
    QFAIL("no stop exception");
}

QTEST_GUILESS_MAIN(TestCallbacks)
#include "tst_Callbacks.moc"
