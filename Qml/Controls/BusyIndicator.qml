import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// Turns while something is being waited for.
Controls.BusyIndicator {
    // A screen reader finds it only then.
    visible: running
    style: BusyIndicatorStyle {
        indicator: CorvSpinner {
            implicitWidth: 48
            implicitHeight: 48
            running: control.running
            visible: control.running
        }
    }
}
