#include <MarlixLibQt/widgets/docking/DockWorkspaceCheck.h>

#include <QStringDecoder>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <map>

namespace Marlix::Widgets {

namespace {

using Limits = DockWorkspaceLimits;

constexpr std::uint32_t GEOMETRY_MARK = 0x01D9D0CB;
constexpr qsizetype GEOMETRY_HEADER_SIZE = 8;
// The length of each version of window geometry that Qt writes: version 1 holds the frame and normal rectangles, the
// screen and the maximised and full-screen flags; 2 adds the screen width, 3 the client rectangle.
constexpr qsizetype GEOMETRY_SIZES[] = { 46, 50, 66 };
constexpr qsizetype FRAME_RECT_OFFSET = 8;
constexpr qsizetype NORMAL_RECT_OFFSET = 24;
constexpr qsizetype SCREEN_OFFSET = 40;
constexpr qsizetype CLIENT_RECT_OFFSET = 50;
constexpr int MAX_SCREEN = 64;

std::uint32_t bigEndian32(const QByteArray& bytes, qsizetype offset)
{
    std::uint32_t value = 0;
    for (qsizetype i = 0; i < 4; ++i)
        value = value << 8 | static_cast<std::uint8_t>(bytes[offset + i]);
    return value;
}

std::int32_t signed32(const QByteArray& bytes, qsizetype offset)
{
    return static_cast<std::int32_t>(bigEndian32(bytes, offset));
}

// Qt's rectangles keep their right and bottom edges, so an empty rectangle has a width of zero and one never laid out
// may hold QRect()'s edges; anything narrower or beyond any screen is damage.
bool isSaneRect(const QByteArray& bytes, qsizetype offset)
{
    const std::int64_t left = signed32(bytes, offset), top = signed32(bytes, offset + 4);
    const std::int64_t right = signed32(bytes, offset + 8), bottom = signed32(bytes, offset + 12);
    for (const std::int64_t edge : { left, top, right, bottom })
        if (edge < -Limits::MAX_WINDOW_COORDINATE || edge > Limits::MAX_WINDOW_COORDINATE)
            return false;
    return right - left + 1 >= 0 && bottom - top + 1 >= 0;
}

bool hasGeometryMark(const QByteArray& bytes)
{
    return bytes.size() >= 4 && bigEndian32(bytes, 0) == GEOMETRY_MARK;
}

// The size that window geometry of this header must have, or 0 for a version Qt never wrote.
qsizetype expectedGeometrySize(const QByteArray& bytes)
{
    const int major = static_cast<std::uint8_t>(bytes[4]) << 8 | static_cast<std::uint8_t>(bytes[5]);
    return major >= 1 && major <= 3 ? GEOMETRY_SIZES[major - 1] : 0;
}

bool isLevelKind(char c)
{
    return c == 'H' || c == 'V' || c == 'T';
}

Array<StringView> splitPath(StringView path)
{
    Array<StringView> tokens;
    std::size_t start = 0;
    while (start <= path.size()) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        if (end > start)
            tokens.push_back(path.substr(start, end - start));
        start = end + 1;
    }
    return tokens;
}

QString quotedText(StringView text)
{
    return QStringLiteral("\"%1\"").arg(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
}

// What is wrong with the index of a level token, or an empty string.
QString indexProblem(StringView token)
{
    const StringView digits = token.substr(1);
    if (digits.empty())
        return Dock::tr("the level %1 has no index").arg(quotedText(token));
    if (digits.front() == '-' && digits.size() > 1
        && std::all_of(digits.begin() + 1, digits.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return Dock::tr("the level %1 has a negative index").arg(quotedText(token));
    if (!std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return Dock::tr("the index of the level %1 is not a decimal number").arg(quotedText(token));
    int index = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), index);
    if (error == std::errc::result_out_of_range || index > Limits::MAX_INDEX)
        return Dock::tr("the index of the level %1 is beyond %2").arg(quotedText(token)).arg(Limits::MAX_INDEX);
    return {};
}

bool isLevelToken(StringView token)
{
    return token.size() > 1 && isLevelKind(token.front()) && indexProblem(token).isEmpty();
}

QString nameProblem(StringView name)
{
    if (name.size() > Limits::MAX_NAME_LENGTH)
        return Dock::tr("the name %1... is longer than %2 bytes")
            .arg(quotedText(name.substr(0, 32)))
            .arg(Limits::MAX_NAME_LENGTH);
    if (std::any_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }))
        return Dock::tr("the name %1 holds control characters").arg(quotedText(name));
    return {};
}

// A window's record is its name alone and holds its geometry; deeper records hold splitter sizes or a current tab.
bool isWindowLevel(const Array<StringView>& tokens)
{
    return tokens.size() == 1;
}

// The record of a window's or a container's own level ends with the window's name, which ends with this.
bool isLevelRecord(const Array<StringView>& tokens)
{
    return tokens.back().ends_with("MainWindow");
}

QString windowGeometryProblem(const QByteArray& bytes)
{
    if (!hasGeometryMark(bytes) || bytes.size() < GEOMETRY_HEADER_SIZE)
        return Dock::tr("the geometry of this window is not window geometry");
    const qsizetype expected = expectedGeometrySize(bytes);
    if (expected == 0)
        return Dock::tr("the window geometry is of a version that is not known");
    if (bytes.size() < expected)
        return Dock::tr("the window geometry is cut short (%1 of %2 bytes)").arg(bytes.size()).arg(expected);
    if (!isWindowGeometry(bytes))
        return Dock::tr("the window geometry is damaged (%1 bytes)").arg(bytes.size());
    return {};
}

QString splitterSizesProblem(const QByteArray& bytes)
{
    if (hasGeometryMark(bytes))
        return Dock::tr("the record holds window geometry where splitter sizes belong");
    if (bytes.size() % 4 != 0)
        return Dock::tr("the splitter sizes are cut short (%1 bytes)").arg(bytes.size());
    const qsizetype count = bytes.size() / 4;
    if (count > Limits::MAX_INDEX + 1)
        return Dock::tr("the record gives %1 splitter sizes").arg(count);
    for (qsizetype i = 0; i < count; ++i) {
        const std::int32_t size = signed32(bytes, i * 4);
        if (size < 0)
            return Dock::tr("the splitter size %1 is negative").arg(size);
        if (size > Limits::MAX_SPLITTER_SIZE)
            return Dock::tr("the splitter size %1 is beyond %2 pixels").arg(size).arg(Limits::MAX_SPLITTER_SIZE);
    }
    return {};
}

Stack<QString> recordProblems(const Dock::Data& record)
{
    Stack<QString> problems;
    const auto add = [&](const QString& problem) {
        if (!problem.isEmpty())
            problems.push_back(problem);
    };
    const Array<StringView> tokens = splitPath(record.path);
    if (tokens.empty()) {
        problems.push_back(Dock::tr("the path is empty"));
        return problems;
    }
    // Decoding is what finds the error; the text is not needed.
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString decoded = decoder(QByteArrayView(record.path.data(), static_cast<qsizetype>(record.path.size())));
    if (decoder.hasError())
        add(Dock::tr("the path is not UTF-8 text"));
    if (tokens.size() > Limits::MAX_DEPTH + 2) {
        add(Dock::tr("the path has %1 levels; a workspace nests at most %2")
                .arg(tokens.size() - 2)
                .arg(Limits::MAX_DEPTH));
        return problems;
    }
    if (tokens.size() > 1 && isLevelToken(tokens.front()))
        add(Dock::tr("the path starts with the level %1 instead of the name of a window")
                .arg(quotedText(tokens.front())));
    add(nameProblem(tokens.front()));
    for (std::size_t i = 1; i + 1 < tokens.size(); ++i) {
        const StringView token = tokens[i];
        if (!isLevelKind(token.front()))
            add(Dock::tr("%1 is not a level (H, V or T followed by an index)").arg(quotedText(token)));
        else
            add(indexProblem(token));
        // The layout never holds a splitter right inside one of the same orientation, nor tabs inside tabs.
        if (i > 1 && token.front() == tokens[i - 1].front())
            add(Dock::tr("the level %1 nests a container in one of its own kind").arg(quotedText(token)));
    }
    if (tokens.size() > 1 && isLevelToken(tokens.back()))
        add(Dock::tr("the path ends with the level %1 instead of a name").arg(quotedText(tokens.back())));
    else if (tokens.size() > 1)
        add(nameProblem(tokens.back()));
    if (!record.geometry.isEmpty())
        add(isWindowLevel(tokens) ? windowGeometryProblem(record.geometry) : splitterSizesProblem(record.geometry));
    return problems;
}

String joined(const Array<StringView>& tokens)
{
    String path;
    for (const StringView token : tokens)
        path.append(path.empty() ? "" : "/").append(token);
    return path;
}

String recordMessage(std::size_t index, const Dock::Data& record, const QString& problem)
{
    return Dock::tr("Record %1 (path %2): %3").arg(index + 1).arg(quotedText(record.path), problem).toStdString();
}

} // namespace

