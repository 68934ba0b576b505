#include <MarlixLibQt/LibQt.h>

#include <MarlixLib/Lib.h>
#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/TypeDatabase.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QStyle>
#include <QSurfaceFormat>
#include <QTest>
#include <QTimer>

#include <thread>

using namespace Marlix;

namespace {
bool isLibraryModuleRegistered()
{
    return TypeDatabase::instance().isModuleRegistered(LibQt::getDataTypesRecord().getModuleName());
}
} // namespace

/// Start-up inside a process whose QApplication belongs to the host (the test's own).
class tst_LibQt : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void startupKeepsTheHostsApplication();
    void unmatchedShutdownStopsAndChangesNothing();
    void hostRegisteredTypesSurviveStartAndStop();
    void eventLoopFlagFollowsTheLoop();
    void modifierObserversSeeOnlyChanges_data();
    void modifierObserversSeeOnlyChanges();
    void openGlProbeAgreesAcrossThreads();
    void defaultOpenGlParameters();
};

void tst_LibQt::cleanup()
{
    while (LibQt::isStarted())
        LibQt::shutdown();
}

void tst_LibQt::startupKeepsTheHostsApplication()
{
    QCoreApplication* host = QCoreApplication::instance();
    QStyle* hostStyle = QApplication::style();
    const QString hostName = QCoreApplication::applicationName();

    LibQt::startup("Host test");
    LibQt::startup("Nested");
    QCOMPARE(Lib::getStartCount(), 1); // nested starts only count, they do not start the core again
    LibQt::shutdown();

    QCOMPARE(QCoreApplication::instance(), host);
    QCOMPARE(QApplication::style(), hostStyle);
    QCOMPARE(QCoreApplication::applicationName(), hostName);
    QVERIFY(LibQt::isStarted());
    QVERIFY(Lib::isStarted());
    QVERIFY(isLibraryModuleRegistered());
    QVERIFY(TypeDatabase::instance().lookupNativeTypeDefinition<double>());
    QCOMPARE(QMetaType::fromName("String"), QMetaType::fromType<String>());

    LibQt::shutdown();

    QCOMPARE(QCoreApplication::instance(), host);
    QVERIFY(!LibQt::isStarted());
    QVERIFY(!Lib::isStarted());
    QVERIFY(!isLibraryModuleRegistered());
}

void tst_LibQt::unmatchedShutdownStopsAndChangesNothing()
{
    try {
        LibQt::shutdown();
        QFAIL("an unmatched shutdown must stop");
    } catch (const StopException& stop) {
        QCOMPARE(QString::fromStdString(stop.getUnit()), QStringLiteral("LibQt"));
    }
    QVERIFY(!LibQt::isStarted());
    LibQt::startup("After a bad shutdown");
    QVERIFY(LibQt::isStarted());
}

void tst_LibQt::hostRegisteredTypesSurviveStartAndStop()
{
    Lib::startup();
    LibQt::registerDataTypes();

    LibQt::startup("Host registered first");
    LibQt::shutdown();

    QVERIFY(isLibraryModuleRegistered());
    LibQt::unregisterDataTypes();
    Lib::shutdown();
    QVERIFY(!isLibraryModuleRegistered());
}

void tst_LibQt::eventLoopFlagFollowsTheLoop()
{
    QVERIFY(!LibQt::isEventLoopRunning());
    bool seenInside = false;
    bool seenFromThread = false;
    QTimer::singleShot(0, [&] {
        seenInside = LibQt::isEventLoopRunning();
        std::thread reader([&] { seenFromThread = LibQt::isEventLoopRunning(); });
        reader.join();
        QCoreApplication::exit(7);
    });

    QCOMPARE(LibQt::runEventLoop(), 7);
    QVERIFY(seenInside);
    QVERIFY(seenFromThread);
    QVERIFY(!LibQt::isEventLoopRunning());
}

