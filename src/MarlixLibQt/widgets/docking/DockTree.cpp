#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/widgets/docking/DockPrivate.h>
#include <MarlixLibQt/widgets/docking/Tabber.h>

#include <QApplication>
#include <QCloseEvent>
#include <QMainWindow>
#include <QPointer>
#include <QSplitter>
#include <QTabWidget>
#include <QVBoxLayout>

#include <utility>

namespace Marlix::Widgets {

namespace {

const char* const PLACEHOLDER_PROPERTY = "marlixDockPlaceholder";

QList<DockWindow*>& windowRegistry()
{
    static QList<DockWindow*> windows;
    return windows;
}

} // namespace

DockWindow::DockWindow(const QString& name)
    : QWidget(Dock::findMainWindow(), DockDetail::floatingFlags())
{
    setObjectName(name);
    setAccessibleName(tr("Docked panels"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    windowRegistry().append(this);
}

DockWindow::~DockWindow()
{
    windowRegistry().removeOne(this);
}

QWidget* DockWindow::setRoot(QWidget* widget)
{
    QWidget* previous = rootWidget;
    if (previous) {
        layout()->removeWidget(previous);
        previous->setParent(nullptr);
    }
    rootWidget = widget;
    if (widget) {
        layout()->addWidget(widget);
        setWindowTitle(Dock::compositeTitle(widget));
    }
    return previous;
}

void DockWindow::closeEvent(QCloseEvent* event)
{
    // The window's docks stay in place, hidden; each action brings its dock and the window back.
    for (Dock* dock : findChildren<Dock*>()) {
        const QSignalBlocker blocker(dock->toggleViewAction());
        dock->toggleViewAction()->setChecked(false);
    }
    event->accept();
}

namespace DockDetail {

int restoring = 0;

namespace {
QList<QPointer<Tabber>>& tabsWaitingForButtons()
{
    static QList<QPointer<Tabber>> tabs;
    return tabs;
}
} // namespace

void deferUndockButtons(Tabber& tabs)
{
    if (!tabsWaitingForButtons().contains(&tabs))
        tabsWaitingForButtons().append(&tabs);
}

void addDeferredUndockButtons()
{
    const QList<QPointer<Tabber>> waiting = std::exchange(tabsWaitingForButtons(), {});
    for (const QPointer<Tabber>& tabs : waiting)
        if (tabs)
            tabs->addMissingUndockButtons();
}

Qt::WindowFlags floatingFlags()
{
    return Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowMaximizeButtonHint
        | Qt::WindowCloseButtonHint;
}

QWidget* containerOf(const QWidget* widget)
{
    if (!widget || widget->isWindow())
        return nullptr;
    QWidget* parent = widget->parentWidget();
    if (auto* splitter = qobject_cast<QSplitter*>(parent))
        return splitter->indexOf(const_cast<QWidget*>(widget)) >= 0 ? splitter : nullptr;
    // A tab's page sits in the tab widget's stack, one level below the tab widget.
    if (auto* tabs = parent ? qobject_cast<QTabWidget*>(parent->parentWidget()) : nullptr)
        return tabs->indexOf(const_cast<QWidget*>(widget)) >= 0 ? tabs : nullptr;
    if (auto* mainWindow = qobject_cast<QMainWindow*>(parent))
        return mainWindow->centralWidget() == widget ? mainWindow : nullptr;
    if (auto* window = qobject_cast<DockWindow*>(parent))
        return window->root() == widget ? window : nullptr;
    return nullptr;
}

bool isSplitterOrTabs(const QWidget* widget)
{
    return widget && !widget->isWindow()
        && (qobject_cast<const QSplitter*>(widget) || qobject_cast<const QTabWidget*>(widget));
}

bool isFrame(const QWidget* widget)
{
    return qobject_cast<const QMainWindow*>(widget) || qobject_cast<const DockWindow*>(widget);
}

int childCount(const QWidget* container)
{
    if (auto* splitter = qobject_cast<const QSplitter*>(container))
        return splitter->count();
    if (auto* tabs = qobject_cast<const QTabWidget*>(container))
        return tabs->count();
    if (auto* mainWindow = qobject_cast<const QMainWindow*>(container))
        return mainWindow->centralWidget() ? 1 : 0;
    if (auto* window = qobject_cast<const DockWindow*>(container))
        return window->root() ? 1 : 0;
    return 0;
}

QWidget* childAt(const QWidget* container, int index)
{
    if (index < 0 || index >= childCount(container))
        return nullptr;
    if (auto* splitter = qobject_cast<const QSplitter*>(container))
        return splitter->widget(index);
    if (auto* tabs = qobject_cast<const QTabWidget*>(container))
        return tabs->widget(index);
    if (auto* mainWindow = qobject_cast<const QMainWindow*>(container))
        return mainWindow->centralWidget();
    if (auto* window = qobject_cast<const DockWindow*>(container))
        return window->root();
    return nullptr;
}

int indexIn(const QWidget* container, const QWidget* child)
{
    auto* widget = const_cast<QWidget*>(child);
    if (auto* splitter = qobject_cast<const QSplitter*>(container))
        return splitter->indexOf(widget);
    if (auto* tabs = qobject_cast<const QTabWidget*>(container))
        return tabs->indexOf(widget);
    return childAt(container, 0) == child ? 0 : -1;
}

QString kindToken(const QWidget* container)
{
    if (!isSplitterOrTabs(container))
        return {};
    if (auto* splitter = qobject_cast<const QSplitter*>(container))
        return splitter->orientation() == Qt::Horizontal ? QStringLiteral("H") : QStringLiteral("V");
    return QStringLiteral("T");
}

bool parseLevelToken(const QString& token, QChar* kind, int* index)
{
    if (token.size() < 2)
        return false;
    const QChar letter = token.front();
    if (letter != u'H' && letter != u'V' && letter != u'T')
        return false;
    for (qsizetype i = 1; i < token.size(); ++i) {
        if (!token[i].isDigit() || token[i].unicode() > u'9')
            return false;
    }
    bool ok = false;
    const int value = token.mid(1).toInt(&ok);
    if (!ok)
        return false;
    *kind = letter;
    *index = value;
    return true;
}

QSplitter* makeSplitter(Qt::Orientation orientation)
{
    auto* splitter = new QSplitter(orientation);
    splitter->setChildrenCollapsible(false);
    splitter->setAccessibleName(
        orientation == Qt::Horizontal ? Dock::tr("Docks side by side") : Dock::tr("Docks one above another"));
    return splitter;
}

void takeOut(QWidget& widget)
{
    QWidget* container = containerOf(&widget);
    if (auto* tabs = qobject_cast<QTabWidget*>(container))
        tabs->removeTab(tabs->indexOf(&widget));
    else if (auto* mainWindow = qobject_cast<QMainWindow*>(container))
        mainWindow->takeCentralWidget();
    else if (auto* window = qobject_cast<DockWindow*>(container))
        window->setRoot(nullptr);
    if (widget.parentWidget())
        widget.setParent(nullptr);
}

void replaceInContainer(QWidget* container, QWidget& widget, QWidget& replacement)
{
    if (auto* splitter = qobject_cast<QSplitter*>(container)) {
        const QList<int> sizes = splitter->sizes();
        splitter->replaceWidget(splitter->indexOf(&widget), &replacement);
        widget.setParent(nullptr);
        splitter->setSizes(sizes);
    } else if (auto* tabs = qobject_cast<QTabWidget*>(container)) {
        const int index = tabs->indexOf(&widget);
        const bool current = tabs->currentIndex() == index;
        const bool visible = tabs->isTabVisible(index);
        tabs->removeTab(index);
        widget.setParent(nullptr);
        tabs->insertTab(index, &replacement, Dock::compositeTitle(&replacement));
        tabs->setTabVisible(index, visible);
        if (current)
            tabs->setCurrentIndex(index);
    } else if (auto* mainWindow = qobject_cast<QMainWindow*>(container)) {
        mainWindow->takeCentralWidget();
        widget.setParent(nullptr);
        mainWindow->setCentralWidget(&replacement);
    } else if (auto* window = qobject_cast<DockWindow*>(container)) {
        window->setRoot(&replacement);
    }
    replacement.show();
}

void tidy(QWidget* container)
{
    while (container && !container->isWindow() && isSplitterOrTabs(container)) {
        QWidget* parent = containerOf(container);
        const int count = childCount(container);
        if (count == 0) {
            takeOut(*container);
            container->deleteLater();
        } else if (count == 1) {
            QWidget* only = childAt(container, 0);
            if (!parent)
                return;
            if (isSplitterOrTabs(parent) && kindToken(only) == kindToken(parent)) {
                // Folding would nest a container in one of its own kind: its children join the parent instead.
                int at = indexIn(parent, container);
                takeOut(*container);
                while (childCount(only) > 0) {
                    QWidget* child = childAt(only, 0);
                    takeOut(*child);
                    Dock::insertToParent(parent, at++, child);
                }
                container->deleteLater();
            } else {
                takeOut(*only);
                replaceInContainer(parent, *container, *only);
                container->deleteLater();
                if (auto* dock = qobject_cast<Dock*>(only))
                    dock->setVisible(dock->toggleViewAction()->isChecked());
            }
        } else {
            return;
        }
        container = parent;
    }
    if (auto* mainWindow = qobject_cast<QMainWindow*>(container)) {
        if (!mainWindow->centralWidget())
            mainWindow->setCentralWidget(makePlaceholder());
    } else if (auto* window = qobject_cast<DockWindow*>(container)) {
        QWidget* root = window->root();
        if (auto* dock = qobject_cast<Dock*>(root)) {
            // A window left with one dock gives way to that dock floating alone at the same place.
            const QRect geometry = window->geometry();
            const bool visible = window->isVisible();
            window->setRoot(nullptr);
            Dock::reparent(dock, nullptr);
            dock->setGeometry(geometry);
            dock->setVisible(visible && dock->toggleViewAction()->isChecked());
            root = nullptr;
        }
        if (!root) {
            // Deleted later, as a button inside may still be at work; unnamed, no path can find it meanwhile.
            window->setObjectName(QString());
            window->hide();
            window->deleteLater();
        }
    }
}

void detach(QWidget& widget)
{
    QWidget* container = containerOf(&widget);
    if (!container)
        return;
    takeOut(widget);
    tidy(container);
}

QWidget* makePlaceholder()
{
    auto* widget = new QWidget;
    widget->setProperty(PLACEHOLDER_PROPERTY, true);
    return widget;
}

bool isPlaceholder(const QWidget* widget)
{
    return widget && widget->property(PLACEHOLDER_PROPERTY).toBool();
}

QString frameToken(const QWidget& frame)
{
    if (qobject_cast<const QMainWindow*>(&frame))
        return MAIN_WINDOW_TOKEN;
    return frame.objectName();
}

QStringList pathOf(const QWidget& widget)
{
    QStringList tokens;
    const QWidget* child = &widget;
    QWidget* container = containerOf(child);
    // A container is named by its level, a dock by its name.
    if (isSplitterOrTabs(&widget))
        tokens.append(kindToken(&widget) + QString::number(container ? indexIn(container, &widget) : 0));
    else
        tokens.append(widget.objectName());
    while (isSplitterOrTabs(container)) {
        QWidget* parent = containerOf(container);
        tokens.prepend(kindToken(container) + QString::number(parent ? indexIn(parent, container) : 0));
        child = container;
        container = parent;
    }
    if (container)
        tokens.prepend(frameToken(*container));
    else if (!child->isWindow())
        tokens.prepend(child->window()->objectName());
    return tokens;
}

DockWindow* makeDockWindow(const QString& name, const QRect& geometry)
{
    auto* window = new DockWindow(name);
    window->setGeometry(geometry);
    return window;
}

const QList<DockWindow*>& dockWindows()
{
    return windowRegistry();
}

QString nextDockWindowName()
{
    int highest = 0;
    const QString prefix = QStringLiteral("Floating#");
    const QString suffix = QLatin1Char('.') + MAIN_WINDOW_TOKEN;
    for (const DockWindow* window : windowRegistry()) {
        const QString name = window->objectName();
        if (name.startsWith(prefix) && name.endsWith(suffix))
            highest = std::max(highest, name.mid(prefix.size(), name.size() - prefix.size() - suffix.size()).toInt());
    }
    return prefix + QString::number(highest + 1) + suffix;
}

bool isShown(const Dock& dock)
{
    const QWidget* child = &dock;
    for (QWidget* container = containerOf(child); container; child = container, container = containerOf(container)) {
        auto* tabs = qobject_cast<QTabWidget*>(container);
        if (tabs ? !tabs->isTabVisible(tabs->indexOf(const_cast<QWidget*>(child))) : child->isHidden())
            return false;
    }
    // The main window may not be shown yet while the host restores its workspace at start-up.
    return qobject_cast<const QMainWindow*>(child) || !child->isHidden();
}

void setTabTitle(QTabWidget& tabs, int index, const QString& title)
{
    // Every new text lays the whole tab bar out again, so a text that stays is not set.
    if (tabs.tabText(index) == title)
        return;
    tabs.setTabText(index, title);
    tabs.setTabToolTip(index, title);
}

void updateTitles(QWidget* widget)
{
    QWidget* child = widget;
    for (QWidget* container = containerOf(child); container; child = container, container = containerOf(container)) {
        if (auto* tabs = qobject_cast<QTabWidget*>(container))
            setTabTitle(*tabs, tabs->indexOf(child), Dock::compositeTitle(child));
        else if (auto* window = qobject_cast<DockWindow*>(container))
            window->setWindowTitle(Dock::compositeTitle(child));
    }
}

void updateContainerVisibility(QWidget* widget)
{
    QWidget* child = widget;
    QWidget* container = containerOf(child);
    for (; isSplitterOrTabs(container); child = container, container = containerOf(container)) {
        bool anything = false;
        if (auto* tabs = qobject_cast<QTabWidget*>(container))
            anything = Dock::visibleTabsCount(tabs) > 0;
        else
            anything = Dock::visibleChildrenCount(static_cast<QSplitter*>(container)) > 0;
        QWidget* parent = containerOf(container);
        if (auto* tabs = qobject_cast<QTabWidget*>(parent))
            tabs->setTabVisible(tabs->indexOf(container), anything);
        else if (!restoring || !isFrame(parent))
            container->setVisible(anything);
    }
    if (auto* window = qobject_cast<DockWindow*>(container)) {
        bool anything = false;
        for (Dock* dock : window->findChildren<Dock*>())
            anything = anything || dock->toggleViewAction()->isChecked();
        window->setVisible(anything);
    }
}

} // namespace DockDetail

} // namespace Marlix::Widgets
