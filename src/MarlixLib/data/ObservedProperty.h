#pragma once

#include <MarlixLib/base/Aliases.h>

#include <cstdint>

namespace Marlix {

class GenericDataObject;
class PropertyDefinition;

/// What an observer learns after a change: the object, the root property that changed and the path that was written
/// (a nested path when only a field of a nested data object changed).
class ObservedProperty
{
public:
    /// Made by the object for each notification; \p path must outlive the call.
    ObservedProperty(GenericDataObject& object, const PropertyDefinition& definition, std::uint32_t index, StringView path)
        : object(&object)
        , definition(&definition)
        , index(index)
        , path(path)
    {
    }

    GenericDataObject& getObject() const { return *object; } ///< The object that changed.
    /// The definition of the root property that changed.
    const PropertyDefinition& getDefinition() const { return *definition; }
    std::uint32_t getPropertyIndex() const { return index; } ///< The index of the root property that changed.
    /// The path that was written; valid during the notification only, so copy it to keep it.
    StringView getPath() const { return path; }

private:
    GenericDataObject* object;
    const PropertyDefinition* definition;
    std::uint32_t index;
    StringView path;
};

} // namespace Marlix
