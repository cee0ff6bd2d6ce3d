import QtQuick 2.7

CorvToggleBase {
    id: corvToolbarToggleButton

    property alias source: icon.source

    width: 25
    height: 25

    TintedIcon {
        id: icon
        anchors.centerIn: parent
        color: corvToolbarToggleButton.foreground
    }
}
