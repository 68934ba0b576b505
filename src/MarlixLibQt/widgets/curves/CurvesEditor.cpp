#include <MarlixLib/Lib.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/curves/CurvesEditor.h>

#include <QComboBox>
#include <QEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <iterator>

namespace Marlix::Widgets {

namespace {

constexpr const char* PRESETS_ICON = ":icons/ui/Zorva.CurveEditor/Presets.png";
constexpr const char* EQUALIZE_ICON = ":icons/ui/Zorva.CurveEditor/Equalize.png";
constexpr const char* CLICK_AND_DRAG_ICON = ":icons/ui/Zorva.CurveEditor/ClickAndDrag.png";

QToolButton* makeToolButton(const char* icon, const QString& tip, const QString& name, QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setIcon(QIcon(QString::fromLatin1(icon)));
    button->setToolTip(tip);
    button->setAccessibleName(name);
    button->setAutoRaise(true);
    return button;
}

} // namespace

CurvesEditor::CurvesEditor(SharedPtr<Model<Marlix::Curves>> curvesModel, Stack<String> names,
    Stack<QColor> channelColors, Optional<int> layer, IViewportHost* viewportHost, DefaultCurveType type,
    QWidget* parent)
    : Container(parent)
    , curves(std::move(curvesModel))
    , activeChannel(makeSharedPtr<VariableModel<int>>(0))
    , interpolation(makeSharedPtr<VariableModel<CurveInterpolation>>(CurveInterpolation::CubicSpline))
    , histogramKind(makeSharedPtr<VariableModel<HistogramType>>(HistogramType::Linear))
    , channelNames(std::move(names))
    , host(viewportHost)
    , defaultType(type)
{
    setAccessibleName(tr("Curve editor"));
    interpolationChoices = { CurveInterpolation::CubicSpline, CurveInterpolation::Linear };
    if (isDevelopmentEnviro())
        interpolationChoices.insert(
            interpolationChoices.end(), { CurveInterpolation::CubicUniform, CurveInterpolation::CubicChordal });

    curvesWidget = new Curves(curves, activeChannel, interpolation, layer, std::move(channelColors), this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(getDeviceIndependentPixels(4, this));
    layout->addWidget(makeChannelRow());
    layout->addWidget(curvesWidget, 1);
    if (host) {
        layout->addWidget(makeHistogramRow());
        pickingHint
            = new QLabel(tr("%1 and move the mouse up and down to set the value for the cursor on the curve point.")
                             .arg(tr("Click")),
                this);
        pickingHint->setWordWrap(true);
        pickingHint->setVisible(false);
        layout->addWidget(pickingHint);
        curvesWidget->setHistogramModel(*host, histogramKind);
        connect(curvesWidget, &Curves::exclusiveMouseControlLost, this, [this] {
            const QSignalBlocker blocker(clickAndDragButton);
            clickAndDragButton->setChecked(false);
            pickingHint->setVisible(false);
        });
    }

    subscriptions.add(activeChannel->addCallback([this](int) { showActiveChannel(); }));
    subscriptions.add(interpolation->addCallback([this](CurveInterpolation) { showInterpolation(); }));
    subscriptions.add(curves->addCallback([this](const Marlix::Curves&) { showActiveChannel(); }));
    showActiveChannel();
    showInterpolation();
}

CurvesEditor::~CurvesEditor() = default;

QWidget* CurvesEditor::makeChannelRow()
{
    auto* row = new QWidget(this);
    row->setToolTip(tr("Channel controls row."));
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);

    auto* channelLabel = new QLabel(tr("Channel"), row);
    channelBox = new QComboBox(row);
    channelBox->setToolTip(tr("Active channel."));
    channelBox->setAccessibleName(tr("Channel"));
    channelLabel->setBuddy(channelBox);
    fillChannelBox();
    channelBox->installEventFilter(this);
    connect(channelBox, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (index >= 0)
            activeChannel->set(index);
    });

    auto* interpolationLabel = new QLabel(tr("Interpolation"), row);
    interpolationBox = new QComboBox(row);
    interpolationBox->setToolTip(tr("Interpolation of the active channel."));
    interpolationBox->setAccessibleName(tr("Interpolation"));
    interpolationLabel->setBuddy(interpolationBox);
    const QString itemNames[] = { tr("Cubic"), tr("Linear"), tr("Cubic Uniform"), tr("Cubic Chordal") };
    for (std::size_t i = 0; i < interpolationChoices.size(); ++i)
        interpolationBox->addItem(itemNames[i]);
    interpolationBox->installEventFilter(this);
    connect(interpolationBox, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (index >= 0 && std::size_t(index) < interpolationChoices.size())
            interpolation->set(interpolationChoices[std::size_t(index)]);
    });

    presetsButton = makeToolButton(PRESETS_ICON,
        tr("Allows to load/save all channels of the curve from/to a file and to reset points of the active channel."),
        tr("Presets"), row);
    presetsButton->setPopupMode(QToolButton::InstantPopup);
    auto* menu = new QMenu(presetsButton);
    menu->addAction(tr("Load"), this, &CurvesEditor::loadFromFile);
    menu->addAction(tr("Save"), this, &CurvesEditor::saveToFile);
    menu->addAction(tr("Reset"), this, &CurvesEditor::resetActiveChannel);
    presetsButton->setMenu(menu);

    layout->addWidget(channelLabel);
    layout->addWidget(channelBox, 1);
    layout->addWidget(interpolationLabel);
    layout->addWidget(interpolationBox, 1);
    layout->addWidget(presetsButton);
    return row;
}

