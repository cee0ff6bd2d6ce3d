pragma Singleton
import QtQuick 2.7
import corv.Appearance 1.0
import "constants.js" as Cst

// Every colour of the windows, by its role: dark, or light for bright sun. The picture with what lies
// on it, the flight data and the timeline look the same in both.
QtObject {
    readonly property bool light: Appearance.light

    // Surfaces.
    readonly property color window: light ? "#e4e4e4" : "#222222"
    // Behind the quick start panel, and around a picture.
    readonly property color startGround: light ? "#f2f2f2" : "#1a1a1a"
    readonly property color startRow: light ? "#ffffff" : "#262626"
    readonly property color startRowBorder: light ? "#8a8a8a" : "#4a4a4a"
    readonly property color startText: light ? "#000000" : "#e6e6e6"
    readonly property color startTextMissing: light ? "#4a4a4a" : "#a4a4a4"
    readonly property color videoGround: "#1a1a1a"
    // What lies on a picture.
    readonly property color overlay: "#1f1f1f"
    readonly property color overlayBorder: "#777777"
    readonly property color overlayText: "#ffffff"
    readonly property color timelineGround: light ? "#d2d2d2" : "#2b2b2b"
    readonly property color curvesGround: light ? "#ffffff" : "#1c1c1c"
    readonly property color strip: light ? "#d6d6d6" : "#333333"
    readonly property color panel: light ? "#ececec" : "#444444"
    readonly property color flightPanel: "#777777"
    readonly property color dialog: light ? "#e9e9e9" : Cst.bgndColor
    readonly property color dialogBand: light ? "#dcdcdc" : Cst.headerColor
    readonly property color dialogHead: light ? "#cfcfcf" : "#222222"
    readonly property color editDialog: light ? "#e9e9e9" : "#494949"
    // Behind a text that would be too faint on its surface.
    readonly property color plate: light ? "#ffffff" : "#1f1f1f"
    readonly property color flightPlate: light ? "#ececec" : "#444444"
    readonly property color updateBand: light ? "#c4c4c4" : "#848484"
    readonly property color tab: light ? "#c9c9c9" : "#2a2a2a"
    readonly property color tabHovered: light ? "#dadada" : "#3a3a3a"
    readonly property color tabSelected: panel
    readonly property color menu: light ? "#f6f6f6" : "#3a3a3a"
    readonly property color menuBorder: light ? "#8a8a8a" : "#777777"
    readonly property color menuTitleOpen: light ? "#bdbdbd" : "#555555"
    readonly property color menuSelected: light ? "#b4dfc1" : "#2c7440"
    readonly property color menuSeparator: light ? "#b4b4b4" : "#666666"

    // Dark enough for the dash of a name that is missing.
    readonly property color listGround: light ? "#ffffff" : "#000000"
    readonly property color listSelected: menuSelected
    readonly property color listHovered: light ? "#dddddd" : "#505050"

    // Text and icons on those surfaces.
    readonly property color text: light ? "#000000" : "#ffffff"
    readonly property color textSoft: light ? "#222222" : "#dddddd"
    readonly property color textBand: light ? "#222222" : "#cccccc"
    readonly property color textDim: light ? "#3d3d3d" : "#aaaaaa"
    readonly property color textLabel: light ? "#3f3f3f" : "#a8a8a8"
    readonly property color textDisabled: light ? "#757575" : "#a6a6a6"
    readonly property color textMissing: light ? "#3a3a3a" : "#777777"
    readonly property color textMissingMark: light ? "#6e6e6e" : "#999999"
    // The text of a failure.
    readonly property color textFailed: light ? "#8f2600" : "#ffc4ae"
    readonly property color textOnLight: "#000000"
    readonly property color menuText: light ? "#000000" : "#eeeeee"
    readonly property color menuShortcut: light ? "#333333" : "#cccccc"
    readonly property color welcomeTitle: light ? "#444444" : "#949494"
    readonly property color welcomeText: light ? "#3a3a3a" : "#a4a4a4"
    readonly property color namingMissing: light ? "#333333" : "#cccccc"

    // What the pairing of a video with its log rests on.
    readonly property color evidenceCheck: "#0a2e12"
    readonly property color evidenceLength: "#004d66"
    readonly property color evidenceDoubt: "#ff9d00"
    readonly property color evidenceTime: "#ffe08a"
    readonly property color evidenceNone: light ? "#ffffff" : "#444444"

    // Controls.
    readonly property color button: light ? "#cbcbcb" : Cst.btnColor
    readonly property color buttonHovered: light ? "#b2b2b2" : Cst.btnColorHover
    readonly property color buttonPressed: light ? "#b30000" : Cst.pressedColor
    readonly property color buttonText: Cst.btnTextColor
    readonly property color buttonTextPressed: Cst.btnTextPressedColor
    // The frame and the text of a button without a ground of its own.
    readonly property color buttonLine: light ? "#3f3f3f" : Cst.btnColorHover
    readonly property color buttonLineHovered: light ? "#b2b2b2" : Cst.btnColorHover
    readonly property color toolHovered: light ? "#bdbdbd" : Cst.btnColorTbHover
    readonly property color toolIcon: light ? "#111111" : Cst.btnTextPressedColor
    readonly property color toolIconDisabled: light ? "#727272" : Cst.disabledCheckedBtnFg
    readonly property color toolChecked: light ? "#ffffff" : Cst.btnColorTbChecked
    readonly property color toolCheckedDisabled: light ? "#c9c9c9" : Cst.btnColorTbCheckedDisabled
    readonly property color toolCheckedIcon: light ? "#0a6e2a" : Cst.checkedBtnFg
    readonly property color transportPressed: toolChecked
    readonly property color transportHovered: toolHovered
    readonly property color transportIcon: light ? "#333333" : "#aaaaaa"
    readonly property color groove: light ? "#808080" : "#222222"
    readonly property color progressGroove: light ? "#b5b5b5" : "#222222"
    readonly property color stripe: light ? "#9a9a9a" : "#111111"
    readonly property color handle: light ? "#5a5a5a" : "#999999"
    readonly property color handleHovered: light ? "#303030" : "#cccccc"
    readonly property color handleDisabled: light ? "#808080" : "#555555"
    readonly property color rangePointer: light ? "#333333" : "#cccccc"
    readonly property color rangePointerHovered: light ? "#000000" : "#ffffff"
    readonly property color rangePointerDisabled: light ? "#808080" : "#999999"
    readonly property color setterIcon: light ? "#000000" : "#ffffff"
    readonly property color setterIconDisabled: light ? "#808080" : "#aaaaaa"
    readonly property color resetButton: light ? "#ececec" : "#444444"
    readonly property color resetButtonHovered: light ? "#c6c6c6" : "#333333"
    readonly property color resetIcon: light ? "#222222" : "#cccccc"
    readonly property color resetIconDisabled: light ? "#808080" : "#888888"
    readonly property color field: light ? "#ffffff" : "#aaaaaa"
    readonly property color fieldHovered: light ? "#f4f9f5" : "#cccccc"
    readonly property color fieldBorder: light ? "#6f6f6f" : "#999999"
    readonly property color fieldReadOnly: light ? "#d0d0d0" : "#3a3a3a"
    readonly property color fieldDisabled: light ? "#d0d0d0" : "#888888"
    readonly property color fieldText: "#000000"
    readonly property color fieldTextDisabled: light ? "#5a5a5a" : "#202020"
    readonly property color editField: light ? "#ffffff" : "#888888"
    readonly property color editFieldFocused: light ? "#ffffff" : Qt.lighter(editField, 1.15)
    readonly property color editFieldBorder: light ? "#6f6f6f" : "#666666"
    readonly property color editFieldBorderFocused: light ? "#0a6e2a" : "#cccccc"
    readonly property color fieldPlaceholder: light ? "#595959" : "#1f1f1f"
    readonly property color fieldSelection: light ? "#1d6b3a" : "#333333"
    readonly property color fieldSelectedText: "#ffffff"
    readonly property color box: light ? "#ffffff" : "#222222"
    readonly property color boxBorder: light ? "#6f6f6f" : "#666666"
    readonly property color boxText: light ? "#000000" : "#dddddd"
    readonly property color boxTextDisabled: light ? "#757575" : "#888888"
    readonly property color boxArrow: light ? "#333333" : "#aaaaaa"
    readonly property color boxArrowHovered: light ? "#000000" : "#ffffff"
    readonly property color boxArrowDisabled: light ? "#808080" : "#707070"
    readonly property color radio: light ? "#ffffff" : "#222222"
    readonly property color radioDisabled: light ? "#dcdcdc" : "#444444"
    readonly property color radioBorder: light ? "#333333" : "#dddddd"
    readonly property color radioMark: light ? "#0a6e2a" : "#ffffff"
    readonly property color scrollGround: Qt.rgba(0.5, 0.5, 0.5, 0.85)
    readonly property color scrollBorder: "#a9a9a9"
    readonly property color scrollHandle: "#000000"
    readonly property color scrollHandlePressed: Cst.pressedColor
    // The scroll bars of lists and texts.
    readonly property color barGround: light ? "#d6d6d6" : "#3a3a3a"
    readonly property color barHandle: light ? "#6a6a6a" : "#a0a0a0"
    readonly property color barHandleHovered: light ? "#3a3a3a" : "#d8d8d8"
    // The one of the flight data.
    readonly property color flightBarHandle: "#e0e0e0"
    readonly property color toolTip: light ? "#ffffff" : "#000000"
    readonly property color toolTipText: light ? "#000000" : "#ffffff"
    readonly property color accent: light ? "#005c1f" : Cst.accentColor
    readonly property color progress: light ? "#2c864c" : Cst.progressBarBg
    // The round mark of a flight that has a log.
    readonly property color mark: Cst.accentColor
    readonly property color markEdge: "#222222"
    readonly property color hottest: "#ff6a4d"
    readonly property color coldest: "#7ac8ff"
    readonly property color clear: "transparent"
}
