import QtQuick 2.7
import VideoPlayer 1.0
import "."
import "paths.js" as Paths

// Takes files that are dropped on the window and opens them as the menu would: a project, or a
// video, or a log for the video that is open. A video and its log dropped together open one after
// the other.
DropArea {
    id: fileDrop
    objectName: "fileDrop"

    property VideoPlayer player: null
    // Opens what was dropped: the main window's loadProject(), afterVideoImportChoice(),
    // afterFlightDataImportChoice() and displayWarningDialog().
    property var verbs: null

    // The files of a drop by kind; of several of one kind the first counts.
    function sorted(urls) {
        var files = {project: undefined, video: undefined, log: undefined, other: undefined};
        for (var i = 0; i < urls.length; ++i) {
            var kind = kindOf(urls[i]);
            if (files[kind] === undefined)
                files[kind] = urls[i];
        }
        return files;
    }

    function kindOf(url) {
        if (/\.ecor$/i.test(url.toString()))
            return "project";
        if (Paths.hasExtension(url, [".mov", ".avi", ".3gp", ".mp4"]))
            return "video";
        return Paths.hasExtension(url, [".log"]) ? "log" : "other";
    }

    function open(files) {
        if (files.project !== undefined) {
            player.pause();
            verbs.loadProject(Paths.decodedPath(files.project));
        } else if (files.video !== undefined) {
            openVideo(files.video, files.log);
        } else if (files.log !== undefined && player.hasVideoOpened) {
            player.pause();
            verbs.afterFlightDataImportChoice(files.log);
        } else if (files.log !== undefined) {
            verbs.displayWarningDialog("Flight log", "A flight log is added to an open video. Open "
                                       + "the video first, or drop both together.");
        } else if (files.other !== undefined) {
            // Refuses the file with a message that lists what can be opened.
            verbs.afterVideoImportChoice(files.other);
        }
    }

    function openVideo(video, log) {
        player.onVideoSucessfullyOpened = log === undefined ? undefined : function() {
            verbs.afterFlightDataImportChoice(log);
        };
        verbs.afterVideoImportChoice(video);
    }

    onEntered: drag.accepted = drag.hasUrls
    onDropped: {
        // The copy outlives the drop: what opens may show a dialog of its own.
        var files = sorted(drop.urls);
        drop.accept(Qt.CopyAction);
        Qt.callLater(open, files);
    }

    Rectangle {
        anchors.fill: parent
        visible: fileDrop.containsDrag
        color: Theme.clear
        border.color: Theme.accent
        border.width: 3
    }
}
