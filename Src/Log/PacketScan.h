#pragma once

#include "Log/FileWindow.h"
#include "Log/checksum.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace corv {

/// What the scan knows of a packet id.
struct PacketType
{
    bool known = false;
    int sizeBytes = 0; ///< of the payload, as the description gives it
};

/// How the packets of one log are framed.
struct PacketFraming
{
    std::array<PacketType, 256> types; ///< by id byte
    bool wideSize = false;             ///< the size field has two bytes, else one
};

/// Walks the packets in a stream of bytes and calls `visitor` for what it meets, in file order:
///
///     bool proceed()                 now and then; false stops the scan
///     void windowMoves()             pointers passed to payload() become invalid after this call
///     bool wants(id)                 false skips the payload and its checksum: neither payload()
///                                    nor checksum() is called for the packet
///     void wrongId()
///     void begins(id)                a packet with a known id
///     void wrongSize(id)
///     bool payload(id, bytes, size)  a whole payload, or what is left of it before the end of
///                                    the file; false stops the scan
///     void checksum(id, good)
///     void incomplete(id)            the file ended inside the packet
///     kEmptyTakesByte                whether an empty payload takes one byte of the stream
///
/// Every failure resumes at the byte behind the rejected field; nothing is looked at twice.
template <typename Visitor>
class PacketScan
{
public:
    PacketScan(FileWindow* window, const PacketFraming& framing, Visitor* visitor)
        : m_window(*window), m_framing(framing), m_visitor(*visitor)
    {
    }

    /// Scans to the end. False when the visitor stopped it or the window failed.
    bool run()
    {
        m_at = m_window.begin();
        m_end = m_window.end();
        for (;;) {
            skipToSync();
            if (m_end - m_at < kLongestPacket && !m_window.atEnd()) {
                if (!moveWindow())
                    return false;
            } else if (m_at == m_end) {
                return m_visitor.proceed();
            } else if (!readPacket()) {
                return false;
            }
        }
    }

private:
    static constexpr unsigned char kSync1 = 0x86;
    static constexpr unsigned char kSync2 = 0x37;

    // Sync, id, size, payload and checksum, with the byte that an empty payload may swallow.
    static constexpr std::ptrdiff_t kLongestPacket = 2 + 1 + 2 + 0xffff + 1 + 1;
    static_assert(kLongestPacket <= static_cast<std::ptrdiff_t>(FileWindow::kLongestKept));

    void skipToSync()
    {
        // The next packet mostly begins right here.
        if (m_at == m_end || *m_at == kSync1)
            return;
        const void* sync = std::memchr(m_at, kSync1, static_cast<size_t>(m_end - m_at));
        m_at = sync ? static_cast<const unsigned char*>(sync) : m_end;
    }

    bool moveWindow()
    {
        m_visitor.windowMoves();
        if (!m_visitor.proceed() || !m_window.advance(m_at))
            return false;
        m_at = m_window.begin();
        m_end = m_window.end();
        return true;
    }

    // Reads what begins at a first sync byte. The window holds all of it, or the file ends within.
    bool readPacket()
    {
        ++m_at;
        if (m_at == m_end)
            return true;
        if (*m_at++ != kSync2 || m_at == m_end)
            return true;
        const unsigned id = *m_at++;
        const PacketType& type = m_framing.types[id];
        if (!type.known) {
            m_visitor.wrongId();
            return true;
        }
        m_visitor.begins(id);
        int size = 0;
        if (m_framing.wideSize) {
            if (m_at == m_end)
                return incomplete(id);
            size = *m_at++ << 8;
        }
        if (m_at == m_end)
            return incomplete(id);
        size |= *m_at++;
        if (size != type.sizeBytes) {
            m_visitor.wrongSize(id);
            return true;
        }
        return readPayload(id, size);
    }

    bool readPayload(unsigned id, int size)
    {
        const int wanted = size == 0 && Visitor::kEmptyTakesByte ? 1 : size;
        const auto left = static_cast<int>(std::min<std::ptrdiff_t>(m_end - m_at, wanted));
        if (m_at == m_end)
            return incomplete(id);
        const bool isWanted = m_visitor.wants(id);
        if (isWanted && !m_visitor.payload(id, m_at, left))
            return false;
        const unsigned char* const payload = m_at;
        m_at += left;
        if (left < wanted || m_at == m_end)
            return incomplete(id);
        if (isWanted)
            m_visitor.checksum(id, *m_at == checksumOf(payload, static_cast<size_t>(left)));
        ++m_at;
        return true;
    }

    bool incomplete(unsigned id)
    {
        m_visitor.incomplete(id);
        return true;
    }

    FileWindow& m_window;
    const PacketFraming& m_framing;
    Visitor& m_visitor;
    const unsigned char* m_at = nullptr;
    const unsigned char* m_end = nullptr;
};

} // namespace corv
