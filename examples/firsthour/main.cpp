// The first hour of a host: start the library, bind editors to a model, edit an entity in a property sheet with its
// undo history, show the scene as a node graph, and keep the docks' layout in a workspace file. The reference's main
// page quotes the marked pieces. With --check it shows everything once, checks that each part did its work and exits
// with the number of failures.
#include <MarlixLib/data/Entity.h>
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/data/GroupLayout.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/docking/Dock.h>
#include <MarlixLibQt/widgets/docking/DockWorkspaceFile.h>
#include <MarlixLibQt/widgets/editors/Slider.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>
#include <MarlixLibQt/widgets/frame/MainWindow.h>
#include <MarlixLibQt/widgets/graph/GraphModel.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/properties/DefaultPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/PropertySheet.h>
#include <MarlixLibQt/widgets/properties/PropertySheetItem.h>
#include <MarlixLibQt/widgets/properties/UndoStackBridge.h>
#include <MarlixLibQt/widgets/thumbnails/ThumbnailManager.h>

#include <QApplication>
#include <QFormLayout>
#include <QSplitter>
#include <QTemporaryDir>
#include <QUndoStack>
#include <QUndoView>

#include <cstdio>
#include <cstring>

using namespace Marlix;
using namespace Marlix::Widgets;

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("FirstHour", text);
}

int failures = 0;

void expect(bool condition, const char* what)
{
    if (!condition) {
        std::fprintf(stderr, "firsthour: %s\n", what);
        ++failures;
    }
}

//! [entity]
// A lamp of the host's scene. The user data gives each property the label and the slider range the editors show.
const EntityClassInfo& lampClass()
{
    static const EntityClassInfo info = [] {
        const TypeDatabase& types = TypeDatabase::instance();
        const auto label = [](const char* text) { return UserData().set(String(UI_NAME_ATTRIBUTE), String(text)); };
        const auto layout = makeSharedPtr<const GroupLayout>("Lamp",
            Array<PropertyDefinition> {
                PropertyDefinition::make("name", types.lookupNativeTypeDefinition<String>(), String(), label("Name")),
                PropertyDefinition::make("on", types.lookupNativeTypeDefinition<bool>(), true, label("On")),
                PropertyDefinition::make("intensity", types.lookupNativeTypeDefinition<double>(), 1.0,
                    label("Intensity").set(SLIDER_OPTIONS_KEY, UiSliderOptions { 0.0, 10.0 })),
            });
        return EntityClassInfo("Lamp", EntityClassInfo::entityClass(), { layout },
            [](const EntityClassInfo& of) { return makeSharedPtr<Entity>(of); });
    }();
    return info;
}
//! [entity]

EntityHolder<Entity> addLamp(EntityGraphTracker& scene, const char* name, double intensity)
{
    EntityHolder<Entity> lamp = lampClass().create();
    lamp->setPropertyValue("name", String(name));
    lamp->setPropertyValue("intensity", intensity);
    scene.addEntity(lamp);
    return lamp;
}

Dock* makeDock(const char* name, const QString& title, QWidget* content)
{
    auto* dock = new Dock(QString::fromLatin1(name));
    dock->setWindowTitle(title);
    dock->setWidget(content);
    return dock;
}

} // namespace

