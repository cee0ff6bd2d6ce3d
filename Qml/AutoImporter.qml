import QtQuick 2.7
import "."
import "Controls"
import QtQuick.Layouts 1.1
import QtQuick.Window 2.2
import Qt.labs.settings 1.0
import DirectoryParser 1.0
import Review 1.0
import Windows 1.0
import "importerRows.js" as Rows
import "paths.js" as Paths

// Finds flights on removable devices or in folders and hands the chosen one back: it loads nothing
// itself. Locations are kept as URLs and given to the parser as paths.
Window {
    id: autoImporter
    objectName: "autoImporter"

    property bool fastLoadingChecked: false
    property bool ok: false

    property bool usePathForLog: false
    property url logDrive
    property url logUrl
    property bool usePathForVideo: false
    property url videoDrive
    property url videoUrl
    property bool isSelectingDirectoryForVideo: false

    property url chosenLogFile
    property url chosenVideoFile
    property bool isBusy: false

    // The chosen one of `matchings`; null until `ok`.
    property var chosenMatching: null

    // The list of jobs that shows the searches, if there is one.
    property var jobs: null

    // What the search gave, a map for each row of the list.
    property var matchings: []
    // What the last search could not read, in sentences.
    property string remarks: ""
    // What has the keyboard, or gets it again once no message is in front.
    property Item keyboardPlace: null
    onActiveFocusItemChanged: {
        if (activeFocusItem !== null)
            keyboardPlace = activeFocusItem;
    }
    // A search that waits for the end of an aborted one.
    property bool searchWaits: false

    // On a screen lower than the window, its lowest part is off the screen: nothing is put there.
    readonly property int hiddenHeight: hiddenPart.height

    // In place of a drive's path: the row of a chosen folder.
    readonly property string folderMarker: "DIR"

    title: "Auto importer"
    width: 840
    height: 620
    minimumWidth: 840
    minimumHeight: 620
    modality: Qt.WindowModal
    color: Theme.dialog
    // By whatever way it closes, no search goes on behind it.
    onClosing: {
        if (isBusy)
            abortRunningProcess();
    }

    function init() {
        checkBoxFastSearch.checked = autoImporter.fastLoadingChecked;
        selectUserLastSettings();
        populateLists();
        recallUserChoices();
        recallPersistentList();
    }

    function selectUserLastSettings() {
        usePathForLog = settings.usePathForLog;
        usePathForVideo = settings.usePathForVideo;
        logUrl = Paths.toUrl(settings.logUrl);
        videoUrl = Paths.toUrl(settings.videoUrl);
        logDrive = Paths.toUrl(settings.logDrive);
        videoDrive = Paths.toUrl(settings.videoDrive);
        recallUserChoices();
    }

    function storeUserSettings() {
        settings.usePathForLog = usePathForLog;
        settings.usePathForVideo = usePathForVideo;
        settings.logUrl = logUrl.toString();
        settings.videoUrl = videoUrl.toString();
        settings.logDrive = logDrive.toString();
        settings.videoDrive = videoDrive.toString();
    }

    function populateLists() {
        refreshLists();
        cardOneDriveDropdown.currentIndex = 0;
        cardTwoDriveDropdown.currentIndex = 0;
    }

    function recallPersistentList() {
        afterDirsParsed(directoryParser.recallPersistentDirectoryList(), true);
    }

    function refreshLists() {
        var drives = directoryParser.getDrives();
        driveListModelOne.clear();
        driveListModelTwo.clear();
        for (var i = 0; i < drives.length; ++i) {
            var row = {
                path: drives[i].path,
                text: "Drive " + drives[i].path + " " + drives[i].name
            };
            driveListModelOne.append(row);
            driveListModelTwo.append(row);
        }
        if (usePathForLog)
            driveListModelOne.append({path: folderMarker, text: Paths.chosenPath(logUrl)});
        if (usePathForVideo)
            driveListModelTwo.append({path: folderMarker, text: Paths.chosenPath(videoUrl)});
        cardOneDriveDropdown.currentIndex = 0;
        cardTwoDriveDropdown.currentIndex = 0;
    }

    // The first row with this path, 0 if there is none.
    function rowOfPath(model, path) {
        for (var i = 0; i < model.count; ++i) {
            if (model.get(i).path === path)
                return i;
        }
        return 0;
    }

    function recallUserChoices() {
        cardOneDriveDropdown.currentIndex = rowOfPath(
            driveListModelOne, usePathForLog ? folderMarker : Paths.chosenPath(logDrive));
        cardTwoDriveDropdown.currentIndex = rowOfPath(
            driveListModelTwo, usePathForVideo ? folderMarker : Paths.chosenPath(videoDrive));
    }

    function refreshListsAndKeepUserSelection() {
        refreshLists();
        recallUserChoices();
    }

    // The popup of a combo box is still closing when it reports a choice, so its list is not
    // rebuilt at once; and of several quick choices only the last one counts.
    function handleComboboxOneSelection(index) {
        timerForDirOne.stop();
        timerForDirOne.selectindex = index;
        timerForDirOne.start();
    }

    function handleComboboxTwoSelection(index) {
        timerForDirTwo.stop();
        timerForDirTwo.selectindex = index;
        timerForDirTwo.start();
    }

    function useLogDrive(row) {
        if (!row || row.path === folderMarker)
            return;
        logDrive = Paths.toUrl(row.path);
        if (usePathForLog) {
            usePathForLog = false;
            refreshListsAndKeepUserSelection();
        }
    }

    function useVideoDrive(row) {
        if (!row || row.path === folderMarker)
            return;
        videoDrive = Paths.toUrl(row.path);
        if (usePathForVideo) {
            usePathForVideo = false;
            refreshListsAndKeepUserSelection();
        }
    }

    // A choice still on its way through its timer counts at once.
    function finishSelections() {
        if (timerForDirOne.running) {
            timerForDirOne.stop();
            useLogDrive(driveListModelOne.get(timerForDirOne.selectindex));
        }
        if (timerForDirTwo.running) {
            timerForDirTwo.stop();
            useVideoDrive(driveListModelTwo.get(timerForDirTwo.selectindex));
        }
    }

    function selectDirOne() {
        isSelectingDirectoryForVideo = false;
        chooseDirectory();
    }

    function selectDirTwo() {
        isSelectingDirectoryForVideo = true;
        chooseDirectory();
    }

    function chooseDirectory() {
        directoryChooserDialog.openIn(settings.lastFolder);
    }

    function handleDirectoryChosen(folder) {
        console.log("Chose " + folder);
        if (isSelectingDirectoryForVideo) {
            videoUrl = Paths.toUrl(folder);
            usePathForVideo = true;
        } else {
            logUrl = Paths.toUrl(folder);
            usePathForLog = true;
        }
        refreshListsAndKeepUserSelection();
    }

    function selectedPath(model, dropdown) {
        var row = model.get(dropdown.currentIndex);
        return row ? row.path : "";
    }

    function parseChosenDirs() {
        matchingsListModel.clear();
        finishSelections();
        var quickMode = checkBoxFastSearch.checked;
        var log = usePathForLog ? Paths.chosenPath(logUrl)
                                : selectedPath(driveListModelOne, cardOneDriveDropdown);
        var video = usePathForVideo ? Paths.chosenPath(videoUrl)
                                    : selectedPath(driveListModelTwo, cardTwoDriveDropdown);
        console.log("Will parse log from " + log + ", video from " + video);
        busyArea.text = "Reading log files...";
        isBusy = true;
        busyArea.bar.indeterminate = true;
        remarks = "";
        searchWaits = directoryParser.searching;
        if (!searchWaits)
            directoryParser.parseDirectories(video, log, !usePathForVideo, !usePathForLog,
                                             quickMode);
    }

    function onSearchingChanged() {
        if (directoryParser.searching)
            return;
        if (searchWaits)
            parseChosenDirs();
        else
            isBusy = false; // also where the list of jobs has cancelled it
    }

    // A card that came or went: the lists follow, the choice stays where its drive is still there.
    function onDrivesChanged() {
        if (!visible)
            return;
        finishSelections();
        refreshListsAndKeepUserSelection();
    }

    function onVideoProgress(currentVideo, totalVideos) {
        busyArea.bar.indeterminate = false;
        busyArea.bar.minimumValue = 0;
        busyArea.bar.maximumValue = totalVideos;
        busyArea.bar.value = currentVideo - 1;
        busyArea.text = "Reading video file " + currentVideo + "/" + totalVideos;
    }

    // Only the decoder's last step counts packets; before it, whole files are all there is.
    function onParsingProgress(currentFile, totalFiles, currentFileStep, currentFileProgress,
                               currentFileTotal) {
        var perFile = currentFileStep == 2 ? currentFileTotal : 1;
        var done = (currentFile - 1) * perFile + (currentFileStep == 2 ? currentFileProgress : 0);
        var percent = Math.round(done * 100 / (perFile * totalFiles));
        busyArea.bar.indeterminate = false;
        busyArea.bar.minimumValue = 0;
        busyArea.bar.maximumValue = perFile * totalFiles;
        busyArea.bar.value = done;
        busyArea.text = "Reading log file " + currentFile + "/" + totalFiles
                + " - " + percent + "% completed";
    }

    function afterDirsParsed(matchings, isRecalling) {
        isBusy = false;
        if (remarks !== "")
            showMessage("Flight search", remarks);
        else if (matchings.length === 0 && !isRecalling)
            showMessage("Flight search",
                        "No matches found. Please check your drive or directory selection.");
        autoImporter.matchings = matchings;
        matchingsListModel.clear();
        for (var i = 0; i < matchings.length; ++i)
            matchingsListModel.append(Rows.rowOf(matchings[i]));
        if (matchings.length > 0) {
            matchingsTable.currentIndex = 0;
            if (keyboardIsFree())
                matchingsTable.takeKeyboard();
        }
    }

    // Nothing has the keyboard that the user has chosen since the search began.
    function keyboardIsFree() {
        return keyboardPlace === null || !keyboardPlace.visible || keyboardPlace === contentItem
                || keyboardPlace === content || keyboardPlace === parseButton;
    }

    function autodetectRemovableDevices() {
        refreshListsAndKeepUserSelection();
        var result = directoryParser.autodetectDrivesWithData();
        if (result.logs.length >= 1) {
            logDrive = Paths.toUrl(result.logs[0].path);
            usePathForLog = false;
        }
        if (result.videos.length >= 1) {
            videoDrive = Paths.toUrl(result.videos[0].path);
            usePathForVideo = false;
        }
        refreshListsAndKeepUserSelection();
        var findings = describeFindings("log", "logs", result.logs.length)
                + describeFindings("video", "videos", result.videos.length);
        if (findings !== "")
            showMessage("Removable devices autodetection", findings);
        else
            console.log("Successfully found drives with video and log files");
    }

    // What the user has to know of the number of drives that were found; nothing if it is one.
    function describeFindings(kind, kinds, count) {
        if (count === 0)
            return "- No " + kind + " files found on any of the connected drives\n";
        if (count > 1)
            return "- Multiple drives contain " + kinds + ", please select the one you wish to use. "
                    + "The first eligible drive is automatically selected.\n";
        return "";
    }

    function abortRunningProcess() {
        directoryParser.abortParsing();
        matchingsListModel.clear();
        searchWaits = false;
        isBusy = false;
    }

    function loadAndClose() {
        var row = matchingsListModel.get(matchingsTable.currentIndex);
        if (row == -1) {
            showMessage("Auto importer", "Please select a flight from the list first.");
            return;
        }
        if (matchingsListModel.count === 0) {
            showMessage("Auto importer", "Please perform a flight search first, "
                        + "then select a flight from the list.");
            return;
        }
        console.log(matchingsTable.currentIndex + " " + JSON.stringify(row));
        chosenLogFile = Paths.toUrl(row.logPath);
        chosenVideoFile = Paths.toUrl(row.videoPath);
        chosenMatching = matchings[matchingsTable.currentIndex];
        ok = true;
        storeUserSettings();
        fastLoadingChecked = checkBoxFastSearch.checked;
        autoImporter.close();
    }

    function cancelAndClose() {
        abortRunningProcess();
        fastLoadingChecked = checkBoxFastSearch.checked;
        autoImporter.close();
    }

    function showMessage(title, text) {
        messageDialog.title = title;
        messageDialog.text = text;
        messageDialog.visible = true;
    }

    HiddenPart {
        id: hiddenPart
        window: autoImporter
    }

    Settings {
        id: settings
        category: "AutoImporter"
        property string logUrl: ""
        property string videoUrl: ""
        property string logDrive: ""
        property string videoDrive: ""
        property url lastFolder: ""
        property bool usePathForLog: false
        property bool usePathForVideo: false
    }

    FolderDialog {
        id: directoryChooserDialog
        title: "Please choose a directory"
        folder: settings.lastFolder
        onAccepted: {
            console.log("Directory choice accept");
            settings.lastFolder = fileUrl;
            var folder = Paths.decodedLocalPath(fileUrl);
            console.log(folder);
            autoImporter.handleDirectoryChosen(folder);
        }
    }

    MessageDialog {
        id: messageDialog
        kind: MessageDialog.Warning
        Component.onCompleted: visible = false
    }

    DirectoryParser {
        id: directoryParser
        objectName: "directoryParser"
        onMatchingProgress: autoImporter.onParsingProgress(currentFile, totalFiles, currentFileStep,
                                                           currentFileProgress, currentFileTotal)
        onMatchingComplete: autoImporter.afterDirsParsed(matchings, false)
        onVideoProgress: autoImporter.onVideoProgress(currentVideo, totalVideos)
        onSearchRemarks: autoImporter.remarks = remarks.join("\n")
        onSearchingChanged: autoImporter.onSearchingChanged()
        onDrivesChanged: autoImporter.onDrivesChanged()
    }

    SearchJobs {
        jobs: autoImporter.jobs
        parser: directoryParser
    }

    ListModel { id: driveListModelOne }
    ListModel { id: driveListModelTwo }
    ListModel { id: matchingsListModel }

    Timer {
        id: timerForDirOne
        property int selectindex
        interval: 500
        onTriggered: autoImporter.useLogDrive(driveListModelOne.get(selectindex))
    }

    Timer {
        id: timerForDirTwo
        property int selectindex
        interval: 500
        onTriggered: autoImporter.useVideoDrive(driveListModelTwo.get(selectindex))
    }

    FocusScope {
        id: content
        anchors.fill: parent
        focus: true
        Keys.onEscapePressed: autoImporter.cancelAndClose()

        Rectangle {
            id: chooserContainer
            anchors { left: parent.left; right: parent.right; top: parent.top }
            height: 156
            color: Theme.dialogBand

            Text {
                id: chooserTitle
                anchors { left: parent.left; leftMargin: 20; verticalCenter: autodetectButton.verticalCenter }
                text: "Flight files search locations"
                color: Theme.text
                font.bold: true
            }

            ImporterButton {
                id: autodetectButton
                objectName: "autodetectButton"
                anchors { right: parent.right; rightMargin: 20; top: parent.top; topMargin: 16 }
                width: 240
                height: 32
                text: "Autodetect removable devices"
                onClicked: autoImporter.autodetectRemovableDevices()
            }

            GridLayout {
                anchors {
                    left: parent.left; leftMargin: 20
                    right: parent.right; rightMargin: 20
                    top: autodetectButton.bottom; topMargin: 16
                }
                columns: 3
                rowSpacing: 10
                columnSpacing: 10

                Text {
                    text: "Log files location"
                    color: Theme.text
                }

                CorvComboBox {
                    id: cardOneDriveDropdown
                    objectName: "cardOneDriveDropdown"
                    Layout.fillWidth: true
                    Layout.preferredHeight: 30
                    model: driveListModelOne
                    textRole: "text"
                    Accessible.name: "Log files location"
                    onActivated: autoImporter.handleComboboxOneSelection(index)
                }

                ImporterButton {
                    objectName: "browseLogsButton"
                    Layout.preferredWidth: 75
                    Layout.preferredHeight: 30
                    text: "Browse..."
                    Accessible.description: "Log files location"
                    onClicked: autoImporter.selectDirOne()
                }

                Text {
                    text: "Video files location"
                    color: Theme.text
                }

                CorvComboBox {
                    id: cardTwoDriveDropdown
                    objectName: "cardTwoDriveDropdown"
                    Layout.fillWidth: true
                    Layout.preferredHeight: 30
                    model: driveListModelTwo
                    textRole: "text"
                    Accessible.name: "Video files location"
                    onActivated: autoImporter.handleComboboxTwoSelection(index)
                }

                ImporterButton {
                    objectName: "browseVideosButton"
                    Layout.preferredWidth: 75
                    Layout.preferredHeight: 30
                    text: "Browse..."
                    Accessible.description: "Video files location"
                    onClicked: autoImporter.selectDirTwo()
                }
            }
        }

        CorvCheckBox {
            id: checkBoxFastSearch
            objectName: "checkBoxFastSearch"
            anchors {
                right: parseButton.left; rightMargin: 16
                verticalCenter: parseButton.verticalCenter
            }
            text: "Fast search (ignores metadata)"
        }

        ImporterButton {
            id: parseButton
            objectName: "parseButton"
            anchors {
                right: parent.right; rightMargin: 20
                top: chooserContainer.bottom; topMargin: 10
            }
            width: 120
            enabled: !autoImporter.isBusy
            text: "Search flights"
            onClicked: autoImporter.parseChosenDirs()
        }

        ImporterTable {
            id: matchingsTable
            anchors {
                left: parent.left; leftMargin: 20
                right: parent.right; rightMargin: 20
                top: parseButton.bottom; topMargin: 10
                bottom: okButton.top; bottomMargin: 14
            }
            visible: !autoImporter.isBusy
            rows: matchingsListModel
            onAccepted: autoImporter.loadAndClose()
        }

        ImporterProgress {
            id: busyArea
            anchors {
                horizontalCenter: matchingsTable.horizontalCenter
                verticalCenter: matchingsTable.verticalCenter
                verticalCenterOffset: matchingsTable.headerHeight / 2
            }
            visible: autoImporter.isBusy
            onAborted: autoImporter.abortRunningProcess()
        }

        ImporterButton {
            id: cancelButton
            objectName: "cancelButton"
            anchors { right: okButton.left; rightMargin: 10; verticalCenter: okButton.verticalCenter }
            width: 120
            text: "Cancel"
            onClicked: autoImporter.cancelAndClose()
        }

        ImporterButton {
            id: okButton
            objectName: "okButton"
            anchors {
                right: parent.right; rightMargin: 20
                bottom: parent.bottom; bottomMargin: 16 + autoImporter.hiddenHeight
            }
            width: 130
            text: "Load selected"
            onClicked: autoImporter.loadAndClose()
        }
    }
}
