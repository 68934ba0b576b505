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
    /// An empty record for the module \p moduleName, the name it is registered under.
    explicit TypeModuleRecord(String moduleName);

    const String& getModuleName() const { return moduleName; } ///< The name the module registers under.
    /// Adds \p type and returns the record for chaining; an Exception for an empty type.
    TypeModuleRecord& addType(SharedPtr<TypeDefinition> type);
    /// Adds \p entityClass and returns the record for chaining.
    TypeModuleRecord& addEntityClass(EntityClassInfo entityClass);
    const Array<SharedPtr<TypeDefinition>>& getTypes() const { return types; } ///< The types in the order added.
    /// The entity classes in the order added.
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
    static TypeDatabase& instance(); ///< The one database of the process, made on first use.

    /// Registers every type and class of the record, or none: a module registered twice, or a name or native type
    /// that is already taken, is an Exception and changes nothing.
    void registerModuleTypes(const TypeModuleRecord& record);
    /// Removes what the record registered. An Exception when the module is not registered.
    void unregisterModuleTypes(const TypeModuleRecord& record);
    bool isModuleRegistered(StringView moduleName) const; ///< True while a module of that name is registered.

    /// The type registered for the C++ type `T`; null when none is.
    template <class T> SharedPtr<TypeDefinition> lookupNativeTypeDefinition() const
    {
        return lookupNativeTypeDefinition(std::type_index(typeid(T)));
    }
    SharedPtr<TypeDefinition> lookupNativeTypeDefinition(std::type_index type) const; ///< \overload
    /// The type registered under \p name; null when none is.
    SharedPtr<TypeDefinition> lookupTypeDefinition(StringView name) const;
    /// The class registered under \p name, or the root class for "Entity"; empty when none is.
    Optional<EntityClassInfo> lookupEntityClass(StringView name) const;
    /// Every registered class that `base` is a base class of (itself included).
    Array<EntityClassInfo> getDerivedEntityClasses(const EntityClassInfo& base) const;

    TypeDatabase(const TypeDatabase&) = delete; ///< Not copyable: there is only one.
    TypeDatabase& operator=(const TypeDatabase&) = delete; ///< Not assignable.

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
