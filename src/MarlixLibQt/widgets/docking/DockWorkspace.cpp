#include <MarlixLibQt/widgets/docking/DockPrivate.h>
#include <MarlixLibQt/widgets/docking/DockWorkspaceCheck.h>

#include <QAction>
#include <QApplication>
#include <QDataStream>
#include <QGuiApplication>
#include <QIODevice>
#include <QLoggingCategory>
#include <QMainWindow>
#include <QScreen>
#include <QSplitter>
#include <QTabWidget>

#include <algorithm>

namespace Marlix::Widgets {

using namespace DockDetail;

namespace {

Q_LOGGING_CATEGORY(workspaceLog, "marlix.libqt.workspace")

String toString(const QString& text)
{
    return text.toStdString();
}

QStringList splitPath(const String& path)
{
    return QString::fromStdString(path).split(QLatin1Char('/'), Qt::SkipEmptyParts);
}

bool isLevelRecord(const QStringList& tokens)
{
    return !tokens.isEmpty() && tokens.back().endsWith(MAIN_WINDOW_TOKEN);
}

QByteArray writeInts(const QList<int>& values)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    for (int value : values)
        stream << qint32(value);
    return bytes;
}

/// The integers of splitter sizes or a tab index; false for bytes that are not whole 32-bit integers.
bool readInts(const QByteArray& bytes, QList<int>* values)
{
    if (bytes.size() % 4 != 0)
        return false;
    QDataStream stream(bytes);
    while (!stream.atEnd()) {
        qint32 value = 0;
        stream >> value;
        if (stream.status() != QDataStream::Ok)
            return false;
        values->append(value);
    }
    return true;
}

/// The records of one top-level: its docks in the order of the tree, so that reading them in that order rebuilds
/// the containers at the same indices; then the record of every container's own level and of the window.
void saveTree(QWidget& frame, Stack<Dock::Data>& docks, Stack<Dock::Data>& levels)
{
    const QString suffix = QLatin1Char('/') + frameToken(frame);
    auto visit = [&](auto& self, QWidget* widget) -> void {
        if (!widget || isPlaceholder(widget))
            return;
        if (auto* dock = qobject_cast<Dock*>(widget)) {
            docks.push_back({ toString(pathOf(*dock).join(QLatin1Char('/'))), !isShown(*dock), {} });
            return;
        }
        if (!isSplitterOrTabs(widget))
            return;
        for (int i = 0, count = childCount(widget); i < count; ++i)
            self(self, DockDetail::childAt(widget, i));
        QByteArray bytes;
        if (auto* splitter = qobject_cast<QSplitter*>(widget))
            bytes = writeInts(splitter->sizes());
        else
            // A tab widget whose tabs are all hidden has no current tab; the first one comes up when one shows.
            bytes = writeInts({ std::max(0, static_cast<QTabWidget*>(widget)->currentIndex()) });
        levels.push_back({ toString(pathOf(*widget).join(QLatin1Char('/')) + suffix), false, bytes });
    };
    visit(visit, DockDetail::childAt(&frame, 0));
    levels.push_back({ toString(frameToken(frame)), frame.isHidden(), frame.saveGeometry() });
}

void report(const String& message, Stack<String>* problems)
{
    qCWarning(workspaceLog).noquote() << QString::fromStdString(message);
    if (problems)
        problems->push_back(message);
}

void refuse(const Dock::Data& record, const QString& reason, Stack<String>* problems)
{
    report(toString(Dock::tr("Workspace record \"%1\" refused: %2.").arg(QString::fromStdString(record.path), reason)),
        problems);
}

/// Applies the saved bytes of a level: window geometry, splitter sizes or the current tab.
QString applyGeometry(QWidget& widget, const QByteArray& bytes)
{
    if (bytes.isEmpty())
        return {};
    if (widget.isWindow()) {
        if (widget.restoreGeometry(bytes))
            return {};
        // Qt refuses geometry saved on a screen of another width (a workspace brought from another monitor). The
        // window's place is still worth having: kept inside the screen it lands on.
        const Optional<QRect> normal = windowNormalGeometry(bytes);
        const QScreen* screen = normal ? QGuiApplication::screenAt(normal->center()) : nullptr;
        if (!screen)
            screen = widget.screen();
        if (!normal || !screen || normal->isEmpty())
            return Dock::tr("the window geometry cannot be read");
        const QRect available = screen->availableGeometry();
        QRect placed(normal->topLeft(), normal->size().boundedTo(available.size()));
        placed.moveLeft(std::clamp(placed.left(), available.left(), available.right() - placed.width() + 1));
        placed.moveTop(std::clamp(placed.top(), available.top(), available.bottom() - placed.height() + 1));
        widget.setGeometry(placed);
        return {};
    }
    QList<int> values;
    if (!readInts(bytes, &values))
        return Dock::tr("the sizes cannot be read");
    if (auto* splitter = qobject_cast<QSplitter*>(&widget)) {
        if (values.size() != splitter->count())
            return Dock::tr("%1 sizes for a splitter of %2").arg(values.size()).arg(splitter->count());
        splitter->setSizes(values);
    } else if (auto* tabs = qobject_cast<QTabWidget*>(&widget)) {
        if (values.size() != 1 || values.front() < 0 || values.front() >= tabs->count())
            return Dock::tr("the current tab is out of range");
        if (tabs->isTabVisible(values.front()))
            tabs->setCurrentIndex(values.front());
    }
    return {};
}

/// Every dock where the user can get at it: in a window's tree, floating, or hidden with its action unchecked.
void rescue(Dock& dock)
{
    QWidget* top = &dock;
    while (QWidget* container = containerOf(top))
        top = container;
    if (top != &dock && top->isWindow() && !isFrame(top)) {
        // A container that lost its window: its docks float one by one and the husk goes.
        for (Dock* inner : top->findChildren<Dock*>()) {
            takeOut(*inner);
            Dock::reparent(inner, nullptr);
        }
        top->deleteLater();
    }
    // A dock without a parent would outlive the main window that should take it along.
    if (!dock.parentWidget())
        Dock::reparent(&dock, nullptr);
    const bool shown = isShown(dock);
    const QSignalBlocker blocker(dock.toggleViewAction());
    dock.toggleViewAction()->setChecked(shown);
}

/// Counts a restore in progress, also when one ends early.
class RestoreScope
{
public:
    RestoreScope() { ++restoring; }
    ~RestoreScope() { finish(); }
    RestoreScope(const RestoreScope&) = delete;
    RestoreScope& operator=(const RestoreScope&) = delete;

