#include "StudioPage.h"

#include <MarlixLibQt/Color.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/color/ColorEditButton.h>
#include <MarlixLibQt/widgets/color/ColorPickerDialog.h>
#include <MarlixLibQt/widgets/color/ColorPickerWidget.h>
#include <MarlixLibQt/widgets/color/GradientControl.h>
#include <MarlixLibQt/widgets/Model.h>

#include <MarlixLib/color/ColorGradient.h>

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace Studio {

namespace {

using Marlix::ColorGradient;
using Marlix::QColorExtended;
using Marlix::Rgb;
using Marlix::SharedPtr;
using Marlix::Widgets::Model;

/// The linear numbers the rest of the system receives for the shared colour.
class LinearColorLabel : public QLabel, public Marlix::Widgets::BaseWithModel
{
public:
    explicit LinearColorLabel(SharedPtr<Model<Rgb>> model)
        : model(std::move(model))
    {
        setTextInteractionFlags(Qt::TextSelectableByMouse);
        registerCallback(this->model->addCallback([this](Rgb) { notify(); }));
        notify();
    }

    void notify() override
    {
        const Rgb c = model->get();
        setText(QObject::tr("%L1, %L2, %L3, alpha %L4")
                    .arg(c.r, 0, 'f', 4)
                    .arg(c.g, 0, 'f', 4)
                    .arg(c.b, 0, 'f', 4)
                    .arg(c.a, 0, 'f', 3));
    }

private:
    SharedPtr<Model<Rgb>> model;
};

/// The stops of the gradient, position and linear colour, one line each.
class GradientStopsLabel : public QLabel, public Marlix::Widgets::BaseWithModel
{
public:
    explicit GradientStopsLabel(SharedPtr<Model<ColorGradient>> model)
        : model(std::move(model))
    {
        setAlignment(Qt::AlignLeft | Qt::AlignTop);
        registerCallback(this->model->addCallback([this](ColorGradient) { notify(); }));
        notify();
    }

    void notify() override
    {
        QStringList lines;
        const ColorGradient gradient = model->get();
        for (const ColorGradient::Stop& stop : gradient.getStops())
            lines << QObject::tr("%L1   (%L2, %L3, %L4, %L5)")
                         .arg(stop.position, 0, 'f', 3)
                         .arg(stop.color.r, 0, 'f', 3)
                         .arg(stop.color.g, 0, 'f', 3)
                         .arg(stop.color.b, 0, 'f', 3)
                         .arg(stop.color.a, 0, 'f', 2);
        setText(lines.isEmpty() ? QObject::tr("(no stops: the gradient is black)") : lines.join(QLatin1Char('\n')));
    }

private:
    SharedPtr<Model<ColorGradient>> model;
};

QGroupBox* pickerBox(const SharedPtr<Model<QColorExtended>>& color)
{
    auto* box = new QGroupBox(QObject::tr("ColorPickerWidget on one shared Model<QColorExtended>"));
    auto* layout = new QVBoxLayout(box);
    auto* picker = new Marlix::Widgets::ColorPickerWidget(
        Marlix::Widgets::ColorFormat::Rgba, color, Marlix::Widgets::ColorPickerDialog::getGlobalValueTypeModel());
    picker->setCurrentPanel(Marlix::Widgets::ColorPickerWidget::Panel::Hwb);
    layout->addWidget(picker);
    layout->addStretch(1);
    return box;
}

QGroupBox* otherViewsBox(const SharedPtr<Model<QColorExtended>>& color)
{
    // The system's view of the same colour: linear RGBA, with the conversions of the colour dialog.
    const auto linear = Marlix::makeSharedPtr<Marlix::Widgets::LambdaModel<Rgb>>(
        color, [color] { return Marlix::toRgb(color->get(), true); },
        [color](Rgb value) { color->set(Marlix::fromRgb(value, true)); });

    auto* box = new QGroupBox(QObject::tr("The same colour, seen as the system's Model<Rgb>"));
    auto* form = new QFormLayout(box);
    auto* button = new Marlix::Widgets::ColorEditButton(linear, Marlix::Widgets::ColorFormat::Rgba);
    button->setDialogTitle(QObject::tr("Shared Colour"));
    form->addRow(QObject::tr("ColorEditButton (click: dialog)"), button);
    form->addRow(QObject::tr("Linear values"), new LinearColorLabel(linear));
    auto* note = new QLabel(QObject::tr("Every view observes the one model: move a slider, type a hex value or pick "
                                        "with the dialog, and all of them follow. Cancel in the dialog changes "
                                        "nothing."));
    note->setWordWrap(true);
    form->addRow(note);
    return box;
}

QGroupBox* gradientBox()
{
    const auto gradient = Marlix::makeSharedPtr<Marlix::Widgets::VariableModel<ColorGradient>>(ColorGradient({
        { Rgb { 0.02f, 0.0f, 0.12f, 1.0f }, 0.0f },
        { Rgb { 0.8f, 0.05f, 0.02f, 1.0f }, 0.35f },
        { Rgb { 1.0f, 0.6f, 0.05f, 1.0f }, 0.7f },
        { Rgb { 1.0f, 1.0f, 0.9f, 1.0f }, 1.0f },
    }));
    auto* box = new QGroupBox(QObject::tr("GradientControl on a Model<ColorGradient>"));
    auto* layout = new QVBoxLayout(box);
    layout->addWidget(new Marlix::Widgets::GradientControl(gradient));
    auto* hint = new QLabel(QObject::tr("Drag a handle along the ramp; double-click the ramp to add a stop with the "
                                        "colour there; double-click a handle to recolour it; right-click a handle "
                                        "to remove it."));
    hint->setWordWrap(true);
    layout->addWidget(hint);
    layout->addWidget(new GradientStopsLabel(gradient));
    return box;
}

} // namespace

QWidget* createColourPage(QWidget* parent)
{
    auto* page = new QWidget(parent);
    const auto color = Marlix::makeSharedPtr<Marlix::Widgets::VariableModel<QColorExtended>>(
        QColorExtended(QColor::fromRgbF(0.9f, 0.45f, 0.1f, 0.8f)));

    auto* top = new QHBoxLayout;
    top->addWidget(pickerBox(color));
    auto* right = new QVBoxLayout;
    right->addWidget(otherViewsBox(color));
    right->addWidget(gradientBox());
    right->addStretch(1);
    top->addLayout(right, 1);

    auto* layout = new QVBoxLayout(page);
    layout->addLayout(top);
    layout->addStretch(1);
    return page;
}

} // namespace Studio
