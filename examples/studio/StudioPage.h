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

/// Every page, in the order of the page list. Each capability of the library adds its page here.
std::vector<Page> allPages();

QWidget* createControlsPage(QWidget* parent);
QWidget* createModelsPage(QWidget* parent);
QWidget* createEditorsPage(QWidget* parent);
QWidget* createColourPage(QWidget* parent);
QWidget* createPropertiesPage(QWidget* parent);

} // namespace Studio
