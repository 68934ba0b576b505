#include <MarlixLibQt/widgets/docking/DockPrivate.h>
#include <MarlixLibQt/widgets/docking/Tabber.h>

#include <QAction>
#include <QApplication>
#include <QBoxLayout>
#include <QMainWindow>
#include <QSplitter>

#include <algorithm>

namespace Marlix::Widgets {

using namespace DockDetail;

namespace {

QWidget* makeContainer(QChar kind)
{
    if (kind == u'T')
        return new Tabber;
    return makeSplitter(kind == u'H' ? Qt::Horizontal : Qt::Vertical);
}

bool matchesKind(const QWidget* widget, QChar kind)
{
    return isSplitterOrTabs(widget) && kindToken(widget) == QString(kind);
}

/// Puts `widget` in the single slot of the main window or a dock window. What held the slot is never lost: a
/// placeholder goes, a new empty container takes it in, anything else is split beside `widget`.
void placeInFrame(QWidget& frame, int index, QWidget& widget)
{
    QWidget* occupant = DockDetail::childAt(&frame, 0);
    auto setRoot = [&frame](QWidget& root) {
        if (auto* mainWindow = qobject_cast<QMainWindow*>(&frame))
            Dock::setCentralWidget(*mainWindow, root);
        else
            static_cast<DockWindow&>(frame).setRoot(&root);
        if (!restoring)
            root.show();
    };
    if (!occupant || isPlaceholder(occupant)) {
        setRoot(widget);
        return;
    }
    // A container that a path has just made has no parent yet, so it is told by its class alone.
    const bool emptyContainer
        = (qobject_cast<QSplitter*>(&widget) || qobject_cast<QTabWidget*>(&widget)) && childCount(&widget) == 0;
    if (emptyContainer) {
        takeOut(*occupant);
        setRoot(widget);
        Dock::insertToParent(&widget, 0, occupant);
        return;
    }
    auto* splitter = qobject_cast<QSplitter*>(occupant);
    if (!splitter)
        splitter = Dock::split(*occupant, Qt::Horizontal);
    Dock::insertToParent(splitter, index <= 0 ? 0 : splitter->count(), &widget);
}

/// Puts `container` where `widget` is, `widget` going nowhere yet: into a new dock window when `widget` floats.
void wrap(QWidget& widget, QWidget& container)
{
    if (widget.isWindow()) {
        DockWindow* window = makeDockWindow(nextDockWindowName(), Dock::globalGeometry(widget));
        const bool visible = widget.isVisible();
        window->setRoot(&container);
        widget.setParent(nullptr);
        if (visible)
            window->show();
        return;
    }
    if (QWidget* holder = containerOf(&widget)) {
        replaceInContainer(holder, widget, container);
        return;
    }
    // A widget the host placed in a layout of its own: the container takes its place there.
    QWidget* parent = widget.parentWidget();
    if (parent && parent->layout()) {
        delete parent->layout()->replaceWidget(&widget, &container);
        widget.setParent(nullptr);
    }
}

void showIfWanted(QWidget& widget)
{
    if (auto* dock = qobject_cast<Dock*>(&widget))
        dock->setVisible(dock->toggleViewAction()->isChecked());
    else
        widget.show();
}

} // namespace

QMainWindow* Dock::findMainWindow()
{
    // Looked up for every dock a workspace moves: the answer is kept while that window lives and stays top-level.
    static QPointer<QMainWindow> found;
    if (found && !found->parentWidget())
        return found;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* mainWindow = qobject_cast<QMainWindow*>(widget); mainWindow && !mainWindow->parentWidget())
            return found = mainWindow;
    }
    return nullptr;
}

