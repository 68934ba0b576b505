#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/data/UserData.h>

#include <cstdint>

namespace Marlix::Widgets {

/// What a path property holds and how it is picked: a directory, a file to open or a file to save, with the file
/// filter of the dialog. Stored in a property's user data under ATTRIBUTE.
struct UiPathFlags
{
    /// What the picker asks for.
    enum class Mode : std::uint64_t {
        Directory = 0, ///< An existing directory.
        OpenFile = 1, ///< An existing file to read.
        SaveFile = 2, ///< A file to write, which may not exist yet.
    };

    static constexpr StringView ATTRIBUTE = "Zorva.Ui.PathFlags"; ///< User-data key of the record.

    Mode mode = Mode::OpenFile; ///< A file to open unless set.
    /// File-dialog filter text, "Images (*.png *.exr);;All files (*)"; empty shows every file.
    String filter;

    bool operator==(const UiPathFlags&) const = default; ///< Equal when mode and filter are.

    /// False for a mode read from outside data that names none of the three.
    bool isValid() const { return mode == Mode::Directory || mode == Mode::OpenFile || mode == Mode::SaveFile; }

    /// The flags stored in `userData`; a file to open with no filter when there are none.
    static UiPathFlags fromUserData(const UserData& userData)
    {
        const UiPathFlags* flags = userData.get<UiPathFlags>(ATTRIBUTE);
        return flags ? *flags : UiPathFlags {};
    }
};

} // namespace Marlix::Widgets
