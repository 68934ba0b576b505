#include "StudioPage.h"

#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/lister/ListerDialog.h>
#include <MarlixLibQt/lister/ListerSceneBinding.h>
#include <MarlixLibQt/lister/ListerView.h>
#include <MarlixLibQt/widgets/properties/DefaultPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/UndoStackBridge.h>
#include <MarlixTestScene/TestScene.h>

#include <QCoreApplication>
#include <QLabel>
#include <QVBoxLayout>

namespace Studio {

namespace {

using namespace Marlix;
using namespace Marlix::Widgets;

constexpr std::size_t GENERATED = 10000;

Marlix::String columnText(const char* text)
{
    return fromQt(QCoreApplication::translate("Studio::ListerPage", text));
}

Stack<ListerColumnDefinition> instanceColumns()
{
    using P = ListerValuePresentation;
    return {
        { columnText(QT_TRANSLATE_NOOP("Studio::ListerPage", "Name")),
            columnText(QT_TRANSLATE_NOOP("Studio::ListerPage", "The instance's name")), P::Name, "name", 140 },
        { columnText(QT_TRANSLATE_NOOP("Studio::ListerPage", "Visible")),
            columnText(QT_TRANSLATE_NOOP("Studio::ListerPage", "Shown in renders")), P::Centered, "visible", 60 },
        { columnText(QT_TRANSLATE_NOOP("Studio::ListerPage", "Position")),
            columnText(QT_TRANSLATE_NOOP("Studio::ListerPage", "Where the instance stands")), P::Editor,
            "transform.position", 330 },
        { columnText(QT_TRANSLATE_NOOP("Studio::ListerPage", "Mesh")),
            columnText(QT_TRANSLATE_NOOP("Studio::ListerPage", "The mesh drawn")), P::Editor, "mesh", 130 },
        { columnText(QT_TRANSLATE_NOOP("Studio::ListerPage", "Material override")),
            columnText(QT_TRANSLATE_NOOP("Studio::ListerPage", "Replaces the mesh's material")), P::Editor,
            "materialOverride", 130 },
        { columnText(QT_TRANSLATE_NOOP("Studio::ListerPage", "Pivot")),
            columnText(QT_TRANSLATE_NOOP("Studio::ListerPage", "The point the instance turns about")), P::Editor,
            "pivot", 260 },
    };
}

/// The instances of the sample scene and ten thousand generated ones in a lister with its master controls. The
/// bridge's QUndoStack is a child of the page, so the window's Edit menu undoes the lister's edits.
class ListerPage : public QWidget
{
    Q_DECLARE_TR_FUNCTIONS(Studio::ListerPage)

public:
    explicit ListerPage(QWidget* parent)
        : QWidget(parent)
    {
        TestScene::registerTypes();
        TestScene::populate(*scene);
        const std::size_t sample = scene->getEntitiesOfClass(TestScene::instanceClass()).size();
        TestScene::populateListerObjects(*scene, GENERATED);
        new UndoStackBridge(undoManager, this);

        auto* caption = new QLabel(tr("Instances: the sample scene's %1 and %2 generated ones, sorted by name. Filter "
                                      "by name, sort by a click on a header, hide columns from the header's menu; "
                                      "the row above the table edits every listed instance at once.")
                                       .arg(sample)
                                       .arg(GENERATED));
        caption->setWordWrap(true);
        auto* panel = new ListerPanel(scene, TestScene::instanceClass(),
            makeSharedPtr<DefaultPropertySheetHost>(scene, nullptr, undoManager), instanceColumns(), this);
        panel->getBinding()->setSubEntitiesPropertyPath("children");
        // The editors of a page open over a few frames; the screenshot waits for the last of them.
        setProperty(PAGE_SETTLED_PROPERTY, false);
        connect(panel->getView(), &ListerView::editorsComplete, this,
            [this, view = panel->getView()] { setProperty(PAGE_SETTLED_PROPERTY, view->isVisible()); });

        auto* layout = new QVBoxLayout(this);
        layout->addWidget(caption);
        layout->addWidget(panel, 1);
    }

private:
    SharedPtr<EntityGraphTracker> scene = makeSharedPtr<EntityGraphTracker>();
    SharedPtr<UndoManager> undoManager = makeSharedPtr<UndoManager>();
};

} // namespace

QWidget* createListerPage(QWidget* parent)
{
    return new ListerPage(parent);
}

} // namespace Studio
