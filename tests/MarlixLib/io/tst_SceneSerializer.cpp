#include <MarlixLib/Lib.h>
#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/EntityReferences.h>
#include <MarlixLib/io/CborDeserializer.h>
#include <MarlixLib/io/CborSerializer.h>
#include <MarlixLib/io/SceneSerializer.h>

#include <MarlixTestScene/TestScene.h>

#include <QtTest/QTest>

#include <set>

using namespace Marlix;
using namespace Marlix::TestScene;

namespace {
int liveNodes = 0;

/// Counts its instances, so a test sees whether loaded entities are freed.
class CountedNode final : public Entity
{
public:
    explicit CountedNode(const EntityClassInfo& entityClass)
        : Entity(entityClass)
    {
        ++liveNodes;
    }
    ~CountedNode() override { --liveNodes; }
};

/// A class whose references may lead back to the same class: "next" (one reference) and "children" (a list).
const EntityClassInfo& nodeClass()
{
    static const EntityClassInfo base("NodeBase", EntityClassInfo::entityClass(), {}, nullptr);
    static const EntityClassInfo info = [] {
        const auto reference = TypeDefinition::makeEntityReference("NodeReference", base);
        return EntityClassInfo("Node", base,
            { makeSharedPtr<const GroupLayout>("Node",
                Array<PropertyDefinition> {
                    PropertyDefinition("next", reference),
                    PropertyDefinition("children", TypeDefinition::makeList<EntityHolder<Entity>>("NodeList", reference)),
                }) },
            [](const EntityClassInfo& entityClass) -> SharedPtr<Entity> { return makeSharedPtr<CountedNode>(entityClass); });
    }();
    return info;
}

const TypeModuleRecord& nodeModule()
{
    static const TypeModuleRecord record = [] {
        TypeModuleRecord made("TestSceneSerializerNodes");
        made.addEntityClass(*nodeClass().getBaseClass());
        made.addEntityClass(nodeClass());
        return made;
    }();
    return record;
}

/// A target scene and what it held before a load, to prove a failed load changed nothing.
struct Guarded
{
    EntityGraphTracker scene;
    Array<EntityHolder<Entity>> members;
    Array<EntityHolder<Entity>> copies;
    int notifications = 0;
    CallbackLifetime lifetime;

    Guarded()
    {
        auto material = materialClass().create();
        material->setPropertyValue("name", String("Existing"));
        scene.addEntity(material);
        auto mesh = meshClass().create();
        mesh->setPropertyValue("material", material);
        scene.addEntity(mesh);
        for (const auto& entity : scene.getEntities()) {
            members.push_back(entity);
            copies.push_back(entity->clone());
        }
        lifetime = scene.addObserver([this](auto, auto) { ++notifications; });
    }

    bool isUnchanged() const
    {
        if (scene.getEntities() != members || notifications != 0)
            return false;
        for (std::size_t i = 0; i < members.size(); ++i)
            if (!members[i]->hasEqualValues(*copies[i]))
                return false;
        return true;
    }
};
} // namespace

class TestSceneSerializer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        Lib::startup();
        registerTypes();
        TypeDatabase::instance().registerModuleTypes(nodeModule());
        populate(source);
        bytes = SceneSerializer::saveToBytes(source);
    }
    void cleanupTestCase()
    {
        TypeDatabase::instance().unregisterModuleTypes(nodeModule());
        unregisterTypes();
        Lib::shutdown();
    }

    void loadsBackEqualWithReferencesIntact();
    void everyTruncationFailsAndChangesNothing();
    void everyCorruptionFailsAndChangesNothing_data();
    void everyCorruptionFailsAndChangesNothing();
    void badStreams_data();
    void badStreams();
    void referenceCyclesAreRefusedAndFreed_data();
    void referenceCyclesAreRefusedAndFreed();
    void savingALoopIsRefused_data();
    void savingALoopIsRefused();

private:
    EntityGraphTracker source;
    Array<std::byte> bytes;
};

