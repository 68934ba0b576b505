#include <MarlixLibQt/styles/MarlixOriginalStyle.h>
#include <MarlixLibQt/styles/MarlixStyle.h>
#include <MarlixLibQt/widgets/color/ColorSlider.h>
#include <MarlixLibQt/widgets/editors/ValuePicker.h>
#include <MarlixLibQt/widgets/frame/Collapsible.h>

#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QSpinBox>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTest>
#include <QToolButton>
#include <QToolTip>
#include <QTreeWidget>

#include <memory>

using Marlix::MarlixOriginalStyle;
using Marlix::MarlixStyle;
using Marlix::Widgets::Collapsible;

namespace {

std::unique_ptr<QStyle> makeStyle(const QString& name)
{
    if (name == QLatin1String("MarlixOriginalStyle"))
        return std::make_unique<MarlixOriginalStyle>();
    return std::make_unique<MarlixStyle>(QStyleFactory::create(QStringLiteral("fusion")));
}

QImage blankImage(const QSize& size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

QImage drawPrimitive(
    const QStyle& style, QStyle::PrimitiveElement element, const QStyleOption& option, const QWidget* widget)
{
    QImage image = blankImage(option.rect.size());
    QPainter painter(&image);
    style.drawPrimitive(element, &option, &painter, widget);
    return image;
}

bool isBlank(const QImage& image)
{
    return image == blankImage(image.size());
}

QImage grabbed(QWidget& widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

int distance(QRgb a, QRgb b)
{
    return std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) + std::abs(qBlue(a) - qBlue(b));
}

QLabel* visibleToolTipLabel()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->inherits("QTipLabel") && widget->isVisible())
            return qobject_cast<QLabel*>(widget);
    }
    return nullptr;
}

void showToolTip(const QString& text)
{
    QToolTip::showText(QPoint(100, 100), text);
    QTRY_VERIFY(visibleToolTipLabel());
}

const QString LONG_TOOLTIP
    = QStringLiteral("Moves every selected key by the same amount, so the shape between the keys is kept.");
const QString SHORT_TOOLTIP = QStringLiteral("Reset to default");

} // namespace

class tst_Style : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void propertySheetEditorsFitTheRow_data();
    void propertySheetEditorsFitTheRow();
    void colorSliderHandleIsCentredOnPosition();
    void toolTipWidth_data();
    void toolTipWidth();
    void flatButtonDrawsNoPanel_data();
    void flatButtonDrawsNoPanel();
    void disabledValuePickerPanelIsBaseStyleWithoutState();
    void readOnlyLineEditSitsOnTheWindow();
    void branchIndicator_data();
    void branchIndicator();
    void decorationSelectionFollowsProperty_data();
    void decorationSelectionFollowsProperty();
    void ellipsisElidesLabelText();
    void mnemonicProperty_data();
    void mnemonicProperty();
    void dragHoveredOutline_data();
    void dragHoveredOutline();
    void animationOverlayMarksControlledFields_data();
    void animationOverlayMarksControlledFields();
};

void tst_Style::flatButtonDrawsNoPanel_data()
{
    dragHoveredOutline_data();
}

void tst_Style::flatButtonDrawsNoPanel()
{
    QFETCH(QString, style);
    const auto s = makeStyle(style);
    QToolButton button;
    QStyleOptionToolButton option;
    option.initFrom(&button);
    option.rect = QRect(0, 0, 40, 24);
    for (const auto state : { QStyle::State_Raised, QStyle::State_Sunken, QStyle::State_MouseOver }) {
        option.state = QStyle::State_Enabled | state;
        button.setProperty("Zorva.FlatButton", QVariant());
        QVERIFY(!isBlank(drawPrimitive(*s, QStyle::PE_PanelButtonTool, option, &button)));
        button.setProperty("Zorva.FlatButton", true);
        QVERIFY(isBlank(drawPrimitive(*s, QStyle::PE_PanelButtonTool, option, &button)));
        button.setProperty("Zorva.FlatButton", false);
        QVERIFY(!isBlank(drawPrimitive(*s, QStyle::PE_PanelButtonTool, option, &button)));
    }
}

void tst_Style::disabledValuePickerPanelIsBaseStyleWithoutState()
{
    MarlixOriginalStyle style;
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("fusion")));
    Marlix::Widgets::ValuePicker picker(nullptr);
    picker.setEnabled(false);
    QStyleOptionToolButton option;
    option.initFrom(&picker);
    option.rect = QRect(0, 0, 40, 24);
    option.state = QStyle::State_Enabled | QStyle::State_Sunken | QStyle::State_Raised;

    QStyleOptionToolButton cleared = option;
    cleared.state = QStyle::State_Raised;
    const QImage expected = drawPrimitive(*fusion, QStyle::PE_PanelButtonTool, cleared, &picker);
    QCOMPARE(drawPrimitive(style, QStyle::PE_PanelButtonTool, option, &picker), expected);
}

