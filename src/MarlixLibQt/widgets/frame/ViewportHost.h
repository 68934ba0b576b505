#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/color/RgbBytes.h>
#include <MarlixLib/curves/Histogram.h>
#include <MarlixLib/image/BitmapImpl.h>
#include <MarlixLib/math/Vector2.h>
#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QCursor>

#include <utility>

namespace Marlix::Widgets {

/// A tool that reads the image of a viewport (a curve editor, a histogram) and may take the viewport's mouse for a
/// while. Positions are in viewport pixels.
class MARLIXLIBQT_EXPORT IViewportClient
{
public:
    /// A client must leave its host (IViewportHost::removeClient()) before it is destroyed.
    virtual ~IViewportClient();

    /// The host gave the mouse to this client; presses and releases in the image now come here.
    virtual void onExclusiveMouseControlGained() { }
    /// The host took the mouse back (another client asked for it, or the viewport closed).
    virtual void onExclusiveMouseControlLost() { }
    /// A press in the image at \p position while this client holds the mouse.
    virtual void onExclusiveMousePress(const Vector2& /*position*/) { }
    /// A release at \p position while this client holds the mouse.
    virtual void onExclusiveMouseRelease(const Vector2& /*position*/) { }
    /// The pointer moved over the image to \p position, whether or not the client holds the mouse.
    virtual void onMouseMove(const Vector2& /*position*/) { }
    virtual void onMouseLeave() { } ///< The pointer left the image.
    /// The image of the viewport changed: histograms and samples read before are stale.
    virtual void onViewportChanged() { }
    /// The cursor the viewport shows while this client has the mouse; none keeps the viewport's own.
    virtual Optional<QCursor> getExclusiveMouseCursor() const { return {}; }
};

/// The viewport that shows a rendered image, as curve and histogram editors see it: its image, and the mouse, which
/// one client at a time can take over so that clicks in the image go to it instead of the viewport's own tools.
class MARLIXLIBQT_EXPORT IViewportHost
{
public:
    virtual ~IViewportHost(); ///< Hosts do not own their clients.

    virtual Vector2 getViewportSize() const = 0; ///< The viewport's size in pixels; (0, 0) when it shows nothing.
    /// The image shown, shared so that histograms are counted on workers without a copy; null when there is none.
    /// `layer` picks one of several images a host may show (a render element); none means the one on screen.
    virtual SharedPtr<const BitmapImpl<RgbaBytes>> getViewportImage(Optional<int> /*layer*/) const { return {}; }
    /// The histogram of one ColorCurveChannel of the image with `binCount` bins, counted in the calling thread;
    /// `range` limits the image's rows to that share of its height (0 to 1 is all of it).
    virtual Marlix::Histogram getCurveChannelHistogram(
        int channel, int binCount, std::pair<float, float> range, Optional<int> layer) const;
    /// The tone of one ColorCurveChannel at a viewport position, none outside the image.
    virtual Optional<float> getCurveChannelSample(const Vector2& position, int channel, Optional<int> layer) const;

    /// Clients hear of image changes and, while they hold it, of the mouse.
    virtual void addClient(IViewportClient& /*client*/) { }
    /// Forgets a client; it hears nothing more from this host.
    virtual void removeClient(IViewportClient& /*client*/) { }
    /// Gives the mouse to `client`; the one that held it before loses it. False when the host cannot hand it over.
    virtual bool requestExclusiveMouseControl(IViewportClient& /*client*/) { return false; }
    /// Takes the mouse back from `client`, if it holds it.
    virtual void releaseExclusiveMouseControl(IViewportClient& /*client*/) { }
};

/// A viewport with nothing in it (no size, no image, so empty histograms and no samples) that still keeps the books
/// of its clients and lends the mouse to one of them at a time.
///
/// Copies and moves carry no clients: a client registered with one host hears only from that host, and a host made
/// by copying starts without clients (assigning keeps the target's own).
class MARLIXLIBQT_EXPORT DefaultViewportHost : public IViewportHost
{
public:
    DefaultViewportHost() = default; ///< A host without clients.
    /// A host without clients: clients are not copied.
    DefaultViewportHost(const DefaultViewportHost&)
        : IViewportHost()
    {
    }
    /// A host without clients: they stay registered with the moved-from host.
    DefaultViewportHost(DefaultViewportHost&&) noexcept
        : IViewportHost()
    {
    }
    DefaultViewportHost& operator=(const DefaultViewportHost&) { return *this; } ///< Keeps this host's own clients.
    DefaultViewportHost& operator=(DefaultViewportHost&&) noexcept { return *this; } ///< Keeps this host's own clients.
    ~DefaultViewportHost() override; ///< Forgets the clients without telling them.

    Vector2 getViewportSize() const override { return { 0.0, 0.0 }; } ///< Always (0, 0).

    /// Registers \p client once; adding it again changes nothing. The host does not own it.
    void addClient(IViewportClient& client) override;
    /// Forgets `client`; if it held the mouse, the mouse goes back to the host without telling the leaving client.
    void removeClient(IViewportClient& client) override;
    /// Grants the mouse to a registered client (the one holding it before hears that it lost it); false for a client
    /// that was never added.
    bool requestExclusiveMouseControl(IViewportClient& client) override;
    /// Takes the mouse back from \p client, which hears that it lost it; nothing when it does not hold the mouse.
    void releaseExclusiveMouseControl(IViewportClient& client) override;

    bool hasClient(const IViewportClient& client) const; ///< True while \p client is registered.
    /// The client that holds the mouse; null when the host has it.
    IViewportClient* getExclusiveMouseClient() const { return mouseHolder; }

private:
    Array<IViewportClient*> clients;
    IViewportClient* mouseHolder = nullptr;
};

/// The tone of a pixel in one ColorCurveChannel (the master channel reads luminance, Rec. 709 weights), 0 to 1.
MARLIXLIBQT_EXPORT float getCurveChannelTone(const RgbaBytes& pixel, int channel);

} // namespace Marlix::Widgets
