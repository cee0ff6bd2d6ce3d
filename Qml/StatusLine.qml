import QtQuick 2.7
import QtQuick.Layouts 1.1
import Review 1.0
import corv.LogParsing 1.0
import VideoPlayer 1.0
import "."
import "Controls"
import "times.js" as Times

// The bottom line: how far a log has been read, or what is open and the position of the video.
Rectangle {
    id: statusLine

    property VideoPlayer player: null
    // The jobs of this run, with the number of those that run.
    property var jobs: null
    readonly property int runningJobs: jobs !== null ? jobs.running : 0
    // Whether the list of jobs is open.
    property bool jobsShown: false
    // The kinds of the jobs that have failed since then, and have not succeeded later: the notice of
    // them is gone after a few seconds.
    property var failedKinds: []
    readonly property bool failureUnseen: failedKinds.length > 0
    signal jobsClicked()
    // Position, length and frame number, as shown.
    readonly property alias positionText: videoDuration.text

    readonly property bool videoOpen: player !== null && player.hasVideoOpened

    height: 26
    color: Theme.strip
    onJobsShownChanged: failedKinds = []

    Connections {
        target: statusLine.jobs

        function onDataChanged(first) {
            var job = statusLine.jobs.job(first.row);
            if (job === null || job.running)
                return;
            var others = statusLine.failedKinds.filter(function(kind) { return kind !== job.kind; });
            if (job.state === Job.Failed && !statusLine.jobsShown)
                others.push(job.kind);
            if (job.state === Job.Failed || job.state === Job.Succeeded)
                statusLine.failedKinds = others;
        }
    }

    // Shows a sentence in passing, in place of the files.
    function showNotice(text) {
        noticeStays = false;
        noticeText.text = text;
        noticeTimer.restart();
    }

    // The same, until the picture moves: what stopped it is read by one who looked away, too.
    function showReasonOfStop(text) {
        showNotice(text);
        noticeStays = true;
    }

    property bool noticeStays: false

    Connections {
        target: statusLine.player

        function onPlayingChanged() {
            if (statusLine.player.playing)
                statusLine.noticeStays = false;
        }

        // Frames that had been read before the stop are still played.
        function onCurrentFrameIndexChanged() {
            if (!statusLine.player.playing)
                statusLine.noticeStays = false;
        }

        function onHasVideoOpenedChanged() {
            statusLine.noticeStays = false;
        }
    }

    Timer {
        id: noticeTimer
        objectName: "noticeTimer"
        interval: 6000
    }

    ElidedText {
        id: noticeText
        objectName: "noticeText"
        anchors.left: parent.left
        anchors.right: jobsButton.left
        anchors.leftMargin: 8
        anchors.rightMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        visible: (noticeTimer.running || statusLine.noticeStays) && !LogParser.isParsing
        color: Theme.text
    }

    function showLogProgress(stage, done, total) {
        var labels = ["Reading logs version", "Counting logs", "Parsing logs"];
        var label = labels[stage] || "";
        var measured = total > 0;
        logLoadingIndicator.text = measured
                ? label + " " + Math.floor(done / total * 100) + "%" : label;
        taskProgressBar.value = measured ? done / total : 0;
    }

    Item {
        objectName: "parsingRow"
        anchors.fill: parent
        visible: LogParser.isParsing

        FlatProgressBar {
            id: taskProgressBar
            objectName: "taskProgressBar"
            anchors.fill: parent
            Accessible.name: "Progress of the flight log"
            groove: Theme.clear
            bar: Theme.progress
        }

        // The text is too faint on the bar.
        Rectangle {
            anchors.verticalCenter: parent.verticalCenter
            width: logLoadingIndicator.x + logLoadingIndicator.width + 8
            height: parent.height - 4
            color: Theme.plate
        }

        CorvSpinner {
            id: loadingSpinner
            objectName: "loadingSpinner"
            anchors.left: parent.left
            anchors.leftMargin: 5
            anchors.verticalCenter: parent.verticalCenter
            running: LogParser.isParsing
        }

        Text {
            id: logLoadingIndicator
            objectName: "logLoadingIndicator"
            anchors.left: loadingSpinner.right
            anchors.leftMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.text
            text: "Loading logs..."
        }
    }

    TextMetrics {
        id: widestTime
        font: videoDuration.font
        text: "00:00.000 / 00:00.000, f 0000000"
    }

    RowLayout {
        objectName: "filesRow"
        anchors.fill: parent
        anchors.leftMargin: 8
        anchors.rightMargin: 8 + jobsButton.width
        spacing: 8
        visible: !LogParser.isParsing && !noticeTimer.running

        Text {
            id: videoDuration
            objectName: "videoDuration"
            Accessible.role: Accessible.StaticText
            Accessible.name: text
            visible: statusLine.videoOpen
            // As wide as any time and frame number, or the names beside it would move as it counts.
            Layout.minimumWidth: widestTime.advanceWidth
            Layout.maximumWidth: Layout.minimumWidth
            color: Theme.text
            font.family: Qt.fontFamilies().indexOf("Lucida Console") >= 0 ? "Lucida Console"
                                                                          : "monospace"
            font.pixelSize: 14
            text: statusLine.player === null
                  ? "" : Times.minutesAndSeconds(statusLine.player.exactTimePosition) + " / "
                         + Times.minutesAndSeconds(statusLine.player.duration) + ", f "
                         + statusLine.player.currentFrameIndex
        }
        Text {
            color: Theme.textLabel
            text: "Video file"
        }
        ElidedText {
            objectName: "videoFileText"
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            color: Theme.textSoft
            text: statusLine.videoOpen
                  ? statusLine.player.source : "No video file opened"
        }
        Text {
            objectName: "logFileLabel"
            visible: LogParser.source !== ""
            color: Theme.textLabel
            text: "Log file"
        }
        ElidedText {
            objectName: "logFileText"
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            color: Theme.textSoft
            text: LogParser.source !== "" ? LogParser.source : "No log file opened"
        }
    }

    CorvToolbarTextButton {
        id: jobsButton
        objectName: "jobsButton"

        readonly property bool failureShown: statusLine.failureUnseen && statusLine.runningJobs === 0

        anchors.right: parent.right
        anchors.rightMargin: 4
        anchors.verticalCenter: parent.verticalCenter
        width: !visible ? 0 : failureShown ? 108 : 84
        visible: statusLine.jobs !== null
        text: statusLine.runningJobs > 0 ? "Jobs: " + statusLine.runningJobs
                                         : failureShown ? "Jobs: failed" : "Jobs"
        foreground: failureShown ? Theme.textFailed : Theme.toolIcon
        source: "images/button_jobs.png"
        // A tool tip would cover the open list.
        tooltiptext: statusLine.jobsShown ? ""
                     : failureShown ? "A job has failed: open the list to see why"
                     : "Exports and other jobs, and how they ended"
        onClicked: statusLine.jobsClicked()
    }
}
