#include "Log/FileWindow.h"

#include <QFile>
#include <algorithm>
#include <cstring>

namespace corv {
namespace {

// Memory that is touched for the first time costs more than the reading of as many bytes, so that a
// short part is read in at least this many steps.
constexpr size_t kSteps = 16;
constexpr size_t kLeastBytes = size_t(1) << 14;

} // namespace

FileWindow::FileWindow(QFile* file, qint64 beginByte, qint64 endByte, size_t windowBytes)
    : m_file(file), m_nextByte(beginByte), m_endByte(endByte)
{
    const auto part = static_cast<size_t>(std::max<qint64>(endByte - beginByte, 0));
    m_windowBytes = std::min(windowBytes, std::max(part / kSteps, kLeastBytes));
    m_cutShort = endByte < beginByte;
    m_failed = m_cutShort || !m_file->seek(beginByte) ||
               !m_buffer.allocate(kLongestKept + m_windowBytes, true);
    m_begin = m_end = m_buffer.data();
}

bool FileWindow::advance(const unsigned char* keepFrom)
{
    if (m_failed)
        return false;
    unsigned char* const to = m_buffer.data();
    const size_t kept = static_cast<size_t>(m_end - keepFrom);
    Q_ASSERT(kept <= kLongestKept);
    std::memmove(to, keepFrom, kept);
    const qint64 wanted =
        std::min<qint64>(static_cast<qint64>(m_windowBytes), m_endByte - m_nextByte);
    qint64 got = 0;
    while (got < wanted) {
        const qint64 more = m_file->read(reinterpret_cast<char*>(to) + kept + got, wanted - got);
        if (more <= 0) {
            m_failed = true;
            m_cutShort = more == 0;
            return false;
        }
        got += more;
    }
    m_nextByte += got;
    m_begin = to;
    m_end = to + kept + got;
    return true;
}

} // namespace corv
