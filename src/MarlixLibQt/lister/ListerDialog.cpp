#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/data/GroupLayout.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/lister/ListerDialog.h>
#include <MarlixLibQt/lister/ListerHeader.h>
#include <MarlixLibQt/lister/ListerProxy.h>
#include <MarlixLibQt/lister/ListerSceneBinding.h>
#include <MarlixLibQt/lister/ListerView.h>
#include <MarlixLibQt/lister/ListerViewDelegate.h>
#include <MarlixLibQt/widgets/properties/UiAttributes.h>

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QVBoxLayout>

namespace Marlix::Widgets {

namespace {

constexpr const char* UNIT = "lister/ListerDialog";

ListerValuePresentation presentationOf(const PropertyDefinition& definition)
{
    const TypeDefinition& type = definition.getTypeDefinition();
    if (definition.getFlags().has(PropertyFlag::ReadOnly)
        || UiFlags::of(definition.getUserData()).has(UiFlag::ReadOnly))
        return ListerValuePresentation::ReadOnly;
    if (definition.getName() == "name" && type.isNative<String>())
        return ListerValuePresentation::Name;
    if (type.isNative<bool>())
        return ListerValuePresentation::Centered;
    if (type.getKind() == TypeKind::Plain && type.isNumber())
        return ListerValuePresentation::Number;
    return ListerValuePresentation::Editor;
}

String headerOf(const PropertyDefinition& definition)
{
    if (String abbreviation = getPropertyUiAbbreviation(definition); !abbreviation.empty())
        return abbreviation;
    if (const auto* name = definition.getUserData().get<String>(UI_NAME_ATTRIBUTE))
        return *name;
    return fromQt(propertyNameToReadableName(toQt(definition.getName())));
}

} // namespace

Stack<ListerColumnDefinition> ListerPanel::makeColumns(const EntityClassInfo& entityClass)
{
    Stack<ListerColumnDefinition> columns;
    for (const SharedPtr<const GroupLayout>& group : entityClass.getAllLayouts()) {
        for (const PropertyDefinition& definition : group->getProperties()) {
            const UiListerViewOptions options = getPropertyUiListerViewOptions(definition);
            if (options.hiddenByDefault || UiFlags::of(definition.getUserData()).has(UiFlag::Hidden)
                || definition.getTypeDefinition().getKind() == TypeKind::List)
                continue;
            const ListerValuePresentation presentation = presentationOf(definition);
            // The name goes first: it is what the rows are told apart by.
            auto at = presentation == ListerValuePresentation::Name ? columns.begin() : columns.end();
            columns.insert(at,
                { headerOf(definition), definition.getDescription(), presentation, definition.getName(),
                    options.width });
        }
    }
    return columns;
}

ListerPanel::ListerPanel(SharedPtr<EntityGraphTracker> scene, const EntityClassInfo& entityClass,
    SharedPtr<IPropertySheetHost> host, Stack<ListerColumnDefinition> columns, QWidget* parent)
    : QWidget(parent)
    , columnVisibility(makeSharedPtr<VariableModel<Stack<bool>>>())
{
    if (!scene || !host)
        Marlix::Detail::throwStopException(UNIT, __LINE__);
    if (columns.empty())
        columns = makeColumns(entityClass);
    Stack<ListerColumnDefinition> masterColumns = columns;

    model = new ListerModel(std::move(columns), {}, this);
    binding = new ListerSceneBinding(*model, scene, entityClass, this);
    proxy = new ListerProxy(this);
    proxy->setListerModel(model);

    masterModel = new ListerModel(std::move(masterColumns), {}, this);
    if (entityClass.canCreate()) {
        master = entityClass.create();
        if (master->checkPropertyPath("name") == PropertyPathStatus::RootProperty
            && master->getProperty("name").getTypeDefinition().isNative<String>())
            master->setPropertyValue("name", fromQt(tr("All listed objects")));
        masterModel->setMasterEntity(master);
    }

    filterEdit = new QLineEdit(this);
    filterEdit->setPlaceholderText(tr("Filter by name"));
    filterEdit->setAccessibleName(tr("Name filter"));
    filterEdit->setClearButtonEnabled(true);
    connect(filterEdit, &QLineEdit::textChanged, proxy, &ListerProxy::setNameFilter);
    countLabel = new QLabel(this);
    countLabel->setAccessibleName(tr("Objects listed"));

    view = new ListerView(
        model, columnVisibility, host, {}, [this](int rows) { showCount(rows); }, this);
    view->setModel(proxy);
    view->setSortingEnabled(true);
    view->sortByColumn(0, Qt::AscendingOrder);
    view->setAccessibleName(tr("Objects"));

    masterView = new ListerView(masterModel, columnVisibility, host, {}, {}, this);
    masterView->getDelegate()->setMasterTargets(view);
    masterView->setHeaderHidden(true);
    masterView->setRootIsDecorated(false);
    masterView->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    masterView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    masterView->setSelectionMode(QAbstractItemView::NoSelection);
    masterView->setAccessibleName(tr("Master row"));
    masterView->setToolTip(tr("Edits here apply to every listed object"));
    masterView->setVisible(static_cast<bool>(master));
    followMainHeader();

    // The rows the master row edits are those listed: when they change, its editors address the new set.
    const auto retarget = [this] { masterView->refreshEditors(); };
    connect(proxy, &QAbstractItemModel::rowsInserted, masterView, retarget);
    connect(proxy, &QAbstractItemModel::rowsRemoved, masterView, retarget);
    connect(proxy, &QAbstractItemModel::modelReset, masterView, retarget);

    auto* controls = new QHBoxLayout;
    controls->addWidget(filterEdit, 1);
    controls->addWidget(countLabel);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(controls);
    layout->addWidget(masterView);
    layout->addWidget(view, 1);
    showCount(view->countVisibleTopLevelRows());
}

ListerPanel::~ListerPanel() = default;

ListerDialog::ListerDialog(SharedPtr<EntityGraphTracker> scene, const EntityClassInfo& entityClass,
    SharedPtr<IPropertySheetHost> host, Stack<ListerColumnDefinition> columns, QWidget* parent)
    : QDialog(parent)
    , panel(new ListerPanel(std::move(scene), entityClass, std::move(host), std::move(columns), this))
{
    setWindowTitle(tr("Velkin Lister"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(panel, 1);
    layout->addWidget(buttons);
    resize(scaleByDpi(QSize(900, 600), this));
}

ListerDialog::~ListerDialog() = default;

void ListerPanel::showCount(int rows)
{
    if (countLabel)
        countLabel->setText(tr("%n objects", nullptr, rows));
}

void ListerPanel::followMainHeader()
{
    QHeaderView* main = view->header();
    QHeaderView* strip = masterView->header();
    strip->setStretchLastSection(main->stretchLastSection());
    for (int section = 0; section < main->count(); ++section)
        strip->resizeSection(section, main->sectionSize(section));
    connect(main, &QHeaderView::sectionResized, strip,
        [strip](int section, int, int size) { strip->resizeSection(section, size); });
    connect(main, &QHeaderView::sectionMoved, strip, [strip](int, int from, int to) { strip->moveSection(from, to); });
    connect(view->horizontalScrollBar(), &QScrollBar::valueChanged, masterView->horizontalScrollBar(),
        &QScrollBar::setValue);
    // One row high: the strip is a row of the table that stays in place.
    const int row = masterView->sizeHintForRow(0);
    masterView->setFixedHeight(std::max(row, 1) + 2 * masterView->frameWidth());
}

} // namespace Marlix::Widgets
