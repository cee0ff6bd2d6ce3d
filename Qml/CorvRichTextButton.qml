import QtQuick 2.7
import "."

// The button of the dialogs that are also answered by keys: those call pressButton().
CorvButtonBase {
    id: corvRichTextButton

    property string caption: ""

    function pressButton() {
        clicked();
    }

    name: caption
    width: label.contentWidth + 14
    height: 25
    color: hovered ? Theme.buttonHovered : Theme.button

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
}
