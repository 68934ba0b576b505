#include <MarlixLib/io/CborDeserializer.h>

#include <array>
#include <cstddef>
#include <cstdint>

using namespace Marlix;

namespace {

constexpr std::array<StringView, 6> KEYS { "@version", "a", "b", "item", "name", "values" };

void tryValues(IDeserializer& in, StringView key)
{
    (void)in.readBool(key);
    (void)in.readInt(key);
    (void)in.readUInt(key);
    (void)in.readFloat(key);
    (void)in.readString(key);
    (void)in.readBytes(key);
    (void)in.readEntityReference(key);
}

void explore(IDeserializer& in, int depth);

// One value of a record or array: a nested record or array is walked, anything else read with every reader.
void visit(IDeserializer& in, StringView key, int depth)
{
    if (in.enterRecord(key)) {
        explore(in, depth + 1);
        in.leaveRecord();
        return;
    }
    if (const auto count = in.enterArray(key)) {
        for (std::size_t i = 0; i < *count && depth < 8; ++i)
            visit(in, {}, depth + 1);
        in.leaveArray();
        return;
    }
    tryValues(in, key);
}

// Walks whatever the stream holds under the known keys, with every kind of read, as deep as it goes.
void explore(IDeserializer& in, int depth)
{
    if (depth > 8)
        return;
    for (StringView key : KEYS)
        for (int round = 0; round < 64 && in.hasKey(key); ++round)
            visit(in, key, depth);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    CborDeserializer in(ArrayView<const std::byte>(reinterpret_cast<const std::byte*>(data), size));
    (void)in.deserializeFormatVersion();
    explore(in, 0);
    return 0;
}
