#include <MarlixLib/undo/Action.h>

#include <MarlixLib/base/Exception.h>
#include <MarlixLib/base/FlatSet.h>
#include <MarlixLib/data/GenericDataObject.h>
#include <MarlixLib/data/Value.h>

namespace Marlix {

namespace {
// Read on every property write. The library is linked by its hosts, not opened at run time, so its thread-local
// words can sit in the static TLS block and be reached without a call into the dynamic loader.
[[gnu::tls_model("initial-exec")]] thread_local Detail::Action* innermostAction = nullptr;

/// The old and the newest value of one root property touched by an action.
class PropertyRecord final : public UndoRecord
{
public:
    PropertyRecord(SharedPtr<GenericDataObject> object, std::uint32_t index)
        : object(std::move(object))
        , index(index)
        , oldValue(this->object->getPropertyDefinition(index).getType(), this->object->getPropertyData(index))
    {
    }

    void undo() override { object->restoreProperty(index, oldValue.data()); }
    void redo() override { object->restoreProperty(index, newValue.data()); }
    void captureFinalState() override
    {
        newValue = Value(object->getPropertyDefinition(index).getType(), object->getPropertyData(index));
    }
    bool isNoOp() const override
    {
        return oldValue.getType()->equals(oldValue.data(), object->getPropertyData(index));
    }

private:
    SharedPtr<GenericDataObject> object;
    std::uint32_t index;
    Value oldValue;
    Value newValue;
};
} // namespace

UndoStep::UndoStep(String label, Flags<ActionFlag> flags, Array<UniquePtr<UndoRecord>> records)
    : label(std::move(label))
    , flags(flags)
    , records(std::move(records))
{
}

void UndoStep::undo()
{
    for (auto it = records.rbegin(); it != records.rend(); ++it)
        (*it)->undo();
}

void UndoStep::redo()
{
    for (auto& record : records)
        record->redo();
}

Detail::Action::Action(String label, Flags<ActionFlag> flags, CommitHandler onCommit, PublishHandler onPublish)
    : label(std::move(label))
    , flags(flags)
    , onCommit(std::move(onCommit))
    , onPublish(std::move(onPublish))
    , outer(innermostAction)
    , thread(std::this_thread::get_id())
{
    innermostAction = this;
}

Detail::Action::~Action()
{
    if (open && innermostAction == this)
        innermostAction = outer;
}

Detail::Action* Detail::Action::current()
{
    return innermostAction;
}

void Detail::Action::recordProperty(GenericDataObject& object, std::uint32_t index)
{
    if (touched.contains({ &object, index }))
        return;
    auto owner = object.weak_from_this().lock();
    // Only objects owned through SharedPtr can be undone: the step keeps them alive.
    if (!owner)
        return;
    auto made = std::make_unique<PropertyRecord>(std::move(owner), index);
    touched.emplace(std::pair { &object, index }, made.get());
    records.push_back(std::move(made));
}

void Detail::Action::record(UniquePtr<UndoRecord> record)
{
    if (!open)
        Detail::throwStopException("undo/Action", __LINE__);
    records.push_back(std::move(record));
}

void Detail::Action::close()
{
    if (!open)
        Detail::throwStopException("undo/Action", __LINE__);
    // Actions close innermost first, on the thread that opened them.
    if (innermostAction != this || std::this_thread::get_id() != thread)
        Detail::throwStopException("undo/Action", __LINE__);
    innermostAction = outer;
    open = false;
}

void Detail::Action::commit()
{
    close();
    if (outer) {
        // A nested action's changes belong to the outer one; the outer keeps its older value of shared properties.
        FlatSet<const UndoRecord*> superseded;
        for (const auto& [key, made] : touched) {
            if (outer->touched.contains(key))
                superseded.insert(made);
            else
                outer->touched.emplace(key, made);
        }
        for (auto& made : records)
            if (!superseded.contains(made.get()))
                outer->records.push_back(std::move(made));
        records.clear();
        touched.clear();
        return;
    }
    bool changed = false;
    for (auto& made : records) {
        made->captureFinalState();
        changed = changed || !made->isNoOp();
    }
    touched.clear();
    if (!changed) {
        records.clear();
        return;
    }
    auto step = makeSharedPtr<UndoStep>(label, flags, std::move(records));
    records.clear();
    if (onCommit)
        onCommit(std::move(step));
}

void Detail::Action::revert()
{
    close();
    touched.clear();
    Array<UniquePtr<UndoRecord>> undone = std::move(records);
    records.clear();
    for (auto it = undone.rbegin(); it != undone.rend(); ++it)
        (*it)->undo();
}

void Detail::Action::publish()
{
    if (!open)
        Detail::throwStopException("undo/Action", __LINE__);
    if (onPublish)
        onPublish();
}

} // namespace Marlix
