#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>
#include <MarlixLibQt/widgets/thumbnails/ThumbnailManager.h>
#include <MarlixTestScene/TestScene.h>

#include <QMenu>
#include <QMimeData>
#include <QTest>
#include <QTimer>

#include <cmath>

using namespace Marlix;
using namespace Marlix::Widgets;
using namespace Marlix::TestScene;
using State = GraphView::State;

namespace {

/// A scene with a graph shown by a view of 800 × 600 pixels that records its edits.
struct Canvas
{
    SharedPtr<EntityGraphTracker> scene = makeSharedPtr<EntityGraphTracker>();
    EntityHolder<GraphModel> model = makeSharedPtr<GraphModel>();
    SharedPtr<UndoManager> undo = makeSharedPtr<UndoManager>();
    std::unique_ptr<GraphView> view;

    explicit Canvas(SharedPtr<ThumbnailManager> thumbnails = nullptr)
    {
        scene->addEntity(model);
        model->setScene(scene);
        view = std::make_unique<GraphView>(model, undo, std::move(thumbnails));
        view->resize(800, 600);
        view->show();
        view->zoom({}, 1.0, false);
    }
    EntityHolder<Node> add(const EntityClassInfo& entityClass, QPointF position)
    {
        const EntityHolder<Entity> entity = entityClass.create();
        scene->addEntity(entity);
        return model->getOrCreateNode(entity, position);
    }
    /// Nodes placed around the middle of the visible scene, `dx` apart.
    EntityHolder<Node> addInView(const EntityClassInfo& entityClass, double dx)
    {
        return add(entityClass, view->mapToScene(QPoint(150, 150)) + QPointF(dx, 0));
    }
    NodeItem* item(const EntityHolder<Node>& node) const { return view->lookupNodeItem(*node); }
    QPoint pixel(const NodeItem* item, QPointF local) const { return view->mapFromScene(item->scenePos() + local); }
    QPoint outSlot(const EntityHolder<Node>& node) const { return pixel(item(node), item(node)->outSlotPosition()); }
    QPoint inSlot(const EntityHolder<Node>& node, StringView input) const
    {
        return pixel(item(node), item(node)->inSlotPosition(input));
    }
    void drag(QPoint from, QPoint to, Qt::MouseButton button = Qt::LeftButton) const
    {
        QTest::mousePress(view->viewport(), button, {}, from);
        QTest::mouseMove(view->viewport(), (from + to) / 2);
        QTest::mouseMove(view->viewport(), to);
        QTest::mouseRelease(view->viewport(), button, {}, to);
    }
    static void settle() { QCoreApplication::sendPostedEvents(); }
};

void sendWheel(QWidget* viewport, QPoint at, int delta, Qt::ScrollPhase phase)
{
    QWheelEvent event(
        at, viewport->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton, Qt::NoModifier, phase, false);
    QCoreApplication::sendEvent(viewport, &event);
}

class GreyProvider : public IThumbnailProvider
{
public:
    Bitmap renderThumbnail(const EntityHolder<Entity>&, int width, int height) override
    {
        return Bitmap(width, height, RgbaBytes { 128, 128, 128, 255 });
    }
};

EntityHolder<Entity> referenceOf(const EntityHolder<Node>& node, StringView input)
{
    return node->getEntity()->getPropertyValue<EntityHolder<Entity>>(input);
}

} // namespace

class tst_GraphView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        LibQt::startup("tst_GraphView");
        registerTypes();
    }
    void cleanupTestCase() { LibQt::shutdown(); }

    void zoomSnapsAndKeepsTheAnchor_data();
    void zoomSnapsAndKeepsTheAnchor();
    void wheelNotches_data();
    void wheelNotches();
    void framingNeverZoomsBeyondTwo_data();
    void framingNeverZoomsBeyondTwo();
    void selectedNodesStackAbove();
    void gridOnlyFromZoomUp_data();
    void gridOnlyFromZoomUp();
    void autoScrollAtTheEdges_data();
    void autoScrollAtTheEdges();
    void connectByDragging_data();
    void connectByDragging();
    void dragFromAnInputToNowhereDisconnects();
    void movingSelectedNodesIsOneStep();
    void removeAndDuplicateSelection_data();
    void removeAndDuplicateSelection();
    void dropAddsSceneEntities();
    void contextMenuAddsNodes_data();
    void contextMenuAddsNodes();
    void statesAreReported();
    void thumbnailsFollowTheZoom();
    void rearrangeLaysOutAlongTheWires_data();
    void rearrangeLaysOutAlongTheWires();
};

