import QtQuick 2.15
import QtQuick.Window 2.2
import QtQml 2.2
import Qt.labs.settings 1.0
import corv.AppInfo 1.0
import corv.ApplicationTelemetry 1.0
import corv.LogParsing 1.0
import PoiReportExporter 1.0
import ProjectFileLoader 1.0
import Review 1.0
import Timeline 1.0
import Windows 1.0
import "."
import "constants.js" as Cst
import "paths.js" as Paths

ReviewWindow {
    id: mainWindow
    objectName: "mainWindow"

    property int sidebarWidth: 270
    // On a screen lower than the window, its lowest part is off the screen: nothing is put there.
    readonly property int hiddenHeight: Screen.height < minimumHeight + 60 ? hiddenPart.height : 0
    signal installNewVersion(string newVersion)

    width: 1600
    height: 900
    minimumWidth: 800
    minimumHeight: 700
    color: Theme.window
    visible: true
    title: "Vistrel " + AppInfo.versionString
           + (currentProject.fileActive
              ? " - " + currentProject.filePath + (currentProject.modified ? "*" : "") : "")

    player: videoPlayer
    timeline: timelineContent
    review: review
    reports: poiReportExporter
    poiTables: poiTableExport
    currentProject: currentProject
    fileDialogs: fileDialogs
    question: question
    windows: secondaryWindows
    exportProgress: exportProgressWindow
    statusLine: infoTab
    curves: curvesPanel
    sidebar: tabsContainer
    keyboardPlace: videoTab
    finishJobsFirst: quittingSettings.finishJobsFirst

    // What to say of a crash of the last run. The program sets it.
    property string crashNotice: ""

    onClosing: close.accepted = mayQuit()

    menuBar: MainMenuBar {
        player: videoPlayer
        review: review
        recentProjects: recentProjects
        projectOpen: currentProject.fileActive
        curvesOpen: curvesPanel.open
        pictureAlone: pictureAlone.on
        instrumentsExported: exportSettings.instruments
        thermalBarExported: exportSettings.thermalBar
        verbs: mainWindow
        windows: secondaryWindows
    }

    Component.onCompleted: {
        LogParser.duration = Qt.binding(function() { return videoPlayer.duration; });
        ApplicationTelemetry.vistrelEvent("vistrel_started", AppInfo.versionString);
        refocusMainActions();
    }

    function togglePictureAlone() {
        pictureAlone.toggle();
        refocusMainActions();
    }

    function toggleFullScreen() {
        if (pictureAlone.on) {
            pictureAlone.leave();
            return;
        }
        visibility = visibility === Window.FullScreen ? Window.Windowed : Window.FullScreen;
    }

    function showInstrumentsInExports(shown) {
        exportSettings.instruments = shown;
    }

    function showThermalBarInExports(shown) {
        exportSettings.thermalBar = shown;
    }

    HiddenPart {
        id: hiddenPart
        window: mainWindow
    }

    Settings {
        category: "mainWindow"
        property alias x: mainWindow.x
        property alias y: mainWindow.y
        property alias width: mainWindow.width
        property alias height: mainWindow.height
    }

    Settings {
        id: generalSettings
        category: "userPreferences"
        property bool imperialUnits: false
    }

    // Settings write all their values when one of them changes, and the settings window stores
    // these, too: together, each would bring back what the other one was when the program started.
    Settings {
        id: thermalSettings
        category: "userPreferences"
        property bool thermalAsOnScreen: false
    }

    Settings {
        id: quittingSettings
        category: "userPreferences"
        property bool finishJobsFirst: false
    }

    Settings {
        id: loadFileSettings
        category: "loadFile"
        property string folder: ""
    }

    Settings {
        id: saveImageSettings
        category: "saveImage"
        property string folder: ""
    }

    Settings {
        id: saveProjectSettings
        category: "saveProject"
        property string folder: ""
    }

    Settings {
        id: saveReportSettings
        category: "saveReport"
        property string folder: ""
    }

    Settings {
        id: exportSettings
        category: "exports"
        property bool instruments: false
        property bool thermalBar: false
    }

    Settings {
        id: panelSettings
        category: "panels"
        property bool poiListShown: false
        // Folded at first where the picture needs the room.
        property bool sidebarShown: Screen.height >= mainWindow.minimumHeight + 60
    }

    TimelineNavigator {
        id: timelineNavigator
        timeline: timelineContent
    }

    PictureAlone {
        id: pictureAlone
        objectName: "pictureAlone"
        window: mainWindow
        controls: controlsTab
        keyboardPlace: videoTab
        videoOpen: videoPlayer.hasVideoOpened
        escapeIsTaken: timelineContent.movePOIMode || jobsPanel.visible
    }

    MenuReader { menuBar: mainWindow.menuBar }

    ReviewKeys {
        player: videoPlayer
        navigator: timelineNavigator
        scrollBar: timelineTab.scrollBar
        picture: videoRect
        speedBox: controlsTab.speedBox
    }

    Item {
        id: currentProject
        objectName: "currentProject"

        property bool modified: false
        property bool fileActive: filePath !== ""
        property string filePath: review.projectPath
        property bool savingAsCopy: false
        property int activeExportOperation: Cst.activeExportNothing
        property bool fastLoadingChecked: false
    }

    ProjectFileLoader {
        id: projectFileLoader
    }

    Review {
        id: review
        objectName: "review"
        videoPlayer: videoPlayer
        logParser: LogParser
        projectFiles: projectFileLoader
        onProblem: mainWindow.displayErrorDialog(title, text)
        onWarning: mainWindow.displayWarningDialog(title, text)
        onNotice: infoTab.showNotice(text)
        onCurvesChanged: mainWindow.showCurves(curves)
        onAdjustmentsChanged: mainWindow.showAdjustments()
        onOpened: Qt.callLater(takePicture)
        onProjectPathChanged: {
            recentProjects.add(projectPath);
            Qt.callLater(takePicture);
        }

        function takePicture() {
            projectPictures.take(projectPath, timelineContent.getPOIs());
        }
    }

    ProjectPictures {
        id: projectPictures
        player: videoPlayer
        projects: recentProjects.projects
    }

    RecentProjects { id: recentProjects }

    Recovery {
        id: recovery
        objectName: "recovery"
        review: review
        folder: standardFolder
        onNotKept: infoTab.showNotice(text)
    }

    QuestionDialog {
        id: question
    }

    CopyProgressWindow {
        id: copyProgressWindow
        job: review.copyJob
        problem: projectFileLoader.copyProblemText
    }

    PoiReportExporter {
        id: poiReportExporter
        videoPlayer: videoPlayer
        onExportComplete: mainWindow.documentExportComplete(result)
        onExportProgress: mainWindow.documentExportProgress(done, total)
    }

    PoiTableExport {
        id: poiTableExport
        logParser: LogParser
        imperialUnits: generalSettings.imperialUnits
        onWritten: infoTab.showNotice(text)
        onFailed: mainWindow.displayErrorDialog("Points of interest", text)
    }

    ExportInsets {
        id: exportInsets
        objectName: "exportInsets"
        player: videoPlayer
        logParser: LogParser
        instruments: exportSettings.instruments
        thermalBar: exportSettings.thermalBar
        imperialUnits: generalSettings.imperialUnits
    }

    ExportJobs {
        id: exportJobs
        player: videoPlayer
        reports: poiReportExporter
        jobs: review.jobs
        attended: Qt.application.state === Qt.ApplicationActive
        onEnded: infoTab.showNotice(text)
    }

    JobJournal {
        id: jobJournal
        objectName: "jobJournal"
        jobs: review.jobs
        folder: standardFolder
    }

    Connections {
        target: review.jobs

        function onRunningChanged() {
            mainWindow.quitAfterJobs();
        }
    }

    FileDialogs {
        id: fileDialogs
        player: videoPlayer
        review: review
        poiTables: poiTableExport
        verbs: mainWindow
        savingAsCopy: currentProject.savingAsCopy
        onImageRefused: exportJobs.reportRefusedPicture(path)
        mediaFolder: loadFileSettings.folder
        onMediaFolderChosen: loadFileSettings.folder = folder
        imageFolder: saveImageSettings.folder
        onImageFolderChosen: saveImageSettings.folder = folder
        projectFolder: saveProjectSettings.folder
        onProjectFolderChosen: saveProjectSettings.folder = folder
        reportFolder: saveReportSettings.folder
        onReportFolderChosen: saveReportSettings.folder = folder
    }

    SecondaryWindows {
        id: secondaryWindows
        player: videoPlayer
        timeline: timelineContent
        review: review
        verbs: mainWindow
        fastLoadingChecked: currentProject.fastLoadingChecked
        onFastLoadingChosen: currentProject.fastLoadingChecked = checked
        onFinishJobsFirstChosen: quittingSettings.finishJobsFirst = finish
        onThermalAsOnScreenChosen: thermalSettings.thermalAsOnScreen = onScreen
        instrumentsShown: exportSettings.instruments
        onInstrumentsChosen: exportSettings.instruments = shown
        thermalBarShown: exportSettings.thermalBar
        onThermalBarChosen: exportSettings.thermalBar = shown
        // Fails: a tab has no such member. The display keeps its units until the next start, as the
        // settings window announces.
        onUnitsChosen: tabsContainer.getTab(0).informationTabContents.imperialUnits = imperialUnits
    }

    Connections {
        target: LogParser

        function onLogParsingProgress(stage, done, total) {
            mainWindow.logParsingProgress(stage, done, total);
        }

        function onSourceDataParsed() {
            mainWindow.doAdjustThermalRange();
        }
    }

    ExportProgressWindow {
        id: exportProgressWindow
        onAbortClicked: mainWindow.activeExportOperationAbortByUser()
    }

    TimelineStrip {
        id: timelineTab
        objectName: "timelineTab"
        // Above the tools, which the list of covered flags lies over.
        z: 2
        visible: pictureAlone.controlsShown
        anchors { left: parent.left; right: parent.right; bottom: curvesPanel.top }
        player: videoPlayer
        timeline: timelineContent
        navigator: timelineNavigator
        pointer: timelinePointer
        onPoiChosen: mainWindow.refocusMainActions()

        TimelineContent {
            id: timelineContent
            objectName: "timelineContent"
            width: parent.width
            height: parent.height
            logParser: LogParser
            videoPlayer: videoPlayer
            poiModel: review.pois
            enabled: videoPlayer.hasVideoOpened
            duration: videoPlayer.duration
            // Each frame of a paused video; ten times a second of a playing one.
            cursorPosition: videoPlayer.playing ? videoPlayer.timePosition
                                                : videoPlayer.exactTimePosition
            contentWidth: mainWindow.contentItem.width
            contentX: 0
            Accessible.role: Accessible.Slider
            Accessible.name: "Timeline"
            Accessible.description: enabled ? infoTab.positionText : "open a video first"
            Accessible.onIncreaseAction: videoPlayer.step(1)
            Accessible.onDecreaseAction: videoPlayer.step(-1)

            // The number of the frame, for a screen reader, which may set it.
            property int value: 0
            readonly property int minimumValue: 0
            readonly property int maximumValue: Math.max(0, videoPlayer.frameCount - 1)
            readonly property int stepSize: 1

            Binding on value { value: videoPlayer.currentFrameIndex }
            onValueChanged: {
                if (value !== videoPlayer.currentFrameIndex)
                    videoPlayer.goToFrame(value);
            }

            onDurationChanged: updateLogData()
            onSeekRequest: videoPlayer.goToTime(time)
            onPoiDoubleClicked: mainWindow.editSelectedPoi()
            onPoiRefused: {
                selectPoi(poiTime);
                infoTab.showNotice("There is a point of interest at this frame already: '"
                                   + poiAtCursor().name + "'.");
            }
            onClicked: mainWindow.refocusMainActions()
            onContentXChanged: timelineTab.scrolled()

            HoverHandler { id: timelinePointer }
        }
    }

    TransportStrip {
        id: controlsTab
        objectName: "controlsTab"
        z: 1
        visible: pictureAlone.controlsShown
        pictureAlone: pictureAlone.on
        onPictureAloneToggled: mainWindow.togglePictureAlone()
        player: videoPlayer
        timeline: timelineContent
        verbs: mainWindow
        hasFocusItem: mainWindow.activeFocusItem !== null
        escapeIsTaken: poiPanel.filtering || jobsPanel.visible
        poiListShown: panelSettings.poiListShown
        onPoiListToggled: panelSettings.poiListShown = shown
        sidebarShown: panelSettings.sidebarShown
        onSidebarToggled: panelSettings.sidebarShown = shown
        anchors { left: parent.left; right: parent.right; bottom: timelineTab.top }
    }

    CurvesPanel {
        id: curvesPanel
        z: 1
        visible: open && pictureAlone.controlsShown
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: infoTab.top
        logParser: LogParser
        msPerPx: timelineContent.msPerPx
        contentX: timelineContent.contentX
        cursorPosition: videoPlayer.timePosition
        onCurvesChanged: review.curves = curves
    }

    StatusLine {
        id: infoTab
        z: 1
        visible: pictureAlone.controlsShown
        jobs: review.jobs
        jobsShown: jobsPanel.visible
        onJobsClicked: jobsPanel.open = !jobsPanel.open
        objectName: "infoTab"
        player: videoPlayer
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.bottomMargin: mainWindow.hiddenHeight
    }

    JobsPanel {
        id: jobsPanel
        objectName: "jobsPanel"
        // In the corner of the picture: it covers no tool, no flag and no value beside the picture.
        z: 3
        x: videoRect.x + videoRect.width - width
        y: controlsTab.y - height
        room: controlsTab.y
        property bool open: false
        visible: open && pictureAlone.controlsShown
        escapeIsTaken: timelineContent.movePOIMode || poiPanel.filtering
        jobs: review.jobs
        onClosed: {
            open = false;
            mainWindow.refocusMainActions();
        }
        onOpenFolderClicked: mainWindow.openFolder(folder)
    }

    Item {
        id: videoTab
        objectName: "videoTab"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: pictureAlone.on ? parent.bottom : controlsTab.top
        focus: true
        // On the start page its choices come first, else the first control of the window.
        Keys.onTabPressed: event.accepted = activeFocus && videoRect.focusFirstChoice()

        VideoArea {
            id: videoRect
            objectName: "videoRect"
            anchors.fill: parent
            anchors.leftMargin: poiPanel.visible ? poiPanel.width : 0
            anchors.rightMargin: hUDRectangle.visible ? 3 + mainWindow.sidebarWidth : 0
            player: videoPlayer
            coveredHeight: (recoveryBar.visible ? recoveryBar.height : 0) + unfinishedBar.height
                           + (missingMediaBar.visible ? missingMediaBar.height : 0)
            recentProjects: recentProjects.projects
            projectPictures: projectPictures
            onRecentProjectChosen: mainWindow.openRecentProject(path)
            onOpenProjectClicked: mainWindow.goOpenProject("welcome_screen")
            onOpenVideoClicked: mainWindow.goOpenVideo("welcome_screen")
            onBrowseRemovableDevicesClicked: mainWindow.goExploreRemovableDevices()
            onVideoOpenChanged: {
                if (videoOpen)
                    mainWindow.refocusMainActions();
            }

            ReviewPlayer {
                id: videoPlayer
                objectName: "videoPlayer"
                anchors.fill: parent
                adjustmentsPanel: mainWindow.adjustmentsPanel
                thermalAsOnScreen: thermalSettings.thermalAsOnScreen
                onVideoExportProgress: mainWindow.videoExportProgress(exportedFrames, totalFrames)
                onVideoExportComplete: mainWindow.videoExportComplete(result)
                onReadFailed: infoTab.showReasonOfStop(sentence)
                onHasVideoOpenedChanged: recentProjects.refresh()
            }

            MouseArea {
                id: videoMouseArea
                objectName: "videoMouseArea"
                anchors.fill: parent
                visible: videoPlayer.hasVideoOpened
                cursorShape: pictureAlone.controlsShown ? Qt.ArrowCursor : Qt.BlankCursor
                onClicked: {
                    mainWindow.refocusMainActions();
                    videoPlayer.togglePlayPause();
                }
            }
        }

        // Above all that is drawn on the video.
        RecoveryBar {
            id: recoveryBar
            objectName: "recoveryBar"
            anchors.left: videoRect.left
            anchors.right: videoRect.right
            anchors.top: videoRect.top
            recovery: recovery
            crashText: mainWindow.crashNotice
            onCrashReportWanted: mainWindow.showCrashReport()
            onCrashNoticeClosed: {
                mainWindow.crashNotice = "";
                mainWindow.refocusMainActions();
            }
        }

        UnfinishedBar {
            id: unfinishedBar
            objectName: "unfinishedBar"
            anchors.left: videoRect.left
            anchors.right: videoRect.right
            anchors.top: recoveryBar.visible ? recoveryBar.bottom : videoRect.top
            text: jobJournal.unfinishedText
            onClosed: jobJournal.forgetUnfinished()
        }

        MissingMediaBar {
            id: missingMediaBar
            objectName: "missingMediaBar"
            anchors.left: videoRect.left
            anchors.right: videoRect.right
            anchors.top: unfinishedBar.bottom
            missing: review.missingMedia
        }

        PoiPanel {
            id: poiPanel
            objectName: "poiPanel"
            anchors.left: parent.left
            anchors.top: parent.top
            anchors.bottom: parent.bottom
            width: 240
            visible: panelSettings.poiListShown && !pictureAlone.on
            timeline: timelineContent
            navigator: timelineNavigator
            onEditRequested: mainWindow.editSelectedPoi()
            onDone: mainWindow.refocusMainActions()
        }

        Rectangle {
            id: hUDRectangle
            objectName: "hUDRectangle"
            anchors { top: parent.top; right: parent.right; bottom: parent.bottom }
            width: mainWindow.sidebarWidth
            visible: panelSettings.sidebarShown && !pictureAlone.on
            color: Theme.panel

            Sidebar {
                id: tabsContainer
                objectName: "tabsContainer"
                anchors.fill: parent
                player: videoPlayer
                imperialUnits: generalSettings.imperialUnits
                tabWidth: mainWindow.sidebarWidth / 2
                extremesShown: videoRect.extremesShown
                onExtremesToggled: videoRect.extremesShown = shown
                onUnitsToggled: generalSettings.imperialUnits = imperial
                onEditFlightPropertiesClicked: mainWindow.editFlightProperties()
                onAdjustmentsLoaded: mainWindow.doAdjustThermalRange()
                onEditingFinished: mainWindow.refocusMainActions()
            }
        }
    }

    FileDrop {
        anchors.fill: parent
        player: videoPlayer
        verbs: mainWindow
    }
}
