#include <MarlixLibQt/widgets/editors/SpinBox.h>

#include <MarlixLibQt/QtUtils.h>

#include <MarlixLib/base/Exception.h>

#include <QApplication>
#include <QCursor>
#include <QFocusEvent>
#include <QFontMetrics>
#include <QHoverEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QScreen>
#include <QStyleOptionSpinBox>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace Marlix::Widgets {

namespace {

constexpr int DEFAULT_DECIMALS = 3;
constexpr double DEFAULT_STEP = 0.1;

// A degree sign sits on the number; every other unit is written after a space.
QString toSpinBoxSuffix(const String& suffix)
{
    if (suffix.empty())
        return {};
    const QString text = QString::fromStdString(suffix);
    return text == QStringLiteral("°") ? text : QLatin1Char(' ') + text;
}

} // namespace

SpinBox::SpinBox(QWidget* parent)
    : SpinBox(makeSharedPtr<VariableModel<double>>(0.0), 0.0, parent)
{
}

SpinBox::SpinBox(SharedPtr<Model<double>> model, double defaultValue, QWidget* parent)
    : QDoubleSpinBox(parent)
    , CommonContextMenuOwner(this)
    , model(std::move(model))
{
    if (!this->model)
        Marlix::Detail::throwStopException("widgets/SpinBox", __LINE__);

    // The editor the base class made is configured rather than replaced: a second one would be built, wired up and
    // thrown away for every field.
    QLineEdit* edit = lineEdit();
    edit->setAttribute(Qt::WA_Hover);
    edit->installEventFilter(this);
    setAttribute(Qt::WA_Hover);
    setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    // No wheel focus: a wheel over an unfocused field must scroll the surrounding view, not grab the field.
    setFocusPolicy(Qt::StrongFocus);
    // Typed values reach the model as they are typed, so linked views follow; the burst is one change bracket.
    setKeyboardTracking(true);
    setStepType(StepType::Fixed);
    // Also shows the model's value.
    applyRange(DEFAULT_STEP, DEFAULT_DECIMALS);

    registerCallback(this->model->addCallback([this](double value) { showModelValue(value); }));
    connect(this, &QDoubleSpinBox::valueChanged, this, &SpinBox::onValueChanged);
    connect(edit, &QLineEdit::textEdited, this, &SpinBox::onTextEdited);
    connect(this, &QAbstractSpinBox::editingFinished, this, [this] {
        if (inputAction == InputAction::Typing)
            finishTyping();
        else if (inputAction == InputAction::Keyboard || inputAction == InputAction::Wheel)
            endValueChange();
        typedSinceCommit = false;
    });

    // A reset or paste gives every object the same value, so the field shows it even over several values.
    setResetFunction([this, defaultValue] {
        setMixedValues(false);
        this->model->set(defaultValue);
    });
    setIsDefaultFunction([this, defaultValue] { return !mixedValues && this->model->get() == defaultValue; });
    setTextFunctions([this] { return convertValueToText(this->model->get()); },
                     [this](const QString& text) { return pasteValueText(text); });
    setEditableFunction([this] { return isEnabled() && !isReadOnly(); });
}

SpinBox::~SpinBox()
{
    // A field destroyed in the middle of a gesture still leaves the model's bracket closed.
    if (inputAction != InputAction::None) {
        inputAction = InputAction::None;
        model->commitChange();
    }
}

void SpinBox::setRange(double minimum, double maximum, double step, int decimals)
{
    if (std::isnan(minimum) || std::isnan(maximum) || minimum > maximum || !(step >= 0.0) || decimals < 0)
        Marlix::Detail::throwStopException("widgets/SpinBox", __LINE__);
    modelMinimum = minimum;
    modelMaximum = maximum;
    applyRange(step, decimals);
}

void SpinBox::applyRange()
{
    applyRange(singleStep(), decimals());
}

