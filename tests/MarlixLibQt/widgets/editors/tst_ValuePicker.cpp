#include <MarlixLibQt/widgets/editors/ValuePicker.h>

#include <QApplication>
#include <QMenu>
#include <QScreen>
#include <QStyleOptionToolButton>
#include <QTest>
#include <QTimer>

using Marlix::Widgets::ValuePicker;

namespace {

QMenu* makePresets(QWidget* parent)
{
    auto* menu = new QMenu(parent);
    for (const char* preset : { "0.5 (half of the default, a long entry)", "1.0", "2.0", "10.0" })
        menu->addAction(QString::fromLatin1(preset));
    return menu;
}

/// Where a user presses to open the menu: the arrow part of the button.
QPoint arrowPosition(ValuePicker& picker)
{
    QStyleOptionToolButton option;
    option.initFrom(&picker);
    option.subControls = QStyle::SC_ToolButton | QStyle::SC_ToolButtonMenu;
    option.features = QStyleOptionToolButton::MenuButtonPopup | QStyleOptionToolButton::HasMenu;
    option.toolButtonStyle = picker.toolButtonStyle();
    option.text = picker.text();
    return picker.style()->subControlRect(QStyle::CC_ToolButton, &option, QStyle::SC_ToolButtonMenu, &picker).center();
}

/// Opens the menu as the user does and returns where it was shown; the menu is closed again right away.
QRect openMenu(ValuePicker& picker, QMenu& menu)
{
    QRect shownAt;
    // The button's menu runs its own event loop until it closes.
    QTimer::singleShot(0, &menu, [&menu, &shownAt] {
        shownAt = menu.geometry();
        menu.close();
    });
    QTest::mousePress(&picker, Qt::LeftButton, {}, arrowPosition(picker));
    QTest::mouseRelease(&picker, Qt::LeftButton, {}, arrowPosition(picker));
    return shownAt;
}

} // namespace

class tst_ValuePicker : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void menuPosition_data()
    {
        QTest::addColumn<QPoint>("buttonCorner");
        QTest::addColumn<QSize>("menuSize");
        QTest::addColumn<QRect>("screen");
        QTest::addColumn<QPoint>("expected");

        const QRect screen(0, 0, 1920, 1080);
        const QSize menu(200, 300);
        QTest::newRow("below, right-aligned") << QPoint(1000, 500) << menu << screen << QPoint(800, 500);
        QTest::newRow("bottom-right corner") << QPoint(1930, 1070) << menu << screen << QPoint(1720, 780);
        QTest::newRow("second screen on the right, past its edge")
            << QPoint(3900, 40) << menu << QRect(1920, 30, 1920, 1050) << QPoint(3640, 40);
        QTest::newRow("taller than the screen") << QPoint(500, 300) << QSize(200, 1200) << screen << QPoint(300, 0);
    }

    void menuPosition()
    {
        QFETCH(QPoint, buttonCorner);
        QFETCH(QSize, menuSize);
        QFETCH(QRect, screen);
        QFETCH(QPoint, expected);
        QCOMPARE(ValuePicker::menuPosition(buttonCorner, menuSize, screen), expected);
    }

    void menuOpensBelowRightAlignedOnScreen_data()
    {
        QTest::addColumn<bool>("atRightEdge");
        QTest::newRow("inside the screen") << false;
        // A button shown as disabled keeps working: only its panel looks so.
        QTest::newRow("button over the right edge, shown disabled") << true;
    }

    void menuOpensBelowRightAlignedOnScreen()
    {
        QFETCH(bool, atRightEdge);
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        QWidget window;
        QMenu* menu = makePresets(&window);
        auto* picker = new ValuePicker(menu, &window);
        picker->setText(QStringLiteral("Presets"));
        picker->setButtonEnabled(!atRightEdge);
        // The style reads the state through the property system.
        QCOMPARE(picker->property("buttonEnabled").toBool(), !atRightEdge);
        window.resize(picker->sizeHint());
        // At the edge the window hangs over the screen's right edge by half the button.
        window.move(atRightEdge ? screen.right() + 1 - picker->sizeHint().width() / 2 : screen.left() + 300,
                    screen.top() + 50);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));

        const QRect shown = openMenu(*picker, *menu);

        const QRect button(picker->mapToGlobal(QPoint(0, 0)), picker->size());
        QCOMPARE(shown.size(), menu->sizeHint());
        QCOMPARE(shown.top(), button.bottom() + 1);
        QCOMPARE(shown.right(), atRightEdge ? screen.right() : button.right());
        QVERIFY(screen.contains(shown));
    }
};

QTEST_MAIN(tst_ValuePicker)
#include "tst_ValuePicker.moc"
