#include <MarlixLibQt/widgets/color/ColorPickerDialog.h>

#include <MarlixLib/base/Exception.h>

#include <QDialogButtonBox>
#include <QVBoxLayout>

#include <mutex>

namespace Marlix::Widgets {

namespace {
struct GlobalValueType
{
    Mutex mutex;
    SharedPtr<Model<long long>> model
        = makeSharedPtr<VariableModel<long long>>(static_cast<long long>(ColorValueType::SrgbByte));
};

GlobalValueType& globalValueType()
{
    static GlobalValueType instance;
    return instance;
}
} // namespace

ColorPickerDialog::ColorPickerDialog(QWidget* parent, ColorFormat format)
    : QDialog(parent)
{
    setWindowTitle(tr(DEFAULT_TITLE));
    setModal(true);
    picker
        = new ColorPickerWidget(format, makeSharedPtr<VariableModel<QColorExtended>>(QColorExtended(QColor(Qt::white))),
            getGlobalValueTypeModel(), this);
    buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(picker, 1);
    layout->addWidget(buttons);
}

ColorPickerDialog::~ColorPickerDialog() = default;

SharedPtr<Model<long long>> ColorPickerDialog::getGlobalValueTypeModel()
{
    GlobalValueType& global = globalValueType();
    const std::lock_guard lock(global.mutex);
    return global.model;
}

void ColorPickerDialog::setGlobalValueTypeModel(SharedPtr<Model<long long>> model)
{
    if (!model)
        Marlix::Detail::throwStopException("widgets/ColorPickerDialog", __LINE__);
    GlobalValueType& global = globalValueType();
    const std::lock_guard lock(global.mutex);
    global.model = std::move(model);
}

} // namespace Marlix::Widgets
