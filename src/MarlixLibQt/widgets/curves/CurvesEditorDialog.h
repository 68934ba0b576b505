#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/curves/CurvesEditor.h>

#include <QDialog>

namespace Marlix::Widgets {

/// The curve-editing panel in a window of its own; edits reach the model as they are made, so the dialog only closes.
class MARLIXLIBQT_EXPORT CurvesEditorDialog : public QDialog
{
    Q_OBJECT

public:
    static constexpr const char* TITLE = QT_TR_NOOP("Velkin Curve Editor"); ///< Source text of the window title.

    /// The arguments of CurvesEditor.
    CurvesEditorDialog(SharedPtr<Model<Marlix::Curves>> curves, Stack<String> channelNames, Stack<QColor> channelColors,
        Optional<int> layer = {}, IViewportHost* viewportHost = nullptr,
        DefaultCurveType defaultType = DefaultCurveType::Identity, QWidget* parent = nullptr);
    ~CurvesEditorDialog() override;

    CurvesEditor* getEditor() const { return editor; } ///< The panel inside the dialog.

Q_SIGNALS:
    void comboBoxFocusChanged(bool focused); ///< Forwards CurvesEditor::comboBoxFocusChanged().

private:
    CurvesEditor* editor = nullptr;
};

} // namespace Marlix::Widgets
