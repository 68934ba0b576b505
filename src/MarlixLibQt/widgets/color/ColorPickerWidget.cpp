#include <MarlixLibQt/widgets/color/ColorPickerWidget.h>

#include <MarlixLibQt/Icons.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/color/AlbedoColorPicker.h>
#include <MarlixLibQt/widgets/color/ColorPicker.h>
#include <MarlixLibQt/widgets/editors/ComboBox.h>
#include <MarlixLibQt/widgets/color/HexColorEditor.h>
#include <MarlixLibQt/widgets/color/HwbColorPicker.h>
#include <MarlixLibQt/widgets/color/ScreenColorPicker.h>
#include <MarlixLibQt/widgets/color/TemperatureColorPicker.h>

#include <MarlixLib/base/Exception.h>

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QTabWidget>
#include <QVBoxLayout>

namespace Marlix::Widgets {

namespace {
constexpr double COMPARISON_WIDTH = 96.0;
constexpr double COMPARISON_HEIGHT = 24.0;
constexpr const char* COMPARISON_TOOL_TIP = QT_TRANSLATE_NOOP(
    "Marlix::Widgets::ColorPickerWidget", "Left: the original color, click it to go back to it. Right: the new color.");

/// The original colour on the left half and the current one on the right half; a click on the left half restores
/// the original. The picker repaints it on every colour change.
class ColorComparison final : public QWidget
{
public:
    ColorComparison(ColorPickerWidget& picker, QWidget* parent)
        : QWidget(parent)
        , picker(picker)
    {
        setToolTip(ColorPickerWidget::tr(COMPARISON_TOOL_TIP));
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }

    QSize sizeHint() const override
    {
        return QSize(
            getDeviceIndependentPixels(COMPARISON_WIDTH, this), getDeviceIndependentPixels(COMPARISON_HEIGHT, this));
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const QRect all = rect();
        const QRect left(all.left(), all.top(), all.width() / 2, all.height());
        const QRect right(left.right() + 1, all.top(), all.right() - left.right(), all.height());
        const QColor oldColor = picker.getOriginalColor();
        const QColor newColor = picker.getColorModel()->get();
        if (oldColor.alpha() < 255 || newColor.alpha() < 255)
            painter.fillRect(all, checkerboardBrush4X4());
        painter.fillRect(left, oldColor);
        painter.fillRect(right, newColor);
        // The frame filled inside the widget, so that it covers whole device pixels on a scaled screen too.
        QPainterPath frame;
        frame.addRect(QRectF(all));
        frame.addRect(QRectF(all).adjusted(1.0, 1.0, -1.0, -1.0));
        painter.fillPath(frame, palette().color(QPalette::Mid));
    }

