import QtQuick 2.7
import "constants.js" as Cst

// The button of the dialogs that are also answered by keys: those call pressButton().
Rectangle {
    id: corvRichTextButton

    property string caption: ""
    signal clicked()

    function pressButton() {
        clicked();
    }

    width: label.contentWidth + 14
    height: 25
    color: buttonMouseArea.containsMouse ? Cst.btnColorHover : Cst.btnColor

    Accessible.role: Accessible.Button
    Accessible.name: caption
    Accessible.onPressAction: pressButton()

    Behavior on color { ColorAnimation { duration: 100 } }

    TextEdit {
        id: label
        anchors.centerIn: parent
        readOnly: true
        activeFocusOnPress: false
        selectByMouse: false
        textFormat: TextEdit.RichText
        text: "<div style='color: black; font-size:15px'>" + corvRichTextButton.caption + "</div>"
        Accessible.ignored: true
    }

    MouseArea {
        id: buttonMouseArea
        anchors.fill: parent
        hoverEnabled: true
        onClicked: corvRichTextButton.pressButton()
    }
}
