#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/editors/CheckBox.h>

#include <MarlixLib/base/Exception.h>

#include "MarlixLibQt/widgets/RecordingModel.h"

#include <QTest>

#include <algorithm>
#include <memory>

using namespace Marlix;
using namespace Marlix::Widgets;
using Marlix::Widgets::Testing::RecordingModel;

namespace {

SharedPtr<LambdaModel<double>> makeComponentModel(const SharedPtr<Model<Array<double>>>& source, std::size_t index)
{
    return makeSharedPtr<LambdaModel<double>>(
        source, [source, index] { return source->get().at(index); },
        [source, index](double value) {
            Array<double> whole = source->get();
            whole.at(index) = value;
            source->set(std::move(whole));
        });
}

} // namespace

class tst_Model : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void setNotifiesEveryObserverOnce_data()
    {
        QTest::addColumn<double>("initial");
        QTest::addColumn<double>("next");
        QTest::newRow("new value") << 1.0 << 2.5;
        QTest::newRow("equal value") << 4.0 << 4.0;
    }

    void setNotifiesEveryObserverOnce()
    {
        QFETCH(double, initial);
        QFETCH(double, next);
        VariableModel<double> model(initial);
        QList<double> first, second;
        const CallbackLifetime a = model.addCallback([&](double v) { first.append(v); });
        const CallbackLifetime b = model.addCallback([&](double v) { second.append(v); });
        model.set(next);
        QCOMPARE(first, QList<double> { next });
        QCOMPARE(second, QList<double> { next });
    }

    // A callback that writes its own model, directly or through another model, or asks it to notify again, is cut;
    // the next outside set works.
    void reentryFromANotificationIsIgnored()
    {
        VariableModel<int> a(0);
        VariableModel<int> b(0);
        QList<int> seen;
        const CallbackLifetime aToB = a.addCallback([&](int v) {
            seen.append(v);
            b.set(v * 10);
            a.set(v + 100);
            a.notifyCallbacks();
        });
        const CallbackLifetime bToA = b.addCallback([&](int v) { a.set(v + 1); });
        a.set(3);
        QCOMPARE(a.get(), 3);
        QCOMPARE(b.get(), 30);
        a.set(4);
        QCOMPARE(seen, (QList<int> { 3, 4 }));
    }

    void throwingObserverDoesNotStopTheOthers()
    {
        VariableModel<int> model(0);
        QList<int> order;
        const CallbackLifetime first = model.addCallback([&](int) { order.append(1); });
        const CallbackLifetime second = model.addCallback([&](int v) {
            order.append(2);
            if (v == 7)
                throw Exception("observer failed");
        });
        const CallbackLifetime third = model.addCallback([&](int) { order.append(3); });

        QVERIFY_THROWS_EXCEPTION(Exception, model.set(7));
        QCOMPARE(order, (QList<int> { 1, 2, 3 }));
        // Both depth counters were restored on the way out: the model keeps working.
        model.set(8);
        QCOMPARE(order, (QList<int> { 1, 2, 3, 1, 2, 3 }));
        QCOMPARE(model.get(), 8);
    }

    void lambdaModelWritesAndReadsOneComponent()
    {
        const auto source = makeSharedPtr<RecordingModel<Array<double>>>(Array<double> { 1.0, 2.0, 3.0 });
        const auto component = makeComponentModel(source, 1);
        QList<double> componentSeen;
        const CallbackLifetime c = component->addCallback([&](double v) { componentSeen.append(v); });
        // Its own observers cannot write it again while it notifies.
        CallbackLifetime writer = component->addCallback([&](double v) { component->set(v + 1.0); });

        component->set(5.0);
        QCOMPARE(source->get(), (Array<double> { 1.0, 5.0, 3.0 }));
        QCOMPARE(source->sets, 1);
        // Reached through the source and by its own set: observers re-read, they do not count.
        QVERIFY(!componentSeen.isEmpty());
        QVERIFY(std::all_of(componentSeen.begin(), componentSeen.end(), [](double v) { return v == 5.0; }));

        writer.reset();
        componentSeen.clear();
        source->set({ 7.0, 8.0, 9.0 });
        QCOMPARE(componentSeen, QList<double> { 8.0 });

        component->beginChange();
        component->commitChange();
        component->beginChange();
        component->revertChange();
        QCOMPARE(source->begins, 2);
        QCOMPARE(source->commits, 1);
        QCOMPARE(source->reverts, 1);
    }

    void lambdaModelEndsSourceSubscriptionWithIt()
    {
        const auto source = makeSharedPtr<VariableModel<Array<double>>>(Array<double> { 0.0 });
        {
            const auto component = makeComponentModel(source, 0);
            QCOMPARE(source->getCallbackCount(), 1u);
        }
        QCOMPARE(source->getCallbackCount(), 0u);
        source->set({ 3.0 }); // would call into the destroyed adapter if the subscription had survived

        const Function<double()> getter = [source] { return source->get().front(); };
        const Function<void(double)> setter = [source](double v) { source->set({ v }); };
        QVERIFY_THROWS_EXCEPTION(StopException, LambdaModel<double>(source, nullptr, setter));
        QVERIFY_THROWS_EXCEPTION(StopException, LambdaModel<double>(source, getter, nullptr));
        QVERIFY_THROWS_EXCEPTION(StopException, LambdaModel<double>(SharedPtr<Model<Array<double>>>(), getter, setter));
        QCOMPARE(source->getCallbackCount(), 0u);
    }

    void destroyedWidgetIsNoLongerNotified()
    {
        const auto model = makeSharedPtr<VariableModel<bool>>(false);
        auto staying = std::make_unique<CheckBox>(model, false, QString());
        auto leaving = std::make_unique<CheckBox>(model, false, QString());
        const std::size_t subscriptions = model->getCallbackCount();
        leaving.reset();
        QCOMPARE(model->getCallbackCount(), subscriptions / 2);
        model->set(true); // would touch freed memory if the destroyed widget were still subscribed (the sanitizer run)
        QVERIFY(staying->isChecked());

        CallbackLifetime lifetime = model->addCallback([](bool) { QFAIL("an ended lifetime was called"); });
        lifetime.reset();
        model->set(false);
    }
};

QTEST_MAIN(tst_Model)
#include "tst_Model.moc"
