#include "Video/OpenCvWorker.h"

#include "Base/arithmetic.h"
#include "Base/sameFile.h"
#include "Base/videoTime.h"
#include "Threads/annotate.h"
#include "Threads/post.h"
#include "Video/CachedFrameSource.h"
#include "Video/VideoExporter.h"
#include "Video/frameConversion.h"
#include "Video/insetBlending.h"
#include "Video/logCategory.h"
#include "Video/partialDrawing.h"
#include "Video/pictureEffects.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QTimer>
#include <algorithm>
#include <exception>
#include <utility>

namespace corv {
namespace {

constexpr int burstFrames = 5;

cv::Size sizeOf(const Frame& frame)
{
    return {frame.size.width(), frame.size.height()};
}

// From one look at the index of a file to the next, while it is being read.
constexpr int indexLookMs = 20;

// What decoding costs until it has been measured.
constexpr double assumedNsPerPixel = 2.0;

} // namespace

OpenCvWorker::OpenCvWorker(WorkerClient* client, QObject* context,
                           std::shared_ptr<const VideoBackend> backend)
    : m_client(client), m_context(context), m_backend(std::move(backend)),
      m_stills([this](QTime time, const PictureInsets& insets) { return getFrameAt(time, insets); },
               this)
{
    connect(&m_thread, &QThread::finished, [this] { annotateRelease(&m_thread); });
    moveToThread(&m_thread);
    m_thread.start(QThread::InheritPriority);
}

OpenCvWorker::~OpenCvWorker()
{
    qCInfo(lcVideo) << "Joining worker thread..." << m_thread.isRunning();
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
        qCWarning(lcVideo) << "Empty";
        return;
    }
    qCInfo(lcVideo) << files;
    m_sourceFiles = files;
    openFiles(m_openingTurn);
}

// One file after the other: a card reads two at once more slowly.
void OpenCvWorker::openFiles(int turn)
{
    if (turn != m_openingTurn)
        return;
    for (;;) {
        if (!m_openingTimeline.isMeasured()) {
            if (waitsForIndex(turn))
                return;
            m_openingTimeline.measure();
        }
        if (m_triedFiles == m_sourceFiles.size())
            break;
        const QString& file = m_sourceFiles.at(m_triedFiles++);
        const Status tried = m_openingTimeline.open(file, m_sourceFiles.size(), *m_backend);
        if (tried)
            continue;
        m_failedFiles << file;
        m_failures << tried.failure();
    }
    finishOpening();
}

bool OpenCvWorker::waitsForIndex(int turn)
{
    const FrameSource& source = *m_openingTimeline.entry(m_openingTimeline.size() - 1).capture;
    if (source.isIndexReady())
        return false;
    const double part = (m_triedFiles - 1 + source.indexProgress()) / m_sourceFiles.size();
    postToClient([opening = m_opening, part](WorkerClient& client) {
        client.onOpeningProgress(opening, part);
    });
    showFirstPicture();
    QTimer::singleShot(indexLookMs, this, [this, turn] { openFiles(turn); });
    return true;
}

void OpenCvWorker::showFirstPicture()
{
    if (std::exchange(m_firstPictureShown, true))
        return;
    Frame frame;
    if (m_openingTimeline.entry(0).capture->read(frame) != ReadOutcome::frame)
        return;
    try {
        const QSize pixels = m_openingTimeline.entry(0).capture->pixelAspectRatio();
        postToClient([opening = m_opening, pixels,
                      picture = pictureForScreen(frame, 0)](WorkerClient& client) {
            client.onFirstPicture(opening, pixels, picture);
        });
    } catch (const std::exception& error) {
        qCWarning(lcVideo) << "Giving up the first picture" << error.what();
    }
}

void OpenCvWorker::finishOpening()
{
    m_timeline = std::exchange(m_openingTimeline, {});
    OpenedTimeline opened;
    opened.failedFiles = m_failedFiles;
    opened.failures = m_failures;
    opened.fps = m_timeline.fps();
    opened.totalFrames = m_timeline.totalFrames();
    opened.durationMs = m_timeline.durationMs();
    opened.size = m_timeline.frameSize();
    if (!m_timeline.isEmpty())
        opened.pixelAspectRatio = m_timeline.entry(0).capture->pixelAspectRatio();
    if (m_timeline.size() > 1)
        opened.secondFileMs = truncateToInt(m_timeline.entry(1).startMs);
    postToClient([opening = m_opening, opened](WorkerClient& client) {
        client.onVideoFilesProcessed(opening, opened);
    });
    if (m_timeline.isEmpty())
        return;
    m_frameCostMs = opened.size.width() * opened.size.height() * assumedNsPerPixel / 1e6;
    m_currentSource = 0;
    postToClient([opening = m_opening, file = current().file](WorkerClient& client) {
        client.onCurrentFile(opening, file);
    });
}

