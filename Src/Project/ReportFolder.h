#pragma once

#include <QDir>
#include <QString>
#include <QTemporaryDir>
#include <memory>

namespace corv {

namespace platform {
class FileLock;
}

/// A temporary folder, for the pictures of one report for instance, removed with this object. Its
/// name carries the number of the process and it holds a locked file, so that `sweep` can remove
/// what a killed program left. Any thread.
class ReportFolder
{
public:
    /// Makes the folder in the system's folder for temporary files.
    ReportFolder();
    ~ReportFolder();

    /// Whether the folder was made.
    bool isValid() const { return m_folder.isValid(); }

    QString path() const { return m_folder.path(); }

    /// Removes the folders in `parent` that nobody uses any more: those of this user whose process
    /// has ended, and whose file is not locked: a container that shares `parent` can have given the
    /// number to a process of its own, and that one's folder is known to be in use by the lock
    /// alone.
    static void sweep(const QString& parent = QDir::tempPath());

private:
    QTemporaryDir m_folder;
    std::unique_ptr<platform::FileLock> m_lock; ///< held until the process ends, however it does
};

} // namespace corv
