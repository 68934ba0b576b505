#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/frame/PopupWrapper.h>

#include <QFrame>
#include <QLoggingCategory>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace Marlix::Widgets {

namespace {

Q_LOGGING_CATEGORY(popupLog, "marlix.libqt.popup")

constexpr const char* UNIT = "widgets/PopupWrapper";
// Outline and rounding of the bubble, at 96 DPI.
constexpr double OUTLINE_WIDTH = 1.0;
constexpr double CORNER_RADIUS = 3.0;

bool alignsAtStart(Qt::AlignmentFlag alignment)
{
    return alignment == Qt::AlignLeft || alignment == Qt::AlignTop;
}

bool alignsAtEnd(Qt::AlignmentFlag alignment)
{
    return alignment == Qt::AlignRight || alignment == Qt::AlignBottom;
}

// The pin position on a contents rectangle already grown by one pixel at the right and bottom.
int pinPositionOn(const QRect& contents, Qt::Edge edge, Qt::AlignmentFlag alignment)
{
    switch (edge) {
    case Qt::TopEdge:
    case Qt::BottomEdge:
        if (alignsAtStart(alignment))
            return contents.left() + PopupWrapper::PIN_INSET;
        if (alignsAtEnd(alignment))
            return contents.right() - PopupWrapper::PIN_INSET;
        return contents.center().x();
    case Qt::LeftEdge:
    case Qt::RightEdge:
        if (alignsAtStart(alignment))
            return contents.top() + PopupWrapper::PIN_INSET;
        if (alignsAtEnd(alignment))
            return contents.bottom() - PopupWrapper::PIN_INSET;
        return contents.center().y();
    }
    Detail::throwStopException(UNIT, __LINE__);
}

QRect pinnedContents(const QSize& size, Qt::Edge edge)
{
    return QRect(QPoint(0, 0), size).marginsRemoved(PopupWrapper::getContentsMarginsFor(edge)).adjusted(0, 0, 1, 1);
}

} // namespace

PopupWrapper* PopupWrapper::popupWidget(
    QWidget* content, const QWidget* anchor, Qt::Edge edge, Qt::AlignmentFlag alignment, Flags<Flag> flags)
{
    if (!content)
        throw Exception("A pop-up needs a content widget.");
    if (!anchor)
        throw Exception("A pop-up needs an anchor widget to point at.");
    getContentsMarginsFor(edge); // an unknown edge stops here, before anything is reparented
    auto* wrapper = new PopupWrapper(content, anchor, edge, alignment, flags);
    connect(wrapper, &QDialog::finished, wrapper, &QObject::deleteLater);
    wrapper->adjustSize();
    wrapper->updatePlacement();
    wrapper->show();
    return wrapper;
}

PopupWrapper::PopupWrapper(
    QWidget* content, const QWidget* anchor, Qt::Edge edge, Qt::AlignmentFlag alignment, Flags<Flag> flags)
    : QDialog(anchor->window(), Qt::Popup)
    , contentWidget(content)
    , anchorWidget(anchor)
    , requestedEdge(edge)
    , currentEdge(edge)
    , alignment(alignment)
    , flags(flags)
{
    // The corners around the rounded bubble and beside the pin stay see-through.
    setAttribute(Qt::WA_TranslucentBackground);
    setBackgroundRole(content->backgroundRole());
    if (auto* frame = qobject_cast<QFrame*>(content))
        frame->setFrameShape(QFrame::NoFrame);
    if (auto* dialog = qobject_cast<QDialog*>(content)) {
        dialog->setSizeGripEnabled(false);
        connect(dialog, &QDialog::finished, this, &QDialog::done);
    }
    // A content without a layout has no size hint; it keeps its own size rather than shrinking to nothing.
    if (!content->sizeHint().isValid())
        content->setMinimumSize(content->size());
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(0);
    layout->addWidget(content);
    content->show();
    setContentsMargins(getContentsMarginsFor(edge));
    layout->setContentsMargins(0, 0, 0, 0);

    QString name = content->accessibleName();
    if (name.isEmpty())
        name = content->windowTitle();
    setAccessibleName(name.isEmpty() ? tr("Pop-up") : name);
}

QMargins PopupWrapper::getContentsMarginsFor(Qt::Edge edge)
{
    switch (edge) {
    case Qt::TopEdge:
        return { 0, PIN_MARGIN, 0, 0 };
    case Qt::LeftEdge:
        return { PIN_MARGIN, 0, 0, 0 };
    case Qt::RightEdge:
        return { 0, 0, PIN_MARGIN, 0 };
    case Qt::BottomEdge:
        return { 0, 0, 0, PIN_MARGIN };
    }
    Detail::throwStopException(UNIT, __LINE__);
}

int PopupWrapper::computePinPosition(const QSize& size, Qt::Edge edge, Qt::AlignmentFlag alignment)
{
    return pinPositionOn(pinnedContents(size, edge), edge, alignment);
}

int PopupWrapper::getPinPositionFor(Qt::Edge edge, Qt::AlignmentFlag alignment) const
{
    return computePinPosition(size(), edge, alignment);
}

