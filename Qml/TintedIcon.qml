import QtQuick 2.7
import QtGraphicalEffects 1.0

// A picture of one colour, shown in another. As large as the picture.
Item {
    id: tintedIcon

    property alias source: picture.source
    property alias fillMode: picture.fillMode
    property color color

    implicitWidth: picture.implicitWidth
    implicitHeight: picture.implicitHeight

    Image {
        id: picture
        width: parent.width
        height: parent.height
        visible: false
    }

    ColorOverlay {
        anchors.fill: picture
        source: picture
        color: tintedIcon.color
    }
}
