#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Model.h>

#include <MarlixLib/base/Exception.h>

#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

using namespace Marlix;
using namespace Marlix::Widgets;

namespace {

/// A bound widget as the editors write them: shows the model's text and writes edits back.
class BoundLineEdit : public QLineEdit, public BaseWithModel
{
public:
    explicit BoundLineEdit(SharedPtr<Model<String>> model, QWidget* parent = nullptr)
        : QLineEdit(parent)
        , model(std::move(model))
    {
        registerCallback(this->model->addCallback([this](String) { notify(); }));
        connect(this, &QLineEdit::textEdited, this, [this](const QString& text) { this->model->set(text.toStdString()); });
        notify();
    }

    void notify() override
    {
        ++notifyCount;
        const QSignalBlocker blocker(this);
        setText(QString::fromStdString(model->get()));
    }

    int notifyCount = 0;

private:
    SharedPtr<Model<String>> model;
};

/// Counts the change bracket calls that reach it.
class BracketCountingModel : public VariableModel<Array<double>>
{
public:
    using VariableModel::VariableModel;
    void beginChange() override { ++begins; }
    void commitChange() override { ++commits; }
    void revertChange() override { ++reverts; }
    int begins = 0;
    int commits = 0;
    int reverts = 0;
};

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
    void setNotifiesEveryObserverOnce_data();
    void setNotifiesEveryObserverOnce();
    void setFromInsideOwnCallbackIsIgnored();
    void chainBackIntoFirstModelIsCut();
    void notificationRequestedWhileNotifyingIsDropped();
    void throwingObserverDoesNotStopTheOthers();
    void endedLifetimeStopsNotifications();
    void lambdaModelWritesAndReadsOneComponent();
    void lambdaModelForwardsChangeBracket();
    void lambdaModelIgnoresSetFromItsObservers();
    void lambdaModelEndsSourceSubscriptionWithIt();
    void lambdaModelRejectsMissingParts();
    void twoWidgetsOnOneModelStayInStep();
    void destroyedWidgetIsNoLongerNotified();
};

void tst_Model::setNotifiesEveryObserverOnce_data()
{
    QTest::addColumn<double>("initial");
    QTest::addColumn<double>("next");

    QTest::newRow("new value") << 1.0 << 2.5;
    QTest::newRow("equal value") << 4.0 << 4.0;
    QTest::newRow("negative zero over zero") << 0.0 << -0.0;
}

void tst_Model::setNotifiesEveryObserverOnce()
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
    QCOMPARE(model.get(), next);
}

void tst_Model::setFromInsideOwnCallbackIsIgnored()
{
    VariableModel<int> model(0);
    QList<int> seen;
    const CallbackLifetime writer = model.addCallback([&](int v) {
        seen.append(v);
        model.set(v + 100);
    });

    model.set(1);

    QCOMPARE(model.get(), 1);
    QCOMPARE(seen, QList<int> { 1 });

    // The depth is back to zero: the next outside set is accepted again.
    model.set(2);
    QCOMPARE(model.get(), 2);
    QCOMPARE(seen, (QList<int> { 1, 2 }));
}

void tst_Model::chainBackIntoFirstModelIsCut()
{
    VariableModel<int> a(0);
    VariableModel<int> b(0);
    int aNotified = 0;
    int bNotified = 0;
    const CallbackLifetime aToB = a.addCallback([&](int v) {
        ++aNotified;
        b.set(v * 10);
    });
    const CallbackLifetime bToA = b.addCallback([&](int v) {
        ++bNotified;
        a.set(v + 1);
    });

    a.set(3);

    QCOMPARE(a.get(), 3);
    QCOMPARE(b.get(), 30);
    QCOMPARE(aNotified, 1);
    QCOMPARE(bNotified, 1);
}

void tst_Model::notificationRequestedWhileNotifyingIsDropped()
{
    VariableModel<int> model(0);
    int calls = 0;
    const CallbackLifetime again = model.addCallback([&](int) {
        ++calls;
        model.notifyCallbacks();
    });

    model.notifyCallbacks();
    QCOMPARE(calls, 1);
    model.notifyCallbacks();
    QCOMPARE(calls, 2);
}

void tst_Model::throwingObserverDoesNotStopTheOthers()
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
    QCOMPARE(model.get(), 7);

    // Both depth counters were restored on the way out: the model keeps working.
    order.clear();
    model.set(8);
    QCOMPARE(order, (QList<int> { 1, 2, 3 }));
    QCOMPARE(model.get(), 8);
}

void tst_Model::endedLifetimeStopsNotifications()
{
    VariableModel<String> model;
    int calls = 0;
    CallbackLifetime lifetime = model.addCallback([&](String) { ++calls; });
    QCOMPARE(model.getCallbackCount(), 1u);

    model.set("one");
    lifetime.reset();
    model.set("two");

    QCOMPARE(calls, 1);
    QCOMPARE(model.getCallbackCount(), 0u);
}

