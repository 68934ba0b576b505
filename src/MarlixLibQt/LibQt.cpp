#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/ModifierKeys.h>

#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/styles/MarlixOriginalStyle.h>
#include <MarlixLibQt/widgets/accessibility/AccessibleWidgetsPrivate.h>
#include <MarlixLibQt/widgets/docking/Dock.h>
#include <MarlixLibQt/widgets/frame/WheelScrollPhaseSynthesizer.h>
#include <MarlixLibQt/widgets/properties/PropertyControllerObserver.h>
#include <MarlixLibQt/widgets/properties/PropertyWidgetConstructor.h>

#include <MarlixLib/Lib.h>
#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/TypeDatabase.h>

#include <QApplication>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFont>
#include <QLocale>
#include <QLoggingCategory>
#include <QMetaType>
#include <QOpenGLContext>
#include <QSurfaceFormat>
#include <QTranslator>
#include <qpa/qwindowsysteminterface.h>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#else
#include <dlfcn.h>
#endif

#include <atomic>
#include <filesystem>
#include <mutex>

namespace Marlix::LibQt {

namespace {

Q_LOGGING_CATEGORY(libQtLog, "marlix.libqt")

constexpr double APPLICATION_FONT_POINT_SIZE = 9.0;
constexpr qint64 STARTUP_TIME_LIMIT_MS = 1000;
constexpr const char* PLUGIN_FOLDER_NAME = "QtPlugins";
/// Where the build embeds the compiled catalogues, named CATALOGUE_PREFIX + language (marlixlibqt_de.qm).
constexpr const char* TRANSLATIONS_FOLDER = ":/marlixlibqt/translations";
constexpr const char* CATALOGUE_PREFIX = "marlixlibqt_";
/// Reports a step that took longer than it should, so slow start-ups show up in the log of the host.
class ScopedTimer
{
public:
    ScopedTimer(const char* name, qint64 limitMs)
        : name(name)
        , limitMs(limitMs)
    {
        timer.start();
    }
    ~ScopedTimer()
    {
        if (const qint64 elapsed = timer.elapsed(); elapsed > limitMs)
            qCWarning(libQtLog, "%s took %lld ms (more than %lld ms)", name, elapsed, limitMs);
    }
    ScopedTimer(const ScopedTimer&) = delete;
    ScopedTimer& operator=(const ScopedTimer&) = delete;

private:
    const char* name;
    qint64 limitMs;
    QElapsedTimer timer;
};

/// The command line of an application the library creates: Qt keeps referring to it, so it lives as long as the
/// application.
struct ApplicationArguments
{
    Stack<QByteArray> texts;
    Array<char*> pointers;
    int count = 0;

    void add(QByteArray text)
    {
        texts.push_back(std::move(text));
        pointers.clear();
        for (QByteArray& t : texts)
            pointers.push_back(t.data());
        pointers.push_back(nullptr);
        count = int(texts.size());
    }
};

struct State
{
    std::atomic<std::int32_t> startCount { 0 };
    bool starting = false;
    bool coreStarted = false;
    bool typesRegistered = false;
    UniquePtr<ApplicationArguments> arguments;
    UniquePtr<QCoreApplication> ownedApplication;
    UniquePtr<WheelScrollPhaseSynthesizer> wheelPhases;
    UniquePtr<QTranslator> translator;
    bool madeEventsSynchronous = false;
    bool accessibleFactoryInstalled = false;
};

State& state()
{
    static State s;
    return s;
}

std::atomic<bool> eventLoopRunning { false };

Io::Path currentExecutablePath()
{
#ifdef Q_OS_WIN
    wchar_t buffer[32768];
    const DWORD length = GetModuleFileNameW(nullptr, buffer, DWORD(std::size(buffer)));
    if (length > 0 && length < std::size(buffer))
        return Io::Path(std::wstring(buffer, length));
#else
    std::error_code error;
    if (Io::Path path = std::filesystem::read_symlink("/proc/self/exe", error); !error)
        return path;
#endif
    return Io::Path("marlix");
}

// The folder of this library's binary: its own Qt plug-ins are installed beside it.
Io::Path libraryFolder()
{
#ifdef Q_OS_WIN
    HMODULE module = nullptr;
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<LPCWSTR>(&libraryFolder), &module)) {
        wchar_t buffer[32768];
        const DWORD length = GetModuleFileNameW(module, buffer, DWORD(std::size(buffer)));
        if (length > 0 && length < std::size(buffer))
            return Io::Path(std::wstring(buffer, length)).parent_path();
    }
#else
    Dl_info info {};
    if (dladdr(reinterpret_cast<const void*>(&libraryFolder), &info) && info.dli_fname)
        return Io::Path(info.dli_fname).parent_path();
#endif
    return {};
}