bool isWindowGeometry(const QByteArray& bytes)
{
    if (!hasGeometryMark(bytes) || bytes.size() < GEOMETRY_HEADER_SIZE)
        return false;
    const qsizetype expected = expectedGeometrySize(bytes);
    const int minor = static_cast<std::uint8_t>(bytes[6]) << 8 | static_cast<std::uint8_t>(bytes[7]);
    // A later minor version may add to the end, which readers of this one pass over.
    if (expected == 0 || bytes.size() < expected || (minor == 0 && bytes.size() != expected))
        return false;
    const std::int32_t screen = signed32(bytes, SCREEN_OFFSET);
    if (screen < -1 || screen > MAX_SCREEN)
        return false;
    return isSaneRect(bytes, FRAME_RECT_OFFSET) && isSaneRect(bytes, NORMAL_RECT_OFFSET)
        && (expected < GEOMETRY_SIZES[2] || isSaneRect(bytes, CLIENT_RECT_OFFSET));
}

Optional<QRect> windowNormalGeometry(const QByteArray& bytes)
{
    if (!isWindowGeometry(bytes))
        return std::nullopt;
    return QRect(QPoint(signed32(bytes, NORMAL_RECT_OFFSET), signed32(bytes, NORMAL_RECT_OFFSET + 4)),
        QPoint(signed32(bytes, NORMAL_RECT_OFFSET + 8), signed32(bytes, NORMAL_RECT_OFFSET + 12)));
}

