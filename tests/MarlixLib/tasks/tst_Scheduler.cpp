#include <MarlixLib/base/Exception.h>
#include <MarlixLib/tasks/Scheduler.h>
#include <MarlixLib/tasks/UnhandledFailure.h>

#include <QtTest/QTest>

#include <atomic>
#include <latch>
#include <stdexcept>
#include <thread>

using namespace Marlix;

namespace {
// Collects what reaches the unhandled failure handler during one test.
struct FailureCollector
{
    FailureCollector()
    {
        previous = setUnhandledFailureHandler([this](StringView origin, std::exception_ptr failure) {
            std::lock_guard lock(mutex);
            reports.push_back(String(origin) + ": " + describeFailure(failure));
        });
    }
    ~FailureCollector() { setUnhandledFailureHandler(previous); }
    Array<String> get()
    {
        std::lock_guard lock(mutex);
        return reports;
    }
    UnhandledFailureHandler previous;
    Mutex mutex;
    Array<String> reports;
};
} // namespace

class TestScheduler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runsEveryTaskOnItsWorkers();
    void statesFollowTheTask();
    void failureIsKept_data();
    void failureIsKept();
    void unreadFailureIsReported();
    void waitingInsideTheOnlyWorkerDoesNotDeadlock();
    void destructionRunsQueuedTasks();
    void sharedInstancesAreDistinctPools();
};

void TestScheduler::runsEveryTaskOnItsWorkers()
{
    Scheduler scheduler("TestPool", 3);
    QCOMPARE(scheduler.getThreadCount(), std::size_t(3));
    std::atomic<int> sum = 0;
    std::atomic<bool> onCaller = false;
    const auto caller = std::this_thread::get_id();
    Array<SharedPtr<Task>> tasks;
    for (int i = 1; i <= 1000; ++i)
        tasks.push_back(scheduler.submit([&, i] {
            sum += i;
            if (std::this_thread::get_id() == caller)
                onCaller = true;
        }));
    scheduler.waitForIdle();
    QCOMPARE(sum.load(), 500500);
    QVERIFY(!onCaller);
    for (const auto& task : tasks)
        QCOMPARE(task->getState(), TaskState::Finished);
}

void TestScheduler::statesFollowTheTask()
{
    Scheduler scheduler("TestPool", 1);
    std::latch started(1), release(1);
    auto blocker = scheduler.submit([&] {
        started.count_down();
        release.wait();
    });
    auto queued = scheduler.submit([] {});
    std::atomic<int> calls = 0;
    blocker->whenDone([&](Task& t) { calls += t.isDone() ? 1 : 100; });
    started.wait();
    QCOMPARE(blocker->getState(), TaskState::Running);
    QCOMPARE(queued->getState(), TaskState::Queued);
    QVERIFY(!blocker->isDone());
    QCOMPARE(calls.load(), 0);
    release.count_down();
    blocker->wait();
    queued->wait();
    QCOMPARE(blocker->getState(), TaskState::Finished);
    QCOMPARE(queued->getState(), TaskState::Finished);
    QVERIFY(!blocker->getFailure());
    QCOMPARE(QString::fromStdString(blocker->getFailureMessage()), QString());
    scheduler.waitForIdle();
    QCOMPARE(calls.load(), 1); // once, after the end
    blocker->whenDone([&](Task&) { ++calls; }); // registered after the end: called at once
    QCOMPARE(calls.load(), 2);
}

void TestScheduler::failureIsKept_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("message");
    QTest::newRow("Exception") << 0 << "the histogram is empty";
    QTest::newRow("std::exception") << 1 << "out of range";
    QTest::newRow("something else") << 2 << "an exception that is not a std::exception";
}

void TestScheduler::failureIsKept()
{
    QFETCH(int, kind);
    QFETCH(QString, message);
    FailureCollector collector;
    Scheduler scheduler("TestPool", 2);
    auto task = scheduler.submit([kind] {
        if (kind == 0)
            throw Exception("the histogram is empty");
        if (kind == 1)
            throw std::out_of_range("out of range");
        throw 42;
    });
    task->wait();
    QCOMPARE(task->getState(), TaskState::Failed);
    QCOMPARE(QString::fromStdString(task->getFailureMessage()), message);
    bool rethrown = false;
    try {
        task->rethrowFailure();
    } catch (...) {
        rethrown = true;
        QCOMPARE(QString::fromStdString(describeFailure(std::current_exception())), message);
    }
    QVERIFY(rethrown);
    task.reset();
    QVERIFY(collector.get().empty());
}

void TestScheduler::unreadFailureIsReported()
{
    FailureCollector collector;
    {
        Scheduler scheduler("TestPool", 1);
        scheduler.submit([] { throw Exception("nobody listens"); });
        scheduler.waitForIdle();
    }
    QCOMPARE(collector.get(), Array<String> { "task: nobody listens" });
}

void TestScheduler::waitingInsideTheOnlyWorkerDoesNotDeadlock()
{
    Scheduler scheduler("TestPool", 1);
    std::atomic<int> order = 0;
    int innerAt = -1, outerAt = -1;
    auto outer = scheduler.submit([&] {
        auto inner = scheduler.submit([&] { innerAt = order++; });
        inner->wait();
        outerAt = order++;
    });
    outer->wait();
    QCOMPARE(innerAt, 0);
    QCOMPARE(outerAt, 1);
    scheduler.waitForIdle();
}

void TestScheduler::destructionRunsQueuedTasks()
{
    std::atomic<int> ran = 0;
    Array<SharedPtr<Task>> tasks;
    {
        Scheduler scheduler("TestPool", 1);
        for (int i = 0; i < 100; ++i)
            tasks.push_back(scheduler.submit([&] { ++ran; }));
    }
    QCOMPARE(ran.load(), 100);
    for (const auto& task : tasks)
        QCOMPARE(task->getState(), TaskState::Finished);
}

void TestScheduler::sharedInstancesAreDistinctPools()
{
    Scheduler& high = Scheduler::highPriorityInstance();
    Scheduler& normal = Scheduler::normalPriorityInstance();
    QVERIFY(&high != &normal);
    QCOMPARE(&Scheduler::highPriorityInstance(), &high);
    QVERIFY(high.getThreadCount() >= 1);
    // A normal-priority pool fully blocked must not hold up high-priority work.
    std::latch release(1);
    Array<SharedPtr<Task>> blockers;
    for (std::size_t i = 0; i < normal.getThreadCount(); ++i)
        blockers.push_back(normal.submit([&] { release.wait(); }));
    std::atomic<bool> highRan = false;
    auto quick = high.submit([&] { highRan = true; });
    // Wait through the workers, never inline: only the high pool can have run it.
    while (!quick->isDone())
        std::this_thread::yield();
    QVERIFY(highRan);
    release.count_down();
    for (const auto& blocker : blockers)
        blocker->wait();
}

QTEST_GUILESS_MAIN(TestScheduler)
#include "tst_Scheduler.moc"
