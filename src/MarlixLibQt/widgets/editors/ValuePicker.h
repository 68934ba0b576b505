#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QPointer>
#include <QToolButton>

class QMenu;

namespace Marlix::Widgets {

/// A small button beside an editor that opens a menu of preset values. The menu opens below the button, aligned
/// with its right edge, and is kept on the button's screen.
///
/// A button made "not enabled" with setButtonEnabled(false) still works: only its panel is drawn as neither enabled
/// nor pressed, which the library's style does for a ValuePicker whose buttonEnabled property is false.
class MARLIXLIBQT_EXPORT ValuePicker : public QToolButton
{
    Q_OBJECT
    /// Whether the panel is drawn as enabled; the button works either way.
    Q_PROPERTY(bool buttonEnabled READ isButtonEnabled WRITE setButtonEnabled)

public:
    /// The menu is not owned; the picker stops placing it when it is destroyed.
    explicit ValuePicker(QMenu* menu, QWidget* parent = nullptr);
    ~ValuePicker() override;

    bool isButtonEnabled() const { return buttonEnabled; } ///< Whether the panel is drawn as enabled; true by default.
    void setButtonEnabled(bool enabled); ///< Repaints when the value changes; the button keeps working.

    /// Top-left corner of a menu of `menuSize` opened from a button whose outer bottom-right corner (one past the
    /// last pixel) is `buttonCorner`: below the button and right-aligned with it, moved left and up as far as needed
    /// to stay inside `availableScreen`, and never past its left or top edge.
    static QPoint menuPosition(const QPoint& buttonCorner, const QSize& menuSize, const QRect& availableScreen);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override; ///< Places the menu each time it is shown.

private:
    void placeMenu();

    QPointer<QMenu> pickerMenu;
    bool buttonEnabled = true;
};

} // namespace Marlix::Widgets