void OpenCvWorker::closeSources()
{
    m_currentSource = noFile;
    m_stills.answerNull();
    m_stillSource.reset();
    m_stillFile = noFile;
    m_timeline.close();
    m_openingTimeline.close();
    m_sourceFiles.clear();
    m_failedFiles.clear();
    m_failures.clear();
    m_triedFiles = 0;
    m_firstPictureShown = false;
    ++m_openingTurn;
    m_overlay.clear();
}

void OpenCvWorker::produceNextFrame(bool seekResult)
{
    produceFrame(seekResult ? FrameUse::seekResult : FrameUse::playback);
}

OpenCvWorker::Produced OpenCvWorker::produceFrame(FrameUse use)
{
    if (m_currentSource == noFile) {
        qCWarning(lcVideo) << "Invalid video capture";
        return Produced::end;
    }
    if (current().capture->nextFrame() == current().frameCount && !moveToNextFile())
        return Produced::end;
    VideoFileEntry& entry = current();
    const int position = entry.capture->nextFrame();
    const double fileMs = entry.capture->nextFrameMs();
    QElapsedTimer reading;
    reading.start();
    Frame frame;
    const ReadOutcome outcome = entry.capture->read(frame);
    if (outcome == ReadOutcome::end) // fewer came than the container promises
        return moveToNextFile() ? produceFrame(use) : Produced::end;
    if (outcome == ReadOutcome::failed) {
        qCInfo(lcVideo) << "Read failed in" << entry.file << "for frame " << position << " at ms"
                        << truncateToInt(fileMs);
        endPlayback(noFrame);
        reportFailure(entry);
        return Produced::failure;
    }
    if (use == FrameUse::playback)
        m_frameCostMs += (static_cast<double>(reading.nsecsElapsed()) / 1e6 - m_frameCostMs) / 8.0;
    m_lastFrame = std::move(frame);
    m_lastFrameTimeMs = entry.timelineMs(m_lastFrame.timeMs);
    m_lastFrameIndex = entry.firstFrameIndex + m_lastFrame.index;
    m_lastFrameWasSought = false;
    return renderLastFrame(use);
}

bool OpenCvWorker::moveToNextFile()
{
    if (m_currentSource + 1 >= m_timeline.size()) {
        m_currentSource = noFile;
        qCInfo(lcVideo) << "Reached the end of stream";
        endPlayback(std::max(m_lastFrameIndex, 0));
        return false;
    }
    leaveFileFor(m_currentSource + 1);
    if (!current().capture->seekToFrame(0)) {
        qCInfo(lcVideo) << "Failed to seek in the beginning for" << current().file;
        endPlayback(noFrame);
        reportFailure(current());
        return false;
    }
    postToClient([opening = m_opening, file = current().file](WorkerClient& client) {
        client.onCurrentFile(opening, file);
    });
    return true;
}

// Each source keeps frames for steps back; only the one that plays needs them.
void OpenCvWorker::leaveFileFor(int file)
{
    if (m_currentSource != noFile && m_currentSource != file)
        current().capture->freeMemory();
    m_currentSource = file;
}

void OpenCvWorker::produceFrameBurst()
{
    for (int i = 0; i < burstFrames && !isStopping(); ++i)
        produceNextFrame(false);
    postToClient([](WorkerClient& client) { client.onBurstFinished(); });
}

void OpenCvWorker::redraw(int shownFrame)
{
    // Without a place, which reading on to the end has closed, it goes to the frame.
    if (m_currentSource != noFile && m_lastFrameWasSought && !m_lastFrame.isNull())
        renderLastFrame(FrameUse::redraw);
    else if (!m_timeline.isEmpty())
        goToFrame(std::clamp(shownFrame, 0, std::max(m_timeline.totalFrames() - 1, 0)),
                  FrameUse::redraw);
    postToClient([opening = m_opening](WorkerClient& client) { client.onRedrawFinished(opening); });
}

