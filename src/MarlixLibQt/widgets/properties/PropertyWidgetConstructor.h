#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/data/GenericPropertyAccessor.h>
#include <MarlixLib/data/UserData.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/properties/UiConditions.h>

#include <QString>

#include <cstdint>

class QWidget;

namespace Marlix {
class TypeDefinition;
}

namespace Marlix::Widgets {

class IPropertySheetHost;

/// An alternative editor for an enumeration property, built over the same model of the property's integer value
/// instead of the drop-down: a row of buttons, a slider over ordered values ...
struct UiEnumEditor
{
    /// User-data key of the record, in the property definition's attributes.
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.EnumEditor";
    /// Receives the model, the enumeration's named values and the parent; returns the editor.
    Function<QWidget*(SharedPtr<Model<std::int64_t>> value, const Array<EnumerationValue>& values, QWidget* parent)>
        make;
};

/// Chooses the editor of a property: a constructor registered for the property's type when there is one, else an
/// editor by the type's kind. Every editor it makes is bound through a PropertyModel, so each edit, and each gesture,
/// is one undoable action.
class MARLIXLIBQT_EXPORT PropertyWidgetConstructor
{
public:
    /// What every constructor receives; constructors don't keep it beyond the call.
    struct Arguments
    {
        QWidget* parent = nullptr; ///< Parent of the new editor; may be null.
        /// Asked for the undo manager, display units, thumbnails, file picker and controller the editor needs.
        SharedPtr<IPropertySheetHost> host;
        /// Replaces the property's name in undo labels ("Update of " + name).
        Optional<String> displayName;
    };

    /// Makes an editor bound to the property, parented to Arguments::parent; null leaves the property to the editor of
    /// its type's kind.
    using Constructor = Function<QWidget*(const GenericPropertyAccessor&, const Arguments&)>;

    /// Key of a type's constructor in the type's user data or attributes.
    static constexpr StringView CONSTRUCTOR_ATTRIBUTE = "Zorva.Ui.PropertySheet.WidgetConstructor";
    /// Set on the unsupported label so that the style elides it instead of widening the sheet.
    static constexpr const char* USE_ELLIPSIS_PROPERTY = "Zorva.UseEllipsis";

    /// A new editor bound to `property`; the unsupported label when no editor can show it. A null host is a programming
    /// error and raises the stop exception.
    static QWidget* make(const GenericPropertyAccessor& property, const Arguments& arguments);
    /// Stores `constructor` for `type`, replacing any earlier one. Call it during start-up, before sheets exist.
    static void registerConstructor(const SharedPtr<TypeDefinition>& type, Constructor constructor);
    /// Whether a constructor is registered for the property's type; false when the path does not resolve.
    static bool hasCustomConstructor(const GenericPropertyAccessor& property);
    /// The attributes of the property: its definition's user data, also for a field of a nested data object.
    static const UserData& getUiOptions(const GenericPropertyAccessor& property);
    /// The fallback editor: a label showing `text` that elides rather than widening its row.
    static QWidget* unsupportedPropertyConstructor(QString text, QWidget* parent);
    /// Installs the library's editors for the core types; run once by the library's start-up. Idempotent.
    static void registerDefaultWidgets();
};

} // namespace Marlix::Widgets
