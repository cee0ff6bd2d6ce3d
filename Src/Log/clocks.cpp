#include "Log/clocks.h"

namespace corv {

int logTimeOfVideo(int videoMs, const FlightClock& clock)
{
    return static_cast<int>(
        static_cast<quint32>(videoMs) +
        static_cast<quint32>(clock.logTimeOffset.load(std::memory_order_relaxed)) +
        static_cast<quint32>(clock.manualLogTimeOffset.load(std::memory_order_relaxed)));
}

int videoTimeOfLog(quint32 logMs, const FlightClock& clock)
{
    return static_cast<int>(
        logMs - static_cast<quint32>(clock.logTimeOffset.load(std::memory_order_relaxed)));
}

} // namespace corv
