#include <MarlixLibQt/widgets/editors/LineEdit.h>

#include <QApplication>
#include <QSignalBlocker>

namespace Marlix::Widgets {

namespace {

QString toQString(const String& text)
{
    return QString::fromStdString(text);
}

} // namespace

LineEdit::LineEdit(SharedPtr<Model<String>> model, const String& defaultValue, Flags<Option> options, QWidget* parent)
    : QLineEdit(parent)
    , CommonContextMenuOwner(this)
    , model(model ? std::move(model) : makeSharedPtr<VariableModel<String>>(defaultValue))
    , defaultValue(defaultValue)
    , options(options)
{
    setClearButtonEnabled(options.has(Option::ClearButton));

    registerCallback(this->model->addCallback([this](const String& value) { showValue(value); }));

    if (options.has(Option::UpdateWhileTyping))
        connect(this, &QLineEdit::textEdited, this, [this] { writeModel(); });
    // Also with updates while typing: the clear button and undo change the text without textEdited.
    connect(this, &QLineEdit::editingFinished, this, [this] { writeModel(); });

    setResetFunction([this] { this->model->set(this->defaultValue); });
    setIsDefaultFunction([this] { return this->model->get() == this->defaultValue; });
    setTextFunctions([this] { return toQString(this->model->get()); },
        [this](const QString& text) {
            this->model->set(text.toStdString());
            return true;
        });
    setEditableFunction([this] { return isEnabled() && !isReadOnly(); });

    if (options.has(Option::ReadOnly))
        setReadOnly(true);
    notify();
}

LineEdit::~LineEdit() = default;

void LineEdit::setReadOnly(bool readOnly)
{
    if (readOnly == isReadOnly())
        return;
    QLineEdit::setReadOnly(readOnly);
    const QPalette defaultPalette = QApplication::palette(this);
    QPalette current = palette();
    current.setColor(QPalette::All, QPalette::Base,
        defaultPalette.color(QPalette::Active, readOnly ? QPalette::Window : QPalette::Base));
    setPalette(current);
}

void LineEdit::notify()
{
    showValue(model->get());
}

void LineEdit::showValue(const String& value)
{
    const QString shown = toQString(value);
    if (shown == text())
        return;
    const QSignalBlocker blocker(this);
    // Keeps the caret where it was, so an update arriving while typing does not throw the user to the end.
    const int cursor = cursorPosition();
    setText(shown);
    setCursorPosition(std::min(cursor, static_cast<int>(shown.size())));
}

void LineEdit::writeModel()
{
    const String value = text().toStdString();
    // Leaving the field without a change must not write: a property model would record an empty undo step.
    if (value == model->get())
        return;
    model->set(value);
    if (model->get() != value)
        notify();
}

} // namespace Marlix::Widgets
