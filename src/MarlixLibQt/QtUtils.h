#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Flags.h>
#include <MarlixLib/color/Rgb.h>
#include <MarlixLib/color/RgbBytes.h>
#include <MarlixLib/image/BitmapImpl.h>

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QPixmap>
#include <QPoint>
#include <QSize>
#include <QString>

#include <cstddef>
#include <cstdint>

class QLayout;
class QPainter;
class QScreen;
class QStyle;
class QWidget;

namespace Marlix {

class EntityClassInfo;
class GenericProperty;

/// How getDeviceIndependentPixels treats values that scaling would make vanish or that only matter on scaled screens.
enum class DipValueHandling : std::uint8_t {
    /// A non-zero length never scales to 0: hairlines and one-pixel gaps stay visible on any screen.
    KeepNonZero = 1 << 0,
    /// The length is an addition that only scaled screens need: at exactly 96 DPI it is 0.
    ZeroAtStandardDpi = 1 << 1,
};

/// The logical DPI every length of the library is written for.
inline constexpr double STANDARD_DPI = 96.0;

/// The screen that shows `widget`'s window; the primary screen when there is no widget, window or window handle.
MARLIXLIBQT_EXPORT QScreen* screenOf(const QWidget* widget);

/// Scales a length written for a 96-DPI screen to the given logical DPI, rounded half away from zero.
MARLIXLIBQT_EXPORT int scaleToDpi(double value, double logicalDpi, Flags<DipValueHandling> flags = {});

/// Scales a length written for a 96-DPI screen to the screen of `widget`, rounded half away from zero.
MARLIXLIBQT_EXPORT int getDeviceIndependentPixels(double value, const QWidget* widget,
                                                  Flags<DipValueHandling> flags = {});

/// Both coordinates through getDeviceIndependentPixels.
MARLIXLIBQT_EXPORT QPoint scaleByDpi(const QPoint& point, const QWidget* widget);
MARLIXLIBQT_EXPORT QSize scaleByDpi(const QSize& size, const QWidget* widget); ///< \overload

/// Moves a window so that its frame is centred on the available area of its screen.
MARLIXLIBQT_EXPORT void centerOnScreen(QWidget& window);
/// Moves a window so that it is centred on the mouse cursor, kept inside the available area of the cursor's screen
/// (the window's own screen when the cursor is on none).
MARLIXLIBQT_EXPORT void centerOnMouse(QWidget* window);

MARLIXLIBQT_EXPORT QString toQt(StringView text); ///< UTF-8 to a QString; invalid bytes become U+FFFD.
MARLIXLIBQT_EXPORT String fromQt(const QString& text); ///< A QString to UTF-8.
MARLIXLIBQT_EXPORT QList<QString> toQt(ArrayView<const StringView> texts); ///< Each text from UTF-8.
MARLIXLIBQT_EXPORT QList<QString> toQt(ArrayView<const String> texts); ///< Each text from UTF-8.
MARLIXLIBQT_EXPORT Stack<String> fromQt(const QList<QString>& texts); ///< Each text to UTF-8.
MARLIXLIBQT_EXPORT QByteArray toQt(ArrayView<const std::byte> bytes); ///< A byte-for-byte copy.
MARLIXLIBQT_EXPORT Array<std::byte> fromQt(const QByteArray& bytes); ///< A byte-for-byte copy.

/// A grey image; values are clamped to [0, 1].
MARLIXLIBQT_EXPORT QImage toQt(const BitmapImpl<float>& bitmap);
/// An opaque 8-bit colour image (QImage::Format_RGB888).
MARLIXLIBQT_EXPORT QImage toQt(const BitmapImpl<RgbBytes>& bitmap);
/// Keeps the straight alpha of the bitmap (QImage::Format_RGBA8888).
MARLIXLIBQT_EXPORT QImage toQt(const BitmapImpl<RgbaBytes>& bitmap);
/// Linear colours to an 8-bit image with straight alpha; `toDisplay` applies the display power law (1 / 2.2) first,
/// otherwise the components are taken as they are. Components are clamped to [0, 1].
MARLIXLIBQT_EXPORT QImage toQt(const BitmapImpl<Rgb>& bitmap, bool toDisplay);

/// A rich-text tooltip: a bold title line, the text line by line, and an optional shortcut line. A text that already
/// went through formatToolTip comes out unchanged.
MARLIXLIBQT_EXPORT QString formatToolTip(const QString& title, const QString& text, const QString& shortcut = {});
/// The tooltip text as the user would see it over `widget`, as an image (for help pages and drag previews).
MARLIXLIBQT_EXPORT QPixmap renderToolTipToPixmap(const QString& toolTip, const QWidget& widget);

/// A sentence for the user: trimmed, first letter upper case, closed by a period; "%1" is replaced by `value`
/// (or ": value" is appended when there is no placeholder).
MARLIXLIBQT_EXPORT QString formatUiMessage(StringView message, Optional<double> value = {});
/// The text between typographic double quotes (U+201C and U+201D).
MARLIXLIBQT_EXPORT QString getQuoted(const QString& text);
/// Every word starts upper case, except short joining words inside the text ("Depth of Field").
MARLIXLIBQT_EXPORT QString toTitleCase(const QString& text);
/// "lightIntensity" and "light_intensity" become "Light intensity"; acronyms and numbers stay ("Base URL 2").
MARLIXLIBQT_EXPORT QString propertyNameToReadableName(QString name);

/// Key of the display name a property definition may carry; without it the name is made readable from the property's
/// own name.
inline constexpr StringView UI_NAME_ATTRIBUTE = "Zorva.Ui.Name";
/// Key of the description a property definition may carry instead of its definition's description.
inline constexpr StringView UI_DESCRIPTION_ATTRIBUTE = "Zorva.Ui.Description";

/// The label of a property in the property sheet.
MARLIXLIBQT_EXPORT QString getPropertyUiName(const GenericProperty& property);
/// The description of a property in the property sheet (its tooltip text).
MARLIXLIBQT_EXPORT QString getPropertyUiDescription(const GenericProperty& property);
/// The classes that the user can create where `base` is asked for: `base` and its registered descendants that have a
/// factory (never the bare root class "Entity"), sorted by name. The list handed out never changes, and the reference
/// stays valid for the process: a later call after classes were registered or unregistered returns a new list.
MARLIXLIBQT_EXPORT const Stack<EntityClassInfo>& getUiEntityClasses(const EntityClassInfo& base);

/// Removes and deletes every item of the layout, with the widgets and nested layouts in it. Do not call it from a
/// handler of a widget inside the layout.
MARLIXLIBQT_EXPORT void clearLayout(QLayout* layout);
/// The same for `count` items from index `first`; a range outside the layout stops without changing it.
MARLIXLIBQT_EXPORT void clearLayout(QLayout* layout, int first, int count);
/// Makes `child` the only content of `parent`, filling it without margins; returns `child`.
MARLIXLIBQT_EXPORT QWidget* addSingleWidget(QWidget* parent, QWidget* child);
/// Unpolishes and polishes a widget and all its descendants with `style` (the widget's own when null).
MARLIXLIBQT_EXPORT void forcePolishStyleRecursive(QWidget* widget, QStyle* style);

/// True when a widget's painter draws somewhere else than the widget's window, as QWidget::grab and render do.
MARLIXLIBQT_EXPORT bool isPainterRedirected(const QPainter& painter);
/// The mouse buttons that are down now, also when this application has not seen the press.
MARLIXLIBQT_EXPORT Qt::MouseButtons queryMouseButtons();

/// A native window of the windowing system (an HWND on Windows, a window number elsewhere).
using WindowHandle = void*;
/// The native handle of a Qt window id (QWidget::winId).
MARLIXLIBQT_EXPORT WindowHandle getNativeHandleFromQt(std::uint64_t winId);
/// Makes `owner` the owner of `window`: the window stays above it and is minimised with it.
MARLIXLIBQT_EXPORT void setOwnerFromNativeHandleQt(WindowHandle window, WindowHandle owner);

} // namespace Marlix
