#include "Platform/FileLock.h"

#include <QFile>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corv::platform {

FileLock::FileLock(const QString& path) : m_path(QFile::encodeName(path)) {}

FileLock::~FileLock()
{
    // While it is locked: a process that waits for it finds that it has gone, and makes another.
    if (m_descriptor >= 0)
        ::unlink(m_path.constData());
    close();
}

void FileLock::close()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = -1;
}

bool FileLock::isStillThere() const
{
    struct stat locked
    {
    };
    struct stat named
    {
    };
    return ::fstat(m_descriptor, &locked) == 0 && ::stat(m_path.constData(), &named) == 0 &&
           locked.st_dev == named.st_dev && locked.st_ino == named.st_ino;
}

bool FileLock::take(Wait wait)
{
    const int operation = LOCK_EX | (wait == Wait::no ? LOCK_NB : 0);
    for (;;) {
        m_descriptor = ::open(m_path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (m_descriptor < 0)
            return true;
        int error = 0;
        do {
            error = ::flock(m_descriptor, operation) == 0 ? 0 : errno;
        } while (error == EINTR);
        if (error == EWOULDBLOCK) {
            close();
            return false;
        }
        if (error != 0 || isStillThere())
            return true;
        close();
    }
}

} // namespace corv::platform
