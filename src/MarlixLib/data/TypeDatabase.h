#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/data/EntityClassInfo.h>
#include <MarlixLib/data/TypeDefinition.h>

#include <shared_mutex>
#include <typeindex>
#include <unordered_map>

namespace Marlix {

/// The types and entity classes one module (the core, a widget library, a plug-in) brings to the type database.
/// They are registered and unregistered together, so a module can come and go.
class MARLIXLIB_EXPORT TypeModuleRecord
{
public:
    explicit TypeModuleRecord(String moduleName);

    const String& getModuleName() const { return moduleName; }
    TypeModuleRecord& addType(SharedPtr<TypeDefinition> type);
    TypeModuleRecord& addEntityClass(EntityClassInfo entityClass);
    const Array<SharedPtr<TypeDefinition>>& getTypes() const { return types; }
    const Array<EntityClassInfo>& getEntityClasses() const { return entityClasses; }

private:
    String moduleName;
    Array<SharedPtr<TypeDefinition>> types;
    Array<EntityClassInfo> entityClasses;
};

/// The process-wide registry of value types and entity classes. Safe to use from any thread.
class MARLIXLIB_EXPORT TypeDatabase
{
public:
    static TypeDatabase& instance();

    /// Registers every type and class of the record, or none: a module registered twice, or a name or native type
    /// that is already taken, is an Exception and changes nothing.
    void registerModuleTypes(const TypeModuleRecord& record);
    /// Removes what the record registered. An Exception when the module is not registered.
    void unregisterModuleTypes(const TypeModuleRecord& record);
    bool isModuleRegistered(StringView moduleName) const;

    template <class T> SharedPtr<TypeDefinition> lookupNativeTypeDefinition() const
    {
        return lookupNativeTypeDefinition(std::type_index(typeid(T)));
    }
    SharedPtr<TypeDefinition> lookupNativeTypeDefinition(std::type_index type) const;
    SharedPtr<TypeDefinition> lookupTypeDefinition(StringView name) const;
    Optional<EntityClassInfo> lookupEntityClass(StringView name) const;
    /// Every registered class that `base` is a base class of (itself included).
    Array<EntityClassInfo> getDerivedEntityClasses(const EntityClassInfo& base) const;

    TypeDatabase(const TypeDatabase&) = delete;
    TypeDatabase& operator=(const TypeDatabase&) = delete;

private:
    TypeDatabase() = default;

    mutable std::shared_mutex mutex;
    FlatMap<String, SharedPtr<TypeDefinition>> typesByName;
    std::unordered_map<std::type_index, SharedPtr<TypeDefinition>> typesByNative;
    FlatMap<String, EntityClassInfo> classesByName;
    // Per module: the names of its types and of its entity classes.
    FlatMap<String, std::pair<Array<String>, Array<String>>> moduleContents;
};

} // namespace Marlix