void tst_GraphView::zoomSnapsAndKeepsTheAnchor_data()
{
    QTest::addColumn<double>("request");
    QTest::addColumn<double>("expected");
    QTest::newRow("0.105 snaps to 1/10") << 0.105 << 0.1;
    QTest::newRow("0.09 is ignored") << 0.09 << 0.5;
    QTest::newRow("2.1 snaps to 2") << 2.1 << 2.0;
    QTest::newRow("2.3 is ignored") << 2.3 << 0.5;
    QTest::newRow("1.05 snaps to 1") << 1.05 << 1.0;
    QTest::newRow("1.9 snaps to 2") << 1.9 << 2.0;
    QTest::newRow("0.45 is kept") << 0.45 << 0.45;
    QTest::newRow("0.34 snaps to 1/3") << 0.34 << 1.0 / 3.0;
}

void tst_GraphView::zoomSnapsAndKeepsTheAnchor()
{
    QFETCH(double, request);
    QFETCH(double, expected);
    Canvas canvas;
    GraphView& view = *canvas.view;
    view.zoom(QPointF(400, 300), 0.5, false);
    const QPoint anchor(230, 170);
    const QPointF before = view.mapToScene(anchor);
    view.zoom(anchor, request, false);
    QCOMPARE(view.getZoom(), expected);
    QCOMPARE(view.transform().m11(), expected);
    // The scene point under the anchor stays there (to the rounding of whole units), and the corner is on whole units.
    QVERIFY(QLineF(before, view.mapToScene(anchor)).length() <= 1.5 / expected);
    const QPointF corner = view.mapToScene(QPoint(0, 0));
    QCOMPARE(corner.x(), std::round(corner.x()));
    QCOMPARE(corner.y(), std::round(corner.y()));
}

void tst_GraphView::wheelNotches_data()
{
    QTest::addColumn<QList<int>>("deltas");
    QTest::addColumn<double>("expected");
    QTest::newRow("one notch") << QList<int> { 120 } << std::pow(1.6, 1.0 / 3.0);
    QTest::newRow("three notches") << QList<int> { 120, 120, 120 } << 1.6;
    QTest::newRow("in and out snaps back to 1") << QList<int> { 120, -120 } << 1.0;
    QTest::newRow("out by two") << QList<int> { -240 } << 1.0 / std::pow(1.6, 2.0 / 3.0);
    QTest::newRow("past 2 is ignored") << QList<int> { 360, 360 } << 1.6;
}

void tst_GraphView::wheelNotches()
{
    QFETCH(QList<int>, deltas);
    QFETCH(double, expected);
    Canvas canvas;
    QWidget* viewport = canvas.view->viewport();
    const QPoint at(300, 200);
    sendWheel(viewport, at, 0, Qt::ScrollBegin);
    for (int delta : deltas)
        sendWheel(viewport, at, delta, Qt::ScrollUpdate);
    sendWheel(viewport, at, 0, Qt::ScrollEnd);
    QVERIFY2(std::abs(canvas.view->getZoom() - expected) < 1e-9, qPrintable(QString::number(canvas.view->getZoom())));
}

void tst_GraphView::framingNeverZoomsBeyondTwo_data()
{
    QTest::addColumn<double>("distance");
    QTest::addColumn<bool>("selectFirst");
    QTest::newRow("close together: capped at 2") << 100.0 << false;
    QTest::newRow("far apart") << 3000.0 << false;
    QTest::newRow("the selection only") << 3000.0 << true;
}

