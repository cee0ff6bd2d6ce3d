#include "Project/ReportWriter.h"

#include "Base/videoTime.h"
#include "Docx/DocxMerger.h"
#include "Project/ReportFolder.h"
#include "Project/logCategory.h"
#include "Video/VideoPlayer.h"
#include "Video/pictureFile.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDebug>
#include <QFileInfo>
#include <QImage>
#include <QSemaphore>
#include <algorithm>
#include <exception>
#include <utility>

namespace corv {
namespace {

constexpr int pollMs = 50;
constexpr int dotsPerMetre = 3780; // 96 to the inch
const QString timeKey = QStringLiteral("time");
const QString cover = QStringLiteral("Cover");
const QString page = QStringLiteral("Page");

/// What a request for a frame shares with the one who waits for it. The frame may come long after
/// the report was given up, so it keeps the folder that it is saved in.
struct FrameRequest
{
    std::shared_ptr<ReportFolder> folder;
    std::atomic<bool> done{false};
    QString problem; ///< written before `done`, read after it; empty if the picture was saved
    QSemaphore wakeUp;
};

/// Any thread. Returns why a picture could not be saved, in a sentence; empty if it was, and where
/// there is no frame, as for a point of interest beyond the video. The picture would carry the
/// resolution of the screen, and so the report would depend on where it was made.
QString receiveFrame(QImage image, int timeMs, const QString& framePath)
{
    image.setDotsPerMeterX(dotsPerMetre);
    image.setDotsPerMeterY(dotsPerMetre);
    if (image.isNull()) {
        qCWarning(lcProject) << "Failed to extract frame at ms" << timeMs;
        return {};
    }
    if (!savePictureFile(image, framePath)) {
        qCWarning(lcProject) << "Failed to save frame to file" << framePath;
        return QStringLiteral("The picture of the frame at %1 could not be saved as %2.")
            .arg(reportTime(timeMs), framePath);
    }
    return {};
}

QString atLeastTwoDigits(int number)
{
    const QString digits = QString::number(number);
    return digits.size() < 2 ? QLatin1Char('0') + digits : digits;
}

bool hasUsableTime(const QVariant& poi)
{
    const QVariantMap map = poi.toMap();
    return map.contains(timeKey) && map.value(timeKey).toInt() >= 0;
}

} // namespace

QString reportTime(int timeMs)
{
    return atLeastTwoDigits(timeMs / 60000) + QLatin1Char(':') +
           atLeastTwoDigits(timeMs % 60000 / 1000) + QLatin1Char('.') +
           QString::number(timeMs % 1000);
}

ReportWriter::ReportWriter(const std::atomic<bool>* abortFlag, QString templatePath)
    : m_abortFlag(abortFlag), m_templatePath(std::move(templatePath))
{
}

QString ReportWriter::deliveredTemplatePath()
{
    return QCoreApplication::applicationDirPath() + QLatin1String("/docx_export_template.dfw");
}

bool ReportWriter::writeWordReport(QString path, VideoPlayer* player, QVariantList poiList,
                                   QVariantMap flightNaming, Progress progress)
{
    m_lostPictures.clear();
    m_result = writeDocument(path, player, poiList, flightNaming, progress);
    if (m_result && !m_lostPictures.isEmpty()) {
        m_result = Failure{Failure::Kind::incomplete,
                           QStringLiteral("The report %1 lacks %2 of its pictures. %3")
                               .arg(path)
                               .arg(m_lostPictures.size())
                               .arg(m_lostPictures.first())};
        return true;
    }
    return m_result.ok();
}

Status ReportWriter::writeDocument(const QString& path, VideoPlayer* player,
                                   const QVariantList& poiList, const QVariantMap& flightNaming,
                                   const Progress& progress)
{
    const Failure cancelled{Failure::Kind::cancelled, QStringLiteral("The report was given up.")};
    qCInfo(lcProject) << "Vistrel will create a POI report at path:" << path;
    ReportFolder::sweep();
    m_frameFolder = std::make_shared<ReportFolder>();
    if (!QFileInfo::exists(m_templatePath)) {
        qCWarning(lcProject) << "DFW export template not found at:" << m_templatePath;
        return Failure{Failure::Kind::notFound,
                       QStringLiteral("DFW export template not found at: %1").arg(m_templatePath)};
    }
    DocxMerger merger;
    try {
        merger.load(m_templatePath);
        pasteCover(merger, flightNaming);
        if (isAborted())
            return cancelled;
        const int validPoiCount =
            static_cast<int>(std::count_if(poiList.begin(), poiList.end(), hasUsableTime));
        const int first = poiList.size() - validPoiCount;
        QString framePath;
        for (int index = first; index < poiList.size() && !isAborted(); ++index) {
            if (m_frameFolder->isValid())
                framePath = QStringLiteral("%1/generated_image_%2.png")
                                .arg(m_frameFolder->path(), QString::number(index));
            try {
                const QVariantMap poi = poiList[index].toMap();
                if (poi.contains(timeKey))
                    pastePage(merger, player, poi, framePath);
            } catch (const std::exception& error) {
                qCInfo(lcProject) << error.what();
                continue;
            }
            if (!isAborted() && progress)
                progress(index - first + 1, validPoiCount);
        }
        if (isAborted())
            return cancelled;
        merger.save(path);
        return {};
    } catch (const std::exception& error) {
        qCWarning(lcProject) << "Exception:" << error.what();
        merger.close();
        return Failure{Failure::Kind::notWritable,
                       QString::fromLocal8Bit(error.what()).simplified()};
    }
}

bool ReportWriter::isAborted() const
{
    return m_abortFlag->load(std::memory_order_relaxed);
}

void ReportWriter::pasteCover(DocxMerger& merger, const QVariantMap& flightNaming) const
{
    const auto naming = [&flightNaming](const char* key) {
        return flightNaming.value(QLatin1String(key));
    };
    if (!naming("undefined").toBool()) {
        merger.setClipboardValue(cover, QStringLiteral("MissionName"),
                                 naming("missionName").toString());
        merger.setClipboardValue(cover, QStringLiteral("FlightName"),
                                 naming("flightName").toString());
        merger.setClipboardValue(cover, QStringLiteral("FlightNumber"),
                                 naming("flightNumber").toDouble());
    }
    merger.setClipboardValue(cover, QStringLiteral("GenerationDate"),
                             QDateTime::currentDateTime().toString(Qt::TextDate));
    merger.paste(cover);
}

void ReportWriter::pastePage(DocxMerger& merger, VideoPlayer* player, const QVariantMap& poi,
                             const QString& framePath)
{
    const int timeMs = poi.value(timeKey).toInt();
    const QString name = poi.value(QStringLiteral("name")).toString();
    const QString comment = poi.value(QStringLiteral("comment")).toString();
    saveFrame(player, timeMs, framePath);
    merger.setClipboardValue(page, QStringLiteral("Name"), name);
    merger.setClipboardValue(page, QStringLiteral("Time"), reportTime(timeMs));
    merger.setClipboardValue(page, QStringLiteral("Comment"), comment);
    merger.setClipboardValue(page, QStringLiteral("Image"), framePath);
    merger.paste(page);
}

/// Returns when the frame has been saved, could not be, or is no longer wanted.
void ReportWriter::saveFrame(VideoPlayer* player, int timeMs, const QString& framePath)
{
    const auto request = std::make_shared<FrameRequest>();
    request->folder = m_frameFolder;
    const bool accepted =
        player && player->getExportFrameAsync(
                      timeOfMs(timeMs), [request, timeMs, framePath](const QImage& image) {
                          request->problem = receiveFrame(image, timeMs, framePath);
                          request->done.store(true, std::memory_order_release);
                          request->wakeUp.release();
                      });
    if (!accepted) { // then no one will ever call back
        receiveFrame(QImage(), timeMs, framePath);
        return;
    }
    // A frame ends the sleep; the abort flag, which wakes no one, is looked at after it.
    while (!request->done.load(std::memory_order_acquire) && !isAborted())
        request->wakeUp.tryAcquire(1, pollMs);
    if (request->done.load(std::memory_order_acquire) && !request->problem.isEmpty())
        m_lostPictures << request->problem;
}

} // namespace corv