Stack<String> checkWorkspaceRecord(const Dock::Data& record)
{
    Stack<String> messages;
    for (const QString& problem : recordProblems(record))
        messages.push_back(Dock::tr("The record of path %1: %2").arg(quotedText(record.path), problem).toStdString());
    return messages;
}

Array<Stack<String>> checkEachWorkspaceRecord(ArrayView<const Dock::Data> records)
{
    Array<Stack<String>> messages(records.size());
    std::map<String, std::size_t, std::less<>> paths;
    std::map<String, std::size_t, std::less<>> docks;
    for (std::size_t i = 0; i < records.size(); ++i) {
        for (const QString& problem : recordProblems(records[i]))
            messages[i].push_back(recordMessage(i, records[i], problem));
        const Array<StringView> tokens = splitPath(records[i].path);
        if (tokens.empty())
            continue;
        // Paths compare as a restore reads them, without the empty parts.
        if (const auto [first, added] = paths.emplace(joined(tokens), i); !added) {
            messages[i].push_back(
                recordMessage(i, records[i], Dock::tr("the path of record %1 again").arg(first->second + 1)));
            continue;
        }
        const StringView name = tokens.back();
        if (isLevelRecord(tokens))
            continue;
        if (const auto [first, added] = docks.emplace(String(name), i); !added)
            messages[i].push_back(recordMessage(i, records[i],
                Dock::tr("the dock %1 is already placed by record %2").arg(quotedText(name)).arg(first->second + 1)));
    }
    return messages;
}

Stack<String> checkWorkspaceRecords(ArrayView<const Dock::Data> records)
{
    Stack<String> all;
    for (Stack<String>& messages : checkEachWorkspaceRecord(records))
        std::move(messages.begin(), messages.end(), std::back_inserter(all));
    return all;
}

} // namespace Marlix::Widgets
