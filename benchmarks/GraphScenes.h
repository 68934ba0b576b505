#pragma once

#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/data/EntityReferences.h>
#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>
#include <MarlixTestScene/TestScene.h>

#include <QGraphicsEllipseItem>
#include <QGraphicsPathItem>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QGraphicsSimpleTextItem>

#include <cmath>
#include <initializer_list>
#include <memory>
#include <string_view>

/// The large graph of the graph view's benchmarks, as the view shows it and as plain items.
namespace Marlix::Benchmarks {

// The graph of the paint, pan and build benchmarks: 5 000 entities of the sample network with 7 500 references.
constexpr std::size_t GRAPH_NODES = 5000;
constexpr std::size_t GRAPH_WIRES = 7500;
// A screen of 2560 × 1440 shows all of it at zoom 1/8.
inline const QSize VIEW_SIZE(2560, 1440);
// Row after row in entity order, so that most wires (to entities made shortly before) run within a row or two.
constexpr std::size_t GRID_COLUMNS = 76;
constexpr double CELL_WIDTH = 260.0;
constexpr double CELL_HEIGHT = 160.0;
constexpr double SCENE_CENTRE = 50000.0;

/// The reference properties of the network's classes, in the order a top-up fills them.
struct ReferenceInputs
{
    const EntityClassInfo& entityClass;
    std::initializer_list<const char*> properties;
};

inline EntityHolder<Entity> referenceOf(const Entity& entity, const char* property)
{
    return entity.visitProperty(property, [](const GenericProperty& value) { return getEntityFromProperty(value); });
}

/// The scene of the graph benchmarks, a graph model with one node per entity on a grid around the scene's centre.
struct LargeGraph
{
    SharedPtr<EntityGraphTracker> scene = makeSharedPtr<EntityGraphTracker>();
    EntityHolder<Widgets::GraphModel> model = makeSharedPtr<Widgets::GraphModel>();
    std::size_t references = 0;
    QPointF centre { SCENE_CENTRE, SCENE_CENTRE };

    LargeGraph()
    {
        Marlix::TestScene::registerTypes();
        const Array<EntityHolder<Entity>> entities = Marlix::TestScene::populateNetwork(*scene, GRAPH_NODES, 7u);
        addReferences(entities);
        scene->addEntity(model);
        model->setScene(scene);
        const double rows = std::ceil(double(GRAPH_NODES) / double(GRID_COLUMNS));
        const QPointF origin = centre - QPointF(GRID_COLUMNS * CELL_WIDTH, rows * CELL_HEIGHT) * 0.5;
        for (std::size_t i = 0; i < entities.size(); ++i)
            model->getOrCreateNode(entities[i],
                origin + QPointF(double(i % GRID_COLUMNS) * CELL_WIDTH, double(i / GRID_COLUMNS) * CELL_HEIGHT));
    }

    // The network has about 1.1 references per entity; empty texture sources and maps are pointed at recent textures
    // until the graph has its 7 500 wires.
    void addReferences(const Array<EntityHolder<Entity>>& entities)
    {
        const ReferenceInputs inputs[] = {
            { Marlix::TestScene::textureClass(), { "source" } },
            { Marlix::TestScene::layeredMaterialClass(), { "roughnessMap", "normalMap", "baseColorMap", "coat" } },
            { Marlix::TestScene::meshClass(), { "material" } },
            { Marlix::TestScene::instanceClass(), { "mesh", "materialOverride" } },
        };
        const auto inputsOf = [&inputs](const Entity& entity) -> const ReferenceInputs* {
            for (const ReferenceInputs& candidate : inputs)
                if (entity.getClassInfo() == candidate.entityClass)
                    return &candidate;
            return nullptr;
        };
        for (const EntityHolder<Entity>& entity : entities)
            if (const ReferenceInputs* found = inputsOf(*entity))
                for (const char* property : found->properties)
                    references += referenceOf(*entity, property) ? 1 : 0;
        Array<EntityHolder<Entity>> textures;
        const std::initializer_list<const char*> textureInputs = { "source" };
        const std::initializer_list<const char*> materialInputs = { "roughnessMap", "normalMap" };
        for (const EntityHolder<Entity>& entity : entities) {
            const bool texture = entity->getClassInfo() == Marlix::TestScene::textureClass();
            const bool layered = entity->getClassInfo() == Marlix::TestScene::layeredMaterialClass();
            if ((texture || layered) && textures.size() >= 2)
                for (const char* property : texture ? textureInputs : materialInputs)
                    if (references < GRAPH_WIRES && !referenceOf(*entity, property)) {
                        entity->setPropertyValue(property, textures[textures.size() - 1 - references % 2]);
                        ++references;
                    }
            if (texture)
                textures.push_back(entity);
        }
    }

