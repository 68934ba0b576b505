#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QLineEdit>

namespace Marlix::Widgets {

/// A line edit that shows a colour as six hexadecimal digits and takes typed digits back; alpha is never changed.
///
/// Entered text is padded on the left with zeros, so "f80" is 000F80; text that is not a colour gives black.
class MARLIXLIBQT_EXPORT HexColorEditor : public QLineEdit, public BaseWithModel
{
    Q_OBJECT

public:
    /// Shows \p color and writes it when editing finishes (Return or focus loss); a null model throws StopException.
    explicit HexColorEditor(SharedPtr<Model<QColorExtended>> color, QWidget* parent = nullptr);
    ~HexColorEditor() override;

    const SharedPtr<Model<QColorExtended>>& getColorModel() const { return color; } ///< The colour shown; never null.

    QSize sizeHint() const override; ///< Only as wide as its minimum: six digits need no more.

    void notify() override;

    /// The text shown for `color`: its red, green and blue as upper-case hexadecimal digits, without "#".
    static QString toHexText(const QColor& color);
    /// The colour of a typed text, as entry reads it: padded on the left with "0" to six characters; a text that is
    /// no colour gives an invalid colour, whose channels read as 0.
    static QColor fromHexText(const QString& text);

private:
    void showColor(const QColor& value);
    void applyText();

    SharedPtr<Model<QColorExtended>> color;
};

} // namespace Marlix::Widgets
