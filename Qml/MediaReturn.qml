import QtQml 2.2
import QtQuick 2.7
import QtQuick.Window 2.2
import DirectoryParser 1.0

// Says when files that are missing can be there again: a card has come, or the pilot comes back
// from another window.
Item {
    id: mediaReturn

    // Whether files are missing. Only then the drives of the machine are watched.
    property bool awaited: false
    readonly property bool windowActive: Window.active

    signal possible()

    onWindowActiveChanged: {
        if (windowActive && awaited)
            possible();
    }

    Instantiator {
        active: mediaReturn.awaited

        DirectoryParser {
            objectName: "awaitedDrives"
            onDrivesChanged: mediaReturn.possible()
        }
    }
}
