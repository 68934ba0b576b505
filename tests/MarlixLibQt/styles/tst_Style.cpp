#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/styles/MarlixOriginalStyle.h>
#include <MarlixLibQt/styles/MarlixStyle.h>

#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSpinBox>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTest>
#include <QToolTip>
#include <QTreeView>

#include <memory>

using Marlix::MarlixOriginalStyle;
using Marlix::MarlixStyle;

// Stand-ins with the class names that the style recognises through the meta-object system.
namespace Marlix::Widgets {

class ColorSlider : public QWidget
{
    Q_OBJECT
};

class GradientDisplay : public QWidget
{
    Q_OBJECT
};

class PropertyControllerPin : public QWidget
{
    Q_OBJECT
};

class Collapsible : public QGroupBox
{
    Q_OBJECT

public:
    using QGroupBox::QGroupBox;
    Q_INVOKABLE QWidget* cornerWidget() const { return corner; }
    QWidget* corner = nullptr;
};

} // namespace Marlix::Widgets

namespace {

std::unique_ptr<QStyle> makeStyle(const QString& name)
{
    if (name == QLatin1String("MarlixOriginalStyle"))
        return std::make_unique<MarlixOriginalStyle>();
    return std::make_unique<MarlixStyle>(QStyleFactory::create(QStringLiteral("fusion")));
}

QLabel* visibleToolTipLabel()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->inherits("QTipLabel") && widget->isVisible())
            return qobject_cast<QLabel*>(widget);
    }
    return nullptr;
}

const QString LONG_TOOLTIP
    = QStringLiteral("Moves every selected key by the same amount, so the shape between the keys is kept.");
const QString SHORT_TOOLTIP = QStringLiteral("Reset to default");

} // namespace

class tst_Style : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void styleHints_data();
    void styleHints();
    void customPixelMetrics_data();
    void customPixelMetrics();
    void rowHeightFollowsFont_data();
    void rowHeightFollowsFont();
    void toolTipFrameIsOneWiderThanBase_data();
    void toolTipFrameIsOneWiderThanBase();
    void sliderMetricsOfColourWidgets_data();
    void sliderMetricsOfColourWidgets();
    void colorSliderHandleIsCentredOnPosition();
    void originalPalette_data();
    void originalPalette();
    void plainStyleLeavesPaletteToBase();
    void showSelectionPropertyDecidesDecoration_data();
    void showSelectionPropertyDecidesDecoration();
    void toolTipWidth_data();
    void toolTipWidth();
    void unpolishRemovesToolTipSizing();
    void standardCursorStops();
    void propertySheetItems();
    void propertySheetEditorsFitTheRow();

private:
    void showToolTip(const QString& text);
};

void tst_Style::styleHints_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<int>("hint");
    QTest::addColumn<int>("expected");

    const struct
    {
        const char* name;
        unsigned int hint;
        int plain;
        int original;
    } rows[] = {
        { "unify label column width", MarlixStyle::SH_UnifyLabelColumnWidth, 1, 0 },
        { "property controller pin", MarlixStyle::SH_InstallPropertyControllerPin, 0, 0 },
        { "property controller handler", MarlixStyle::SH_InstallPropertyControllerHandler, 0, 1 },
        { "spin box dragging hint", MarlixStyle::SH_SpinBoxDraggingHint, 0, 1 },
        { "property sheet context menu", MarlixStyle::SH_PropertySheetContextMenu, 0, 1 },
        { "scrollable menus", QStyle::SH_Menu_Scrollable, 1, 1 },
    };
    for (const auto& row : rows) {
        QTest::addRow("MarlixStyle, %s", row.name) << QStringLiteral("MarlixStyle") << int(row.hint) << row.plain;
        QTest::addRow("MarlixOriginalStyle, %s", row.name)
            << QStringLiteral("MarlixOriginalStyle") << int(row.hint) << row.original;
    }
    QTest::newRow("MarlixOriginalStyle, combo box pops up a list")
        << QStringLiteral("MarlixOriginalStyle") << int(QStyle::SH_ComboBox_Popup) << 0;
}

