#include <MarlixLib/Lib.h>
#include <MarlixLib/io/SceneSerializer.h>

#include <MarlixTestScene/TestScene.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

// Loads every input into a scene that already holds the sample scene. A stream that fails must leave that scene exactly
// as it was; one that loads must save and load again to an equivalent scene.
//
// Seeds: started with an empty corpus folder, the target first writes serialized sample scenes into it, e.g.
//   mkdir -p build/fuzz/corpus/scene_reader && build/fuzz/fuzz/fuzz_scene_reader build/fuzz/corpus/scene_reader

using namespace Marlix;

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "fuzz_scene_reader: %s\n", what);
    std::abort();
}

/// The scene every input is loaded into, and copies of what it held, to prove that a failed load changed nothing.
struct Target
{
    EntityGraphTracker scene;
    Array<EntityHolder<Entity>> members;
    Array<EntityHolder<Entity>> copies;

    Target()
    {
        TestScene::populate(scene);
        members = scene.getEntities();
        for (const auto& entity : members)
            copies.push_back(entity->clone());
    }

    bool isUnchanged() const
    {
        if (scene.getEntities() != members)
            return false;
        for (std::size_t i = 0; i < members.size(); ++i)
            if (!members[i]->hasEqualValues(*copies[i]))
                return false;
        return true;
    }
};

Target* target = nullptr;

void writeSeed(const std::filesystem::path& folder, const char* name, void (*fill)(EntityGraphTracker&))
{
    EntityGraphTracker scene;
    fill(scene);
    const auto bytes = SceneSerializer::saveToBytes(scene);
    std::ofstream(folder / name, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

/// Fills every empty corpus folder named on the command line with a few serialized scenes.
void writeSeedsInto(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        std::error_code error;
        const std::filesystem::path folder(argv[i]);
        if (argv[i][0] == '-' || !std::filesystem::is_directory(folder, error) || !std::filesystem::is_empty(folder, error))
            continue;
        writeSeed(folder, "sample_scene.cbor", [](EntityGraphTracker& scene) { TestScene::populate(scene); });
        writeSeed(folder, "empty_scene.cbor", [](EntityGraphTracker&) {});
        writeSeed(folder, "varied_scene.cbor", [](EntityGraphTracker& scene) { TestScene::populateLarge(scene, 24, 3); });
        std::fprintf(stderr, "fuzz_scene_reader: seeds written to %s\n", argv[i]);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    Lib::startup();
    TestScene::registerTypes();
    target = new Target;
    writeSeedsInto(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ArrayView<const std::byte> bytes(reinterpret_cast<const std::byte*>(data), size);
    const auto loaded = SceneSerializer::loadFromBytes(target->scene, bytes);
    if (!loaded) {
        if (loaded.error().empty())
            fail("a failed load gave no message");
        if (!target->isUnchanged())
            fail("a failed load changed the scene");
        return 0;
    }
    EntityGraphTracker again;
    if (!SceneSerializer::loadFromBytes(again, SceneSerializer::saveToBytes(target->scene)))
        fail("a loaded scene does not load again after saving");
    if (!again.isEquivalentTo(target->scene))
        fail("a loaded scene changed through saving and loading");
    again.replaceEntities({});
    target->scene.replaceEntities(target->members);
    return 0;
}
