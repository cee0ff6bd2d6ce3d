import QtQuick 2.15
import QtQuick.Controls 1.4
import QtQuick.Window 2.2
import QtQuick.Dialogs 1.2
import QtQml 2.2
import Qt.labs.settings 1.0
import corv.AppInfo 1.0
import corv.ApplicationTelemetry 1.0
import corv.LogParsing 1.0
import PoiReportExporter 1.0
import ProjectFileLoader 1.0
import Review 1.0
import Timeline 1.0
import "."
import "constants.js" as Cst
import "paths.js" as Paths

ApplicationWindow {
    id: mainWindow
    objectName: "mainWindow"

    property int sidebarWidth: 270
    // On a screen lower than the window, its lowest part is off the screen: nothing is put there.
    readonly property int hiddenHeight: Screen.height < minimumHeight + 60
            ? Math.max(0, y + height - Screen.virtualY - Screen.height) : 0
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

    onClosing: close.accepted = review.copyJob === null

    menuBar: MainMenuBar {
        player: videoPlayer
        review: review
        recentProjects: recentProjects
        projectOpen: currentProject.fileActive
        curvesOpen: curvesPanel.open
        verbs: mainWindow
        windows: secondaryWindows
    }

    Component.onCompleted: {
        LogParser.duration = Qt.binding(function() { return videoPlayer.duration; });
        ApplicationTelemetry.vistrelEvent("vistrel_started", AppInfo.versionString);
        refocusMainActions();
    }

    function loadProject(path) {
        console.log("Trying to open project " + path);
        review.openProject(path);
    }

    function openRecentProject(path) {
        videoPlayer.pause();
        loadProject(path);
    }

    function loadVideo(path) {
        videoPlayer.source = path;
    }

    function launchUpdateWindow(newVersion, releaseNotes) {
        secondaryWindows.openUpdate(newVersion, releaseNotes);
    }

    function showNewInstallationFailedError(newInstallerPath) {
        displayErrorDialog("Installing new Vistrel",
                           "Failed to automatically install the new Vistrel. Please proceed with manual installation.");
        Qt.openUrlExternally(Paths.toUrl(newInstallerPath));
    }

    function goOpenProject(source) {
        ApplicationTelemetry.vistrelEvent("open_project_from_" + source);
        videoPlayer.pause();
        fileDialogs.loadProjectDialog.open();
    }

    function goSaveProjectAs() {
        ApplicationTelemetry.vistrelEvent("save_project_as");
        askWhereToSave(false);
    }

    function goSaveProjectCopy() {
        ApplicationTelemetry.vistrelEvent("save_project_copy");
        askWhereToSave(true);
    }

    function goSaveProject() {
        ApplicationTelemetry.vistrelEvent("save_project");
        if (!videoPlayer.hasVideoOpened)
            return;
        if (!currentProject.fileActive) {
            goSaveProjectAs();
            return;
        }
        videoPlayer.pause();
        doSaveProject(currentProject.filePath);
    }

    // Not in the middle of a copy, of which nothing would be left.
    function goExit() {
        if (review.copyJob === null)
            Qt.quit();
    }

    function goCloseProject() {
        ApplicationTelemetry.vistrelEvent("close_project");
        resetStatusAsNewProject();
    }

    function resetStatusAsNewProject() {
        review.close();
    }

    function goOpenVideo(source) {
        ApplicationTelemetry.vistrelEvent("open_video_from_" + source);
        videoPlayer.pause();
        fileDialogs.videoImportDialog.open();
    }

    function afterVideoImportChoice(videoUrl) {
        if (!Paths.hasExtension(videoUrl, [".mov", ".avi", ".3gp", ".mp4"])) {
            displayErrorDialog("Invalid file",
                               "Invalid file extension, choose a \".mov\", \".avi\", \".3gp\" or \".mp4\" file");
            return;
        }
        review.openFlight(Paths.decodedPath(videoUrl), "");
    }

    function goLoadFlightData() {
        videoPlayer.pause();
        fileDialogs.logImportDialog.open();
    }

    function afterFlightDataImportChoice(logUrl) {
        if (!Paths.hasExtension(logUrl, [".log"])) {
            displayErrorDialog("Invalid file", "Invalid file extension, chose a \".log\" file");
            return;
        }
        review.attachLog(Paths.decodedPath(logUrl));
    }

    // Opens a flight found by the importer; its log is read once its video is open. A flight without
    // a log has none.
    function openFlight(videoFile, logFile) {
        review.openFlight(videoFile, logFile);
    }

    function goResetPOIsFromFlightData() {
        videoPlayer.pause();
        review.addMissingPoisFromLog();
    }

    function goOverwritePOIsFromFlightData() {
        videoPlayer.pause();
        timelineContent.restoreMissingPOIsWithLogData();
    }

    function goExploreRemovableDevices() {
        secondaryWindows.openImporter();
    }

    function goSettings() {
        secondaryWindows.openSettings();
    }

    function goChooseRestorePOIsAction() {
        secondaryWindows.openRestoreLog();
    }

    function goCreatePoiReport() {
        if (!videoPlayer.hasVideoOpened)
            return;
        videoPlayer.pause();
        fileDialogs.createPoiReport.open();
    }

    function saveCurrentFrame() {
        videoPlayer.pause();
        fileDialogs.saveImageDialog.open();
    }

    function toggleFullScreen() {
        visibility = visibility === Window.FullScreen ? Window.Windowed : Window.FullScreen;
    }

    function toggleCurves() {
        curvesPanel.open = !curvesPanel.open;
        if (!curvesPanel.open)
            refocusMainActions();
    }

    function goOpenHelp() {
        var manual = Paths.urlInFolder(applicationDirPath, "manual.pdf");
        if (!Qt.openUrlExternally(Qt.resolvedUrl(manual)))
            displayWarningDialog("User guide", "No program opens the user guide here. It is in the file\n\n"
                                               + Paths.decodedPath(manual));
    }

    function resetCorrectionParameters() {
        review.resetCorrections();
    }

    function updateCorrectionParameters() {
        var panel = adjustmentsPanel();
        if (panel === undefined)
            return;
        panel.irHorizontalPosCorrection = videoPlayer.irOffsetX;
        panel.irVerticalPosCorrection = videoPlayer.irOffsetY;
        panel.logTimeShiftingCorrection = LogParser.manualLogTimeOffset;
    }

    function displayErrorDialog(title, message) {
        displayDialog(title, message, StandardIcon.Critical);
    }

    function displayWarningDialog(title, message) {
        displayDialog(title, message, StandardIcon.Warning);
    }

    function doSaveProject(path) {
        review.save(path);
    }

    function doSaveProjectAs(path) {
        review.saveAs(path);
    }

    function doSaveProjectCopy(path) {
        doSaveOperation(path, true);
    }

    // Writes a project; with copies beside it the work stays bound to its own.
    function doSaveOperation(path, copySourceFiles) {
        if (copySourceFiles)
            review.saveCopy(path);
        else
            review.save(path);
    }

    function doCreatePoiReport(path) {
        poiReportExporter.createPoiReport(timelineContent.getPOIs(), path, LogParser.flightNaming);
        showExportProgress(Cst.activeExportWordDocument, "Generating document...");
    }

    function doAdjustThermalRange() {
        var panel = adjustmentsPanel();
        if (panel === undefined)
            return;
        if (LogParser.thermalCameraVersion == 35) {
            console.log("Setting values for newer thermal camera");
            panel.irRangeMin = Cst.newLeptonMinValue;
            panel.irRangeMax = Cst.newLeptonMaxValue;
        } else {
            console.log("Setting values for older thermal camera");
            panel.irRangeMin = Cst.oldLeptonMinValue;
            panel.irRangeMax = Cst.oldLeptonMaxValue;
        }
    }

    function logParsingComplete(result) {
        review.logParsed(result);
    }

    function logParsingProgress(stage, done, total) {
        infoTab.showLogProgress(stage, done, total);
    }

    function videoExportComplete(result) {
        exportProgressWindow.visible = false;
    }

    function videoExportProgress(done, total) {
        setExportProgress(done, total);
    }

    function documentExportComplete(result) {
        exportProgressWindow.visible = false;
    }

    function documentExportProgress(done, total) {
        setExportProgress(done, total);
    }

    function activeExportOperationAbortByUser() {
        if (currentProject.activeExportOperation === Cst.activeExportVideo)
            videoPlayer.cancelExportVideo();
        else if (currentProject.activeExportOperation === Cst.activeExportWordDocument)
            poiReportExporter.abortExportOperation();
    }

    function addNewPoiAtPosition() {
        timelineContent.addPoiAtPosition();
    }

    function deleteSelectedPoi() {
        timelineContent.deleteSelectedPoi();
    }

    function editSelectedPoi() {
        secondaryWindows.openPoiProperties();
    }

    function startMovingPoi() {
        timelineContent.enterMovePOIMode();
    }

    function stopMovingPoi() {
        timelineContent.exitMovePOIMode();
    }

    // On its own place a point of interest stays as it is; another one is replaced only when asked.
    function confirmMovingPoi() {
        if (!timelineContent.movePOIMode)
            return;
        var there = timelineContent.poiAtCursor();
        var moved = timelineContent.getSelectedPOI();
        if (there.time === undefined) {
            timelineContent.confirmNewPOIPositionAndExitMoveMode();
        } else if (there.time === moved.time) {
            timelineContent.exitMovePOIMode();
            infoTab.showNotice("Not moved: '" + moved.name + "' is at this frame already.");
        } else {
            question.ask("Replace point of interest",
                         "There is a point of interest '" + there.name
                         + "' at this frame. Replace it by '" + moved.name + "'?",
                         timelineContent.confirmNewPOIPositionAndExitMoveMode);
        }
    }

    function undo() {
        infoTab.showNotice("Undone: " + review.undoText);
        review.undo();
    }

    function redo() {
        infoTab.showNotice("Redone: " + review.redoText);
        review.redo();
    }

    function nameFlight(missionName, flightName, flightNumber) {
        review.nameFlight(missionName, flightName, flightNumber);
    }

    // A name that was completed after the dialog had asked about the one typed.
    function askBeforeReplacing(path, typedPath, write) {
        if (path === typedPath || !review.fileExists(path))
            write();
        else
            question.ask("Replace file", path + " already exists.\nDo you want to replace it?", write);
    }

    // The panel shows once more what the player and the parser have.
    function showAdjustments() {
        updateCorrectionParameters();
        videoPlayer.updateControlsStates();
        videoPlayer.updatePropertiesStates();
    }

    function editFlightProperties() {
        secondaryWindows.openFlightProperties();
    }

    function refocusMainActions() {
        videoTab.forceActiveFocus();
    }

    // The panel is not there before its tab was first shown: undefined until then.
    function adjustmentsPanel() {
        return tabsContainer.getTab(1).children[0];
    }

    function askWhereToSave(asCopy) {
        if (!videoPlayer.hasVideoOpened)
            return;
        videoPlayer.pause();
        currentProject.savingAsCopy = asCopy;
        fileDialogs.saveProjectDialog.open();
    }

    function displayDialog(title, message, icon) {
        console.log(title + ": " + message);
        var dialog = genericErrorDialog.createObject(mainWindow);
        dialog.title = title;
        dialog.text = message;
        dialog.icon = icon;
        dialog.visible = true;
    }

    function showVideoExport() {
        showExportProgress(Cst.activeExportVideo, "Exporting video file...");
    }

    function setExportProgress(done, total) {
        exportProgressWindow.showProgress(done, total);
    }

    function showExportProgress(operation, text) {
        currentProject.activeExportOperation = operation;
        exportProgressWindow.showOperation(text);
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
        property bool thermalAsOnScreen: false
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

    ReviewKeys {
        player: videoPlayer
        navigator: timelineNavigator
        scrollBar: timelineScrollBar
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
        onAdjustmentsChanged: mainWindow.showAdjustments()
        onProjectPathChanged: recentProjects.add(projectPath)
    }

    RecentProjects {
        id: recentProjects
    }

    Recovery {
        id: recovery
        objectName: "recovery"
        review: review
        folder: standardFolder
    }

    QuestionDialog {
        id: question
    }

    CopyProgressWindow {
        id: copyProgressWindow
        job: review.copyJob
    }

    PoiReportExporter {
        id: poiReportExporter
        videoPlayer: videoPlayer
        onExportComplete: mainWindow.documentExportComplete(result)
        onExportProgress: mainWindow.documentExportProgress(done, total)
    }

    ExportJobs {
        player: videoPlayer
        reports: poiReportExporter
        jobs: review.jobs
        onEnded: infoTab.showNotice(text)
    }

    FileDialogs {
        id: fileDialogs
        player: videoPlayer
        verbs: mainWindow
        savingAsCopy: currentProject.savingAsCopy
        mediaFolder: loadFileSettings.folder
        onMediaFolderChosen: loadFileSettings.folder = folder
        imageFolder: saveImageSettings.folder
        onImageFolderChosen: saveImageSettings.folder = folder
    }

    SecondaryWindows {
        id: secondaryWindows
        player: videoPlayer
        timeline: timelineContent
        review: review
        verbs: mainWindow
        fastLoadingChecked: currentProject.fastLoadingChecked
        onFastLoadingChosen: currentProject.fastLoadingChecked = checked
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

    Component {
        id: genericErrorDialog

        MessageDialog {
            standardButtons: StandardButton.Ok
            onVisibleChanged: {
                if (!visible)
                    destroy(1);
            }
        }
    }

    ExportProgressWindow {
        id: exportProgressWindow
        onAbortClicked: mainWindow.activeExportOperationAbortByUser()
    }

    JobsPanel {
        id: jobsPanel
        objectName: "jobsPanel"
        z: 2
        anchors.right: parent.right
        anchors.bottom: infoTab.top
        visible: false
        jobs: review.jobs
        onClosed: visible = false
    }

    StatusLine {
        id: infoTab
        jobs: review.jobs
        onJobsClicked: jobsPanel.visible = !jobsPanel.visible
        objectName: "infoTab"
        player: videoPlayer
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.bottomMargin: mainWindow.hiddenHeight
    }

    CurvesPanel {
        id: curvesPanel
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: infoTab.top
        logParser: LogParser
        msPerPx: timelineContent.msPerPx
        contentX: timelineContent.contentX
        cursorPosition: videoPlayer.timePosition
    }

    Rectangle {
        id: timelineTab
        z: 1
        objectName: "timelineTab"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: curvesPanel.top
        height: 120
        color: Theme.window

        Rectangle {
            id: timeline
            objectName: "timeline"
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.bottom: timelineScrollBar.top
            color: Theme.timelineGround
            clip: true

            readonly property real contentWidth: timelineContent.contentWidth
            readonly property real widthRatio: width / contentWidth
            signal contentXChanged()

            onWidthChanged: timelineScrollBar.widthsChanged()
            onContentWidthChanged: timelineScrollBar.widthsChanged()

            function setContentX(contentX) {
                timelineContent.contentX = Math.max(0, Math.min(contentX, contentWidth - width));
            }

            function getContentX() {
                return timelineContent.contentX;
            }

            MouseArea {
                anchors.fill: parent
                propagateComposedEvents: true

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
                    Accessible.description: infoTab.positionText

                    onDurationChanged: updateLogData()
                    onSeekRequest: videoPlayer.goToTime(time)
                    onPoiDoubleClicked: mainWindow.editSelectedPoi()
                    onPoiRefused: {
                        selectPoi(poiTime);
                        infoTab.showNotice("There is a point of interest at this frame already: '"
                                           + getSelectedPOI().name + "'.");
                    }
                    onClicked: mainWindow.refocusMainActions()
                    onContentXChanged: timeline.contentXChanged()

                    HoverHandler { id: timelinePointer }
                }
            }
        }

        TimelinePreview {
            pointed: timelinePointer.hovered
            pointerX: timelinePointer.point.position.x
            anchors.fill: timeline
            player: videoPlayer
            navigator: timelineNavigator
        }

        MyScrollBar {
            id: timelineScrollBar
            objectName: "timelineScrollBar"
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            timeline: timeline
        }
    }

    TransportStrip {
        id: controlsTab
        objectName: "controlsTab"
        player: videoPlayer
        timeline: timelineContent
        verbs: mainWindow
        hasFocusItem: mainWindow.activeFocusItem !== null
        poiListShown: panelSettings.poiListShown
        onPoiListToggled: panelSettings.poiListShown = shown
        sidebarShown: panelSettings.sidebarShown
        onSidebarToggled: panelSettings.sidebarShown = shown
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: timelineTab.top
    }

    Item {
        id: videoTab
        objectName: "videoTab"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: controlsTab.top
        focus: true

        VideoArea {
            id: videoRect
            objectName: "videoRect"
            anchors.fill: parent
            anchors.leftMargin: poiPanel.visible ? poiPanel.width : 0
            anchors.rightMargin: hUDRectangle.visible ? 3 + mainWindow.sidebarWidth : 0
            player: videoPlayer
            recentProjects: recentProjects.projects
            onRecentProjectChosen: mainWindow.openRecentProject(path)
            onOpenProjectClicked: mainWindow.goOpenProject("welcome_screen")
            onOpenVideoClicked: mainWindow.goOpenVideo("welcome_screen")
            onBrowseRemovableDevicesClicked: mainWindow.goExploreRemovableDevices()

            ReviewPlayer {
                id: videoPlayer
                objectName: "videoPlayer"
                anchors.fill: parent
                adjustmentsPanel: mainWindow.adjustmentsPanel
                thermalAsOnScreen: generalSettings.thermalAsOnScreen
                onVideoExportProgress: mainWindow.videoExportProgress(exportedFrames, totalFrames)
                onVideoExportComplete: mainWindow.videoExportComplete(result)
            }

            RecoveryBar {
                id: recoveryBar
                objectName: "recoveryBar"
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.top: parent.top
                recovery: recovery
                z: 1
            }

            MouseArea {
                id: videoMouseArea
                objectName: "videoMouseArea"
                anchors.fill: parent
                visible: videoPlayer.hasVideoOpened
                onClicked: {
                    mainWindow.refocusMainActions();
                    videoPlayer.togglePlayPause();
                }
            }
        }

        PoiPanel {
            id: poiPanel
            objectName: "poiPanel"
            anchors.left: parent.left
            anchors.top: parent.top
            anchors.bottom: parent.bottom
            width: 240
            visible: panelSettings.poiListShown
            timeline: timelineContent
            navigator: timelineNavigator
            onEditRequested: mainWindow.editSelectedPoi()
            onDone: mainWindow.refocusMainActions()
        }

        Rectangle {
            id: hUDRectangle
            objectName: "hUDRectangle"
            anchors.top: parent.top
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            width: mainWindow.sidebarWidth
            visible: panelSettings.sidebarShown
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
