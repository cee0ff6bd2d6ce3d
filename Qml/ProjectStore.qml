import QtQuick 2.7
import corv.LogParsing 1.0
import ProjectFileLoader 1.0
import Timeline 1.0
import VideoPlayer 1.0
import "projects.js" as Projects

// Takes the work at hand into a project file and puts it back from one.
Item {
    property VideoPlayer player: null
    property TimelineContent timeline: null
    property ProjectFileLoader loader: null
    // Shows messages and resets the corrections: the main window.
    property var verbs: null

    function save(path, copySourceFiles) {
        var project = {poi: timeline.getPOIs(),
            properties: Projects.properties(player, LogParser)};
        var copied = false;
        if (copySourceFiles
                && loader.canSourceFilesBeCopied(LogParser.source, player.source, path))
            copied = loader.copySourceFilesAndSaveProject(LogParser.source, player.source,
                                                                     path, project);
        else
            loader.saveProject(LogParser.source, player.source, path, project);
        if (copySourceFiles && !copied)
            verbs.displayWarningDialog("Error copying files to a new destination",
                                            Projects.notCopiedText(player.source, LogParser.source));
    }

    // Runs once the project's video is open. The naming is written again after the parse has
    // started, which keeps it instead of the one in the log.
    function restore(path, projectData) {
        var properties = projectData.properties || {};
        verbs.resetCorrectionParameters();
        verbs.updateCorrectionParameters();
        if (projectData.poi)
            timeline.setPOIsFromList(projectData.poi);
        verbs.bindToProject(path);
        var naming = Projects.naming(properties.designation);
        LogParser.flightNaming = naming;
        Projects.restoreDisplay(player, properties);
        player.updateControlsStates();
        player.updatePropertiesStates();
        if (!projectData.logFileExists) {
            verbs.displayErrorDialog("Error", Projects.missingFileText("log", projectData.logFile));
            return;
        }
        LogParser.isParsing = true;
        LogParser.parseLog(projectData.logFile.toString(), true);
        Projects.restoreLogOffset(LogParser, properties.correction);
        LogParser.flightNaming = naming;
    }
}
