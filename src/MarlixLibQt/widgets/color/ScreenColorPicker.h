#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QColor>
#include <QWidget>

#include <array>

class QImage;
class QPoint;
class QRect;

namespace Marlix {

/// The mean colour of the screen pixels in the square of (2 `halfSize` + 1) pixels a side centred on the global
/// position `position` (logical pixels). The square is taken in the device pixels of the screen under the position;
/// pixels that lie off that screen are left out of the mean. Invalid when no pixel could be read.
MARLIXLIBQT_EXPORT QColor sampleScreenColor(const QPoint& position, int halfSize);

/// The mean red, green and blue of the pixels of `image` inside `area`; pixels outside the image are left out.
/// Invalid when no pixel of the area lies in the image.
MARLIXLIBQT_EXPORT QColor averageImageColor(const QImage& image, const QRect& area);

} // namespace Marlix

namespace Marlix::Widgets {

class ComboBox;
class EyeDropperButton;

/// Two eyedropper buttons (the colour and its inverse) and the choice of the size of the square they average.
class MARLIXLIBQT_EXPORT ScreenColorPicker : public QWidget, public BaseWithModel
{
    Q_OBJECT

public:
    /// One choice of the square the eyedroppers average.
    struct SampleMode
    {
        const char* text; ///< The label of the choice, untranslated.
        /// Pixels from the centre of the sampled square to its edge.
        int halfSize;
    };
    /// The choices of the sample-mode model, indexed by its value.
    static constexpr std::array<SampleMode, 5> SAMPLE_MODES { {
        { QT_TR_NOOP("Point Sample"), 0 },
        { QT_TR_NOOP("3 by 3 Average"), 1 },
        { QT_TR_NOOP("5 by 5 Average"), 2 },
        { QT_TR_NOOP("11 by 11 Average"), 5 },
        { QT_TR_NOOP("31 by 31 Average"), 15 },
    } };

    /// The two buttons write \p color; \p sampleMode holds the index into SAMPLE_MODES. A null model throws
    /// StopException.
    ScreenColorPicker(SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> sampleMode,
        QWidget* parent = nullptr);
    ~ScreenColorPicker() override;

    /// The button that picks the colour under the cursor.
    EyeDropperButton* getPickButton() const { return pickButton; }
    /// The button that picks the inverse of the colour under the cursor.
    EyeDropperButton* getInvertPickButton() const { return invertPickButton; }
    ComboBox* getSampleModeBox() const { return sampleModeBox; } ///< The choice of the sample mode.

    void notify() override;

    /// The half-size of the square of a sample mode; a value that is no mode stops the program.
    static int getSampleHalfSize(long long sampleMode);

private:
    EyeDropperButton* pickButton = nullptr;
    EyeDropperButton* invertPickButton = nullptr;
    ComboBox* sampleModeBox = nullptr;
};

} // namespace Marlix::Widgets
