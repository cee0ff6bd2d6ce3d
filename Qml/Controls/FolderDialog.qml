import QtQuick 2.7
import QtQuick.Dialogs 1.2 as Dialogs

// Asks for a folder.
Dialogs.FileDialog {
    selectFolder: true
    modality: Qt.ApplicationModal // no key reaches the windows behind it

    // Begins in a folder; where it is empty, in that of the last dialog.
    function openIn(startFolder) {
        open();
        // A dialog forgets the folder that it is given before it is first shown.
        if (startFolder.toString() !== "")
            folder = startFolder;
    }
}
