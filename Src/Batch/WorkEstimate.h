#pragma once

#include "Batch/FlightJob.h"

#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <optional>

namespace corv {

/// The progress of a review of several flights, and the time that is left, from the events of the
/// flights; also before the first one has ended. Where videos are written, flights count by the
/// sizes of theirs. Flights with nothing left to do are left out of the speed.
class WorkEstimate
{
public:
    WorkEstimate(const QList<FlightJob>& jobs, bool writesVideo);

    /// Takes an event of a flight in, as the work on flights reports them; `nowMs` is any clock
    /// that never goes back.
    void take(const QJsonObject& event, qint64 nowMs);

    /// The part of all work that is done, from 0 to 1.
    double share() const;

    /// Milliseconds until all is done; nothing as long as too little is done to say so.
    std::optional<qint64> leftMs(qint64 nowMs) const;

private:
    struct Flight
    {
        double weight = 1;
        double share = 0;
        bool isWorkedOn = false; ///< a result of it had to be made
    };

    void takeProgress(Flight* flight, const QJsonObject& event);

    const bool m_writesVideo;
    QHash<QString, Flight> m_flights;
    std::optional<qint64> m_startMs; ///< when the first result was begun
};

} // namespace corv
