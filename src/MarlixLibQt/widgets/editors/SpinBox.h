#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/CommonContextMenuOwner.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/ModelValueConverter.h>

#include <QDoubleSpinBox>
#include <QStyle>

#include <cstdint>
#include <optional>

class QRect;

namespace Marlix::Widgets {

/// The numeric field of the library: typed, stepped with arrows and wheel, or dragged up and down from its arrows
/// with the cursor wrapping at the screen edge. Each drag, wheel gesture or held arrow key is one change bracket.
class MARLIXLIBQT_EXPORT SpinBox : public QDoubleSpinBox, public BaseWithModel, public CommonContextMenuOwner
{
    Q_OBJECT

public:
    /// The gesture that holds the model's change bracket open.
    enum class InputAction : std::uint32_t
    {
        None = 0, ///< No gesture: every change is a change of its own.
        MouseDrag = 1, ///< A drag from the arrows, from the press to the release.
        Wheel = 2, ///< A wheel gesture, from its ScrollBegin to its ScrollEnd phase.
        Keyboard = 3, ///< An arrow key, from the first press to its release (auto-repeat included).
        /// A burst of typing: written as it is typed, kept on Enter, focus loss or the next gesture.
        Typing = 4,
    };

    /// How arrows, wheel and drags step the value.
    enum class StepType : std::uint32_t
    {
        /// singleStep() everywhere.
        Fixed = 0,
        /// Arrows and wheel step by decimal magnitude; a drag steps by the magnitude of the value at its start.
        Adaptive = 1,
        /// Each step is 0.4 % of the value (at least 0.004).
        Proportional = 2,
    };

    /// Which modifiers speed a drag up or slow it down, ten times each.
    enum class ScrollSpeedAdjustmentType : std::uint32_t
    {
        ShiftFasterCtrlSlower = 0, ///< Shift ten times faster, Ctrl ten times slower.
        CtrlFasterAltSlower = 1, ///< Ctrl ten times faster, Alt ten times slower.
        NoAdjustment = 2, ///< The modifiers do not change the speed.
    };

    /// How many decimals the text shows.
    enum class PrecisionType : std::uint32_t
    {
        AllDecimals = 0, ///< Always decimals() digits.
        /// 2.000 shows as 2.0 and 1.500 as 1.50: zeros are dropped while two of them end the text.
        TrimTrailingZeros = 1,
    };

    /// The style hint that enables the dragging hint in the tooltip over the arrows.
    static constexpr auto SH_DRAGGING_HINT = static_cast<QStyle::StyleHint>(QStyle::SH_CustomBase + 4);
    /// The hint that the tooltip over the arrows adds while the style enables it, in rich text.
    static constexpr const char* DRAGGING_HINT_TEXT
        = QT_TR_NOOP("<small>Hint: Dragging speed can be increased 10x with SHIFT being hold and decreased 10x by "
                     "holding CTRL.</small>");
    /// Bounds at or beyond these are written as no bound in the range tooltip (the largest 32-bit integer: what
    /// integer properties without a limit carry, and anything larger).
    static constexpr double UNBOUNDED = 2147483647.0;
    /// The largest bound that the size hints make room for. Composite editors put three fields in a row, and ten-digit
    /// bounds would make a transformation editor wider than any property sheet.
    static constexpr double WIDEST_SIZED_BOUND = 99999.0;
    /// The dynamic property by which a host says that the field stands for several values that disagree.
    static constexpr const char* MIXED_VALUES_PROPERTY = "Zorva.MixedValues";

    explicit SpinBox(QWidget* parent = nullptr); ///< A field bound to a model of its own that starts at 0.
    /// A field that shows and edits \p model; \p defaultValue is what "Reset to default" sets. A null model throws
    /// StopException.
    SpinBox(SharedPtr<Model<double>> model, double defaultValue, QWidget* parent = nullptr);
    ~SpinBox() override;