void OpenCvWorker::forgetLastFrame()
{
    m_lastFrame = Frame();
    m_lastFrameTimeMs = std::numeric_limits<int>::min();
    m_lastFrameIndex = std::numeric_limits<int>::min();
}

OpenCvWorker::Produced OpenCvWorker::renderLastFrame(FrameUse use)
{
    m_lastFrameWasSought = m_lastFrameWasSought || use != FrameUse::playback;
    return handOverPicture(m_lastFrame, m_lastFrameIndex, m_lastFrameTimeMs, use);
}

OpenCvWorker::Produced OpenCvWorker::handOverPicture(const Frame& picture, int frameIndex,
                                                     int timeMs, FrameUse use)
{
    try {
        PlayerFrame result{frameIndex, timeMs, pictureForScreen(picture, timeMs), nullptr};
        result.thermal = m_overlay.reading(sizeOf(picture), m_settings);
        postToClient([opening = m_opening, result, use](WorkerClient& client) {
            client.onFrameReady(opening, result, use);
        });
        return Produced::frame;
    } catch (const std::exception& error) {
        qCWarning(lcVideo) << "Giving up frame" << frameIndex << error.what();
        return Produced::failure;
    }
}

// A picture that no effect will change is shown as it is, without a copy. Where only the overlay
// changes it, only its part is converted.
QVideoFrame OpenCvWorker::pictureForScreen(const Frame& picture, int timeMs)
{
    if (!changesPictures(m_overlay, m_settings)) {
        m_overlay.reportRange(m_settings, m_reportRange);
        return toVideoFrame(picture);
    }
    const cv::Size size = sizeOf(picture);
    const cv::Rect part = evenPart(changedPart(m_overlay, size, m_settings), size);
    if (canDrawOnPart(picture) && !part.empty() && part.size() != size) {
        m_overlay.reportRange(m_settings, m_reportRange);
        return toVideoFrame(drawOnPart(picture, part, [&](cv::Mat& bgr) {
            m_overlay.drawOnPart(bgr, part.tl(), size, timeMs, m_settings);
        }));
    }
    toBgr(picture, m_effectFrame);
    applyPictureEffects(m_overlay, m_effectFrame, timeMs, m_settings, false, m_reportRange);
    return toVideoFrame(m_effectFrame, picture);
}

QImage OpenCvWorker::getFrameAt(QTime time, const PictureInsets& insets)
{
    if (m_currentSource == noFile) {
        qCWarning(lcVideo) << "Invalid video capture";
        return {};
    }
    const int ms = msOfTime(time);
    const int file = m_timeline.fileForPicture(ms);
    if (file < 0) {
        qCWarning(lcVideo) << "Out of bounds:" << ms;
        return {};
    }
    VideoFileEntry& entry = m_timeline.entry(file);
    const double fileMs = ms - entry.startMs;
    if (FrameSource* still = stillSource(file))
        return extractFrame(*still, entry, fileMs, insets);
    // The file cannot be opened a second time: borrow the capture of playback.
    FrameSource& playing = *current().capture;
    const int savedPosition = playing.nextFrame();
    QImage image = extractFrame(*entry.capture, entry, fileMs, insets);
    if (!playing.seekToFrame(savedPosition))
        qCWarning(lcVideo) << "Failed to set back to original pos"
                           << savedPosition * 1000.0 / playing.fps();
    return image;
}

FrameSource* OpenCvWorker::stillSource(int file)
{
    if (m_stillFile != file) {
        // Keeps one frame: the next request is often for it again, whose group of pictures would
        // have to be decoded anew.
        std::unique_ptr<FrameSource> source = m_timeline.entry(file).capture->clone();
        m_stillSource =
            source ? std::make_unique<CachedFrameSource>(std::move(source), 0) : nullptr;
        m_stillFile = file;
    }
    return m_stillSource.get();
}

