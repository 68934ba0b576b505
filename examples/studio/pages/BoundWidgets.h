#pragma once

#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QDoubleSpinBox>
#include <QLabel>
#include <QSlider>

namespace Studio {

/// A plain Qt slider bound to a Model<double> in [0, 1]: the binding pattern a host follows for its own widgets.
class BoundSlider : public QSlider, public Marlix::Widgets::BaseWithModel
{
    Q_OBJECT

public:
    explicit BoundSlider(Marlix::SharedPtr<Marlix::Widgets::Model<double>> model, QWidget* parent = nullptr);
    void notify() override;

private:
    static constexpr int STEPS = 1000;
    Marlix::SharedPtr<Marlix::Widgets::Model<double>> model;
};

/// A plain Qt spin box bound to a Model<double>.
class BoundSpinBox : public QDoubleSpinBox, public Marlix::Widgets::BaseWithModel
{
    Q_OBJECT

public:
    BoundSpinBox(Marlix::SharedPtr<Marlix::Widgets::Model<double>> model, double maximum, int decimals,
        const QString& suffix = {}, QWidget* parent = nullptr);
    void notify() override;

private:
    Marlix::SharedPtr<Marlix::Widgets::Model<double>> model;
};

/// A label that shows how often its model notified, so a user sees that every view is told of every change.
class NotificationCounter : public QLabel, public Marlix::Widgets::BaseWithModel
{
    Q_OBJECT

public:
    explicit NotificationCounter(Marlix::SharedPtr<Marlix::Widgets::Model<double>> model, QWidget* parent = nullptr);
    void notify() override;

private:
    Marlix::SharedPtr<Marlix::Widgets::Model<double>> model;
    int notifications = 0;
};

} // namespace Studio
