#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/lister/ListerHeader.h>

#include <QContextMenuEvent>
#include <QMenu>

#include <algorithm>

namespace Marlix::Widgets {

namespace {

constexpr const char* UNIT = "lister/ListerHeader";

} // namespace

ListerHeader::ListerHeader(SharedPtr<Model<Stack<bool>>> columnVisibility, QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent)
    , columnVisibility(std::move(columnVisibility))
{
    if (!this->columnVisibility)
        Marlix::Detail::throwStopException(UNIT, __LINE__);
    setSectionsMovable(true);
    setSectionsClickable(true);
    setSortIndicatorShown(true);
    setStretchLastSection(true);
    setContextMenuPolicy(Qt::DefaultContextMenu);
    registerCallback(this->columnVisibility->addCallback([this](const Stack<bool>&) { notify(); }));
    // Sections appear when a model is set or grows columns; they take the shared flags from the start.
    connect(this, &QHeaderView::sectionCountChanged, this, [this] { notify(); });
}

ListerHeader::~ListerHeader() = default;

void ListerHeader::hideColumn(int section)
{
    if (section < 0 || section >= count() || isSectionHidden(section) || count() - hiddenSectionCount() <= 1)
        return;
    Stack<bool> flags = columnVisibility->get();
    if (flags.size() < static_cast<std::size_t>(count()))
        flags.resize(static_cast<std::size_t>(count()), true);
    flags[static_cast<std::size_t>(section)] = false;
    columnVisibility->set(std::move(flags));
}

void ListerHeader::unhideAll()
{
    Stack<bool> flags = columnVisibility->get();
    std::fill(flags.begin(), flags.end(), true);
    columnVisibility->set(std::move(flags));
}

void ListerHeader::notify()
{
    const Stack<bool> flags = columnVisibility->get();
    bool changed = false;
    for (int section = 0; section < count(); ++section) {
        const auto at = static_cast<std::size_t>(section);
        const bool hidden = at < flags.size() && !flags[at];
        if (hidden != isSectionHidden(section)) {
            setSectionHidden(section, hidden);
            changed = true;
        }
    }
    if (changed)
        Q_EMIT columnVisibilityApplied();
}

void ListerHeader::contextMenuEvent(QContextMenuEvent* event)
{
    const int section = logicalIndexAt(event->pos());
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QAction* hide = menu->addAction(tr("Hide column"), this, [this, section] { hideColumn(section); });
    hide->setStatusTip(tr("Hide this column"));
    hide->setEnabled(section >= 0 && count() - hiddenSectionCount() > 1);
    QAction* unhide = menu->addAction(tr("Unhide all"), this, [this] { unhideAll(); });
    unhide->setStatusTip(tr("Unhide all columns"));
    unhide->setEnabled(hiddenSectionCount() > 0);
    menu->popup(event->globalPos());
    event->accept();
}

} // namespace Marlix::Widgets
