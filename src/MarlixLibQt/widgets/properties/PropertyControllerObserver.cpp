#include <MarlixLibQt/widgets/properties/IPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/PropertyControllerObserver.h>
#include <MarlixLibQt/widgets/properties/PropertySheet.h>

#include <QMetaObject>
#include <QVariant>
#include <QWidget>

#include <mutex>

namespace Marlix::Widgets {

using StateFlags = Flags<IPropertyController::State>;

PropertyControllerObserver::PropertyControllerObserver(
    IPropertyController& controller, GenericPropertyAccessor propertyAccessor)
    : observedController(controller)
    , accessor(std::move(propertyAccessor))
{
}

PropertyControllerObserver::~PropertyControllerObserver() = default;

void PropertyControllerObserver::setupObserver(QObject* context)
{
    // The callback reads nothing: it may run on any thread, and the state belongs to the GUI thread. The
    // subscription ends before the context is destroyed, and Qt drops calls still queued with the context, so none
    // reaches a destroyed observer.
    subscription = observedController.addControllerObserver(accessor, [this, context] {
        QMetaObject::invokeMethod(
            context, [this] { synchronize(); }, Qt::QueuedConnection);
    });
    QMetaObject::invokeMethod(
        context, [this] { synchronize(); }, Qt::QueuedConnection);
}

void PropertyControllerObserver::synchronize()
{
    const IPropertyController::ControllerInfo info = observedController.getControllerInfo(accessor);
    state = info.state;
    variant = info.activeVariant;
    update();
}

PropertyControllerHandler::PropertyControllerHandler(
    IPropertyController& controller, GenericPropertyAccessor property, QWidget* parent)
    : QObject(parent)
    , PropertyControllerObserver(controller, std::move(property))
{
    registerMetaType();
    setupObserver(this);
}

PropertyControllerHandler* PropertyControllerHandler::installOnWidget(
    QWidget* widget, IPropertySheetHost& host, const GenericPropertyAccessor& property)
{
    if (!widget || !widget->style()->styleHint(SH_INSTALL_HANDLER, nullptr, widget, nullptr))
        return nullptr;
    return new PropertyControllerHandler(host.getPropertyController(), property, widget);
}

PropertyControllerHandler* PropertyControllerHandler::installOnWidget(
    QWidget* widget, PropertySheet* sheet, const GenericPropertyAccessor& property)
{
    if (!sheet)
        return nullptr;
    return installOnWidget(widget, *sheet->getPropertySheetHost(), property);
}

void PropertyControllerHandler::registerMetaType()
{
    static std::once_flag once;
    std::call_once(once, [] {
        qRegisterMetaType<StateFlags>();
        QMetaType::registerConverter<StateFlags, unsigned int>([](const StateFlags& flags) { return flags.toBits(); });
    });
}

namespace {

// A widget that never had the property counts as having an empty state, so a sheet whose properties are not
// controlled sets nothing and repaints nothing.
void publishState(QWidget* widget, StateFlags state)
{
    const QVariant current = widget->property(PropertyControllerHandler::STATE_PROPERTY);
    const bool unchanged = current.isValid() ? current.value<StateFlags>() == state : state.isEmpty();
    if (unchanged)
        return;
    widget->setProperty(PropertyControllerHandler::STATE_PROPERTY, QVariant::fromValue(state));
    widget->update();
}

} // namespace

void PropertyControllerHandler::update()
{
    auto* target = qobject_cast<QWidget*>(parent());
    if (!target)
        return;
    publishState(target, controllerState());
    for (QWidget* child : target->findChildren<QWidget*>(QString(), Qt::FindChildrenRecursively))
        publishState(child, controllerState());
}

} // namespace Marlix::Widgets