QImage OpenCvWorker::extractFrame(FrameSource& capture, const VideoFileEntry& entry, double fileMs,
                                  const PictureInsets& insets)
{
    if (!capture.seekToTime(fileMs))
        return {};
    Frame frame;
    if (capture.read(frame) != ReadOutcome::frame) {
        qCInfo(lcVideo) << "Read failed for frame " << fileMs;
        return {};
    }
    try {
        toBgr(frame, m_stillFrame);
        // The time inside the file is how saved pictures have always been made.
        const int overlayMs =
            m_settings.thermalAsOnScreen ? entry.timelineMs(frame.timeMs) : truncateToInt(fileMs);
        applyPictureEffects(m_overlay, m_stillFrame, overlayMs, m_settings, false, {});
        const PictureInset::Moment moment = momentOf(entry.timelineMs(frame.timeMs), frame.size);
        for (const auto& inset : insets)
            blendInset(m_stillFrame, inset->partAt(moment));
        return cvMatToQImage(m_stillFrame);
    } catch (const std::exception& error) {
        qCWarning(lcVideo) << "Giving up frame at" << fileMs << error.what();
        return {};
    }
}

// Of a picture whose overlay has just been drawn.
PictureInset::Moment OpenCvWorker::momentOf(int timelineMs, QSize picture) const
{
    return {timelineMs, picture,
            m_overlay.scale(cv::Size(picture.width(), picture.height()), m_settings)};
}

void OpenCvWorker::requestFrame(QTime time, StillFrameQueue::Callback callback, bool isForExport,
                                StillFrameQueue::Cancelled cancelled)
{
    m_stills.add(time, std::move(callback), std::move(cancelled),
                 isForExport ? m_insets : PictureInsets());
}

void OpenCvWorker::requestPreview(QTime time, StillFrameQueue::Callback callback)
{
    m_stills.addFirst(time, std::move(callback));
}

bool OpenCvWorker::exportVideo(const QString& file, const std::atomic<bool>& cancelled,
                               Status* status)
{
    if (m_currentSource == noFile) {
        qCWarning(lcVideo) << "Invalid video capture";
        *status = Failure{Failure::Kind::notPossible,
                          tr("No video is open, or it has been played to its end.")};
        return false;
    }
    if (isOneOfFiles(file, m_sourceFiles)) {
        qCWarning(lcVideo) << "Refused to export over a file of the flight:" << file;
        *status = Failure{Failure::Kind::notPossible,
                          tr("%1 is a file of the flight itself. Choose another name.").arg(file)};
        return false;
    }
    VideoExporter::Hooks hooks;
    hooks.changesPictures = [this] { return changesPictures(m_overlay, m_settings); };
    hooks.applyEffects = [this](cv::Mat& frame, int timeMs) {
        applyPictureEffects(m_overlay, frame, timeMs, m_settings, false, {});
    };
    hooks.insets = [this](int timeMs, QSize picture) {
        std::vector<PictureInset::Part> parts;
        if (!m_insets.empty()) {
            const PictureInset::Moment moment = momentOf(timeMs, picture);
            for (const auto& inset : m_insets)
                parts.push_back(inset->partAt(moment));
        }
        return parts;
    };
    hooks.reportProgress = [this](int exportedFrames, int totalFrames) {
        emit videoExportProgress(exportedFrames, totalFrames);
    };
    hooks.isCancelled = [this, &cancelled] {
        return cancelled.load(std::memory_order_relaxed) || isStopping();
    };
    const VideoExporter::Outcome outcome =
        VideoExporter(*m_backend, m_timeline, std::move(hooks)).exportTo(file, m_currentSource);
    *status = outcome.status;
    return outcome.isPositionBack;
}

void OpenCvWorker::setClock(std::shared_ptr<const FlightClock> clock)
{
    m_overlay.setClock(std::move(clock));
}

void OpenCvWorker::updateLogData(bool hasParser, const std::shared_ptr<const LogFile>& log)
{
    m_overlay.updateLogData(hasParser, log);
    postToClient(
        [status = m_overlay.status()](WorkerClient& client) { client.onThermalFrames(status); });
}

void OpenCvWorker::reportFailure(const VideoFileEntry& entry)
{
    postToClient([opening = m_opening, file = entry.file](WorkerClient& client) {
        client.onReadFailed(opening, file);
    });
}

void OpenCvWorker::endPlayback(int lastFrame)
{
    postToClient([opening = m_opening, lastFrame](WorkerClient& client) {
        client.onPlaybackEnded(opening, lastFrame);
    });
}

} // namespace corv
