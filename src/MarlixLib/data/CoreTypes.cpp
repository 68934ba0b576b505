#include <MarlixLib/data/CoreTypes.h>

#include <MarlixLib/color/ColorGradient.h>
#include <MarlixLib/curves/Curves.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLib/data/GroupLayout.h>
#include <MarlixLib/data/MathValueTraits.h>
#include <MarlixLib/math/PosRotScaleTm.h>
#include <MarlixLib/units/Quantity.h>

#include <cstddef>

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
    record.addType(TypeDefinition::makePlain<Rgb>("Rgb"));
    record.addType(TypeDefinition::makePlain<ColorGradient>("ColorGradient"));
    record.addType(TypeDefinition::makePlain<Curves>("Curves"));
    record.addType(TypeDefinition::makePlain<Vector2>("Vector2"));
    auto vector3 = TypeDefinition::makePlain<Vector3>("Vector3");
    record.addType(vector3);
    record.addType(TypeDefinition::makePlain<Pixel>("Pixel"));
    auto pos = TypeDefinition::makePlain<Pos>("Pos");
    record.addType(pos);
    record.addType(TypeDefinition::makePlain<Dir>("Dir"));
    // The transform is a nested data object, so that "transform.position" addresses one of its parts.
    auto transformLayout = makeSharedPtr<const GroupLayout>("PosRotScaleTm",
        Array<PropertyDefinition> {
            PropertyDefinition::make("position", pos, Pos {}, UserData().set("Zorva.Quantity", Quantity::Length)),
            PropertyDefinition::make("rotation", vector3, Vector3 {}, UserData().set("Zorva.Quantity", Quantity::Angle)),
            PropertyDefinition::make("scale", vector3, Vector3 { 1.0, 1.0, 1.0 }),
            PropertyDefinition::make("shear", vector3, Vector3 {}),
        });
    record.addType(TypeDefinition::makeNativeDataObject<PosRotScaleTm>("PosRotScaleTm", transformLayout,
        { offsetof(PosRotScaleTm, position), offsetof(PosRotScaleTm, rotation), offsetof(PosRotScaleTm, scale),
            offsetof(PosRotScaleTm, shear) }));
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
