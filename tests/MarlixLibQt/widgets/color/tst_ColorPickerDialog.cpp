#include <MarlixLibQt/widgets/color/ColorEditButton.h>
#include <MarlixLibQt/widgets/color/ColorPicker.h>
#include <MarlixLibQt/widgets/color/ColorPickerDialog.h>
#include <MarlixLibQt/widgets/color/ColorPickerWidget.h>
#include <MarlixLibQt/widgets/editors/ComboBox.h>
#include <MarlixLibQt/widgets/color/HexColorEditor.h>

#include "MarlixLibQt/widgets/RecordingModel.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

#include <cmath>
#include <functional>
#include <limits>

using namespace Marlix;
using namespace Marlix::Widgets;
using Marlix::Widgets::Testing::RecordingModel;

namespace {

// The value the dialog hands out for an 8-bit channel k: k / 255 linearised with the plain 2.2 power.
float linearOfByte(int k)
{
    return std::pow(static_cast<float>(k) * 0.003921569f, 2.2f);
}

bool near(float a, float b, float epsilon = 1e-5f)
{
    return std::abs(a - b) < epsilon;
}

/// Runs `answer` on the next visible colour dialog from inside its event loop.
void answerNextDialog(std::function<void(ColorPickerDialog&)> answer)
{
    QTimer::singleShot(0, [answer = std::move(answer)] {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (auto* dialog = qobject_cast<ColorPickerDialog*>(widget); dialog && dialog->isVisible()) {
                answer(*dialog);
                return;
            }
    });
}

void clickButton(QDialogButtonBox* box, QDialogButtonBox::StandardButton which)
{
    QPushButton* button = box->button(which);
    QTest::mouseClick(button, Qt::LeftButton, {}, button->rect().center());
}

/// Clicks the slider of one component row at the fraction `t` of its width.
template <class Component>
void clickRow(ColorPickerWidget& widget, ColorPickerWidget::Panel panel, Component component, double t)
{
    widget.setCurrentPanel(panel);
    auto* picker = dynamic_cast<ColorPicker<Component, static_cast<int>(ColorPickerTable<Component>::ROWS.size())>*>(
        widget.getPanel(panel));
    QVERIFY(picker);
    ColorSlider* slider = picker->getRow(component)->getSlider();
    QTest::mouseClick(
        slider, Qt::LeftButton, {}, QPoint(static_cast<int>(std::lround(t * slider->width())), slider->height() / 2));
}
} // namespace

class TestColorPickerDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void panelsShareOneColour();
    void switchingValueType();
    void valueConversions_data();
    void valueConversions();
    void originalColourRestored();
    void editButton_data();
    void editButton();
    void editButtonShowsCheckerboard();
};

void TestColorPickerDialog::init()
{
    // Each test starts from a value-type model of its own, so the process-wide one carries nothing over.
    ColorPickerDialog::setGlobalValueTypeModel(
        makeSharedPtr<VariableModel<long long>>(static_cast<long long>(ColorValueType::SrgbByte)));
}

void TestColorPickerDialog::panelsShareOneColour()
{
    ColorPickerDialog dialog;
    dialog.resize(dialog.sizeHint());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    ColorPickerWidget& widget = *dialog.getPickerWidget();
    dialog.setValue(Rgb { 0.0f, 0.0f, 0.0f, 1.0f });

    // Full red on the RGB panel: the HSV panel shows hue 0, full saturation and value.
    clickRow(widget, ColorPickerWidget::Panel::Rgb, QColorExtended::RgbComponent::Red, 1.0);
    QCOMPARE(widget.getColorModel()->get().red(), 255);
    auto* hsv = dynamic_cast<HsvColorPicker*>(widget.getPanel(ColorPickerWidget::Panel::Hsv));
    QVERIFY(hsv);
    QCOMPARE(hsv->getRow(QColorExtended::HsvComponent::Saturation)->getComponentModel()->get(), 1.0f);
    QCOMPARE(hsv->getRow(QColorExtended::HsvComponent::Value)->getComponentModel()->get(), 1.0f);

    // Half value on the HSV panel: every panel reads the darker red.
    clickRow(widget, ColorPickerWidget::Panel::Hsv, QColorExtended::HsvComponent::Value, 0.5);
    const QColorExtended color = widget.getColorModel()->get();
    QVERIFY(std::abs(color.getColor().valueF() - 0.5f) < 0.01f);
    auto* rgb = dynamic_cast<RgbColorPicker*>(widget.getPanel(ColorPickerWidget::Panel::Rgb));
    auto* cmyk = dynamic_cast<CmykColorPicker*>(widget.getPanel(ColorPickerWidget::Panel::Cmyk));
    QVERIFY(rgb && cmyk);
    QCOMPARE(rgb->getRow(QColorExtended::RgbComponent::Red)->getComponentModel()->get(), color.redF());
    QCOMPARE(rgb->getRow(QColorExtended::RgbComponent::Green)->getComponentModel()->get(), 0.0f);
    QVERIFY(cmyk->getRow(QColorExtended::CmykComponent::Key)->getComponentModel()->get() > 0.45f);
    QCOMPARE(widget.getHexEditor()->text(), color.getColor().name().mid(1).toUpper());
    QVERIFY(near(dialog.value().r, linearOfByte(color.red())));
}