void SpinBox::applyRange(double step, int decimalCount)
{
    const auto toDisplay = [this](double bound) {
        return std::abs(bound) >= UNBOUNDED ? bound : conversion.toDisplay(bound);
    };
    const double first = toDisplay(modelMinimum);
    const double second = toDisplay(modelMaximum);
    const QSignalBlocker blocker(this);
    {
        // Each of these re-shows the old value in the new format, and the editor lays out and validates every text it
        // is given; only the text of the model's value below counts.
        const QScopedValueRollback deferring(textDeferred, true);
        // Decimals before the range: they re-round the current bounds, which are cheaper to round than the new ones.
        if (decimalCount != decimals())
            setDecimals(decimalCount);
        setSingleStep(step);
        QDoubleSpinBox::setRange(std::min(first, second), std::max(first, second));
    }
    setValue(conversion.toDisplay(model->get()));
    updateRangeToolTip();
}

void SpinBox::setStepType(StepType type)
{
    stepType = type;
    QDoubleSpinBox::setStepType(type == StepType::Adaptive ? QAbstractSpinBox::AdaptiveDecimalStepType
                                                           : QAbstractSpinBox::DefaultStepType);
}

void SpinBox::setConversion(ModelValueConverter<double> converter)
{
    if (!converter.toDisplay || !converter.fromDisplay)
        Marlix::Detail::throwStopException("widgets/SpinBox", __LINE__);
    conversion = std::move(converter);
    applySuffix(toSpinBoxSuffix(conversion.suffix));
    applyRange();
}

void SpinBox::setDisplaySuffix(const QString& text)
{
    applySuffix(text);
    updateRangeToolTip();
}

void SpinBox::applySuffix(const QString& text)
{
    // An empty field shows its placeholder only without a suffix: while several values are shown, or typed over, the
    // suffix waits until the field shows a number again.
    const bool aside = suffix() != displaySuffix;
    displaySuffix = text;
    if (!mixedValues && !aside)
        setSuffix(text);
}

void SpinBox::notify()
{
    showModelValue(model->get());
}

void SpinBox::showModelValue(double modelValue)
{
    const double shown = conversion.toDisplay(modelValue);
    // The echo of a value being typed would rewrite the text under the cursor ("2" as "2.000" before the point).
    if (inputAction == InputAction::Typing && formatValue(shown) == formatValue(value()))
        return;
    const bool wasBlocked = blockSignals(true);
    setValue(shown);
    blockSignals(wasBlocked);
}

void SpinBox::onValueChanged(double displayValue)
{
    if (mixedValues) {
        // The field re-reading its empty text (Enter, focus loss) gives no value; a step or drag does, starting from
        // the model's value, and sets it on every object.
        if (inputAction == InputAction::None || inputAction == InputAction::Typing)
            return;
        setMixedValues(false);
    } else if (formatValue(displayValue) == convertValueToText(model->get())) {
        // The field shows the model value rounded to its decimals: writing that rounded value back when nothing was
        // changed (Enter on an untouched field) would lose the model's precision.
        return;
    }
    model->set(conversion.fromDisplay(displayValue));
}

void SpinBox::onTextEdited(const QString& text)
{
    typedSinceCommit = true;
    if (inputAction != InputAction::Typing) {
        const bool fromMixed = mixedValues;
        beginValueChange(InputAction::Typing);
        valueBeforeTyping = model->get();
        typingFromMixed = fromMixed;
    }
    if (mixedValues) {
        // The suffix stays away until the typing ends, so the typed text is not rewritten under the cursor.
        mixedValues = false;
        lineEdit()->setPlaceholderText({});
    }
    QString copy = text;
    int position = lineEdit()->cursorPosition();
    typedTextAcceptable = validate(copy, position) == QValidator::Acceptable;
}

void SpinBox::finishTyping()
{
    typedSinceCommit = false;
    if (inputAction != InputAction::Typing)
        return;
    inputAction = InputAction::None;
    if (!typedTextAcceptable) {
        // The text ended out of range or with a foreign separator: the values that passed through while typing are
        // taken back, so a bad entry changes nothing.
        model->set(valueBeforeTyping);
        model->revertChange();
        if (typingFromMixed) {
            // The values still disagree: the field shows that again instead of the first one.
            typingFromMixed = false;
            setMixedValues(true);
            return;
        }
    } else {
        // Typing the first of several values still means that value for all of them.
        if (typingFromMixed)
            model->set(conversion.fromDisplay(value()));
        model->commitChange();
    }
    if (typingFromMixed)
        updateGeometry();
    typingFromMixed = false;
    if (!mixedValues && suffix() != displaySuffix)
        setSuffix(displaySuffix);
}

