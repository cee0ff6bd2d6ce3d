import QtQuick 2.7
import QtQuick.Window 2.13
import "."
import "placement.js" as Placement

// Covers the window while work goes on beside which nothing else may be done. Closing it asks for the
// work's end.
Window {
    id: workWindow

    // True from the beginning of the work to its end.
    property bool isAtWork: false
    signal endWanted()

    // Work may end before the desktop has shown its window and given it the keyboard. Hidden then, the
    // window would keep the keyboard, so that no key works, or would not leave the screen at all: it
    // stays until it has had the keyboard for a moment.
    property bool isSettled: false

    onIsAtWorkChanged: showOrHide()
    onIsSettledChanged: showOrHide()
    onVisibleChanged: {
        if (!visible)
            isSettled = false;
    }

    function showOrHide() {
        if (isAtWork) {
            if (!visible)
                Placement.inMiddle(workWindow, transientParent);
            visible = true;
        } else if (isSettled)
            visible = false;
    }

    visible: false
    color: Theme.dialog
    flags: Qt.Dialog | Qt.CustomizeWindowHint | Qt.WindowTitleHint
    modality: Qt.ApplicationModal
    onClosing: {
        close.accepted = false;
        endWanted();
    }

    Item {
        id: keyboardPlace
        focus: true
    }

    Timer {
        running: keyboardPlace.activeFocus && !workWindow.isSettled
        interval: 100
        onTriggered: workWindow.isSettled = true
    }

    // The keyboard may be with another program.
    Timer {
        running: workWindow.visible && !workWindow.isAtWork
        interval: 2000
        onTriggered: workWindow.visible = false
    }
}
