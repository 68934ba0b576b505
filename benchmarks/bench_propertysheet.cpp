#include "RatioReporter.h"

#include <MarlixLib/data/Entity.h>
#include <MarlixLib/data/GroupLayout.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/widgets/properties/DefaultPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/PropertySheet.h>
#include <MarlixLibQt/widgets/properties/PropertySheetItem.h>

#include <QApplication>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

using namespace Marlix;
using namespace Marlix::Widgets;

namespace {

constexpr int GROUPS = 4;
constexpr int PROPERTIES_PER_GROUP = 50;
constexpr int ROWS = GROUPS * PROPERTIES_PER_GROUP;

QString rowName(int group, int index)
{
    return QStringLiteral("Value %1.%2").arg(group + 1).arg(index + 1);
}

/// An entity class of 200 doubles in four groups of fifty, each with a display name.
const EntityClassInfo& twoHundredDoublesClass()
{
    static const EntityClassInfo info = [] {
        const SharedPtr<const TypeDefinition> type = TypeDatabase::instance().lookupNativeTypeDefinition<double>();
        Array<SharedPtr<const GroupLayout>> groups;
        for (int g = 0; g < GROUPS; ++g) {
            Array<PropertyDefinition> properties;
            for (int i = 0; i < PROPERTIES_PER_GROUP; ++i)
                properties.push_back(PropertyDefinition::make("value" + std::to_string(g) + "_" + std::to_string(i),
                    type, double(i) * 0.5, UserData().set("Zorva.Ui.Name", rowName(g, i).toStdString())));
            groups.push_back(makeSharedPtr<const GroupLayout>("Group" + std::to_string(g + 1), std::move(properties)));
        }
        return EntityClassInfo("TwoHundredDoubles", EntityClassInfo::entityClass(), std::move(groups),
            [](const EntityClassInfo& of) { return makeSharedPtr<Entity>(of); });
    }();
    return info;
}

/// Shown, laid out and painted, as a user sees it the first time.
void showAndSettle(QWidget& widget)
{
    widget.show();
    widget.adjustSize();
    QApplication::processEvents();
}

SharedPtr<IPropertySheetHost> host;
EntityHolder<Entity> entity;

bool sheetHasEveryRow()
{
    PropertySheet sheet(host);
    sheet.setObjects({ entity });
    if (int(sheet.items().size()) != ROWS || sheet.sections().size() != GROUPS) {
        std::fprintf(stderr, "bench_propertysheet: the sheet has %zu rows in %lld sections, not %d in %d\n",
            sheet.items().size(), static_cast<long long>(sheet.sections().size()), ROWS, GROUPS);
        return false;
    }
    // The comparison holds only if every row got a number field, not the fallback label.
    for (const PropertySheetItem* row : sheet.items()) {
        if (!qobject_cast<QAbstractSpinBox*>(row->editor()) && !row->editor()->findChild<QAbstractSpinBox*>()) {
            std::fprintf(stderr, "bench_propertysheet: the row \"%s\" has no number field\n", row->getPath().c_str());
            return false;
        }
    }
    return true;
}

} // namespace

static void propertySheetOf200Doubles(benchmark::State& state)
{
    for (auto _ : state) {
        PropertySheet sheet(host);
        sheet.setObjects({ entity });
        showAndSettle(sheet);
    }
}
BENCHMARK(propertySheetOf200Doubles)->Unit(benchmark::kMillisecond);

static void formLayoutOf200LabelsAndSpinBoxes(benchmark::State& state)
{
    for (auto _ : state) {
        QWidget form;
        auto* layout = new QFormLayout(&form);
        for (int g = 0; g < GROUPS; ++g) {
            for (int i = 0; i < PROPERTIES_PER_GROUP; ++i) {
                auto* field = new QDoubleSpinBox;
                field->setValue(double(i) * 0.5);
                layout->addRow(new QLabel(rowName(g, i)), field);
            }
        }
        showAndSettle(form);
    }
}
BENCHMARK(formLayoutOf200LabelsAndSpinBoxes)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    // Without a display the widgets are drawn offscreen; building, layout and painting are the same.
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    benchmark::Initialize(&argc, argv);
    LibQt::startup("bench_propertysheet");
    int result = 0;
    {
        host = makeSharedPtr<DefaultPropertySheetHost>(nullptr, nullptr, makeSharedPtr<UndoManager>());
        entity = twoHundredDoublesClass().create();
        if (sheetHasEveryRow()) {
            // CPU time, since the machine may be shared.
            Benchmarks::RatioReporter reporter(Benchmarks::Clock::Cpu,
                { { "propertySheetOf200Doubles", "formLayoutOf200LabelsAndSpinBoxes",
                    "PropertySheet of 200 doubles / QFormLayout of 200 QLabel + QDoubleSpinBox", "goal 2 or less" } });
            benchmark::RunSpecifiedBenchmarks(&reporter);
        } else {
            result = 1;
        }
        entity.reset();
        host.reset();
    }
    benchmark::Shutdown();
    LibQt::shutdown();
    return result;
}
