import QtQuick 2.7
import "."

CorvButtonBase {
    id: corvQuickStartButton

    property alias text: label.text

    name: text
    isPressedByReturn: true
    color: pressed ? Theme.buttonPressed : hovered ? Theme.buttonHovered : Theme.clear
    border.width: 1
    border.color: pressed ? Theme.buttonPressed : Theme.buttonLine

    Behavior on color { ColorAnimation { duration: 75 } }
    Behavior on border.color { ColorAnimation { duration: 75 } }

    // The text is too faint on the dialogs.
    Rectangle {
        anchors.fill: parent
        anchors.margins: 1
        visible: !corvQuickStartButton.hovered && !corvQuickStartButton.pressed
        color: Theme.plate
    }

    Text {
        id: label
        anchors.centerIn: parent
        width: Math.min(implicitWidth, parent.width - 12)
        // A high button has room for more lines.
        maximumLineCount: Math.max(1, Math.floor(parent.height / 16))
        wrapMode: maximumLineCount > 1 ? Text.WordWrap : Text.NoWrap
        elide: Text.ElideRight
        horizontalAlignment: Text.AlignHCenter
        textFormat: Text.PlainText
        color: corvQuickStartButton.pressed
               ? Theme.buttonTextPressed
               : corvQuickStartButton.hovered ? Theme.buttonText : Theme.buttonLine
        Behavior on color { ColorAnimation { duration: 75 } }
    }
}
