#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/curves/CurvesEditorDialog.h>

#include <QDialogButtonBox>
#include <QVBoxLayout>

namespace Marlix::Widgets {

CurvesEditorDialog::CurvesEditorDialog(SharedPtr<Model<Marlix::Curves>> curves, Stack<String> channelNames,
    Stack<QColor> channelColors, Optional<int> layer, IViewportHost* viewportHost, DefaultCurveType defaultType,
    QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(tr(TITLE));
    setAccessibleName(tr(TITLE));
    editor = new CurvesEditor(
        std::move(curves), std::move(channelNames), std::move(channelColors), layer, viewportHost, defaultType, this);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(editor, &CurvesEditor::comboBoxFocusChanged, this, &CurvesEditorDialog::comboBoxFocusChanged);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(editor, 1);
    layout->addWidget(buttons);
    resize(scaleByDpi(QSize(360, 420), this));
}

CurvesEditorDialog::~CurvesEditorDialog() = default;

} // namespace Marlix::Widgets
