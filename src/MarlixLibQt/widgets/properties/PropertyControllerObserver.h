#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/properties/IPropertyController.h>

#include <QObject>
#include <QStyle>

class QWidget;

namespace Marlix::Widgets {

class IPropertySheetHost;
class PropertySheet;

/// Keeps the controller state of one property, re-read on the GUI thread whenever the controller reports a change.
class MARLIXLIBQT_EXPORT PropertyControllerObserver
{
public:
    using State = IPropertyController::State; ///< The controller's state bits.
    using VariantInfo = IPropertyController::VariantInfo; ///< A variant as the controller describes it.

    /// Reads nothing until setupObserver() is called; `controller` must outlive the observer.
    PropertyControllerObserver(IPropertyController& controller, GenericPropertyAccessor propertyAccessor);
    virtual ~PropertyControllerObserver();
    PropertyControllerObserver(const PropertyControllerObserver&) = delete;
    PropertyControllerObserver& operator=(const PropertyControllerObserver&) = delete;

    IPropertyController& controller() const { return observedController; } ///< The controller asked.
    Flags<State> controllerState() const { return state; } ///< The state last read; empty before the first read.
    /// The variant last read as supplying the value; none before the first read.
    const Optional<VariantInfo>& activeVariant() const { return variant; }
    const GenericPropertyAccessor& propertyAccessor() const { return accessor; } ///< The property observed.

protected:
    /// The state was read again.
    virtual void update() = 0;
    /// Subscribes at the controller; every report, from whatever thread, becomes one synchronize() queued to
    /// `context`, and a first one is queued now so the state is read once construction has finished.
    void setupObserver(QObject* context);
    /// Reads state and variant again and calls update(); call it on the GUI thread.
    void synchronize();

private:
    IPropertyController& observedController;
    Flags<State> state;
    Optional<VariantInfo> variant;
    GenericPropertyAccessor accessor;
    CallbackLifetime subscription;
};

/// Publishes the controller state of a widget's property to the style as "Zorva.PropertyControllerState", on the
/// widget and all its descendants. Owned by the widget.
class MARLIXLIBQT_EXPORT PropertyControllerHandler : public QObject, public PropertyControllerObserver
{
    Q_OBJECT

public:
    /// Name of the dynamic Qt property that carries the state, as a Flags<State>.
    static constexpr const char* STATE_PROPERTY = "Zorva.PropertyControllerState";
    /// Styles that draw controller states answer this hint with a non-zero value.
    static constexpr auto SH_INSTALL_HANDLER = static_cast<QStyle::StyleHint>(QStyle::SH_CustomBase + 3);

    /// Installs a handler on `widget` for `property`, with the controller of `host`, when the widget's style asks
    /// for one; returns it (a child of `widget`), or null when the style does not draw controller states.
    static PropertyControllerHandler* installOnWidget(
        QWidget* widget, IPropertySheetHost& host, const GenericPropertyAccessor& property);
    /// The same with the host of `sheet`; null without a sheet, since an editor outside a sheet has no controller.
    static PropertyControllerHandler* installOnWidget(
        QWidget* widget, PropertySheet* sheet, const GenericPropertyAccessor& property);

    /// Registers Flags<State> with Qt's meta types, with a conversion to unsigned int for the style. Idempotent.
    static void registerMetaType();

protected:
    void update() override;

private:
    PropertyControllerHandler(IPropertyController& controller, GenericPropertyAccessor property, QWidget* parent);
};

} // namespace Marlix::Widgets