void tst_GraphView::framingNeverZoomsBeyondTwo()
{
    QFETCH(double, distance);
    QFETCH(bool, selectFirst);
    Canvas canvas;
    const EntityHolder<Node> a = canvas.add(materialClass(), QPointF(50000, 50000));
    const EntityHolder<Node> b = canvas.add(meshClass(), QPointF(50000 + distance, 50000 + distance / 10));
    canvas.item(a)->setSelected(selectFirst);
    QTest::keyClick(canvas.view.get(), Qt::Key_Z);

    const GraphView& view = *canvas.view;
    QVERIFY(view.getZoom() <= 2.0);
    if (distance < 500 || selectFirst)
        QCOMPARE(view.getZoom(), 2.0);
    Array<NodeItem*> framed { canvas.item(a) };
    if (!selectFirst)
        framed.push_back(canvas.item(b));
    const QRect shown = view.mapFromScene(GraphView::nodeItemsBoundingRect(framed)).boundingRect();
    // Filling the view less its margins, give or take the snapping of the zoom to simple values.
    const QSizeF room(800 - 64, 600 - 64);
    QVERIFY(shown.width() <= room.width() * 1.1 + 2 && shown.height() <= room.height() * 1.1 + 2);
    if (view.getZoom() < 2.0)
        QVERIFY(shown.width() >= room.width() * 0.9 || shown.height() >= room.height() * 0.9);
    QVERIFY(std::abs(shown.center().x() - 400) <= 2 && std::abs(shown.center().y() - 300) <= 2);
}

void tst_GraphView::selectedNodesStackAbove()
{
    Canvas canvas;
    Array<EntityHolder<Node>> nodes;
    for (int i = 0; i < 4; ++i)
        nodes.push_back(canvas.addInView(materialClass(), i * 230.0));
    QTest::keyClick(canvas.view.get(), Qt::Key_A, Qt::ControlModifier);
    for (const auto& node : nodes)
        QVERIFY(canvas.item(node)->zValue() > 1.0 && canvas.item(node)->zValue() < 2.0);

    // A click selects the topmost node alone: it stays above all others, which drop back into (0, 1).
    QTest::mouseClick(canvas.view->viewport(), Qt::LeftButton, {}, canvas.pixel(canvas.item(nodes[1]), { 100, 30 }));
    QVERIFY(canvas.item(nodes[1])->isSelected() && !canvas.item(nodes[2])->isSelected());
    for (const auto& node : nodes) {
        const double z = canvas.item(node)->zValue();
        QVERIFY(node == nodes[1] ? (z > 1.0 && z < 2.0) : (z > 0.0 && z < 1.0));
    }
    QTest::keyClick(canvas.view.get(), Qt::Key_U, Qt::ControlModifier);
    QVERIFY(canvas.view->getSelectedNodeItems().empty());
}

void tst_GraphView::gridOnlyFromZoomUp_data()
{
    QTest::addColumn<double>("zoom");
    QTest::addColumn<bool>("grid");
    QTest::newRow("0.3") << 0.3 << false;
    QTest::newRow("0.4") << 0.4 << true;
    QTest::newRow("1") << 1.0 << true;
}

void tst_GraphView::gridOnlyFromZoomUp()
{
    QFETCH(double, zoom);
    QFETCH(bool, grid);
    Canvas canvas;
    canvas.view->zoom(QPointF(400, 300), zoom, false);
    const QImage image = canvas.view->viewport()->grab().toImage();
    QCOMPARE(canvas.view->getGridLineCount() > 0, grid);
    // A grid line every 25 units: along a row the background changes that often.
    int changes = 0;
    for (int x = 1; x < image.width(); ++x)
        changes += image.pixel(x, 10) != image.pixel(x - 1, 10) ? 1 : 0;
    QCOMPARE(changes > 800 / (25 * zoom), grid);
}

void tst_GraphView::autoScrollAtTheEdges_data()
{
    QTest::addColumn<bool>("onNode");
    QTest::addColumn<QPoint>("held");
    QTest::addColumn<int>("signX");
    QTest::addColumn<int>("signY");
    QTest::newRow("node dragged to the right edge") << true << QPoint(795, 300) << 1 << 0;
    QTest::newRow("band at the top left") << false << QPoint(3, 4) << -1 << -1;
    QTest::newRow("inside: no scrolling") << true << QPoint(400, 300) << 0 << 0;
}

