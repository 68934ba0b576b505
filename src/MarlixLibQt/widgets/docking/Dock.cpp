#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/docking/DockPrivate.h>
#include <MarlixLibQt/widgets/docking/Tabber.h>

#include <QAction>
#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMainWindow>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionDockWidget>
#include <QStylePainter>
#include <QTabWidget>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace Marlix::Widgets {

namespace {

using namespace DockDetail;

const QString UNNAMED_PREFIX = QStringLiteral("Dock#");
// Of a target's width or height, the band along each edge that docks beside it; the middle makes a tab.
constexpr double EDGE_BAND = 0.25;

FlatSet<Dock*>& registry()
{
    static FlatSet<Dock*> docks;
    return docks;
}

QPointer<Dock>& dockWithFocus()
{
    static QPointer<Dock> dock;
    return dock;
}

/// The translucent frame that shows where a dragged dock lands.
class DropOverlay : public QWidget
{
public:
    DropOverlay()
        : QWidget(nullptr, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowTransparentForInput)
    {
        setObjectName(QStringLiteral("DockOverlay"));
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAttribute(Qt::WA_ShowWithoutActivating);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        QColor fill = palette().color(QPalette::Highlight);
        const QColor border = fill;
        fill.setAlpha(80);
        const int width = getDeviceIndependentPixels(2, this);
        painter.fillRect(rect(), fill);
        painter.setPen(QPen(border, width));
        painter.drawRect(rect().adjusted(width / 2, width / 2, -(width + 1) / 2, -(width + 1) / 2));
    }
};

QPointer<QWidget>& overlayWidget()
{
    static QPointer<QWidget> widget;
    return widget;
}

void deleteOverlay()
{
    delete overlayWidget().data();
}

QString unusedName()
{
    int highest = 0;
    for (const Dock* dock : registry()) {
        const QString name = dock->objectName();
        if (!name.startsWith(UNNAMED_PREFIX))
            continue;
        bool ok = false;
        const int number = name.mid(UNNAMED_PREFIX.size()).toInt(&ok);
        if (ok)
            highest = std::max(highest, number);
    }
    return UNNAMED_PREFIX + QString::number(highest + 1);
}

/// The area a drop at `globalPosition` on `target` chooses: an edge band docks beside, the middle tabs; on the main
/// window the central area is taken when it is empty, and its edges split it otherwise.
Dock::Area areaAt(QWidget& target, const QPoint& globalPosition, QRect* shown)
{
    QRect rect = Dock::globalGeometry(target);
    auto* mainWindow = qobject_cast<QMainWindow*>(&target);
    if (mainWindow) {
        QWidget* central = mainWindow->centralWidget();
        if (central)
            rect = Dock::globalGeometry(*central);
        if (!central || isPlaceholder(central)) {
            *shown = rect;
            return Dock::Area::Tab;
        }
    }
    if (rect.width() <= 0 || rect.height() <= 0)
        return Dock::Area::None;
    const double x = double(globalPosition.x() - rect.left()) / rect.width();
    const double y = double(globalPosition.y() - rect.top()) / rect.height();
    const std::pair<double, Dock::Area> edges[] = { { x, Dock::Area::Left }, { 1 - x, Dock::Area::Right },
        { y, Dock::Area::Top }, { 1 - y, Dock::Area::Bottom } };
    auto nearest = std::min_element(std::begin(edges), std::end(edges));
    Dock::Area area = nearest->first < EDGE_BAND ? nearest->second : Dock::Area::Tab;
    if (area == Dock::Area::Tab && mainWindow)
        return Dock::Area::None;
    const int halfWidth = rect.width() / 2;
    const int halfHeight = rect.height() / 2;
    switch (area) {
    case Dock::Area::Left:
        *shown = rect.adjusted(0, 0, -halfWidth, 0);
        break;
    case Dock::Area::Right:
        *shown = rect.adjusted(halfWidth, 0, 0, 0);
        break;
    case Dock::Area::Top:
        *shown = rect.adjusted(0, 0, 0, -halfHeight);
        break;
    case Dock::Area::Bottom:
        *shown = rect.adjusted(0, halfHeight, 0, 0);
        break;
    default:
        *shown = rect;
    }
    return area;
}

} // namespace

QWidget* DockDetail::currentOverlay()
{
    return overlayWidget();
}