void TestSceneSerializer::loadsBackEqualWithReferencesIntact()
{
    EntityGraphTracker loaded;
    int notifications = 0;
    auto lifetime = loaded.addObserver([&](auto added, auto removed) {
        ++notifications;
        QCOMPARE(added.size(), source.size());
        QCOMPARE(removed.size(), std::size_t(0));
    });
    const auto result = SceneSerializer::loadFromBytes(loaded, bytes);
    QVERIFY2(result, result ? "" : result.error().c_str());
    QCOMPARE(notifications, 1);
    QVERIFY(loaded.isEquivalentTo(source));
    // References point at the loaded entities themselves, not at copies or at the source scene.
    for (const auto& entity : loaded.getEntities())
        for (const auto& referenced : getReferencedEntities(*entity))
            QCOMPARE(loaded.findEntity(referenced->getId()), referenced);
    QCOMPARE(loaded.getEntities().back()->getPropertyValue<Array<EntityHolder<Entity>>>("children").size(), 2u);
}

void TestSceneSerializer::everyTruncationFailsAndChangesNothing()
{
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        Guarded target;
        const auto result = SceneSerializer::loadFromBytes(target.scene, ArrayView<const std::byte>(bytes.data(), length));
        QVERIFY2(!result, qPrintable(QString("truncation to %1 bytes loaded").arg(length)));
        QVERIFY(!result.error().empty());
        QVERIFY2(target.isUnchanged(), qPrintable(QString("truncation to %1 bytes changed the scene").arg(length)));
    }
}

void TestSceneSerializer::everyCorruptionFailsAndChangesNothing_data()
{
    QTest::addColumn<int>("mask");
    QTest::newRow("lowest bit") << 0x01;
    QTest::newRow("every bit") << 0xff;
}

void TestSceneSerializer::everyCorruptionFailsAndChangesNothing()
{
    QFETCH(int, mask);
    for (std::size_t position = 0; position < bytes.size(); ++position) {
        Array<std::byte> damaged = bytes;
        damaged[position] ^= std::byte(mask);
        Guarded target;
        const auto result = SceneSerializer::loadFromBytes(target.scene, damaged);
        QVERIFY2(!result, qPrintable(QString("damage at byte %1 loaded").arg(position)));
        QVERIFY2(target.isUnchanged(), qPrintable(QString("damage at byte %1 changed the scene").arg(position)));
    }
}

void TestSceneSerializer::badStreams_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("message");
    QTest::newRow("future version") << 0 << "Unknown scene format version 3";
    QTest::newRow("unknown class") << 1 << "unknown class \"Spaceship\"";
    QTest::newRow("dangling reference") << 2 << "does not hold";
    QTest::newRow("repeated identity") << 3 << "zero or repeated";
    QTest::newRow("reference of a wrong class") << 4 << "not a Material";
    QTest::newRow("empty stream") << 5 << "corrupted";
}

void TestSceneSerializer::badStreams()
{
    QFETCH(int, kind);
    QFETCH(QString, message);
    CborSerializer out;
    out.serializeFormatVersion(kind == 0 ? 3 : 1);
    out.beginRecord("scene");
    out.beginArray("classes", 2);
    out.writeString("class", kind == 1 ? "Spaceship" : "Mesh");
    out.writeString("class", "Mesh");
    out.endArray();
    out.beginArray("ids", 2);
    out.writeUInt("id", 10);
    out.writeUInt("id", kind == 3 ? 10 : 11);
    out.endArray();
    out.beginArray("entities", 2);
    for (int i = 0; i < 2; ++i) {
        out.beginRecord("entity");
        out.writeString("name", "m");
        out.writeBool("visible", true);
        out.writeUInt("vertexCount", 3);
        out.beginArray("resolution", 2);
        out.writeInt("c", 1);
        out.writeInt("c", 2);
        out.endArray();
        out.writeEntityReference("material", kind == 2 ? 99 : kind == 4 ? 11 : 0);
        // The mesh's other fields at their defaults, so that each row's fault is the only one in the stream.
        const std::set<String> written { "name", "visible", "vertexCount", "resolution", "material" };
        for (const auto& layout : meshClass().getLayouts())
            for (const PropertyDefinition& property : layout->getProperties())
                if (!written.contains(property.getName()))
                    property.getTypeDefinition().serialize(out, property.getName(), property.getDefaultValue().data());
        out.endRecord();
    }
    out.endArray();
    out.writeUInt("checksum", 0);
    out.endRecord();
    const auto stream = kind == 5 ? Array<std::byte> {} : out.getBytes();
    Guarded target;
    const auto result = SceneSerializer::loadFromBytes(target.scene, stream);
    QVERIFY(!result);
    QVERIFY2(QString::fromStdString(result.error()).contains(message), result.error().c_str());
    QVERIFY(target.isUnchanged());
}

