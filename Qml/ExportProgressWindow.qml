import QtQuick 2.7
import QtQuick.Window 2.2
import "."

// Covers the window while a video or a report is written.
Window {
    id: exportProgressWindow
    objectName: "exportProgressWindow"

    property alias content: exportProgressContent
    signal abortClicked()

    function showOperation(text) {
        visible = true;
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
    color: Theme.dialog
    flags: Qt.Dialog | Qt.CustomizeWindowHint | Qt.WindowTitleHint
    modality: Qt.ApplicationModal
    // Hidden, it would go on unseen.
    onClosing: {
        close.accepted = false;
        abortClicked();
    }

    ExportProgress {
        id: exportProgressContent
        text: "Exporting video"
        onAbortClicked: exportProgressWindow.abortClicked()
    }
}
