#include <MarlixLibQt/widgets/Container.h>

#include <QCoreApplication>
#include <QEvent>
#include <QLayout>

namespace Marlix::Widgets {

Container::Container()
    : Container(nullptr)
{
}

Container::Container(QWidget* parent, Qt::WindowFlags flags)
    : QFrame(parent, flags)
{
}

Container::Container(QFramePrivate& dd, QWidget* parent, Qt::WindowFlags flags)
    : QFrame(dd, parent, flags)
{
}

Container::~Container() = default;

bool Container::event(QEvent* event)
{
    if (event->type() == QEvent::LayoutRequest && !polishedLayout) {
        if (const QLayout* current = layout()) {
            polishedLayout = current;
            QEvent polish(QEvent::Polish);
            QCoreApplication::sendEvent(this, &polish);
        }
    }
    return QFrame::event(event);
}

} // namespace Marlix::Widgets
