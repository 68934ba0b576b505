#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/data/GroupLayout.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/lister/ListerDialog.h>
#include <MarlixLibQt/lister/ListerHeader.h>
#include <MarlixLibQt/lister/ListerModel.h>
#include <MarlixLibQt/lister/ListerView.h>
#include <MarlixLibQt/lister/ListerViewDelegate.h>
#include <MarlixLibQt/widgets/properties/DefaultPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/PropertySheet.h>
#include <MarlixLibQt/widgets/properties/PropertySheetItem.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QStringList>
#include <QTest>

#include <algorithm>

using namespace Marlix;
using namespace Marlix::Widgets;

namespace {

enum Column
{
    NAME,
    SIZE,
    LABEL,
    ON,
    NOTE,
    REBUILT,
    COLUMN_COUNT
};

// "listed" switches the row; "rebuilt" asks for a new editor on every refresh; "note" is a text column (no editor).
const EntityClassInfo& itemClass()
{
    static const EntityClassInfo info = [] {
        auto& types = TypeDatabase::instance();
        const auto number = types.lookupNativeTypeDefinition<double>();
        const auto flag = types.lookupNativeTypeDefinition<bool>();
        const auto text = types.lookupNativeTypeDefinition<String>();
        const auto group = makeSharedPtr<const GroupLayout>("Item",
            Array<PropertyDefinition> {
                PropertyDefinition::make("name", text, String()),
                PropertyDefinition::make("size", number, 1.0),
                PropertyDefinition::make("label", text, String()),
                PropertyDefinition::make("on", flag, false),
                PropertyDefinition::make("note", text, String("n")),
                PropertyDefinition::make("rebuilt", number, 0.0, {}, PropertyFlag::AlwaysRebuildEditor),
                PropertyDefinition::make(
                    "listed", flag, true, UserData().set(String(ListerView::ROW_SWITCH_ATTRIBUTE), true)),
            });
        return EntityClassInfo("ListerTestItem", EntityClassInfo::entityClass(), { group },
            [](const EntityClassInfo& of) { return makeSharedPtr<Entity>(of); });
    }();
    return info;
}

Stack<ListerColumnDefinition> columns()
{
    using P = ListerValuePresentation;
    const std::pair<const char*, P> all[] = { { "name", P::Name }, { "size", P::Number }, { "label", P::Editor },
        { "on", P::Centered }, { "note", P::Text }, { "rebuilt", P::Number } };
    Stack<ListerColumnDefinition> result;
    for (const auto& [path, presentation] : all)
        result.push_back({ path, {}, presentation, path });
    return result;
}

QLineEdit* fieldOf(QWidget* editor)
{
    auto* field = qobject_cast<QLineEdit*>(editor);
    return field ? field : editor ? editor->findChild<QLineEdit*>() : nullptr;
}

void typeInto(QLineEdit* field, const QString& text)
{
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Return);
}

enum class Action
{
    WheelDown,
    WheelBackUp,
    ScrollBarPage,
    ScrollBarEnd,
    Shrink,
    Grow,
    Collapse,
    HideColumn,
    UnhideAll,
};

} // namespace

class TestListerView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { LibQt::startup("tst_ListerView"); }
    void cleanupTestCase() { LibQt::shutdown(); }
    void init();
    void cleanup();

    void editorsExactlyOnRowsInView_data();
    void editorsExactlyOnRowsInView();
    void cellEditIsOneUndoStepSharedWithTheSheet_data();
    void cellEditIsOneUndoStepSharedWithTheSheet();
    void rowVisibility();
    void editorGeometry_data();
    void editorGeometry();
    void hiddenColumnsSharedAcrossViews();
    void emptyDisplayRectOpensNothingAndRefreshRebuildsOnlyFlagged();
    void masterRowEditsTheListedObjects();
    void rightClickOpensTheEntityMenu();

