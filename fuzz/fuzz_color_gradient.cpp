#include <MarlixLib/color/ColorGradient.h>
#include <MarlixLib/io/CborDeserializer.h>
#include <MarlixLib/io/CborSerializer.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Parses every input as the text form of a gradient, as typed into a field or pasted. Text that parses must print to
// a text that parses to the same gradient, survive a round trip through a stream, and be sampled anywhere without
// harm; text that does not parse must say why.

using namespace Marlix;

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "fuzz_color_gradient: %s\n", what);
    std::abort();
}

using Traits = ValueTraits<ColorGradient>;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto parsed = Traits::fromString(StringView(reinterpret_cast<const char*>(data), size));
    if (!parsed) {
        if (parsed.error().empty())
            fail("a refused text gave no message");
        return 0;
    }
    // Compared as text: a stop may hold a NaN component, which never equals itself.
    const String printed = Traits::toString(*parsed);
    const auto reparsed = Traits::fromString(printed);
    if (!reparsed)
        fail("the printed form of a parsed gradient does not parse");
    if (Traits::toString(*reparsed) != printed)
        fail("printing and parsing changed the gradient");

    CborSerializer out;
    out.serializeFormatVersion(1);
    Traits::serialize(out, "gradient", *parsed);
    const auto bytes = out.getBytes();
    CborDeserializer in(bytes);
    (void)in.deserializeFormatVersion();
    const auto read = Traits::deserialize(in, "gradient");
    if (!read)
        fail("a parsed gradient does not read back from a stream");
    if (Traits::toString(*read) != printed)
        fail("a stream round trip changed the gradient");

    for (const float position : { -1.0f, 0.0f, 0.25f, 0.5f, 1.0f, 2.0f })
        (void)parsed->getRgbAt(position);
    return 0;
}
