import QtQuick 2.7
import QtQuick.Controls 1.4
import QtQuick.Window 2.2
// After QtQuick: the native Shortcut with a `key` is meant, not the built-in one.
import Shortcuts 1.0
import "."

Window {
    id: restorePoiChoice
    objectName: "restorePoiChoice"

    property bool ok: false
    property bool eraseAll: true

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
