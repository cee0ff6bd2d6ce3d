import QtQuick 2.7
import corv.LogParsing 1.0
import VideoPlayer 1.0

// The player as the main window uses it: what it starts with, and what follows from its signals.
VideoPlayer {
    property bool hasVideoOpenedAlias: hasVideoOpened
    property var onVideoSucessfullyOpened: undefined

    source: ""
    showIR: false
    fullScreenIR: false
    irOverlayTransparent: false
    contrast: 1.0
    brightness: 0.0
    autoIRMapping: true
    irMappingMinValue: 0
    irMappingMaxValue: 16383
    logParser: LogParser
    visible: hasVideoOpened

    onHasVideoOpenedChanged: {
        if (!hasVideoOpened || onVideoSucessfullyOpened === undefined)
            return;
        var continuation = onVideoSucessfullyOpened;
        onVideoSucessfullyOpened = undefined;
        continuation();
    }
    onSourceOpenError: mainWindow.displayErrorDialog("Error", "Video file " + file
                                                     + " could not be read.")
    onDurationChanged: {
        if (duration > 0)
            LogParser.duration = duration;
    }
    onIrDataChanged: {
        var panel = mainWindow.adjustmentsPanel();
        if (panel === undefined || !autoIRMapping)
            return;
        panel.irMinValue = irDataMin;
        panel.irMaxValue = irDataMax;
    }
    onPlayingChanged: controlsTab.setPlaying(playing)
    onVideoExportProgress: mainWindow.videoExportProgress(exportedFrames, totalFrames)
    onVideoExportComplete: mainWindow.videoExportComplete(result)

    function togglePlayPause() {
        if (playing)
            pause();
        else
            play();
    }

    function updateControlsStates() {
        var panel = mainWindow.adjustmentsPanel();
        if (panel === undefined)
            return;
        panel.irShowButtonChecked = showIR;
        panel.irFullscreenButtonEnabled = showIR;
        panel.irFullscreenButtonChecked = fullScreenIR;
        panel.irTransparencyButtonEnabled = showIR;
        panel.irTransparencyButtonChecked = irOverlayTransparent;
        panel.irLockRangeButtonEnabled = showIR;
        panel.irAutoRangeButtonEnabled = showIR;
        panel.irAutoRangeButtonChecked = autoIRMapping;
        panel.irSlidersEnabled = !autoIRMapping;
    }

    function updatePropertiesStates() {
        var panel = mainWindow.adjustmentsPanel();
        if (panel === undefined)
            return;
        panel.imageContrast = contrast;
        panel.imageBrightness = brightness;
        panel.logTimeShiftingCorrection = LogParser.manualLogTimeOffset;
        panel.irHorizontalPosCorrection = irOffsetX;
        panel.irVerticalPosCorrection = irOffsetY;
    }
}
