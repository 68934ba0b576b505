#include "StudioPage.h"
#include "StudioWindow.h"

#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/docking/DockWorkspaceFile.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QGraphicsView>
#include <QKeyEvent>
#include <QLibraryInfo>
#include <QLocale>
#include <QPixmap>
#include <QProcess>
#include <QSplitter>
#include <QStandardPaths>
#include <QTabWidget>
#include <QThread>
#include <QTranslator>
#include <QVariant>
#include <QWheelEvent>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

namespace {

// The page docks sit between the page list and the undo history; the window leaves them about 1130 x 750 pixels.
constexpr QSize WINDOW_SIZE(1520, 860);
constexpr const char* USAGE = R"(usage: marlix-studio [--screenshots DIR] [--scale FACTOR] [--workspace FILE] [--reset-workspace]

  --screenshots DIR   render every page to DIR/<page>.png and the whole window to
                      DIR/workspace.png, then the same set at scale 2 to DIR/scale-2/ and
                      in German to DIR/de/, and exit; the window shows a sample layout, or
                      FILE's with --workspace, and nothing is saved
  --scale FACTOR      draw everything FACTOR times larger, as on a high-density screen
                      (0.5 to 4; with --screenshots only this one set is written)
  --workspace FILE    restore the docks' layout from FILE and save it there on exit, instead of
                      the workspace in the studio's configuration folder
  --reset-workspace   start from the default layout (the saved one is overwritten on exit)
)";
// Posted work (layouts, repaints) gets this long on every page; a page whose content comes from other threads
// (thumbnails) also says when it is complete, and is waited for up to the limit on a loaded machine.
constexpr int SETTLE_MILLISECONDS = 400;
constexpr int SETTLE_LIMIT_MILLISECONDS = 20000;

void settle(const QWidget* page)
{
    QElapsedTimer timer;
    timer.start();
    const auto waiting = [&] {
        if (timer.elapsed() < SETTLE_MILLISECONDS)
            return true;
        const QVariant settled = page ? page->property(Studio::PAGE_SETTLED_PROPERTY) : QVariant();
        return settled.isValid() && !settled.toBool() && timer.elapsed() < SETTLE_LIMIT_MILLISECONDS;
    };
    while (waiting()) {
        QApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(10);
    }
    if (page && page->property(Studio::PAGE_SETTLED_PROPERTY).isValid()
        && !page->property(Studio::PAGE_SETTLED_PROPERTY).toBool())
        std::fprintf(stderr, "marlix-studio: a page was still incomplete when its screenshot was taken\n");
}

Marlix::Io::Path toPath(const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    return Marlix::Io::Path(
        std::u8string(reinterpret_cast<const char8_t*>(utf8.constData()), std::size_t(utf8.size())));
}

/// Where the layout of the docks is kept between runs.
Marlix::Io::Path defaultWorkspaceFile()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    return toPath(folder) / "workspace.cbor";
}

/// Puts the docks where the workspace file says; a file that does not exist yet leaves the default layout.
void restoreWorkspace(const Marlix::Io::Path& file)
{
    std::error_code error;
    if (!std::filesystem::exists(file, error))
        return;
    const auto records = Marlix::Widgets::loadWorkspaceFile(file);
    if (!records) {
        std::fprintf(stderr, "marlix-studio: the workspace was not restored: %s\n", records.error().c_str());
        return;
    }
    // Refused records are reported by the library's log; the docks they name stay where the default put them.
    const Marlix::FlatSet<Marlix::String> missing = Marlix::Widgets::Dock::restoreWorkspace(*records);
    for (const Marlix::String& path : missing)
        std::fprintf(stderr, "marlix-studio: the workspace names a dock the studio does not have: %s\n", path.c_str());
}

