#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/lister/ListerView.h>
#include <MarlixLibQt/lister/ListerViewDelegate.h>
#include <MarlixLibQt/styles/MarlixStyle.h>
#include <MarlixLibQt/widgets/accessibility/AccessibleWidgetsPrivate.h>
#include <MarlixLibQt/widgets/entities/EntityWidget.h>
#include <MarlixLibQt/widgets/properties/PropertyWidgetConstructor.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPointer>
#include <QToolButton>

namespace Marlix::Widgets {

namespace {

constexpr const char* UNIT = "lister/ListerViewDelegate";

/// The value of a column the user reads but does not edit, kept current by observing the property.
class ValueLabel : public QLabel
{
public:
    ValueLabel(GenericPropertyAccessor accessor, QWidget* parent)
        : QLabel(parent)
        , accessor(std::move(accessor))
    {
        setAlignment(Qt::AlignCenter);
        setProperty(PropertyWidgetConstructor::USE_ELLIPSIS_PROPERTY, true);
        this->accessor.addObserver(observation, [this](const ObservedProperty&) { refresh(); });
        refresh();
    }

private:
    void refresh() { setText(toQt(accessor.toString())); }

    GenericPropertyAccessor accessor;
    CallbacksOwner observation;
};

} // namespace

ListerViewDelegate::ListerViewDelegate(ListerModel* model, ListerView* view, SharedPtr<IPropertySheetHost> host)
    : QItemDelegate(view)
    , model(model)
    , view(view)
    , targets(view)
    , host(std::move(host))
{
    if (!this->model || !this->view || !this->host)
        Marlix::Detail::throwStopException(UNIT, __LINE__);
}

ListerViewDelegate::~ListerViewDelegate() = default;

QWidget* ListerViewDelegate::createEditorWidget(const GenericPropertyAccessor& accessor,
    ListerValuePresentation presentation, const QString& accessibleName, QWidget* parent) const
{
    QWidget* editor = nullptr;
    if (presentation == ListerValuePresentation::ReadOnly) {
        editor = new ValueLabel(accessor, parent);
    } else {
        PropertyWidgetConstructor::Arguments arguments;
        arguments.parent = parent;
        arguments.host = host;
        editor = PropertyWidgetConstructor::make(accessor, arguments);
    }
    if (editor) {
        setEditorAccessibleName(editor, accessibleName);
        // The cell's own background and selection show around the editor, as in the property sheet.
        editor->setAutoFillBackground(false);
    }
    return editor;
}

QWidget* ListerViewDelegate::createActionsWidget(
    const EntityHolder<Entity>& entity, const QString& accessibleName, QWidget* parent) const
{
    if (model->getActionMenuItems().empty())
        return nullptr;
    auto* button = new QToolButton(parent);
    button->setText(tr("Actions"));
    button->setAccessibleName(accessibleName);
    button->setPopupMode(QToolButton::InstantPopup);
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto* menu = new QMenu(button);
    // Built when shown, so that whether an action applies is asked about the entity as it is then.
    connect(menu, &QMenu::aboutToShow, menu, [menu, entity, source = QPointer<ListerModel>(model)] {
        menu->clear();
        if (!source)
            return;
        for (const ListerActionMenuItem& item : source->getActionMenuItems()) {
            QAction* action = menu->addAction(toQt(item.text));
            action->setToolTip(toQt(item.toolTip));
            action->setEnabled(!item.isEnabled || item.isEnabled(*entity));
            connect(action, &QAction::triggered, menu, [run = item.action, entity] {
                if (run)
                    run(entity);
            });
        }
    });
    button->setMenu(menu);
    return button;
}

Optional<GenericPropertyAccessor> ListerViewDelegate::getEditorAccessor(const QModelIndex& index) const
{
    Optional<GenericPropertyAccessor> own = model->getPropertyAccessor(index);
    const EntityHolder<Entity> master = model->getMasterEntity();
    if (!own || !master || model->getEntity(index) != master)
        return own;
    const String& path = model->getColumnDefinition(index.column()).propertyPath;
    Array<EntityHolder<Entity>> objects { master };
    const QAbstractItemModel* shown = targets->model();
    for (int row = 0, rows = shown ? shown->rowCount() : 0; row < rows; ++row) {
        if (targets->isRowHidden(row, {}))
            continue;
        const QModelIndex listed = targets->toListerIndex(shown->index(row, 0));
        EntityHolder<Entity> entity = targets->getListerModel()->getEntity(listed);
        if (entity && entity != master && entity->checkPropertyPath(path) <= PropertyPathStatus::NestedProperty)
            objects.push_back(std::move(entity));
    }
    return GenericPropertyAccessor(std::move(objects), path);
}

QWidget* ListerViewDelegate::createEditor(
    QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    Q_UNUSED(option);
    const QModelIndex listerIndex = view->toListerIndex(index);
    if (!listerIndex.isValid())
        return nullptr;
    const ListerColumnDefinition& column = model->getColumnDefinition(listerIndex.column());
    const EntityHolder<Entity> entity = model->getEntity(listerIndex);
    if (!entity)
        return nullptr;
    const QString name = tr("%1 of %2").arg(toQt(column.headerText), EntityWidget::getEntityText(entity));
    if (column.presentation == ListerValuePresentation::Actions)
        return createActionsWidget(entity, name, parent);
    // One name for every listed object would lose them all: the master row names itself and edits no names.
    if (column.presentation == ListerValuePresentation::Name && entity == model->getMasterEntity())
        return nullptr;
    const Optional<GenericPropertyAccessor> accessor = getEditorAccessor(listerIndex);
    if (!accessor)
        return nullptr;
    return createEditorWidget(*accessor, column.presentation, name, parent);
}

void ListerViewDelegate::destroyEditor(QWidget* editor, const QModelIndex& index) const
{
    // A focused editor that scrolls away hands the keyboard back to the table rather than to whatever widget
    // comes next in the window's focus chain.
    if (editor->isAncestorOf(QApplication::focusWidget()) || editor->hasFocus())
        view->setFocus(Qt::OtherFocusReason);
    QItemDelegate::destroyEditor(editor, index);
}

void ListerViewDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    try {
        QStyleOptionViewItem cell(option);
        const QModelIndex listerIndex = view->toListerIndex(index);
        const ListerValuePresentation presentation = listerIndex.isValid()
            ? model->getColumnDefinition(listerIndex.column()).presentation
            : ListerValuePresentation::Text;
        // Names of generated objects differ at their end ("Lamp 0412"): keep both ends when the column is narrow.
        if (presentation == ListerValuePresentation::Name)
            cell.textElideMode = Qt::ElideMiddle;
        underEditor = view->isPersistentEditorOpen(index);
        QItemDelegate::paint(painter, cell, index);
        underEditor = false;
        // A cell whose editor is still to be built (it opens a frame or two after scrolling) shows its value.
        if (!view->isPersistentEditorOpen(index) && presentation != ListerValuePresentation::Text
            && presentation != ListerValuePresentation::Actions && !index.data(Qt::DisplayRole).isValid()) {
            if (const Optional<GenericPropertyAccessor> accessor = model->getPropertyAccessor(listerIndex)) {
                cell.displayAlignment = Qt::Alignment(index.data(Qt::TextAlignmentRole).toInt());
                drawDisplay(painter, cell,
                    cell.rect.adjusted(getDeviceIndependentPixels(HORIZONTAL_MARGIN / 2, view), 0,
                        -getDeviceIndependentPixels(HORIZONTAL_MARGIN / 2, view), 0),
                    toQt(accessor->toString()));
            }
        }
    } catch (const std::exception&) {
        // A cell that cannot be painted stays blank rather than taking the paint event down.
        underEditor = false;
    }
}

