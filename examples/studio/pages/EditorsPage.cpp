#include "StudioPage.h"

#include <MarlixLibQt/widgets/editors/Address.h>
#include <MarlixLibQt/widgets/editors/CheckBox.h>
#include <MarlixLibQt/widgets/editors/ComboBox.h>
#include <MarlixLibQt/widgets/editors/LineEdit.h>
#include <MarlixLibQt/widgets/editors/Number.h>
#include <MarlixLibQt/widgets/editors/Path.h>
#include <MarlixLibQt/widgets/editors/PosRotScale.h>
#include <MarlixLibQt/widgets/editors/Slider.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>
#include <MarlixLibQt/widgets/editors/TimeEdit.h>
#include <MarlixLibQt/widgets/editors/ValuePicker.h>
#include <MarlixLibQt/widgets/editors/Vector.h>

#include <QApplication>
#include <QFileDialog>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QScrollArea>
#include <QVBoxLayout>

namespace Studio {

namespace {

using namespace Marlix::Widgets;
using Marlix::makeSharedPtr;
using Marlix::SharedPtr;

constexpr int LABEL_COLUMN = 0;
constexpr int EDITOR_COLUMN = 1;
constexpr int VIEW_COLUMN = 2;
constexpr int COLUMN_SPACING = 16;
constexpr int ROW_SPACING = 6;
constexpr int SECTION_SPACING = 14;
constexpr int PAGE_MARGIN = 12;

constexpr double SECONDS_PER_MILLISECOND = 0.001;
constexpr double MILLISECONDS_PER_DAY = 24.0 * 3600.0 * 1000.0;

const Marlix::DisplayUnits CENTIMETRES_DEGREES { Marlix::LengthUnit::Centimeter, Marlix::AngleUnit::Degree,
    Marlix::RadianceUnit::WattPerSquareMeterSteradian, Marlix::TimeUnit::Second };
const Marlix::DisplayUnits METRES_RADIANS { Marlix::LengthUnit::Meter, Marlix::AngleUnit::Radian,
    Marlix::RadianceUnit::WattPerSquareMeterSteradian, Marlix::TimeUnit::Second };

/// The rows of the page: a caption per editor, the editor, and a second widget on the same model beside it.
class EditorForm
{
public:
    explicit EditorForm(QWidget* owner)
        : grid(new QGridLayout(owner))
    {
        grid->setContentsMargins(PAGE_MARGIN, PAGE_MARGIN, PAGE_MARGIN, PAGE_MARGIN);
        grid->setHorizontalSpacing(COLUMN_SPACING);
        grid->setVerticalSpacing(ROW_SPACING);
        grid->setColumnStretch(EDITOR_COLUMN, 1);
        grid->setColumnStretch(VIEW_COLUMN, 1);
        addHeader();
    }

    void addSection(const QString& title)
    {
        if (row > 1)
            grid->setRowMinimumHeight(row++, SECTION_SPACING);
        auto* caption = new QLabel(title);
        QFont font = caption->font();
        font.setBold(true);
        caption->setFont(font);
        grid->addWidget(caption, row++, LABEL_COLUMN, 1, 3);
        grid->addWidget(line(), row++, LABEL_COLUMN, 1, 3);
    }

    /// `about` is the caption's tooltip: what the row shows and how its two widgets share the model.
    void addRow(const QString& caption, const QString& about, QWidget* editor, QWidget* view)
    {
        auto* label = new QLabel(caption);
        label->setToolTip(about);
        // The caption names the editor for a screen reader; the second view is named after it.
        // A cell of an editor and a button is named through its editor.
        QWidget* named = editor->metaObject() == &QWidget::staticMetaObject ? editor->findChild<QWidget*>() : editor;
        label->setBuddy(named);
        if (named->accessibleName().isEmpty())
            named->setAccessibleName(caption);
        if (view->accessibleName().isEmpty())
            view->setAccessibleName(QObject::tr("%1, second view").arg(caption));
        // Captions of tall editors stay level with the editor's first line.
        grid->addWidget(label, row, LABEL_COLUMN, Qt::AlignLeft | Qt::AlignTop);
        label->setMinimumHeight(editorLineHeight());
        label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        grid->addWidget(editor, row, EDITOR_COLUMN, verticalAlignment(editor));
        grid->addWidget(view, row, VIEW_COLUMN, verticalAlignment(view));
        ++row;
    }

