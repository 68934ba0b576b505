#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/data/EntityClassInfo.h>
#include <MarlixLib/data/GenericProperty.h>
#include <MarlixLib/data/GenericPropertyHandle.h>
#include <MarlixLib/data/GroupLayout.h>

#include <memory>
#include <type_traits>

namespace Marlix {

namespace Detail {
struct ObserverTable;
struct ResolvedProperty
{
    const PropertyDefinition* definition = nullptr;
    void* storage = nullptr;
    std::uint32_t rootIndex = 0;
    PropertyPathStatus status = PropertyPathStatus::DoesNotResolve;
};
} // namespace Detail

/// One value per property of its groups, in one storage block. Values change only through mutateProperty, which
/// records the old value in the undo action open on this thread, writes, and then tells the observers. Observer
/// storage exists only once somebody observes, so an unobserved object costs its values and a few pointers.
class MARLIXLIB_EXPORT GenericDataObject : public std::enable_shared_from_this<GenericDataObject>
{
public:
    /// An object of one group, every property at its default value.
    explicit GenericDataObject(SharedPtr<const GroupLayout> layout);
    /// An object of the groups of \p layout (an entity class's), every property at its default; null stops the process.
    explicit GenericDataObject(SharedPtr<const Detail::ObjectLayout> layout);
    /// Not copyable: observers and undo records refer to the object itself.
    GenericDataObject(const GenericDataObject&) = delete;
    /// Not assignable; change values through mutateProperty().
    GenericDataObject& operator=(const GenericDataObject&) = delete;
    virtual ~GenericDataObject(); ///< Destroys the values; observers are not told.

    /// The groups in storage order: base classes' groups first.
    Array<SharedPtr<const GroupLayout>> getGroupLayouts() const;
    /// The number of root properties over all groups; valid indices are 0 to this minus one.
    std::uint32_t getPropertyCount() const { return layout->propertyCount; }
    /// The definition of root property \p index; an Exception when it is out of range.
    const PropertyDefinition& getPropertyDefinition(std::uint32_t index) const;
    /// A read-only view of a root property.
    GenericProperty getProperty(std::uint32_t index) const;
    /// A read-only view of the property at `path`; an Exception when the path does not resolve.
    GenericProperty getProperty(StringView path) const;
    /// The index of the root property called \p name; -1 when there is none.
    int indexOfProperty(StringView name) const;

    /// How \p path resolves on this object, without throwing.
    PropertyPathStatus checkPropertyPath(StringView path) const;
    /// `path` resolved once, for this object and every object of its layout; check isResolved() on the result.
    GenericPropertyHandle resolveHandle(StringView path) const;
    /// A read-only view of the property of `handle`; an Exception when the handle does not resolve on this object.
    GenericProperty getProperty(const GenericPropertyHandle& handle) const;

    /// Calls `reader` with the property at `path` and returns what it returns; an Exception when the path does not
    /// resolve.
    template <class Reader> decltype(auto) visitProperty(StringView path, Reader&& reader) const
    {
        const Detail::ResolvedProperty resolved = resolveOrThrow(path);
        const GenericProperty property(const_cast<GenericDataObject&>(*this), *resolved.definition, resolved.storage,
            resolved.rootIndex, false);
        return std::forward<Reader>(reader)(property);
    }
    /// The same through a handle: no path lookup. An Exception when the handle does not resolve on this object.
    template <class Reader> decltype(auto) visitProperty(const GenericPropertyHandle& handle, Reader&& reader) const
    {
        const GenericProperty property = getProperty(handle);
        return std::forward<Reader>(reader)(property);
    }

