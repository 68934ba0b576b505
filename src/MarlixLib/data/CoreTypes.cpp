#include <MarlixLib/data/CoreTypes.h>

#include <MarlixLib/data/Entity.h>

namespace Marlix {

namespace {
TypeModuleRecord makeCoreTypesRecord()
{
    TypeModuleRecord record("MarlixLib");
    record.addType(TypeDefinition::makePlain<bool>("bool"));
    record.addType(TypeDefinition::makePlain<std::int8_t>("int8"));
    record.addType(TypeDefinition::makePlain<std::uint8_t>("uint8"));
    record.addType(TypeDefinition::makePlain<std::int16_t>("int16"));
    record.addType(TypeDefinition::makePlain<std::uint16_t>("uint16"));
    record.addType(TypeDefinition::makePlain<std::int32_t>("int32"));
    record.addType(TypeDefinition::makePlain<std::uint32_t>("uint32"));
    record.addType(TypeDefinition::makePlain<std::int64_t>("int64"));
    record.addType(TypeDefinition::makePlain<std::uint64_t>("uint64"));
    record.addType(TypeDefinition::makePlain<float>("float"));
    record.addType(TypeDefinition::makePlain<double>("double"));
    record.addType(TypeDefinition::makePlain<String>("String"));
    record.addType(TypeDefinition::makePlain<Io::Path>("Path"));
    auto reference = TypeDefinition::makeEntityReference(String(ENTITY_REFERENCE_TYPE_NAME), EntityClassInfo::entityClass());
    record.addType(reference);
    record.addType(TypeDefinition::makeList<EntityHolder<Entity>>(String(ENTITY_REFERENCE_LIST_TYPE_NAME), reference));
    return record;
}
} // namespace

const TypeModuleRecord& getCoreTypesRecord()
{
    static const TypeModuleRecord record = makeCoreTypesRecord();
    return record;
}

} // namespace Marlix
