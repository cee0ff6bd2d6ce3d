import QtQuick 2.7
import Qt.labs.settings 1.0
import "Controls"
import "paths.js" as Paths

// Asks for the folder that missing files are in. It begins where the last one was chosen.
Item {
    id: locateDialog

    signal chosen(string path)

    function open() {
        folderDialog.openIn(settings.folder);
    }

    Settings {
        id: settings
        category: "locateMedia"
        property url folder: ""
    }

    FolderDialog {
        id: folderDialog
        title: "Please choose the folder with the missing files"
        onAccepted: {
            settings.folder = fileUrl;
            locateDialog.chosen(Paths.decodedPath(fileUrl));
        }
    }
}
