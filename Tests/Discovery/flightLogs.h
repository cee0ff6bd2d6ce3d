#pragma once

#include "Support/LogBuilder.h"

#include <vector>

namespace corv::test {

struct LoggedRecording
{
    quint32 startMs;
    quint32 stopMs;
};

struct LoggedNaming
{
    quint32 timeMs;
    QByteArray mission;
    QByteArray flight;
    unsigned number;
};

/// A log as the drone writes it, with its recordings and the pilot's names of the flights.
inline LogBuilder flightLog(const std::vector<LoggedRecording>& recordings,
                            const std::vector<LoggedNaming>& namings)
{
    LogBuilder log;
    log.addGroup("mobius_start_rec", 3, {{"mobius_start_rec", "UINT32", 1}});
    log.addGroup("mobius_stop_rec", 4, {{"mobius_stop_rec", "UINT32", 1}});
    log.addGroup("mission_info", 5,
                 {{"time", "UINT32", 1},
                  {"mission_name", "UINT8", 20},
                  {"flight_name", "UINT8", 20},
                  {"flight_number", "UINT8", 1}});
    for (const LoggedNaming& naming : namings)
        log.addPacket(5, LogBuilder::u32(naming.timeMs) + LogBuilder::text(naming.mission, 20) +
                             LogBuilder::text(naming.flight, 20) + LogBuilder::u8(naming.number));
    for (const LoggedRecording& recording : recordings) {
        log.addPacket(3, LogBuilder::u32(recording.startMs));
        log.addPacket(4, LogBuilder::u32(recording.stopMs));
    }
    return log;
}

} // namespace corv::test
