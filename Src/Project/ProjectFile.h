#pragma once

#include "Base/Failure.h"
#include "Base/Result.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <optional>

namespace corv {

/// What a project file says, with its paths resolved against the project's folder.
struct ProjectContents
{
    QString videoFile;
    QString logFile;

    /// All files of the flight, the video's first, where the project lists them; else empty.
    QStringList parts;

    /// False for a flight without a log, also where an old project says so in its own ways.
    bool namesLog = false;

    /// The file names a video: it is a project and not any other file.
    bool namesVideo = false;

    QVariantMap properties;
    std::optional<QVariantList> pois; ///< list form; none where the file has no list

    bool videoFileExists() const;
    bool logFileExists() const;

    /// The sizes in bytes that the files had when the project was saved, by their paths; of an old
    /// project there are none.
    QHash<QString, qint64> sizes;

    /// All files that the project names: those of the video, and the log.
    QStringList namedFiles() const;

    /// Those of them that are not there.
    QStringList missingFiles() const;

    /// The parts up to the first that is missing: past a gap, every time would mean another
    /// picture.
    QStringList openableParts() const;
};

/// The text of a path that names no log.
bool isNoLog(const QString& logPath);

/// A path without the "file:" of a URL; its leading slash stays.
QString withoutFilePrefix(const QString& path);

/// Why `path` is no regular file that can be read; none if it is one. `what` begins the sentence:
/// "The video".
std::optional<Failure> fileProblem(const QString& what, const QString& path);

} // namespace corv
