#pragma once

#include "Base/Result.h"
#include "Project/ProjectFileLoader.h"
#include "Review/JobList.h"
#include "Review/MissingMedia.h"
#include "Review/PoiModel.h"
#include "Review/ReviewProperties.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVariantMap>
#include <functional>
#include <memory>
#include <optional>

class QUndoStack;

namespace corv {

/// One open flight: the order in which a video, its log and its project open, are saved and close.
/// The window and `vistrel-cli` are two faces of it. It holds no window and no picture of its own.
///
/// The player, the parser and the project files are given to it, set once, not owned, and keep
/// their own properties and signals. Interface thread only. What a person has to know comes by
/// `problem`, `warning` and `notice`.
class Review : public QObject
{
    Q_OBJECT
    Q_PROPERTY(corv::VideoPlayer* videoPlayer READ videoPlayer WRITE setVideoPlayer)
    Q_PROPERTY(corv::LogParser* logParser READ logParser WRITE setLogParser)
    Q_PROPERTY(corv::ProjectFileLoader* projectFiles READ projectFiles WRITE setProjectFiles)
    Q_PROPERTY(corv::PoiModel* pois READ pois CONSTANT)
    Q_PROPERTY(corv::JobList* jobs READ jobs CONSTANT)
    Q_PROPERTY(corv::MissingMedia* missingMedia READ missingMedia CONSTANT)
    Q_PROPERTY(QStringList curves READ curves WRITE setCurves NOTIFY curvesChanged)
    Q_PROPERTY(QString projectPath READ projectPath NOTIFY projectPathChanged)
    Q_PROPERTY(QString openedVideo READ openedVideo NOTIFY openedVideoChanged)
    Q_PROPERTY(corv::Job* copyJob READ copyJob NOTIFY copyJobChanged)
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY undoChanged)
    Q_PROPERTY(bool canRedo READ canRedo NOTIFY undoChanged)
    Q_PROPERTY(QString undoText READ undoText NOTIFY undoChanged)
    Q_PROPERTY(QString redoText READ redoText NOTIFY undoChanged)

public:
    explicit Review(QObject* parent = nullptr);
    ~Review() override;

    VideoPlayer* videoPlayer() const { return m_player; }
    void setVideoPlayer(VideoPlayer* player);
    LogParser* logParser() const { return m_logParser; }
    void setLogParser(LogParser* logParser);
    ProjectFileLoader* projectFiles() const { return m_projectFiles; }
    void setProjectFiles(ProjectFileLoader* projectFiles);
    PoiModel* pois() { return &m_pois; }
    JobList* jobs() { return &m_jobs; }

    /// The missing files of the project opened last, and the search for them. Files that it finds
    /// are opened, and the next save names them.
    MissingMedia* missingMedia() { return &m_missingMedia; }

    /// The curves of the log that are shown, by name, kept by the project.
    const QStringList& curves() const { return m_curves; }
    void setCurves(const QStringList& curves);

    /// The project that the work is bound to; empty for none.
    QString projectPath() const { return m_projectPath; }

    /// The first of the files that were opened; the player's `source` moves on from file to file.
    QString openedVideo() const { return m_openedVideo; }

    /// All files that the open flight was read from.
    QStringList openedFiles() const;

    // --- Opening. Each ends in `opened` or in `openFailed`, perhaps before it returns. ---

    /// Closes what is open and opens a video and its log; without a log, also where `logPath` says
    /// "no_match", the flight has none.
    Q_INVOKABLE void openFlight(const QString& videoPath, const QString& logPath);

    /// Opens a project and restores what it keeps once its video is open. What is open stays until
    /// then, and stays open if the project cannot be opened. False if it fails at once.
    Q_INVOKABLE bool openProject(const QString& path);

    /// Reads a log for the open video. Resets the corrections.
    Q_INVOKABLE void attachLog(const QString& path);

    /// What follows once the parser has ended: the overlay, the points of interest of the log, and
    /// the thumbnails that waited for them. Called by the parser's signal.
    Q_INVOKABLE void logParsed(bool result);

    /// Closes everything. Adjustments stay.
    Q_INVOKABLE void close();

    /// Why the flight is open without the log that belongs to it: the file is missing or cannot be
    /// read. Nothing if it is complete.
    const std::optional<Failure>& openProblem() const { return m_openProblem; }

    // --- Saving. True if the project was written. Nothing happens while no video is open. ---

    /// Saves and binds the work to the file.
    Q_INVOKABLE bool save(const QString& path);

    /// The same, with the media copied beside the project.
    Q_INVOKABLE bool saveAs(const QString& path);

    /// Media and project as for `saveAs`; the work stays bound to its own project.
    Q_INVOKABLE bool saveCopy(const QString& path);

