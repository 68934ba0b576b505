#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/QtUtils.h>

#include <MarlixLib/base/Exception.h>

#include <QApplication>
#include <QCursor>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>
#include <QWindow>

using namespace Marlix;

namespace {

// Two screens side by side: one at the standard 96 DPI and one at 144 DPI (a 150 % display).
constexpr const char* SCREENS_CONFIGURATION = R"({ "screens": [
    { "name": "Standard", "x": 0, "y": 0, "width": 800, "height": 600,
      "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1 },
    { "name": "Dense", "x": 800, "y": 0, "width": 1200, "height": 900,
      "logicalDpi": 144, "logicalBaseDpi": 96, "dpr": 1 } ] })";

QScreen* screenNamed(const QString& name)
{
    for (QScreen* screen : QGuiApplication::screens())
        if (screen->name() == name)
            return screen;
    return nullptr;
}

} // namespace

class tst_QtUtils : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void deviceIndependentPixels_data();
    void deviceIndependentPixels();
    void deviceIndependentPixelsWithoutWidget();
    void centerOnScreen();
    void centerOnMouseStaysOnTheScreen();
    void clearLayoutRange_data();
    void clearLayoutRange();
    void addSingleWidgetReplacesTheContent();
    void ownerOfAWindow();
};

void tst_QtUtils::initTestCase()
{
    QCOMPARE(QGuiApplication::screens().size(), 2);
}

void tst_QtUtils::deviceIndependentPixels_data()
{
    QTest::addColumn<QString>("screen");
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("flags");
    QTest::addColumn<int>("expected");

    const int keep = int(DipValueHandling::KeepNonZero);
    const int zero = int(DipValueHandling::ZeroAtStandardDpi);
    QTest::newRow("96 dpi keeps the value") << "Standard" << 10.0 << 0 << 10;
    QTest::newRow("144 dpi scales by 1.5") << "Dense" << 10.0 << 0 << 15;
    QTest::newRow("negative half rounds away from zero") << "Dense" << -3.0 << 0 << -5;
    QTest::newRow("tiny vanishes") << "Dense" << 0.3 << 0 << 0;
    QTest::newRow("tiny kept non-zero") << "Dense" << 0.3 << keep << 1;
    QTest::newRow("zero stays zero when kept") << "Dense" << 0.0 << keep << 0;
    QTest::newRow("extra only on scaled screens, 96") << "Standard" << 5.0 << zero << 0;
    QTest::newRow("extra only on scaled screens, 144") << "Dense" << 5.0 << zero << 8;
}

void tst_QtUtils::deviceIndependentPixels()
{
    QFETCH(QString, screen);
    QFETCH(double, value);
    QFETCH(int, flags);
    QFETCH(int, expected);

    QScreen* target = screenNamed(screen);
    QVERIFY(target);
    QWidget window;
    auto* child = new QLabel(QStringLiteral("inside"), &window);
    window.setGeometry(QRect(target->geometry().topLeft() + QPoint(20, 20), QSize(200, 100)));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.windowHandle()->screen(), target);

    QCOMPARE(getDeviceIndependentPixels(value, child, Flags<DipValueHandling>::fromBits(std::uint8_t(flags))),
             expected);
}

void tst_QtUtils::deviceIndependentPixelsWithoutWidget()
{
    const bool densePrimary = QGuiApplication::primaryScreen()->name() == QLatin1String("Dense");
    QCOMPARE(getDeviceIndependentPixels(10, nullptr), densePrimary ? 15 : 10);

    // A window that was never shown is measured on the screen Qt will show it on, not on the primary one.
    QWidget hidden;
    hidden.setScreen(screenNamed(densePrimary ? QStringLiteral("Standard") : QStringLiteral("Dense")));
    QCOMPARE(getDeviceIndependentPixels(10, &hidden), densePrimary ? 10 : 15);
}

void tst_QtUtils::centerOnScreen()
{
    QWidget window;
    window.setGeometry(QRect(QPoint(810, 10), QSize(300, 200)));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    Marlix::centerOnScreen(window);

    const QRect area = screenNamed(QStringLiteral("Dense"))->availableGeometry();
    const QPoint offset = window.frameGeometry().center() - area.center();
    QVERIFY2(offset.manhattanLength() <= 2, qPrintable(QStringLiteral("off by %1, %2").arg(offset.x()).arg(offset.y())));
}

void tst_QtUtils::centerOnMouseStaysOnTheScreen()
{
    QWidget window;
    window.resize(300, 200);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    QCursor::setPos(QPoint(1400, 450));
    centerOnMouse(&window);
    QVERIFY((window.frameGeometry().center() - QPoint(1400, 450)).manhattanLength() <= 2);

    // Near the right edge of the dense screen the window is pushed back inside it.
    QCursor::setPos(QPoint(1990, 890));
    centerOnMouse(&window);
    const QRect area = screenNamed(QStringLiteral("Dense"))->availableGeometry();
    QVERIFY(area.contains(window.frameGeometry()));
    QCOMPARE(window.frameGeometry().right(), area.right());
    QCOMPARE(window.frameGeometry().bottom(), area.bottom());

    QVERIFY_THROWS_EXCEPTION(StopException, centerOnMouse(nullptr));
}

