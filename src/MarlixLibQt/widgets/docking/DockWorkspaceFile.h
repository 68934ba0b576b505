#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/docking/Dock.h>

#include <cstddef>
#include <cstdint>

namespace Marlix::Widgets {

/// How a workspace is written: a CBOR stream of the core serializer whose format version is VERSION, with the text
/// TAG under "format" (so a stream of another kind is told from a damaged workspace) and the records under "docks" as
/// a value of the registered list type "DockDataList".
struct DockWorkspaceFormat
{
    static constexpr std::uint32_t VERSION = 1; ///< The format version written; readers refuse streams of any other.
    static constexpr StringView TAG = "MarlixWorkspace"; ///< The text that marks a workspace stream.
    static constexpr StringView TAG_KEY = "format"; ///< The key the tag is written under.
    static constexpr StringView RECORDS_KEY = "docks"; ///< The key the records are written under.
    /// The largest file a reader accepts: a workspace of thousands of docks takes well under a megabyte.
    static constexpr std::size_t MAX_FILE_SIZE = 16u << 20;
};

/// The bytes of a workspace. Needs the library's types registered (LibQt::startup); an Exception otherwise.
MARLIXLIBQT_EXPORT Array<std::byte> writeWorkspace(ArrayView<const Dock::Data> records);

/// The records of a workspace, or an error that says what is wrong with the bytes; never part of the records. Whether
/// the records make sense as a layout is checkWorkspaceRecords' concern and the restore's.
MARLIXLIBQT_EXPORT Expected<Stack<Dock::Data>, String> readWorkspace(ArrayView<const std::byte> bytes);

/// Writes a workspace file. The new file is written beside the old one and then takes its place, so a crash or a full
/// disk never leaves half a workspace behind.
MARLIXLIBQT_EXPORT Expected<void, String> saveWorkspaceFile(const Io::Path& path, ArrayView<const Dock::Data> records);

/// readWorkspace of a file; a file that cannot be read, or is larger than any workspace, is an error naming it.
MARLIXLIBQT_EXPORT Expected<Stack<Dock::Data>, String> loadWorkspaceFile(const Io::Path& path);

} // namespace Marlix::Widgets