void tst_Model::lambdaModelWritesAndReadsOneComponent()
{
    const auto source = makeSharedPtr<VariableModel<Array<double>>>(Array<double> { 1.0, 2.0, 3.0 });
    const auto component = makeComponentModel(source, 1);
    QCOMPARE(component->get(), 2.0);

    QList<Array<double>> sourceSeen;
    QList<double> componentSeen;
    const CallbackLifetime s = source->addCallback([&](Array<double> v) { sourceSeen.append(v); });
    const CallbackLifetime c = component->addCallback([&](double v) { componentSeen.append(v); });

    component->set(5.0);

    QCOMPARE(source->get(), (Array<double> { 1.0, 5.0, 3.0 }));
    QCOMPARE(sourceSeen, (QList<Array<double>> { { 1.0, 5.0, 3.0 } }));
    // Reached once through the source and once by its own set: observers re-read, they do not count.
    QVERIFY(!componentSeen.isEmpty());
    for (double v : componentSeen)
        QCOMPARE(v, 5.0);

    // A change of the source alone reaches the adapter too.
    componentSeen.clear();
    source->set({ 7.0, 8.0, 9.0 });
    QCOMPARE(componentSeen, QList<double> { 8.0 });
    QCOMPARE(component->get(), 8.0);
}

void tst_Model::lambdaModelForwardsChangeBracket()
{
    const auto source = makeSharedPtr<BracketCountingModel>(Array<double> { 0.0, 0.0 });
    const auto component = makeComponentModel(source, 0);

    component->beginChange();
    component->set(1.0);
    component->set(2.0);
    component->commitChange();
    component->beginChange();
    component->revertChange();

    QCOMPARE(source->begins, 2);
    QCOMPARE(source->commits, 1);
    QCOMPARE(source->reverts, 1);
    QCOMPARE(source->get(), (Array<double> { 2.0, 0.0 }));
}

void tst_Model::lambdaModelIgnoresSetFromItsObservers()
{
    const auto source = makeSharedPtr<VariableModel<Array<double>>>(Array<double> { 0.0, 0.0 });
    const auto component = makeComponentModel(source, 1);
    const CallbackLifetime writer = component->addCallback([&](double v) { component->set(v + 1.0); });

    component->set(4.0);

    QCOMPARE(source->get(), (Array<double> { 0.0, 4.0 }));
}

void tst_Model::lambdaModelEndsSourceSubscriptionWithIt()
{
    const auto source = makeSharedPtr<VariableModel<Array<double>>>(Array<double> { 0.0 });
    const WeakPtr<VariableModel<Array<double>>> weakSource = source;
    {
        auto component = makeComponentModel(source, 0);
        QCOMPARE(source->getCallbackCount(), 1u);
    }
    QCOMPARE(source->getCallbackCount(), 0u);
    source->set({ 3.0 }); // would call into the destroyed adapter if the subscription had survived
    QCOMPARE(source->get(), Array<double> { 3.0 });
}

void tst_Model::lambdaModelRejectsMissingParts()
{
    const auto source = makeSharedPtr<VariableModel<Array<double>>>(Array<double> { 0.0 });
    const Function<double()> getter = [source] { return source->get().front(); };
    const Function<void(double)> setter = [source](double v) { source->set({ v }); };

    QVERIFY_THROWS_EXCEPTION(StopException, LambdaModel<double>(source, nullptr, setter));
    QVERIFY_THROWS_EXCEPTION(StopException, LambdaModel<double>(source, getter, nullptr));
    QVERIFY_THROWS_EXCEPTION(StopException, LambdaModel<double>(SharedPtr<Model<Array<double>>>(), getter, setter));
    QCOMPARE(source->getCallbackCount(), 0u);
}

void tst_Model::twoWidgetsOnOneModelStayInStep()
{
    const auto model = makeSharedPtr<VariableModel<String>>("start");
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* editing = new BoundLineEdit(model, &window);
    auto* watching = new BoundLineEdit(model, &window);
    layout->addWidget(editing);
    layout->addWidget(watching);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(watching->text(), QStringLiteral("start"));

    editing->setFocus();
    editing->selectAll();
    const int editingBefore = editing->notifyCount;
    QTest::keyClicks(editing, QStringLiteral("ok"));

    QCOMPARE(model->get(), String("ok"));
    QCOMPARE(watching->text(), QStringLiteral("ok"));
    // The editing widget is told as well and refreshes from the model, once per accepted set.
    QCOMPARE(editing->notifyCount - editingBefore, 2);
    QCOMPARE(editing->text(), QStringLiteral("ok"));
}

void tst_Model::destroyedWidgetIsNoLongerNotified()
{
    const auto model = makeSharedPtr<VariableModel<String>>("a");
    auto staying = std::make_unique<BoundLineEdit>(model);
    auto leaving = std::make_unique<BoundLineEdit>(model);
    QCOMPARE(model->getCallbackCount(), 2u);
    QCOMPARE(leaving->getRegisteredCallbackCount(), 1u);

    leaving.reset();
    QCOMPARE(model->getCallbackCount(), 1u);

    model->set("b"); // would touch freed memory if the destroyed widget were still subscribed (the sanitizer run)
    QCOMPARE(staying->text(), QStringLiteral("b"));
}

QTEST_MAIN(tst_Model)
#include "tst_Model.moc"
