import QtQuick 2.7

// The tool tips of the controls of a row or a column that cannot be used now: they say why. Such a
// control sees no pointer, so this looks for it from behind.
MouseArea {
    id: disabledToolTips

    // The row. This is declared before it, and in an item at the same place as that of the row.
    property Item row: null
    readonly property Item pointed: containsMouse && row !== null ? row.childAt(mouseX, mouseY) : null
    readonly property bool explained: pointed !== null && !pointed.enabled
                                      && pointed.disabledReason !== undefined
                                      && pointed.disabledReason !== ""

    x: row !== null ? row.x : 0
    y: row !== null ? row.y : 0
    width: row !== null ? row.width : 0
    height: row !== null ? row.height : 0
    visible: row !== null && row.visible
    hoverEnabled: true
    acceptedButtons: Qt.NoButton

    Item {
        id: place
        x: disabledToolTips.explained ? disabledToolTips.pointed.x : 0
        y: disabledToolTips.explained ? disabledToolTips.pointed.y : 0
        width: disabledToolTips.explained ? disabledToolTips.pointed.width : 0
        height: disabledToolTips.explained ? disabledToolTips.pointed.height : 0
    }

    ToolTipLoader {
        target: place
        text: disabledToolTips.explained
              ? disabledToolTips.pointed.tooltiptext + ": " + disabledToolTips.pointed.disabledReason
              : ""
        hovered: disabledToolTips.explained
    }
}