void tst_Style::styleHints()
{
    QFETCH(QString, style);
    QFETCH(int, hint);
    QFETCH(int, expected);

    QCOMPARE(unsigned(hint) == MarlixStyle::SH_InstallPropertyControllerHandler, unsigned(hint) == 0xF0000003u);
    QCOMPARE(makeStyle(style)->styleHint(QStyle::StyleHint(hint), nullptr, nullptr, nullptr), expected);
}

void tst_Style::customPixelMetrics_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<int>("metric");
    QTest::addColumn<int>("expected");

    QTest::newRow("MarlixStyle, tooltip maximum width")
        << QStringLiteral("MarlixStyle") << int(MarlixStyle::PM_ToolTipMaximumWidth) << 0;
    QTest::newRow("MarlixOriginalStyle, tooltip maximum width")
        << QStringLiteral("MarlixOriginalStyle") << int(MarlixStyle::PM_ToolTipMaximumWidth) << 300;
    QTest::newRow("MarlixStyle, tooltip padding")
        << QStringLiteral("MarlixStyle") << int(MarlixStyle::PM_ToolTipPadding) << 1;
    QTest::newRow("MarlixOriginalStyle, tooltip padding")
        << QStringLiteral("MarlixOriginalStyle") << int(MarlixStyle::PM_ToolTipPadding) << 1;
    QTest::newRow("MarlixStyle, tooltip format columns")
        << QStringLiteral("MarlixStyle") << int(MarlixStyle::PM_ToolTipFormatColumns) << 40;
    QTest::newRow("MarlixOriginalStyle, tooltip format columns")
        << QStringLiteral("MarlixOriginalStyle") << int(MarlixStyle::PM_ToolTipFormatColumns) << 40;
    QTest::newRow("MarlixStyle, row height without option or widget")
        << QStringLiteral("MarlixStyle") << int(MarlixStyle::PM_PropertySheetRowHeight) << 0;
    QTest::newRow("MarlixOriginalStyle, row height without option or widget")
        << QStringLiteral("MarlixOriginalStyle") << int(MarlixStyle::PM_PropertySheetRowHeight) << 0;
}

void tst_Style::customPixelMetrics()
{
    QFETCH(QString, style);
    QFETCH(int, metric);
    QFETCH(int, expected);

    QCOMPARE(makeStyle(style)->pixelMetric(QStyle::PixelMetric(metric), nullptr, nullptr), expected);
}

void tst_Style::rowHeightFollowsFont_data()
{
    QTest::addColumn<QString>("style");
    QTest::newRow("MarlixStyle") << QStringLiteral("MarlixStyle");
    QTest::newRow("MarlixOriginalStyle") << QStringLiteral("MarlixOriginalStyle");
}

void tst_Style::rowHeightFollowsFont()
{
    QFETCH(QString, style);
    const auto s = makeStyle(style);
    const auto metric = QStyle::PixelMetric(MarlixStyle::PM_PropertySheetRowHeight);

    QWidget widget;
    QFont large = widget.font();
    large.setPixelSize(30);
    widget.setFont(large);
    QCOMPARE(s->pixelMetric(metric, nullptr, &widget), QFontMetrics(large).height() + 9);

    // The option's font wins over the widget's.
    QFont small = large;
    small.setPixelSize(11);
    QStyleOption option;
    option.fontMetrics = QFontMetrics(small);
    QCOMPARE(s->pixelMetric(metric, &option, &widget), QFontMetrics(small).height() + 9);
}

void tst_Style::toolTipFrameIsOneWiderThanBase_data()
{
    rowHeightFollowsFont_data();
}

void tst_Style::toolTipFrameIsOneWiderThanBase()
{
    QFETCH(QString, style);
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("fusion")));
    QCOMPARE(makeStyle(style)->pixelMetric(QStyle::PM_ToolTipLabelFrameWidth),
        fusion->pixelMetric(QStyle::PM_ToolTipLabelFrameWidth) + 1);
}

