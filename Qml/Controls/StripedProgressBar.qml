import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// A progress bar that shows a moving stripe while there is no figure to show.
Controls.ProgressBar {
    id: bar

    readonly property int stripeWidth: 40

    // Nothing to divide by is nothing done.
    readonly property real ratio: {
        var share = (value - minimumValue) / (maximumValue - minimumValue);
        return isFinite(share) ? Math.max(0, Math.min(1, share)) : 0;
    }

    style: ProgressBarStyle {
        background: Rectangle {
            implicitHeight: 16
            color: Theme.progressGroove
            clip: true

            Rectangle {
                visible: !bar.indeterminate
                width: bar.ratio * parent.width
                height: parent.height
                color: Theme.accent
            }

            Row {
                id: stripes
                visible: bar.indeterminate

                Repeater {
                    model: Math.ceil(bar.width / bar.stripeWidth) + 2

                    Rectangle {
                        width: bar.stripeWidth
                        height: bar.height
                        color: index % 2 ? Theme.stripe : Theme.progressGroove
                    }
                }

                NumberAnimation on x {
                    from: 0
                    to: -2 * bar.stripeWidth
                    duration: 1000
                    loops: Animation.Infinite
                    running: stripes.visible && bar.visible
                }
            }
        }
        progress: Item {}
    }
}
