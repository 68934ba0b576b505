#include <MarlixLib/data/GroupLayout.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/io/CborDeserializer.h>
#include <MarlixLib/io/CborSerializer.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/widgets/docking/Dock.h>
#include <MarlixLibQt/widgets/docking/DockWorkspaceCheck.h>
#include <MarlixLibQt/widgets/docking/DockWorkspaceFile.h>
#include <MarlixTestDocks/DockReachability.h>

#include <QAction>
#include <QApplication>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QMainWindow>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

using namespace Marlix;
using Marlix::Widgets::Dock;

namespace {

// Window geometry as Qt 6 writes it (version 3.0): the frame, normal and client rectangles, screen and state. Qt
// declines geometry saved on a screen of another width, so it is the width of the offscreen platform's screen.
QByteArray windowGeometry(QRect frame, quint16 major = 3)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << quint32(0x01D9D0CB) << major << quint16(0) << frame << frame << qint32(0) << quint8(0) << quint8(0)
        << qint32(800) << frame.adjusted(1, 20, -1, -1);
    return bytes;
}

QByteArray sizes(std::initializer_list<qint32> values)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    for (const qint32 value : values)
        out << value;
    return bytes;
}

Dock::Data record(const char* path, QByteArray geometry = {}, bool hidden = false)
{
    return { path, hidden, std::move(geometry) };
}

// Two docks beside a tab group in the main window, one floating, one hidden in the tabs; then the levels of the
// containers (a path that ends with the window's name): splitter sizes and the current tab.
Stack<Dock::Data> goodWorkspace()
{
    return { record("MainWindow", windowGeometry({ 20, 20, 700, 500 })), record("MainWindow/H0/V0/Scene"),
        record("MainWindow/H0/V0/T1/Lister"), record("MainWindow/H0/V0/T1/Properties"),
        record("MainWindow/H0/V0/T1/Log", {}, true), record("MainWindow/H0/Curves"),
        record("History", windowGeometry({ 100, 100, 300, 250 })),
        record("MainWindow/H0/MainWindow", sizes({ 500, 200 })),
        record("MainWindow/H0/V0/MainWindow", sizes({ 300, 150 })),
        record("MainWindow/H0/V0/T1/MainWindow", sizes({ 1 })) };
}

const QStringList DOCK_NAMES { "Scene", "Lister", "Properties", "Log", "Curves", "History" };

QByteArray toQt(const Array<std::byte>& bytes)
{
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size()));
}

QByteArray workspace(const Stack<Dock::Data>& records)
{
    return toQt(Widgets::writeWorkspace(records));
}

Stack<Dock::Data> with(Stack<Dock::Data> records, std::function<void(Stack<Dock::Data>&)> change)
{
    change(records);
    return records;
}

// A stream as the workspace writer would make it, with `body` writing the records' place.
QByteArray stream(std::uint32_t version, const char* tag, std::function<void(CborSerializer&)> body)
{
    CborSerializer out;
    out.serializeFormatVersion(version);
    out.writeString(Widgets::DockWorkspaceFormat::TAG_KEY, tag);
    body(out);
    return toQt(out.takeBytes());
}

/// One file of the corpus: its damage, and what a restore must make of it (-1: the file does not read).
struct CorpusFile
{
    QString name;
    QString damage;
    int refused;
    QByteArray bytes;
    QStringList missing = {};
};

