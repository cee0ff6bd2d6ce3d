import QtQuick 2.7
import corv.LogParsing 1.0
import "constants.js" as Cst
import "paths.js" as Paths

// Makes the windows that are opened on demand and reads them back when they close. None is ever
// destroyed: the next opening makes a new one.
Item {
    id: windows

    function make(file, connection) {
        var component = Qt.createComponent(file);
        var window = component.createObject(mainWindow);
        if (!window)
            console.warn("Cannot open " + file + ": " + component.errorString());
        else if (connection)
            connection.target = window;
        keepAboveMainWindow(window);
        return window;
    }

    // A click on the main window would raise it over the modal window that blocks it, were that not
    // a dialog to the window system.
    function keepAboveMainWindow(window) {
        if (window && window.modality !== Qt.NonModal)
            window.flags |= Qt.Dialog;
    }

    function openPlain(file) {
        make(file).show();
    }

    function openImporter() {
        videoPlayer.pause();
        var window = make("AutoImporter.qml", autoImporterConnection);
        window.fastLoadingChecked = currentProject.fastLoadingChecked;
        window.init();
        window.show();
    }

    function openFramesExport() {
        videoPlayer.pause();
        var window = make("FramesExport.qml", framesExportConnection);
        videoPlayer.timePositionChanged.connect(window.setPosition);
        videoPlayer.durationChanged.connect(window.setDuration);
        window.position = videoPlayer.timePosition;
        window.duration = videoPlayer.duration;
        window.poiCount = timelineContent.getPOIs().length;
        window.show();
    }

    function openVideoExport() {
        videoPlayer.pause();
        make("VideoExport.qml", videoExportConnection).show();
    }

    function openSettings() {
        videoPlayer.pause();
        var window = make("GeneralSettings.qml", settingsConnection);
        window.init();
        window.show();
    }

    function openRestoreLog() {
        videoPlayer.pause();
        var window = make("RestoreLog.qml", restoreLogConnection);
        window.init();
        window.show();
    }

    function openPoiProperties() {
        var poi = timelineContent.getSelectedPOI();
        var window = make("PoiProperties.qml", poiPropertiesConnection);
        window.poiName = poi.name || "";
        window.poiDescription = poi.comment || "";
        window.poiTime = timelineContent.selectedPoiTime;
        window.populate();
        window.show();
    }

    function openFlightProperties() {
        var naming = LogParser.flightNaming;
        var window = make("FlightPropertiesEdit.qml", flightPropertiesConnection);
        window.missionName = naming.missionName;
        window.flightName = naming.flightName;
        window.flightNumber = naming.flightNumber;
        window.namingDefined = !naming.undefined;
        window.populate();
        window.show();
    }

    function openUpdate(newVersion, releaseNotes) {
        videoPlayer.pause();
        var window = make("NewUpdateWindow.qml");
        window.versionString = newVersion;
        window.releaseNotes = releaseNotes;
        window.show();
    }

    function openFlight(videoFile, logFile) {
        mainWindow.resetStatusAsNewProject();
        videoPlayer.open(videoFile, function() {
            mainWindow.resetCorrectionParameters();
            mainWindow.updateCorrectionParameters();
            LogParser.isParsing = true;
            LogParser.parseLog(logFile, false);
        });
    }

    function exportFrames(choice) {
        var path = Paths.decodedPath(choice.framesUrl);
        if (!choice.exportPOI) {
            videoPlayer.exportFrames(choice.startTime, choice.stopTime, choice.frameSpacing, path,
                                     "Frame");
            return;
        }
        var times = timelineContent.getPOIs().map(function(poi) { return poi.time; });
        videoPlayer.exportSpecificFrames(times, path, "Frame");
    }

    function exportVideo(url) {
        console.log("Will export video");
        videoPlayer.exportVideo(Paths.decodedPath(url));
        mainWindow.showExportProgress(Cst.activeExportVideo, "Exporting video file...");
    }

    function writeFlightNaming(choice) {
        console.log("Save flight properties changes");
        var number = choice.flightNumber > 0 ? choice.flightNumber : undefined;
        if (number === undefined && choice.missionName === "" && choice.flightName === "")
            LogParser.flightNaming = {undefined: true};
        else
            LogParser.flightNaming = {
                flightName: choice.flightName,
                flightNumber: number,
                missionName: choice.missionName,
                undefined: false
            };
    }

    Connections {
        id: autoImporterConnection
        target: null

        function onVisibleChanged() {
            var window = autoImporterConnection.target;
            if (window.visible)
                return;
            currentProject.fastLoadingChecked = window.fastLoadingChecked;
            if (window.ok && window.chosenVideoFile.toString() !== "")
                windows.openFlight(Paths.chosenPath(window.chosenVideoFile),
                                   Paths.chosenPath(window.chosenLogFile));
        }
    }

    Connections {
        id: framesExportConnection
        target: null

        function onVisibleChanged() {
            var window = framesExportConnection.target;
            if (!window.visible && window.ok)
                windows.exportFrames(window);
        }
    }

    Connections {
        id: videoExportConnection
        target: null

        function onVisibleChanged() {
            var window = videoExportConnection.target;
            if (!window.visible && window.ok)
                windows.exportVideo(window.videoUrl);
        }
    }

    Connections {
        id: settingsConnection
        target: null

        // The last line fails: a tab has no such member. The display keeps its units until the
        // next start, as the settings window announces.
        function onVisibleChanged() {
            var window = settingsConnection.target;
            if (window.visible || !window.ok)
                return;
            console.log("Settings have changed : " + window.imperialUnits);
            tabsContainer.getTab(0).informationTabContents.imperialUnits = window.imperialUnits;
        }
    }

    Connections {
        id: restoreLogConnection
        target: null

        function onVisibleChanged() {
            var window = restoreLogConnection.target;
            if (window.visible || !window.ok)
                return;
            if (window.eraseAll)
                mainWindow.goResetPOIsFromFlightData();
            else
                mainWindow.goOverwritePOIsFromFlightData();
        }
    }

    Connections {
        id: poiPropertiesConnection
        target: null

        function onVisibleChanged() {
            var window = poiPropertiesConnection.target;
            if (window.visible || !window.ok)
                return;
            console.log("Save POI changes");
            timelineContent.updatePoi(window.poiTime, {
                name: window.poiName,
                comment: window.poiDescription
            });
        }
    }

    Connections {
        id: flightPropertiesConnection
        target: null

        function onVisibleChanged() {
            var window = flightPropertiesConnection.target;
            if (!window.visible && window.ok)
                windows.writeFlightNaming(window);
        }
    }
}
