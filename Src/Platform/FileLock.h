#pragma once

#include <QString>

namespace corv::platform {

/// Keeps other processes out of a piece of work, on every machine that sees the same folder where
/// its file system passes locks on (NFS does). The system gives the lock back when the process
/// ends, however that happens. Where files cannot be locked, nobody is kept out. One thread.
class FileLock
{
public:
    /// `path` is the file to be locked: made here and removed at the end. Its folder exists.
    explicit FileLock(const QString& path);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    enum class Wait { no, untilFree };

    /// False while another process has the lock.
    bool take(Wait wait);

private:
    bool isStillThere() const;
    void close();

    const QByteArray m_path;
    int m_descriptor = -1;
};

} // namespace corv::platform