Dock::Dock(const QString& name)
    : QFrame(findMainWindow(), floatingFlags())
{
    setObjectName(name.isEmpty() ? unusedName() : name);
    setWindowTitle(objectName());
    setAccessibleName(windowTitle());
    registry().insert(this);

    dockHeader = new DockHeader(this);
    dockHeader->installEventFilter(this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(dockHeader);

    toggleAction = new QAction(windowTitle(), this);
    toggleAction->setCheckable(true);
    toggleAction->setChecked(true);
    connect(toggleAction, &QAction::toggled, this, &Dock::applyVisibility);
    connect(dockHeader->button(), &QToolButton::clicked, this, [this] { undock(*this); });
}

Dock::~Dock()
{
    registry().erase(this);
    if (dragging)
        qApp->removeEventFilter(this);
    if (QWidget* container = containerOf(this)) {
        // The container is tidied once this dock has left it, so that it does not stay behind as an empty husk.
        QPointer<QWidget> guarded(container);
        QTimer::singleShot(0, container, [guarded] { tidy(guarded); });
    }
}

void Dock::setWidget(QWidget* widget)
{
    if (widget == content)
        return;
    auto* box = static_cast<QVBoxLayout*>(layout());
    if (content) {
        box->removeWidget(content);
        content->hide();
        content->setParent(nullptr);
        content->deleteLater();
    }
    content = widget;
    if (widget) {
        box->addWidget(widget, 1);
        widget->show();
    }
}

QWidget* Dock::widget() const
{
    return content;
}

const FlatSet<Dock*>& Dock::allDocks()
{
    return registry();
}

Dock* Dock::findDock(const QString& name)
{
    for (Dock* dock : registry()) {
        if (dock->objectName() == name)
            return dock;
    }
    return nullptr;
}

QWidget* Dock::overlay()
{
    QPointer<QWidget>& widget = overlayWidget();
    if (!widget) {
        widget = new DropOverlay;
        qAddPostRoutine(deleteOverlay);
    }
    return widget;
}

void Dock::connectOnFocusChangedSignal()
{
    // Once per application object: a host that shuts the library down and starts it again gets a new one.
    static QPointer<QApplication> connectedTo;
    auto* application = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (!application || connectedTo == application)
        return;
    connectedTo = application;
    QObject::connect(application, &QApplication::focusChanged, &Dock::onFocusChanged);
}

Dock* Dock::getDockWithFocus()
{
    return dockWithFocus();
}

void Dock::onFocusChanged(QWidget*, QWidget* now)
{
    // Focus leaving the application says nothing about which dock the user works in.
    if (!now)
        return;
    for (QWidget* widget = now; widget; widget = widget->parentWidget()) {
        if (auto* dock = qobject_cast<Dock*>(widget)) {
            dockWithFocus() = dock;
            return;
        }
    }
    dockWithFocus() = nullptr;
}

void Dock::applyVisibility(bool visible)
{
    if (auto* tabs = qobject_cast<QTabWidget*>(containerOf(this))) {
        const int index = tabs->indexOf(this);
        tabs->setTabVisible(index, visible);
        // A restore gives every tab group its current tab from its own record, once.
        if (visible && !restoring)
            tabs->setCurrentIndex(index);
    } else {
        setVisible(visible);
    }
    {
        const QSignalBlocker blocker(toggleAction);
        toggleAction->setChecked(visible);
    }
    updateContainerVisibility(this);
    // Shown inside a tab that is not the current one, the dock would stay out of sight.
    QWidget* child = this;
    for (QWidget* container = containerOf(child); visible && !restoring && container;
         child = container, container = containerOf(container)) {
        if (auto* tabs = qobject_cast<QTabWidget*>(container))
            tabs->setCurrentWidget(child);
    }
    if (visible && window() != this && window()->isHidden() && !qobject_cast<QMainWindow*>(window()))
        window()->show();
}

bool Dock::event(QEvent* event)
{
    // A floating dock that the host shows, or that the user closes with its window's button: the action follows.
    // Hiding alone is no sign, since taking a window into a container hides it on the way.
    const QEvent::Type type = event->type();
    if (isWindow() && toggleAction && (type == QEvent::ShowToParent || type == QEvent::Close)) {
        const QSignalBlocker blocker(toggleAction);
        toggleAction->setChecked(type == QEvent::ShowToParent);
    }
    return QFrame::event(event);
}

void Dock::changeEvent(QEvent* event)
{
    QFrame::changeEvent(event);
    // The constructor titles the dock before its header and action exist.
    if (!toggleAction)
        return;
    if (event->type() == QEvent::WindowTitleChange) {
        toggleAction->setText(windowTitle());
        setAccessibleName(windowTitle());
        dockHeader->label()->setText(windowTitle());
        updateTitles(this);
    } else if (event->type() == QEvent::ParentChange) {
        // A floating dock has nothing to undock from.
        dockHeader->button()->setVisible(!isWindow());
    }
}

void Dock::moveEvent(QMoveEvent* event)
{
    QFrame::moveEvent(event);
    // A floating dock moved while it is dragged by its header follows the pointer; the drop follows it too.
    if (dragging && isWindow())
        updateDrag(lastPosition);
}

bool Dock::eventFilter(QObject* watched, QEvent* event)
{
    // While a drag runs this filter sits on the application, so Esc cancels it whichever widget has the focus.
    if (dragging && event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        endDrag(true);
        return true;
    }
    if (watched != dockHeader)
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() != Qt::LeftButton)
            return false;
        pressed = true;
        pressPosition = mouse->globalPosition().toPoint();
        return true;
    }
    case QEvent::MouseMove: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        const QPoint position = mouse->globalPosition().toPoint();
        if (!pressed)
            return false;
        if (!dragging) {
            if ((position - pressPosition).manhattanLength() < QApplication::startDragDistance())
                return true;
            dragging = true;
            grabOffset = pressPosition - globalGeometry(*this).topLeft();
            windowStart = pos();
            qApp->installEventFilter(this);
        }
        lastPosition = position;
        if (isWindow())
            move(position - grabOffset - (geometry().topLeft() - pos()));
        updateDrag(position);
        return true;
    }
    case QEvent::MouseButtonRelease: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() != Qt::LeftButton || !pressed)
            return false;
        pressed = false;
        if (dragging) {
            lastPosition = mouse->globalPosition().toPoint();
            updateDrag(lastPosition);
            finishDocking();
        }
        return true;
    }
    default:
        return false;
    }
}

