#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/data/EntityReferences.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/entities/EntityWidget.h>
#include <MarlixLibQt/widgets/properties/IPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/PropertyEditorSupport.h>
#include <MarlixLibQt/widgets/properties/PropertyModel.h>
#include <MarlixLibQt/widgets/properties/UiAttributes.h>
#include <MarlixLibQt/widgets/thumbnails/ThumbnailManager.h>

#include <QActionGroup>
#include <QCoreApplication>
#include <QMenu>

#include <algorithm>

namespace Marlix::Widgets {

namespace {

constexpr const char* UNIT = "widgets/EntityWidget";
constexpr const char* NAME_PROPERTY = "name";

} // namespace

EntityWidget::EntityWidget(SharedPtr<Model<EntityHolder<Entity>>> model, EntityClassInfo acceptedClass,
    SharedPtr<IPropertySheetHost> host, QWidget* parent)
    : QToolButton(parent)
    , model(std::move(model))
    , acceptedClass(std::move(acceptedClass))
    , host(std::move(host))
{
    if (!this->model || !this->host)
        Marlix::Detail::throwStopException(UNIT, __LINE__);
    setPopupMode(QToolButton::InstantPopup);
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setIconSize(QSize(THUMBNAIL_SIZE, THUMBNAIL_SIZE));
    pickMenu = new QMenu(this);
    setMenu(pickMenu);
    // Made when it opens, so that it lists the scene as it is then.
    connect(pickMenu, &QMenu::aboutToShow, this, &EntityWidget::rebuildMenu);

    if (SharedPtr<ThumbnailManager> manager = this->host->getThumbnailManager())
        thumbnails = std::make_unique<ThumbnailClient>(
            manager, QSize(THUMBNAIL_SIZE, THUMBNAIL_SIZE),
            [this](ArrayView<const EntityHolder<Entity>> changed) {
                const EntityHolder<Entity> shown = shownEntity ? shownEntity->get() : nullptr;
                if (shown && std::find(changed.begin(), changed.end(), shown) != changed.end())
                    setIcon(thumbnailOf(shown));
            },
            ThumbnailManager::OPTION_PLACEHOLDER, this);

    shownEntity = makeSharedPtr<EntityHandleModel<EntityHolder<Entity>>>(
        this->host->getEntityHandleContext(), EntityHandle(), &this->acceptedClass);
    registerCallback(this->model->addCallback([this](const EntityHolder<Entity>&) { notify(); }));
    // The shown entity going away is news even when the model's value (a weak reference elsewhere) does not change.
    registerCallback(shownEntity->addCallback([this](const EntityHolder<Entity>& shown) {
        if (!shown)
            notify();
    }));
    notify();
}

EntityWidget::~EntityWidget() = default;

void EntityWidget::setReferencingEntities(Array<EntityHolder<Entity>> entities)
{
    referencing = std::move(entities);
}

void EntityWidget::setEntityFilter(Function<bool(const EntityHolder<Entity>&)> filter)
{
    entityFilter = std::move(filter);
}

void EntityWidget::setNoneAllowed(bool allowed)
{
    noneAllowed = allowed;
}

void EntityWidget::setMixedValuesFunction(Function<bool()> mixed)
{
    mixedValues = std::move(mixed);
    notify();
}

Array<EntityHolder<Entity>> EntityWidget::getCandidates() const
{
    const SharedPtr<EntityGraphTracker> scene = host->getEntityGraphTracker(&acceptedClass);
    if (!scene)
        return {};
    IEntityHandleContext& context = host->getEntityHandleContext();
    const IEntityHandleContext::EntityFilter filter = context.getDefaultEntityFilter();
    Array<EntityHolder<Entity>> candidates;
    for (EntityHolder<Entity>& entity : scene->getEntitiesOfClass(acceptedClass)) {
        if ((filter && !filter(entity)) || (entityFilter && !entityFilter(entity))
            || !context.isEntityReferenceValid(entity))
            continue;
        const bool closesCycle = std::any_of(referencing.begin(), referencing.end(),
            [&](const EntityHolder<Entity>& holder) { return !canAddChildrenWithoutCycles(*holder, *entity); });
        if (!closesCycle)
            candidates.push_back(std::move(entity));
    }
    return candidates;
}

bool EntityWidget::pick(const EntityHolder<Entity>& entity)
{
    if (!entity && !noneAllowed)
        return false;
    if (entity) {
        const Array<EntityHolder<Entity>> candidates = getCandidates();
        if (std::find(candidates.begin(), candidates.end(), entity) == candidates.end())
            return false;
    }
    model->set(entity);
    if (model->get() != entity)
        return false; // refused by the model (a read-only property, a failed write)
    if (entity)
        rememberRecent(entity);
    return true;
}

QString EntityWidget::getEntityText(const EntityHolder<Entity>& entity)
{
    if (!entity)
        return tr(NONE_TEXT);
    if (const int index = entity->indexOfProperty(NAME_PROPERTY); index >= 0) {
        const GenericProperty name = entity->getProperty(static_cast<std::uint32_t>(index));
        if (name.getTypeDefinition().isNative<String>() && !name.get<String>().empty())
            return toQt(name.get<String>());
    }
    return toQt(entity->getClassInfo().getName()) + QStringLiteral(" #") + QString::number(entity->getId());
}

void EntityWidget::notify()
{
    const bool mixed = mixedValues && mixedValues();
    const EntityHolder<Entity> entity = mixed ? nullptr : model->get();
    if (entity != shownEntity->get()) {
        observeName(entity);
        shownEntity->set(entity);
    }
    setText(
        mixed ? QCoreApplication::translate("Marlix::Widgets::SpinBox", "<different values>") : getEntityText(entity));
    setToolTip(entity ? toQt(entity->getClassInfo().getName()) + QStringLiteral(" #") + QString::number(entity->getId())
                      : QString());
    setIcon(thumbnailOf(entity));
}

void EntityWidget::observeName(const EntityHolder<Entity>& entity)
{
    nameObservation.reset();
    if (!entity)
        return;
    if (const int index = entity->indexOfProperty(NAME_PROPERTY); index >= 0)
        nameObservation = entity->addPropertyObserver(static_cast<std::uint32_t>(index),
            [this](const ObservedProperty&) { setText(getEntityText(shownEntity->get())); });
}

void EntityWidget::rebuildMenu()
{
    pickMenu->clear();
    const EntityHolder<Entity> current = (mixedValues && mixedValues()) ? nullptr : model->get();
    auto* group = new QActionGroup(pickMenu);
    QAction* none = pickMenu->addAction(tr(NONE_TEXT), this, [this] { pick(nullptr); });
    none->setCheckable(true);
    none->setChecked(!current && !(mixedValues && mixedValues()));
    none->setVisible(noneAllowed);
    group->addAction(none);

    const Array<EntityHolder<Entity>> candidates = getCandidates();
    Array<EntityHolder<Entity>> recent;
    if (const auto recentModel = host->getRecentEntitiesModel())
        for (const EntityHolder<Entity>& entity : recentModel->get())
            if (std::find(candidates.begin(), candidates.end(), entity) != candidates.end())
                recent.push_back(entity);
    if (!recent.empty()) {
        pickMenu->addSection(tr(RECENT_SECTION_TEXT));
        for (const EntityHolder<Entity>& entity : recent)
            addEntityAction(entity, current);
    }
    if (!candidates.empty())
        pickMenu->addSection(tr(SCENE_SECTION_TEXT));
    const std::size_t listed = std::min(candidates.size(), MAX_MENU_ENTRIES);
    for (std::size_t i = 0; i < listed; ++i)
        addEntityAction(candidates[i], current);
    if (listed < candidates.size())
        pickMenu->addAction(tr("%n more not listed", nullptr, int(candidates.size() - listed)))->setEnabled(false);
}

void EntityWidget::addEntityAction(const EntityHolder<Entity>& entity, const EntityHolder<Entity>& current)
{
    // The menu must not keep entities alive: it holds them weakly until it is made again.
    QAction* action = pickMenu->addAction(
        thumbnailOf(entity), getEntityText(entity), this, [this, weak = std::weak_ptr<Entity>(entity)] {
            if (const EntityHolder<Entity> chosen = weak.lock())
                pick(chosen);
        });
    action->setCheckable(true);
    action->setChecked(entity == current);
}

void EntityWidget::rememberRecent(const EntityHolder<Entity>& entity)
{
    const SharedPtr<Model<Stack<EntityHolder<Entity>>>> recentModel = host->getRecentEntitiesModel();
    if (!recentModel)
        return;
    Stack<EntityHolder<Entity>> recent { entity };
    for (const EntityHolder<Entity>& earlier : recentModel->get())
        if (earlier && earlier != entity && recent.size() < MAX_RECENT)
            recent.push_back(earlier);
    recentModel->set(std::move(recent));
}

QIcon EntityWidget::thumbnailOf(const EntityHolder<Entity>& entity) const
{
    if (!entity || !thumbnails || !thumbnails->canGenerateThumbnailFor(entity))
        return QIcon();
    return QIcon(thumbnails->getThumbnail(entity));
}

QWidget* Detail::makeEntityEditor(
    const GenericPropertyAccessor& property, const PropertyWidgetConstructor::Arguments& arguments)
{
    auto model
        = makeSharedPtr<PropertyModel<EntityHolder<Entity>>>(property, undoManagerOf(arguments), arguments.displayName);
    EntityClassInfo accepted = getEntityClassAcceptedByProperty(property).value_or(
        arguments.host->getEntityHandleContext().getDefaultEntityClass());
    // A property may narrow its type's class further, never widen it.
    if (const auto* narrowed
        = PropertyWidgetConstructor::getUiOptions(property).get<EntityClassInfo>(ENTITY_CLASS_ATTRIBUTE);
        narrowed && accepted.isBaseClassOf(*narrowed))
        accepted = *narrowed;
    auto* editor = new EntityWidget(guardReadOnly<EntityHolder<Entity>>(model, isReadOnlyProperty(property)),
        std::move(accepted), arguments.host, arguments.parent);
    editor->setReferencingEntities(property.getObjects());
    const UserData& options = PropertyWidgetConstructor::getUiOptions(property);
    if (const auto* picker = options.get<UiEntityPicker>(UiEntityPicker::ATTRIBUTE)) {
        editor->setEntityFilter(picker->filter);
        editor->setNoneAllowed(picker->allowNone);
    }
    if (property.getObjects().size() > 1)
        editor->setMixedValuesFunction([accessor = property] { return hasMixedValues(accessor); });
    return editor;
}

} // namespace Marlix::Widgets
