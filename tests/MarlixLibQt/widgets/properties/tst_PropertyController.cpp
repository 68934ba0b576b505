#include <MarlixLib/Lib.h>
#include <MarlixLibQt/widgets/properties/DefaultPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/ForwardingPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/PropertyControllerObserver.h>
#include <MarlixTestScene/TestScene.h>

#include <QDynamicPropertyChangeEvent>
#include <QLineEdit>
#include <QProxyStyle>
#include <QSpinBox>
#include <QStyleFactory>
#include <QTest>
#include <QVBoxLayout>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

using namespace Marlix;
using namespace Marlix::Widgets;
using namespace Marlix::TestScene;

namespace {

using State = IPropertyController::State;
using StateFlags = Flags<State>;

/// A style that draws controller states, or one that does not.
class HintStyle : public QProxyStyle
{
public:
    explicit HintStyle(int answer)
        : QProxyStyle(QStyleFactory::create(QStringLiteral("fusion")))
        , answer(answer)
    {
    }

    int styleHint(
        StyleHint hint, const QStyleOption* option, const QWidget* widget, QStyleHintReturn* data) const override
    {
        return hint == PropertyControllerHandler::SH_INSTALL_HANDLER
            ? answer
            : QProxyStyle::styleHint(hint, option, widget, data);
    }

private:
    int answer;
};

/// A controller whose state the test sets and announces from any thread.
class TestController : public DefaultPropertyController
{
public:
    ControllerInfo getControllerInfo(const GenericPropertyAccessor&) const override
    {
        reads.fetch_add(1);
        readThread = std::this_thread::get_id();
        const std::lock_guard lock(mutex);
        return info;
    }
    CallbackLifetime addControllerObserver(const GenericPropertyAccessor&, Function<void()> onChange) override
    {
        return observers.add(std::move(onChange));
    }
    void setInfo(ControllerInfo newInfo)
    {
        const std::lock_guard lock(mutex);
        info = std::move(newInfo);
    }
    void announceFromOtherThread()
    {
        std::thread([this] { observers.call(); }).join();
    }
    std::size_t observerCount() const { return observers.size(); }

    mutable std::atomic<int> reads { 0 };
    mutable std::thread::id readThread;

private:
    mutable std::mutex mutex;
    ControllerInfo info;
    CallbackList<> observers;
};

/// A host that answers with the test's controller and the default host for everything else.
class ControllerHost : public ForwardingPropertySheetHost
{
public:
    explicit ControllerHost(TestController& controller)
        : ForwardingPropertySheetHost(makeSharedPtr<DefaultPropertySheetHost>(nullptr, nullptr, nullptr))
        , controller(controller)
    {
    }
    IPropertyController& getPropertyController() override { return controller; }

private:
    TestController& controller;
};

/// Counts the writes of the controller-state property per widget.
class PropertySetCounter : public QObject
{
public:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::DynamicPropertyChange
            && static_cast<QDynamicPropertyChangeEvent*>(event)->propertyName()
                == PropertyControllerHandler::STATE_PROPERTY)
            ++counts[watched];
        return false;
    }
    std::map<QObject*, int> counts;
};

/// An editor as the sheet makes one: a frame with a line edit and a spin box (which has an inner line edit).
struct Editor
{
    explicit Editor(QStyle* style)
    {
        widget->setStyle(style);
        auto* layout = new QVBoxLayout(widget.get());
        layout->addWidget(new QLineEdit);
        layout->addWidget(new QSpinBox);
        all.push_back(widget.get());
        for (QWidget* child : widget->findChildren<QWidget*>())
            all.push_back(child);
        for (QWidget* w : all)
            w->installEventFilter(&counter);
    }

    PropertySetCounter counter;
    std::unique_ptr<QWidget> widget = std::make_unique<QWidget>();
    Array<QWidget*> all;
};

/// The default host with the native dialog replaced by scripted answers.
class ScriptedDialogHost : public DefaultPropertySheetHost
{
public:
    ScriptedDialogHost()
        : DefaultPropertySheetHost(nullptr, nullptr, nullptr)
    {
    }

    mutable Array<FileDialogRequest> requests;
    QString answer;

protected:
    QString runFileDialog(const FileDialogRequest& request) const override
    {
        requests.push_back(request);
        return answer;
    }
};

