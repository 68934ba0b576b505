#include <MarlixLibQt/widgets/graph/GraphView.h>

#include <QByteArray>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Reads every input as the payload of entity identities dropped on a graph view, which any program can put on a drag.
// Every identity read must be non-zero, listed once, and written in the payload as a decimal word.

using namespace Marlix;

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "fuzz_graph_drop: %s\n", what);
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray payload(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const Array<std::uint64_t> ids = Widgets::GraphView::parseEntityIds(payload);
    const QList<QByteArray> words = payload.simplified().split(' ');
    for (std::size_t i = 0; i < ids.size(); ++i) {
        if (ids[i] == 0)
            fail("identity 0 accepted");
        if (std::count(ids.begin(), ids.end(), ids[i]) != 1)
            fail("identity listed twice");
        const bool written = std::any_of(words.begin(), words.end(), [&](const QByteArray& word) {
            bool ok = false;
            return word.toULongLong(&ok) == ids[i] && ok;
        });
        if (!written)
            fail("identity not in the payload");
    }
    if (ids.size() > static_cast<std::size_t>(words.size()))
        fail("more identities than words");
    return 0;
}
