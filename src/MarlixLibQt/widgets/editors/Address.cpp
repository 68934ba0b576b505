#include <MarlixLibQt/widgets/editors/Address.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

namespace Marlix::Widgets {

Address::Address(SharedPtr<Model<QList<QString>>> model, QWidget* parent)
    : Container(parent)
    , model(model ? std::move(model) : makeSharedPtr<VariableModel<QList<QString>>>())
{
    row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addStretch(1);

    registerCallback(this->model->addCallback([this](const QList<QString>& parts) { rebuild(parts); }));
    notify();
}

Address::~Address() = default;

QAbstractButton* Address::partButton(int index) const
{
    return index >= 0 && index < buttons.size() ? buttons[index] : nullptr;
}

void Address::notify()
{
    rebuild(model->get());
}

void Address::rebuild(const QList<QString>& parts)
{
    if (parts == shownParts && buttons.size() == parts.size())
        return;
    shownParts = parts;

    // The old buttons may be the sender of the click that led here: they go once control is back in the event loop.
    for (QWidget* widget : std::as_const(separators)) {
        row->removeWidget(widget);
        widget->hide();
        widget->deleteLater();
    }
    for (QAbstractButton* button : std::as_const(buttons)) {
        row->removeWidget(button);
        button->hide();
        button->disconnect(this);
        button->deleteLater();
    }
    separators.clear();
    buttons.clear();

    for (int index = 0; index < parts.size(); ++index) {
        if (index > 0) {
            auto* separator = new QLabel(QString(QChar(SEPARATOR)), this);
            separator->setObjectName(QStringLiteral("Address.Separator"));
            row->insertWidget(row->count() - 1, separator);
            separators.append(separator);
        }
        auto* button = new QToolButton(this);
        button->setObjectName(QStringLiteral("Address.Part"));
        button->setText(parts[index]);
        button->setAutoRaise(true);
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
        const bool current = index == parts.size() - 1;
        if (current) {
            QFont font = button->font();
            font.setBold(true);
            button->setFont(font);
        }
        connect(button, &QToolButton::clicked, this, [this, index] { Q_EMIT clicked(index); });
        row->insertWidget(row->count() - 1, button);
        buttons.append(button);
    }
}

} // namespace Marlix::Widgets
