import QtQuick 2.15
import QtQuick.Window 2.2
import Pointer 1.0

// The picture alone on the full screen. What is around it is hidden by the window that shows this;
// the controls come with the pointer and go once it rests, but for a pointer that is over them. They
// come with Tab, too, and stay until the keys are back with the video.
Item {
    id: pictureAlone

    property Window window: null
    // The topmost of the controls: from there on down the pointer is over them.
    property Item controls: null
    // What has the keys while no control has them.
    property Item keyboardPlace: null
    property bool videoOpen: false
    // Escape has another use while a point of interest is being moved.
    property bool escapeIsTaken: false
    readonly property bool on: wanted && videoOpen
    readonly property bool controlsShown: !on || !pointer.resting || overControls || tabbed
    property alias restMs: pointer.restMs

    property bool wanted: false
    property bool tabbed: false
    property int visibilityBefore: Window.Windowed
    // Without a menu bar, places in the window are places in its contents.
    readonly property bool overControls: controls !== null && pointer.position.y >= controls.y

    function toggle() {
        if (on)
            leave();
        else if (videoOpen)
            enter();
    }

    function enter() {
        visibilityBefore = window.visibility;
        tabbed = false;
        wanted = true;
        window.visibility = Window.FullScreen;
    }

    function leave() {
        if (!wanted)
            return;
        wanted = false;
        window.visibility = visibilityBefore;
    }

    onVideoOpenChanged: {
        if (!videoOpen)
            leave();
    }

    // To the video, as after Escape, and not only off the control that goes.
    onControlsShownChanged: {
        if (!controlsShown)
            keyboardPlace.forceActiveFocus();
    }

    Connections {
        target: pictureAlone.keyboardPlace

        function onActiveFocusChanged() {
            if (pictureAlone.keyboardPlace.activeFocus)
                pictureAlone.tabbed = false;
        }
    }

    PointerRest {
        id: pointer
        window: pictureAlone.window
        watching: pictureAlone.on
        onTabPressed: pictureAlone.tabbed = true
    }

    // The desktop may end the full screen, too.
    Connections {
        target: pictureAlone.wanted ? pictureAlone.window : null

        function onVisibilityChanged() {
            var visibility = pictureAlone.window.visibility;
            if (visibility === Window.Windowed || visibility === Window.Maximized)
                pictureAlone.wanted = false;
        }
    }

    OnceShortcut {
        sequence: "F"
        enabled: pictureAlone.on
        onPressed: pictureAlone.leave()
    }
    OnceShortcut {
        sequence: "Esc"
        enabled: pictureAlone.on && !pictureAlone.escapeIsTaken
        onPressed: pictureAlone.leave()
    }
}
