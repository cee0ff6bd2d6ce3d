import QtQuick 2.7
import "."

// The title of one column of the importer's list.
Text {
    height: parent.height
    color: Theme.textBand
    font { capitalization: Font.AllUppercase; pointSize: 7 }
    elide: Text.ElideRight
    verticalAlignment: Text.AlignVCenter
}
