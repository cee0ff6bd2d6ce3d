import QtQuick 2.7
import corv.LogParsing 1.0
import Review 1.0
import Timeline 1.0
import VideoPlayer 1.0
import "paths.js" as Paths
import "placement.js" as Placement

// Makes the windows that are opened on demand and reads them back when they close. None is ever
// destroyed: the next opening makes a new one.
Item {
    id: windows

    property VideoPlayer player: null
    property TimelineContent timeline: null
    property Review review: null
    // The window that these belong to; its functions carry out what was chosen in them.
    property var verbs: null
    // Remembers the importer's fast search between openings.
    property bool fastLoadingChecked: false
    signal fastLoadingChosen(bool checked)

    // What the frames export held when it was last closed, and for which video.
    property var framesEntered: null

    // Whether exports show the flight instruments, and what was chosen in a window.
    property bool instrumentsShown: false
    signal instrumentsChosen(bool shown)
    // The same of the colour bar of the thermal picture.
    property bool thermalBarShown: false
    signal thermalBarChosen(bool shown)

    // The units chosen in the settings.
    signal unitsChosen(bool imperialUnits)
    // Whether saved frames get the thermal picture of the screen, as chosen there.
    signal thermalAsOnScreenChosen(bool onScreen)
    // Whether quitting is to wait for the jobs, as chosen there.
    signal finishJobsFirstChosen(bool finish)

    function make(file, connection) {
        var component = Qt.createComponent(file);
        var window = component.createObject(verbs);
        if (!window)
            console.warn("Cannot open " + file + ": " + component.errorString());
        else if (connection)
            connection.target = window;
        if (window)
            place(window);
        return window;
    }

    // Whether the last window of `make` is open still; then it comes forward: a second one would
    // take its place, and what is chosen in the first one would be lost. Those that block the main
    // window do not block what a screen reader presses there.
    function isOpen(connection) {
        var window = connection.target;
        if (!window || !window.visible)
            return false;
        window.raise();
        window.requestActivate();
        return true;
    }

    // In front of the window that it belongs to, also after a click there.
    function place(window) {
        window.flags |= Qt.Dialog;
        if (window.modality === Qt.NonModal || window.isUsedWithPicture === true)
            Placement.besidePicture(window, verbs);
        else
            Placement.inMiddle(window, verbs);
    }

    function openPlain(file) {
        make(file).show();
    }

    function openImporter() {
        player.pause();
        if (isOpen(autoImporterConnection))
            return;
        var window = make("AutoImporter.qml", autoImporterConnection);
        window.fastLoadingChecked = windows.fastLoadingChecked;
        window.jobs = review.jobs;
        window.init();
        window.show();
    }

    // All files of a flight are opened, because only their whole length identifies the recording. If
    // a later file was chosen, the video starts where that file begins.
    function openMatching(matching) {
        var files = matching.flightFiles;
        var video = files.length > 0 ? files[0] : matching.videoFile;
        player.setNextFiles(files);
        if (matching.partStartMs > 0)
            goToOnceOpen(video, matching.partStartMs);
        verbs.openFlight(video, matching.logFile);
    }

    function goToOnceOpen(video, positionMs) {
        var go = function() {
            if (!player.hasVideoOpened)
                return;
            player.hasVideoOpenedChanged.disconnect(go);
            // The player knows its length only once this signal has been handled.
            Qt.callLater(function() {
                if (player.hasVideoOpened && player.source === video)
                    player.goToTime(new Date(2000, 0, 1, 0, 0, 0, positionMs));
            });
        };
        player.hasVideoOpenedChanged.connect(go);
    }

    function openFramesExport() {
        player.pause();
        if (isOpen(framesExportConnection))
            return;
        var window = make("FramesExport.qml", framesExportConnection);
        player.timePositionChanged.connect(window.setPosition);
        player.durationChanged.connect(window.setDuration);
        window.position = player.timePosition;
        window.duration = player.duration;
        window.poiCount = timeline.getPOIs().length;
        offerInsets(window);
        if (framesEntered !== null && framesEntered.video === player.source)
            window.enter(framesEntered);
        window.show();
    }

    function offerInsets(window) {
        window.instruments = instrumentsShown;
        window.instrumentsEnabled = LogParser.source !== "";
        window.thermalBar = thermalBarShown;
        window.thermalBarEnabled = player.showIR;
    }

    function takeInsets(window) {
        instrumentsChosen(window.instruments);
        thermalBarChosen(window.thermalBar);
    }

    function openVideoExport() {
        player.pause();
        if (isOpen(videoExportConnection))
            return;
        var window = make("VideoExport.qml", videoExportConnection);
        window.proposedName = review.proposedName() + ".mp4";
        offerInsets(window);
        window.show();
    }

    function openSettings() {
        player.pause();
        if (isOpen(settingsConnection))
            return;
        var window = make("GeneralSettings.qml", settingsConnection);
        window.init();
        window.show();
    }

    function openRestoreLog() {
        player.pause();
        if (isOpen(restoreLogConnection))
            return;
        var window = make("RestoreLog.qml", restoreLogConnection);
        window.missingCount = review.missingPoisInLog();
        window.allCount = review.addablePoisFromLog();
        window.init();
        window.show();
    }

    function openPoiProperties() {
        if (isOpen(poiPropertiesConnection))
            return;
        var poi = timeline.getSelectedPOI();
        var window = make("PoiProperties.qml", poiPropertiesConnection);
        window.messageOwner = verbs;
        window.poiName = poi.name || "";
        window.poiDescription = poi.comment || "";
        window.poiTime = timeline.selectedPoiTime;
        window.populate();
        window.show();
    }

    function openFlightProperties() {
        if (isOpen(flightPropertiesConnection))
            return;
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
        player.pause();
        var window = make("NewUpdateWindow.qml");
        window.versionString = newVersion;
        window.installNewVersion.connect(verbs.installNewVersion);
        window.releaseNotes = releaseNotes;
        window.show();
    }

    function exportFrames(choice) {
        var path = Paths.decodedPath(choice.framesUrl);
        if (!choice.exportPOI) {
            player.exportFrames(choice.startTime, choice.stopTime, choice.frameSpacing, path,
                                     "Frame");
            return;
        }
        var times = timeline.getPOIs().map(function(poi) { return poi.time; });
        player.exportSpecificFrames(times, path, "Frame");
    }

    function exportVideo(url) {
        console.log("Will export video");
        player.exportVideo(Paths.decodedPath(url));
        verbs.showVideoExport();
    }

    function writeFlightNaming(choice) {
        console.log("Save flight properties changes");
        verbs.nameFlight(choice.missionName, choice.flightName, choice.flightNumber || 0);
    }

    Connections {
        id: autoImporterConnection
        target: null

        function onVisibleChanged() {
            var window = autoImporterConnection.target;
            if (window.visible)
                return;
            windows.fastLoadingChosen(window.fastLoadingChecked);
            if (window.ok)
                windows.openMatching(window.chosenMatching);
        }
    }

    Connections {
        id: framesExportConnection
        target: null

        function onVisibleChanged() {
            var window = framesExportConnection.target;
            if (window.visible)
                return;
            windows.framesEntered = window.entered();
            windows.framesEntered.video = windows.player.source;
            if (!window.ok)
                return;
            windows.takeInsets(window);
            windows.exportFrames(window);
        }
    }

    Connections {
        id: videoExportConnection
        target: null

        function onVisibleChanged() {
            var window = videoExportConnection.target;
            if (window.visible || !window.ok)
                return;
            var path = Paths.decodedPath(window.videoUrl);
            windows.verbs.askBeforeReplacing(path, window.suffixAdded ? "" : path, function() {
                windows.takeInsets(window);
                windows.exportVideo(window.videoUrl);
            });
        }
    }

    Connections {
        id: settingsConnection
        target: null

        function onVisibleChanged() {
            var window = settingsConnection.target;
            if (window.visible || !window.ok)
                return;
            console.log("Settings have changed : " + window.imperialUnits);
            windows.thermalAsOnScreenChosen(window.thermalAsOnScreen);
            windows.finishJobsFirstChosen(window.finishJobsFirst);
            windows.unitsChosen(window.imperialUnits);
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
                windows.verbs.goResetPOIsFromFlightData();
            else
                windows.verbs.goOverwritePOIsFromFlightData();
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
            timeline.updatePoi(window.poiTime, {
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