Array<CorpusFile> corpus()
{
    const QByteArray good = workspace(goodWorkspace());
    QByteArray hugeClaim = good;
    // The records' array header follows its key "@"; claim four billion records in front of the ten.
    hugeClaim.replace(hugeClaim.indexOf("\xa1\x61\x40\x8a"), 4, QByteArray("\xa1\x61\x40\x9a\xff\xff\xff\xff", 8));
    const auto typedRecord = [](auto writePath) {
        return stream(1, "MarlixWorkspace", [&](CborSerializer& out) {
            out.beginArray("docks", 1);
            out.beginRecord("item");
            writePath(out);
            out.endRecord();
            out.endArray();
        });
    };
    return {
        { "valid.workspace", "nothing: the control", 0, good },
        { "empty.workspace", "no bytes at all", -1, {} },
        { "truncated.workspace", "the valid workspace cut in half", -1, good.left(good.size() / 2) },
        { "not_cbor.workspace", "a line of text", -1, "MainWindow/H0/Scene\n" },
        { "wrong_tag.workspace", "a stream of the core serializer that is not a workspace", -1,
            stream(1, "SceneFile", [](CborSerializer& out) { out.writeInt("docks", 3); }) },
        { "future_version.workspace", "format version 2", -1,
            stream(2, "MarlixWorkspace", [](CborSerializer& out) { out.writeString("docks", "later"); }) },
        { "wrong_field_types.workspace", "a path written as a number and a flag as text", -1,
            typedRecord([](CborSerializer& out) {
                out.writeInt("path", 7);
                out.writeString("hidden", "yes");
                out.writeBytes("geometry", {});
            }) },
        { "missing_field.workspace", "a record without its geometry", -1, typedRecord([](CborSerializer& out) {
             out.writeString("path", "MainWindow/H0/Scene");
             out.writeBool("hidden", false);
         }) },
        { "huge_size_claim.workspace", "an array that claims 4294967295 records", -1, hugeClaim },
        { "unknown_tokens.workspace", "levels that are not H, V or T with an index", 2,
            workspace(with(goodWorkspace(),
                [](auto& r) {
                    r[2].path = "MainWindow/H0/X0/T1/Lister";
                    r[3].path = "MainWindow/H0/V0/Tab1/Properties";
                })) },
        { "indices_out_of_range.workspace", "negative, hexadecimal, overflowing and too large indices", 4,
            workspace(with(goodWorkspace(),
                [](auto& r) {
                    r[1].path = "MainWindow/H-1/V0/Scene";
                    r[2].path = "MainWindow/H0/V0/T99999999999/Lister";
                    r[3].path = "MainWindow/H0/V1001/T1/Properties";
                    r[5].path = "MainWindow/H0x1/Curves";
                })) },
        { "bad_geometry.workspace", "garbage and truncated window geometry, odd, negative and huge splitter sizes", 5,
            workspace(with(goodWorkspace(),
                [](auto& r) {
                    r[0].geometry = "garbage!";
                    r[6].geometry.truncate(30);
                    r[7].geometry = QByteArray("\x00\x00\x01\x2c\x00", 5);
                    r[8].geometry = sizes({ -5, 300 });
                    r[9].geometry = sizes({ 2000000000 });
                })) },
        { "duplicate_records.workspace", "the record of Scene twice", 1,
            workspace(with(goodWorkspace(), [](auto& r) { r.push_back(r[1]); })) },
        { "dock_named_twice.workspace", "Scene placed by two records at different paths", 1,
            workspace(with(goodWorkspace(), [](auto& r) { r.push_back(record("MainWindow/H0/V0/T1/Scene")); })) },
        { "bad_paths.workspace", "an empty path, a path of slashes, a path starting with a level, a control character",
            4,
            workspace(with(goodWorkspace(),
                [](auto& r) {
                    r.push_back(record(""));
                    r.push_back(record("///"));
                    r[4].path = "H0/V0/T1/Log";
                    r[6].path = "Hist\tory";
                })) },
        { "missing_docks.workspace", "records of docks that do not exist (no damage: they are returned)", 0,
            workspace(with(goodWorkspace(),
                [](auto& r) {
                    r.push_back(record("MainWindow/H0/Timeline"));
                    r.push_back(record("Browser", windowGeometry({ 0, 0, 100, 100 })));
                })),
            { "MainWindow/H0/Timeline", "Browser" } },
    };
}

