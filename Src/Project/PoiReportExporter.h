#pragma once

#include "Base/Result.h"
#include "Threads/pool.h"
#include "Video/VideoPlayer.h"

#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <atomic>

namespace corv {

/// Starts, follows and gives up the Word report of a flight's points of interest. Declared once in
/// the main window and used on the interface thread, where its signals come from as well; the
/// report itself is written on the global thread pool.
class PoiReportExporter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(corv::VideoPlayer* videoPlayer READ videoPlayer WRITE setVideoPlayer)

public:
    using QObject::QObject;

    /// Gives up a running report and waits for its end.
    ~PoiReportExporter() override;

    /// The player that the frames come from; not owned. When it dies a running report is given up.
    VideoPlayer* videoPlayer() const { return m_videoPlayer; }
    void setVideoPlayer(VideoPlayer* videoPlayer);

    /// Starts a report of the points of interest `poiList`, in list form, to the document `path`;
    /// the naming is in its map form. Does nothing while one is being written. `exportComplete`
    /// marks the end.
    Q_INVOKABLE void createPoiReport(QVariantList poiList, QString path,
                                     QVariantMap flightNamingMap);

    /// Gives up the report that is being written: no file is written then.
    Q_INVOKABLE void abortExportOperation();

    /// Why the last report was not written, or what it lacks; valid from `exportComplete` on.
    const Status& exportResult() const { return m_exportResult; }

    /// What else is to be known of the last report: its pages whose thermal picture is not that of
    /// the screen. Empty if there are none.
    QString reportNote() const { return m_reportNote; }

    /// The file of the report that is being written, or was last.
    QString reportFile() const { return m_reportFile; }

signals:
    /// The report has ended; `result` is true if the document was written. Another one may be
    /// started at once.
    void exportComplete(bool result);

    /// `done` of `total` points of interest are in the document.
    void exportProgress(int done, int total);

private:
    void abortAndWait();

    VideoPlayer* m_videoPlayer = nullptr;
    std::atomic<bool> m_abortFlag{false};
    PoolTask m_future;
    Status m_exportResult;
    QString m_reportNote;
    QString m_reportFile;
};

} // namespace corv
