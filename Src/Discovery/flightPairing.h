#pragma once

#include "Log/LogSyncResult.h"

#include <QString>
#include <QtGlobal>
#include <vector>

namespace corv {

/// What a pairing of a video with a log rests on.
enum class PairingEvidence {
    None,          ///< no log
    Time,          ///< the file times; no lengths to compare
    LengthDiffers, ///< no recording of the log is as long as the video: the file times alone, or
                   ///< other files of its flight are missing
    Length,        ///< the lengths and the order of names
    TimeAndLength
};

/// A video as the pairing sees it.
struct PairingVideo
{
    QString path;
    qint64 timeMs = -1;   ///< of the last write, since the epoch; negative if unknown
    qint64 lengthMs = -1; ///< exact; 0 or less if unknown
    int logByTime = -1;   ///< position of the log that the file times give it, -1 for none
};

/// A log as the pairing sees it. One that could not be read has no recordings.
struct PairingLog
{
    QString path;
    qint64 timeMs = -1;
    std::vector<RecEvent> recordings;
    bool isRead = true;
    bool describesRecordings = false; ///< so that one without a recording saw none
};

/// The log of one video and how sure that is.
struct Pairing
{
    int log = -1;       ///< -1 for none
    int recording = -1; ///< position in the log's recordings; -1 if no length agrees
    PairingEvidence evidence = PairingEvidence::None;
    bool lacksFiles = false;       ///< other files of the flight are missing
    bool doubtful = false;         ///< another answer is likely enough that a person should look
    qint64 flightLengthMs = -1;    ///< exact, of all its parts; -1 if unknown
    qint64 recordingLengthMs = -1; ///< logged, of `recording`, else the log's nearest; -1 if none
    std::vector<size_t> files; ///< positions of the videos that are the recording, in order; empty
                               ///< if no length agrees
};

/// Decides which log belongs to each video. The file times come first; their evidence is a
/// recording of about the length of the video. All videos are aligned with all recordings by length
/// and by the order of names, the parts of one flight together. That replaces a pair whose lengths
/// differ, fills gaps, and shows which pairs are not certain. A pair by time with nothing better
/// stays, doubtful; where nothing decides there is no log. A file of a flight that lacks others
/// gets the log that is likely with them, doubtful, as one whose length differs. Pure; any thread.
std::vector<Pairing> pairFlights(const std::vector<PairingVideo>& videos,
                                 const std::vector<PairingLog>& logs);

} // namespace corv
