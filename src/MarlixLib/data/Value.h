#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/data/TypeDefinition.h>

namespace Marlix {

/// An owned value of a type known at run time: default values, old values kept by undo, generic writes.
class MARLIXLIB_EXPORT Value
{
public:
    Value() = default; ///< An empty value without a type (isEmpty()).
    /// The type's default value.
    explicit Value(SharedPtr<const TypeDefinition> type);
    /// A copy of the value at `source`, which holds a value of `type`.
    Value(SharedPtr<const TypeDefinition> type, const void* source);
    /// A copy of the native \p value; a std::invalid_argument when `T` is not the type's native type.
    template <class T> static Value make(SharedPtr<const TypeDefinition> type, const T& value)
    {
        if (!type || !type->isNative<T>())
            throw std::invalid_argument("the value does not have the native type of its type definition");
        return Value(std::move(type), &value);
    }

    Value(const Value& other); ///< Copies the stored value; the copy shares the type.
    Value(Value&& other) noexcept; ///< Takes the storage over; \p other is left empty.
    Value& operator=(const Value& other); ///< Copies the value and type of \p other.
    Value& operator=(Value&& other) noexcept; ///< Takes the storage of \p other over; \p other is left empty.
    ~Value(); ///< Destroys the stored value.

    bool isEmpty() const { return storage == nullptr; } ///< True for a default-constructed or moved-from value.
    const SharedPtr<const TypeDefinition>& getType() const { return type; } ///< The value's type; null when empty.
    const void* data() const { return storage; } ///< The raw value of getType()'s type; null when empty.
    void* data() { return storage; } ///< \overload

    /// The value as `T`, or null when it holds another type.
    template <class T> const T* get() const { return type && type->isNative<T>() ? static_cast<const T*>(storage) : nullptr; }
    /// The type's text form of the value; empty text for an empty value.
    String toString() const { return storage ? type->toString(storage) : String(); }

    /// Equal when both are empty, or both hold equal values of types of the same name.
    bool operator==(const Value& other) const;

private:
    void release() noexcept;

    SharedPtr<const TypeDefinition> type;
    void* storage = nullptr;
};

} // namespace Marlix