void ListerViewDelegate::drawDisplay(
    QPainter* painter, const QStyleOptionViewItem& option, const QRect& rect, const QString& text) const
{
    if (!underEditor)
        QItemDelegate::drawDisplay(painter, option, rect, text);
}

QSize ListerViewDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QSize size = QItemDelegate::sizeHint(option, index);
    const QStyle* style = view->style();
    const int rowHeight
        = style->pixelMetric(static_cast<QStyle::PixelMetric>(MarlixStyle::PM_PropertySheetRowHeight), &option, view);
    if (rowHeight > 0)
        size.setHeight(rowHeight);
    return size;
}

QRect ListerViewDelegate::editorGeometry(QSize hint, QSizePolicy policy, const QRect& cell, Qt::Alignment alignment,
    int horizontalMargin, int verticalMargin)
{
    const auto extent = [](QSizePolicy::Policy rule, int wanted, int available, int margin) {
        switch (rule) {
        case QSizePolicy::Fixed:
            return std::min(wanted, available);
        case QSizePolicy::Minimum:
            return wanted;
        default: {
            const int filled = available - margin;
            return filled < 1 ? 0 : filled;
        }
        }
    };
    const int width = extent(policy.horizontalPolicy(), hint.width(), cell.width(), horizontalMargin);
    const int height = extent(policy.verticalPolicy(), hint.height(), cell.height(), verticalMargin);
    const int k = alignment.testFlag(Qt::AlignTop) ? 0 : alignment.testFlag(Qt::AlignBottom) ? 2 : 1;
    return { cell.left() + (cell.width() - width) / 2 - 1, cell.top() + ((cell.height() - height) * k) / 2, width,
        height };
}

void ListerViewDelegate::updateEditorGeometry(
    QWidget* editor, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    Q_UNUSED(index);
    const QRect placed = editorGeometry(editor->sizeHint(), editor->sizePolicy(), option.rect, option.displayAlignment,
        getDeviceIndependentPixels(HORIZONTAL_MARGIN, view), getDeviceIndependentPixels(VERTICAL_MARGIN, view));
    editor->setFixedSize(placed.size());
    editor->move(placed.topLeft());
}

bool ListerViewDelegate::eventFilter(QObject* object, QEvent* event)
{
    // An editor that stays open (every editor cell's) is not closed by Tab: the key moves the focus the way the view
    // orders its editors. Editors opened for one edit keep the usual commit and close.
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<const QKeyEvent*>(event);
        auto* editor = qobject_cast<QWidget*>(object);
        const bool tab = (key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab)
            && !(key->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
        if (tab && editor && view->isPersistentEditorOpen(view->indexAt(editor->geometry().center())))
            return false;
    }
    return QItemDelegate::eventFilter(object, event);
}

} // namespace Marlix::Widgets