    /// Bounds in model units (converted for display), the step in display units.
    void setRange(double minimum, double maximum, double step, int decimals);
    void setStepType(StepType type); ///< Fixed, Adaptive or Proportional stepping; the value stays.
    StepType getStepType() const { return stepType; } ///< The stepping, Fixed by default.
    void setPrecisionType(PrecisionType type) { precisionType = type; notify(); } ///< Re-formats the text at once.
    PrecisionType getPrecisionType() const { return precisionType; } ///< The decimals rule, AllDecimals by default.
    /// Which modifiers change the drag speed; takes effect from the next drag.
    void setScrollSpeedAdjustmentType(ScrollSpeedAdjustmentType type) { scrollSpeedAdjustmentType = type; }
    /// The modifiers that change the drag speed; ShiftFasterCtrlSlower by default.
    ScrollSpeedAdjustmentType getScrollSpeedAdjustmentType() const { return scrollSpeedAdjustmentType; }
    /// New display conversion and suffix; the stored range is shown converted.
    void setConversion(ModelValueConverter<double> converter);
    /// The display conversion and suffix in use.
    const ModelValueConverter<double>& getConversion() const { return conversion; }
    /// Replaces the suffix shown after the number and in the range tooltip.
    void setDisplaySuffix(const QString& suffix);

    /// The lower bound in model units; -UNBOUNDED when there is none.
    double getModelMinimum() const { return modelMinimum; }
    /// The upper bound in model units; UNBOUNDED when there is none.
    double getModelMaximum() const { return modelMaximum; }
    const SharedPtr<Model<double>>& getModel() const { return model; } ///< The model shown; never null.
    InputAction getInputAction() const { return inputAction; } ///< The gesture under way; None between gestures.
    /// Whether the tooltip now carries DRAGGING_HINT_TEXT: the cursor is over the arrows and the style enables it.
    bool isDraggingHintShown() const { return showDraggingHint; }
    /// Whether the field shows no number because it stands for several values that disagree.
    bool isShowingMixedValues() const { return mixedValues; }
    /// The field's text editor, where typing and the keyboard focus go.
    QLineEdit* getLineEdit() const { return lineEdit(); }

    /// The text the field shows for a model value: conversion, decimals and trimming applied, without the suffix.
    QString convertValueToText(double modelValue) const;
    /// A text typed or pasted into the field as a model value; nothing when the field would not accept it.
    std::optional<double> parseValueText(const QString& text) const;

    void notify() override;

    /// Wide enough for the range's bounds, but never for more than WIDEST_SIZED_BOUND: an unbounded field is as wide as
    /// one that holds five whole digits, and larger values scroll inside it.
    QSize sizeHint() const override;
    /// Like sizeHint(), without room for the suffix where the base class leaves it out.
    QSize minimumSizeHint() const override;

    /// The text of a display value in the locale, trimmed by the precision type; empty while values are mixed.
    QString textFromValue(double value) const override;
    /// Reads a number of the locale; in a locale whose group separator is its decimal point, the last one is the point.
    double valueFromText(const QString& text) const override;
    /// Intermediate for texts outside the range or with a separator that is not the locale's decimal point.
    QValidator::State validate(QString& text, int& position) const override;
    /// Steps as the step type says; within a gesture a proportional step keeps the size it had when the gesture began.
    void stepBy(int steps) override;