QDir corpusFolder()
{
    // A cached build names this source relative to the build folder, whose "tests" folder holds the executable.
    QDir here = QFileInfo(QString::fromUtf8(__FILE__)).dir();
    if (here.isRelative())
        here.setPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../") + here.path());
    return QDir(here.filePath(QStringLiteral("../../../data/workspaces")));
}

int writeCorpus(const QString& folder)
{
    QDir().mkpath(folder);
    QString readme
        = QStringLiteral("# Damaged workspaces\n\nMade by `tst_MarlixLibQt_widgets_docking_DockWorkspaceFile "
                         "--write-corpus DIR`; the test reads every file and restores what reads.\n\n"
                         "| file | damage | records refused |\n| --- | --- | --- |\n");
    for (const CorpusFile& file : corpus()) {
        QFile out(QDir(folder).filePath(file.name));
        if (!out.open(QIODevice::WriteOnly) || out.write(file.bytes) != file.bytes.size())
            return 1;
        readme += QStringLiteral("| %1 | %2 | %3 |\n")
                      .arg(file.name, file.damage,
                          file.refused < 0 ? QStringLiteral("does not read") : QString::number(file.refused));
    }
    QFile out(QDir(folder).filePath(QStringLiteral("README.md")));
    return out.open(QIODevice::WriteOnly) && out.write(readme.toUtf8()) > 0 ? 0 : 1;
}

using MarlixTestDocks::isOnScreen;

bool isReachable(Dock* dock)
{
    if (isOnScreen(dock))
        return dock->toggleViewAction()->isChecked();
    if (dock->toggleViewAction()->isChecked())
        return false;
    // The toggle action must bring it back.
    dock->toggleViewAction()->trigger();
    const bool shown = isOnScreen(dock);
    dock->toggleViewAction()->trigger();
    return shown;
}

} // namespace

class tst_DockWorkspaceFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void typesAreRegistered();
    void filesRoundTrip();
    void checkRecord_data();
    void checkRecord();
    void checkSet_data();
    void checkSet();
    void corpus_data();
    void corpus();

private:
    void restoreGood();

    QMainWindow* window = nullptr;
    Stack<Dock*> docks;
};

void tst_DockWorkspaceFile::initTestCase()
{
    LibQt::startup("tst_DockWorkspaceFile");
    window = new QMainWindow;
    window->setObjectName(QStringLiteral("MainWindow"));
    window->show();
    for (const QString& name : DOCK_NAMES)
        docks.push_back(new Dock(name));
}

void tst_DockWorkspaceFile::cleanupTestCase()
{
    qDeleteAll(docks);
    delete window;
    LibQt::shutdown();
}

void tst_DockWorkspaceFile::restoreGood()
{
    Stack<String> problems;
    QCOMPARE(Dock::restoreWorkspace(goodWorkspace(), &problems), FlatSet<String>());
    QCOMPARE(problems, Stack<String>());
}

void tst_DockWorkspaceFile::typesAreRegistered()
{
    const TypeDatabase& types = TypeDatabase::instance();
    for (const auto& [name, native] : { std::pair { "QByteArray", std::type_index(typeid(QByteArray)) },
             { "DockData", std::type_index(typeid(Dock::Data)) },
             { "DockDataList", std::type_index(typeid(Stack<Dock::Data>)) } }) {
        QVERIFY2(types.lookupTypeDefinition(name), name);
        QCOMPARE(types.lookupNativeTypeDefinition(native), types.lookupTypeDefinition(name));
    }
    const auto type = types.lookupNativeTypeDefinition<Dock::Data>();
    QCOMPARE(type->getLayout()->getProperties()[2].getName(), String("geometry"));
    const Dock::Data written = record("MainWindow/H0/Scene", sizes({ 0, 255, 65536 }), true);
    CborSerializer out;
    out.serializeFormatVersion(1);
    type->serialize(out, "dock", &written);
    CborDeserializer in(out.takeBytes());
    Dock::Data read;
    QVERIFY(in.deserializeFormatVersion());
    QVERIFY(type->deserialize(in, "dock", {}, &read));
    QCOMPARE(read, written);
    // The text form of bytes is base64, and text that is not is refused without a change.
    QVERIFY(type->fromString("{path: A, hidden: false, geometry: AAE=}", &read));
    QCOMPARE(read.geometry, QByteArray("\x00\x01", 2));
    QVERIFY(!type->fromString("{path: B, hidden: true, geometry: not*base64}", &read));
    QCOMPARE(read.path, String("A"));
}

