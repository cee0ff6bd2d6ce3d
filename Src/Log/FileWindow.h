#pragma once

#include "Log/ZeroedBlock.h"

#include <QtGlobal>

class QFile;

namespace corv {

/// A part of a file, read from front to back through a window of a few megabytes, so that a log of
/// gigabytes costs no more memory than a small one.
class FileWindow
{
public:
    /// What the second level of a cache holds: for payloads that are gathered where they are.
    static constexpr size_t kWideBytes = size_t(2) << 20;
    /// For bytes that are looked at once.
    static constexpr size_t kNarrowBytes = size_t(1) << 18;

    /// Reads `file` from `beginByte` to before `endByte`, `windowBytes` at a time, or less where
    /// the part is short. The file stays the caller's, is open for reading, and is read by nobody
    /// else meanwhile. The window holds nothing yet.
    FileWindow(QFile* file, qint64 beginByte, qint64 endByte, size_t windowBytes);

    /// The bytes in the window.
    const unsigned char* begin() const { return m_begin; }
    const unsigned char* end() const { return m_end; }

    /// Whether the last byte of the part is in the window already.
    bool atEnd() const { return m_nextByte >= m_endByte; }

    /// Offset in the file of the first byte behind the window.
    qint64 nextByte() const { return m_nextByte; }

    /// Moves on: the bytes from `keepFrom` to `end()` come to the front, new ones follow them. At
    /// most `kLongestKept` bytes can be kept. False when the file could not be read.
    bool advance(const unsigned char* keepFrom);

    /// True once a read failed, or ended before the part did; from the start for a part that ends
    /// before it begins, as that of a file that has become shorter.
    bool hasFailed() const { return m_failed; }

    /// Whether it failed because the file ends before the part does.
    bool isCutShort() const { return m_cutShort; }

    static constexpr size_t kLongestKept = size_t(1) << 17;

private:
    QFile* m_file;
    ZeroedBlock m_buffer;
    size_t m_windowBytes;
    const unsigned char* m_begin = nullptr;
    const unsigned char* m_end = nullptr;
    qint64 m_nextByte;
    qint64 m_endByte;
    bool m_failed = false;
    bool m_cutShort = false;
};

} // namespace corv
