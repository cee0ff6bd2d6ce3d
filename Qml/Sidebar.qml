import QtQuick 2.7
import QtQuick.Controls 1.4

// The two tabs beside the video. A tab's contents are made when it is first shown.
TabView {
    style: SidebarTabStyle { tabWidth: mainWindow.sidebarWidth / 2 }

    Tab {
        id: tabInformation
        objectName: "tabInformation"
        title: "Flight data"

        InformationTabContents {
            id: informationTabContents
            objectName: "informationTabContents"
            editEnabled: videoPlayer.hasVideoOpened
            imperialUnits: generalSettings.imperialUnits
            videoPosition: videoPlayer.timePosition
        }
    }

    Tab {
        id: tabAdjustments
        objectName: "tabAdjustments"
        title: "Adjustments"

        AdjustmentsTabContents {
            id: adjustmentsTabContents
            objectName: "adjustmentsTabContents"
            irTransparencyButtonEnabled: videoPlayer.showIR
        }
    }
}
