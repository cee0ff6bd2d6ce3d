#pragma once

#include "Log/LogDecoder.h"

#include <array>
#include <atomic>

namespace corv {

/// Logs what was counted.
void logCounters(const LogDecodeCounters& counters);

/// Visitor of a `PacketScan`: how many good packets there are of each id, and what is wrong with
/// the others.
class PacketCounter
{
public:
    static constexpr bool kEmptyTakesByte = true;

    explicit PacketCounter(const std::atomic<bool>* abortFlag) : m_abortFlag(*abortFlag) {}

    bool proceed() const { return !m_abortFlag.load(std::memory_order_relaxed); }
    static bool wants(unsigned) { return true; }
    void windowMoves() {}
    void wrongId() { ++m_wrongId; }
    void begins(unsigned id)
    {
        ++m_total;
        ++m_packets[id];
    }
    void wrongSize(unsigned id)
    {
        ++m_wrongSize;
        --m_packets[id];
    }
    bool payload(unsigned, const unsigned char*, int) { return true; }
    void checksum(unsigned id, bool good)
    {
        m_wrongCrc += good ? 0 : 1;
        m_packets[id] -= good ? 0 : 1;
    }
    void incomplete(unsigned id)
    {
        m_incompleteLast = true;
        --m_packets[id];
    }

    qint64 packets(unsigned id) const { return m_packets[id]; }

    LogDecodeCounters counters() const
    {
        LogDecodeCounters counters;
        counters.total = m_total;
        // A wrong id lowers the count, though it never raised it: that is how the format counts.
        counters.valid =
            m_total - m_wrongCrc - m_wrongSize - m_wrongId - (m_incompleteLast ? 1 : 0);
        counters.wrongCrc = m_wrongCrc;
        counters.wrongSize = m_wrongSize;
        counters.wrongId = m_wrongId;
        counters.incompleteLast = m_incompleteLast;
        return counters;
    }

private:
    const std::atomic<bool>& m_abortFlag;
    std::array<qint64, 256> m_packets{};
    qint64 m_total = 0;
    qint64 m_wrongCrc = 0;
    qint64 m_wrongSize = 0;
    qint64 m_wrongId = 0;
    bool m_incompleteLast = false;
};

} // namespace corv
