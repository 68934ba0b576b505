#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLib/data/EntityClassInfo.h>
#include <MarlixLib/image/IThumbnailProvider.h>
#include <MarlixLib/io/IDeserializer.h>
#include <MarlixLib/io/ISerializer.h>

#include <QImage>
#include <QPixmap>
#include <QPointer>
#include <QSize>
#include <QString>
#include <QWidget>

#include <array>
#include <atomic>
#include <cstdint>

namespace Marlix {

/// `image` letterboxed into a transparent pixmap of `size` logical pixels at `devicePixelRatio` (the application's
/// when none is given); small targets are drawn four times larger and scaled down so that edges stay clean.
MARLIXLIBQT_EXPORT QPixmap makeThumbnail(const QImage& image, QSize size, Optional<double> devicePixelRatio = {});

/// The shared service that renders entity images on a background thread, caches them and serves them as pixmaps.
class MARLIXLIBQT_EXPORT ThumbnailManager
{
public:
    /// Told, on the GUI thread, which entities got new images.
    using ChangedCallback = Function<void(ArrayView<const EntityHolder<Entity>>)>;

    /// The version of the cache stream written; a stream of another version is refused.
    static constexpr std::uint32_t FORMAT_VERSION = 1;
    /// Size of the images that providers render; pixmaps of every size are made from them.
    static constexpr int RENDER_SIZE = 256;
    /// Request option: give a transparent placeholder while an entity has no image yet.
    static constexpr std::uint32_t OPTION_PLACEHOLDER = 1;

    /// An empty cache without providers; starts its render thread, which sleeps until there is work.
    ThumbnailManager();
    ~ThumbnailManager(); ///< Stops the render thread, waiting for a render that is running.
    /// Not copyable: clients and the render thread refer to the manager itself.
    ThumbnailManager(const ThumbnailManager&) = delete;
    ThumbnailManager& operator=(const ThumbnailManager&) = delete; ///< Not assignable.

    /// `provider` renders entities of `classes` and their derived classes, except those of `excluded` and theirs.
    void registerProvider(ArrayView<const EntityClassInfo> classes, ArrayView<const EntityClassInfo> excluded,
        const SharedPtr<IThumbnailProvider>& provider);
    /// The images of `entities` are rendered again on their next request.
    void invalidateEntities(ArrayView<const EntityHolder<Entity>> entities);
    /// Releases every provider; a render that is running finishes first.
    void shutdownProviders();

    /// True when a registered provider renders the entity's class; false for an empty holder. Any thread.
    bool canGenerateThumbnailFor(const EntityHolder<Entity>& entity) const;

    /// Forgets the entities that nothing else holds any more (the manager never keeps one alive) and those that no
    /// provider renders, with their pixmaps; returns how many. Requests do it on their own as entries accumulate;
    /// a host may call it after closing a scene. GUI thread only.
    std::size_t pruneEntries();

    /// Writes the images of the entities that `filter` accepts.
    void serializeThumbnailCache(ISerializer& out, Function<bool(const EntityHolder<Entity>&)> filter) const;
    /// Adds the images of a stream to the cache; on any error the cache stays as it was. Images are keyed by entity
    /// identity and serve the entity of that identity when it is asked for.
    Expected<void, String> deserializeThumbnailCache(IDeserializer& in);

    /// The pixmap-cache key of one request.
    static QString makePixmapKey(std::uint64_t entityId, QSize size, double devicePixelRatio, std::uint32_t option);

    /// The thumbnail of `entity` at `size` logical pixels and `devicePixelRatio`; queues a render when the entity has
    /// no current image. GUI thread only.
    QPixmap getThumbnail(const EntityHolder<Entity>& entity, QSize size, double devicePixelRatio, std::uint32_t option);

    /// `callback` learns on the GUI thread which entities got new images, until the lifetime ends.
    [[nodiscard]] CallbackLifetime addChangedCallback(ChangedCallback callback);

private:
    friend class ThumbnailClient; // its requests skip one call on the way to the pixmap cache
    struct Impl;
    UniquePtr<Impl> impl;
};

/// A widget's handle on the thumbnail service: the size it shows and where it hears of new images.
class MARLIXLIBQT_EXPORT ThumbnailClient
{
public:
    /// Shows thumbnails of \p size logical pixels from \p manager (an Exception when null), rendered with \p option;
    /// \p onChanged hears of new images while the client lives, and \p widget gives the device pixel ratio.
    ThumbnailClient(SharedPtr<ThumbnailManager> manager, QSize size, ThumbnailManager::ChangedCallback onChanged,
        std::uint32_t option = 0, QWidget* widget = nullptr);

    /// At the device pixel ratio of the client's widget, or of the application without one.
    QPixmap getThumbnail(const EntityHolder<Entity>& entity) const;
    QSize getThumbnailSize() const { return size; } ///< The size of the thumbnails served, in logical pixels.
    void setThumbnailSize(QSize newSize); ///< Serves thumbnails of \p newSize from now on, in logical pixels.
    /// True when the manager's providers render the entity's class; false for an empty holder.
    bool canGenerateThumbnailFor(const EntityHolder<Entity>& entity) const;
    const SharedPtr<ThumbnailManager>& getManager() const { return manager; } ///< The shared manager; never null.

private:
    /// A request this client was served, with the manager's revision at which the answer was confirmed: while the
    /// revision stands, the pixmap is found in the pixmap cache under `key` without asking the manager.
    struct Remembered
    {
        std::uint64_t entityId = 0; // identities start at 1
        std::uint64_t revision = 0;
        double devicePixelRatio = 0.0;
        QString key;
    };

    /// The manager's answer, remembered in `slot` when it is in the pixmap cache. Kept out of getThumbnail(), whose
    /// hit path then needs no frame for the manager's call.
    [[gnu::noinline]] QPixmap serveAndRemember(
        const EntityHolder<Entity>& entity, double ratio, Remembered& slot) const;

    SharedPtr<ThumbnailManager> manager;
    QSize size;
    ThumbnailManager::ChangedCallback onChanged;
    CallbackLifetime subscription;
    std::uint32_t option;
    QPointer<QWidget> widget;
    const std::atomic<std::uint64_t>* revision; // the manager's; it moves with every change of an answer
    // Direct-mapped by entity identity: a view repaints the same few entities over and over.
    mutable std::array<Remembered, 16> remembered;
    mutable Optional<QPixmap> hit; // receives cache hits, which are handed out by move
};

} // namespace Marlix