QWidget* Dock::findTopLevelWidget(const QString& name)
{
    if (name.isEmpty())
        return nullptr;
    // The windows of the layout first, from their registries, before every widget of the application is looked at.
    if (QMainWindow* mainWindow = findMainWindow(); mainWindow && frameToken(*mainWindow) == name)
        return mainWindow;
    for (DockWindow* window : dockWindows()) {
        if (window->objectName() == name)
            return window;
    }
    if (Dock* dock = findDock(name); dock && dock->isWindow())
        return dock;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->isWindow() && widget->objectName() == name && widget != currentOverlay())
            return widget;
    }
    return name == MAIN_WINDOW_TOKEN ? findMainWindow() : nullptr;
}

std::pair<QWidget*, int> Dock::traverse(QWidget* root, QList<QString> path, Flags<TraverseFlag> flags)
{
    QWidget* current = root;
    int index = 0;
    for (const QString& token : path) {
        if (!current || qobject_cast<Dock*>(current))
            return { nullptr, -1 };
        QChar kind;
        int wanted = 0;
        if (parseLevelToken(token, &kind, &wanted)) {
            // A window holds one root, whatever index a path gives it.
            if (isFrame(current))
                wanted = 0;
            QWidget* child = DockDetail::childAt(current, wanted);
            if (!matchesKind(child, kind)) {
                const bool canHold = isFrame(current) || isSplitterOrTabs(current);
                // A container never sits right inside one of its own kind.
                if (!flags.has(TraverseFlag::Create) || !canHold || matchesKind(current, kind))
                    return { nullptr, -1 };
                child = makeContainer(kind);
                insertToParent(current, wanted, child);
            }
            index = indexIn(current, child);
            current = child;
            continue;
        }
        QWidget* found = nullptr;
        for (int i = 0, count = childCount(current); i < count && !found; ++i) {
            if (QWidget* child = DockDetail::childAt(current, i); child->objectName() == token) {
                found = child;
                index = i;
            }
        }
        current = found;
    }
    return { current, current ? index : -1 };
}

QWidget* Dock::findWidget(const QList<QString>& path)
{
    if (path.isEmpty())
        return nullptr;
    return traverse(findTopLevelWidget(path.front()), path.mid(1)).first;
}

QWidget* Dock::widgetAt(const QPoint& globalPosition, QWidget* exclude)
{
    QWidget* best = nullptr;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (!window->isVisible() || window == currentOverlay() || window == exclude
            || (exclude && exclude->isAncestorOf(window)))
            continue;
        if (window->windowType() == Qt::ToolTip || window->windowType() == Qt::Popup)
            continue;
        if (!window->frameGeometry().contains(globalPosition))
            continue;
        // Floating windows are children of the main window and stay above it; the active one is above the rest.
        const bool isMain = qobject_cast<QMainWindow*>(window);
        if (!best || (!isMain && (qobject_cast<QMainWindow*>(best) || window->isActiveWindow())))
            best = window;
    }
    if (!best)
        return nullptr;
    QWidget* hit = best->childAt(best->mapFromGlobal(globalPosition));
    if (!hit)
        hit = best;
    if (exclude && (hit == exclude || exclude->isAncestorOf(hit)))
        return exclude->isWindow() ? nullptr : exclude->parentWidget();
    return hit;
}

QWidget* Dock::dockableWidgetAt(const QPoint& globalPosition, QWidget* exclude)
{
    for (QWidget* widget = widgetAt(globalPosition, exclude); widget; widget = widget->parentWidget()) {
        if (qobject_cast<Dock*>(widget) && widget != exclude)
            return widget;
        if (qobject_cast<QMainWindow*>(widget))
            return widget;
        if (widget->isWindow())
            return nullptr;
    }
    return nullptr;
}

QRect Dock::globalGeometry(QWidget& widget)
{
    return { widget.mapToGlobal(QPoint(0, 0)), widget.size() };
}