void tst_GraphView::autoScrollAtTheEdges()
{
    QFETCH(bool, onNode);
    QFETCH(QPoint, held);
    QFETCH(int, signX);
    QFETCH(int, signY);
    Canvas canvas;
    const EntityHolder<Node> node = canvas.addInView(meshClass(), 0);
    const QPoint start = onNode ? canvas.pixel(canvas.item(node), { 100, 30 }) : QPoint(600, 500);
    QTest::mousePress(canvas.view->viewport(), Qt::LeftButton, {}, start);
    QTest::mouseMove(canvas.view->viewport(), held);
    QCOMPARE(canvas.view->getState(), onNode ? State::MovingNodes : State::RubberBand);
    const QPointF corner = canvas.view->mapToScene(QPoint(0, 0));
    const QPointF nodeBefore = canvas.item(node)->pos();
    canvas.view->onTimeout();
    const QPointF moved = canvas.view->mapToScene(QPoint(0, 0)) - corner;
    QCOMPARE(moved.x() > 0 ? 1 : (moved.x() < 0 ? -1 : 0), signX);
    QCOMPARE(moved.y() > 0 ? 1 : (moved.y() < 0 ? -1 : 0), signY);
    // The dragged node stays under the cursor as the view moves.
    if (onNode)
        QCOMPARE(canvas.item(node)->pos(), nodeBefore + moved);
    QTest::mouseRelease(canvas.view->viewport(), Qt::LeftButton, {}, held);
    QCOMPARE(canvas.view->getState(), State::Idle);
    QCOMPARE(canvas.undo->getUndoCount(), std::size_t(onNode ? 1 : 0));
}

void tst_GraphView::connectByDragging_data()
{
    QTest::addColumn<QString>("sourceClass");
    QTest::addColumn<QString>("targetClass");
    QTest::addColumn<QString>("input");
    QTest::addColumn<bool>("targetFeedsSource"); // the target already reaches the source through "source"
    QTest::addColumn<bool>("accepted");
    QTest::newRow("texture into a map") << "Texture"
                                        << "LayeredMaterial"
                                        << "roughnessMap" << false << true;
    QTest::newRow("material into a mesh") << "Material"
                                          << "Mesh"
                                          << "material" << false << true;
    QTest::newRow("derived class accepted") << "LayeredMaterial"
                                            << "Mesh"
                                            << "material" << false << true;
    QTest::newRow("loop refused") << "Texture"
                                  << "Texture"
                                  << "source" << true << false;
    QTest::newRow("unrelated class refused") << "Mesh"
                                             << "LayeredMaterial"
                                             << "baseColorMap" << false << false;
}

void tst_GraphView::connectByDragging()
{
    QFETCH(QString, sourceClass);
    QFETCH(QString, targetClass);
    QFETCH(QString, input);
    QFETCH(bool, targetFeedsSource);
    QFETCH(bool, accepted);
    Canvas canvas;
    const auto classNamed
        = [](const QString& name) { return *TypeDatabase::instance().lookupEntityClass(name.toStdString()); };
    const EntityHolder<Node> source = canvas.addInView(classNamed(sourceClass), 0);
    const EntityHolder<Node> target = canvas.addInView(classNamed(targetClass), 300);
    if (targetFeedsSource)
        source->getEntity()->setPropertyValue("source", target->getEntity());
    Canvas::settle();
    const String property = input.toStdString();
    const QPoint from = canvas.outSlot(source);
    const QPoint to = canvas.inSlot(target, property);

    QTest::mousePress(canvas.view->viewport(), Qt::LeftButton, {}, from);
    QTest::mouseMove(canvas.view->viewport(), to);
    QCOMPARE(canvas.view->getState(), State::Connecting);
    // The slot under the dragged end shows whether the drop would be taken.
    const QImage image = canvas.view->viewport()->grab().toImage();
    QCOMPARE(image.pixelColor(to), accepted ? QColor(40, 255, 40) : QColor(255, 40, 40));
    QTest::mouseRelease(canvas.view->viewport(), Qt::LeftButton, {}, to);
    Canvas::settle();

    QCOMPARE(canvas.view->getState(), State::Idle);
    QVERIFY(canvas.view->getPreview() == nullptr);
    QCOMPARE(referenceOf(target, property) == source->getEntity(), accepted);
    QCOMPARE(canvas.undo->getUndoCount(), std::size_t(accepted ? 1 : 0));
    const auto& wires = canvas.view->getConnections();
    const bool wired = std::any_of(wires.begin(), wires.end(), [&](const ConnectionItem* wire) {
        return wire->getFrom() == canvas.item(source) && wire->getTo().second == canvas.item(target);
    });
    QCOMPARE(wired, accepted);
    if (!accepted)
        return;
    QCOMPARE(canvas.undo->getUndoLabel(), String("Connect Node"));
    canvas.undo->undo();
    Canvas::settle();
    QVERIFY(!referenceOf(target, property));
    QVERIFY(canvas.view->getConnections().empty());
}

