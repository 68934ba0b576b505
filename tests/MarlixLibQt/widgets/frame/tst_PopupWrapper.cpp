#include <MarlixLibQt/widgets/frame/OverlayWrapper.h>
#include <MarlixLibQt/widgets/frame/PopupWrapper.h>

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryFile>
#include <QTest>
#include <QWheelEvent>
#include <QtTest/qtestspontaneevent.h>

#include <algorithm>

using Marlix::Widgets::OverlayWrapper;
using Marlix::Widgets::PopupWrapper;

namespace {

const QSize BUBBLE(200, 100);
const QRect SCREEN(0, 0, 1920, 1080);
// A second screen left of the primary one: every coordinate on it is negative.
const QRect LEFT_SCREEN(-1920, 0, 1920, 1080);

/// Counts the wheel events that reach it.
class WheelCounter : public QWidget
{
public:
    int wheels = 0;

protected:
    void wheelEvent(QWheelEvent* event) override
    {
        ++wheels;
        event->accept();
    }
};

/// A wheel turn at `position` of `window`, delivered to the widget under it.
void sendWheel(QWidget& window, QPoint position)
{
    QWidget* target = window.childAt(position);
    target = target ? target : &window;
    const QPointF local = target->mapFrom(&window, position);
    QWheelEvent event(local, target->mapToGlobal(local), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
        Qt::NoScrollPhase, false);
    // Spontaneous as from the window system, so an ignored wheel goes on to the parents.
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(target, &event);
}

} // namespace

class tst_PopupWrapper : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void geometry_data();
    void geometry();
    void popupFollowsItsGeometry();
    void confinedToWindowFlips();
    void placementOnHighDpiScreen_data();
    void placementOnHighDpiScreen();
    void rejectedDialogContentFinishesAndDeletes();
    void overlayFollowsParent_data();
    void overlayFollowsParent();
    void overlaySwallowsWheelAndHides();
};

