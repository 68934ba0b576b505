#include "BoundWidgets.h"

#include <QSignalBlocker>

#include <cmath>

namespace Studio {

BoundSlider::BoundSlider(Marlix::SharedPtr<Marlix::Widgets::Model<double>> model, QWidget* parent)
    : QSlider(Qt::Horizontal, parent)
    , model(std::move(model))
{
    setRange(0, STEPS);
    registerCallback(this->model->addCallback([this](double) { notify(); }));
    connect(this, &QSlider::valueChanged, this, [this](int v) { this->model->set(double(v) / STEPS); });
    // A drag is one change: a model bound to undoable data makes it one undo step.
    connect(this, &QSlider::sliderPressed, this, [this] { this->model->beginChange(); });
    connect(this, &QSlider::sliderReleased, this, [this] { this->model->commitChange(); });
    notify();
}

void BoundSlider::notify()
{
    const QSignalBlocker blocker(this);
    setValue(int(std::lround(model->get() * STEPS)));
}

BoundSpinBox::BoundSpinBox(Marlix::SharedPtr<Marlix::Widgets::Model<double>> model, double maximum, int decimals,
    const QString& suffix, QWidget* parent)
    : QDoubleSpinBox(parent)
    , model(std::move(model))
{
    // Configured before the binding, so that clamping to the range never writes back into the model.
    setRange(0.0, maximum);
    setDecimals(decimals);
    setSingleStep(maximum / 100.0);
    setSuffix(suffix);
    registerCallback(this->model->addCallback([this](double) { notify(); }));
    connect(this, &QDoubleSpinBox::valueChanged, this, [this](double v) { this->model->set(v); });
    notify();
}

void BoundSpinBox::notify()
{
    const QSignalBlocker blocker(this);
    setValue(model->get());
}

NotificationCounter::NotificationCounter(Marlix::SharedPtr<Marlix::Widgets::Model<double>> model, QWidget* parent)
    : QLabel(parent)
    , model(std::move(model))
{
    registerCallback(this->model->addCallback([this](double) {
        ++notifications;
        notify();
    }));
    notify();
}

void NotificationCounter::notify()
{
    setText(tr("Value %L1, %n notification(s)", nullptr, notifications).arg(model->get(), 0, 'f', 3));
}

} // namespace Studio
