#include "SceneThumbnails.h"
#include "StudioPage.h"

#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/properties/DefaultPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/PropertySheet.h>
#include <MarlixLibQt/widgets/thumbnails/ThumbnailManager.h>
#include <MarlixLibQt/widgets/properties/UndoStackBridge.h>
#include <MarlixTestScene/TestScene.h>

#include <QCoreApplication>
#include <QLabel>
#include <QListWidget>
#include <QScrollArea>
#include <QSplitter>
#include <QUndoView>
#include <QVBoxLayout>

#include <memory>
#include <set>

namespace Studio {

namespace {

using namespace Marlix;
using namespace Marlix::Widgets;

constexpr int THUMBNAIL_SIZE = 32;
constexpr int PAGE_MARGIN = 8;
constexpr int SCENE_WIDTH = 190;
constexpr int SHEET_WIDTH = 560;
constexpr int HISTORY_WIDTH = 220;
// The selections of the screenshots: two materials, so that the rows where they differ show it, and a mesh, whose
// colour ramp and level-of-detail list show the gradient control and the list editor.
const QStringList MATERIALS_SELECTION { QStringLiteral("Wood"), QStringLiteral("Steel") };
const QStringList MESH_SELECTION { QStringLiteral("Table") };

QWidget* titled(const QString& title, QWidget* content, QLabel** caption = nullptr)
{
    auto* panel = new QWidget;
    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* label = new QLabel(title);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    // Long titles (the names of the selection, longer words in other languages) wrap instead of pushing the columns.
    label->setWordWrap(true);
    layout->addWidget(label);
    layout->addWidget(content, 1);
    if (caption)
        *caption = label;
    return panel;
}

/// The sample scene in a list with thumbnails, and a property sheet of the selected entities, with the scene's
/// undo history beside it. The bridge's QUndoStack is a child of the page, so the window's Edit menu finds it.
class PropertiesPage : public QWidget
{
    Q_DECLARE_TR_FUNCTIONS(Studio::PropertiesPage)

public:
    PropertiesPage(const QStringList& firstSelection, QWidget* parent);
    ~PropertiesPage() override;

private:
    void fillList();
    void observeScene();
    /// Copies every entity's appearance for the render thread and redraws the thumbnails that changed.
    void refreshAppearances();
    void updateItem(int row);
    void showSelection();

    SharedPtr<EntityGraphTracker> scene = makeSharedPtr<EntityGraphTracker>();
    SharedPtr<UndoManager> undoManager = makeSharedPtr<UndoManager>();
    SharedPtr<ThumbnailManager> thumbnails = makeSharedPtr<ThumbnailManager>();
    SharedPtr<AppearanceTable> appearances = makeSharedPtr<AppearanceTable>();
    UndoStackBridge* bridge;
    QListWidget* list;
    PropertySheet* sheet;
    QLabel* sheetCaption = nullptr;
    std::unique_ptr<ThumbnailClient> thumbnailClient;
    /// Entities whose first image has arrived; the page is settled when every entity has one.
    std::set<std::uint64_t> rendered;
    CallbacksOwner observation;
};

PropertiesPage::PropertiesPage(const QStringList& firstSelection, QWidget* parent)
    : QWidget(parent)
    , bridge(new UndoStackBridge(undoManager, this))
    , list(new QListWidget)
    , sheet(new PropertySheet(makeSharedPtr<DefaultPropertySheetHost>(scene, thumbnails, undoManager)))
{
    setProperty(PAGE_SETTLED_PROPERTY, false);
    TestScene::registerTypes();
    TestScene::populate(*scene);
    refreshAppearances();
    const EntityClassInfo drawn[] { TestScene::sceneObjectClass() };
    thumbnails->registerProvider(drawn, {}, makeSharedPtr<SceneThumbnailProvider>(appearances));
    thumbnailClient = std::make_unique<ThumbnailClient>(
        thumbnails, QSize(THUMBNAIL_SIZE, THUMBNAIL_SIZE),
        [this](ArrayView<const EntityHolder<Entity>> changed) {
            for (const auto& entity : changed) {
                rendered.insert(entity->getId());
                for (int row = 0; row < list->count(); ++row)
                    if (scene->getEntities()[std::size_t(row)] == entity)
                        updateItem(row);
            }
            setProperty(PAGE_SETTLED_PROPERTY, rendered.size() >= scene->getEntities().size());
        },
        ThumbnailManager::OPTION_PLACEHOLDER, list);

    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->setIconSize(QSize(THUMBNAIL_SIZE, THUMBNAIL_SIZE));
    list->setToolTip(tr("Select several entities with Ctrl or Shift: the sheet edits all of them at once."));
    list->setAccessibleName(tr("Scene"));
    fillList();
    observeScene();

    auto* scroll = new QScrollArea;
    scroll->setAccessibleName(tr("Properties"));
    scroll->setWidgetResizable(true);
    scroll->setWidget(sheet);
    auto* history = new QUndoView(bridge->undoStack());
    history->setAccessibleName(tr("History"));
    history->setEmptyLabel(tr("<scene as loaded>"));

    auto* splitter = new QSplitter;
    splitter->addWidget(titled(tr("Scene"), list));
    splitter->addWidget(titled(tr("Properties"), scroll, &sheetCaption));
    splitter->addWidget(titled(tr("History (Edit > Undo, Redo)"), history));
    // A narrow dock takes from every column alike, the sheet most, rather than from the sheet alone: with wrapping
    // titles nothing else keeps it wide enough for its editors.
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 3);
    splitter->setStretchFactor(2, 1);
    splitter->setSizes({ SCENE_WIDTH, SHEET_WIDTH, HISTORY_WIDTH });
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(PAGE_MARGIN, PAGE_MARGIN, PAGE_MARGIN, PAGE_MARGIN);
    layout->addWidget(splitter);