void TestColorPickerDialog::switchingValueType()
{
    ColorPickerDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    dialog.setValue(Rgb { 0.2f, 0.2f, 0.2f, 1.0f });
    ColorPickerWidget& widget = *dialog.getPickerWidget();
    const QColor before = widget.getColorModel()->get();
    auto* rgb = dynamic_cast<RgbColorPicker*>(widget.getPanel(ColorPickerWidget::Panel::Rgb));
    ColorSliderRow* red = rgb->getRow(QColorExtended::RgbComponent::Red);
    QCOMPARE(red->getValueType(), ColorValueType::SrgbByte);
    QCOMPARE(red->getSpinBox()->value(), double(before.red()));

    // Four steps down the list: from "sRGB (0-255)" to "Linear (0-1)".
    ComboBox* box = widget.getValueTypeBox();
    box->setFocus();
    for (int i = 0; i < 4; ++i)
        QTest::keyClick(box, Qt::Key_Down);
    QCOMPARE(box->currentText(), QStringLiteral("Linear (0-1)"));
    QCOMPARE(ColorPickerDialog::getGlobalValueTypeModel()->get(), static_cast<long long>(ColorValueType::LinearUnit));
    QCOMPARE(red->getValueType(), ColorValueType::LinearUnit);
    QVERIFY(std::abs(red->getSpinBox()->value() - std::pow(before.redF(), 2.2)) < 1e-3);
    // Every panel follows, also those not shown.
    auto* hsv = dynamic_cast<HsvColorPicker*>(widget.getPanel(ColorPickerWidget::Panel::Hsv));
    QCOMPARE(hsv->getRow(QColorExtended::HsvComponent::Value)->getSpinBox()->maximum(), 1.0);
    QCOMPARE(widget.getColorModel()->get().getColor(), before);

    // A dialog opened later shows the same kind of numbers.
    ColorPickerDialog later;
    QCOMPARE(later.getPickerWidget()->getValueTypeBox()->currentText(), QStringLiteral("Linear (0-1)"));
}

void TestColorPickerDialog::valueConversions_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<Rgb>("input");
    QTest::addColumn<QColor>("shown");
    QTest::addColumn<Rgb>("output");
    // 0.5 ^ (1 / 2.2) = 0.7297 shows as 186, and 186 comes back as (186 / 255) ^ 2.2.
    const float back186 = linearOfByte(186);
    QTest::newRow("with alpha") << int(ColorFormat::Rgba) << Rgb { 0.5f, 0.0f, 1.0f, 0.25f } << QColor(186, 0, 255, 64)
                                << Rgb { back186, 0.0f, 1.0f, 64 * 0.003921569f };
    QTest::newRow("without alpha the colour is opaque") << int(ColorFormat::Rgb) << Rgb { 0.5f, 0.0f, 1.0f, 0.25f }
                                                        << QColor(186, 0, 255) << Rgb { back186, 0.0f, 1.0f, 1.0f };
    QTest::newRow("light above one is cut") << int(ColorFormat::Rgba) << Rgb { 4.0f, 1.0f, 0.0f, 1.0f }
                                            << QColor(255, 255, 0) << Rgb { 1.0f, 1.0f, 0.0f, 1.0f };
    QTest::newRow("transparent black") << int(ColorFormat::Rgba) << Rgb { 0.0f, 0.0f, 0.0f, 0.0f } << QColor(0, 0, 0, 0)
                                       << Rgb { 0.0f, 0.0f, 0.0f, 0.0f };
}

void TestColorPickerDialog::valueConversions()
{
    QFETCH(int, format);
    QFETCH(Rgb, input);
    QFETCH(QColor, shown);
    QFETCH(Rgb, output);
    ColorPickerDialog dialog(nullptr, static_cast<ColorFormat>(format));
    dialog.setValue(input);
    const QColor color = dialog.getPickerWidget()->getColorModel()->get();
    QCOMPARE(color.rgba(), shown.rgba());
    const Rgb value = dialog.value();
    QVERIFY2(near(value.r, output.r) && near(value.g, output.g) && near(value.b, output.b) && near(value.a, output.a),
        qPrintable(QString("(%1, %2, %3, %4)").arg(value.r).arg(value.g).arg(value.b).arg(value.a)));
    // A value that went through the dialog once comes back unchanged.
    dialog.setValue(value);
    QCOMPARE(dialog.value(), value);
}

