#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>
#include <MarlixTestScene/TestScene.h>

#include <QImage>
#include <QTest>

using namespace Marlix;
using namespace Marlix::Widgets;
using namespace Marlix::TestScene;

namespace {

const QColor WIRE_COLOR(255, 255, 0);

// Whether the wire colour is within a pixel of `at`: a hairline may land on either side of a rounded position.
bool wireNear(const QImage& image, QPoint at)
{
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx)
            if (image.rect().contains(at + QPoint(dx, dy)) && image.pixelColor(at + QPoint(dx, dy)) == WIRE_COLOR)
                return true;
    return false;
}

} // namespace

/// Wires look the same whether their items draw them or, from far away, the view's cached layer does, and they follow
/// every change of the graph in either case.
class tst_WireLayer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        LibQt::startup("tst_WireLayer");
        registerTypes();
    }
    void cleanupTestCase() { LibQt::shutdown(); }

    void wiresFollowTheGraph_data();
    void wiresFollowTheGraph();
};

void tst_WireLayer::wiresFollowTheGraph_data()
{
    QTest::addColumn<double>("zoom");
    QTest::addColumn<QString>("change");
    for (const double zoom : { 1.0, 0.125 }) {
        const QByteArray distance = zoom < 1.0 ? "far: " : "near: ";
        QTest::newRow(distance + "a node moves") << zoom << QStringLiteral("move");
        QTest::newRow(distance + "a node is dragged") << zoom << QStringLiteral("drag");
        QTest::newRow(distance + "the reference is cleared") << zoom << QStringLiteral("disconnect");
        QTest::newRow(distance + "a wire is hidden") << zoom << QStringLiteral("hide");
        QTest::newRow(distance + "the view pans") << zoom << QStringLiteral("pan");
    }
}

void tst_WireLayer::wiresFollowTheGraph()
{
    QFETCH(double, zoom);
    QFETCH(QString, change);
    SharedPtr<EntityGraphTracker> scene = makeSharedPtr<EntityGraphTracker>();
    EntityHolder<GraphModel> model = makeSharedPtr<GraphModel>();
    scene->addEntity(model);
    model->setScene(scene);
    const auto add = [&scene](const EntityClassInfo& entityClass) {
        const EntityHolder<Entity> entity = entityClass.create();
        scene->addEntity(entity);
        return entity;
    };
    const EntityHolder<Entity> texture = add(textureClass());
    const EntityHolder<Entity> material = add(layeredMaterialClass());
    material->setPropertyValue("baseColorMap", texture);
    // Far apart, so the middle of the wire is nowhere near a node, and a second, longer wire above it, so that the
    // changes below stay inside the area the wires covered before.
    const QPointF centre(50000.0, 50000.0);
    const double reach = 1000.0 / zoom;
    model->getOrCreateNode(texture, centre - QPointF(reach, 0.0));
    model->getOrCreateNode(material, centre + QPointF(reach, 0.0));
    const EntityHolder<Entity> otherTexture = add(textureClass());
    const EntityHolder<Entity> otherMaterial = add(layeredMaterialClass());
    otherMaterial->setPropertyValue("baseColorMap", otherTexture);
    model->getOrCreateNode(otherTexture, centre - QPointF(1.5 * reach, 250.0 / zoom));
    model->getOrCreateNode(otherMaterial, centre + QPointF(1.5 * reach, -250.0 / zoom));

    GraphView view(model, nullptr, nullptr);
    view.resize(800, 600);
    view.show();
    view.zoom(QPointF(400.0, 300.0), zoom, false);
    view.centerOn(centre);
    QCoreApplication::processEvents();
    QCOMPARE(view.getConnections().size(), std::size_t(2));
    ConnectionItem* wire = view.getConnections().front();
    QCOMPARE(wire->getTo().second->getNode()->getEntity(), material);
    const auto middle = [&view, &wire] { return view.mapFromScene(wire->getPath().pointAtPercent(0.5)); };
    const QPoint before = middle();
    QVERIFY(wireNear(view.viewport()->grab().toImage(), before));

    if (change == "move") {
        wire->getFrom()->setPos(wire->getFrom()->pos() + QPointF(0.0, -120.0 / zoom));
        QVERIFY(middle() != before);
        QVERIFY(wireNear(view.viewport()->grab().toImage(), middle()));
    } else if (change == "drag") {
        // The wires of a dragged node draw themselves while it moves, and go back into the layer when it lands.
        const QPoint grip = view.mapFromScene(wire->getFrom()->scenePos() + QPointF(110.0, 20.0));
        QTest::mousePress(view.viewport(), Qt::LeftButton, {}, grip);
        QTest::mouseMove(view.viewport(), grip + QPoint(0, -60));
        QTest::mouseMove(view.viewport(), grip + QPoint(0, -120));
        QVERIFY(middle() != before);
        QVERIFY(wireNear(view.viewport()->grab().toImage(), middle()));
        QVERIFY(!wireNear(view.viewport()->grab().toImage(), before));
        QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, grip + QPoint(0, -120));
        QCoreApplication::processEvents();
        QVERIFY(wireNear(view.viewport()->grab().toImage(), middle()));
    } else if (change == "disconnect") {
        material->setPropertyValue("baseColorMap", EntityHolder<Entity>());
        QCoreApplication::processEvents();
        QCOMPARE(view.getConnections().size(), std::size_t(1));
    } else if (change == "pan") {
        // The start of the wire, left of the screen and of what the layer drew at first, comes into view step by step.
        for (int step = 0; step < 7; ++step) {
            view.updateViewportScrolling(QPointF(100.0, 0.0), true);
            view.viewport()->grab();
        }
        const QPoint start = view.mapFromScene(wire->getPath().pointAtPercent(0.05));
        QVERIFY(view.viewport()->rect().contains(start));
        QVERIFY(wireNear(view.viewport()->grab().toImage(), start));
        return;
    } else {
        wire->hide();
    }
    QVERIFY(!wireNear(view.viewport()->grab().toImage(), before));
}

QTEST_MAIN(tst_WireLayer)
#include "tst_WireLayer.moc"
