#pragma once

#include <MarlixLibQt/widgets/editors/SpinBox.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QStyleOptionSpinBox>
#include <QTest>
#include <QWheelEvent>
#include <QtTest/qtestspontaneevent.h>

namespace Marlix::Widgets::Testing {

/// Shown, active and away from the screen's edges, so that a drag does not wrap the cursor by accident.
inline bool showActive(QWidget& widget)
{
    widget.move(200, 200);
    widget.show();
    widget.activateWindow();
    return QTest::qWaitForWindowActive(&widget);
}

/// Where a user presses to step or drag: the middle of an arrow, from the style's geometry.
inline QPoint arrowCenter(const SpinBox& spinBox, QStyle::SubControl arrow = QStyle::SC_SpinBoxUp)
{
    QStyleOptionSpinBox option;
    option.initFrom(&spinBox);
    option.frame = true;
    option.buttonSymbols = QAbstractSpinBox::UpDownArrows;
    option.subControls = QStyle::SC_SpinBoxFrame | QStyle::SC_SpinBoxEditField | QStyle::SC_SpinBoxUp
        | QStyle::SC_SpinBoxDown;
    option.stepEnabled = QAbstractSpinBox::StepUpEnabled | QAbstractSpinBox::StepDownEnabled;
    return spinBox.style()->subControlRect(QStyle::CC_SpinBox, &option, arrow, &spinBox).center();
}

/// Replaces the field's text by typing, then confirms with Enter.
inline void typeInto(SpinBox* spinBox, const QString& text)
{
    spinBox->setFocus();
    spinBox->getLineEdit()->selectAll();
    QTest::keyClicks(spinBox->getLineEdit(), text);
    QTest::keyClick(spinBox->getLineEdit(), Qt::Key_Return);
}

/// Presses the up arrow (one step) and drags up by `pixels`, one pixel per move.
inline void dragUp(SpinBox* spinBox, int pixels)
{
    const QPoint press = arrowCenter(*spinBox);
    QTest::mousePress(spinBox, Qt::LeftButton, {}, press);
    for (int i = 1; i <= pixels; ++i)
        QTest::mouseMove(spinBox, press - QPoint(0, i));
    QTest::mouseRelease(spinBox, Qt::LeftButton, {}, press - QPoint(0, pixels));
}

/// A wheel turn as the window system delivers it: marked as spontaneous, so that the application hands it on to the
/// parents while nobody accepts it, as it does a real wheel.
inline void sendWheel(QWidget* target, int angle, Qt::ScrollPhase phase = Qt::NoScrollPhase)
{
    const QPointF position = QRectF(target->rect()).center();
    QWheelEvent event(position, target->mapToGlobal(position), QPoint(), QPoint(0, angle), Qt::NoButton,
                      Qt::NoModifier, phase, false);
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(target, &event);
}

/// Right-clicks the widget as the window system reports it (QTest's clicks make no context-menu event).
inline QMenu* rightClick(QWidget& widget)
{
    const QPoint position = widget.rect().center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, position, widget.mapToGlobal(position));
    QApplication::sendEvent(&widget, &event);
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

/// Clicks the menu entry of that object name where it is drawn.
inline void clickMenuEntry(QMenu& menu, const char* objectName)
{
    QAction* action = menu.findChild<QAction*>(QString::fromLatin1(objectName));
    QVERIFY(action);
    const QPoint position = menu.actionGeometry(action).center();
    QTest::mouseMove(&menu, position);
    QTest::mouseClick(&menu, Qt::LeftButton, {}, position);
}

} // namespace Marlix::Widgets::Testing
