#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QCursor>
#include <QProxyStyle>

#include <atomic>

namespace Marlix {

/// The library's proxy style: custom hints and metrics that widgets ask for, per-widget "Zorva." properties that
/// switch drawing details, and tooltip sizing. It keeps the look of its base style.
class MARLIXLIBQT_EXPORT MarlixStyle : public QProxyStyle
{
    Q_OBJECT

public:
    /// Hints the library's widgets ask through `styleHint`; a host changes them by installing a subclass.
    enum CustomStyleHint : unsigned int
    {
        /// Non-zero: the property sheet gives the label columns of all its sections one width. This style: 1.
        SH_UnifyLabelColumnWidth = SH_CustomBase + 1,
        /// Non-zero: the property sheet installs a `PropertyControllerPin` on property widgets. This style: 0.
        SH_InstallPropertyControllerPin = SH_CustomBase + 2,
        /// Non-zero: the property sheet installs a `PropertyControllerHandler` on property widgets. This style: 0.
        SH_InstallPropertyControllerHandler = SH_CustomBase + 3,
        /// Non-zero: a `SpinBox`'s tool tip over its arrows says that dragging them changes the value. This style: 0.
        SH_SpinBoxDraggingHint = SH_CustomBase + 4,
        /// Non-zero: the property sheet offers its context menu. This style: 0.
        SH_PropertySheetContextMenu = SH_CustomBase + 5,
    };

    /// Metrics the library's widgets ask through `pixelMetric`.
    enum CustomPixelMetric : unsigned int
    {
        /// The height of a property-sheet row in pixels: the font's height plus a margin.
        PM_PropertySheetRowHeight = PM_CustomBase + 1,
        /// The width in pixels beyond which tool tips wrap; 0 or less never wraps. This style: 0.
        PM_ToolTipMaximumWidth = PM_CustomBase + 2,
        /// Extra horizontal space in pixels between a tool tip's frame and its text. This style: 1.
        PM_ToolTipPadding = PM_CustomBase + 3,
        /// The line length in characters at which formatToolTip() breaks tool-tip text.
        PM_ToolTipFormatColumns = PM_CustomBase + 4,
    };

    /// Bits of "Zorva.PropertyControllerState" that the animation overlay tells apart; other bits draw the
    /// generic marker. The value must convert to an unsigned integer through QVariant.
    enum ControllerStateBit : unsigned int
    {
        ControllerStateControlled = 0x1, ///< The application's controller drives the property.
        /// A variant overrides the property; its colour wins over the other bits.
        ControllerStateOverridden = 0x2,
        ControllerStateMixed = 0x4, ///< The objects of a multi-selection are in different states.
    };

    /// Over `baseStyle` (taken over), or over the application's default style when null.
    explicit MarlixStyle(QStyle* baseStyle = nullptr);
    ~MarlixStyle() override; ///< Destroys the style and the base style it owns.

    /// Lets labels that elide ("Zorva.UseEllipsis") shrink below their text's width.
    void polish(QWidget* widget) override;
    /// Starts watching the application's tool tips, to size them (see PM_ToolTipMaximumWidth).
    void polish(QApplication* application) override;
    void unpolish(QApplication* application) override; ///< Stops watching the application's tool tips.
    using QProxyStyle::polish;
    using QProxyStyle::unpolish;

    /// Draws flat buttons ("Zorva.FlatButton") without a panel, the drag-hover marker on fields and buttons, and tree
    /// branches as "Zorva.ShowBranches" asks; everything else as the base style.
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget = nullptr) const override;
    /// Draws as the base style, plus the drag-hover marker on spin and combo boxes.
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
        const QWidget* widget = nullptr) const override;
    /// Honours "Zorva.ShowMnemonic" and elides each line for "Zorva.UseEllipsis" on the widget being painted.
    void drawItemText(QPainter* painter, const QRect& rect, int flags, const QPalette& palette, bool enabled,
        const QString& text, QPalette::ColorRole textRole = QPalette::NoRole) const override;
    /// Centres a colour slider's handle on its value across the whole groove; other controls as the base style.
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl subControl,
        const QWidget* widget) const override;
    /// The base style's size, made to fit a property-sheet row by adjustContentsSize().
    QSize sizeFromContents(
        ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const override;
    /// Answers the CustomPixelMetric values and sizes colour sliders' handles in device-independent pixels.
    int pixelMetric(
        PixelMetric metric, const QStyleOption* option = nullptr, const QWidget* widget = nullptr) const override;
    /// Answers the CustomStyleHint values, keeps menus scrollable and honours "Zorva.ShowSelection" in item views.
    int styleHint(StyleHint hint, const QStyleOption* option = nullptr, const QWidget* widget = nullptr,
        QStyleHintReturn* returnData = nullptr) const override;
    /// The library's own undock icon, with its 2x file for dense screens, for the title-bar restore button.
    QIcon standardIcon(
        StandardPixmap icon, const QStyleOption* option = nullptr, const QWidget* widget = nullptr) const override;

    /// Cursors are not part of this style; asking for one is a programming error and stops with the unit's name.
    virtual QCursor standardCursor(
        Qt::CursorShape shape, const QStyleOption* option = nullptr, const QWidget* widget = nullptr) const;

    /// Resizes tool tips as they show; never consumes an event.
    bool eventFilter(QObject* object, QEvent* event) override;

    /// The size of a property-sheet editor: the height of a row less a pixel above and below, so editors of
    /// different kinds line up in the sheet. Other widgets keep `size`.
    virtual QSize adjustContentsSize(
        ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const;

    /// True for a direct child of a `Collapsible` section that is a property editor: not a nested section, a
    /// menu, a `PropertyControllerPin` nor the section's corner widget.
    static bool isPropertySheetItem(const QWidget* widget);

protected:
    /// Draws the marker of a drag hovering over `widget` ("Zorva.DragHovered") inside `rect`.
    void drawDragHoveredOutline(
        const QRect& rect, const QStyleOption* option, QPainter* painter, const QWidget* widget) const;
    /// Connecting lines of a tree branch, for views that carry "Zorva.ShowBranches" true.
    void drawBranchLines(const QStyleOption* option, QPainter* painter) const;

    /// True when \p widget carries "Zorva.DragHovered" true; false for null.
    static bool isDragHovered(const QWidget* widget);
    /// True when \p widget carries "Zorva.FlatButton" true; false for null.
    static bool isFlatButton(const QWidget* widget);
    /// 1 draws branches with lines, 0 draws no indicator at all, -1 (property absent) draws only the arrow.
    static int branchDisplay(const QWidget* widget);

private:
    void resizeToolTip(QWidget* label) const;

    mutable std::atomic<int> toolTipResizeDepth { 0 };
};

} // namespace Marlix
