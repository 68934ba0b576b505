#include <MarlixLibQt/widgets/editors/SpinBox.h>

#include <MarlixLibQt/QtUtils.h>

#include <QFontMetrics>
#include <QLineEdit>
#include <QLocale>
#include <QScopedValueRollback>
#include <QStyleOptionSpinBox>

#include <algorithm>
#include <cmath>

// What the field shows and reads: the text of a value, its parsing and validation, the range tooltip, and the size
// hints that depend on the texts.

namespace Marlix::Widgets {

namespace {

constexpr double TEXT_MARGIN = 3.0;

// Whole numbers up to 2^53 are exact in a double, so they can be written without decimals.
constexpr double LARGEST_EXACT_INTEGER = 9007199254740992.0;

bool isWholeNumber(double value)
{
    return std::abs(value) <= LARGEST_EXACT_INTEGER && value == std::trunc(value);
}

// Rich text so that the hint keeps its small print; plain lines are escaped, lines that already are markup kept.
QString toRichToolTip(const QString& text)
{
    if (text.isEmpty())
        return {};
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString& line : lines)
        if (!line.startsWith(QLatin1Char('<')))
            line = line.toHtmlEscaped();
    return QStringLiteral("<qt>") + lines.join(QStringLiteral("<br/>")) + QStringLiteral("</qt>");
}

} // namespace

QString SpinBox::convertValueToText(double modelValue) const
{
    const double shown = std::clamp(conversion.toDisplay(modelValue), minimum(), maximum());
    return formatValue(shown);
}

QSize SpinBox::sizeHint() const
{
    // The bounds are measured as numbers also over several values, and the placeholder is read in full there.
    const QScopedValueRollback measuring(sizing, true);
    ensurePolished();
    QSize hint = hasLimitedSizedBounds()
        ? sizeForLimitedBounds(lineEdit()->sizeHint().height(), prefix() + displaySuffix)
        : QDoubleSpinBox::sizeHint();
    if (mixedValues) {
        QStyleOptionSpinBox option;
        initStyleOption(&option);
        // The line edit's text margins on both sides.
        const int width = fontMetrics().horizontalAdvance(lineEdit()->placeholderText())
            + 2 * getDeviceIndependentPixels(TEXT_MARGIN, this);
        hint = hint.expandedTo(style()->sizeFromContents(QStyle::CT_SpinBox, &option,
                                                         QSize(width, lineEdit()->sizeHint().height()), this));
    }
    return hint;
}

QSize SpinBox::minimumSizeHint() const
{
    const QScopedValueRollback measuring(sizing, true);
    if (!hasLimitedSizedBounds())
        return QDoubleSpinBox::minimumSizeHint();
    ensurePolished();
    // The base class leaves the suffix out of the minimum.
    return sizeForLimitedBounds(lineEdit()->minimumSizeHint().height(), prefix());
}

bool SpinBox::hasLimitedSizedBounds() const
{
    return minimum() < -WIDEST_SIZED_BOUND || maximum() > WIDEST_SIZED_BOUND;
}

QSize SpinBox::sizeForLimitedBounds(int editHeight, const QString& fixedText) const
{
    // Measured as the base class measures its bounds (at most 18 characters of each), so a field has the size that a
    // plain spin box with the limited range would have. The base class's own hint is not asked for: it would measure
    // the full bounds, whose texts are longer than the limited ones, only to be thrown away.
    const double low = std::clamp(minimum(), -WIDEST_SIZED_BOUND, WIDEST_SIZED_BOUND);
    const double high = std::clamp(maximum(), -WIDEST_SIZED_BOUND, WIDEST_SIZED_BOUND);
    const QFontMetrics metrics(fontMetrics());
    const QString fixedContent = fixedText + QLatin1Char(' ');
    int width = 0;
    for (const double bound : { low, high }) {
        QString text = formatValue(bound);
        text.truncate(18);
        width = std::max(width, metrics.horizontalAdvance(text + fixedContent));
    }
    if (!specialValueText().isEmpty())
        width = std::max(width, metrics.horizontalAdvance(specialValueText()));
    width += 2; // room for the blinking cursor
    QStyleOptionSpinBox option;
    initStyleOption(&option);
    return style()->sizeFromContents(QStyle::CT_SpinBox, &option, QSize(width, editHeight), this);
}

QString SpinBox::textFromValue(double value) const
{
    if (textDeferred)
        return shownValueText();
    if (mixedValues && !sizing)
        return {};
    return formatValue(value);
}

QString SpinBox::formatValue(double value) const
{
    const QLocale numberLocale = locale();
    QString text = disambiguateGrouping(QDoubleSpinBox::textFromValue(value), value, decimals(),
                                        numberLocale.decimalPoint(), numberLocale.groupSeparator());
    if (precisionType != PrecisionType::AllDecimals && decimals() >= 1) {
        while (text.size() >= 4 && text.endsWith(QStringLiteral("00")))
            text.chop(1);
    }
    return text;
}

