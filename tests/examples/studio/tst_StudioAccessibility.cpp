#include "StudioPage.h"
#include "StudioWindow.h"

#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/lister/ListerDialog.h>
#include <MarlixLibQt/lister/ListerView.h>
#include <MarlixLibQt/widgets/color/ColorPickerWidget.h>
#include <MarlixLibQt/widgets/color/ColorSlider.h>
#include <MarlixLibQt/widgets/curves/Curves.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>
#include <MarlixLibQt/widgets/editors/Vector.h>
#include <MarlixLibQt/widgets/frame/Collapsible.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>
#include <MarlixLibQt/widgets/properties/PropertySheet.h>
#include <MarlixLibQt/widgets/properties/PropertySheetItem.h>

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSet>
#include <QTabBar>
#include <QTest>
#include <QToolButton>

#include <algorithm>
#include <cmath>
#include <memory>

using namespace Marlix;
using namespace Marlix::Widgets;

namespace {

using Roles = QList<QAccessible::Role>;

/// The roles a widget of each kind may have; the first base class that matches decides.
const QList<std::pair<const char*, Roles>> FITTING_ROLES {
    { "QAbstractSpinBox", { QAccessible::SpinBox } },
    { "Marlix::Widgets::Slider", { QAccessible::Slider } },
    { "Marlix::Widgets::ColorSlider", { QAccessible::Slider } },
    { "Marlix::Widgets::HueBlacknessPicker", { QAccessible::Slider } },
    { "Marlix::Widgets::WhitenessPicker", { QAccessible::Slider } },
    { "QAbstractSlider", { QAccessible::Slider, QAccessible::ScrollBar, QAccessible::Dial } },
    { "QCheckBox", { QAccessible::CheckBox } },
    { "QRadioButton", { QAccessible::RadioButton } },
    { "QAbstractButton",
        { QAccessible::Button, QAccessible::ButtonMenu, QAccessible::ButtonDropDown, QAccessible::CheckBox } },
    { "QComboBox", { QAccessible::ComboBox } },
    { "QLineEdit", { QAccessible::EditableText } },
    { "QTabBar", { QAccessible::PageTabList } },
    { "QTableView", { QAccessible::Table } },
    { "QTreeView", { QAccessible::Tree, QAccessible::Table } },
    { "QListView", { QAccessible::List } },
    { "QGroupBox", { QAccessible::Grouping } },
    { "Marlix::Widgets::GraphView", { QAccessible::Graphic } },
    { "Marlix::Widgets::Curves", { QAccessible::Graphic } },
    { "QAbstractScrollArea", { QAccessible::Client, QAccessible::EditableText, QAccessible::StaticText } },
};

QString describe(const QWidget* widget)
{
    QStringList chain;
    for (const QWidget* w = widget; w; w = w->parentWidget())
        chain.append(
            QString::fromLatin1(w->metaObject()->className()) + QLatin1Char('"') + w->objectName() + QLatin1Char('"'));
    return chain.join(QLatin1String(" < "));
}

/// Where the keyboard can go: visible widgets that take focus themselves. A spin box's line edit is part of its
/// spin box, which answers for it.
QList<QWidget*> focusableWidgets(QWidget* root)
{
    QList<QWidget*> found;
    for (QWidget* widget : root->findChildren<QWidget*>()) {
        const bool part = qobject_cast<QAbstractSpinBox*>(widget->parentWidget())
            || qobject_cast<QComboBox*>(widget->parentWidget());
        if (widget->isVisible() && (widget->focusPolicy() & Qt::TabFocus) && !widget->focusProxy() && !part)
            found.append(widget);
    }
    return found;
}

Roles fittingRoles(const QWidget* widget)
{
    for (const auto& [className, roles] : FITTING_ROLES) {
        if (widget->inherits(className))
            return roles;
    }
    return {};
}

/// The children that are no widgets, each with a name and, when on the screen, a rectangle inside its parent. The
/// cells of item views are read through their table interface instead.
void checkParts(QAccessibleInterface* parent, const QWidget* widget)
{
    if (qobject_cast<const QAbstractItemView*>(widget))
        return;
    for (int i = 0; i < parent->childCount(); ++i) {
        QAccessibleInterface* child = parent->child(i);
        QVERIFY2(child && child->isValid(), qPrintable(describe(widget)));
        if (child->object())
            continue;
        QCOMPARE(parent->indexOfChild(child), i);
        QCOMPARE(child->parent(), parent);
        QVERIFY2(!child->text(QAccessible::Name).isEmpty(), qPrintable(describe(widget)));
        if (!child->state().offscreen)
            QVERIFY2(parent->rect().contains(child->rect()), qPrintable(child->text(QAccessible::Name)));
        // Parts of parts (a node's slots) keep the same rules.
        checkParts(child, widget);
        if (QTest::currentTestFailed())
            return;
    }
}

QWidget* findShown(QWidget* page, const char* className)
{
    for (QWidget* widget : page->findChildren<QWidget*>()) {
        if (widget->isVisible() && widget->inherits(className))
            return widget;
    }
    return nullptr;
}

/// The children of an interface that are no widgets.
QList<QAccessibleInterface*> partsOf(QAccessibleInterface* parent)
{
    QList<QAccessibleInterface*> parts;
    for (int i = 0; i < parent->childCount(); ++i) {
        if (QAccessibleInterface* child = parent->child(i); child && !child->object())
            parts.append(child);
    }
    return parts;
}

/// The names of the spin boxes inside a widget, as a screen reader reads them.
QStringList spinBoxNames(QWidget* widget)
{
    QStringList names;
    for (QAbstractSpinBox* field : widget->findChildren<QAbstractSpinBox*>()) {
        QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(field);
        if (accessible->role() == QAccessible::SpinBox)
            names.append(accessible->text(QAccessible::Name));
    }
    return names;
}

/// Whether Tab can stop in the widget or inside it.
bool takesTab(QWidget* widget)
{
    QList<QWidget*> candidates = focusableWidgets(widget);
    if (!widget->focusProxy() && (widget->focusPolicy() & Qt::TabFocus))
        candidates.append(widget);
    return std::any_of(candidates.begin(), candidates.end(), [](QWidget* w) { return w->isEnabled(); });
}

} // namespace

