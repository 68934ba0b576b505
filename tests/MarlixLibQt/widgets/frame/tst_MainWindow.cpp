#include <MarlixLibQt/widgets/frame/MainWindow.h>
#include <MarlixLibQt/widgets/frame/OpenGlWidget.h>
#include <MarlixLibQt/widgets/frame/ViewportHost.h>

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QVBoxLayout>

#include <map>

using namespace Marlix;
using namespace Marlix::Widgets;

namespace {

/// Counts what it paints, with and without OpenGL.
class CountingGlWidget : public OpenGlWidget
{
public:
    int glPaints = 0;
    int plainPaints = 0;

protected:
    void paintGL() override { ++glPaints; }
    void paintWithoutOpenGl(QPainter& painter) override
    {
        ++plainPaints;
        OpenGlWidget::paintWithoutOpenGl(painter);
    }
};

/// Writes each notice of the host into a shared log as "<name>+" (gained) or "<name>-" (lost).
class LoggingClient : public IViewportClient
{
public:
    LoggingClient(QString name, QStringList& log)
        : name(std::move(name))
        , log(log)
    {
    }
    void onExclusiveMouseControlGained() override { log.append(name + u'+'); }
    void onExclusiveMouseControlLost() override { log.append(name + u'-'); }

    QString name;
    QStringList& log;
};

void settle()
{
    // The queued update first, then the paint it asks for.
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

} // namespace

class tst_MainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void internalMenu();
    void openGlWidgetRepaintsInAnotherWindow();
    void viewportHostLendsTheMouse_data();
    void viewportHostLendsTheMouse();
    void viewportHostCopiesHaveNoClients();
};

void tst_MainWindow::internalMenu()
{
    MainWindow window;
    QCOMPARE(window.metaObject()->className(), "Marlix::Widgets::MainWindow");
    QVERIFY(!window.internalMenuBar());
    auto* help = new QMenu(QStringLiteral("Help"), &window);
    auto* view = new QMenu(QStringLiteral("View"), &window);
    QAction* first = window.addToInternalMenu(help);
    QAction* second = window.addToInternalMenu(view);
    QMenuBar* internal = window.internalMenuBar();
    QVERIFY(internal);
    QCOMPARE(window.menuBar()->cornerWidget(Qt::TopRightCorner), internal);
    QCOMPARE(internal->actions(), (QList<QAction*> { first, second }));
    QCOMPARE(first->menu(), help);
    QVERIFY(window.menuBar()->actions().isEmpty()); // the main menu bar keeps only its own menus
    QVERIFY(!window.addToInternalMenu(nullptr));

    // A corner that holds something else is left alone.
    MainWindow other;
    auto* badge = new QLabel(QStringLiteral("Badge"));
    other.menuBar()->setCornerWidget(badge, Qt::TopRightCorner);
    QVERIFY(!other.addToInternalMenu(new QMenu(QStringLiteral("Help"), &other)));
    QCOMPARE(other.menuBar()->cornerWidget(Qt::TopRightCorner), badge);
}

void tst_MainWindow::openGlWidgetRepaintsInAnotherWindow()
{
    QWidget first;
    auto* layout = new QVBoxLayout(&first);
    auto* viewport = new CountingGlWidget;
    layout->addWidget(viewport);
    first.resize(200, 150);
    first.show();
    QVERIFY(QTest::qWaitForWindowExposed(&first));
    QCOMPARE(viewport->metaObject()->className(), "Marlix::Widgets::OpenGlWidget");

    // Undocked: the viewport moves into a floating window of its own.
    QWidget floating;
    auto* floatingLayout = new QVBoxLayout(&floating);
    floatingLayout->addWidget(viewport);
    floating.resize(220, 160);
    floating.show();
    QVERIFY(QTest::qWaitForWindowExposed(&floating));
    settle();
    const int glPaints = viewport->glPaints;
    const int plainPaints = viewport->plainPaints;

    // The notice Qt sends when the top-level window of a widget changed asks for a repaint, queued.
    QEvent windowChanged(QEvent::WindowChangeInternal);
    QCoreApplication::sendEvent(viewport, &windowChanged);
    QCOMPARE(viewport->glPaints + viewport->plainPaints, glPaints + plainPaints);
    settle();
    QCOMPARE(viewport->glPaints + viewport->plainPaints, glPaints + plainPaints + 1);

    if (!viewport->isOpenGlAvailable()) {
        // No GL call without a context; the notice on the window's own colour instead.
        QCOMPARE(viewport->glPaints, 0);
        const QImage image = floating.grab().toImage();
        QCOMPARE(image.pixelColor(viewport->geometry().topLeft() + QPoint(2, 2)), floating.palette().window().color());
    }
}

