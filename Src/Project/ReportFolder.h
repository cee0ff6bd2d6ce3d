#pragma once

#include <QDir>
#include <QString>
#include <QTemporaryDir>

namespace corv {

/// A temporary folder, for the pictures of one report for instance, removed with this object. Its
/// name carries the number of the process, so that `sweep` can remove what a killed program left.
/// Any thread.
class ReportFolder
{
public:
    /// Makes the folder in the system's folder for temporary files.
    ReportFolder();

    /// Whether the folder was made.
    bool isValid() const { return m_folder.isValid(); }

    QString path() const { return m_folder.path(); }

    /// Removes the folders in `parent` that nobody uses any more: those of this user whose process
    /// has ended.
    static void sweep(const QString& parent = QDir::tempPath());

private:
    QTemporaryDir m_folder;
};

} // namespace corv
