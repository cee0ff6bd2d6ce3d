import QtQuick 2.7
import QtQuick.Window 2.2
import corv.AppInfo 1.0
import "."
import "Controls"
import "licenses.js" as Licenses

Window {
    id: videoImport
    objectName: "aboutWindow"

    title: "About Vistrel"
    width: 700
    height: 600
    minimumWidth: 400
    minimumHeight: 400
    modality: Qt.WindowModal
    color: Theme.editDialog

    Shortcut {
        sequence: "Esc"
        onActivated: videoImport.close()
    }

    Rectangle {
        id: rectangle1
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 200
        color: Theme.strip

        Image {
            objectName: "splashLogo"
            anchors.fill: parent
            anchors.margins: 12
            source: Theme.light ? "images/splash_logo_light.png" : "images/splash_logo.png"
            fillMode: Image.PreserveAspectFit
            Accessible.role: Accessible.Graphic
            Accessible.name: "Vistrel"
        }
    }

    Text {
        id: lbl_version
        objectName: "lbl_version"
        anchors { left: parent.left; top: rectangle1.bottom; margins: 12 }
        color: Theme.text
        text: "Version " + AppInfo.versionString
    }

    ScrollView {
        id: licensesView
        objectName: "licensesView"
        // Without an item that has the keyboard, no shortcut of the window works.
        focus: true
        anchors {
            left: parent.left
            right: parent.right
            top: lbl_version.bottom
            bottom: btn_close.top
            margins: 12
        }
        horizontalScrollBarPolicy: Qt.ScrollBarAlwaysOff

        Text {
            id: licensesText
            objectName: "licensesText"
            x: 8
            width: licensesView.viewport.width - 16
            wrapMode: Text.WordWrap
            textFormat: Text.RichText
            color: Theme.menuText
            text: Licenses.text()
            Accessible.role: Accessible.StaticText
            Accessible.name: "Open source licenses"
        }
    }

    Button {
        id: btn_close
        objectName: "btn_close"
        anchors { right: parent.right; bottom: parent.bottom; margins: 12 }
        text: "Close"
        onClicked: videoImport.close()
    }
}
