#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Container.h>
#include <MarlixLibQt/widgets/Model.h>

#include <MarlixLib/math/PosRotScaleTm.h>
#include <MarlixLib/units/Quantity.h>

#include <array>

class QAction;
class QLabel;

namespace Marlix::Widgets {

class SpinBox;

/// A transformation edited as rows of three fields: position (in the scene's length unit), rotation (Euler angles in
/// its angle unit), scale, and the shear when the transformation has one. Every field writes the whole transformation,
/// so a drag on one field is one change of the transformation model.
class MARLIXLIBQT_EXPORT PosRotScale : public Container, public BaseWithModel
{
    Q_OBJECT

public:
    /// The rows of the editor, top to bottom.
    enum class Row
    {
        Position = 0, ///< X, Y and Z of the position, in the scene's length unit.
        Rotation = 1, ///< Euler angles, in the scene's angle unit.
        Scale = 2, ///< Scale factors along X, Y and Z.
        Shear = 3, ///< Shear; shown only while the transformation has one.
    };

    /// Source text of the action that resets everything.
    static constexpr const char* RESET_ALL_TEXT = QT_TR_NOOP("Reset all");
    /// Source text of the action that resets all but the position.
    static constexpr const char* RESET_KEEP_POSITION_TEXT = QT_TR_NOOP("Reset all (keep position)");
    /// Source text of the action that resets the shear.
    static constexpr const char* RESET_SHEAR_TEXT = QT_TR_NOOP("Reset shear");

    /// Edits \p model, showing lengths and angles in the \p units it observes; a null model throws StopException.
    PosRotScale(SharedPtr<Model<PosRotScaleTm>> model, SharedPtr<Model<DisplayUnits>> units,
                QWidget* parent = nullptr);
    ~PosRotScale() override;

    /// The field of component 0 to 2 of \p row; a component out of range throws StopException.
    SpinBox* getField(Row row, int component) const;
    QLabel* getRowLabel(Row row) const; ///< The label ahead of \p row.
    /// Whether the shear row is shown: only while the transformation has a shear, which only "Reset shear" or another
    /// editor can take away.
    bool isShearShown() const;

    /// "Reset all" of the context menu; disabled while the transformation is the identity.
    QAction* getResetAllAction() const { return resetAllAction; }
    /// "Reset all (keep position)"; disabled while only the position differs from the identity.
    QAction* getResetKeepPositionAction() const { return resetKeepPositionAction; }
    /// "Reset shear"; enabled only while there is a shear.
    QAction* getResetShearAction() const { return resetShearAction; }

    /// Identity transformation.
    void resetAll();
    /// Identity rotation, scale and shear; the position stays.
    void resetAllKeepPosition();
    /// Zero shear; position, rotation and scale stay.
    void resetShear();

    void notify() override;

private:
    void applyUnits();
    void updateRows(const PosRotScaleTm& tm);

    static constexpr int ROW_COUNT = 4;
    SharedPtr<Model<PosRotScaleTm>> model;
    SharedPtr<Model<DisplayUnits>> units;
    std::array<std::array<SpinBox*, 3>, ROW_COUNT> fields {};
    std::array<QLabel*, ROW_COUNT> rowLabels {};
    QAction* resetAllAction = nullptr;
    QAction* resetKeepPositionAction = nullptr;
    QAction* resetShearAction = nullptr;
};

} // namespace Marlix::Widgets
