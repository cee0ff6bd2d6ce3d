#include "Video/VideoPlayer.h"

#include "Base/arithmetic.h"
#include "Base/videoTime.h"
#include "Threads/post.h"
#include "Video/OpenCvWorker.h"
#include "Video/fileNames.h"
#include "Video/logCategory.h"

#include <QDebug>
#include <utility>

namespace corv {
namespace {

constexpr int busyMs = 1000;

Failure noLog()
{
    return {Failure::Kind::notPossible, VideoPlayer::tr("No log is open.")};
}

} // namespace

VideoPlayer::VideoPlayer(QQuickItem* parent) : VideoPlayer(systemVideoBackend(), parent) {}

VideoPlayer::VideoPlayer(std::shared_ptr<const VideoBackend> backend, QQuickItem* parent)
    : QQuickItem(parent), m_worker(std::make_unique<OpenCvWorker>(static_cast<WorkerClient*>(this),
                                                                  this, std::move(backend)))
{
    setFlag(ItemHasContents);
    setAntialiasing(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    m_restTimer.setSingleShot(true);
    m_steadyClock.start();
    m_thermalStatus = noLog();
    connect(&m_restTimer, &QTimer::timeout, this, [this] { goTo({SeekWish::From::lastWish}); });
    connect(&m_timer, SIGNAL(timeout()), this, SLOT(paintNextFrame()));
    connect(m_worker.get(), &OpenCvWorker::videoExportProgress, this,
            &VideoPlayer::videoExportProgress, Qt::DirectConnection);
    connect(m_worker.get(), &OpenCvWorker::irDataChanged, this, &VideoPlayer::storeIrData,
            Qt::DirectConnection);
    sendSettings();
}

// The worker goes first: it ends its thread, which may be using this object until then.
VideoPlayer::~VideoPlayer()
{
    m_worker.reset();
}

void VideoPlayer::toWorker(std::function<void(OpenCvWorker&)> job)
{
    post(m_worker.get(), [worker = m_worker.get(), job = std::move(job)] {
        if (!worker->isStopping())
            job(*worker);
    });
}

void VideoPlayer::setSource(const QString& source)
{
    if (source == m_source)
        return;
    m_source = source;
    emit sourceChanged();
    markBusy(busyMs);
    const QStringList nextFiles = std::exchange(m_nextFiles, {});
    m_sourceFiles = nextFiles.value(0) == m_source && !m_source.isEmpty()
                        ? nextFiles
                        : expandVideoSequence(m_source);
    m_sourceOpenFailure.reset();
    if (m_sourceFiles.isEmpty()) {
        emit sourceOpenError(m_source);
        return;
    }
    m_openingUnderWay = true;
    m_firstPictureShown = false;
    setOpeningProgress(1.0);
    dropWishes();
    toWorker([files = m_sourceFiles, opening = ++m_opening](OpenCvWorker& worker) {
        worker.setVideoSources(files, opening);
    });
    if (m_sourceFiles.size() > 1)
        markBusy(busyMs);
}

void VideoPlayer::onVideoFilesProcessed(int opening, const OpenedTimeline& timeline)
{
    if (opening != m_opening)
        return;
    m_openingUnderWay = false;
    setOpeningProgress(1.0);
    for (int i = 0; i < timeline.failedFiles.size(); ++i) {
        const QString& file = timeline.failedFiles[i];
        qCWarning(lcVideo) << "Failed to open" << file;
        m_sourceOpenFailure = timeline.failures.at(i);
        emit sourceOpenError(file);
    }
    if (opening != m_opening) // closed by a receiver of the error
        return;
    if (timeline.failedFiles.size() == m_sourceFiles.size()) {
        qCWarning(lcVideo) << "Nothing do to; failed to open the videos";
        return;
    }
    m_hasVideoOpened = true;
    m_awaitsFirstFrame = true;
    emit hasVideoOpenedChanged(true);
    m_surfaceFormat = QVideoSurfaceFormat(
        QSize(truncateToInt(timeline.size.width()), truncateToInt(timeline.size.height())),
        QVideoFrame::Format_YUV420P);
    m_surfaceFormat.setPixelAspectRatio(timeline.pixelAspectRatio);
    if (!std::exchange(m_firstPictureShown, false)) // which would vanish for a moment
        startSurface();
    setFrameCount(timeline.totalFrames);
    m_lastGoodFrame = -1;
    m_secondFileMs = timeline.secondFileMs;
    m_duration = timeOfMs(timeline.durationMs);
    emit durationChanged(m_duration);
    m_frameDurationMs = truncateToInt(1000.0 / timeline.fps);
    m_timer.setInterval(m_frameDurationMs);
    if (m_surface)
        m_surface->start(m_surfaceFormat);
    startSeek([](OpenCvWorker& worker) { worker.seekAtFrameIndex(0); });
}

void VideoPlayer::onOpeningProgress(int opening, double part)
{
    if (opening == m_opening)
        setOpeningProgress(part);
}

void VideoPlayer::onFirstPicture(int opening, QSize pixelAspectRatio, const QVideoFrame& picture)
{
    if (opening != m_opening || !m_surface)
        return;
    m_surfaceFormat = QVideoSurfaceFormat(picture.size(), QVideoFrame::Format_YUV420P);
    m_surfaceFormat.setPixelAspectRatio(pixelAspectRatio);
    startSurface();
    takeColoursOf(picture);
    m_firstPictureShown = m_surface->present(picture);
}

void VideoPlayer::setOpeningProgress(double part)
{
    if (m_openingProgress == part)
        return;
    m_openingProgress = part;
    emit openingProgressChanged();
}

void VideoPlayer::setFrameCount(int frameCount)
{
    if (m_frameCount == frameCount)
        return;
    m_frameCount = frameCount;
    emit frameCountChanged();
}

void VideoPlayer::startSurface()
{
    if (!m_surface)
        return;
    if (m_surface->isActive())
        m_surface->stop();
    m_surfaceFormat = m_surface->nearestFormat(m_surfaceFormat);
    m_surface->start(m_surfaceFormat);
}

void VideoPlayer::onCurrentFile(int opening, const QString& file)
{
    if (opening != m_opening || file == m_source)
        return;
    m_source = file;
    emit sourceChanged();
}

void VideoPlayer::setVideoSurface(QAbstractVideoSurface* surface)
{
    if (m_surface && m_surface != surface && m_surface->isActive())
        m_surface->stop();
    const bool differs = m_surface != surface;
    m_surface = surface;
    if (m_surface && m_surfaceFormat.isValid()) {
        m_surfaceFormat = m_surface->nearestFormat(m_surfaceFormat);
        m_surface->start(m_surfaceFormat);
    }
    if (differs)
        emit videoSurfaceChanged();
}

void VideoPlayer::setLogParser(LogParser* logParser)
{
    if (m_logParser == logParser)
        return;
    m_logParser = logParser;
    toWorker([clock = logParser ? logParser->clock() : nullptr](OpenCvWorker& worker) {
        worker.setClock(clock);
    });
    emit logParserChanged();
}

void VideoPlayer::forgetLastFrame()
{
    toWorker([](OpenCvWorker& worker) { worker.forgetLastFrame(); });
}

// The log crosses with the job: a newer parse, or closing, frees nothing that the worker still
// uses.
void VideoPlayer::updateLogData()
{
    ++m_pendingThermalStatuses;
    toWorker([hasParser = !m_logParser.isNull(), log = m_logParser ? m_logParser->log() : nullptr](
                 OpenCvWorker& worker) { worker.updateLogData(hasParser, log); });
    if (!m_playing)
        redraw();
}

void VideoPlayer::onThermalFrames(const Status& status)
{
    m_thermalStatus = status;
    m_pendingThermalStatuses = std::max(0, m_pendingThermalStatuses - 1);
    emit thermalStatusChanged();
}

// On the worker's thread.
void VideoPlayer::storeIrData(double min, double max)
{
    const bool minDiffers = m_irDataMin.exchange(min, std::memory_order_relaxed) != min;
    const bool maxDiffers = m_irDataMax.exchange(max, std::memory_order_relaxed) != max;
    emit irDataChanged();
    post(this, [this, minDiffers, maxDiffers] {
        if (minDiffers)
            emit irDataMinChanged();
        if (maxDiffers)
            emit irDataMaxChanged();
    });
}

void VideoPlayer::markBusy(int ms)
{
    ++m_busyCount;
    if (!m_isBusy) {
        m_isBusy = true;
        emit isBusyChanged();
    }
    QTimer::singleShot(ms, this, [this] {
        if (--m_busyCount > 0)
            return;
        m_isBusy = false;
        emit isBusyChanged();
    });
}

void VideoPlayer::close()
{
    if (hasVideoOpened() && m_playing)
        pause();
    const bool workerHasFiles = hasVideoOpened() || m_openingUnderWay;
    m_openingUnderWay = false;
    m_firstPictureShown = false;
    setOpeningProgress(1.0);
    ++m_opening;
    if (!m_source.isEmpty()) {
        m_source.clear();
        emit sourceChanged();
    }
    m_sourceFiles.clear();
    if (hasVideoOpened()) {
        m_hasVideoOpened = false;
        emit hasVideoOpenedChanged(false);
        dropWishes();
        clearQueue();
        m_seeking = false;
        if (std::exchange(m_thermal, nullptr))
            emit thermalReadingChanged();
    }
    setFrameCount(0);
    if (workerHasFiles)
        toWorker([](OpenCvWorker& worker) { worker.closeSources(); });
    m_thermalStatus = noLog();
    emit thermalStatusChanged();
    const QTime zero(0, 0, 0, 0);
    if (m_duration > zero) {
        m_duration = zero;
        emit durationChanged(m_duration);
    }
    if (m_currentFrameIndex != 0) {
        m_currentFrameIndex = 0;
        emit currentFrameIndexChanged(0);
    }
    if (m_timePosition > zero) {
        m_timePosition = zero;
        emit timePositionChanged(m_timePosition);
        emit exactTimePositionChanged(m_timePosition);
    }
    if (m_surface)
        m_surface->stop();
}

} // namespace corv