class TestStudioAccessibility : public QObject
{
    Q_OBJECT

    std::unique_ptr<Studio::StudioWindow> window;

    QWidget* showPage(const QString& title)
    {
        for (int i = 0; i < window->pageCount(); ++i) {
            if (window->page(i).title == title) {
                window->showPage(i);
                return window->pageWidget(i);
            }
        }
        return nullptr;
    }

private Q_SLOTS:
    void initTestCase()
    {
        LibQt::startup("tst_StudioAccessibility");
        window = std::make_unique<Studio::StudioWindow>();
        window->resize(1400, 900);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    }

    void cleanupTestCase()
    {
        window.reset();
        LibQt::shutdown();
    }

    void everyFocusableWidgetIsNamedAndFits_data()
    {
        QTest::addColumn<QString>("title");
        for (const Studio::Page& page : Studio::allPages())
            QTest::newRow(qPrintable(page.screenshotName)) << page.title;
    }

    void everyFocusableWidgetIsNamedAndFits()
    {
        QFETCH(QString, title);
        QVERIFY(showPage(title));
        const QList<QWidget*> widgets = focusableWidgets(window.get());
        QVERIFY(!widgets.isEmpty());
        for (QWidget* widget : widgets) {
            QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(widget);
            QVERIFY2(accessible, qPrintable(describe(widget)));
            QVERIFY2(!accessible->text(QAccessible::Name).trimmed().isEmpty(), qPrintable(describe(widget)));
            const Roles roles = fittingRoles(widget);
            QVERIFY2(roles.isEmpty() ? accessible->role() != QAccessible::Client : roles.contains(accessible->role()),
                qPrintable(describe(widget) + QStringLiteral(": role %1").arg(int(accessible->role()))));
            checkParts(accessible, widget);
        }
    }