void tst_Style::branchIndicator_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<QVariant>("property");
    QTest::addColumn<bool>("leafDrawn");
    QTest::addColumn<bool>("parentDrawn");

    for (const char* style : { "MarlixStyle", "MarlixOriginalStyle" }) {
        const QString s = QString::fromLatin1(style);
        QTest::addRow("%s, hidden", style) << s << QVariant(false) << false << false;
        QTest::addRow("%s, absent", style) << s << QVariant() << false << true;
        QTest::addRow("%s, shown", style) << s << QVariant(true) << true << true;
    }
}

void tst_Style::branchIndicator()
{
    QFETCH(QString, style);
    QFETCH(QVariant, property);
    QFETCH(bool, leafDrawn);
    QFETCH(bool, parentDrawn);
    const auto s = makeStyle(style);
    QTreeView view;
    if (property.isValid())
        view.setProperty("Zorva.ShowBranches", property);
    QStyleOption option;
    option.initFrom(&view);
    option.rect = QRect(0, 0, 20, 20);
    option.state = QStyle::State_Enabled | QStyle::State_Item | QStyle::State_Sibling;
    QCOMPARE(!isBlank(drawPrimitive(*s, QStyle::PE_IndicatorBranch, option, &view)), leafDrawn);
    option.state = QStyle::State_Enabled | QStyle::State_Item | QStyle::State_Children;
    QCOMPARE(!isBlank(drawPrimitive(*s, QStyle::PE_IndicatorBranch, option, &view)), parentDrawn);
}

void tst_Style::decorationSelectionFollowsProperty_data()
{
    QTest::addColumn<bool>("showSelection");
    QTest::newRow("shown") << true;
    QTest::newRow("not shown") << false;
}

void tst_Style::decorationSelectionFollowsProperty()
{
    QFETCH(bool, showSelection);
    QApplication::setStyle(new MarlixOriginalStyle);
    QTreeWidget tree;
    tree.setHeaderHidden(true);
    tree.setProperty("Zorva.ShowSelection", showSelection);
    auto* parent = new QTreeWidgetItem(&tree, { QStringLiteral("Scene") });
    auto* child = new QTreeWidgetItem(parent, { QStringLiteral("Camera") });
    tree.expandAll();
    tree.resize(200, 120);
    tree.show();
    QVERIFY(QTest::qWaitForWindowExposed(&tree));
    tree.setCurrentItem(child);

    // The decoration of the selected row is the indentation left of its text.
    const QRect row = tree.visualItemRect(child);
    const QPoint inDecoration = tree.viewport()->mapTo(&tree, QPoint(tree.indentation() / 2, row.center().y()));
    const QRgb pixel = grabbed(tree).pixel(inDecoration);
    const QRgb highlight = tree.palette().color(QPalette::Active, QPalette::Highlight).rgb();
    QCOMPARE(distance(pixel, highlight) < 40, showSelection);
}

void tst_Style::ellipsisElidesLabelText()
{
    QApplication::setStyle(new MarlixOriginalStyle);
    const QString text = QStringLiteral("Unsupported property type: a long description of the missing editor");
    QLabel eliding(text);
    eliding.setProperty("Zorva.UseEllipsis", true);
    eliding.resize(120, 20);
    QLabel expected;
    expected.resize(120, 20);
    expected.setText(eliding.fontMetrics().elidedText(text, Qt::ElideRight, eliding.contentsRect().width()));
    QLabel clipped(text);
    clipped.resize(120, 20);

    QVERIFY(expected.text().endsWith(QChar(0x2026)));
    QCOMPARE(grabbed(eliding), grabbed(expected));
    QVERIFY(grabbed(clipped) != grabbed(expected));
    // Polishing lets a layout shrink the label below its text width.
    eliding.ensurePolished();
    QCOMPARE(eliding.minimumWidth(), 1);
}

void tst_Style::mnemonicProperty_data()
{
    QTest::addColumn<QVariant>("property");
    QTest::addColumn<QString>("sameAs");
    QTest::addColumn<QString>("differentFrom");

    QTest::newRow("hidden: the ampersand goes, no underline")
        << QVariant(false) << QStringLiteral("File") << QStringLiteral("&File");
    QTest::newRow("absent: drawn as it stands") << QVariant() << QStringLiteral("&File") << QStringLiteral("File");
}

