#include <MarlixLibQt/widgets/color/ColorEditButton.h>

#include <MarlixLibQt/Color.h>
#include <MarlixLibQt/Icons.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/color/ColorPickerDialog.h>

#include <MarlixLib/base/Exception.h>

#include <QPainter>
#include <QPainterPath>
#include <QPointer>

namespace Marlix::Widgets {

namespace {
constexpr double SWATCH_WIDTH = 40.0;
constexpr double SWATCH_HEIGHT = 20.0;
constexpr double SWATCH_INSET = 3.0;
} // namespace

ColorEditButton::ColorEditButton(SharedPtr<Model<Rgb>> color, ColorFormat format, QWidget* parent)
    : QToolButton(parent)
    , model(std::move(color))
    , format(format)
    , dialogTitle(ColorPickerDialog::tr(ColorPickerDialog::DEFAULT_TITLE))
{
    if (!model)
        Marlix::Detail::throwStopException("widgets/ColorEditButton", __LINE__);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    registerCallback(model->addCallback([this](Rgb) { notify(); }));
    connect(this, &QToolButton::clicked, this, &ColorEditButton::openDialog);
    notify();
}

ColorEditButton::~ColorEditButton() = default;

QColor ColorEditButton::getShownColor() const
{
    return fromRgb(model->get(), format == ColorFormat::Rgba);
}

void ColorEditButton::notify()
{
    const QColor shown = getShownColor();
    QString text = shown.name(QColor::HexRgb).toUpper();
    if (format == ColorFormat::Rgba)
        text += tr(", alpha %1").arg(shown.alphaF(), 0, 'f', 2);
    setToolTip(text);
    update();
}

void ColorEditButton::openDialog()
{
    QPointer<ColorPickerDialog> dialog = new ColorPickerDialog(this, format);
    dialog->setWindowTitle(dialogTitle);
    dialog->setValue(model->get());
    Q_EMIT dialogOpened(dialog);
    const bool accepted = dialog->exec() == QDialog::Accepted;
    // The button may have been destroyed while the dialog's event loop ran; the dialog went with it.
    if (!dialog)
        return;
    const Rgb chosen = dialog->value();
    dialog->deleteLater();
    if (accepted)
        model->set(chosen);
}

QSize ColorEditButton::sizeHint() const
{
    return QSize(getDeviceIndependentPixels(SWATCH_WIDTH, this), getDeviceIndependentPixels(SWATCH_HEIGHT, this));
}

QSize ColorEditButton::minimumSizeHint() const
{
    return sizeHint();
}

void ColorEditButton::paintEvent(QPaintEvent* event)
{
    QToolButton::paintEvent(event);
    QPainter painter(this);
    const int inset = getDeviceIndependentPixels(SWATCH_INSET, this);
    const QRect swatch = rect().adjusted(inset, inset, -inset, -inset);
    if (swatch.isEmpty())
        return;
    const QColor shown = getShownColor();
    if (shown.alpha() < 255)
        painter.fillRect(swatch, checkerboardBrush4X4());
    painter.fillRect(swatch, shown);
    // The frame filled inside the swatch, so that it covers whole device pixels on a scaled screen too.
    QPainterPath frame;
    frame.addRect(QRectF(swatch));
    frame.addRect(QRectF(swatch).adjusted(1.0, 1.0, -1.0, -1.0));
    painter.fillPath(frame, palette().color(isEnabled() ? QPalette::Mid : QPalette::Midlight));
}

} // namespace Marlix::Widgets
