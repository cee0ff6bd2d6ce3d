#pragma once

#include <QtGlobal>

/// One recording of the video recorder as the log has it, in log-clock milliseconds.
struct RecEvent
{
    quint32 startTime = 0; ///< 0 means unknown
    quint32 stopTime = 0;  ///< 0 means that no stop was logged
};

/// Which recording of a log a video is, and so where the video sits on the log's clock. All times
/// in milliseconds.
struct LogSyncResult
{
    bool found = false;               ///< an offset could be given
    bool probablyNotMatching = false; ///< the match is weak
    int videoDuration = 0;            ///< the duration that was asked about
    int matchedDuration = 0;          ///< length of the chosen recording
    int logTimeOffset = 0;            ///< log time of the video's first frame
};
