import QtQuick 2.7

CorvToggleBase {
    id: corvToolbarToggleTextButton

    property alias source: face.source
    property alias text: face.text

    name: text
    implicitWidth: 100
    implicitHeight: 25

    IconAndLabel {
        id: face
        color: corvToolbarToggleTextButton.foreground
    }
}
