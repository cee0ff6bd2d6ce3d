import QtQuick 2.7
import QtQuick.Controls 1.4
import QtQuick.Controls.Styles 1.4
import QtGraphicalEffects 1.0

// One number as a slider, a spin box and a reset button. It only asks for the reset: what the value
// goes back to is its user's business.
Rectangle {
    id: propertySetterControl

    property real stepSize: 1
    property real minimumValue: 0
    property real maximumValue: 10
    property real value: 2
    property int decimals: 0
    property alias iconSource: icon.source
    property string accessibleName: ""

    signal resetClicked()
    signal editingFinished()

    height: 36
    color: "transparent"

    onValueChanged: {
        horizontalSlider.value = value;
        valueBox.value = value;
    }

    function sliderChanged() {
        valueBox.value = horizontalSlider.value;
        propertySetterControl.value = horizontalSlider.value;
    }

    function spinBoxChanged() {
        horizontalSlider.value = valueBox.value;
        propertySetterControl.value = valueBox.value;
    }

    Row {
        anchors.left: parent.left
        anchors.leftMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        spacing: 4

        Item {
            width: 20
            height: 20
            anchors.verticalCenter: parent.verticalCenter

            Image {
                id: icon
                width: 20
                height: 20
                fillMode: Image.Pad
                visible: false
            }

            ColorOverlay {
                anchors.fill: icon
                source: icon
                color: propertySetterControl.enabled ? "#fff" : "#aaa"
            }
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

            style: SliderStyle {
                groove: Rectangle {
                    implicitWidth: 140
                    implicitHeight: 2
                    color: "#222222"
                }
                handle: Rectangle {
                    implicitWidth: 6
                    implicitHeight: 19
                    color: !control.enabled ? "#555" : control.hovered ? "#cccccc" : "#999999"
                }
            }
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
            style: CorvSpinBoxStyle {}
        }

        Rectangle {
            id: resetButton
            objectName: "resetButton"
            width: 22
            height: 22
            anchors.verticalCenter: parent.verticalCenter
            color: resetMouseArea.containsMouse ? "#333" : "#444"

            Accessible.role: Accessible.Button
            Accessible.name: "Reset " + propertySetterControl.accessibleName
            Accessible.onPressAction: propertySetterControl.resetClicked()

            Image {
                id: resetIcon
                anchors.centerIn: parent
                source: "images/button_icon_reset_defaults.png"
                visible: false
            }

            ColorOverlay {
                anchors.fill: resetIcon
                source: resetIcon
                color: propertySetterControl.enabled ? "#ccc" : "#888"
            }

            MouseArea {
                id: resetMouseArea
                anchors.fill: parent
                hoverEnabled: true
                onClicked: propertySetterControl.resetClicked()
            }
        }
    }
}
