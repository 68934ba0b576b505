#include <MarlixLibQt/QtUtils.h>

#include <MarlixLib/data/EntityClassInfo.h>
#include <MarlixLib/data/GenericProperty.h>
#include <MarlixLib/data/TypeDatabase.h>

#include <algorithm>
#include <map>

namespace Marlix {

QString getPropertyUiName(const GenericProperty& property)
{
    if (const String* name = property.getDefinition().getAttributes().get<String>(UI_NAME_ATTRIBUTE); name && !name->empty())
        return toQt(*name);
    return propertyNameToReadableName(toQt(property.getName()));
}

QString getPropertyUiDescription(const GenericProperty& property)
{
    if (const String* text = property.getDefinition().getAttributes().get<String>(UI_DESCRIPTION_ATTRIBUTE))
        return toQt(*text);
    return toQt(property.getDefinition().getDescription());
}

const Stack<EntityClassInfo>& getUiEntityClasses(const EntityClassInfo& base)
{
    // Menus iterate the list while their actions ask for other lists (nested menus) or for the same one again: a list
    // handed out is never changed. When the classes change, a new list replaces it and the old one is retired, kept
    // for the life of the process; classes change only when modules load or unload, so few lists ever retire.
    static Mutex mutex;
    static std::map<String, UniquePtr<const Stack<EntityClassInfo>>, std::less<>> lists;
    static Stack<UniquePtr<const Stack<EntityClassInfo>>> retired;

    Stack<EntityClassInfo> classes = TypeDatabase::instance().getDerivedEntityClasses(base);
    // The bare root class has nothing to edit, so it is never offered.
    std::erase_if(classes, [](const EntityClassInfo& c) { return !c.canCreate() || c == EntityClassInfo::entityClass(); });
    std::ranges::sort(classes, {}, &EntityClassInfo::getName);

    const std::lock_guard lock(mutex);
    UniquePtr<const Stack<EntityClassInfo>>& list = lists[base.getName()];
    if (!list || *list != classes) {
        if (list)
            retired.push_back(std::move(list));
        list = std::make_unique<const Stack<EntityClassInfo>>(std::move(classes));
    }
    return *list;
}

} // namespace Marlix