    /// Puts back what a project, or a recovery of unsaved work, keeps of the video that is open.
    void restore(const QString& projectPath, const ProjectContents& project);

    /// Calls `continuation` once the video is open; at once if it is. `parts` are all files of the
    /// flight where they are known; without them it consists of those that follow by number.
    void whenOpened(const QString& videoPath, const QStringList& parts,
                    std::function<void()> continuation);

    /// The files that a project saved now would name.
    ProjectFileLoader::SavedFiles filesToSave() const;

    /// What a project keeps besides its files: "properties" and "poi".
    QVariantMap contents() const;

    // --- The rest of a review ---

    /// Adds the points of interest of the log that are missing, as one step.
    Q_INVOKABLE void addMissingPoisFromLog();

    /// How many points of interest the two choices of a restore add.
    Q_INVOKABLE int missingPoisInLog() const;
    Q_INVOKABLE int addablePoisFromLog() const;

    /// Names the flight, as one step. A number of 0 is none; two empty names and no number leave
    /// the flight without a name.
    Q_INVOKABLE void nameFlight(const QString& missionName, const QString& flightName,
                                int flightNumber);

    /// Sets the overlay's offsets and the time shift to 0.
    Q_INVOKABLE void resetCorrections();

    /// The points of interest, in list form, with those of the log that are not in the model yet:
    /// what a window shows once all frames have arrived.
    QVariantList allPois() const;

    bool canUndo() const;
    bool canRedo() const;

    /// What an undo takes back, and what a redo does again: "delete 'Hot cell'".
    QString undoText() const;
    QString redoText() const;
    Q_INVOKABLE void undo();
    Q_INVOKABLE void redo();

    /// Whether a file would be replaced by one of this name.
    Q_INVOKABLE bool fileExists(const QString& path) const;

    /// The names, without a suffix, to propose for what is saved of this flight, and for the
    /// picture on screen. The date is that of the video's last write.
    Q_INVOKABLE QString proposedName() const;
    Q_INVOKABLE QString proposedFrameName() const;

    /// The copying that goes on, or null.
    Job* copyJob() const { return m_copyJob; }

signals:
    void projectPathChanged();
    void curvesChanged();
    void openedVideoChanged();
    void copyJobChanged();
    void undoChanged();

    /// The flight is open, and its log read if it has one.
    void opened();

    /// The contents of a flight or project have been taken over; what comes now is the user's work.
    void started();

    /// The project was written, and the work is bound to it.
    void saved();

    /// An adjustment or the flight's names, which a project keeps.
    void propertiesChanged();

    /// What is open is about to close or to be replaced.
    void closing();
    void openFailed(const corv::Failure& failure);

    /// The adjustments were restored or reset: controls that do not follow by themselves show them.
    void adjustmentsChanged();

    /// Shown in a box of their own.
    void problem(const QString& title, const QString& text);
    void warning(const QString& title, const QString& text);

    /// Shown in passing.
    void notice(const QString& text);

private:
    enum class Save { plain, as, copy };

    void followProperties(QObject* object);
    void outdateThumbnails();
    void refreshThumbnails();
    void videoOpened(bool isOpen);
    void videoFailed(const QString& file);
    void durationKnown();
    void parseLog(const QString& path, bool ignoreNaming);
    void logProgressed(int stage, int done, int total);
    bool saveProject(const QString& path, Save mode);
    bool writeProject(const QString& path, Save mode);
    void finishOpening();
    void openContents(const QString& path, const ProjectContents& project);
    void openLocated(const QString& path, const ProjectContents& project);
    void bindToProject(const QString& path);
    void copyingChanged(bool isCopying);
    bool isFreeToChange();

    QPointer<VideoPlayer> m_player;
    QPointer<LogParser> m_logParser;
    QPointer<ProjectFileLoader> m_projectFiles;
    std::unique_ptr<QUndoStack> m_undoStack; // before the model, whose steps it holds
    PoiModel m_pois;
    JobList m_jobs;
    MissingMedia m_missingMedia{m_jobs};
    QPointer<Job> m_copyJob;
    QPointer<Job> m_logJob;

    QStringList m_curves;
    bool m_hasOldPictures = false; ///< of points of interest: drawn with other settings
    QTimer m_settled;              ///< since the last of several changes of these
    QString m_projectPath;
    QString m_openedVideo;
    QStringList m_openedParts;
    QStringList m_unopenedParts; ///< of the project, from the first missing one on
    QString m_missingLog;        ///< of the project: named again by the next save
    std::optional<Failure> m_openProblem;

    // The copies that the project refers to, for as long as the same files are open.
    ProjectFileLoader::SavedFiles m_copies;
    ProjectFileLoader::SavedFiles m_copiedFrom;

    QString m_awaitedVideo;
    std::function<void()> m_continuation; ///< runs once, when the awaited video is open
};

} // namespace corv
