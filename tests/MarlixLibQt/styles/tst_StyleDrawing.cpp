#include <MarlixLibQt/styles/MarlixOriginalStyle.h>
#include <MarlixLibQt/styles/MarlixStyle.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QSpinBox>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

#include <memory>

using Marlix::MarlixOriginalStyle;
using Marlix::MarlixStyle;

// Stand-in with the class name that the style recognises through the meta-object system.
namespace Marlix::Widgets {

class ValuePicker : public QToolButton
{
    Q_OBJECT
};

} // namespace Marlix::Widgets

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

} // namespace

class tst_StyleDrawing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
    void spinBoxArrowsStepTheValue();
    void litSpinButtonStaysInsideTheRoundedField();
};

void tst_StyleDrawing::flatButtonDrawsNoPanel_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<int>("state");

    for (const char* style : { "MarlixStyle", "MarlixOriginalStyle" }) {
        QTest::addRow("%s, raised", style)
            << QString::fromLatin1(style) << int(QStyle::State_Enabled | QStyle::State_Raised);
        QTest::addRow("%s, sunken", style)
            << QString::fromLatin1(style) << int(QStyle::State_Enabled | QStyle::State_Sunken);
        QTest::addRow("%s, hovered", style)
            << QString::fromLatin1(style) << int(QStyle::State_Enabled | QStyle::State_MouseOver);
    }
}

void tst_StyleDrawing::flatButtonDrawsNoPanel()
{
    QFETCH(QString, style);
    QFETCH(int, state);
    const auto s = makeStyle(style);
    QToolButton button;
    QStyleOptionToolButton option;
    option.initFrom(&button);
    option.rect = QRect(0, 0, 40, 24);
    option.state = QStyle::State(state);

    QVERIFY(!isBlank(drawPrimitive(*s, QStyle::PE_PanelButtonTool, option, &button)));
    button.setProperty("Zorva.FlatButton", true);
    QVERIFY(isBlank(drawPrimitive(*s, QStyle::PE_PanelButtonTool, option, &button)));
    button.setProperty("Zorva.FlatButton", false);
    QVERIFY(!isBlank(drawPrimitive(*s, QStyle::PE_PanelButtonTool, option, &button)));
}

void tst_StyleDrawing::disabledValuePickerPanelIsBaseStyleWithoutState()
{
    MarlixOriginalStyle style;
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("fusion")));
    Marlix::Widgets::ValuePicker picker;
    picker.setEnabled(false);
    QStyleOptionToolButton option;
    option.initFrom(&picker);
    option.rect = QRect(0, 0, 40, 24);
    option.state = QStyle::State_Enabled | QStyle::State_Sunken | QStyle::State_Raised;

    QStyleOptionToolButton cleared = option;
    cleared.state = QStyle::State_Raised;
    const QImage expected = drawPrimitive(*fusion, QStyle::PE_PanelButtonTool, cleared, &picker);
    QCOMPARE(drawPrimitive(style, QStyle::PE_PanelButtonTool, option, &picker), expected);

    // An enabled picker is drawn in the style's own look.
    picker.setEnabled(true);
    QVERIFY(drawPrimitive(style, QStyle::PE_PanelButtonTool, option, &picker) != expected);
}

void tst_StyleDrawing::branchIndicator_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<QVariant>("property");
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("drawsSomething");

    const int withChildren = QStyle::State_Enabled | QStyle::State_Children | QStyle::State_Item;
    const int leaf = QStyle::State_Enabled | QStyle::State_Item | QStyle::State_Sibling;
    for (const char* style : { "MarlixStyle", "MarlixOriginalStyle" }) {
        const QString s = QString::fromLatin1(style);
        QTest::addRow("%s, hidden, children", style) << s << QVariant(false) << withChildren << false;
        QTest::addRow("%s, hidden, leaf", style) << s << QVariant(false) << leaf << false;
        QTest::addRow("%s, absent, children", style) << s << QVariant() << withChildren << true;
        QTest::addRow("%s, absent, leaf", style) << s << QVariant() << leaf << false;
        QTest::addRow("%s, shown, children", style) << s << QVariant(true) << withChildren << true;
        QTest::addRow("%s, shown, leaf", style) << s << QVariant(true) << leaf << true;
    }
}

void tst_StyleDrawing::branchIndicator()
{
    QFETCH(QString, style);
    QFETCH(QVariant, property);
    QFETCH(int, state);
    QFETCH(bool, drawsSomething);
    const auto s = makeStyle(style);
    QTreeView view;
    if (property.isValid())
        view.setProperty("Zorva.ShowBranches", property);
    QStyleOption option;
    option.initFrom(&view);
    option.rect = QRect(0, 0, 20, 20);
    option.state = QStyle::State(state);

    QCOMPARE(!isBlank(drawPrimitive(*s, QStyle::PE_IndicatorBranch, option, &view)), drawsSomething);
}

void tst_StyleDrawing::decorationSelectionFollowsProperty_data()
{
    QTest::addColumn<bool>("showSelection");
    QTest::newRow("shown") << true;
    QTest::newRow("not shown") << false;
}

void tst_StyleDrawing::decorationSelectionFollowsProperty()
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

void tst_StyleDrawing::ellipsisElidesLabelText()
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

