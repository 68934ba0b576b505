#include "SceneThumbnails.h"

#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLibQt/widgets/thumbnails/ThumbnailManager.h>
#include <MarlixTestScene/TestScene.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace Studio {

using namespace Marlix;

namespace {

// Samples per pixel along each axis, for smooth edges.
constexpr int SUPERSAMPLING = 2;
constexpr double SPHERE_RADIUS = 0.9;
constexpr double AMBIENT = 0.08;
constexpr double DISPLAY_GAMMA = 2.2;
// The three visible faces of a cube lit from the upper left: top, left, right.
constexpr std::array<double, 3> CUBE_FACE_LIGHT { 1.0, 0.72, 0.48 };

struct Vec3
{
    double x = 0.0, y = 0.0, z = 0.0;
};

double dot(const Vec3& a, const Vec3& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Vec3 normalised(const Vec3& v)
{
    const double length = std::sqrt(dot(v, v));
    return { v.x / length, v.y / length, v.z / length };
}

const Vec3 LIGHT = normalised({ -0.45, 0.55, 0.7 });
const Vec3 HALFWAY = normalised({ LIGHT.x, LIGHT.y, LIGHT.z + 1.0 });

/// One sample: linear colour and coverage.
struct Sample
{
    double r = 0.0, g = 0.0, b = 0.0, alpha = 0.0;
};

double opacityOf(const Rgb& colour)
{
    // Even a clear material keeps a visible body.
    return 0.4 + 0.6 * std::clamp(double(colour.a), 0.0, 1.0);
}

Sample shadeSphere(const Appearance& look, double x, double y)
{
    const double u = x / SPHERE_RADIUS;
    const double v = -y / SPHERE_RADIUS;
    const double r2 = u * u + v * v;
    if (r2 > 1.0)
        return {};
    const Vec3 normal { u, v, std::sqrt(1.0 - r2) };
    const double diffuse = std::max(0.0, dot(normal, LIGHT));
    // Smooth materials get a small sharp highlight, rough ones a broad dim one.
    const double roughness = std::clamp(look.roughness, 0.0, 1.0);
    const double shininess = std::clamp(2.0 / (roughness * roughness + 5e-4) - 2.0, 2.0, 4000.0);
    // A rough surface spreads a weak highlight over the whole sphere; keep it from washing out the colour.
    const double smoothness = 1.0 - roughness;
    const double weight = (look.metal ? 0.5 : 0.04) + 0.6 * smoothness * smoothness;
    const double specular = std::pow(std::max(0.0, dot(normal, HALFWAY)), shininess) * weight;
    const double body = look.metal ? 0.55 : 1.0;
    const auto channel = [&](float albedo) {
        const double tint = look.metal ? albedo : 1.0;
        return albedo * (AMBIENT + (1.0 - AMBIENT) * diffuse) * body + specular * tint;
    };
    return { channel(look.colour.r), channel(look.colour.g), channel(look.colour.b), opacityOf(look.colour) };
}

double cross(double ax, double ay, double bx, double by)
{
    return ax * by - ay * bx;
}

bool insideQuad(const std::array<std::array<double, 2>, 4>& quad, double x, double y)
{
    bool positive = false;
    bool negative = false;
    for (std::size_t i = 0; i < 4; ++i) {
        const auto& a = quad[i];
        const auto& b = quad[(i + 1) % 4];
        const double side = cross(b[0] - a[0], b[1] - a[1], x - a[0], y - a[1]);
        positive = positive || side > 0.0;
        negative = negative || side < 0.0;
    }
    return !(positive && negative);
}

// An isometric cube of half-height `size` centred at (cx, cy).
Sample shadeCube(const Appearance& look, double x, double y, double cx, double cy, double size)
{
    const double w = size * std::sqrt(3.0) / 2.0;
    const double h = size / 2.0;
    const std::array<double, 2> top { cx, cy - size }, upperRight { cx + w, cy - h }, lowerRight { cx + w, cy + h },
        bottom { cx, cy + size }, lowerLeft { cx - w, cy + h }, upperLeft { cx - w, cy - h }, centre { cx, cy };
    const std::array<std::array<std::array<double, 2>, 4>, 3> faces { { { top, upperRight, centre, upperLeft },
        { upperLeft, centre, bottom, lowerLeft }, { centre, upperRight, lowerRight, bottom } } };
    for (std::size_t face = 0; face < faces.size(); ++face) {
        if (!insideQuad(faces[face], x, y))
            continue;
        const double light = AMBIENT + (1.0 - AMBIENT) * CUBE_FACE_LIGHT[face];
        return { look.colour.r * light, look.colour.g * light, look.colour.b * light, opacityOf(look.colour) };
    }
    return {};
}

// A square of tiles, alternately lit and shaded, over the whole picture but a thin margin.
Sample shadeTiles(const Appearance& look, double x, double y)
{
    constexpr double EXTENT = 0.92;
    if (std::abs(x) > EXTENT || std::abs(y) > EXTENT)
        return {};
    const auto tile = [&](double v) { return static_cast<int>(std::floor((v + EXTENT) / (2.0 * EXTENT) * look.tiles)); };
    const double light = (tile(x) + tile(y)) % 2 == 0 ? 1.0 : 0.55;
    return { look.colour.r * light, look.colour.g * light, look.colour.b * light, 1.0 };
}

Sample shade(const Appearance& look, double x, double y)
{
    switch (look.shape) {
    case Appearance::Shape::Tiles:
        return shadeTiles(look, x, y);
    case Appearance::Shape::Sphere:
        return shadeSphere(look, x, y);
    case Appearance::Shape::Cube:
        return shadeCube(look, x, y, 0.0, 0.0, 0.85);
    case Appearance::Shape::Group:
        for (const auto& [cx, cy] : { std::pair { 0.0, -0.42 }, std::pair { -0.45, 0.38 }, std::pair { 0.45, 0.38 } })
            if (const Sample sample = shadeCube(look, x, y, cx, cy, 0.42); sample.alpha > 0.0)
                return sample;
        return {};
    }
    return {};
}

std::uint8_t toDisplayByte(double linear)
{
    const double encoded = std::pow(std::clamp(linear, 0.0, 1.0), 1.0 / DISPLAY_GAMMA);
    return static_cast<std::uint8_t>(std::lround(encoded * 255.0));
}

void takeMaterial(Appearance& look, const Entity* material)
{
    if (!material)
        return;
    look.colour = material->getPropertyValue<Rgb>("color");
    look.roughness = material->getPropertyValue<double>("roughness");
    look.metal = material->getPropertyValue<TestScene::ShadingModel>("shading") == TestScene::ShadingModel::Metal;
}

} // namespace

Appearance Appearance::of(const Entity& entity)
{
    Appearance look;
    if (entity.isInstanceOf(TestScene::materialClass())) {
        takeMaterial(look, &entity);
    } else if (entity.isInstanceOf(TestScene::meshClass())) {
        look.shape = Shape::Cube;
        takeMaterial(look, entity.getPropertyValue<EntityHolder<Entity>>("material").get());
    } else if (entity.isInstanceOf(TestScene::textureClass())) {
        look.shape = Shape::Tiles;
        // A colour of its own per texture, stable across runs: the hue comes from the name.
        const String name = entity.getPropertyValue<String>("name");
        std::uint32_t hash = 2166136261u;
        for (const char c : name)
            hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
        const double hue = (hash % 360) / 60.0;
        const auto channel = [&](double offset) {
            const double d = std::abs(std::fmod(hue + offset, 6.0) - 3.0);
            return static_cast<float>(0.15 + 0.7 * std::clamp(d - 1.0, 0.0, 1.0));
        };
        look.colour = Rgb { channel(0.0), channel(4.0), channel(2.0), 1.0f };
        look.tiles = entity.getPropertyValue<EntityHolder<Entity>>("source") ? 8 : 4;
    } else if (entity.isInstanceOf(TestScene::instanceClass())) {
        const auto mesh = entity.getPropertyValue<EntityHolder<Entity>>("mesh");
        const auto override = entity.getPropertyValue<EntityHolder<Entity>>("materialOverride");
        look.shape = mesh ? Shape::Cube : Shape::Group;
        const Entity* material = override ? override.get()
            : mesh                        ? mesh->getPropertyValue<EntityHolder<Entity>>("material").get()
                                          : nullptr;
        takeMaterial(look, material);
    }
    return look;
}

bool AppearanceTable::update(std::uint64_t id, const Appearance& appearance)
{
    const std::lock_guard lock(mutex);
    auto [entry, added] = appearances.try_emplace(id, appearance);
    if (added)
        return true;
    if (entry->second == appearance)
        return false;
    entry->second = appearance;
    return true;
}

Optional<Appearance> AppearanceTable::find(std::uint64_t id) const
{
    const std::lock_guard lock(mutex);
    const auto entry = appearances.find(id);
    return entry == appearances.end() ? Optional<Appearance>() : Optional<Appearance>(entry->second);
}

void refreshAppearances(const EntityGraphTracker& scene, AppearanceTable& table, ThumbnailManager& thumbnails)
{
    Array<EntityHolder<Entity>> changed;
    for (const auto& entity : scene.getEntities())
        if (table.update(entity->getId(), Appearance::of(*entity)))
            changed.push_back(entity);
    if (!changed.empty())
        thumbnails.invalidateEntities(changed);
}

SceneThumbnailProvider::SceneThumbnailProvider(SharedPtr<const AppearanceTable> table)
    : table(std::move(table))
{
}

IThumbnailProvider::Bitmap SceneThumbnailProvider::renderThumbnail(
    const EntityHolder<Entity>& entity, int width, int height)
{
    // Only the identity is read here; the rest was copied on the GUI thread.
    const Optional<Appearance> look = entity ? table->find(entity->getId()) : Optional<Appearance>();
    return look ? render(*look, width, height) : Bitmap();
}

IThumbnailProvider::Bitmap SceneThumbnailProvider::render(const Appearance& look, int width, int height)
{
    Bitmap bitmap(width, height, RgbaBytes { 0, 0, 0, 0 });
    const double scale = 2.0 / std::max(1, std::min(width, height));
    constexpr double SAMPLES = SUPERSAMPLING * SUPERSAMPLING;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            Sample sum;
            for (int sy = 0; sy < SUPERSAMPLING; ++sy) {
                for (int sx = 0; sx < SUPERSAMPLING; ++sx) {
                    const double px = (x + (sx + 0.5) / SUPERSAMPLING - width / 2.0) * scale;
                    const double py = (y + (sy + 0.5) / SUPERSAMPLING - height / 2.0) * scale;
                    const Sample s = shade(look, px, py);
                    sum = { sum.r + s.r * s.alpha, sum.g + s.g * s.alpha, sum.b + s.b * s.alpha, sum.alpha + s.alpha };
                }
            }
            if (sum.alpha <= 0.0)
                continue;
            // Straight alpha: the colour is the coverage-weighted mean of the covered samples.
            bitmap.at(x, y) = { toDisplayByte(sum.r / sum.alpha), toDisplayByte(sum.g / sum.alpha),
                toDisplayByte(sum.b / sum.alpha), static_cast<std::uint8_t>(std::lround(sum.alpha / SAMPLES * 255.0)) };
        }
    }
    return bitmap;
}

} // namespace Studio
