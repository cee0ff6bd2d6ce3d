#include "Platform/fileSystem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <limits>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace corv::platform {
namespace {

constexpr mode_t newFileMode = 0666;

/// Closes a descriptor at the end of its scope.
class Descriptor
{
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int number() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }

private:
    int m_number;
};

QString withoutLinks(const QString& path)
{
    const QString real = QFileInfo(path).canonicalFilePath();
    return real.isEmpty() ? path : real;
}

QByteArray folderOf(const QByteArray& path)
{
    const auto slash = path.lastIndexOf('/');
    if (slash < 0)
        return ".";
    return slash == 0 ? QByteArray("/") : path.left(slash);
}

QByteArray nameOf(const QByteArray& path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

void flush(const QByteArray& folder)
{
    const Descriptor opened(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen())
        ::fsync(opened.number());
}

int writeAll(int descriptor, const char* bytes, qint64 size)
{
    while (size > 0) {
        const ssize_t written = ::write(descriptor, bytes, static_cast<size_t>(size));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return written < 0 ? errno : ENOSPC;
        bytes += written;
        size -= written;
    }
    return 0;
}

int writeDirectly(const QByteArray& path, const QByteArray& contents)
{
    const Descriptor file(::open(path.constData(), O_WRONLY | O_TRUNC | O_CLOEXEC));
    if (!file.isOpen())
        return errno;
    const int error = writeAll(file.number(), contents.constData(), contents.size());
    if (error != 0)
        return error;
    return ::fsync(file.number()) == 0 ? 0 : errno;
}

/// Copies in pieces, each of which can be cancelled; what is still to be flushed stays little, or
/// the last flush would take as long as the whole.
int copyPieces(int source, NewFile& target, CopyControl& control)
{
    constexpr qint64 pieceBytes = 1 << 20;
    constexpr int piecesPerFlush = 32;
    std::vector<char> piece(static_cast<size_t>(pieceBytes));
    for (int number = 1;; ++number) {
        if (control.isCancelled)
            return ECANCELED;
        const ssize_t size = ::read(source, piece.data(), piece.size());
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0)
            return errno;
        if (size == 0)
            return 0;
        const int error = target.write(piece.data(), size);
        if (error != 0)
            return error;
        if (number % piecesPerFlush == 0)
            ::fdatasync(target.descriptor());
        control.doneBytes += size;
        if (control.pieceCopied)
            control.pieceCopied(size);
    }
}

void keepAttributes(const struct stat& source, int target)
{
    ::fchmod(target, (source.st_mode & 0777) | S_IRUSR | S_IWUSR);
    const std::array<timespec, 2> times{source.st_atim, source.st_mtim};
    ::futimens(target, times.data());
}

Failure::Kind kindOfError(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return Failure::Kind::notFound;
    case EACCES:
    case EPERM:
        return Failure::Kind::noPermission;
    case EROFS:
    case EEXIST:
        return Failure::Kind::notWritable;
    case EISDIR:
        return Failure::Kind::notAFile;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return Failure::Kind::noRoom;
    case ENOMEM:
        return Failure::Kind::noMemory;
    case EIO:
    case ENXIO:
    case ENODEV:
        return Failure::Kind::unreadable;
    case ECANCELED:
        return Failure::Kind::cancelled;
    default:
        return Failure::Kind::other;
    }
}

} // namespace

NewFile::NewFile(const QString& path) : m_path(QFile::encodeName(withoutLinks(path))) {}

NewFile::~NewFile()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    if (!m_partPath.isEmpty())
        ::unlink(m_partPath.constData());
}

QByteArray NewFile::partPath(const QByteArray& folder) const
{
    return folder + "/." + nameOf(m_path) + '.' + QByteArray::number(::getpid()) + ".part";
}

int NewFile::open(const QString& stagingFolder)
{
    const QByteArray folder =
        stagingFolder.isEmpty() ? folderOf(m_path) : QFile::encodeName(stagingFolder);
    m_descriptor = ::open(folder.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, newFileMode);
    if (m_descriptor >= 0)
        return 0;
    const bool knowsNoUnnamed = errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL;
    return knowsNoUnnamed ? openNamed(folder) : errno;
}

