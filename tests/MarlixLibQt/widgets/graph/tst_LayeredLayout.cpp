#include <MarlixLibQt/widgets/graph/LayeredLayout.h>

#include <MarlixLib/base/Exception.h>

#include <QTest>

#include <cmath>
#include <limits>
#include <numeric>
#include <random>

using namespace Marlix;
using namespace Marlix::Widgets;

namespace {

using Positions = Array<std::array<float, 2>>;
using Layers = Array<std::uint32_t>;

/// Nodes 100 wide with the given heights, stacked in the given starting heights.
Array<LayoutNode> makeNodes(const Array<float>& heights, const Array<float>& ys)
{
    Array<LayoutNode> nodes;
    for (std::size_t i = 0; i < heights.size(); ++i)
        nodes.push_back({ 100.0f, heights[i], 0.0f, ys[i] });
    return nodes;
}

Array<LayoutNode> uniformNodes(const Array<float>& ys)
{
    return makeNodes(Array<float>(ys.size(), 60.0f), ys);
}

Positions startPositions(const Array<LayoutNode>& nodes)
{
    Positions positions;
    for (const LayoutNode& node : nodes)
        positions.push_back({ node.x, node.y });
    return positions;
}

bool overlap(const LayoutNode& a, const std::array<float, 2>& pa, const LayoutNode& b, const std::array<float, 2>& pb)
{
    return pa[0] < pb[0] + b.width && pb[0] < pa[0] + a.width && pa[1] < pb[1] + b.height && pb[1] < pa[1] + a.height;
}

/// The rules every layout keeps: no overlaps, a box from (0, 0), wires left to right except `backwards` (any if empty).
void verifyLayout(const Array<LayoutNode>& nodes, const Array<LayoutEdge>& edges, const LayeredLayoutResult& result,
    Optional<std::size_t> backwards = 0)
{
    QCOMPARE(result.positions.size(), nodes.size());
    QCOMPARE(result.layers.size(), nodes.size());
    float left = std::numeric_limits<float>::max(), top = left;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        left = std::min(left, result.positions[i][0]);
        top = std::min(top, result.positions[i][1]);
        for (std::size_t j = i + 1; j < nodes.size(); ++j)
            QVERIFY2(!overlap(nodes[i], result.positions[i], nodes[j], result.positions[j]),
                qPrintable(QStringLiteral("nodes %1 and %2 overlap").arg(i).arg(j)));
    }
    if (!nodes.empty()) {
        QCOMPARE(left, 0.0f);
        QCOMPARE(top, 0.0f);
    }
    std::size_t reversed = 0;
    for (const LayoutEdge& edge : edges) {
        if (edge.from == edge.to)
            continue;
        const bool forward = result.layers[edge.from] < result.layers[edge.to];
        reversed += forward ? 0 : 1;
        const auto [before, after] = forward ? std::pair(edge.from, edge.to) : std::pair(edge.to, edge.from);
        QVERIFY(result.positions[before][0] + nodes[before].width <= result.positions[after][0]);
    }
    if (backwards)
        QCOMPARE(reversed, *backwards);
    QCOMPARE(result.crossings, countLayerCrossings(nodes, edges, result.layers, result.positions));
}

} // namespace

