#include <MarlixLibQt/widgets/color/ScreenColorPicker.h>

#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/editors/ComboBox.h>
#include <MarlixLibQt/widgets/color/EyeDropperButton.h>

#include <MarlixLib/base/Exception.h>

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QImage>
#include <QPixmap>
#include <QRect>
#include <QScreen>

#include <cmath>
#include <cstdint>

namespace Marlix {

QColor averageImageColor(const QImage& image, const QRect& area)
{
    const QRect inside = area.intersected(image.rect());
    if (inside.isEmpty())
        return {};
    // Sums of at most 31 × 31 (or a whole image's) 8-bit channels: 64 bits never overflow.
    std::int64_t red = 0;
    std::int64_t green = 0;
    std::int64_t blue = 0;
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            red += qRed(pixel);
            green += qGreen(pixel);
            blue += qBlue(pixel);
        }
    }
    const double count = static_cast<double>(inside.width()) * inside.height() * 255.0;
    return QColor::fromRgbF(static_cast<float>(static_cast<double>(red) / count),
        static_cast<float>(static_cast<double>(green) / count), static_cast<float>(static_cast<double>(blue) / count));
}

QColor sampleScreenColor(const QPoint& position, int halfSize)
{
    if (halfSize < 0)
        Detail::throwStopException("widgets/ScreenColorPicker", __LINE__);
    QScreen* screen = QGuiApplication::screenAt(position);
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen)
        return {};
    const QRect geometry = screen->geometry();
    const qreal ratio = screen->devicePixelRatio();
    // The square is counted in device pixels, so a point sample is one real pixel also on a scaled screen.
    const QPointF local = QPointF(position - geometry.topLeft()) * ratio;
    const QPoint centre(static_cast<int>(std::floor(local.x())), static_cast<int>(std::floor(local.y())));
    const QRect square(centre.x() - halfSize, centre.y() - halfSize, 2 * halfSize + 1, 2 * halfSize + 1);
    // The grab takes logical pixels: the smallest logical rectangle around the square, cut to the screen.
    const QRect logical = QRect(QPoint(static_cast<int>(std::floor(square.left() / ratio)),
                                    static_cast<int>(std::floor(square.top() / ratio))),
        QPoint(static_cast<int>(std::ceil((square.right() + 1) / ratio)) - 1,
            static_cast<int>(std::ceil((square.bottom() + 1) / ratio)) - 1))
                              .intersected(QRect(QPoint(0, 0), geometry.size()));
    if (logical.isEmpty())
        return {};
    const QImage grabbed
        = screen->grabWindow(0, logical.x(), logical.y(), logical.width(), logical.height()).toImage();
    if (grabbed.isNull())
        return {};
    // Where the grab began, in the device pixels of the image it returned.
    const qreal imageRatio = grabbed.devicePixelRatio();
    const QPoint origin(static_cast<int>(std::round(logical.x() * imageRatio)),
        static_cast<int>(std::round(logical.y() * imageRatio)));
    return averageImageColor(grabbed, square.translated(-origin));
}

} // namespace Marlix

namespace Marlix::Widgets {

ScreenColorPicker::ScreenColorPicker(
    SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> sampleMode, QWidget* parent)
    : QWidget(parent)
{
    if (!color || !sampleMode)
        Marlix::Detail::throwStopException("widgets/ScreenColorPicker", __LINE__);

    pickButton = new EyeDropperButton(color, sampleMode, false, this);
    pickButton->setObjectName(QStringLiteral("PickButton"));
    invertPickButton = new EyeDropperButton(color, sampleMode, true, this);
    invertPickButton->setObjectName(QStringLiteral("InvertPickButton"));

    Array<String> labels;
    for (const SampleMode& mode : SAMPLE_MODES)
        labels.emplace_back(fromQt(tr(mode.text)));
    // The box works on 64-bit entry values; the colour settings keep the mode as a long long.
    auto index = makeSharedPtr<LambdaModel<std::int64_t>>(
        sampleMode, [sampleMode] { return static_cast<std::int64_t>(sampleMode->get()); },
        [sampleMode](std::int64_t value) { sampleMode->set(static_cast<long long>(value)); });
    sampleModeBox = new ComboBox(makeSharedPtr<ListViewModel<String>>(std::move(labels)), std::move(index), nullptr, 0,
        this);
    sampleModeBox->setObjectName(QStringLiteral("SampleMode"));

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(pickButton);
    layout->addWidget(invertPickButton);
    layout->addWidget(sampleModeBox, 1);
}

ScreenColorPicker::~ScreenColorPicker() = default;

void ScreenColorPicker::notify()
{
    // The children observe the models themselves; the row shows nothing of its own.
}

int ScreenColorPicker::getSampleHalfSize(long long sampleMode)
{
    if (sampleMode < 0 || sampleMode >= static_cast<long long>(SAMPLE_MODES.size()))
        Marlix::Detail::throwStopException("widgets/ScreenColorPicker", __LINE__);
    return SAMPLE_MODES[static_cast<std::size_t>(sampleMode)].halfSize;
}

} // namespace Marlix::Widgets
