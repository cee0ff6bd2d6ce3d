import QtQuick 2.7
import QtQuick.Controls 1.4
import QtQuick.Controls.Styles 1.4

// The spin box as it stands on the dark panels.
SpinBoxStyle {
    textColor: control.enabled ? "#dddddd" : "#888888"
    selectionColor: "#46af63"
    selectedTextColor: "#ffffff"
    font.pixelSize: 12
    padding { left: 4; right: 16; top: 0; bottom: 0 }

    background: Rectangle {
        implicitWidth: 60
        implicitHeight: 22
        color: "#222222"
        border.color: control.activeFocus ? "#12ff54" : "#666666"
    }

    incrementControl: Item {
        implicitWidth: 14
        implicitHeight: 11

        Text {
            anchors.centerIn: parent
            font.pixelSize: 7
            color: !control.enabled ? "#666666" : styleData.upHovered ? "#ffffff" : "#aaaaaa"
            text: "\u25b2"
        }
    }

    decrementControl: Item {
        implicitWidth: 14
        implicitHeight: 11

        Text {
            anchors.centerIn: parent
            font.pixelSize: 7
            color: !control.enabled ? "#666666" : styleData.downHovered ? "#ffffff" : "#aaaaaa"
            text: "\u25bc"
        }
    }
}
