#pragma once

#include "Base/limits.h"

#include <QObject>
#include <QString>
#include <QVariantMap>

namespace corv {

/// Reads and writes project files: which video and which log belong to a flight, the settings the
/// user chose for it and its marks. Copies the two media files beside a project on demand. Keeps no
/// state; declared once in the main window and called on the interface thread, which every call
/// holds until it is done.
class ProjectFileLoader : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// A project that is larger than this is not read at all: no flight has marks and settings for
    /// it, and parsing takes several times its size in memory.
    static constexpr qint64 largestProjectBytes = limits::projectBytes;

    /// More marks than a two-hour flight has distinct frames are cut off on loading.
    static constexpr int mostMarks = limits::poisInProject;

    /// Writes the project, replacing an existing one atomically: whatever happens on the way, the
    /// earlier project or the new one is there afterwards. Only where the folder forbids a second
    /// file is the old one written directly.
    ///
    /// `flightProperties` holds "properties", a map that is passed through, and "poi", the marks in
    /// list form. A failure is logged and reported to nobody.
    Q_INVOKABLE void saveProject(QString logPath, QString videoPath, QString fileProjectPath,
                                 QVariantMap flightProperties);

    /// The project's content: "loaded" (whether the file could be opened, nothing more), and if it
    /// could "videoFile", "logFile" (resolved against the project's folder), "videoFileExists",
    /// "logFileExists", "properties" and, if the project has a list of marks, "poi". A broken file
    /// opens as far as it makes sense.
    Q_INVOKABLE QVariantMap loadProject(QString fileProjectPath);

    /// Whether both media files fit onto the volume of the project's folder with room to spare.
    Q_INVOKABLE bool canSourceFilesBeCopied(QString originalLogPath, QString originalVideoPath,
                                            QString fileProjectPath);

    /// Copies log and video beside the project, named after it, and saves the project with the
    /// copies; a file whose copy fails, as it does when the target exists, stays referred to where
    /// it is. Returns whether both were copied.
    Q_INVOKABLE bool copySourceFilesAndSaveProject(QString originalLogPath,
                                                   QString originalVideoPath,
                                                   QString fileProjectPath,
                                                   QVariantMap flightProperties);
};

/// Whether files of these sizes fit into the free space, all in bytes; a free space of -1 is
/// unknown and counts as enough. Files that would fill the volume to its last byte do not fit.
bool sourceFilesFit(qint64 logBytes, qint64 videoBytes, qint64 freeBytes);

} // namespace corv
