import QtQuick 2.7
import "constants.js" as Cst
import "paths.js" as Paths

// Takes files that are dropped on the window and opens them as the menu would: a project, or a
// video, or a log for the video that is open. A video and its log dropped together open one after
// the other.
DropArea {
    id: fileDrop
    objectName: "fileDrop"

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
            videoPlayer.pause();
            mainWindow.loadProject(Paths.decodedPath(files.project));
        } else if (files.video !== undefined) {
            openVideo(files.video, files.log);
        } else if (files.log !== undefined && videoPlayer.hasVideoOpened) {
            videoPlayer.pause();
            mainWindow.afterFlightDataImportChoice(files.log);
        } else {
            // Says which files can be opened.
            mainWindow.afterVideoImportChoice(files.other || files.log);
        }
    }

    function openVideo(video, log) {
        videoPlayer.onVideoSucessfullyOpened = log === undefined ? undefined : function() {
            mainWindow.afterFlightDataImportChoice(log);
        };
        mainWindow.afterVideoImportChoice(video);
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
        color: "transparent"
        border.color: Cst.accentColor
        border.width: 3
    }
}
