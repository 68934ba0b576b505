#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/FlatMap.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/data/GenericDataObject.h>

#include <cstdint>

// Free of Qt on purpose: scene definitions that carry these attributes need not build against the widgets.

namespace Marlix::Widgets {

/// Whether a property's row is shown, decided per object from the object's other properties. Every property the
/// predicate reads is watched: the row is evaluated again when one of them changes. A row edited on several objects
/// is shown when the predicate holds for each of them.
struct UiVisibleIf
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.VisibleIf"; ///< User-data key of the record.
    Function<bool(const GenericDataObject&)> predicate; ///< Called with each object shown; true shows the row.
};

/// Whether a property's editor accepts edits, decided like UiVisibleIf.
struct UiEnabledIf
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.EnabledIf"; ///< User-data key of the record.
    /// Called with each object shown; true lets the row accept edits.
    Function<bool(const GenericDataObject&)> predicate;
};

/// Named values shown as an enumeration. An integer property gets a drop-down of these values instead of a number
/// field; an enumeration gets a drop-down of just these entries, under these labels.
struct UiVirtualEnum
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.VirtualEnum"; ///< User-data key of the record.
    FlatMap<int, String> entries; ///< Value to label, offered in ascending value order.
};

} // namespace Marlix::Widgets
