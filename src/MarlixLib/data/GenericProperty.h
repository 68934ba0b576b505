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
    /// A view of the value at \p storage, which must hold a value of the definition's type; made by GenericDataObject.
    GenericProperty(GenericDataObject& parent, const PropertyDefinition& definition, void* storage,
        std::uint32_t rootIndex, bool writable);

    /// The property's definition (a field's own for a nested property).
    const PropertyDefinition& getDefinition() const { return *definition; }
    /// The type of the value.
    const TypeDefinition& getTypeDefinition() const { return definition->getTypeDefinition(); }
    /// The property's name, without the path of the objects it is nested in.
    const String& getName() const { return definition->getName(); }
    /// The data object whose property this is (the root object for a property of a nested data object).
    GenericDataObject& getParentObject() const { return *parent; }
    /// True when the value is a nested data object whose fields have their own paths.
    bool isDataObject() const { return getTypeDefinition().getKind() == TypeKind::DataObject; }
    /// True only inside GenericDataObject::mutateProperty(); writes through other views throw.
    bool isWritable() const { return writable; }
    /// The index of the root property that holds the value, the one undo records and observers see.
    std::uint32_t getRootIndex() const { return rootIndex; }

    /// Throws an Exception naming both types unless the value is of `type`, or, with conversion allowed, both are
    /// numbers (integers, floating point numbers and enumerations convert into each other).
    void checkIsOfType(std::type_index type, const TypeDefinition* nativeDefinition, TypeKind kind, bool allowConversion) const;
    /// The typed form of the check above; the exact native type passes without a call.
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

    /// A copy of the value with its type; reading it counts as an access in an open ObservationScope.
    Value getValue() const;
    /// Stores a value of the property's type (compared by type name); an Exception otherwise.
    void setValue(const Value& value);
    String toString() const; ///< The value's text form, as the type writes it.
    /// Parses the text form; a parse error leaves the value as it was.
    Expected<void, String> fromString(StringView text);

    /// The raw value, of getTypeDefinition()'s type; reading through it is not seen by an ObservationScope.
    const void* getData() const { return storage; }
    void* getMutableData(); ///< The raw value for writing; an Exception unless the view is writable.

    /// Called after every change of this property (for a nested property: of its root property).
    CallbackLifetime addObserver(Function<void(const ObservedProperty&)> observer) const;

    /// The kind a native `T` is checked as: TypeKind::Enumeration for enums, TypeKind::Plain otherwise.
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
