#include <MarlixLib/data/GroupLayout.h>

#include <MarlixLib/base/Exception.h>

namespace Marlix {

GroupLayout::GroupLayout(String name, Array<PropertyDefinition> properties)
    : name(std::move(name))
    , properties(std::move(properties))
{
    for (std::size_t i = 0; i < this->properties.size(); ++i) {
        PropertyDefinition& property = this->properties[i];
        if (property.getName().empty() || property.getName().find('.') != String::npos)
            throw Exception("The property name \"" + property.getName() + "\" of " + this->name + " is empty or holds a '.'");
        for (std::size_t j = 0; j < i; ++j)
            if (this->properties[j].getName() == property.getName())
                throw Exception("The group " + this->name + " has two properties named \"" + property.getName() + "\"");
        const std::size_t align = property.getTypeDefinition().getAlignment();
        size = (size + align - 1) / align * align;
        property.offset = size;
        size += property.getTypeDefinition().getSize();
        alignment = std::max(alignment, align);
    }
    size = (size + alignment - 1) / alignment * alignment;
}

const PropertyDefinition* GroupLayout::findProperty(StringView name) const
{
    const int index = indexOf(name);
    return index < 0 ? nullptr : &properties[static_cast<std::size_t>(index)];
}

int GroupLayout::indexOf(StringView name) const
{
    for (std::size_t i = 0; i < properties.size(); ++i)
        if (properties[i].getName() == name)
            return static_cast<int>(i);
    return -1;
}

void GroupLayout::constructStorage(void* block) const
{
    auto* bytes = static_cast<std::byte*>(block);
    std::size_t done = 0;
    try {
        for (; done < properties.size(); ++done) {
            const PropertyDefinition& property = properties[done];
            property.getTypeDefinition().copyConstruct(bytes + property.getOffset(), property.getDefaultValue().data());
        }
    } catch (...) {
        while (done-- > 0)
            properties[done].getTypeDefinition().destroy(bytes + properties[done].getOffset());
        throw;
    }
}

void GroupLayout::copyConstructStorage(void* block, const void* source) const
{
    auto* bytes = static_cast<std::byte*>(block);
    const auto* from = static_cast<const std::byte*>(source);
    std::size_t done = 0;
    try {
        for (; done < properties.size(); ++done) {
            const PropertyDefinition& property = properties[done];
            property.getTypeDefinition().copyConstruct(bytes + property.getOffset(), from + property.getOffset());
        }
    } catch (...) {
        while (done-- > 0)
            properties[done].getTypeDefinition().destroy(bytes + properties[done].getOffset());
        throw;
    }
}

void GroupLayout::assignStorage(void* block, const void* source) const
{
    auto* bytes = static_cast<std::byte*>(block);
    const auto* from = static_cast<const std::byte*>(source);
    for (const PropertyDefinition& property : properties)
        property.getTypeDefinition().assign(bytes + property.getOffset(), from + property.getOffset());
}

void GroupLayout::destroyStorage(void* block) const
{
    auto* bytes = static_cast<std::byte*>(block);
    for (auto it = properties.rbegin(); it != properties.rend(); ++it)
        it->getTypeDefinition().destroy(bytes + it->getOffset());
}

bool GroupLayout::equalStorage(const void* a, const void* b) const
{
    const auto* left = static_cast<const std::byte*>(a);
    const auto* right = static_cast<const std::byte*>(b);
    for (const PropertyDefinition& property : properties)
        if (!property.getTypeDefinition().equals(left + property.getOffset(), right + property.getOffset()))
            return false;
    return true;
}

} // namespace Marlix