void Dock::insertToParent(QWidget* parent, int index, QWidget* widget)
{
    if (!widget || parent == widget)
        return;
    if (!parent) {
        undock(*widget);
        return;
    }
    // A widget that sits elsewhere leaves its place first; that place is tidied once the widget has landed, so a
    // tidy that folds containers away cannot take the new parent with them.
    const QPointer<QWidget> previous = containerOf(widget);
    if (previous)
        takeOut(*widget);
    if (auto* splitter = qobject_cast<QSplitter*>(parent)) {
        splitter->insertWidget(std::clamp(index, 0, splitter->count()), widget);
        showIfWanted(*widget);
    } else if (auto* tabs = qobject_cast<QTabWidget*>(parent)) {
        const int at = tabs->insertTab(std::clamp(index, 0, tabs->count()), widget, compositeTitle(widget));
        if (auto* dock = qobject_cast<Dock*>(widget))
            tabs->setTabVisible(at, dock->toggleViewAction()->isChecked());
    } else if (isFrame(parent)) {
        placeInFrame(*parent, index, *widget);
    } else {
        widget->setParent(parent);
        if (auto* box = qobject_cast<QBoxLayout*>(parent->layout()))
            box->insertWidget(std::clamp(index, 0, box->count()), widget);
        else if (parent->layout())
            parent->layout()->addWidget(widget);
        showIfWanted(*widget);
    }
    if (previous && previous != parent)
        tidy(previous);
}

void Dock::reparent(QWidget* widget, QWidget* parent)
{
    if (!widget)
        return;
    if (parent) {
        widget->setParent(parent);
        return;
    }
    // Floating windows belong to the main window, so they stay above it and go with it.
    QMainWindow* mainWindow = findMainWindow();
    QWidget* owner = mainWindow == widget ? nullptr : mainWindow;
    if (widget->isWindow() && widget->parentWidget() == owner)
        return;
    widget->setParent(owner, floatingFlags());
}

QSplitter* Dock::split(QWidget& widget, Qt::Orientation orientation)
{
    auto* parent = qobject_cast<QSplitter*>(containerOf(&widget));
    if (parent && parent->orientation() == orientation)
        return parent;
    QSplitter* splitter = makeSplitter(orientation);
    wrap(widget, *splitter);
    splitter->addWidget(&widget);
    showIfWanted(widget);
    return splitter;
}

QTabWidget* Dock::tabify(Dock& dock)
{
    if (auto* tabs = qobject_cast<QTabWidget*>(containerOf(&dock)))
        return tabs;
    auto* tabs = new Tabber;
    wrap(dock, *tabs);
    tabs->addTab(&dock, compositeTitle(&dock));
    tabs->setTabVisible(0, dock.toggleViewAction()->isChecked());
    return tabs;
}

void Dock::undock(QWidget& widget)
{
    if (widget.isWindow())
        return;
    const QRect geometry = globalGeometry(widget);
    QWidget* container = containerOf(&widget);
    takeOut(widget);
    tidy(container);
    reparent(&widget, nullptr);
    widget.setGeometry(geometry);
    showIfWanted(widget);
    widget.raise();
}

QString Dock::compositeTitle(QWidget* widget)
{
    if (!widget)
        return {};
    if (qobject_cast<Dock*>(widget))
        return widget->windowTitle();
    QStringList titles;
    for (int i = 0, count = childCount(widget); i < count; ++i) {
        if (const QString title = compositeTitle(DockDetail::childAt(widget, i)); !title.isEmpty())
            titles.append(title);
    }
    return titles.join(tr(", "));
}

void Dock::setCentralWidget(QMainWindow& window, QWidget& widget)
{
    if (window.centralWidget() == &widget)
        return;
    if (QWidget* previous = window.takeCentralWidget()) {
        if (isPlaceholder(previous)) {
            previous->deleteLater();
        } else {
            const QRect geometry = globalGeometry(*previous);
            reparent(previous, nullptr);
            previous->setGeometry(geometry);
            showIfWanted(*previous);
        }
    }
    QWidget* container = containerOf(&widget);
    takeOut(widget);
    tidy(container);
    window.setCentralWidget(&widget);
    showIfWanted(widget);
}

