#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/properties/PropertyModelBase.h>

#include <cstdint>

namespace Marlix::Widgets {

/// The integer value of an enumeration property, whatever native type stores it. Only values that the enumeration
/// names are written; any other value is refused and changes nothing.
class MARLIXLIBQT_EXPORT EnumPropertyModel : public PropertyModelBase<std::int64_t>
{
public:
    /// Observes the property on every object of `accessor` until destroyed. Without `undoManager` edits are applied
    /// without actions; `displayName` replaces the property's name in undo labels.
    EnumPropertyModel(GenericPropertyAccessor accessor, SharedPtr<IUndoManager> undoManager,
        Optional<String> displayName = std::nullopt);

    /// The named values of the property's enumeration; empty when the path does not resolve.
    Array<EnumerationValue> getEnumerationValues() const;

protected:
    std::int64_t readValue() const override;
    void writeValue(const std::int64_t& value) override;
};

} // namespace Marlix::Widgets
