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
    GroupLayout(const GroupLayout&) = delete;
    GroupLayout& operator=(const GroupLayout&) = delete;

    const String& getName() const { return name; }
    ArrayView<const PropertyDefinition> getProperties() const { return properties; }
    const PropertyDefinition* findProperty(StringView name) const;
    /// Index of a property in getProperties(), or -1.
    int indexOf(StringView name) const;

    std::size_t getStorageSize() const { return size; }
    std::size_t getStorageAlignment() const { return alignment; }

    /// Fills a block with every property's default value.
    void constructStorage(void* block) const;
    void copyConstructStorage(void* block, const void* source) const;
    void assignStorage(void* block, const void* source) const;
    void destroyStorage(void* block) const;
    bool equalStorage(const void* a, const void* b) const;

private:
    String name;
    Array<PropertyDefinition> properties;
    std::size_t size = 0;
    std::size_t alignment = 1;
};

} // namespace Marlix
