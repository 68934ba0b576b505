#include <MarlixLib/Lib.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/io/SceneSerializer.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/widgets/graph/GraphModel.h>

#include <MarlixTestScene/TestScene.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

// Reads every input as a scene and works on each node graph in it as the editor would: the index, the inputs and
// sources of every node, connection tests, removal. A graph from a damaged file may hold empty entries, nodes without
// entities or two nodes of one entity; none of that may crash, and the index must answer for every node it keeps.
// Since a scene stream carries a checksum, most damaged inputs stop at reading; so every input is also played as a
// list of edits on a graph of the sample network (adding, connecting, writing the node list wholesale with gaps and
// doubles, removing, undoing), after which the same promises must hold and the scene must still save.
//
// Seeds: started with an empty corpus folder, the target first writes serialized scenes with graphs into it, e.g.
//   mkdir -p build/fuzz/corpus/graph_scene && build/fuzz/fuzz/fuzz_graph_scene build/fuzz/corpus/graph_scene

using namespace Marlix;
using namespace Marlix::Widgets;

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "fuzz_graph_scene: %s\n", what);
    std::abort();
}

void writeSeed(const std::filesystem::path& folder, const char* name, std::size_t networkSize)
{
    auto scene = makeSharedPtr<EntityGraphTracker>();
    const auto entities = networkSize == 0 ? TestScene::populateMaterialNetwork(*scene)
                                           : TestScene::populateNetwork(*scene, networkSize, 7);
    auto graph = makeSharedPtr<GraphModel>();
    scene->addEntity(graph);
    graph->setScene(scene);
    for (std::size_t i = 0; i < entities.size(); ++i)
        graph->getOrCreateNode(entities[i], QPointF(double(i % 5) * 300.0, double(i / 5) * 150.0));
    const auto bytes = SceneSerializer::saveToBytes(*scene);
    std::ofstream(folder / name, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

void writeSeedsInto(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        std::error_code error;
        const std::filesystem::path folder(argv[i]);
        if (argv[i][0] == '-' || !std::filesystem::is_directory(folder, error) || !std::filesystem::is_empty(folder, error))
            continue;
        writeSeed(folder, "material_network_graph.cbor", 0);
        writeSeed(folder, "generated_graph.cbor", 40);
        std::fprintf(stderr, "fuzz_graph_scene: seeds written to %s\n", argv[i]);
    }
}

void exercise(const EntityHolder<GraphModel>& graph)
{
    std::size_t reported = 0;
    const CallbackLifetime lifetime = graph->setModelObserver(
        [&](ArrayView<const EntityHolder<Node>> added, ArrayView<const EntityHolder<Node>> removed) {
            reported += added.size() + removed.size();
        });
    const auto nodes = graph->getNodes();
    if (nodes.size() != graph->getNodeCount())
        fail("the node count disagrees with the nodes");
    for (const auto& node : nodes) {
        node->synchronize(Node::Synchronize::Everything);
        (void)node->getTitle();
        (void)node->getPosition();
        for (const auto& [property, label, connected] : node->getAvailableInputs())
            if (connected && !node->getInputSource(property))
                fail("a connected input has no source");
        const auto entity = node->getEntity();
        if (!entity)
            continue;
        const auto found = graph->findNode(*entity);
        if (!found || found->getEntity() != entity)
            fail("the index does not find a node's entity");
    }
    // A few connection tests between neighbours, as a drag over the canvas asks them.
    for (std::size_t i = 0; i + 1 < nodes.size() && i < 16; ++i)
        for (const auto& [property, label, connected] : nodes[i + 1]->getAvailableInputs())
            (void)nodes[i + 1]->canConnectProperty(nodes[i], property);
    if (!nodes.empty()) {
        graph->removeNodes(ArrayView<const EntityHolder<Node>>(nodes.data(), (nodes.size() + 1) / 2));
        if (reported == 0)
            fail("removing nodes was not reported");
    }
}

/// Reads bytes off the input; zero once it is used up.
struct Reader
{
    const std::uint8_t* data;
    std::size_t size;
    std::uint8_t next()
    {
        if (size == 0)
            return 0;
        --size;
        return *data++;
    }
};

void play(Reader in)
{
    auto scene = makeSharedPtr<EntityGraphTracker>();
    const auto entities = TestScene::populateMaterialNetwork(*scene);
    auto graph = makeSharedPtr<GraphModel>();
    scene->addEntity(graph);
    graph->setScene(scene);
    UndoManager undo;
    const auto nodeAt = [&](std::uint8_t pick) -> EntityHolder<Node> {
        const auto nodes = graph->getNodes();
        return nodes.empty() ? nullptr : nodes[pick % nodes.size()];
    };
    for (int step = 0; step < 64 && in.size > 0; ++step) {
        const std::uint8_t op = in.next();
        auto action = undo.createAction("Edit");
        switch (op % 7) {
        case 0:
            graph->getOrCreateNode(entities[in.next() % entities.size()], QPointF(in.next() * 10.0, in.next() * -7.5));
            break;
        case 1: {
            // The list written wholesale, as a host or a stream may: gaps, doubles, nodes the index never saw.
            Array<EntityHolder<Entity>> list;
            for (std::uint8_t count = in.next() % 12; count > 0; --count) {
                const std::uint8_t pick = in.next();
                if (pick == 0xff)
                    list.push_back(nullptr);
                else if (pick >= 0xc0)
                    list.push_back(makeSharedPtr<Node>(entities[pick % entities.size()], graph));
                else if (const auto node = nodeAt(pick))
                    list.push_back(node);
            }
            graph->setPropertyValue(GraphModel::NODES, list);
            break;
        }
        case 2: {
            const auto from = nodeAt(in.next());
            const auto to = nodeAt(in.next());
            if (!from || !to)
                break;
            const auto inputs = to->getAvailableInputs();
            if (inputs.empty())
                break;
            const String property = std::get<0>(inputs[in.next() % inputs.size()]);
            if (to->canConnectProperty(from, property))
                to->connectProperty(from, property);
            break;
        }
        case 3:
            if (const auto node = nodeAt(in.next()))
                for (const auto& [property, label, connected] : node->getAvailableInputs())
                    if (connected)
                        node->disconnectProperty(property);
            break;
        case 4:
            if (const auto node = nodeAt(in.next()))
                graph->removeNodes(std::array { node });
            break;
        case 5: {
            // A few nodes at a time: copies of everything would double the graph at every step.
            auto nodes = graph->getNodes();
            nodes.resize(std::min<std::size_t>(nodes.size(), 1 + in.next() % 4));
            graph->duplicateNodes(nodes, QPointF(in.next(), in.next()));
            break;
        }
        default:
            action.commit();
            if (in.next() % 2 == 0 && undo.canUndo())
                undo.undo();
            else if (undo.canRedo())
                undo.redo();
            continue;
        }
        action.commit();
    }
    exercise(graph);
    // Connections that passed the test never close a loop, so the scene still saves.
    (void)SceneSerializer::saveToBytes(*scene);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    Lib::startup();
    TestScene::registerTypes();
    TypeDatabase::instance().registerModuleTypes(LibQt::getDataTypesRecord());
    writeSeedsInto(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ArrayView<const std::byte> bytes(reinterpret_cast<const std::byte*>(data), size);
    const auto read = SceneSerializer::readFromBytes(bytes);
    if (read)
        for (const auto& entity : *read)
            if (auto graph = std::dynamic_pointer_cast<GraphModel>(entity))
                exercise(graph);
    play({ data, size });
    return 0;
}