private:
    ListerView* makeView(QWidget* parent = nullptr);
    static QList<ListerView*> allViews()
    {
        QList<ListerView*> views;
        for (QWidget* widget : QApplication::allWidgets())
            if (auto* view = qobject_cast<ListerView*>(widget))
                views.push_back(view);
        return views;
    }
    /// Until every editors pass has run: a pass opens editors for a limited time and lets the next one go on.
    void settle()
    {
        const QList<ListerView*> views = allViews();
        do
            QCoreApplication::processEvents();
        while (std::any_of(
            views.begin(), views.end(), [](const ListerView* view) { return view->isEditorsPassPending(); }));
    }
    /// Every editor cell of every row is open exactly when its row is in view.
    void checkEditorsExact(ListerView& view, int* openCells = nullptr);
    void hideColumnFromMenu(ListerView& view, int section);

    SharedPtr<UndoManager> undo;
    SharedPtr<DefaultPropertySheetHost> host;
    SharedPtr<VariableModel<Stack<bool>>> visibility;
    ListerModel* model = nullptr;
    Array<EntityHolder<Entity>> items;
    int reportedRows = -1;
};

void TestListerView::init()
{
    undo = makeSharedPtr<UndoManager>();
    host = makeSharedPtr<DefaultPropertySheetHost>(makeSharedPtr<EntityGraphTracker>(), nullptr, undo);
    visibility = makeSharedPtr<VariableModel<Stack<bool>>>();
    Stack<ListerActionMenuItem> actions;
    actions.push_back({ "Switch on", {}, [](const EntityHolder<Entity>& item) { item->setPropertyValue("on", true); },
        [](const Entity& item) { return !item.getPropertyValue<bool>("on"); } });
    model = new ListerModel(columns(), std::move(actions));
    items.clear();
    for (int i = 0; i < 80; ++i) {
        items.push_back(itemClass().create());
        items.back()->setPropertyValue("name", String("Item ") + std::to_string(i));
        model->addTopLevelEntity(items.back());
    }
    // The first row holds two sub-entities, shown as sub-rows.
    const Array<EntityHolder<Entity>> parts { itemClass().create(), itemClass().create() };
    model->addSubEntities(parts, items[0]);
}

void TestListerView::cleanup()
{
    delete model;
    model = nullptr;
}

ListerView* TestListerView::makeView(QWidget* parent)
{
    auto* view = new ListerView(
        model, visibility, host, {}, [this](int rows) { reportedRows = rows; }, parent);
    view->resize(700, 300);
    view->expandAll();
    view->show();
    settle();
    return view;
}

void TestListerView::checkEditorsExact(ListerView& view, int* openCells)
{
    settle();
    const QRect seen = view.viewport()->rect();
    int open = 0;
    QStringList wrong;
    const auto checkRow = [&](const QModelIndex& parent, int row) {
        const QRect rect = view.visualRect(model->index(row, NAME, parent));
        const bool inView = !view.isRowHidden(row, parent) && rect.isValid() && rect.intersects(seen);
        for (int column = 0; column < COLUMN_COUNT; ++column) {
            const bool expected = inView && column != NOTE && !view.header()->isSectionHidden(column);
            if (view.isPersistentEditorOpen(model->index(row, column, parent)) != expected)
                wrong << QStringLiteral("%1.%2/%3").arg(parent.row()).arg(row).arg(column);
            open += expected ? 1 : 0;
        }
    };
    for (int row = 0; row < model->rowCount(); ++row) {
        checkRow({}, row);
        const QModelIndex parent = model->index(row, 0);
        for (int sub = 0; sub < model->rowCount(parent); ++sub)
            checkRow(parent, sub);
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(QStringLiteral("cells (parent.row/column): ") + wrong.mid(0, 8).join(u' ')));
    // Idle editors show their values, not a selection as if about to be typed over (the focused one may).
    for (const QLineEdit* field : view.viewport()->findChildren<QLineEdit*>())
        QVERIFY(!field->isVisible() || field->hasFocus() || !field->hasSelectedText());
    if (openCells)
        *openCells = open;
}

