#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>
#include <MarlixTestScene/TestScene.h>

#include <QImage>
#include <QPainter>
#include <QStyleOptionGraphicsItem>
#include <QTest>

#include <functional>

using namespace Marlix;
using namespace Marlix::Widgets;

namespace {

struct Graph
{
    SharedPtr<EntityGraphTracker> scene = makeSharedPtr<EntityGraphTracker>();
    EntityHolder<GraphModel> model = makeSharedPtr<GraphModel>();
    Graph() { model->setScene(scene); }
    EntityHolder<Node> add(const EntityClassInfo& entityClass, QPointF position = {})
    {
        const EntityHolder<Entity> entity = entityClass.create();
        scene->addEntity(entity);
        return model->getOrCreateNode(entity, position);
    }
};

struct PathShape
{
    int lines = 0;
    int curves = 0;
};

PathShape shapeOf(const QPainterPath& path)
{
    PathShape shape;
    for (int i = 0; i < path.elementCount(); ++i) {
        shape.lines += path.elementAt(i).isLineTo() ? 1 : 0;
        shape.curves += path.elementAt(i).isCurveTo() ? 1 : 0;
    }
    return shape;
}

int countPixels(const QImage& image, const QRect& area, const std::function<bool(QColor)>& test)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            count += test(image.pixelColor(x, y)) ? 1 : 0;
    return count;
}

} // namespace

class tst_GraphItems : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        LibQt::startup("tst_GraphItems");
        TestScene::registerTypes();
    }
    void cleanupTestCase() { LibQt::shutdown(); }

    void nodeGeometry_data();
    void nodeGeometry();
    void slotHitTests();
    void wirePath_data();
    void wirePath();
    void wireFollowsItsEnds();
    void levelsOfDetail_data();
    void levelsOfDetail();
};

void tst_GraphItems::nodeGeometry_data()
{
    QTest::addColumn<QString>("className");
    QTest::addColumn<int>("inputs");
    QTest::newRow("no inputs") << "Material" << 0;
    QTest::newRow("one input") << "Mesh" << 1;
    QTest::newRow("four inputs") << "LayeredMaterial" << 4;
}

void tst_GraphItems::nodeGeometry()
{
    QFETCH(QString, className);
    QFETCH(int, inputs);
    Graph graph;
    const EntityClassInfo entityClass = *TypeDatabase::instance().lookupEntityClass(className.toStdString());
    NodeItem item(graph.add(entityClass), nullptr);

    QCOMPARE(int(item.getInputSlots().size()), inputs);
    const double header = item.getHeaderHeight();
    const QRectF geometry(0, 0, 220, inputs * 20 + header + 10);
    QCOMPARE(item.geometryBoundingRect(), geometry);
    QCOMPARE(item.boundingRect(), geometry.adjusted(-1, -1, 1, 1));
    QCOMPARE(int(item.getSeparators().size()), std::max(inputs - 1, 0));
    for (std::size_t k = 0; k < item.getSeparators().size(); ++k)
        QCOMPARE(item.getSeparators()[k], QLineF(15, header + 25.5 + 20.0 * k, 205, header + 25.5 + 20.0 * k));

    // Slots sit on the node's edges, the output in the header and each input centred on its own row.
    QVERIFY(item.outSlotPosition().x() > 200 && item.outSlotPosition().y() < header);
    for (int row = 0; row < inputs; ++row) {
        const QPointF centre = item.inSlotPosition(item.getInputSlots()[row].getProperty());
        QVERIFY(centre.x() < 20);
        QCOMPARE(centre.y(), header + 5 + 20 * row + 10);
    }
    QCOMPARE(item.inSlotPosition("nonexistent"), QPointF(0, 0));
    QVERIFY(item.getInputSlot("nonexistent") == nullptr);
}

