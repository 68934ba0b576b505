#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/data/PropertyDefinition.h>

namespace Marlix {

/// A registered data group: an ordered list of property definitions and the storage block that holds one value of
/// each, laid out once at construction.
class MARLIXLIB_EXPORT GroupLayout
{
public:
    /// Throws Exception when two properties share a name or a name contains '.'.
    GroupLayout(String name, Array<PropertyDefinition> properties);
    GroupLayout(const GroupLayout&) = delete; ///< Not copyable: objects and handles refer to the layout by address.
    GroupLayout& operator=(const GroupLayout&) = delete; ///< Not assignable.

    const String& getName() const { return name; } ///< The group's name, unique among the groups of a class.
    /// The definitions in declaration order, which is also storage order.
    ArrayView<const PropertyDefinition> getProperties() const { return properties; }
    /// The definition called \p name; null when the group has none.
    const PropertyDefinition* findProperty(StringView name) const;
    /// Index of a property in getProperties(), or -1.
    int indexOf(StringView name) const;

    /// The size in bytes of a block holding one value of each property.
    std::size_t getStorageSize() const { return size; }
    std::size_t getStorageAlignment() const { return alignment; } ///< The alignment in bytes that such a block needs.

    /// Fills a block with every property's default value.
    void constructStorage(void* block) const;
    /// Fills uninitialised \p block with copies of the values in \p source, a block of this layout.
    void copyConstructStorage(void* block, const void* source) const;
    /// Assigns every value of \p source to the constructed \p block.
    void assignStorage(void* block, const void* source) const;
    /// Destroys every value in \p block; the memory itself stays with the caller.
    void destroyStorage(void* block) const;
    /// True when both blocks hold equal values for every property (references compare by identity).
    bool equalStorage(const void* a, const void* b) const;

private:
    String name;
    Array<PropertyDefinition> properties;
    std::size_t size = 0;
    std::size_t alignment = 1;
};

} // namespace Marlix
