import QtQuick 2.7
import corv.LogParsing 1.0
import VideoPlayer 1.0

// The player as the main window uses it: what it starts with, and what follows from its signals.
VideoPlayer {
    id: reviewPlayer

    property bool hasVideoOpenedAlias: hasVideoOpened
    property var onVideoSucessfullyOpened: undefined
    // Returns the adjustments panel, undefined before its tab was first shown.
    property var adjustmentsPanel: function() { return undefined; }

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
        // Or the next flight would begin with the picture of this one.
        if (!hasVideoOpened)
            forgetLastFrame();
        if (!hasVideoOpened || onVideoSucessfullyOpened === undefined)
            return;
        var continuation = onVideoSucessfullyOpened;
        onVideoSucessfullyOpened = undefined;
        continuation();
    }
    onDurationChanged: {
        if (duration > 0)
            LogParser.duration = duration;
    }

    onAutoIRMappingChanged: {
        if (showIR)
            redraw();
    }
    onPlayingChanged: takePlaceBack()
    onIsReadToEndChanged: takePlaceBack()

    // Playback that has read to the end has no place in the flight; redrawing the frame on screen,
    // pictures can be saved again.
    function takePlaceBack() {
        if (isReadToEnd && !playing)
            redraw();
    }

    Connections {
        target: LogParser

        function onManualLogTimeOffsetChanged() {
            if (reviewPlayer.showIR)
                reviewPlayer.redraw();
        }
    }

    function togglePlayPause() {
        if (playing)
            pause();
        else
            playOn();
    }

    // The panel follows the player by itself; these two write everything into it once more.
    function updateControlsStates() {
        var panel = adjustmentsPanel();
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
        var panel = adjustmentsPanel();
        if (panel === undefined)
            return;
        panel.imageContrast = contrast;
        panel.imageBrightness = brightness;
        panel.logTimeShiftingCorrection = LogParser.manualLogTimeOffset;
        panel.irHorizontalPosCorrection = irOffsetX;
        panel.irVerticalPosCorrection = irOffsetY;
    }
}
