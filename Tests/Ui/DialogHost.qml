import QtQuick 2.7
import QtQuick.Window 2.2

// Replaces the main window for the secondary windows: it makes them as the main window
// does, and is known to them under the same id.
Window {
    id: mainWindow
    objectName: "mainWindow"

    signal installNewVersion(string newVersion)

    function make(fileName) {
        var component = Qt.createComponent("qrc:/" + fileName);
        if (component.status !== Component.Ready)
            console.log(component.errorString());
        return component.createObject(fileName === "ExportProgress.qml" ? contentItem : mainWindow);
    }

    width: 700
    height: 300
    visible: true
    color: "#555555"
}