QWidget* CurvesEditor::makeHistogramRow()
{
    auto* row = new QWidget(this);
    row->setToolTip(tr("Histogram controls row."));
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);

    auto* label = new QLabel(tr("Histogram"), row);
    histogramBox = new QComboBox(row);
    histogramBox->setToolTip(tr("Histogram kind."));
    histogramBox->setAccessibleName(tr("Histogram"));
    label->setBuddy(histogramBox);
    histogramBox->addItems({ tr("Linear"), tr("Logarithmic"), tr("Cumulative") });
    histogramBox->installEventFilter(this);
    connect(histogramBox, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (index >= 0)
            histogramKind->set(HistogramType(index));
    });

    equalizeButton = makeToolButton(EQUALIZE_ICON, QString(), tr("Equalize"), row);
    connect(equalizeButton, &QToolButton::clicked, curvesWidget, &Curves::equalize);
    clickAndDragButton = makeToolButton(CLICK_AND_DRAG_ICON,
        tr("When enabled, it allows clicking on the image to add a point on the curve where its vertical position is "
           "given by the tone of the clicked pixel. By dragging the mouse up or down horizontal position of the point "
           "can be adjusted."),
        tr("Click and drag"), row);
    clickAndDragButton->setCheckable(true);
    connect(clickAndDragButton, &QToolButton::toggled, this, &CurvesEditor::setPicking);

    layout->addWidget(label);
    layout->addWidget(histogramBox, 1);
    layout->addStretch(1);
    layout->addWidget(equalizeButton);
    layout->addWidget(clickAndDragButton);
    return row;
}

Stack<String> CurvesEditor::getColorChannelNames(std::size_t channelCount)
{
    //: The channel of all colours together
    const QString known[] = { tr("Master"), tr("Red"), tr("Green"), tr("Blue"), tr("Alpha") };
    Stack<String> names;
    for (std::size_t i = 0; i < channelCount; ++i)
        names.push_back(fromQt(i < std::size(known) ? known[i] : tr("Channel %1").arg(i + 1)));
    return names;
}

Stack<QColor> CurvesEditor::getColorChannelColors(std::size_t channelCount)
{
    const QColor known[]
        = { QColor(), QColor(220, 50, 50), QColor(40, 170, 60), QColor(60, 100, 230), QColor(128, 128, 128) };
    Stack<QColor> colors;
    for (std::size_t i = 0; i < channelCount; ++i)
        colors.push_back(i < std::size(known) ? known[i] : QColor());
    return colors;
}

void CurvesEditor::fillChannelBox()
{
    // The property behind the editor may be given curves of another channel count (undo, a script).
    const QSignalBlocker blocker(channelBox);
    channelBox->clear();
    const std::size_t count = curves->get().getChannelCount();
    for (std::size_t i = 0; i < count; ++i)
        channelBox->addItem(i < channelNames.size() ? toQt(channelNames[i]) : tr("Channel %1").arg(i + 1));
}

void CurvesEditor::showActiveChannel()
{
    if (std::size_t(channelBox->count()) != curves->get().getChannelCount())
        fillChannelBox();
    const int channel = curvesWidget->getActiveChannel();
    {
        const QSignalBlocker blocker(channelBox);
        channelBox->setCurrentIndex(channel);
    }
    if (equalizeButton) {
        const QString name = channel < channelBox->count() ? channelBox->itemText(channel) : QString();
        equalizeButton->setToolTip(
            tr("Performs histogram equalization of the %1 channel which adjusts (improves) the contrast of the image.")
                .arg(name));
    }
}

void CurvesEditor::showInterpolation()
{
    const auto found = std::find(interpolationChoices.begin(), interpolationChoices.end(), interpolation->get());
    const QSignalBlocker blocker(interpolationBox);
    // An interpolation that this environment does not offer (set by a script or a file) shows as no choice.
    interpolationBox->setCurrentIndex(
        found == interpolationChoices.end() ? -1 : int(found - interpolationChoices.begin()));
}

void CurvesEditor::setPicking(bool picking)
{
    if (picking && !curvesWidget->requestExclusiveMouseControl()) {
        const QSignalBlocker blocker(clickAndDragButton);
        clickAndDragButton->setChecked(false);
        return;
    }
    if (!picking)
        curvesWidget->releaseExclusiveMouseControl();
    pickingHint->setVisible(picking);
}

void CurvesEditor::loadFromFile()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Select file"), QString(), tr(FILE_FILTER));
    if (!path.isEmpty())
        curvesWidget->load(Io::Path(fromQt(path)));
}

void CurvesEditor::saveToFile()
{
    const QString path = QFileDialog::getSaveFileName(this, tr("Save as"), QString(), tr(FILE_FILTER));
    if (!path.isEmpty())
        curvesWidget->save(Io::Path(fromQt(path)));
}

void CurvesEditor::resetActiveChannel()
{
    curvesWidget->reset(defaultType);
}

bool CurvesEditor::eventFilter(QObject* watched, QEvent* event)
{
    const bool combo = watched == channelBox || watched == interpolationBox || watched == histogramBox;
    if (combo && (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut))
        Q_EMIT comboBoxFocusChanged(event->type() == QEvent::FocusIn);
    return Container::eventFilter(watched, event);
}

} // namespace Marlix::Widgets
