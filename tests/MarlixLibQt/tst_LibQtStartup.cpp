#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/styles/MarlixOriginalStyle.h>
#include <MarlixLibQt/widgets/docking/Dock.h>

#include <MarlixLib/Lib.h>
#include <MarlixLib/data/TypeDatabase.h>

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QStyle>
#include <QTest>
#include <QWheelEvent>
#include <QWidget>
#include <QtTest/qtestspontaneevent.h>
#include <qpa/qwindowsysteminterface_p.h>

#include <array>
#include <cstring>

using namespace Marlix;

namespace {

/// Hands a key press of the X11 protocol's wire layout to the native event filters, as the xcb platform does.
bool sendNativeKeyPress(std::uint16_t state)
{
    std::array<unsigned char, 32> event {};
    event[0] = 2; // key press
    std::memcpy(event.data() + 28, &state, sizeof(state));
    qintptr result = 0;
    return QAbstractEventDispatcher::instance()->filterNativeEvent("xcb_generic_event_t", event.data(), &result);
}

/// The phase that a widget sees of a plain wheel turn that the window system hands to its window.
Qt::ScrollPhase wheelPhaseSeen()
{
    struct PhaseWidget : QWidget
    {
        Qt::ScrollPhase seen = Qt::ScrollMomentum;
        void wheelEvent(QWheelEvent* event) override
        {
            if (seen == Qt::ScrollMomentum)
                seen = event->phase();
        }
    } widget;
    widget.show();
    QWheelEvent event(QPointF(5, 5), widget.mapToGlobal(QPointF(5, 5)), QPoint(), QPoint(0, 120), Qt::NoButton,
        Qt::NoModifier, Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(widget.windowHandle(), &event);
    return widget.seen;
}

/// Whether the dock that holds the focus is tracked.
bool dockFocusTracked()
{
    Widgets::Dock dock(QStringLiteral("Focus"));
    auto* edit = new QLineEdit;
    dock.setWidget(edit);
    dock.show();
    if (!QTest::qWaitForWindowActive(&dock))
        return false;
    edit->setFocus();
    return Widgets::Dock::getDockWithFocus() == &dock;
}

} // namespace

/// Start-up in a process without a Qt application: the library makes it, and the last shutdown takes it away.
class tst_LibQtStartup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void firstStartCreatesTheApplication();
    void lastShutdownDeletesTheApplication();
    void attributesChangeTheFirstStart_data();
    void attributesChangeTheFirstStart();
    void startsAgainAfterAFullStop();
    void wheelPhasesEndWithTheLastStop();
};

void tst_LibQtStartup::cleanup()
{
    while (LibQt::isStarted())
        LibQt::shutdown();
    QVERIFY(!QCoreApplication::instance());
}

void tst_LibQtStartup::firstStartCreatesTheApplication()
{
    QVERIFY(!QCoreApplication::instance());

    LibQt::startup("Startup test");

    auto* application = qobject_cast<QApplication*>(QCoreApplication::instance());
    QVERIFY(application);
    QCOMPARE(QCoreApplication::applicationName(), QStringLiteral("Startup test"));
    QCOMPARE(QCoreApplication::organizationName(), QString::fromLatin1(LibQt::ORGANIZATION_NAME));
    QVERIFY(qobject_cast<MarlixOriginalStyle*>(QApplication::style()));
    QCOMPARE(QApplication::font().pointSizeF(), 9.0);
    QCOMPARE(QGuiApplication::highDpiScaleFactorRoundingPolicy(),
             Qt::HighDpiScaleFactorRoundingPolicy::RoundPreferFloor);
    QVERIFY(QCoreApplication::testAttribute(Qt::AA_PluginApplication));
    QVERIFY(!QCoreApplication::arguments().isEmpty());
    QCOMPARE(QMetaType::fromName("String"), QMetaType::fromType<String>());
    QVERIFY(TypeDatabase::instance().isModuleRegistered(LibQt::getDataTypesRecord().getModuleName()));
    QVERIFY(QWindowSystemInterfacePrivate::synchronousWindowSystemEvents);

    // The modifier keys are watched from the first start on.
    QWidget target;
    QList<Qt::KeyboardModifiers> seen;
    const CallbackLifetime lifetime = LibQt::addModifierKeysObserver([&](Qt::KeyboardModifiers m) { seen.append(m); });
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Control, Qt::NoModifier);
    QApplication::sendEvent(&target, &press);
    QCOMPARE(seen, QList<Qt::KeyboardModifiers> { Qt::ControlModifier });
    QVERIFY(dockFocusTracked());
}