    void compositePartsFollowTheirWidgets_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("className");
        QTest::newRow("vector") << "Editors"
                                << "Marlix::Widgets::Vector";
        QTest::newRow("property vector") << "Mesh properties"
                                         << "Marlix::Widgets::Vector";
        QTest::newRow("curves") << "Curves"
                                << "Marlix::Widgets::Curves";
        QTest::newRow("graph") << "Graph"
                               << "Marlix::Widgets::GraphView";
        QTest::newRow("lister cells") << "Lister"
                                      << "Marlix::Widgets::ListerPanel";
    }

    void compositePartsFollowTheirWidgets()
    {
        QFETCH(QString, title);
        QFETCH(QString, className);
        QWidget* widget = findShown(showPage(title), qPrintable(className));
        QVERIFY(widget);
        if (auto* panel = qobject_cast<ListerPanel*>(widget)) {
            // Every cell of a row is named, those that show an editor or a drawing by their value.
            ListerView* view = panel->getView();
            QAccessibleTableInterface* table = QAccessible::queryAccessibleInterface(view)->tableInterface();
            QVERIFY(table);
            for (int column = 0; column < table->columnCount(); ++column) {
                QAccessibleInterface* cell = table->cellAt(0, column);
                QVERIFY(cell);
                QVERIFY2(!cell->text(QAccessible::Name).isEmpty(), qPrintable(QString::number(column)));
            }
            return;
        }
        QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(widget);
        const QList<QAccessibleInterface*> parts = partsOf(accessible);
        if (auto* vector = qobject_cast<Vector*>(widget)) {
            // One field per component, each read with its axis and, inside a named editor, with that name.
            const QStringList names = spinBoxNames(vector);
            QCOMPARE(names.size(), vector->getComponentCount());
            QCOMPARE(QSet<QString>(names.begin(), names.end()).size(), names.size());
            for (int i = 0; i < names.size(); ++i) {
                if (const QLabel* label = vector->getLabel(i))
                    QVERIFY2(names[i].endsWith(label->text()), qPrintable(names[i]));
                if (!vector->accessibleName().isEmpty())
                    QVERIFY2(names[i].startsWith(vector->accessibleName()), qPrintable(names[i]));
            }
        } else if (auto* curves = qobject_cast<Widgets::Curves*>(widget)) {
            const Curve& curve = curves->getActiveCurve();
            QCOMPARE(parts.size(), int(curve.getPointCount()));
            for (int i = 0; i < parts.size(); ++i) {
                const Vector2 point = curve.getPoint(std::size_t(i)).position;
                QCOMPARE(parts[i]->text(QAccessible::Name),
                    QStringLiteral("Point %1: %2, %3").arg(i + 1).arg(point.x, 0, 'f', 2).arg(point.y, 0, 'f', 2));
                const QPoint drawn = curves->mapToGlobal(curves->toWidget(point).toPoint());
                QVERIFY((parts[i]->rect().center() - drawn).manhattanLength() <= 2);
                // The point is found where it is drawn, as a magnifier or a pointer reader asks.
                QCOMPARE(accessible->childAt(drawn.x(), drawn.y()), parts[i]);
            }
        } else if (auto* view = qobject_cast<GraphView*>(widget)) {
            const Array<NodeItem*> nodes = view->getNodeItems();
            QCOMPARE(parts.size(), int(nodes.size()));
            for (int i = 0; i < parts.size(); ++i) {
                const NodeItem& node = *nodes[std::size_t(i)];
                QCOMPARE(parts[i]->text(QAccessible::Name), node.getTitle());
                // The output and then each input, saying whether a wire ends there.
                QCOMPARE(parts[i]->childCount(), 1 + int(node.getInputSlots().size()));
                const auto wired = [](bool connected) {
                    return connected ? QStringLiteral("connected") : QStringLiteral("not connected");
                };
                QCOMPARE(parts[i]->child(0)->text(QAccessible::Name), QStringLiteral("Output"));
                QCOMPARE(parts[i]->child(0)->text(QAccessible::Description), wired(node.getOutputSlot().isConnected()));
                for (std::size_t input = 0; input < node.getInputSlots().size(); ++input) {
                    const NodeItem::InputSlot& slot = node.getInputSlots()[input];
                    QAccessibleInterface* accessibleSlot = parts[i]->child(int(input) + 1);
                    QCOMPARE(accessibleSlot->text(QAccessible::Name), slot.getLabel());
                    QCOMPARE(accessibleSlot->text(QAccessible::Description), wired(slot.isConnected()));
                }
            }
        }
        checkParts(accessible, widget);
    }

    void colourPartsTakeValuesForTheModel_data()
    {
        QTest::addColumn<int>("panel");
        QTest::newRow("rgb") << int(ColorPickerWidget::Panel::Rgb);
        QTest::newRow("hsv") << int(ColorPickerWidget::Panel::Hsv);
        QTest::newRow("hwb") << int(ColorPickerWidget::Panel::Hwb);
        QTest::newRow("temperature") << int(ColorPickerWidget::Panel::Temperature);
    }

    void colourPartsTakeValuesForTheModel()
    {
        QFETCH(int, panel);
        auto* picker = qobject_cast<ColorPickerWidget*>(
            findShown(showPage(QStringLiteral("Colour")), "Marlix::Widgets::ColorPickerWidget"));
        QVERIFY(picker);
        picker->setCurrentPanel(ColorPickerWidget::Panel(panel));
        const SharedPtr<Model<QColorExtended>>& colour = picker->getColorModel();
        colour->set(QColorExtended(QColor(40, 80, 120)));
        int sliders = 0;
        for (QWidget* part : picker->getPanel(ColorPickerWidget::Panel(panel))->findChildren<QWidget*>()) {
            QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(part);
            auto* value = accessible->valueInterface();
            if (accessible->role() != QAccessible::Slider || !value)
                continue;
            ++sliders;
            QVERIFY2(!accessible->text(QAccessible::Name).isEmpty(), qPrintable(describe(part)));
            const QColorExtended before = colour->get();
            const double low = value->minimumValue().toDouble();
            const double high = value->maximumValue().toDouble();
            const double target = value->currentValue().toDouble() < (low + high) / 2 ? high : low;
            value->setCurrentValue(target);
            QVERIFY2(
                std::abs(value->currentValue().toDouble() - target) < 1e-3 * (high - low), qPrintable(describe(part)));
            QVERIFY2(colour->get() != before, qPrintable(describe(part)));
        }
        QVERIFY(sliders >= 1);
    }

    void tabVisitsEveryPropertyEditorOnceInOrder_data()
    {
        QTest::addColumn<QString>("title");
        QTest::newRow("materials") << "Properties";
        QTest::newRow("mesh") << "Mesh properties";
    }

    void tabVisitsEveryPropertyEditorOnceInOrder()
    {
        QFETCH(QString, title);
        auto* sheet = qobject_cast<PropertySheet*>(findShown(showPage(title), "Marlix::Widgets::PropertySheet"));
        QVERIFY(sheet);
        // The editors the keyboard can reach, from top to bottom.
        QList<QWidget*> expected;
        for (PropertySheetItem* item : sheet->items()) {
            QWidget* editor = item->editor();
            if (editor && editor->isVisible() && takesTab(editor))
                expected.append(editor);
        }
        std::stable_sort(expected.begin(), expected.end(),
            [sheet](QWidget* a, QWidget* b) { return a->mapTo(sheet, QPoint()).y() < b->mapTo(sheet, QPoint()).y(); });
        QVERIFY(expected.size() > 3);

        // Sections are stops of their own, before their editors.
        QList<Collapsible*> sections;
        for (Collapsible* section : sheet->sections()) {
            if (section->isVisible() && !section->title().isEmpty())
                sections.append(section);
        }
        QVERIFY(!sections.isEmpty());

        sections.front()->setFocus(Qt::TabFocusReason);
        QList<QWidget*> visited;
        QList<Collapsible*> visitedSections;
        for (int presses = 0; presses < 400 && sheet->isAncestorOf(QApplication::focusWidget()); ++presses) {
            QWidget* focus = QApplication::focusWidget();
            if (auto* section = qobject_cast<Collapsible*>(focus))
                visitedSections.append(section);
            for (QWidget* editor : expected) {
                if ((editor->isAncestorOf(focus) || editor == focus) && (visited.isEmpty() || visited.back() != editor))
                    visited.append(editor);
            }
            QTest::keyClick(focus, Qt::Key_Tab);
        }
        QCOMPARE(visited, expected);
        QCOMPARE(visitedSections, sections);

        // A section folds and unfolds from the keyboard; its editors leave the tab order while it is folded.
        Collapsible* section = sections.back();
        section->setFocus(Qt::TabFocusReason);
        const QList<QWidget*> inside = focusableWidgets(section);
        QVERIFY(!inside.isEmpty());
        QTest::keyClick(section, Qt::Key_Left);
        QVERIFY(section->isCollapsed());
        QVERIFY(std::none_of(inside.begin(), inside.end(), [](QWidget* w) { return w->isVisible(); }));
        QTest::keyClick(section, Qt::Key_Right);
        QVERIFY(!section->isCollapsed());
        QTest::keyClick(section, Qt::Key_Return);
        QVERIFY(section->isCollapsed());
        QTest::keyClick(section, Qt::Key_Enter, Qt::KeypadModifier);
        QVERIFY(!section->isCollapsed());
    }

    void colourPickerByKeyboard_data()
    {
        QTest::addColumn<int>("panel");
        QTest::addColumn<int>("parts");
        QTest::newRow("rgb") << int(ColorPickerWidget::Panel::Rgb) << 3;
        QTest::newRow("hsv") << int(ColorPickerWidget::Panel::Hsv) << 3;
        QTest::newRow("hwb") << int(ColorPickerWidget::Panel::Hwb) << 2;
        QTest::newRow("cmyk") << int(ColorPickerWidget::Panel::Cmyk) << 4;
    }

    void colourPickerByKeyboard()
    {
        QFETCH(int, panel);
        QFETCH(int, parts);
        auto* picker = qobject_cast<ColorPickerWidget*>(
            findShown(showPage(QStringLiteral("Colour")), "Marlix::Widgets::ColorPickerWidget"));
        QVERIFY(picker);
        picker->setCurrentPanel(ColorPickerWidget::Panel(panel));
        QWidget* shown = picker->getPanel(ColorPickerWidget::Panel(panel));
        const SharedPtr<Model<QColorExtended>>& colour = picker->getColorModel();
        colour->set(QColorExtended(QColor(40, 80, 120)));
        // From the tab bar, Tab goes through the panel's parts once each, and Up changes the focused one.
        picker->getPanelTabs()->tabBar()->setFocus(Qt::TabFocusReason);
        QList<QWidget*> visited;
        for (int presses = 0; presses < 20; ++presses) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QWidget* focus = QApplication::focusWidget();
            if (!shown->isAncestorOf(focus))
                break;
            QVERIFY2(!visited.contains(focus), qPrintable(describe(focus)));
            visited.append(focus);
            const QColorExtended before = colour->get();
            QTest::keyClick(focus, Qt::Key_Up);
            QVERIFY2(colour->get() != before, qPrintable(describe(focus)));
        }
        QCOMPARE(visited.size(), parts);
    }

    void listerByKeyboard()
    {
        auto* panel
            = qobject_cast<ListerPanel*>(findShown(showPage(QStringLiteral("Lister")), "Marlix::Widgets::ListerPanel"));
        QVERIFY(panel);
        ListerView* view = panel->getView();
        QTRY_VERIFY(!view->isEditorsPassPending());
        view->setFocus(Qt::TabFocusReason);
        QTest::keyClick(view, Qt::Key_Home);
        const QModelIndex first = view->currentIndex();
        QVERIFY(first.isValid());
        QCOMPARE(view->header()->visualIndex(first.column()), 0);

        // Right goes along the row to the next shown cell, Left back.
        QTest::keyClick(view, Qt::Key_Right);
        QCOMPARE(view->currentIndex().row(), first.row());
        QVERIFY(view->header()->visualIndex(view->currentIndex().column()) > 0);
        QTest::keyClick(view, Qt::Key_Left);
        QCOMPARE(view->currentIndex(), first);

        // Right until a cell with an editor; Enter (and F2) hands it the focus, Escape brings it back.
        QList<QModelIndex> editorCells;
        for (int visual = 0; visual < view->header()->count(); ++visual) {
            const QModelIndex cell = first.siblingAtColumn(view->header()->logicalIndex(visual));
            if (!view->header()->isSectionHidden(cell.column()) && view->indexWidget(cell))
                editorCells.append(cell);
        }
        QVERIFY(editorCells.size() >= 2);
        while (view->currentIndex() != editorCells.front())
            QTest::keyClick(view, Qt::Key_Right);
        for (const Qt::Key key : { Qt::Key_Return, Qt::Key_F2 }) {
            QTest::keyClick(view, key);
            QVERIFY(view->indexWidget(editorCells.front())->isAncestorOf(QApplication::focusWidget()));
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
            QCOMPARE(QApplication::focusWidget(), view);
        }

        // Tab goes through the row's editors in the order shown, then out of the lister.
        QList<QModelIndex> visited;
        for (int presses = 0; presses < 40; ++presses) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QWidget* focus = QApplication::focusWidget();
            if (!view->isAncestorOf(focus))
                break;
            const QModelIndex cell = view->currentIndex();
            QVERIFY(view->indexWidget(cell)->isAncestorOf(focus) || view->indexWidget(cell) == focus);
            if (visited.isEmpty() || visited.back() != cell)
                visited.append(cell);
        }
        QCOMPARE(visited, editorCells);
        QVERIFY(!view->isAncestorOf(QApplication::focusWidget()) && QApplication::focusWidget() != view);

        // Shift+Tab goes back along the row from its last editor, and from the first one back to the rows.
        view->setFocus(Qt::TabFocusReason);
        while (view->currentIndex() != editorCells.back())
            QTest::keyClick(view, Qt::Key_Right);
        QTest::keyClick(view, Qt::Key_F2);
        QList<QModelIndex> back { editorCells.back() };
        for (int presses = 0; presses < 40 && QApplication::focusWidget() != view; ++presses) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
            if (QApplication::focusWidget() != view && back.front() != view->currentIndex())
                back.prepend(view->currentIndex());
        }
        QCOMPARE(QApplication::focusWidget(), view);
        QCOMPARE(back, editorCells);
    }
};

QTEST_MAIN(TestStudioAccessibility)
#include "tst_StudioAccessibility.moc"
