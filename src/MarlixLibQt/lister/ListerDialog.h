#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/data/EntityClassInfo.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/lister/ListerModel.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QDialog>
#include <QWidget>

class QLabel;
class QLineEdit;

namespace Marlix {
class EntityGraphTracker;
}

namespace Marlix::Widgets {

class IPropertySheetHost;
class ListerProxy;
class ListerSceneBinding;
class ListerView;

/// The lister of one entity class of a scene with its master controls, as a panel for pages and docks: a name
/// filter, sorting by a click on a column's header, the number of objects listed, and a master row above the table.
///
/// The master row belongs to an entity of the class that is not in the scene. An edit in one of its cells writes
/// that value to every object the table lists (what the filter and the row switches leave), in one undo step;
/// while the listed objects disagree, its editors show the mixed-values state. It edits no names.
class MARLIXLIBQT_EXPORT ListerPanel : public QWidget
{
    Q_OBJECT

public:
    /// Columns from `columns`; empty takes makeColumns(entityClass). A null scene or host is a programming error.
    ListerPanel(SharedPtr<EntityGraphTracker> scene, const EntityClassInfo& entityClass,
        SharedPtr<IPropertySheetHost> host, Stack<ListerColumnDefinition> columns = {}, QWidget* parent = nullptr);
    ~ListerPanel() override;

    /// One column per property of the class's groups that the property sheet shows and the lister does not leave
    /// to the user to add, lists excepted (a list editor does not fit a row): the name as a name column, numbers right
    /// aligned, flags centred, read-only properties as values, the rest as editors.
    static Stack<ListerColumnDefinition> makeColumns(const EntityClassInfo& entityClass);

    ListerModel* getModel() const { return model; } ///< The model of the table's rows; owned by the panel.
    ListerProxy* getProxy() const { return proxy; } ///< Sorts and filters the table; owned by the panel.
    /// Keeps the table's rows in step with the scene; owned by the panel.
    ListerSceneBinding* getBinding() const { return binding; }
    ListerView* getView() const { return view; } ///< The table of the scene's objects.
    ListerView* getMasterView() const { return masterView; } ///< The strip above the table that shows the master row.
    QLineEdit* getFilterEdit() const { return filterEdit; } ///< The name filter field.
    QLabel* getCountLabel() const { return countLabel; } ///< The label with the number of objects listed.
    /// The entity the master row edits; empty when the class cannot be instantiated (then the strip stays empty).
    const EntityHolder<Entity>& getMasterEntity() const { return master; }

private:
    void showCount(int rows);
    void followMainHeader();

    SharedPtr<Model<Stack<bool>>> columnVisibility;
    EntityHolder<Entity> master;
    ListerModel* model = nullptr;
    ListerModel* masterModel = nullptr;
    ListerSceneBinding* binding = nullptr;
    ListerProxy* proxy = nullptr;
    ListerView* view = nullptr;
    ListerView* masterView = nullptr;
    QLineEdit* filterEdit = nullptr;
    QLabel* countLabel = nullptr;
};

/// The lister panel of one entity class in a window of its own, titled "Velkin Lister".
class MARLIXLIBQT_EXPORT ListerDialog : public QDialog
{
    Q_OBJECT

public:
    /// The panel of `entityClass` in `scene`, with `columns` or those of makeColumns(); a null scene or host is a
    /// programming error.
    ListerDialog(SharedPtr<EntityGraphTracker> scene, const EntityClassInfo& entityClass,
        SharedPtr<IPropertySheetHost> host, Stack<ListerColumnDefinition> columns = {}, QWidget* parent = nullptr);
    ~ListerDialog() override;

    ListerPanel* getPanel() const { return panel; } ///< The panel the dialog shows; owned by the dialog.

private:
    ListerPanel* panel;
};

} // namespace Marlix::Widgets
