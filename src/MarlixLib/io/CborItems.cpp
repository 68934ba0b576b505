#include <MarlixLib/io/CborItems.h>
#include <MarlixLib/io/CborSerializer.h>

#include <cstring>

namespace Marlix::Detail::Cbor {

String checkStream(const std::uint8_t* data, std::size_t size, std::size_t maxDepth)
{
    enum class Kind : std::uint8_t
    {
        Record,
        Values,
        Map,
    };
    struct Frame
    {
        Kind kind;
        bool isWrapper; // a map of the single key ARRAY_KEY, whose value is a list of values
        std::uint64_t remaining; // items still to come
        std::size_t start; // of its head
        std::uint64_t position = 0;
    };
    Array<Frame> frames;
    String shapeError; // reported only when the stream decodes, as a damaged length explains a wrong shape better
    const auto noteShape = [&](std::size_t at, bool isRoot) {
        if (!shapeError.empty())
            return;
        shapeError = isRoot ? "The stream is corrupted: it does not start with a record."
                            : "The stream is corrupted: the record at byte " + std::to_string(at)
                + " is not a list of keys and values.";
    };
    const auto truncated
        = [](std::size_t at) { return "The stream is truncated (at byte " + std::to_string(at) + ")."; };
    const auto corrupted = [](std::size_t at, const char* why) {
        return "The stream is corrupted (at byte " + std::to_string(at) + "): " + why + ".";
    };

    std::size_t at = 0;
    do {
        if (at >= size)
            return truncated(at);
        const std::size_t start = at;
        const std::uint8_t info = data[at] & 31;
        const auto major = std::uint8_t(data[at] >> 5);
        if (info >= 28)
            return corrupted(at, info == 31 ? "indefinite lengths are not used" : "reserved head");
        const std::size_t argumentSize = info < 24 ? 0 : std::size_t(1) << (info - 24);
        if (size - at < 1 + argumentSize)
            return truncated(size);
        const Head head = headAt(data + at);
        at += head.size;

        // What the enclosing container expects at this place.
        bool opensValues = frames.empty() ? false : frames.back().kind == Kind::Map && frames.back().isWrapper;
        if (frames.empty()) {
            if (major != ArrayMajor)
                noteShape(start, true);
        } else if (frames.back().position % 2 == 0 && frames.back().kind != Kind::Values) {
            if (major != TextMajor) {
                if (frames.back().kind == Kind::Map)
                    return corrupted(start, "a map key is not a string");
                noteShape(frames.back().start, frames.size() == 1);
            }
        }

        std::uint64_t children = 0;
        switch (major) {
        case UnsignedMajor:
        case NegativeMajor:
            break;
        case BytesMajor:
        case TextMajor:
            if (head.argument > size - at)
                return truncated(size);
            if (major == TextMajor && !frames.empty() && frames.back().kind == Kind::Map && frames.back().position == 0
                && frames.back().remaining == 2)
                frames.back().isWrapper = head.argument == CborSerializer::ARRAY_KEY.size()
                    && std::memcmp(data + at, CborSerializer::ARRAY_KEY.data(), head.argument) == 0;
            at += head.argument;
            break;
        case ArrayMajor:
        case MapMajor:
            // Every item takes a byte at least: a longer count is a damaged one.
            if (head.argument > (size - at) / (major == MapMajor ? 2 : 1))
                return truncated(size);
            children = major == MapMajor ? 2 * head.argument : head.argument;
            break;
        case TagMajor:
            return corrupted(start, "tags are not used");
        default:
            if (info < 20 || info == 23 || info == 24)
                return corrupted(start, "unknown simple value");
            break;
        }
        if (major == ArrayMajor && !opensValues && head.argument % 2 != 0)
            noteShape(start, frames.empty());

        if (major == ArrayMajor || major == MapMajor) {
            if (frames.size() >= maxDepth)
                return "The stream is nested more than " + std::to_string(maxDepth) + " levels deep.";
            const Kind kind = major == MapMajor ? Kind::Map : opensValues ? Kind::Values : Kind::Record;
            if (children > 0) {
                frames.push_back({ kind, false, children, start });
                continue;
            }
        }
        // The item is complete, and so is every container it completes.
        while (!frames.empty()) {
            ++frames.back().position;
            if (--frames.back().remaining > 0)
                break;
            frames.pop_back();
        }
    } while (!frames.empty());
    if (at != size)
        return corrupted(at, "bytes follow the end of the stream");
    return shapeError;
}

} // namespace Marlix::Detail::Cbor