int NewFile::openNamed(const QByteArray& folder)
{
    if (::access(folder.constData(), F_OK) != 0)
        return errno;
    const QByteArray path = partPath(folder);
    m_descriptor =
        ::open(path.constData(), O_CREAT | O_TRUNC | O_RDWR | O_CLOEXEC | O_NOFOLLOW, newFileMode);
    if (m_descriptor < 0)
        return errno;
    m_partPath = path;
    return 0;
}

void NewFile::renameTo(const QString& path)
{
    m_path = QFile::encodeName(path);
}

int NewFile::write(const char* bytes, qint64 size)
{
    return writeAll(m_descriptor, bytes, size);
}

int NewFile::publish(Over over)
{
    if (::fsync(m_descriptor) != 0 && errno != EINVAL)
        return errno;
    const int error = giveName(over);
    if (error == 0)
        flush(folderOf(m_path));
    return error;
}

int NewFile::giveName(Over over)
{
    if (m_partPath.isEmpty()) {
        const QByteArray unnamed = "/proc/self/fd/" + QByteArray::number(m_descriptor);
        const auto link = [&unnamed](const QByteArray& path) {
            return ::linkat(AT_FDCWD, unnamed.constData(), AT_FDCWD, path.constData(),
                            AT_SYMLINK_FOLLOW) == 0
                       ? 0
                       : errno;
        };
        if (over == Over::nothing)
            return link(m_path);
        // A name can replace another, an unnamed file cannot.
        const QByteArray path = partPath(folderOf(m_path));
        ::unlink(path.constData());
        const int error = link(path);
        if (error != 0)
            return error;
        m_partPath = path;
    }
    const unsigned flags = over == Over::nothing ? RENAME_NOREPLACE : 0U;
    int result = ::renameat2(AT_FDCWD, m_partPath.constData(), AT_FDCWD, m_path.constData(), flags);
    if (result != 0 && errno == EINVAL && over == Over::nothing) {
        // A file system that cannot refuse by itself.
        if (::access(m_path.constData(), F_OK) == 0)
            return EEXIST;
        result = ::rename(m_partPath.constData(), m_path.constData());
    }
    if (result != 0)
        return errno;
    m_partPath.clear();
    return 0;
}

QByteArray fileIdentity(int descriptor)
{
    struct stat file
    {
    };
    if (::fstat(descriptor, &file) != 0 || !S_ISREG(file.st_mode))
        return {};
    return QByteArray::number(static_cast<qulonglong>(file.st_dev)) + ':' +
           QByteArray::number(static_cast<qulonglong>(file.st_ino)) + ':' +
           QByteArray::number(static_cast<qlonglong>(file.st_size)) + ':' +
           QByteArray::number(static_cast<qlonglong>(file.st_mtim.tv_sec)) + '.' +
           QByteArray::number(static_cast<qlonglong>(file.st_mtim.tv_nsec));
}

