.pragma library

// What of a review is kept in a project file, and how it comes back.

function missingFileText(kind, path) {
    return "Project could be opened, but referenced " + kind + " file not found.\nFile could have been deleted, or project could have been copied/moved to a different place without the associated log & video files. Be sure to keep video & log files in the same relative location to the project file.\n\nExpected "
            + kind + " file location:\n" + path;
}

function notCopiedText(videoPath, logPath) {
    return "Could not copy video or log next to the project file. Moving the project file to a different location after creation may break its association with log and video files. Make sure to keep those files in the same relative location from the project file. \n\nVideo was loaded from:\n\n"
            + videoPath + "\n\nLog was loaded from\n\n" + logPath;
}

function properties(videoPlayer, logParser) {
    var saved = {
        display: {contrast: videoPlayer.contrast, brightness: videoPlayer.brightness},
        thermal_video: {
            visible: videoPlayer.showIR,
            translucent: videoPlayer.irOverlayTransparent,
            colormap_auto: videoPlayer.autoIRMapping,
            colormap_min: videoPlayer.irMappingMinValue,
            colormap_max: videoPlayer.irMappingMaxValue,
            align_offset_x: videoPlayer.irOffsetX,
            align_offset_y: videoPlayer.irOffsetY
        },
        correction: {log_offset: logParser.manualLogTimeOffset}
    };
    var flightNaming = logParser.flightNaming;
    if (!flightNaming.undefined)
        saved.designation = {
            mission_name: flightNaming.missionName,
            flight_name: flightNaming.flightName,
            flight_number: flightNaming.flightNumber
        };
    return saved;
}

function naming(designation) {
    if (!designation)
        return {undefined: true};
    return {
        flightName: designation.flight_name,
        flightNumber: designation.flight_number,
        missionName: designation.mission_name,
        undefined: false
    };
}

// Projects are edited by hand, too: what is missing or of another kind changes nothing.
function restoreProperty(target, name, value) {
    if (typeof value === typeof target[name])
        target[name] = value;
}

function restoreLogOffset(logParser, correction) {
    var offset = (correction || {}).log_offset;
    if (Math.abs(offset) <= 2147483647)
        restoreProperty(logParser, "manualLogTimeOffset", offset);
}

function restoreDisplay(videoPlayer, properties) {
    var display = properties.display || {};
    restoreProperty(videoPlayer, "contrast", display.contrast);
    restoreProperty(videoPlayer, "brightness", display.brightness);
    var thermal = properties.thermal_video || {};
    restoreProperty(videoPlayer, "irOffsetX", thermal.align_offset_x);
    restoreProperty(videoPlayer, "irOffsetY", thermal.align_offset_y);
    restoreProperty(videoPlayer, "irOverlayTransparent", thermal.translucent);
    restoreProperty(videoPlayer, "irMappingMinValue", thermal.colormap_min);
    restoreProperty(videoPlayer, "irMappingMaxValue", thermal.colormap_max);
    restoreProperty(videoPlayer, "autoIRMapping", thermal.colormap_auto);
    restoreProperty(videoPlayer, "showIR", thermal.visible);
}
