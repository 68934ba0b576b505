#include <MarlixLib/curves/ColorCurves.h>
#include <MarlixLibQt/widgets/frame/ViewportHost.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Marlix::Widgets {

IViewportClient::~IViewportClient() = default;

IViewportHost::~IViewportHost() = default;

DefaultViewportHost::~DefaultViewportHost() = default;

void DefaultViewportHost::addClient(IViewportClient& client)
{
    if (!hasClient(client))
        clients.push_back(&client);
}

void DefaultViewportHost::removeClient(IViewportClient& client)
{
    // Clients leave from their destructors, where a call back into them would reach a half-destroyed object.
    if (mouseHolder == &client)
        mouseHolder = nullptr;
    std::erase(clients, &client);
}

bool DefaultViewportHost::requestExclusiveMouseControl(IViewportClient& client)
{
    if (!hasClient(client))
        return false;
    if (mouseHolder == &client)
        return true;
    if (IViewportClient* previous = std::exchange(mouseHolder, &client))
        previous->onExclusiveMouseControlLost();
    // The previous holder may have let go of its own client registration, or asked again, while hearing of it.
    if (mouseHolder != &client)
        return false;
    client.onExclusiveMouseControlGained();
    return true;
}

void DefaultViewportHost::releaseExclusiveMouseControl(IViewportClient& client)
{
    if (mouseHolder == &client) {
        mouseHolder = nullptr;
        client.onExclusiveMouseControlLost();
    }
}

bool DefaultViewportHost::hasClient(const IViewportClient& client) const
{
    return std::find(clients.begin(), clients.end(), &client) != clients.end();
}

Marlix::Histogram IViewportHost::getCurveChannelHistogram(
    int channel, int binCount, std::pair<float, float> range, Optional<int> layer) const
{
    Marlix::Histogram histogram(binCount);
    const SharedPtr<const BitmapImpl<RgbaBytes>> image = getViewportImage(layer);
    if (!image || channel < 0 || channel >= Marlix::Histogram::CHANNEL_COUNT)
        return histogram;
    const int height = image->getHeight();
    const auto row = [height](float share) {
        return std::clamp(static_cast<int>(std::lround(double(share) * height)), 0, height);
    };
    for (int y = row(range.first); y < row(range.second); ++y)
        histogram.addPixels(image->getRow(y));
    return histogram;
}

Optional<float> IViewportHost::getCurveChannelSample(const Vector2& position, int channel, Optional<int> layer) const
{
    const SharedPtr<const BitmapImpl<RgbaBytes>> image = getViewportImage(layer);
    const Vector2 size = getViewportSize();
    if (!image || size.x <= 0.0 || size.y <= 0.0 || !std::isfinite(position.x) || !std::isfinite(position.y))
        return {};
    // The image fills the viewport; a position maps to the pixel under it.
    const double x = std::floor(position.x / size.x * image->getWidth());
    const double y = std::floor(position.y / size.y * image->getHeight());
    if (x < 0.0 || y < 0.0 || x >= image->getWidth() || y >= image->getHeight())
        return {};
    return getCurveChannelTone(image->at(int(x), int(y)), channel);
}

float getCurveChannelTone(const RgbaBytes& pixel, int channel)
{
    switch (ColorCurveChannel(channel)) {
    case ColorCurveChannel::Red:
        return pixel.r / 255.0f;
    case ColorCurveChannel::Green:
        return pixel.g / 255.0f;
    case ColorCurveChannel::Blue:
        return pixel.b / 255.0f;
    case ColorCurveChannel::Alpha:
        return pixel.a / 255.0f;
    case ColorCurveChannel::Master:
        break;
    }
    return (0.2126f * pixel.r + 0.7152f * pixel.g + 0.0722f * pixel.b) / 255.0f;
}

} // namespace Marlix::Widgets
