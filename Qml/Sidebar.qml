import QtQuick 2.7
import QtQuick.Controls 1.4
import QtQml 2.14
import VideoPlayer 1.0

// The two tabs beside the video. A tab's contents are made when it is first shown.
TabView {
    id: sidebar

    property VideoPlayer player: null
    property bool imperialUnits: false
    property int tabWidth: width / 2

    signal editFlightPropertiesClicked()
    // The adjustments have just been made.
    signal adjustmentsLoaded()
    // A click beside the controls, or the end of an edit: the keyboard goes back to the video.
    signal editingFinished()

    style: SidebarTabStyle { tabWidth: sidebar.tabWidth }

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
                value: sidebar.player !== null ? sidebar.player.timePosition : undefined
                restoreMode: Binding.RestoreNone
            }

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
            onLoaded: sidebar.adjustmentsLoaded()
            onEditingFinished: sidebar.editingFinished()
        }
    }
}
