#include <MarlixLibQt/widgets/Container.h>

#include <QCoreApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QTest>

using Marlix::Widgets::Container;

namespace {

/// Counts the polish events that reach one widget.
class PolishCounter : public QObject
{
public:
    explicit PolishCounter(QObject* watched)
    {
        watched->installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Polish)
            ++count;
        return false;
    }

    int count = 0;
};

void requestLayout(QWidget& widget)
{
    QEvent request(QEvent::LayoutRequest);
    QCoreApplication::sendEvent(&widget, &request);
}

} // namespace

class tst_Container : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void polishesOnceOnLayoutRequests_data();
    void polishesOnceOnLayoutRequests();
    void firstLayoutPassOfNewChildrenPolishesOnce();
    void keepsFrameBehaviour();
};

void tst_Container::polishesOnceOnLayoutRequests_data()
{
    QTest::addColumn<bool>("withLayout");
    QTest::addColumn<int>("requests");
    QTest::addColumn<int>("expectedPolishes");

    QTest::newRow("no layout, one request") << false << 1 << 0;
    QTest::newRow("no layout, three requests") << false << 3 << 0;
    QTest::newRow("layout, one request") << true << 1 << 1;
    QTest::newRow("layout, three requests") << true << 3 << 1;
}

void tst_Container::polishesOnceOnLayoutRequests()
{
    QFETCH(bool, withLayout);
    QFETCH(int, requests);
    QFETCH(int, expectedPolishes);

    Container container;
    if (withLayout)
        new QHBoxLayout(&container);
    PolishCounter counter(&container);

    for (int i = 0; i < requests; ++i)
        requestLayout(container);

    QCOMPARE(counter.count, expectedPolishes);
    QCOMPARE(container.testAttribute(Qt::WA_WState_Polished), expectedPolishes > 0);
}

void tst_Container::firstLayoutPassOfNewChildrenPolishesOnce()
{
    // Side by side with a plain frame going through the same steps: the container adds exactly one polish.
    Container container(nullptr, Qt::Window);
    QFrame frame(nullptr, Qt::Window);
    PolishCounter containerPolishes(&container);
    PolishCounter framePolishes(&frame);

    for (QWidget* widget : { static_cast<QWidget*>(&container), static_cast<QWidget*>(&frame) }) {
        auto* layout = new QHBoxLayout(widget);
        layout->addWidget(new QLabel(QStringLiteral("one")));
        QCoreApplication::sendPostedEvents(widget, QEvent::LayoutRequest);
        layout->addWidget(new QLabel(QStringLiteral("two")));
        QCoreApplication::sendPostedEvents(widget, QEvent::LayoutRequest);
        widget->show();
        QVERIFY(QTest::qWaitForWindowExposed(widget));
        layout->addWidget(new QLabel(QStringLiteral("three")));
        QCoreApplication::sendPostedEvents(widget, QEvent::LayoutRequest);
    }

    QCOMPARE(containerPolishes.count, framePolishes.count + 1);
}

void tst_Container::keepsFrameBehaviour()
{
    QWidget parent;
    Container container(&parent, {});
    container.setFrameShape(QFrame::Box);
    QCOMPARE(container.parentWidget(), &parent);
    QCOMPARE(container.frameShape(), QFrame::Box);
    QCOMPARE(Container::staticMetaObject.superClass(), &QFrame::staticMetaObject);
    QCOMPARE(Container::tr("Value"), QStringLiteral("Value"));
}

QTEST_MAIN(tst_Container)
#include "tst_Container.moc"
