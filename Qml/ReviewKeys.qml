import QtQuick 2.15
import Timeline 1.0
import VideoPlayer 1.0

// The keys of a review beside those of the tools: jumps, speed, the points of interest one after the
// other, zoom and scroll of the timeline.
Item {
    id: reviewKeys

    property VideoPlayer player: null
    property TimelineNavigator navigator: null
    // The timeline's scroll bar.
    property MyScrollBar scrollBar: null
    // The place of the picture.
    property VideoArea picture: null
    // The control of the speed.
    property Item speedBox: null
    readonly property bool videoOpen: player !== null && player.hasVideoOpened

    // Faster with each press while it plays.
    function playFaster() {
        if (player.playing)
            speedBox.value = speedBox.value + 1;
        else
            player.playOn();
    }

    function pause() {
        player.pause();
        speedBox.value = 1;
    }

    Shortcut {
        sequence: "J"
        enabled: reviewKeys.videoOpen
        onActivated: {
            reviewKeys.player.pause();
            reviewKeys.navigator.jump(-1000);
        }
    }
    OnceShortcut {
        sequence: "K"
        enabled: reviewKeys.videoOpen
        onPressed: reviewKeys.pause()
    }
    OnceShortcut {
        sequence: "L"
        enabled: reviewKeys.videoOpen
        onPressed: reviewKeys.playFaster()
    }
    Shortcut {
        sequence: "Ctrl+Left"
        enabled: reviewKeys.videoOpen
        onActivated: reviewKeys.navigator.jump(-1000)
    }
    Shortcut {
        sequence: "Ctrl+Right"
        enabled: reviewKeys.videoOpen
        onActivated: reviewKeys.navigator.jump(1000)
    }
    Shortcut {
        sequence: "Ctrl+Shift+Left"
        enabled: reviewKeys.videoOpen
        onActivated: reviewKeys.navigator.jump(-10000)
    }
    Shortcut {
        sequence: "Ctrl+Shift+Right"
        enabled: reviewKeys.videoOpen
        onActivated: reviewKeys.navigator.jump(10000)
    }
    Shortcut {
        sequence: "PgUp"
        enabled: reviewKeys.videoOpen
        onActivated: reviewKeys.navigator.selectPreviousPoi()
    }
    Shortcut {
        sequence: "PgDown"
        enabled: reviewKeys.videoOpen
        onActivated: reviewKeys.navigator.selectNextPoi()
    }
    Shortcut {
        sequences: ["+", "="]
        enabled: reviewKeys.videoOpen
        onActivated: reviewKeys.navigator.zoomIn()
    }
    Shortcut {
        sequence: "-"
        enabled: reviewKeys.videoOpen
        onActivated: reviewKeys.navigator.zoomOut()
    }
    Shortcut {
        sequence: "0"
        enabled: reviewKeys.videoOpen
        onActivated: reviewKeys.navigator.zoomToFit()
    }
    Shortcut {
        sequence: "Z"
        enabled: reviewKeys.videoOpen
        onActivated: reviewKeys.navigator.zoomToSelection()
    }
    OnceShortcut {
        sequence: "1"
        enabled: reviewKeys.videoOpen
        onPressed: reviewKeys.picture.togglePixelSize()
    }
    Shortcut {
        sequence: "Alt+Left"
        enabled: reviewKeys.videoOpen
        onActivated: reviewKeys.scrollBar.scrollLeft()
    }
    Shortcut {
        sequence: "Alt+Right"
        enabled: reviewKeys.videoOpen
        onActivated: reviewKeys.scrollBar.scrollRight()
    }
}
