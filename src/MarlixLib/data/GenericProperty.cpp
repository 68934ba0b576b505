#include <MarlixLib/data/GenericProperty.h>

#include <MarlixLib/data/GenericDataObject.h>

namespace Marlix {

namespace {
bool isNumberType(std::type_index type)
{
    static const std::type_index numbers[] = { typeid(float), typeid(double), typeid(signed char), typeid(unsigned char),
        typeid(char), typeid(short), typeid(unsigned short), typeid(int), typeid(unsigned int), typeid(long),
        typeid(unsigned long), typeid(long long), typeid(unsigned long long) };
    for (const std::type_index& number : numbers)
        if (number == type)
            return true;
    return false;
}
} // namespace

GenericProperty::GenericProperty(
    GenericDataObject& parent, const PropertyDefinition& definition, void* storage, std::uint32_t rootIndex, bool writable)
    : parent(&parent)
    , definition(&definition)
    , storage(storage)
    , rootIndex(rootIndex)
    , writable(writable)
{
}

void GenericProperty::checkIsOfType(
    std::type_index type, const TypeDefinition* nativeDefinition, TypeKind kind, bool allowConversion) const
{
    const TypeDefinition& own = getTypeDefinition();
    if (own.getNativeType() && *own.getNativeType() == type)
        return;
    const bool requestedIsNumber = nativeDefinition ? nativeDefinition->isNumber()
                                                    : (kind != TypeKind::EntityReference && isNumberType(type));
    if (allowConversion && own.isNumber() && requestedIsNumber)
        return;
    const String requested = nativeDefinition ? nativeDefinition->getName() : String(type.name());
    throw Exception("The property \"" + getName() + "\" holds a " + own.getName() + ", not a " + requested
        + (allowConversion ? "" : " (no conversion allowed)"));
}

void GenericProperty::checkWritable() const
{
    if (!writable)
        throw Exception("The property \"" + getName() + "\" can only be changed through mutateProperty");
}

Value GenericProperty::getValue() const
{
    Observable::accessProperty(*definition);
    return Value(definition->getType(), storage);
}

void GenericProperty::setValue(const Value& value)
{
    checkWritable();
    if (value.isEmpty() || value.getType()->getName() != getTypeDefinition().getName())
        throw Exception("The property \"" + getName() + "\" holds a " + getTypeDefinition().getName() + ", not a "
            + (value.isEmpty() ? String("empty value") : value.getType()->getName()));
    getTypeDefinition().assign(storage, value.data());
}

String GenericProperty::toString() const
{
    Observable::accessProperty(*definition);
    return getTypeDefinition().toString(storage);
}

Expected<void, String> GenericProperty::fromString(StringView text)
{
    checkWritable();
    return getTypeDefinition().fromString(text, storage);
}

void* GenericProperty::getMutableData()
{
    checkWritable();
    return storage;
}

CallbackLifetime GenericProperty::addObserver(Function<void(const ObservedProperty&)> observer) const
{
    return parent->addPropertyObserver(rootIndex, std::move(observer));
}

} // namespace Marlix
