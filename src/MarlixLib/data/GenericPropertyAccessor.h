#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/data/Entity.h>

namespace Marlix {

/// One property path on one or more entities: a multi-selection edits all of them at once. The path is resolved once
/// per object when the accessor is made, so reads and writes through it do not look it up again.
class MARLIXLIB_EXPORT GenericPropertyAccessor
{
public:
    /// The text form shown when the addressed objects hold different values.
    static constexpr StringView MIXED_VALUES_TEXT = "<different values>";

    /// An empty accessor that addresses nothing; only isEmpty() and comparison are meaningful on it.
    GenericPropertyAccessor() = default;
    /// \p path on one entity; an Exception for an empty holder. The path may not resolve (see checkProperty()).
    GenericPropertyAccessor(EntityHolder<Entity> object, String path);
    /// An Exception when `objects` is empty or holds an empty holder.
    GenericPropertyAccessor(Array<EntityHolder<Entity>> objects, String path);

    /// The addressed entities, in the order given; the accessor keeps them alive.
    const Array<EntityHolder<Entity>>& getObjects() const { return objects; }
    const String& getPath() const { return path; } ///< The dotted property path, the same on every object.
    /// The path resolved on object `index`; it may not resolve there.
    const GenericPropertyHandle& getHandle(std::size_t index) const { return handles[index]; }
    bool isEmpty() const { return objects.empty(); } ///< True only for a default-constructed accessor.
    /// True when the path names a property of the objects themselves, not a field of a nested data object.
    bool isRootProperty() const { return path.find('.') == String::npos; }
    /// The worst status over all objects: a path that does not resolve on one of them does not resolve.
    PropertyPathStatus checkProperty() const;

    /// The definition of the addressed property (of the first object); an Exception when the path does not resolve.
    const PropertyDefinition& getDefinition() const;
    /// The first object's property (read-only); its parent object is the first object.
    GenericProperty getProperty() const;
    /// The text form of the value, or MIXED_VALUES_TEXT when the objects disagree.
    String toString() const;
    /// True when every object holds an equal value of the same type; an Exception when the path does not resolve.
    bool hasSameValues() const;

    /// Writes `value` to every object, each through mutateProperty. The type is checked on every object first, so
    /// a mismatch throws before anything changed.
    template <class T> void setValue(const T& value) const
    {
        // A single object needs no check of its own: its write checks the type before it changes anything.
        if (objects.size() != 1)
            checkWritableAs(std::type_index(typeid(T)));
        for (std::size_t i = 0; i < objects.size(); ++i)
            objects[i]->mutateProperty(handles[i], [&](GenericProperty& property) { property.set(value); });
    }
    /// \overload
    /// Type-erased: every object's property must hold the value's type (by name), checked before anything changes.
    void setValue(const Value& value) const;
    /// Parses once and writes the result to every object; a parse error changes nothing.
    Expected<void, String> setFromString(StringView text) const;
    /// Calls `writer` on every object's property through mutateProperty.
    template <class Writer> void mutate(Writer&& writer) const
    {
        for (std::size_t i = 0; i < objects.size(); ++i)
            objects[i]->mutateProperty(handles[i], [&](GenericProperty& property) { writer(property); });
    }

    /// Observes the property on every object; the lifetimes end together with the owner.
    void addObserver(CallbacksOwner& owner, Function<void(const ObservedProperty&)> observer) const;

    /// Equal when both address the same entities in the same order with the same path.
    bool operator==(const GenericPropertyAccessor& other) const { return objects == other.objects && path == other.path; }

private:
    void checkWritableAs(std::type_index type) const;

    Array<EntityHolder<Entity>> objects;
    String path;
    Array<GenericPropertyHandle> handles; // one per object
};

} // namespace Marlix
