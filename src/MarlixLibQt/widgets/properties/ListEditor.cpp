#include <MarlixLib/base/Exception.h>
#include <MarlixLib/color/Rgb.h>
#include <MarlixLib/undo/IUndoManager.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/color/ColorEditButton.h>
#include <MarlixLibQt/widgets/editors/LineEdit.h>
#include <MarlixLibQt/widgets/editors/Number.h>
#include <MarlixLibQt/widgets/entities/EntityWidget.h>
#include <MarlixLibQt/widgets/properties/IPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/ListEditor.h>
#include <MarlixLibQt/widgets/properties/PropertyEditorSupport.h>
#include <MarlixLibQt/widgets/properties/PropertyModel.h>

#include <QHBoxLayout>
#include <QMenu>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace Marlix::Widgets {

namespace {

/// A list stored as Array<E>, changed through one PropertyModel so that every write is an undoable edit.
template <class E> class TypedItems : public ListEditor::Items
{
public:
    TypedItems(SharedPtr<PropertyModel<Array<E>>> model, SharedPtr<const TypeDefinition> elementType,
        const PropertyWidgetConstructor::Arguments& arguments)
        : model(std::move(model))
        , elementType(std::move(elementType))
        , host(arguments.host)
    {
    }

    std::size_t size() const override { return model->get().size(); }

    QWidget* makeItemEditor(std::size_t index, QWidget* parent) override
    {
        PropertyModel<Array<E>>* source = model.get();
        auto item = makeSharedPtr<LambdaModel<E>>(
            model,
            [source, index] {
                const Array<E> list = source->get();
                return index < list.size() ? list[index] : E {};
            },
            [source, index](E value) {
                Array<E> list = source->get();
                if (index >= list.size())
                    return; // the list shrank under an editor about to be replaced
                list[index] = std::move(value);
                source->set(std::move(list));
            });
        return makeEditor(std::move(item), parent);
    }

    void insert(std::size_t index, const Value& item) override
    {
        const E* value = item.get<E>();
        Array<E> list = model->get();
        if (!value || index > list.size())
            throw Exception("The item does not fit the list");
        list.insert(list.begin() + static_cast<std::ptrdiff_t>(index), *value);
        write(std::move(list));
    }

    void remove(std::size_t index) override
    {
        Array<E> list = model->get();
        if (index >= list.size())
            throw Exception("No such item");
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(index));
        write(std::move(list));
    }

    void move(std::size_t from, std::size_t to) override
    {
        Array<E> list = model->get();
        if (from >= list.size() || to >= list.size())
            throw Exception("No such item");
        E moved = std::move(list[from]);
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(from));
        list.insert(list.begin() + static_cast<std::ptrdiff_t>(to), std::move(moved));
        write(std::move(list));
    }

    void replace(const Value& list) override
    {
        const Array<E>* items = list.get<Array<E>>();
        if (!items)
            throw Exception("The preset is not a list of this type");
        write(*items);
    }

    Value defaultItem() const override { return Value(elementType); }

    CallbackLifetime addCallback(Function<void()> onChange) override
    {
        return model->addCallback([onChange = std::move(onChange)](const Array<E>&) { onChange(); });
    }

private:
    void write(Array<E> list)
    {
        // The model swallows a refusal; the list not being what was written is how it shows here.
        const Array<E> expected = list;
        model->set(std::move(list));
        if (!(model->get() == expected))
            throw Exception("The list refused the change");
    }

    QWidget* makeEditor(SharedPtr<Model<E>> item, QWidget* parent)
    {
        if constexpr (std::is_same_v<E, EntityHolder<Entity>>) {
            return new EntityWidget(std::move(item), elementType->getAcceptedEntityClass(), host, parent);
        } else if constexpr (std::is_same_v<E, String>) {
            return new LineEdit(std::move(item), String(), {}, parent);
        } else if constexpr (std::is_same_v<E, Rgb>) {
            return new ColorEditButton(std::move(item), ColorFormat::Rgba, parent);
        } else {
            static_assert(std::is_arithmetic_v<E>);
            Model<E>* source = item.get();
            auto number = makeSharedPtr<LambdaModel<double>>(
                item, [source] { return static_cast<double>(source->get()); },
                [source](double value) {
                    if (!std::isnan(value))
                        source->set(static_cast<E>(std::is_integral_v<E> ? std::round(value) : value));
                });
            auto* editor = new Number(std::move(number), 0.0, false, UserData(), parent);
            if constexpr (std::is_integral_v<E>)
                editor->setRange(static_cast<double>(std::numeric_limits<E>::lowest()),
                    static_cast<double>(std::numeric_limits<E>::max()), 1.0, 0);
            return editor;
        }
    }

    SharedPtr<PropertyModel<Array<E>>> model;
    SharedPtr<const TypeDefinition> elementType;
    SharedPtr<IPropertySheetHost> host;
};

