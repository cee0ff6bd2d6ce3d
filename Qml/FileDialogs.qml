import QtQuick 2.7
import QtQuick.Dialogs 1.3
import "paths.js" as Paths

// Where files are chosen, and what a choice starts.
Item {
    property alias saveProjectDialog: saveProjectDialog
    property alias loadProjectDialog: loadProjectDialog
    property alias createPoiReport: createPoiReport
    property alias videoImportDialog: videoImportDialog
    property alias logImportDialog: logImportDialog
    property alias saveImageDialog: saveImageDialog

    FileDialog {
        id: saveProjectDialog
        objectName: "saveProjectDialog"
        title: "Save project as..."
        nameFilters: ["Vistrel projects (*.ecor)"]
        defaultSuffix: "ecor"
        selectExisting: false
        onAccepted: {
            var path = Paths.withSuffix(Paths.undecodedPath(fileUrl), selectedNameFilter);
            if (path === "")
                return;
            if (currentProject.savingAsCopy)
                mainWindow.doSaveProjectCopy(path);
            else
                mainWindow.doSaveProjectAs(path);
        }
    }

    FileDialog {
        id: loadProjectDialog
        objectName: "loadProjectDialog"
        title: "Open project..."
        nameFilters: ["Vistrel projects (*.ecor)"]
        selectExisting: true
        onAccepted: {
            var path = Paths.decodedPath(fileUrl);
            if (path !== "")
                mainWindow.loadProject(path);
        }
    }

    FileDialog {
        id: createPoiReport
        objectName: "createPoiReport"
        title: "Save POI report as..."
        nameFilters: ["Word Document (*.docx)"]
        defaultSuffix: "docx"
        selectExisting: false
        onAccepted: {
            var path = Paths.withSuffix(Paths.undecodedPath(fileUrl), selectedNameFilter);
            if (path !== "")
                mainWindow.doCreatePoiReport(path);
        }
    }

    FileDialog {
        id: videoImportDialog
        objectName: "videoImportDialog"
        title: "Please choose a video"
        nameFilters: ["Video files (*.mov *.avi *.3gp *.mp4)"]
        folder: loadFileSettings.folder
        onAccepted: {
            loadFileSettings.folder = videoImportDialog.folder;
            mainWindow.afterVideoImportChoice(fileUrl);
        }
    }

    FileDialog {
        id: logImportDialog
        objectName: "logImportDialog"
        title: "Please choose a flight data file"
        nameFilters: ["Flight data files (*.log)"]
        folder: loadFileSettings.folder
        onAccepted: {
            loadFileSettings.folder = logImportDialog.folder;
            mainWindow.afterFlightDataImportChoice(fileUrl);
        }
    }

    FileDialog {
        id: saveImageDialog
        objectName: "saveImageDialog"
        title: "Save image as..."
        nameFilters: ["JPEG (*.jpg)", "Bitmap (*.bmp)", "PNG (*.png)"]
        selectExisting: false
        folder: saveImageSettings.folder
        onAccepted: {
            var chosen = Paths.decodedLocalPath(fileUrl);
            if (chosen === "")
                return;
            // The dialog asked about the name that was typed, not about the completed one.
            var path = Paths.withSuffix(chosen, selectedNameFilter);
            videoPlayer.saveFrame(videoPlayer.timePosition, path,
                                  selectExisting == false && path === chosen);
            saveImageSettings.folder = folder;
        }
    }
}
