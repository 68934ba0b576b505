#include "StudioPage.h"

#include <MarlixLib/curves/ColorCurves.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/curves/CurvesEditor.h>
#include <MarlixLibQt/widgets/curves/Histogram.h>
#include <MarlixLibQt/widgets/frame/ViewportHost.h>

#include <QCoreApplication>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QRadialGradient>
#include <QVBoxLayout>

#include <algorithm>
#include <vector>

namespace Studio {

namespace {

using Marlix::BitmapImpl;
using Marlix::RgbaBytes;
using Marlix::SharedPtr;
using Marlix::Vector2;
using Marlix::Widgets::IViewportClient;
using Marlix::Widgets::Model;

constexpr int IMAGE_WIDTH = 360;
constexpr int IMAGE_HEIGHT = 240;

/// A small "render": a sky ramp, a sunset glow, hills and a few saturated shapes, so that every channel has a spread
/// of tones to see in the histogram and to bend with the curves.
QImage paintSampleImage()
{
    QImage image(IMAGE_WIDTH, IMAGE_HEIGHT, QImage::Format_RGBA8888);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, 0, IMAGE_HEIGHT);
    sky.setColorAt(0.0, QColor(20, 40, 110));
    sky.setColorAt(0.55, QColor(230, 120, 70));
    sky.setColorAt(1.0, QColor(250, 210, 120));
    painter.fillRect(image.rect(), sky);
    QRadialGradient sun(250, 140, 70);
    sun.setColorAt(0.0, QColor(255, 250, 220));
    sun.setColorAt(1.0, QColor(255, 180, 80, 0));
    painter.fillRect(image.rect(), sun);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(30, 70, 40));
    painter.drawEllipse(QRectF(-80, 160, 300, 160));
    painter.setBrush(QColor(15, 45, 30));
    painter.drawEllipse(QRectF(150, 180, 320, 140));
    painter.setBrush(QColor(200, 40, 60));
    painter.drawRect(QRectF(40, 190, 36, 30));
    painter.setBrush(QColor(40, 160, 220));
    painter.drawEllipse(QRectF(300, 30, 34, 34));
    painter.setBrush(QColor(245, 245, 245));
    painter.drawEllipse(QRectF(60, 40, 70, 22));
    painter.drawEllipse(QRectF(95, 32, 60, 26));
    return image;
}

BitmapImpl<RgbaBytes> toBitmap(const QImage& image)
{
    const QImage rgba = image.convertToFormat(QImage::Format_RGBA8888);
    BitmapImpl<RgbaBytes> bitmap(rgba.width(), rgba.height());
    for (int y = 0; y < rgba.height(); ++y) {
        const auto* row = reinterpret_cast<const RgbaBytes*>(rgba.constScanLine(y));
        std::copy(row, row + rgba.width(), &bitmap.at(0, y));
    }
    return bitmap;
}

/// The viewport of the page: the sample image through the curves. A curve editor may take its mouse to pick tones.
class PreviewViewport : public QLabel, public Marlix::Widgets::IViewportHost, public Marlix::Widgets::BaseWithModel
{
    Q_DECLARE_TR_FUNCTIONS(Studio::PreviewViewport)

public:
    PreviewViewport(SharedPtr<Model<Marlix::Curves>> curves, QWidget* parent)
        : QLabel(parent)
        , curves(std::move(curves))
        , source(std::make_shared<const BitmapImpl<RgbaBytes>>(toBitmap(paintSampleImage())))
    {
        setAccessibleName(tr("Preview"));
        setFixedSize(IMAGE_WIDTH, IMAGE_HEIGHT);
        setMouseTracking(true);
        registerCallback(this->curves->addCallback([this](const Marlix::Curves&) { notify(); }));
        notify();
    }

    void notify() override
    {
        BitmapImpl<RgbaBytes> shown = *source;
        Marlix::applyColorCurves(curves->get(), shown.getPixels());
        setPixmap(QPixmap::fromImage(Marlix::toQt(shown)));
    }

    Vector2 getViewportSize() const override { return { double(width()), double(height()) }; }
    SharedPtr<const BitmapImpl<RgbaBytes>> getViewportImage(Marlix::Optional<int>) const override { return source; }

    void addClient(IViewportClient& client) override { clients.push_back(&client); }
    void removeClient(IViewportClient& client) override
    {
        std::erase(clients, &client);
        if (exclusive == &client)
            exclusive = nullptr;
    }
    bool requestExclusiveMouseControl(IViewportClient& client) override
    {
        if (exclusive && exclusive != &client)
            exclusive->onExclusiveMouseControlLost();
        exclusive = &client;
        client.onExclusiveMouseControlGained();
        if (const auto cursor = client.getExclusiveMouseCursor())
            setCursor(*cursor);
        return true;
    }
    void releaseExclusiveMouseControl(IViewportClient& client) override
    {
        if (exclusive != &client)
            return;
        exclusive = nullptr;
        unsetCursor();
        client.onExclusiveMouseControlLost();
    }

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        if (exclusive && event->button() == Qt::LeftButton)
            exclusive->onExclusiveMousePress(at(event));
        else
            QLabel::mousePressEvent(event);
    }
    void mouseReleaseEvent(QMouseEvent* event) override
    {
        if (exclusive && event->button() == Qt::LeftButton)
            exclusive->onExclusiveMouseRelease(at(event));
        else
            QLabel::mouseReleaseEvent(event);
    }
    void mouseMoveEvent(QMouseEvent* event) override
    {
        for (IViewportClient* client : std::vector<IViewportClient*>(clients))
            client->onMouseMove(at(event));
    }
    void leaveEvent(QEvent* event) override
    {
        QLabel::leaveEvent(event);
        for (IViewportClient* client : std::vector<IViewportClient*>(clients))
            client->onMouseLeave();
    }