template <class E>
std::unique_ptr<ListEditor::Items> tryItems(
    const GenericPropertyAccessor& property, const PropertyWidgetConstructor::Arguments& arguments)
{
    const SharedPtr<const TypeDefinition>& element = property.getDefinition().getTypeDefinition().getElementType();
    if (!element || !element->isNative<E>())
        return nullptr;
    auto model
        = makeSharedPtr<PropertyModel<Array<E>>>(property, Detail::undoManagerOf(arguments), arguments.displayName);
    return std::make_unique<TypedItems<E>>(std::move(model), element, arguments);
}

template <class... E>
std::unique_ptr<ListEditor::Items> makeItems(
    const GenericPropertyAccessor& property, const PropertyWidgetConstructor::Arguments& arguments)
{
    std::unique_ptr<ListEditor::Items> made;
    ((made = made ? std::move(made) : tryItems<E>(property, arguments)), ...);
    return made;
}

QToolButton* makeButton(QStyle::StandardPixmap icon, const QString& name, QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setIcon(parent->style()->standardIcon(icon, nullptr, parent));
    button->setAutoRaise(true);
    button->setToolTip(name);
    button->setAccessibleName(name);
    return button;
}

} // namespace

ListEditor::ListEditor(
    std::unique_ptr<Items> items, SharedPtr<IUndoManager> undoManager, Options options, QWidget* parent)
    : Container(parent)
    , items(std::move(items))
    , undoManager(std::move(undoManager))
    , options(std::move(options))
{
    if (!this->items)
        Marlix::Detail::throwStopException("widgets/ListEditor", __LINE__);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(getDeviceIndependentPixels(2.0, this));
    rowLayout = new QVBoxLayout();
    rowLayout->setContentsMargins(0, 0, 0, 0);
    rowLayout->setSpacing(layout->spacing());
    layout->addLayout(rowLayout);

    auto* buttons = new QHBoxLayout();
    buttons->setContentsMargins(0, 0, 0, 0);
    const bool fixedSize = this->options.flags.has(UiListFlag::FixedSize);
    const QString addName = this->options.adder && !this->options.adder->label.empty()
        ? toQt(this->options.adder->label)
        : tr("Add Item");
    adder = makeButton(QStyle::SP_FileDialogNewFolder, addName, this);
    adder->setVisible(!fixedSize);
    adder->setEnabled(!this->options.readOnly);
    connect(adder, &QToolButton::clicked, this, [this] { addItem(); });
    buttons->addWidget(adder);
    if (!this->options.presets.empty()) {
        presetButton = makeButton(QStyle::SP_FileDialogContentsView, tr("Presets"), this);
        presetButton->setPopupMode(QToolButton::InstantPopup);
        presetButton->setEnabled(!this->options.readOnly);
        auto* menu = new QMenu(presetButton);
        for (std::size_t i = 0; i < this->options.presets.size(); ++i)
            menu->addAction(toQt(this->options.presets[i].name), this, [this, i] { applyPreset(i); });
        presetButton->setMenu(menu);
        buttons->addWidget(presetButton);
    }
    buttons->addStretch(1);
    layout->addLayout(buttons);

    registerCallback(this->items->addCallback([this] { notify(); }));
    rebuildRows();
}

ListEditor::~ListEditor() = default;

QWidget* ListEditor::itemEditor(std::size_t index) const
{
    return index < rows.size() ? rows[index].editor : nullptr;
}

bool ListEditor::change(const QString& label, const Function<void()>& change)
{
    ActionHolder action;
    if (undoManager)
        action = undoManager->createAction(fromQt(label), ActionFlag::UserEdit);
    try {
        change();
        if (action.isOpen())
            action.commit();
        return true;
    } catch (const Exception& error) {
        if (action.isOpen())
            action.revert();
        Detail::showRejection(this, error.getMessage());
        return false;
    }
}

bool ListEditor::addItem()
{
    if (options.readOnly || options.flags.has(UiListFlag::FixedSize))
        return false;
    Value item;
    if (options.adder && options.adder->make) {
        Optional<Value> made;
        try {
            made = options.adder->make();
        } catch (const Exception& error) {
            Detail::showRejection(this, error.getMessage());
            return false;
        }
        if (!made)
            return false; // the user cancelled the choice
        item = std::move(*made);
    } else {
        item = options.defaultItem ? *options.defaultItem : items->defaultItem();
    }
    return change(tr("Add Item to %1").arg(options.name), [&] { items->insert(items->size(), item); });
}

