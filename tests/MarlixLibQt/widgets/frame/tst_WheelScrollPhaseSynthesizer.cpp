#include <MarlixLibQt/widgets/frame/WheelScrollPhaseSynthesizer.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <QWindow>
#include <QtTest/qtestspontaneevent.h>

#include <memory>

using Marlix::WheelScrollPhaseSynthesizer;

namespace {

/// Writes down each wheel event that reaches the watched widgets as "name:phase".
class PhaseLog : public QObject
{
public:
    QStringList entries;

    void watch(QWidget* widget, const QString& name)
    {
        widget->setObjectName(name);
        widget->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Wheel) {
            static const char* const names[] = { "none", "begin", "update", "end", "momentum" };
            entries.append(
                watched->objectName() + u':' + QLatin1String(names[static_cast<QWheelEvent*>(event)->phase()]));
        }
        return false;
    }
};

/// Takes plain wheel turns but no gesture: it ignores every event that carries a phase.
class PlainWheelWidget : public QWidget
{
protected:
    void wheelEvent(QWheelEvent* event) override { event->setAccepted(event->phase() == Qt::NoScrollPhase); }
};

QScrollArea* scrollAreaOf(int contentHeight, QWidget* parent)
{
    auto* area = new QScrollArea(parent);
    auto* content = new QWidget;
    content->setFixedSize(300, contentHeight);
    area->setWidget(content);
    return area;
}

} // namespace

class tst_WheelScrollPhaseSynthesizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void gestures_data();
    void gestures();
    void openPopupTakesTheGesture();
};

void tst_WheelScrollPhaseSynthesizer::gestures_data()
{
    QTest::addColumn<QStringList>("steps"); // where the wheel turns ("place" or "place:end"), or "timeout"
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<bool>("outerScrolled");
    QTest::addColumn<bool>("innerScrolled");
    QTest::addColumn<bool>("running");

    const QStringList beginUpdate { "outer:begin", "outer:update", "outer:update" };
    QTest::newRow("burst") << QStringList { "outer", "outer", "outer", "timeout" }
                           << beginUpdate + QStringList { "outer:end" } << true << false << false;
    QTest::newRow("still running") << QStringList { "outer", "outer", "outer" } << beginUpdate << true << false << true;
    QTest::newRow("over a nested area") << QStringList { "outer", "inner", "inner", "timeout" }
                                        << beginUpdate + QStringList { "outer:end" } << true << false << false;
    QTest::newRow("next gesture where the pointer is")
        << QStringList { "outer", "timeout", "inner" } << QStringList { "outer:begin", "outer:end", "inner:begin" }
        << true << true << true;
    QTest::newRow("incoming end") << QStringList { "outer", "outer:end" }
                                  << QStringList { "outer:begin", "outer:update", "outer:end" } << true << false
                                  << false;
    QTest::newRow("no taker") << QStringList { "plain" } << QStringList { "plain:begin", "plain:none" } << false
                              << false << false;
    QTest::newRow("onto an unrelated widget")
        << QStringList { "outer", "plain" } << QStringList { "outer:begin", "outer:end", "plain:begin", "plain:none" }
        << true << false << false;
}

