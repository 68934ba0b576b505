#pragma once

#include <MarlixLibQt/widgets/docking/Dock.h>

#include <QCoreApplication>
#include <QLineEdit>
#include <QMainWindow>
#include <QMap>
#include <QStringList>
#include <QTest>

namespace Marlix::Widgets::Testing {

/// A main window named "MainWindow" and named docks, each holding a line edit, on the offscreen screen.
struct DockScene
{
    explicit DockScene(const QStringList& names)
    {
        window.setObjectName(QStringLiteral("MainWindow"));
        window.setGeometry(20, 40, 480, 360);
        window.show();
        for (const QString& name : names) {
            auto* dock = new Dock(name);
            dock->setWidget(new QLineEdit);
            dock->resize(200, 150);
            docks.insert(name, dock);
        }
    }

    Dock* operator[](const QString& name) const { return docks.value(name); }

    /// A dock alone in its own window at `geometry`.
    Dock* floating(const QString& name, const QRect& geometry) const
    {
        Dock* dock = docks.value(name);
        dock->setGeometry(geometry);
        dock->show();
        return dock;
    }

    /// The paths of the docks' records, in the order they are written.
    static QStringList dockPaths()
    {
        QStringList paths;
        for (const Dock::Data& record : Dock::saveWorkspace()) {
            const QString path = QString::fromStdString(record.path);
            if (!path.endsWith(QStringLiteral("MainWindow")))
                paths.append(path);
        }
        return paths;
    }

    static void settle()
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }

    QMainWindow window;
    QMap<QString, Dock*> docks;
};

/// Presses on `dock`'s header, moves past the start-drag distance to `to` (global) and, unless told not to, releases.
inline void dragHeader(Dock& dock, QPoint to, bool release = true)
{
    QWidget* header = dock.header();
    const QPoint from = header->mapToGlobal(header->rect().center());
    QTest::mousePress(header, Qt::LeftButton, {}, header->mapFromGlobal(from));
    QTest::mouseMove(header, header->mapFromGlobal((from + to) / 2));
    QTest::mouseMove(header, header->mapFromGlobal(to));
    if (release)
        QTest::mouseRelease(header, Qt::LeftButton, {}, header->mapFromGlobal(to));
}

/// The global point at fractions of `widget`'s rectangle.
inline QPoint at(QWidget& widget, double fx, double fy)
{
    const QRect rect = Dock::globalGeometry(widget);
    return rect.topLeft() + QPoint(int(rect.width() * fx), int(rect.height() * fy));
}

} // namespace Marlix::Widgets::Testing
