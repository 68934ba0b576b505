#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/data/UserData.h>
#include <MarlixLib/data/ValueTraits.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>
#include <typeindex>

namespace Marlix {

class Entity;
class EntityClassInfo;
class GroupLayout;
class ISerializer;
class IDeserializer;

namespace Detail {
class EntityClassData;
}

/// What a type's values are: the editors choose their widget by it.
enum class TypeKind : std::uint8_t
{
    Plain = 0, ///< A single value with its own editor: numbers, text, vectors, colours.
    Enumeration = 1, ///< One of a set of named integer values.
    EntityReference = 2, ///< A strong reference to an entity of an accepted class, or none.
    List = 3, ///< An ordered list of values of one element type.
    DataObject = 4, ///< A nested data object whose fields are properties of their own.
};

/// Resolves an identity read from a stream to the entity it stands for in the scene being loaded.
using EntityResolver = Function<Expected<SharedPtr<Entity>, String>(std::uint64_t)>;

/// One named value of an enumeration type.
struct EnumerationValue
{
    std::int64_t value = 0; ///< The stored number.
    String name; ///< The name shown and written as the value's text form.
    bool operator==(const EnumerationValue&) const = default; ///< Equal when both number and name are.
};

/// One value type: its name, kind, native type where there is one, and type-erased operations on raw storage.
class MARLIXLIB_EXPORT TypeDefinition
{
public:
    /// Operations on raw, suitably aligned storage of `size` bytes. Each receives its definition, so that generic
    /// kinds (layouts, lists, enumerations) reach their element types and names.
    struct Operations
    {
        std::size_t size = 0; ///< The size of a value in bytes; never 0.
        std::size_t alignment = 1; ///< The alignment a value's storage needs.
        /// Default-constructs a value in uninitialised \p target.
        void (*construct)(const TypeDefinition&, void* target) = nullptr;
        /// Copy-constructs \p source into uninitialised \p target.
        void (*copyConstruct)(const TypeDefinition&, void* target, const void* source) = nullptr;
        /// Assigns \p source to the constructed \p target.
        void (*assign)(const TypeDefinition&, void* target, const void* source) = nullptr;
        void (*destroy)(const TypeDefinition&, void* target) = nullptr; ///< Destroys the value in \p target.
        /// True when the values are equal.
        bool (*equals)(const TypeDefinition&, const void* a, const void* b) = nullptr;
        String (*toString)(const TypeDefinition&, const void* value) = nullptr; ///< The text form of a value.
        /// Parses text into \p target; may leave \p target changed on an error (the definition's own call does not).
        Expected<void, String> (*fromString)(const TypeDefinition&, StringView text, void* target) = nullptr;
        /// Writes a value under \p key.
        void (*serialize)(const TypeDefinition&, ISerializer& out, StringView key, const void* value) = nullptr;
        /// Reads the value under \p key into \p target, resolving identities through \p resolver; may leave \p target
        /// changed on an error (the definition's own call does not).
        Expected<void, String> (*deserialize)(
            const TypeDefinition&, IDeserializer& in, StringView key, const EntityResolver& resolver, void* target)
            = nullptr;
        // Numbers and enumerations only: conversions used when a reader allows them.
        bool isIntegral = false; ///< True for integers and enumerations, whose conversions round.
        /// The number as a double; null for types that are not numbers.
        double (*toDouble)(const void* value) = nullptr;
        /// The number as an integer, rounded; null for types that are not numbers.
        std::int64_t (*toInt64)(const void* value) = nullptr;
        /// Stores a double, rounded for integral types; null for types that are not numbers.
        void (*fromDouble)(void* target, double value) = nullptr;
        /// Stores an integer; null for types that are not numbers.
        void (*fromInt64)(void* target, std::int64_t value) = nullptr;
    };

    /// A type from hand-made operations; all but the number conversions must be set, else the process stops.
    TypeDefinition(String name, TypeKind kind, Optional<std::type_index> nativeType, const Operations& operations,
        UserData attributes);