void tst_LibQtStartup::lastShutdownDeletesTheApplication()
{
    LibQt::startup("Nested");
    const QPointer<QCoreApplication> application = QCoreApplication::instance();
    const QPointer<QStyle> style = QApplication::style();

    LibQt::startup("Nested inner");
    QCOMPARE(QCoreApplication::instance(), application.data());
    QCOMPARE(QCoreApplication::applicationName(), QStringLiteral("Nested")); // only the first start names it

    LibQt::shutdown();
    QVERIFY(application);
    QVERIFY(LibQt::isStarted());

    LibQt::shutdown();
    QVERIFY(!application);
    QVERIFY(!style);
    QVERIFY(!QCoreApplication::instance());
    QVERIFY(!LibQt::isStarted());
    QVERIFY(!Lib::isStarted());
    QVERIFY(!TypeDatabase::instance().isModuleRegistered(LibQt::getDataTypesRecord().getModuleName()));
    QVERIFY(!QWindowSystemInterfacePrivate::synchronousWindowSystemEvents);
}

void tst_LibQtStartup::attributesChangeTheFirstStart_data()
{
    QTest::addColumn<int>("attributes");
    QTest::addColumn<bool>("libraryStyle");
    QTest::addColumn<bool>("pluginApplication");
    QTest::addColumn<bool>("modifiersWatched");
    QTest::addColumn<bool>("nativeEventsWatched"); // Qt applies native filters to applications of their own only
    QTest::addColumn<bool>("wheelPhases");

    using A = LibQt::Attribute;
    QTest::newRow("none") << 0 << true << true << true << false << true;
    QTest::newRow("platform style") << int(A::KeepPlatformStyle) << false << true << true << false << true;
    QTest::newRow("standalone") << int(A::StandaloneApplication) << true << false << true << true << true;
    QTest::newRow("no modifier tracking") << int(A::NoModifierKeysTracking) << true << true << false << false << true;
    QTest::newRow("standalone, no modifier tracking")
        << (int(A::StandaloneApplication) | int(A::NoModifierKeysTracking)) << true << false << false << false << true;
    QTest::newRow("no wheel phases") << int(A::NoWheelScrollPhases) << true << true << true << false << false;
}

void tst_LibQtStartup::attributesChangeTheFirstStart()
{
    QFETCH(int, attributes);
    QFETCH(bool, libraryStyle);
    QFETCH(bool, pluginApplication);
    QFETCH(bool, modifiersWatched);
    QFETCH(bool, nativeEventsWatched);
    QFETCH(bool, wheelPhases);

    LibQt::startup("Attributes", LibQt::ApplicationType::Gui,
                   Flags<LibQt::Attribute>::fromBits(std::uint32_t(attributes)));

    QCOMPARE(qobject_cast<MarlixOriginalStyle*>(QApplication::style()) != nullptr, libraryStyle);
    QCOMPARE(QCoreApplication::testAttribute(Qt::AA_PluginApplication), pluginApplication);
    QList<Qt::KeyboardModifiers> seen;
    const CallbackLifetime lifetime = LibQt::addModifierKeysObserver([&](Qt::KeyboardModifiers m) { seen.append(m); });
    QWidget target;
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Shift, Qt::NoModifier);
    QApplication::sendEvent(&target, &press);
    QCOMPARE(!seen.isEmpty(), modifiersWatched);

    // A key pressed with Control and Alt held (X11 masks Control 0x04, Mod1 0x08) in a window Qt does not handle.
    seen.clear();
    QVERIFY(!sendNativeKeyPress(0x04 | 0x08)); // never swallowed
    QCOMPARE(seen.value(0) == (Qt::ControlModifier | Qt::AltModifier), nativeEventsWatched);

    QCOMPARE(wheelPhaseSeen(), wheelPhases ? Qt::ScrollBegin : Qt::NoScrollPhase);
}

void tst_LibQtStartup::startsAgainAfterAFullStop()
{
    // First as a tool without widgets, then with them.
    LibQt::startup("Tool", LibQt::ApplicationType::Core);
    QVERIFY(QCoreApplication::instance());
    QVERIFY(!qobject_cast<QGuiApplication*>(QCoreApplication::instance()));
    QCOMPARE(QMetaType::fromName("String"), QMetaType::fromType<String>());
    LibQt::shutdown();
    LibQt::startup("Second life", LibQt::ApplicationType::Gui, {}, Io::Path("/opt/host/bin/second"));

    QVERIFY(qobject_cast<QApplication*>(QCoreApplication::instance()));
    QCOMPARE(QCoreApplication::applicationName(), QStringLiteral("Second life"));
    QCOMPARE(QCoreApplication::arguments().value(0), QStringLiteral("/opt/host/bin/second"));
    QWidget window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(dockFocusTracked()); // in the new application too
}

void tst_LibQtStartup::wheelPhasesEndWithTheLastStop()
{
    // In a host's own application, which outlives the library.
    int argc = 1;
    char name[] = "host";
    char* argv[] = { name, nullptr };
    QApplication application(argc, argv);
    LibQt::startup("Host");
    LibQt::startup("Host again");
    QCOMPARE(wheelPhaseSeen(), Qt::ScrollBegin);
    LibQt::shutdown();
    QCOMPARE(wheelPhaseSeen(), Qt::ScrollBegin);
    LibQt::shutdown();
    QCOMPARE(wheelPhaseSeen(), Qt::NoScrollPhase);
}

QTEST_APPLESS_MAIN(tst_LibQtStartup)
#include "tst_LibQtStartup.moc"
