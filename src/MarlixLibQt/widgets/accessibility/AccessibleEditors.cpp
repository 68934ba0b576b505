#include <MarlixLibQt/widgets/accessibility/AccessibleWidgetsPrivate.h>
#include <MarlixLibQt/widgets/color/ColorSlider.h>
#include <MarlixLibQt/widgets/color/ColorSliderRow.h>
#include <MarlixLibQt/widgets/color/HwbColorPicker.h>
#include <MarlixLibQt/widgets/editors/Slider.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>

#include <QLabel>

// The interfaces of the editors that draw themselves or compose other widgets: each says what it is (a spin box, a
// slider) and carries its value, so a screen reader reads and sets it like the standard control it stands for.
namespace Marlix::Widgets {

namespace {

/// One change bracket around the write, so a value set from outside is one undo step like one drag.
template <class T> void setAsGesture(Model<T>& model, T value)
{
    model.beginChange();
    model.set(std::move(value));
    model.commitChange();
}

class AccessibleSpinBox final : public AccessibleValueWidget
{
public:
    explicit AccessibleSpinBox(SpinBox* spinBox)
        : AccessibleValueWidget(spinBox, QAccessible::SpinBox)
    {
    }

    QString text(QAccessible::Text t) const override
    {
        // What the field shows, with its unit, is what is read, as in a standard spin box.
        return t == QAccessible::Value ? spinBox()->text() : AccessibleValueWidget::text(t);
    }

    AccessiblePartDescription describeValue() const override
    {
        QPointer<SpinBox> field = spinBox();
        AccessiblePartDescription value;
        value.value = [field] { return field ? field->value() : 0.0; };
        value.setValue = [field](double number) {
            if (!field || field->isReadOnly())
                return;
            const SharedPtr<Model<double>>& model = field->getModel();
            model->beginChange();
            field->setValue(number);
            model->commitChange();
        };
        value.minimum = spinBox()->minimum();
        value.maximum = spinBox()->maximum();
        value.step = spinBox()->singleStep();
        return value;
    }

private:
    SpinBox* spinBox() const { return static_cast<SpinBox*>(widget()); }
};

class AccessibleSlider final : public AccessibleValueWidget
{
public:
    explicit AccessibleSlider(Slider* slider)
        : AccessibleValueWidget(slider, QAccessible::Slider)
    {
    }

    AccessiblePartDescription describeValue() const override
    {
        QPointer<Slider> slider = static_cast<Slider*>(widget());
        const SliderConverter& converter = slider->getConversion();
        AccessiblePartDescription value;
        value.value = [slider] { return slider ? slider->getConversion().fromSlider(slider->getPosition()) : 0.0; };
        value.setValue = [slider](double number) {
            if (slider)
                setAsGesture(*slider->getModel(), number);
        };
        value.minimum = converter.fromSlider(0.0);
        value.maximum = converter.fromSlider(1.0);
        value.step = (value.maximum - value.minimum) / 100.0;
        return value;
    }
};

class AccessibleColorSlider final : public AccessibleValueWidget
{
public:
    explicit AccessibleColorSlider(ColorSlider* slider)
        : AccessibleValueWidget(slider, QAccessible::Slider)
    {
    }

    QString text(QAccessible::Text t) const override
    {
        if (t != QAccessible::Name)
            return AccessibleValueWidget::text(t);
        // The slider of a row is named by the row's label, which belongs to the row's field.
        QString name = AccessibleValueWidget::text(t);
        if (const auto* row = qobject_cast<const ColorSliderRow*>(widget()->parentWidget());
            name.isEmpty() && row && row->getLabel())
            name = row->getLabel()->text();
        return name;
    }

    AccessiblePartDescription describeValue() const override
    {
        QPointer<ColorSlider> slider = static_cast<ColorSlider*>(widget());
        AccessiblePartDescription value;
        value.value = [slider] { return slider ? double(slider->getModel()->get()) : 0.0; };
        value.setValue = [slider](double number) {
            if (slider)
                setAsGesture(*slider->getModel(), float(number));
        };
        value.step = 1.0 / 255.0;
        return value;
    }
};

/// The hue and blackness field: a slider over the hue (its horizontal axis) with one child per axis.
class AccessibleHueBlacknessPicker final : public AccessibleValueWidget
{
    Q_DECLARE_TR_FUNCTIONS(AccessibleHueBlacknessPicker)

public:
    explicit AccessibleHueBlacknessPicker(HueBlacknessPicker* picker)
        : AccessibleValueWidget(picker, QAccessible::Slider)
    {
    }