void tst_PopupWrapper::geometry_data()
{
    QTest::addColumn<QRect>("available");
    QTest::addColumn<QRect>("anchor");
    QTest::addColumn<Qt::Edge>("requested");
    QTest::addColumn<Qt::AlignmentFlag>("alignment");
    QTest::addColumn<Qt::Edge>("expectedEdge");
    QTest::addColumn<QPoint>("expectedPosition");

    const QRect middle(500, 500, 100, 20); // centre (549, 509)
    // Room on every side: the pin points at the anchor's centre and the bubble touches the anchor.
    QTest::newRow("below") << SCREEN << middle << Qt::TopEdge << Qt::AlignHCenter << Qt::TopEdge << QPoint(449, 519);
    QTest::newRow("below, pin left") << SCREEN << middle << Qt::TopEdge << Qt::AlignLeft << Qt::TopEdge
                                     << QPoint(529, 519);
    QTest::newRow("below, pin right") << SCREEN << middle << Qt::TopEdge << Qt::AlignRight << Qt::TopEdge
                                      << QPoint(369, 519);
    QTest::newRow("above") << SCREEN << middle << Qt::BottomEdge << Qt::AlignHCenter << Qt::BottomEdge
                           << QPoint(449, 401);
    QTest::newRow("right of") << SCREEN << middle << Qt::LeftEdge << Qt::AlignVCenter << Qt::LeftEdge
                              << QPoint(599, 459);
    QTest::newRow("left of") << SCREEN << middle << Qt::RightEdge << Qt::AlignVCenter << Qt::RightEdge
                             << QPoint(301, 459);
    QTest::newRow("left of, pin top") << SCREEN << middle << Qt::RightEdge << Qt::AlignTop << Qt::RightEdge
                                      << QPoint(301, 489);
    // No room on the requested side: the bubble goes to the other side with the pin on the other edge.
    QTest::newRow("flip to above") << SCREEN << QRect(500, 1000, 100, 20) << Qt::TopEdge << Qt::AlignHCenter
                                   << Qt::BottomEdge << QPoint(449, 901);
    QTest::newRow("flip to below") << SCREEN << QRect(500, 20, 100, 20) << Qt::BottomEdge << Qt::AlignHCenter
                                   << Qt::TopEdge << QPoint(449, 39);
    QTest::newRow("flip to left") << SCREEN << QRect(1800, 500, 100, 20) << Qt::LeftEdge << Qt::AlignVCenter
                                  << Qt::RightEdge << QPoint(1601, 459);
    QTest::newRow("flip to right") << SCREEN << QRect(20, 500, 100, 20) << Qt::RightEdge << Qt::AlignVCenter
                                   << Qt::LeftEdge << QPoint(119, 459);
    QTest::newRow("no room either way") << QRect(0, 0, 1920, 200) << QRect(500, 80, 100, 20) << Qt::TopEdge
                                        << Qt::AlignHCenter << Qt::TopEdge << QPoint(449, 99);
    // Clamped 10 pixels inside the left/top and 9 inside the right/bottom; the pin leaves the anchor's centre.
    QTest::newRow("clamp left") << SCREEN << QRect(0, 500, 40, 20) << Qt::TopEdge << Qt::AlignHCenter << Qt::TopEdge
                                << QPoint(10, 519);
    QTest::newRow("clamp right") << SCREEN << QRect(1880, 500, 40, 20) << Qt::TopEdge << Qt::AlignHCenter << Qt::TopEdge
                                 << QPoint(1710, 519);
    QTest::newRow("clamp top") << SCREEN << QRect(500, 0, 100, 20) << Qt::LeftEdge << Qt::AlignVCenter << Qt::LeftEdge
                               << QPoint(599, 10);
    QTest::newRow("clamp bottom") << SCREEN << QRect(500, 1060, 100, 20) << Qt::LeftEdge << Qt::AlignVCenter
                                  << Qt::LeftEdge << QPoint(599, 970);
    QTest::newRow("bottom-right corner") << SCREEN << QRect(1880, 1040, 40, 40) << Qt::TopEdge << Qt::AlignHCenter
                                         << Qt::BottomEdge << QPoint(1710, 941);
    QTest::newRow("second screen, clamp left") << LEFT_SCREEN << QRect(-1900, 500, 40, 20) << Qt::TopEdge
                                               << Qt::AlignHCenter << Qt::TopEdge << QPoint(-1910, 519);
    QTest::newRow("second screen, clamp right") << LEFT_SCREEN << QRect(-60, 500, 40, 20) << Qt::TopEdge
                                                << Qt::AlignHCenter << Qt::TopEdge << QPoint(-210, 519);
    QTest::newRow("second screen, flip to left") << LEFT_SCREEN << QRect(-100, 500, 60, 20) << Qt::LeftEdge
                                                 << Qt::AlignVCenter << Qt::RightEdge << QPoint(-299, 459);
}

void tst_PopupWrapper::geometry()
{
    QFETCH(QRect, available);
    QFETCH(QRect, anchor);
    QFETCH(Qt::Edge, requested);
    QFETCH(Qt::AlignmentFlag, alignment);
    QFETCH(Qt::Edge, expectedEdge);
    QFETCH(QPoint, expectedPosition);

    Qt::Edge edge = requested;
    const QRect placement = PopupWrapper::computePopupGeometry(anchor, available, BUBBLE, edge, alignment);
    QCOMPARE(edge, expectedEdge);
    QCOMPARE(placement, QRect(expectedPosition, BUBBLE));
}

void tst_PopupWrapper::popupFollowsItsGeometry()
{
    QWidget window;
    window.resize(300, 200);
    auto* anchor = new QPushButton(QStringLiteral("Pick"), &window);
    anchor->setGeometry(100, 40, 80, 24);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    auto* content = new QLabel(QStringLiteral("A few words in a bubble"));
    content->setAccessibleName(QStringLiteral("Hint"));
    QPointer<PopupWrapper> popup = PopupWrapper::popupWidget(content, anchor, Qt::TopEdge, Qt::AlignHCenter);
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    QCoreApplication::processEvents();

    Qt::Edge edge = Qt::TopEdge;
    QCOMPARE(popup->geometry(), popup->getGeometryFor(edge, Qt::AlignHCenter));
    QCOMPARE(popup->edge(), edge);
    QCOMPARE(popup->accessibleName(), QStringLiteral("Hint"));
    QCOMPARE(content->parentWidget(), popup.data());
    QVERIFY(content->isVisible());
    popup->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(popup.isNull());
}

