#pragma once

#include "StudioPage.h"

#include <QMainWindow>

class QListWidget;
class QStackedWidget;

namespace Studio {

/// The studio's main window: a list of pages on the left, the current page on the right.
class StudioWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit StudioWindow(QWidget* parent = nullptr);

    int pageCount() const;
    void showPage(int index);
    const Page& page(int index) const { return pages[static_cast<std::size_t>(index)]; }

private:
    std::vector<Page> pages;
    QListWidget* pageList;
    QStackedWidget* stack;
};

} // namespace Studio
