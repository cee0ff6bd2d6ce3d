#pragma once

#include "Discovery/flightPairing.h"

#include <QtGlobal>
#include <vector>

/// What the last writes of files say of flights: a camera ends its files where a video ends, a
/// drone its logs some time after the last recording, and a copy may lose both. Pure; any thread.
namespace corv {

/// A recording that has a beginning and an end.
struct LoggedRecording
{
    int log;
    int index; ///< among those of the log
    qint64 lengthMs;
    qint64 untilLastStopMs; ///< from its end to that of the log's last one
};

bool isWhole(const RecEvent& event);

/// In milliseconds, of a whole one.
qint64 lengthOf(const RecEvent& event);

/// How likely the times are those of the camera and the drone, as far as they show by themselves.
double likelihoodOfKeptTimes(const std::vector<PairingVideo>& videos,
                             const std::vector<PairingLog>& logs);

/// True if the second video may go on where the first one ends: a recorder begins the next file at
/// once, and two flights are minutes apart. A file that ends sooner than it is long shows no break,
/// but a time that is not the camera's.
bool goesOnAtOnce(const PairingVideo& before, const PairingVideo& next);

/// How long after a video its log is written: typical of a card, and learnt from the pairs whose
/// times and lengths agree.
class LogDelay
{
public:
    /// `logs` must outlive it.
    LogDelay(const std::vector<PairingVideo>& videos, const std::vector<PairingLog>& logs,
             const std::vector<LoggedRecording>& recordings);

    /// How much better the times fit if the video is the recording than if it is not, from 0.02
    /// to 20; 1 where a time is unknown.
    double fit(const PairingVideo& video, const LoggedRecording& recording) const;

    /// True if the log was written too soon after the video to be that of a later flight with such
    /// a recording, or as soon as is typical of the card.
    bool followsAtOnce(const PairingVideo& video, const LoggedRecording& recording) const;

    /// True if the video was taken while the recording ran, by the clock of the log, which ends
    /// about when the log is written.
    bool isDuring(const PairingVideo& video, const LoggedRecording& recording) const;

private:
    double delaySecs(const PairingVideo& video, const LoggedRecording& recording) const;

    const std::vector<PairingLog>& m_logs;
    double m_typicalSecs = 60;
    double m_spreadSecs = 300;
};

} // namespace corv
