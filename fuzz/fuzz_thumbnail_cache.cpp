#include <MarlixLib/io/CborDeserializer.h>
#include <MarlixLib/io/CborSerializer.h>
#include <MarlixLibQt/widgets/thumbnails/ThumbnailManager.h>

#include <QGuiApplication>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

// Reads every input as a thumbnail cache stream, the file a host keeps between sessions. A refused stream must say
// why; an accepted one adds images to the cache, which is started afresh now and then so that it stays small.
//
// Seeds: started with an empty corpus folder, the target first writes valid and damaged cache streams into it.

using namespace Marlix;

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "fuzz_thumbnail_cache: %s\n", what);
    std::abort();
}

QGuiApplication* application = nullptr;
ThumbnailManager* manager = nullptr;
std::size_t inputsSinceFreshManager = 0;

struct SeedImage
{
    std::uint64_t id;
    std::int64_t width;
    std::int64_t height;
    std::size_t dataSize; // 4 bytes a pixel when right
};

Array<std::byte> makeStream(std::uint32_t version, ArrayView<const SeedImage> images)
{
    CborSerializer out;
    out.serializeFormatVersion(version);
    for (const SeedImage& image : images) {
        out.beginRecord("item");
        out.writeEntityReference("entity", image.id);
        out.beginRecord("dimensions");
        out.writeInt("width", image.width);
        out.writeInt("height", image.height);
        out.endRecord();
        Array<std::byte> pixels(image.dataSize);
        for (std::size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = std::byte(i * 37 + image.id);
        out.writeBytes("data", pixels);
        out.endRecord();
    }
    return out.getBytes();
}

void writeSeed(const std::filesystem::path& folder, const char* name, ArrayView<const std::byte> bytes)
{
    std::ofstream(folder / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

/// Fills every empty corpus folder named on the command line with a few cache streams, good and bad.
void writeSeedsInto(int argc, char** argv)
{
    const SeedImage good[] = { { 1, 2, 2, 16 }, { 7, 3, 1, 12 } };
    const auto valid = makeStream(ThumbnailManager::FORMAT_VERSION, good);
    for (int i = 1; i < argc; ++i) {
        std::error_code error;
        const std::filesystem::path folder(argv[i]);
        if (argv[i][0] == '-' || !std::filesystem::is_directory(folder, error)
            || !std::filesystem::is_empty(folder, error))
            continue;
        writeSeed(folder, "two_images.cbor", valid);
        writeSeed(folder, "empty.cbor", makeStream(ThumbnailManager::FORMAT_VERSION, {}));
        writeSeed(folder, "truncated.cbor", ArrayView<const std::byte>(valid.data(), valid.size() - 5));
        writeSeed(folder, "unknown_version.cbor", makeStream(ThumbnailManager::FORMAT_VERSION + 1, good));
        const SeedImage shortData[] = { { 1, 2, 2, 15 } };
        writeSeed(folder, "short_pixels.cbor", makeStream(ThumbnailManager::FORMAT_VERSION, shortData));
        const SeedImage huge[] = { { 1, 100000, 100000, 4 } };
        writeSeed(folder, "huge_dimensions.cbor", makeStream(ThumbnailManager::FORMAT_VERSION, huge));
        const SeedImage noEntity[] = { { 0, 1, 1, 4 } };
        writeSeed(folder, "no_entity.cbor", makeStream(ThumbnailManager::FORMAT_VERSION, noEntity));
        std::fprintf(stderr, "fuzz_thumbnail_cache: seeds written to %s\n", argv[i]);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // No display: the offscreen platform is enough for images and pixmaps.
    static int applicationArgc = 1;
    static char platformName[] = "fuzz_thumbnail_cache";
    static char* applicationArgv[] = { platformName, nullptr };
    qputenv("QT_QPA_PLATFORM", "offscreen");
    application = new QGuiApplication(applicationArgc, applicationArgv);
    manager = new ThumbnailManager;
    writeSeedsInto(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (++inputsSinceFreshManager == 4096) {
        delete manager;
        manager = new ThumbnailManager;
        inputsSinceFreshManager = 0;
    }
    CborDeserializer in(ArrayView<const std::byte>(reinterpret_cast<const std::byte*>(data), size));
    const auto read = manager->deserializeThumbnailCache(in);
    if (!read && read.error().empty())
        fail("a refused stream gave no message");
    return 0;
}