    void finish()
    {
        if (!finished && --restoring == 0)
            DockDetail::addDeferredUndockButtons();
        finished = true;
    }

private:
    bool finished = false;
};

/// A window's root once its tree is whole: a container shows when it holds something visible, a dock as its action
/// says, anything else as it was before the restore.
void showRoot(QWidget& frame, const QList<QPointer<QWidget>>& hiddenRoots)
{
    QWidget* root = DockDetail::childAt(&frame, 0);
    if (auto* splitter = qobject_cast<QSplitter*>(root))
        root->setVisible(Dock::visibleChildrenCount(splitter) > 0);
    else if (auto* tabs = qobject_cast<QTabWidget*>(root))
        root->setVisible(Dock::visibleTabsCount(tabs) > 0);
    else if (auto* dock = qobject_cast<Dock*>(root))
        dock->setVisible(dock->toggleViewAction()->isChecked());
    else if (root && (isPlaceholder(root) || hiddenRoots.contains(root)))
        root->show();
}

bool byName(const QWidget* a, const QWidget* b)
{
    return a->objectName() < b->objectName();
}

/// The main window, then the dock windows by name; a dock window without a name is on its way out.
QList<QWidget*> frames()
{
    QList<QWidget*> windows;
    for (DockWindow* window : dockWindows()) {
        if (!window->objectName().isEmpty())
            windows.append(window);
    }
    std::sort(windows.begin(), windows.end(), byName);
    if (QMainWindow* mainWindow = Dock::findMainWindow())
        windows.prepend(mainWindow);
    return windows;
}

} // namespace

Stack<Dock::Data> Dock::saveWorkspace()
{
    Stack<Data> docks;
    Stack<Data> levels;
    QList<Dock*> floating;
    for (Dock* dock : allDocks()) {
        if (dock->isWindow())
            floating.append(dock);
    }
    std::sort(floating.begin(), floating.end(), byName);
    for (QWidget* frame : frames())
        saveTree(*frame, docks, levels);
    for (Dock* dock : floating)
        docks.push_back({ toString(dock->objectName()), !isShown(*dock), dock->saveGeometry() });
    docks.insert(docks.end(), levels.begin(), levels.end());
    return docks;
}