void TestListerView::hideColumnFromMenu(ListerView& view, int section)
{
    QHeaderView* header = view.header();
    const QPoint at(header->sectionViewportPosition(section) + header->sectionSize(section) / 2, header->height() / 2);
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, header->mapToGlobal(at));
    QApplication::sendEvent(header->viewport(), &event);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    QVERIFY(menu);
    const QString wanted = section >= 0 ? QStringLiteral("Hide column") : QStringLiteral("Unhide all");
    for (QAction* action : menu->actions())
        if (action->text() == wanted)
            action->trigger();
    menu->close();
    settle();
}

void TestListerView::editorsExactlyOnRowsInView_data()
{
    QTest::addColumn<QList<Action>>("actions");
    using A = Action;
    QTest::newRow("opened") << QList<Action> {};
    QTest::newRow("wheel") << QList<Action> { A::WheelDown, A::WheelDown };
    QTest::newRow("wheel back") << QList<Action> { A::WheelDown, A::WheelDown, A::WheelBackUp };
    QTest::newRow("scroll bar page") << QList<Action> { A::ScrollBarPage };
    QTest::newRow("scroll bar end") << QList<Action> { A::ScrollBarPage, A::ScrollBarEnd };
    QTest::newRow("shrink") << QList<Action> { A::Shrink };
    QTest::newRow("grow after scrolling") << QList<Action> { A::ScrollBarPage, A::Grow };
    QTest::newRow("collapse") << QList<Action> { A::Collapse };
    QTest::newRow("hide column") << QList<Action> { A::HideColumn };
    QTest::newRow("unhide all") << QList<Action> { A::HideColumn, A::ScrollBarPage, A::UnhideAll };
}

void TestListerView::editorsExactlyOnRowsInView()
{
    QFETCH(QList<Action>, actions);
    const std::unique_ptr<ListerView> view(makeView());
    QScrollBar* bar = view->verticalScrollBar();
    for (Action action : actions) {
        const int before = bar->value();
        switch (action) {
        case Action::WheelDown:
        case Action::WheelBackUp: {
            const QPoint at = view->viewport()->rect().center();
            QWheelEvent wheel(at, view->viewport()->mapToGlobal(at), {},
                { 0, action == Action::WheelDown ? -120 : 120 }, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                false);
            QApplication::sendEvent(view->viewport(), &wheel);
            QVERIFY(bar->value() != before);
            break;
        }
        case Action::ScrollBarPage:
            bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
            break;
        case Action::ScrollBarEnd:
            bar->triggerAction(QAbstractSlider::SliderToMaximum);
            break;
        case Action::Shrink:
            view->resize(700, 120);
            break;
        case Action::Grow:
            view->resize(700, 600);
            break;
        case Action::Collapse:
            view->setCurrentIndex(model->index(0, NAME));
            QTest::keyClick(view.get(), Qt::Key_Left);
            QVERIFY(!view->isExpanded(model->index(0, 0)));
            break;
        case Action::HideColumn:
            hideColumnFromMenu(*view, SIZE);
            QVERIFY(view->header()->isSectionHidden(SIZE));
            break;
        case Action::UnhideAll:
            hideColumnFromMenu(*view, -1);
            QVERIFY(!view->header()->isSectionHidden(SIZE));
            break;
        }
        int open = 0;
        checkEditorsExact(*view, &open);
        if (QTest::currentTestFailed())
            return;
        QVERIFY(open > 0);
        QVERIFY(open < model->rowCount() * (COLUMN_COUNT - 1));
    }
    QCOMPARE(view->getDisplayRect(), view->viewport()->rect());
}

void TestListerView::cellEditIsOneUndoStepSharedWithTheSheet_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("typedInSheet");
    QTest::newRow("number") << int(SIZE) << "2.5"
                            << "4";
    QTest::newRow("text") << int(LABEL) << "typed"
                          << "from sheet";
}