void tst_DockWorkspaceFile::filesRoundTrip()
{
    QTemporaryDir folder;
    const Io::Path path = folder.filePath(QStringLiteral("layout.workspace")).toStdString();
    QVERIFY(Widgets::saveWorkspaceFile(path, goodWorkspace()));
    QCOMPARE(Widgets::loadWorkspaceFile(path), goodWorkspace());
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList { "layout.workspace" });
    // A failed save names the file and leaves what is there alone.
    const auto failed = Widgets::saveWorkspaceFile(folder.path().toStdString(), goodWorkspace());
    QVERIFY(!failed && failed.error().find(folder.path().toStdString()) != String::npos);
    QVERIFY(QFileInfo(folder.path()).isDir());
    QVERIFY(!Widgets::loadWorkspaceFile(folder.filePath(QStringLiteral("none")).toStdString()));
}

void tst_DockWorkspaceFile::checkRecord_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("geometry");
    QTest::addColumn<QString>("problem"); // a part of the one message expected, or empty for none

    const QByteArray window = windowGeometry({ 10, 10, 800, 600 });
    QByteArray farAway = window;
    farAway.replace(16, 4, QByteArray("\x00\x4c\x4b\x40", 4)); // the frame's right edge at 5 000 000
    QTest::newRow("dock in tabs") << QByteArray("MainWindow/H0/V1/T0/Scene") << sizes({ 300, 200 }) << "";
    QTest::newRow("main window") << QByteArray("MainWindow") << window << "";
    QTest::newRow("floating dock") << QByteArray("History") << window << "";
    QTest::newRow("empty parts") << QByteArray("/MainWindow//H0/Scene/") << QByteArray() << "";
    QTest::newRow("index at the bound") << QByteArray("MainWindow/V1000/Scene") << QByteArray() << "";
    QTest::newRow("empty") << QByteArray("") << QByteArray() << "path is empty";
    QTest::newRow("slashes") << QByteArray("//") << QByteArray() << "path is empty";
    QTest::newRow("unknown level") << QByteArray("MainWindow/X0/Scene") << QByteArray() << "is not a level";
    QTest::newRow("no index") << QByteArray("MainWindow/H/Scene") << QByteArray() << "has no index";
    QTest::newRow("negative") << QByteArray("MainWindow/H-1/Scene") << QByteArray() << "negative index";
    QTest::newRow("hexadecimal") << QByteArray("MainWindow/H0x1/Scene") << QByteArray() << "not a decimal";
    QTest::newRow("signed") << QByteArray("MainWindow/T+1/Scene") << QByteArray() << "not a decimal";
    QTest::newRow("overflow") << QByteArray("MainWindow/V99999999999/Scene") << QByteArray() << "beyond 1000";
    QTest::newRow("above bound") << QByteArray("MainWindow/V1001/Scene") << QByteArray() << "beyond 1000";
    QTest::newRow("level record") << QByteArray("MainWindow/H0/V1/MainWindow") << sizes({ 300, 200 }) << "";
    QTest::newRow("tab level record") << QByteArray("MainWindow/H0/T1/MainWindow") << sizes({ 2 }) << "";
    QTest::newRow("ends with a level") << QByteArray("MainWindow/H0/V1") << QByteArray() << "instead of a name";
    QTest::newRow("splitter in its kind") << QByteArray("MainWindow/H0/H1/Scene") << QByteArray() << "its own kind";
    QTest::newRow("tabs in tabs") << QByteArray("MainWindow/T0/T0/Scene") << QByteArray() << "its own kind";
    QTest::newRow("starts with a level") << QByteArray("H0/Scene") << QByteArray() << "instead of the name";
    QTest::newRow("control character") << QByteArray("MainWindow/H0/Sc\tene") << QByteArray() << "control";
    QTest::newRow("long name") << "MainWindow/H0/" + QByteArray(300, 'a') << QByteArray() << "longer than 256";
    QTest::newRow("too deep") << "MainWindow" + QByteArray("/H0/V0").repeated(35) + "/Scene" << QByteArray()
                              << "levels";
    QTest::newRow("not UTF-8") << QByteArray("MainWindow/H0/\xff") << QByteArray() << "UTF-8";
    QTest::newRow("window garbage") << QByteArray("MainWindow") << QByteArray("garbage") << "not window geometry";
    QTest::newRow("window cut short") << QByteArray("MainWindow") << window.left(40) << "cut short";
    QTest::newRow("window version") << QByteArray("History") << windowGeometry({ 0, 0, 9, 9 }, 9) << "version";
    QTest::newRow("window far away") << QByteArray("History") << farAway << "damaged";
    QTest::newRow("window and more") << QByteArray("History") << window + "xy"
                                     << "damaged";
    QTest::newRow("sizes cut short") << QByteArray("MainWindow/H0/Scene") << sizes({ 300 }).left(3) << "cut short";
    QTest::newRow("negative size") << QByteArray("MainWindow/H0/Scene") << sizes({ 10, -1 }) << "negative";
    QTest::newRow("huge size") << QByteArray("MainWindow/H0/Scene") << sizes({ 1 << 30 }) << "beyond 100000";
    QTest::newRow("window in a splitter") << QByteArray("MainWindow/H0/Scene") << window << "window geometry where";
}