    /// A plain type stored as the native `T`, with text and stream forms from ValueTraits<T>.
    template <class T> static SharedPtr<TypeDefinition> makePlain(String name, UserData attributes = {});
    /// `E` is the native enumeration (or integer) stored; `values` names its valid values.
    template <class E>
    static SharedPtr<TypeDefinition> makeEnumeration(String name, Array<EnumerationValue> values, UserData attributes = {});
    /// A reference (an `EntityHolder<Entity>`) to an entity of `accepted` or a class derived from it.
    static SharedPtr<TypeDefinition> makeEntityReference(String name, const EntityClassInfo& accepted, UserData attributes = {});
    /// A list stored as `Array<E>`, whose elements are values of `element` (the native type of `element` is `E`).
    template <class E>
    static SharedPtr<TypeDefinition> makeList(String name, SharedPtr<const TypeDefinition> element, UserData attributes = {});
    /// A nested data object whose fields are the properties of `layout`, stored inline in its parent.
    static SharedPtr<TypeDefinition> makeDataObject(String name, SharedPtr<const GroupLayout> layout, UserData attributes = {});
    /// A nested data object stored as the native struct `T`, so that it can also be read and written whole. The
    /// layout's fields must sit at `offsets` (offsetof of the matching members), which is checked.
    template <class T>
    static SharedPtr<TypeDefinition> makeNativeDataObject(
        String name, SharedPtr<const GroupLayout> layout, Array<std::size_t> offsets, UserData attributes = {})
    {
        return makeDataObjectType(std::move(name), std::type_index(typeid(T)), nativeOperations<T>(), std::move(layout),
            std::move(attributes), offsets);
    }

    /// The registered name, also written to streams; types compare by it.
    const String& getName() const { return name; }
    TypeKind getKind() const { return kind; } ///< What the values are, which decides their editor.
    /// The C++ type a value is stored as; empty for data objects made from a layout only.
    const Optional<std::type_index>& getNativeType() const { return nativeType; }
    /// True when values are stored as exactly `T`.
    template <class T> bool isNative() const { return nativeType && *nativeType == std::type_index(typeid(T)); }
    /// True for numbers and enumerations, which convert into each other.
    bool isNumber() const { return operations.toDouble != nullptr; }
    bool isIntegral() const { return operations.isIntegral; } ///< True for integers and enumerations.
    std::size_t getSize() const { return operations.size; } ///< The size of a value in bytes.
    std::size_t getAlignment() const { return operations.alignment; } ///< The alignment of a value in bytes.
    /// The raw operations, for callers that need the variants that may leave a target changed.
    const Operations& getOperations() const { return operations; }

    /// Attributes given at registration.
    const UserData& getAttributes() const { return attributes; }
    /// Entries hosts add after registration (editor constructors, for one). Touch it during start-up only.
    UserData& getMutableUserData() { return mutableUserData; }
    const UserData& getMutableUserData() const { return mutableUserData; } ///< \overload

    /// The named values of an enumeration, in the order given; empty for other kinds.
    const Array<EnumerationValue>& getEnumerationValues() const { return enumerationValues; }
    /// The name of \p value; null when it is not a named value.
    const String* findEnumerationName(std::int64_t value) const;
    /// The value called \p name (case-sensitive); empty when there is none.
    Optional<std::int64_t> findEnumerationValue(StringView name) const;
    /// The class a reference type accepts; the root class "Entity" for every other kind.
    EntityClassInfo getAcceptedEntityClass() const;
    /// The element type of a list; null for other kinds.
    const SharedPtr<const TypeDefinition>& getElementType() const { return elementType; }
    /// The fields of a data object type; null for other kinds.
    const SharedPtr<const GroupLayout>& getLayout() const { return layout; }

    /// Default-constructs a value in uninitialised, aligned \p target.
    void construct(void* target) const { operations.construct(*this, target); }
    /// Copy-constructs \p source into uninitialised \p target.
    void copyConstruct(void* target, const void* source) const { operations.copyConstruct(*this, target, source); }
    /// Assigns \p source to the constructed \p target.
    void assign(void* target, const void* source) const { operations.assign(*this, target, source); }
    /// Destroys the value in \p target, leaving its memory to the caller.
    void destroy(void* target) const { operations.destroy(*this, target); }
    /// True when both values are equal (references by identity).
    bool equals(const void* a, const void* b) const { return operations.equals(*this, a, b); }
    /// The value's text form, which fromString() reads back.
    String toString(const void* value) const { return operations.toString(*this, value); }
    /// Parses `text` into `target`; on an error `target` keeps its value.
    Expected<void, String> fromString(StringView text, void* target) const;
    /// Writes the value under \p key; references are written as identities.
    void serialize(ISerializer& out, StringView key, const void* value) const { operations.serialize(*this, out, key, value); }
    /// Reads a value into `target`; on an error `target` keeps its value.
    Expected<void, String> deserialize(IDeserializer& in, StringView key, const EntityResolver& resolver, void* target) const;

    double toDouble(const void* value) const; ///< The number as a double; an Exception for types that are not numbers.
    /// The number as an integer, floating point rounded to nearest; an Exception for types that are not numbers.
    std::int64_t toInt64(const void* value) const;
    /// Stores \p value, rounded for integral types; an Exception for types that are not numbers.
    void fromDouble(void* target, double value) const;
    /// Stores \p value; an Exception for types that are not numbers.
    void fromInt64(void* target, std::int64_t value) const;

private:
    template <class T> static Operations nativeOperations();
    static SharedPtr<TypeDefinition> makeDataObjectType(String name, Optional<std::type_index> nativeType,
        Operations ops, SharedPtr<const GroupLayout> layout, UserData attributes, const Array<std::size_t>& offsets);

