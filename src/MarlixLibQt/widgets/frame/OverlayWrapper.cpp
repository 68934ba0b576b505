#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/widgets/frame/OverlayWrapper.h>

#include <QEvent>
#include <QLoggingCategory>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace Marlix::Widgets {

namespace {

Q_LOGGING_CATEGORY(overlayLog, "marlix.libqt.overlay")

constexpr const char* UNIT = "widgets/OverlayWrapper";

} // namespace

OverlayWrapper::OverlayWrapper(QWidget* content, Qt::Edge edge, QWidget* parent)
    : QFrame(parent)
    , contentWidget(content)
    , overlayEdge(edge)
{
    if (!content)
        throw Exception("An overlay needs a content widget.");
    if (!parent)
        throw Exception("An overlay needs a parent widget to lie over.");
    if (edge != Qt::TopEdge && edge != Qt::LeftEdge && edge != Qt::RightEdge && edge != Qt::BottomEdge)
        Detail::throwStopException(UNIT, __LINE__);
    hide();
    setBackgroundRole(content->backgroundRole());
    // The strip covers the parent's own contents, so it paints its whole area.
    setAutoFillBackground(true);
    if (auto* frame = qobject_cast<QFrame*>(content))
        frame->setFrameShape(QFrame::NoFrame);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(content);
    content->show();
    setAccessibleName(content->accessibleName());
    parent->installEventFilter(this);
}

void OverlayWrapper::show(bool visible)
{
    if (!visible) {
        hide();
        return;
    }
    raise();
    updatePlacement();
    QFrame::show();
}

void OverlayWrapper::updatePlacement()
{
    const QWidget* parent = parentWidget();
    if (!parent)
        return;
    const QSize hint = sizeHint();
    switch (overlayEdge) {
    case Qt::TopEdge:
        setGeometry(0, 0, parent->width(), hint.height());
        return;
    case Qt::BottomEdge:
        setGeometry(0, parent->height() - hint.height(), parent->width(), hint.height());
        return;
    case Qt::LeftEdge:
        setGeometry(0, 0, hint.width(), parent->height());
        return;
    case Qt::RightEdge:
        setGeometry(parent->width() - hint.width(), 0, hint.width(), parent->height());
        return;
    }
    Detail::throwStopException(UNIT, __LINE__);
}

bool OverlayWrapper::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == parentWidget() && isVisible()) {
        const QEvent::Type type = event->type();
        if (type == QEvent::Move || type == QEvent::Resize || type == QEvent::Show) {
            try {
                updatePlacement();
            } catch (const std::exception& error) {
                qCWarning(overlayLog, "Placing an overlay failed: %s", error.what());
            } catch (...) {
                qCWarning(overlayLog, "Placing an overlay failed");
            }
        }
    }
    return QFrame::eventFilter(watched, event);
}

void OverlayWrapper::wheelEvent(QWheelEvent* event)
{
    // The parent must not scroll under the strip.
    event->accept();
}

} // namespace Marlix::Widgets
