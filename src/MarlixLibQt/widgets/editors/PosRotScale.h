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
    enum class Row
    {
        Position = 0,
        Rotation = 1,
        Scale = 2,
        Shear = 3,
    };

    static constexpr const char* RESET_ALL_TEXT = QT_TR_NOOP("Reset all");
    static constexpr const char* RESET_KEEP_POSITION_TEXT = QT_TR_NOOP("Reset all (keep position)");
    static constexpr const char* RESET_SHEAR_TEXT = QT_TR_NOOP("Reset shear");

    PosRotScale(SharedPtr<Model<PosRotScaleTm>> model, SharedPtr<Model<DisplayUnits>> units,
                QWidget* parent = nullptr);
    ~PosRotScale() override;

    SpinBox* getField(Row row, int component) const;
    QLabel* getRowLabel(Row row) const;
    /// Whether the shear row is shown: only while the transformation has a shear, which only "Reset shear" or another
    /// editor can take away.
    bool isShearShown() const;

    QAction* getResetAllAction() const { return resetAllAction; }
    QAction* getResetKeepPositionAction() const { return resetKeepPositionAction; }
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
