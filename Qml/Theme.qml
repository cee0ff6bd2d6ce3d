pragma Singleton
import QtQuick 2.7
import "constants.js" as Cst

// Every colour of the windows, by its role. Those of the buttons are in constants.js.
QtObject {
    // Surfaces.
    readonly property color window: "#222222"
    readonly property color videoGround: "#1a1a1a"
    readonly property color timelineGround: "#2b2b2b"
    readonly property color curvesGround: "#1c1c1c"
    readonly property color strip: "#333333"
    readonly property color panel: "#444444"
    readonly property color flightPanel: "#777777"
    readonly property color dialog: Cst.bgndColor
    readonly property color dialogBand: Cst.headerColor
    readonly property color dialogHead: "#222222"
    readonly property color editDialog: "#494949"
    // Behind a stated text that would be too faint on its surface.
    readonly property color plate: "#1f1f1f"
    readonly property color flightPlate: "#444444"
    readonly property color updateBand: "#848484"
    readonly property color tab: "#2a2a2a"
    readonly property color tabHovered: "#3a3a3a"
    readonly property color tabSelected: panel
    readonly property color menu: "#3a3a3a"
    readonly property color menuBorder: "#777777"
    readonly property color menuTitleOpen: "#555555"
    readonly property color menuSelected: "#2c7440"
    readonly property color menuSeparator: "#666666"

    readonly property color listSelected: menuSelected
    readonly property color listHovered: "#505050"

    // Text and icons on those surfaces.
    readonly property color text: "#ffffff"
    readonly property color textSoft: "#dddddd"
    readonly property color textBand: "#cccccc"
    readonly property color textDim: "#aaaaaa"
    readonly property color textLabel: "#a8a8a8"
    readonly property color textDisabled: "#888888"
    readonly property color textMissing: "#777777"
    readonly property color textMissingMark: "#999999"
    readonly property color textOnLight: "#000000"
    readonly property color menuText: "#eeeeee"
    readonly property color menuShortcut: "#cccccc"
    readonly property color welcomeTitle: "#949494"
    readonly property color welcomeText: "#a4a4a4"
    readonly property color namingMissing: "#cccccc"

    // What the pairing of a video with its log rests on.
    readonly property color evidenceCheck: "#0a2e12"
    readonly property color evidenceLength: "#004d66"
    readonly property color evidenceDoubt: "#ff9d00"
    readonly property color evidenceTime: "#ffe08a"
    readonly property color evidenceNone: "#444444"

    // Controls.
    readonly property color transportPressed: Cst.btnColorTbChecked
    readonly property color transportHovered: Cst.btnColorTbHover
    readonly property color transportIcon: "#aaaaaa"
    readonly property color groove: "#222222"
    readonly property color stripe: "#111111"
    readonly property color handle: "#999999"
    readonly property color handleHovered: "#cccccc"
    readonly property color handleDisabled: "#555555"
    readonly property color rangePointer: "#cccccc"
    readonly property color rangePointerHovered: "#ffffff"
    readonly property color rangePointerDisabled: "#777777"
    readonly property color setterIcon: "#ffffff"
    readonly property color setterIconDisabled: "#aaaaaa"
    readonly property color resetButton: "#444444"
    readonly property color resetButtonHovered: "#333333"
    readonly property color resetIcon: "#cccccc"
    readonly property color resetIconDisabled: "#888888"
    readonly property color field: "#aaaaaa"
    readonly property color fieldHovered: "#cccccc"
    readonly property color fieldReadOnly: "#3a3a3a"
    readonly property color fieldDisabled: "#888888"
    readonly property color fieldText: "#000000"
    readonly property color fieldTextDisabled: "#444444"
    readonly property color editField: "#888888"
    readonly property color editFieldFocused: Qt.lighter(editField, 1.15)
    readonly property color editFieldBorder: "#666666"
    readonly property color editFieldBorderFocused: "#cccccc"
    readonly property color fieldSelection: "#333333"
    readonly property color fieldSelectedText: "#ffffff"
    readonly property color box: "#222222"
    readonly property color boxBorder: "#666666"
    readonly property color boxText: "#dddddd"
    readonly property color boxTextDisabled: "#888888"
    readonly property color boxArrow: "#aaaaaa"
    readonly property color boxArrowHovered: "#ffffff"
    readonly property color boxArrowDisabled: "#666666"
    readonly property color radio: "#222222"
    readonly property color radioDisabled: "#444444"
    readonly property color radioBorder: "#dddddd"
    readonly property color radioMark: "#ffffff"
    readonly property color scrollGround: Qt.rgba(0.5, 0.5, 0.5, 0.85)
    readonly property color scrollBorder: "#a9a9a9"
    readonly property color scrollHandle: "#000000"
    readonly property color scrollHandlePressed: Cst.pressedColor
    readonly property color toolTip: "#000000"
    readonly property color toolTipText: "#ffffff"
    readonly property color accent: Cst.accentColor
    readonly property color progress: Cst.progressBarBg
    readonly property color hottest: "#ff6a4d"
    readonly property color coldest: "#7ac8ff"
    // From the coldest to the hottest, by the number of the player's palette.
    readonly property var thermalPalettes: [
        ["#000080", "#0000ff", "#0080ff", "#00ffff", "#80ff80", "#ffff00", "#ff8000", "#ff0000",
         "#800000"],
        ["#00224e", "#123570", "#3b496c", "#575d6d", "#707173", "#8a8678", "#a59c74", "#c3b369",
         "#fee838"],
        ["#000000", "#ffffff"]
    ]
    readonly property color clear: "transparent"
}
