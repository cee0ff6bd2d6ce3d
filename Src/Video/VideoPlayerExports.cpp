#include "Video/VideoPlayer.h"
#include "Video/logCategory.h"

#include "Base/sameFile.h"
#include "Base/videoTime.h"
#include "Threads/post.h"
#include "Video/OpenCvWorker.h"
#include "Video/VideoExporter.h"
#include "Video/fileNames.h"
#include "Video/pictureFile.h"

#include <QClipboard>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <utility>

// Pictures and videos taken out of the flight.
namespace corv {
namespace {

using Cancelled = std::shared_ptr<const std::atomic<bool>>;

bool isSet(const Cancelled& cancelled)
{
    return cancelled && cancelled->load(std::memory_order_relaxed);
}

Failure noPictureAt(QTime time)
{
    return {Failure::Kind::unreadable,
            VideoPlayer::tr("There is no picture at %1.").arg(textOfTime(time))};
}

Failure noVideo()
{
    return {Failure::Kind::notPossible, VideoPlayer::tr("No video is open.")};
}

// On the worker's thread.
Status saveImage(const QImage& image, const QString& fileName, QTime time)
{
    if (image.isNull()) {
        qCWarning(lcVideo) << "Failed to extract frame";
        return noPictureAt(time);
    }
    Status saved = savePictureFile(image, fileName);
    if (!saved)
        qCWarning(lcVideo) << "Failed to save frame to file" << fileName;
    return saved;
}

} // namespace

QString VideoPlayer::otherThermalNote(const QStringList& names)
{
    if (names.isEmpty())
        return {};
    if (names.size() == 1)
        return tr("%1 has the thermal picture of the time inside its file, not that of the screen.")
            .arg(names.first());
    return tr("%1 to %2 have the thermal picture of the time inside their file, not that of the "
              "screen.")
        .arg(names.first(), names.last());
}

bool VideoPlayer::getFrameAsync(QTime time, std::function<void(const QImage&)> frameResultCallback)
{
    return requestFrame(time, std::move(frameResultCallback), false, {});
}

bool VideoPlayer::getExportFrameAsync(QTime time,
                                      std::function<void(const QImage&)> frameResultCallback)
{
    if (!m_hasExportInsets.load(std::memory_order_relaxed))
        return getFrameAsync(time, std::move(frameResultCallback));
    return requestFrame(time, std::move(frameResultCallback), true, {});
}

void VideoPlayer::setExportInsets(PictureInsets insets)
{
    m_hasExportInsets.store(!insets.empty(), std::memory_order_relaxed);
    toWorker([insets = std::move(insets)](OpenCvWorker& worker) { worker.setInsets(insets); });
}

bool VideoPlayer::getPreviewAsync(QTime time, std::function<void(const QImage&)> callback)
{
    if (!hasVideoOpened() || !callback)
        return false;
    toWorker([time, callback = std::move(callback)](OpenCvWorker& worker) {
        worker.requestPreview(time, callback);
    });
    return true;
}

bool VideoPlayer::requestFrame(QTime time, std::function<void(const QImage&)> callback,
                               bool isForExport, Cancelled cancelled)
{
    if (!hasVideoOpened() || !callback) {
        qCWarning(lcVideo) << "!m_hasVideoOpened || !frameResultCallback";
        return false;
    }
    toWorker([time, callback = std::move(callback), isForExport, cancelled](OpenCvWorker& worker) {
        worker.requestFrame(time, callback, isForExport, cancelled);
    });
    return true;
}

bool VideoPlayer::saveFrame(QTime timePosition, QString fileName, bool overwriteIfExists)
{
    const Status requested = requestSaving(timePosition, fileName, overwriteIfExists, {},
                                           [this](const QString& file, const Status& saved) {
                                               m_frameSaveResult = saved;
                                               emit frameSaveComplete(file, saved.ok());
                                           });
    if (!requested)
        m_frameSaveResult = requested;
    return requested.ok();
}

// What `saved` says is said on this object's thread.
Status VideoPlayer::requestSaving(QTime time, QString fileName, bool overwriteIfExists,
                                  const Cancelled& cancelled, const SavedCallback& saved)
{
    if (fileName.isEmpty()) {
        qCWarning(lcVideo) << "Empty path";
        return Failure{Failure::Kind::notPossible, tr("No file name was given.")};
    }
    while (!overwriteIfExists && QFileInfo::exists(fileName)) {
        qCInfo(lcVideo) << "File" << fileName << " exists; constructing different name...";
        fileName = differentFileName(fileName);
    }
    if (isOneOfFiles(fileName, m_sourceFiles)) {
        qCWarning(lcVideo) << "Refused to save a frame over a file of the flight:" << fileName;
        return Failure{Failure::Kind::notPossible,
                       tr("%1 is a file of the flight itself. Choose another name.").arg(fileName)};
    }
    qCInfo(lcVideo) << "Saving frame at" << time << "ms in file" << fileName;
    const auto save = [this, time, fileName, cancelled, saved](const QImage& image) {
        const Status status = isSet(cancelled)
                                  ? Status(Failure{Failure::Kind::cancelled, tr("It was stopped.")})
                                  : saveImage(image, fileName, time);
        post(this, [saved, fileName, status] { saved(fileName, status); });
    };
    const bool isRequested =
        cancelled ? requestFrame(time, save, true, cancelled) : getExportFrameAsync(time, save);
    return isRequested ? Status() : noVideo();
}

void VideoPlayer::copyFrameToClipboard(QTime timePosition)
{
    const auto copy = [this, timePosition](const QImage& image) {
        if (image.isNull())
            qCWarning(lcVideo) << "Failed to extract frame";
        post(this, [this, image, timePosition] {
            if (!image.isNull())
                QGuiApplication::clipboard()->setImage(image);
            finishCopying(image.isNull() ? Status(noPictureAt(timePosition)) : Status());
        });
    };
    if (!getExportFrameAsync(timePosition, copy))
        post(this, [this] { finishCopying(noVideo()); });
}

void VideoPlayer::finishCopying(const Status& copied)
{
    m_frameCopyResult = copied;
    emit frameCopyComplete(copied.ok());
}

bool VideoPlayer::exportSpecificFrames(QList<int> positionsMs, QString folder,
                                       QString fileNamePreffix)
{
    if (!QFileInfo(folder).dir().exists()) {
        qCWarning(lcVideo) << "Folder doesn't exist:" << folder;
        m_framesExportResult =
            Failure{Failure::Kind::notFound, tr("There is no folder %1.").arg(folder)};
        return false;
    }
    m_framesExportFolder = folder;
    const auto cancelled = beginFramesExport(positionsMs.size());
    for (int i = 0; i < positionsMs.size(); ++i) {
        const QTime time = timeOfMs(positionsMs.at(i));
        const auto count = [this, isOther = savesOtherThermal(time)](const QString& file,
                                                                     const Status& saved) {
            if (saved && isOther)
                m_framesExport.otherThermal << QFileInfo(file).fileName();
            countExportedFrame(saved);
        };
        const Status requested =
            requestSaving(time, folder + QLatin1Char('/') + seriesFileName(fileNamePreffix, i),
                          false, cancelled, count);
        if (!requested)
            post(this, [this, requested] { countExportedFrame(requested); });
    }
    return true;
}

bool VideoPlayer::exportFrames(int startPositionMs, int stopPositionMs, int frameSpacingMs,
                               QString folder, QString fileNamePreffix)
{
    const qint64 stepMs = static_cast<qint64>(m_frameDurationMs) * frameSpacingMs;
    if (stepMs < 1) {
        qCWarning(lcVideo) << "No way forward with a spacing of" << frameSpacingMs << "frames";
        m_framesExportResult =
            Failure{Failure::Kind::notPossible,
                    tr("A series needs a spacing of at least one frame and an open video.")};
        return false;
    }
    QList<int> positionsMs;
    for (qint64 ms = startPositionMs; ms <= stopPositionMs; ms += stepMs)
        positionsMs << static_cast<int>(ms);
    return exportSpecificFrames(positionsMs, folder, fileNamePreffix);
}

// A series that is asked for while another runs makes that one longer.
std::shared_ptr<const std::atomic<bool>> VideoPlayer::beginFramesExport(int frames)
{
    auto cancelled = std::make_shared<std::atomic<bool>>(false);
    if (m_framesExport.done == m_framesExport.total)
        m_framesExport = {};
    m_framesExport.total += frames;
    m_framesExport.cancelled.push_back(cancelled);
    emit framesExportStarted(m_framesExport.total);
    if (m_framesExport.total == 0)
        post(this, [this] { finishFramesExport(); });
    return cancelled;
}

void VideoPlayer::countExportedFrame(const Status& saved)
{
    FramesExport& series = m_framesExport;
    ++series.done;
    if (saved)
        ++series.saved;
    else if (saved.failure().kind == Failure::Kind::cancelled)
        ++series.stopped;
    else if (!series.firstFailure)
        series.firstFailure = saved.failure();
    emit framesExportProgress(series.done, series.total);
    if (series.done == series.total)
        finishFramesExport();
}

void VideoPlayer::finishFramesExport()
{
    const FramesExport series = std::exchange(m_framesExport, {});
    const int failed = series.total - series.saved - series.stopped;
    m_framesExportResult = {};
    m_framesExportNote = otherThermalNote(series.otherThermal);
    if (series.firstFailure)
        m_framesExportResult =
            Failure{series.saved > 0 ? Failure::Kind::incomplete : series.firstFailure->kind,
                    tr("%1 of %2 pictures could not be saved. The first: %3")
                        .arg(failed)
                        .arg(series.total)
                        .arg(series.firstFailure->sentence)};
    else if (series.stopped > 0)
        m_framesExportResult =
            Failure{Failure::Kind::cancelled, tr("The series was stopped after %1 of %2 pictures.")
                                                  .arg(series.saved)
                                                  .arg(series.total)};
    emit framesExportComplete(series.saved, failed);
}

void VideoPlayer::cancelExportFrames()
{
    for (const auto& cancelled : m_framesExport.cancelled)
        cancelled->store(true, std::memory_order_relaxed);
}

bool VideoPlayer::exportVideo(QString file)
{
    if (!hasVideoOpened() || file.isEmpty()) {
        qCWarning(lcVideo) << "!m_hasVideoOpened || file.isEmpty()";
        // The receiver may begin to wait for the end only after this call.
        post(this, [this, isOpen = hasVideoOpened()] {
            m_videoExportResult =
                isOpen ? Failure{Failure::Kind::notPossible, tr("No file name was given.")}
                       : noVideo();
            emit videoExportComplete(false);
        });
        return false;
    }
    m_exportCancelled = false;
    m_videoExportFile = file;
    toWorker([this, file](OpenCvWorker& worker) {
        Status status;
        const bool isPositionBack = worker.exportVideo(file, m_exportCancelled, &status);
        post(this, [this, status] { m_videoExportResult = status; });
        emit videoExportComplete(isPositionBack);
    });
    return true;
}

void VideoPlayer::cancelExportVideo()
{
    m_exportCancelled = true;
}

} // namespace corv
