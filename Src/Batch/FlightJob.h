#pragma once

#include "Base/Result.h"
#include "Log/FlightNamingEvent.h"

#include <QByteArray>
#include <QDate>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

namespace corv {

/// One flight to be worked on without a window: its files, and the folder that its results go to.
/// A value, and the whole of what travels to another machine; files are absolute paths, which must
/// lead to the same files there.
struct FlightJob
{
    /// Name of the flight's folder below the output folder: one path component that every file
    /// system takes.
    QString folder;

    QStringList videos; ///< the files of the flight in their order, at least one
    QString log;        ///< empty if none was found
    QString evidence;   ///< how sure the pairing is, in the words of the search
    bool isDoubtful = false;
    FlightNamingEvent naming;
    QDate date; ///< of the recording, by the time of its first file

    /// The files that the job reads: videos, then the log.
    QStringList files() const;

    QJsonObject toJson() const;

    /// A job from outside. Refuses one whose folder leads out of the output folder, that names no
    /// video, or that another version of the program wrote.
    static Result<FlightJob> fromJson(const QByteArray& text);
};

/// `name` as a part of a folder's name: without separators, characters that vfat refuses, control
/// characters, blanks and dots at its ends, and no longer than 60 characters. Empty if nothing is
/// left.
QString folderNamePart(const QString& name);

/// "<date>_<mission>_<flight>_<number>"; without a naming "<date>_<name of the first video>".
QString flightFolderName(const FlightJob& job);

/// Gives each job its folder name. A flight that has a folder in `outFolder` keeps it. The others
/// avoid what other flights have there, and one another: they get "_2", "_3" ... in the order of
/// their videos' paths, so that the same card gives the same names again.
void nameFolders(QList<FlightJob>* jobs, const QString& outFolder = {});

} // namespace corv