void TestListerView::cellEditIsOneUndoStepSharedWithTheSheet()
{
    QFETCH(int, column);
    QFETCH(QString, typed);
    QFETCH(QString, typedInSheet);
    QWidget window;
    window.resize(900, 400);
    ListerView* view = makeView(&window);
    PropertySheet sheet(host, &window);
    sheet.move(700, 0);
    sheet.setObjects({ items[3] });
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    settle();
    const String path = model->getColumnDefinition(column).propertyPath;
    QLineEdit* cell = fieldOf(view->indexWidget(model->index(3, column)));
    QLineEdit* row = fieldOf(sheet.findItem(path)->editor());
    QVERIFY(cell && row);

    typeInto(cell, typed);
    QCOMPARE(undo->getUndoCount(), std::size_t(1));
    QCOMPARE(undo->getUndoLabels().front(), String("Update of ") + path);
    QVERIFY(row->text().startsWith(typed));

    typeInto(row, typedInSheet);
    QCOMPARE(undo->getUndoCount(), std::size_t(2));
    QVERIFY(cell->text().startsWith(typedInSheet));
    undo->undo();
    QVERIFY(cell->text().startsWith(typed));
}

void TestListerView::rowVisibility()
{
    const std::unique_ptr<ListerView> view(makeView());
    QCOMPARE(reportedRows, 80);
    // Two sub-entities show as sub-rows; with one left, the row reads as a plain row.
    QVERIFY(!view->isRowHidden(0, model->index(0, 0)) && !view->isRowHidden(1, model->index(0, 0)));
    model->removeSubEntities(
        Array<EntityHolder<Entity>> { model->getEntity(model->index(1, 0, model->index(0, 0))) }, items[0]);
    settle();
    QCOMPARE(model->rowCount(model->index(0, 0)), 1);
    QVERIFY(view->isRowHidden(0, model->index(0, 0)));

    items[5]->setPropertyValue("listed", false);
    Q_EMIT model->updateTopLevelRowVisiblity();
    settle();
    QVERIFY(view->isRowHidden(5, {}));
    QCOMPARE(reportedRows, 79);
    QCOMPARE(view->countVisibleTopLevelRows(), 79);
    checkEditorsExact(*view);
}

void TestListerView::editorGeometry_data()
{
    QTest::addColumn<QSizePolicy::Policy>("horizontal");
    QTest::addColumn<QSizePolicy::Policy>("vertical");
    QTest::addColumn<QSize>("hint");
    QTest::addColumn<int>("alignment");
    QTest::addColumn<QRect>("expected");
    // Cell (100, 20) 80 × 24; margins 10 and 4.
    using P = QSizePolicy;
    QTest::newRow("fixed fits") << P::Fixed << P::Fixed << QSize(40, 16) << int(Qt::AlignVCenter)
                                << QRect(119, 24, 40, 16);
    QTest::newRow("fixed too wide") << P::Fixed << P::Fixed << QSize(200, 30) << int(Qt::AlignVCenter)
                                    << QRect(99, 20, 80, 24);
    QTest::newRow("expanding") << P::Expanding << P::Preferred << QSize(40, 16) << int(Qt::AlignVCenter)
                               << QRect(104, 22, 70, 20);
    QTest::newRow("minimum keeps hint") << P::Minimum << P::Minimum << QSize(120, 30) << int(Qt::AlignVCenter)
                                        << QRect(79, 17, 120, 30);
    QTest::newRow("top") << P::Fixed << P::Fixed << QSize(40, 16) << int(Qt::AlignTop) << QRect(119, 20, 40, 16);
    QTest::newRow("bottom") << P::Fixed << P::Fixed << QSize(40, 16) << int(Qt::AlignBottom) << QRect(119, 28, 40, 16);
}

void TestListerView::editorGeometry()
{
    QFETCH(QSizePolicy::Policy, horizontal);
    QFETCH(QSizePolicy::Policy, vertical);
    QFETCH(QSize, hint);
    QFETCH(int, alignment);
    QTEST(ListerViewDelegate::editorGeometry(
              hint, QSizePolicy(horizontal, vertical), QRect(100, 20, 80, 24), Qt::Alignment(alignment), 10, 4),
        "expected");
}

