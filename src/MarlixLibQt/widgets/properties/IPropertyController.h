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
        Controlled = 0x1, ///< The controller supplies the value (animated, driven).
        Overridden = 0x2, ///< The active variant overrides the value.
        Mixed = 0x4, ///< The selected objects differ in their controller state.
    };

    /// One variant of the controller, as offered for a property.
    struct VariantInfo
    {
        /// The index that applyVariantOverride() and removeVariantOverride() take.
        std::size_t index = 0;
        String name; ///< Shown in menus, already translated.
        String description; ///< Tooltip text; may be empty.
        /// Defined by the controller; the widgets only pass it through.
        std::array<std::uint64_t, 2> value {};

        bool operator==(const VariantInfo&) const = default; ///< Equal when every field is, including the value block.
    };

    /// How one property is controlled now; the default has an empty state and no active variant.
    struct ControllerInfo
    {
        Flags<State> state; ///< Bits of State, plus any the controller adds.
        Optional<VariantInfo> activeVariant; ///< The variant that supplies the value; none when no variant does.

        bool operator==(const ControllerInfo&) const = default; ///< Equal when state and variant are.
    };

    /// How `property` is controlled now; called on the GUI thread, after each report of addControllerObserver().
    virtual ControllerInfo getControllerInfo(const GenericPropertyAccessor& property) const = 0;
    /// `onChange` is called, from any thread, whenever the information of `property` may have changed.
    [[nodiscard]] virtual CallbackLifetime addControllerObserver(
        const GenericPropertyAccessor& property, Function<void()> onChange)
        = 0;
    /// The variant the application edits now; none when it has no variants.
    virtual Optional<VariantInfo> getCurrentVariant() const = 0;
    /// The variants that override `property`, in menu order.
    virtual Stack<VariantInfo> getVariantOverrides(const GenericPropertyAccessor& property) const = 0;
    /// Makes the variant whose VariantInfo::index is `variantIndex` override `property`.
    virtual void applyVariantOverride(const GenericPropertyAccessor& property, std::size_t variantIndex) const = 0;
    /// Removes that variant's override of `property`; nothing happens when there is none.
    virtual void removeVariantOverride(const GenericPropertyAccessor& property, std::size_t variantIndex) const = 0;
    /// Removes every variant's override of `property`.
    virtual void removeAllVariantOverrides(const GenericPropertyAccessor& property) const = 0;
};

/// The controller of an application without variants: nothing is controlled and nothing ever changes.
class MARLIXLIBQT_EXPORT DefaultPropertyController : public IPropertyController
{
public:
    /// Empty state, no variant.
    ControllerInfo getControllerInfo(const GenericPropertyAccessor& property) const override;
    /// Keeps nothing and never calls `onChange`.
    CallbackLifetime addControllerObserver(const GenericPropertyAccessor& property, Function<void()> onChange) override;
    Optional<VariantInfo> getCurrentVariant() const override; ///< None.
    Stack<VariantInfo> getVariantOverrides(const GenericPropertyAccessor& property) const override; ///< None.
    /// Does nothing.
    void applyVariantOverride(const GenericPropertyAccessor& property, std::size_t variantIndex) const override;
    /// Does nothing.
    void removeVariantOverride(const GenericPropertyAccessor& property, std::size_t variantIndex) const override;
    void removeAllVariantOverrides(const GenericPropertyAccessor& property) const override; ///< Does nothing.
};

} // namespace Marlix::Widgets

Q_DECLARE_METATYPE(Marlix::Flags<Marlix::Widgets::IPropertyController::State>)