void tst_Style::sliderMetricsOfColourWidgets_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<QString>("widgetClass");
    QTest::addColumn<int>("metric");
    QTest::addColumn<int>("expected"); // -1: the base style's value

    for (const char* style : { "MarlixStyle", "MarlixOriginalStyle" }) {
        QTest::addRow("%s, colour slider length", style)
            << QString::fromLatin1(style) << QStringLiteral("ColorSlider") << int(QStyle::PM_SliderLength) << 6;
        QTest::addRow("%s, colour slider thickness", style)
            << QString::fromLatin1(style) << QStringLiteral("ColorSlider") << int(QStyle::PM_SliderThickness)
            << 16777215;
        QTest::addRow("%s, plain widget slider length", style)
            << QString::fromLatin1(style) << QStringLiteral("QWidget") << int(QStyle::PM_SliderLength) << -1;
    }
    QTest::newRow("MarlixStyle, gradient display thickness")
        << QStringLiteral("MarlixStyle") << QStringLiteral("GradientDisplay") << int(QStyle::PM_SliderThickness) << -1;
    QTest::newRow("MarlixOriginalStyle, gradient display thickness")
        << QStringLiteral("MarlixOriginalStyle") << QStringLiteral("GradientDisplay") << int(QStyle::PM_SliderThickness)
        << 40;
}

void tst_Style::sliderMetricsOfColourWidgets()
{
    QFETCH(QString, style);
    QFETCH(QString, widgetClass);
    QFETCH(int, metric);
    QFETCH(int, expected);

    std::unique_ptr<QWidget> widget;
    if (widgetClass == QLatin1String("ColorSlider"))
        widget = std::make_unique<Marlix::Widgets::ColorSlider>();
    else if (widgetClass == QLatin1String("GradientDisplay"))
        widget = std::make_unique<Marlix::Widgets::GradientDisplay>();
    else
        widget = std::make_unique<QWidget>();
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("fusion")));
    if (expected < 0)
        expected = fusion->pixelMetric(QStyle::PixelMetric(metric), nullptr, widget.get());
    QCOMPARE(makeStyle(style)->pixelMetric(QStyle::PixelMetric(metric), nullptr, widget.get()), expected);
}

void tst_Style::colorSliderHandleIsCentredOnPosition()
{
    MarlixOriginalStyle style;
    Marlix::Widgets::ColorSlider slider;
    QStyleOptionSlider option;
    option.rect = QRect(0, 0, 200, 24);
    option.orientation = Qt::Horizontal;
    option.minimum = 0;
    option.maximum = 200;
    option.sliderPosition = 50;
    option.subControls = QStyle::SC_SliderHandle;

    const QRect handle = style.subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, &slider);
    QCOMPARE(handle.width(), 6);
    QCOMPARE(handle.height(), 24);
    QCOMPARE(handle.left() + handle.width() / 2, 50);
    QCOMPARE(style.hitTestComplexControl(QStyle::CC_Slider, &option, QPoint(50, 12), &slider), QStyle::SC_SliderHandle);
}

void tst_Style::originalPalette_data()
{
    QTest::addColumn<int>("group");
    QTest::addColumn<int>("role");
    QTest::addColumn<QColor>("expected");

    const QColor window(0x44, 0x44, 0x44);
    const QColor text(0xC8, 0xC8, 0xC8);
    const QColor disabledText(0x6E, 0x6E, 0x6E);
    for (const auto group : { QPalette::Active, QPalette::Inactive }) {
        const char* g = group == QPalette::Active ? "active" : "inactive";
        QTest::addRow("%s window", g) << int(group) << int(QPalette::Window) << window;
        QTest::addRow("%s window text", g) << int(group) << int(QPalette::WindowText) << text;
        QTest::addRow("%s base", g) << int(group) << int(QPalette::Base) << window;
        QTest::addRow("%s text", g) << int(group) << int(QPalette::Text) << text;
        QTest::addRow("%s button", g) << int(group) << int(QPalette::Button) << window;
        QTest::addRow("%s button text", g) << int(group) << int(QPalette::ButtonText) << text;
        QTest::addRow("%s highlight", g) << int(group) << int(QPalette::Highlight) << QColor(0x4E, 0x7D, 0xBA);
        QTest::addRow("%s alternate base", g) << int(group) << int(QPalette::AlternateBase) << window.lighter(110);
    }
    QTest::newRow("disabled window") << int(QPalette::Disabled) << int(QPalette::Window) << window;
    QTest::newRow("disabled text") << int(QPalette::Disabled) << int(QPalette::Text) << disabledText;
    QTest::newRow("disabled button text") << int(QPalette::Disabled) << int(QPalette::ButtonText) << disabledText;
    QTest::newRow("disabled window text") << int(QPalette::Disabled) << int(QPalette::WindowText) << text;
}