void tst_GraphView::dragFromAnInputToNowhereDisconnects()
{
    Canvas canvas;
    const EntityHolder<Node> material = canvas.addInView(materialClass(), 0);
    const EntityHolder<Node> mesh = canvas.addInView(meshClass(), 300);
    mesh->getEntity()->setPropertyValue("material", material->getEntity());
    Canvas::settle();
    QCOMPARE(canvas.view->getConnections().size(), std::size_t(1));

    // Dropped on another node's body the lifted wire comes back unchanged; on empty canvas it is gone.
    canvas.drag(canvas.inSlot(mesh, "material"), canvas.pixel(canvas.item(material), { 110, 30 }));
    QCOMPARE(referenceOf(mesh, "material"), material->getEntity());
    QVERIFY(canvas.view->getConnections().front()->isVisible());
    // An edit outside the view moves the wire to the new source.
    const EntityHolder<Node> other = canvas.addInView(materialClass(), 600);
    mesh->getEntity()->setPropertyValue("material", other->getEntity());
    Canvas::settle();
    QCOMPARE(canvas.view->getConnections().size(), std::size_t(1));
    QCOMPARE(canvas.view->getConnections().front()->getFrom(), canvas.item(other));
    canvas.drag(canvas.inSlot(mesh, "material"), QPoint(700, 550));
    Canvas::settle();
    QVERIFY(!referenceOf(mesh, "material"));
    QVERIFY(canvas.view->getConnections().empty());
    QCOMPARE(canvas.undo->getUndoCount(), std::size_t(1));
    QCOMPARE(canvas.undo->getUndoLabel(), String("Disconnect Node"));
}

void tst_GraphView::movingSelectedNodesIsOneStep()
{
    Canvas canvas;
    const EntityHolder<Node> a = canvas.addInView(materialClass(), 0.25);
    const EntityHolder<Node> b = canvas.addInView(meshClass(), 300);
    const EntityHolder<Node> still = canvas.addInView(meshClass(), 600);
    const Array<QPointF> before { a->getPosition(), b->getPosition(), still->getPosition() };
    QTest::mouseClick(canvas.view->viewport(), Qt::LeftButton, {}, canvas.pixel(canvas.item(a), { 100, 30 }));
    QTest::mouseClick(
        canvas.view->viewport(), Qt::LeftButton, Qt::ControlModifier, canvas.pixel(canvas.item(b), { 100, 30 }));
    const QPoint grip = canvas.pixel(canvas.item(b), { 100, 30 });
    canvas.drag(grip, grip + QPoint(37, 81));
    Canvas::settle();

    QCOMPARE(canvas.undo->getUndoCount(), std::size_t(1));
    QCOMPARE(canvas.undo->getUndoLabel(), String("Move Node"));
    QCOMPARE(a->getPosition(), QPointF(QPointF(float(before[0].x() + 37), float(before[0].y() + 81))));
    QCOMPARE(b->getPosition(), before[1] + QPointF(37, 81));
    QCOMPARE(still->getPosition(), before[2]);
    canvas.undo->undo();
    Canvas::settle();
    QCOMPARE(a->getPosition(), before[0]);
    QCOMPARE(b->getPosition(), before[1]);
    QCOMPARE(canvas.item(a)->pos(), before[0]);
    QCOMPARE(canvas.item(b)->pos(), before[1]);
}

