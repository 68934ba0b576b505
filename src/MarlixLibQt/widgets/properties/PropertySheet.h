#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/data/Entity.h>

#include <QList>
#include <QStyle>
#include <QWidget>

class QVBoxLayout;

namespace Marlix {
class GroupLayout;
class ObservedProperty;
} // namespace Marlix

namespace Marlix::Widgets {

class Collapsible;
class IPropertySheetHost;
class PropertySheetItem;
template <class T> class Model;

/// Editors for the properties of a selection of entities: one collapsible section per data group that every selected
/// object has, one row per property of the group. A row edits all selected objects at once, one undo step per edit.
///
/// A section's open or closed state lives in the host's collapsibles model, shared by every sheet of the host: the
/// model lists the keys (collapsedStateKey) of the groups the user closed, so a group not listed is open.
class MARLIXLIBQT_EXPORT PropertySheet : public QWidget
{
    Q_OBJECT

public:
    /// Asked with the sheet as widget; non-zero makes one label column for all sections instead of one per section.
    static constexpr auto SH_UNIFY_LABEL_COLUMN_WIDTH = static_cast<QStyle::StyleHint>(QStyle::SH_CustomBase + 1);
    /// Asked with the sheet as widget: the height of a one-line row; 0 lets the editors decide.
    static constexpr auto PM_ROW_HEIGHT = static_cast<QStyle::PixelMetric>(QStyle::PM_CustomBase + 1);

    /// An Exception for a null host.
    explicit PropertySheet(SharedPtr<IPropertySheetHost> host, QWidget* parent = nullptr);
    ~PropertySheet() override;

    /// Shows `objects` (in this order; the first decides the order of the sections), rebuilding every row. An
    /// Exception for an empty holder, and the sheet stays as it was. Not to be called from a handler of one of the
    /// sheet's own editors, since their rows are deleted here.
    void setObjects(Array<EntityHolder<Entity>> objects);
    /// The objects shown, in the order given; empty before the first setObjects().
    const Array<EntityHolder<Entity>>& getObjects() const { return objects; }
    /// The host the sheet was made with; never null.
    const SharedPtr<IPropertySheetHost>& getPropertySheetHost() const { return host; }

    /// The row of the property at `path` (a property name); null when the sheet shows no such row.
    PropertySheetItem* findItem(StringView path) const;
    /// Every row, in sheet order.
    const Array<PropertySheetItem*>& items() const { return rows; }
    /// Every section, in sheet order, hidden ones included.
    QList<Collapsible*> sections() const;
    /// The section of the group named `groupName`; null when there is none.
    Collapsible* findSection(StringView groupName) const;

    /// Whether the style asks for one label column over all sections.
    bool unifyLabelColumnWidth() const;
    /// The entry of the host's collapsibles model that stands for `group` being closed.
    static String collapsedStateKey(const GroupLayout& group);

    /// Sizes the label column again once control returns to the event loop; rows call it when their label's font
    /// changes. Calls before that are merged into one.
    void scheduleLabelColumnUpdate();

Q_SIGNALS:
    /// The sheet was rebuilt for another set of objects.
    void objectsChanged();

protected:
    /// Measures rows and label column again when the style or the font changes.
    void changeEvent(QEvent* event) override;

private:
    struct Section
    {
        const GroupLayout* group = nullptr;
        Collapsible* box = nullptr;
        Array<PropertySheetItem*> rows;
    };

    void clear();
    void buildSection(const SharedPtr<const GroupLayout>& group);
    SharedPtr<Model<bool>> makeCollapsedModel(const GroupLayout& group) const;
    void observeObjects();
    void onPropertyChanged(std::size_t objectIndex, const ObservedProperty& changed);
    void reevaluateConditions(const ObservedProperty& changed);
    /// Puts a row into its section's layout or takes it out, after its shown-if condition changed.
    void placeRow(Section& section, PropertySheetItem* row);
    void updateSectionVisibility(Section& section);
    void updateMetrics();
    void updateLabelColumn();

    SharedPtr<IPropertySheetHost> host;
    Array<EntityHolder<Entity>> objects;
    Array<Section> sectionList;
    Array<PropertySheetItem*> rows;
    /// Per selected object, the row of each of its root properties (null where the sheet has none).
    Array<Array<PropertySheetItem*>> rowsByProperty;
    Array<PropertySheetItem*> conditionalRows;
    CallbacksOwner objectObservation;
    QVBoxLayout* sectionLayout = nullptr;
    bool labelColumnUpdateQueued = false;
};

} // namespace Marlix::Widgets
