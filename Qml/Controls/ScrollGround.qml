import QtQuick 2.7
import ".."

// What the handle of a scroll bar moves on.
Rectangle {
    implicitWidth: 14
    implicitHeight: 14
    color: Theme.barGround
}