void tst_GraphView::removeAndDuplicateSelection_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<int>("nodesAfter");
    QTest::addColumn<QString>("label");
    QTest::newRow("Delete") << int(Qt::Key_Delete) << int(Qt::NoModifier) << 1 << "Remove Selected";
    QTest::newRow("Ctrl+D") << int(Qt::Key_D) << int(Qt::ControlModifier) << 5 << "Duplicate Selected";
}

void tst_GraphView::removeAndDuplicateSelection()
{
    QFETCH(int, key);
    QFETCH(int, modifiers);
    QFETCH(int, nodesAfter);
    QFETCH(QString, label);
    Canvas canvas;
    const EntityHolder<Node> material = canvas.addInView(materialClass(), 0);
    const EntityHolder<Node> mesh = canvas.addInView(meshClass(), 300);
    canvas.addInView(instanceClass(), 600);
    mesh->getEntity()->setPropertyValue("material", material->getEntity());
    Canvas::settle();
    const std::size_t entities = canvas.scene->size();
    canvas.item(material)->setSelected(true);
    canvas.item(mesh)->setSelected(true);
    QTest::keyClick(canvas.view.get(), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
    Canvas::settle();

    QCOMPARE(int(canvas.model->getNodeCount()), nodesAfter);
    QCOMPARE(int(canvas.view->getNodeItems().size()), nodesAfter);
    QCOMPARE(canvas.undo->getUndoCount(), std::size_t(1));
    QCOMPARE(QString::fromStdString(canvas.undo->getUndoLabel()), label);
    // Removing leaves the scene's entities and references alone; duplicating wires the copies like the originals.
    QVERIFY(canvas.scene->contains(*material->getEntity()) && canvas.scene->contains(*mesh->getEntity()));
    QCOMPARE(referenceOf(mesh, "material"), material->getEntity());
    QCOMPARE(int(canvas.view->getConnections().size()), nodesAfter > 3 ? 2 : 0);
    if (nodesAfter > 3)
        QCOMPARE(int(canvas.view->getSelectedNodeItems().size()), 2);
    canvas.undo->undo();
    Canvas::settle();
    QCOMPARE(canvas.model->getNodeCount(), std::size_t(3));
    QCOMPARE(canvas.view->getConnections().size(), std::size_t(1));
    QCOMPARE(canvas.scene->size(), entities);
}

void tst_GraphView::dropAddsSceneEntities()
{
    Canvas canvas;
    const EntityHolder<Entity> texture = textureClass().create();
    const EntityHolder<Entity> material = layeredMaterialClass().create();
    material->setPropertyValue("normalMap", texture);
    canvas.scene->addEntity(texture);
    canvas.scene->addEntity(material);
    // A node shown already that uses what is dropped gets its wire too.
    const EntityHolder<Node> mesh = canvas.add(meshClass(), QPointF(50000, 50000));
    mesh->getEntity()->setPropertyValue("material", material);
    Canvas::settle();
    QMimeData data;
    const QByteArray ids = QByteArray::number(qulonglong(texture->getId())) + " 999999 junk "
        + QByteArray::number(qulonglong(material->getId()));
    data.setData(GraphView::ENTITY_IDS_MIME_TYPE, ids);
    const QPoint at(200, 100);
    QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(canvas.view->viewport(), &enter);
    QVERIFY(enter.isAccepted());
    QCOMPARE(canvas.view->getState(), State::DraggingDrop);
    QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(canvas.view->viewport(), &drop);
    QCOMPARE(canvas.view->getState(), State::Idle);

    QCOMPARE(canvas.model->getNodeCount(), std::size_t(3));
    QCOMPARE(canvas.undo->getUndoLabel(), String("Add Node"));
    QCOMPARE(canvas.undo->getUndoCount(), std::size_t(1));
    const EntityHolder<Node> first = canvas.model->findNode(*texture);
    QVERIFY(first && QLineF(first->getPosition(), canvas.view->mapToScene(at)).length() < 1);
    QCOMPARE(canvas.view->getConnections().size(), std::size_t(2));
}

void tst_GraphView::contextMenuAddsNodes_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("label");
    QTest::addColumn<int>("newEntities");
    QTest::newRow("a new entity") << "Add Mesh"
                                  << "Create Node" << 1;
    QTest::newRow("one of the scene") << "Shown nowhere (Texture)"
                                      << "Add Node" << 0;
}

