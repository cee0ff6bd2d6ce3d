import QtQuick 2.7
import QtQuick.Controls 1.4
import QtQuick.Window 2.2
import corv.LogParsing 1.0

MenuBar {
    objectName: "mainMenuBar"
    style: MainMenuBarStyle {}

    Menu {
        objectName: "fileMenu"
        title: "&File"

        Menu {
            objectName: "newProjectMenu"
            title: "&New project"

            MenuItem {
                objectName: "newFromVideoMenuItem"
                text: "From &video file..."
                shortcut: "Ctrl+N"
                onTriggered: mainWindow.goOpenVideo("file_menu")
            }
            MenuItem {
                objectName: "newFromDevicesMenuItem"
                text: "From removable devices / &directories..."
                shortcut: "Ctrl+Shift+N"
                onTriggered: mainWindow.goExploreRemovableDevices()
            }
        }
        MenuSeparator {}
        MenuItem {
            objectName: "importLogMenuItem"
            text: "&Import flight log..."
            shortcut: "Ctrl+L"
            enabled: videoPlayer.hasVideoOpened
            onTriggered: mainWindow.goLoadFlightData()
        }
        MenuSeparator {}
        MenuItem {
            objectName: "openProjectMenuItem"
            text: "&Open project..."
            shortcut: "Ctrl+O"
            onTriggered: mainWindow.goOpenProject("file_menu")
        }
        MenuItem {
            objectName: "saveProjectMenuItem"
            text: "&Save project"
            shortcut: "Ctrl+S"
            enabled: videoPlayer.hasVideoOpened
            onTriggered: mainWindow.goSaveProject()
        }
        MenuItem {
            objectName: "saveProjectAsMenuItem"
            text: "&Save project as..."
            shortcut: "Ctrl+Shift+S"
            enabled: videoPlayer.hasVideoOpened
            onTriggered: mainWindow.goSaveProjectAs()
        }
        MenuItem {
            objectName: "saveProjectCopyMenuItem"
            text: "&Save project copy..."
            enabled: currentProject.fileActive
            onTriggered: mainWindow.goSaveProjectCopy()
        }
        MenuItem {
            objectName: "closeProjectMenuItem"
            text: "&Close current project"
            shortcut: "Ctrl+W"
            enabled: videoPlayer.hasVideoOpened
            onTriggered: mainWindow.goCloseProject()
        }
        MenuSeparator {}
        MenuItem {
            objectName: "exitMenuItem"
            text: "&Exit"
            shortcut: "Ctrl+Q"
            onTriggered: Qt.quit()
        }
    }

    Menu {
        objectName: "exportMenu"
        title: "&Export"

        MenuItem {
            objectName: "createReportMenuItem"
            text: "Create inspection report..."
            enabled: LogParser.source !== ""
            onTriggered: mainWindow.goCreatePoiReport()
        }
        MenuItem {
            objectName: "exportFramesMenuItem"
            text: "Export frames as images..."
            enabled: videoPlayer.hasVideoOpened
            onTriggered: secondaryWindows.openFramesExport()
        }
        MenuItem {
            objectName: "exportVideoMenuItem"
            text: "Export video file..."
            enabled: videoPlayer.hasVideoOpened
            onTriggered: secondaryWindows.openVideoExport()
        }
        MenuItem {
            objectName: "copyFrameMenuItem"
            text: "&Copy current frame to clipboard"
            shortcut: "Ctrl+C"
            enabled: videoPlayer.hasVideoOpened
            onTriggered: videoPlayer.copyFrameToClipboard(videoPlayer.timePosition)
        }
    }

    Menu {
        objectName: "settingsMenu"
        title: "&Settings"

        MenuItem {
            objectName: "generalSettingsMenuItem"
            text: "General settings"
            onTriggered: mainWindow.goSettings()
        }
        MenuSeparator {}
        MenuItem {
            objectName: "fullScreenMenuItem"
            text: "&Full screen"
            shortcut: "F11"
            onTriggered: mainWindow.visibility = mainWindow.visibility === Window.FullScreen
                         ? Window.Windowed : Window.FullScreen
        }
        MenuSeparator {}
        MenuItem {
            objectName: "restorePoisMenuItem"
            text: "Restore POIs from flight data..."
            enabled: videoPlayer.hasVideoOpened
            onTriggered: mainWindow.goChooseRestorePOIsAction()
        }
    }

    Menu {
        objectName: "helpMenu"
        title: "&Help"

        MenuItem {
            objectName: "userGuideMenuItem"
            text: "User guide..."
            shortcut: "F1"
            onTriggered: mainWindow.goOpenHelp()
        }
        MenuItem {
            objectName: "shortcutsMenuItem"
            text: "Shortcuts..."
            onTriggered: secondaryWindows.openPlain("ShortcutsWindow.qml")
        }
        MenuItem {
            objectName: "aboutMenuItem"
            text: "About..."
            onTriggered: secondaryWindows.openPlain("AboutWindow.qml")
        }
    }
}