    String name;
    TypeKind kind;
    Optional<std::type_index> nativeType;
    Operations operations;
    UserData attributes;
    UserData mutableUserData;
    Array<EnumerationValue> enumerationValues;
    SharedPtr<const Detail::EntityClassData> acceptedEntityClass;
    SharedPtr<const TypeDefinition> elementType;
    SharedPtr<const GroupLayout> layout;
};

namespace Detail {
/// A list read from a stream reserves room for at most this many items up front, whatever count the stream claims.
inline constexpr std::size_t LIST_RESERVE_LIMIT = 1024;

/// Storage of a temporary value of a type known only at run time.
class MARLIXLIB_EXPORT ScratchValue
{
public:
    explicit ScratchValue(const TypeDefinition& type);
    ~ScratchValue();
    ScratchValue(const ScratchValue&) = delete;
    ScratchValue& operator=(const ScratchValue&) = delete;
    void* data() { return storage; }

private:
    // Most values fit here: reading a scene makes one per value read, which the heap made a large part of loading.
    static constexpr std::size_t LOCAL_SIZE = 128;
    bool isLocal() const { return storage == static_cast<const void*>(local); }

    const TypeDefinition& type;
    void* storage;
    alignas(std::max_align_t) std::byte local[LOCAL_SIZE];
};

MARLIXLIB_EXPORT String quoteForList(StringView text);
MARLIXLIB_EXPORT Expected<Array<String>, String> splitList(StringView text);
} // namespace Detail

template <class T> TypeDefinition::Operations TypeDefinition::nativeOperations()
{
    Operations ops;
    ops.size = sizeof(T);
    ops.alignment = alignof(T);
    ops.construct = [](const TypeDefinition&, void* target) { new (target) T(); };
    ops.copyConstruct = [](const TypeDefinition&, void* target, const void* source) {
        new (target) T(*static_cast<const T*>(source));
    };
    ops.assign = [](const TypeDefinition&, void* target, const void* source) {
        *static_cast<T*>(target) = *static_cast<const T*>(source);
    };
    ops.destroy = [](const TypeDefinition&, void* target) { static_cast<T*>(target)->~T(); };
    ops.equals = [](const TypeDefinition&, const void* a, const void* b) {
        return *static_cast<const T*>(a) == *static_cast<const T*>(b);
    };
    if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
        ops.isIntegral = !std::is_floating_point_v<T>;
        ops.toDouble = [](const void* value) { return static_cast<double>(*static_cast<const T*>(value)); };
        ops.toInt64 = [](const void* value) {
            if constexpr (std::is_floating_point_v<T>)
                return static_cast<std::int64_t>(std::llround(static_cast<double>(*static_cast<const T*>(value))));
            else
                return static_cast<std::int64_t>(*static_cast<const T*>(value));
        };
        ops.fromDouble = [](void* target, double value) {
            if constexpr (std::is_floating_point_v<T>)
                *static_cast<T*>(target) = static_cast<T>(value);
            else if constexpr (std::is_enum_v<T>)
                *static_cast<T*>(target) = static_cast<T>(std::llround(value));
            else
                *static_cast<T*>(target) = static_cast<T>(std::llround(value));
        };
        ops.fromInt64 = [](void* target, std::int64_t value) { *static_cast<T*>(target) = static_cast<T>(value); };
    }
    return ops;
}

template <class T> SharedPtr<TypeDefinition> TypeDefinition::makePlain(String name, UserData attributes)
{
    Operations ops = nativeOperations<T>();
    ops.toString = [](const TypeDefinition&, const void* value) {
        return ValueTraits<T>::toString(*static_cast<const T*>(value));
    };
    ops.fromString = [](const TypeDefinition&, StringView text, void* target) -> Expected<void, String> {
        auto parsed = ValueTraits<T>::fromString(text);
        if (!parsed)
            return Unexpected<String>(parsed.error());
        *static_cast<T*>(target) = std::move(*parsed);
        return {};
    };
    ops.serialize = [](const TypeDefinition&, ISerializer& out, StringView key, const void* value) {
        ValueTraits<T>::serialize(out, key, *static_cast<const T*>(value));
    };
    ops.deserialize = [](const TypeDefinition&, IDeserializer& in, StringView key, const EntityResolver&,
                          void* target) -> Expected<void, String> {
        auto read = ValueTraits<T>::deserialize(in, key);
        if (!read)
            return Unexpected<String>(read.error());
        *static_cast<T*>(target) = std::move(*read);
        return {};
    };
    return makeSharedPtr<TypeDefinition>(
        std::move(name), TypeKind::Plain, std::type_index(typeid(T)), ops, std::move(attributes));
}

