#include <MarlixLibQt/widgets/Container.h>

#include <QCoreApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QTest>

using Marlix::Widgets::Container;

namespace {

/// Counts the polish events that reach one widget.
class PolishCounter : public QObject
{
public:
    explicit PolishCounter(QObject* watched) { watched->installEventFilter(this); }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Polish)
            ++count;
        return false;
    }

    int count = 0;
};

} // namespace

class tst_Container : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void polishesOnceOnLayoutRequests_data()
    {
        QTest::addColumn<bool>("withLayout");
        QTest::addColumn<int>("expectedPolishes");
        QTest::newRow("no layout") << false << 0;
        QTest::newRow("layout") << true << 1;
    }

    // Composite editors are polished on their first layout request, once, so their children's style is known when
    // the layout is first computed.
    void polishesOnceOnLayoutRequests()
    {
        QFETCH(bool, withLayout);
        QFETCH(int, expectedPolishes);
        Container container;
        if (withLayout)
            new QHBoxLayout(&container);
        PolishCounter counter(&container);
        for (int i = 0; i < 3; ++i) {
            QEvent request(QEvent::LayoutRequest);
            QCoreApplication::sendEvent(&container, &request);
        }
        QCOMPARE(counter.count, expectedPolishes);
        QCOMPARE(container.testAttribute(Qt::WA_WState_Polished), expectedPolishes > 0);
    }
};

QTEST_MAIN(tst_Container)
#include "tst_Container.moc"