int main(int argc, char** argv)
{
    const bool check = argc > 1 && std::strcmp(argv[1], "--check") == 0;

    //! [startup]
    // Starts the core (its value types) and creates the QApplication with the library's style and font.
    LibQt::startup("First Hour");
    //! [startup]
    {
        //! [bind]
        // One model, two editors: each writes the model and re-reads it when the model notifies.
        const auto exposure = makeSharedPtr<VariableModel<double>>(0.5);
        auto* spinBox = new SpinBox(exposure, /*defaultValue=*/0.5);
        spinBox->setRange(0.0, 1.0, 0.01, 2);
        spinBox->setAccessibleName(tr("Exposure"));
        auto* slider = new Slider(exposure);
        slider->setAccessibleName(tr("Exposure"));
        exposure->set(0.75); // both editors show 0.75 now
        //! [bind]
        expect(spinBox->value() == 0.75 && slider->getPosition() == 0.75, "the editors did not follow their model");
        auto* controls = new QWidget;
        auto* form = new QFormLayout(controls);
        form->addRow(tr("Exposure"), spinBox);
        form->addRow(QString(), slider);

        //! [sheet]
        // The scene, its undo manager and a property sheet over it; the bridge mirrors the undo steps into a
        // QUndoStack, so a QUndoView lists them and the stack's actions serve the Edit menu.
        const auto scene = makeSharedPtr<EntityGraphTracker>();
        const auto undoManager = makeSharedPtr<UndoManager>();
        const auto thumbnails = makeSharedPtr<ThumbnailManager>();
        const EntityHolder<Entity> key = addLamp(*scene, "Key", 4.0);
        addLamp(*scene, "Fill", 1.5);
        auto* sheet = new PropertySheet(makeSharedPtr<DefaultPropertySheetHost>(scene, thumbnails, undoManager));
        sheet->setObjects({ key });
        auto* bridge = new UndoStackBridge(undoManager, sheet);
        auto* history = new QUndoView(bridge->undoStack());
        history->setAccessibleName(tr("Undo history"));
        //! [sheet]

        //! [graph]
        // The graph is an entity of the scene too, so its nodes' places are saved with it.
        const EntityHolder<GraphModel> graph = makeSharedPtr<GraphModel>();
        scene->addEntity(graph);
        graph->setScene(scene);
        for (const EntityHolder<Entity>& entity : scene->getEntitiesOfClass(lampClass()))
            graph->getOrCreateNode(entity, QPointF(0.0, 0.0));
        auto* graphView = new GraphView(graph, undoManager, thumbnails);
        graphView->setAccessibleName(tr("Lamps"));
        //! [graph]

        //! [docks]
        // Docks attach to the main window; workspace paths start with its object name.
        MainWindow window;
        window.setObjectName(QStringLiteral("MainWindow"));
        Dock* sheetDock = makeDock("properties", tr("Properties"), sheet);
        Dock::setCentralWidget(window, *sheetDock);
        QSplitter* row = Dock::split(*sheetDock, Qt::Horizontal);
        Dock::insertToParent(row, 0, makeDock("controls", tr("Controls"), controls));
        Dock::insertToParent(row, row->count(), makeDock("graph", tr("Graph"), graphView));
        Dock::insertToParent(row, row->count(), makeDock("history", tr("Undo history"), history));
        //! [docks]
        window.resize(getDeviceIndependentPixels(1200, &window), getDeviceIndependentPixels(600, &window));
        // Placed by the host: a window that the platform placed may come back a title bar lower on the offscreen one.
        window.move(getDeviceIndependentPixels(40, &window), getDeviceIndependentPixels(40, &window));
        window.show();
        graphView->rearrange();
        QCoreApplication::processEvents();

        // One drag of the sheet's intensity field is one change bracket of its model, and one undo step.
        const PropertySheetItem* intensity = sheet->findItem("intensity");
        auto* field = intensity ? intensity->editor()->findChild<SpinBox*>() : nullptr;
        expect(field != nullptr, "the property sheet has no intensity field");
        if (field) {
            const std::size_t before = undoManager->getUndoCount();
            field->getModel()->beginChange();
            field->getModel()->set(5.0);
            field->getModel()->set(6.0);
            field->getModel()->commitChange();
            expect(key->getPropertyValue<double>("intensity") == 6.0, "the sheet did not write the lamp");
            expect(undoManager->getUndoCount() == before + 1 && bridge->undoStack()->count() == int(before + 1),
                "the drag was not one undo step in the history");
            bridge->undoStack()->undo();
            expect(key->getPropertyValue<double>("intensity") == 4.0, "undo did not restore the lamp");
        }
        expect(graph->getNodes().size() == 2 && graphView->getNodeItems().size() == 2,
            "the graph does not show both lamps");

        QTemporaryDir folder;
        //! [workspace]
        // Save the layout of every dock on exit ...
        const Io::Path file = Io::Path(folder.path().toStdString()) / "workspace.cbor";
        const Stack<Dock::Data> saved = Dock::saveWorkspace();
        if (const auto written = saveWorkspaceFile(file, saved); !written)
            std::fprintf(stderr, "firsthour: the workspace was not saved: %s\n", written.error().c_str());
        // ... and put them back on the next start; docks that the file names but the host lacks are returned.
        if (const auto records = loadWorkspaceFile(file)) {
            const FlatSet<String> missing = Dock::restoreWorkspace(*records);
            for (const String& path : missing)
                std::fprintf(stderr, "firsthour: no dock for %s\n", path.c_str());
        } else {
            std::fprintf(stderr, "firsthour: the workspace was not restored: %s\n", records.error().c_str());
        }
        //! [workspace]
        if (check) {
            // A user tabs the history onto the properties; the restore puts it back beside them.
            Dock::insertToParent(Dock::tabify(*sheetDock), 1, Dock::findDock(QStringLiteral("history")));
            QCoreApplication::processEvents();
            expect(Dock::saveWorkspace() != saved, "moving a dock did not change the layout");
            const auto records = loadWorkspaceFile(file);
            expect(records && Dock::restoreWorkspace(*records).empty(), "the workspace file could not be restored");
            QCoreApplication::processEvents();
            expect(Dock::saveWorkspace() == saved, "the restored workspace differs from the saved one");
        } else {
            LibQt::runEventLoop();
        }
        thumbnails->shutdownProviders();
    }
    //! [shutdown]
    LibQt::shutdown();
    //! [shutdown]
    if (check)
        std::printf("firsthour: %s\n", failures == 0 ? "everything worked" : "FAILED");
    return failures;
}
