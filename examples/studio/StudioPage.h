#pragma once

#include <QString>

#include <functional>
#include <vector>

class QWidget;

namespace Studio {

/// A further screenshot of a page in another state: its file name and what brings the page into that state.
struct Shot
{
    QString screenshotName;
    std::function<void(QWidget* page)> prepare;
};

/// One page of the studio: its title in the page list, the file name of its screenshot, how to build it, and the
/// screenshots of other states of it, taken in order after the first.
struct Page
{
    QString title;
    QString screenshotName;
    std::function<QWidget*(QWidget* parent)> create;
    std::vector<Shot> moreShots = {};
};

/// A page whose content is still arriving from other threads (thumbnails) holds this dynamic property false until it
/// is complete; the screenshot mode waits for it.
inline constexpr const char* PAGE_SETTLED_PROPERTY = "studioPageSettled";

/// Every page, in the order of the page list. Each capability of the library adds its page here.
std::vector<Page> allPages();

QWidget* createControlsPage(QWidget* parent);
QWidget* createModelsPage(QWidget* parent);
QWidget* createEditorsPage(QWidget* parent);
QWidget* createColourPage(QWidget* parent);
QWidget* createPropertiesPage(QWidget* parent);
QWidget* createMeshPropertiesPage(QWidget* parent);
QWidget* createGraphPage(QWidget* parent);
/// Frames the graph page's view at a zoom where nodes are drawn at their lowest detail.
void showGraphOverview(QWidget* page);
QWidget* createCurvesPage(QWidget* parent);
QWidget* createListerPage(QWidget* parent);

} // namespace Studio
