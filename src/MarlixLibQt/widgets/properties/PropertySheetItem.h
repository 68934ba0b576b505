#pragma once

#include <MarlixLib/base/FlatSet.h>
#include <MarlixLib/data/GenericPropertyAccessor.h>
#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QPointer>
#include <QWidget>

class QLabel;
class QToolButton;

namespace Marlix::Widgets {

class Collapsible;
class PropertySheet;
struct UiDynamicName;
struct UiEnabledIf;
struct UiValueSetter;
struct UiVisibleIf;

/// One row of a property sheet: the property's label, its editor and a reset button, for one property of every
/// selected object. A direct child of its section, so that the style can tell sheet rows from other widgets.
class MARLIXLIBQT_EXPORT PropertySheetItem : public QWidget
{
    Q_OBJECT

public:
    /// Set on the editor, true while the selected objects hold different values; styles and editors may read it.
    static constexpr const char* MIXED_VALUES_PROPERTY = "Zorva.MixedValues";
    /// The label's tooltip line while the objects disagree.
    static constexpr StringView MIXED_VALUES_TEXT = GenericPropertyAccessor::MIXED_VALUES_TEXT;
    /// Source text of the undo label of a reset, before the row's name; translated when the step is made.
    static constexpr StringView RESET_ACTION_PREFIX
        = QT_TRANSLATE_NOOP("Marlix::Widgets::PropertySheetItem", "Reset of ");

    /// A row for `accessor` in `section`; the editor comes from PropertyWidgetConstructor with the sheet's host.
    PropertySheetItem(PropertySheet& sheet, GenericPropertyAccessor accessor, Collapsible* section);
    ~PropertySheetItem() override;

    PropertySheet& getSheet() const { return sheet; } ///< The sheet that owns the row.
    Collapsible* getSection() const { return section; } ///< The section the row is placed in.
    const GenericPropertyAccessor& getAccessor() const { return accessor; } ///< The property of every selected object.
    /// Path of the property, as PropertySheet::findItem() takes it.
    const String& getPath() const { return accessor.getPath(); }
    QLabel* label() const { return nameLabel; } ///< The label with the property's name; owned by the row.
    QWidget* editor() const { return editorWidget; } ///< The editor; null once something else deleted it.
    /// Null while no object holds anything else than the default: the button is made when it is first needed.
    QToolButton* resetButton() const { return resetTool; }

    /// True while the selected objects hold different values.
    bool hasMixedValues() const { return mixed; }
    /// True when the property is writable and some object holds another value than the definition's default.
    bool canReset() const { return resettable; }
    /// Writes the definition's default to every object as one undo action; does nothing when canReset() is false.
    /// A write the objects refuse changes none of them.
    void resetToDefault();

    /// Whether anything about the row depends on the objects' other properties: a shown-if or enabled-if condition,
    /// an enabling property, a name computed from the object, or the hidden flag.
    bool hasConditions() const { return visibleIf || enabledIf || !enabler.empty() || dynamicName || hidden; }
    /// The last result of the conditions (true without a condition).
    bool isShownByCondition() const { return shownByCondition; }
    /// The last result of the enabled-if condition and the enabling property (true without either).
    bool isEnabledByCondition() const { return enabledByCondition; }
    /// Evaluates the conditions on every object again and records the properties they read; true when the shown
    /// state changed. The enabled state is applied here; the sheet places the row when it is shown or hidden.
    bool evaluateConditions();
    /// Whether a change of `definition` may change the result of the conditions.
    bool dependsOn(const PropertyDefinition& definition) const { return dependencies.contains(&definition); }

    /// Writes the value of the property's value setter to every object as one undo action; false when the property
    /// has none, is read-only, or the objects refuse it (then none of them changed).
    bool applyValueSetter();

    /// Re-reads whether the objects agree and whether they hold the default, after the property changed.
    void refreshValueState();

    /// The width the label needs in its current font.
    int labelWidthHint() const;
    /// Width of the label column, set by the sheet for a whole section or for every section at once.
    void setLabelWidth(int width);
    int labelWidth() const { return labelColumnWidth; } ///< Width of the label column, in pixels.
    /// The height of a one-line row (taller editors make the row taller) and the gap between label, editor and
    /// reset button. 0 as height lets the editor's size hint decide.
    void setRowMetrics(int height, int gap);
    int oneLineHeight() const { return rowHeight; } ///< The height set by setRowMetrics(); 0 when the editor decides.

    /// Label column, editor hint and reset button side by side; as tall as the tallest of them or the row height.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override; ///< Like sizeHint() with the editor's minimum width.

protected:
    /// Places the children again when one of them asks for a new layout.
    bool event(QEvent* event) override;
    /// Places label, editor and reset button; mirrored for right-to-left layouts.
    void resizeEvent(QResizeEvent* event) override;
    /// Offers "Reset to Default" and the value setter; ignored when there is neither, so that the parent may show its
    /// own.
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void placeChildren();
    bool writeToEvery(const Value& value, const String& label);
    void updateResetButton();
    void updateLabel();
    void updateDynamicName();
    int resetSlotWidth() const;

    PropertySheet& sheet;
    Collapsible* section;
    GenericPropertyAccessor accessor;
    QLabel* nameLabel = nullptr;
    QPointer<QWidget> editorWidget;
    QToolButton* resetTool = nullptr;
    QString uiName;
    QString description;
    const UiVisibleIf* visibleIf = nullptr;
    const UiEnabledIf* enabledIf = nullptr;
    const UiDynamicName* dynamicName = nullptr;
    const UiValueSetter* valueSetter = nullptr;
    String enabler;
    FlatSet<const PropertyDefinition*> dependencies;
    int labelColumnWidth = 0;
    int rowHeight = 0;
    int spacing = 0;
    bool mixed = false;
    bool resettable = false;
    bool writable = true;
    bool hidden = false;
    bool resetOffered = true;
    bool shownByCondition = true;
    bool enabledByCondition = true;
};

} // namespace Marlix::Widgets
