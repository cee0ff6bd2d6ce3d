#pragma once

#include "Base/Result.h"

#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <atomic>
#include <functional>
#include <memory>

namespace corv {

class DocxMerger;
class ReportFolder;
class VideoPlayer;

/// Writes the report of a flight's points of interest: a Word document with a cover and one page
/// per point of interest. Made for one report, on the thread that writes it, which is never the
/// interface's: it waits there for each frame.
class ReportWriter
{
public:
    /// Called with the number of pages done and of all pages.
    using Progress = std::function<void(int done, int total)>;

    /// `abortFlag` outlives the writer; the report is given up soon after it is set, whichever
    /// thread sets it.
    explicit ReportWriter(const std::atomic<bool>* abortFlag,
                          QString templatePath = deliveredTemplatePath());

    /// The template that is delivered beside the program.
    static QString deliveredTemplatePath();

    /// `poiList` are the points of interest in list form, sorted by time; those at its start that
    /// have no usable time are passed over. `flightNaming` is the map form of the naming. Returns
    /// whether the document was written; on false the reason is in the log, and a file that was
    /// there before is as it was.
    bool writeWordReport(QString path, VideoPlayer* player, QVariantList poiList,
                         QVariantMap flightNaming, Progress progress);

    /// Why the last report was not written; `incomplete` for one that was written without some of
    /// its pictures. The same thread.
    const Status& result() const { return m_result; }

private:
    Status writeDocument(const QString& path, VideoPlayer* player, const QVariantList& poiList,
                         const QVariantMap& flightNaming, const Progress& progress);
    bool isAborted() const;
    void pasteCover(DocxMerger& merger, const QVariantMap& flightNaming) const;
    void pastePage(DocxMerger& merger, VideoPlayer* player, const QVariantMap& poi,
                   const QString& framePath);
    void saveFrame(VideoPlayer* player, int timeMs, const QString& framePath);

    const std::atomic<bool>* m_abortFlag;
    QString m_templatePath;
    std::shared_ptr<ReportFolder> m_frameFolder;
    QStringList m_lostPictures; ///< a sentence each
    Status m_result;
};

/// Minutes, seconds and milliseconds of a point of interest as the report shows them: 65,007 ms
/// reads 01:05.7.
QString reportTime(int timeMs);

} // namespace corv
