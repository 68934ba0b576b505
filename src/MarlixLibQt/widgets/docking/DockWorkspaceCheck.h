#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/docking/Dock.h>

#include <QRect>

#include <cstddef>

namespace Marlix::Widgets {

/// The bounds beyond which a workspace record is taken for damage rather than for a layout anyone made.
struct DockWorkspaceLimits
{
    /// The highest index a level token ("H", "V" or "T") may carry: no splitter or tab widget holds that many.
    static constexpr int MAX_INDEX = 1000;
    /// Levels below the top-level widget.
    static constexpr std::size_t MAX_DEPTH = 64;
    static constexpr std::size_t MAX_NAME_LENGTH = 256; ///< The longest name in a path, in UTF-8 bytes.
    /// The largest splitter size, in pixels, that a record may give.
    static constexpr int MAX_SPLITTER_SIZE = 100000;
    /// The largest window coordinate or extent, in pixels.
    static constexpr int MAX_WINDOW_COORDINATE = 1000000;
};

/// What is wrong with one workspace record, as translated messages naming its path; empty when the record can be
/// restored. A path is a top-level widget's name, then "H", "V" or "T" with a decimal index per level, then the name of
/// a dock or, for a container's own level, a name ending with "MainWindow". The geometry of a top-level record is
/// window geometry (`QWidget::saveGeometry`); that of a deeper one, non-negative 32-bit integers written with
/// `QDataStream` (splitter sizes, a current tab).
MARLIXLIBQT_EXPORT Stack<String> checkWorkspaceRecord(const Dock::Data& record);

/// The messages of every record in order ("Record 3 (path "MainWindow/H0/Scene"): ...", counted from 1), with those
/// of the set: a path given twice, a dock placed by two records. Empty when the whole workspace can be restored.
MARLIXLIBQT_EXPORT Stack<String> checkWorkspaceRecords(ArrayView<const Dock::Data> records);

/// The messages of checkWorkspaceRecords for each record in its place, so a restore can refuse the records that have
/// any and apply the rest. A record that repeats the path, or the dock, of an earlier one carries the message.
MARLIXLIBQT_EXPORT Array<Stack<String>> checkEachWorkspaceRecord(ArrayView<const Dock::Data> records);

/// Whether `bytes` are window geometry as `QWidget::saveGeometry` writes it, checked without a widget: its mark,
/// a version Qt writes, the length of that version and rectangles of a sane size.
MARLIXLIBQT_EXPORT bool isWindowGeometry(const QByteArray& bytes);

/// The normal (not maximised) geometry of a window in window geometry bytes; empty when they are not window geometry.
/// Qt declines geometry saved on a screen of another width, where a restore still wants the window's place and size.
MARLIXLIBQT_EXPORT Optional<QRect> windowNormalGeometry(const QByteArray& bytes);

} // namespace Marlix::Widgets
