#pragma once

#include "Base/Result.h"
#include "Base/limits.h"
#include "Project/ProjectFile.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <functional>

namespace corv {

class MediaCopy;

/// Reads and writes project files: which video and which log belong to a flight, the settings the
/// user chose for it and its points of interest. Copies the media files beside a project on demand.
/// Declared once in the main window and called on the interface thread. The invokable functions
/// keep no state between them; beside them the object says how the last call of each kind went.
class ProjectFileLoader : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool copying READ isCopying NOTIFY copyingChanged)
    Q_PROPERTY(QString copyProblemText READ copyProblemText NOTIFY copyProblemChanged)

public:
    explicit ProjectFileLoader(QObject* parent = nullptr);
    ~ProjectFileLoader() override;

    /// A project that is larger than this is neither written nor read: no flight has points of
    /// interest and settings for it, and parsing takes several times its size in memory.
    static constexpr qint64 largestProjectBytes = limits::projectBytes;

    /// Nor is one with more points of interest.
    static constexpr int mostPois = limits::poisInProject;

    /// Writes the project, replacing an existing one atomically: whatever happens on the way, the
    /// earlier project or the new one is there afterwards. Only where the folder forbids a second
    /// file is the old one written directly.
    ///
    /// `flightProperties` holds "properties", a map that is passed through, "poi", the points of
    /// interest in list form, and perhaps "parts", the paths of all files of the flight, which are
    /// kept unless the names say the same. A failure is logged, and is in `lastSave` afterwards.
    Q_INVOKABLE void saveProject(QString logPath, QString videoPath, QString fileProjectPath,
                                 QVariantMap flightProperties);

    /// The project's content: "loaded" (whether the file could be opened, nothing more), and if it
    /// could "videoFile", "logFile" (resolved against the project's folder), "videoFileExists",
    /// "logFileExists", "properties" and, if the project has a list of points of interest, "poi". A
    /// broken file opens as far as it makes sense. `loadProblem` has what is wrong with it.
    Q_INVOKABLE QVariantMap loadProject(QString fileProjectPath);

    /// Whether the log and all files of the video fit onto the volume of the project's folder with
    /// room to spare.
    Q_INVOKABLE bool canSourceFilesBeCopied(QString originalLogPath, QString originalVideoPath,
                                            QString fileProjectPath);

    /// Copies log and video beside the project, named after it, a series of files into a folder
    /// under their own names, and saves the project with the copies; a file whose copy fails, as it
    /// does when the target exists, stays referred to where it is. A file that is its own target
    /// counts as copied, and a flight without a log has none to copy. Returns whether all were
    /// copied.
    ///
    /// Returns when everything is done, but runs the event loop meanwhile; `copying` is true then,
    /// and another call does nothing and returns false. Nothing half-copied remains after
    /// `cancelCopying` or a failure: of a series there is all or nothing, and where the project
    /// could not be written there are no copies.
    Q_INVOKABLE bool copySourceFilesAndSaveProject(QString originalLogPath,
                                                   QString originalVideoPath,
                                                   QString fileProjectPath,
                                                   QVariantMap flightProperties);

    Q_INVOKABLE void cancelCopying();
    bool isCopying() const { return !m_copy.isNull(); }

    /// How the last `saveProject` went, also that within a copy.
    const Status& lastSave() const { return m_lastSave; }

    /// The paths in the project that was saved last.
    struct SavedFiles
    {
        QString log;
        QString video;
        QStringList parts;
    };
    const SavedFiles& savedFiles() const { return m_savedFiles; }

    /// What the last `loadProject` found, and what is wrong with the file, if anything is.
    const ProjectContents& contents() const { return m_contents; }
    const std::optional<Failure>& loadProblem() const { return m_loadProblem; }

    /// Why the last copy was not complete; none if it was.
    const std::optional<Failure>& copyProblem() const { return m_copyProblem; }

    /// The same as a sentence, empty for none. What is in the way of a copy is known before the
    /// first byte is copied.
    QString copyProblemText() const { return m_copyProblem ? m_copyProblem->sentence : QString(); }

    /// Called by `saveProject` with the text of the file, just before that is put in place; a
    /// failure stops the saving, and is its own.
    void setAboutToSave(std::function<Status(const QByteArray& text)> aboutToSave);

    /// For tests and benchmarks: called by the copying thread after each piece.
    void setPieceCopied(std::function<void(qint64 bytes)> pieceCopied);

signals:
    void copyingChanged(bool copying);
    void copyProgress(qint64 doneBytes, qint64 totalBytes);
    void copyProblemChanged();

private:
    struct Copied;

    Copied copyLog(const QString& source, const QString& base);
    Copied copyVideo(const QStringList& parts, const QString& base);
    bool stage(const QString& source, const QString& target, Copied& copied);
    void publish(Copied& copied);
    void noteCopyProblem(const QString& path, int error);
    void noteWhatIsInTheWay(const QString& log, const QStringList& parts, const QString& base);

    Status m_lastSave;
    SavedFiles m_savedFiles;
    ProjectContents m_contents;
    std::optional<Failure> m_loadProblem;
    std::optional<Failure> m_copyProblem;
    QPointer<MediaCopy> m_copy; ///< while copying
    std::function<void(qint64)> m_pieceCopied;
    std::function<Status(const QByteArray&)> m_aboutToSave;
};

/// Whether files of these sizes fit into the free space, all in bytes; a free space of -1 is
/// unknown and counts as enough. Files that would fill the volume to its last byte do not fit.
bool sourceFilesFit(qint64 logBytes, qint64 videoBytes, qint64 freeBytes);

} // namespace corv