bool ListEditor::removeItem(std::size_t index)
{
    if (options.readOnly || options.flags.has(UiListFlag::FixedSize) || index >= items->size())
        return false;
    return change(tr("Remove Item from %1").arg(options.name), [&] { items->remove(index); });
}

bool ListEditor::moveItem(std::size_t from, std::size_t to)
{
    const std::size_t size = items->size();
    if (options.readOnly || options.flags.has(UiListFlag::NoReorder) || from >= size || to >= size || from == to)
        return false;
    return change(tr("Move Item in %1").arg(options.name), [&] { items->move(from, to); });
}

bool ListEditor::applyPreset(std::size_t preset)
{
    if (options.readOnly || preset >= options.presets.size())
        return false;
    return change(tr("Apply Preset to %1").arg(options.name), [&] { items->replace(options.presets[preset].list); });
}

void ListEditor::notify()
{
    // Item editors follow their own items; only a change of length needs other rows.
    if (items->size() != rows.size())
        rebuildRows();
}

void ListEditor::rebuildRows()
{
    // Later: a button of an old row may be the one whose click is being handled.
    for (const Row& row : rows) {
        rowLayout->removeWidget(row.box);
        row.box->hide();
        row.box->deleteLater();
    }
    rows.clear();
    const std::size_t size = items->size();
    const bool fixedSize = options.flags.has(UiListFlag::FixedSize);
    const bool reorder = !options.flags.has(UiListFlag::NoReorder);
    for (std::size_t i = 0; i < size; ++i) {
        auto* box = new QWidget(this);
        auto* line = new QHBoxLayout(box);
        line->setContentsMargins(0, 0, 0, 0);
        line->setSpacing(getDeviceIndependentPixels(2.0, this));
        QWidget* editor = items->makeItemEditor(i, box);
        editor->setAccessibleName(tr("Item %1 of %2").arg(i + 1).arg(options.name));
        if (options.readOnly)
            Detail::applyReadOnlyLook(editor);
        line->addWidget(editor, 1);
        const QString number = QString::number(i + 1);
        if (reorder && size > 1) {
            QToolButton* up = makeButton(QStyle::SP_ArrowUp, tr("Move Item %1 Up").arg(number), box);
            QToolButton* down = makeButton(QStyle::SP_ArrowDown, tr("Move Item %1 Down").arg(number), box);
            up->setEnabled(i > 0 && !options.readOnly);
            down->setEnabled(i + 1 < size && !options.readOnly);
            connect(up, &QToolButton::clicked, this, [this, i] { moveItem(i, i - 1); });
            connect(down, &QToolButton::clicked, this, [this, i] { moveItem(i, i + 1); });
            line->addWidget(up);
            line->addWidget(down);
        }
        if (!fixedSize) {
            QToolButton* remove = makeButton(QStyle::SP_DialogDiscardButton, tr("Remove Item %1").arg(number), box);
            remove->setEnabled(!options.readOnly);
            connect(remove, &QToolButton::clicked, this, [this, i] { removeItem(i); });
            line->addWidget(remove);
        }
        rowLayout->addWidget(box);
        rows.push_back({ box, editor });
    }
    updateGeometry();
}

QWidget* Detail::makeListEditor(
    const GenericPropertyAccessor& property, const PropertyWidgetConstructor::Arguments& arguments)
{
    std::unique_ptr<ListEditor::Items> items
        = makeItems<EntityHolder<Entity>, double, float, std::int32_t, std::uint32_t, std::int64_t, String, Rgb>(
            property, arguments);
    if (!items)
        return nullptr;
    const UserData& attributes = PropertyWidgetConstructor::getUiOptions(property);
    ListEditor::Options options;
    options.name = arguments.displayName ? toQt(*arguments.displayName) : toQt(property.getDefinition().getName());
    if (const auto* flags = attributes.get<UiListFlags>(UiListFlags::ATTRIBUTE))
        options.flags = flags->flags;
    if (const auto* adder = attributes.get<UiListItemAdder>(UiListItemAdder::ATTRIBUTE))
        options.adder = *adder;
    if (const auto* item = attributes.get<UiListDefaultValue>(UiListDefaultValue::ATTRIBUTE))
        options.defaultItem = item->value;
    if (const auto* presets = attributes.get<UiListPresets>(UiListPresets::ATTRIBUTE))
        options.presets = presets->presets;
    options.readOnly = isReadOnlyProperty(property);
    return new ListEditor(std::move(items), undoManagerOf(arguments), std::move(options), arguments.parent);
}

} // namespace Marlix::Widgets
