#include <MarlixLibQt/widgets/editors/PosRotScale.h>

#include <MarlixLibQt/widgets/ModelValueConverter.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>

#include <MarlixLib/base/Exception.h>

#include <QAction>
#include <QGridLayout>
#include <QLabel>

namespace Marlix::Widgets {

namespace {

struct RowSettings
{
    const char* label;
    double step;
    int decimals;
    double defaultValue;
};

// Steps are in display units; the rotation step is set per angle unit in applyUnits.
constexpr std::array<RowSettings, 4> ROWS { {
    { QT_TRANSLATE_NOOP("Marlix::Widgets::PosRotScale", "Position"), 0.1, 3, 0.0 },
    { QT_TRANSLATE_NOOP("Marlix::Widgets::PosRotScale", "Rotation"), 1.0, 2, 0.0 },
    { QT_TRANSLATE_NOOP("Marlix::Widgets::PosRotScale", "Scale"), 0.01, 3, 1.0 },
    { QT_TRANSLATE_NOOP("Marlix::Widgets::PosRotScale", "Shear"), 0.01, 3, 0.0 },
} };

constexpr double DEGREE_STEP = 1.0;
constexpr double RADIAN_STEP = 0.01;

double getPart(const PosRotScaleTm& tm, int row, int component)
{
    switch (row) {
    case 0:
        return tm.position[component];
    case 1:
        return tm.rotation[component];
    case 2:
        return tm.scale[component];
    case 3:
        return tm.shear[component];
    default:
        break;
    }
    Marlix::Detail::throwStopException("widgets/PosRotScale", __LINE__);
}

void setPart(PosRotScaleTm& tm, int row, int component, double value)
{
    switch (row) {
    case 0:
        tm.position[component] = value;
        return;
    case 1:
        tm.rotation[component] = value;
        return;
    case 2:
        tm.scale[component] = value;
        return;
    case 3:
        tm.shear[component] = value;
        return;
    default:
        break;
    }
    Marlix::Detail::throwStopException("widgets/PosRotScale", __LINE__);
}

} // namespace

PosRotScale::PosRotScale(SharedPtr<Model<PosRotScaleTm>> model, SharedPtr<Model<DisplayUnits>> units,
                         QWidget* parent)
    : Container(parent)
    , model(std::move(model))
    , units(std::move(units))
{
    if (!this->model || !this->units)
        Marlix::Detail::throwStopException("widgets/PosRotScale", __LINE__);

    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    for (int row = 0; row < ROW_COUNT; ++row) {
        const RowSettings& settings = ROWS[static_cast<std::size_t>(row)];
        auto* label = new QLabel(tr(settings.label), this);
        rowLabels[static_cast<std::size_t>(row)] = label;
        layout->addWidget(label, row, 0);
        for (int component = 0; component < 3; ++component) {
            Model<PosRotScaleTm>* source = this->model.get();
            auto part = makeSharedPtr<LambdaModel<double>>(
                this->model, [source, row, component] { return getPart(source->get(), row, component); },
                [source, row, component](double value) {
                    PosRotScaleTm tm = source->get();
                    setPart(tm, row, component, value);
                    source->set(tm);
                });
            auto* field = new SpinBox(part, settings.defaultValue, this);
            field->setRange(-SpinBox::UNBOUNDED, SpinBox::UNBOUNDED, settings.step, settings.decimals);
            field->setPrecisionType(SpinBox::PrecisionType::TrimTrailingZeros);
            // The transformation's reset actions are the menu of the whole grid.
            field->setContextMenuPolicy(Qt::NoContextMenu);
            fields[static_cast<std::size_t>(row)][static_cast<std::size_t>(component)] = field;
            layout->addWidget(field, row, component + 1);
        }
        label->setBuddy(fields[static_cast<std::size_t>(row)][0]);
    }
    for (int column = 1; column <= 3; ++column)
        layout->setColumnStretch(column, 1);

    resetAllAction = new QAction(tr(RESET_ALL_TEXT), this);
    resetKeepPositionAction = new QAction(tr(RESET_KEEP_POSITION_TEXT), this);
    resetShearAction = new QAction(tr(RESET_SHEAR_TEXT), this);
    connect(resetAllAction, &QAction::triggered, this, &PosRotScale::resetAll);
    connect(resetKeepPositionAction, &QAction::triggered, this, &PosRotScale::resetAllKeepPosition);
    connect(resetShearAction, &QAction::triggered, this, &PosRotScale::resetShear);
    addActions({ resetAllAction, resetKeepPositionAction, resetShearAction });
    setContextMenuPolicy(Qt::ActionsContextMenu);

    // The fields follow the transformation through their own adapters; the grid's callback only updates what belongs
    // to the whole (the shear row and the reset actions), so a change refreshes each field once.
    registerCallback(this->model->addCallback([this](const PosRotScaleTm& tm) { updateRows(tm); }));
    registerCallback(this->units->addCallback([this](const DisplayUnits&) { applyUnits(); }));
    applyUnits();
    updateRows(this->model->get());
}

PosRotScale::~PosRotScale() = default;

SpinBox* PosRotScale::getField(Row row, int component) const
{
    const int index = static_cast<int>(row);
    if (index < 0 || index >= ROW_COUNT || component < 0 || component >= 3)
        Marlix::Detail::throwStopException("widgets/PosRotScale", __LINE__);
    return fields[static_cast<std::size_t>(index)][static_cast<std::size_t>(component)];
}

QLabel* PosRotScale::getRowLabel(Row row) const
{
    const int index = static_cast<int>(row);
    if (index < 0 || index >= ROW_COUNT)
        Marlix::Detail::throwStopException("widgets/PosRotScale", __LINE__);
    return rowLabels[static_cast<std::size_t>(index)];
}

bool PosRotScale::isShearShown() const
{
    return !rowLabels[3]->isHidden();
}

void PosRotScale::applyUnits()
{
    const DisplayUnits displayUnits = units->get();
    const auto length = ModelValueConverter<double>::fromQuantity(Quantity::Length, displayUnits);
    const auto angle = ModelValueConverter<double>::fromQuantity(Quantity::Angle, displayUnits);
    const double angleStep = std::get<AngleUnit>(displayUnits) == AngleUnit::Degree ? DEGREE_STEP : RADIAN_STEP;
    for (SpinBox* field : fields[0])
        field->setConversion(length);
    for (SpinBox* field : fields[1]) {
        field->setRange(field->getModelMinimum(), field->getModelMaximum(), angleStep, field->decimals());
        field->setConversion(angle);
    }
}

void PosRotScale::resetAll()
{
    model->set(PosRotScaleTm {});
}

void PosRotScale::resetAllKeepPosition()
{
    PosRotScaleTm tm;
    tm.position = model->get().position;
    model->set(tm);
}

void PosRotScale::resetShear()
{
    PosRotScaleTm tm = model->get();
    tm.shear = {};
    model->set(tm);
}

void PosRotScale::notify()
{
    for (const auto& row : fields)
        for (SpinBox* field : row)
            field->notify();
    updateRows(model->get());
}

void PosRotScale::updateRows(const PosRotScaleTm& tm)
{
    const bool hasShear = tm.shear != Vector3 {};
    rowLabels[3]->setHidden(!hasShear);
    for (SpinBox* field : fields[3])
        field->setHidden(!hasShear);
    resetShearAction->setEnabled(hasShear);
    resetAllAction->setEnabled(!tm.isIdentity());
    PosRotScaleTm withoutPosition = tm;
    withoutPosition.position = {};
    resetKeepPositionAction->setEnabled(!withoutPosition.isIdentity());
}

} // namespace Marlix::Widgets