double SpinBox::valueFromText(const QString& text) const
{
    const QLocale numberLocale = locale();
    if (numberLocale.groupSeparator() == numberLocale.decimalPoint()) {
        if (const std::optional<double> number
            = parseAmbiguousGrouping(stripSuffix(text).trimmed(), numberLocale.decimalPoint()))
            return *number;
    }
    return QDoubleSpinBox::valueFromText(text);
}

QString SpinBox::disambiguateGrouping(const QString& text, double value, int decimals, const QString& decimalPoint,
                                      const QString& groupSeparator)
{
    // Below 1000 there is no grouping, so the point the base class wrote is the decimal point.
    if (groupSeparator != decimalPoint || decimalPoint.isEmpty() || std::abs(value) < 1000.0 || decimals <= 0)
        return text;
    QString digits = text;
    digits.remove(decimalPoint);
    if (digits.size() <= decimals)
        return text;
    return digits.left(digits.size() - decimals) + decimalPoint + digits.right(decimals);
}

std::optional<double> SpinBox::parseAmbiguousGrouping(const QString& text, const QString& separator)
{
    if (separator.isEmpty())
        return std::nullopt;
    QString body = text;
    const qsizetype last = body.lastIndexOf(separator);
    if (last >= 0) {
        QString whole = body.left(last);
        whole.remove(separator);
        if (whole.isEmpty() || whole == QStringLiteral("-"))
            whole += QLatin1Char('0');
        body = whole + QLatin1Char('.') + body.mid(last + separator.size());
    }
    bool parsed = false;
    const double number = QLocale::c().toDouble(body, &parsed);
    if (!parsed)
        return std::nullopt;
    return number;
}

QString SpinBox::shownValueText() const
{
    // The base class compares prefix + this + suffix with the editor's text and leaves an equal text alone.
    const QString shown = lineEdit()->displayText();
    const qsizetype fixed = prefix().size() + suffix().size();
    if (shown.size() >= fixed && shown.startsWith(prefix()) && shown.endsWith(suffix()))
        return shown.mid(prefix().size(), shown.size() - fixed);
    return shown;
}

QString SpinBox::stripSuffix(const QString& text) const
{
    QString body = text;
    if (!prefix().isEmpty() && body.startsWith(prefix()))
        body.remove(0, prefix().size());
    const QString trimmedSuffix = suffix().trimmed();
    QString trimmed = body.trimmed();
    if (!trimmedSuffix.isEmpty() && trimmed.endsWith(trimmedSuffix))
        trimmed.chop(trimmedSuffix.size());
    return trimmed;
}

QValidator::State SpinBox::validate(QString& text, int& position) const
{
    const QLocale numberLocale = locale();
    const QString decimalPoint = numberLocale.decimalPoint();
    const QString body = stripSuffix(text).trimmed();
    // A separator that is not this locale's decimal point would be read as grouping and silently change the value.
    for (const QChar separator : { QLatin1Char('.'), QLatin1Char(',') })
        if (body.contains(separator) && decimalPoint != QString(separator))
            return QValidator::Intermediate;
    bool parsed = false;
    double number = numberLocale.toDouble(body, &parsed);
    if (!parsed)
        number = QLocale::c().toDouble(body, &parsed);
    if (parsed && (number < minimum() || number > maximum()))
        return QValidator::Intermediate;
    if (numberLocale.groupSeparator() == decimalPoint && body.startsWith(decimalPoint)) {
        QString withZero = QLatin1Char('0') + body;
        int zeroPosition = position + 1;
        return QDoubleSpinBox::validate(withZero, zeroPosition);
    }
    return QDoubleSpinBox::validate(text, position);
}

void SpinBox::updateRangeToolTip()
{
    QLocale numberLocale = QLocale::system();
    if (!isGroupSeparatorShown())
        numberLocale.setNumberOptions(numberLocale.numberOptions() | QLocale::OmitGroupSeparator);
    const double low = minimum();
    const double high = maximum();
    const bool whole = isWholeNumber(low) && isWholeNumber(high) && isWholeNumber(singleStep());
    const auto write = [&](double number) {
        return numberLocale.toString(number, 'f', whole ? 0 : decimals()) + displaySuffix;
    };
    const bool lowBounded = low > -UNBOUNDED;
    const bool highBounded = high < UNBOUNDED;
    if (lowBounded && highBounded)
        baseToolTip = tr("Value range: ") + write(low) + QChar(0x2026) + write(high);
    else if (lowBounded)
        baseToolTip = tr("Minimum value: ") + write(low);
    else if (highBounded)
        baseToolTip = tr("Maximum value: ") + write(high);
    else
        baseToolTip.clear();
    updateToolTip();
}

void SpinBox::updateToolTip()
{
    QString text = baseToolTip;
    if (showDraggingHint) {
        if (!text.isEmpty())
            text += QLatin1Char('\n');
        text += tr(DRAGGING_HINT_TEXT);
    }
    setToolTip(toRichToolTip(text));
}

std::optional<double> SpinBox::parseValueText(const QString& text) const
{
    QString candidate = text.trimmed();
    int position = 0;
    if (candidate.isEmpty() || validate(candidate, position) != QValidator::Acceptable)
        return std::nullopt;
    return conversion.fromDisplay(valueFromText(candidate));
}

} // namespace Marlix::Widgets
