#include <MarlixLibQt/widgets/editors/CheckBox.h>

#include <QSignalBlocker>

namespace Marlix::Widgets {

CheckBox::CheckBox(SharedPtr<Model<bool>> model, bool defaultValue, const QString& text, QWidget* parent)
    : QCheckBox(text, parent)
    , CommonContextMenuOwner(this)
    // Without a model the box keeps its value itself, like a plain check box.
    , model(model ? std::move(model) : makeSharedPtr<VariableModel<bool>>(defaultValue))
    , defaultValue(defaultValue)
{

    registerCallback(this->model->addCallback([this](bool value) { showValue(value); }));

    // toggled() also fires for programmatic changes, which are made with signals blocked.
    connect(this, &QCheckBox::toggled, this, [this](bool checked) {
        this->model->set(checked);
        // A model may refuse the write (a re-entrant set); the box must not show a value the model does not hold.
        if (this->model->get() != isChecked())
            notify();
    });

    setResetFunction([this] { this->model->set(this->defaultValue); });
    setIsDefaultFunction([this] { return this->model->get() == this->defaultValue; });
    setTextFunctions([this] { return this->model->get() ? QStringLiteral("true") : QStringLiteral("false"); },
        [this](const QString& text) {
            const Optional<bool> value = parseBool(text);
            if (!value)
                return false;
            this->model->set(*value);
            return true;
        });

    notify();
}

CheckBox::~CheckBox() = default;

void CheckBox::notify()
{
    showValue(model->get());
}

void CheckBox::showValue(bool value)
{
    const QSignalBlocker blocker(this);
    setChecked(value);
}

Optional<bool> CheckBox::parseBool(const QString& text)
{
    const QString word = text.trimmed().toLower();
    if (word == u"true" || word == u"1" || word == u"yes" || word == u"on")
        return true;
    if (word == u"false" || word == u"0" || word == u"no" || word == u"off")
        return false;
    return {};
}

} // namespace Marlix::Widgets
