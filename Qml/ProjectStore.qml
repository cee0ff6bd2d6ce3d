import QtQuick 2.7
import corv.LogParsing 1.0
import "projects.js" as Projects

// Takes the work at hand into a project file and puts it back from one.
Item {
    function save(path, copySourceFiles) {
        var project = {poi: timelineContent.getPOIs(),
            properties: Projects.properties(videoPlayer, LogParser)};
        var copied = false;
        if (copySourceFiles
                && projectFileLoader.canSourceFilesBeCopied(LogParser.source, videoPlayer.source, path))
            copied = projectFileLoader.copySourceFilesAndSaveProject(LogParser.source, videoPlayer.source,
                                                                     path, project);
        else
            projectFileLoader.saveProject(LogParser.source, videoPlayer.source, path, project);
        if (copySourceFiles && !copied)
            mainWindow.displayWarningDialog("Error copying files to a new destination",
                                            Projects.notCopiedText(videoPlayer.source, LogParser.source));
    }

    // Runs once the project's video is open. The naming is written again after the parse has
    // started, which keeps it instead of the one in the log.
    function restore(path, projectData) {
        var properties = projectData.properties || {};
        mainWindow.resetCorrectionParameters();
        mainWindow.updateCorrectionParameters();
        if (projectData.poi)
            timelineContent.setPOIsFromList(projectData.poi);
        currentProject.filePath = path;
        currentProject.fileActive = true;
        var naming = Projects.naming(properties.designation);
        LogParser.flightNaming = naming;
        Projects.restoreDisplay(videoPlayer, properties);
        videoPlayer.updateControlsStates();
        videoPlayer.updatePropertiesStates();
        var panel = mainWindow.adjustmentsPanel();
        if (panel !== undefined)
            panel.showMappingInUse();
        if (!projectData.logFileExists) {
            mainWindow.displayErrorDialog("Error", Projects.missingFileText("log", projectData.logFile));
            return;
        }
        LogParser.isParsing = true;
        LogParser.parseLog(projectData.logFile.toString(), true);
        Projects.restoreLogOffset(LogParser, properties.correction);
        LogParser.flightNaming = naming;
        if (panel !== undefined)
            panel.logTimeShiftingCorrection = LogParser.manualLogTimeOffset;
    }
}
