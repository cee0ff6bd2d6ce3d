#include "Video/OpenCvWorker.h"

#include "Threads/annotate.h"
#include "Threads/post.h"
#include "Video/VideoExporter.h"
#include "Video/VideoPlayer.h"
#include "Video/frameConversion.h"
#include "Video/truncation.h"

#include <QDebug>
#include <algorithm>
#include <exception>
#include <utility>

namespace corv {
namespace {

constexpr int burstFrames = 5;

int millisecondsOf(QTime time)
{
    return QTime(0, 0, 0, 0).msecsTo(time);
}

} // namespace

OpenCvWorker::OpenCvWorker(VideoPlayer* player, std::shared_ptr<const VideoBackend> backend)
    : m_player(player), m_backend(std::move(backend)),
      m_stills([this](QTime time) { return getFrameAt(time); }, this)
{
    connect(&m_thread, &QThread::finished, [this] { annotateRelease(&m_thread); });
    moveToThread(&m_thread);
    m_thread.start(QThread::InheritPriority);
}

OpenCvWorker::~OpenCvWorker()
{
    qInfo() << "Joining worker thread..." << m_thread.isRunning();
    if (!m_thread.isRunning())
        return;
    m_stopRequested = true;
    post(this, [this] {
        m_stills.drop();
        m_thread.exit(0);
    });
    m_thread.wait();
    annotateAcquire(&m_thread);
}

void OpenCvWorker::setVideoSources(const QStringList& files, int opening)
{
    closeSources();
    m_opening = opening;
    if (files.isEmpty()) {
        qWarning() << "Empty";
        return;
    }
    qInfo() << files;
    m_sourceFiles = files;
    const QStringList failed = m_timeline.open(files, *m_backend);
    post(m_player, [player = m_player, opening, failed, fps = m_timeline.fps(),
                    totalFrames = m_timeline.totalFrames(), size = m_timeline.frameSize()] {
        player->onVideoFilesProcessed(opening, fps, totalFrames, size, failed);
    });
    if (m_timeline.isEmpty())
        return;
    m_currentSource = 0;
    post(m_player, [player = m_player, opening, file = current().file] {
        player->onCurrentFile(opening, file);
    });
}

void OpenCvWorker::closeSources()
{
    m_currentSource = noFile;
    m_stills.answerNull();
    m_stillSource.reset();
    m_stillFile = noFile;
    m_timeline.close();
    m_sourceFiles.clear();
    m_overlay.clear();
}

void OpenCvWorker::produceNextFrame(bool seekResult)
{
    if (m_currentSource == noFile) {
        qWarning() << "Invalid video capture";
        return;
    }
    if (current().capture->nextFrame() == current().frameCount && !moveToNextFile())
        return;
    VideoFileEntry& entry = current();
    const int position = entry.capture->nextFrame();
    const double fileMs = entry.capture->nextFrameMs();
    Frame frame;
    if (entry.capture->read(frame) != ReadOutcome::frame) {
        qInfo() << "Read failed in" << entry.file << "for frame " << position << " at ms"
                << truncateToInt(fileMs);
        tellPlayerToPause();
        return;
    }
    m_lastFrame = frame;
    m_lastFrameTimeMs = entry.timelineMs(fileMs);
    m_lastFrameIndex = entry.firstFrameIndex + position;
    handOverPicture(m_lastFrame, m_lastFrameIndex, m_lastFrameTimeMs, seekResult);
}

bool OpenCvWorker::moveToNextFile()
{
    if (m_currentSource + 1 >= m_timeline.size()) {
        m_currentSource = noFile;
        qInfo() << "Reached the end of stream";
        tellPlayerToPause();
        return false;
    }
    ++m_currentSource;
    if (!current().capture->seekToFrame(0)) {
        qInfo() << "Failed to seek in the beginning for" << current().file;
        tellPlayerToPause();
        return false;
    }
    post(m_player, [player = m_player, opening = m_opening, file = current().file] {
        player->onCurrentFile(opening, file);
    });
    return true;
}

void OpenCvWorker::produceFrameBurst()
{
    for (int i = 0; i < burstFrames && !isStopping(); ++i)
        produceNextFrame(false);
    post(m_player, [player = m_player] { player->onBurstFinished(); });
}

void OpenCvWorker::seekAtTime(QTime time)
{
    const int ms = millisecondsOf(time);
    if (ms == m_lastFrameTimeMs && !m_lastFrame.isNull()) {
        renderLastFrame();
        return;
    }
    const int file = m_timeline.fileForSeek(ms);
    if (file < 0) {
        qWarning() << "Seek at time" << time << "out of bounds";
        return;
    }
    m_currentSource = file;
    VideoFileEntry& entry = current();
    const double lastStart = entry.durationMs - truncateToInt(1000.0 / entry.fps);
    const double fileMs = std::max(std::min(ms - entry.startMs, lastStart), 0.0);
    entry.capture->seekToTime(fileMs);
    produceNextFrame(true);
}

void OpenCvWorker::seekAtFrameIndex(int index)
{
    if (index == m_lastFrameIndex && !m_lastFrame.isNull()) {
        renderLastFrame();
        return;
    }
    const int file = m_timeline.fileForFrame(index);
    if (file < 0) {
        qWarning() << "Seek frame index " << index << "out of bounds:" << m_timeline.totalFrames();
        return;
    }
    m_currentSource = file;
    VideoFileEntry& entry = current();
    // Below 0 first: the distance of two ints can be more than an int holds.
    const int local = std::max(index, entry.firstFrameIndex) - entry.firstFrameIndex;
    entry.capture->seekToFrame(std::min(local, entry.frameCount - 1));
    produceNextFrame(true);
}

void OpenCvWorker::renderLastFrame()
{
    handOverPicture(m_lastFrame, m_lastFrameIndex, m_lastFrameTimeMs, true);
}

// A picture that no effect will change is shown as it is, without a copy.
void OpenCvWorker::handOverPicture(const Frame& picture, int frameIndex, int timeMs,
                                   bool seekResult)
{
    try {
        VideoPlayer::PlayerFrame result{frameIndex, timeMs, {}};
        if (m_overlay.changesPictures(m_settings)) {
            toBgr(picture, m_effectFrame);
            m_overlay.applyPictureEffects(m_effectFrame, timeMs, m_settings, false, m_reportRange);
            result.frame = cvMatToQVideoFrame(m_effectFrame);
        } else {
            m_overlay.reportRange(m_settings, m_reportRange);
            result.frame = toVideoFrame(picture);
        }
        post(m_player, [player = m_player, opening = m_opening, result, seekResult] {
            player->onFrameReady(opening, result, seekResult);
        });
    } catch (const std::exception& error) {
        qWarning() << "Giving up frame" << frameIndex << error.what();
    }
}

QImage OpenCvWorker::getFrameAt(QTime time)
{
    if (m_currentSource == noFile) {
        qWarning() << "Invalid video capture";
        return {};
    }
    const int ms = millisecondsOf(time);
    const int file = m_timeline.fileForPicture(ms);
    if (file < 0) {
        qWarning() << "Out of bounds:" << ms;
        return {};
    }
    const double fileMs = ms - m_timeline.entry(file).startMs;
    if (FrameSource* still = stillSource(file))
        return extractFrame(*still, fileMs);
    // The file cannot be opened a second time: borrow the capture of playback.
    FrameSource& playing = *current().capture;
    const int savedPosition = playing.nextFrame();
    QImage image = extractFrame(*m_timeline.entry(file).capture, fileMs);
    if (!playing.seekToFrame(savedPosition))
        qWarning() << "Failed to set back to original pos"
                   << savedPosition * 1000.0 / playing.fps();
    return image;
}

FrameSource* OpenCvWorker::stillSource(int file)
{
    if (m_stillFile != file) {
        m_stillSource = m_timeline.entry(file).capture->clone();
        m_stillFile = file;
    }
    return m_stillSource.get();
}

QImage OpenCvWorker::extractFrame(FrameSource& capture, double fileMs)
{
    if (!capture.seekToTime(fileMs))
        return {};
    Frame frame;
    if (capture.read(frame) != ReadOutcome::frame) {
        qInfo() << "Read failed for frame " << fileMs;
        return {};
    }
    try {
        toBgr(frame, m_stillFrame);
        // The time inside the file, not on the timeline: so saved pictures have always been made.
        m_overlay.applyPictureEffects(m_stillFrame, truncateToInt(fileMs), m_settings, false, {});
        return cvMatToQImage(m_stillFrame);
    } catch (const std::exception& error) {
        qWarning() << "Giving up frame at" << fileMs << error.what();
        return {};
    }
}

void OpenCvWorker::requestFrame(QTime time, StillFrameQueue::Callback callback)
{
    m_stills.add(time, std::move(callback));
}

bool OpenCvWorker::exportVideo(const QString& file, const std::atomic<bool>& cancelled)
{
    if (m_currentSource == noFile) {
        qWarning() << "Invalid video capture";
        return false;
    }
    if (isOneOfFiles(file, m_sourceFiles)) {
        qWarning() << "Refused to export over a file of the flight:" << file;
        return false;
    }
    VideoExporter::Hooks hooks;
    hooks.applyEffects = [this](cv::Mat& frame, int timeMs) {
        m_overlay.applyPictureEffects(frame, timeMs, m_settings, false, {});
    };
    hooks.reportProgress = [this](int exportedFrames, int totalFrames) {
        emit videoExportProgress(exportedFrames, totalFrames);
    };
    hooks.isCancelled = [this, &cancelled] {
        return cancelled.load(std::memory_order_relaxed) || isStopping();
    };
    return VideoExporter(*m_backend, m_timeline, std::move(hooks)).exportTo(file, m_currentSource);
}

void OpenCvWorker::setClock(std::shared_ptr<const FlightClock> clock)
{
    m_overlay.setClock(std::move(clock));
}

void OpenCvWorker::updateLogData(bool hasParser, const std::shared_ptr<const LogFile>& log)
{
    m_overlay.updateLogData(hasParser, log);
}

void OpenCvWorker::tellPlayerToPause()
{
    post(m_player, [player = m_player, opening = m_opening] { player->onPlaybackEnded(opening); });
}

} // namespace corv
