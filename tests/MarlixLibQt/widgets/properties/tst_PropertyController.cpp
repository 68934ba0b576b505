#include <MarlixLib/Lib.h>
#include <MarlixLib/base/Exception.h>
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
        if (hint == PropertyControllerHandler::SH_INSTALL_HANDLER)
            return answer;
        return QProxyStyle::styleHint(hint, option, widget, data);
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
        std::thread announcer([this] { observers.call(); });
        announcer.join();
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
    void defaultHostNeverChangesAWidget();
    void notificationFromAnotherThreadReachesTheWidgets();
    void destroyedWidgetEndsTheSubscription();
    void defaultsAreEmpty();
    void pickFileShowsTheDialogOfTheMode_data();
    void pickFileShowsTheDialogOfTheMode();
    void pickFileStartsWhereTheLastPickEnded();
    void pickFileRefusesAnUnknownMode();

private:
    GenericPropertyAccessor roughness() const { return GenericPropertyAccessor(materialClass().create(), "roughness"); }
};

void TestPropertyController::noHandlerUnlessTheStyleAnswers_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("installed");
    QTest::newRow("silent") << 0 << false;
    QTest::newRow("answers") << 1 << true;
}

void TestPropertyController::noHandlerUnlessTheStyleAnswers()
{
    QFETCH(int, answer);
    QFETCH(bool, installed);
    HintStyle style(answer);
    Editor editor(&style);
    TestController controller;
    controller.setInfo({ State::Controlled, std::nullopt });
    ControllerHost host(controller);
    PropertyControllerHandler* handler
        = PropertyControllerHandler::installOnWidget(editor.widget.get(), host, roughness());
    QCOMPARE(handler != nullptr, installed);
    QCOMPARE(editor.widget->findChildren<PropertyControllerHandler*>().size(), installed ? 1 : 0);
    QCOMPARE(controller.observerCount(), installed ? 1u : 0u);
    QCoreApplication::sendPostedEvents();
    QCOMPARE(editor.widget->property(PropertyControllerHandler::STATE_PROPERTY).isValid(), installed);
    if (handler)
        QCOMPARE(handler->parent(), editor.widget.get());
}

void TestPropertyController::defaultHostNeverChangesAWidget()
{
    HintStyle style(1);
    Editor editor(&style);
    DefaultPropertySheetHost host(nullptr, nullptr, nullptr);
    PropertyControllerHandler* handler
        = PropertyControllerHandler::installOnWidget(editor.widget.get(), host, roughness());
    QVERIFY(handler);
    QCOMPARE(&handler->controller(), static_cast<IPropertyController*>(&host));
    QCoreApplication::sendPostedEvents();
    QVERIFY(handler->controllerState().isEmpty());
    QVERIFY(!handler->activeVariant());
    QVERIFY(editor.counter.counts.empty());
    for (QWidget* w : editor.all)
        QVERIFY(!w->property(PropertyControllerHandler::STATE_PROPERTY).isValid());
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
    for (QWidget* w : editor.all) {
        QCOMPARE(editor.counter.counts[w], 1);
        QCOMPARE(
            w->property(PropertyControllerHandler::STATE_PROPERTY).value<StateFlags>(), StateFlags(State::Controlled));
        // The style reads the bits as an unsigned integer.
        QCOMPARE(w->property(PropertyControllerHandler::STATE_PROPERTY).toUInt(), 1u);
    }

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
    for (QWidget* w : editor.all) {
        QCOMPARE(editor.counter.counts[w], 2);
        QCOMPARE(w->property(PropertyControllerHandler::STATE_PROPERTY).toUInt(), 6u);
    }

    controller.setInfo({});
    controller.announceFromOtherThread();
    QCoreApplication::sendPostedEvents();
    QVERIFY(!handler->activeVariant());
    for (QWidget* w : editor.all)
        QCOMPARE(editor.counter.counts[w], 3);
}

void TestPropertyController::destroyedWidgetEndsTheSubscription()
{
    HintStyle style(1);
    TestController controller;
    ControllerHost host(controller);
    {
        Editor editor(&style);
        QVERIFY(PropertyControllerHandler::installOnWidget(editor.widget.get(), host, roughness()));
        QCOMPARE(controller.observerCount(), 1u);
        controller.announceFromOtherThread();
    }
    QCOMPARE(controller.observerCount(), 0u);
    // Calls still queued for the destroyed handler are dropped with it.
    QCoreApplication::sendPostedEvents();
    QCOMPARE(controller.reads.load(), 0);
}