void SpinBox::setMixedValues(bool mixed)
{
    if (mixed == mixedValues)
        return;
    mixedValues = mixed;
    lineEdit()->setPlaceholderText(mixed ? tr("<different values>") : QString());
    if (mixed) {
        setSuffix(QString());
        lineEdit()->clear();
    } else {
        setSuffix(displaySuffix);
        notify();
    }
    updateGeometry();
}

bool SpinBox::handleShortcutOverride(QEvent* event)
{
    if (event->type() != QEvent::ShortcutOverride || typedSinceCommit)
        return false;
    auto* keyEvent = static_cast<QKeyEvent*>(event);
    if (!keyEvent->matches(QKeySequence::Undo) && !keyEvent->matches(QKeySequence::Redo))
        return false;
    // Nothing typed since the last commit: the text's own undo history holds nothing of the user's, and the keys undo
    // what the field did to the model, as they do everywhere else in the application.
    event->ignore();
    return true;
}

void SpinBox::stepBy(int steps)
{
    // Within a gesture the proportional step was fixed when it began, so every step of it is the same size.
    if (stepType == StepType::Proportional && inputAction == InputAction::None)
        setSingleStep(getProportionalStep(value()));
    // The base class reads text typed but not yet confirmed before it steps.
    QDoubleSpinBox::stepBy(steps);
}

void SpinBox::beginValueChange(InputAction action)
{
    if (inputAction == InputAction::Typing)
        finishTyping();
    else if (inputAction != InputAction::None)
        model->commitChange();
    inputAction = action;
    model->beginChange();
    if (stepType == StepType::Proportional && action != InputAction::Typing)
        setSingleStep(getProportionalStep(value()));
}

void SpinBox::endValueChange()
{
    if (inputAction == InputAction::Typing) {
        finishTyping();
        return;
    }
    if (inputAction == InputAction::None)
        return;
    inputAction = InputAction::None;
    model->commitChange();
}

void SpinBox::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        beginValueChange(InputAction::MouseDrag);
        dragLastY = static_cast<int>(std::lround(event->globalPosition().y()));
        valueAtPress = value();
        dragStepValid = false;
        dragging = false;
    }
    // A press on an arrow still steps once.
    QDoubleSpinBox::mousePressEvent(event);
}

void SpinBox::mouseMoveEvent(QMouseEvent* event)
{
    QDoubleSpinBox::mouseMoveEvent(event);
    if (!(event->buttons() & Qt::LeftButton) || inputAction != InputAction::MouseDrag)
        return;

    const QPoint global(static_cast<int>(std::lround(event->globalPosition().x())),
                        static_cast<int>(std::lround(event->globalPosition().y())));
    const int delta = dragLastY - global.y();
    if (!dragging) {
        dragging = true;
        setCursor(Qt::SizeVerCursor);
        // The arrow's auto-repeat would keep stepping under a dragging cursor; the release resets it and nothing else.
        QMouseEvent release(QEvent::MouseButtonRelease, event->position(), event->globalPosition(), Qt::LeftButton,
                            Qt::NoButton, event->modifiers());
        QDoubleSpinBox::mouseReleaseEvent(&release);
    }

    double step = singleStep();
    if (stepType == StepType::Adaptive && delta != 0) {
        if (!dragStepValid) {
            dragStep = getAdaptiveDragStep(value(), delta);
            dragStepValid = true;
        }
        step = dragStep;
    }
    step *= getSpeedFactor(event->modifiers(), scrollSpeedAdjustmentType);
    if (delta != 0)
        setValue(value() + delta * step);

    QScreen* screen = QGuiApplication::screenAt(global);
    if (!screen)
        screen = screenOf(this);
    const std::optional<int> wrapped = screen ? getWrappedCursorY(global.y(), dragLastY, screen->geometry())
                                              : std::nullopt;
    if (wrapped) {
        QCursor::setPos(screen, global.x(), *wrapped);
        dragLastY = *wrapped;
    } else {
        dragLastY = global.y();
    }
    event->accept();
}

