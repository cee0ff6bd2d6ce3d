#pragma once

#include "Batch/FlightJob.h"
#include "Batch/FlightManifest.h"
#include "Batch/flightStatus.h"
#include "Review/OpenFlight.h"

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

namespace corv {

namespace platform {
class FileLock;
}

/// What is wanted of each flight beside its project, points of interest, pictures and report.
struct FlightOptions
{
    bool copiesMedia = false; ///< video and log beside the project, so that the folder can travel
    bool showsThermal = false;
    bool thermalAsOnScreen = false; ///< pictures and report, as `VideoPlayer` has it
    bool writesVideo = false;
    QStringList tables;            ///< of the log: "GROUP" or "GROUP:COLUMN,COLUMN"
    double tableRateHz = 0;        ///< most rows a second of a table; 0 for all
    bool showsInstruments = false; ///< in a corner of pictures, report and video
    bool showsThermalBar = false;  ///< beside the thermal overlay, there
    bool imperialUnits = false;    ///< lengths in feet
};

/// Works on one flight without a window: opens it, and puts its results into the folder of the job
/// below `outFolder`. Results that exist and are up to date are not made again. A step that fails
/// is reported, and the others go on.
///
/// A project that somebody has worked on since is never replaced: the run opens it and makes the
/// pictures, tables and report of what it holds now. Results are written beside and renamed, so
/// that a run that is killed leaves each of them as it was, or whole. Of two runs of one flight,
/// on whichever machines, the second waits for the first.
///
/// Made for one run, on a thread that allows nested event loops.
class FlightRun
{
public:
    using Report = std::function<void(const QJsonObject& event)>;

    struct Summary
    {
        QList<StepFailure> failures;
        QStringList remarks; ///< what to know before using the results
        int doneSteps = 0;   ///< made now, or up to date already
    };

    FlightRun(FlightJob job, FlightOptions options, const QString& outFolder, Report report);
    ~FlightRun();

    /// Does the work. The last event that is reported is `finishedEvent`; it is kept in the
    /// flight's folder, too.
    Summary run();

    /// The event that the last run of this flight ended with; empty if it has not ended, or the
    /// folder is that of another flight.
    static QJsonObject lastResult(const QString& outFolder, const FlightJob& job);

    /// When a run of this flight that did not end began its last step; invalid if the last one
    /// ended, or there was none.
    static QDateTime brokenOffAt(const QString& outFolder, const FlightJob& job);

private:
    /// Gives the files that it made, relative to the flight's folder.
    using Action = std::function<Result<QStringList>()>;

    void step(const QString& name, const QByteArray& fingerprint, const Action& action);
    void fail(const QString& stepName, const Failure& failure);
    Status checkVideos() const;
    Status takeFolder();
    void sweepLeftovers();
    void removeCopies();
    QStringList copies() const;
    QByteArray projectFingerprint() const;
    QByteArray copiesFingerprint() const;
    bool needsCopies() const;
    void noteLogProblem();
    void work();
    Status open();
    Status makeProject();
    Status saveProject();
    void remarkOtherThermal(const QVariantList& pois);
    QStringList showInsets();
    Result<QStringList> writePictures(const QVariantList& pois);
    Result<QStringList> writeTables(const QVariantList& pois);
    Result<QStringList> writeLogTables();
    Result<QStringList> writeReport(const QVariantList& pois);
    Result<QStringList> printReport();
    Result<QStringList> writeVideo();
    QByteArray projectDigest() const;
    Summary finish();
    void writeResult();
    QJsonObject finishedEvent() const;
    void progress(const QString& stepName, qint64 done, qint64 total) const;
    QString workPath(const QString& name) const;

    const FlightJob m_job;
    const FlightOptions m_options;
    const Report m_report;
    const QDir m_folder;
    const QString m_projectPath;
    std::unique_ptr<platform::FileLock> m_lock;
    bool m_ownsFolder = false;  ///< locked, and that of this flight
    bool m_wasPrinting = false; ///< when the run before was killed
    FlightManifest m_manifest;
    OpenFlight m_flight;
    QString m_step; ///< the one that is on
    Summary m_summary;
};

} // namespace corv