void tst_PopupWrapper::confinedToWindowFlips()
{
    QWidget window;
    window.resize(400, 300);
    auto* anchor = new QPushButton(QStringLiteral("Pick"), &window);
    anchor->setGeometry(160, 250, 80, 24);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    auto* content = new QLabel(QStringLiteral("Confined"));
    content->setFixedSize(120, 60);
    QPointer<PopupWrapper> popup = PopupWrapper::popupWidget(
        content, anchor, Qt::TopEdge, Qt::AlignHCenter, PopupWrapper::Flag::ConfineToAnchorWindow);
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    // No room below the anchor inside the window, so the bubble sits above it, pinned on its bottom edge.
    QCOMPARE(popup->edge(), Qt::BottomEdge);
    QVERIFY(popup->geometry().bottom() <= window.mapToGlobal(anchor->geometry().topLeft()).y());
    QVERIFY(window.geometry().contains(popup->geometry()));
    popup->reject();
}

void tst_PopupWrapper::placementOnHighDpiScreen_data()
{
    QTest::addColumn<int>("side"); // of the second screen: -1 left of the primary one, 1 right of it
    QTest::addColumn<QRect>("anchor"); // from the top-left of that screen, in device-independent pixels
    QTest::addColumn<Qt::Edge>("requested");
    QTest::addColumn<Qt::Edge>("expectedEdge");
    QTest::addColumn<QPoint>("expectedPosition");

    // The screens are 1920 x 1080 device-independent pixels (2880 x 1620 device pixels). A popup that read device
    // pixels would find room below an anchor at 1000 and beside one at 1880.
    for (const int side : { -1, 1 }) {
        const QByteArray name = side < 0 ? "left screen, " : "right screen, ";
        QTest::newRow(name + "below") << side << QRect(500, 500, 100, 20) << Qt::TopEdge << Qt::TopEdge
                                      << QPoint(449, 519);
        QTest::newRow(name + "flip to above")
            << side << QRect(500, 1000, 100, 20) << Qt::TopEdge << Qt::BottomEdge << QPoint(449, 901);
        QTest::newRow(name + "clamp right")
            << side << QRect(1880, 500, 40, 20) << Qt::TopEdge << Qt::TopEdge << QPoint(1710, 519);
        QTest::newRow(name + "clamp left")
            << side << QRect(0, 500, 40, 20) << Qt::BottomEdge << Qt::BottomEdge << QPoint(10, 401);
    }
}

void tst_PopupWrapper::placementOnHighDpiScreen()
{
    QFETCH(int, side);
    QFETCH(QRect, anchor);
    QFETCH(Qt::Edge, requested);
    QFETCH(Qt::Edge, expectedEdge);
    QFETCH(QPoint, expectedPosition);

    const QList<QScreen*> screens = QGuiApplication::screens();
    const auto found = std::find_if(screens.begin(), screens.end(), [side](const QScreen* screen) {
        return screen->devicePixelRatio() == 1.5 && screen->geometry().x() * side > 0;
    });
    if (found == screens.end())
        QSKIP("Needs the offscreen platform's desk of screens that main() sets up.");
    const QRect available = (*found)->availableGeometry();
    QCOMPARE(available.size(), QSize(1920, 1080));

    QWidget window;
    window.setGeometry(available);
    auto* button = new QPushButton(QStringLiteral("Pick"), &window);
    button->setGeometry(anchor);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.screen(), *found);

    auto* content = new QLabel(QStringLiteral("On the second screen"));
    content->setFixedSize(BUBBLE.width(), BUBBLE.height() - PopupWrapper::PIN_MARGIN);
    QPointer<PopupWrapper> popup = PopupWrapper::popupWidget(content, button, requested, Qt::AlignHCenter);
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    QCOMPARE(popup->edge(), expectedEdge);
    QCOMPARE(popup->geometry(), QRect(available.topLeft() + expectedPosition, BUBBLE));
    QCOMPARE(popup->screen(), *found);
    popup->reject();
}

