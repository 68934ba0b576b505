#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/base/Polymorphic.h>

namespace Marlix::Widgets {

/// Common root of the library's widget mix-ins; it carries nothing and lets hosts recognise the library's widgets.
class MARLIXLIBQT_EXPORT Base
{
};

/// Second base of every widget bound to models: it owns the widget's subscriptions, which end with the widget.
class MARLIXLIBQT_EXPORT BaseWithModel : public Base, public Polymorphic
{
public:
    BaseWithModel() = default;
    BaseWithModel(BaseWithModel&& other) noexcept; ///< Takes over the subscriptions of \p other.
    /// Takes over the subscriptions of \p other; its own end.
    BaseWithModel& operator=(BaseWithModel&& other) noexcept;
    ~BaseWithModel() override;

    /// Re-reads every model of the widget and refreshes what is shown; never writes to a model.
    virtual void notify() = 0;

    /// Keeps a subscription until the widget is destroyed.
    void registerCallback(CallbackLifetime&& lifetime);

    /// The number of subscriptions held; for tests and leak checks.
    std::size_t getRegisteredCallbackCount() const { return callbacksOwner.size(); }

private:
    CallbacksOwner callbacksOwner;
};

} // namespace Marlix::Widgets
