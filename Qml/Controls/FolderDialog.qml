import QtQuick 2.7
import QtQuick.Dialogs 1.2 as Dialogs

// Asks for a folder.
Dialogs.FileDialog {
    selectFolder: true
    modality: Qt.ApplicationModal // no key reaches the windows behind it
}
