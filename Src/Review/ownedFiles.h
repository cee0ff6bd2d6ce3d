#pragma once

#include <QLockFile>
#include <QString>
#include <QStringList>
#include <memory>

namespace corv {

/// A file that belongs to this program until it ends or is killed: two programs at once do not take
/// each other's for abandoned ones. File and lock are empty where the folder cannot be written.
struct OwnedFile
{
    QString file;
    std::shared_ptr<QLockFile> lock; ///< released by the last holder, and by the system on a kill
    int error = 0; ///< why there is none: the system's number, 0 if it gives no reason
};

/// A new name in `folder`, which is made: "PREFIX-" and ".json" around something unique. The file
/// itself is not made.
OwnedFile newOwnedFile(const QString& folder, const QString& prefix);

/// The lock of a file that no running program owns; null if one does.
std::shared_ptr<QLockFile> takeOwnership(const QString& file);

/// The files of this prefix that no running program owns, the newest first, 200 at most. Clears
/// away what killed programs left beside them.
QStringList abandonedFiles(const QString& folder, const QString& prefix);

} // namespace corv