void tst_QtUtils::clearLayoutRange_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("remaining"); // texts of the labels left, or "stop" when the range is refused

    QTest::newRow("middle two") << 1 << 2 << "ad";
    QTest::newRow("all") << 0 << 4 << "";
    QTest::newRow("none") << 2 << 0 << "abcd";
    QTest::newRow("past the end") << 3 << 2 << "stop";
    QTest::newRow("negative start") << -1 << 1 << "stop";
    QTest::newRow("negative count") << 0 << -1 << "stop";
}

void tst_QtUtils::clearLayoutRange()
{
    QFETCH(int, first);
    QFETCH(int, count);
    QFETCH(QString, remaining);

    QWidget parent;
    auto* layout = new QVBoxLayout(&parent);
    for (const char* text : { "a", "b", "c", "d" })
        layout->addWidget(new QLabel(QString::fromLatin1(text)));

    if (remaining == QLatin1String("stop")) {
        QVERIFY_THROWS_EXCEPTION(StopException, clearLayout(layout, first, count));
        remaining = QStringLiteral("abcd");
    } else {
        clearLayout(layout, first, count);
    }

    QString left;
    for (int i = 0; i < layout->count(); ++i)
        left += static_cast<QLabel*>(layout->itemAt(i)->widget())->text();
    QCOMPARE(left, remaining);
    QCOMPARE(parent.findChildren<QLabel*>().size(), remaining.size());
}

void tst_QtUtils::addSingleWidgetReplacesTheContent()
{
    QWidget parent;
    auto* layout = new QHBoxLayout(&parent);
    layout->setContentsMargins(5, 5, 5, 5);
    const QPointer<QLabel> old = new QLabel(QStringLiteral("old"));
    layout->addWidget(old);
    auto* child = new QLabel(QStringLiteral("new"));

    QCOMPARE(addSingleWidget(&parent, child), child);
    QCOMPARE(parent.layout()->count(), 1);
    QCOMPARE(parent.layout()->itemAt(0)->widget(), child);
    QCOMPARE(child->parentWidget(), &parent);
    QCOMPARE(parent.layout()->contentsMargins(), QMargins());
    QVERIFY(!old);

    // Adding the same child again keeps it.
    addSingleWidget(&parent, child);
    QCOMPARE(parent.layout()->count(), 1);
    QCOMPARE(parent.layout()->itemAt(0)->widget(), child);

    QWidget empty;
    auto* only = new QLabel(QStringLiteral("only"));
    addSingleWidget(&empty, only);
    QCOMPARE(empty.layout()->itemAt(0)->widget(), only);
    QVERIFY_THROWS_EXCEPTION(StopException, addSingleWidget(&empty, nullptr));
}

void tst_QtUtils::ownerOfAWindow()
{
    QWidget owner;
    QWidget tool;
    owner.show();
    tool.show();
    QVERIFY(QTest::qWaitForWindowExposed(&owner));
    QVERIFY(QTest::qWaitForWindowExposed(&tool));
    const WindowHandle ownerHandle = getNativeHandleFromQt(owner.winId());
    const WindowHandle toolHandle = getNativeHandleFromQt(tool.winId());
    QVERIFY(ownerHandle != toolHandle);

    setOwnerFromNativeHandleQt(toolHandle, ownerHandle);
    QCOMPARE(tool.windowHandle()->transientParent(), owner.windowHandle());

    QVERIFY_THROWS_EXCEPTION(Exception, setOwnerFromNativeHandleQt(toolHandle, getNativeHandleFromQt(0xdeadbeef)));
    QCOMPARE(tool.windowHandle()->transientParent(), owner.windowHandle());
    setOwnerFromNativeHandleQt(toolHandle, nullptr);
    QCOMPARE(tool.windowHandle()->transientParent(), nullptr);
}

int main(int argc, char** argv)
{
    QTemporaryDir folder;
    QFile configuration(folder.filePath(QStringLiteral("screens.json")));
    if (!folder.isValid() || !configuration.open(QIODevice::WriteOnly)
        || configuration.write(SCREENS_CONFIGURATION) < 0)
        return 2;
    configuration.close();
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + QFile::encodeName(configuration.fileName()));
    // The suites pin every screen to 96 DPI for stable text metrics; this one measures the screens' own DPI.
    qunsetenv("QT_FONT_DPI");

    // The library's own start-up makes the application, with the scale rounding that gives a 144-DPI logical screen.
    LibQt::startup("QtUtils test", LibQt::ApplicationType::Gui, {}, Io::Path(argv[0]));
    tst_QtUtils test;
    const int result = QTest::qExec(&test, argc, argv);
    LibQt::shutdown();
    return result;
}

#include "tst_QtUtils.moc"