namespace {
/// Nodes a, b, c of one scene, with the references listed as "from, through, to": "anb" makes a's "next" b, "alb"
/// adds b to a's "children".
Array<EntityHolder<Entity>> linkedNodes(EntityGraphTracker& scene, const QStringList& references)
{
    Array<EntityHolder<Entity>> nodes;
    for (int i = 0; i < 3; ++i) {
        nodes.push_back(nodeClass().create());
        scene.addEntity(nodes.back());
    }
    for (const QString& reference : references) {
        const auto& from = nodes[std::size_t(reference[0].unicode() - 'a')];
        const auto& to = nodes[std::size_t(reference[2].unicode() - 'a')];
        if (reference[1] == 'n') {
            from->setPropertyValue("next", to);
        } else {
            auto children = from->getPropertyValue<Array<EntityHolder<Entity>>>("children");
            children.push_back(to);
            from->setPropertyValue("children", children);
        }
    }
    return nodes;
}

void unlink(const Array<EntityHolder<Entity>>& nodes)
{
    for (const auto& node : nodes) {
        node->setPropertyValue("next", EntityHolder<Entity>());
        node->setPropertyValue("children", Array<EntityHolder<Entity>> {});
    }
}

// Saving refuses loops, so the streams that hold one are given as bytes: three nodes each, with the loops of the rows
// that use them. They are of the first format version: refused for their loop, not their checksum, they show that
// its byte-wise checksum still reads.
const QByteArray SELF_THROUGH_REFERENCE = QByteArray::fromHex(
    "84684076657273696f6e01657363656e658867636c6173736573a1614083644e6f6465644e6f6465644e6f646563696473a1"
    "6140830a0b0c68656e746974696573a161408384646e657874a161230a686368696c6472656ea161408084646e657874a161"
    "2300686368696c6472656ea161408084646e657874a1612300686368696c6472656ea161408068636865636b73756d1b4e8c"
    "79b11e738c9e");
const QByteArray SELF_THROUGH_LIST = QByteArray::fromHex(
    "84684076657273696f6e01657363656e658867636c6173736573a1614083644e6f6465644e6f6465644e6f646563696473a1"
    "61408314151668656e746974696573a161408384646e657874a1612300686368696c6472656ea1614081a161231484646e65"
    "7874a1612300686368696c6472656ea161408084646e657874a1612300686368696c6472656ea161408068636865636b7375"
    "6d1b8b4c626bd2c3fa70");
const QByteArray TWO_THROUGH_REFERENCES = QByteArray::fromHex(
    "84684076657273696f6e01657363656e658867636c6173736573a1614083644e6f6465644e6f6465644e6f646563696473a1"
    "614083181e181f182068656e746974696573a161408384646e657874a16123181f686368696c6472656ea161408084646e65"
    "7874a16123181e686368696c6472656ea161408084646e657874a1612300686368696c6472656ea161408068636865636b73"
    "756d1bdff3ffffc3c605a9");
const QByteArray THREE_IN_A_LOOP = QByteArray::fromHex(
    "84684076657273696f6e01657363656e658867636c6173736573a1614083644e6f6465644e6f6465644e6f646563696473a1"
    "61408318281829182a68656e746974696573a161408384646e657874a1612300686368696c6472656ea1614081a161231829"
    "84646e657874a16123182a686368696c6472656ea161408084646e657874a1612300686368696c6472656ea1614081a16123"
    "182868636865636b73756d1bd1383e3ab684ee4d");
} // namespace

