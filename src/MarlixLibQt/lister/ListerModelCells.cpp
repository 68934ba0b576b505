#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/lister/ListerModelImpl.h>

#include <QFont>

// What the cells of a lister show: texts, alignments, flags and headers.
namespace Marlix::Widgets {

namespace {

constexpr int ALIGN_NUMBER = Qt::AlignRight | Qt::AlignVCenter;
constexpr int ALIGN_CENTERED = Qt::AlignHCenter | Qt::AlignVCenter;
constexpr int ALIGN_TEXT = Qt::AlignLeft | Qt::AlignVCenter;

bool hasText(ListerValuePresentation presentation)
{
    return presentation == ListerValuePresentation::Text || presentation == ListerValuePresentation::Name;
}

/// The value of a cell as text; none when the cell has no value or it cannot be read.
Optional<QString> valueText(const ListerModel& model, const QModelIndex& index)
{
    try {
        const Optional<GenericPropertyAccessor> accessor = model.getPropertyAccessor(index);
        if (!accessor)
            return {};
        if (accessor->isRootProperty())
            return toQt(accessor->toString());
        return toQt(accessor->getProperty().getParentObject().visitProperty(
            accessor->getPath(), [](const GenericProperty& property) { return property.toString(); }));
    } catch (const std::exception&) {
        // A value that cannot be shown leaves its cell empty; a view's paint must not end in an exception.
        return {};
    }
}
} // namespace

Optional<GenericPropertyAccessor> ListerModel::getPropertyAccessor(const QModelIndex& index) const
{
    ListerNode* node = impl->find(index);
    if (!node || index.column() >= columnCount())
        return {};
    const ListerColumnDefinition& column = impl->columns[static_cast<std::size_t>(index.column())];
    if (column.presentation == ListerValuePresentation::Actions)
        return {};
    if (!isResolved(node->entity->checkPropertyPath(column.propertyPath)))
        return {};
    impl->observe(*node);
    return GenericPropertyAccessor(node->entity, column.propertyPath);
}

const ListerColumnDefinition& ListerModel::getColumnDefinition(int column) const
{
    if (column < 0 || column >= columnCount())
        Detail::throwStopException("lister/ListerModel", __LINE__);
    return impl->columns[static_cast<std::size_t>(column)];
}

const Stack<ListerActionMenuItem>& ListerModel::getActionMenuItems() const
{
    return impl->actionMenuItems;
}

Qt::ItemFlags ListerModel::flags(const QModelIndex& index) const
{
    if (!index.isValid() || index.column() >= columnCount())
        return Qt::NoItemFlags;
    if (impl->columns[static_cast<std::size_t>(index.column())].presentation == ListerValuePresentation::ReadOnly)
        return Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    return Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsEnabled;
}

QVariant ListerModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.column() >= columnCount())
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return getDisplayData(index);
    case Qt::AccessibleTextRole: {
        // Cells that show an editor or a drawing instead of text are read by their value, so the table's interface
        // names every cell; text cells are read by their display text.
        const ListerColumnDefinition& column = impl->columns[static_cast<std::size_t>(index.column())];
        if (hasText(column.presentation))
            return {};
        if (column.presentation == ListerValuePresentation::Actions)
            return tr("Actions");
        const QString text = valueText(*this, index).value_or(QString());
        return text.isEmpty() ? toQt(column.headerText) : text;
    }
    case Qt::TextAlignmentRole:
        switch (impl->columns[static_cast<std::size_t>(index.column())].presentation) {
        case ListerValuePresentation::Number:
            return ALIGN_NUMBER;
        case ListerValuePresentation::Centered:
        case ListerValuePresentation::ReadOnly:
            return ALIGN_CENTERED;
        default:
            return ALIGN_TEXT;
        }
    default:
        return {};
    }
}

QVariant ListerModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount())
        return {};
    const ListerColumnDefinition& column = impl->columns[static_cast<std::size_t>(section)];
    switch (role) {
    case Qt::DisplayRole:
        return toQt(column.headerText);
    case Qt::ToolTipRole:
        return toQt(column.headerToolTip);
    case Qt::FontRole: {
        QFont font;
        font.setWeight(QFont::Bold);
        return font;
    }
    case Qt::TextAlignmentRole:
        return ALIGN_CENTERED;
    default:
        return {};
    }
}

QVariant ListerModel::getDisplayData(const QModelIndex& index) const
{
    if (!hasText(impl->columns[static_cast<std::size_t>(index.column())].presentation))
        return {};
    const Optional<QString> text = valueText(*this, index);
    return text ? QVariant(*text) : QVariant();
}

} // namespace Marlix::Widgets
