#include <MarlixLibQt/widgets/editors/ValuePicker.h>

#include <MarlixLibQt/QtUtils.h>

#include <QEvent>
#include <QMenu>
#include <QScreen>

#include <algorithm>

namespace Marlix::Widgets {

ValuePicker::ValuePicker(QMenu* menu, QWidget* parent)
    : QToolButton(parent)
    , pickerMenu(menu)
{
    setToolButtonStyle(Qt::ToolButtonTextOnly);
    setPopupMode(QToolButton::MenuButtonPopup);
    setMenu(menu);
    if (menu)
        menu->installEventFilter(this);
}

ValuePicker::~ValuePicker()
{
    if (pickerMenu)
        pickerMenu->removeEventFilter(this);
}

void ValuePicker::setButtonEnabled(bool enabled)
{
    if (enabled == buttonEnabled)
        return;
    buttonEnabled = enabled;
    update();
}

QPoint ValuePicker::menuPosition(const QPoint& buttonCorner, const QSize& menuSize, const QRect& availableScreen)
{
    int x = buttonCorner.x() - menuSize.width();
    int y = buttonCorner.y();
    x = std::min(x, availableScreen.x() + availableScreen.width() - menuSize.width());
    y = std::min(y, availableScreen.y() + availableScreen.height() - menuSize.height());
    // A menu larger than the screen keeps its top-left corner visible, where its first entries are.
    x = std::max(x, availableScreen.x());
    y = std::max(y, availableScreen.y());
    return { x, y };
}

bool ValuePicker::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == pickerMenu && event->type() == QEvent::Show)
        placeMenu();
    return QToolButton::eventFilter(watched, event);
}

void ValuePicker::placeMenu()
{
    const QSize size = pickerMenu->sizeHint();
    const QScreen* screen = screenOf(this);
    const QRect available = screen ? screen->availableGeometry() : QRect(QPoint(0, 0), size);
    const QPoint corner = mapToGlobal(QPoint(width(), height()));
    pickerMenu->move(menuPosition(corner, size, available));
    pickerMenu->resize(size);
}

} // namespace Marlix::Widgets
