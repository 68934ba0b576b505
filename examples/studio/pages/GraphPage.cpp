#include "SceneThumbnails.h"
#include "StudioPage.h"

#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/widgets/graph/GraphModel.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>
#include <MarlixLibQt/widgets/properties/UndoStackBridge.h>
#include <MarlixLibQt/widgets/thumbnails/ThumbnailManager.h>
#include <MarlixTestScene/TestScene.h>

#include <QCoreApplication>
#include <QEvent>
#include <QLabel>
#include <QSplitter>
#include <QUndoView>
#include <QVBoxLayout>

#include <memory>
#include <set>

namespace Studio {

namespace {

using namespace Marlix;
using namespace Marlix::Widgets;

constexpr int PAGE_MARGIN = 8;
constexpr int HISTORY_WIDTH = 220;
// The overview's zoom: below the level where nodes drop their labels, the shape of the whole network shows.
constexpr double OVERVIEW_ZOOM = 0.125;
// The node the first screenshot looks at, at zoom 1: a material with its maps wired in and its users beside it.
const QString FOCUS_NODE = QStringLiteral("Car paint");

/// The sample material network as a node graph, arranged in layers, with the scene's undo history beside it. Every
/// edit in the view (moving, connecting, rearranging, removing) is one step in the history.
class GraphPage : public QWidget
{
    Q_DECLARE_TR_FUNCTIONS(Studio::GraphPage)

public:
    explicit GraphPage(QWidget* parent);
    ~GraphPage() override;

    GraphView* getView() const { return view; }

private:
    void refreshAppearances();

    SharedPtr<EntityGraphTracker> scene = makeSharedPtr<EntityGraphTracker>();
    SharedPtr<UndoManager> undoManager = makeSharedPtr<UndoManager>();
    SharedPtr<ThumbnailManager> thumbnails = makeSharedPtr<ThumbnailManager>();
    SharedPtr<AppearanceTable> appearances = makeSharedPtr<AppearanceTable>();
    EntityHolder<GraphModel> graph = makeSharedPtr<GraphModel>();
    UndoStackBridge* bridge;
    GraphView* view = nullptr;
    /// Asks for the pictures the nodes show at zoom 1, to know when all have arrived: the same cache serves both.
    std::unique_ptr<ThumbnailClient> settleClient;
    std::set<std::uint64_t> rendered;
    CallbacksOwner observation;
};

GraphPage::GraphPage(QWidget* parent)
    : QWidget(parent)
    , bridge(new UndoStackBridge(undoManager, this))
{
    TestScene::registerTypes();
    const auto network = TestScene::populateMaterialNetwork(*scene);
    scene->addEntity(graph);
    graph->setScene(scene);
    refreshAppearances();
    const EntityClassInfo drawn[] { TestScene::sceneObjectClass() };
    thumbnails->registerProvider(drawn, {}, makeSharedPtr<SceneThumbnailProvider>(appearances));
    for (const auto& entity : network)
        observation.add(entity->addObserver([this](const ObservedProperty&) { refreshAppearances(); }));

    // The network enters the graph as it was loaded: one column, in scene order, unrecorded. The view then arranges
    // it, which is the first step of the history.
    double y = 0.0;
    for (const auto& entity : network) {
        graph->getOrCreateNode(entity, QPointF(0.0, y));
        y += 100.0;
    }

    view = new GraphView(graph, undoManager, thumbnails, nullptr);
    setProperty(PAGE_SETTLED_PROPERTY, false);
    const int pictureSize = qRound(NodeItem::THUMBNAIL_SIZE);
    settleClient = std::make_unique<ThumbnailClient>(
        thumbnails, QSize(pictureSize, pictureSize),
        [this, count = network.size()](ArrayView<const EntityHolder<Entity>> changed) {
            for (const auto& entity : changed)
                rendered.insert(entity->getId());
            setProperty(PAGE_SETTLED_PROPERTY, rendered.size() >= count);
        },
        ThumbnailManager::OPTION_PLACEHOLDER, view);
    for (const auto& entity : network)
        settleClient->getThumbnail(entity);
    view->setAccessibleName(tr("Material network"));
    auto* history = new QUndoView(bridge->undoStack());
    history->setAccessibleName(tr("History"));
    history->setEmptyLabel(tr("<scene as loaded>"));

    auto* hint = new QLabel(tr("Drag from a slot to connect, wheel to zoom, middle button to pan, Z to frame, "
                               "right click for more."));
    hint->setWordWrap(true);
    auto* left = new QWidget;
    auto* leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(0, 0, 0, 0);
    leftLayout->addWidget(view, 1);
    leftLayout->addWidget(hint);

    auto* splitter = new QSplitter;
    splitter->addWidget(left);
    auto* historyPanel = new QWidget;
    auto* historyLayout = new QVBoxLayout(historyPanel);
    historyLayout->setContentsMargins(0, 0, 0, 0);
    historyLayout->addWidget(new QLabel(tr("History (Edit > Undo, Redo)")));
    historyLayout->addWidget(history, 1);
    splitter->addWidget(historyPanel);
    splitter->setStretchFactor(0, 1);
    splitter->setSizes({ 1000, HISTORY_WIDTH });
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(PAGE_MARGIN, PAGE_MARGIN, PAGE_MARGIN, PAGE_MARGIN);
    layout->addWidget(splitter);
}

GraphPage::~GraphPage()
{
    observation.clear();
    settleClient.reset();
    delete view;
    thumbnails->shutdownProviders();
}

void GraphPage::refreshAppearances()
{
    Studio::refreshAppearances(*scene, *appearances, *thumbnails);
}

/// The view arranges once it has its size, and then looks at one node at zoom 1.
class ArrangeOnFirstShow : public QObject
{
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::Show)
            return false;
        auto* view = static_cast<GraphView*>(watched);
        view->rearrange();
        for (NodeItem* item : view->lookupNodeItems(view->getModel()->getNodes()))
            if (item && item->getTitle() == FOCUS_NODE) {
                view->zoom(view->viewport()->rect().center(), 1.0, false);
                view->centerOn(item->sceneBoundingRect().center());
                view->snapContentPosition();
            }
        deleteLater();
        watched->removeEventFilter(this);
        return false;
    }
};

} // namespace

QWidget* createGraphPage(QWidget* parent)
{
    auto* page = new GraphPage(parent);
    page->getView()->installEventFilter(new ArrangeOnFirstShow(page));
    return page;
}

void showGraphOverview(QWidget* page)
{
    auto* graphPage = dynamic_cast<GraphPage*>(page);
    if (!graphPage)
        return;
    GraphView* view = graphPage->getView();
    view->onZoomToAll();
    view->zoom(view->viewport()->rect().center(), OVERVIEW_ZOOM, false);
}

} // namespace Studio
