#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/CommonContextMenuOwner.h>
#include <MarlixLibQt/widgets/Model.h>

#include <MarlixLib/base/FlatMap.h>

#include <QComboBox>

#include <cstdint>

namespace Marlix::Widgets {

/// A model that owns a list and hands out views of it, for the label and value lists of a ComboBox that nothing
/// else keeps alive. A set() copies the viewed elements in.
template <class T> class ListViewModel final : public AbstractModel<ArrayView<const T>>
{
public:
    /// Starts with \p items; nothing is notified.
    explicit ListViewModel(Array<T> items = {})
        : items(std::move(items))
    {
    }

    ArrayView<const T> get() const override { return items; } ///< A view of the owned list; valid until the next set().

    void set(ArrayView<const T> value) override
    {
        if (setDepth.load(std::memory_order_acquire) >= 1)
            return;
        const Detail::DepthGuard guard(setDepth);
        // Copied through a temporary: the view may point into the list it replaces.
        items = Array<T>(value.begin(), value.end());
        this->notifyCallbacks();
    }

private:
    Array<T> items;
    std::atomic<std::int32_t> setDepth { 0 };
};

/// A drop-down bound to a list of labels and a chosen value.
///
/// Entry i shows labels[i] and stands for values[i]; without a value list (a null model or one shorter than the
/// labels) it stands for i itself. The value model holds the chosen entry's value; a value that no entry stands for
/// shows no entry. A wheel turn over the box without keyboard focus is left to the surrounding view, so scrolling a
/// property sheet never changes a choice by accident.
class MARLIXLIBQT_EXPORT ComboBox : public QComboBox, public BaseWithModel, public CommonContextMenuOwner
{
    Q_OBJECT

public:
    /// Where the list opens.
    enum class PopupDirection : std::int32_t {
        /// Where the style places the list.
        Default = 0,
        /// The list opens upwards: its bottom edge lies on the box's top edge.
        Up = 1,
        /// The list opens over the box: its top edge lies on the box's top edge.
        Over = 2,
    };

    /// What the box's tooltip shows.
    enum class ToolTipBehavior : std::int32_t {
        NoToolTip = 0, ///< The box sets no tooltip of its own.
        /// The tooltip is the chosen entry's text, for boxes too narrow to show it whole.
        CurrentText = 1,
    };

    /// How wide the opened list is.
    enum class DropDownWidthBehavior : std::int32_t {
        /// The list is at least as wide as the box's size hint.
        BoxWidth = 0,
        /// The list is at least as wide as its widest entry.
        WidestEntry = 1,
    };

    using LabelsModel = Model<ArrayView<const String>>; ///< The labels of the entries.
    /// The chosen value (not the entry's position, unless there is no value list).
    using IndexModel = Model<std::int64_t>;
    using ValuesModel = Model<ArrayView<const std::int64_t>>; ///< The value each entry stands for.

    /// An unbound box; it behaves as a plain QComboBox until setModel binds it.
    explicit ComboBox(QWidget* parent = nullptr);
    /// A box bound to the models (see setModel()); \p defaultValue is what "Reset to default" chooses.
    ComboBox(SharedPtr<LabelsModel> labels, SharedPtr<IndexModel> index, SharedPtr<ValuesModel> values,
        std::int64_t defaultValue, QWidget* parent = nullptr);
    ~ComboBox() override;

    /// Rebinds the box: the earlier models are no longer observed. `labels` and `index` are required.
    void setModel(SharedPtr<LabelsModel> labels, SharedPtr<IndexModel> index, SharedPtr<ValuesModel> values);
    using QComboBox::setModel;

    /// The value "Reset to default" chooses; the choice shown stays.
    void setDefaultValue(std::int64_t value) { defaultValue = value; }
    std::int64_t getDefaultValue() const { return defaultValue; } ///< The value "Reset to default" chooses.

    /// The labels shown; null while unbound.
    const SharedPtr<LabelsModel>& getLabelsModel() const { return labelsModel; }
    const SharedPtr<IndexModel>& getIndexModel() const { return indexModel; } ///< The chosen value; null while unbound.
    /// The values of the entries; may be null.
    const SharedPtr<ValuesModel>& getValuesModel() const { return valuesModel; }

    /// Takes effect the next time the list opens.
    void setPopupDirection(PopupDirection direction) { popupDirection = direction; }
    PopupDirection getPopupDirection() const { return popupDirection; } ///< Default unless set.
    void setToolTipBehavior(ToolTipBehavior behavior); ///< Applies at once.
    ToolTipBehavior getToolTipBehavior() const { return toolTipBehavior; } ///< NoToolTip unless set.
    void setDropDownWidthBehavior(DropDownWidthBehavior behavior); ///< Applies at once.
    DropDownWidthBehavior getDropDownWidthBehavior() const { return dropDownWidthBehavior; } ///< BoxWidth unless set.

    /// Names the box and its drop-down list (the name followed by ".List"), so hosts and tests can find both.
    void setObjectName(const QString& name);

    /// The value entry `entry` stands for.
    std::int64_t valueOfEntry(int entry) const;
    /// The entry that stands for `value`, or -1.
    int entryOfValue(std::int64_t value) const;

    void showPopup() override; ///< Opens the list in the chosen direction and emits focusChanged(true).
    void hidePopup() override; ///< Closes the list and emits focusChanged(false).

    void notify() override;

    /// A box for an enumeration given as value-to-label map, bound to `value`; entries appear in value order.
    static ComboBox* makeVirtualEnumDropDownImpl(const FlatMap<int, String>& entries, SharedPtr<IndexModel> value,
        std::int64_t defaultValue, QWidget* parent = nullptr);

Q_SIGNALS:
    /// True when the list opens, false when it closes: the box keeps the user's attention while its list is open.
    void focusChanged(bool hasFocus);

protected:
    /// Leaves a wheel turn over the box to the surrounding view while the box has no keyboard focus.
    bool event(QEvent* event) override;
    /// Notices the list closing without hidePopup(), after a click outside the application.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void popupClosed();
    void rebuildEntries();
    void showChosenEntry();
    void updateToolTip();
    void updateDropDownWidth();
    void choose(int entry);

    SharedPtr<LabelsModel> labelsModel;
    SharedPtr<IndexModel> indexModel;
    SharedPtr<ValuesModel> valuesModel;
    CallbacksOwner subscriptions;
    std::int64_t defaultValue = 0;
    PopupDirection popupDirection = PopupDirection::Default;
    ToolTipBehavior toolTipBehavior = ToolTipBehavior::NoToolTip;
    DropDownWidthBehavior dropDownWidthBehavior = DropDownWidthBehavior::BoxWidth;
    bool popupOpen = false;
};

} // namespace Marlix::Widgets
