import QtQuick 2.7
import QtGraphicalEffects 1.0
import "constants.js" as Cst

Rectangle {
    id: corvToolbarButton

    property alias source: icon.source
    property string tooltiptext: ""
    signal clicked()

    width: 25
    height: 25
    color: enabled && buttonMouseArea.containsMouse ? Cst.btnColorTbHover : "transparent"

    Accessible.role: Accessible.Button
    Accessible.name: tooltiptext
    Accessible.onPressAction: clicked()

    Image {
        id: icon
        anchors.centerIn: parent
        visible: false
    }

    ColorOverlay {
        anchors.fill: icon
        source: icon
        color: corvToolbarButton.enabled ? Cst.btnTextPressedColor : Cst.disabledCheckedBtnFg
    }

    // Made at the first need: the module of the tool tips is not loaded before.
    Loader {
        id: toolTipLoader
        property bool wanted: corvToolbarButton.tooltiptext !== "" && buttonMouseArea.containsMouse
        onWantedChanged: {
            if (wanted && !item)
                setSource("CorvToolTip.qml", {parent: corvToolbarButton, objectName: "toolTip"});
            if (item) {
                item.text = corvToolbarButton.tooltiptext;
                item.visible = wanted;
            }
        }
    }

    MouseArea {
        id: buttonMouseArea
        anchors.fill: parent
        hoverEnabled: true
        onClicked: corvToolbarButton.clicked()
    }
}