void tst_Style::originalPalette()
{
    QFETCH(int, group);
    QFETCH(int, role);
    QFETCH(QColor, expected);

    MarlixOriginalStyle style;
    QPalette palette = style.standardPalette();
    style.polish(palette);
    QCOMPARE(palette.color(QPalette::ColorGroup(group), QPalette::ColorRole(role)), expected);
}

void tst_Style::plainStyleLeavesPaletteToBase()
{
    MarlixStyle style(QStyleFactory::create(QStringLiteral("fusion")));
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("fusion")));
    QPalette ours = fusion->standardPalette();
    QPalette theirs = ours;
    style.polish(ours);
    fusion->polish(theirs);
    QCOMPARE(ours, theirs);
}

void tst_Style::showSelectionPropertyDecidesDecoration_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<QVariant>("property");
    QTest::addColumn<int>("expected"); // -1: the base style's answer

    for (const char* style : { "MarlixStyle", "MarlixOriginalStyle" }) {
        QTest::addRow("%s, false", style) << QString::fromLatin1(style) << QVariant(false) << 0;
        QTest::addRow("%s, true", style) << QString::fromLatin1(style) << QVariant(true) << 1;
        QTest::addRow("%s, absent", style) << QString::fromLatin1(style) << QVariant() << -1;
    }
}

void tst_Style::showSelectionPropertyDecidesDecoration()
{
    QFETCH(QString, style);
    QFETCH(QVariant, property);
    QFETCH(int, expected);

    QTreeView view;
    if (property.isValid())
        view.setProperty("Zorva.ShowSelection", property);
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("fusion")));
    if (expected < 0)
        expected = fusion->styleHint(QStyle::SH_ItemView_ShowDecorationSelected, nullptr, &view);
    QCOMPARE(makeStyle(style)->styleHint(QStyle::SH_ItemView_ShowDecorationSelected, nullptr, &view), expected);
}

void tst_Style::showToolTip(const QString& text)
{
    QToolTip::showText(QPoint(100, 100), text);
    QTRY_VERIFY(visibleToolTipLabel());
}

void tst_Style::toolTipWidth_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("wraps");

    QTest::newRow("original, long wraps at 300") << QStringLiteral("MarlixOriginalStyle") << LONG_TOOLTIP << true;
    QTest::newRow("original, short keeps its width") << QStringLiteral("MarlixOriginalStyle") << SHORT_TOOLTIP << false;
    QTest::newRow("plain, long is not limited") << QStringLiteral("MarlixStyle") << LONG_TOOLTIP << false;
    QTest::newRow("plain, short keeps its width") << QStringLiteral("MarlixStyle") << SHORT_TOOLTIP << false;
}

void tst_Style::toolTipWidth()
{
    QFETCH(QString, style);
    QFETCH(QString, text);
    QFETCH(bool, wraps);

    QApplication::setStyle(makeStyle(style).release());
    showToolTip(text);
    QLabel* label = visibleToolTipLabel();
    const QFontMetrics metrics(label->font());
    const int frame = QApplication::style()->pixelMetric(QStyle::PM_ToolTipLabelFrameWidth);
    const int horizontalMargins = 2 * (frame + 1);
    QCOMPARE(label->contentsMargins(), QMargins(frame + 1, frame, frame + 1, frame));
    if (wraps) {
        QCOMPARE(label->width(), 300);
        QVERIFY(label->wordWrap());
        QVERIFY(label->height() >= 2 * metrics.lineSpacing());
    } else {
        QVERIFY(label->width() >= metrics.horizontalAdvance(text) + horizontalMargins);
        QVERIFY(label->width() <= metrics.horizontalAdvance(text) + horizontalMargins + 4);
        QVERIFY(label->height() < 2 * metrics.lineSpacing());
    }
    QToolTip::hideText();
}