FlatSet<String> Dock::restoreWorkspace(ArrayView<const Data> records, Stack<String>* problems)
{
    FlatSet<String> missing;
    struct Entry
    {
        const Data* record;
        QStringList tokens;
        Dock* dock = nullptr;
        bool refused = false;
    };
    Array<Entry> entries;
    entries.reserve(records.size());
    // Records are checked before anything moves: a refused record changes nothing, the others still apply.
    const Array<Stack<String>> checks = checkEachWorkspaceRecord(records);
    FlatSet<Dock*> placed;
    for (std::size_t i = 0; i < records.size(); ++i) {
        const Data& record = records[i];
        Entry entry { &record, splitPath(record.path) };
        for (const String& message : checks[i])
            report(message, problems);
        entry.refused = !checks[i].empty() || entry.tokens.isEmpty();
        if (!entry.refused && !isLevelRecord(entry.tokens)) {
            entry.dock = findDock(entry.tokens.back());
            // The check refuses a dock placed twice already; placing it twice would break the rebuild, so again.
            if (entry.dock && !placed.insert(entry.dock).second) {
                refuse(record, tr("the dock is placed by an earlier record"), problems);
                entry.refused = true;
                entry.dock = nullptr;
            } else if (!entry.dock) {
                missing.insert(record.path);
            }
        }
        entries.push_back(std::move(entry));
    }

    // The trees are rebuilt out of sight: a tab bar or splitter that is not shown defers its layout to when it is,
    // instead of laying out all its tabs again for every dock that comes or goes.
    RestoreScope scope;
    QList<QPointer<QWidget>> hiddenRoots;
    for (QWidget* frame : frames()) {
        QWidget* root = DockDetail::childAt(frame, 0);
        if (root && !root->isHidden()) {
            root->hide();
            hiddenRoots.append(root);
        }
    }
    // Every dock the workspace places leaves its place first, so that the containers are rebuilt from the records
    // alone; a missing dock holds its place with a placeholder so that the indices of its neighbours still match.
    // From the last, with each tab group turned to its first tab: a tab that goes from behind the current one
    // changes nothing else, where taking the current tab makes the tab bar choose and measure a new one each time.
    for (const Entry& entry : entries) {
        if (auto* tabs = entry.dock ? qobject_cast<QTabWidget*>(containerOf(entry.dock)) : nullptr)
            tabs->setCurrentIndex(0);
    }
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        if (entry->dock) {
            detach(*entry->dock);
            entry->dock->hide();
            reparent(entry->dock, nullptr);
        }
    }
    QList<QPointer<QWidget>> placeholders;
    for (Entry& entry : entries) {
        if (entry.refused || isLevelRecord(entry.tokens))
            continue;
        if (entry.dock) {
            if (!entry.dock->dock(entry.tokens)) {
                refuse(*entry.record, tr("its path does not lead to a place for a dock"), problems);
                entry.refused = true;
            }
            continue;
        }
        QWidget* top = findTopLevelWidget(entry.tokens.front());
        if (entry.tokens.size() > 1 && isFrame(top)) {
            QWidget* container
                = traverse(top, entry.tokens.mid(1, entry.tokens.size() - 2), TraverseFlag::Create).first;
            if (isSplitterOrTabs(container)) {
                QWidget* placeholder = makePlaceholder();
                placeholder->hide();
                insertToParent(container, childCount(container), placeholder);
                placeholders.append(placeholder);
            }
        }
    }

    // The neighbours of missing docks are in place: the stand-ins go before sizes are counted against children.
    for (const QPointer<QWidget>& placeholder : placeholders) {
        if (placeholder)
            detach(*placeholder);
        delete placeholder.data();
    }
    for (const Entry& entry : entries) {
        if (entry.refused)
            continue;
        const bool level = isLevelRecord(entry.tokens);
        QWidget* target
            = level ? findWidget(entry.tokens.mid(0, std::max<qsizetype>(entry.tokens.size() - 1, 1))) : entry.dock;
        if (!target)
            continue;
        if (level && entry.tokens.size() == 1 && qobject_cast<DockWindow*>(target))
            target->setVisible(!entry.record->hidden);
        if (const QString reason = applyGeometry(*target, entry.record->geometry); !reason.isEmpty())
            refuse(*entry.record, reason, problems);
        if (entry.dock)
            entry.dock->applyVisibility(!entry.record->hidden);
    }

    scope.finish();
    for (QWidget* frame : frames())
        showRoot(*frame, hiddenRoots);
    for (Dock* dock : allDocks())
        rescue(*dock);
    return missing;
}

} // namespace Marlix::Widgets
