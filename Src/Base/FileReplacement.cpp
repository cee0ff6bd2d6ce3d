#include "Base/FileReplacement.h"

#include <QDir>
#include <QFileInfo>
#include <QtGlobal>
#include <cerrno>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

namespace corv {
namespace {

struct Reason
{
    int code;
    Failure::Kind kind;
    const char* text;
};

constexpr Reason reasons[] = {
    {ENOSPC, Failure::Kind::noRoom, "the disk is full"},
    {EDQUOT, Failure::Kind::noRoom, "the disk quota is used up"},
    {EFBIG, Failure::Kind::noRoom, "it is too large for this disk"},
    {EACCES, Failure::Kind::noPermission, "you have no permission to write there"},
    {EPERM, Failure::Kind::noPermission, "you have no permission to write there"},
    {EROFS, Failure::Kind::noPermission, "the disk is read-only"},
    {ENOENT, Failure::Kind::notFound, "the folder does not exist"},
    {ENOTDIR, Failure::Kind::notFound, "the folder does not exist"},
};

Failure notWritten(const QString& fileName, Failure::Kind kind, const QString& reason)
{
    return {kind, QStringLiteral("The file %1 could not be written: %2.")
                      .arg(QDir::toNativeSeparators(fileName), reason)};
}

/// Makes the rename itself durable. Where the file system cannot flush a folder there is nothing
/// more to be done, and the file is complete either way.
void flushFolder(const QString& folder)
{
#ifdef Q_OS_UNIX
    const int descriptor = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
#else
    Q_UNUSED(folder)
#endif
}

} // namespace

FileReplacement::FileReplacement(const QString& fileName, InLockedFolder inLockedFolder)
    : m_file(fileName)
{
    m_file.setDirectWriteFallback(inLockedFolder == InLockedFolder::writeDirectly);
}

Failure FileReplacement::failure() const
{
    // Qt keeps the system's text but not its code.
    const QString text = m_file.errorString();
    for (const Reason& reason : reasons) {
        if (text == qt_error_string(reason.code))
            return notWritten(fileName(), reason.kind, QString::fromUtf8(reason.text));
    }
    const QFileInfo target(fileName());
    if (target.isDir())
        return notWritten(fileName(), Failure::Kind::notAFile,
                          QStringLiteral("a folder has this name"));
    if (target.exists() && !target.isWritable())
        return notWritten(fileName(), Failure::Kind::noPermission,
                          QStringLiteral("the file is write-protected"));
    return notWritten(fileName(), Failure::Kind::notWritable, text);
}

Status FileReplacement::open()
{
    if (!m_file.open(QIODevice::WriteOnly))
        return failure();
    return {};
}

void FileReplacement::write(const QByteArray& bytes)
{
    // The system may take a part, and says why only when it is given the rest.
    for (int taken = 0; taken < bytes.size() && !m_writeFailure;) {
        const qint64 more = m_file.write(bytes.constData() + taken, bytes.size() - taken);
        if (more > 0)
            taken += static_cast<int>(more);
        else
            m_writeFailure = failure();
    }
}

Status FileReplacement::commit(QFileDevice::Permissions added)
{
    if (m_writeFailure)
        return *m_writeFailure;
    // Flushed here: QSaveFile::commit does not notice that writing its last buffer failed. Where
    // the system took a part, only a second attempt brings the reason.
    if (!m_file.flush() && !m_file.flush())
        return failure();
    if (added && !m_file.setPermissions(m_file.permissions() | added))
        return failure();
    if (!m_file.commit())
        return failure();
    flushFolder(QFileInfo(fileName()).absolutePath());
    return {};
}

Status replaceFile(const QString& fileName, const QByteArray& contents,
                   FileReplacement::InLockedFolder inLockedFolder)
{
    FileReplacement file(fileName, inLockedFolder);
    if (const Status opened = file.open(); !opened)
        return opened;
    file.write(contents);
    return file.commit();
}

} // namespace corv
