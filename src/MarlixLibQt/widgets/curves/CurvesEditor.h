#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/Container.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/curves/CurveModels.h>
#include <MarlixLibQt/widgets/curves/Curves.h>
#include <MarlixLibQt/widgets/frame/ViewportHost.h>

#include <QColor>

class QComboBox;
class QLabel;
class QToolButton;

namespace Marlix::Widgets {

/// The whole curve-editing panel: channel and interpolation choice, the curve area, presets (load, save, reset) and,
/// with a viewport host, the histogram kind, equalization and picking tones in the viewport.
class MARLIXLIBQT_EXPORT CurvesEditor : public Container
{
    Q_OBJECT

public:
    /// Source text of the file-dialog filter of curve files.
    static constexpr const char* FILE_FILTER = QT_TR_NOOP("Photoshop curve files (*.acv);;All files (*.*)");

    /// One name and colour per channel of `curves`; `layer` picks the host's image (see Curves); `viewportHost`, when
    /// given, must outlive the editor; "Reset" returns the active channel to `defaultType`.
    CurvesEditor(SharedPtr<Model<Marlix::Curves>> curves, Stack<String> channelNames, Stack<QColor> channelColors,
        Optional<int> layer = {}, IViewportHost* viewportHost = nullptr,
        DefaultCurveType defaultType = DefaultCurveType::Identity, QWidget* parent = nullptr);
    ~CurvesEditor() override;

    /// "Master", "Red", "Green", "Blue", "Alpha" for as many channels (ColorCurveChannel order), then numbered ones.
    static Stack<String> getColorChannelNames(std::size_t channelCount);
    /// The pens of those channels: the palette's text for the master, the colour of each colour channel.
    static Stack<QColor> getColorChannelColors(std::size_t channelCount);

    Curves* getCurvesWidget() const { return curvesWidget; } ///< The curve area.
    QComboBox* getChannelComboBox() const { return channelBox; } ///< The channel choice.
    /// The interpolation choice of the active channel.
    QComboBox* getInterpolationComboBox() const { return interpolationBox; }
    /// Null without a viewport host, like the equalize and picking buttons.
    QComboBox* getHistogramKindComboBox() const { return histogramBox; }
    QToolButton* getPresetsButton() const { return presetsButton; } ///< Opens the menu to load, save or reset curves.
    /// Equalizes the active channel; null without a viewport host.
    QToolButton* getEqualizeButton() const { return equalizeButton; }
    /// Toggles picking tones in the viewport; null without a viewport host.
    QToolButton* getClickAndDragButton() const { return clickAndDragButton; }
    /// The channel being edited, shared by the channel box and the curve area.
    const SharedPtr<Model<int>>& getActiveChannelModel() const { return activeChannel; }
    /// The interpolation of the active channel, shared by its box and the curve area.
    const SharedPtr<Model<CurveInterpolation>>& getInterpolationModel() const { return interpolation; }

    /// Asks for a curve file and loads it into every channel.
    void loadFromFile();
    void saveToFile(); ///< Asks for a file name and writes the curves there; a failure is reported in a message box.
    /// Returns the active channel to the default curve type given at construction, as one change.
    void resetActiveChannel();

Q_SIGNALS:
    /// Focus entered (true) or left (false) one of the editor's combo boxes.
    void comboBoxFocusChanged(bool focused);

protected:
    /// Reports focus changes of the combo boxes through comboBoxFocusChanged().
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* makeChannelRow();
    QWidget* makeHistogramRow();
    void fillChannelBox();
    void showActiveChannel();
    void showInterpolation();
    void setPicking(bool picking);

    SharedPtr<Model<Marlix::Curves>> curves;
    SharedPtr<Model<int>> activeChannel;
    SharedPtr<Model<CurveInterpolation>> interpolation;
    SharedPtr<Model<HistogramType>> histogramKind;
    Stack<String> channelNames;
    IViewportHost* host = nullptr;
    DefaultCurveType defaultType = DefaultCurveType::Identity;
    Array<CurveInterpolation> interpolationChoices;
    CallbacksOwner subscriptions;

    Curves* curvesWidget = nullptr;
    QComboBox* channelBox = nullptr;
    QComboBox* interpolationBox = nullptr;
    QComboBox* histogramBox = nullptr;
    QToolButton* presetsButton = nullptr;
    QToolButton* equalizeButton = nullptr;
    QToolButton* clickAndDragButton = nullptr;
    QLabel* pickingHint = nullptr;
};

} // namespace Marlix::Widgets
