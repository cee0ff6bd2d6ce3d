import QtQuick 2.7
import QtQuick.Controls 1.4
import QtQuick.Controls.Styles 1.4
import QtQuick.Layouts 1.1
import corv.LogParsing 1.0
import "constants.js" as Cst

// The bottom line: how far a log has been read, or what is open and where the video stands.
Rectangle {
    id: statusLine

    height: 26
    color: "#333333"

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

        ProgressBar {
            id: taskProgressBar
            objectName: "taskProgressBar"
            anchors.fill: parent
            Accessible.name: "Progress of the flight log"
            style: ProgressBarStyle {
                background: Item {}
                progress: Rectangle { color: Cst.progressBarBg }
            }
        }

        Image {
            id: loadingSpinner
            anchors.left: parent.left
            anchors.leftMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            sourceSize.width: 18
            sourceSize.height: 18
            source: "images/loading_spinner.svg"

            RotationAnimation on rotation {
                running: LogParser.isParsing
                from: 0
                to: 360
                duration: 1000
                loops: Animation.Infinite
            }
        }

        Text {
            id: logLoadingIndicator
            objectName: "logLoadingIndicator"
            anchors.left: loadingSpinner.right
            anchors.leftMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            color: "#ffffff"
            text: "Loading logs..."
        }
    }

    RowLayout {
        objectName: "filesRow"
        anchors.fill: parent
        anchors.leftMargin: 8
        anchors.rightMargin: 8
        spacing: 8
        visible: !LogParser.isParsing

        Text {
            id: videoDuration
            objectName: "videoDuration"
            visible: videoPlayer.hasVideoOpened
            color: "#ffffff"
            font.family: Qt.fontFamilies().indexOf("Lucida Console") >= 0 ? "Lucida Console"
                                                                          : "monospace"
            font.pixelSize: 14
            text: Qt.formatTime(videoPlayer.timePosition, "mm:ss.zzz") + " / "
                  + Qt.formatTime(videoPlayer.duration, "mm:ss.zzz") + ", f "
                  + videoPlayer.currentFrameIndex
        }
        Text {
            color: "#999999"
            text: "Video file"
        }
        Text {
            objectName: "videoFileText"
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            color: "#dddddd"
            elide: Text.ElideMiddle
            textFormat: Text.PlainText
            text: videoPlayer.source !== "" ? videoPlayer.source : "No video file opened"
        }
        Text {
            objectName: "logFileLabel"
            visible: LogParser.source !== ""
            color: "#999999"
            text: "Log file"
        }
        Text {
            objectName: "logFileText"
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            color: "#dddddd"
            elide: Text.ElideMiddle
            textFormat: Text.PlainText
            text: LogParser.source !== "" ? LogParser.source : "No log file opened"
        }
    }
}