void TestPropertyController::defaultsAreEmpty()
{
    DefaultPropertySheetHost host(nullptr, nullptr, nullptr);
    bool called = false;
    auto alive = std::make_shared<int>(0);
    CallbackLifetime lifetime
        = host.getPropertyController().addControllerObserver(roughness(), [alive, &called] { called = true; });
    // The default controller keeps nothing it is given.
    QCOMPARE(alive.use_count(), 1);
    QVERIFY(!lifetime.isActive());
    QVERIFY(!called);
    QVERIFY(host.getPropertyController().getVariantOverrides(roughness()).empty());
    QVERIFY(!host.getPropertyController().getCurrentVariant());
    QVERIFY(host.getEntityHandleContext().isEntityReferenceValid(nullptr));
    QVERIFY(!host.getEntityHandleContext().getDefaultEntityFilter());
    QCOMPARE(host.getEntityHandleContext().getDefaultEntityClass().getName(), EntityClassInfo::entityClass().getName());
    QVERIFY(host.getViewportHost() == nullptr);

    // Copies share the models, so a sheet built on a copy remembers the same collapsed groups.
    DefaultPropertySheetHost copy = host;
    QCOMPARE(copy.getCollapsiblesModel(), host.getCollapsiblesModel());
    host.getCollapsiblesModel()->set({ "Surface" });
    QCOMPARE(copy.getCollapsiblesModel()->get(), Stack<String> { "Surface" });
    QCOMPARE(host.getDisplayUnitsModel()->get(), DEFAULT_DISPLAY_UNITS);
    QVERIFY(host.getRecentEntitiesModel()->get().empty());
}

void TestPropertyController::pickFileShowsTheDialogOfTheMode_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("current");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<DialogKind>("kind");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("remembered");

    const QString images = QStringLiteral("Images (*.png *.exr)");
    QTest::newRow("directory") << 0 << images << QString() << QStringLiteral("/data/textures")
                               << DialogKind::ExistingDirectory << QStringLiteral("Select Directory")
                               << QStringLiteral("/data/textures");
    QTest::newRow("open") << 1 << images << QStringLiteral("/scenes/a/wood.png")
                          << QStringLiteral("/scenes/b/stone.png") << DialogKind::OpenFile
                          << QStringLiteral("Select File") << QStringLiteral("/scenes/b");
    QTest::newRow("save") << 2 << QString() << QString() << QStringLiteral("/out/render.exr") << DialogKind::SaveFile
                          << QStringLiteral("Select File") << QStringLiteral("/out");
    QTest::newRow("cancelled") << 1 << images << QStringLiteral("/scenes/a/wood.png") << QString()
                               << DialogKind::OpenFile << QStringLiteral("Select File") << QString();
}

void TestPropertyController::pickFileShowsTheDialogOfTheMode()
{
    QFETCH(int, mode);
    QFETCH(QString, filter);
    QFETCH(QString, current);
    QFETCH(QString, answer);
    QFETCH(DialogKind, kind);
    QFETCH(QString, title);
    QFETCH(QString, remembered);

    ScriptedDialogHost host;
    host.answer = answer;
    const UiPathFlags flags { static_cast<UiPathFlags::Mode>(mode), filter.toStdString() };
    const Optional<Io::Path> result = host.pickFile(
        flags, current.isEmpty() ? Optional<Io::Path>() : Optional<Io::Path>(Io::Path(current.toStdString())));

    QCOMPARE(host.requests.size(), 1u);
    const auto& request = host.requests.front();
    QCOMPARE(request.kind, kind);
    QCOMPARE(request.title, title);
    QCOMPARE(request.startPath, current);
    // Only file dialogs filter; a directory dialog shows directories alone.
    QCOMPARE(request.filter, kind == DialogKind::ExistingDirectory ? QString() : filter);
    QCOMPARE(request.showDirsOnly, kind == DialogKind::ExistingDirectory);

    QCOMPARE(result.has_value(), !answer.isEmpty());
    if (result)
        QCOMPARE(QString::fromStdString(result->string()), answer);
    QCOMPARE(host.getRememberedDirectory().has_value(), !remembered.isEmpty());
    if (host.getRememberedDirectory())
        QCOMPARE(QString::fromStdString(host.getRememberedDirectory()->string()), remembered);
}

void TestPropertyController::pickFileStartsWhereTheLastPickEnded()
{
    ScriptedDialogHost host;
    const UiPathFlags open { UiPathFlags::Mode::OpenFile, {} };
    host.answer = QStringLiteral("/maps/wood/albedo.png");
    QVERIFY(host.pickFile(open, std::nullopt));
    QCOMPARE(host.requests.back().startPath, QString());

    host.answer = QString(); // cancelled: the remembered directory stays
    QVERIFY(!host.pickFile(open, std::nullopt));
    QCOMPARE(host.requests.back().startPath, QStringLiteral("/maps/wood"));

    // A current path wins over the remembered directory.
    QVERIFY(!host.pickFile(open, Io::Path("/other/file.png")));
    QCOMPARE(host.requests.back().startPath, QStringLiteral("/other/file.png"));

    const UiPathFlags directory { UiPathFlags::Mode::Directory, {} };
    host.answer = QStringLiteral("/renders");
    QVERIFY(host.pickFile(directory, std::nullopt));
    QCOMPARE(host.requests.back().startPath, QStringLiteral("/maps/wood"));
    host.answer = QString();
    QVERIFY(!host.pickFile(open, std::nullopt));
    QCOMPARE(host.requests.back().startPath, QStringLiteral("/renders"));
}

void TestPropertyController::pickFileRefusesAnUnknownMode()
{
    ScriptedDialogHost host;
    host.answer = QStringLiteral("/somewhere");
    QVERIFY_THROWS_EXCEPTION(
        Exception, host.pickFile(UiPathFlags { static_cast<UiPathFlags::Mode>(7), {} }, std::nullopt));
    QVERIFY(host.requests.empty());
    QVERIFY(!host.getRememberedDirectory());
}

QTEST_MAIN(TestPropertyController)
#include "tst_PropertyController.moc"
