#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QHeaderView>

namespace Marlix::Widgets {

/// The lister's column header: its context menu hides and unhides columns. Column visibility lives in a shared
/// model (one flag per column, a missing flag meaning shown), so every view over the same model stays in step and
/// the choice outlives the view.
class MARLIXLIBQT_EXPORT ListerHeader : public QHeaderView, public BaseWithModel
{
    Q_OBJECT

public:
    /// A null model is a programming error.
    explicit ListerHeader(SharedPtr<Model<Stack<bool>>> columnVisibility, QWidget* parent = nullptr);
    ~ListerHeader() override;

    /// The shared visibility flags, one per column; never null.
    const SharedPtr<Model<Stack<bool>>>& getColumnVisibility() const { return columnVisibility; }
    /// Hides `section`; the last shown column stays, as a header without sections could not be brought back.
    void hideColumn(int section);
    void unhideAll(); ///< Shows every column, through the shared model.
    /// Hides the sections whose flag is false and shows the others.
    void notify() override;

Q_SIGNALS:
    /// The hidden sections changed after the model did.
    void columnVisibilityApplied();

protected:
    /// Opens the menu that hides the column under the mouse or shows all columns again.
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    SharedPtr<Model<Stack<bool>>> columnVisibility;
};

} // namespace Marlix::Widgets
