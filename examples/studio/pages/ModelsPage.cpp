#include "BoundWidgets.h"
#include "StudioPage.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QVBoxLayout>

namespace Studio {

QWidget* createModelsPage(QWidget* parent)
{
    auto* page = new QWidget(parent);
    auto* layout = new QVBoxLayout(page);

    // One model, three views: editing either editor moves the other, and the counter sees every notification.
    const auto opacity = Marlix::makeSharedPtr<Marlix::Widgets::VariableModel<double>>(0.35);
    auto* box = new QGroupBox(QObject::tr("One shared VariableModel<double>"));
    auto* form = new QFormLayout(box);
    form->addRow(QObject::tr("Opacity (slider)"), new BoundSlider(opacity));
    form->addRow(QObject::tr("Opacity (spin box)"), new BoundSpinBox(opacity, 1.0, 3));
    form->addRow(QObject::tr("Observer"), new NotificationCounter(opacity));

    // The same value seen through an adapter: percent on the outside, a fraction in the shared model.
    const auto percent = Marlix::makeSharedPtr<Marlix::Widgets::LambdaModel<double>>(
        opacity, [opacity] { return opacity->get() * 100.0; }, [opacity](double v) { opacity->set(v / 100.0); });
    form->addRow(QObject::tr("Opacity (LambdaModel, percent)"), new BoundSpinBox(percent, 100.0, 1, QStringLiteral(" %")));
    layout->addWidget(box);

    auto* note = new QLabel(QObject::tr("Widgets never talk to each other: each sets the model and re-reads it when "
                                        "the model notifies."));
    note->setWordWrap(true);
    layout->addWidget(note);
    layout->addStretch(1);
    return page;
}

} // namespace Studio
