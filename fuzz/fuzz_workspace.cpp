#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/widgets/docking/Dock.h>
#include <MarlixLibQt/widgets/docking/DockWorkspaceCheck.h>
#include <MarlixLibQt/widgets/docking/DockWorkspaceFile.h>
#include <MarlixTestDocks/DockReachability.h>

#include <QAction>
#include <QApplication>
#include <QCoreApplication>
#include <QEvent>
#include <QMainWindow>
#include <QStackedWidget>
#include <QTabWidget>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Reads every input as a workspace file and restores what reads onto a main window of ten docks, as a program does at
// start with the file of its last session. Whatever the records say, no dock may be lost: each must be seen (in the
// main window or a floating window, perhaps behind a tab) or be hidden with its toggle action off, so the user can
// bring it back. The workspace saved afterwards must pass the record checks and restore without a complaint.
// Since most damaged streams stop at reading, an input that does not read is also played as records written as
// text, one per line: "path|geometry", with a leading '!' for a hidden dock.
//
//   build/fuzz/fuzz/fuzz_workspace -runs=1000000 /tmp/wsfuzz fuzz/corpus/fuzz_workspace

using namespace Marlix;
using Marlix::Widgets::Dock;

namespace {

const char* const DOCK_NAMES[]
    = { "Scene", "Lister", "Properties", "Log", "Curves", "History", "Timeline", "Browser", "Viewport", "Console" };

QMainWindow* window = nullptr;
Stack<Dock::Data> baseline;

[[noreturn]] void fail(const char* what, const String& detail = {})
{
    std::fprintf(stderr, "fuzz_workspace: %s %s\n", what, detail.c_str());
    std::abort();
}

using MarlixTestDocks::isOnScreen;

bool isReachable(Dock* dock)
{
    return isOnScreen(dock) == dock->toggleViewAction()->isChecked();
}

Stack<Dock::Data> textRecords(const std::uint8_t* data, std::size_t size)
{
    Stack<Dock::Data> records;
    const QByteArray text(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    for (QByteArray line : text.split('\n')) {
        Dock::Data record;
        record.hidden = line.startsWith('!');
        if (record.hidden)
            line.remove(0, 1);
        const qsizetype bar = line.indexOf('|');
        record.path = (bar < 0 ? line : line.left(bar)).toStdString();
        if (bar >= 0)
            record.geometry = line.mid(bar + 1);
        records.push_back(std::move(record));
    }
    return records;
}

// Painting is most of the time of an input and not what is tried here: windows are never exposed, so they never
// paint.
class NoPainting : public QObject
{
public:
    bool eventFilter(QObject*, QEvent* event) override
    {
        return event->type() == QEvent::Expose || event->type() == QEvent::Paint
            || event->type() == QEvent::UpdateRequest;
    }
};

void restore(ArrayView<const Dock::Data> records)
{
    Stack<String> problems;
    Dock::restoreWorkspace(records, &problems);
    // No event loop runs here: without this the posted layout requests pile up, and each new one is compared with all
    // of them.
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (Dock* dock : Dock::allDocks())
        if (!isReachable(dock))
            fail("a dock was lost:", dock->objectName().toStdString());
    if (Dock::allDocks().size() != std::size(DOCK_NAMES))
        fail("the number of docks changed");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Every refused record is logged; at thousands of inputs a second the log would be most of the work.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    // The application is never deleted: libFuzzer leaves through exit(), after Qt's own statics are gone, and the
    // library would delete an application it made itself.
    static int applicationArgc = 1;
    static char name[] = "fuzz_workspace";
    static char* applicationArgv[] = { name, nullptr };
    new QApplication(applicationArgc, applicationArgv);
    LibQt::startup("fuzz_workspace");
    QCoreApplication::instance()->installEventFilter(new NoPainting);
    window = new QMainWindow;
    window->setObjectName(QStringLiteral("MainWindow"));
    window->resize(1200, 800);
    window->show();
    Stack<Dock::Data> layout;
    const char* const places[] = { "MainWindow/H0/V0/", "MainWindow/H0/V0/T1/", "MainWindow/H0/V1/T0/" };
    for (std::size_t i = 0; i < std::size(DOCK_NAMES); ++i) {
        new Dock(QString::fromLatin1(DOCK_NAMES[i]));
        layout.push_back({ String(places[i % 3]) + DOCK_NAMES[i], i == 3, {} });
    }
    Dock::restoreWorkspace(layout);
    baseline = Dock::saveWorkspace();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto read
        = Widgets::readWorkspace(ArrayView<const std::byte>(reinterpret_cast<const std::byte*>(data), size));
    if (!read && read.error().empty())
        fail("a workspace that does not read gave no message");
    restore(read ? *read : textRecords(data, size));

    const Stack<Dock::Data> saved = Dock::saveWorkspace();
    if (const Stack<String> messages = Widgets::checkWorkspaceRecords(saved); !messages.empty())
        fail("a saved workspace fails the checks:", messages.front());
    const auto again = Widgets::readWorkspace(Widgets::writeWorkspace(saved));
    if (!again || *again != saved)
        fail("a saved workspace does not read back");
    Stack<String> problems;
    Dock::restoreWorkspace(saved, &problems);
    if (!problems.empty())
        fail("a saved workspace does not restore:", problems.front());

    restore(baseline);
    return 0;
}