    void finish() { grid->setRowStretch(row, 1); }

private:
    void addHeader()
    {
        const QStringList titles { QObject::tr("Editor"), QObject::tr("Edits the model"),
            QObject::tr("Second view of the same model") };
        for (int column = 0; column < titles.size(); ++column) {
            auto* title = new QLabel(titles[column]);
            title->setForegroundRole(QPalette::PlaceholderText);
            grid->addWidget(title, row, column);
        }
        ++row;
    }

    // One-line widgets lower than a field (a slider, a check box) sit on the field's middle; taller editors start at
    // the top of their row.
    static Qt::Alignment verticalAlignment(QWidget* widget)
    {
        return widget->sizeHint().height() <= editorLineHeight() ? Qt::AlignVCenter : Qt::AlignTop;
    }

    static QFrame* line()
    {
        auto* frame = new QFrame;
        frame->setFrameShape(QFrame::HLine);
        frame->setFrameShadow(QFrame::Sunken);
        return frame;
    }

    static int editorLineHeight()
    {
        static const int height = SpinBox().sizeHint().height();
        return height;
    }

    QGridLayout* grid;
    int row = 0;
};

SpinBox* numberField(const SharedPtr<Model<double>>& model, double minimum, double maximum, double step, int decimals)
{
    auto* field = new SpinBox(model, model->get());
    field->setRange(minimum, maximum, step, decimals);
    return field;
}

Slider* slider(const SharedPtr<Model<double>>& model, double minimum, double maximum, SliderScale scale)
{
    auto* widget = new Slider(model);
    widget->setConversion(SliderConverter(minimum, maximum, scale));
    return widget;
}

/// An editor and the button beside it in one cell.
QWidget* withButton(QWidget* first, QWidget* second)
{
    auto* cell = new QWidget;
    auto* layout = new QHBoxLayout(cell);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(first, 1);
    layout->addWidget(second, 0);
    return cell;
}

void addNumbers(EditorForm& form)
{
    form.addSection(QObject::tr("Numbers"));

    const auto exposure = makeSharedPtr<VariableModel<double>>(1.5);
    auto* exposureField = numberField(exposure, -10.0, 10.0, 0.1, 2);
    exposureField->setPrecisionType(SpinBox::PrecisionType::TrimTrailingZeros);
    form.addRow(QStringLiteral("SpinBox"),
        QObject::tr("Exposure in stops: type, step with the arrow keys or the wheel, or drag the arrows up and down "
                    "(Shift ten times faster, Ctrl ten times slower)."),
        exposureField, slider(exposure, -10.0, 10.0, SliderScale::Linear));

    // The model keeps metres; the number shows centimetres, the field beside it the metres themselves.
    const auto distance = makeSharedPtr<VariableModel<double>>(1.25);
    auto* distanceNumber = new Number(distance, 1.0);
    distanceNumber->setConversion(
        ModelValueConverter<double>::fromQuantity(Marlix::Quantity::Length, CENTIMETRES_DEGREES));
    distanceNumber->setRange(0.0, 100.0, 1.0, 1);
    auto* metres = numberField(distance, 0.0, 100.0, 0.01, 3);
    metres->setConversion(
        ModelValueConverter<double>::fromQuantity(Marlix::Quantity::Length, Marlix::DEFAULT_DISPLAY_UNITS));
    form.addRow(QObject::tr("Number with a unit"),
        QObject::tr("A distance kept in metres and shown in centimetres; the field beside it shows the same model "
                    "in metres."),
        distanceNumber, metres);

    const auto roughness = makeSharedPtr<VariableModel<double>>(0.35);
    form.addRow(QObject::tr("Slider, linear"), QObject::tr("Roughness from 0 to 1: equal distances, equal steps."),
        slider(roughness, 0.0, 1.0, SliderScale::Linear), numberField(roughness, 0.0, 1.0, 0.01, 3));

    const auto radius = makeSharedPtr<VariableModel<double>>(10.0);
    form.addRow(QObject::tr("Slider, logarithmic"),
        QObject::tr("A light radius from 0 to 100: small values get most of the track."),
        slider(radius, 0.0, 100.0, SliderScale::Logarithmic), numberField(radius, 0.0, 100.0, 0.1, 2));

    // What a property sheet shows for two selected objects whose opacities disagree; the model holds the first.
    const auto opacity = makeSharedPtr<VariableModel<double>>(0.7);
    auto* opacityNumber = new Number(opacity, 1.0, true);
    opacityNumber->setRange(0.0, 1.0, 0.01, 3);
    opacityNumber->setProperty(SpinBox::MIXED_VALUES_PROPERTY, true);
    form.addRow(QObject::tr("Several values"),
        QObject::tr("Two objects of opacity 0.7 and 0.2: no number until one is typed or dragged, which then "
                    "applies to both; the field beside it shows the first object's value."),
        opacityNumber, numberField(opacity, 0.0, 1.0, 0.01, 3));
}

QWidget* focalLengthEditor(const SharedPtr<Model<double>>& focalLength, QWidget* menuOwner)
{
    auto* number = new Number(focalLength, 50.0);
    number->setRange(8.0, 600.0, 1.0, 0);
    number->setSuffix(QStringLiteral(" mm"));
    auto* presets = new QMenu(menuOwner);
    for (const int millimetres : { 18, 24, 35, 50, 85, 135, 200 }) {
        QAction* action = presets->addAction(QObject::tr("%1 mm").arg(millimetres));
        QObject::connect(action, &QAction::triggered, presets,
            [focalLength, millimetres] { focalLength->set(double(millimetres)); });
    }
    auto* picker = new ValuePicker(presets);
    picker->setText(QObject::tr("Presets"));
    return withButton(number, picker);
}

void addVectorsAndTime(EditorForm& form, QWidget* page)
{
    form.addSection(QObject::tr("Vectors, transformations and time"));

    const auto focalLength = makeSharedPtr<VariableModel<double>>(35.0);
    form.addRow(QStringLiteral("ValuePicker"),
        QObject::tr("A focal length with a menu of the usual lenses beside it."), focalLengthEditor(focalLength, page),
        slider(focalLength, 8.0, 600.0, SliderScale::Logarithmic));

    const Marlix::Array<double> origin { 0.0, 0.0, 0.0 };
    const auto direction = makeSharedPtr<VariableModel<Marlix::Array<double>>>(Marlix::Array<double> { 1.0, 2.0, 3.0 });
    const Marlix::Array<QString> axes { QStringLiteral("X"), QStringLiteral("Y"), QStringLiteral("Z") };
    auto* vector = new Vector(direction, origin, false, {}, axes, LabelPosition::Left);
    auto* vectorView = new Vector(direction, origin);
    form.addRow(QStringLiteral("Vector"),
        QObject::tr("Three fields on one array model: each field writes the whole array."), vector, vectorView);

    Marlix::PosRotScaleTm placed;
    placed.position = { 1.2, 0.0, -0.5 };
    placed.rotation = { 0.0, 0.7853981633974483, 0.0 };
    const auto transform = makeSharedPtr<VariableModel<Marlix::PosRotScaleTm>>(placed);
    form.addRow(QStringLiteral("PosRotScale"),
        QObject::tr("A transformation in centimetres and degrees; beside it the same one in metres and radians."),
        new PosRotScale(transform, makeSharedPtr<VariableModel<Marlix::DisplayUnits>>(CENTIMETRES_DEGREES)),
        new PosRotScale(transform, makeSharedPtr<VariableModel<Marlix::DisplayUnits>>(METRES_RADIANS)));

    // 1 h 2 min 3 s; the field beside it shows the same milliseconds as seconds.
    const auto duration = makeSharedPtr<VariableModel<double>>(3723000.0);
    auto* seconds = numberField(duration, 0.0, MILLISECONDS_PER_DAY, 1.0, 1);
    seconds->setConversion({ [](double ms) { return ms * SECONDS_PER_MILLISECOND; },
        [](double s) { return s / SECONDS_PER_MILLISECOND; }, "s" });
    form.addRow(QStringLiteral("TimeEdit"),
        QObject::tr("A duration of up to a day, kept in milliseconds and edited as hours, minutes and seconds."),
        new TimeEdit(duration, 0.0, MILLISECONDS_PER_DAY), seconds);
}

Marlix::Optional<Marlix::Io::Path> browseForPath(const UiPathFlags& flags, Marlix::Optional<Marlix::Io::Path> current)
{
    const QString start = current ? Path::toText(*current) : QString();
    const QString filter = QString::fromStdString(flags.filter);
    QWidget* parent = QApplication::activeWindow();
    QString chosen;
    switch (flags.mode) {
    case UiPathFlags::Mode::Directory:
        chosen = QFileDialog::getExistingDirectory(parent, QObject::tr("Choose a folder"), start);
        break;
    case UiPathFlags::Mode::OpenFile:
        //: The title of the dialog that picks a file to open
        chosen = QFileDialog::getOpenFileName(parent, QObject::tr("Open"), start, filter);
        break;
    case UiPathFlags::Mode::SaveFile:
        chosen = QFileDialog::getSaveFileName(parent, QObject::tr("Save as"), start, filter);
        break;
    }
    if (chosen.isEmpty())
        return std::nullopt;
    return Path::fromText(chosen);
}

/// The parts of an address written as one line, "Scene / Lights / Key light", and read back from it.
SharedPtr<Model<Marlix::String>> addressText(const SharedPtr<Model<QList<QString>>>& address)
{
    const QString separator = QStringLiteral(" / ");
    Model<QList<QString>>* parts = address.get();
    return makeSharedPtr<LambdaModel<Marlix::String>>(
        address, [parts, separator] { return parts->get().join(separator).toStdString(); },
        [parts](Marlix::String text) {
            QList<QString> split;
            for (const QString& part : QString::fromStdString(text).split(QLatin1Char('/')))
                if (!part.trimmed().isEmpty())
                    split.append(part.trimmed());
            parts->set(split);
        });
}

void addChoicesAndText(EditorForm& form)
{
    form.addSection(QObject::tr("Choices, text and paths"));

    const auto castShadows = makeSharedPtr<VariableModel<bool>>(true);
    form.addRow(QStringLiteral("CheckBox"), QObject::tr("A switch; its context menu resets and copies it."),
        new CheckBox(castShadows, true, QObject::tr("Cast shadows")),
        new CheckBox(castShadows, true, QObject::tr("Cast shadows (second view)")));

    // The model holds the chosen entry's value, not its place in the list.
    const Marlix::FlatMap<int, Marlix::String> shadingModels { { 10, "Lambert" }, { 20, "GGX" }, { 30, "Sheen" },
        { 40, "Oren-Nayar" } };
    const auto shading = makeSharedPtr<VariableModel<std::int64_t>>(20);
    auto* choice = ComboBox::makeVirtualEnumDropDownImpl(shadingModels, shading, 10);
    auto* upwards = ComboBox::makeVirtualEnumDropDownImpl(shadingModels, shading, 10);
    upwards->setPopupDirection(ComboBox::PopupDirection::Up);
    upwards->setToolTipBehavior(ComboBox::ToolTipBehavior::CurrentText);
    form.addRow(QStringLiteral("ComboBox"),
        QObject::tr("An enumeration; the wheel changes it only with the keyboard focus. The second list opens "
                    "upwards."),
        choice, upwards);

    const auto name = makeSharedPtr<VariableModel<Marlix::String>>("Key light");
    form.addRow(QStringLiteral("LineEdit"),
        QObject::tr("A name, written to the model when editing ends; beside it a read-only field on the same model."),
        new LineEdit(name, "", LineEdit::Option::ClearButton), new LineEdit(name, "", LineEdit::Option::ReadOnly));

    Marlix::UserData imageFiles;
    imageFiles.set(Marlix::String(UiPathFlags::ATTRIBUTE),
        UiPathFlags { UiPathFlags::Mode::OpenFile, "Images (*.exr *.hdr *.png *.jpg);;All files (*)" });
    const auto environment = makeSharedPtr<VariableModel<Marlix::Io::Path>>(Marlix::Io::Path("maps/studio_small.exr"));
    Model<Marlix::Io::Path>* environmentSource = environment.get();
    const auto environmentText = makeSharedPtr<LambdaModel<Marlix::String>>(
        environment, [environmentSource] { return Path::toText(environmentSource->get()).toStdString(); },
        [environmentSource](Marlix::String text) {
            environmentSource->set(Path::fromText(QString::fromStdString(text)));
        });
    form.addRow(QStringLiteral("Path"),
        QObject::tr("An environment image: typed, or picked with the browse button."),
        new Path(environment, browseForPath, imageFiles),
        new LineEdit(environmentText, "", LineEdit::Option::ReadOnly));

    const auto location = makeSharedPtr<VariableModel<QList<QString>>>(
        QList<QString> { QObject::tr("Scene"), QObject::tr("Lights"), QObject::tr("Key light") });
    auto* address = new Address(location);
    // A click on a part goes up to that level.
    QObject::connect(address, &Address::clicked, address,
        [location](int index) { location->set(location->get().mid(0, index + 1)); });
    form.addRow(QStringLiteral("Address"),
        QObject::tr("Where the user is in the scene; click a part to go up to it, or type a path beside it."), address,
        new LineEdit(addressText(location), "", {}));
}

} // namespace

QWidget* createEditorsPage(QWidget* parent)
{
    auto* scroll = new QScrollArea(parent);
    scroll->setAccessibleName(QObject::tr("Editors"));
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto* content = new QWidget;
    EditorForm form(content);
    addNumbers(form);
    addVectorsAndTime(form, content);
    addChoicesAndText(form);
    form.finish();
    scroll->setWidget(content);
    return scroll;
}

} // namespace Studio
