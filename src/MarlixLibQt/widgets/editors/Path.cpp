#include <MarlixLibQt/widgets/editors/Path.h>

#include <MarlixLib/base/Exception.h>

#include <QHBoxLayout>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QToolButton>

namespace Marlix::Widgets {

Path::Path(SharedPtr<Model<Io::Path>> model, BrowseFunction browse, const UserData& userData, QWidget* parent)
    : Container(parent)
    , model(model ? std::move(model) : makeSharedPtr<VariableModel<Io::Path>>())
    , browseFunction(std::move(browse))
    , flags(UiPathFlags::fromUserData(userData))
{
    if (!flags.isValid())
        Marlix::Detail::throwStopException("widgets/Path", __LINE__);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);

    field = new QLineEdit(this);
    field->setObjectName(QStringLiteral("Path.Field"));
    // Names until an owner gives the editor the name of what it edits (a property sheet row names the field).
    field->setAccessibleName(tr("Path"));
    layout->addWidget(field, 1);

    button = new QToolButton(this);
    button->setObjectName(QStringLiteral("Path.Browse"));
    button->setText(QString::fromLatin1(BROWSE_TEXT));
    button->setToolTip(tr(BROWSE_TOOLTIP));
    button->setAccessibleName(tr(BROWSE_TOOLTIP));
    button->setVisible(static_cast<bool>(browseFunction));
    layout->addWidget(button, 0);

    registerCallback(this->model->addCallback([this](const Io::Path&) { notify(); }));

    connect(field, &QLineEdit::editingFinished, this, [this] { writeModel(fromText(field->text())); });
    connect(button, &QToolButton::clicked, this, [this] { this->browse(); });

    setFocusProxy(field);
    notify();
}

Path::~Path()
{
    // The field loses the focus while the frame is destroyed and would report a finished edit to a half-gone frame.
    field->disconnect(this);
    button->disconnect(this);
}

bool Path::browse()
{
    if (!browseFunction)
        return false;
    // Typed but not yet confirmed text is where the user wants the picker to start.
    const Io::Path typed = fromText(field->text());
    const Optional<Io::Path> chosen
        = browseFunction(flags, typed.empty() ? Optional<Io::Path>() : Optional<Io::Path>(typed));
    if (!chosen)
        return false;
    writeModel(*chosen);
    return true;
}

void Path::notify()
{
    const QString text = toText(model->get());
    if (text == field->text())
        return;
    const QSignalBlocker blocker(field);
    field->setText(text);
}

QString Path::toText(const Io::Path& path)
{
    return QString::fromStdU16String(path.u16string());
}

Io::Path Path::fromText(const QString& text)
{
    return Io::Path(text.trimmed().toStdU16String());
}

void Path::writeModel(const Io::Path& path)
{
    // Leaving the field unchanged must not write: a property model would record an empty undo step.
    if (path == model->get()) {
        notify();
        return;
    }
    model->set(path);
    notify();
}

} // namespace Marlix::Widgets
