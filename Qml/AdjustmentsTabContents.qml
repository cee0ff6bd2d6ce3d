import QtQuick 2.7
import QtQml 2.14
import corv.LogParsing 1.0
import VideoPlayer 1.0
import "."
import "Controls"

Rectangle {
    id: adjustmentsRect

    property VideoPlayer player: null
    readonly property bool videoOpen: player !== null && player.hasVideoOpened
    readonly property bool thermalShown: player !== null && player.showIR
    readonly property bool automatic: player !== null && player.autoIRMapping

    readonly property string rangeReason: thermalShown
            ? "switch the automatic color mapping off first" : "show the thermal picture first"

    // Whether the hottest and the coldest point are shown on the picture.
    property bool extremesShown: false
    signal extremesToggled(bool shown)

    // Made, and showing what the player has.
    signal loaded()
    signal editingFinished()

    property bool irSlidersEnabled: false
    property int irRangeMin: 0
    property int irRangeMax: 16383
    property alias irShowButtonChecked: showIRButton.checked
    property alias irFullscreenButtonChecked: fullIRButton.checked
    property alias irFullscreenButtonEnabled: fullIRButton.enabled
    property alias irTransparencyButtonChecked: irOverlayTransparentButton.checked
    property alias irTransparencyButtonEnabled: irOverlayTransparentButton.enabled
    property alias irLockRangeButtonEnabled: lockIRMappingButton.enabled
    property alias irAutoRangeButtonChecked: autoIRMappingButton.checked
    property alias irAutoRangeButtonEnabled: autoIRMappingButton.enabled
    property alias irMinValue: iRMinValueSlider.value
    property alias irMaxValue: iRMaxValueSlider.value
    property alias irHorizontalPosCorrection: horizontalThermalCorrectionSetter.value
    property alias irVerticalPosCorrection: verticalThermalCorrectionSetter.value
    property alias logTimeShiftingCorrection: timeShiftingLogCorrectionSetter.value
    property alias imageContrast: contrastSetter.value
    property alias imageBrightness: brightnessSetter.value

    // Set while the sliders and setters follow the player: what they show then is not written back,
    // or their range would cut the values in use.
    property bool following: true

    color: Theme.panel

    function giveBackFocusToEditor() {
        console.log("Giving back focus");
        editingFinished();
    }

    function showMapping(minimum, maximum) {
        following = true;
        irMinValue = minimum;
        irMaxValue = maximum;
        following = false;
    }

    function showMappingInUse() {
        if (player === null)
            return;
        if (player.autoIRMapping)
            showMapping(player.irDataMin, player.irDataMax);
        else
            showMapping(player.irMappingMinValue, player.irMappingMaxValue);
    }

    // A screen reader can move a slider that cannot be used: it goes back then.
    function chooseMapping(end, value) {
        if (player === null || following)
            return;
        if (automatic)
            showMappingInUse();
        else
            player[end] = value;
    }

    // Another camera, another range: values that the earlier one could not show can be shown now.
    onIrRangeMaxChanged: {
        if (!automatic)
            showMappingInUse();
    }

    // The panel is made when it is first shown, which may be long after a flight was opened.
    Component.onCompleted: {
        console.log("Loading adjustments tab!");
        showMappingInUse();
        loaded();
        following = false;
    }

    Connections {
        target: adjustmentsRect.player

        function onIrDataChanged() {
            if (adjustmentsRect.automatic)
                adjustmentsRect.showMappingInUse();
        }

        function onAutoIRMappingChanged() {
            adjustmentsRect.showMappingInUse();
        }

        function onIrMappingMinValueChanged() {
            adjustmentsRect.showMappingInUse();
        }

        function onIrMappingMaxValueChanged() {
            adjustmentsRect.showMappingInUse();
        }
    }

    // Objects, because a click on a toggle or a move of a slider would end a plain binding.
    Binding { target: showIRButton; property: "checked"; value: thermalShown }
    Binding { target: fullIRButton; property: "enabled"; value: thermalShown }
    Binding {
        target: fullIRButton
        property: "checked"
        value: player !== null && player.fullScreenIR
    }
    Binding { target: irOverlayTransparentButton; property: "enabled"; value: thermalShown }
    Binding {
        target: irOverlayTransparentButton
        property: "checked"
        value: player !== null && player.irOverlayTransparent
    }
    Binding { target: lockIRMappingButton; property: "enabled"; value: thermalShown }
    Binding { target: autoIRMappingButton; property: "enabled"; value: thermalShown }
    Binding { target: autoIRMappingButton; property: "checked"; value: automatic }
    Binding { target: adjustmentsRect; property: "irSlidersEnabled"; value: !automatic }
    Binding {
        target: horizontalThermalCorrectionSetter
        property: "value"
        value: player !== null ? player.irOffsetX : 0
    }
    Binding {
        target: verticalThermalCorrectionSetter
        property: "value"
        value: player !== null ? player.irOffsetY : 0
    }
    Binding {
        target: timeShiftingLogCorrectionSetter
        property: "value"
        value: LogParser.manualLogTimeOffset
    }
    Binding {
        target: contrastSetter
        property: "value"
        value: player !== null ? player.contrast : 1
    }
    Binding {
        target: brightnessSetter
        property: "value"
        value: player !== null ? player.brightness : 0
    }

    // Scrolls where the window is lower than the sections.
    Flickable {
        id: sectionsView
        anchors.fill: parent
        contentHeight: Math.max(height, sections.height)
        interactive: sections.height > height
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        MouseArea {
            objectName: "adjustmentsBackground"
            anchors.fill: parent
            onClicked: adjustmentsRect.giveBackFocusToEditor()
        }

        DisabledToolTips {
            objectName: "setterToolTips"
            row: sections
        }
        DisabledToolTips {
            objectName: "rangeToolTips"
            row: iRRangeRect
        }
        DisabledToolTips {
            objectName: "thermalToolTips"
            row: thermalButtons
        }
        DisabledToolTips { row: mappingButtons }

        Column {
            id: sections
            width: parent.width

            SectionBand { text: "Thermal camera display" }

            Row {
                id: thermalButtons
                x: 8
                height: 37
                spacing: 6

                CorvToolbarToggleTextButton {
                    id: showIRButton
                    objectName: "showIRButton"
                    anchors.verticalCenter: parent.verticalCenter
                    implicitWidth: 128
                    text: "Show thermal"
                    tooltiptext: "Show the thermal picture over the video"
                    source: "images/button_show_ir.png"
                    onToggle: player.showIR = checked
                }

                CorvToolbarToggleButton {
                    id: fullIRButton
                    objectName: "fullIRButton"
                    anchors.verticalCenter: parent.verticalCenter
                    disabledReason: "show the thermal picture first"
                    source: "images/button_ir_fullscreen.png"
                    tooltiptext: "Thermal picture over the whole frame"
                    onToggle: player.fullScreenIR = checked
                }

                CorvToolbarToggleButton {
                    id: irOverlayTransparentButton
                    objectName: "irOverlayTransparentButton"
                    anchors.verticalCenter: parent.verticalCenter
                    disabledReason: "show the thermal picture first"
                    source: "images/button_transparency.png"
                    tooltiptext: "Transparent thermal picture"
                    onToggle: player.irOverlayTransparent = checked
                }
            }

            SectionBand { text: "Color mapping" }

            Item {
                id: iRRangeRect
                width: parent.width
                height: 40

                RangeSlider {
                    id: iRMinValueSlider
                    objectName: "iRMinValueSlider"
                    anchors.left: irMappingDisplay.left
                    anchors.right: irMappingDisplay.right
                    anchors.bottom: irMappingDisplay.top
                    pointer: "images/slider_pointer_down.png"
                    minimumValue: irRangeMin
                    maximumValue: irRangeMax
                    value: 0
                    enabled: irSlidersEnabled
                    disabledReason: adjustmentsRect.rangeReason
                    name: "Lowest mapped value"
                    onValueChanged: adjustmentsRect.chooseMapping("irMappingMinValue", value)
                }

                Rectangle {
                    id: irMappingDisplay
                    anchors.left: parent.left
                    anchors.right: parent.right
                    anchors.leftMargin: 12
                    anchors.rightMargin: 12
                    anchors.verticalCenter: parent.verticalCenter
                    height: 2
                    color: Theme.groove
                }

                RangeSlider {
                    id: iRMaxValueSlider
                    objectName: "iRMaxValueSlider"
                    anchors.left: irMappingDisplay.left
                    anchors.right: irMappingDisplay.right
                    anchors.top: irMappingDisplay.bottom
                    pointer: "images/slider_pointer_up.png"
                    minimumValue: irRangeMin
                    maximumValue: irRangeMax
                    value: 16383
                    enabled: irSlidersEnabled
                    disabledReason: adjustmentsRect.rangeReason
                    name: "Highest mapped value"
                    onValueChanged: adjustmentsRect.chooseMapping("irMappingMaxValue", value)
                }
            }

            Row {
                id: mappingButtons
                x: 8
                height: 33
                spacing: 6

                CorvToolbarToggleButton {
                    id: autoIRMappingButton
                    objectName: "autoIRMappingButton"
                    disabledReason: "show the thermal picture first"
                    source: "images/button_auto.png"
                    tooltiptext: "Automatic color mapping: the range of each thermal frame"
                    onToggle: player.autoIRMapping = checked
                }

                CorvToolbarTextButton {
                    id: lockIRMappingButton
                    objectName: "lockIRMappingButton"
                    width: 60
                    text: "Lock"
                    tooltiptext: "Keep the color range of the frame on screen"
                    disabledReason: "show the thermal picture first"
                    source: "images/button_lock_levels.png"
                    onClicked: {
                        player.autoIRMapping = false;
                        player.irMappingMinValue = player.irDataMin;
                        player.irMappingMaxValue = player.irDataMax;
                    }
                }

                CorvToolbarToggleButton {
                    id: extremesButton
                    objectName: "extremesButton"
                    enabled: adjustmentsRect.thermalShown
                    checked: adjustmentsRect.extremesShown
                    disabledReason: "show the thermal picture first"
                    source: "images/button_extremes.png"
                    tooltiptext: "Mark the hottest and the coldest point"
                    onToggle: adjustmentsRect.extremesToggled(checked)
                }

                CorvComboBox {
                    id: paletteBox
                    objectName: "paletteBox"
                    width: 110
                    height: 25
                    enabled: adjustmentsRect.thermalShown
                    model: ["Rainbow", "Even", "Grey"]
                    Accessible.name: tooltiptext
                    tooltiptext: "Colours of the thermal picture"
                    disabledReason: "show the thermal picture first"
                    onActivated: player.irPalette = index

                    Binding on currentIndex {
                        value: player !== null && player.irPalette > 0 ? player.irPalette : 0
                    }
                }
            }

            SectionBand { text: "Thermal camera position correction" }

            NumericPropertySetter {
                id: horizontalThermalCorrectionSetter
                objectName: "horizontalThermalCorrectionSetter"
                width: parent.width
                iconSource: "images/icon_horizontal_pos.png"
                accessibleName: "Horizontal thermal position"
                unit: "of the picture's width"
                minimumValue: -0.2
                maximumValue: 0.2
                stepSize: 0.005
                decimals: 3
                value: 0
                enabled: adjustmentsRect.videoOpen
                disabledReason: "open a video first"
                onValueChanged: {
                    if (!adjustmentsRect.following && player !== null)
                        player.irOffsetX = value;
                }
                onResetClicked: {
                    player.irOffsetX = 0;
                    value = 0;
                }
                onEditingFinished: adjustmentsRect.giveBackFocusToEditor()
            }

            NumericPropertySetter {
                id: verticalThermalCorrectionSetter
                objectName: "verticalThermalCorrectionSetter"
                width: parent.width
                iconSource: "images/icon_vertical_pos.png"
                accessibleName: "Vertical thermal position"
                unit: "of the picture's height"
                minimumValue: -0.16
                maximumValue: 0.16
                stepSize: 0.005
                decimals: 3
                value: 0
                enabled: adjustmentsRect.videoOpen
                disabledReason: "open a video first"
                onValueChanged: {
                    if (!adjustmentsRect.following && player !== null)
                        player.irOffsetY = value;
                }
                onResetClicked: {
                    player.irOffsetY = 0;
                    value = 0;
                }
                onEditingFinished: adjustmentsRect.giveBackFocusToEditor()
            }

            SectionBand { text: "Log time shifting correction" }

            NumericPropertySetter {
                id: timeShiftingLogCorrectionSetter
                objectName: "timeShiftingLogCorrectionSetter"
                width: parent.width
                iconSource: "images/icon_time_offset.png"
                accessibleName: "Log time shift in milliseconds"
                minimumValue: -5000
                maximumValue: 5000
                stepSize: 100
                decimals: 0
                value: 0
                enabled: adjustmentsRect.videoOpen
                disabledReason: "open a video first"
                onValueChanged: {
                    if (!adjustmentsRect.following)
                        LogParser.manualLogTimeOffset = value;
                }
                onResetClicked: {
                    LogParser.manualLogTimeOffset = 0;
                    value = 0;
                }
                onEditingFinished: adjustmentsRect.giveBackFocusToEditor()
            }

            SectionBand { text: "Image" }

            NumericPropertySetter {
                id: contrastSetter
                objectName: "contrastSetter"
                width: parent.width
                iconSource: "images/icon_contrast.png"
                accessibleName: "Contrast"
                unit: "times"
                minimumValue: 0.5
                maximumValue: 2.0
                stepSize: 0.01
                decimals: 1
                value: 1.0
                enabled: adjustmentsRect.videoOpen
                disabledReason: "open a video first"
                onValueChanged: {
                    if (!adjustmentsRect.following && player !== null)
                        player.contrast = value;
                }
                onResetClicked: {
                    player.contrast = 1;
                    value = 1;
                }
                onEditingFinished: adjustmentsRect.giveBackFocusToEditor()
            }

            NumericPropertySetter {
                id: brightnessSetter
                objectName: "brightnessSetter"
                width: parent.width
                iconSource: "images/icon_brightness.png"
                accessibleName: "Brightness"
                unit: "levels of 255"
                minimumValue: -50
                maximumValue: 50
                stepSize: 1
                decimals: 0
                value: 0
                enabled: adjustmentsRect.videoOpen
                disabledReason: "open a video first"
                onValueChanged: {
                    if (!adjustmentsRect.following && player !== null)
                        player.brightness = value;
                }
                onResetClicked: {
                    player.brightness = 0;
                    value = 0;
                }
                onEditingFinished: adjustmentsRect.giveBackFocusToEditor()
            }
        }
    }

    ScrollMark { view: sectionsView }
}