void tst_GraphView::contextMenuAddsNodes()
{
    QFETCH(QString, entry);
    QFETCH(QString, label);
    QFETCH(int, newEntities);
    Canvas canvas;
    const EntityHolder<Entity> hidden = textureClass().create();
    hidden->setPropertyValue("name", String("Shown nowhere"));
    canvas.scene->addEntity(hidden);
    canvas.addInView(materialClass(), 0);
    const std::size_t entities = canvas.scene->size();
    // The menu runs its own event loop: the entry is chosen from inside it, as a user would.
    QStringList offered;
    QTimer::singleShot(0, [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QVERIFY(menu);
        QList<QAction*> actions = menu->actions();
        for (qsizetype i = 0; i < actions.size(); ++i) {
            offered.append(actions[i]->text());
            if (QMenu* submenu = actions[i]->menu())
                actions.append(submenu->actions());
        }
        const auto chosen
            = std::find_if(actions.begin(), actions.end(), [&](QAction* a) { return a->text() == entry; });
        QVERIFY(chosen != actions.end());
        (*chosen)->trigger();
        menu->close();
    });
    const QPoint at(500, 400);
    QTest::mouseClick(canvas.view->viewport(), Qt::RightButton, {}, at);

    QVERIFY(offered.contains("Add Texture") && offered.contains("Add LayeredMaterial"));
    QVERIFY(!offered.contains("Add GraphModel"));
    QCOMPARE(canvas.scene->size(), entities + std::size_t(newEntities) + 1); // and the node record
    QCOMPARE(canvas.model->getNodeCount(), std::size_t(2));
    QCOMPARE(QString::fromStdString(canvas.undo->getUndoLabel()), label);
    const NodeItem* added = canvas.view->getSelectedNodeItems().at(0);
    QVERIFY(QLineF(added->pos(), canvas.view->mapToScene(at)).length() < 1);
    canvas.undo->undo();
    QCOMPARE(canvas.scene->size(), entities);
    QCOMPARE(canvas.model->getNodeCount(), std::size_t(1));
}

void tst_GraphView::statesAreReported()
{
    Canvas canvas;
    const EntityHolder<Node> texture = canvas.addInView(textureClass(), 0);
    const EntityHolder<Node> material = canvas.addInView(layeredMaterialClass(), 300);
    Array<State> states;
    const CallbackLifetime lifetime = canvas.view->addStateChangedObserver([&](State s) { states.push_back(s); });
    // The middle button drags the canvas with the mouse.
    const QPointF corner = canvas.view->mapToScene(QPoint(0, 0));
    canvas.drag(QPoint(700, 500), QPoint(650, 450), Qt::MiddleButton);
    QCOMPARE(canvas.view->mapToScene(QPoint(0, 0)) - corner, QPointF(50, 50));
    canvas.view->onModifierKeysChange(Qt::ControlModifier | Qt::AltModifier);
    canvas.view->onModifierKeysChange(Qt::AltModifier);
    // With Alt held a wire can be drawn from anywhere on a node.
    canvas.drag(canvas.pixel(canvas.item(texture), { 100, 30 }), canvas.inSlot(material, "normalMap"));
    canvas.view->onModifierKeysChange(Qt::NoModifier);
    const Array<State> expected { State::Panning, State::Idle, State::SelectTree, State::ConnectFromNode,
        State::Connecting, State::ConnectFromNode, State::Idle };
    QCOMPARE(states, expected);
    QCOMPARE(referenceOf(material, "normalMap"), texture->getEntity());
}