int Dock::visibleChildrenCount(const QSplitter* splitter)
{
    int visible = 0;
    for (int i = 0, count = splitter ? splitter->count() : 0; i < count; ++i)
        visible += splitter->widget(i)->isVisibleTo(splitter) ? 1 : 0;
    return visible;
}

int Dock::visibleTabsCount(const QTabWidget* tabs)
{
    int visible = 0;
    for (int i = 0, count = tabs ? tabs->count() : 0; i < count; ++i)
        visible += tabs->isTabVisible(i) ? 1 : 0;
    return visible;
}

bool Dock::dock(QWidget* target, Area area)
{
    auto* targetDock = qobject_cast<Dock*>(target);
    auto* mainWindow = qobject_cast<QMainWindow*>(target);
    if (area == Area::None || target == this || (!targetDock && !mainWindow))
        return false;
    if (mainWindow) {
        QWidget* central = mainWindow->centralWidget();
        if (!central || isPlaceholder(central)) {
            setCentralWidget(*mainWindow, *this);
            return true;
        }
        if (area == Area::Tab || central == this)
            return false;
        detach(*this);
        // Taking this dock out may have folded the central widget away.
        target = mainWindow->centralWidget();
        if (!target || isPlaceholder(target)) {
            setCentralWidget(*mainWindow, *this);
            return true;
        }
    } else {
        detach(*this);
    }
    if (area == Area::Tab) {
        QTabWidget* tabs = tabify(*targetDock);
        const int index = tabs->addTab(this, compositeTitle(this));
        tabs->setCurrentIndex(index);
        updateTitles(this);
        applyVisibility(true);
        return true;
    }
    const Qt::Orientation orientation = area == Area::Left || area == Area::Right ? Qt::Horizontal : Qt::Vertical;
    auto extentOf
        = [orientation](QWidget& widget) { return orientation == Qt::Horizontal ? widget.width() : widget.height(); };
    const int extent = extentOf(*target);
    auto* splitter = qobject_cast<QSplitter*>(target);
    if (mainWindow && splitter && splitter->orientation() == orientation) {
        // Beside the whole central area, in the splitter that already lies that way rather than one nested in it.
        const bool first = area == Area::Left || area == Area::Top;
        splitter->insertWidget(first ? 0 : splitter->count(), this);
        updateTitles(this);
        applyVisibility(true);
        return true;
    }
    splitter = split(*target, orientation);
    QList<int> sizes = splitter->sizes();
    const int at = splitter->indexOf(target);
    const int before = area == Area::Left || area == Area::Top ? at : at + 1;
    splitter->insertWidget(before, this);
    // The two share what the target had; the other panes of the splitter keep their sizes.
    if (extent > 0 && at < sizes.size()) {
        sizes[at] = extent - extent / 2;
        sizes.insert(before, extent / 2);
        splitter->setSizes(sizes);
    }
    updateTitles(this);
    applyVisibility(true);
    return true;
}

bool Dock::dock(const QList<QString>& path)
{
    if (path.isEmpty() || path.back() != objectName())
        return false;
    if (path.size() == 1) {
        detach(*this);
        reparent(this, nullptr);
        return true;
    }
    QWidget* top = findTopLevelWidget(path.front());
    if (!top && path.front() != MAIN_WINDOW_TOKEN && path.front().endsWith(MAIN_WINDOW_TOKEN))
        top = makeDockWindow(path.front(), geometry());
    if (!isFrame(top))
        return false;
    detach(*this);
    QWidget* container = traverse(top, path.mid(1, path.size() - 2), TraverseFlag::Create).first;
    if (!container || !(isFrame(container) || isSplitterOrTabs(container))) {
        reparent(this, nullptr);
        // A dock window made for this path and left empty goes again.
        tidy(top);
        return false;
    }
    insertToParent(container, childCount(container), this);
    updateTitles(this);
    return true;
}

} // namespace Marlix::Widgets
