#include <MarlixLibQt/widgets/editors/ComboBox.h>

#include <MarlixLib/base/Exception.h>

#include <QAbstractItemView>
#include <QEvent>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStyleOptionMenuItem>

namespace Marlix::Widgets {

namespace {

QStringList toLabels(ArrayView<const String> labels)
{
    QStringList result;
    result.reserve(static_cast<qsizetype>(labels.size()));
    for (const String& label : labels)
        result.append(QString::fromStdString(label));
    return result;
}

const QString LIST_NAME_SUFFIX = QStringLiteral(".List");
// Gap between an entry's icon and its text.
constexpr int ICON_SPACING = 4;

} // namespace

ComboBox::ComboBox(QWidget* parent)
    : QComboBox(parent)
    , CommonContextMenuOwner(this)
{
    // Wheel focus would hand the box the focus on the first wheel turn, and the turn would change the choice.
    setFocusPolicy(Qt::StrongFocus);

    connect(this, &QComboBox::activated, this, &ComboBox::choose);
    connect(this, &QComboBox::currentIndexChanged, this, &ComboBox::updateToolTip);

    setResetFunction([this] {
        if (indexModel)
            indexModel->set(defaultValue);
        else
            setCurrentIndex(entryOfValue(defaultValue));
    });
    setIsDefaultFunction([this] {
        if (indexModel)
            return indexModel->get() == defaultValue;
        return currentIndex() >= 0 && valueOfEntry(currentIndex()) == defaultValue;
    });
    setTextFunctions([this] { return currentText(); },
        [this](const QString& text) {
            int entry = findText(text, Qt::MatchFixedString | Qt::MatchCaseSensitive);
            if (entry < 0)
                entry = findText(text, Qt::MatchFixedString);
            if (entry < 0) {
                // A pasted number picks the entry that stands for that value.
                bool ok = false;
                const qlonglong value = text.toLongLong(&ok);
                if (ok)
                    entry = entryOfValue(value);
            }
            if (entry < 0)
                return false;
            if (indexModel) {
                choose(entry);
            } else {
                setCurrentIndex(entry);
                Q_EMIT activated(entry);
            }
            return true;
        });
}

ComboBox::ComboBox(SharedPtr<LabelsModel> labels, SharedPtr<IndexModel> index, SharedPtr<ValuesModel> values,
    std::int64_t defaultValue, QWidget* parent)
    : ComboBox(parent)
{
    this->defaultValue = defaultValue;
    setModel(std::move(labels), std::move(index), std::move(values));
}

ComboBox::~ComboBox() = default;

void ComboBox::setModel(SharedPtr<LabelsModel> labels, SharedPtr<IndexModel> index, SharedPtr<ValuesModel> values)
{
    if (!labels || !index)
        Marlix::Detail::throwStopException("widgets/ComboBox", __LINE__);
    subscriptions.clear();
    labelsModel = std::move(labels);
    indexModel = std::move(index);
    valuesModel = std::move(values);
    subscriptions.add(labelsModel->addCallback([this](ArrayView<const String>) { rebuildEntries(); }));
    subscriptions.add(indexModel->addCallback([this](std::int64_t) { showChosenEntry(); }));
    if (valuesModel)
        subscriptions.add(valuesModel->addCallback([this](ArrayView<const std::int64_t>) { showChosenEntry(); }));
    notify();
}

void ComboBox::setToolTipBehavior(ToolTipBehavior behavior)
{
    toolTipBehavior = behavior;
    updateToolTip();
}

void ComboBox::setDropDownWidthBehavior(DropDownWidthBehavior behavior)
{
    dropDownWidthBehavior = behavior;
    updateDropDownWidth();
}

void ComboBox::setObjectName(const QString& name)
{
    QComboBox::setObjectName(name);
    view()->setObjectName(name + LIST_NAME_SUFFIX);
}

std::int64_t ComboBox::valueOfEntry(int entry) const
{
    if (valuesModel) {
        const ArrayView<const std::int64_t> values = valuesModel->get();
        if (entry >= 0 && static_cast<std::size_t>(entry) < values.size())
            return values[static_cast<std::size_t>(entry)];
    }
    return entry;
}

int ComboBox::entryOfValue(std::int64_t value) const
{
    for (int entry = 0; entry < count(); ++entry) {
        if (valueOfEntry(entry) == value)
            return entry;
    }
    return -1;
}

void ComboBox::showPopup()
{
    QComboBox::showPopup();
    // The list sits in a frame that the base class made when it first opened.
    if (QWidget* container = view()->parentWidget()) {
        // The list can also close without hidePopup (a click outside the application); its hide event tells.
        container->installEventFilter(this);
        const int top = mapToGlobal(QPoint(0, 0)).y();
        switch (popupDirection) {
        case PopupDirection::Up:
            container->move(container->x(), top - container->height());
            break;
        case PopupDirection::Over:
            container->move(container->x(), top);
            break;
        default:
            break;
        }
    }
    popupOpen = true;
    Q_EMIT focusChanged(true);
}

void ComboBox::hidePopup()
{
    QComboBox::hidePopup();
    popupClosed();
}

void ComboBox::popupClosed()
{
    if (!popupOpen)
        return;
    popupOpen = false;
    Q_EMIT focusChanged(false);
}

bool ComboBox::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Hide && watched == view()->parentWidget())
        popupClosed();
    return QComboBox::eventFilter(watched, event);
}

