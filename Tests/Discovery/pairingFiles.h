#pragma once

#include "Discovery/flightPairing.h"

#include <QString>
#include <vector>

namespace corv::test {

constexpr qint64 kMorningMs = 1'527'840'000'000;

inline PairingVideo video(const QString& name, qint64 lengthMs, int logByTime, qint64 second = 0)
{
    return {"/card/" + name, kMorningMs + second * 1000, lengthMs, logByTime};
}

// A log with recordings of these lengths, a minute apart.
inline PairingLog logOf(const QString& name, const std::vector<qint64>& lengthsMs,
                        qint64 second = 60)
{
    PairingLog log{"/card/" + name, kMorningMs + second * 1000, {}};
    qint64 nowMs = 10'000;
    for (const qint64 lengthMs : lengthsMs) {
        log.recordings.push_back(
            {static_cast<quint32>(nowMs), static_cast<quint32>(nowMs + lengthMs)});
        nowMs += lengthMs + 60'000;
    }
    return log;
}

} // namespace corv::test