void tst_StyleDrawing::mnemonicProperty_data()
{
    QTest::addColumn<QVariant>("property");
    QTest::addColumn<QString>("sameAs");
    QTest::addColumn<QString>("differentFrom");

    QTest::newRow("hidden: the ampersand goes, no underline")
        << QVariant(false) << QStringLiteral("File") << QStringLiteral("&File");
    QTest::newRow("absent: drawn as it stands") << QVariant() << QStringLiteral("&File") << QStringLiteral("File");
}

void tst_StyleDrawing::mnemonicProperty()
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
    // Shown mnemonics underline the letter: neither the plain word nor the ampersand text.
    const QImage shown = render(QStringLiteral("&File"), QVariant(true));
    QVERIFY(shown != render(QStringLiteral("File"), QVariant()));
    QVERIFY(shown != render(QStringLiteral("&File"), QVariant()));
}

void tst_StyleDrawing::dragHoveredOutline_data()
{
    QTest::addColumn<QString>("style");
    QTest::newRow("MarlixStyle") << QStringLiteral("MarlixStyle");
    QTest::newRow("MarlixOriginalStyle") << QStringLiteral("MarlixOriginalStyle");
}

void tst_StyleDrawing::dragHoveredOutline()
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

void tst_StyleDrawing::animationOverlayMarksControlledFields_data()
{
    QTest::addColumn<QVariant>("state");
    QTest::addColumn<QColor>("marker"); // invalid: no marker

    QTest::newRow("no property") << QVariant() << QColor();
    QTest::newRow("empty state") << QVariant(0u) << QColor();
    QTest::newRow("overridden") << QVariant(unsigned(MarlixStyle::ControllerStateOverridden)) << QColor(0xe6a23c);
    QTest::newRow("overridden wins over controlled")
        << QVariant(unsigned(MarlixStyle::ControllerStateOverridden | MarlixStyle::ControllerStateControlled))
        << QColor(0xe6a23c);
    QTest::newRow("controlled") << QVariant(unsigned(MarlixStyle::ControllerStateControlled)) << QColor(0x3fb6a8);
    QTest::newRow("mixed") << QVariant(unsigned(MarlixStyle::ControllerStateMixed)) << QColor(0xc06bd0);
    QTest::newRow("unknown bit") << QVariant(0x100u) << QColor(0x9a9a9a);
}

void tst_StyleDrawing::animationOverlayMarksControlledFields()
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

void tst_StyleDrawing::spinBoxArrowsStepTheValue()
{
    QApplication::setStyle(new MarlixOriginalStyle);
    QSpinBox spin;
    spin.setRange(0, 10);
    spin.setValue(5);
    spin.resize(spin.sizeHint());
    spin.show();
    QVERIFY(QTest::qWaitForWindowExposed(&spin));

    QStyleOptionSpinBox option;
    option.initFrom(&spin);
    option.rect = spin.rect();
    option.subControls = QStyle::SC_SpinBoxUp | QStyle::SC_SpinBoxDown | QStyle::SC_SpinBoxEditField;
    option.buttonSymbols = spin.buttonSymbols();
    option.frame = spin.hasFrame();
    const QRect up = spin.style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxUp, &spin);
    const QRect down = spin.style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxDown, &spin);
    const QRect field = spin.style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxEditField, &spin);
    QVERIFY(!up.intersects(down));
    QVERIFY(!field.intersects(up));
    QCOMPARE(spin.findChild<QLineEdit*>()->geometry(), field);

    QTest::mouseClick(&spin, Qt::LeftButton, {}, up.center());
    QCOMPARE(spin.value(), 6);
    QTest::mouseClick(&spin, Qt::LeftButton, {}, down.center());
    QTest::mouseClick(&spin, Qt::LeftButton, {}, down.center());
    QCOMPARE(spin.value(), 4);
}

void tst_StyleDrawing::litSpinButtonStaysInsideTheRoundedField()
{
    MarlixOriginalStyle style;
    QSpinBox spin;
    spin.setStyle(&style);
    QStyleOptionSpinBox option;
    option.initFrom(&spin);
    option.rect = QRect(0, 0, 80, 24);
    option.subControls = QStyle::SC_SpinBoxUp | QStyle::SC_SpinBoxDown | QStyle::SC_SpinBoxEditField;
    option.buttonSymbols = QAbstractSpinBox::UpDownArrows;
    option.stepEnabled = QAbstractSpinBox::StepUpEnabled | QAbstractSpinBox::StepDownEnabled;
    option.frame = false; // the outline would cover the corner on its own
    option.activeSubControls = QStyle::SC_SpinBoxUp;
    option.state |= QStyle::State_Enabled | QStyle::State_Sunken;
    QImage image(option.rect.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::red);
    {
        QPainter painter(&image);
        style.drawComplexControl(QStyle::CC_SpinBox, &option, &painter, &spin);
    }
    const QRect up = style.subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxUp, &spin);
    // The pressed button is lit, and its light ends at the field's rounded corner.
    QVERIFY(image.pixelColor(up.left() + 2, up.center().y()) != QColor::fromRgb(MarlixOriginalStyle::CONTROL_COLOR));
    const QColor corner = image.pixelColor(option.rect.topRight());
    QVERIFY2(corner.red() > corner.blue() && corner.red() > corner.green(), qPrintable(corner.name()));
}

QTEST_MAIN(tst_StyleDrawing)
void tst_StyleDrawing::readOnlyLineEditSitsOnTheWindow()
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

#include "tst_StyleDrawing.moc"