void tst_Style::mnemonicProperty()
{
    QFETCH(QVariant, property);
    QFETCH(QString, sameAs);
    QFETCH(QString, differentFrom);
    QApplication::setStyle(new MarlixOriginalStyle);
    const auto render = [](const QString& text, const QVariant& mnemonic) {
        QLabel label(text);
        if (mnemonic.isValid())
            label.setProperty("Zorva.ShowMnemonic", mnemonic);
        label.resize(80, 20);
        return grabbed(label);
    };
    const QImage image = render(QStringLiteral("&File"), property);
    QCOMPARE(image, render(sameAs, QVariant()));
    QVERIFY(image != render(differentFrom, QVariant()));
}

void tst_Style::dragHoveredOutline_data()
{
    QTest::addColumn<QString>("style");
    QTest::newRow("MarlixStyle") << QStringLiteral("MarlixStyle");
    QTest::newRow("MarlixOriginalStyle") << QStringLiteral("MarlixOriginalStyle");
}

void tst_Style::dragHoveredOutline()
{
    QFETCH(QString, style);
    const auto s = makeStyle(style);
    QFrame frame;
    QStyleOptionFrame option;
    option.initFrom(&frame);
    option.rect = QRect(0, 0, 60, 30);
    option.lineWidth = 1;
    const QRgb highlight = option.palette.color(QPalette::Active, QPalette::Highlight).rgb();

    QVERIFY(distance(drawPrimitive(*s, QStyle::PE_Frame, option, &frame).pixel(0, 15), highlight) > 40);
    frame.setProperty("Zorva.DragHovered", true);
    const QImage hovered = drawPrimitive(*s, QStyle::PE_Frame, option, &frame);
    for (const QPoint p : { QPoint(0, 15), QPoint(59, 15), QPoint(30, 0), QPoint(30, 29) })
        QVERIFY2(
            distance(hovered.pixel(p), highlight) < 40, qPrintable(QStringLiteral("at %1,%2").arg(p.x()).arg(p.y())));
}

void tst_Style::animationOverlayMarksControlledFields_data()
{
    QTest::addColumn<QVariant>("state");
    QTest::addColumn<QColor>("marker"); // invalid: no marker

    QTest::newRow("no property") << QVariant() << QColor();
    QTest::newRow("overridden") << QVariant(unsigned(MarlixStyle::ControllerStateOverridden)) << QColor(0xe6a23c);
    QTest::newRow("overridden wins over controlled")
        << QVariant(unsigned(MarlixStyle::ControllerStateOverridden | MarlixStyle::ControllerStateControlled))
        << QColor(0xe6a23c);
    QTest::newRow("controlled") << QVariant(unsigned(MarlixStyle::ControllerStateControlled)) << QColor(0x3fb6a8);
    QTest::newRow("mixed") << QVariant(unsigned(MarlixStyle::ControllerStateMixed)) << QColor(0xc06bd0);
    QTest::newRow("unknown bit") << QVariant(0x100u) << QColor(0x9a9a9a);
}

void tst_Style::animationOverlayMarksControlledFields()
{
    QFETCH(QVariant, state);
    QFETCH(QColor, marker);
    QApplication::setStyle(new MarlixOriginalStyle);
    QWidget window;
    auto* edit = new QLineEdit(&window);
    auto* spin = new QSpinBox(&window);
    edit->setGeometry(0, 0, 100, 24);
    spin->setGeometry(0, 30, 100, 24);
    if (state.isValid()) {
        edit->setProperty("Zorva.PropertyControllerState", state);
        spin->setProperty("Zorva.PropertyControllerState", state);
    }
    window.resize(100, 60);
    const QImage image = grabbed(window);
    // The spin box's corner lies under its text field, which shows the marker of its spin box.
    const QPoint spinField = spin->findChild<QLineEdit*>()->mapTo(&window, QPoint(2, 2));
    for (const QPoint p : { QPoint(3, 3), spinField }) {
        const QRgb pixel = image.pixel(p);
        if (marker.isValid())
            QVERIFY2(distance(pixel, marker.rgb()) < 30, qPrintable(QColor(pixel).name()));
        else
            QVERIFY2(distance(pixel, 0x333333) < 30, qPrintable(QColor(pixel).name()));
    }
}

void tst_Style::readOnlyLineEditSitsOnTheWindow()
{
    MarlixOriginalStyle style;
    QLineEdit editable;
    QLineEdit readOnly;
    readOnly.setReadOnly(true);
    for (QLineEdit* edit : { &editable, &readOnly }) {
        edit->setStyle(&style);
        edit->setPalette(style.standardPalette());
        edit->resize(120, 24);
    }
    const QPoint inside(editable.width() - 8, editable.height() / 2);
    const QRgb window = readOnly.palette().color(QPalette::Window).rgb();
    QCOMPARE(QColor(grabbed(readOnly).pixel(inside)).rgb(), window);
    QVERIFY(distance(grabbed(editable).pixel(inside), window) > 10);
}