void tst_LibQt::modifierObserversSeeOnlyChanges_data()
{
    QTest::addColumn<bool>("stateBefore"); // X11 reports a modifier key's state before it, other systems after it
    QTest::addColumn<QList<int>>("steps"); // key codes; negative = release
    QTest::addColumn<QList<int>>("expected"); // the modifiers after each reported change

    const int shift = Qt::Key_Shift;
    const int control = Qt::Key_Control;
    for (const bool before : { true, false }) {
        const QByteArray convention = before ? "state before, " : "state after, ";
        QTest::newRow(convention + "shift down and up")
            << before << QList<int> { shift, -shift } << QList<int> { Qt::ShiftModifier, Qt::NoModifier };
        QTest::newRow(convention + "letters do not change them")
            << before << QList<int> { shift, Qt::Key_A, -Qt::Key_A, -shift }
            << QList<int> { Qt::ShiftModifier, Qt::NoModifier };
        QTest::newRow(convention + "two held together")
            << before << QList<int> { control, shift, -control, -shift }
            << QList<int> { Qt::ControlModifier, Qt::ControlModifier | Qt::ShiftModifier, Qt::ShiftModifier,
                            Qt::NoModifier };
        QTest::newRow(convention + "plain typing") << before << QList<int> { Qt::Key_B, -Qt::Key_B } << QList<int> {};
    }
}

void tst_LibQt::modifierObserversSeeOnlyChanges()
{
    QFETCH(bool, stateBefore);
    QFETCH(QList<int>, steps);
    QFETCH(QList<int>, expected);

    LibQt::startup("Modifiers");
    QLineEdit edit;
    edit.show();
    QVERIFY(QTest::qWaitForWindowExposed(&edit));
    // The offscreen platform answers modifier queries from the last event it saw: start from a known state.
    QTest::keyClick(&edit, Qt::Key_Escape);
    QList<int> reported;
    const CallbackLifetime lifetime
        = LibQt::addModifierKeysObserver([&](Qt::KeyboardModifiers m) { reported.append(int(m.toInt())); });

    Qt::KeyboardModifiers held;
    for (int step : steps) {
        const auto key = Qt::Key(std::abs(step));
        const Qt::KeyboardModifier own = key == Qt::Key_Shift ? Qt::ShiftModifier
            : key == Qt::Key_Control                          ? Qt::ControlModifier
                                                              : Qt::NoModifier;
        const Qt::KeyboardModifiers after = step > 0 ? held | own : held & ~Qt::KeyboardModifiers(own);
        // QTest adds its own modifier key events for the modifiers it is given; send the key's event directly.
        QKeyEvent event(step > 0 ? QEvent::KeyPress : QEvent::KeyRelease, key, stateBefore ? held : after);
        QApplication::sendEvent(&edit, &event);
        held = after;
    }

    QCOMPARE(reported, expected);
}

void tst_LibQt::openGlProbeAgreesAcrossThreads()
{
    bool fromThread = false;
    std::thread other([&] { fromThread = LibQt::hasOpenGl(); });
    const bool fromGui = LibQt::hasOpenGl();
    other.join();
    QCOMPARE(fromThread, fromGui);
    QCOMPARE(LibQt::hasOpenGl(), fromGui);
}

void tst_LibQt::defaultOpenGlParameters()
{
    const QSurfaceFormat before = QSurfaceFormat::defaultFormat();
    LibQt::setDefaultOpenGlParameters(4, 8);
    QVERIFY_THROWS_EXCEPTION(Exception, LibQt::setDefaultOpenGlParameters(-1, 8));
    QCOMPARE(QSurfaceFormat::defaultFormat().samples(), 4); // the refused call changed nothing
    QCOMPARE(QSurfaceFormat::defaultFormat().stencilBufferSize(), 8);
    QSurfaceFormat::setDefaultFormat(before);
}

QTEST_MAIN(tst_LibQt)
#include "tst_LibQt.moc"
