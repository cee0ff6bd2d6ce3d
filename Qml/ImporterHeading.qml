import QtQuick 2.7

// The title of one column of the importer's list.
Text {
    height: parent.height
    color: "#ccc"
    font { capitalization: Font.AllUppercase; pointSize: 7 }
    elide: Text.ElideRight
    verticalAlignment: Text.AlignVCenter
}