    /// The one way to change a value: records the old value of the root property in the open undo action, calls
    /// `writer` with the writable property, then tells the observers. When `writer` throws, nobody is told.
    template <class Writer> decltype(auto) mutateProperty(StringView path, Writer&& writer)
    {
        const Detail::ResolvedProperty resolved = resolveOrThrow(path);
        return mutateResolved(
            *resolved.definition, resolved.storage, resolved.rootIndex, path, std::forward<Writer>(writer));
    }
    /// The same through a handle: no path lookup. An Exception when the handle does not resolve on this object.
    template <class Writer> decltype(auto) mutateProperty(const GenericPropertyHandle& handle, Writer&& writer)
    {
        void* value = valueOf(handle);
        return mutateResolved(*handle.definition, value, handle.rootIndex, handle.path, std::forward<Writer>(writer));
    }

    /// Shorthand for a mutation that stores one value of exactly the property's type.
    template <class T> void setPropertyValue(StringView path, const T& value)
    {
        mutateProperty(path, [&](GenericProperty& property) { property.set(value); });
    }
    /// The value at \p path; an Exception when the path does not resolve or the value is not a `T`.
    template <class T> const T& getPropertyValue(StringView path) const { return getProperty(path).get<T>(); }

    /// Called after a change of any property of this object.
    CallbackLifetime addObserver(Function<void(const ObservedProperty&)> observer);
    /// Called after a change of root property \p index or anything nested in it; an Exception when it is out of range.
    CallbackLifetime addPropertyObserver(std::uint32_t index, Function<void(const ObservedProperty&)> observer);
    /// False until the first observer is added: unobserved objects carry no observer storage.
    bool hasObserverStorage() const { return observers != nullptr; }
    /// True when a change of root property \p index would reach an observer (its own or the object's).
    bool isPropertyObserved(std::uint32_t index) const;

    /// True when both objects have the same groups and equal values (references compare by identity).
    bool hasEqualValues(const GenericDataObject& other) const;
    /// The shared layout; objects with the same one accept each other's handles.
    const SharedPtr<const Detail::ObjectLayout>& getObjectLayout() const { return layout; }

    /// Writes a root property's value without recording it, then tells the observers. Undo and loading use it.
    void restoreProperty(std::uint32_t index, const void* value);
    /// The raw storage of root property \p index, of its definition's type; an Exception when it is out of range.
    const void* getPropertyData(std::uint32_t index) const;

    /// The raw resolution of \p path that the accessors share; prefer resolveHandle(), which keeps the layout alive.
    Detail::ResolvedProperty resolve(StringView path) const;

protected:
    /// Copies every value of \p other, of the same groups, without recording or notifying; used to clone.
    void copyValuesFrom(const GenericDataObject& other);

private:
    friend class SceneSerializer;
    /// Loading fills objects nobody sees yet, so it writes without recording or notifying.
    void* mutablePropertyData(std::uint32_t index) { return storage + locate(index).second; }
    Detail::ResolvedProperty resolveOrThrow(StringView path) const;
    void* valueOf(const GenericPropertyHandle& handle) const
    {
        if (handle.layout != layout || !handle.isResolved()) [[unlikely]]
            throwUnusableHandle(handle);
        return storage + handle.offset;
    }
    [[noreturn]] void throwUnusableHandle(const GenericPropertyHandle& handle) const;

    template <class Writer>
    decltype(auto) mutateResolved(
        const PropertyDefinition& definition, void* value, std::uint32_t rootIndex, StringView path, Writer&& writer)
    {
        beginMutation(rootIndex);
        GenericProperty property(*this, definition, value, rootIndex, true);
        using Result = decltype(std::forward<Writer>(writer)(property));
        if constexpr (std::is_void_v<Result>) {
            std::forward<Writer>(writer)(property);
            endMutation(rootIndex, path);
        } else {
            Result result = std::forward<Writer>(writer)(property);
            endMutation(rootIndex, path);
            return result;
        }
    }
    void beginMutation(std::uint32_t index);
    void endMutation(std::uint32_t index, StringView path);
    void notify(std::uint32_t index, StringView path);
    std::pair<const PropertyDefinition*, std::size_t> locate(std::uint32_t index) const;

    SharedPtr<const Detail::ObjectLayout> layout;
    std::byte* storage = nullptr;
    UniquePtr<Detail::ObserverTable> observers;
};

} // namespace Marlix
