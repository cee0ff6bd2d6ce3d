import QtQuick 2.15
import QtQml 2.14
import VideoPlayer 1.0
import "Controls"

// The two tabs beside the video. A tab's contents are made when it is first shown.
TabView {
    id: sidebar

    property VideoPlayer player: null
    property bool imperialUnits: false

    property bool extremesShown: false

    signal extremesToggled(bool shown)
    signal unitsToggled(bool imperial)
    signal editFlightPropertiesClicked()
    // The adjustments have just been made.
    signal adjustmentsLoaded()
    // A click beside the controls, or the end of an edit: the keyboard goes back to the video.
    signal editingFinished()

    // A click on a tab would give the keyboard to the first control in it.
    onCurrentIndexChanged: {
        if (!activeFocus)
            Qt.callLater(editingFinished);
    }

    Tab {
        id: tabInformation
        objectName: "tabInformation"
        title: "Flight data"

        InformationTabContents {
            id: informationTabContents
            objectName: "informationTabContents"
            editEnabled: sidebar.player !== null && sidebar.player.hasVideoOpened
            imperialUnits: sidebar.imperialUnits

            Binding on videoPosition {
                when: sidebar.player !== null
                // Each frame of a paused video; ten times a second of a playing one.
                value: sidebar.player === null ? undefined
                       : sidebar.player.playing ? sidebar.player.timePosition
                                                : sidebar.player.exactTimePosition
                restoreMode: Binding.RestoreNone
            }

            onUnitsToggled: sidebar.unitsToggled(imperial)
            onEditFlightPropertiesClicked: sidebar.editFlightPropertiesClicked()
        }
    }

    Tab {
        id: tabAdjustments
        objectName: "tabAdjustments"
        title: "Adjustments"

        AdjustmentsTabContents {
            id: adjustmentsTabContents
            objectName: "adjustmentsTabContents"
            player: sidebar.player
            extremesShown: sidebar.extremesShown
            onExtremesToggled: sidebar.extremesToggled(shown)
            onLoaded: sidebar.adjustmentsLoaded()
            onEditingFinished: sidebar.editingFinished()
        }
    }
}
