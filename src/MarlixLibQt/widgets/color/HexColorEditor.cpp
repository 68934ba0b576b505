#include <MarlixLibQt/widgets/color/HexColorEditor.h>

#include <MarlixLib/base/Exception.h>

#include <QFontMetrics>
#include <QSignalBlocker>

namespace Marlix::Widgets {

namespace {
// Room for six digits and the frame.
constexpr int MINIMUM_WIDTH_IN_CHARACTERS = 8;
constexpr int DIGIT_COUNT = 6;
} // namespace

HexColorEditor::HexColorEditor(SharedPtr<Model<QColorExtended>> color, QWidget* parent)
    : QLineEdit(parent)
    , color(std::move(color))
{
    if (!this->color)
        Marlix::Detail::throwStopException("widgets/HexColorEditor", __LINE__);
    setMinimumWidth(MINIMUM_WIDTH_IN_CHARACTERS * fontMetrics().averageCharWidth());
    setAccessibleName(tr("Hex color"));

    registerCallback(this->color->addCallback([this](const QColorExtended& value) { showColor(value); }));
    connect(this, &QLineEdit::editingFinished, this, &HexColorEditor::applyText);

    notify();
}

HexColorEditor::~HexColorEditor() = default;

QSize HexColorEditor::sizeHint() const
{
    return QLineEdit::minimumSizeHint();
}

void HexColorEditor::notify()
{
    showColor(color->get());
}

QString HexColorEditor::toHexText(const QColor& color)
{
    return color.name(QColor::HexRgb).toUpper().mid(1);
}

QColor HexColorEditor::fromHexText(const QString& text)
{
    // Longer texts are not cut: Qt reads eight digits with their alpha, and anything else as no colour.
    const QString name = QStringLiteral("#%1").arg(text.rightJustified(DIGIT_COUNT, QLatin1Char('0'))).toLower();
    return QColor::isValidColor(name) ? QColor(name) : QColor();
}

void HexColorEditor::showColor(const QColor& value)
{
    // Blocked while an entry writes the model: the field keeps what the user typed.
    if (signalsBlocked())
        return;
    const QSignalBlocker blocker(this);
    setText(toHexText(value));
}

void HexColorEditor::applyText()
{
    const QSignalBlocker blocker(this);
    // A text that is no colour is not refused: its channels read as 0, so the colour becomes black. The alpha stays.
    const QColor parsed = fromHexText(text());
    const QColorExtended current = color->get();
    color->set(QColor::fromRgbF(parsed.redF(), parsed.greenF(), parsed.blueF(), current.alphaF()));
}

} // namespace Marlix::Widgets
