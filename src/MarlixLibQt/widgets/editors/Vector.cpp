#include <MarlixLibQt/widgets/editors/Vector.h>

#include <MarlixLibQt/widgets/editors/Number.h>

#include <MarlixLib/base/Exception.h>

#include <QHBoxLayout>
#include <QLabel>

namespace Marlix::Widgets {

namespace {
// A semicolon, because a comma is the decimal separator of many locales.
constexpr QLatin1String TEXT_SEPARATOR("; ");
} // namespace

Vector::Vector(SharedPtr<Model<Array<double>>> model, const Array<double>& defaultValue, bool withSliders,
               const UserData& userData, const Array<QString>& labelTexts, LabelPosition labelPosition,
               QWidget* parent)
    : Container(parent)
    , CommonContextMenuOwner(this)
    , model(std::move(model))
    , componentCount(static_cast<int>(defaultValue.size()))
    , defaultValue(defaultValue)
{
    if (!this->model || defaultValue.empty())
        Marlix::Detail::throwStopException("widgets/Vector", __LINE__);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    const auto count = defaultValue.size();
    for (std::size_t i = 0; i < count; ++i) {
        const SharedPtr<Model<Array<double>>>& source = this->model;
        // Captures the model, not the widget: the adapter lives as long as its field, which Qt may delete later.
        auto component = makeSharedPtr<LambdaModel<double>>(
            source,
            [source = source.get(), i] {
                const Array<double> value = source->get();
                return i < value.size() ? value[i] : 0.0;
            },
            [source = source.get(), i, count](double componentValue) {
                Array<double> value = source->get();
                if (value.size() < count)
                    value.resize(count, 0.0);
                value[i] = componentValue;
                source->set(std::move(value));
            });
        auto* number = new Number(component, defaultValue[i], withSliders, userData, this);
        // The vector's menu applies to every field.
        number->setContextMenuPolicy(Qt::NoContextMenu);
        components.push_back(number);

        QLabel* label = nullptr;
        if (i < labelTexts.size() && !labelTexts[i].isEmpty()) {
            label = new QLabel(labelTexts[i], this);
            label->setBuddy(number->getSpinBox());
        }
        labels.push_back(label);
        if (label && labelPosition == LabelPosition::Left)
            layout->addWidget(label, 0);
        layout->addWidget(number, 1);
        if (label && labelPosition == LabelPosition::Right)
            layout->addWidget(label, 0);
    }
    if (!components.empty())
        setFocusProxy(components.front());

    // No callback of the vector's own: every field follows the array through its component adapter, so a change
    // refreshes each field once.

    setResetFunction([this] { this->model->set(this->defaultValue); });
    setIsDefaultFunction([this] { return this->model->get() == this->defaultValue; });
    setTextFunctions([this] { return toText(); }, [this](const QString& text) { return pasteComponents(text); });
    setEditableFunction([this] {
        return isEnabled() && !components.front()->getSpinBox()->isReadOnly();
    });
}

Vector::~Vector() = default;

Number* Vector::getComponent(int index) const
{
    if (index < 0 || index >= componentCount)
        Marlix::Detail::throwStopException("widgets/Vector", __LINE__);
    return components[static_cast<std::size_t>(index)];
}

QLabel* Vector::getLabel(int index) const
{
    if (index < 0 || index >= componentCount)
        Marlix::Detail::throwStopException("widgets/Vector", __LINE__);
    return labels[static_cast<std::size_t>(index)];
}

void Vector::setRange(const Array<double>& minimum, const Array<double>& maximum, float step, int decimals)
{
    if (minimum.size() != components.size() || maximum.size() != components.size())
        Marlix::Detail::throwStopException("widgets/Vector", __LINE__);
    for (std::size_t i = 0; i < components.size(); ++i)
        components[i]->setRange(minimum[i], maximum[i], step, decimals);
}

void Vector::setStepType(SpinBox::StepType type)
{
    for (Number* component : components)
        component->setStepType(type);
}

void Vector::setSuffix(const Array<QString>& suffixes)
{
    if (suffixes.size() != components.size())
        Marlix::Detail::throwStopException("widgets/Vector", __LINE__);
    for (std::size_t i = 0; i < components.size(); ++i)
        components[i]->setSuffix(suffixes[i]);
}

void Vector::setConversion(ModelValueConverter<double> converter)
{
    for (Number* component : components)
        component->setConversion(converter);
}

QString Vector::toText() const
{
    const Array<double> value = model->get();
    QStringList texts;
    for (std::size_t i = 0; i < components.size(); ++i)
        texts.append(components[i]->getSpinBox()->convertValueToText(i < value.size() ? value[i] : 0.0));
    return texts.join(TEXT_SEPARATOR);
}

bool Vector::pasteComponents(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char(';'));
    if (parts.size() != componentCount)
        return false;
    Array<double> value = model->get();
    value.resize(components.size(), 0.0);
    for (std::size_t i = 0; i < components.size(); ++i) {
        const std::optional<double> parsed
            = components[i]->getSpinBox()->parseValueText(parts[static_cast<qsizetype>(i)]);
        if (!parsed)
            return false;
        value[i] = *parsed;
    }
    // One set of the whole array: one undo step.
    model->set(std::move(value));
    return true;
}

void Vector::notify()
{
    for (Number* component : components)
        component->notify();
}

} // namespace Marlix::Widgets
