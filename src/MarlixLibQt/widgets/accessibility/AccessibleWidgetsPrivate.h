#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>

#include <QAccessible>
#include <QAccessibleWidget>
#include <QCoreApplication>
#include <QRect>
#include <QString>

#include <map>
#include <utility>

class QPainter;

namespace Marlix::Widgets {

// The library's own accessibility plumbing: nothing here is exported, hosts reach it only through Qt's QAccessible.

/// Makes the library's custom-drawn and composite widgets known to assistive technology: Qt asks the factory this
/// installs before its own, by class name. Installed by the library's first start.
void installAccessibleFactory();
/// Removed by the library's last stop; interfaces already made stay with their widgets.
void removeAccessibleFactory();

/// Outlines `rect` of a custom-drawn widget in the colour the style gives focused fields, when the widget has the
/// keyboard focus, so a keyboard user sees where the keys go. `width` is in device-independent pixels.
void drawKeyboardFocus(QPainter& painter, const QWidget& widget, const QRect& rect, double width = 1.0);

/// Names an editor made for a labelled place (a property sheet row, a lister cell). An editor that hands its focus to
/// a standard Qt field (the text field of a path) has that field named too, replacing its generic name, as it is what
/// a screen reader announces on focus; the library's own fields find the name by themselves.
void setEditorAccessibleName(QWidget* editor, const QString& name);

/// What a screen reader calls a widget that was given no name of its own: the label that names it (a buddy label
/// anywhere inside the editor it belongs to), prefixed by the name of that editor ("Position X"), or the editor's
/// name alone. Empty when neither is known.
QString getContextualAccessibleName(const QWidget* widget);

/// One part of a composite widget that is no widget of its own: a control point, a graph node, an axis of a colour
/// field. Only `name` and `rect` are needed; with `value` set the part also answers as a value.
struct AccessiblePartDescription
{
    QAccessible::Role role = QAccessible::Graphic;
    QString name;
    /// In screen coordinates, like every rectangle of the accessibility interfaces.
    QRect rect;
    QAccessible::State state;
    QString description; ///< Read after the name: what the part's state means ("connected").
    Function<double()> value;
    Function<void(double)> setValue;
    double minimum = 0.0;
    double maximum = 1.0;
    double step = 0.01;
};

/// A widget whose parts are described on demand: the widget's own child widgets come first, then the parts. Parts
/// are addressed by index and read afresh at every question, so they follow the widget without any notification.
class AccessibleCompositeWidget : public QAccessibleWidget
{
    Q_DECLARE_TR_FUNCTIONS(AccessibleCompositeWidget)

public:
    AccessibleCompositeWidget(QWidget* widget, QAccessible::Role role);
    ~AccessibleCompositeWidget() override;

    virtual int partCount() const { return 0; }
    /// Only called with 0 <= index < partCount().
    virtual AccessiblePartDescription describePart(int index) const;
    /// The parts of part `part` (the slots of a graph node); none by default.
    virtual int subPartCount(int part) const;
    /// Only called with 0 <= sub < subPartCount(part).
    virtual AccessiblePartDescription describeSubPart(int part, int sub) const;
    /// The interface of part `part`, or of its part `sub` when that is not negative; made on the first question.
    QAccessibleInterface* partInterface(int part, int sub) const;

    QString text(QAccessible::Text t) const override;
    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;

private:
    int widgetChildCount() const;

    /// The parts handed out so far, by index; registered with Qt, which owns them, and removed with this interface.
    mutable std::map<std::pair<int, int>, QAccessible::Id> parts;
};

/// A widget that edits one number (a slider, a field, a colour channel): it answers as a value, described by the
/// `value`, `setValue`, range and step of `describeValue()`.
class AccessibleValueWidget : public AccessibleCompositeWidget, public QAccessibleValueInterface
{
public:
    using AccessibleCompositeWidget::AccessibleCompositeWidget;

    virtual AccessiblePartDescription describeValue() const = 0;

    QString text(QAccessible::Text t) const override;
    void* interface_cast(QAccessible::InterfaceType type) override;
    QVariant currentValue() const override;
    void setCurrentValue(const QVariant& value) override;
    QVariant maximumValue() const override;
    QVariant minimumValue() const override;
    QVariant minimumStepSize() const override;
};

/// The interfaces of the library's own widgets, by the class name Qt asks for; null for any other class.
QAccessibleInterface* makeEditorAccessible(const QString& className, QObject* object);
QAccessibleInterface* makeCurvesAccessible(QWidget* curves);
QAccessibleInterface* makeGraphViewAccessible(QWidget* view);

/// Clamps a value set through an accessibility interface to the part's range.
double clampAccessibleValue(const AccessiblePartDescription& part, double value);

} // namespace Marlix::Widgets
