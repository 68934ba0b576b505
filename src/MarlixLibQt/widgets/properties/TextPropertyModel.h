#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/properties/PropertyModelBase.h>

namespace Marlix::Widgets {

/// The text form of a property of any type. It reads GenericPropertyAccessor::MIXED_VALUES_TEXT while the objects
/// disagree; a text that does not parse is refused and changes nothing.
class MARLIXLIBQT_EXPORT TextPropertyModel : public PropertyModelBase<String>
{
public:
    /// Observes the property on every object of `accessor` until destroyed. Without `undoManager` edits are applied
    /// without actions; `displayName` replaces the property's name in undo labels.
    TextPropertyModel(GenericPropertyAccessor accessor, SharedPtr<IUndoManager> undoManager,
        Optional<String> displayName = std::nullopt);

    /// Whether values of the property's type have a text form to read and to parse.
    static bool hasTextForm(const TypeDefinition& type);

protected:
    String readValue() const override;
    void writeValue(const String& value) override;
};

} // namespace Marlix::Widgets
