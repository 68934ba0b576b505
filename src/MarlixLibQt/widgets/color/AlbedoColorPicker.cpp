#include <MarlixLibQt/widgets/color/AlbedoColorPicker.h>

#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/color/ColorSliderRow.h>

#include <MarlixLib/base/Exception.h>

#include <QVBoxLayout>

#include <utility>

namespace Marlix::Widgets {

AlbedoColorPicker::AlbedoColorPicker(SharedPtr<Model<QColorExtended>> color, QWidget* parent)
    : QFrame(parent)
    , color(std::move(color))
{
    if (!this->color)
        Marlix::Detail::throwStopException("widgets/AlbedoColorPicker", __LINE__);
    Model<QColorExtended>* source = this->color.get();
    auto component = makeSharedPtr<LambdaModel<float>>(
        this->color, [this] { return readAlbedo(); },
        [source](float albedo) {
            // The grey replaces the colour, not its transparency.
            const QColor grey = Marlix::albedoToColor(albedo);
            source->set(QColor::fromRgbF(grey.redF(), grey.greenF(), grey.blueF(), source->get().alphaF()));
        });
    // No value type: an albedo is a linear quantity of its own, shown as it is.
    row = new ColorSliderRow(std::move(component), nullptr, fromQt(tr(LABEL)), &Marlix::albedoToColor, 0.0f, 1.0f,
        ColorSliderRow::DEFAULT_SLIDER_WIDTH, false, SpinBox::StepType::Fixed, this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(row);
    readAlbedo();
}

AlbedoColorPicker::~AlbedoColorPicker()
{
    // The row's model reads this picker: the row goes while the picker is still whole, not after its members.
    delete std::exchange(row, nullptr);
}

float AlbedoColorPicker::readAlbedo()
{
    const float albedo = Marlix::colorToAlbedo(color->get());
    // The row reads the albedo while it is being built, before it can make a text.
    if (row)
        valueText = convertValueToText(albedo);
    return albedo;
}

QString AlbedoColorPicker::convertValueToText(float value) const
{
    return row->convertValueToText(value);
}

} // namespace Marlix::Widgets
