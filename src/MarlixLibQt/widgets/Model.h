#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/Color.h>

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/base/Exception.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/base/Polymorphic.h>
#include <MarlixLib/color/ColorGradient.h>
#include <MarlixLib/color/Rgb.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLib/math/Dir.h>
#include <MarlixLib/math/Pixel.h>
#include <MarlixLib/math/Pos.h>
#include <MarlixLib/math/PosRotScaleTm.h>
#include <MarlixLib/math/Vector2.h>
#include <MarlixLib/units/AngleUnit.h>
#include <MarlixLib/units/LengthUnit.h>
#include <MarlixLib/units/RadianceUnit.h>
#include <MarlixLib/units/TimeUnit.h>
#include <MarlixLib/units/Quantity.h>

#include <QList>
#include <QPointF>
#include <QString>

#include <atomic>
#include <concepts>
#include <cstdint>
#include <tuple>
#include <type_traits>
#include <utility>

namespace Marlix::Widgets {

/// An observable value that editors show and change; held through SharedPtr by every widget bound to it.
template <class T> class Model : public Polymorphic
{
public:
    using ValueType = T; ///< The value type, for code that is generic over models.

    /// Subscribes `callback`; it is called with the new value after every accepted change until the lifetime ends.
    [[nodiscard]] virtual CallbackLifetime addCallback(Function<void(T)> callback) = 0;
    /// The current value; reading it never notifies.
    virtual T get() const = 0;
    /// Writes \p value and notifies the observers. A model that refuses the value keeps the old one and reports why.
    virtual void set(T value) = 0;
    /// Calls every observer with the current value, for instance after it changed behind the model's back.
    virtual void notifyCallbacks() = 0;
    /// An interactive change starts: the following set() calls belong to one user action.
    virtual void beginChange() = 0;
    /// The interactive change ends; a model with an undo manager records it as one undo step.
    virtual void commitChange() = 0;
    /// The interactive change is abandoned; a model with an undo manager restores the value it had at beginChange().
    virtual void revertChange() = 0;
};

// The scene's display units, one value for the units model of the editors: Marlix::DisplayUnits.
using Marlix::DisplayUnits;

namespace Detail {
/// Raises a depth counter for one scope; the counter is lowered again also when the scope is left by an exception.
/// Models belong to the thread that owns them (the GUI thread), so the counter only guards against re-entrance on
/// that thread: it is read and written atomically, without the cost of a locked read-modify-write, and another
/// thread reading it never sees a torn value. Inlining is forced: the library instantiates models of some thirty
/// types, and past that many call sites the compiler stops inlining even functions smaller than their call.
class DepthGuard
{
public:
    [[gnu::always_inline]] explicit DepthGuard(std::atomic<std::int32_t>& depth) noexcept
        : depth(depth)
    {
        depth.store(depth.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }
    [[gnu::always_inline]] ~DepthGuard()
    {
        depth.store(depth.load(std::memory_order_relaxed) - 1, std::memory_order_relaxed);
    }
    DepthGuard(const DepthGuard&) = delete;
    DepthGuard& operator=(const DepthGuard&) = delete;

private:
    std::atomic<std::int32_t>& depth;
};

// The integer type of Model<long long> (the colour settings) where it is not std::int64_t already: `long long` where
// std::int64_t is `long`, otherwise `long`, so that no type is instantiated twice.
using LongLongIfDistinct = std::conditional_t<std::is_same_v<std::int64_t, long long>, long, long long>;
} // namespace Detail

/// The observer list and the notification of a model; get() and set() are left to the concrete models.
template <class T> class AbstractModel : public Model<T>
{
public:
    AbstractModel() = default;
    AbstractModel(const AbstractModel&) = delete;
    AbstractModel& operator=(const AbstractModel&) = delete;

    /// Subscribes `callback` until the returned lifetime ends; see Model::addCallback().
    CallbackLifetime addCallback(Function<void(T)> callback) override { return callbacks.add(std::move(callback)); }

    /// A notification asked for while this model is notifying is dropped, not queued: the running one already reads
    /// the newest value, and queuing would let two models that observe each other ping-pong forever.
    void notifyCallbacks() override
    {
        if (notifyDepth.load(std::memory_order_relaxed) > 0)
            return;
        const Detail::DepthGuard guard(notifyDepth);
        const T value = this->get();
        callbacks.call(value);
    }

    void beginChange() override { } ///< Does nothing: a model without an undo manager has no step to open.
    void commitChange() override { } ///< Does nothing, see beginChange().
    void revertChange() override { } ///< Does nothing; the values set stay.

    /// The number of live subscriptions; for tests and leak checks.
    std::size_t getCallbackCount() const { return callbacks.size(); }

private:
    CallbackList<T> callbacks;
    std::atomic<std::int32_t> notifyDepth { 0 };
};

/// A model that owns its value.
template <class T> class VariableModel : public AbstractModel<T>
{
public:
    /// Starts with \p value; nothing is notified.
    explicit VariableModel(T value = T {})
        : value(std::move(value))
    {
    }

    T get() const override { return value; } ///< A copy of the owned value.

    /// Stores \p newValue and notifies, without comparing with the old value: observers re-read on every accepted set,
    /// so an equal value still notifies. A write from one of its own observers during the notification is ignored.
    void set(T newValue) override
    {
        if (setDepth.load(std::memory_order_relaxed) >= 1)
            return; // an observer of this model writing back into it
        const Detail::DepthGuard guard(setDepth);
        value = std::move(newValue);
        this->notifyCallbacks();
    }

private:
    T value;
    std::atomic<std::int32_t> setDepth { 0 };
};

/// A model that shows a part or a conversion of another model through a getter and a setter.
template <class T> class LambdaModel : public AbstractModel<T>
{
public:
    template <class S>
    /// Reads through \p getter and writes through \p setter; changes of \p source are announced again and gestures are
    /// forwarded to it. Throws StopException if \p source, \p getter or \p setter is empty.
    LambdaModel(SharedPtr<Model<S>> source, Function<T()> getter, Function<void(T)> setter)
        : getter(std::move(getter))
        , setter(std::move(setter))
        , beginForwarder([model = source.get()] { model->beginChange(); })
        , commitForwarder([model = source.get()] { model->commitChange(); })
        , revertForwarder([model = source.get()] { model->revertChange(); })
        , source(source)
    {
        if (!source || !this->getter || !this->setter)
            Marlix::Detail::throwStopException("widgets/Model", __LINE__);
        // Whatever the source reports, the adapter re-reads through its getter.
        sourceSubscription = source->addCallback([this](S) { this->notifyCallbacks(); });
    }

    /// For a source held through the pointer of its concrete class (a VariableModel, a PropertyModel ...).
    template <class M>
        requires std::derived_from<M, Model<typename M::ValueType>>
    LambdaModel(SharedPtr<M> source, Function<T()> getter, Function<void(T)> setter)
        : LambdaModel(SharedPtr<Model<typename M::ValueType>>(std::move(source)), std::move(getter), std::move(setter))
    {
    }

    ~LambdaModel() override { sourceSubscription.reset(); }

    T get() const override { return getter(); } ///< What the getter returns now.

    /// Passes \p value to the setter and notifies; a write from an observer during that notification is ignored.
    void set(T value) override
    {
        if (setDepth.load(std::memory_order_relaxed) >= 1)
            return;
        const Detail::DepthGuard guard(setDepth);
        setter(std::move(value));
        this->notifyCallbacks();
    }

    /// Forwarded to the source, so a gesture on the part is one undo step on the whole.
    void beginChange() override { beginForwarder(); }
    void commitChange() override { commitForwarder(); } ///< Forwarded to the source.
    void revertChange() override { revertForwarder(); } ///< Forwarded to the source.

private:
    Function<T()> getter;
    Function<void(T)> setter;
    Function<void()> beginForwarder;
    Function<void()> commitForwarder;
    Function<void()> revertForwarder;
    std::atomic<std::int32_t> setDepth { 0 };
    SharedPtr<Polymorphic> source;
    CallbackLifetime sourceSubscription;
};

} // namespace Marlix::Widgets

// Instantiated once in the library (widgets/Model.cpp), so that every module shares one vtable and one typeinfo per
// model type.
#define MARLIX_FOR_EACH_MODEL_TYPE(X)                                                                                  \
    X(bool)                                                                                                            \
    X(std::int8_t)                                                                                                     \
    X(std::uint8_t)                                                                                                    \
    X(std::int16_t)                                                                                                    \
    X(std::uint16_t)                                                                                                   \
    X(std::int32_t)                                                                                                    \
    X(std::uint32_t)                                                                                                   \
    X(std::int64_t)                                                                                                    \
    X(std::uint64_t)                                                                                                   \
    X(float)                                                                                                           \
    X(double)                                                                                                          \
    X(Marlix::String)                                                                                                  \
    X(Marlix::Io::Path)                                                                                                \
    X(QPointF)                                                                                                         \
    X(QList<QString>)                                                                                                  \
    X(Marlix::Array<double>)                                                                                           \
    X(Marlix::ArrayView<const Marlix::String>)                                                                         \
    X(Marlix::ArrayView<const std::int64_t>)                                                                           \
    X(Marlix::Stack<bool>)                                                                                             \
    X(Marlix::Stack<Marlix::String>)                                                                                   \
    X(Marlix::Rgb)                                                                                                     \
    X(Marlix::ColorGradient)                                                                                           \
    X(Marlix::Vector2)                                                                                                 \
    X(Marlix::Pixel)                                                                                                   \
    X(Marlix::Pos)                                                                                                     \
    X(Marlix::Dir)                                                                                                     \
    X(Marlix::PosRotScaleTm)                                                                                           \
    X(Marlix::EntityHandle)                                                                                            \
    X(Marlix::EntityHolder<Marlix::Entity>)                                                                            \
    X(Marlix::DisplayUnits)                                                                                            \
    X(Marlix::Widgets::Detail::LongLongIfDistinct)                                                                     \
    X(Marlix::QColorExtended)

#define MARLIX_EXTERN_MODEL_TYPES(...)                                                                                 \
    extern template class MARLIXLIBQT_EXPORT Marlix::Widgets::Model<__VA_ARGS__>;                                      \
    extern template class MARLIXLIBQT_EXPORT Marlix::Widgets::AbstractModel<__VA_ARGS__>;                              \
    extern template class MARLIXLIBQT_EXPORT Marlix::Widgets::VariableModel<__VA_ARGS__>;                              \
    extern template class MARLIXLIBQT_EXPORT Marlix::Widgets::LambdaModel<__VA_ARGS__>;

MARLIX_FOR_EACH_MODEL_TYPE(MARLIX_EXTERN_MODEL_TYPES)
