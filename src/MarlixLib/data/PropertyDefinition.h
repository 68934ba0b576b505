#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Flags.h>
#include <MarlixLib/data/TypeDefinition.h>
#include <MarlixLib/data/UserData.h>
#include <MarlixLib/data/Value.h>

#include <cstdint>

namespace Marlix {

/// Flags that change how a property is saved and edited; combine them in a Flags<PropertyFlag>.
enum class PropertyFlag : std::uint32_t
{
    None = 0, ///< A plain property: saved and editable.
    /// The value is not saved with the scene.
    Transient = 1,
    /// Editors of this property are rebuilt rather than reused whenever editors are refreshed.
    AlwaysRebuildEditor = 2,
    /// Editors show the value but do not change it.
    ReadOnly = 4,
};

/// One property of a data group: its name, type, default value, attributes and flags. Its place in the storage of a
/// data object is set by the GroupLayout that holds it.
class MARLIXLIB_EXPORT PropertyDefinition
{
public:
    /// A property whose default is the type's own default value; an Exception when \p type is null.
    PropertyDefinition(String name, SharedPtr<const TypeDefinition> type, UserData attributes = {},
        Flags<PropertyFlag> flags = {}, String description = {});
    /// `defaultValue` must be a value of `type`.
    PropertyDefinition(String name, SharedPtr<const TypeDefinition> type, Value defaultValue, UserData attributes = {},
        Flags<PropertyFlag> flags = {}, String description = {});

    template <class T>
    /// A property whose default is \p defaultValue, a native value of \p type; an Exception when it is not one.
    static PropertyDefinition make(String name, SharedPtr<const TypeDefinition> type, const T& defaultValue,
        UserData attributes = {}, Flags<PropertyFlag> flags = {}, String description = {})
    {
        Value value = Value::make(type, defaultValue);
        return PropertyDefinition(std::move(name), std::move(type), std::move(value), std::move(attributes), flags,
            std::move(description));
    }

    const String& getName() const { return name; } ///< The name, unique within the entity class and free of '.'.
    /// The value type, shared with every property of that type; never null.
    const SharedPtr<const TypeDefinition>& getType() const { return type; }
    /// The value type, for callers that need no shared ownership.
    const TypeDefinition& getTypeDefinition() const { return *type; }
    const Value& getDefaultValue() const { return defaultValue; } ///< The value new objects start with.
    /// Free-form attributes (editor hints such as ranges, units and steps).
    const UserData& getAttributes() const { return attributes; }
    /// Alias of getAttributes(): the "Zorva.Ui." keys of the editors live here.
    const UserData& getUserData() const { return attributes; }
    Flags<PropertyFlag> getFlags() const { return flags; } ///< How the property is saved and edited.
    /// What the property means, for tool tips and listings (a UI attribute may override it); may be empty.
    const String& getDescription() const { return description; }
    /// Byte offset of the value inside the storage of its group.
    std::size_t getOffset() const { return offset; }

private:
    String name;
    SharedPtr<const TypeDefinition> type;
    Value defaultValue;
    UserData attributes;
    Flags<PropertyFlag> flags;
    String description;
    std::size_t offset = 0;

    friend class GroupLayout;
};

} // namespace Marlix
