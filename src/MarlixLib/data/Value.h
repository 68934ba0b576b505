#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/data/TypeDefinition.h>

namespace Marlix {

/// An owned value of a type known at run time: default values, old values kept by undo, generic writes.
class MARLIXLIB_EXPORT Value
{
public:
    Value() = default;
    /// The type's default value.
    explicit Value(SharedPtr<const TypeDefinition> type);
    /// A copy of the value at `source`, which holds a value of `type`.
    Value(SharedPtr<const TypeDefinition> type, const void* source);
    template <class T> static Value make(SharedPtr<const TypeDefinition> type, const T& value)
    {
        if (!type || !type->isNative<T>())
            throw std::invalid_argument("the value does not have the native type of its type definition");
        return Value(std::move(type), &value);
    }

    Value(const Value& other);
    Value(Value&& other) noexcept;
    Value& operator=(const Value& other);
    Value& operator=(Value&& other) noexcept;
    ~Value();

    bool isEmpty() const { return storage == nullptr; }
    const SharedPtr<const TypeDefinition>& getType() const { return type; }
    const void* data() const { return storage; }
    void* data() { return storage; }

    /// The value as `T`, or null when it holds another type.
    template <class T> const T* get() const { return type && type->isNative<T>() ? static_cast<const T*>(storage) : nullptr; }
    String toString() const { return storage ? type->toString(storage) : String(); }

    bool operator==(const Value& other) const;

private:
    void release() noexcept;

    SharedPtr<const TypeDefinition> type;
    void* storage = nullptr;
};

} // namespace Marlix
