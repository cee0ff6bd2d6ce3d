import QtQuick 2.7
import QtQuick.Window 2.2
import Windows 1.0
import "."
import "Controls"

Window {
    id: newUpdateWindow
    objectName: "newUpdateWindow"

    property string versionString: "1.0"
    property var releaseNotes: []

    // On a screen lower than the window, its lowest part is off the screen: nothing is put there.
    readonly property int hiddenHeight: hiddenPart.height

    signal installNewVersion(string newVersion)

    HiddenPart {
        id: hiddenPart
        window: newUpdateWindow
    }

    title: "Update now"
    width: 400
    height: 700
    minimumWidth: 400
    minimumHeight: 600
    color: Theme.editDialog
    modality: Qt.ApplicationModal

    Rectangle {
        id: rectangle1
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 200
        color: Theme.strip

        Image {
            id: image1
            objectName: "image1"
            anchors.fill: parent
            anchors.margins: 12
            source: Theme.light ? "images/splash_logo_light.png" : "images/splash_logo.png"
            fillMode: Image.PreserveAspectFit
            Accessible.role: Accessible.Graphic
            Accessible.name: "Vistrel"
        }
    }

    Rectangle {
        id: rectangle
        anchors { left: parent.left; right: parent.right; top: rectangle1.bottom }
        height: 25
        color: Theme.updateBand

        Text {
            anchors.centerIn: parent
            text: "UPDATE NOW AVAILABLE"
            color: Theme.textOnLight
            font.bold: true
        }
    }

    // A long list of notes scrolls instead of running into the buttons.
    ScrollView {
        id: notesView
        objectName: "notesView"
        anchors {
            left: parent.left
            right: parent.right
            top: rectangle.bottom
            bottom: btn_install_now.top
            margins: 16
        }
        horizontalScrollBarPolicy: Qt.ScrollBarAlwaysOff
        frameVisible: false

        Text {
            id: lbl_version
            objectName: "lbl_version"
            width: notesView.viewport.width
            wrapMode: Text.WordWrap
            textFormat: Text.PlainText
            color: Theme.text
            text: "New Vistrel version " + newUpdateWindow.versionString
                  + " available!\n\nThe following new features have been implemented or bugs have "
                  + "been fixed:\n\n" + newUpdateWindow.releaseNotes.join("\n")
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }

    CorvQuickStartButton {
        id: btn_install_now
        objectName: "btn_install_now"
        anchors { left: parent.left; leftMargin: 26; verticalCenter: btn_later.verticalCenter }
        width: 160
        height: 36
        text: "Install now"
        onClicked: {
            newUpdateWindow.installNewVersion(newUpdateWindow.versionString);
            newUpdateWindow.close();
        }
    }

    CorvQuickStartButton {
        id: btn_later
        objectName: "btn_later"
        anchors { right: parent.right; rightMargin: 26; bottom: parent.bottom }
        anchors.bottomMargin: 16 + newUpdateWindow.hiddenHeight
        width: 160
        height: 36
        text: "Later"
        onClicked: newUpdateWindow.close()
    }
}
