#include <MarlixLibQt/widgets/docking/DockPrivate.h>
#include <MarlixLibQt/widgets/docking/Tabber.h>

#include <QStyle>
#include <QTabBar>
#include <QTimer>
#include <QToolButton>

namespace Marlix::Widgets {

QToolButton* makeUndockButton(QWidget* parent)
{
    auto* button = new QToolButton(parent);
    const QString text = Tabber::tr("Undock");
    button->setText(text);
    button->setToolTip(text);
    button->setAccessibleName(text);
    button->setIcon(parent->style()->standardIcon(QStyle::SP_TitleBarNormalButton, nullptr, parent));
    button->setToolButtonStyle(Qt::ToolButtonIconOnly);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}

Tabber::Tabber(QWidget* parent)
    : QTabWidget(parent)
{
    setMovable(true);
    tabBar()->setExpanding(false);
    setMinimumWidth(1);
    setAccessibleName(tr("Docked tabs"));
    connect(tabBar(), &QTabBar::tabBarClicked, this, &Tabber::onTabBarClicked);
    connect(this, &QTabWidget::currentChanged, this, &Tabber::onCurrentChanged);
}

QToolButton* Tabber::undockButton(int index) const
{
    if (index < 0 || index >= count())
        return nullptr;
    return qobject_cast<QToolButton*>(tabBar()->tabButton(index, QTabBar::RightSide));
}

void Tabber::tabInserted(int index)
{
    QTabWidget::tabInserted(index);
    if (DockDetail::restoring)
        DockDetail::deferUndockButtons(*this);
    else
        addUndockButton(index);
    scheduleUpdate();
}

void Tabber::addUndockButton(int index)
{
    QToolButton* button = makeUndockButton(tabBar());
    connect(button, &QToolButton::clicked, this, &Tabber::onUndockClicked);
    tabBar()->setTabButton(index, QTabBar::RightSide, button);
}

void Tabber::addMissingUndockButtons()
{
    const bool shown = !tabBar()->isHidden();
    tabBar()->hide();
    for (int index = 0; index < count(); ++index)
        if (!tabBar()->tabButton(index, QTabBar::RightSide))
            addUndockButton(index);
    tabBar()->setVisible(shown);
}

void Tabber::tabRemoved(int index)
{
    QTabWidget::tabRemoved(index);
    scheduleUpdate();
}

void Tabber::onTabBarClicked(int index)
{
    // A click on a tab means the user turns to that dock: it takes the focus, so focus tracking names it.
    if (QWidget* page = widget(index)) {
        setCurrentIndex(index);
        page->setFocus(Qt::MouseFocusReason);
    }
}

void Tabber::onCurrentChanged(int)
{
    scheduleUpdate();
}

void Tabber::onUndockClicked()
{
    // Tabs move, so the button's tab is looked up when it is clicked rather than remembered when it was made.
    for (int index = 0; index < count(); ++index) {
        if (tabBar()->tabButton(index, QTabBar::RightSide) == sender()) {
            if (QWidget* page = widget(index))
                Dock::undock(*page);
            return;
        }
    }
}

void Tabber::scheduleUpdate()
{
    if (updateQueued)
        return;
    updateQueued = true;
    QTimer::singleShot(0, this, &Tabber::updateTabs);
}

void Tabber::updateTabs()
{
    updateQueued = false;
    if (count() == 0) {
        DockDetail::tidy(this);
        return;
    }
    for (int index = 0; index < count(); ++index)
        DockDetail::setTabTitle(*this, index, Dock::compositeTitle(widget(index)));
}

} // namespace Marlix::Widgets
