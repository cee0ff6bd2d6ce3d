import QtQuick 2.7
import QtQuick.Window 2.2
// After QtQuick: the native Shortcut with a `key` is meant, not the built-in one.
import Shortcuts 1.0
import "."
import "Controls"

Window {
    id: restorePoiChoice
    objectName: "restorePoiChoice"

    property bool ok: false
    property bool eraseAll: true
    // How many points of interest the two choices add: those that are missing, and all of the log.
    property int missingCount: 0
    property int allCount: 0

    function outcome() {
        if (actionEraseAll.checked)
            return "Deletes nothing. Adds " + missingCount + " of the log that are missing.";
        var doubled = allCount - missingCount;
        return "Adds " + allCount + " of the log" + (doubled > 0
               ? ", " + doubled + " of them a second time, one millisecond later." : ".");
    }

    // Called by every opener; there is nothing to take over.
    function init() {
    }

    title: "Restore POIs from flight data"
    width: 400
    height: 120
    minimumWidth: 400
    minimumHeight: 120
    color: Theme.dialog

    Shortcut {
        key: "Return"
        onActivated: {
            if (restorePoiChoice.visible)
                okButton.pressButton();
        }
    }

    Shortcut {
        key: "Escape"
        onActivated: {
            if (restorePoiChoice.visible)
                cancelButton.pressButton();
        }
    }

    ExclusiveGroup { id: actionChoiceGroup }

    Column {
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 14 }
        spacing: 10

        CorvRadioButton {
            id: actionEraseAll
            objectName: "actionEraseAll"
            text: "Clear all points of interests, reload from log"
            checked: true
            exclusiveGroup: actionChoiceGroup
        }

        CorvRadioButton {
            id: actionFillBlanks
            objectName: "actionFillBlanks"
            text: "Reload missing points of interest only"
            exclusiveGroup: actionChoiceGroup
        }
    }

    Text {
        objectName: "restoreOutcome"
        anchors { left: parent.left; right: cancelButton.left; bottom: parent.bottom; margins: 10 }
        wrapMode: Text.Wrap
        font.pixelSize: 11
        color: Theme.text
        text: restorePoiChoice.outcome()
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    CorvRichTextButton {
        id: cancelButton
        objectName: "cancelButton"
        anchors { right: okButton.left; rightMargin: 10; bottom: okButton.bottom }
        caption: "Cancel"
        onClicked: {
            restorePoiChoice.ok = false;
            restorePoiChoice.close();
        }
    }

    CorvRichTextButton {
        id: okButton
        objectName: "okButton"
        anchors { right: parent.right; rightMargin: 10; bottom: parent.bottom; bottomMargin: 10 }
        caption: "Execute"
        onClicked: {
            restorePoiChoice.eraseAll = actionEraseAll.checked;
            restorePoiChoice.ok = true;
            restorePoiChoice.close();
        }
    }
}
