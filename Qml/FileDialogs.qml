import QtQuick 2.7
import FileChoice 1.0
import Review 1.0
import Timeline 1.0
import VideoPlayer 1.0
import "paths.js" as Paths

// Where files are chosen, and what a choice starts.
Item {
    id: fileDialogs

    property VideoPlayer player: null
    property Review review: null
    property PoiTableExport poiTables: null
    // The functions that a choice starts: the main window's.
    property var verbs: null
    // Whether a chosen project name is for a copy of the work at hand.
    property bool savingAsCopy: false
    // The folders that the dialogs start in: of videos and logs, pictures, projects, reports.
    property string mediaFolder: ""
    property string imageFolder: ""
    property string projectFolder: ""
    property string reportFolder: ""

    // The player does not save a picture under this name.
    signal imageRefused(string path)
    signal mediaFolderChosen(string folder)
    signal imageFolderChosen(string folder)
    signal projectFolderChosen(string folder)
    signal reportFolderChosen(string folder)

    // A project that the work is bound to is saved anew under its own name, unless another is typed.
    function proposedProjectName() {
        var bound = review.projectPath;
        var name = bound === "" ? review.proposedName()
                                : bound.substring(bound.lastIndexOf("/") + 1).replace(/\.ecor$/i, "");
        return name + (bound !== "" && savingAsCopy ? " copy" : "") + ".ecor";
    }

    function askWhereToSaveProject() {
        saveProjectDialog.proposedName = proposedProjectName();
        saveProjectDialog.open();
    }

    function askWhereToSaveReport() {
        createPoiReport.proposedName = review.proposedName() + ".docx";
        createPoiReport.open();
    }

    function askWhereToSavePoiTable() {
        savePoiTableDialog.proposedName = review.proposedName();
        savePoiTableDialog.open();
    }

    // Without a suffix: the chosen format has it.
    function askWhereToSaveImage() {
        saveImageDialog.proposedName = review.proposedFrameName();
        saveImageDialog.open();
    }

    property alias saveProjectDialog: saveProjectDialog
    property alias loadProjectDialog: loadProjectDialog
    property alias createPoiReport: createPoiReport
    property alias videoImportDialog: videoImportDialog
    property alias logImportDialog: logImportDialog
    property alias saveImageDialog: saveImageDialog
    property alias savePoiTableDialog: savePoiTableDialog

    FileChoice {
        id: saveProjectDialog
        objectName: "saveProjectDialog"
        title: "Save project as..."
        nameFilters: ["Vistrel projects (*.ecor)"]
        selectExisting: false
        folder: fileDialogs.projectFolder
        onAccepted: {
            fileDialogs.projectFolderChosen(folder);
            var typed = Paths.undecodedPath(fileUrl);
            if (typed === "")
                return;
            var path = Paths.withSuffix(typed, selectedNameFilter);
            fileDialogs.verbs.askBeforeReplacing(path, typed, function() {
                if (fileDialogs.savingAsCopy)
                    fileDialogs.verbs.doSaveProjectCopy(path);
                else
                    fileDialogs.verbs.doSaveProjectAs(path);
            });
        }
    }

    FileChoice {
        id: loadProjectDialog
        objectName: "loadProjectDialog"
        title: "Open project..."
        nameFilters: ["Vistrel projects (*.ecor)"]
        selectExisting: true
        folder: fileDialogs.projectFolder
        onAccepted: {
            fileDialogs.projectFolderChosen(folder);
            var path = Paths.decodedPath(fileUrl);
            if (path !== "")
                fileDialogs.verbs.loadProject(path);
        }
    }

    FileChoice {
        id: createPoiReport
        objectName: "createPoiReport"
        title: "Save POI report as..."
        nameFilters: ["Word Document (*.docx)"]
        selectExisting: false
        folder: fileDialogs.reportFolder
        onAccepted: {
            fileDialogs.reportFolderChosen(folder);
            var typed = Paths.undecodedPath(fileUrl);
            if (typed === "")
                return;
            var path = Paths.withSuffix(typed, selectedNameFilter);
            fileDialogs.verbs.askBeforeReplacing(path, typed, function() {
                fileDialogs.verbs.doCreatePoiReport(path);
            });
        }
    }

    FileChoice {
        id: savePoiTableDialog
        objectName: "savePoiTableDialog"
        title: "Save points of interest as..."
        nameFilters: fileDialogs.poiTables ? fileDialogs.poiTables.nameFilters : []
        selectExisting: false
        folder: fileDialogs.reportFolder
        onAccepted: {
            fileDialogs.reportFolderChosen(folder);
            var typed = Paths.decodedLocalPath(fileUrl);
            if (typed === "")
                return;
            var path = Paths.withSuffix(typed, selectedNameFilter, nameFilters);
            fileDialogs.verbs.askBeforeReplacing(path, typed, function() {
                fileDialogs.verbs.doExportPoiTable(path);
            });
        }
    }

    FileChoice {
        id: videoImportDialog
        objectName: "videoImportDialog"
        title: "Please choose a video"
        nameFilters: ["Video files (*.mov *.avi *.3gp *.mp4)"]
        folder: fileDialogs.mediaFolder
        onAccepted: {
            fileDialogs.mediaFolderChosen(videoImportDialog.folder);
            fileDialogs.verbs.afterVideoImportChoice(fileUrl);
        }
    }

    FileChoice {
        id: logImportDialog
        objectName: "logImportDialog"
        title: "Please choose a flight data file"
        nameFilters: ["Flight data files (*.log)"]
        folder: fileDialogs.mediaFolder
        onAccepted: {
            fileDialogs.mediaFolderChosen(logImportDialog.folder);
            fileDialogs.verbs.afterFlightDataImportChoice(fileUrl);
        }
    }

    FileChoice {
        id: saveImageDialog
        objectName: "saveImageDialog"
        title: "Save image as..."
        nameFilters: ["JPEG (*.jpg)", "Bitmap (*.bmp)", "PNG (*.png)"]
        selectExisting: false
        folder: fileDialogs.imageFolder
        onAccepted: {
            var chosen = Paths.decodedLocalPath(fileUrl);
            if (chosen === "")
                return;
            // The dialog asked about the name that was typed, not about the completed one.
            var path = Paths.withSuffix(chosen, selectedNameFilter, nameFilters);
            if (!player.saveFrame(player.timePosition, path,
                                  selectExisting == false && path === chosen))
                fileDialogs.imageRefused(path);
            fileDialogs.imageFolderChosen(folder);
        }
    }
}