    QString text(QAccessible::Text t) const override
    {
        const QString own = AccessibleValueWidget::text(t);
        return t == QAccessible::Name && own.isEmpty() ? tr("Hue and blackness") : own;
    }

    AccessiblePartDescription describeValue() const override { return describePart(0); }
    int partCount() const override { return 2; }
    AccessiblePartDescription describePart(int index) const override
    {
        QPointer<HueBlacknessPicker> picker = static_cast<HueBlacknessPicker*>(widget());
        const bool hue = index == 0;
        AccessiblePartDescription part;
        part.role = QAccessible::Slider;
        part.name = hue ? tr("Hue") : tr("Blackness");
        part.rect = rect();
        part.value = [picker, hue] {
            if (!picker)
                return 0.0;
            const QPointF point = picker->getModel()->get();
            return hue ? point.x() : point.y();
        };
        part.setValue = [picker, hue](double number) {
            if (!picker)
                return;
            QPointF point = picker->getModel()->get();
            (hue ? point.rx() : point.ry()) = number;
            setAsGesture(*picker->getModel(), point);
        };
        return part;
    }
};

class AccessibleWhitenessPicker final : public AccessibleValueWidget
{
    Q_DECLARE_TR_FUNCTIONS(AccessibleWhitenessPicker)

public:
    explicit AccessibleWhitenessPicker(WhitenessPicker* picker)
        : AccessibleValueWidget(picker, QAccessible::Slider)
    {
    }

    QString text(QAccessible::Text t) const override
    {
        const QString own = AccessibleValueWidget::text(t);
        return t == QAccessible::Name && own.isEmpty() ? tr("Whiteness") : own;
    }

    AccessiblePartDescription describeValue() const override
    {
        QPointer<WhitenessPicker> picker = static_cast<WhitenessPicker*>(widget());
        AccessiblePartDescription value;
        value.value = [picker] { return picker ? double(picker->getModel()->get().whitenessF()) : 0.0; };
        value.setValue = [picker](double number) {
            if (!picker)
                return;
            const QColorExtended current = picker->getModel()->get();
            setAsGesture(*picker->getModel(),
                QColorExtended::fromHwbF(current.hueF(), float(number), current.blacknessF(), current.alphaF()));
        };
        return value;
    }
};

} // namespace

QAccessibleInterface* makeEditorAccessible(const QString& className, QObject* object)
{
    auto* widget = static_cast<QWidget*>(object);
    if (className == QLatin1String("Marlix::Widgets::SpinBox"))
        return new AccessibleSpinBox(static_cast<SpinBox*>(widget));
    if (className == QLatin1String("Marlix::Widgets::Slider"))
        return new AccessibleSlider(static_cast<Slider*>(widget));
    if (className == QLatin1String("Marlix::Widgets::ColorSlider"))
        return new AccessibleColorSlider(static_cast<ColorSlider*>(widget));
    if (className == QLatin1String("Marlix::Widgets::HueBlacknessPicker"))
        return new AccessibleHueBlacknessPicker(static_cast<HueBlacknessPicker*>(widget));
    if (className == QLatin1String("Marlix::Widgets::WhitenessPicker"))
        return new AccessibleWhitenessPicker(static_cast<WhitenessPicker*>(widget));
    // Drawings that show data: a screen reader says what they are instead of an empty client area.
    if (className == QLatin1String("Marlix::Widgets::Histogram")
        || className == QLatin1String("Marlix::Widgets::GradientDisplay"))
        return new AccessibleCompositeWidget(widget, QAccessible::Graphic);
    if (className == QLatin1String("Marlix::Widgets::Curves"))
        return makeCurvesAccessible(widget);
    if (className == QLatin1String("Marlix::Widgets::GraphView"))
        return makeGraphViewAccessible(widget);
    return nullptr;
}

} // namespace Marlix::Widgets