void ComboBox::notify()
{
    rebuildEntries();
    showChosenEntry();
}

ComboBox* ComboBox::makeVirtualEnumDropDownImpl(
    const FlatMap<int, String>& entries, SharedPtr<IndexModel> value, std::int64_t defaultValue, QWidget* parent)
{
    Array<String> labels;
    Array<std::int64_t> values;
    labels.reserve(entries.size());
    values.reserve(entries.size());
    for (const auto& [entryValue, label] : entries) {
        values.push_back(entryValue);
        labels.push_back(label);
    }
    if (!value)
        value = makeSharedPtr<VariableModel<std::int64_t>>(defaultValue);
    return new ComboBox(makeSharedPtr<ListViewModel<String>>(std::move(labels)), std::move(value),
        makeSharedPtr<ListViewModel<std::int64_t>>(std::move(values)), defaultValue, parent);
}

bool ComboBox::event(QEvent* event)
{
    if (event->type() == QEvent::Wheel && !hasFocus()) {
        // Not consumed: the wheel goes on to the view around the box.
        event->ignore();
        return false;
    }
    return QComboBox::event(event);
}

void ComboBox::rebuildEntries()
{
    if (!labelsModel)
        return;
    const QStringList labels = toLabels(labelsModel->get());
    QStringList shown;
    shown.reserve(count());
    for (int entry = 0; entry < count(); ++entry)
        shown.append(itemText(entry));
    // Rebuilding an unchanged list would close it under the user's cursor.
    if (labels != shown) {
        const QSignalBlocker blocker(this);
        clear();
        addItems(labels);
    }
    showChosenEntry();
    updateDropDownWidth();
}

void ComboBox::showChosenEntry()
{
    if (!indexModel)
        return;
    const int entry = entryOfValue(indexModel->get());
    if (entry != currentIndex()) {
        const QSignalBlocker blocker(this);
        setCurrentIndex(entry);
    }
    updateToolTip();
}

void ComboBox::updateToolTip()
{
    setToolTip(toolTipBehavior == ToolTipBehavior::CurrentText ? currentText() : QString());
}

void ComboBox::updateDropDownWidth()
{
    QAbstractItemView* list = view();
    int width = sizeHint().width();
    if (dropDownWidthBehavior == DropDownWidthBehavior::WidestEntry) {
        const QFontMetrics metrics = list->fontMetrics();
        int textWidth = 0;
        for (int entry = 0; entry < count(); ++entry) {
            const int iconWidth = itemIcon(entry).isNull() ? 0 : iconSize().width() + ICON_SPACING;
            textWidth = std::max(textWidth, metrics.horizontalAdvance(itemText(entry)) + iconWidth);
        }
        // Menu-like lists measure an entry by the size they are given, not by its text: the style adds its item
        // padding and check-mark column around the widest text.
        QStyleOptionMenuItem option;
        option.initFrom(list);
        option.menuItemType = QStyleOptionMenuItem::Normal;
        option.checkType = QStyleOptionMenuItem::NonExclusive;
        option.font = list->font();
        option.fontMetrics = metrics;
        const int entryWidth
            = style()->sizeFromContents(QStyle::CT_MenuItem, &option, QSize(textWidth, metrics.height()), this).width();
        width = std::max(list->sizeHintForColumn(0), entryWidth) + 2 * list->frameWidth();
        if (count() > maxVisibleItems())
            width += list->verticalScrollBar()->sizeHint().width();
    }
    list->setMinimumWidth(width);
}

void ComboBox::choose(int entry)
{
    if (!indexModel || entry < 0)
        return;
    const std::int64_t value = valueOfEntry(entry);
    indexModel->set(value);
    // A refused write leaves the model's choice on screen, not the user's.
    if (indexModel->get() != value)
        showChosenEntry();
}

} // namespace Marlix::Widgets
