#include <MarlixLib/base/Exception.h>
#include <MarlixLib/tasks/StandbyThread.h>
#include <MarlixLib/tasks/UnhandledFailure.h>

#include <QtTest/QTest>

#include <condition_variable>
#include <latch>
#include <pthread.h>

using namespace Marlix;

namespace {
// What the thread reports about itself through pthreads.
struct SelfReport
{
    String name;
    std::size_t stackSize = 0;
};

SelfReport readSelf()
{
    SelfReport report;
    char buffer[64] = {};
    if (pthread_getname_np(pthread_self(), buffer, sizeof buffer) == 0)
        report.name = buffer;
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
        pthread_attr_getstacksize(&attributes, &report.stackSize);
        pthread_attr_destroy(&attributes);
    }
    return report;
}
} // namespace

class TestStandbyThread : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nameAndStackSizeReachTheSystem_data();
    void nameAndStackSizeReachTheSystem();
    void stopWakesASleepingBody_data();
    void stopWakesASleepingBody();
    void failureIsKept();
    void unreadFailureIsReportedOnDestruction();
    void joinFromItselfStops();
};

void TestStandbyThread::nameAndStackSizeReachTheSystem_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<qulonglong>("stackSize");
    QTest::addColumn<QString>("systemName");
    QTest::addColumn<qulonglong>("expectedStack");
    QTest::newRow("thumbnail renderer") << "ThumbnailImageCache_RenderThread" << 0x100000ull << "ThumbnailImageC"
                                        << 0x100000ull;
    QTest::newRow("short name, odd size rounded to pages") << "Loader" << 300001ull << "Loader" << 303104ull;
    QTest::newRow("cut before a multi-byte character")
        << "Renderings\xc3\xa9\xc3\xa9\xc3\xa9" << 0x200000ull << "Renderings\xc3\xa9\xc3\xa9" << 0x200000ull;
    QTest::newRow("tiny stack raised to the minimum")
        << "Tiny" << 1ull << "Tiny" << qulonglong(std::max<std::size_t>(PTHREAD_STACK_MIN, 4096));
}

void TestStandbyThread::nameAndStackSizeReachTheSystem()
{
    QFETCH(QString, name);
    QFETCH(qulonglong, stackSize);
    QFETCH(QString, systemName);
    QFETCH(qulonglong, expectedStack);
    QCOMPARE_LE(systemName.toUtf8().size(), qsizetype(StandbyThread::SYSTEM_NAME_LIMIT));
    SelfReport report;
    {
        StandbyThread thread(name.toStdString(), std::size_t(stackSize), [&](std::stop_token) { report = readSelf(); });
        QCOMPARE(QString::fromStdString(thread.getName()), name);
        QCOMPARE(QString::fromStdString(thread.getSystemName()), systemName);
        QCOMPARE(qulonglong(thread.getStackSize()), expectedStack);
        thread.join();
    }
    QCOMPARE(QString::fromStdString(report.name), systemName);
    // The C library may hand out a cached stack somewhat larger than asked for, never a smaller one; the thread
    // sanitizer raises small stacks to 1 MiB of its own.
    QCOMPARE_GE(qulonglong(report.stackSize), expectedStack);
    QCOMPARE_LE(qulonglong(report.stackSize), std::max(4 * expectedStack, qulonglong(1) << 20));
}

void TestStandbyThread::stopWakesASleepingBody_data()
{
    QTest::addColumn<bool>("byDestruction");
    QTest::newRow("requested") << false;
    QTest::newRow("destroyed") << true;
}

void TestStandbyThread::stopWakesASleepingBody()
{
    QFETCH(bool, byDestruction);
    Mutex mutex;
    std::condition_variable_any condition;
    int wokenBy = 0; // 1 work, 2 stop
    std::latch sleeping(1);
    Optional<StandbyThread> thread(std::in_place, "Sleeper", 0, [&](std::stop_token stop) {
        std::unique_lock lock(mutex);
        sleeping.count_down();
        const bool work = condition.wait(lock, stop, [] { return false; });
        wokenBy = work ? 1 : 2;
    });
    sleeping.wait();
    QVERIFY(thread->isRunning());
    QVERIFY(!thread->isStopRequested());
    if (byDestruction) {
        thread.reset(); // stops and joins
    } else {
        thread->requestStop();
        thread->join();
        QVERIFY(!thread->isRunning());
        QVERIFY(thread->isStopRequested());
    }
    QCOMPARE(wokenBy, 2);
}

void TestStandbyThread::failureIsKept()
{
    StandbyThread thread("Failing", 0, [](std::stop_token) { throw Exception("the renderer lost its device"); });
    thread.join();
    QCOMPARE(
        QString::fromStdString(describeFailure(thread.getFailure())), QStringLiteral("the renderer lost its device"));
}

void TestStandbyThread::unreadFailureIsReportedOnDestruction()
{
    Array<String> reports;
    auto previous = setUnhandledFailureHandler([&](StringView origin, std::exception_ptr failure) {
        reports.push_back(String(origin) + ": " + describeFailure(failure));
    });
    {
        StandbyThread thread("Careless", 0, [](std::stop_token) { throw Exception("lost"); });
    }
    setUnhandledFailureHandler(previous);
    QCOMPARE(reports, Array<String> { "thread Careless: lost" });
}

void TestStandbyThread::joinFromItselfStops()
{
    bool stopped = false;
    StandbyThread* self = nullptr;
    std::latch ready(1);
    StandbyThread thread("SelfJoin", 0, [&](std::stop_token) {
        ready.wait();
        try {
            self->join();
        } catch (const StopException& e) {
            stopped = e.getUnit() == "tasks/StandbyThread";
        }
    });
    self = &thread;
    ready.count_down();
    thread.join();
    QVERIFY(stopped);
}

QTEST_GUILESS_MAIN(TestStandbyThread)
#include "tst_StandbyThread.moc"