    connect(list, &QListWidget::itemSelectionChanged, this, [this] { showSelection(); });
    for (int row = 0; row < list->count(); ++row)
        if (firstSelection.contains(list->item(row)->text()))
            list->item(row)->setSelected(true);
    showSelection();
}

PropertiesPage::~PropertiesPage()
{
    observation.clear();
    thumbnailClient.reset();
    thumbnails->shutdownProviders();
}

void PropertiesPage::fillList()
{
    list->clear();
    for (std::size_t row = 0; row < scene->getEntities().size(); ++row) {
        list->addItem(QString());
        updateItem(int(row));
    }
}

void PropertiesPage::updateItem(int row)
{
    const EntityHolder<Entity>& entity = scene->getEntities()[std::size_t(row)];
    QListWidgetItem* item = list->item(row);
    item->setText(toQt(entity->getPropertyValue<String>("name")));
    item->setToolTip(toQt(entity->getClassInfo().getName()));
    // The same picture when selected: the style's selected tint would change the colour the picture is about.
    const QPixmap thumbnail = thumbnailClient->getThumbnail(entity);
    QIcon icon(thumbnail);
    icon.addPixmap(thumbnail, QIcon::Selected);
    item->setIcon(icon);
}

void PropertiesPage::observeScene()
{
    // A material's colour shows on the meshes and instances that use it, so every change refreshes them all; the
    // table tells which thumbnails really changed.
    for (const auto& entity : scene->getEntities())
        observation.add(entity->addObserver([this, id = entity->getId()](const ObservedProperty& changed) {
            refreshAppearances();
            if (changed.getDefinition().getName() == "name")
                for (int row = 0; row < list->count(); ++row)
                    if (scene->getEntities()[std::size_t(row)]->getId() == id)
                        updateItem(row);
        }));
}

void PropertiesPage::refreshAppearances()
{
    Studio::refreshAppearances(*scene, *appearances, *thumbnails);
}

void PropertiesPage::showSelection()
{
    Array<EntityHolder<Entity>> selected;
    QStringList names;
    for (int row = 0; row < list->count(); ++row) {
        if (!list->item(row)->isSelected())
            continue;
        selected.push_back(scene->getEntities()[std::size_t(row)]);
        names << list->item(row)->text();
    }
    sheet->setObjects(selected);
    if (sheetCaption)
        sheetCaption->setText(selected.empty() ? tr("Properties (nothing selected)")
                : selected.size() == 1            ? tr("Properties of %1").arg(names.front())
                                                  : tr("Properties of %1 entities: %2").arg(selected.size()).arg(names.join(QStringLiteral(", "))));
}

} // namespace

QWidget* createPropertiesPage(QWidget* parent)
{
    return new PropertiesPage(MATERIALS_SELECTION, parent);
}

QWidget* createMeshPropertiesPage(QWidget* parent)
{
    return new PropertiesPage(MESH_SELECTION, parent);
}

} // namespace Studio
