#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/Observable.h>
#include <MarlixLib/data/ObservedProperty.h>
#include <MarlixLib/data/PropertyDefinition.h>

#include <typeindex>

namespace Marlix {

class GenericDataObject;

/// One value of a data object seen through its definition. Writable only inside GenericDataObject::mutateProperty,
/// which records the change for undo and tells the observers.
class MARLIXLIB_EXPORT GenericProperty
{
public:
    GenericProperty(GenericDataObject& parent, const PropertyDefinition& definition, void* storage,
        std::uint32_t rootIndex, bool writable);

    const PropertyDefinition& getDefinition() const { return *definition; }
    const TypeDefinition& getTypeDefinition() const { return definition->getTypeDefinition(); }
    const String& getName() const { return definition->getName(); }
    /// The data object whose property this is (the root object for a property of a nested data object).
    GenericDataObject& getParentObject() const { return *parent; }
    bool isDataObject() const { return getTypeDefinition().getKind() == TypeKind::DataObject; }
    bool isWritable() const { return writable; }
    std::uint32_t getRootIndex() const { return rootIndex; }

    /// Throws an Exception naming both types unless the value is of `type`, or, with conversion allowed, both are
    /// numbers (integers, floating point numbers and enumerations convert into each other).
    void checkIsOfType(std::type_index type, const TypeDefinition* nativeDefinition, TypeKind kind, bool allowConversion) const;
    template <class T> void checkIsOfType(bool allowConversion = false) const
    {
        // The exact type is the common case of every typed read and write: settled here without a call.
        const auto& native = getTypeDefinition().getNativeType();
        if (native && *native == std::type_index(typeid(T)))
            return;
        checkIsOfType(std::type_index(typeid(T)), nullptr, kindOf<T>(), allowConversion);
    }

    /// The value itself; an Exception when it is not a `T`.
    template <class T> const T& get() const
    {
        checkIsOfType<T>(false);
        Observable::accessProperty(*definition);
        return *static_cast<const T*>(storage);
    }

    /// The value as `T`, converting between numbers.
    template <class T> T read() const
    {
        checkIsOfType<T>(std::is_arithmetic_v<T>);
        Observable::accessProperty(*definition);
        if (getTypeDefinition().template isNative<T>())
            return *static_cast<const T*>(storage);
        if constexpr (std::is_arithmetic_v<T>) {
            if (std::is_integral_v<T> && getTypeDefinition().isIntegral())
                return static_cast<T>(getTypeDefinition().toInt64(storage));
            if constexpr (std::is_integral_v<T>)
                return static_cast<T>(getTypeDefinition().toInt64(storage));
            else
                return static_cast<T>(getTypeDefinition().toDouble(storage));
        }
        Detail::throwStopException("data/GenericProperty", __LINE__);
    }

    /// Stores a value of exactly the property's type.
    template <class T> void set(const T& value)
    {
        checkWritable();
        checkIsOfType<T>(false);
        *static_cast<T*>(storage) = value;
    }

    /// Stores a number, converting it to the property's number type.
    template <class T> void write(const T& value)
    {
        checkWritable();
        checkIsOfType<T>(std::is_arithmetic_v<T>);
        if (getTypeDefinition().template isNative<T>())
            *static_cast<T*>(storage) = value;
        else if constexpr (std::is_integral_v<T>)
            getTypeDefinition().fromInt64(storage, static_cast<std::int64_t>(value));
        else if constexpr (std::is_arithmetic_v<T>)
            getTypeDefinition().fromDouble(storage, static_cast<double>(value));
    }

    Value getValue() const;
    /// Stores a value of the property's type (compared by type name); an Exception otherwise.
    void setValue(const Value& value);
    String toString() const;
    /// Parses the text form; a parse error leaves the value as it was.
    Expected<void, String> fromString(StringView text);

    const void* getData() const { return storage; }
    void* getMutableData();

    /// Called after every change of this property (for a nested property: of its root property).
    CallbackLifetime addObserver(Function<void(const ObservedProperty&)> observer) const;

    template <class T> static constexpr TypeKind kindOf()
    {
        return std::is_enum_v<T> ? TypeKind::Enumeration : TypeKind::Plain;
    }

private:
    void checkWritable() const;

    GenericDataObject* parent;
    const PropertyDefinition* definition;
    void* storage;
    std::uint32_t rootIndex;
    bool writable;
};

} // namespace Marlix
