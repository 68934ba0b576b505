#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/data/UserData.h>

#include <cstddef>

namespace Marlix {

class Entity;
class EntityClassInfo;
class GroupLayout;
class PropertyDefinition;

namespace Detail {
/// Where each group of a data object lives in its storage block; shared by all objects of one class.
struct ObjectLayout
{
    struct Segment
    {
        SharedPtr<const GroupLayout> layout;
        std::size_t offset = 0;
        std::uint32_t firstIndex = 0;
    };
    /// One property of the object: its definition and where its value lives in the storage block.
    struct Slot
    {
        const PropertyDefinition* definition = nullptr;
        std::size_t offset = 0;
    };
    Array<Segment> segments;
    /// Every property in index order, so that each write finds its property in one step.
    Array<Slot> slots;
    std::size_t size = 0;
    std::size_t alignment = 1;
    std::uint32_t propertyCount = 0;

    static SharedPtr<const ObjectLayout> make(ArrayView<const SharedPtr<const GroupLayout>> layouts);
};

class EntityClassData
{
public:
    String name;
    SharedPtr<const EntityClassData> base;
    Array<SharedPtr<const GroupLayout>> layouts;
    Array<SharedPtr<const GroupLayout>> allLayouts;
    SharedPtr<const ObjectLayout> objectLayout;
    Function<SharedPtr<Entity>(const EntityClassInfo&)> factory;
    UserData attributes;
};
} // namespace Detail

/// An entity class: its name, base class, data groups and factory. A cheap value handle: copies name the same class.
class MARLIXLIB_EXPORT EntityClassInfo
{
public:
    /// Makes a new entity of the given class; it must return one whose getClassInfo() is that class.
    using Factory = Function<SharedPtr<Entity>(const EntityClassInfo&)>;

    /// The root class "Entity", without properties.
    EntityClassInfo();
    /// `layouts` are this class's own groups; the base's groups come first in every object.
    EntityClassInfo(String name, const EntityClassInfo& base, Array<SharedPtr<const GroupLayout>> layouts, Factory factory,
        UserData attributes = {});

    /// The root class "Entity" that every class derives from; made on first use.
    static const EntityClassInfo& entityClass();

    /// The class name, under which it is registered and serialized.
    const String& getName() const { return data->name; }
    /// The base class; empty for the root class.
    Optional<EntityClassInfo> getBaseClass() const;
    /// This class's own groups.
    const Array<SharedPtr<const GroupLayout>>& getLayouts() const { return data->layouts; }
    /// The groups of the base classes first, then this class's own.
    const Array<SharedPtr<const GroupLayout>>& getAllLayouts() const { return data->allLayouts; }
    /// Free-form attributes given at registration, such as the UI flags that hide a class.
    const UserData& getAttributes() const { return data->attributes; }
    /// True for this class and every class derived from it.
    bool isBaseClassOf(const EntityClassInfo& other) const;
    /// False for abstract classes, which have no factory.
    bool canCreate() const { return static_cast<bool>(data->factory); }
    /// A new entity of this class with default values; an Exception for abstract classes.
    SharedPtr<Entity> create() const;

    /// True when both name the very same registration, not merely the same name.
    bool operator==(const EntityClassInfo& other) const { return data == other.data; }
    /// Where each property lives in an object of this class; shared by all of them.
    const SharedPtr<const Detail::ObjectLayout>& getObjectLayout() const { return data->objectLayout; }
    /// The shared registration record this handle names.
    const SharedPtr<const Detail::EntityClassData>& getData() const { return data; }
    /// Names an existing record; a null record stops the process.
    explicit EntityClassInfo(SharedPtr<const Detail::EntityClassData> data);

private:
    SharedPtr<const Detail::EntityClassData> data;
};

} // namespace Marlix
