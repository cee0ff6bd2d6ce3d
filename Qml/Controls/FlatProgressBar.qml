import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// A progress bar of two colours, without frame.
Controls.ProgressBar {
    id: flatProgressBar

    property color groove: Theme.progressGroove
    property color bar: Theme.accent

    style: ProgressBarStyle {
        background: Rectangle {
            implicitWidth: 200
            implicitHeight: 12
            color: flatProgressBar.groove
        }
        progress: Rectangle { color: flatProgressBar.bar }
    }
}
