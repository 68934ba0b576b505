#pragma once

#include <QString>

#include <functional>
#include <vector>

class QWidget;

namespace Studio {

/// One page of the studio: its title in the page list, the file name of its screenshot, and how to build it.
struct Page
{
    QString title;
    QString screenshotName;
    std::function<QWidget*(QWidget* parent)> create;
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
QWidget* createCurvesPage(QWidget* parent);

} // namespace Studio