class TestLayeredLayout : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fixtures_data()
    {
        QTest::addColumn<Array<LayoutNode>>("nodes");
        QTest::addColumn<Array<LayoutEdge>>("edges");
        QTest::addColumn<Layers>("layers");
        QTest::addColumn<std::size_t>("crossings");
        QTest::newRow("chain") << uniformNodes({ 0, 0, 0, 0 })
                               << Array<LayoutEdge> { { 0, 1, 0 }, { 1, 2, 0 }, { 2, 3, 0 } } << Layers { 0, 1, 2, 3 }
                               << std::size_t(0);
        QTest::newRow("diamond") << uniformNodes({ 0, 200, 0, 50 })
                                 << Array<LayoutEdge> { { 0, 1, 0 }, { 0, 2, 0 }, { 1, 3, 0 }, { 2, 3, 1 } }
                                 << Layers { 0, 1, 1, 2 } << std::size_t(0);
        // Leaf 7 feeds the root directly: it sits next to it rather than with the other leaves.
        QTest::newRow("fan-in tree") << uniformNodes({ 0, 0, 0, 0, 0, 0, 0, 0 })
                                     << Array<LayoutEdge> { { 1, 0, 0 }, { 2, 0, 1 }, { 7, 0, 2 }, { 3, 1, 0 },
                                            { 4, 1, 1 }, { 5, 2, 0 }, { 6, 2, 1 } }
                                     << Layers { 2, 1, 1, 0, 0, 0, 0, 1 } << std::size_t(0);
        QTest::newRow("fan-out") << uniformNodes({ 0, 500, 400, 300, 200 })
                                 << Array<LayoutEdge> { { 0, 1, 0 }, { 0, 2, 0 }, { 0, 3, 0 }, { 0, 4, 0 } }
                                 << Layers { 0, 1, 1, 1, 1 } << std::size_t(0);
        QTest::newRow("two components interleaved")
            << uniformNodes({ 0, 100, 50, 150 }) << Array<LayoutEdge> { { 0, 1, 0 }, { 2, 3, 0 } }
            << Layers { 0, 1, 0, 1 } << std::size_t(0);
        QTest::newRow("isolated nodes") << uniformNodes({ 300, 0, 150, 10 }) << Array<LayoutEdge> { { 1, 3, 0 } }
                                        << Layers { 0, 0, 0, 1 } << std::size_t(0);
        // Started crossed: 0 feeds the lower target, 1 the upper one, and the rows of 4 are swapped too.
        QTest::newRow("crossed start") << uniformNodes({ 0, 100, 100, 0, 50 })
                                       << Array<LayoutEdge> { { 0, 2, 0 }, { 1, 3, 0 }, { 2, 4, 1 }, { 3, 4, 0 } }
                                       << Layers { 0, 0, 1, 1, 2 } << std::size_t(0);
        QTest::newRow("long edges")
            << uniformNodes({ 0, 0, 0, 0, 100, 200 })
            << Array<LayoutEdge> { { 0, 1, 0 }, { 1, 2, 0 }, { 2, 3, 0 }, { 0, 3, 1 }, { 4, 3, 2 }, { 5, 2, 1 } }
            << Layers { 0, 1, 2, 3, 2, 1 } << std::size_t(0);
        QTest::newRow("different heights") << makeNodes({ 300, 20, 150, 80, 40 }, { 0, 0, 100, 200, 300 })
                                           << Array<LayoutEdge> { { 1, 0, 0 }, { 2, 0, 1 }, { 3, 0, 2 }, { 4, 3, 0 } }
                                           << Layers { 2, 1, 1, 1, 0 } << std::size_t(0);
        QTest::newRow("repeats and self edges")
            << uniformNodes({ 0, 0, 0 }) << Array<LayoutEdge> { { 0, 1, 0 }, { 0, 1, 0 }, { 1, 1, 0 }, { 1, 2, 0 } }
            << Layers { 0, 1, 2 } << std::size_t(0);
        // Every source feeds every target: any order has the same 9 crossings.
        QTest::newRow("complete bipartite") << uniformNodes({ 0, 100, 200, 0, 100, 200 })
                                            << Array<LayoutEdge> { { 0, 3, 0 }, { 0, 4, 0 }, { 0, 5, 0 }, { 1, 3, 1 },
                                                   { 1, 4, 1 }, { 1, 5, 1 }, { 2, 3, 2 }, { 2, 4, 2 }, { 2, 5, 2 } }
                                            << Layers { 0, 0, 0, 1, 1, 1 } << std::size_t(9);
        QTest::newRow("empty") << Array<LayoutNode> {} << Array<LayoutEdge> {} << Layers {} << std::size_t(0);
    }

    void fixtures()
    {
        QFETCH(Array<LayoutNode>, nodes);
        QFETCH(Array<LayoutEdge>, edges);
        QFETCH(Layers, layers);
        QFETCH(std::size_t, crossings);
        const LayeredLayoutResult result = computeLayeredLayout(nodes, edges);
        verifyLayout(nodes, edges, result);
        if (QTest::currentTestFailed())
            return;
        QCOMPARE(result.layers, layers);
        QVERIFY(result.crossings <= countLayerCrossings(nodes, edges, result.layers, startPositions(nodes)));
        QCOMPARE(result.crossings, crossings);

        const LayeredLayoutResult again = computeLayeredLayout(nodes, edges);
        QCOMPARE(again.positions, result.positions);
        QCOMPARE(again.layers, result.layers);
    }

    // Small seeded graphs, a third of them with loops, rows up to 3 and nodes scattered: the rules of every layout.
    void randomGraphsNeverGetWorse()
    {
        std::mt19937 random(12);
        for (int round = 0; round < 300; ++round) {
            const std::uint32_t count = 2 + random() % 14;
            Array<LayoutNode> nodes;
            for (std::uint32_t i = 0; i < count; ++i)
                nodes.push_back(
                    { 100.0f, 20.0f + float(random() % 200), float(random() % 1000), float(random() % 1000) });
            Array<LayoutEdge> edges;
            for (std::uint32_t e = random() % (2 * count); e > 0; --e) {
                std::uint32_t from = random() % count, to = random() % count;
                if (round % 3 != 0 && from > to)
                    std::swap(from, to);
                edges.push_back({ from, to, std::uint32_t(random() % 3) });
            }
            const LayeredLayoutResult result = computeLayeredLayout(nodes, edges);
            verifyLayout(nodes, edges, result, round % 3 == 0 ? Optional<std::size_t>() : 0);
            if (QTest::currentTestFailed())
                return;
            QVERIFY(result.crossings <= countLayerCrossings(nodes, edges, result.layers, startPositions(nodes)));
        }
    }

    void spacingSeparatesLayersAndNodes()
    {
        const Array<LayoutNode> nodes = makeNodes({ 60, 40, 80 }, { 0, 0, 100 });
        const Array<LayoutEdge> edges { { 0, 1, 0 }, { 0, 2, 0 } };
        const LayeredLayoutResult result = computeLayeredLayout(nodes, edges, 30.0f, 10.0f);
        QCOMPARE(result.positions[1][0], 130.0f);
        QCOMPARE(result.positions[2][1] - result.positions[1][1], 50.0f);
        // The source sits level with the middle of what it feeds.
        QCOMPARE(result.positions[0][1], (result.positions[1][1] + result.positions[2][1]) / 2.0f);
    }

    void componentsKeepTheUsersVerticalOrder()
    {
        const Array<LayoutNode> nodes = uniformNodes({ 300, 0, 150 });
        const LayeredLayoutResult result = computeLayeredLayout(nodes, {});
        QCOMPARE(result.positions, (Positions { { 0, 220 }, { 0, 0 }, { 0, 110 } }));
    }

    void loopsAreLaidOutWithOneWireBackwardsEach()
    {
        const Array<LayoutNode> nodes = uniformNodes({ 0, 0, 0, 0 });
        const Array<LayoutEdge> edges { { 0, 1, 0 }, { 1, 2, 0 }, { 2, 0, 0 }, { 2, 3, 0 }, { 3, 2, 1 } };
        const LayeredLayoutResult result = computeLayeredLayout(nodes, edges);
        verifyLayout(nodes, edges, result, 2);
        if (QTest::currentTestFailed())
            return;
        QCOMPARE(result.layers, (Layers { 0, 1, 2, 3 }));
    }

    void badInputThrows_data()
    {
        QTest::addColumn<Array<LayoutNode>>("nodes");
        QTest::addColumn<Array<LayoutEdge>>("edges");
        QTest::addColumn<float>("spacing");
        const float nan = std::numeric_limits<float>::quiet_NaN();
        const Array<LayoutNode> two = uniformNodes({ 0, 0 });
        QTest::newRow("source out of range") << two << Array<LayoutEdge> { { 0, 1, 0 }, { 2, 1, 0 } } << 50.0f;
        QTest::newRow("target out of range") << two << Array<LayoutEdge> { { 0, 7, 0 } } << 50.0f;
        QTest::newRow("height not a number") << makeNodes({ 60, nan }, { 0, 0 }) << Array<LayoutEdge> {} << 50.0f;
        QTest::newRow("negative width") << Array<LayoutNode> { { -1, 60, 0, 0 } } << Array<LayoutEdge> {} << 50.0f;
        QTest::newRow("position not finite")
            << makeNodes({ 60 }, { std::numeric_limits<float>::infinity() }) << Array<LayoutEdge> {} << 50.0f;
        QTest::newRow("negative spacing") << two << Array<LayoutEdge> {} << -1.0f;
    }

    void badInputThrows()
    {
        QFETCH(Array<LayoutNode>, nodes);
        QFETCH(Array<LayoutEdge>, edges);
        QFETCH(float, spacing);
        QVERIFY_THROWS_EXCEPTION(Exception, computeLayeredLayout(nodes, edges, spacing, 50.0f));
    }

    void crossingCounts_data()
    {
        QTest::addColumn<Array<LayoutEdge>>("edges");
        QTest::addColumn<Layers>("layers");
        QTest::addColumn<std::size_t>("crossings");
        // Nodes 0 and 1 on the left (0 above), 2 and 3 on the right (2 above), 4 between them at height 50.
        QTest::newRow("parallel") << Array<LayoutEdge> { { 0, 2, 0 }, { 1, 3, 0 } } << Layers { 0, 0, 1, 1, 0 }
                                  << std::size_t(0);
        QTest::newRow("crossed") << Array<LayoutEdge> { { 0, 3, 0 }, { 1, 2, 0 } } << Layers { 0, 0, 1, 1, 0 }
                                 << std::size_t(1);
        QTest::newRow("rows against sources")
            << Array<LayoutEdge> { { 0, 2, 1 }, { 1, 2, 0 } } << Layers { 0, 0, 1, 1, 0 } << std::size_t(1);
        QTest::newRow("one output") << Array<LayoutEdge> { { 0, 2, 0 }, { 0, 3, 0 } } << Layers { 0, 0, 1, 1, 0 }
                                    << std::size_t(0);
        // 0 to 3 passes the middle layer at 50, level with 4 but below it, and 4's wire to 2 runs above.
        QTest::newRow("long wire") << Array<LayoutEdge> { { 0, 3, 0 }, { 4, 2, 0 } } << Layers { 0, 0, 2, 2, 1 }
                                   << std::size_t(0);
        QTest::newRow("long wire crossed") << Array<LayoutEdge> { { 1, 2, 0 }, { 0, 4, 0 }, { 4, 3, 0 } }
                                           << Layers { 0, 0, 2, 2, 1 } << std::size_t(1);
        QTest::newRow("same layer") << Array<LayoutEdge> { { 0, 1, 0 }, { 0, 3, 0 } } << Layers { 0, 0, 1, 1, 0 }
                                    << std::size_t(0);
    }

    void crossingCounts()
    {
        QFETCH(Array<LayoutEdge>, edges);
        QFETCH(Layers, layers);
        QFETCH(std::size_t, crossings);
        const Array<LayoutNode> nodes = uniformNodes({ 0, 100, 0, 100, 50 });
        QCOMPARE(countLayerCrossings(nodes, edges, layers, startPositions(nodes)), crossings);
    }

    void countLayerCrossingsRejectsBadLayers()
    {
        const Array<LayoutNode> nodes = uniformNodes({ 0, 100 });
        const Positions positions = startPositions(nodes);
        QVERIFY_THROWS_EXCEPTION(Exception, countLayerCrossings(nodes, {}, Layers { 0 }, positions));
        QVERIFY_THROWS_EXCEPTION(Exception, countLayerCrossings(nodes, {}, Layers { 0, 2 }, positions));
        const Array<LayoutEdge> outside { { 0, 2, 0 } };
        QVERIFY_THROWS_EXCEPTION(Exception, countLayerCrossings(nodes, outside, Layers { 0, 1 }, positions));
        // 3000 wires across 7000 layers would need 21 million pass-through points: refused before any is made.
        const Array<LayoutNode> chain(7000);
        Layers layers(chain.size());
        std::iota(layers.begin(), layers.end(), 0u);
        Array<LayoutEdge> across;
        for (std::uint32_t input = 0; input < 3000; ++input)
            across.push_back({ 0, 6999, input });
        QVERIFY_THROWS_EXCEPTION(Exception, countLayerCrossings(chain, across, layers, Positions(chain.size())));
    }
};

QTEST_GUILESS_MAIN(TestLayeredLayout)
#include "tst_LayeredLayout.moc"
