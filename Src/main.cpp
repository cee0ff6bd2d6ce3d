#include "App/interface.h"
#include "App/logCategory.h"
#include "App/look.h"
#include "Platform/Platform.h"
#include "Project/ReportFolder.h"
#include "Shell/AppInfo.h"
#include "Shell/NoDisplayMessage.h"
#include "Shell/SystemInfo.h"
#include "Shell/applicationLogging.h"
#include "Shell/applicationNames.h"
#include "Shell/commandLine.h"
#include "Shell/crashReport.h"
#include "Shell/settingsFormat.h"
#include "Threads/pool.h"
#include "Threads/poolEnd.h"
#include "Update/UpdateManager.h"

#include <QApplication>
#include <QDebug>
#include <QFileInfo>
#include <QIcon>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQuickWindow>
#include <QTimer>
#include <QWindow>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

namespace {

constexpr int updateCheckDelayMs = 1000;

// With less, the libraries that draw the window end the program, and say nothing.
constexpr quint64 leastAddressSpaceBytes = 2'000'000'000;

QStringList wordsOf(int argc, char** argv)
{
    QStringList words;
    for (int i = 0; i < argc; ++i)
        words << QString::fromLocal8Bit(argv[i]);
    return words;
}

// Prints the text of a command line that opens no window, and returns the exit status.
int answer(const corv::CommandLine& line)
{
    const bool refused = line.wish == corv::CommandLine::Wish::refuse;
    std::fputs(qPrintable(line.text), refused ? stderr : stdout);
    return refused ? 2 : 0;
}

// Whether a window can be opened with the memory that the program may have.
bool hasRoomForAWindow()
{
    const quint64 limit = corv::platform::addressSpaceLimitBytes();
    if (limit == 0 || limit >= leastAddressSpaceBytes)
        return true;
    constexpr quint64 megabyte = 1'000'000;
    std::fprintf(stderr,
                 "vistrel: Vistrel cannot open a window: its memory is limited to %llu MB (ulimit "
                 "-v), and it needs %llu MB at least. Raise the limit. vistrel-cli does the same "
                 "work without a window.\n",
                 limit / megabyte, leastAddressSpaceBytes / megabyte);
    return false;
}

// Hands a file named on the command line to the root, which has finished loading by the time that
// the event loop starts.
void openFirstArgument(QObject* root, const QString& argument)
{
    const QString path = corv::platform::longPath(argument);
    qCInfo(lcApp) << "First argument:" << path;
    const QFileInfo file(path);
    const QString suffix = file.suffix().toLower();
    const bool isVideo = suffix == QLatin1String("mp4") || suffix == QLatin1String("mov");
    // Absolute: what is saved later must not depend on the folder that the program was started in.
    QMetaObject::invokeMethod(root, isVideo ? "loadVideo" : "loadProject", Qt::QueuedConnection,
                              Q_ARG(QVariant, QVariant(file.absoluteFilePath())));
}

// Without its documents the program has no window of its own to say so in. Gives the exit code.
int reportMissingInterface(const QStringList& reasons)
{
    constexpr int mostReasons = 5;
    qCCritical(lcApp) << "The interface could not be loaded" << reasons;
    const QString text =
        QStringLiteral("The window of Vistrel could not be loaded. Part of the installation is "
                       "missing or damaged: install the package again. What is missing:\n\n") +
        QStringList(reasons.mid(0, mostReasons)).join(QLatin1Char('\n'));
    std::fprintf(stderr, "vistrel: %s\n", qPrintable(text));
    QMessageBox::critical(nullptr, QStringLiteral("Vistrel"), text);
    return 1;
}

void reportMissingGraphics(const QString& reason)
{
    qCCritical(lcApp) << "Nothing can be drawn:" << reason;
    const QString text =
        QStringLiteral("The window of Vistrel cannot be drawn: this system gives the program no "
                       "OpenGL. Install its graphics driver, or the package libgl1-mesa-dri, which "
                       "draws without one. The reason:\n\n") +
        reason;
    std::fprintf(stderr, "vistrel: %s\n", qPrintable(text));
    QMessageBox::critical(nullptr, QStringLiteral("Vistrel"), text);
    QCoreApplication::exit(1);
}

// Without a receiver of the error Qt ends the program and shows nothing.
void sayWhenNothingCanBeDrawn(QQuickWindow* window)
{
    QObject::connect(window, &QQuickWindow::sceneGraphError, window,
                     [said = false](QQuickWindow::SceneGraphError, const QString& reason) mutable {
                         // It comes again with each try to draw, and from inside of it.
                         if (!std::exchange(said, true))
                             QTimer::singleShot(0, qApp,
                                                [reason] { reportMissingGraphics(reason); });
                     });
}

void connectUpdater(corv::UpdateManager& updater, QObject* root)
{
    QObject::connect(&updater, SIGNAL(updateAvailable(QVariant, QVariant)), root,
                     SLOT(launchUpdateWindow(QVariant, QVariant)), Qt::QueuedConnection);
    QObject::connect(&updater, SIGNAL(installingNewVersionFailed(QVariant)), root,
                     SLOT(showNewInstallationFailedError(QVariant)), Qt::QueuedConnection);
    QObject::connect(root, SIGNAL(installNewVersion(QString)), &updater,
                     SLOT(installNewVersion(QString)), Qt::QueuedConnection);
    QObject::connect(qApp, SIGNAL(aboutToQuit()), &updater, SLOT(cancel()));
    QObject::connect(&updater, SIGNAL(installerRefused(QVariant)), root,
                     SLOT(showInstallerRefused(QVariant)), Qt::QueuedConnection);
}

// All objects wait for their tasks when they end. What is left on the pool after them is a search
// of a medium that does not answer, for which Qt would wait for ever.
class LastWait
{
public:
    ~LastWait()
    {
        constexpr int longestMs = 150;
        if (!corv::isPoolDoneWithin(longestMs))
            std::_Exit(exitCode);
    }
    int exitCode = 0;
};

} // namespace