void tst_DockWorkspaceFile::checkRecord()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, geometry);
    QFETCH(QString, problem);

    const Stack<String> messages = Widgets::checkWorkspaceRecord({ path.toStdString(), false, geometry });
    QCOMPARE(messages.size(), std::size_t(problem.isEmpty() ? 0 : 1));
    // The place of a window is read where Qt wrote it.
    if (!path.contains('/') && problem.isEmpty())
        QCOMPARE(Widgets::windowNormalGeometry(geometry), QRect(10, 10, 800, 600));
    else if (!path.contains('/'))
        QCOMPARE(Widgets::windowNormalGeometry(geometry), std::nullopt);
    if (!messages.empty())
        QVERIFY2(QString::fromStdString(messages[0]).contains(problem), messages[0].c_str());
}

void tst_DockWorkspaceFile::checkSet_data()
{
    QTest::addColumn<QStringList>("paths");
    QTest::addColumn<QList<int>>("refused");

    QTest::newRow("distinct") << QStringList { "MainWindow", "MainWindow/H0/Scene", "History" } << QList<int> {};
    QTest::newRow("same path") << QStringList { "MainWindow/H0/Scene", "A", "MainWindow/H0/Scene" } << QList<int> { 2 };
    QTest::newRow("same path, other slashes")
        << QStringList { "MainWindow/H0/Scene", "/MainWindow/H0//Scene" } << QList<int> { 1 };
    QTest::newRow("dock twice") << QStringList { "MainWindow/H0/Scene", "MainWindow/V0/T1/Scene" } << QList<int> { 1 };
    QTest::newRow("floating and docked") << QStringList { "Scene", "MainWindow/H0/Scene" } << QList<int> { 1 };
    QTest::newRow("levels of two windows") << QStringList { "MainWindow/H0/MainWindow",
        "Group.MainWindow/H0/Group.MainWindow", "MainWindow", "Group.MainWindow" }
                                           << QList<int> {};
}