void tst_MainWindow::viewportHostLendsTheMouse_data()
{
    // Steps: "add x", "remove x", "request x", "release x"; a refused request logs "x refused".
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("holder");

    QTest::newRow("handed over and back")
        << QStringList { "add a", "add b", "request a", "request b", "release a", "release b" }
        << QStringList { "a+", "a-", "b+", "b-" } << QString();
    QTest::newRow("asked twice") << QStringList { "add a", "request a", "request a" } << QStringList { "a+" }
                                 << QStringLiteral("a");
    QTest::newRow("stranger refused") << QStringList { "add a", "request a", "request b" }
                                      << QStringList { "a+", "b refused" } << QStringLiteral("a");
    QTest::newRow("removed holder") << QStringList { "add a", "add b", "request a", "remove a", "request b" }
                                    << QStringList { "a+", "b+" } << QStringLiteral("b");
    QTest::newRow("removed client refused")
        << QStringList { "add a", "remove a", "request a" } << QStringList { "a refused" } << QString();
}

void tst_MainWindow::viewportHostLendsTheMouse()
{
    QFETCH(QStringList, steps);
    QFETCH(QStringList, expected);
    QFETCH(QString, holder);

    QStringList log;
    std::map<QString, LoggingClient> clients;
    clients.try_emplace(QStringLiteral("a"), QStringLiteral("a"), log);
    clients.try_emplace(QStringLiteral("b"), QStringLiteral("b"), log);
    DefaultViewportHost host;
    for (const QString& step : std::as_const(steps)) {
        const QString action = step.section(u' ', 0, 0);
        LoggingClient& client = clients.at(step.section(u' ', 1));
        if (action == u"add")
            host.addClient(client);
        else if (action == u"remove")
            host.removeClient(client);
        else if (action == u"release")
            host.releaseExclusiveMouseControl(client);
        else if (!host.requestExclusiveMouseControl(client))
            log.append(client.name + QStringLiteral(" refused"));
    }
    QCOMPARE(log, expected);
    IViewportClient* held = host.getExclusiveMouseClient();
    QCOMPARE(held ? static_cast<LoggingClient*>(held)->name : QString(), holder);
    QVERIFY(host.getViewportSize().x == 0.0 && host.getViewportSize().y == 0.0);
    QVERIFY(!host.getCurveChannelSample({ 1.0, 1.0 }, 0, {}));
}

void tst_MainWindow::viewportHostCopiesHaveNoClients()
{
    QStringList log;
    LoggingClient client(QStringLiteral("a"), log);
    DefaultViewportHost host;
    host.addClient(client);
    QVERIFY(host.requestExclusiveMouseControl(client));
    DefaultViewportHost copy = host;
    DefaultViewportHost moved = DefaultViewportHost(host);
    for (const DefaultViewportHost* other : { &copy, &moved }) {
        QVERIFY(!other->hasClient(client));
        QVERIFY(!other->getExclusiveMouseClient());
    }
    moved = host; // assigning keeps the target's own books
    QVERIFY(!moved.hasClient(client));
    QCOMPARE(host.getExclusiveMouseClient(), &client);
    QCOMPARE(log, QStringList { "a+" });
}

QTEST_MAIN(tst_MainWindow)
#include "tst_MainWindow.moc"
