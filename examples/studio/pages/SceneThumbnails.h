#pragma once

#include <MarlixLib/color/Rgb.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLib/image/IThumbnailProvider.h>

namespace Marlix {
class EntityGraphTracker;
class ThumbnailManager;
}

#include <cstdint>
#include <map>
#include <mutex>

namespace Studio {

/// What a thumbnail of a sample-scene entity shows, copied out of the scene on the GUI thread so that the render
/// thread never reads live entities.
struct Appearance
{
    enum class Shape : std::uint8_t
    {
        Sphere, // a material
        Cube, // a mesh, or an instance of one
        Group, // an instance without a mesh of its own
        Tiles, // a texture: a tiled pattern in the colour of its name, finer when derived from another texture
    };

    Shape shape = Shape::Sphere;
    Marlix::Rgb colour { 0.8f, 0.8f, 0.8f, 1.0f };
    double roughness = 0.5;
    bool metal = false;
    /// Tiles across a texture's picture.
    int tiles = 0;

    bool operator==(const Appearance&) const = default;

    /// How `entity` looks now: a material by its own colour, a mesh by its material's, an instance by its override
    /// material or else its mesh's, a texture by a colour of its own name.
    static Appearance of(const Marlix::Entity& entity);
};

/// The appearances of the scene's entities by identity, written on the GUI thread and read on the render thread.
class AppearanceTable
{
public:
    /// Stores `appearance` for `id`; true when it differs from what was stored, so the thumbnail must be redrawn.
    bool update(std::uint64_t id, const Appearance& appearance);
    Marlix::Optional<Appearance> find(std::uint64_t id) const;

private:
    mutable std::mutex mutex;
    std::map<std::uint64_t, Appearance> appearances;
};

/// Copies the appearance of every entity of `scene` into `table` for the render thread, and has the thumbnails of those
/// whose appearance changed drawn again.
void refreshAppearances(const Marlix::EntityGraphTracker& scene, AppearanceTable& table, Marlix::ThumbnailManager& thumbnails);

/// Draws the studio's thumbnails: a shaded sphere in a material's colour, with a highlight as sharp as the material
/// is smooth; a shaded cube for meshes and their instances; three small cubes for a group.
class SceneThumbnailProvider : public Marlix::IThumbnailProvider
{
public:
    explicit SceneThumbnailProvider(Marlix::SharedPtr<const AppearanceTable> table);

    Bitmap renderThumbnail(const Marlix::EntityHolder<Marlix::Entity>& entity, int width, int height) override;

    /// The drawing itself, for any appearance.
    static Bitmap render(const Appearance& appearance, int width, int height);

private:
    Marlix::SharedPtr<const AppearanceTable> table;
};

} // namespace Studio