    /// The step of an adaptive drag starting at `value`: one tenth of the value's decade after rounding it to two
    /// significant digits, at least 0.001. A drag towards zero (`delta` against the value's sign) looks one percent
    /// lower, so 250 dragged down and -250 dragged up both step by 10.
    static double getAdaptiveDragStep(double value, int delta);
    /// The proportional step at \p value: 0.4 % of it, at least 0.004.
    static double getProportionalStep(double value);
    /// The modifier factor of a drag: 10, 0.1 or 1.
    static double getSpeedFactor(Qt::KeyboardModifiers modifiers, ScrollSpeedAdjustmentType type);
    /// Where the cursor goes when a drag reaches the screen's edge: the opposite edge when the cursor stands on the
    /// bottom row moving down or on the top row moving up, else nothing.
    static std::optional<int> getWrappedCursorY(int y, int lastY, const QRect& screenGeometry);
    /// A number text of a locale whose group separator is its decimal point, written unambiguously: `text` as the
    /// base class wrote it (its grouping, and with it the decimal point, may have been dropped), rewritten to the
    /// whole digits, the point and `decimals` digits. Other texts are returned as they are.
    static QString disambiguateGrouping(const QString& text, double value, int decimals, const QString& decimalPoint,
                                        const QString& groupSeparator);
    /// Reads such a text back: the last separator is the decimal point, a leading one means a zero ahead of it.
    static std::optional<double> parseAmbiguousGrouping(const QString& text, const QString& separator);

Q_SIGNALS:
    /// Emitted after the field gained (true) or lost (false) the keyboard focus; losing it ends typing and gestures.
    void focusChanged(bool hasFocus);

protected:
    /// Follows MIXED_VALUES_PROPERTY and the hover for the dragging hint; leaves Undo and Redo to the application while
    /// nothing was typed since the last commit.
    bool event(QEvent* event) override;
    /// Follows the hover over the field's text editor for the dragging hint.
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// Opens a drag gesture with the left button; a press on an arrow still steps once.
    void mousePressEvent(QMouseEvent* event) override;
    /// Drags the value with the vertical movement, wrapping the cursor at the screen edge.
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override; ///< Ends the drag gesture as one change.
    /// Steps only while the field has the focus, else leaves the wheel to the surrounding view.
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override; ///< Enter ends a burst of typing; an arrow key opens a gesture.
    void keyReleaseEvent(QKeyEvent* event) override; ///< Releasing the arrow key ends its gesture.
    void focusInEvent(QFocusEvent* event) override; ///< Emits focusChanged().
    /// Keeps or reverts the typed text, ends any gesture and emits focusChanged().
    void focusOutEvent(QFocusEvent* event) override;

private:
    void beginValueChange(InputAction action);
    void endValueChange();
    void onTextEdited(const QString& text);
    /// Enter or focus loss: a burst of typing that ended on a text the field cannot take goes back to where it began.
    void finishTyping();
    bool handleShortcutOverride(QEvent* event);
    void setMixedValues(bool mixed);
    void applySuffix(const QString& text);
    /// The text of a value, also while the field shows several values (copying and sizing still need one).
    QString formatValue(double value) const;
    void showModelValue(double modelValue);
    void onValueChanged(double displayValue);
    void applyRange();
    /// Sets step, decimals and the converted range, then shows the model's value: the text is formatted once.
    void applyRange(double step, int decimalCount);
    void updateRangeToolTip();
    void updateDraggingHint(const QPoint& position);
    void updateToolTip();
    /// What the editor shows, without prefix and suffix: the text of any value while textDeferred is set.
    QString shownValueText() const;
    QString stripSuffix(const QString& text) const;
    bool hasLimitedSizedBounds() const;
    /// The size hint of a field whose bounds are limited to WIDEST_SIZED_BOUND, for an editor of the given height.
    QSize sizeForLimitedBounds(int editHeight, const QString& fixedText) const;
    bool pasteValueText(const QString& text);

    SharedPtr<Model<double>> model;
    int dragLastY = 0;
    StepType stepType = StepType::Fixed;
    double dragStep = 0.0;
    bool dragStepValid = false;
    PrecisionType precisionType = PrecisionType::AllDecimals;
    ScrollSpeedAdjustmentType scrollSpeedAdjustmentType = ScrollSpeedAdjustmentType::ShiftFasterCtrlSlower;
    double valueAtPress = 0.0;
    bool dragging = false;
    bool showDraggingHint = false;
    InputAction inputAction = InputAction::None;
    QString baseToolTip;
    ModelValueConverter<double> conversion;
    double modelMinimum = -UNBOUNDED;
    double modelMaximum = UNBOUNDED;
    /// Set while several setters run that would each re-format the text; the last step formats it once.
    bool textDeferred = false;
    /// The user typed since the last commit: undo and redo then belong to the text, not to the application.
    bool typedSinceCommit = false;
    /// Whether the last typed text was one the field accepts, and the model's value when the typing began.
    bool typedTextAcceptable = true;
    double valueBeforeTyping = 0.0;
    bool typingFromMixed = false;
    /// While several values are shown, the field is empty (its placeholder speaks) and the suffix waits here.
    bool mixedValues = false;
    /// Set while the size hints measure the bounds, which are measured as numbers also over several values.
    mutable bool sizing = false;
    QString displaySuffix;
};

} // namespace Marlix::Widgets