QByteArray fileIdentity(const QString& path)
{
    const Descriptor file(::open(QFile::encodeName(path).constData(),
                                 O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    return file.isOpen() ? fileIdentity(file.number()) : QByteArray();
}

bool isProcessGone(qint64 process)
{
    if (process <= 0 || process > std::numeric_limits<pid_t>::max())
        return false;
    if (::kill(static_cast<pid_t>(process), 0) != 0 && errno == ESRCH)
        return true;
    // A process that has ended keeps its number until its parent asks for its status. The state
    // comes after the name, which is in brackets and may hold any letter.
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray status = file.readAll();
    return status.mid(status.lastIndexOf(')') + 1).trimmed().startsWith('Z');
}

void removeAbandonedParts(const QString& path)
{
    const QFileInfo file(withoutLinks(path));
    const QString start = QLatin1Char('.') + file.fileName() + QLatin1Char('.');
    const QString end = QStringLiteral(".part");
    const QDir folder = file.absoluteDir();
    for (const QString& name : folder.entryList(QDir::Files | QDir::Dirs | QDir::Hidden)) {
        if (!name.startsWith(start) || !name.endsWith(end))
            continue;
        const int process = name.mid(start.size(), name.size() - start.size() - end.size()).toInt();
        if (!isProcessGone(process))
            continue;
        if (QFileInfo(folder.filePath(name)).isDir())
            QDir(folder.filePath(name)).removeRecursively();
        else
            QFile::remove(folder.filePath(name));
    }
}

int replaceFile(const QString& path, const QByteArray& contents)
{
    const QByteArray real = QFile::encodeName(withoutLinks(path));
    struct stat earlier
    {
    };
    const bool exists = ::stat(real.constData(), &earlier) == 0;
    if (exists && !S_ISREG(earlier.st_mode))
        return S_ISDIR(earlier.st_mode) ? EISDIR : EINVAL;
    if (exists && ::faccessat(AT_FDCWD, real.constData(), W_OK, AT_EACCESS) != 0)
        return errno;
    removeAbandonedParts(path);
    NewFile file(path);
    int error = file.open();
    if (exists && (error == EACCES || error == EPERM))
        return writeDirectly(real, contents);
    if (error != 0)
        return error;
    error = file.write(contents.constData(), contents.size());
    if (error != 0)
        return error;
    if (exists)
        ::fchmod(file.descriptor(), earlier.st_mode & 07777);
    return file.publish(NewFile::Over::existing);
}

int copyInto(NewFile& target, const QString& source, CopyControl& control)
{
    const Descriptor from(
        ::open(QFile::encodeName(source).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat attributes
    {
    };
    if (!from.isOpen() || ::fstat(from.number(), &attributes) != 0)
        return errno;
    if (!S_ISREG(attributes.st_mode))
        return S_ISDIR(attributes.st_mode) ? EISDIR : EINVAL;
    int error = 0;
    if (::ioctl(target.descriptor(), FICLONE, from.number()) == 0)
        control.doneBytes += attributes.st_size;
    else
        error = copyPieces(from.number(), target, control);
    if (error != 0)
        return error;
    keepAttributes(attributes, target.descriptor());
    ::fsync(target.descriptor());
    return control.isCancelled ? ECANCELED : 0;
}

NewFolder::NewFolder(const QString& path) : m_path(path)
{
    const QFileInfo folder(path);
    m_stagingPath = QStringLiteral("%1/.%2.%3.part")
                        .arg(folder.absolutePath(), folder.fileName(), QString::number(::getpid()));
}

NewFolder::~NewFolder()
{
    if (m_isOpen)
        QDir(m_stagingPath).removeRecursively();
}

int NewFolder::open()
{
    QDir(m_stagingPath).removeRecursively();
    if (::mkdir(QFile::encodeName(m_stagingPath).constData(), 0777) != 0)
        return errno;
    m_isOpen = true;
    return 0;
}

int NewFolder::publish()
{
    const QByteArray from = QFile::encodeName(m_stagingPath);
    const QByteArray to = QFile::encodeName(m_path);
    flush(from);
    int result =
        ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE);
    if (result != 0 && errno == EINVAL) {
        if (::access(to.constData(), F_OK) == 0)
            return EEXIST;
        result = ::rename(from.constData(), to.constData());
    }
    if (result != 0)
        return errno;
    m_isOpen = false;
    flush(folderOf(to));
    return 0;
}

Failure failureOfError(int error, const QString& what)
{
    return {kindOfError(error), error == ECANCELED
                                    ? what + QStringLiteral(": cancelled.")
                                    : QStringLiteral("%1: %2.").arg(what, qt_error_string(error))};
}

LastWrite lastWrite(const QString& path)
{
    struct stat attributes
    {
    };
    if (::stat(QFile::encodeName(path).constData(), &attributes) != 0)
        return {};
    tm local{};
    if (localtime_r(&attributes.st_mtim.tv_sec, &local) == nullptr)
        return {};
    return {QDateTime::fromMSecsSinceEpoch(qint64(attributes.st_mtim.tv_sec) * 1000 +
                                               attributes.st_mtim.tv_nsec / 1'000'000,
                                           Qt::OffsetFromUTC, static_cast<int>(local.tm_gmtoff)),
            attributes.st_size};
}

} // namespace corv::platform
