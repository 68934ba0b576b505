#include <MarlixLib/data/PropertyDefinition.h>

#include <MarlixLib/base/Exception.h>

namespace Marlix {

PropertyDefinition::PropertyDefinition(String name, SharedPtr<const TypeDefinition> type, UserData attributes,
    Flags<PropertyFlag> flags, String description)
    : PropertyDefinition(std::move(name), type, Value(type), std::move(attributes), flags, std::move(description))
{
}

PropertyDefinition::PropertyDefinition(String name, SharedPtr<const TypeDefinition> type, Value defaultValue,
    UserData attributes, Flags<PropertyFlag> flags, String description)
    : name(std::move(name))
    , type(std::move(type))
    , defaultValue(std::move(defaultValue))
    , attributes(std::move(attributes))
    , flags(flags)
    , description(std::move(description))
{
    if (!this->type)
        throw Exception("The property \"" + this->name + "\" has no type");
    if (this->defaultValue.isEmpty() || this->defaultValue.getType()->getName() != this->type->getName())
        throw Exception("The default value of the property \"" + this->name + "\" is not a " + this->type->getName());
}

} // namespace Marlix
