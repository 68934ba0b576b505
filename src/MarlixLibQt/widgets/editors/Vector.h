#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/CommonContextMenuOwner.h>
#include <MarlixLibQt/widgets/Container.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/ModelValueConverter.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>

#include <MarlixLib/data/UserData.h>

#include <QString>

#include <cstdint>

class QLabel;

namespace Marlix::Widgets {

class Number;

/// Where a component's label stands relative to its field.
enum class LabelPosition : std::uint8_t
{
    /// "X [ 1.0 ]": the label before the field.
    Left = 0,
    /// "[ 1.0 ] X": the label after the field.
    Right = 1,
};

/// A fixed-length array of doubles edited as one row of number fields, all on one array model: each field writes
/// the whole array through its own component adapter, so every view of the array stays in step.
class MARLIXLIBQT_EXPORT Vector : public Container, public BaseWithModel, public CommonContextMenuOwner
{
    Q_OBJECT

public:
    /// One component per element of `defaultValue`; `withSliders` puts a slider ahead of every field. Components
    /// without a label (or beyond `labels`) stand alone.
    Vector(SharedPtr<Model<Array<double>>> model, const Array<double>& defaultValue, bool withSliders = false,
           const UserData& userData = {}, const Array<QString>& labels = {},
           LabelPosition labelPosition = LabelPosition::Left, QWidget* parent = nullptr);
    ~Vector() override;

    /// Both arrays need one entry per component.
    void setRange(const Array<double>& minimum, const Array<double>& maximum, float step, int decimals);
    void setStepType(SpinBox::StepType type); ///< The stepping of every field.
    /// One suffix per component.
    void setSuffix(const Array<QString>& suffixes);
    void setConversion(ModelValueConverter<double> converter); ///< The same display conversion for every field.

    /// The number of components: the length of the default value.
    int getComponentCount() const { return componentCount; }
    /// The editor of component \p index; an index out of range throws StopException.
    Number* getComponent(int index) const;
    /// The label of component \p index, or null when it has none; an index out of range throws StopException.
    QLabel* getLabel(int index) const;
    /// The array model; every component writes the whole array.
    const SharedPtr<Model<Array<double>>>& getModel() const { return model; }
    const Array<double>& getDefaultValue() const { return defaultValue; } ///< The value "Reset to default" sets.

    /// The components' texts separated by "; ", as "Copy" writes them.
    QString toText() const;

    void notify() override;

private:
    bool pasteComponents(const QString& text);

    SharedPtr<Model<Array<double>>> model;
    Array<Number*> components;
    Array<QLabel*> labels;
    int componentCount = 0;
    Array<double> defaultValue;
};

} // namespace Marlix::Widgets
