#include <MarlixLib/curves/CurveFile.h>
#include <MarlixLib/data/ValueTraits.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Reads every input as a curve file, as a user may pick any file in the load dialog. What reads must write a file that
// reads back to the same curves and then to the same bytes, and evaluate anywhere; what does not read must say why.
// The same bytes are also read as the text form of curves, as pasted into a property field.

using namespace Marlix;

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "fuzz_curve_file: %s\n", what);
    std::abort();
}

void checkText(StringView text)
{
    using Traits = ValueTraits<Curves>;
    const auto parsed = Traits::fromString(text);
    if (!parsed) {
        if (parsed.error().empty())
            fail("a refused text gave no message");
        return;
    }
    const auto reparsed = Traits::fromString(Traits::toString(*parsed));
    if (!reparsed || *reparsed != *parsed)
        fail("printing and parsing changed the curves");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    checkText(StringView(reinterpret_cast<const char*>(data), size));
    const auto read = readCurves(ArrayView<const std::byte>(reinterpret_cast<const std::byte*>(data), size));
    if (!read) {
        if (read.error().empty())
            fail("a refused file gave no message");
        return 0;
    }
    const Array<std::byte> written = writeCurves(*read);
    const auto reread = readCurves(written);
    if (!reread)
        fail("a file written from read curves does not read");
    if (*reread != *read)
        fail("writing and reading changed the curves");
    if (writeCurves(*reread) != written)
        fail("a written file does not write back byte for byte");
    for (const Curve& curve : read->getChannels())
        for (const float x : { -1.0f, 0.0f, 0.3f, 0.5f, 1.0f, 2.0f }) {
            const float y = curve(x);
            if (!(y >= 0.0f && y <= 1.0f))
                fail("a curve read from a file left [0, 1]");
        }
    return 0;
}
