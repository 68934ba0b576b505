#include "StudioPage.h"
#include "StudioWindow.h"

#include <MarlixLibQt/LibQt.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QPixmap>
#include <QThread>
#include <QVariant>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr QSize WINDOW_SIZE(1280, 800);
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

// Renders every page of the window into DIR/<page>.png; returns the number of pages that could not be written.
int writeScreenshots(Studio::StudioWindow& window, const QString& folder)
{
    QDir dir;
    if (!dir.mkpath(folder)) {
        std::fprintf(stderr, "marlix-studio: cannot create the folder %s\n", qPrintable(folder));
        return 1;
    }
    int failures = 0;
    int written = 0;
    const auto shoot = [&](const QString& name) {
        settle(window.currentPageWidget());
        const QPixmap shot = window.grab();
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
        shoot(window.page(i).screenshotName);
        for (const Studio::Shot& more : window.page(i).moreShots) {
            more.prepare(window.currentPageWidget());
            shoot(more.screenshotName);
        }
    }
    std::printf("%d screenshots of %d pages written to %s\n", written, window.pageCount(),
        qPrintable(QDir(folder).absolutePath()));
    return failures;
}

} // namespace

int main(int argc, char** argv)
{
    QString screenshots;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--screenshots") == 0 && i + 1 < argc) {
            screenshots = QString::fromLocal8Bit(argv[++i]);
        } else if (std::strcmp(argv[i], "--help") == 0) {
            std::puts("usage: marlix-studio [--screenshots DIR]");
            return 0;
        } else {
            std::fprintf(stderr, "marlix-studio: unknown argument %s (try --help)\n", argv[i]);
            return 2;
        }
    }

    Marlix::LibQt::startup("Marlix Studio", Marlix::LibQt::ApplicationType::Gui, {}, {});
    int result = 0;
    {
        Studio::StudioWindow window;
        window.resize(WINDOW_SIZE);
        window.show();
        result = screenshots.isEmpty() ? Marlix::LibQt::runEventLoop() : writeScreenshots(window, screenshots);
    }
    Marlix::LibQt::shutdown();
    return result;
}
