// Starts, shows one window, and ends with its first frame: what benchWindow.cpp takes the time of.
//   vistrel-bench-window full|empty
#include "App/look.h"
#include "App/qmlTypes.h"

#include <QApplication>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQuickWindow>
#include <QSettings>
#include <QTemporaryDir>
#include <unistd.h>

namespace {

// The peer: a window of the same controls with the same menu and nothing in it.
const char* const emptyWindow = R"(
    import QtQuick 2.7
    import QtQuick.Controls 1.4
    ApplicationWindow {
        id: mainWindow
        width: 1600
        height: 900
        visible: true
        QtObject { id: videoPlayer; property bool hasVideoOpened: false }
        QtObject { id: currentProject; property bool fileActive: false }
        menuBar: MainMenuBar {}
    })";

} // namespace

int main(int argc, char** argv)
{
    // As the program does it.
    if (argc > 1 && qstrcmp(argv[1], "full") == 0)
        corv::hastenFirstFrame();
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Corvenity"));
    QApplication::setApplicationName(QStringLiteral("Vistrel-bench"));
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    QQuickWindow::setTextRenderType(QQuickWindow::NativeTextRendering);
    corv::registerQmlTypes();

    QQmlApplicationEngine engine;
    engine.rootContext()->setContextProperty(QStringLiteral("applicationDirPath"),
                                             QApplication::applicationDirPath());
    if (application.arguments().value(1) == QLatin1String("full"))
        engine.load(QUrl(QStringLiteral("qrc:/main.qml")));
    else
        engine.loadData(emptyWindow, QUrl(QStringLiteral("qrc:/EmptyWindow.qml")));
    if (engine.rootObjects().isEmpty())
        return 1;
    auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().constFirst());
    if (!window)
        return 1;
    // The end of a program is not part of its start.
    QObject::connect(
        window, &QQuickWindow::frameSwapped, window, [] { _exit(0); }, Qt::DirectConnection);
    return QApplication::exec();
}