void tst_Style::propertySheetEditorsFitTheRow_data()
{
    QTest::addColumn<QString>("place");
    QTest::addColumn<bool>("fitsRow");

    QTest::newRow("editor in a section") << QStringLiteral("section") << true;
    QTest::newRow("editor in a nested section") << QStringLiteral("nested") << true;
    QTest::newRow("corner widget keeps its own height") << QStringLiteral("corner") << false;
    QTest::newRow("editor in a plain group box") << QStringLiteral("group box") << false;
    QTest::newRow("nested section itself") << QStringLiteral("nested section") << false;
    QTest::newRow("menu of a section") << QStringLiteral("menu") << false;
}

void tst_Style::propertySheetEditorsFitTheRow()
{
    QFETCH(QString, place);
    QFETCH(bool, fitsRow);

    MarlixOriginalStyle style;
    Collapsible section;
    QGroupBox plainGroup;
    auto* nested = new Collapsible(&section);
    QFont large = section.font();
    large.setPixelSize(24);
    const auto makeSpin = [&](QWidget* parent) {
        auto* spin = new QSpinBox(parent);
        spin->setStyle(&style);
        spin->setFont(large);
        return spin;
    };
    QWidget* widget = nullptr;
    if (place == QLatin1String("section"))
        widget = makeSpin(&section);
    else if (place == QLatin1String("nested"))
        widget = makeSpin(nested);
    else if (place == QLatin1String("group box"))
        widget = makeSpin(&plainGroup);
    else if (place == QLatin1String("nested section"))
        widget = nested;
    else if (place == QLatin1String("menu"))
        widget = new QMenu(&section);
    else {
        widget = makeSpin(nullptr);
        section.setCornerWidget(widget);
    }

    QCOMPARE(MarlixStyle::isPropertySheetItem(widget), fitsRow);
    const int rowHeight
        = style.pixelMetric(QStyle::PixelMetric(MarlixStyle::PM_PropertySheetRowHeight), nullptr, widget);
    QCOMPARE(rowHeight, QFontMetrics(widget->font()).height() + 9);
    if (auto* spin = qobject_cast<QSpinBox*>(widget)) {
        QSpinBox reference;
        reference.setStyle(&style);
        reference.setFont(large);
        QCOMPARE(spin->sizeHint().width(), reference.sizeHint().width());
        QCOMPARE(spin->sizeHint().height(), fitsRow ? rowHeight - 2 : reference.sizeHint().height());
        QVERIFY(reference.sizeHint().height() != rowHeight - 2);
    }
}

void tst_Style::colorSliderHandleIsCentredOnPosition()
{
    MarlixOriginalStyle style;
    Marlix::Widgets::ColorSlider slider(
        Marlix::makeSharedPtr<Marlix::Widgets::VariableModel<float>>(0.25f), [](float) { return QColor(Qt::red); }, 200,
        false);
    QStyleOptionSlider option;
    option.rect = QRect(0, 0, 200, 24);
    option.orientation = Qt::Horizontal;
    option.minimum = 0;
    option.maximum = 200;
    option.sliderPosition = 50;
    option.subControls = QStyle::SC_SliderHandle;

    // A narrow handle over the full height, so the track's colours show beside it.
    const QRect handle = style.subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, &slider);
    QCOMPARE(handle.width(), 6);
    QCOMPARE(handle.height(), 24);
    QCOMPARE(handle.left() + handle.width() / 2, 50);
    QCOMPARE(style.hitTestComplexControl(QStyle::CC_Slider, &option, QPoint(50, 12), &slider), QStyle::SC_SliderHandle);
}

void tst_Style::toolTipWidth_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("wraps");

    QTest::newRow("original, long wraps at 300") << QStringLiteral("MarlixOriginalStyle") << LONG_TOOLTIP << true;
    QTest::newRow("original, short keeps its width") << QStringLiteral("MarlixOriginalStyle") << SHORT_TOOLTIP << false;
    QTest::newRow("plain, long is not limited") << QStringLiteral("MarlixStyle") << LONG_TOOLTIP << false;
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
    QCOMPARE(label->contentsMargins(), QMargins(frame + 1, frame, frame + 1, frame));
    if (wraps) {
        QCOMPARE(label->width(), 300);
        QVERIFY(label->wordWrap());
        QVERIFY(label->height() >= 2 * metrics.lineSpacing());
    } else {
        const int natural = metrics.horizontalAdvance(text) + 2 * (frame + 1);
        QVERIFY(label->width() >= natural && label->width() <= natural + 4);
        QVERIFY(label->height() < 2 * metrics.lineSpacing());
    }
    QToolTip::hideText();
}

QTEST_MAIN(tst_Style)
#include "tst_Style.moc"