void TestColorPickerDialog::originalColourRestored()
{
    ColorPickerWidget widget(ColorFormat::Rgb);
    widget.show();
    QVERIFY(QTest::qWaitForWindowExposed(&widget));
    widget.setValue(Rgb { 0.0f, 1.0f, 0.0f, 1.0f });
    clickRow(widget, ColorPickerWidget::Panel::Rgb, QColorExtended::RgbComponent::Blue, 1.0);
    QCOMPARE(widget.getColorModel()->get().getColor(), QColor(0, 255, 255));
    QWidget* comparison = widget.getComparison();
    // The right half is the new colour: clicking it changes nothing.
    QTest::mouseClick(comparison, Qt::LeftButton, {}, QPoint(comparison->width() * 3 / 4, comparison->height() / 2));
    QCOMPARE(widget.getColorModel()->get().getColor(), QColor(0, 255, 255));
    QTest::mouseClick(comparison, Qt::LeftButton, {}, QPoint(comparison->width() / 4, comparison->height() / 2));
    QCOMPARE(widget.getColorModel()->get().getColor(), QColor(0, 255, 0));
}

void TestColorPickerDialog::editButton_data()
{
    QTest::addColumn<bool>("ok");
    QTest::addColumn<int>("format");
    QTest::newRow("OK with alpha") << true << int(ColorFormat::Rgba);
    QTest::newRow("OK without alpha") << true << int(ColorFormat::Rgb);
    QTest::newRow("Cancel") << false << int(ColorFormat::Rgba);
}

void TestColorPickerDialog::editButton()
{
    QFETCH(bool, ok);
    QFETCH(int, format);
    const Rgb start { linearOfByte(51), 0.0f, 1.0f, 0.6f };
    const auto model = makeSharedPtr<RecordingModel<Rgb>>(start);
    ColorEditButton button(model, static_cast<ColorFormat>(format));
    button.show();
    QVERIFY(QTest::qWaitForWindowExposed(&button));
    Optional<Rgb> startShown;
    answerNextDialog([&](ColorPickerDialog& dialog) {
        startShown = dialog.value();
        clickRow(*dialog.getPickerWidget(), ColorPickerWidget::Panel::Rgb, QColorExtended::RgbComponent::Green, 1.0);
        clickButton(dialog.getButtonBox(), ok ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel);
    });
    QTest::mouseClick(&button, Qt::LeftButton, {}, button.rect().center());
    QVERIFY(startShown);
    const bool alpha = format == int(ColorFormat::Rgba);
    QVERIFY(near(startShown->r, start.r, 1e-4f));
    QVERIFY(near(startShown->a, alpha ? 153 * 0.003921569f : 1.0f));
    if (!ok) {
        QCOMPARE(model->sets, 0);
        QCOMPARE(model->get(), start);
        return;
    }
    QCOMPARE(model->sets, 1);
    const Rgb written = model->get();
    QVERIFY(near(written.r, start.r, 1e-4f));
    QVERIFY(near(written.g, 1.0f));
    QVERIFY(near(written.b, 1.0f));
    QVERIFY(near(written.a, alpha ? 153 * 0.003921569f : 1.0f));
}

void TestColorPickerDialog::editButtonShowsCheckerboard()
{
    const auto model = makeSharedPtr<VariableModel<Rgb>>(Rgb { 1.0f, 1.0f, 1.0f, 0.0f });
    ColorEditButton button(model, ColorFormat::Rgba);
    button.resize(button.sizeHint());
    const QPoint centre = button.rect().center();
    // Two pixels four apart lie on different squares of the checkerboard.
    const auto differs = [&] {
        const QImage image = button.grab().toImage();
        return image.pixel(centre) != image.pixel(centre + QPoint(4, 0));
    };
    QVERIFY(differs());
    model->set(Rgb { 1.0f, 1.0f, 1.0f, 1.0f });
    QVERIFY(!differs());
    QCOMPARE(button.getShownColor(), QColor(Qt::white));
    // Without alpha the same colour is shown opaque.
    ColorEditButton opaque(makeSharedPtr<VariableModel<Rgb>>(Rgb { 1.0f, 0.0f, 0.0f, 0.0f }), ColorFormat::Rgb);
    QCOMPARE(opaque.getShownColor(), QColor(Qt::red));
    // A property read from a file may hold anything: the swatch still paints, in a defined colour.
    model->set(Rgb { std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 0.0f,
        std::numeric_limits<float>::quiet_NaN() });
    QCOMPARE(button.grab().toImage().pixel(centre), qRgb(0, 255, 0));
}

QTEST_MAIN(TestColorPickerDialog)
#include "tst_ColorPickerDialog.moc"
