#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/data/GenericPropertyAccessor.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/lister/ListerModel.h>

#include <QItemDelegate>
#include <QSizePolicy>

namespace Marlix::Widgets {

class IPropertySheetHost;
class ListerView;

/// Builds and places the cell editors of a lister: the property sheet's own editors, so an edit in a cell is the
/// same single undo step as in the sheet. Cells of the master entity's row edit every row the view lists at once.
class MARLIXLIBQT_EXPORT ListerViewDelegate : public QItemDelegate
{
    Q_OBJECT

public:
    /// Margins around an editor that fills its cell, in device-independent pixels.
    static constexpr int HORIZONTAL_MARGIN = 10;
    static constexpr int VERTICAL_MARGIN = 4; ///< The vertical counterpart of HORIZONTAL_MARGIN.

    /// The delegate of `view` over `model`, making editors with `host`; null arguments are a programming error and
    /// raise the stop exception.
    ListerViewDelegate(ListerModel* model, ListerView* view, SharedPtr<IPropertySheetHost> host);
    ~ListerViewDelegate() override;

    /// The editor of one cell, bound to `accessor`; `accessibleName` names it for assistive tools.
    QWidget* createEditorWidget(const GenericPropertyAccessor& accessor, ListerValuePresentation presentation,
        const QString& accessibleName, QWidget* parent) const;
    /// The accessor an editor of `index` (of the lister's model) edits: the row's entity, or for the master row
    /// the master entity and every entity the view lists that has the property.
    Optional<GenericPropertyAccessor> getEditorAccessor(const QModelIndex& index) const;

    /// The view whose listed rows the master row edits: by default this delegate's own view; a dialog that shows
    /// its master row in a strip of its own points it at the main table.
    void setMasterTargets(ListerView* rowsOf) { targets = rowsOf; }

    /// Where an editor goes in `cell`: sized by its hint and size policies, centred, and placed vertically by
    /// `alignment`. The margins are in device pixels.
    static QRect editorGeometry(QSize hint, QSizePolicy policy, const QRect& cell, Qt::Alignment alignment,
        int horizontalMargin, int verticalMargin);

    /// The cell's editor, named "<column> of <entity>"; null for cells without a property, and for the master row's
    /// name.
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    /// Hands the keyboard back to the view when the editor had it, then deletes the editor.
    void destroyEditor(QWidget* editor, const QModelIndex& index) const override;
    // Editors are bound to their properties: there is nothing to copy between them and the model.
    /// Does nothing: editors are bound to their properties.
    void setEditorData(QWidget*, const QModelIndex&) const override { }
    /// Does nothing: editors write their properties themselves.
    void setModelData(QWidget*, QAbstractItemModel*, const QModelIndex&) const override { }
    /// Paints the cell; one whose editor is not open yet shows its value as text, one under an editor no text.
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    /// The style's property-sheet row height, when it sets one.
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    /// Places the editor by editorGeometry() with the margins in device-independent pixels and fixes its size.
    void updateEditorGeometry(
        QWidget* editor, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

protected:
    /// Moves focus from an editor's outer widget to the field inside it, so the cell's name reaches the field.
    bool eventFilter(QObject* object, QEvent* event) override;
    /// Draws the text unless the cell's editor covers it.
    void drawDisplay(
        QPainter* painter, const QStyleOptionViewItem& option, const QRect& rect, const QString& text) const override;

private:
    QWidget* createActionsWidget(
        const EntityHolder<Entity>& entity, const QString& accessibleName, QWidget* parent) const;

    ListerModel* model;
    ListerView* view;
    ListerView* targets;
    SharedPtr<IPropertySheetHost> host;
    /// Set while a cell that holds an editor paints: its text would show around a narrower editor.
    mutable bool underEditor = false;
};

} // namespace Marlix::Widgets
