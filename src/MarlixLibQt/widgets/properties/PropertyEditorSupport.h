#pragma once

#include <MarlixLib/data/GenericPropertyAccessor.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/properties/PropertyWidgetConstructor.h>

#include <QPointer>
#include <QWidget>

#include <cstdint>
#include <limits>

// What the built-in property editors share; internal to the library.

namespace Marlix {
class IUndoManager;
}

namespace Marlix::Widgets::Detail {

/// What drop-downs read while the selected objects disagree: no entry stands for it, so none is shown.
inline constexpr std::int64_t NO_ENTRY = std::numeric_limits<std::int64_t>::min();

bool isReadOnlyProperty(const GenericPropertyAccessor& property);

/// True when the accessor addresses several objects that hold different values.
bool hasMixedValues(const GenericPropertyAccessor& property);

/// A drop-down of several objects says that they disagree while it shows no entry (it reads NO_ENTRY then).
void showMixedInDropDown(QWidget* editor, const GenericPropertyAccessor& property);

/// Read-only look on every field and button of `editor`: text stays selectable, nothing else reacts.
void applyReadOnlyLook(QWidget* editor);

/// Tells the user at `editor` why an edit was refused.
void showRejection(QWidget* editor, const String& message);

SharedPtr<IUndoManager> undoManagerOf(const PropertyWidgetConstructor::Arguments& arguments);

/// A model that refuses every write when `readOnly`: editors that write anyway (a drag, a paste) just show the value
/// again.
template <class T> SharedPtr<Model<T>> guardReadOnly(SharedPtr<Model<T>> model, bool readOnly)
{
    if (!readOnly)
        return model;
    Model<T>* source = model.get();
    return makeSharedPtr<LambdaModel<T>>(
        model, [source] { return source->get(); }, [](T) {});
}

/// Refusals of `model` are shown at `editor` for as long as both live.
template <class M> void reportRejectionsAt(M& model, QWidget* editor)
{
    model.setRejectionHandler([target = QPointer<QWidget>(editor)](const String& message) {
        if (target)
            showRejection(target, message);
    });
}

/// A line edit over the property's text form; the unsupported label for types without one.
QWidget* makeTextEditor(const GenericPropertyAccessor& property, const PropertyWidgetConstructor::Arguments& arguments);

/// An EntityWidget over a reference property, offering entities of the class the property accepts.
QWidget* makeEntityEditor(
    const GenericPropertyAccessor& property, const PropertyWidgetConstructor::Arguments& arguments);

/// A ListEditor over a list property; null for element types it has no editor for.
QWidget* makeListEditor(const GenericPropertyAccessor& property, const PropertyWidgetConstructor::Arguments& arguments);

/// The numeric value of the definition's default, or 0 when it has none or it is not a number.
double defaultNumber(const GenericPropertyAccessor& property);

} // namespace Marlix::Widgets::Detail
