import QtQuick 2.7

// The tool tip of a control. Made at the first need: the module of the tool tips is not loaded
// before.
Loader {
    id: toolTipLoader

    // The control that the tool tip is about.
    property Item target: null
    property string text: ""
    property bool hovered: false
    readonly property bool wanted: text !== "" && hovered

    function show() {
        if (wanted && !item)
            setSource("CorvToolTip.qml", {parent: target, objectName: "toolTip"});
        if (item) {
            item.text = text;
            item.visible = wanted;
        }
    }

    onWantedChanged: show()
    onTextChanged: show()
}