void tst_GraphView::thumbnailsFollowTheZoom()
{
    auto manager = makeSharedPtr<ThumbnailManager>();
    const EntityClassInfo classes[] = { textureClass() };
    manager->registerProvider(classes, {}, makeSharedPtr<GreyProvider>());
    Canvas canvas(manager);
    const EntityHolder<Node> texture = canvas.addInView(textureClass(), 0);
    const EntityHolder<Node> mesh = canvas.addInView(meshClass(), 300);
    // Only an entity that can have a picture makes room for one: the node's width less the margins, square.
    QCOMPARE(canvas.item(mesh)->getHeaderHeight(), NodeItem::TITLE_HEIGHT);
    QCOMPARE(canvas.item(texture)->getHeaderHeight(), NodeItem::TITLE_HEIGHT + 206 + 7);
    QCOMPARE(canvas.item(texture)->inSlotPosition("source").y(), NodeItem::TITLE_HEIGHT + 206 + 7 + 15);
    for (const double zoom : { 1.0, 0.5, 0.3 }) {
        canvas.view->zoom(QPointF(400, 300), zoom, false);
        const int side = int(std::round(zoom * 206));
        QCOMPARE(canvas.view->getThumbnailSize(), side);
        QCOMPARE(canvas.view->getThumbnailClient()->getThumbnailSize(), QSize(side, side));
    }
    manager->shutdownProviders();
}

void tst_GraphView::rearrangeLaysOutAlongTheWires_data()
{
    QTest::addColumn<bool>("selectionOnly");
    QTest::newRow("all") << false;
    QTest::newRow("selection") << true;
}

void tst_GraphView::rearrangeLaysOutAlongTheWires()
{
    QFETCH(bool, selectionOnly);
    Canvas canvas;
    const Array<EntityHolder<Entity>> entities = populateMaterialNetwork(*canvas.scene);
    for (std::size_t i = 0; i < entities.size(); ++i)
        canvas.model->getOrCreateNode(entities[i], QPointF(1000.0 + 37.0 * double(i % 5), 900.0 + 11.0 * double(i)));
    Canvas::settle();
    const Array<NodeItem*> all = canvas.view->getNodeItems();
    Array<QPointF> before;
    for (const NodeItem* item : all)
        before.push_back(item->pos());
    Array<NodeItem*> arranged = all;
    if (selectionOnly) {
        arranged.assign(all.begin(), all.begin() + 6);
        for (NodeItem* item : arranged)
            item->setSelected(true);
    }
    const QPointF centre = selectionOnly ? GraphView::nodeItemsBoundingRect(arranged).center() : QPointF(50000, 50000);
    if (selectionOnly)
        canvas.view->onRearrangeSelection();
    else
        canvas.view->rearrange();
    Canvas::settle();

    QCOMPARE(canvas.undo->getUndoCount(), std::size_t(1));
    QCOMPARE(canvas.undo->getUndoLabel(), String("Rearrange Nodes"));
    QVERIFY(QLineF(GraphView::nodeItemsBoundingRect(arranged).center(), centre).length() <= 1.5);
    for (std::size_t i = 0; i < all.size(); ++i) {
        const NodeItem* item = all[i];
        QCOMPARE(item->getNode()->getPosition(), item->pos());
        QCOMPARE(item->x(), std::round(item->x()));
        if (std::find(arranged.begin(), arranged.end(), item) == arranged.end())
            QCOMPARE(item->pos(), before[i]);
    }
    const auto geometry = [](const NodeItem* item) { return item->sceneBoundingRect().adjusted(1, 1, -1, -1); };
    for (const NodeItem* a : arranged)
        for (const NodeItem* b : arranged)
            QVERIFY(a == b || !geometry(a).intersects(geometry(b)));
    // Every wire between arranged nodes runs from left to right.
    for (const ConnectionItem* wire : canvas.view->getConnections()) {
        const NodeItem* from = wire->getFrom();
        const NodeItem* to = wire->getTo().second;
        if (std::count(arranged.begin(), arranged.end(), from) && std::count(arranged.begin(), arranged.end(), to))
            QVERIFY(from->x() + NodeItem::WIDTH < to->x());
    }
    if (!selectionOnly)
        QVERIFY(QLineF(canvas.view->mapFromScene(centre), QPointF(400, 300)).length() <= 2);
    canvas.undo->undo();
    Canvas::settle();
    for (std::size_t i = 0; i < all.size(); ++i)
        QCOMPARE(all[i]->pos(), before[i]);
}

QTEST_MAIN(tst_GraphView)
#include "tst_GraphView.moc"