void tst_Style::unpolishRemovesToolTipSizing()
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("fusion")));
    MarlixOriginalStyle style;
    style.polish(qApp);
    showToolTip(LONG_TOOLTIP);
    QCOMPARE(visibleToolTipLabel()->width(), 300);
    QToolTip::hideText();
    QTRY_VERIFY(!visibleToolTipLabel());

    style.unpolish(qApp);
    showToolTip(LONG_TOOLTIP);
    QVERIFY(visibleToolTipLabel()->width() > 300);
    QToolTip::hideText();
    QTRY_VERIFY(!visibleToolTipLabel());
}

void tst_Style::standardCursorStops()
{
    for (const char* name : { "MarlixStyle", "MarlixOriginalStyle" }) {
        const auto style = makeStyle(QString::fromLatin1(name));
        const auto* marlix = static_cast<const MarlixStyle*>(style.get());
        try {
            marlix->standardCursor(Qt::ArrowCursor);
            QFAIL("standardCursor returned");
        } catch (const Marlix::StopException& e) {
            QCOMPARE(QString::fromStdString(e.getUnit()), QStringLiteral("styles/MarlixStyle"));
            QVERIFY(e.getLine() > 0);
        }
    }
}

void tst_Style::propertySheetItems()
{
    Marlix::Widgets::Collapsible section;
    auto* editor = new QLineEdit(&section);
    auto* nested = new Marlix::Widgets::Collapsible(&section);
    auto* menu = new QMenu(&section);
    auto* pin = new Marlix::Widgets::PropertyControllerPin;
    pin->setParent(&section);
    auto* corner = new QLabel(&section);
    section.corner = corner;
    QGroupBox plainGroup;
    auto* outside = new QLineEdit(&plainGroup);

    QVERIFY(MarlixStyle::isPropertySheetItem(editor));
    QVERIFY(MarlixStyle::isPropertySheetItem(new QLineEdit(nested)));
    QVERIFY(!MarlixStyle::isPropertySheetItem(nested));
    QVERIFY(!MarlixStyle::isPropertySheetItem(menu));
    QVERIFY(!MarlixStyle::isPropertySheetItem(pin));
    QVERIFY(!MarlixStyle::isPropertySheetItem(corner));
    QVERIFY(!MarlixStyle::isPropertySheetItem(outside));
    QVERIFY(!MarlixStyle::isPropertySheetItem(&section));
    QVERIFY(!MarlixStyle::isPropertySheetItem(nullptr));

    section.corner = nullptr;
    QVERIFY(MarlixStyle::isPropertySheetItem(corner));
}

void tst_Style::propertySheetEditorsFitTheRow()
{
    MarlixOriginalStyle style;
    Marlix::Widgets::Collapsible section;
    QGroupBox plainGroup;
    auto* inSheet = new QSpinBox(&section);
    auto* elsewhere = new QSpinBox(&plainGroup);
    QFont large = inSheet->font();
    large.setPixelSize(24);
    for (QSpinBox* spin : { inSheet, elsewhere }) {
        spin->setStyle(&style);
        spin->setFont(large);
    }
    const int rowHeight
        = style.pixelMetric(QStyle::PixelMetric(MarlixStyle::PM_PropertySheetRowHeight), nullptr, inSheet);
    QCOMPARE(rowHeight, QFontMetrics(large).height() + 9);
    QCOMPARE(inSheet->sizeHint().height(), rowHeight - 2);
    QVERIFY(elsewhere->sizeHint().height() != rowHeight - 2);
    QCOMPARE(inSheet->sizeHint().width(), elsewhere->sizeHint().width());
}

QTEST_MAIN(tst_Style)
#include "tst_Style.moc"