QString pathToQt(const Io::Path& path)
{
    const std::u8string text = path.u8string();
    return QString::fromUtf8(reinterpret_cast<const char*>(text.data()), qsizetype(text.size()));
}

void createApplication(const String& applicationName, ApplicationType type, Flags<Attribute> attributes,
                       const Optional<Io::Path>& executablePath)
{
    State& s = state();
    auto arguments = std::make_unique<ApplicationArguments>();
    arguments->add(QFile::encodeName(pathToQt(executablePath.value_or(currentExecutablePath()))));
    if (type == ApplicationType::Gui) {
        QCoreApplication::setAttribute(Qt::AA_PluginApplication, !attributes.has(Attribute::StandaloneApplication));
        QCoreApplication::setAttribute(attributes.has(Attribute::SoftwareOpenGl) ? Qt::AA_UseSoftwareOpenGL
                                                                                 : Qt::AA_UseDesktopOpenGL);
        const Io::Path plugins = libraryFolder() / PLUGIN_FOLDER_NAME;
        std::error_code error;
        if (!plugins.parent_path().empty() && std::filesystem::is_directory(plugins, error)) {
            const QString folder = pathToQt(plugins);
            QCoreApplication::addLibraryPath(folder);
            arguments->add(QByteArrayLiteral("-platformpluginpath"));
            arguments->add(QFile::encodeName(folder));
        }
        QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::RoundPreferFloor);
        s.ownedApplication = std::make_unique<QApplication>(arguments->count, arguments->pointers.data());
        // Window-system events are delivered as they arrive instead of being queued for the next pass of the event
        // loop: a host's viewport that reads the window state right after a resize or expose sees the new one.
        // Set after the application is made, whose construction resets it.
        QWindowSystemInterface::setSynchronousWindowSystemEvents(true);
        s.madeEventsSynchronous = true;
        if (!attributes.has(Attribute::KeepPlatformStyle))
            QApplication::setStyle(new MarlixOriginalStyle);
        if (!attributes.has(Attribute::KeepPlatformFont)) {
            QFont font = QApplication::font();
            font.setPointSizeF(APPLICATION_FONT_POINT_SIZE);
            QApplication::setFont(font);
        }
    } else {
        s.ownedApplication = std::make_unique<QCoreApplication>(arguments->count, arguments->pointers.data());
    }
    s.arguments = std::move(arguments);
    QCoreApplication::setOrganizationName(QString::fromLatin1(ORGANIZATION_NAME));
    QCoreApplication::setApplicationName(toQt(applicationName));
}

void removeTranslator()
{
    if (UniquePtr<QTranslator> translator = std::move(state().translator))
        QCoreApplication::removeTranslator(translator.get());
}

bool loadCatalogue(QTranslator& translator, QString language)
{
    // QTranslator drops trailing parts itself, so "de_AT" also finds the catalogue for "de".
    language.replace(QLatin1Char('-'), QLatin1Char('_'));
    return translator.load(QString::fromLatin1(CATALOGUE_PREFIX) + language, QString::fromLatin1(TRANSLATIONS_FOLDER));
}

bool installTranslator(const QLocale& locale)
{
    auto translator = std::make_unique<QTranslator>();
    bool found = false;
    for (const QString& language : locale.uiLanguages()) {
        found = loadCatalogue(*translator, language);
        // English is the language of the sources: a user who puts it before another language gets it as it is.
        if (found || QLocale(language).language() == QLocale::English)
            break;
    }
    // Without a catalogue the texts stay English, with English plural forms ("1 object"), which have one.
    const bool installed = found || loadCatalogue(*translator, QStringLiteral("en"));
    removeTranslator();
    if (installed) {
        QCoreApplication::installTranslator(translator.get());
        state().translator = std::move(translator);
    }
    return found;
}

void lastStop()
{
    State& s = state();
    removeTranslator();
    if (s.wheelPhases) {
        if (QCoreApplication* application = QCoreApplication::instance())
            application->removeEventFilter(s.wheelPhases.get());
        s.wheelPhases.reset();
    }
    removeModifierTracking();
    if (std::exchange(s.accessibleFactoryInstalled, false))
        Widgets::removeAccessibleFactory();
    if (s.ownedApplication) {
        s.ownedApplication.reset(); // takes the style with it
        s.arguments.reset();
    }
    if (std::exchange(s.madeEventsSynchronous, false))
        QWindowSystemInterface::setSynchronousWindowSystemEvents(false);
    if (std::exchange(s.typesRegistered, false))
        unregisterDataTypes();
    if (std::exchange(s.coreStarted, false))
        Lib::shutdown();
}