QRect PopupWrapper::computePopupGeometry(
    const QRect& anchor, const QRect& available, const QSize& size, Qt::Edge& edge, Qt::AlignmentFlag alignment)
{
    const QRect area
        = available.adjusted(SCREEN_MARGIN_START, SCREEN_MARGIN_START, -SCREEN_MARGIN_END, -SCREEN_MARGIN_END);
    const int width = size.width();
    const int height = size.height();
    const QRect extended = anchor.adjusted(-(width - 1), -(height - 1), width, height);

    // Flip to the opposite side only when that side has room; with room on neither the request stands.
    switch (edge) {
    case Qt::TopEdge:
        if (extended.bottom() > area.bottom() && extended.top() >= area.top())
            edge = Qt::BottomEdge;
        break;
    case Qt::LeftEdge:
        if (extended.right() > area.right() && extended.left() >= area.left())
            edge = Qt::RightEdge;
        break;
    case Qt::RightEdge:
        if (extended.left() < area.left() && extended.right() <= area.right())
            edge = Qt::LeftEdge;
        break;
    case Qt::BottomEdge:
        if (extended.top() < area.top() && extended.bottom() <= area.bottom())
            edge = Qt::TopEdge;
        break;
    default:
        Detail::throwStopException(UNIT, __LINE__);
    }

    const int pin = computePinPosition(size, edge, alignment);
    // std::max before std::min: a bubble larger than the area keeps its start visible.
    const auto clampY = [&](int y) { return std::max(std::min(y, area.bottom() - height), area.top()); };
    const auto clampX = [&](int x) { return std::max(std::min(x, area.right() - width), area.left()); };
    // QRect::center() rounds toward zero, which left of or above the primary screen shifts the bubble by a pixel.
    const QPoint centre(int(std::floor((double(anchor.left()) + anchor.right()) / 2.0)),
        int(std::floor((double(anchor.top()) + anchor.bottom()) / 2.0)));
    switch (edge) {
    case Qt::LeftEdge:
        return { QPoint(extended.right() - width, clampY(centre.y() - pin)), size };
    case Qt::RightEdge:
        return { QPoint(extended.left(), clampY(centre.y() - pin)), size };
    case Qt::TopEdge:
        return { QPoint(clampX(centre.x() - pin), extended.bottom() - height), size };
    case Qt::BottomEdge:
        return { QPoint(clampX(centre.x() - pin), extended.top()), size };
    }
    Detail::throwStopException(UNIT, __LINE__);
}

QRect PopupWrapper::availableArea() const
{
    const QWidget* window = anchorWidget ? anchorWidget->window() : parentWidget();
    if (flags.has(Flag::ConfineToAnchorWindow) && window)
        return window->geometry();
    const QScreen* screen = anchorWidget ? anchorWidget->screen() : screenOf(this);
    return screen ? screen->availableGeometry() : QRect();
}

QRect PopupWrapper::getGeometryFor(Qt::Edge& edge, Qt::AlignmentFlag align) const
{
    // An anchor destroyed while the bubble is open leaves it where it is.
    if (!anchorWidget)
        return geometry();
    const QRect anchor(anchorWidget->mapToGlobal(QPoint(0, 0)), anchorWidget->size());
    return computePopupGeometry(anchor, availableArea(), size(), edge, align);
}

void PopupWrapper::updatePlacement()
{
    if (placing)
        return;
    placing = true;
    try {
        Qt::Edge edge = requestedEdge;
        const QRect placement = getGeometryFor(edge, alignment);
        if (edge != currentEdge) {
            currentEdge = edge;
            setContentsMargins(getContentsMarginsFor(edge));
        }
        setGeometry(placement);
        update();
    } catch (...) {
        placing = false;
        throw;
    }
    placing = false;
}

void PopupWrapper::accept()
{
    if (auto* dialog = qobject_cast<QDialog*>(contentWidget.data()))
        dialog->accept();
    else
        QDialog::accept();
}

void PopupWrapper::reject()
{
    if (auto* dialog = qobject_cast<QDialog*>(contentWidget.data()))
        dialog->reject();
    else
        QDialog::reject();
}

void PopupWrapper::paintEvent(QPaintEvent*)
{
    try {
        const QRectF bubble = QRectF(contentsRect()).adjusted(0.5, 0.5, -0.5, -0.5);
        const double pin = getPinPositionFor(currentEdge, alignment) + 0.5;
        const double half = PIN_MARGIN;
        QPolygonF arrow;
        switch (currentEdge) {
        case Qt::TopEdge:
            arrow << QPointF(pin - half, bubble.top()) << QPointF(pin, 0.5) << QPointF(pin + half, bubble.top());
            break;
        case Qt::BottomEdge:
            arrow << QPointF(pin - half, bubble.bottom()) << QPointF(pin, height() - 0.5)
                  << QPointF(pin + half, bubble.bottom());
            break;
        case Qt::LeftEdge:
            arrow << QPointF(bubble.left(), pin - half) << QPointF(0.5, pin) << QPointF(bubble.left(), pin + half);
            break;
        case Qt::RightEdge:
            arrow << QPointF(bubble.right(), pin - half) << QPointF(width() - 0.5, pin)
                  << QPointF(bubble.right(), pin + half);
            break;
        }
        const double radius = getDeviceIndependentPixels(CORNER_RADIUS, this);
        QPainterPath body;
        body.addRoundedRect(bubble, radius, radius);
        QPainterPath pinPath;
        pinPath.addPolygon(arrow);
        pinPath.closeSubpath();

        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(palette().color(QPalette::Mid),
            getDeviceIndependentPixels(OUTLINE_WIDTH, this, DipValueHandling::KeepNonZero)));
        painter.setBrush(palette().color(backgroundRole()));
        painter.drawPath(body.united(pinPath).simplified());
    } catch (const std::exception& error) {
        qCWarning(popupLog, "Drawing a pop-up failed: %s", error.what());
    } catch (...) {
        qCWarning(popupLog, "Drawing a pop-up failed");
    }
}

void PopupWrapper::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    try {
        // New contents resize the bubble; it is placed again so the pin keeps pointing at the anchor.
        if (isVisible())
            updatePlacement();
    } catch (const std::exception& error) {
        qCWarning(popupLog, "Placing a pop-up failed: %s", error.what());
    } catch (...) {
        qCWarning(popupLog, "Placing a pop-up failed");
    }
}

} // namespace Marlix::Widgets
