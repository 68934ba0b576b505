#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/base/Flags.h>
#include <MarlixLib/base/Function.h>

#include <QFlags>
#include <QMetaType>

#include <cstdint>

class QLocale;

namespace Marlix {
class TypeModuleRecord;
}

/// Start-up and shut-down of the library and of the Qt application it runs in.
namespace Marlix::LibQt {

/// The Qt application that the first start creates when the process has none yet.
enum class ApplicationType : std::uint8_t {
    /// A QApplication: widgets, the library's style, font and event hooks.
    Gui,
    /// A QCoreApplication, for tools without a user interface.
    Core,
};

/// Switches of the first start of a GUI application.
enum class Attribute : std::uint32_t {
    /// An executable of its own rather than a library loaded into a host: Qt's plug-in application mode stays off.
    StandaloneApplication = 1 << 0,
    /// Keep the platform's font instead of the library's 9-point application font.
    KeepPlatformFont = 1 << 1,
    /// Keep Qt's default style instead of the library's style.
    KeepPlatformStyle = 1 << 2,
    /// Do not watch the keyboard modifiers; addModifierKeysObserver then never reports.
    NoModifierKeysTracking = 1 << 3,
    /// Ask Qt for its software OpenGL rather than the desktop driver (machines without a usable driver).
    SoftwareOpenGl = 1 << 4,
    /// Leave plain wheel events as they come instead of giving them scroll phases (WheelScrollPhaseSynthesizer).
    NoWheelScrollPhases = 1 << 5,
};

/// The organisation name the first start gives the application (QSettings paths use it).
inline constexpr const char* ORGANIZATION_NAME = "Marlix";

/// Starts the core framework and the library, and creates the Qt application when the process has none. Every call
/// must be matched by one shutdown(); only the first one does the work. `executablePath` is the program the Qt
/// application is named after; the running executable when empty.
MARLIXLIBQT_EXPORT void startup(const String& applicationName, ApplicationType type = ApplicationType::Gui,
                                Flags<Attribute> attributes = {}, Optional<Io::Path> executablePath = {});
/// Matches one startup(); the last one undoes the first start in reverse order and deletes the Qt application if the
/// library created it (never one that the host owns).
MARLIXLIBQT_EXPORT void shutdown();
/// Whether a startup() is not yet matched by its shutdown(); safe to ask from any thread.
MARLIXLIBQT_EXPORT bool isStarted();

/// Switches the library's texts to the first of `locale`'s languages (in QLocale::uiLanguages order) that has a
/// catalogue, or to English, the language of the sources, when none before English has one. Widgets made afterwards
/// speak it. Returns whether a catalogue was found. Start-up sets the user's language (QLocale()); the library must
/// be started (an Exception otherwise, and nothing changes).
MARLIXLIBQT_EXPORT bool setLanguage(const QLocale& locale);

/// Runs the Qt event loop and returns its exit code.
MARLIXLIBQT_EXPORT int runEventLoop();
/// True while runEventLoop is inside the event loop; safe to ask from any thread.
MARLIXLIBQT_EXPORT bool isEventLoopRunning();

/// Whether an OpenGL context can be made here. Probed once, when first asked while a Qt GUI application exists;
/// safe to call from any thread.
MARLIXLIBQT_EXPORT bool hasOpenGl();
/// Sets the multisample count and the stencil buffer size of Qt's default surface format.
MARLIXLIBQT_EXPORT void setDefaultOpenGlParameters(int samples, int stencilBufferSize);

/// Registers the library's value types with the core type database; for hosts that own the Qt application and do not
/// call startup(). A second call without unregisterDataTypes() in between is an Exception.
MARLIXLIBQT_EXPORT void registerDataTypes();
MARLIXLIBQT_EXPORT void unregisterDataTypes(); ///< Removes what registerDataTypes() registered.
/// The library's module record in the core type database.
MARLIXLIBQT_EXPORT const TypeModuleRecord& getDataTypesRecord();

/// Calls `observer` with the keyboard modifiers each time they change, until the lifetime ends.
[[nodiscard]] MARLIXLIBQT_EXPORT CallbackLifetime addModifierKeysObserver(
    Function<void(QFlags<Qt::KeyboardModifier>)> observer);

} // namespace Marlix::LibQt
