#include <MarlixLibQt/widgets/properties/IPropertyController.h>

namespace Marlix::Widgets {

IPropertyController::ControllerInfo DefaultPropertyController::getControllerInfo(const GenericPropertyAccessor&) const
{
    return {};
}

CallbackLifetime DefaultPropertyController::addControllerObserver(
    const GenericPropertyAccessor&, Function<void()> onChange)
{
    // Nothing ever changes, so the callback is not kept: whatever it captures is released now.
    onChange = {};
    return {};
}

Optional<IPropertyController::VariantInfo> DefaultPropertyController::getCurrentVariant() const
{
    return std::nullopt;
}

Stack<IPropertyController::VariantInfo> DefaultPropertyController::getVariantOverrides(
    const GenericPropertyAccessor&) const
{
    return {};
}

void DefaultPropertyController::applyVariantOverride(const GenericPropertyAccessor&, std::size_t) const { }

void DefaultPropertyController::removeVariantOverride(const GenericPropertyAccessor&, std::size_t) const { }

void DefaultPropertyController::removeAllVariantOverrides(const GenericPropertyAccessor&) const { }

} // namespace Marlix::Widgets