private:
    static Vector2 at(const QMouseEvent* event) { return { event->position().x(), event->position().y() }; }

    SharedPtr<Model<Marlix::Curves>> curves;
    SharedPtr<const BitmapImpl<RgbaBytes>> source;
    std::vector<IViewportClient*> clients;
    IViewportClient* exclusive = nullptr;
};

/// The page; the tools that read its viewport go before it.
class CurvesPageWidget : public QWidget
{
public:
    using QWidget::QWidget;
    ~CurvesPageWidget() override
    {
        delete editor;
        delete histogram;
    }

    QPointer<QWidget> editor;
    QPointer<QWidget> histogram;
};

Marlix::Curves startingCurves()
{
    // A gentle S on the master curve and a warmer red: the preview shows at once that the curves act on it.
    Marlix::Curves curves(4, Marlix::DefaultCurveType::Identity);
    curves.setChannel(0,
        Marlix::Curve(Marlix::Array<Vector2> { { 0.0, 0.0 }, { 0.25, 0.18 }, { 0.75, 0.84 }, { 1.0, 1.0 } },
            Marlix::CurveInterpolation::CubicSpline));
    curves.setChannel(1,
        Marlix::Curve(Marlix::Array<Vector2> { { 0.0, 0.0 }, { 0.5, 0.56 }, { 1.0, 1.0 } },
            Marlix::CurveInterpolation::CubicSpline));
    return curves;
}

} // namespace

QWidget* createCurvesPage(QWidget* parent)
{
    auto* page = new CurvesPageWidget(parent);
    auto curves = Marlix::makeSharedPtr<Marlix::Widgets::VariableModel<Marlix::Curves>>(startingCurves());
    // The histograms are counted on workers; the screenshot waits for both.
    page->setProperty(PAGE_SETTLED_PROPERTY, false);

    auto* previewBox = new QGroupBox(QObject::tr("Preview through the curves"), page);
    auto* viewport = new PreviewViewport(curves, previewBox);
    auto channel = Marlix::makeSharedPtr<Marlix::Widgets::VariableModel<Marlix::Optional<Marlix::ColorCurveChannel>>>(
        Marlix::Optional<Marlix::ColorCurveChannel>());
    auto mode = Marlix::makeSharedPtr<Marlix::Widgets::VariableModel<Marlix::Widgets::HistogramType>>(
        Marlix::Widgets::HistogramType::Logarithmic);
    auto* histogram = new Marlix::Widgets::Histogram(channel, mode, *viewport, previewBox);
    auto* previewLayout = new QVBoxLayout(previewBox);
    previewLayout->addWidget(viewport);
    previewLayout->addWidget(
        new QLabel(QObject::tr("Histogram of the image, red, green and blue on a logarithmic scale"), previewBox));
    previewLayout->addWidget(histogram);
    previewLayout->addStretch(1);

    auto* editorBox = new QGroupBox(QObject::tr("Curves"), page);
    auto* editor = new Marlix::Widgets::CurvesEditor(curves, Marlix::Widgets::CurvesEditor::getColorChannelNames(4),
        Marlix::Widgets::CurvesEditor::getColorChannelColors(4), {}, viewport, Marlix::DefaultCurveType::Identity,
        editorBox);
    editor->setMinimumSize(Marlix::scaleByDpi(QSize(320, 360), editor));
    auto* editorLayout = new QVBoxLayout(editorBox);
    editorLayout->addWidget(editor);
    auto* hint = new QLabel(QObject::tr("Click to add a point, drag it, right-click to remove it; Shift and the wheel "
                                        "zoom, the middle button pans."),
        editorBox);
    hint->setWordWrap(true);
    editorLayout->addWidget(hint);

    page->editor = editor;
    page->histogram = histogram;

    auto arrived = std::make_shared<int>(0);
    const auto settleWhenBoth = [page, arrived] {
        if (++*arrived >= 2)
            page->setProperty(PAGE_SETTLED_PROPERTY, true);
    };
    QObject::connect(editor->getCurvesWidget(), &Marlix::Widgets::Curves::histogramChanged, page, settleWhenBoth);
    QObject::connect(histogram, &Marlix::Widgets::Histogram::histogramChanged, page, settleWhenBoth);

    auto* layout = new QHBoxLayout(page);
    layout->addWidget(editorBox, 1);
    layout->addWidget(previewBox);
    return page;
}

} // namespace Studio
