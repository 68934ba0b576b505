#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/base/Flags.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/base/Polymorphic.h>
#include <MarlixLib/data/GenericPropertyAccessor.h>
#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QMetaType>

#include <array>
#include <cstddef>
#include <cstdint>

namespace Marlix::Widgets {

/// A provider of per-property variants and their overrides (an animation or variant system of the application),
/// asked by the property sheet how each property is controlled.
class MARLIXLIBQT_EXPORT IPropertyController : public Polymorphic
{
public:
    /// The bits the application's controller reports; the style tells these apart and draws any other bit with the
    /// generic marker, so a controller may add its own.
    enum class State : std::uint32_t
    {
        Controlled = 0x1,
        Overridden = 0x2,
        Mixed = 0x4,
    };

    struct VariantInfo
    {
        /// The index that applyVariantOverride() and removeVariantOverride() take.
        std::size_t index = 0;
        String name;
        String description;
        /// Defined by the controller; the widgets only pass it through.
        std::array<std::uint64_t, 2> value {};

        bool operator==(const VariantInfo&) const = default;
    };

    struct ControllerInfo
    {
        Flags<State> state;
        Optional<VariantInfo> activeVariant;

        bool operator==(const ControllerInfo&) const = default;
    };

    virtual ControllerInfo getControllerInfo(const GenericPropertyAccessor& property) const = 0;
    /// `onChange` is called, from any thread, whenever the information of `property` may have changed.
    [[nodiscard]] virtual CallbackLifetime addControllerObserver(
        const GenericPropertyAccessor& property, Function<void()> onChange)
        = 0;
    virtual Optional<VariantInfo> getCurrentVariant() const = 0;
    virtual Stack<VariantInfo> getVariantOverrides(const GenericPropertyAccessor& property) const = 0;
    virtual void applyVariantOverride(const GenericPropertyAccessor& property, std::size_t variantIndex) const = 0;
    virtual void removeVariantOverride(const GenericPropertyAccessor& property, std::size_t variantIndex) const = 0;
    virtual void removeAllVariantOverrides(const GenericPropertyAccessor& property) const = 0;
};

/// The controller of an application without variants: nothing is controlled and nothing ever changes.
class MARLIXLIBQT_EXPORT DefaultPropertyController : public IPropertyController
{
public:
    ControllerInfo getControllerInfo(const GenericPropertyAccessor& property) const override;
    CallbackLifetime addControllerObserver(const GenericPropertyAccessor& property, Function<void()> onChange) override;
    Optional<VariantInfo> getCurrentVariant() const override;
    Stack<VariantInfo> getVariantOverrides(const GenericPropertyAccessor& property) const override;
    void applyVariantOverride(const GenericPropertyAccessor& property, std::size_t variantIndex) const override;
    void removeVariantOverride(const GenericPropertyAccessor& property, std::size_t variantIndex) const override;
    void removeAllVariantOverrides(const GenericPropertyAccessor& property) const override;
};

} // namespace Marlix::Widgets

Q_DECLARE_METATYPE(Marlix::Flags<Marlix::Widgets::IPropertyController::State>)