void tst_GraphItems::slotHitTests()
{
    Graph graph;
    NodeItem item(graph.add(TestScene::layeredMaterialClass(), QPointF(100, 50)), nullptr);
    QCOMPARE(item.pos(), QPointF(100, 50));
    const QPointF origin = item.pos();
    QCOMPARE(item.getSlotOnPosition(origin + item.outSlotPosition()), &item.getOutputSlot());
    for (const NodeItem::InputSlot& slot : item.getInputSlots()) {
        const QPointF centre = origin + item.inSlotPosition(slot.getProperty());
        QCOMPARE(item.getSlotOnPosition(centre), &slot);
        QCOMPARE(item.getSlotOnPosition(centre + QPointF(4.5, 0)), &slot);
        QVERIFY(item.getSlotOnPosition(centre + QPointF(6, 0)) == nullptr);
        QCOMPARE(item.getInputSlot(slot.getProperty()), &slot);
    }
    QVERIFY(item.getSlotOnPosition(origin + QPointF(110, 1)) == nullptr);
    QVERIFY(item.getSlotOnPosition(item.outSlotPosition()) == nullptr);
}

void tst_GraphItems::wirePath_data()
{
    QTest::addColumn<QPointF>("start");
    QTest::addColumn<QPointF>("end");
    QTest::addColumn<int>("lines");
    QTest::addColumn<int>("curves");
    // Half the rounded corner of a wire that runs back at mid-height; 0 where it does not.
    QTest::addColumn<double>("halfCorner");
    QTest::newRow("level: straight") << QPointF(0, 0) << QPointF(300, 0) << 0 << 2 << 0.0;
    QTest::newRow("forward, down") << QPointF(0, 0) << QPointF(300, 200) << 1 << 2 << 0.0;
    QTest::newRow("forward, up") << QPointF(0, 300) << QPointF(300, 10) << 1 << 2 << 0.0;
    QTest::newRow("back, far below") << QPointF(300, 0) << QPointF(0, 120) << 3 << 4 << 15.0;
    QTest::newRow("back, corner capped") << QPointF(300, 0) << QPointF(0, 400) << 3 << 4 << 20.0;
    QTest::newRow("back, very far above") << QPointF(300, 5000) << QPointF(0, 0) << 3 << 4 << 20.0;
    QTest::newRow("slightly back: bend") << QPointF(0, 0) << QPointF(20, 100) << 1 << 4 << 0.0;
}

void tst_GraphItems::wirePath()
{
    QFETCH(QPointF, start);
    QFETCH(QPointF, end);
    QFETCH(int, lines);
    QFETCH(int, curves);
    QFETCH(double, halfCorner);
    const QPainterPath path = makeConnectionPath(start, end);
    QCOMPARE(QPointF(path.elementAt(0)), start + QPointF(5, 0));
    QCOMPARE(QPointF(path.elementAt(path.elementCount() - 1)), end - QPointF(5, 0));
    QCOMPARE(shapeOf(path).lines, lines);
    QCOMPARE(shapeOf(path).curves, curves);
    // Leaves and enters horizontally.
    QCOMPARE(path.elementAt(1).y, start.y());
    QCOMPARE(path.elementAt(path.elementCount() - 2).y, end.y());

    // Never overshoots vertically; runs only rightwards when the target is to the right.
    const double direction = end.y() >= start.y() ? 1.0 : -1.0;
    QPointF previous = path.pointAtPercent(0);
    for (int i = 1; i <= 100; ++i) {
        const QPointF point = path.pointAtPercent(i / 100.0);
        QVERIFY2((point.y() - previous.y()) * direction >= -1e-9, qPrintable(QString::number(i)));
        if (end.x() - start.x() > 100)
            QVERIFY(point.x() >= previous.x() - 1e-9);
        previous = point;
    }
    if (start.y() == end.y())
        QCOMPARE(path.boundingRect().height(), 0.0);

    if (halfCorner == 0.0)
        return;
    // The run back is the horizontal line at mid-height; the corner before it spans `halfCorner` both ways.
    const double middle = (start.y() + end.y()) / 2;
    int found = -1;
    for (int i = 1; i < path.elementCount(); ++i)
        if (path.elementAt(i).isLineTo() && path.elementAt(i).y == middle && path.elementAt(i - 1).y == middle)
            found = i;
    QVERIFY(found > 4);
    const QPointF runStart = path.elementAt(found - 1);
    const QPointF cornerStart = path.elementAt(found - 4);
    QVERIFY(QLineF(path.elementAt(found).x, middle, runStart.x(), middle).length() > 0);
    QCOMPARE(runStart.x() - cornerStart.x(), -halfCorner);
    QCOMPARE(std::abs(runStart.y() - cornerStart.y()), halfCorner);
}

