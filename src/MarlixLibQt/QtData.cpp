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
    // One list per base class name; node-based, so references handed out earlier stay valid when others are added.
    static Mutex mutex;
    static std::map<String, Stack<EntityClassInfo>, std::less<>> lists;

    Stack<EntityClassInfo> classes = TypeDatabase::instance().getDerivedEntityClasses(base);
    // The bare root class has nothing to edit, so it is never offered.
    std::erase_if(classes, [](const EntityClassInfo& c) { return !c.canCreate() || c == EntityClassInfo::entityClass(); });
    std::ranges::sort(classes, {}, &EntityClassInfo::getName);

    const std::lock_guard lock(mutex);
    Stack<EntityClassInfo>& list = lists[base.getName()];
    list = std::move(classes);
    return list;
}

} // namespace Marlix
