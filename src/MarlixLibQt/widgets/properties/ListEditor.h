#pragma once

#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/base/Polymorphic.h>
#include <MarlixLib/data/Value.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Container.h>
#include <MarlixLibQt/widgets/properties/UiAttributes.h>

#include <QString>

#include <memory>

class QToolButton;
class QVBoxLayout;

namespace Marlix {
class IUndoManager;
}

namespace Marlix::Widgets {

/// The items of a list property, each in its element type's editor, with buttons that add, remove and reorder items
/// and a menu of whole-list presets. Every add, removal, move and preset is one undo step.
class MARLIXLIBQT_EXPORT ListEditor : public Container, public BaseWithModel
{
    Q_OBJECT

public:
    /// The list as the editor changes it, whatever its element type. Every change writes the whole list once; a value
    /// of the wrong type is refused with an Exception and changes nothing.
    class Items : public Polymorphic
    {
    public:
        virtual std::size_t size() const = 0; ///< Number of items.
        /// An editor of item `index`, bound to that position of the list.
        virtual QWidget* makeItemEditor(std::size_t index, QWidget* parent) = 0;
        /// Inserts `item` before position `index` (`index` == size() appends).
        virtual void insert(std::size_t index, const Value& item) = 0;
        virtual void remove(std::size_t index) = 0; ///< Removes the item at `index`.
        virtual void move(std::size_t from, std::size_t to) = 0; ///< Moves the item at `from` so that it ends at `to`.
        /// Puts `list`, a value of the list's own type, in place of the whole list.
        virtual void replace(const Value& list) = 0;
        /// The element type's default value.
        virtual Value defaultItem() const = 0;
        /// `onChange` runs after every change of the list, also one made elsewhere; the lifetime unsubscribes.
        virtual CallbackLifetime addCallback(Function<void()> onChange) = 0;
    };

    /// What the property's attributes ask of the editor.
    struct Options
    {
        /// Shown in the undo labels: "Add Item to <name>".
        QString name;
        Flags<UiListFlag> flags; ///< What the user may change; none allows adding, removing and reordering.
        /// Makes the item the add button appends, asking the user; none appends defaultItem.
        Optional<UiListItemAdder> adder;
        Optional<Value> defaultItem; ///< The item appended without an adder; none uses Items::defaultItem().
        Array<UiListPresets::Preset> presets; ///< Whole lists offered by the presets button, in menu order.
        bool readOnly = false; ///< Shown but not changed: every button is disabled and every change refused.
    };

    /// Shows `items`, which must not be null (the stop exception otherwise); changes go through one action of
    /// `undoManager` each, or without undo when it is null.
    ListEditor(
        std::unique_ptr<Items> items, SharedPtr<IUndoManager> undoManager, Options options, QWidget* parent = nullptr);
    ~ListEditor() override;

    std::size_t count() const { return items->size(); } ///< Number of items, as the list holds it now.
    /// The editor of item `index` (null past the end).
    QWidget* itemEditor(std::size_t index) const;
    QToolButton* addButton() const { return adder; } ///< The button that appends an item.
    /// Null when the property offers no presets.
    QToolButton* presetsButton() const { return presetButton; }

    /// Each is one undo step; false, and nothing changed, when the list refuses or the position is out of range.
    bool addItem();
    bool removeItem(std::size_t index); ///< Removes the item at `index`, unless the list has a fixed size.
    /// Moves the item at `from` to `to`, unless the list refuses reordering.
    bool moveItem(std::size_t from, std::size_t to);
    bool applyPreset(std::size_t preset); ///< Puts preset number `preset` of Options::presets in place of the list.

    void notify() override; ///< Rebuilds the rows when the list's length changed; item editors follow their own items.

private:
    struct Row
    {
        QWidget* box = nullptr;
        QWidget* editor = nullptr;
    };

    /// Runs `change` in one undo action labelled `label`; false when it threw.
    bool change(const QString& label, const Function<void()>& change);
    void rebuildRows();

    std::unique_ptr<Items> items;
    SharedPtr<IUndoManager> undoManager;
    Options options;
    QVBoxLayout* rowLayout = nullptr;
    QToolButton* adder = nullptr;
    QToolButton* presetButton = nullptr;
    Array<Row> rows;
};

} // namespace Marlix::Widgets
