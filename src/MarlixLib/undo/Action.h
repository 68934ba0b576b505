#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Flags.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/undo/UndoRecord.h>

#include <cstdint>
#include <map>
#include <thread>

namespace Marlix {

class GenericDataObject;

/// What kind of change an undo action stands for.
enum class ActionFlag : std::uint32_t
{
    None = 0, ///< No flag: a change the program made by itself (a load, a script).
    /// The action was opened by an editor for one edit or one gesture of the user.
    UserEdit = 1,
};

/// A committed action: what undo and redo replay.
class MARLIXLIB_EXPORT UndoStep
{
public:
    /// Made by a committing action from the records it collected, in the order of the changes.
    UndoStep(String label, Flags<ActionFlag> flags, Array<UniquePtr<UndoRecord>> records);
    const String& getLabel() const { return label; } ///< The label given when the action was opened.
    Flags<ActionFlag> getFlags() const { return flags; } ///< The flags given when the action was opened.
    std::size_t getRecordCount() const { return records.size(); } ///< The number of reversible changes in the step.
    void undo(); ///< Undoes the records, the last change first.
    void redo(); ///< Redoes the records in the order of the changes.

private:
    String label;
    Flags<ActionFlag> flags;
    Array<UniquePtr<UndoRecord>> records;
};

namespace Detail {

/// An open action. While it is the innermost open action of its thread, every property mutation on that thread is
/// recorded in it.
class MARLIXLIB_EXPORT Action
{
public:
    using CommitHandler = Function<void(SharedPtr<UndoStep>)>;
    using PublishHandler = Function<void()>;

    Action(String label, Flags<ActionFlag> flags, CommitHandler onCommit, PublishHandler onPublish);
    ~Action();
    Action(const Action&) = delete;
    Action& operator=(const Action&) = delete;

    /// The innermost open action of the calling thread, or null.
    static Action* current();

    const String& getLabel() const { return label; }
    Flags<ActionFlag> getFlags() const { return flags; }
    bool isOpen() const { return open; }
    bool isNested() const { return outer != nullptr; }

    /// Keeps the old value of a root property the first time it is touched in this action.
    void recordProperty(GenericDataObject& object, std::uint32_t index);
    void record(UniquePtr<UndoRecord> record);

    void commit();
    void revert();
    void publish();

private:
    void close();

    String label;
    Flags<ActionFlag> flags;
    CommitHandler onCommit;
    PublishHandler onPublish;
    Action* outer = nullptr;
    std::thread::id thread;
    bool open = true;
    Array<UniquePtr<UndoRecord>> records;
    std::map<std::pair<const GenericDataObject*, std::uint32_t>, UndoRecord*> touched;
};

} // namespace Detail
} // namespace Marlix