void firstStart(const String& applicationName, ApplicationType type, Flags<Attribute> attributes,
                const Optional<Io::Path>& executablePath)
{
    State& s = state();
    try {
        Lib::startup();
        s.coreStarted = true;
        // A host that registered the library's types itself keeps that registration.
        if (!TypeDatabase::instance().isModuleRegistered(getDataTypesRecord().getModuleName())) {
            registerDataTypes();
            s.typesRegistered = true;
        }
        Widgets::PropertyWidgetConstructor::registerDefaultWidgets();
        if (!QCoreApplication::instance())
            createApplication(applicationName, type, attributes, executablePath);
        if (qobject_cast<QGuiApplication*>(QCoreApplication::instance())
            && !attributes.has(Attribute::NoModifierKeysTracking))
            installModifierTracking();
        if (qobject_cast<QApplication*>(QCoreApplication::instance())
            && !attributes.has(Attribute::NoWheelScrollPhases)) {
            s.wheelPhases = std::make_unique<WheelScrollPhaseSynthesizer>();
            QCoreApplication::instance()->installEventFilter(s.wheelPhases.get());
        }
        if (qobject_cast<QApplication*>(QCoreApplication::instance())) {
            Widgets::Dock::connectOnFocusChangedSignal();
            // Qt asks for the most derived class first, so the library's widgets get these before Qt's for their bases.
            Widgets::installAccessibleFactory();
            s.accessibleFactoryInstalled = true;
        }
        installTranslator(QLocale());
        qRegisterMetaType<String>("String");
        Widgets::PropertyControllerHandler::registerMetaType();
    } catch (...) {
        lastStop(); // a failed start leaves nothing behind
        throw;
    }
}

} // namespace

void startup(const String& applicationName, ApplicationType type, Flags<Attribute> attributes,
             Optional<Io::Path> executablePath)
{
    const ScopedTimer timer("Marlix::LibQt::startup", STARTUP_TIME_LIMIT_MS);
    State& s = state();
    if (s.starting)
        Detail::throwStopException("LibQt", __LINE__); // called again from inside its own first start
    s.starting = true;
    try {
        if (s.startCount.load() == 0)
            firstStart(applicationName, type, attributes, executablePath);
    } catch (...) {
        s.starting = false;
        throw;
    }
    s.startCount.fetch_add(1);
    s.starting = false;
}

void shutdown()
{
    State& s = state();
    if (s.startCount.load() <= 0 || s.starting)
        Detail::throwStopException("LibQt", __LINE__);
    if (s.startCount.load() == 1)
        lastStop();
    s.startCount.fetch_sub(1);
}

bool isStarted()
{
    return state().startCount.load() > 0;
}

bool setLanguage(const QLocale& locale)
{
    if (!isStarted() || !QCoreApplication::instance())
        throw Exception("The library's language can only be set while it is started.");
    return installTranslator(locale);
}

int runEventLoop()
{
    if (!QCoreApplication::instance())
        Detail::throwStopException("LibQt", __LINE__);
    struct RunningFlag
    {
        RunningFlag() { eventLoopRunning.exchange(true); }
        ~RunningFlag() { eventLoopRunning.exchange(false); }
    } running;
    return QCoreApplication::exec();
}

bool isEventLoopRunning()
{
    return eventLoopRunning.load();
}

bool hasOpenGl()
{
    static std::mutex mutex;
    static Optional<bool> available;
    const std::lock_guard lock(mutex);
    if (available)
        return *available;
    // Without a GUI application there is nothing to probe yet; the answer is not kept, so a later call probes.
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return false;
    QOpenGLContext context;
    available = context.create();
    return *available;
}

void setDefaultOpenGlParameters(int samples, int stencilBufferSize)
{
    if (samples < 0 || stencilBufferSize < 0)
        throw Exception("The multisample count and the stencil buffer size cannot be negative.");
    QSurfaceFormat format = QSurfaceFormat::defaultFormat();
    format.setSamples(samples);
    format.setStencilBufferSize(stencilBufferSize);
    QSurfaceFormat::setDefaultFormat(format);
}


} // namespace Marlix::LibQt
