#pragma once

#include "Base/Failure.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QtGlobal>
#include <atomic>
#include <functional>

/// Files that are complete or not there at all. An `int` that is returned is the system's error
/// number, 0 for success. Any thread.
namespace corv::platform {

/// A file that appears under its name only when it is complete. Destroyed before that, or with the
/// program killed, nothing of it is left, except on file systems that know no unnamed files: there
/// a kill leaves a hidden file ending in ".part".
class NewFile
{
public:
    /// `path` need not exist; its folder must. A link is followed.
    explicit NewFile(const QString& path);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// `stagingFolder` holds the unnamed file where its own folder does not exist yet; it has to be
    /// on the same volume.
    int open(const QString& stagingFolder = QString());
    int write(const char* bytes, qint64 size);

    /// The open file, for what only the system can do with it.
    int descriptor() const { return m_descriptor; }

    /// Another name to be published under, on the same volume.
    void renameTo(const QString& path);

    enum class Over { nothing, existing };

    /// Flushes the file to the disk, gives it its name and flushes the folder. Over nothing it
    /// fails with EEXIST where there is a file.
    int publish(Over over);

private:
    int openNamed(const QByteArray& folder);
    int giveName(Over over);
    QByteArray partPath(const QByteArray& folder) const;

    QByteArray m_path;
    int m_descriptor = -1;
    QByteArray m_partPath; ///< where the file has a name already, or empty
};

/// Removes what killed programs left of `path` in the moment between having its bytes and having
/// its name.
void removeAbandonedParts(const QString& path);

/// A text that two files share only if they are one and the same, unchanged: its place on the
/// volume, its size and the time of its last write. Empty if there is no such file.
QByteArray fileIdentity(int descriptor);
QByteArray fileIdentity(const QString& path);

/// No process of this machine has this number, or it has ended and waits for its parent. False for
/// what is no number of a process.
bool isProcessGone(qint64 process);

/// Replaces the contents of a file atomically: afterwards it has the earlier ones or the new ones,
/// whatever happens. Keeps its permissions. Only where the folder forbids a second file is an
/// existing one written directly.
int replaceFile(const QString& path, const QByteArray& contents);

/// What the copying thread and its owner share.
struct CopyControl
{
    std::atomic<qint64> doneBytes{0}; ///< grows by each file
    std::atomic<bool> isCancelled{false};

    /// Called by the copying thread after each piece that had to be copied, if it is set.
    std::function<void(qint64 bytes)> pieceCopied;
};

/// Copies a file, with its permissions and the time of its last write, into `target`, which is
/// open; shares its blocks where the file system can. Ends with ECANCELED once it is cancelled.
/// What is copied still has to be published.
int copyInto(NewFile& target, const QString& source, CopyControl& control);

/// A folder that appears under its name with everything that is in it, or not at all. Destroyed
/// before that, it is removed; killed, the program leaves a hidden folder that
/// removeAbandonedParts() removes.
class NewFolder
{
public:
    explicit NewFolder(const QString& path);
    ~NewFolder();
    NewFolder(const NewFolder&) = delete;
    NewFolder& operator=(const NewFolder&) = delete;

    int open();

    /// Where its files are put until it is published.
    QString stagingPath() const { return m_stagingPath; }

    /// EEXIST if there is something of its name.
    int publish();

private:
    const QString m_path;
    QString m_stagingPath;
    bool m_isOpen = false;
};

/// The reason behind an error number, for `what` was to be done: "The project /a/b.ecor cannot be
/// saved" gives "The project /a/b.ecor cannot be saved: No space left on device.".
Failure failureOfError(int error, const QString& what);

/// When a file was last written, and its size since then.
struct LastWrite
{
    QDateTime time;        ///< in local time and with its offset from UTC; invalid if unknown
    qint64 sizeBytes = -1; ///< -1 if unknown
};

/// The last write of the file at `path`; links are followed. Qt's function for it reads the rules
/// of the time zone from the disk for each file anew, which takes several times as long.
LastWrite lastWrite(const QString& path);

} // namespace corv::platform
