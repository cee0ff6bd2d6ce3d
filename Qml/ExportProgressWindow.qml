import QtQuick 2.7
import QtQuick.Window 2.2
import "."

// Covers the window while a video or a report is written. Closing it aborts.
WorkWindow {
    id: exportProgressWindow
    objectName: "exportProgressWindow"

    property alias content: exportProgressContent
    signal abortClicked()

    function showOperation(text) {
        isAtWork = true;
        exportProgressContent.value = 0;
        exportProgressContent.text = text;
    }

    function showProgress(done, total) {
        exportProgressContent.minimumValue = 0;
        exportProgressContent.maximumValue = total;
        exportProgressContent.value = done;
    }

    title: "Export operation"
    minimumWidth: 560
    minimumHeight: 120
    // Hidden, it would go on unseen.
    onEndWanted: abortClicked()

    ExportProgress {
        id: exportProgressContent
        text: "Exporting video"
        onAbortClicked: exportProgressWindow.abortClicked()
    }
}