/// A layout that shows what docks do: the Graph page beside the Properties page, the other pages tabbed, the page
/// list and the undo history at the sides.
void arrangeSampleLayout(Studio::StudioWindow& window)
{
    int properties = -1;
    int graph = -1;
    for (int i = 0; i < window.pageCount(); ++i) {
        if (window.page(i).screenshotName == QStringLiteral("properties"))
            properties = i;
        else if (window.page(i).screenshotName == QStringLiteral("graph"))
            graph = i;
    }
    if (properties < 0 || graph < 0)
        return;
    auto* tabs = qobject_cast<QTabWidget*>(window.pageDock(properties)->parentWidget()
            ? window.pageDock(properties)->parentWidget()->parentWidget()
            : nullptr);
    if (!tabs)
        return;
    QSplitter* row = Marlix::Widgets::Dock::split(*tabs, Qt::Horizontal);
    Marlix::Widgets::Dock::insertToParent(row, row->indexOf(tabs) + 1, window.pageDock(graph));
    QList<int> sizes = row->sizes();
    const int pagesWidth = sizes.value(row->indexOf(tabs)) + sizes.value(row->indexOf(tabs) + 1);
    sizes[row->indexOf(tabs)] = pagesWidth / 2;
    sizes[row->indexOf(tabs) + 1] = pagesWidth - pagesWidth / 2;
    row->setSizes(sizes);
    // The Graph page is the current one, so the undo history shows its rearranging of the nodes.
    window.showPage(properties);
    window.showPage(graph);
    // Framed again at its new size, as the user would with Z, then wheeled in until the nodes' titles show.
    QCoreApplication::processEvents();
    if (auto* view = window.pageWidget(graph)->findChild<QGraphicsView*>()) {
        QKeyEvent frame(QEvent::KeyPress, Qt::Key_Z, Qt::NoModifier, QStringLiteral("z"));
        QApplication::sendEvent(view, &frame);
        const QPointF centre = QRectF(view->viewport()->rect()).center();
        QWheelEvent wheel(centre, view->viewport()->mapToGlobal(centre), QPoint(), QPoint(0, 8 * 120), Qt::NoButton,
            Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(view->viewport(), &wheel);
    }
}

// Renders every page into DIR/<page>.png and the whole window into DIR/workspace.png; returns the number of files
// that could not be written.
int writeScreenshots(Studio::StudioWindow& window, const QString& folder, bool sampleLayout)
{
    QDir dir;
    if (!dir.mkpath(folder)) {
        std::fprintf(stderr, "marlix-studio: cannot create the folder %s\n", qPrintable(folder));
        return 1;
    }
    int failures = 0;
    int written = 0;
    const auto shoot = [&](const QString& name, QWidget* widget, QWidget* page) {
        settle(page);
        const QPixmap shot = widget ? widget->grab() : QPixmap();
        const QString file = QDir(folder).absoluteFilePath(name + QStringLiteral(".png"));
        if (shot.isNull() || !shot.save(file)) {
            std::fprintf(stderr, "marlix-studio: could not write %s\n", qPrintable(file));
            ++failures;
        } else {
            ++written;
        }
    };
    for (int i = 0; i < window.pageCount(); ++i) {
        window.showPage(i);
        QWidget* page = window.pageWidget(i);
        shoot(window.page(i).screenshotName, page, page);
        for (const Studio::Shot& more : window.page(i).moreShots) {
            more.prepare(page);
            shoot(more.screenshotName, page, page);
        }
    }
    if (sampleLayout)
        arrangeSampleLayout(window);
    shoot(QStringLiteral("workspace"), &window, window.currentPageWidget());
    std::printf("%d screenshots of %d pages written to %s\n", written, window.pageCount(),
        qPrintable(QDir(folder).absolutePath()));
    std::fflush(stdout);
    return failures;
}

/// The studio again, in another process, writing one more set of screenshots: a scale or a language is chosen when
/// the application starts, so each variant needs a fresh start.
int writeScreenshotVariant(const QString& folder, const QStringList& arguments, const QProcessEnvironment& environment)
{
    QProcess studio;
    studio.setProcessChannelMode(QProcess::ForwardedChannels);
    studio.setProcessEnvironment(environment);
    studio.start(QCoreApplication::applicationFilePath(),
        QStringList { QStringLiteral("--screenshots"), folder, QStringLiteral("--single-set") } + arguments);
    if (!studio.waitForFinished(-1) || studio.exitStatus() != QProcess::NormalExit || studio.exitCode() != 0) {
        std::fprintf(stderr, "marlix-studio: the screenshots in %s were not all written\n", qPrintable(folder));
        return 1;
    }
    return 0;
}

/// The set at scale 2 and the set in German, beside the first one.
int writeScreenshotVariants(const QString& folder)
{
    const QDir dir(folder);
    QProcessEnvironment scaled = QProcessEnvironment::systemEnvironment();
    int failures = writeScreenshotVariant(
        dir.filePath(QStringLiteral("scale-2")), { QStringLiteral("--scale"), QStringLiteral("2") }, scaled);
    // LANG alone chooses the language only when nothing more specific overrides it.
    QProcessEnvironment german = QProcessEnvironment::systemEnvironment();
    for (const char* name : { "LC_ALL", "LC_MESSAGES", "LANGUAGE" })
        german.remove(QString::fromLatin1(name));
    german.insert(QStringLiteral("LANG"), QStringLiteral("de_DE.UTF-8"));
    failures += writeScreenshotVariant(dir.filePath(QStringLiteral("de")), {}, german);
    return failures;
}

} // namespace

