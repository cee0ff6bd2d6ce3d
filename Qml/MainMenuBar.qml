import QtQuick 2.7
import QtQml 2.2
import corv.LogParsing 1.0
import Review 1.0
import VideoPlayer 1.0
import "Controls"

MenuBar {
    id: menuBar

    property VideoPlayer player: null
    property Review review: null
    // Whether the work at hand is bound to a project file.
    property bool projectOpen: false
    property bool curvesOpen: false
    property bool pictureAlone: false
    // Whether exports show the flight instruments.
    property bool instrumentsExported: false
    // Whether exports show the colour bar of the thermal picture.
    property bool thermalBarExported: false
    property RecentProjects recentProjects: null
    // The functions that the entries run: the main window's, and its windows on demand.
    property var verbs: null
    property var windows: null

    readonly property bool videoOpen: player !== null && player.hasVideoOpened

    // A pilot's text as that of an entry, where "&" marks a letter and "<" begins markup.
    function entryOf(text) {
        return text.replace(/[&<]/g, function(sign) { return sign === "&" ? "&&amp;" : "&&lt;"; });
    }

    // The text of an entry as it is read, without marked letters.
    function plainText(entry) {
        return entry.replace(/&(&amp;|&lt;)?/g, function(mark, sign) {
            return sign === "&amp;" ? "&" : sign === "&lt;" ? "<" : "";
        });
    }

    objectName: "mainMenuBar"
    shown: !pictureAlone

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
                onTriggered: menuBar.verbs.goOpenVideo("file_menu")
            }
            MenuItem {
                objectName: "newFromDevicesMenuItem"
                text: "From removable devices / &directories..."
                shortcut: "Ctrl+Shift+N"
                onTriggered: menuBar.verbs.goExploreRemovableDevices()
            }
        }
        MenuSeparator {}
        MenuItem {
            objectName: "importLogMenuItem"
            text: "&Import flight log..."
            shortcut: "Ctrl+L"
            enabled: menuBar.videoOpen
            onTriggered: menuBar.verbs.goLoadFlightData()
        }
        MenuSeparator {}
        MenuItem {
            objectName: "openProjectMenuItem"
            text: "&Open project..."
            shortcut: "Ctrl+O"
            onTriggered: menuBar.verbs.goOpenProject("file_menu")
        }
        Menu {
            id: recentMenu
            objectName: "recentProjectsMenu"
            title: "&Recent projects"
            enabled: menuBar.recentProjects !== null && menuBar.recentProjects.projects.length > 0
            onAboutToShow: menuBar.recentProjects.refresh()

            Instantiator {
                model: menuBar.recentProjects !== null ? menuBar.recentProjects.projects : []
                onObjectAdded: recentMenu.insertItem(index, object)
                onObjectRemoved: recentMenu.removeItem(object)

                MenuItem {
                    text: menuBar.entryOf(modelData.name)
                    enabled: modelData.exists
                    onTriggered: menuBar.verbs.openRecentProject(modelData.path)
                }
            }
            MenuSeparator {}
            MenuItem {
                objectName: "clearRecentProjectsMenuItem"
                text: "&Clear this list"
                onTriggered: menuBar.recentProjects.clear()
            }
        }
        MenuItem {
            objectName: "saveProjectMenuItem"
            text: "&Save project"
            shortcut: "Ctrl+S"
            enabled: menuBar.videoOpen
            onTriggered: menuBar.verbs.goSaveProject()
        }
        MenuItem {
            objectName: "saveProjectAsMenuItem"
            text: "&Save project as..."
            shortcut: "Ctrl+Shift+S"
            enabled: menuBar.videoOpen
            onTriggered: menuBar.verbs.goSaveProjectAs()
        }
        MenuItem {
            objectName: "saveProjectCopyMenuItem"
            text: "&Save project copy..."
            enabled: menuBar.projectOpen
            onTriggered: menuBar.verbs.goSaveProjectCopy()
        }
        MenuItem {
            objectName: "closeProjectMenuItem"
            text: "&Close current project"
            shortcut: "Ctrl+W"
            enabled: menuBar.videoOpen
            onTriggered: menuBar.verbs.goCloseProject()
        }
        MenuSeparator {}
        MenuItem {
            objectName: "exitMenuItem"
            text: "&Exit"
            shortcut: "Ctrl+Q"
            onTriggered: menuBar.verbs.goExit()
        }
    }

    Menu {
        objectName: "reviewMenu"
        title: "&Review"

        MenuItem {
            objectName: "undoMenuItem"
            text: menuBar.review !== null && menuBar.review.canUndo
                  ? "&Undo " + menuBar.entryOf(menuBar.review.undoText) : "&Undo"
            shortcut: "Ctrl+Z"
            enabled: menuBar.review !== null && menuBar.review.canUndo
            onTriggered: menuBar.verbs.undo()
        }
        MenuItem {
            objectName: "redoMenuItem"
            text: menuBar.review !== null && menuBar.review.canRedo
                  ? "&Redo " + menuBar.entryOf(menuBar.review.redoText) : "&Redo"
            shortcut: "Ctrl+Shift+Z"
            enabled: menuBar.review !== null && menuBar.review.canRedo
            onTriggered: menuBar.verbs.redo()
        }
    }

    Menu {
        objectName: "exportMenu"
        title: "&Export"

        MenuItem {
            objectName: "createReportMenuItem"
            text: "Create inspection report..."
            enabled: LogParser.source !== ""
            onTriggered: menuBar.verbs.goCreatePoiReport()
        }
        MenuItem {
            objectName: "exportFramesMenuItem"
            text: "Export frames as images..."
            enabled: menuBar.videoOpen
            onTriggered: menuBar.windows.openFramesExport()
        }
        MenuItem {
            objectName: "exportVideoMenuItem"
            text: "Export video file..."
            enabled: menuBar.videoOpen
            onTriggered: menuBar.windows.openVideoExport()
        }
        MenuItem {
            objectName: "exportPoiTableMenuItem"
            text: "Export points of interest as a table..."
            enabled: menuBar.videoOpen
            onTriggered: menuBar.verbs.goExportPoiTable()
        }
        MenuItem {
            objectName: "copyFrameMenuItem"
            text: "&Copy current frame to clipboard"
            shortcut: "Ctrl+C"
            enabled: menuBar.videoOpen
            onTriggered: menuBar.player.copyFrameToClipboard(menuBar.player.timePosition)
        }
        MenuSeparator {}
        MenuItem {
            objectName: "exportInstrumentsMenuItem"
            text: "Show flight &instruments in exports"
            checkable: true
            checked: menuBar.instrumentsExported
            onTriggered: {
                menuBar.verbs.showInstrumentsInExports(!menuBar.instrumentsExported);
                checked = Qt.binding(function() { return menuBar.instrumentsExported; });
            }
        }
        MenuItem {
            objectName: "exportThermalBarMenuItem"
            text: "Show thermal colour &bar in exports"
            checkable: true
            checked: menuBar.thermalBarExported
            onTriggered: {
                menuBar.verbs.showThermalBarInExports(!menuBar.thermalBarExported);
                checked = Qt.binding(function() { return menuBar.thermalBarExported; });
            }
        }
    }

    Menu {
        objectName: "settingsMenu"
        title: "&Settings"

        MenuItem {
            objectName: "generalSettingsMenuItem"
            text: "General settings"
            onTriggered: menuBar.verbs.goSettings()
        }
        MenuSeparator {}
        MenuItem {
            objectName: "fullScreenMenuItem"
            text: "&Full screen"
            shortcut: "F11"
            onTriggered: menuBar.verbs.toggleFullScreen()
        }
        MenuItem {
            objectName: "pictureAloneMenuItem"
            text: "&Picture alone on full screen"
            shortcut: "F"
            // The way back is a key of the window, which then has no menu bar.
            enabled: menuBar.videoOpen && !menuBar.pictureAlone
            onTriggered: menuBar.verbs.togglePictureAlone()
        }
        MenuItem {
            objectName: "curvesMenuItem"
            text: menuBar.curvesOpen ? "Hide &curves of the flight log"
                                     : "Show &curves of the flight log"
            shortcut: "Ctrl+U"
            onTriggered: menuBar.verbs.toggleCurves()
        }
        MenuSeparator {}
        MenuItem {
            objectName: "restorePoisMenuItem"
            text: "Restore POIs from flight data..."
            enabled: menuBar.videoOpen
            onTriggered: menuBar.verbs.goChooseRestorePOIsAction()
        }
    }

    Menu {
        objectName: "helpMenu"
        title: "&Help"

        MenuItem {
            objectName: "userGuideMenuItem"
            text: "User guide..."
            shortcut: "F1"
            onTriggered: menuBar.verbs.goOpenHelp()
        }
        MenuItem {
            objectName: "shortcutsMenuItem"
            text: "Shortcuts..."
            onTriggered: menuBar.windows.openPlain("ShortcutsWindow.qml")
        }
        MenuItem {
            objectName: "aboutMenuItem"
            text: "About..."
            onTriggered: menuBar.windows.openPlain("AboutWindow.qml")
        }
    }
}