int main(int argc, char** argv)
{
    // Before the application, which needs a display.
    const corv::CommandLine early = corv::readCommandLine(wordsOf(argc, argv));
    if (early.wish == corv::CommandLine::Wish::showText)
        return answer(early);
    if (!hasRoomForAWindow())
        return 1;

    corv::followScreenScale();
    corv::hastenFirstFrame();
    // First of all messages, so that it covers the start of the scene graph too.
    QLoggingCategory::setFilterRules(QStringLiteral("qt.scenegraph.general=true"));
    std::optional<corv::NoDisplayMessage> noDisplay(std::in_place);
    QApplication application(argc, argv);
    noDisplay.reset();
    LastWait lastWait;
    // Read again: the application has taken out Qt's own options, such as -platform.
    const corv::CommandLine line = corv::readCommandLine(QApplication::arguments());
    if (line.wish != corv::CommandLine::Wish::openWindow)
        return answer(line);
    corv::setApplicationNames();
    corv::keepSettingsWhole();
    corv::ApplicationLogging::instance().init();
    const QString logFilePath = corv::ApplicationLogging::instance().filePath();
    const std::optional<corv::crashReport::Summary> crash = corv::crashReport::take(logFilePath);
    corv::crashReport::install(logFilePath);

    const corv::AppInfo appInfo;
    qCInfo(lcApp, "Vistrel version %s started; process id: %d", qPrintable(appInfo.versionString()),
           static_cast<int>(QApplication::applicationPid()));

    const corv::SystemInfo systemInfo;
    if (!systemInfo.fileExists())
        corv::runOnPool([systemInfo] { systemInfo.writeToFile(); });

    corv::runOnPool([] { corv::ReportFolder::sweep(); });

    corv::prepareInterface(application);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/logo.ico")));

    QQmlApplicationEngine engine;
    QStringList reasons;
    QObject::connect(&engine, &QQmlEngine::warnings, &engine,
                     [&reasons](const QList<QQmlError>& errors) {
                         for (const QQmlError& error : errors)
                             reasons << error.toString();
                     });
    engine.rootContext()->setContextProperty(QStringLiteral("applicationDirPath"),
                                             QApplication::applicationDirPath());
    engine.load(QUrl(QStringLiteral("qrc:/main.qml")));
    if (engine.rootObjects().isEmpty())
        return reportMissingInterface(reasons);
    QObject* root = engine.rootObjects().constFirst();
    if (auto* window = qobject_cast<QWindow*>(root))
        window->setIcon(QIcon(QStringLiteral(":/logo.ico")));
    if (auto* window = qobject_cast<QQuickWindow*>(root))
        sayWhenNothingCanBeDrawn(window);
    if (crash) {
        root->setProperty("crashNotice", corv::crashReport::notice(*crash));
        root->setProperty("crashReportPath", crash->filePath);
    }
    if (!line.file.isEmpty())
        openFirstArgument(root, line.file);

    corv::UpdateManager updater;
    connectUpdater(updater, root);
    QTimer::singleShot(updateCheckDelayMs, &updater, &corv::UpdateManager::checkUpdate);

    const int exitCode = QApplication::exec();
    lastWait.exitCode = exitCode;
    qCInfo(lcApp) << "Bye! Exit code: " << exitCode;
    // The destructors that follow no longer write to the log.
    qInstallMessageHandler(nullptr);
    return exitCode;
}