int main(int argc, char** argv)
{
    QString screenshots;
    QString workspace;
    bool reset = false;
    bool singleSet = false;
    QByteArray scale;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--screenshots") == 0 && i + 1 < argc) {
            screenshots = QString::fromLocal8Bit(argv[++i]);
        } else if (std::strcmp(argv[i], "--workspace") == 0 && i + 1 < argc) {
            workspace = QString::fromLocal8Bit(argv[++i]);
        } else if (std::strcmp(argv[i], "--scale") == 0 && i + 1 < argc) {
            char* end = nullptr;
            const double factor = std::strtod(argv[++i], &end);
            if (end == argv[i] || *end != '\0' || !(factor >= 0.5 && factor <= 4.0)) {
                std::fprintf(stderr, "marlix-studio: --scale takes a factor from 0.5 to 4, not %s\n", argv[i]);
                return 2;
            }
            scale = argv[i];
            singleSet = true;
        } else if (std::strcmp(argv[i], "--single-set") == 0) {
            singleSet = true;
        } else if (std::strcmp(argv[i], "--reset-workspace") == 0) {
            reset = true;
        } else if (std::strcmp(argv[i], "--help") == 0) {
            std::fputs(USAGE, stdout);
            return 0;
        } else {
            std::fprintf(stderr, "marlix-studio: unknown argument %s (try --help)\n", argv[i]);
            return 2;
        }
    }

    // Qt reads the factor when the application object is made, which start-up does.
    if (!scale.isEmpty())
        qputenv("QT_SCALE_FACTOR", scale);
    Marlix::LibQt::startup("Marlix Studio", Marlix::LibQt::ApplicationType::Gui, {}, {});
    int result = 0;
    {
        // The library has put in its own catalogue; the studio adds its texts and Qt's (the buttons of Qt's
        // dialogs), the latter when the system has them.
        QTranslator studioTexts;
        QTranslator qtTexts;
        if (studioTexts.load(
                QLocale(), QStringLiteral("studio"), QStringLiteral("_"), QStringLiteral(":/studio/translations")))
            QCoreApplication::installTranslator(&studioTexts);
        if (qtTexts.load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
            QCoreApplication::installTranslator(&qtTexts);
        const bool shooting = !screenshots.isEmpty();
        Studio::StudioWindow window;
        window.resize(Marlix::scaleByDpi(WINDOW_SIZE, &window));
        // Screenshots show the default layout unless a workspace is named, and leave every saved one alone.
        Marlix::Optional<Marlix::Io::Path> file;
        if (!workspace.isEmpty())
            file = toPath(workspace);
        else if (!shooting)
            file = defaultWorkspaceFile();
        if (file && !reset)
            restoreWorkspace(*file);
        if (file && !shooting) {
            std::error_code error;
            std::filesystem::create_directories(file->parent_path(), error);
            window.setWorkspaceFile(file);
        }
        window.show();
        result = shooting ? writeScreenshots(window, screenshots, workspace.isEmpty()) : Marlix::LibQt::runEventLoop();
        if (shooting && !singleSet)
            result += writeScreenshotVariants(screenshots);
    }
    Marlix::LibQt::shutdown();
    return result;
}
