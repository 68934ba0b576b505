#include <MarlixLibQt/QtUtils.h>

#include <QApplication>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QRegularExpression>
#include <QStyle>
#include <QStyleOptionFrame>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace Marlix {

namespace {

// Custom metrics of the library's styles; other styles answer 0, which turns the feature off.
constexpr int TOOLTIP_MAXIMUM_WIDTH_METRIC = 2;
constexpr int TOOLTIP_PADDING_METRIC = 3;
constexpr int TOOLTIP_NO_WRAP_LENGTH_METRIC = 4;
// Used when there is no widget application to ask, as in a core application.
constexpr int DEFAULT_NO_WRAP_LENGTH = 40;

const QString HEADING_END = QStringLiteral("</h4>");

int customMetric(const QStyle* style, int metric)
{
    return style->pixelMetric(QStyle::PixelMetric(QStyle::PM_CustomBase + metric));
}

// Lines up to this many characters are never broken by the tooltip's word wrap: short lines look wrong when split.
int noWrapLength()
{
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return DEFAULT_NO_WRAP_LENGTH;
    return customMetric(QApplication::style(), TOOLTIP_NO_WRAP_LENGTH_METRIC);
}

QString formatLine(const QString& line, int noWrap)
{
    if (line.startsWith(QLatin1String("<p")))
        return line; // already rich text, made by an earlier call or by the caller
    if (line.trimmed().isEmpty())
        return QStringLiteral("<p style='margin:0'>&nbsp;</p>");
    if (line.size() <= noWrap)
        return QStringLiteral("<p style='margin:0; white-space:pre'>") + line.toHtmlEscaped() + QStringLiteral("</p>");
    return QStringLiteral("<p style='margin:0'>") + line.toHtmlEscaped() + QStringLiteral("</p>");
}

} // namespace

QString formatToolTip(const QString& title, const QString& text, const QString& shortcut)
{
    QString heading;
    QString body = text;
    // A text that was formatted before carries its own heading, which wins over `title`.
    if (const qsizetype end = text.indexOf(HEADING_END); end >= 0) {
        heading = text.left(end + HEADING_END.size());
        body = text.mid(end + HEADING_END.size());
    } else if (!title.isEmpty()) {
        heading = QStringLiteral("<h4 style='margin:0'>") + title.toHtmlEscaped() + HEADING_END;
    }

    QStringList lines = body.remove(QLatin1Char('\r')).split(QLatin1Char('\n'));
    while (!lines.isEmpty() && lines.front().trimmed().isEmpty())
        lines.removeFirst();
    while (!lines.isEmpty() && lines.back().trimmed().isEmpty())
        lines.removeLast();

    const int noWrap = noWrapLength();
    QStringList parts;
    if (!heading.isEmpty())
        parts.append(heading);
    for (const QString& line : std::as_const(lines))
        parts.append(formatLine(line, noWrap));
    if (!shortcut.isEmpty())
        parts.append(QStringLiteral("<p style='margin:0; margin-top:4px; white-space:pre'><i>") + shortcut.toHtmlEscaped()
                     + QStringLiteral("</i></p>"));
    // Lines are joined with "\n", so that a second call finds them again and keeps them as they are.
    return parts.join(QLatin1Char('\n'));
}

