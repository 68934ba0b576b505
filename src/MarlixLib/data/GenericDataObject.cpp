#include <MarlixLib/data/GenericDataObject.h>

#include <MarlixLib/base/Exception.h>
#include <MarlixLib/undo/Action.h>

#include <new>

namespace Marlix {

struct Detail::ObserverTable
{
    UniquePtr<CallbackList<const ObservedProperty&>> any;
    FlatMap<std::uint32_t, UniquePtr<CallbackList<const ObservedProperty&>>> perProperty;
};

GenericDataObject::GenericDataObject(SharedPtr<const GroupLayout> groupLayout)
    : GenericDataObject(Detail::ObjectLayout::make(ArrayView<const SharedPtr<const GroupLayout>>(&groupLayout, 1)))
{
}

GenericDataObject::GenericDataObject(SharedPtr<const Detail::ObjectLayout> objectLayout)
    : layout(std::move(objectLayout))
{
    if (!layout)
        Detail::throwStopException("data/GenericDataObject", __LINE__);
    if (layout->size == 0)
        return;
    storage = static_cast<std::byte*>(::operator new(layout->size, std::align_val_t(layout->alignment)));
    std::size_t done = 0;
    try {
        for (; done < layout->segments.size(); ++done)
            layout->segments[done].layout->constructStorage(storage + layout->segments[done].offset);
    } catch (...) {
        while (done-- > 0)
            layout->segments[done].layout->destroyStorage(storage + layout->segments[done].offset);
        ::operator delete(storage, std::align_val_t(layout->alignment));
        throw;
    }
}

GenericDataObject::~GenericDataObject()
{
    if (!storage)
        return;
    for (auto it = layout->segments.rbegin(); it != layout->segments.rend(); ++it)
        it->layout->destroyStorage(storage + it->offset);
    ::operator delete(storage, std::align_val_t(layout->alignment));
}

Array<SharedPtr<const GroupLayout>> GenericDataObject::getGroupLayouts() const
{
    Array<SharedPtr<const GroupLayout>> result;
    for (const auto& segment : layout->segments)
        result.push_back(segment.layout);
    return result;
}

std::pair<const PropertyDefinition*, std::size_t> GenericDataObject::locate(std::uint32_t index) const
{
    if (index >= layout->slots.size())
        throw Exception("The property index " + std::to_string(index) + " is out of range");
    const Detail::ObjectLayout::Slot& slot = layout->slots[index];
    return { slot.definition, slot.offset };
}

const PropertyDefinition& GenericDataObject::getPropertyDefinition(std::uint32_t index) const
{
    return *locate(index).first;
}

GenericProperty GenericDataObject::getProperty(std::uint32_t index) const
{
    const auto [definition, offset] = locate(index);
    return GenericProperty(const_cast<GenericDataObject&>(*this), *definition, storage + offset, index, false);
}

GenericProperty GenericDataObject::getProperty(StringView path) const
{
    const auto resolved = resolveOrThrow(path);
    return GenericProperty(const_cast<GenericDataObject&>(*this), *resolved.definition, resolved.storage, resolved.rootIndex, false);
}

int GenericDataObject::indexOfProperty(StringView name) const
{
    for (const auto& segment : layout->segments) {
        const int index = segment.layout->indexOf(name);
        if (index >= 0)
            return static_cast<int>(segment.firstIndex) + index;
    }
    return -1;
}

Detail::ResolvedProperty GenericDataObject::resolve(StringView path) const
{
    Detail::ResolvedProperty result;
    if (path.empty()) {
        result.status = PropertyPathStatus::Malformed;
        return result;
    }
    const std::size_t dot = path.find('.');
    const StringView rootName = path.substr(0, dot);
    const int rootIndex = indexOfProperty(rootName);
    if (rootName.empty()) {
        result.status = PropertyPathStatus::Malformed;
        return result;
    }
    if (rootIndex < 0)
        return result;
    const auto [rootDefinition, rootOffset] = locate(static_cast<std::uint32_t>(rootIndex));
    const PropertyDefinition* definition = rootDefinition;
    std::byte* value = storage + rootOffset;
    StringView rest = dot == StringView::npos ? StringView() : path.substr(dot + 1);
    bool nested = false;
    while (dot != StringView::npos) {
        const std::size_t next = rest.find('.');
        const StringView name = rest.substr(0, next);
        if (name.empty()) {
            result.status = PropertyPathStatus::Malformed;
            return result;
        }
        const TypeDefinition& type = definition->getTypeDefinition();
        if (type.getKind() != TypeKind::DataObject)
            return result;
        const PropertyDefinition* field = type.getLayout()->findProperty(name);
        if (!field)
            return result;
        definition = field;
        value += field->getOffset();
        nested = true;
        if (next == StringView::npos)
            break;
        rest = rest.substr(next + 1);
    }
    result.definition = definition;
    result.storage = value;
    result.rootIndex = static_cast<std::uint32_t>(rootIndex);
    result.status = nested ? PropertyPathStatus::NestedProperty : PropertyPathStatus::RootProperty;
    return result;
}

Detail::ResolvedProperty GenericDataObject::resolveOrThrow(StringView path) const
{
    Detail::ResolvedProperty resolved = resolve(path);
    if (!isResolved(resolved.status))
        throw Exception("The property path \"" + String(path) + "\" does not resolve");
    return resolved;
}

PropertyPathStatus GenericDataObject::checkPropertyPath(StringView path) const
{
    return resolve(path).status;
}

GenericPropertyHandle GenericDataObject::resolveHandle(StringView path) const
{
    const Detail::ResolvedProperty resolved = resolve(path);
    GenericPropertyHandle handle;
    handle.layout = layout;
    handle.path = String(path);
    handle.status = resolved.status;
    if (isResolved(resolved.status)) {
        handle.definition = resolved.definition;
        handle.offset = static_cast<std::size_t>(static_cast<std::byte*>(resolved.storage) - storage);
        handle.rootIndex = resolved.rootIndex;
    }
    return handle;
}

GenericProperty GenericDataObject::getProperty(const GenericPropertyHandle& handle) const
{
    void* value = valueOf(handle);
    return GenericProperty(const_cast<GenericDataObject&>(*this), *handle.definition, value, handle.rootIndex, false);
}

void GenericDataObject::throwUnusableHandle(const GenericPropertyHandle& handle) const
{
    if (!handle.isResolved())
        throw Exception("The property path \"" + handle.path + "\" does not resolve");
    throw Exception("The property handle of \"" + handle.path + "\" was resolved on an object of another layout");
}

void GenericDataObject::beginMutation(std::uint32_t index)
{
    if (Detail::Action* action = Detail::Action::current())
        action->recordProperty(*this, index);
}

void GenericDataObject::endMutation(std::uint32_t index, StringView path)
{
    notify(index, path);
}

void GenericDataObject::notify(std::uint32_t index, StringView path)
{
    if (!observers)
        return;
    // Every caller passes the index of a property it has located already.
    const ObservedProperty observed(*this, *layout->slots[index].definition, index, path);
    // Both lists are called even when the first throws; the first failure reaches the writer afterwards.
    std::exception_ptr failure;
    if (const auto* list = observers->perProperty.get(index)) {
        try {
            (*list)->call(observed);
        } catch (...) {
            failure = std::current_exception();
        }
    }
    if (observers->any) {
        try {
            observers->any->call(observed);
        } catch (...) {
            if (!failure)
                failure = std::current_exception();
        }
    }
    if (failure)
        std::rethrow_exception(failure);
}

CallbackLifetime GenericDataObject::addObserver(Function<void(const ObservedProperty&)> observer)
{
    if (!observers)
        observers = std::make_unique<Detail::ObserverTable>();
    if (!observers->any)
        observers->any = std::make_unique<CallbackList<const ObservedProperty&>>();
    return observers->any->add(std::move(observer));
}

CallbackLifetime GenericDataObject::addPropertyObserver(std::uint32_t index, Function<void(const ObservedProperty&)> observer)
{
    if (index >= layout->propertyCount)
        throw Exception("The property index " + std::to_string(index) + " is out of range");
    if (!observers)
        observers = std::make_unique<Detail::ObserverTable>();
    auto* list = observers->perProperty.get(index);
    if (!list)
        list = &observers->perProperty.insertOrAssign(index, std::make_unique<CallbackList<const ObservedProperty&>>()).first->second;
    return (*list)->add(std::move(observer));
}

bool GenericDataObject::isPropertyObserved(std::uint32_t index) const
{
    if (!observers)
        return false;
    const auto* list = observers->perProperty.get(index);
    return (list && !(*list)->isEmpty()) || (observers->any && !observers->any->isEmpty());
}

bool GenericDataObject::hasEqualValues(const GenericDataObject& other) const
{
    if (layout->segments.size() != other.layout->segments.size())
        return false;
    for (std::size_t i = 0; i < layout->segments.size(); ++i) {
        const auto& mine = layout->segments[i];
        const auto& theirs = other.layout->segments[i];
        if (mine.layout != theirs.layout || !mine.layout->equalStorage(storage + mine.offset, other.storage + theirs.offset))
            return false;
    }
    return true;
}

void GenericDataObject::restoreProperty(std::uint32_t index, const void* value)
{
    const auto [definition, offset] = locate(index);
    definition->getTypeDefinition().assign(storage + offset, value);
    notify(index, definition->getName());
}

const void* GenericDataObject::getPropertyData(std::uint32_t index) const
{
    return storage + locate(index).second;
}

void GenericDataObject::copyValuesFrom(const GenericDataObject& other)
{
    if (layout->segments.size() != other.layout->segments.size())
        Detail::throwStopException("data/GenericDataObject", __LINE__);
    for (std::size_t i = 0; i < layout->segments.size(); ++i) {
        if (layout->segments[i].layout != other.layout->segments[i].layout)
            Detail::throwStopException("data/GenericDataObject", __LINE__);
        layout->segments[i].layout->assignStorage(storage + layout->segments[i].offset, other.storage + other.layout->segments[i].offset);
    }
}

} // namespace Marlix
