import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// The button that closes a window of texts.
Controls.Button {
    Accessible.name: text

    style: ButtonStyle {
        background: Rectangle {
            implicitWidth: 80
            implicitHeight: 25
            color: control.pressed ? Theme.buttonPressed
                                   : control.hovered || control.activeFocus ? Theme.buttonHovered
                                                                            : Theme.button
        }
        label: Text {
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            color: control.pressed ? Theme.buttonTextPressed : Theme.buttonText
            text: control.text
        }
    }
}
