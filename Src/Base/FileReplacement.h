#pragma once

#include "Base/Result.h"

#include <QByteArray>
#include <QSaveFile>
#include <QString>
#include <optional>

namespace corv {

/// Writes a file so that its name leads to the earlier contents or to the new ones, also after a
/// full disk, a crash or a power failure: writes beside it, flushes to the disk, renames, and
/// flushes the folder. Without `commit` nothing changes. One thread at a time, any thread.
class FileReplacement
{
public:
    enum class InLockedFolder {
        refuse,       ///< fails where the folder allows no second file
        writeDirectly ///< overwrites the earlier file there, which a failure then damages
    };

    explicit FileReplacement(const QString& fileName,
                             InLockedFolder inLockedFolder = InLockedFolder::writeDirectly);

    QString fileName() const { return m_file.fileName(); }

    /// Begins. Write the new contents after success.
    Status open();

    /// Appends to the new contents. A failure is kept for commit().
    void write(const QByteArray& bytes);

    /// The new contents for writers that need a device. Such a writer compares what the device took
    /// with what it gave, and does not commit after a loss. Owned by this object; do not close it.
    QIODevice& device() { return m_file; }

    /// Replaces the file. Fails, and leaves the earlier file, if a write() failed.
    Status commit(QFileDevice::Permissions added = {});

    /// The system's text for the last failure, for the diagnostic log.
    QString errorString() const { return m_file.errorString(); }

private:
    Failure failure() const;

    QSaveFile m_file;
    std::optional<Failure> m_writeFailure;
};

/// Replaces the file by contents in memory: all steps in one call.
Status replaceFile(const QString& fileName, const QByteArray& contents,
                   FileReplacement::InLockedFolder inLockedFolder =
                       FileReplacement::InLockedFolder::writeDirectly);

} // namespace corv
