#include "RatioReporter.h"

#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>

#include <QApplication>
#include <QDoubleSpinBox>
#include <QMouseEvent>
#include <QStyleOptionSpinBox>
#include <QVBoxLayout>

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

using Marlix::makeSharedPtr;
using Marlix::SharedPtr;
using Marlix::Widgets::Model;
using Marlix::Widgets::SpinBox;
using Marlix::Widgets::VariableModel;

namespace {

constexpr double MINIMUM = 0.0;
constexpr double MAXIMUM = 1000.0;
constexpr double STEP = 0.1;
constexpr int DECIMALS = 3;
// One drag of 1000 one-pixel steps: up and down twice, so that it stays on any screen and never reaches the edge
// where the cursor would wrap.
constexpr int STROKE = 250;
constexpr int STROKES = 4;
// Where the windows stand: the strokes go up from here and stay above the screen's top edge.
constexpr QPoint WINDOW_POSITION(40, 320);

/// The down arrow of a spin box. The value starts at the minimum, where that arrow is disabled: the press steps
/// nothing in either field and starts no auto-repeat, so the moves alone change the value.
QPoint downArrow(const QAbstractSpinBox& spinBox)
{
    QStyleOptionSpinBox option;
    option.initFrom(&spinBox);
    option.frame = true;
    option.buttonSymbols = QAbstractSpinBox::UpDownArrows;
    option.subControls = QStyle::SC_SpinBoxFrame | QStyle::SC_SpinBoxEditField | QStyle::SC_SpinBoxUp
        | QStyle::SC_SpinBoxDown;
    option.stepEnabled = QAbstractSpinBox::StepUpEnabled | QAbstractSpinBox::StepDownEnabled;
    return spinBox.style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxDown, &spinBox).center();
}

void sendMouse(QWidget* target, QEvent::Type type, const QPoint& local, Qt::MouseButton button,
    Qt::MouseButtons buttons)
{
    QMouseEvent event(type, QPointF(local), QPointF(target->mapToGlobal(local)), button, buttons, Qt::NoModifier);
    QApplication::sendEvent(target, &event);
}

/// Press on the down arrow, `strokes` strokes of `stroke` pixels one pixel at a time (up first), release; then the
/// event loop paints what changed, as it would after a real drag.
void drag(QAbstractSpinBox* target, int strokes, int stroke)
{
    const QPoint press = downArrow(*target);
    sendMouse(target, QEvent::MouseButtonPress, press, Qt::LeftButton, Qt::LeftButton);
    int offset = 0;
    for (int s = 0; s < strokes; ++s) {
        const int direction = s % 2 == 0 ? 1 : -1;
        for (int i = 0; i < stroke; ++i) {
            offset += direction;
            sendMouse(target, QEvent::MouseMove, press - QPoint(0, offset), Qt::NoButton, Qt::LeftButton);
        }
    }
    sendMouse(target, QEvent::MouseButtonRelease, press - QPoint(0, offset), Qt::LeftButton, Qt::NoButton);
    QApplication::processEvents();
}

/// The library: a SpinBox dragged, two more SpinBoxes bound to the same model.
struct LibrarySide
{
    LibrarySide()
        : model(makeSharedPtr<VariableModel<double>>(MINIMUM))
    {
        auto* layout = new QVBoxLayout(&window);
        for (SpinBox*& field : fields) {
            field = new SpinBox(model, MINIMUM, &window);
            field->setRange(MINIMUM, MAXIMUM, STEP, DECIMALS);
            layout->addWidget(field);
        }
        window.move(WINDOW_POSITION);
        window.show();
        QApplication::processEvents();
    }

    void reset() { model->set(MINIMUM); }
    QAbstractSpinBox* dragged() const { return fields[0]; }
    bool inStep(double expected) const
    {
        return std::abs(model->get() - expected) < 1e-9 && fields[1]->value() == fields[0]->value()
            && fields[2]->value() == fields[0]->value();
    }

    SharedPtr<Model<double>> model;
    QWidget window;
    std::array<SpinBox*, 3> fields {};
};

/// What a host writes for a plain spin box that can be dragged: one step per pixel of vertical movement while the
/// left button is held.
class PlainDrag : public QObject
{
public:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* spinBox = static_cast<QDoubleSpinBox*>(watched);
        switch (event->type()) {
        case QEvent::MouseButtonPress:
            lastY = static_cast<int>(std::lround(static_cast<QMouseEvent*>(event)->globalPosition().y()));
            break;
        case QEvent::MouseMove: {
            const auto* move = static_cast<QMouseEvent*>(event);
            if (!(move->buttons() & Qt::LeftButton))
                break;
            const int y = static_cast<int>(std::lround(move->globalPosition().y()));
            if (y != lastY)
                spinBox->setValue(spinBox->value() + (lastY - y) * spinBox->singleStep());
            lastY = y;
            break;
        }
        default:
            break;
        }
        return QObject::eventFilter(watched, event);
    }

