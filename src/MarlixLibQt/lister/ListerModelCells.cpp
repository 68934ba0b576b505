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
    try {
        const Optional<GenericPropertyAccessor> accessor = getPropertyAccessor(index);
        if (!accessor)
            return {};
        if (accessor->isRootProperty())
            return toQt(accessor->toString());
        const String text = accessor->getProperty().getParentObject().visitProperty(
            accessor->getPath(), [](const GenericProperty& property) { return property.toString(); });
        return toQt(text);
    } catch (const std::exception&) {
        // A value that cannot be shown leaves its cell empty; a view's paint must not end in an exception.
        return {};
    }
}

} // namespace Marlix::Widgets