void tst_WheelScrollPhaseSynthesizer::gestures()
{
    QFETCH(QStringList, steps);
    QFETCH(QStringList, expected);
    QFETCH(bool, outerScrolled);
    QFETCH(bool, innerScrolled);
    QFETCH(bool, running);

    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    QScrollArea* outer = scrollAreaOf(2000, &window);
    outer->setFixedHeight(300);
    // The nested area sits low enough to stay under the pointer while the outer one scrolls a few turns.
    QScrollArea* inner = scrollAreaOf(1000, outer->widget());
    inner->setGeometry(0, 150, 250, 140);
    auto* plain = new PlainWheelWidget;
    plain->setFixedHeight(60);
    layout->addWidget(outer);
    layout->addWidget(plain);
    window.resize(400, 420);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    PhaseLog log;
    log.watch(outer->viewport(), QStringLiteral("outer"));
    log.watch(inner->viewport(), QStringLiteral("inner"));
    log.watch(plain, QStringLiteral("plain"));
    auto synthesizer = std::make_unique<WheelScrollPhaseSynthesizer>();
    qApp->installEventFilter(synthesizer.get());

    for (const QString& step : std::as_const(steps)) {
        if (step == u"timeout") {
            QVERIFY(synthesizer->gestureEndTimer());
            QVERIFY(QMetaObject::invokeMethod(synthesizer->gestureEndTimer(), "timeout"));
            continue;
        }
        const QString place = step.section(u':', 0, 0);
        const QWidget* over = place == u"outer" ? outer->viewport()
            : place == u"inner"                 ? static_cast<QWidget*>(inner)
                                                : plain;
        // Over the outer area means beside the nested one.
        const QPoint local = place == u"outer" ? QPoint(280, 20) : over->rect().center();
        const QPoint position = over->mapTo(&window, local);
        QWheelEvent event(position, window.mapToGlobal(position), QPoint(), QPoint(0, -120), Qt::NoButton,
            Qt::NoModifier, step.endsWith(u":end") ? Qt::ScrollEnd : Qt::NoScrollPhase, false);
        // As the window system delivers it: to the window, spontaneous.
        QSpontaneKeyEvent::setSpontaneous(&event);
        qApp->notify(window.windowHandle(), &event);
    }
    qApp->removeEventFilter(synthesizer.get());

    QCOMPARE(log.entries, expected);
    QCOMPARE(outer->verticalScrollBar()->value() > 0, outerScrolled);
    QCOMPARE(inner->verticalScrollBar()->value() > 0, innerScrolled);
    QCOMPARE(synthesizer->gestureWidget() != nullptr, running);
    QTimer* timer = synthesizer->gestureEndTimer();
    QCOMPARE(timer && timer->isActive(), running);
    if (timer) {
        QVERIFY(timer->isSingleShot());
        QCOMPARE(timer->interval(), WheelScrollPhaseSynthesizer::GESTURE_END_DELAY_MS);
    }

    // A gesture still running when the filter goes away is ended, so its widget closes what "begin" opened.
    const QString lastWidget = log.entries.last().section(u':', 0, 0);
    synthesizer.reset();
    QCOMPARE(log.entries.size(), expected.size() + (running ? 1 : 0));
    if (running)
        QCOMPARE(log.entries.last(), lastWidget + QStringLiteral(":end"));
}

void tst_WheelScrollPhaseSynthesizer::openPopupTakesTheGesture()
{
    QWidget window;
    auto* combo = new QComboBox(&window);
    for (int i = 0; i < 50; ++i)
        combo->addItem(QString::number(i));
    combo->setMaxVisibleItems(5);
    window.resize(300, 200);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    combo->showPopup();
    QVERIFY(QApplication::activePopupWidget());
    QWidget* list = combo->view()->viewport();
    PhaseLog log;
    log.watch(list, QStringLiteral("list"));
    WheelScrollPhaseSynthesizer synthesizer;
    qApp->installEventFilter(&synthesizer);

    // Handed to the window below the popup, the wheel goes to the popup's list under the pointer.
    const QPoint global = list->mapToGlobal(list->rect().center());
    QWheelEvent event(window.mapFromGlobal(global), global, QPoint(), QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
        Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(window.windowHandle(), &event);
    qApp->removeEventFilter(&synthesizer);

    QCOMPARE(log.entries, QStringList { "list:begin" });
    QCOMPARE(synthesizer.gestureWidget(), list);
    QVERIFY(combo->view()->verticalScrollBar()->value() > 0);
    combo->hidePopup();
}

QTEST_MAIN(tst_WheelScrollPhaseSynthesizer)
#include "tst_WheelScrollPhaseSynthesizer.moc"