void TestSceneSerializer::referenceCyclesAreRefusedAndFreed_data()
{
    // A stream given as bytes, or else one saved from nodes linked as listed (see linkedNodes).
    QTest::addColumn<QByteArray>("given");
    QTest::addColumn<QStringList>("references");
    QTest::addColumn<bool>("damageChecksum");
    QTest::addColumn<QString>("message");
    const QStringList unlinked;
    const QByteArray toSave;
    QTest::newRow("itself through a reference") << SELF_THROUGH_REFERENCE << unlinked << false << "cycle";
    QTest::newRow("itself through a list") << SELF_THROUGH_LIST << unlinked << false << "cycle";
    QTest::newRow("two nodes through references") << TWO_THROUGH_REFERENCES << unlinked << false << "cycle";
    QTest::newRow("a list, a reference and a list") << THREE_IN_A_LOOP << unlinked << false << "cycle";
    QTest::newRow("a loop with a damaged checksum") << THREE_IN_A_LOOP << unlinked << true << "checksum";
    QTest::newRow("a chain with a damaged checksum") << toSave << QStringList { "alb", "bnc" } << true << "checksum";
    QTest::newRow("a shared child is no loop") << toSave << QStringList { "alb", "alc", "bnc" } << false << "";
}

void TestSceneSerializer::referenceCyclesAreRefusedAndFreed()
{
    QFETCH(QByteArray, given);
    QFETCH(QStringList, references);
    QFETCH(bool, damageChecksum);
    QFETCH(QString, message);
    const int nodesBefore = liveNodes;
    Array<std::byte> stream(reinterpret_cast<const std::byte*>(given.constData()),
        reinterpret_cast<const std::byte*>(given.constData()) + given.size());
    if (given.isEmpty()) {
        EntityGraphTracker scene;
        const auto nodes = linkedNodes(scene, references);
        stream = SceneSerializer::saveToBytes(scene);
        unlink(nodes);
    }
    // The checksum is the stream's last value: its lowest byte comes last.
    if (damageChecksum)
        stream.back() ^= std::byte(1);
    QCOMPARE(liveNodes, nodesBefore);
    {
        Guarded target;
        const auto result = SceneSerializer::loadFromBytes(target.scene, stream);
        if (message.isEmpty()) {
            QVERIFY2(result, result ? "" : result.error().c_str());
            QCOMPARE(liveNodes, nodesBefore + 3);
        } else {
            QVERIFY(!result);
            QVERIFY2(QString::fromStdString(result.error()).contains(message), result.error().c_str());
            QVERIFY(target.isUnchanged());
        }
    }
    // Entities of a refused stream are gone with the failure, not kept alive by their own references.
    QCOMPARE(liveNodes, nodesBefore);
}

void TestSceneSerializer::savingALoopIsRefused_data()
{
    QTest::addColumn<QStringList>("references");
    QTest::newRow("itself through a reference") << QStringList { "ana" };
    QTest::newRow("itself through a list") << QStringList { "ala" };
    QTest::newRow("two nodes through references") << QStringList { "anb", "bna" };
    QTest::newRow("a list, a reference and a list") << QStringList { "alb", "bnc", "cla" };
}

void TestSceneSerializer::savingALoopIsRefused()
{
    QFETCH(QStringList, references);
    EntityGraphTracker scene;
    const auto nodes = linkedNodes(scene, references);
    CborSerializer out;
    try {
        SceneSerializer::save(scene, out);
        QFAIL("a scene with a loop was saved");
    } catch (const Exception& error) {
        const QString text = QString::fromStdString(error.getMessage());
        QVERIFY2(text.contains("cannot be saved"), qPrintable(text));
        // Every search starts from the first node of the scene, a, and every loop here runs through it.
        QVERIFY2(text.contains(QStringLiteral("#%1 ").arg(nodes.front()->getId())), qPrintable(text));
    }
    // Nothing was written: the same serializer takes the scene once the loop is broken.
    unlink(nodes);
    SceneSerializer::save(scene, out);
    EntityGraphTracker loaded;
    QVERIFY(SceneSerializer::loadFromBytes(loaded, out.getBytes()));
    QCOMPARE(loaded.size(), std::size_t(3));
}

QTEST_GUILESS_MAIN(TestSceneSerializer)
#include "tst_SceneSerializer.moc"