void TestListerView::hiddenColumnsSharedAcrossViews()
{
    const std::unique_ptr<ListerView> first(makeView());
    const std::unique_ptr<ListerView> second(makeView());
    hideColumnFromMenu(*first, LABEL);
    QVERIFY(second->header()->isSectionHidden(LABEL));
    checkEditorsExact(*second);
    // A view made later over the same flags starts with the column hidden.
    const std::unique_ptr<ListerView> third(makeView());
    QVERIFY(third->header()->isSectionHidden(LABEL));
    hideColumnFromMenu(*third, -1);
    QVERIFY(!first->header()->isSectionHidden(LABEL));
    checkEditorsExact(*first);
}

void TestListerView::emptyDisplayRectOpensNothingAndRefreshRebuildsOnlyFlagged()
{
    ListerView view(model, visibility, host, {}, {});
    view.resize(700, 300);
    view.displayRectChanged(QRect(), true);
    settle();
    for (int column = 0; column < COLUMN_COUNT; ++column)
        QVERIFY(!view.isPersistentEditorOpen(model->index(0, column)));
    view.displayRectChanged(QRect(0, 0, 700, 50), true);
    QVERIFY(view.isPersistentEditorOpen(model->index(0, SIZE)));
    QVERIFY(!view.isPersistentEditorOpen(model->index(40, SIZE)));
    // The first row in view is refreshed by every pass, however short its time.
    const QWidget* reused = view.indexWidget(model->index(0, SIZE));
    const QWidget* rebuilt = view.indexWidget(model->index(0, REBUILT));
    view.displayRectChanged(QRect(0, 0, 700, 50), true);
    QCOMPARE(view.indexWidget(model->index(0, SIZE)), reused);
    QVERIFY(rebuilt && view.indexWidget(model->index(0, REBUILT)) != rebuilt);
}

void TestListerView::masterRowEditsTheListedObjects()
{
    const auto scene = makeSharedPtr<EntityGraphTracker>();
    for (int i = 0; i < 6; ++i) {
        auto item = itemClass().create();
        item->setPropertyValue("name", String(i % 2 ? "odd " : "even ") + std::to_string(i));
        scene->addEntity(item);
    }
    ListerPanel panel(scene, itemClass(), host);
    panel.resize(900, 400);
    panel.show();
    panel.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&panel));
    QCOMPARE(panel.getCountLabel()->text(), QStringLiteral("6 objects"));
    QTest::keyClicks(panel.getFilterEdit(), QStringLiteral("odd"));
    settle();
    QCOMPARE(panel.getCountLabel()->text(), QStringLiteral("3 objects"));

    const Stack<ListerColumnDefinition> columns = ListerPanel::makeColumns(itemClass());
    const auto size
        = std::find_if(columns.begin(), columns.end(), [](const auto& c) { return c.propertyPath == "size"; });
    QVERIFY(columns.front().propertyPath == "name" && size != columns.end());
    ListerView* master = panel.getMasterView();
    QLineEdit* field = fieldOf(master->indexWidget(master->model()->index(0, int(size - columns.begin()))));
    QVERIFY(field);
    typeInto(field, QStringLiteral("7"));
    QCOMPARE(undo->getUndoCount(), std::size_t(1));
    for (const EntityHolder<Entity>& item : scene->getEntities())
        QCOMPARE(item->getPropertyValue<double>("size"), item->getPropertyValue<String>("name")[0] == 'o' ? 7.0 : 1.0);
}

void TestListerView::rightClickOpensTheEntityMenu()
{
    const std::unique_ptr<ListerView> view(makeView());
    // The text column has no editor: the press reaches the view.
    const QPoint at = view->visualRect(model->index(2, NOTE)).center();
    QTest::mouseClick(view->viewport(), Qt::RightButton, {}, at);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    QVERIFY(menu);
    QStringList texts;
    for (const QAction* action : menu->actions())
        texts << action->text();
    QCOMPARE(texts, QStringList({ "Item 2", "Switch on" }));
    menu->actions().back()->trigger();
    menu->close();
    QVERIFY(items[2]->getPropertyValue<bool>("on"));
}

QTEST_MAIN(TestListerView)
#include "tst_ListerView.moc"
