#include <MarlixLib/data/TypeDatabase.h>

#include <MarlixLib/base/Exception.h>
#include <MarlixLib/base/FlatSet.h>

#include <mutex>

namespace Marlix {

TypeModuleRecord::TypeModuleRecord(String moduleName)
    : moduleName(std::move(moduleName))
{
}

TypeModuleRecord& TypeModuleRecord::addType(SharedPtr<TypeDefinition> type)
{
    if (!type)
        throw Exception("The module " + moduleName + " was given an empty type");
    types.push_back(std::move(type));
    return *this;
}

TypeModuleRecord& TypeModuleRecord::addEntityClass(EntityClassInfo entityClass)
{
    entityClasses.push_back(std::move(entityClass));
    return *this;
}

TypeDatabase& TypeDatabase::instance()
{
    static TypeDatabase database;
    return database;
}

void TypeDatabase::registerModuleTypes(const TypeModuleRecord& record)
{
    std::unique_lock lock(mutex);
    const String& module = record.getModuleName();
    if (moduleContents.contains(module))
        throw Exception("The types of module " + module + " are already registered");
    // Check everything first, so that a clash registers nothing.
    FlatSet<String> names;
    FlatSet<std::type_index> natives;
    for (const auto& type : record.getTypes()) {
        if (typesByName.contains(type->getName()) || !names.insert(type->getName()).second)
            throw Exception("Module " + module + " registers the type name \"" + type->getName() + "\" that is already taken");
        if (const auto& native = type->getNativeType()) {
            if (typesByNative.contains(*native) || !natives.insert(*native).second)
                throw Exception("Module " + module + " registers a second type for the native type of \"" + type->getName() + "\"");
        }
    }
    FlatSet<String> classNames;
    for (const auto& entityClass : record.getEntityClasses())
        if (classesByName.contains(entityClass.getName()) || !classNames.insert(entityClass.getName()).second)
            throw Exception("Module " + module + " registers the entity class \"" + entityClass.getName() + "\" that is already taken");

    auto& contents = moduleContents[module];
    for (const auto& type : record.getTypes()) {
        typesByName.insertOrAssign(type->getName(), type);
        if (const auto& native = type->getNativeType())
            typesByNative.emplace(*native, type);
        contents.first.push_back(type->getName());
    }
    for (const auto& entityClass : record.getEntityClasses()) {
        classesByName.insertOrAssign(entityClass.getName(), entityClass);
        contents.second.push_back(entityClass.getName());
    }
}

void TypeDatabase::unregisterModuleTypes(const TypeModuleRecord& record)
{
    std::unique_lock lock(mutex);
    const auto* contents = moduleContents.get(record.getModuleName());
    if (!contents)
        throw Exception("The types of module " + record.getModuleName() + " are not registered");
    for (const String& name : contents->first) {
        if (const auto* type = typesByName.get(name)) {
            if (const auto& native = (*type)->getNativeType())
                typesByNative.erase(*native);
            typesByName.erase(name);
        }
    }
    for (const String& name : contents->second)
        classesByName.erase(name);
    moduleContents.erase(record.getModuleName());
}

bool TypeDatabase::isModuleRegistered(StringView moduleName) const
{
    std::shared_lock lock(mutex);
    return moduleContents.contains(moduleName);
}

SharedPtr<TypeDefinition> TypeDatabase::lookupNativeTypeDefinition(std::type_index type) const
{
    std::shared_lock lock(mutex);
    const auto it = typesByNative.find(type);
    return it == typesByNative.end() ? nullptr : it->second;
}

SharedPtr<TypeDefinition> TypeDatabase::lookupTypeDefinition(StringView name) const
{
    std::shared_lock lock(mutex);
    const auto* found = typesByName.get(name);
    return found ? *found : nullptr;
}

Optional<EntityClassInfo> TypeDatabase::lookupEntityClass(StringView name) const
{
    std::shared_lock lock(mutex);
    if (name == EntityClassInfo::entityClass().getName())
        return EntityClassInfo::entityClass();
    const auto* found = classesByName.get(name);
    return found ? Optional<EntityClassInfo>(*found) : std::nullopt;
}

Array<EntityClassInfo> TypeDatabase::getDerivedEntityClasses(const EntityClassInfo& base) const
{
    std::shared_lock lock(mutex);
    Array<EntityClassInfo> result;
    if (base == EntityClassInfo::entityClass())
        result.push_back(base);
    for (const auto& [name, entityClass] : classesByName)
        if (base.isBaseClassOf(entityClass))
            result.push_back(entityClass);
    return result;
}

} // namespace Marlix
