#include <MarlixLib/data/TypeDefinition.h>

#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLib/data/EntityClassInfo.h>
#include <MarlixLib/data/GroupLayout.h>

namespace Marlix {

TypeDefinition::TypeDefinition(
    String name, TypeKind kind, Optional<std::type_index> nativeType, const Operations& operations, UserData attributes)
    : name(std::move(name))
    , kind(kind)
    , nativeType(nativeType)
    , operations(operations)
    , attributes(std::move(attributes))
{
    if (!operations.construct || !operations.copyConstruct || !operations.assign || !operations.destroy
        || !operations.equals || !operations.toString || !operations.fromString || !operations.serialize
        || !operations.deserialize || operations.size == 0)
        Detail::throwStopException("data/TypeDefinition", __LINE__);
}

const String* TypeDefinition::findEnumerationName(std::int64_t value) const
{
    for (const EnumerationValue& entry : enumerationValues)
        if (entry.value == value)
            return &entry.name;
    return nullptr;
}

Optional<std::int64_t> TypeDefinition::findEnumerationValue(StringView name) const
{
    for (const EnumerationValue& entry : enumerationValues)
        if (entry.name == name)
            return entry.value;
    return std::nullopt;
}

EntityClassInfo TypeDefinition::getAcceptedEntityClass() const
{
    return acceptedEntityClass ? EntityClassInfo(acceptedEntityClass) : EntityClassInfo::entityClass();
}

Expected<void, String> TypeDefinition::fromString(StringView text, void* target) const
{
    Detail::ScratchValue scratch(*this);
    auto parsed = operations.fromString(*this, text, scratch.data());
    if (parsed)
        assign(target, scratch.data());
    return parsed;
}

Expected<void, String> TypeDefinition::deserialize(
    IDeserializer& in, StringView key, const EntityResolver& resolver, void* target) const
{
    Detail::ScratchValue scratch(*this);
    auto read = operations.deserialize(*this, in, key, resolver, scratch.data());
    if (read)
        assign(target, scratch.data());
    return read;
}

double TypeDefinition::toDouble(const void* value) const
{
    if (!operations.toDouble)
        throw Exception("Values of " + name + " are not numbers");
    return operations.toDouble(value);
}

std::int64_t TypeDefinition::toInt64(const void* value) const
{
    if (!operations.toInt64)
        throw Exception("Values of " + name + " are not numbers");
    return operations.toInt64(value);
}

void TypeDefinition::fromDouble(void* target, double value) const
{
    if (!operations.fromDouble)
        throw Exception("Values of " + name + " are not numbers");
    operations.fromDouble(target, value);
}

void TypeDefinition::fromInt64(void* target, std::int64_t value) const
{
    if (!operations.fromInt64)
        throw Exception("Values of " + name + " are not numbers");
    operations.fromInt64(target, value);
}

SharedPtr<TypeDefinition> TypeDefinition::makeEntityReference(String name, const EntityClassInfo& accepted, UserData attributes)
{
    using Holder = EntityHolder<Entity>;
    Operations ops = nativeOperations<Holder>();
    ops.toString = [](const TypeDefinition&, const void* value) -> String {
        const Holder& entity = *static_cast<const Holder*>(value);
        return entity ? entity->getClassInfo().getName() + " #" + std::to_string(entity->getId()) : String("None");
    };
    ops.fromString = [](const TypeDefinition& type, StringView text, void* target) -> Expected<void, String> {
        if (text == "None" || text.empty()) {
            *static_cast<Holder*>(target) = nullptr;
            return {};
        }
        return Unexpected<String>("A reference to " + type.getAcceptedEntityClass().getName()
            + " is chosen from the scene, not typed (\"" + String(text) + "\")");
    };
    ops.serialize = [](const TypeDefinition&, ISerializer& out, StringView key, const void* value) {
        const Holder& entity = *static_cast<const Holder*>(value);
        out.writeEntityReference(key, entity ? entity->getId() : 0);
    };
    ops.deserialize = [](const TypeDefinition& type, IDeserializer& in, StringView key, const EntityResolver& resolver,
                          void* target) -> Expected<void, String> {
        const auto id = in.readEntityReference(key);
        if (!id)
            return Unexpected<String>(id.error());
        if (*id == 0) {
            *static_cast<Holder*>(target) = nullptr;
            return {};
        }
        if (!resolver)
            return Unexpected<String>("No entity table to resolve the reference \"" + String(key) + "\"");
        auto entity = resolver(*id);
        if (!entity)
            return Unexpected<String>(entity.error());
        if (!*entity || !type.getAcceptedEntityClass().isBaseClassOf((*entity)->getClassInfo()))
            return Unexpected<String>("The reference \"" + String(key) + "\" names an entity that is not a "
                + type.getAcceptedEntityClass().getName());
        *static_cast<Holder*>(target) = std::move(*entity);
        return {};
    };
    auto type = makeSharedPtr<TypeDefinition>(
        std::move(name), TypeKind::EntityReference, std::type_index(typeid(Holder)), ops, std::move(attributes));
    type->acceptedEntityClass = accepted.getData();
    return type;
}

SharedPtr<TypeDefinition> TypeDefinition::makeDataObject(String name, SharedPtr<const GroupLayout> layout, UserData attributes)
{
    if (!layout)
        throw std::invalid_argument("a data object type needs a layout");
    Operations ops;
    ops.size = std::max<std::size_t>(layout->getStorageSize(), 1);
    ops.alignment = layout->getStorageAlignment();
    ops.construct = [](const TypeDefinition& type, void* target) { type.getLayout()->constructStorage(target); };
    ops.copyConstruct = [](const TypeDefinition& type, void* target, const void* source) {
        type.getLayout()->copyConstructStorage(target, source);
    };
    ops.assign = [](const TypeDefinition& type, void* target, const void* source) {
        type.getLayout()->assignStorage(target, source);
    };
    ops.destroy = [](const TypeDefinition& type, void* target) { type.getLayout()->destroyStorage(target); };
    ops.equals = [](const TypeDefinition& type, const void* a, const void* b) {
        return type.getLayout()->equalStorage(a, b);
    };
    return makeDataObjectType(std::move(name), std::nullopt, ops, std::move(layout), std::move(attributes), {});
}

SharedPtr<TypeDefinition> TypeDefinition::makeDataObjectType(String name, Optional<std::type_index> nativeType,
    Operations ops, SharedPtr<const GroupLayout> layout, UserData attributes, const Array<std::size_t>& offsets)
{
    if (!layout)
        throw std::invalid_argument("a data object type needs a layout");
    if (nativeType) {
        // The fields are reached through the layout's offsets, so they must be the native struct's.
        const auto properties = layout->getProperties();
        if (offsets.size() != properties.size() || layout->getStorageSize() > ops.size)
            Detail::throwStopException("data/TypeDefinition", __LINE__);
        for (std::size_t i = 0; i < offsets.size(); ++i)
            if (properties[i].getOffset() != offsets[i])
                Detail::throwStopException("data/TypeDefinition", __LINE__);
    }
    ops.toString = [](const TypeDefinition& type, const void* value) {
        String text = "{";
        bool first = true;
        for (const PropertyDefinition& property : type.getLayout()->getProperties()) {
            if (!first)
                text += ", ";
            first = false;
            text += property.getName() + ": "
                + property.getTypeDefinition().toString(static_cast<const std::byte*>(value) + property.getOffset());
        }
        return text + "}";
    };
    ops.fromString = [](const TypeDefinition& type, StringView text, void* target) -> Expected<void, String> {
        if (text.size() < 2 || text.front() != '{' || text.back() != '}')
            return Unexpected<String>(String("\"").append(text).append("\" is not a ").append(type.getName()).append(
                " (expected {name: value, ...})"));
        const auto items = Detail::splitList(String("[") + String(text.substr(1, text.size() - 2)) + "]");
        if (!items)
            return Unexpected<String>(items.error());
        const GroupLayout& layout = *type.getLayout();
        if (items->size() != layout.getProperties().size())
            return Unexpected<String>(
                String("\"").append(text).append("\" does not give every field of ").append(type.getName()));
        for (std::size_t i = 0; i < items->size(); ++i) {
            const PropertyDefinition& property = layout.getProperties()[i];
            const String& item = (*items)[i];
            const String prefix = property.getName() + ":";
            if (item.rfind(prefix, 0) != 0)
                return Unexpected<String>("Expected the field " + property.getName() + " in \"" + String(text) + "\"");
            StringView valueText = StringView(item).substr(prefix.size());
            while (!valueText.empty() && valueText.front() == ' ')
                valueText.remove_prefix(1);
            if (auto parsed = property.getTypeDefinition().fromString(valueText, static_cast<std::byte*>(target) + property.getOffset());
                !parsed)
                return parsed;
        }
        return {};
    };
    ops.serialize = [](const TypeDefinition& type, ISerializer& out, StringView key, const void* value) {
        out.beginRecord(key);
        for (const PropertyDefinition& property : type.getLayout()->getProperties())
            property.getTypeDefinition().serialize(
                out, property.getName(), static_cast<const std::byte*>(value) + property.getOffset());
        out.endRecord();
    };
    ops.deserialize = [](const TypeDefinition& type, IDeserializer& in, StringView key, const EntityResolver& resolver,
                          void* target) -> Expected<void, String> {
        if (auto entered = in.enterRecord(key); !entered)
            return entered;
        // Each field straight into its place: a failed read leaves `target` changed, which this operation may, since
        // deserialize() reads into a copy first.
        for (const PropertyDefinition& property : type.getLayout()->getProperties()) {
            const TypeDefinition& field = property.getTypeDefinition();
            auto read = field.getOperations().deserialize(
                field, in, property.getName(), resolver, static_cast<std::byte*>(target) + property.getOffset());
            if (!read) {
                in.leaveRecord();
                return read;
            }
        }
        in.leaveRecord();
        return {};
    };
    auto type = makeSharedPtr<TypeDefinition>(std::move(name), TypeKind::DataObject, nativeType, ops, std::move(attributes));
    type->layout = std::move(layout);
    return type;
}

Detail::ScratchValue::ScratchValue(const TypeDefinition& type)
    : type(type)
    , storage(type.getSize() <= LOCAL_SIZE && type.getAlignment() <= alignof(std::max_align_t)
              ? static_cast<void*>(local)
              : ::operator new(type.getSize(), std::align_val_t(type.getAlignment())))
{
    try {
        type.construct(storage);
    } catch (...) {
        if (!isLocal())
            ::operator delete(storage, std::align_val_t(type.getAlignment()));
        throw;
    }
}

Detail::ScratchValue::~ScratchValue()
{
    type.destroy(storage);
    if (!isLocal())
        ::operator delete(storage, std::align_val_t(type.getAlignment()));
}

String Detail::quoteForList(StringView text)
{
    const bool needsQuotes = text.empty() || text.find_first_of(",[]{}\"") != StringView::npos || text.front() == ' '
        || text.back() == ' ';
    if (!needsQuotes)
        return String(text);
    String quoted = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    return quoted + "\"";
}

Expected<Array<String>, String> Detail::splitList(StringView text)
{
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    if (text.size() < 2 || text.front() != '[' || text.back() != ']')
        return Unexpected<String>(String("\"").append(text).append("\" is not a list (expected [a, b, ...])"));
    text = text.substr(1, text.size() - 2);
    Array<String> items;
    String current;
    bool inQuotes = false;
    bool wasQuoted = false;
    int depth = 0;
    bool any = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        any = true;
        if (inQuotes) {
            if (c == '\\' && i + 1 < text.size())
                current += text[++i];
            else if (c == '"')
                inQuotes = false;
            else
                current += c;
            continue;
        }
        if (c == '"' && depth == 0 && current.find_first_not_of(' ') == String::npos) {
            current.clear();
            inQuotes = true;
            wasQuoted = true;
        } else if (c == '[' || c == '{') {
            ++depth;
            current += c;
        } else if (c == ']' || c == '}') {
            --depth;
            current += c;
        } else if (c == ',' && depth == 0) {
            if (!wasQuoted) {
                const auto first = current.find_first_not_of(' ');
                current = first == String::npos ? String() : current.substr(first, current.find_last_not_of(' ') - first + 1);
            }
            items.push_back(std::move(current));
            current.clear();
            wasQuoted = false;
        } else if (!(wasQuoted && c == ' ')) {
            current += c;
        }
    }
    if (inQuotes || depth != 0)
        return Unexpected<String>(String("\"").append(text).append("\" has unbalanced quotes or brackets"));
    if (any) {
        if (!wasQuoted) {
            const auto first = current.find_first_not_of(' ');
            current = first == String::npos ? String() : current.substr(first, current.find_last_not_of(' ') - first + 1);
        }
        items.push_back(std::move(current));
    }
    return items;
}

} // namespace Marlix
