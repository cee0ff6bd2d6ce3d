import QtQuick 2.15
import "."
import "Controls"

// One number as a slider, a spin box and a reset button. It only asks for the reset: what the value
// goes back to is its user's business. The slider and the box may round what they show, and only what
// is entered there is written to `value`.
Rectangle {
    id: propertySetterControl

    property real stepSize: 1
    property real minimumValue: 0
    property real maximumValue: 10
    property real value: 2
    property int decimals: 0
    property alias iconSource: icon.source
    property string accessibleName: ""
    // What the number counts, for the tool tip.
    property string unit: ""
    readonly property string description: accessibleName + (unit === "" ? "" : ", " + unit)
    // What a DisabledToolTips behind it shows.
    readonly property string tooltiptext: description
    property string disabledReason: ""
    // Set while the slider and the box are made to show the value.
    property bool following: true

    signal resetClicked()
    signal editingFinished()

    height: 36
    color: Theme.clear

    onValueChanged: follow()
    Component.onCompleted: follow()

    function follow() {
        following = true;
        horizontalSlider.value = value;
        valueBox.value = value;
        following = false;
    }

    function sliderChanged() {
        if (!following)
            value = horizontalSlider.value;
    }

    function spinBoxChanged() {
        if (!following)
            value = valueBox.value;
    }

    MouseArea {
        id: iconArea
        width: 32
        height: parent.height
        acceptedButtons: Qt.NoButton
        hoverEnabled: true
    }

    ToolTipLoader {
        target: propertySetterControl
        text: propertySetterControl.description
        hovered: iconArea.containsMouse || horizontalSlider.hovered || valueBox.hovered
    }

    Row {
        anchors.left: parent.left
        anchors.leftMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        spacing: 4

        TintedIcon {
            id: icon
            width: 20
            height: 20
            anchors.verticalCenter: parent.verticalCenter
            color: propertySetterControl.enabled ? Theme.setterIcon : Theme.setterIconDisabled
        }

        Slider {
            id: horizontalSlider
            objectName: "horizontalSlider"
            width: 140
            height: 25
            anchors.verticalCenter: parent.verticalCenter
            minimumValue: propertySetterControl.minimumValue
            maximumValue: propertySetterControl.maximumValue
            value: propertySetterControl.value
            stepSize: propertySetterControl.stepSize
            onValueChanged: propertySetterControl.sliderChanged()
            Accessible.name: propertySetterControl.accessibleName
            Accessible.description: propertySetterControl.description
            // Before the window's own shortcuts of these keys.
            Keys.onShortcutOverride: event.accepted = event.key === Qt.Key_Left
                                     || event.key === Qt.Key_Right
        }

        SpinBox {
            id: valueBox
            objectName: "valueBox"
            width: 60
            anchors.verticalCenter: parent.verticalCenter
            decimals: propertySetterControl.decimals
            minimumValue: propertySetterControl.minimumValue
            maximumValue: propertySetterControl.maximumValue
            value: propertySetterControl.value
            stepSize: propertySetterControl.stepSize
            onValueChanged: propertySetterControl.spinBoxChanged()
            Keys.onEnterPressed: propertySetterControl.editingFinished()
            Accessible.name: propertySetterControl.accessibleName
            Accessible.description: propertySetterControl.description
        }

        CorvButtonBase {
            id: resetButton
            objectName: "resetButton"
            name: "Reset " + propertySetterControl.accessibleName
            tooltiptext: "Reset " + propertySetterControl.accessibleName.toLowerCase()
            width: 22
            height: 22
            anchors.verticalCenter: parent.verticalCenter
            color: hovered ? Theme.resetButtonHovered : Theme.resetButton
            onClicked: propertySetterControl.resetClicked()

            TintedIcon {
                anchors.centerIn: parent
                source: "images/button_icon_reset_defaults.png"
                color: propertySetterControl.enabled ? Theme.resetIcon : Theme.resetIconDisabled
            }
        }
    }
}
