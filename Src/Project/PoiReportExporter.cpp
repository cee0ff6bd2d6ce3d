#include "Project/PoiReportExporter.h"

#include "Base/videoTime.h"
#include "Project/ReportWriter.h"
#include "Threads/post.h"

namespace corv {
namespace {

// A note with the names of the points of interest whose page has another thermal picture than the
// screen; empty without any.
QString noteOn(const VideoPlayer* player, const QVariantList& poiList)
{
    QStringList pages;
    for (int i = 0; player && i < poiList.size(); ++i) {
        const QVariantMap poi = poiList.at(i).toMap();
        const QString name = poi.value(QStringLiteral("name")).toString();
        if (player->savesOtherThermal(timeOfMs(poi.value(QStringLiteral("time")).toInt())))
            pages << (name.isEmpty() ? PoiReportExporter::tr("point of interest %1").arg(i + 1)
                                     : QStringLiteral("\"%1\"").arg(name));
    }
    return VideoPlayer::otherThermalNote(pages);
}

} // namespace

PoiReportExporter::~PoiReportExporter()
{
    abortAndWait();
}

void PoiReportExporter::setVideoPlayer(VideoPlayer* videoPlayer)
{
    if (m_videoPlayer == videoPlayer)
        return;
    if (m_videoPlayer)
        disconnect(m_videoPlayer, nullptr, this, nullptr);
    m_videoPlayer = videoPlayer;
    if (m_videoPlayer) {
        connect(m_videoPlayer, &QObject::destroyed, this, [this] {
            abortAndWait();
            m_videoPlayer = nullptr;
        });
    }
}

void PoiReportExporter::createPoiReport(QVariantList poiList, QString path,
                                        QVariantMap flightNamingMap)
{
    if (m_future.isRunning())
        return;
    m_abortFlag = false;
    m_reportFile = path;
    m_reportNote = noteOn(m_videoPlayer, poiList);
    VideoPlayer* const player = m_videoPlayer;
    m_future = runOnPool([this, player, poiList, path, flightNamingMap] {
        ReportWriter writer(&m_abortFlag);
        const bool result = writer.writeWordReport(
            path, player, poiList, flightNamingMap, [this](int done, int total) {
                post(this, [this, done, total] { emit exportProgress(done, total); });
            });
        post(this, [this, result, status = writer.result()] {
            m_exportResult = status;
            m_future.waitForDone(); // so that the end of one report may start the next
            emit exportComplete(result);
        });
    });
}

void PoiReportExporter::abortExportOperation()
{
    m_abortFlag = true;
}

void PoiReportExporter::abortAndWait()
{
    if (m_future.isRunning())
        m_abortFlag = true;
    m_future.waitForDone();
}

} // namespace corv