void tst_DockWorkspaceFile::checkSet()
{
    QFETCH(QStringList, paths);
    QFETCH(QList<int>, refused);

    Stack<Dock::Data> records;
    for (const QString& path : paths)
        records.push_back({ path.toStdString(), false, {} });
    const Array<Stack<String>> messages = Widgets::checkEachWorkspaceRecord(records);
    QList<int> flagged;
    for (std::size_t i = 0; i < messages.size(); ++i)
        if (!messages[i].empty())
            flagged.append(int(i));
    QCOMPARE(flagged, refused);
    for (const int i : refused)
        QVERIFY2(messages[i][0].starts_with("Record " + std::to_string(i + 1) + " (path \""), messages[i][0].c_str());
    QCOMPARE(Widgets::checkWorkspaceRecords(records).size(), std::size_t(refused.size()));
}

void tst_DockWorkspaceFile::corpus_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("refused");
    QTest::addColumn<QByteArray>("made");
    QTest::addColumn<QStringList>("missing");

    for (const CorpusFile& file : ::corpus())
        QTest::newRow(qPrintable(file.name)) << file.name << file.refused << file.bytes << file.missing;
}

void tst_DockWorkspaceFile::corpus()
{
    QFETCH(QString, name);
    QFETCH(int, refused);
    QFETCH(QByteArray, made);
    QFETCH(QStringList, missing);

    restoreGood();
    if (QTest::currentTestFailed())
        return;
    const QString path = corpusFolder().filePath(name);
    QFile file(path);
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(path));
    QCOMPARE(file.readAll(), made); // the corpus is what its generator makes
    const Stack<Dock::Data> before = Dock::saveWorkspace();
    const auto records = Widgets::loadWorkspaceFile(path.toStdString());
    if (refused < 0) {
        QVERIFY(!records);
        QVERIFY2(records.error().find(name.toStdString()) != String::npos, records.error().c_str());
        QCOMPARE(Dock::saveWorkspace(), before);
        return;
    }
    QVERIFY2(records, records.error().c_str());
    const Array<Stack<String>> messages = Widgets::checkEachWorkspaceRecord(*records);
    QCOMPARE(int(std::ranges::count_if(messages, [](auto& m) { return !m.empty(); })), refused);
    // Every dock starts hidden, so the records that are applied show theirs.
    for (Dock* dock : docks)
        if (dock->toggleViewAction()->isChecked())
            dock->toggleViewAction()->trigger();
    Stack<String> problems;
    FlatSet<String> returned = Dock::restoreWorkspace(*records, &problems);
    QVERIFY(problems.size() >= std::size_t(refused));
    QStringList returnedPaths;
    for (const String& path : returned)
        returnedPaths.append(QString::fromStdString(path));
    returnedPaths.sort();
    missing.sort();
    QCOMPARE(returnedPaths, missing);
    for (Dock* dock : docks)
        QVERIFY2(isReachable(dock), qPrintable(dock->objectName()));
    // What is left is a layout the checks accept: no splitter in one of its own orientation, no name twice.
    const Stack<String> left = Widgets::checkWorkspaceRecords(Dock::saveWorkspace());
    QVERIFY2(left.empty(), left.empty() ? "" : left.front().c_str());
    for (std::size_t i = 0; i < records->size(); ++i) {
        const QString name = QString::fromStdString((*records)[i].path).section(QLatin1Char('/'), -1);
        if (Dock* dock = Dock::findDock(name); dock && messages[i].empty())
            QVERIFY2(isOnScreen(dock) != (*records)[i].hidden, qPrintable(name));
    }
}

int main(int argc, char** argv)
{
    const bool writing = argc == 3 && QByteArrayView(argv[1]) == "--write-corpus";
    if (writing && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    if (writing) {
        LibQt::startup("tst_DockWorkspaceFile");
        const int result = writeCorpus(QString::fromLocal8Bit(argv[2]));
        LibQt::shutdown();
        return result;
    }
    tst_DockWorkspaceFile test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_DockWorkspaceFile.moc"