void tst_PopupWrapper::rejectedDialogContentFinishesAndDeletes()
{
    QWidget window;
    auto* anchor = new QPushButton(QStringLiteral("Pick"), &window);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    auto* dialog = new QDialog; // no layout, so no size hint: the bubble keeps the dialog's own size
    dialog->setSizeGripEnabled(true);
    QPointer<QDialog> content = dialog;
    QPointer<PopupWrapper> popup = PopupWrapper::popupWidget(dialog, anchor, Qt::BottomEdge, Qt::AlignLeft);
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    QVERIFY(!dialog->isSizeGripEnabled());
    QSignalSpy contentFinished(dialog, &QDialog::finished);
    QSignalSpy popupFinished(popup.data(), &QDialog::finished);

    popup->reject();
    QCOMPARE(contentFinished.count(), 1);
    QCOMPARE(popupFinished.count(), 1);
    QCOMPARE(popupFinished.first().first().toInt(), int(QDialog::Rejected));
    QVERIFY(!popup->isVisible());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(popup.isNull());
    QVERIFY(content.isNull());
}

void tst_PopupWrapper::overlayFollowsParent_data()
{
    QTest::addColumn<Qt::Edge>("edge");
    QTest::newRow("top") << Qt::TopEdge;
    QTest::newRow("left") << Qt::LeftEdge;
    QTest::newRow("right") << Qt::RightEdge;
    QTest::newRow("bottom") << Qt::BottomEdge;
}

void tst_PopupWrapper::overlayFollowsParent()
{
    QFETCH(Qt::Edge, edge);
    QWidget parent;
    parent.resize(300, 200);
    auto* overlay = new OverlayWrapper(new QLabel(QStringLiteral("Strip")), edge, &parent);
    parent.show();
    QVERIFY(QTest::qWaitForWindowExposed(&parent));
    QVERIFY(overlay->isHidden());

    overlay->show(true);
    parent.resize(360, 260);
    QCoreApplication::processEvents();
    const QSize hint = overlay->sizeHint();
    const bool horizontal = edge == Qt::TopEdge || edge == Qt::BottomEdge;
    const QSize size = horizontal ? QSize(360, hint.height()) : QSize(hint.width(), 260);
    const QPoint position(
        edge == Qt::RightEdge ? 360 - size.width() : 0, edge == Qt::BottomEdge ? 260 - size.height() : 0);
    QCOMPARE(overlay->geometry(), QRect(position, size));
}

void tst_PopupWrapper::overlaySwallowsWheelAndHides()
{
    WheelCounter parent;
    parent.resize(300, 200);
    auto* overlay = new OverlayWrapper(new QLabel(QStringLiteral("Strip")), Qt::BottomEdge, &parent);
    parent.show();
    QVERIFY(QTest::qWaitForWindowExposed(&parent));
    overlay->show(true);
    QCoreApplication::processEvents();

    sendWheel(parent, overlay->geometry().center());
    QCOMPARE(parent.wheels, 0);
    sendWheel(parent, QPoint(150, 10)); // the parent's own area still scrolls
    QCOMPARE(parent.wheels, 1);

    overlay->show(false);
    QVERIFY(overlay->isHidden());
}

int main(int argc, char** argv)
{
    // Under the offscreen platform, a desk of three screens: the primary one at 96 DPI with one at 144 DPI on each
    // side. Qt gives each its own scale (device-independent sizes 1920 x 1080, origins in device pixels), as on a
    // desktop with mixed DPI; a fixed font DPI would flatten that.
    QTemporaryFile desk(QDir::tempPath() + QStringLiteral("/screens-XXXXXX.json"));
    if (qgetenv("QT_QPA_PLATFORM") == "offscreen" && desk.open()) {
        desk.write(R"({ "windowFrameMargins": false, "screens": [
            { "name": "0-primary", "x": 0, "y": 0, "width": 1920, "height": 1080, "logicalDpi": 96 },
            { "name": "1-right", "x": 1920, "y": 0, "width": 2880, "height": 1620, "logicalDpi": 144 },
            { "name": "2-left", "x": -2880, "y": 0, "width": 2880, "height": 1620, "logicalDpi": 144 } ] })");
        desk.flush();
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + QFile::encodeName(desk.fileName()));
        qunsetenv("QT_FONT_DPI");
    }
    QApplication application(argc, argv);
    tst_PopupWrapper test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "tst_PopupWrapper.moc"