QPixmap renderToolTipToPixmap(const QString& toolTip, const QWidget& widget)
{
    if (toolTip.isEmpty())
        return {};
    const QStyle* style = widget.style();
    const int frame = style->pixelMetric(QStyle::PM_ToolTipLabelFrameWidth, nullptr, &widget);
    const int padding = std::max(0, customMetric(style, TOOLTIP_PADDING_METRIC));
    const int maximumWidth = customMetric(style, TOOLTIP_MAXIMUM_WIDTH_METRIC);

    // Laid out as the style lays out Qt's own tooltip label: natural width, wrapped at the style's maximum.
    QLabel label;
    label.setTextFormat(Qt::AutoText);
    label.setText(toolTip);
    label.setFont(QToolTip::font());
    label.setPalette(QToolTip::palette());
    label.setForegroundRole(QPalette::ToolTipText);
    label.setContentsMargins(padding + frame, frame, padding + frame, frame);
    label.setAttribute(Qt::WA_TranslucentBackground);
    QSize size = label.sizeHint();
    if (maximumWidth > 0 && size.width() > maximumWidth) {
        label.setWordWrap(true);
        size = QSize(maximumWidth, label.heightForWidth(maximumWidth));
    }
    label.resize(size);

    const qreal ratio = widget.devicePixelRatioF();
    QPixmap pixmap(size * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QStyleOptionFrame option;
    option.initFrom(&label);
    option.rect = QRect(QPoint(), size);
    option.palette = QToolTip::palette();
    style->drawPrimitive(QStyle::PE_PanelTipLabel, &option, &painter, &label);
    label.render(&painter, QPoint(), QRegion(), QWidget::DrawChildren);
    return pixmap;
}

QString formatUiMessage(StringView message, Optional<double> value)
{
    QString text = toQt(message).trimmed();
    if (value) {
        const double v = *value;
        const QLocale locale;
        // Plain decimals where they stay readable, exponents only for the very large and very small.
        const bool plain = v == 0.0 || (std::abs(v) >= 1e-4 && std::abs(v) < 1e15);
        const QString number = locale.toString(v, plain ? 'f' : 'g', QLocale::FloatingPointShortest);
        if (text.contains(QLatin1String("%1")))
            text = text.arg(number);
        else
            text = text.isEmpty() ? number : text + QStringLiteral(": ") + number;
    }
    if (text.isEmpty())
        return text;
    text[0] = text[0].toUpper();
    static const QString closing = QStringLiteral(".!?:\u2026");
    if (!closing.contains(text.back()))
        text.append(QLatin1Char('.'));
    return text;
}

QString getQuoted(const QString& text)
{
    return QChar(0x201C) + text + QChar(0x201D);
}

QString toTitleCase(const QString& text)
{
    // Joining words stay lower case inside a title, as English title case has it.
    static const QStringList minorWords = { QStringLiteral("a"), QStringLiteral("an"), QStringLiteral("and"),
        QStringLiteral("as"), QStringLiteral("at"), QStringLiteral("by"), QStringLiteral("for"), QStringLiteral("in"),
        QStringLiteral("of"), QStringLiteral("on"), QStringLiteral("or"), QStringLiteral("the"), QStringLiteral("to"),
        QStringLiteral("with") };
    static const QRegularExpression word(QStringLiteral("\\S+"));

    QString result = text;
    QList<QRegularExpressionMatch> words;
    for (auto it = word.globalMatch(text); it.hasNext();)
        words.append(it.next());
    for (qsizetype i = 0; i < words.size(); ++i) {
        const QString current = words[i].captured();
        const bool inside = i > 0 && i + 1 < words.size();
        if (inside && minorWords.contains(current.toLower())) {
            result.replace(words[i].capturedStart(), current.size(), current.toLower());
            continue;
        }
        // The first letter, also behind an opening quote or bracket.
        for (qsizetype c = 0; c < current.size(); ++c) {
            if (current[c].isLetter()) {
                result[words[i].capturedStart() + c] = current[c].toUpper();
                break;
            }
        }
    }
    return result;
}

QString propertyNameToReadableName(QString name)
{
    // Word breaks: separators, lower to upper ("lightIntensity"), the end of an acronym ("baseURLValue") and the edges
    // of numbers ("layer2Color").
    static const QRegularExpression separators(QStringLiteral("[_.\\-\\s]+"));
    static const QRegularExpression lowerUpper(QStringLiteral("(\\p{Ll})(\\p{Lu})"));
    static const QRegularExpression acronymEnd(QStringLiteral("(\\p{Lu})(\\p{Lu}\\p{Ll})"));
    static const QRegularExpression letterDigit(QStringLiteral("(\\p{L})(\\d)"));
    static const QRegularExpression digitLetter(QStringLiteral("(\\d)(\\p{L})"));

    name.replace(separators, QStringLiteral(" "));
    name.replace(lowerUpper, QStringLiteral("\\1 \\2"));
    name.replace(acronymEnd, QStringLiteral("\\1 \\2"));
    name.replace(letterDigit, QStringLiteral("\\1 \\2"));
    name.replace(digitLetter, QStringLiteral("\\1 \\2"));

    QStringList words = name.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (qsizetype i = 0; i < words.size(); ++i) {
        QString& w = words[i];
        const bool acronym = w.size() > 1 && w == w.toUpper() && w != w.toLower();
        if (acronym)
            continue;
        w = w.toLower();
        if (i == 0)
            w[0] = w[0].toUpper();
    }
    return words.join(QLatin1Char(' '));
}

} // namespace Marlix
