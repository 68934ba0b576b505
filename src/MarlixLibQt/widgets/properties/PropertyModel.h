#pragma once

#include <MarlixLib/base/Exception.h>
#include <MarlixLib/base/FlatSet.h>
#include <MarlixLib/data/GenericDataObject.h>
#include <MarlixLib/data/GenericPropertyAccessor.h>
#include <MarlixLib/data/Observable.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/undo/IUndoManager.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/properties/PropertyModelBase.h>

#include <typeindex>

namespace Marlix::Widgets {

/// A model bound to one property of one or more entities, read and written as a T: every edit, or every gesture
/// between beginChange() and commitChange(), becomes one undoable action, and every change of the property reaches
/// the observers.
template <class T> class PropertyModel : public PropertyModelBase<T>
{
public:
    using PropertyModelBase<T>::PropertyModelBase;

    /// Reads `property` as a T, converting between numbers; the read is recorded in the observing scope.
    virtual T readProperty(const GenericProperty& property) const
    {
        property.checkIsOfType(std::type_index(typeid(T)), nativeDefinition().get(), TypeKind::Plain, true);
        Observable::accessProperty(property.getDefinition());
        if (!property.getData())
            return T {};
        if constexpr (std::is_arithmetic_v<T>)
            return property.template read<T>();
        else
            return *static_cast<const T*>(property.getData());
    }

    /// Stores `value`; an Exception unless the property holds exactly a T.
    virtual void writeProperty(GenericProperty& property, T value) const
    {
        property.checkIsOfType(std::type_index(typeid(T)), nativeDefinition().get(), TypeKind::Plain, false);
        property.set(value);
    }

protected:
    T readValue() const override
    {
        // The accessor's property is the addressed one, a field of a nested data object included.
        return readProperty(this->getAccessor().getProperty());
    }

    void writeValue(const T& value) override
    {
        // Every object is checked before the first is written, so a mismatch on one of them changes none, with or
        // without an action to revert.
        const GenericPropertyAccessor& accessor = this->getAccessor();
        const auto& objects = accessor.getObjects();
        for (std::size_t i = 0; i < objects.size(); ++i)
            objects[i]->getProperty(accessor.getHandle(i))
                .checkIsOfType(std::type_index(typeid(T)), nativeDefinition().get(), TypeKind::Plain, false);
        // One object of the selection after the other, each through the handle resolved when the model was made.
        accessor.mutate([this, &value](GenericProperty& property) { writeProperty(property, value); });
    }

private:
    static SharedPtr<TypeDefinition> nativeDefinition()
    {
        return TypeDatabase::instance().lookupNativeTypeDefinition<T>();
    }
};

/// The entities of a multi-entity reference list, searchable by identity.
using EntityHandleSet = FlatSet<EntityHandle, HeteroOperatorLess<EntityHandle>>;

} // namespace Marlix::Widgets

// Instantiated once in the library (widgets/PropertyModel.cpp).
#define MARLIX_FOR_EACH_PROPERTY_MODEL_TYPE(X)                                                                         \
    X(bool)                                                                                                            \
    X(std::int8_t)                                                                                                     \
    X(std::uint8_t)                                                                                                    \
    X(std::int16_t)                                                                                                    \
    X(std::uint16_t)                                                                                                   \
    X(std::int32_t)                                                                                                    \
    X(std::uint32_t)                                                                                                   \
    X(std::int64_t)                                                                                                    \
    X(float)                                                                                                           \
    X(double)                                                                                                          \
    X(Marlix::String)                                                                                                  \
    X(Marlix::Io::Path)                                                                                                \
    X(Marlix::Rgb)                                                                                                     \
    X(Marlix::Pixel)                                                                                                   \
    X(Marlix::Pos)                                                                                                     \
    X(Marlix::Dir)                                                                                                     \
    X(Marlix::Vector2)                                                                                                 \
    X(Marlix::PosRotScaleTm)                                                                                           \
    X(Marlix::EntityHandle)                                                                                            \
    X(Marlix::EntityHolder<Marlix::Entity>)                                                                            \
    X(Marlix::Widgets::EntityHandleSet)

extern template class MARLIXLIBQT_EXPORT Marlix::Widgets::Model<Marlix::Widgets::EntityHandleSet>;
extern template class MARLIXLIBQT_EXPORT Marlix::Widgets::AbstractModel<Marlix::Widgets::EntityHandleSet>;

#define MARLIX_EXTERN_PROPERTY_MODEL_TYPES(...)                                                                        \
    extern template class MARLIXLIBQT_EXPORT Marlix::Widgets::PropertyModel<__VA_ARGS__>;

MARLIX_FOR_EACH_PROPERTY_MODEL_TYPE(MARLIX_EXTERN_PROPERTY_MODEL_TYPES)