void SpinBox::mouseReleaseEvent(QMouseEvent* event)
{
    QDoubleSpinBox::mouseReleaseEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    dragStepValid = false;
    if (dragging)
        unsetCursor();
    dragging = false;
    endValueChange();
}

void SpinBox::wheelEvent(QWheelEvent* event)
{
    if (!lineEdit()->hasFocus()) {
        // Not ours: the surrounding view scrolls.
        event->ignore();
        return;
    }
    switch (event->phase()) {
    case Qt::ScrollEnd:
        endValueChange();
        break;
    case Qt::ScrollBegin:
        beginValueChange(InputAction::Wheel);
        break;
    default:
        if (inputAction != InputAction::Wheel)
            beginValueChange(InputAction::Wheel);
        break;
    }
    QDoubleSpinBox::wheelEvent(event);
}

void SpinBox::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        finishTyping();
    const bool arrow = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
    if (arrow && !event->isAutoRepeat())
        beginValueChange(InputAction::Keyboard);
    QDoubleSpinBox::keyPressEvent(event);
}

void SpinBox::keyReleaseEvent(QKeyEvent* event)
{
    QDoubleSpinBox::keyReleaseEvent(event);
    const bool arrow = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
    if (arrow && !event->isAutoRepeat())
        endValueChange();
}

void SpinBox::focusInEvent(QFocusEvent* event)
{
    QDoubleSpinBox::focusInEvent(event);
    Q_EMIT focusChanged(true);
}

void SpinBox::focusOutEvent(QFocusEvent* event)
{
    finishTyping();
    endValueChange();
    QDoubleSpinBox::focusOutEvent(event);
    Q_EMIT focusChanged(false);
}

bool SpinBox::event(QEvent* event)
{
    if (handleShortcutOverride(event))
        return true;
    switch (event->type()) {
    case QEvent::DynamicPropertyChange:
        if (static_cast<QDynamicPropertyChangeEvent*>(event)->propertyName() == MIXED_VALUES_PROPERTY)
            setMixedValues(property(MIXED_VALUES_PROPERTY).toBool());
        break;
    case QEvent::HoverEnter:
    case QEvent::HoverMove:
    case QEvent::HoverLeave:
        updateDraggingHint(static_cast<QHoverEvent*>(event)->position().toPoint());
        break;
    default:
        break;
    }
    return QDoubleSpinBox::event(event);
}

bool SpinBox::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == lineEdit()) {
        if (handleShortcutOverride(event))
            return true;
        switch (event->type()) {
        case QEvent::HoverEnter:
        case QEvent::HoverMove:
        case QEvent::HoverLeave:
            updateDraggingHint(lineEdit()->mapTo(this, static_cast<QHoverEvent*>(event)->position().toPoint()));
            break;
        default:
            break;
        }
    }
    return QDoubleSpinBox::eventFilter(watched, event);
}

void SpinBox::updateDraggingHint(const QPoint& position)
{
    QStyleOptionSpinBox option;
    initStyleOption(&option);
    option.subControls = QStyle::SC_SpinBoxFrame | QStyle::SC_SpinBoxEditField | QStyle::SC_SpinBoxUp
        | QStyle::SC_SpinBoxDown;
    option.stepEnabled = QAbstractSpinBox::StepUpEnabled | QAbstractSpinBox::StepDownEnabled;
    bool hint = false;
    if (style()->styleHint(SH_DRAGGING_HINT, &option, this) != 0 && rect().contains(position)) {
        const QStyle::SubControl control = style()->hitTestComplexControl(QStyle::CC_SpinBox, &option, position, this);
        hint = control == QStyle::SC_SpinBoxUp || control == QStyle::SC_SpinBoxDown;
    }
    if (hint == showDraggingHint)
        return;
    showDraggingHint = hint;
    updateToolTip();
}

bool SpinBox::pasteValueText(const QString& text)
{
    const std::optional<double> parsed = parseValueText(text);
    if (!parsed)
        return false;
    setMixedValues(false);
    model->set(*parsed);
    return true;
}

} // namespace Marlix::Widgets
