#include <MarlixLibQt/widgets/thumbnails/ThumbnailManager.h>

#include <MarlixLib/tasks/StandbyThread.h>

#include <QGuiApplication>
#include <QMetaObject>
#include <QObject>
#include <QPainter>
#include <QPixmapCache>

#include <array>
#include <atomic>
#include <charconv>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <unordered_map>

namespace Marlix {

namespace {

constexpr std::size_t RENDER_STACK_SIZE = 0x100000;
constexpr int SUPERSAMPLING = 4;
// Requests forget the entities nobody else holds once the entries reach this count, and then twice the count that
// stays, so that a scene of any size costs the sweep only now and then.
constexpr std::size_t FIRST_PRUNE_AT = 256;
// Larger dimensions in a stream are damage: no provider renders thumbnails of that size.
constexpr std::int64_t MAX_STREAM_DIMENSION = 16384;

const char* const UNKNOWN_VERSION_MESSAGE = "Unknown format version";
const char* const CORRUPTED_MESSAGE = "The stream is corrupted.";

struct Fnv1aHash
{
    std::size_t operator()(std::uint64_t id) const noexcept
    {
        std::uint64_t hash = 0xcbf29ce484222325ull;
        for (int i = 0; i < 8; ++i) {
            hash ^= (id >> (8 * i)) & 0xffu;
            hash *= 0x100000001b3ull;
        }
        return std::size_t(hash);
    }
};

QImage toImage(const IThumbnailProvider::Bitmap& bitmap)
{
    if (bitmap.isEmpty())
        return {};
    QImage straight(bitmap.getWidth(), bitmap.getHeight(), QImage::Format_RGBA8888);
    for (int y = 0; y < bitmap.getHeight(); ++y) {
        const auto row = bitmap.getRow(y);
        std::memcpy(straight.scanLine(y), row.data(), row.size_bytes());
    }
    return straight.convertToFormat(QImage::Format_ARGB32);
}

} // namespace

QPixmap makeThumbnail(const QImage& image, QSize size, Optional<double> devicePixelRatio)
{
    const double ratio = devicePixelRatio ? *devicePixelRatio : qApp->devicePixelRatio();
    const QSize target(int(std::lround(size.width() * ratio)), int(std::lround(size.height() * ratio)));

    QPixmap pixmap;
    if (image.size() == target) {
        pixmap = QPixmap::fromImage(image);
    } else if (image.isNull()) {
        pixmap = QPixmap(target);
        pixmap.fill(Qt::transparent);
    } else {
        QPixmap large(target * SUPERSAMPLING);
        large.fill(Qt::transparent);
        const double scale = std::min(double(large.width()) / image.width(), double(large.height()) / image.height());
        const QSizeF drawn(image.width() * scale, image.height() * scale);
        const QPointF offset((large.width() - drawn.width()) * 0.5, (large.height() - drawn.height()) * 0.5);
        {
            QPainter painter(&large);
            painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
            painter.drawImage(QRectF(offset, drawn), image);
        }
        pixmap = large.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    pixmap.setDevicePixelRatio(ratio);
    return pixmap;
}

struct ThumbnailManager::Impl : QObject
{
    struct Entry
    {
        // Weak: the scene decides how long an entity lives, not the views that showed it.
        WeakPtr<Entity> entity;
        // Requested at least once; entries restored from a stream wait for their entity without one.
        bool attached = false;
        QImage image;
        QSize dimensions;
        Array<QString> pixmapKeys;
        bool keysStale = false;
        // The image shows the entity as it is now; otherwise the next request renders it again.
        bool current = false;
        // In the queue or being rendered.
        bool queued = false;
        std::uint64_t generation = 0;
    };

    struct Registration
    {
        Array<EntityClassInfo> classes;
        Array<EntityClassInfo> excluded;
        SharedPtr<IThumbnailProvider> provider;
    };

    SharedPtr<IThumbnailProvider> findProvider(const EntityClassInfo& classInfo) const
    {
        // A later registration overrides an earlier one for the classes they share.
        for (auto it = registrations.rbegin(); it != registrations.rend(); ++it) {
            const auto covers = [&](const Array<EntityClassInfo>& list) {
                return std::any_of(list.begin(), list.end(), [&](const auto& base) { return base.isBaseClassOf(classInfo); });
            };
            if (covers(it->classes) && !covers(it->excluded))
                return it->provider;
        }
        return {};
    }

    void renderLoop(std::stop_token stop)
    {
        while (true) {
            std::unique_lock lock(mutex);
            if (!wake.wait(lock, stop, [this] { return !queue.empty(); }))
                return;
            const std::uint64_t id = queue.front();
            queue.pop_front();
            const auto found = entries.find(id);
            if (found == entries.end())
                continue;
            Entry& entry = found->second;
            EntityHolder<Entity> entity = entry.entity.lock();
            SharedPtr<IThumbnailProvider> provider = entity ? findProvider(entity->getClassInfo()) : nullptr;
            if (!provider) {
                entry.queued = false;
                changed();
                releaseOnGuiThread(std::move(entity));
                continue;
            }
            const std::uint64_t generation = entry.generation;
            rendering = true;
            lock.unlock();

            QImage image;
            bool failed = false;
            try {
                image = toImage(provider->renderThumbnail(entity, RENDER_SIZE, RENDER_SIZE));
            } catch (...) {
                failed = true;
            }
            provider.reset();

            lock.lock();
            rendering = false;
            renderDone.notify_all();
            const auto again = entries.find(id);
            if (again == entries.end())
                continue;
            Entry& stored = again->second;
            stored.queued = false;
            // A failed render keeps what was shown; the entity is tried again only once it is invalidated.
            if (!failed) {
                stored.image = image;
                stored.dimensions = image.size();
                stored.keysStale = true;
            }
            stored.current = stored.generation == generation;
            changed();
            lock.unlock();
            if (failed)
                releaseOnGuiThread(std::move(entity));
            else
                announce({ std::move(entity) });
        }
    }

    /// The scene may let go of an entity while a render holds it: the last reference is dropped on the GUI thread,
    /// where entities are made and destroyed, and never under the mutex.
    void releaseOnGuiThread(EntityHolder<Entity> entity)
    {
        if (entity)
            QMetaObject::invokeMethod(this, [entity = std::move(entity)] {}, Qt::QueuedConnection);
    }

    /// Forgets, under the mutex on the GUI thread, the entries of entities that nobody else holds any more and those
    /// that no provider renders and that have no image; their pixmaps leave the pixmap cache.
    std::size_t prune();

    void announce(Array<EntityHolder<Entity>> changed)
    {
        QMetaObject::invokeMethod(
            this, [this, changed = std::move(changed)] { clients.call(ArrayView<const EntityHolder<Entity>>(changed)); },
            Qt::QueuedConnection);
    }

    /// What the GUI thread remembers of the pixmaps it served for one entity: per request, the pixmap-cache key.
    struct ServedRequest
    {
        QSize size;
        double devicePixelRatio;
        std::uint32_t option;
        QString key;
    };
    struct Served
    {
        std::uint64_t revision = 0;
        Array<ServedRequest> requests;

        const QString* find(QSize size, double devicePixelRatio, std::uint32_t option) const
        {
            for (const ServedRequest& request : requests)
                if (request.size == size && request.devicePixelRatio == devicePixelRatio && request.option == option)
                    return &request.key;
            return nullptr;
        }
    };

    struct RecentlyServed
    {
        std::uint64_t id = 0; // identities start at 1
        Served* served = nullptr;
    };

    /// Called under the mutex by everything that may change the answer to a request already served: a new,
    /// invalidated or restored image, a provider registered or released, a render finished.
    void changed() { revision.fetch_add(1, std::memory_order_release); }

    /// The key under which a request's pixmap is in the pixmap cache, and the revision at which that was so.
    struct Confirmed
    {
        const QString* key = nullptr; // null when nothing was cached: the entity has no image yet
        std::uint64_t revision = 0;
    };

    /// A request answered under the mutex: stale pixmaps dropped, the pixmap found or made, a render queued when the
    /// image is not current, and the request remembered for servedKey() and, through `confirmed`, for a client.
    QPixmap serve(const EntityHolder<Entity>& entity, QSize size, double devicePixelRatio, std::uint32_t option,
        Confirmed* confirmed = nullptr);

    /// The key of a request served before, while nothing has changed since it was confirmed under the mutex.
    const QString* servedKey(std::uint64_t id, QSize size, double devicePixelRatio, std::uint32_t option)
    {
        RecentlyServed& slot = recentlyServed[id % recentlyServed.size()];
        if (slot.id != id && !fillSlot(slot, id)) [[unlikely]]
            return nullptr;
        if (slot.served->revision != revision.load(std::memory_order_acquire))
            return nullptr;
        return slot.served->find(size, devicePixelRatio, option);
    }

    bool fillSlot(RecentlyServed& slot, std::uint64_t id)
    {
        const auto found = served.find(id);
        if (found == served.end())
            return false;
        slot = { id, &found->second };
        return true;
    }

    /// Every request: from the pixmap cache when it was served before and nothing changed since, found without the
    /// lock and without building the key again; otherwise through serve(). Kept short: this runs for every
    /// thumbnail painted.
    QPixmap request(const EntityHolder<Entity>& entity, QSize size, double devicePixelRatio, std::uint32_t option)
    {
        if (!entity)
            return {};
        if (const QString* key = servedKey(entity->getId(), size, devicePixelRatio, option)) {
            if (!hit)
                hit.emplace(); // made on the first request: a pixmap needs the application
            if (QPixmapCache::find(*key, &*hit))
                return std::move(*hit);
        }
        return serve(entity, size, devicePixelRatio, option);
    }

    Mutex mutex;
    std::condition_variable_any wake;
    std::condition_variable_any renderDone;
    Array<Registration> registrations;
    std::unordered_map<std::uint64_t, Entry, Fnv1aHash> entries;
    std::deque<std::uint64_t> queue;
    bool rendering = false;
    CallbackList<ArrayView<const EntityHolder<Entity>>> clients;
    std::atomic<std::uint64_t> revision { 0 };
    // GUI thread only: QPixmap and QPixmapCache live there.
    std::unordered_map<std::uint64_t, Served> served;
    // A direct-mapped front of `served` for the entities a view keeps repainting: one mask and one comparison instead
    // of a hash-table lookup. Pruning clears the slot of every value of `served` it erases.
    std::array<RecentlyServed, 64> recentlyServed;
    Optional<QPixmap> hit; // receives cache hits, which are handed out by move
    std::size_t pruneAt = FIRST_PRUNE_AT;
    // Last, so that it stops before the state it reads goes away.
    UniquePtr<StandbyThread> thread;
};

ThumbnailManager::ThumbnailManager()
    : impl(std::make_unique<Impl>())
{
    impl->thread = std::make_unique<StandbyThread>("ThumbnailImageCache_RenderThread", RENDER_STACK_SIZE,
        StandbyThread::Body([this](std::stop_token stop) { impl->renderLoop(std::move(stop)); }));
}

ThumbnailManager::~ThumbnailManager()
{
    impl->thread.reset();
}

void ThumbnailManager::registerProvider(ArrayView<const EntityClassInfo> classes, ArrayView<const EntityClassInfo> excluded,
    const SharedPtr<IThumbnailProvider>& provider)
{
    if (!provider)
        throw Exception("A thumbnail provider must not be null.");
    const std::lock_guard lock(impl->mutex);
    impl->registrations.push_back({ { classes.begin(), classes.end() }, { excluded.begin(), excluded.end() }, provider });
    impl->changed();
}

void ThumbnailManager::invalidateEntities(ArrayView<const EntityHolder<Entity>> entities)
{
    const std::lock_guard lock(impl->mutex);
    for (const auto& entity : entities) {
        if (!entity)
            continue;
        const auto found = impl->entries.find(entity->getId());
        if (found == impl->entries.end())
            continue;
        auto& entry = found->second;
        entry.current = false;
        entry.keysStale = true;
        ++entry.generation;
    }
    impl->changed();
}

void ThumbnailManager::shutdownProviders()
{
    std::unique_lock lock(impl->mutex);
    impl->registrations.clear();
    impl->changed();
    impl->renderDone.wait(lock, [this] { return !impl->rendering; });
}

std::size_t ThumbnailManager::pruneEntries()
{
    const std::lock_guard lock(impl->mutex);
    return impl->prune();
}

std::size_t ThumbnailManager::Impl::prune()
{
    std::size_t forgotten = 0;
    for (auto it = entries.begin(); it != entries.end();) {
        Entry& entry = it->second;
        bool keep = !entry.attached;
        if (!keep) {
            // A queued entry is in the render thread's hands, which reports it unrenderable itself.
            const EntityHolder<Entity> entity = entry.entity.lock();
            keep = entity && (entry.queued || !entry.image.isNull() || findProvider(entity->getClassInfo()));
        }
        if (keep) {
            ++it;
            continue;
        }
        const std::uint64_t id = it->first;
        for (const QString& key : entry.pixmapKeys)
            QPixmapCache::remove(key);
        served.erase(id);
        if (RecentlyServed& slot = recentlyServed[id % recentlyServed.size()]; slot.id == id)
            slot = {};
        it = entries.erase(it);
        ++forgotten;
    }
    // Clients remember keys of the entries forgotten: they must ask again.
    if (forgotten)
        changed();
    return forgotten;
}

bool ThumbnailManager::canGenerateThumbnailFor(const EntityHolder<Entity>& entity) const
{
    if (!entity)
        return false;
    const std::lock_guard lock(impl->mutex);
    return impl->findProvider(entity->getClassInfo()) != nullptr;
}

QString ThumbnailManager::makePixmapKey(std::uint64_t entityId, QSize size, double devicePixelRatio, std::uint32_t option)
{
    // Numbers are written with to_chars: the 'g' format with six significant digits, independent of the process
    // locale. The buffer holds the longest key with room to spare.
    static constexpr std::string_view PREFIX = "entity_thumbnail_";
    char buffer[128];
    char* const end = buffer + sizeof(buffer);
    char* out = std::copy(PREFIX.begin(), PREFIX.end(), buffer);
    const auto separator = [&](char c) {
        if (out != end)
            *out++ = c;
    };
    out = std::to_chars(out, end, entityId).ptr;
    separator('_');
    out = std::to_chars(out, end, size.width()).ptr;
    separator('x');
    out = std::to_chars(out, end, size.height()).ptr;
    separator('@');
    out = std::to_chars(out, end, devicePixelRatio, std::chars_format::general, 6).ptr;
    separator('_');
    out = std::to_chars(out, end, option).ptr;
    return QString::fromLatin1(buffer, out - buffer);
}

QPixmap ThumbnailManager::getThumbnail(
    const EntityHolder<Entity>& entity, QSize size, double devicePixelRatio, std::uint32_t option)
{
    return impl->request(entity, size, devicePixelRatio, option);
}

QPixmap ThumbnailManager::Impl::serve(const EntityHolder<Entity>& entity, QSize size, double devicePixelRatio,
    std::uint32_t option, Confirmed* confirmed)
{
    const std::uint64_t id = entity->getId();
    const std::lock_guard lock(mutex);
    if (entries.size() >= pruneAt) {
        prune();
        pruneAt = std::max(FIRST_PRUNE_AT, 2 * entries.size());
    }
    Entry& entry = entries.try_emplace(id).first->second;
    Served& record = served[id];
    if (!entry.attached) {
        entry.entity = entity;
        entry.attached = true;
    }
    if (entry.keysStale) {
        for (const QString& stale : entry.pixmapKeys)
            QPixmapCache::remove(stale);
        entry.pixmapKeys.clear();
        entry.keysStale = false;
        record.requests.clear();
    }

    const QString* known = record.find(size, devicePixelRatio, option);
    const QString key = known ? *known : makePixmapKey(id, size, devicePixelRatio, option);
    QPixmap pixmap;
    bool cached = QPixmapCache::find(key, &pixmap);
    if (!cached && (!entry.image.isNull() || (option & OPTION_PLACEHOLDER))) {
        pixmap = makeThumbnail(entry.image, size, devicePixelRatio);
        QPixmapCache::insert(key, pixmap);
        // A request served before was evicted by the pixmap cache: its key is recorded already.
        if (!known)
            entry.pixmapKeys.push_back(key);
        cached = true;
    }
    if (cached && !known) {
        record.requests.push_back({ size, devicePixelRatio, option, key });
        known = &record.requests.back().key;
    }

    if (!entry.current && !entry.queued && findProvider(entity->getClassInfo())) {
        entry.queued = true;
        queue.push_back(id);
        wake.notify_one();
    }
    // What was checked above holds until the next change, which moves the revision.
    record.revision = revision.load(std::memory_order_relaxed);
    if (confirmed && cached)
        *confirmed = { known, record.revision };
    return pixmap;
}

CallbackLifetime ThumbnailManager::addChangedCallback(ChangedCallback callback)
{
    return impl->clients.add(std::move(callback));
}

void ThumbnailManager::serializeThumbnailCache(ISerializer& out, Function<bool(const EntityHolder<Entity>&)> filter) const
{
    Array<std::pair<EntityHolder<Entity>, QImage>> images;
    {
        const std::lock_guard lock(impl->mutex);
        for (const auto& [id, entry] : impl->entries)
            if (EntityHolder<Entity> entity = entry.entity.lock(); entity && !entry.image.isNull())
                images.emplace_back(std::move(entity), entry.image);
    }
    // The filter is the caller's code: it runs without the lock so that it may ask the manager anything.
    out.serializeFormatVersion(FORMAT_VERSION);
    for (const auto& [entity, image] : images) {
        if (filter && !filter(entity))
            continue;
        out.beginRecord("item");
        out.writeEntityReference("entity", entity->getId());
        out.beginRecord("dimensions");
        out.writeInt("width", image.width());
        out.writeInt("height", image.height());
        out.endRecord();
        out.writeBytes("data",
            ArrayView<const std::byte>(reinterpret_cast<const std::byte*>(image.constBits()), std::size_t(image.sizeInBytes())));
        out.endRecord();
    }
}

Expected<void, String> ThumbnailManager::deserializeThumbnailCache(IDeserializer& in)
{
    const auto version = in.deserializeFormatVersion();
    if (!version)
        return Unexpected<String>(CORRUPTED_MESSAGE);
    if (*version != FORMAT_VERSION)
        return Unexpected<String>(UNKNOWN_VERSION_MESSAGE);

    struct Item
    {
        std::uint64_t id;
        QImage image;
    };
    Array<Item> items;
    const auto readItem = [&]() -> bool {
        if (!in.enterRecord("item"))
            return false;
        const auto id = in.readEntityReference("entity");
        bool good = id && *id != 0 && bool(in.enterRecord("dimensions"));
        if (!good) {
            in.leaveRecord();
            return false;
        }
        const auto width = in.readInt("width");
        const auto height = in.readInt("height");
        in.leaveRecord();
        const auto data = in.readBytes("data");
        in.leaveRecord();
        if (!width || !height || !data || *width <= 0 || *height <= 0 || *width > MAX_STREAM_DIMENSION
            || *height > MAX_STREAM_DIMENSION)
            return false;
        QImage image(int(*width), int(*height), QImage::Format_ARGB32);
        if (image.isNull() || std::size_t(image.sizeInBytes()) != data->size())
            return false;
        std::memcpy(image.bits(), data->data(), data->size());
        items.push_back({ *id, std::move(image) });
        return true;
    };
    while (in.hasKey("item"))
        if (!readItem())
            return Unexpected<String>(CORRUPTED_MESSAGE);

    Array<EntityHolder<Entity>> changed;
    {
        const std::lock_guard lock(impl->mutex);
        for (auto& item : items) {
            auto& entry = impl->entries[item.id];
            entry.dimensions = item.image.size();
            entry.image = std::move(item.image);
            entry.keysStale = true;
            entry.current = true;
            if (EntityHolder<Entity> entity = entry.entity.lock())
                changed.push_back(std::move(entity));
        }
        impl->changed();
    }
    if (!changed.empty())
        impl->announce(std::move(changed));
    return {};
}

ThumbnailClient::ThumbnailClient(SharedPtr<ThumbnailManager> manager, QSize size,
    ThumbnailManager::ChangedCallback onChanged, std::uint32_t option, QWidget* widget)
    : manager(std::move(manager))
    , size(size)
    , onChanged(std::move(onChanged))
    , option(option)
    , widget(widget)
    , revision(this->manager ? &this->manager->impl->revision : nullptr)
{
    if (!this->manager)
        throw Exception("A thumbnail client needs a thumbnail manager.");
    if (this->onChanged)
        subscription = this->manager->addChangedCallback(this->onChanged);
}

QPixmap ThumbnailClient::getThumbnail(const EntityHolder<Entity>& entity) const
{
    if (!entity)
        return {};
    const double ratio = widget ? widget->devicePixelRatioF() : qApp->devicePixelRatio();
    const std::uint64_t id = entity->getId();
    Remembered& slot = remembered[id % remembered.size()];
    if (slot.entityId == id && slot.devicePixelRatio == ratio
        && slot.revision == revision->load(std::memory_order_acquire)) {
        if (!hit)
            hit.emplace(); // made on the first request: a pixmap needs the application
        if (QPixmapCache::find(slot.key, &*hit))
            return std::move(*hit);
    }
    return serveAndRemember(entity, ratio, slot);
}

QPixmap ThumbnailClient::serveAndRemember(const EntityHolder<Entity>& entity, double ratio, Remembered& slot) const
{
    ThumbnailManager::Impl::Confirmed confirmed;
    QPixmap pixmap = manager->impl->serve(entity, size, ratio, option, &confirmed);
    if (confirmed.key)
        slot = { entity->getId(), confirmed.revision, ratio, *confirmed.key };
    else
        slot.entityId = 0;
    return pixmap;
}

void ThumbnailClient::setThumbnailSize(QSize newSize)
{
    if (newSize == size)
        return;
    size = newSize;
    // The keys remembered were those of the old size.
    remembered.fill({});
}

bool ThumbnailClient::canGenerateThumbnailFor(const EntityHolder<Entity>& entity) const
{
    return manager->canGenerateThumbnailFor(entity);
}

} // namespace Marlix
