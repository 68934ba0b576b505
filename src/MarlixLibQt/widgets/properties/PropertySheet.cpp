#include <MarlixLibQt/widgets/properties/PropertySheet.h>

#include <MarlixLib/data/GroupLayout.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/frame/Collapsible.h>
#include <MarlixLibQt/widgets/properties/IPropertySheetHost.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/properties/PropertySheetItem.h>

#include <QEvent>
#include <QMetaObject>
#include <QVBoxLayout>

#include <algorithm>

namespace Marlix::Widgets {

namespace {

// Lengths at 96 DPI.
constexpr double LABEL_EDITOR_GAP = 6.0;
constexpr double SECTION_MARGIN = 4.0;
constexpr double ROW_SPACING = 2.0;
constexpr double SECTION_SPACING = 4.0;

} // namespace

PropertySheet::PropertySheet(SharedPtr<IPropertySheetHost> sheetHost, QWidget* parent)
    : QWidget(parent)
    , host(std::move(sheetHost))
{
    if (!host)
        throw Exception("A property sheet needs a host");
    sectionLayout = new QVBoxLayout(this);
    sectionLayout->setContentsMargins(0, 0, 0, 0);
    sectionLayout->setSpacing(getDeviceIndependentPixels(SECTION_SPACING, this));
    sectionLayout->addStretch(1);
}

PropertySheet::~PropertySheet()
{
    // The rows go with the widget tree after this; no change of the objects may reach them on the way.
    objectObservation.clear();
}

String PropertySheet::collapsedStateKey(const GroupLayout& group)
{
    return group.getName();
}

void PropertySheet::setObjects(Array<EntityHolder<Entity>> newObjects)
{
    for (const auto& object : newObjects)
        if (!object)
            throw Exception("A property sheet was given an empty entity");

    clear();
    objects = std::move(newObjects);
    if (!objects.empty()) {
        // The groups of the first object that every other object has too, in the first object's order.
        Array<SharedPtr<const GroupLayout>> common = objects.front()->getGroupLayouts();
        for (std::size_t i = 1; i < objects.size(); ++i) {
            const Array<SharedPtr<const GroupLayout>> groups = objects[i]->getGroupLayouts();
            std::erase_if(common, [&](const SharedPtr<const GroupLayout>& group) {
                return std::ranges::find(groups, group) == groups.end();
            });
        }
        rowsByProperty.resize(objects.size());
        for (std::size_t i = 0; i < objects.size(); ++i)
            rowsByProperty[i].assign(objects[i]->getPropertyCount(), nullptr);
        for (const auto& group : common)
            buildSection(group);
        updateMetrics();
        observeObjects();
    }
    Q_EMIT objectsChanged();
}

void PropertySheet::clear()
{
    objectObservation.clear();
    for (const Section& section : sectionList)
        delete section.box;
    sectionList.clear();
    rows.clear();
    rowsByProperty.clear();
    conditionalRows.clear();
    objects.clear();
}

SharedPtr<Model<bool>> PropertySheet::makeCollapsedModel(const GroupLayout& group) const
{
    SharedPtr<Model<Stack<String>>> keys = host->getCollapsiblesModel();
    if (!keys)
        return makeSharedPtr<VariableModel<bool>>(false);
    Model<Stack<String>>* source = keys.get(); // kept alive by the adapter
    return makeSharedPtr<LambdaModel<bool>>(
        keys,
        [source, key = collapsedStateKey(group)] {
            const Stack<String> closed = source->get();
            return std::ranges::find(closed, key) != closed.end();
        },
        [source, key = collapsedStateKey(group)](bool collapsed) {
            Stack<String> closed = source->get();
            const auto entry = std::ranges::find(closed, key);
            if (collapsed == (entry != closed.end()))
                return;
            if (collapsed)
                closed.push_back(key);
            else
                closed.erase(entry);
            source->set(std::move(closed));
        });
}

void PropertySheet::buildSection(const SharedPtr<const GroupLayout>& group)
{
    auto* box = new Collapsible(makeCollapsedModel(*group), propertyNameToReadableName(toQt(group->getName())), this);
    box->setObjectName(toQt(group->getName()));
    auto* layout = new QVBoxLayout(box);
    const int margin = getDeviceIndependentPixels(SECTION_MARGIN, this);
    layout->setContentsMargins(margin, margin / 2, margin, margin);
    layout->setSpacing(getDeviceIndependentPixels(ROW_SPACING, this));

    Section section { group.get(), box, {} };
    for (const PropertyDefinition& definition : group->getProperties()) {
        auto* row = new PropertySheetItem(*this, GenericPropertyAccessor(objects, definition.getName()), box);
        section.rows.push_back(row);
        rows.push_back(row);
        for (std::size_t i = 0; i < objects.size(); ++i)
            if (const int index = objects[i]->indexOfProperty(definition.getName()); index >= 0)
                rowsByProperty[i][static_cast<std::size_t>(index)] = row;
        if (row->hasConditions()) {
            conditionalRows.push_back(row);
            row->evaluateConditions();
        }
        // A row hidden by its condition stays out of the layout, so that opening the section does not show it.
        if (row->isShownByCondition())
            layout->addWidget(row);
        else
            row->hide();
    }
    sectionList.push_back(std::move(section));
    updateSectionVisibility(sectionList.back());
    sectionLayout->insertWidget(sectionLayout->count() - 1, box);
}

void PropertySheet::observeObjects()
{
    // One observer per object rather than one per row: a sheet of hundreds of rows registers a handful.
    for (std::size_t i = 0; i < objects.size(); ++i)
        objectObservation.add(
            objects[i]->addObserver([this, i](const ObservedProperty& changed) { onPropertyChanged(i, changed); }));
}

void PropertySheet::onPropertyChanged(std::size_t objectIndex, const ObservedProperty& changed)
{
    const Array<PropertySheetItem*>& byIndex = rowsByProperty[objectIndex];
    if (changed.getPropertyIndex() < byIndex.size())
        if (PropertySheetItem* row = byIndex[changed.getPropertyIndex()])
            row->refreshValueState();
    if (!conditionalRows.empty())
        reevaluateConditions(changed);
}

void PropertySheet::reevaluateConditions(const ObservedProperty& changed)
{
    // Conditions record the definitions they read, also of fields inside nested data objects; a change is matched by
    // its root property and, for a nested path, by the field written. Replacing a whole nested object may change any
    // of its fields.
    const PropertyDefinition& root = changed.getDefinition();
    const bool wholeObject
        = root.getTypeDefinition().getKind() == TypeKind::DataObject && changed.getPath().find('.') == StringView::npos;
    const PropertyDefinition* field = nullptr;
    if (changed.getPath().find('.') != StringView::npos)
        field = changed.getObject().resolve(changed.getPath()).definition;

    for (Section& section : sectionList) {
        bool placed = false;
        for (PropertySheetItem* row : section.rows) {
            if (!row->hasConditions())
                continue;
            if (!wholeObject && !row->dependsOn(root) && !(field && row->dependsOn(*field)))
                continue;
            if (row->evaluateConditions()) {
                placeRow(section, row);
                placed = true;
            }
        }
        if (placed)
            updateSectionVisibility(section);
    }
}

void PropertySheet::placeRow(Section& section, PropertySheetItem* row)
{
    auto* layout = static_cast<QVBoxLayout*>(section.box->layout());
    if (!row->isShownByCondition()) {
        layout->removeWidget(row);
        row->hide();
        return;
    }
    int position = 0;
    for (PropertySheetItem* before : section.rows) {
        if (before == row)
            break;
        if (before->isShownByCondition())
            ++position;
    }
    layout->insertWidget(position, row);
    row->setVisible(!section.box->isCollapsed());
}

void PropertySheet::updateSectionVisibility(Section& section)
{
    const bool anyShown = std::ranges::any_of(section.rows, &PropertySheetItem::isShownByCondition);
    // Only a section this sheet hid is shown again: showing one early would polish and lay out all its rows before
    // the sheet itself is shown, and then once more.
    const bool hiddenHere = section.box->isHidden() && section.box->testAttribute(Qt::WA_WState_ExplicitShowHide);
    if (!anyShown && !hiddenHere)
        section.box->hide();
    else if (anyShown && hiddenHere)
        section.box->show();
}

PropertySheetItem* PropertySheet::findItem(StringView path) const
{
    const auto found = std::ranges::find_if(rows, [path](const PropertySheetItem* row) { return row->getPath() == path; });
    return found == rows.end() ? nullptr : *found;
}

QList<Collapsible*> PropertySheet::sections() const
{
    QList<Collapsible*> boxes;
    boxes.reserve(static_cast<qsizetype>(sectionList.size()));
    for (const Section& section : sectionList)
        boxes.push_back(section.box);
    return boxes;
}

Collapsible* PropertySheet::findSection(StringView groupName) const
{
    for (const Section& section : sectionList)
        if (section.group->getName() == groupName)
            return section.box;
    return nullptr;
}

bool PropertySheet::unifyLabelColumnWidth() const
{
    return style()->styleHint(SH_UNIFY_LABEL_COLUMN_WIDTH, nullptr, this) != 0;
}

void PropertySheet::updateMetrics()
{
    const int rowHeight = std::max(0, style()->pixelMetric(PM_ROW_HEIGHT, nullptr, this));
    const int gap = getDeviceIndependentPixels(LABEL_EDITOR_GAP, this);
    for (PropertySheetItem* row : rows)
        row->setRowMetrics(rowHeight, gap);
    updateLabelColumn();
}

void PropertySheet::updateLabelColumn()
{
    // Rows hidden by their conditions count too, so that the column does not jump when one of them appears.
    Array<int> widths;
    widths.reserve(sectionList.size());
    for (const Section& section : sectionList) {
        int width = 0;
        for (const PropertySheetItem* row : section.rows)
            width = std::max(width, row->labelWidthHint());
        widths.push_back(width);
    }
    const bool unified = unifyLabelColumnWidth();
    const int widest = widths.empty() ? 0 : *std::ranges::max_element(widths);
    for (std::size_t i = 0; i < sectionList.size(); ++i)
        for (PropertySheetItem* row : sectionList[i].rows)
            row->setLabelWidth(unified ? widest : widths[i]);
}

void PropertySheet::scheduleLabelColumnUpdate()
{
    if (labelColumnUpdateQueued)
        return;
    labelColumnUpdateQueued = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            labelColumnUpdateQueued = false;
            updateLabelColumn();
        },
        Qt::QueuedConnection);
}

void PropertySheet::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::StyleChange || event->type() == QEvent::FontChange)
        updateMetrics();
}

} // namespace Marlix::Widgets
