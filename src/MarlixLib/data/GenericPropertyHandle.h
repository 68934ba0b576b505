#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/data/EntityClassInfo.h>

#include <cstddef>
#include <cstdint>

namespace Marlix {

/// How a dotted property path ("transform.position") resolves on a data object. Values 2 and above are errors.
enum class PropertyPathStatus : std::uint8_t
{
    RootProperty = 0, ///< The path names a property of the object itself.
    NestedProperty = 1, ///< The path names a field of a nested data object.
    DoesNotResolve = 2, ///< Some name along the path does not exist.
    Malformed = 3, ///< The path is empty or has an empty segment.
};

/// True for the two statuses that address a property.
constexpr bool isResolved(PropertyPathStatus status)
{
    return status == PropertyPathStatus::RootProperty || status == PropertyPathStatus::NestedProperty;
}

/// A property path resolved once on the layout of a data object (GenericDataObject::resolveHandle). It serves that
/// object and every other object of the same layout, all entities of one class: an editor keeps it and reads and
/// writes through it without looking the path up again.
class GenericPropertyHandle
{
public:
    /// Resolves on no object.
    GenericPropertyHandle() = default;

    const String& getPath() const { return path; } ///< The path the handle was resolved from.
    PropertyPathStatus getStatus() const { return status; } ///< How the path resolved.
    /// True when the handle addresses a property and can be read and written through.
    bool isResolved() const { return Marlix::isResolved(status); }
    /// True when the path names a property of the object itself rather than a nested field.
    bool isRootProperty() const { return status == PropertyPathStatus::RootProperty; }
    /// The addressed property (a field of a nested data object for a nested path); null when the path does not resolve.
    const PropertyDefinition* getDefinition() const { return definition; }
    /// The property of the object itself that holds the addressed value.
    std::uint32_t getRootIndex() const { return rootIndex; }
    /// True when the handle can address properties of objects laid out by `objectLayout`.
    bool isFor(const SharedPtr<const Detail::ObjectLayout>& objectLayout) const { return layout == objectLayout; }

private:
    friend class GenericDataObject;

    // Keeps the definitions alive: the layout owns the groups, and they own the definitions and their types.
    SharedPtr<const Detail::ObjectLayout> layout;
    String path;
    const PropertyDefinition* definition = nullptr;
    std::size_t offset = 0; // of the value in the object's storage block
    std::uint32_t rootIndex = 0;
    PropertyPathStatus status = PropertyPathStatus::DoesNotResolve;
};

} // namespace Marlix
