#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/io/CborDeserializer.h>
#include <MarlixLib/io/CborSerializer.h>
#include <MarlixLibQt/widgets/docking/DockWorkspaceFile.h>

#include <QFile>
#include <QSaveFile>

namespace Marlix::Widgets {

namespace {

using Format = DockWorkspaceFormat;

constexpr StringView LIST_TYPE_NAME = "DockDataList";

SharedPtr<TypeDefinition> listType()
{
    return TypeDatabase::instance().lookupTypeDefinition(LIST_TYPE_NAME);
}

QString toQtPath(const Io::Path& path)
{
    const std::u8string text = path.u8string();
    return QString::fromUtf8(reinterpret_cast<const char*>(text.data()), static_cast<qsizetype>(text.size()));
}

String fileName(const Io::Path& path)
{
    return "\"" + path.generic_string() + "\"";
}

// Workspace records carry no entity references: an identity in one is damage.
Expected<SharedPtr<Entity>, String> noEntities(std::uint64_t)
{
    return Unexpected<String>("A workspace refers to no entities");
}

} // namespace

Array<std::byte> writeWorkspace(ArrayView<const Dock::Data> records)
{
    const auto type = listType();
    if (!type)
        throw Exception("Workspaces cannot be written before the library has registered its types");
    const Stack<Dock::Data> list(records.begin(), records.end());
    CborSerializer out;
    out.serializeFormatVersion(Format::VERSION);
    out.writeString(Format::TAG_KEY, Format::TAG);
    type->serialize(out, Format::RECORDS_KEY, &list);
    return out.takeBytes();
}

Expected<Stack<Dock::Data>, String> readWorkspace(ArrayView<const std::byte> bytes)
{
    if (bytes.empty())
        return Unexpected<String>("The workspace is empty");
    const auto type = listType();
    if (!type)
        return Unexpected<String>("Workspaces cannot be read before the library has registered its types");
    CborDeserializer in(bytes);
    if (!in.getStreamError().empty())
        return Unexpected<String>("The workspace is damaged: " + in.getStreamError());
    const auto version = in.deserializeFormatVersion();
    if (!version)
        return Unexpected<String>("The workspace has no format version: " + version.error());
    const auto tag = in.readString(Format::TAG_KEY);
    if (!tag || *tag != Format::TAG)
        return Unexpected<String>("The data is not a workspace (its format is not \"" + String(Format::TAG) + "\")");
    if (*version != Format::VERSION)
        return Unexpected<String>("The workspace has the format version " + std::to_string(*version)
            + ", which this program does not read (it reads " + std::to_string(Format::VERSION) + ")");
    Stack<Dock::Data> records;
    if (const auto read = type->deserialize(in, Format::RECORDS_KEY, EntityResolver(noEntities), &records); !read)
        return Unexpected<String>("The workspace records cannot be read: " + read.error());
    return records;
}

Expected<void, String> saveWorkspaceFile(const Io::Path& path, ArrayView<const Dock::Data> records)
{
    Array<std::byte> bytes;
    try {
        bytes = writeWorkspace(records);
    } catch (const Exception& error) {
        return Unexpected<String>(error.what());
    }
    QSaveFile file(toQtPath(path));
    if (!file.open(QIODevice::WriteOnly))
        return Unexpected<String>(
            "Cannot write the workspace file " + fileName(path) + ": " + file.errorString().toStdString());
    const auto size = static_cast<qint64>(bytes.size());
    if (file.write(reinterpret_cast<const char*>(bytes.data()), size) != size || !file.commit())
        return Unexpected<String>(
            "Cannot write the workspace file " + fileName(path) + ": " + file.errorString().toStdString());
    return {};
}

Expected<Stack<Dock::Data>, String> loadWorkspaceFile(const Io::Path& path)
{
    QFile file(toQtPath(path));
    if (!file.open(QIODevice::ReadOnly))
        return Unexpected<String>(
            "Cannot read the workspace file " + fileName(path) + ": " + file.errorString().toStdString());
    if (static_cast<std::size_t>(file.size()) > Format::MAX_FILE_SIZE)
        return Unexpected<String>("The file " + fileName(path) + " is too large to be a workspace");
    const QByteArray bytes = file.read(static_cast<qint64>(Format::MAX_FILE_SIZE) + 1);
    if (file.error() != QFileDevice::NoError || static_cast<std::size_t>(bytes.size()) > Format::MAX_FILE_SIZE)
        return Unexpected<String>("Cannot read the workspace file " + fileName(path));
    auto records = readWorkspace(
        ArrayView<const std::byte>(reinterpret_cast<const std::byte*>(bytes.constData()), std::size_t(bytes.size())));
    if (!records)
        return Unexpected<String>(fileName(path) + ": " + records.error());
    return records;
}

} // namespace Marlix::Widgets
