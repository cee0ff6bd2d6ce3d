#include "Video/OpenCvWorker.h"

#include "Base/arithmetic.h"
#include "Base/sameFile.h"
#include "Base/videoTime.h"
#include "Threads/annotate.h"
#include "Threads/post.h"
#include "Video/VideoExporter.h"
#include "Video/frameConversion.h"
#include "Video/insetBlending.h"
#include "Video/logCategory.h"
#include "Video/partialDrawing.h"

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

// A picture that takes longer than this is not worth waiting for without a preview.
constexpr double patienceMs = 100.0;

// How long a newer wish may have to wait for an older one to give way.
constexpr double strideMs = 40.0;

// A wish by time, or its repetition after a preview: others of the kind may follow soon. Steps are
// not, which come one by one and fill the source's memory of frames on their way.
bool isOfAPointer(const SeekWish& wish)
{
    return wish.steps == 0 && wish.from != SeekWish::From::frame;
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

template <typename Call>
void OpenCvWorker::postToClient(Call call)
{
    post(m_context, [client = m_client, call = std::move(call)] { call(*client); });
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
        if (!m_openingTimeline.open(file, m_sourceFiles.size(), *m_backend))
            m_failedFiles << file;
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
        endPlayback();
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
        endPlayback();
        return false;
    }
    leaveFileFor(m_currentSource + 1);
    if (!current().capture->seekToFrame(0)) {
        qCInfo(lcVideo) << "Failed to seek in the beginning for" << current().file;
        endPlayback();
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

void OpenCvWorker::seekAtTime(QTime time)
{
    const int ms = msOfTime(time);
    if (ms == m_lastFrameTimeMs && !m_lastFrame.isNull()) {
        answerSeek(renderLastFrame(FrameUse::seekResult));
        return;
    }
    const int file = m_timeline.fileForSeek(ms);
    if (file < 0) {
        qCWarning(lcVideo) << "Seek at time" << time << "out of bounds";
        return;
    }
    leaveFileFor(file);
    VideoFileEntry& entry = current();
    const double lastStart = entry.durationMs - truncateToInt(1000.0 / entry.fps);
    const double fileMs = std::max(std::min(ms - entry.startMs, lastStart), 0.0);
    entry.capture->seekToTime(fileMs);
    answerSeek(produceFrame(FrameUse::seekResult));
}

void OpenCvWorker::seekAtFrameIndex(int index)
{
    if (index == m_lastFrameIndex && !m_lastFrame.isNull()) {
        answerSeek(renderLastFrame(FrameUse::seekResult));
        return;
    }
    const int file = m_timeline.fileForFrame(index);
    if (file < 0) {
        qCWarning(lcVideo) << "Seek frame index " << index
                           << "out of bounds:" << m_timeline.totalFrames();
        return;
    }
    leaveFileFor(file);
    VideoFileEntry& entry = current();
    // Below 0 first: the distance of two ints can be more than an int holds.
    const int local = std::max(index, entry.firstFrameIndex) - entry.firstFrameIndex;
    entry.capture->seekToFrame(std::min(local, entry.frameCount - 1));
    answerSeek(produceFrame(FrameUse::seekResult));
}

// A seek on the timeline is never left without an answer, or no other would be taken.
void OpenCvWorker::answerSeek(Produced produced)
{
    if (produced != Produced::frame)
        postToClient([opening = m_opening](WorkerClient& client) { client.onSeekFailed(opening); });
}

void OpenCvWorker::serveWish(const SeekWish& wish)
{
    WishOutcome outcome = WishOutcome::failed;
    if (!m_timeline.isEmpty()) {
        m_wishedFrame = placeOf(wish);
        if (wish.mayPreview && showPreview(m_wishedFrame))
            outcome = WishOutcome::previewed;
        else if (isOfAPointer(wish) && !approach(m_wishedFrame))
            outcome = WishOutcome::overtaken;
        else if (goToFrame(m_wishedFrame, FrameUse::seekResult) == Produced::frame)
            outcome = WishOutcome::shown;
    }
    postToClient([opening = m_opening, outcome](WorkerClient& client) {
        client.onWishServed(opening, outcome);
    });
}

int OpenCvWorker::placeOf(const SeekWish& wish) const
{
    qint64 frame = wish.value;
    if (wish.from == SeekWish::From::time)
        frame = m_timeline.frameAtTime(wish.value);
    else if (wish.from == SeekWish::From::lastWish)
        frame = m_wishedFrame;
    return static_cast<int>(
        std::clamp<qint64>(frame + wish.steps, 0, std::max(m_timeline.totalFrames() - 1, 0)));
}

OpenCvWorker::Produced OpenCvWorker::goToFrame(int index, FrameUse use)
{
    const int file = m_timeline.fileOfFrame(index);
    const bool isOtherFile = m_currentSource != file;
    leaveFileFor(file);
    VideoFileEntry& entry = current();
    if (isOtherFile) {
        postToClient([opening = m_opening, path = entry.file](WorkerClient& client) {
            client.onCurrentFile(opening, path);
        });
    }
    if (index == m_lastFrameIndex && !m_lastFrame.isNull())
        return renderLastFrame(use);
    if (!entry.capture->seekToFrame(index - entry.firstFrameIndex)) {
        qCInfo(lcVideo) << "Failed to seek in" << entry.file << "to frame"
                        << index - entry.firstFrameIndex;
        return Produced::failure;
    }
    return produceFrame(use);
}

// From where the file's source is, or from the keyframe before if that is nearer.
int OpenCvWorker::framesOnTheWay(const FrameSource& source, int local)
{
    if (source.isAtHand(local))
        return 0;
    const int keyframe = source.nearestKeyframe(local);
    const int next = source.nextFrame();
    return local - (next > keyframe && next <= local ? next : keyframe);
}

// Most of a long way, in strides, so that a newer wish need not wait for the whole of it. False if
// there is one.
bool OpenCvWorker::approach(int index)
{
    VideoFileEntry& entry = m_timeline.entry(m_timeline.fileOfFrame(index));
    FrameSource& source = *entry.capture;
    const int local = index - entry.firstFrameIndex;
    const int stride = std::max(truncateToInt(strideMs / std::max(m_frameCostMs, 0.1)), 2);
    Frame passed;
    int left = index == m_lastFrameIndex ? 0 : framesOnTheWay(source, local);
    while (left > stride) {
        if (m_wishOvertaken.load(std::memory_order_relaxed) || isStopping())
            return false;
        const bool isRead =
            source.seekToFrame(local - left + stride) && source.read(passed) == ReadOutcome::frame;
        const int next = source.nextFrame();
        if (!isRead || next > local) // the rest of the way says what is wrong
            return true;
        left = std::min(local - next, left - 1);
    }
    return true;
}

// The picture of the nearest keyframe under the number and the time of the wish, so that a position
// that follows the pointer stays there.
bool OpenCvWorker::showPreview(int index)
{
    const int file = m_timeline.fileOfFrame(index);
    VideoFileEntry& entry = m_timeline.entry(file);
    FrameSource& source = *entry.capture;
    const int local = index - entry.firstFrameIndex;
    if (index == m_lastFrameIndex || framesOnTheWay(source, local) * m_frameCostMs <= patienceMs)
        return false;
    Frame frame;
    if (!source.seekToFrame(source.nearestKeyframe(local)) ||
        source.read(frame) != ReadOutcome::frame)
        return false;
    leaveFileFor(file);
    m_lastFrameWasSought = false;
    return handOverPicture(frame, index, entry.timelineMs(source.frameTimeMs(local)),
                           FrameUse::preview) == Produced::frame;
}

void OpenCvWorker::redraw(int shownFrame)
{
    if (m_lastFrameWasSought && !m_lastFrame.isNull())
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
    if (!m_overlay.changesPictures(m_settings)) {
        m_overlay.reportRange(m_settings, m_reportRange);
        return toVideoFrame(picture);
    }
    const cv::Size size = sizeOf(picture);
    const cv::Rect part = evenPart(m_overlay.changedPart(size, m_settings), size);
    if (canDrawOnPart(picture) && !part.empty() && part.size() != size) {
        m_overlay.reportRange(m_settings, m_reportRange);
        return toVideoFrame(drawOnPart(picture, part, [&](cv::Mat& bgr) {
            m_overlay.drawOnPart(bgr, part.tl(), size, timeMs, m_settings);
        }));
    }
    toBgr(picture, m_effectFrame);
    m_overlay.applyPictureEffects(m_effectFrame, timeMs, m_settings, false, m_reportRange);
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
        m_stillSource = m_timeline.entry(file).capture->clone();
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
        m_overlay.applyPictureEffects(m_stillFrame, overlayMs, m_settings, false, {});
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
    hooks.changesPictures = [this] { return m_overlay.changesPictures(m_settings); };
    hooks.applyEffects = [this](cv::Mat& frame, int timeMs) {
        m_overlay.applyPictureEffects(frame, timeMs, m_settings, false, {});
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

void OpenCvWorker::endPlayback()
{
    postToClient([opening = m_opening](WorkerClient& client) { client.onPlaybackEnded(opening); });
}

} // namespace corv