private:
    int lastY = 0;
};

/// The baseline: a bare QDoubleSpinBox dragged, connected to two others by signals, each view to every other.
struct PlainSide
{
    PlainSide()
    {
        auto* layout = new QVBoxLayout(&window);
        for (QDoubleSpinBox*& field : fields) {
            field = new QDoubleSpinBox(&window);
            field->setDecimals(DECIMALS);
            field->setRange(MINIMUM, MAXIMUM);
            field->setSingleStep(STEP);
            layout->addWidget(field);
        }
        for (QDoubleSpinBox* from : fields)
            for (QDoubleSpinBox* to : fields)
                if (from != to)
                    QObject::connect(from, &QDoubleSpinBox::valueChanged, to, &QDoubleSpinBox::setValue);
        fields[0]->installEventFilter(&plainDrag);
        window.move(WINDOW_POSITION + QPoint(300, 0));
        window.show();
        QApplication::processEvents();
    }

    void reset() { fields[0]->setValue(MINIMUM); }
    QAbstractSpinBox* dragged() const { return fields[0]; }
    bool inStep(double expected) const
    {
        return std::abs(fields[0]->value() - expected) < 1e-9 && fields[1]->value() == fields[0]->value()
            && fields[2]->value() == fields[0]->value();
    }

    PlainDrag plainDrag;
    QWidget window;
    std::array<QDoubleSpinBox*, 3> fields {};
};

std::unique_ptr<LibrarySide> librarySide;
std::unique_ptr<PlainSide> plainSide;

template <class Side> void dragBenchmark(benchmark::State& state, Side& side)
{
    for (auto _ : state) {
        side.reset();
        drag(side.dragged(), STROKES, STROKE);
    }
    state.counters["steps"] = benchmark::Counter(static_cast<double>(state.iterations()) * STROKE * STROKES,
        benchmark::Counter::kIsRate);
}

/// Both sides must really move and keep their views in step, or the times compare nothing.
bool checkBothSidesDrag()
{
    bool ok = true;
    const auto check = [&](auto& side, const char* name) {
        side.reset();
        drag(side.dragged(), 1, STROKE);
        if (!side.inStep(STROKE * STEP)) {
            std::fprintf(stderr, "bench_editors: the %s drag did not move all three fields to %g\n", name,
                STROKE * STEP);
            ok = false;
        }
        side.reset();
        drag(side.dragged(), STROKES, STROKE);
        if (!side.inStep(MINIMUM)) {
            std::fprintf(stderr, "bench_editors: the %s drag did not come back to %g\n", name, MINIMUM);
            ok = false;
        }
    };
    check(*librarySide, "SpinBox");
    check(*plainSide, "QDoubleSpinBox");
    return ok;
}

} // namespace

static void spinBoxDragOnModelWithTwoViews(benchmark::State& state)
{
    dragBenchmark(state, *librarySide);
}
BENCHMARK(spinBoxDragOnModelWithTwoViews)->Unit(benchmark::kMillisecond);

static void qDoubleSpinBoxDragWithTwoConnected(benchmark::State& state)
{
    dragBenchmark(state, *plainSide);
}
BENCHMARK(qDoubleSpinBoxDragWithTwoConnected)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    // Without a display the widgets are drawn offscreen; the events and the painting are the same.
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    benchmark::Initialize(&argc, argv);
    Marlix::LibQt::startup("bench_editors");
    int result = 0;
    librarySide = std::make_unique<LibrarySide>();
    plainSide = std::make_unique<PlainSide>();
    if (checkBothSidesDrag()) {
        Marlix::Benchmarks::RatioReporter reporter(Marlix::Benchmarks::Clock::Real,
            { { "spinBoxDragOnModelWithTwoViews", "qDoubleSpinBoxDragWithTwoConnected",
                "SpinBox on a model / QDoubleSpinBox with signals" } });
        // With repetitions the mean of the repetitions is compared, else the single run.
        reporter.setStatistic("mean");
        benchmark::RunSpecifiedBenchmarks(&reporter);
    } else {
        result = 1;
    }
    librarySide.reset();
    plainSide.reset();
    benchmark::Shutdown();
    Marlix::LibQt::shutdown();
    return result;
}
