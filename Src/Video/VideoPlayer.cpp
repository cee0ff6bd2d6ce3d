#include "Video/VideoPlayer.h"

#include "Threads/post.h"
#include "Video/OpenCvWorker.h"
#include "Video/VideoExporter.h"
#include "Video/fileNames.h"
#include "Video/pictureFile.h"
#include "Video/truncation.h"

#include <QClipboard>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <algorithm>
#include <cmath>
#include <utility>

namespace corv {
namespace {

constexpr int busyMs = 1000;
constexpr int positionSignalStepMs = 100;
constexpr double doubleTolerance = 2.220446049250313e-16;

QTime timeOfMs(int ms)
{
    return QTime(0, 0, 0, 0).addMSecs(ms);
}

void saveImage(const QImage& image, const QString& fileName)
{
    if (image.isNull())
        qWarning() << "Failed to extract frame";
    else if (!savePictureFile(image, fileName))
        qWarning() << "Failed to save frame to file" << fileName;
}

} // namespace

VideoPlayer::VideoPlayer(QQuickItem* parent) : VideoPlayer(systemVideoBackend(), parent) {}

VideoPlayer::VideoPlayer(std::shared_ptr<const VideoBackend> backend, QQuickItem* parent)
    : QQuickItem(parent), m_worker(std::make_unique<OpenCvWorker>(this, std::move(backend)))
{
    setFlag(ItemHasContents);
    setAntialiasing(true);
    m_timer.setTimerType(Qt::PreciseTimer);
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
    m_sourceFiles = expandVideoSequence(m_source);
    if (m_sourceFiles.isEmpty()) {
        emit sourceOpenError(m_source);
        return;
    }
    m_openingUnderWay = true;
    toWorker([files = m_sourceFiles, opening = ++m_opening](OpenCvWorker& worker) {
        worker.setVideoSources(files, opening);
    });
    if (m_sourceFiles.size() > 1)
        markBusy(busyMs);
}

void VideoPlayer::onVideoFilesProcessed(int opening, double fps, int totalFrames,
                                        const QSizeF& size, const QStringList& failedFiles)
{
    if (opening != m_opening)
        return;
    m_openingUnderWay = false;
    for (const QString& file : failedFiles) {
        qWarning() << "Failed to open" << file;
        emit sourceOpenError(file);
    }
    if (opening != m_opening) // closed by whoever was told of the error
        return;
    if (failedFiles.size() == m_sourceFiles.size()) {
        qWarning() << "Nothing do to; failed to open the videos";
        return;
    }
    m_hasVideoOpened = true;
    emit hasVideoOpenedChanged(true);
    m_surfaceFormat =
        QVideoSurfaceFormat(QSize(truncateToInt(size.width()), truncateToInt(size.height())),
                            QVideoFrame::Format_YUV420P);
    startSurface();
    m_duration = timeOfMs(truncateToInt(totalFrames * 1000.0 / fps));
    emit durationChanged(m_duration);
    m_frameDurationMs = truncateToInt(1000.0 / fps);
    m_timer.setInterval(m_frameDurationMs);
    if (m_surface)
        m_surface->start(m_surfaceFormat);
    startSeek([](OpenCvWorker& worker) { worker.seekAtFrameIndex(0); });
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

void VideoPlayer::onFrameReady(int opening, PlayerFrame frame, bool seekResult)
{
    if (opening != m_opening || !hasVideoOpened() || (m_seeking && !seekResult))
        return;
    if (!seekResult) {
        m_frames.append(std::move(frame));
        return;
    }
    // Of two seeks in a row the first one's picture may still be here, which is not the one to
    // show.
    m_frames = {std::move(frame)};
    m_seeking = false;
    paintNextFrame();
}

void VideoPlayer::onPlaybackEnded(int opening)
{
    if (opening == m_opening)
        pause();
}

void VideoPlayer::paintNextFrame()
{
    if (!hasVideoOpened() || m_frames.isEmpty() || !m_surface)
        return;
    const int position = std::max(std::min(m_frames.size() - 1, m_playSpeed - 1), 0);
    const PlayerFrame shown = m_frames.at(position);
    if (!m_surface->present(shown.frame))
        return;
    m_timePosition = timeOfMs(shown.timeMs);
    static QTime lastReportedPosition(0, 0, 0, 0);
    if (std::abs(lastReportedPosition.msecsTo(m_timePosition)) >= positionSignalStepMs) {
        lastReportedPosition = m_timePosition;
        emit timePositionChanged(m_timePosition);
    }
    if (m_currentFrameIndex != shown.frameIndex) {
        m_currentFrameIndex = shown.frameIndex;
        emit currentFrameIndexChanged(m_currentFrameIndex);
    }
    if (!m_playing)
        return;
    while (!m_frames.isEmpty() && m_frames.first().frameIndex <= shown.frameIndex)
        m_frames.removeFirst();
    if (m_frames.size() > 2LL * m_playSpeed)
        return;
    requestBurst();
}

// One burst at a time: were each tick to queue another, a slow decoder would have hundreds to do
// before the next seek, and go on long after a pause.
void VideoPlayer::requestBurst()
{
    m_burstWanted = m_burstUnderWay;
    if (m_burstUnderWay)
        return;
    m_burstUnderWay = true;
    toWorker([](OpenCvWorker& worker) { worker.produceFrameBurst(); });
}

void VideoPlayer::onBurstFinished()
{
    m_burstUnderWay = false;
    if (std::exchange(m_burstWanted, false) && hasVideoOpened() && !m_seeking)
        requestBurst();
}

bool VideoPlayer::play()
{
    if (!hasVideoOpened())
        return false;
    if (m_playing)
        return true;
    m_playing = true;
    m_timer.start();
    emit playingChanged();
    return true;
}

bool VideoPlayer::pause()
{
    if (!hasVideoOpened())
        return false;
    if (!m_playing)
        return true;
    m_playing = false;
    m_timer.stop();
    emit playingChanged();
    return true;
}

bool VideoPlayer::seekAtTime(QTime timePosition)
{
    if (!timePosition.isValid() || m_seeking || !hasVideoOpened())
        return false;
    startSeek([timePosition](OpenCvWorker& worker) { worker.seekAtTime(timePosition); });
    return true;
}

bool VideoPlayer::seekAtFrame(int frameOrdinal)
{
    if (!hasVideoOpened())
        return false;
    startSeek([frameOrdinal](OpenCvWorker& worker) { worker.seekAtFrameIndex(frameOrdinal); });
    return true;
}

void VideoPlayer::startSeek(std::function<void(OpenCvWorker&)> job)
{
    m_seeking = true;
    m_frames.clear();
    toWorker(std::move(job));
}

void VideoPlayer::setShowIR(bool showIR)
{
    if (m_settings.showIR == showIR)
        return;
    m_settings.showIR = showIR;
    sendSettings();
    emit showIRChanged();
    redraw();
}

void VideoPlayer::setContrast(double contrast)
{
    if (!(std::abs(m_settings.contrast - contrast) > doubleTolerance))
        return;
    m_settings.contrast = contrast;
    sendSettings();
    redraw();
    emit contrastChanged();
}

void VideoPlayer::setBrightness(double brightness)
{
    if (!(std::abs(m_settings.brightness - brightness) > doubleTolerance))
        return;
    m_settings.brightness = brightness;
    sendSettings();
    redraw();
    emit brightnessChanged();
}

void VideoPlayer::setAutoIRMapping(bool autoIRMapping)
{
    if (m_settings.autoIRMapping == autoIRMapping)
        return;
    m_settings.autoIRMapping = autoIRMapping;
    sendSettings();
    emit autoIRMappingChanged();
}

void VideoPlayer::setIrMappingMinValue(double value)
{
    setOverlayValue(m_settings.irMappingMinValue, value, &VideoPlayer::irMappingMinValueChanged);
}

void VideoPlayer::setIrMappingMaxValue(double value)
{
    setOverlayValue(m_settings.irMappingMaxValue, value, &VideoPlayer::irMappingMaxValueChanged);
}

void VideoPlayer::setIrOffsetX(double offset)
{
    setOverlayValue(m_settings.irOffsetX, offset, &VideoPlayer::irOffsetXChanged);
}

void VideoPlayer::setIrOffsetY(double offset)
{
    setOverlayValue(m_settings.irOffsetY, offset, &VideoPlayer::irOffsetYChanged);
}

void VideoPlayer::setFullScreenIR(bool fullScreenIR)
{
    setOverlayFlag(m_settings.fullScreenIR, fullScreenIR, &VideoPlayer::fullScreenIRChanged);
}

void VideoPlayer::setIrOverlayTransparent(bool transparent)
{
    setOverlayFlag(m_settings.irOverlayTransparent, transparent,
                   &VideoPlayer::irOverlayTransparentChanged);
}

void VideoPlayer::setOverlayValue(double& field, double value, Notify changed)
{
    if (!(std::abs(field - value) > doubleTolerance))
        return;
    field = value;
    sendSettings();
    if (showIR())
        redraw();
    emit(this->*changed)();
}

void VideoPlayer::setOverlayFlag(bool& field, bool value, Notify changed)
{
    if (field == value)
        return;
    field = value;
    sendSettings();
    if (showIR())
        redraw();
    emit(this->*changed)();
}

void VideoPlayer::sendSettings()
{
    m_settings.irDataMin = irDataMin();
    m_settings.irDataMax = irDataMax();
    toWorker([settings = m_settings](OpenCvWorker& worker) { worker.setSettings(settings); });
}

void VideoPlayer::redraw()
{
    if (m_playing)
        markBusy(busyMs);
    else
        seekAtTime(m_timePosition);
}

void VideoPlayer::setPlaySpeed(double playSpeed)
{
    if (!(playSpeed >= 1.0) || !(std::abs(playSpeed - m_playSpeed) > doubleTolerance))
        return;
    const int wholeSpeed = truncateToInt(playSpeed);
    if (wholeSpeed == m_playSpeed)
        return;
    m_playSpeed = wholeSpeed;
    emit playSpeedChanged();
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

// The log crosses with the job: a newer parse, or closing, frees nothing that the worker still
// uses.
void VideoPlayer::updateLogData()
{
    toWorker([hasParser = !m_logParser.isNull(), log = m_logParser ? m_logParser->log() : nullptr](
                 OpenCvWorker& worker) { worker.updateLogData(hasParser, log); });
    if (!m_playing)
        seekAtTime(m_timePosition);
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

bool VideoPlayer::getFrameAsync(QTime time, std::function<void(const QImage&)> frameResultCallback)
{
    if (!hasVideoOpened() || !frameResultCallback) {
        qWarning() << "!m_hasVideoOpened || !frameResultCallback";
        return false;
    }
    toWorker([time, callback = std::move(frameResultCallback)](OpenCvWorker& worker) {
        worker.requestFrame(time, callback);
    });
    return true;
}

bool VideoPlayer::saveFrame(QTime timePosition, QString fileName, bool overwriteIfExists)
{
    if (fileName.isEmpty()) {
        qWarning() << "Empty path";
        return false;
    }
    while (!overwriteIfExists && QFileInfo::exists(fileName)) {
        qInfo() << "File" << fileName << " exists; constructing different name...";
        fileName = differentFileName(fileName);
    }
    if (isOneOfFiles(fileName, m_sourceFiles)) {
        qWarning() << "Refused to save a frame over a file of the flight:" << fileName;
        return false;
    }
    qInfo() << "Saving frame at" << timePosition << "ms in file" << fileName;
    return getFrameAsync(timePosition,
                         [fileName](const QImage& image) { saveImage(image, fileName); });
}

void VideoPlayer::copyFrameToClipboard(QTime timePosition)
{
    getFrameAsync(timePosition, [this](const QImage& image) {
        if (image.isNull()) {
            qWarning() << "Failed to extract frame";
            return;
        }
        post(this, [image] { QGuiApplication::clipboard()->setImage(image); });
    });
}

bool VideoPlayer::exportSpecificFrames(QList<int> positionsMs, QString folder,
                                       QString fileNamePreffix)
{
    if (!QFileInfo(folder).dir().exists()) {
        qWarning() << "Folder doesn't exist:" << folder;
        return false;
    }
    for (int i = 0; i < positionsMs.size(); ++i) {
        const QString number = QString::number(i).rightJustified(3, QLatin1Char('0'));
        saveFrame(timeOfMs(positionsMs.at(i)),
                  folder + QLatin1Char('/') + fileNamePreffix + number + QStringLiteral(".jpg"),
                  false);
    }
    return true;
}

bool VideoPlayer::exportFrames(int startPositionMs, int stopPositionMs, int frameSpacingMs,
                               QString folder, QString fileNamePreffix)
{
    const qint64 stepMs = static_cast<qint64>(m_frameDurationMs) * frameSpacingMs;
    if (stepMs < 1) {
        qWarning() << "No way forward with a spacing of" << frameSpacingMs << "frames";
        return false;
    }
    QList<int> positionsMs;
    for (qint64 ms = startPositionMs; ms <= stopPositionMs; ms += stepMs)
        positionsMs << static_cast<int>(ms);
    return exportSpecificFrames(positionsMs, folder, fileNamePreffix);
}

bool VideoPlayer::exportVideo(QString file)
{
    if (!hasVideoOpened() || file.isEmpty()) {
        qWarning() << "!m_hasVideoOpened || file.isEmpty()";
        // Whoever shows the progress waits for the end, and may only begin to after this call.
        post(this, [this] { emit videoExportComplete(false); });
        return false;
    }
    m_exportCancelled = false;
    toWorker([this, file](OpenCvWorker& worker) {
        emit videoExportComplete(worker.exportVideo(file, m_exportCancelled));
    });
    return true;
}

void VideoPlayer::cancelExportVideo()
{
    m_exportCancelled = true;
}

void VideoPlayer::close()
{
    if (hasVideoOpened() && m_playing)
        pause();
    const bool workerHasFiles = hasVideoOpened() || m_openingUnderWay;
    m_openingUnderWay = false;
    ++m_opening;
    if (!m_source.isEmpty()) {
        m_source.clear();
        emit sourceChanged();
    }
    m_sourceFiles.clear();
    if (hasVideoOpened()) {
        m_hasVideoOpened = false;
        emit hasVideoOpenedChanged(false);
        m_frames.clear();
        m_seeking = false;
    }
    if (workerHasFiles)
        toWorker([](OpenCvWorker& worker) { worker.closeSources(); });
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
    }
    if (m_surface)
        m_surface->stop();
}

} // namespace corv
