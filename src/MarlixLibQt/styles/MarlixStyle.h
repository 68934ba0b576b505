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
        SH_UnifyLabelColumnWidth = SH_CustomBase + 1,
        SH_InstallPropertyControllerPin = SH_CustomBase + 2,
        SH_InstallPropertyControllerHandler = SH_CustomBase + 3,
        SH_SpinBoxDraggingHint = SH_CustomBase + 4,
        SH_PropertySheetContextMenu = SH_CustomBase + 5,
    };

    /// Metrics the library's widgets ask through `pixelMetric`.
    enum CustomPixelMetric : unsigned int
    {
        PM_PropertySheetRowHeight = PM_CustomBase + 1,
        PM_ToolTipMaximumWidth = PM_CustomBase + 2,
        PM_ToolTipPadding = PM_CustomBase + 3,
        PM_ToolTipFormatColumns = PM_CustomBase + 4,
    };

    /// Bits of "Zorva.PropertyControllerState" that the animation overlay tells apart; other bits draw the
    /// generic marker. The value must convert to an unsigned integer through QVariant.
    enum ControllerStateBit : unsigned int
    {
        ControllerStateControlled = 0x1,
        ControllerStateOverridden = 0x2,
        ControllerStateMixed = 0x4,
    };

    /// Over `baseStyle` (taken over), or over the application's default style when null.
    explicit MarlixStyle(QStyle* baseStyle = nullptr);
    ~MarlixStyle() override;

    void polish(QWidget* widget) override;
    void polish(QApplication* application) override;
    void unpolish(QApplication* application) override;
    using QProxyStyle::polish;
    using QProxyStyle::unpolish;

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget = nullptr) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
        const QWidget* widget = nullptr) const override;
    void drawItemText(QPainter* painter, const QRect& rect, int flags, const QPalette& palette, bool enabled,
        const QString& text, QPalette::ColorRole textRole = QPalette::NoRole) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl subControl,
        const QWidget* widget) const override;
    QSize sizeFromContents(
        ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const override;
    int pixelMetric(
        PixelMetric metric, const QStyleOption* option = nullptr, const QWidget* widget = nullptr) const override;
    int styleHint(StyleHint hint, const QStyleOption* option = nullptr, const QWidget* widget = nullptr,
        QStyleHintReturn* returnData = nullptr) const override;
    QIcon standardIcon(
        StandardPixmap icon, const QStyleOption* option = nullptr, const QWidget* widget = nullptr) const override;

    /// Cursors are not part of this style; asking for one is a programming error and stops with the unit's name.
    virtual QCursor standardCursor(
        Qt::CursorShape shape, const QStyleOption* option = nullptr, const QWidget* widget = nullptr) const;

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

    static bool isDragHovered(const QWidget* widget);
    static bool isFlatButton(const QWidget* widget);
    /// 1 draws branches with lines, 0 draws no indicator at all, -1 (property absent) draws only the arrow.
    static int branchDisplay(const QWidget* widget);

private:
    void resizeToolTip(QWidget* label) const;

    mutable std::atomic<int> toolTipResizeDepth { 0 };
};

} // namespace Marlix