void tst_GraphItems::wireFollowsItsEnds()
{
    Graph graph;
    const EntityHolder<Node> texture = graph.add(TestScene::textureClass(), QPointF(0, 0));
    const EntityHolder<Node> material = graph.add(TestScene::layeredMaterialClass(), QPointF(400, 100));
    NodeItem from(texture, nullptr);
    NodeItem to(material, nullptr);
    ConnectionItem wire(&from, &to, "roughnessMap");
    connect(&from, &NodeItem::positionChanged, &wire, &ConnectionItem::onNodeItemPositionChange);
    connect(&to, &NodeItem::positionChanged, &wire, &ConnectionItem::onNodeItemPositionChange);
    const auto expected = [&] {
        return makeConnectionPath(from.pos() + from.outSlotPosition(), to.pos() + to.inSlotPosition("roughnessMap"));
    };
    QCOMPARE(wire.getPath(), expected());
    QCOMPARE(wire.boundingRect(), wire.getPath().controlPointRect().adjusted(-1, -1, 1, 1));

    to.setPos(-300, 250);
    QCOMPARE(wire.getPath(), expected());
    from.setPos(20, -80);
    QCOMPARE(wire.getPath(), expected());

    // With an end gone the wire keeps the path it had.
    auto* gone = new NodeItem(graph.add(TestScene::textureClass()), nullptr);
    ConnectionItem orphan(gone, &to, "normalMap");
    connect(&to, &NodeItem::positionChanged, &orphan, &ConnectionItem::onNodeItemPositionChange);
    const QPainterPath kept = orphan.getPath();
    delete gone;
    to.setPos(0, 0);
    QCOMPARE(orphan.getPath(), kept);
    QCOMPARE(wire.getPath(), expected());
}

void tst_GraphItems::levelsOfDetail_data()
{
    QTest::addColumn<double>("scale");
    QTest::addColumn<bool>("text");
    QTest::addColumn<bool>("bar");
    QTest::newRow("near: text and separators") << 1.0 << true << false;
    QTest::newRow("middle: bars") << 0.3 << false << true;
    QTest::newRow("far: no labels") << 0.1 << false << false;
}

void tst_GraphItems::levelsOfDetail()
{
    QFETCH(double, scale);
    QFETCH(bool, text);
    QFETCH(bool, bar);
    Graph graph;
    NodeItem item(graph.add(TestScene::layeredMaterialClass()), nullptr);
    QImage image(240, 400, QImage::Format_RGB32);
    image.fill(Qt::black);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(scale, scale);
        QStyleOptionGraphicsItem option;
        item.paint(&painter, &option, nullptr);
    }
    const QColor fill(64, 64, 64);
    const auto device
        = [scale](const QRectF& rect) { return QRectF(rect.topLeft() * scale, rect.size() * scale).toAlignedRect(); };
    const NodeItem::InputSlot& firstRow = item.getInputSlots().front();
    // The free label colour (90, 90, 90) or antialiased text lighter than the fill, anywhere on the first label.
    const QRect label = device(firstRow.getLabelRect()).adjusted(0, 1, 0, -1);
    const int lighter = countPixels(image, label, [&](QColor c) { return c.red() > fill.red() + 4; });
    QCOMPARE(lighter > 0, text || bar);
    const QPointF separator = QPointF(110, item.getSeparators().front().y1()) * scale;
    const QColor at = image.pixelColor(int(separator.x()), int(separator.y()));
    QCOMPARE(at, text ? QColor(80, 80, 80) : fill);
}

QTEST_MAIN(tst_GraphItems)
#include "tst_GraphItems.moc"
