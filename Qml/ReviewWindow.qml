import QtQuick 2.15
import corv.ApplicationTelemetry 1.0
import corv.LogParsing 1.0
import PoiReportExporter 1.0
import Review 1.0
import Timeline 1.0
import VideoPlayer 1.0
import "Controls"
import "constants.js" as Cst
import "paths.js" as Paths

// The verbs of the program: the functions that menus, keys, tools, drops and the start run. The main
// window is one of these, filled with what is on screen.
ApplicationWindow {
    id: reviewWindow

    property VideoPlayer player: null
    property TimelineContent timeline: null
    property Review review: null
    property PoiReportExporter reports: null
    property PoiTableExport poiTables: null
    // The state of the work at hand that belongs to no native object.
    property Item currentProject: null

    // Where files are chosen, questions asked, and the windows on demand.
    property FileDialogs fileDialogs: null
    property QuestionDialog question: null
    property SecondaryWindows windows: null
    property ExportProgressWindow exportProgress: null

    // Whether quitting waits until the jobs are done, and whether it does now.
    property bool finishJobsFirst: false
    property bool waitsForJobs: false

    // The parts of the window that a verb writes to, and the one that has the keyboard by default.
    property StatusLine statusLine: null
    property CurvesPanel curves: null
    property Sidebar sidebar: null
    property Item keyboardPlace: null

    // Where the report on a crash of the last run is. The program sets it.
    property string crashReportPath: ""

    Component {
        id: messageBox

        MessageDialog {
            onVisibleChanged: {
                if (!visible)
                    destroy(1);
            }
        }
    }

    function refocusMainActions() {
        keyboardPlace.forceActiveFocus();
    }

    function loadProject(path) {
        console.log("Trying to open project " + path);
        review.openProject(path);
    }

    function openRecentProject(path) {
        player.pause();
        loadProject(path);
    }

    function loadVideo(path) {
        player.source = path;
    }

    function launchUpdateWindow(newVersion, releaseNotes) {
        windows.openUpdate(newVersion, releaseNotes);
    }

    function showNewInstallationFailedError(newInstallerPath) {
        displayErrorDialog("Installing new Vistrel",
                           "Failed to automatically install the new Vistrel. Please proceed with manual installation.");
        Qt.openUrlExternally(Paths.toUrl(newInstallerPath));
    }

    function showInstallerRefused(version) {
        displayErrorDialog("Installing new Vistrel",
                           "The installer of Vistrel " + version + " has changed since it was downloaded. It was deleted and not started. Vistrel downloads it again at its next start.");
    }

    function goOpenProject(source) {
        ApplicationTelemetry.vistrelEvent("open_project_from_" + source);
        player.pause();
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
        if (!player.hasVideoOpened)
            return;
        if (!currentProject.fileActive) {
            goSaveProjectAs();
            return;
        }
        player.pause();
        doSaveProject(currentProject.filePath);
    }

    function goExit() {
        if (mayQuit())
            Qt.quit();
    }

    // Not in the middle of a copy, of which nothing would be left. What else is being written is
    // finished first where the settings say so; asked a second time, the program quits at once.
    function mayQuit() {
        if (review.copyJob !== null)
            return false;
        if (!finishJobsFirst || waitsForJobs || review.jobs.writing === 0)
            return true;
        waitsForJobs = true;
        statusLine.showNotice("Vistrel quits when its jobs are done. Quit again to cancel them.");
        return false;
    }

    function quitAfterJobs() {
        if (waitsForJobs && review.jobs.writing === 0)
            Qt.quit();
    }

    // Shows a folder in the program of the desktop for it.
    function openFolder(path) {
        if (!Qt.openUrlExternally(Paths.toUrl(path)))
            displayWarningDialog("Open folder", "No program opens folders here. The folder is\n\n"
                                                + path);
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
        player.pause();
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
        player.pause();
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
        player.pause();
        review.addMissingPoisFromLog();
    }

    function goOverwritePOIsFromFlightData() {
        player.pause();
        timeline.restoreMissingPOIsWithLogData();
    }

    function goExploreRemovableDevices() {
        windows.openImporter();
    }

    function goSettings() {
        windows.openSettings();
    }

    function goChooseRestorePOIsAction() {
        windows.openRestoreLog();
    }

    function goCreatePoiReport() {
        if (!player.hasVideoOpened)
            return;
        player.pause();
        fileDialogs.askWhereToSaveReport();
    }

    function goExportPoiTable() {
        if (!player.hasVideoOpened)
            return;
        player.pause();
        fileDialogs.askWhereToSavePoiTable();
    }

    function doExportPoiTable(path) {
        poiTables.write(timeline.getPOIs(), path);
    }

    function saveCurrentFrame() {
        player.pause();
        fileDialogs.askWhereToSaveImage();
    }

    function toggleCurves() {
        curves.open = !curves.open;
        if (!curves.open)
            refocusMainActions();
    }

    // Those of a project that was opened.
    function showCurves(names) {
        curves.curves = names;
        if (names.length > 0)
            curves.open = true;
    }

    function goOpenHelp() {
        var manual = Paths.urlInFolder(applicationDirPath, "manual.pdf");
        if (!Qt.openUrlExternally(Qt.resolvedUrl(manual)))
            displayWarningDialog("User guide", "No program opens the user guide here. It is in the file\n\n"
                                               + Paths.decodedPath(manual));
    }

    function showCrashReport() {
        if (!Qt.openUrlExternally(Paths.toUrl(crashReportPath)))
            displayWarningDialog("Crash report", "No program opens the report here. It is in the file\n\n"
                                                 + crashReportPath);
    }

    function resetCorrectionParameters() {
        review.resetCorrections();
    }

    function updateCorrectionParameters() {
        var panel = adjustmentsPanel();
        if (panel === undefined)
            return;
        panel.irHorizontalPosCorrection = player.irOffsetX;
        panel.irVerticalPosCorrection = player.irOffsetY;
        panel.logTimeShiftingCorrection = LogParser.manualLogTimeOffset;
    }

    function displayErrorDialog(title, message) {
        displayDialog(title, message, MessageDialog.Critical);
    }

    function displayWarningDialog(title, message) {
        displayDialog(title, message, MessageDialog.Warning);
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
        reports.createPoiReport(timeline.getPOIs(), path, LogParser.flightNaming);
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
        statusLine.showLogProgress(stage, done, total);
    }

    function videoExportComplete(result) {
        exportProgress.isAtWork = false;
    }

    function videoExportProgress(done, total) {
        setExportProgress(done, total);
    }

    function documentExportComplete(result) {
        exportProgress.isAtWork = false;
    }

    function documentExportProgress(done, total) {
        setExportProgress(done, total);
    }

    function activeExportOperationAbortByUser() {
        if (currentProject.activeExportOperation === Cst.activeExportVideo)
            player.cancelExportVideo();
        else if (currentProject.activeExportOperation === Cst.activeExportWordDocument)
            reports.abortExportOperation();
    }

    // With nothing open there is no moment for a point of interest.
    function addNewPoiAtPosition() {
        if (player.hasVideoOpened)
            timeline.addPoiAtPosition();
    }

    function deleteSelectedPoi() {
        timeline.deleteSelectedPoi();
    }

    function editSelectedPoi() {
        windows.openPoiProperties();
    }

    function startMovingPoi() {
        timeline.enterMovePOIMode();
    }

    function stopMovingPoi() {
        timeline.exitMovePOIMode();
    }

    // On its own place a point of interest stays as it is; another one is replaced only when asked.
    function confirmMovingPoi() {
        if (!timeline.movePOIMode)
            return;
        if (!timeline.hasSelectedPoi) { // undone meanwhile
            timeline.exitMovePOIMode();
            return;
        }
        var there = timeline.poiAtCursor();
        var moved = timeline.getSelectedPOI();
        if (there.time === undefined) {
            timeline.confirmNewPOIPositionAndExitMoveMode();
        } else if (there.time === moved.time) {
            timeline.exitMovePOIMode();
            statusLine.showNotice("Not moved: '" + moved.name + "' is at this frame already.");
        } else {
            question.ask("Replace point of interest",
                         "There is a point of interest '" + there.name
                         + "' at this frame. Replace it by '" + moved.name + "'?",
                         timeline.confirmNewPOIPositionAndExitMoveMode);
        }
    }

    function undo() {
        statusLine.showNotice("Undone: " + review.undoText);
        review.undo();
    }

    function redo() {
        statusLine.showNotice("Redone: " + review.redoText);
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
        player.updateControlsStates();
        player.updatePropertiesStates();
    }

    function editFlightProperties() {
        windows.openFlightProperties();
    }

    // The panel is not there before its tab was first shown: undefined until then.
    function adjustmentsPanel() {
        return sidebar.getTab(1).children[0];
    }

    function askWhereToSave(asCopy) {
        if (!player.hasVideoOpened)
            return;
        player.pause();
        currentProject.savingAsCopy = asCopy;
        fileDialogs.askWhereToSaveProject();
    }

    function displayDialog(title, message, kind) {
        console.log(title + ": " + message);
        var dialog = messageBox.createObject(reviewWindow);
        dialog.title = title;
        dialog.text = message;
        dialog.kind = kind;
        dialog.visible = true;
    }

    function showVideoExport() {
        showExportProgress(Cst.activeExportVideo, "Exporting video file...");
    }

    function setExportProgress(done, total) {
        exportProgress.showProgress(done, total);
    }

    function showExportProgress(operation, text) {
        currentProject.activeExportOperation = operation;
        exportProgress.showOperation(text);
    }
}