template <class E>
SharedPtr<TypeDefinition> TypeDefinition::makeEnumeration(String name, Array<EnumerationValue> values, UserData attributes)
{
    static_assert(std::is_enum_v<E> || std::is_integral_v<E>, "an enumeration is stored as an enum or an integer");
    Operations ops = nativeOperations<E>();
    ops.toString = [](const TypeDefinition& type, const void* value) {
        const std::int64_t number = static_cast<std::int64_t>(*static_cast<const E*>(value));
        const String* found = type.findEnumerationName(number);
        return found ? *found : std::to_string(number);
    };
    ops.fromString = [](const TypeDefinition& type, StringView text, void* target) -> Expected<void, String> {
        if (const auto value = type.findEnumerationValue(text)) {
            *static_cast<E*>(target) = static_cast<E>(*value);
            return {};
        }
        return Unexpected<String>("\"" + String(text) + "\" is not a value of " + type.getName());
    };
    ops.serialize = [](const TypeDefinition&, ISerializer& out, StringView key, const void* value) {
        out.writeInt(key, static_cast<std::int64_t>(*static_cast<const E*>(value)));
    };
    ops.deserialize = [](const TypeDefinition& type, IDeserializer& in, StringView key, const EntityResolver&,
                          void* target) -> Expected<void, String> {
        const auto read = in.readInt(key);
        if (!read)
            return Unexpected<String>(read.error());
        if (!type.findEnumerationName(*read))
            return Unexpected<String>(std::to_string(*read) + " is not a value of " + type.getName());
        *static_cast<E*>(target) = static_cast<E>(*read);
        return {};
    };
    auto type = makeSharedPtr<TypeDefinition>(
        std::move(name), TypeKind::Enumeration, std::type_index(typeid(E)), ops, std::move(attributes));
    type->enumerationValues = std::move(values);
    return type;
}

template <class E>
SharedPtr<TypeDefinition> TypeDefinition::makeList(String name, SharedPtr<const TypeDefinition> element, UserData attributes)
{
    if (!element || !element->isNative<E>())
        throw std::invalid_argument("the element type of a list must have the native type of its elements");
    using List = Array<E>;
    Operations ops = nativeOperations<List>();
    ops.toString = [](const TypeDefinition& type, const void* value) {
        const List& list = *static_cast<const List*>(value);
        String text = "[";
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (i)
                text += ", ";
            text += Detail::quoteForList(type.getElementType()->toString(&list[i]));
        }
        return text + "]";
    };
    ops.fromString = [](const TypeDefinition& type, StringView text, void* target) -> Expected<void, String> {
        const auto items = Detail::splitList(text);
        if (!items)
            return Unexpected<String>(items.error());
        List list(items->size());
        for (std::size_t i = 0; i < list.size(); ++i) {
            auto parsed = type.getElementType()->fromString((*items)[i], &list[i]);
            if (!parsed)
                return parsed;
        }
        *static_cast<List*>(target) = std::move(list);
        return {};
    };
    ops.serialize = [](const TypeDefinition& type, ISerializer& out, StringView key, const void* value) {
        const List& list = *static_cast<const List*>(value);
        out.beginArray(key, list.size());
        for (const E& item : list)
            type.getElementType()->serialize(out, "item", &item);
        out.endArray();
    };
    ops.deserialize = [](const TypeDefinition& type, IDeserializer& in, StringView key, const EntityResolver& resolver,
                          void* target) -> Expected<void, String> {
        const auto count = in.enterArray(key);
        if (!count)
            return Unexpected<String>(count.error());
        // Read into the target's own storage: a new entity's default list already has room, and the caller reads
        // into a copy whenever a failed read must leave its value alone. The count only sizes what the stream holds.
        auto& list = *static_cast<List*>(target);
        list.clear();
        list.reserve(std::min<std::size_t>(*count, Detail::LIST_RESERVE_LIMIT));
        const TypeDefinition& elementType = *type.getElementType();
        for (std::size_t i = 0; i < *count; ++i) {
            E item {};
            if (auto read = elementType.getOperations().deserialize(elementType, in, "item", resolver, &item); !read) {
                in.leaveArray();
                return read;
            }
            list.push_back(std::move(item));
        }
        in.leaveArray();
        return {};
    };
    auto type = makeSharedPtr<TypeDefinition>(
        std::move(name), TypeKind::List, std::type_index(typeid(List)), ops, std::move(attributes));
    type->elementType = std::move(element);
    return type;
}

} // namespace Marlix