    void mousePressEvent(QMouseEvent* event) override
    {
        if (event->button() == Qt::LeftButton && event->position().x() < width() / 2.0)
            picker.revertToOriginal();
        event->accept();
    }

private:
    ColorPickerWidget& picker;
};

SharedPtr<Model<ArrayView<const String>>> makeValueTypeLabels()
{
    Array<String> labels;
    for (const char* text : COLOR_VALUE_TYPE_TEXTS)
        labels.emplace_back(fromQt(QCoreApplication::translate("Marlix::Color", text)));
    return makeSharedPtr<ListViewModel<String>>(std::move(labels));
}
} // namespace

ColorPickerWidget::ColorPickerWidget(ColorFormat format, SharedPtr<Model<QColorExtended>> colorModel,
    SharedPtr<Model<long long>> valueTypeModel, QWidget* parent)
    : Container(parent)
    , format(format)
    , color(std::move(colorModel))
    , valueType(std::move(valueTypeModel))
    , sampleMode(makeSharedPtr<VariableModel<long long>>(0))
{
    if (!color || !valueType || (format != ColorFormat::Rgb && format != ColorFormat::Rgba))
        Marlix::Detail::throwStopException("widgets/ColorPickerWidget", __LINE__);
    original = color->get();
    build();
    registerCallback(color->addCallback([this](QColorExtended) { notify(); }));
    notify();
}

ColorPickerWidget::ColorPickerWidget(ColorFormat format, QWidget* parent)
    : ColorPickerWidget(format, makeSharedPtr<VariableModel<QColorExtended>>(QColorExtended(QColor(Qt::white))),
        makeSharedPtr<VariableModel<long long>>(static_cast<long long>(ColorValueType::SrgbByte)), parent)
{
}

ColorPickerWidget::~ColorPickerWidget() = default;

void ColorPickerWidget::build()
{
    tabs = new QTabWidget(this);
    tabs->setDocumentMode(true);
    // Every panel stays reachable: the picker is made wide enough for all tabs rather than scrolling them.
    tabs->setUsesScrollButtons(false);
    const auto add = [this](Panel panel, QWidget* widget) {
        panels[static_cast<std::size_t>(panel)] = widget;
        auto* page = new QWidget;
        auto* pageLayout = new QVBoxLayout(page);
        pageLayout->setContentsMargins(0, pageLayout->spacing(), 0, 0);
        // Slider panels keep their own height at the top of the page instead of stretching to the tallest panel.
        const bool fills = panel == Panel::Hwb;
        pageLayout->addWidget(widget, fills ? 1 : 0);
        if (!fills)
            pageLayout->addStretch(1);
        pages[static_cast<std::size_t>(panel)] = page;
        tabs->addTab(page, tr(PANEL_TEXTS[static_cast<std::size_t>(panel)]));
    };
    add(Panel::Rgb, new RgbColorPicker(color, valueType));
    if (hasAlpha())
        add(Panel::Rgba, new RgbaColorPicker(color, valueType));
    add(Panel::Hsv, new HsvColorPicker(color, valueType));
    add(Panel::Hwb, new HwbColorPicker(color));
    add(Panel::Cmyk, new CmykColorPicker(color, valueType));
    add(Panel::Temperature, new TemperatureColorPicker(color));
    add(Panel::Albedo, new AlbedoColorPicker(color));

    // The selector works on the value type through the integer model of drop-downs.
    const auto index = makeSharedPtr<LambdaModel<std::int64_t>>(
        valueType, [model = valueType.get()] { return static_cast<std::int64_t>(model->get()); },
        [model = valueType.get()](std::int64_t value) { model->set(static_cast<long long>(value)); });
    valueTypeBox = new ComboBox(makeValueTypeLabels(), index, nullptr, 0, this);
    valueTypeBox->setObjectName(QStringLiteral("ValueType"));
    valueTypeBox->setToolTip(QCoreApplication::translate("Marlix::Color", COLOR_VALUE_TYPE_TOOL_TIP));
    auto* valueTypeLabel = new QLabel(tr(VALUE_TYPE_LABEL), this);
    valueTypeLabel->setBuddy(valueTypeBox);
    valueTypeLabel->setToolTip(valueTypeBox->toolTip());

    hexEditor = new HexColorEditor(color, this);
    screenPicker = new ScreenColorPicker(color, sampleMode, this);
    comparison = new ColorComparison(*this, this);

    auto* valueRow = new QHBoxLayout;
    valueRow->addWidget(valueTypeLabel);
    valueRow->addWidget(valueTypeBox, 1);

    auto* colorRow = new QHBoxLayout;
    // The hex field shares the spare width: at its minimum of eight average characters six digits can be clipped.
    colorRow->addWidget(comparison, 2);
    colorRow->addWidget(hexEditor, 1);
    colorRow->addWidget(screenPicker);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs, 1);
    layout->addLayout(valueRow);
    layout->addLayout(colorRow);
}

Rgb ColorPickerWidget::value() const
{
    return toRgb(color->get(), hasAlpha());
}

void ColorPickerWidget::setValue(const Rgb& rgb)
{
    original = fromRgb(rgb, hasAlpha());
    color->set(original);
}

void ColorPickerWidget::revertToOriginal()
{
    color->set(original);
}

ColorPickerWidget::Panel ColorPickerWidget::getCurrentPanel() const
{
    QWidget* current = tabs->currentWidget();
    for (std::size_t i = 0; i < pages.size(); ++i)
        if (pages[i] && pages[i] == current)
            return static_cast<Panel>(i);
    Marlix::Detail::throwStopException("widgets/ColorPickerWidget", __LINE__);
}

void ColorPickerWidget::setCurrentPanel(Panel panel)
{
    const auto index = static_cast<std::size_t>(panel);
    if (index >= panels.size())
        Marlix::Detail::throwStopException("widgets/ColorPickerWidget", __LINE__);
    if (QWidget* page = pages[index])
        tabs->setCurrentWidget(page);
}

void ColorPickerWidget::notify()
{
    comparison->update();
}

} // namespace Marlix::Widgets