    static const LargeGraph& get()
    {
        static const LargeGraph graph;
        return graph;
    }
};

/// What the plain-item baseline draws: the geometry the graph's items have, read once from a view of the graph.
struct PlainGraph
{
    struct Input
    {
        QString label;
        QRectF labelRect;
        QRectF slot;
    };
    struct Box
    {
        QPointF position;
        QRectF body;
        QString title;
        QRectF output;
        Array<Input> inputs;
    };
    struct Wire
    {
        QPointF start;
        QPointF end;
    };
    Array<Box> boxes;
    Array<Wire> wires;

    static const PlainGraph& get()
    {
        static const PlainGraph graph = [] {
            PlainGraph result;
            Widgets::GraphView view(LargeGraph::get().model, nullptr, nullptr);
            for (const Widgets::NodeItem* item : view.getNodeItems()) {
                Box box { item->pos(), item->geometryBoundingRect(), item->getTitle(), item->getOutputSlot().getRect(),
                    {} };
                for (const Widgets::NodeItem::InputSlot& slot : item->getInputSlots())
                    box.inputs.push_back({ slot.getLabel(), slot.getLabelRect(), slot.getRect() });
                result.boxes.push_back(std::move(box));
            }
            for (const Widgets::ConnectionItem* wire : view.getConnections()) {
                const Widgets::NodeItem* from = wire->getFrom();
                const Widgets::NodeItem* to = wire->getTo().second;
                result.wires.push_back(
                    { from->pos() + from->outSlotPosition(), to->pos() + to->inSlotPosition(wire->getInputName()) });
            }
            return result;
        }();
        return graph;
    }
};

/// The same graph as the stock items a Qt developer would reach for: a rectangle per node with a text item for the
/// title and one per input label, small circles for the slots, and a path item per wire on the library's curve.
inline std::unique_ptr<QGraphicsView> makePlainView(const PlainGraph& graph)
{
    auto view = std::make_unique<QGraphicsView>();
    auto* scene = new QGraphicsScene(view.get());
    scene->setItemIndexMethod(QGraphicsScene::BspTreeIndex);
    scene->setSceneRect(0.0, 0.0, 2.0 * SCENE_CENTRE, 2.0 * SCENE_CENTRE);
    view->setScene(scene);
    view->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    view->setBackgroundBrush(QColor(32, 32, 32));
    view->setViewportUpdateMode(QGraphicsView::FullViewportUpdate);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setTransformationAnchor(QGraphicsView::NoAnchor);
    view->setResizeAnchor(QGraphicsView::NoAnchor);

    const QPen outline(QColor(10, 10, 10), 2.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
    const QPen slotPen(QColor(255, 255, 0), 2.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
    const QBrush fill(QColor(64, 64, 64));
    const QBrush title(QColor(236, 236, 236));
    const QBrush label(QColor(255, 255, 255));
    QFont titleFont;
    titleFont.setPixelSize(13);
    titleFont.setBold(true);
    QFont labelFont;
    labelFont.setPixelSize(11);
    for (const PlainGraph::Box& box : graph.boxes) {
        auto* body = new QGraphicsRectItem(box.body.adjusted(0.5, 0.5, -0.5, -0.5));
        body->setPen(outline);
        body->setBrush(fill);
        body->setPos(box.position);
        body->setFlags(QGraphicsItem::ItemIsSelectable | QGraphicsItem::ItemIsMovable);
        auto* text = new QGraphicsSimpleTextItem(box.title, body);
        text->setFont(titleFont);
        text->setBrush(title);
        text->setPos(10.0, 5.0);
        auto* output = new QGraphicsEllipseItem(box.output, body);
        output->setPen(slotPen);
        output->setBrush(slotPen.color());
        for (const PlainGraph::Input& input : box.inputs) {
            auto* slot = new QGraphicsEllipseItem(input.slot, body);
            slot->setPen(slotPen);
            slot->setBrush(slotPen.color());
            auto* labelText = new QGraphicsSimpleTextItem(input.label, body);
            labelText->setFont(labelFont);
            labelText->setBrush(label);
            labelText->setPos(input.labelRect.left(), input.labelRect.top() + 3.0);
        }
        scene->addItem(body);
    }
    const QPen wirePen(QColor(255, 255, 0), 2.0);
    for (const PlainGraph::Wire& wire : graph.wires) {
        auto* path = new QGraphicsPathItem(Widgets::makeConnectionPath(wire.start, wire.end));
        path->setPen(wirePen);
        scene->addItem(path);
    }
    view->resize(VIEW_SIZE);
    return view;
}

} // namespace Marlix::Benchmarks