using DialogKind = DefaultPropertySheetHost::FileDialogRequest::Kind;

} // namespace

Q_DECLARE_METATYPE(DialogKind)

class TestPropertyController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { Lib::startup(); }
    void cleanupTestCase() { Lib::shutdown(); }

    void noHandlerUnlessTheStyleAnswers_data();
    void noHandlerUnlessTheStyleAnswers();
    void notificationFromAnotherThreadReachesTheWidgets();
    void pickFileShowsTheDialogOfTheMode_data();
    void pickFileShowsTheDialogOfTheMode();
    void pickFileStartsWhereTheLastPickEnded();

private:
    GenericPropertyAccessor roughness() const { return GenericPropertyAccessor(materialClass().create(), "roughness"); }
};

void TestPropertyController::noHandlerUnlessTheStyleAnswers_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("defaultHost");
    QTest::newRow("silent style") << 0 << false;
    QTest::newRow("answering style") << 1 << false;
    QTest::newRow("default host: nothing ever changes") << 1 << true;
}

void TestPropertyController::noHandlerUnlessTheStyleAnswers()
{
    QFETCH(int, answer);
    QFETCH(bool, defaultHost);
    HintStyle style(answer);
    Editor editor(&style);
    TestController controller;
    controller.setInfo({ State::Controlled, std::nullopt });
    ControllerHost controlled(controller);
    DefaultPropertySheetHost plain(nullptr, nullptr, nullptr);
    IPropertySheetHost& host = defaultHost ? static_cast<IPropertySheetHost&>(plain) : controlled;
    PropertyControllerHandler* handler
        = PropertyControllerHandler::installOnWidget(editor.widget.get(), host, roughness());
    QCOMPARE(handler != nullptr, answer != 0);
    QCOMPARE(editor.widget->findChildren<PropertyControllerHandler*>().size(), answer != 0 ? 1 : 0);
    QCOMPARE(controller.observerCount(), answer != 0 && !defaultHost ? 1u : 0u);
    QCoreApplication::sendPostedEvents();
    // The state property is only ever set by a controller that has something to say.
    const bool stateShown = answer != 0 && !defaultHost;
    for (QWidget* w : editor.all)
        QCOMPARE(w->property(PropertyControllerHandler::STATE_PROPERTY).isValid(), stateShown);
    QCOMPARE(editor.counter.counts.empty(), !stateShown);
    if (defaultHost)
        QVERIFY(handler->controllerState().isEmpty() && !handler->activeVariant());

    // Destroying the widget ends the subscription, and drops the calls still queued for it.
    const int reads = controller.reads.load();
    controller.announceFromOtherThread();
    editor.widget.reset();
    QCOMPARE(controller.observerCount(), 0u);
    QCoreApplication::sendPostedEvents();
    QCOMPARE(controller.reads.load(), reads);
}

void TestPropertyController::notificationFromAnotherThreadReachesTheWidgets()
{
    HintStyle style(1);
    Editor editor(&style);
    TestController controller;
    controller.setInfo({ State::Controlled, std::nullopt });
    ControllerHost host(controller);
    PropertyControllerHandler* handler
        = PropertyControllerHandler::installOnWidget(editor.widget.get(), host, roughness());
    QVERIFY(handler);
    // The first state is read from the event loop, after the sheet has finished building.
    QCOMPARE(controller.reads.load(), 0);
    QVERIFY(editor.counter.counts.empty());

    QCoreApplication::sendPostedEvents();
    QCOMPARE(controller.reads.load(), 1);
    // The style reads the bits as an unsigned integer; each widget is set once.
    const auto stateAndWrites = [&](QWidget* w) {
        return std::pair(w->property(PropertyControllerHandler::STATE_PROPERTY).toUInt(), editor.counter.counts[w]);
    };
    for (QWidget* w : editor.all)
        QCOMPARE(stateAndWrites(w), std::pair(1u, 1));

    // An announcement without a change is read again but sets nothing.
    controller.announceFromOtherThread();
    QCOMPARE(controller.reads.load(), 1);
    QCoreApplication::sendPostedEvents();
    QCOMPARE(controller.reads.load(), 2);
    QCOMPARE(controller.readThread, std::this_thread::get_id());
    for (QWidget* w : editor.all)
        QCOMPARE(editor.counter.counts[w], 1);

    IPropertyController::VariantInfo variant { 3, "Winter", "Snow on everything", { 7u, 9u } };
    controller.setInfo({ StateFlags { State::Overridden, State::Mixed }, variant });
    controller.announceFromOtherThread();
    controller.announceFromOtherThread();
    QCoreApplication::sendPostedEvents();
    QCOMPARE(controller.reads.load(), 4); // one read per announcement: none are merged
    QCOMPARE(handler->controllerState(), (StateFlags { State::Overridden, State::Mixed }));
    QVERIFY(handler->activeVariant());
    QCOMPARE(*handler->activeVariant(), variant);
    for (QWidget* w : editor.all)
        QCOMPARE(stateAndWrites(w), std::pair(6u, 2));
}