void Dock::updateDrag(const QPoint& globalPosition)
{
    QWidget* target = dockableWidgetAt(globalPosition, this);
    // Over itself a docked dock has nowhere to go: the drop there changes nothing.
    if (!isWindow() && globalGeometry(*this).contains(globalPosition))
        target = nullptr;
    QRect shown;
    dropTarget = target;
    dropArea = target ? areaAt(*target, globalPosition, &shown) : Area::None;
    QWidget* frame = overlay();
    if (dropArea == Area::None) {
        frame->hide();
        return;
    }
    frame->setGeometry(shown);
    frame->show();
    frame->raise();
}

void Dock::endDrag(bool cancelled)
{
    if (!dragging)
        return;
    dragging = false;
    pressed = false;
    qApp->removeEventFilter(this);
    overlay()->hide();
    if (cancelled && isWindow())
        move(windowStart);
    dropTarget = nullptr;
    dropArea = Area::None;
}

void Dock::finishDocking()
{
    QPointer<QWidget> target = dropTarget;
    const Area area = dropArea;
    const QPoint position = lastPosition;
    const bool overSelf = !isWindow() && globalGeometry(*this).contains(position);
    endDrag(false);
    if (target && area != Area::None && dock(target, area))
        return;
    if (isWindow() || overSelf)
        return;
    // Released over nothing a dock can land on: it floats where the pointer left it.
    undock(*this);
    move(position - grabOffset - (geometry().topLeft() - pos()));
}

DockHeader::DockHeader(Dock* dock)
    : QFrame(dock)
{
    setAccessibleName(tr("Dock title"));
    titleLabel = new QLabel(dock->windowTitle(), this);
    undockButton = makeUndockButton(this);
    undockButton->setVisible(!dock->isWindow());
    auto* layout = new QHBoxLayout(this);
    const int margin = getDeviceIndependentPixels(4, this);
    layout->setContentsMargins(margin, margin / 2, margin / 2, margin / 2);
    layout->setSpacing(margin);
    layout->addWidget(titleLabel, 1);
    layout->addWidget(undockButton);
    setCursor(Qt::OpenHandCursor);
}

QSize DockHeader::minimumSizeHint() const
{
    // The title may shrink to nothing; the button must stay clickable.
    const QMargins margins = layout()->contentsMargins();
    const QSize button = undockButton->sizeHint();
    const int height = std::max(button.height(), titleLabel->fontMetrics().height());
    return { margins.left() + margins.right() + button.width(), margins.top() + margins.bottom() + height };
}

void DockHeader::paintEvent(QPaintEvent*)
{
    QStylePainter painter(this);
    QStyleOptionDockWidget option;
    option.initFrom(this);
    option.rect = rect();
    option.movable = true;
    option.floatable = true;
    option.closable = false;
    painter.drawControl(QStyle::CE_DockWidgetTitle, option);
}

} // namespace Marlix::Widgets
