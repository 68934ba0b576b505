#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QTabWidget>

class QToolButton;

namespace Marlix::Widgets {

/// The tab widget of the docking layout: docks that share one place, each tab with its own undock button.
class MARLIXLIBQT_EXPORT Tabber : public QTabWidget
{
    Q_OBJECT

public:
    /// An empty tab widget with movable tabs; the docking layout makes it when docks are stacked.
    explicit Tabber(QWidget* parent = nullptr);

    /// The undock button of the tab at `index`; null for an index out of range.
    QToolButton* undockButton(int index) const;
    /// Gives every tab without one its undock button. While a workspace is restored tabs come without, and get them
    /// at its end: placing a button lays the whole tab bar out again, once per tab inserted otherwise.
    void addMissingUndockButtons();

protected:
    /// Gives the new tab its undock button (at the end of a restore) and retitles the tabs.
    void tabInserted(int index) override;
    void tabRemoved(int index) override; ///< Retitles the tabs; a tab widget left empty is tidied away from the layout.

private:
    void onTabBarClicked(int index);
    void onCurrentChanged(int index);
    void onUndockClicked();
    void scheduleUpdate();
    /// Titles of the tabs from their docks, and the tidying of a tab widget left empty.
    void updateTabs();
    void addUndockButton(int index);

    bool updateQueued = false;
};

/// The undock button of a dock header or a tab: the style's icon, the text "Undock".
QToolButton* makeUndockButton(QWidget* parent);

} // namespace Marlix::Widgets
