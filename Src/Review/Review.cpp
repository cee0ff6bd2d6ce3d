#include "Review/Review.h"

#include "Base/videoTime.h"
#include "Review/UndoSteps.h"
#include "Review/logCategory.h"
#include "Review/logPois.h"
#include "Review/proposedName.h"
#include "Review/reviewTexts.h"
#include "Threads/post.h"

#include <QDateTime>
#include <QDebug>
#include <QFileInfo>
#include <QMap>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QUndoStack>
#include <algorithm>
#include <utility>

namespace corv {
namespace {

constexpr int settledMs = 250; // a slider that is dragged changes sooner again

} // namespace

Review::Review(QObject* parent) : QObject(parent), m_undoStack(std::make_unique<QUndoStack>())
{
    m_pois.setUndoStack(m_undoStack.get());
    connect(m_undoStack.get(), &QUndoStack::indexChanged, this, &Review::undoChanged);
    connect(m_undoStack.get(), &QUndoStack::undoTextChanged, this, &Review::undoChanged);
    connect(m_undoStack.get(), &QUndoStack::redoTextChanged, this, &Review::undoChanged);
    connect(this, &Review::closing, &m_missingMedia, &MissingMedia::dismiss);
    connect(&m_missingMedia, &MissingMedia::located, this, &Review::openLocated);
    connect(&m_missingMedia, &MissingMedia::openWanted, this, &Review::openProject);
    m_settled.setSingleShot(true);
    m_settled.setInterval(settledMs);
    connect(&m_settled, &QTimer::timeout, this, &Review::refreshThumbnails);
}

// The stack outlives the model that its steps refer to, and must emit nothing at its end.
Review::~Review()
{
    m_undoStack->disconnect(this);
    m_undoStack->clear();
}

void Review::setVideoPlayer(VideoPlayer* player)
{
    if (player == m_player)
        return;
    m_player = player;
    m_pois.setVideoPlayer(player);
    if (!player)
        return;
    connect(player, &VideoPlayer::hasVideoOpenedChanged, this, &Review::videoOpened);
    connect(player, &VideoPlayer::sourceOpenError, this, &Review::videoFailed);
    connect(player, &VideoPlayer::durationChanged, this, &Review::durationKnown);
    connect(player, &VideoPlayer::irPaletteChanged, this, &Review::outdateThumbnails);
    connect(player, &VideoPlayer::showIRChanged, this, &Review::refreshThumbnails);
    connect(player, &VideoPlayer::thermalStatusChanged, this, &Review::refreshThumbnails);
    followProperties(player);
}

void Review::outdateThumbnails()
{
    m_hasOldPictures = true;
    m_settled.start();
}

/// The pictures that were drawn with another palette or time shift, once there is an overlay to
/// draw.
void Review::refreshThumbnails()
{
    if (!m_hasOldPictures || !m_player || !m_player->drawsOverlay())
        return;
    m_hasOldPictures = false;
    m_pois.refreshThumbnails();
}

void Review::setLogParser(LogParser* logParser)
{
    if (logParser == m_logParser)
        return;
    m_logParser = logParser;
    m_pois.setLogParser(logParser);
    if (!logParser)
        return;
    connect(logParser, &LogParser::manualLogTimeOffsetChanged, this, &Review::outdateThumbnails);
    connect(logParser, &LogParser::logParsingComplete, this, &Review::logParsed);
    connect(logParser, &LogParser::logParsingProgress, this, &Review::logProgressed);
    followProperties(logParser);
}

/// Whatever a project keeps of the player and the parser, by the signals that they have.
void Review::followProperties(QObject* object)
{
    const QMetaMethod follower = QMetaMethod::fromSignal(&Review::propertiesChanged);
    for (const char* name : {"contrast", "brightness", "showIR", "irOverlayTransparent",
                             "autoIRMapping", "irMappingMinValue", "irMappingMaxValue", "irPalette",
                             "irOffsetX", "irOffsetY", "manualLogTimeOffset", "flightNaming"}) {
        const QMetaObject* const meta = object->metaObject();
        const QMetaProperty property = meta->property(meta->indexOfProperty(name));
        if (property.isValid() && property.hasNotifySignal())
            connect(object, property.notifySignal(), this, follower);
    }
}

void Review::setCurves(const QStringList& curves)
{
    if (curves == m_curves)
        return;
    m_curves = curves;
    emit curvesChanged();
    emit propertiesChanged();
}

void Review::setProjectFiles(ProjectFileLoader* projectFiles)
{
    if (projectFiles == m_projectFiles)
        return;
    m_projectFiles = projectFiles;
    if (!projectFiles)
        return;
    connect(projectFiles, &ProjectFileLoader::copyingChanged, this, &Review::copyingChanged);
    connect(projectFiles, &ProjectFileLoader::copyProgress, this,
            [this](qint64 done, qint64 total) {
                if (m_copyJob)
                    m_copyJob->report(done, total);
            });
}

QStringList Review::openedFiles() const
{
    QStringList files = m_openedParts;
    if (m_logParser && !isNoLog(m_logParser->source()))
        files << m_logParser->source();
    if (!m_projectPath.isEmpty())
        files << m_projectPath;
    return files;
}

// --- Opening ---------------------------------------------------------------------------------

void Review::whenOpened(const QString& videoPath, const QStringList& parts,
                        std::function<void()> continuation)
{
    m_openProblem.reset();
    emit closing();
    if (m_player->hasVideoOpened() && m_openedVideo == videoPath &&
        (parts.isEmpty() || parts == m_openedParts)) {
        continuation();
        return;
    }
    m_awaitedVideo = videoPath;
    m_continuation = std::move(continuation);
    // The player opens no file again that it is playing, or that it failed to open.
    if (m_player->source() == videoPath)
        m_player->close();
    // Or the flight would begin with the last picture of the one before.
    m_player->forgetLastFrame();
    if (!parts.isEmpty())
        m_player->setNextFiles(parts);
    m_player->setSource(videoPath);
}

void Review::videoOpened(bool isOpen)
{
    m_openedVideo = isOpen ? m_player->source() : QString();
    m_openedParts = isOpen ? m_player->sourceFiles() : QStringList();
    m_unopenedParts.clear();
    m_missingLog.clear();
    emit openedVideoChanged();
    // Left behind by a video that could not be opened, it must not take the next one for its own.
    if (!isOpen || m_awaitedVideo != m_openedVideo || !m_continuation)
        return;
    m_awaitedVideo.clear();
    const auto continuation = std::exchange(m_continuation, nullptr);
    continuation();
}

void Review::videoFailed(const QString& file)
{
    std::optional<Failure> cause = fileProblem(QStringLiteral("The video"), file);
    const std::optional<Failure>& reason = m_player->sourceOpenFailure();
    if (!cause && reason && reason->kind == Failure::Kind::noMemory)
        cause = reason;
    // Else the file is there and can be read, so it is its contents.
    const Failure contents{Failure::Kind::notRecognised,
                           QStringLiteral("It is no video, or it is damaged. If it is still being "
                                          "copied, open it again afterwards.")};
    emit problem(tr("Error"),
                 withCause(QStringLiteral("Video file %1 could not be read.").arg(file),
                           cause.value_or(contents)));
    emit openFailed(cause.value_or(brokenVideo(file)));
}

void Review::durationKnown()
{
    if (m_logParser && msOfTime(m_player->duration()) > 0)
        m_logParser->setDuration(m_player->duration());
}

void Review::openFlight(const QString& videoPath, const QString& logPath)
{
    if (!isFreeToChange())
        return;
    close();
    whenOpened(videoPath, {}, [this, logPath] {
        resetCorrections();
        emit started();
        if (isNoLog(logPath))
            finishOpening();
        else
            parseLog(logPath, false);
    });
}

bool Review::openProject(const QString& path)
{
    if (!isFreeToChange())
        return false;
    const QVariantMap loaded = m_projectFiles->loadProject(path);
    const std::optional<Failure> cause = m_projectFiles->loadProblem();
    const ProjectContents project = m_projectFiles->contents();
    QString text;
    if (!loaded.value(QStringLiteral("loaded")).toBool())
        text = QStringLiteral("Failed to load project. Corrupt project file.");
    else
        qCInfo(lcReview) << "Project opened";
    if (text.isEmpty() && !project.videoFileExists())
        text = missingFileText(QStringLiteral("video"), project.videoFile);
    if (!text.isEmpty()) {
        if (project.namesVideo)
            m_missingMedia.offer(path, project);
        emit problem(tr("Error"), withCause(text, cause));
        emit openFailed(cause.value_or(Failure{Failure::Kind::other, text}));
        return false;
    }
    openContents(path, project);
    return true;
}

void Review::openContents(const QString& path, const ProjectContents& project)
{
    whenOpened(project.videoFile, project.openableParts(),
               [this, path, project] { restore(path, project); });
}

void Review::openLocated(const QString& path, const ProjectContents& project)
{
    if (!project.videoFileExists() || !isFreeToChange())
        return;
    emit notice(tr("Missing files found. Save the project to keep their places."));
    openContents(path, project);
}

void Review::restore(const QString& path, const ProjectContents& project)
{
    m_logParser->closeLog();
    m_player->updateLogData();
    m_undoStack->clear();
    resetCorrections();
    const bool hasLog = project.namesLog && project.logFileExists();
    m_pois.clear();
    if (hasLog)
        m_pois.holdThumbnails();
    m_pois.setFromList(project.pois.value_or(QVariantList()));
    bindToProject(path);
    m_copies = {};
    m_unopenedParts = project.parts.mid(project.openableParts().size());
    m_missingLog = project.namesLog && !hasLog ? project.logFile : QString();
    m_missingMedia.offer(path, project);
    if (!m_unopenedParts.isEmpty())
        emit notice(tr("A part of the flight is missing: %1. The flight ends before it.")
                        .arg(m_unopenedParts.first()));
    const ReviewProperties properties = ReviewProperties::fromJson(
        project.properties, ReviewProperties::of(*m_player, *m_logParser));
    m_logParser->setFlightNaming(properties.naming());
    properties.applyTo(*m_player);
    if (hasLog)
        parseLog(project.logFile, true);
    // Again: the parse keeps it instead of the names in the log.
    m_logParser->setManualLogTimeOffset(properties.manualLogTimeOffset);
    m_logParser->setFlightNaming(properties.naming());
    setCurves(curvesIn(project.properties).value_or(m_curves));
    emit adjustmentsChanged();
    emit started();
    if (hasLog)
        return;
    if (project.namesLog) {
        m_openProblem = fileProblem(QStringLiteral("The log"), project.logFile);
        emit problem(tr("Error"), withCause(missingFileText(QStringLiteral("log"), project.logFile),
                                            m_openProblem));
    }
    finishOpening();
}

void Review::attachLog(const QString& path)
{
    resetCorrections();
    parseLog(path, false);
}

void Review::parseLog(const QString& path, bool ignoreNaming)
{
    if (m_logJob)
        m_logJob->fail({Failure::Kind::cancelled, tr("Another log was opened.")});
    m_logJob = m_jobs.start(Job::Kind::log, tr("Read %1").arg(QFileInfo(path).fileName()));
    m_logParser->setIsParsing(true);
    m_logParser->parseLog(path, ignoreNaming);
}

void Review::logProgressed(int, int done, int total)
{
    if (m_logJob)
        m_logJob->report(done, total);
}

void Review::logParsed(bool result)
{
    m_logParser->setIsParsing(false);
    qCInfo(lcReview) << "Log parsing complete";
    if (!result) {
        const std::optional<Failure>& cause = m_logParser->failure();
        m_openProblem = cause.value_or(
            Failure{Failure::Kind::other,
                    QStringLiteral("The log %1 cannot be read.").arg(m_logParser->source())});
        if (m_logJob)
            m_logJob->fail(*m_openProblem);
        emit problem(tr("Error"), withCause(QStringLiteral("Log file could not be read."), cause));
    } else {
        if (m_logJob)
            m_logJob->succeed();
        if (m_logParser->logProbablyNotMatching())
            emit warning(tr("Flight data match issue"),
                         QStringLiteral("The log file that was just loaded does not match with the "
                                        "currently opened video.\n\nData is available for playback "
                                        "but may not be related to the flight seen on the video."));
        m_pois.addMissingFromLog(PoiModel::As::loading);
        m_player->updateLogData();
    }
    m_logJob = nullptr;
    // Not before: their pictures show the overlay of this log.
    m_hasOldPictures = false;
    m_pois.releaseThumbnails();
    finishOpening();
}

/// Not before the player has said everything about the video that it opens.
void Review::finishOpening()
{
    post(this, [this] {
        if (!m_openedVideo.isEmpty())
            emit opened();
    });
}

/// What is being copied is the flight that is open.
bool Review::isFreeToChange()
{
    if (!m_projectFiles->isCopying())
        return true;
    emit notice(tr("The files of the flight are still being copied."));
    return false;
}

void Review::close()
{
    if (!isFreeToChange())
        return;
    emit closing();
    m_continuation = nullptr;
    m_awaitedVideo.clear();
    m_player->close();
    m_logParser->closeLog();
    if (m_logJob)
        m_logJob->fail({Failure::Kind::cancelled, tr("The flight was closed.")});
    m_logJob = nullptr;
    m_pois.clear();
    m_undoStack->clear();
    m_openedVideo.clear();
    m_openedParts.clear();
    m_copies = {};
    bindToProject(QString());
    emit openedVideoChanged();
}

// --- Saving ----------------------------------------------------------------------------------

bool Review::save(const QString& path)
{
    return saveProject(path, Save::plain);
}

bool Review::saveAs(const QString& path)
{
    return saveProject(path, Save::as);
}

bool Review::saveCopy(const QString& path)
{
    return saveProject(path, Save::copy);
}

bool Review::saveProject(const QString& path, Save mode)
{
    if (!m_player->hasVideoOpened() || path.isEmpty())
        return false;
    return isFreeToChange() && writeProject(path, mode);
}

bool Review::writeProject(const QString& path, Save mode)
{
    const ProjectFileLoader::SavedFiles sources = filesToSave();
    QVariantMap project = contents();
    project.insert(QStringLiteral("parts"), sources.parts);
    const bool wantsCopies = mode != Save::plain;
    const QString name = QFileInfo(path).fileName();
    QPointer<Job> job = m_jobs.start(Job::Kind::saving, tr("Save %1").arg(name));
    const bool hasRoom =
        wantsCopies && m_projectFiles->canSourceFilesBeCopied(sources.log, sources.video, path);
    const bool isCopied = hasRoom && m_projectFiles->copySourceFilesAndSaveProject(
                                         sources.log, sources.video, path, project);
    if (!hasRoom)
        m_projectFiles->saveProject(sources.log, sources.video, path, project);
    const Status written = m_projectFiles->lastSave();
    if (job && written)
        job->succeed(tr("%1 is saved.").arg(name));
    else if (job)
        job->fail(written.failure());
    if (!written) {
        emit problem(tr("Project not saved"),
                     tr("%1\n\nThe review is still open and unsaved. Save it in another place.")
                         .arg(written.failure().sentence));
        return false;
    }
    if (mode != Save::copy) {
        m_copies = m_projectFiles->savedFiles();
        m_copiedFrom = {m_logParser->source(), m_openedVideo, m_openedParts};
        bindToProject(path);
        emit saved();
    }
    if (wantsCopies && !isCopied) {
        const std::optional<Failure> cause =
            hasRoom ? m_projectFiles->copyProblem()
                    : Failure{Failure::Kind::noRoom,
                              tr("There is not enough free space beside the project.")};
        emit warning(tr("Error copying files to a new destination"),
                     withCause(notCopiedText(sources.video, sources.log), cause));
    }
    return true;
}

ProjectFileLoader::SavedFiles Review::filesToSave() const
{
    ProjectFileLoader::SavedFiles files{m_logParser->source(), m_openedVideo,
                                        m_openedParts + m_unopenedParts};
    if (isNoLog(files.log))
        files.log = m_missingLog;
    if (m_copies.video.isEmpty() || m_copiedFrom.video != m_openedVideo)
        return files;
    files.video = m_copies.video;
    files.parts = m_copies.parts;
    // A log that was opened since then has no copy yet.
    if (m_copiedFrom.log == m_logParser->source())
        files.log = m_copies.log;
    return files;
}

QVariantMap Review::contents() const
{
    QVariantMap properties = ReviewProperties::of(*m_player, *m_logParser).toJson();
    putCurves(m_curves, &properties);
    return {{QStringLiteral("properties"), properties}, {QStringLiteral("poi"), m_pois.list()}};
}

void Review::bindToProject(const QString& path)
{
    if (path == m_projectPath)
        return;
    m_projectPath = path;
    emit projectPathChanged();
}

void Review::copyingChanged(bool isCopying)
{
    if (isCopying) {
        m_copyJob = m_jobs.start(Job::Kind::copying, tr("Copy the files of the flight"),
                                 Job::Unit::bytes, [this] { m_projectFiles->cancelCopying(); });
    } else if (m_copyJob) {
        Job* const job = std::exchange(m_copyJob, nullptr);
        const std::optional<Failure>& failure = m_projectFiles->copyProblem();
        if (failure)
            job->fail(*failure);
        else
            job->succeed(tr("All files of the flight are beside the project."));
    }
    emit copyJobChanged();
}

// --- The rest of a review --------------------------------------------------------------------

bool Review::canUndo() const
{
    return m_undoStack->canUndo();
}

bool Review::canRedo() const
{
    return m_undoStack->canRedo();
}

QString Review::undoText() const
{
    return m_undoStack->undoText();
}

QString Review::redoText() const
{
    return m_undoStack->redoText();
}

void Review::undo()
{
    m_undoStack->undo();
}

void Review::redo()
{
    m_undoStack->redo();
}

void Review::addMissingPoisFromLog()
{
    m_pois.addMissingFromLog(PoiModel::As::step);
}

int Review::missingPoisInLog() const
{
    return m_pois.missingInLog(msOfTime(m_player->duration()));
}

int Review::addablePoisFromLog() const
{
    return m_pois.addableFromLog(msOfTime(m_player->duration()));
}

bool Review::fileExists(const QString& path) const
{
    return QFileInfo::exists(path);
}

QString Review::proposedName() const
{
    return corv::proposedName(ReviewProperties::of(*m_player, *m_logParser), m_openedVideo,
                              QFileInfo(m_openedVideo).lastModified().date());
}

QString Review::proposedFrameName() const
{
    return corv::proposedFrameName(proposedName(), m_player->timePosition());
}

void Review::nameFlight(const QString& missionName, const QString& flightName, int flightNumber)
{
    ReviewProperties names;
    names.hasNaming = flightNumber > 0 || !missionName.isEmpty() || !flightName.isEmpty();
    names.missionName = missionName;
    names.flightName = flightName;
    names.flightNumber = std::max(flightNumber, 0);
    const QVariantMap before = m_logParser->flightNaming();
    const QVariantMap after = names.naming();
    if (ReviewProperties::of(*m_player, *m_logParser).naming() != after)
        m_undoStack->push(new NamingStep(*m_logParser, before, after));
}

void Review::resetCorrections()
{
    m_player->setIrOffsetX(0);
    m_player->setIrOffsetY(0);
    m_logParser->setManualLogTimeOffset(0);
    emit adjustmentsChanged();
}

QVariantList Review::allPois() const
{
    const int durationMs = msOfTime(m_player->duration());
    QMap<int, QVariantMap> poisByTime;
    for (const Poi& poi : m_pois.pois())
        poisByTime[msOfTime(poi.time)] = listForm(poi);
    int number = 0;
    for (const int ms : logPoiTimesMs(*m_logParser)) {
        ++number;
        // One from before the start of the video or past its end has no frame.
        if (ms >= 0 && ms < durationMs && !poisByTime.contains(ms))
            poisByTime[ms] = listForm(
                {timeOfMs(ms), QStringLiteral("POI %1").arg(number), {}, {}, PoiOrigin::log});
    }
    QVariantList list;
    for (const QVariantMap& poi : qAsConst(poisByTime))
        list << poi;
    return list;
}

} // namespace corv
