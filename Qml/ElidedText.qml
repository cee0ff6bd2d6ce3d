import QtQuick 2.7

// One line of text, shortened in the middle where it has no room; then the tool tip has all of it.
Text {
    id: elidedText

    elide: Text.ElideMiddle
    textFormat: Text.PlainText
    // Rows of names in several scripts start at one edge.
    horizontalAlignment: Text.AlignLeft

    Accessible.role: Accessible.StaticText
    Accessible.name: text

    MouseArea {
        id: hoverArea
        anchors.fill: parent
        acceptedButtons: Qt.NoButton
        hoverEnabled: true
    }

    ToolTipLoader {
        target: elidedText
        text: elidedText.truncated ? elidedText.text : ""
        hovered: hoverArea.containsMouse
    }
}