void TestPropertyController::pickFileShowsTheDialogOfTheMode_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("current");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<DialogKind>("kind");
    QTest::addColumn<QString>("remembered");

    const QString images = QStringLiteral("Images (*.png *.exr)");
    QTest::newRow("directory") << 0 << images << ""
                               << "/data/textures" << DialogKind::ExistingDirectory << "/data/textures";
    QTest::newRow("open") << 1 << images << "/scenes/a/wood.png"
                          << "/scenes/b/stone.png" << DialogKind::OpenFile << "/scenes/b";
    QTest::newRow("save") << 2 << ""
                          << ""
                          << "/out/render.exr" << DialogKind::SaveFile << "/out";
    QTest::newRow("cancelled") << 1 << images << "/scenes/a/wood.png"
                               << "" << DialogKind::OpenFile << "";
}

void TestPropertyController::pickFileShowsTheDialogOfTheMode()
{
    QFETCH(int, mode);
    QFETCH(QString, filter);
    QFETCH(QString, current);
    QFETCH(QString, answer);
    QFETCH(DialogKind, kind);
    QFETCH(QString, remembered);

    ScriptedDialogHost host;
    host.answer = answer;
    const UiPathFlags flags { static_cast<UiPathFlags::Mode>(mode), filter.toStdString() };
    const Optional<Io::Path> result = host.pickFile(
        flags, current.isEmpty() ? Optional<Io::Path>() : Optional<Io::Path>(Io::Path(current.toStdString())));

    QCOMPARE(host.requests.size(), 1u);
    const auto& request = host.requests.front();
    QCOMPARE(request.kind, kind);
    QCOMPARE(request.startPath, current);
    // Only file dialogs filter; a directory dialog shows directories alone.
    QCOMPARE(request.filter, kind == DialogKind::ExistingDirectory ? QString() : filter);
    QCOMPARE(request.showDirsOnly, kind == DialogKind::ExistingDirectory);

    QCOMPARE(QString::fromStdString(result.value_or(Io::Path()).string()), answer);
    QCOMPARE(QString::fromStdString(host.getRememberedDirectory().value_or(Io::Path()).string()), remembered);
}

void TestPropertyController::pickFileStartsWhereTheLastPickEnded()
{
    ScriptedDialogHost host;
    const auto pick = [&host](UiPathFlags::Mode mode, const char* answer, Optional<Io::Path> current = {}) {
        host.answer = QString::fromLatin1(answer); // empty: cancelled, and the remembered directory stays
        host.pickFile({ mode, {} }, std::move(current));
        return host.requests.back().startPath;
    };
    QCOMPARE(pick(UiPathFlags::Mode::OpenFile, "/maps/wood/albedo.png"), QString());
    QCOMPARE(pick(UiPathFlags::Mode::OpenFile, ""), QStringLiteral("/maps/wood"));
    // A current path wins over the remembered directory.
    QCOMPARE(pick(UiPathFlags::Mode::OpenFile, "", Io::Path("/other/file.png")), QStringLiteral("/other/file.png"));
    QCOMPARE(pick(UiPathFlags::Mode::Directory, "/renders"), QStringLiteral("/maps/wood"));
    QCOMPARE(pick(UiPathFlags::Mode::OpenFile, ""), QStringLiteral("/renders"));
}

QTEST_MAIN(TestPropertyController)
#include "tst_PropertyController.moc"
