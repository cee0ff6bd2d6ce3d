#include "Batch/FlightRun.h"

#include "Base/FileReplacement.h"
#include "Base/videoTime.h"
#include "Batch/BoundProcess.h"
#include "Batch/flightRemarks.h"
#include "Batch/logTables.h"
#include "Platform/FileLock.h"
#include "Platform/fileSystem.h"
#include "Project/ProjectFile.h"
#include "Project/ReportFolder.h"
#include "Timeline/ExportInsets.h"
#include "Timeline/poiTable.h"
#include "Video/fileNames.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <filesystem>
#include <optional>

namespace corv {
namespace {

const QString pictureFolder = QStringLiteral("pictures");
const QString tableFolder = QStringLiteral("tables");
const QString reportName = QStringLiteral("report.docx");
const QString printedReportName = QStringLiteral("report.pdf");
const QString videoName = QStringLiteral("video.mp4");
const QString resultName = QStringLiteral("result.json");
const QString workFolder = QStringLiteral(".work");
const QString printingName = QStringLiteral("printing"); // in the working folder
const QString lockName = QStringLiteral(".lock");
const QString openStep = QStringLiteral("open");
const QString projectStep = QStringLiteral("project");
const QString copyStep = QStringLiteral("copy");
constexpr int printTimeLimitMs = 10 * 60 * 1000;

QString pictureName(int index)
{
    return pictureFolder + QLatin1Char('/') + seriesFileName(QStringLiteral("POI"), index + 1);
}

Status makeFolder(const QString& path)
{
    std::error_code error;
    std::filesystem::create_directories(path.toStdString(), error);
    if (error)
        return platform::failureOfError(error.value(),
                                        QStringLiteral("%1 cannot be made").arg(path));
    return {};
}

QByteArray digestOf(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

QString wordProcessor()
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("soffice"));
    return program.isEmpty() ? QStandardPaths::findExecutable(QStringLiteral("libreoffice"))
                             : program;
}

bool isExport(const Job& job)
{
    return job.kind() == Job::Kind::frames || job.kind() == Job::Kind::series ||
           job.kind() == Job::Kind::report || job.kind() == Job::Kind::video;
}

/// Puts a finished file or folder in place of an earlier file, atomically. Both are on one volume.
Status putInPlace(const QString& from, const QString& to)
{
    std::error_code error;
    std::filesystem::rename(from.toStdString(), to.toStdString(), error);
    if (error)
        return platform::failureOfError(error.value(),
                                        QStringLiteral("%1 cannot be replaced").arg(to));
    return {};
}

} // namespace

FlightRun::FlightRun(FlightJob job, FlightOptions options, const QString& outFolder, Report report)
    : m_job(std::move(job)), m_options(options), m_report(std::move(report)),
      m_folder(QDir(outFolder).absoluteFilePath(m_job.folder)),
      m_projectPath(m_folder.filePath(m_job.folder + QStringLiteral(".ecor"))),
      m_lock(std::make_unique<platform::FileLock>(m_folder.filePath(lockName))),
      m_manifest(m_folder.path())
{
    JobList* const jobs = m_flight.review().jobs();
    QObject::connect(jobs, &JobList::dataChanged, jobs, [this, jobs](const QModelIndex& row) {
        const Job* const shown = jobs->job(row.row());
        if (shown->isRunning() && isExport(*shown))
            progress(m_step, shown->done(), shown->total());
    });
}

FlightRun::~FlightRun() = default;

QJsonObject FlightRun::lastResult(const QString& outFolder, const FlightJob& job)
{
    const QDir folder(QDir(outFolder).filePath(job.folder));
    const bool isThere = QFileInfo::exists(job.videos.value(0));
    if (isThere && FlightManifest(folder.path()).identity() != identityOf(job.videos))
        return {};
    QFile file(folder.filePath(resultName));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}

QDateTime FlightRun::brokenOffAt(const QString& outFolder, const FlightJob& job)
{
    return QFileInfo(QDir(outFolder).filePath(job.folder + QLatin1Char('/') + workFolder))
        .lastModified();
}

QString FlightRun::workPath(const QString& name) const
{
    return m_folder.filePath(workFolder + QLatin1Char('/') + name);
}

void FlightRun::progress(const QString& stepName, qint64 done, qint64 total) const
{
    m_report(progressEvent(m_job.folder, stepName, done, total));
}

void FlightRun::fail(const QString& stepName, const Failure& failure)
{
    // What is made in the working folder is known by the name that it was to get.
    QString sentence = failure.sentence;
    sentence.replace(workPath({}), m_folder.path() + QLatin1Char('/'));
    m_summary.failures.append({stepName, {failure.kind, sentence}});
}

FlightRun::Summary FlightRun::run()
{
    Status status = checkVideos();
    if (status)
        status = takeFolder();
    if (status)
        status = open();
    if (status)
        status = makeProject();
    if (!status) {
        fail(openStep, status.failure());
        return finish();
    }
    ++m_summary.doneSteps;
    work();
    return finish();
}

void FlightRun::work()
{
    const QVariantList pois = m_flight.review().allPois();
    const QByteArray project = projectDigest();
    const QStringList inputs = m_job.files();
    const QStringList shown = showInsets();
    m_flight.player().setThermalAsOnScreen(m_options.thermalAsOnScreen);
    remarkOtherThermal(pois);
    const auto fingerprint = [&](const QString& what) {
        return fingerprintOf(QStringList{what, QString::fromLatin1(project)} + shown, inputs);
    };
    const QString clock = m_options.thermalAsOnScreen ? QStringLiteral(" as on screen") : QString();
    step(QStringLiteral("pictures"), fingerprint(QStringLiteral("pictures 1") + clock),
         [this, &pois] { return writePictures(pois); });
    step(QStringLiteral("points"), fingerprint(QStringLiteral("points 2")),
         [this, &pois] { return writeTables(pois); });
    if (!m_options.tables.isEmpty())
        step(QStringLiteral("tables"),
             fingerprintOf(
                 QStringList{QStringLiteral("tables 1"), QString::number(m_options.tableRateHz)} +
                     m_options.tables,
                 inputs),
             [this] { return writeLogTables(); });
    step(QStringLiteral("report"), fingerprint(QStringLiteral("report 1") + clock),
         [this, &pois] { return writeReport(pois); });
    const auto print = [this] {
        if (!wordProcessor().isEmpty() && QFile::exists(m_folder.filePath(reportName)))
            step(QStringLiteral("pdf"),
                 fingerprintOf({QStringLiteral("pdf 1")}, {m_folder.filePath(reportName)}),
                 [this] { return printReport(); });
    };
    // Of the two that take long, the one in which no run was killed comes first.
    if (!m_wasPrinting)
        print();
    if (m_options.writesVideo)
        step(QStringLiteral("video"), fingerprint(QStringLiteral("video 1")),
             [this] { return writeVideo(); });
    if (m_wasPrinting)
        print();
}

void FlightRun::remarkOtherThermal(const QVariantList& pois)
{
    QStringList pictures;
    for (int i = 0; i < pois.size(); ++i) {
        const int timeMs = pois[i].toMap().value(QStringLiteral("time")).toInt();
        if (m_flight.player().savesOtherThermal(timeOfMs(timeMs)))
            pictures << pictureName(i);
    }
    if (!pictures.isEmpty())
        m_summary.remarks << VideoPlayer::otherThermalNote(pictures) +
                                 QStringLiteral(" --thermal-clock screen changes that.");
}

// Gives the words for the fingerprints of what shows or lists them. A flight without values for
// them shows none.
QStringList FlightRun::showInsets()
{
    ExportInsets insets;
    insets.setShowsInstruments(m_options.showsInstruments);
    insets.setShowsThermalBar(m_options.showsThermalBar);
    insets.setImperialUnits(m_options.imperialUnits);
    insets.setLogParser(&m_flight.logParser());
    insets.setPlayer(&m_flight.player());
    QStringList words;
    if (m_options.showsInstruments)
        words << QStringLiteral("instruments");
    if (m_options.showsThermalBar)
        words << QStringLiteral("thermal bar");
    if (m_options.imperialUnits)
        words << QStringLiteral("imperial");
    return words;
}

void FlightRun::step(const QString& name, const QByteArray& fingerprint, const Action& action)
{
    if (m_manifest.isDone(name, fingerprint)) {
        ++m_summary.doneSteps;
        return;
    }
    m_step = name;
    progress(name, 0, 0);
    QDir(workPath(QString())).removeRecursively();
    if (const Status made = makeFolder(workPath(QString())); !made) {
        fail(name, made.failure());
        return;
    }
    const Result<QStringList> files = action();
    if (!files) {
        fail(name, files.failure());
        return;
    }
    const Status recorded = m_manifest.setDone(name, fingerprint, *files);
    if (!recorded)
        fail(name, recorded.failure());
    else
        ++m_summary.doneSteps;
}

Status FlightRun::checkVideos() const
{
    for (const QString& video : m_job.videos)
        if (const auto problem = fileProblem(QStringLiteral("The video"), video))
            return *problem;
    return {};
}

Status FlightRun::takeFolder()
{
    if (const Status made = makeFolder(m_folder.path()); !made)
        return made;
    if (!m_lock->take(platform::FileLock::Wait::no)) {
        progress(QStringLiteral("waiting"), 0, 0);
        m_lock->take(platform::FileLock::Wait::untilFree);
    }
    m_manifest = FlightManifest(m_folder.path());
    const QByteArray identity = identityOf(m_job.videos);
    m_ownsFolder = m_manifest.identity().isEmpty() || m_manifest.identity() == identity;
    if (!m_ownsFolder)
        return Failure{Failure::Kind::notPossible,
                       QStringLiteral("%1 holds the results of another flight. Choose another "
                                      "output folder, or move that one away.")
                           .arg(m_folder.path())};
    sweepLeftovers();
    // A run that is killed must not leave the result of an earlier one.
    QFile::remove(m_folder.filePath(resultName));
    return m_manifest.identity().isEmpty() ? m_manifest.claimFor(identity) : Status();
}

// What a killed run left: nobody else works here.
void FlightRun::sweepLeftovers()
{
    m_wasPrinting = QFileInfo::exists(workPath(printingName));
    QDir(workPath(QString())).removeRecursively();
    // It stays if this run is killed, too, and its time says when that was.
    QDir().mkpath(workPath(QString()));
    static const QRegularExpression unfinished(
        QStringLiteral("^(manifest\\.json|result\\.json|points\\.[a-z]+)\\.[A-Za-z]{6}$"
                       "|^\\..*\\.[0-9]+(\\..*)?\\.part$"));
    const QFileInfoList entries =
        m_folder.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) {
        if (!unfinished.match(entry.fileName()).hasMatch())
            continue;
        if (entry.isDir())
            QDir(entry.filePath()).removeRecursively();
        else
            QFile::remove(entry.filePath());
    }
}

// A copy needs no card; without copies the project leads to the place where the card is.
QByteArray FlightRun::projectFingerprint() const
{
    QStringList words{QStringLiteral("project 1"),
                      m_options.showsThermal ? QStringLiteral("thermal") : QString()};
    if (!m_options.copiesMedia)
        words << m_job.files();
    return fingerprintOf(words, m_job.files());
}

QByteArray FlightRun::copiesFingerprint() const
{
    return fingerprintOf({QStringLiteral("copy 1")}, m_job.files());
}

bool FlightRun::needsCopies() const
{
    return m_options.copiesMedia && !m_manifest.isDone(copyStep, copiesFingerprint());
}

// A project that is there holds what somebody may have added since; only one that is still as this
// program made it follows changed media and options.
Status FlightRun::open()
{
    progress(openStep, 0, 0);
    const bool isOurs = m_manifest.hasMade(projectStep, projectDigest());
    const bool isCurrent = m_manifest.isDone(projectStep, projectFingerprint()) && !needsCopies();
    const bool opensProject = QFile::exists(m_projectPath) && (isCurrent || !isOurs);
    const Status status = opensProject ? m_flight.openProject(m_projectPath)
                                       : m_flight.openParts(m_job.videos, m_job.log);
    if (status) {
        noteLogProblem();
        m_summary.remarks = flightRemarks(m_job, m_flight.logParser(),
                                          m_flight.player().duration().msecsSinceStartOfDay());
    }
    return status;
}

void FlightRun::noteLogProblem()
{
    const std::optional<Failure>& problem = m_flight.review().openProblem();
    if (!problem)
        return;
    // The sentence names the log of the card also where the copy of it has been read.
    Failure failure = *problem;
    for (const QString& copy : copies())
        failure.sentence.replace(m_folder.filePath(copy), m_job.log);
    fail(QStringLiteral("log"), failure);
}

QStringList FlightRun::copies() const
{
    const QString videos = m_job.folder + QStringLiteral("_video");
    const QDir series(m_folder.filePath(videos));
    QStringList files;
    for (const QString& name : m_folder.entryList(QDir::Files))
        if (name.startsWith(videos + QLatin1Char('.')) ||
            name.startsWith(m_job.folder + QStringLiteral("_log.")))
            files << name;
    for (const QString& name : series.entryList(QDir::Files))
        files << videos + QLatin1Char('/') + name;
    return files;
}

void FlightRun::removeCopies()
{
    for (const QString& copy : copies())
        QFile::remove(m_folder.filePath(copy));
    QDir().rmdir(m_folder.filePath(m_job.folder + QStringLiteral("_video")));
}

Status FlightRun::makeProject()
{
    const bool isNew = m_flight.review().projectPath().isEmpty();
    if (isNew) {
        m_flight.player().setShowIR(m_options.showsThermal);
        // Those of other media, or of a run that was killed before it saved its project.
        removeCopies();
        // All at once, whether their pictures have been read by now or not.
        m_flight.review().pois()->setFromList(m_flight.review().allPois());
        // Recorded before it is there, for the run after one that is killed in between.
        m_flight.projectFiles().setAboutToSave([this](const QByteArray& text) {
            return m_manifest.setPending(projectStep, digestOf(text));
        });
    }
    Status status;
    if (isNew || needsCopies())
        status = saveProject();
    const QStringList files{QFileInfo(m_projectPath).fileName()};
    if (status && isNew)
        status = m_manifest.setDone(projectStep, projectFingerprint(), files, projectDigest());
    // One that was there before the manifest may be somebody's work, so it has no digest of ours.
    else if (status && !m_manifest.hasStep(projectStep))
        status = m_manifest.setDone(projectStep, projectFingerprint(), files);
    if (!status && isNew) {
        // Without its record the next run would take it for the work of a person.
        QFile::remove(m_projectPath);
        removeCopies();
    }
    return status;
}

Status FlightRun::saveProject()
{
    if (!m_options.copiesMedia)
        return m_flight.review().save(m_projectPath) ? Status()
                                                     : m_flight.projectFiles().lastSave();
    progress(copyStep, 0, 0);
    if (!m_flight.review().saveAs(m_projectPath))
        return m_flight.projectFiles().lastSave();
    if (copies().size() < m_job.files().size()) {
        // The project leads to the card then. No copy is begun that does not fit.
        const Failure noRoom{Failure::Kind::noRoom,
                             QStringLiteral("There is no room for copies of the video and the log "
                                            "in %1.")
                                 .arg(m_folder.path())};
        fail(copyStep, m_flight.projectFiles().copyProblem().value_or(noRoom));
        return {};
    }
    return m_manifest.setDone(copyStep, copiesFingerprint(), copies());
}

QByteArray FlightRun::projectDigest() const
{
    QFile file(m_projectPath);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return digestOf(file.readAll());
}

Result<QStringList> FlightRun::writePictures(const QVariantList& pois)
{
    if (const Status made = makeFolder(workPath(pictureFolder)); !made)
        return made.failure();
    QStringList files;
    QList<PictureFile> pictures;
    for (int i = 0; i < pois.size(); ++i) {
        const int timeMs = pois[i].toMap().value(QStringLiteral("time")).toInt();
        files << pictureName(i);
        pictures.append({timeMs, workPath(pictureName(i))});
    }
    for (const Status& saved : m_flight.savePictures(pictures))
        if (!saved)
            return saved.failure();
    // The folder as one: a picture of an earlier run must not stay beside those of this one.
    QDir(m_folder.filePath(pictureFolder)).removeRecursively();
    if (const Status placed = putInPlace(workPath(pictureFolder), m_folder.filePath(pictureFolder));
        !placed)
        return placed.failure();
    return files;
}

Result<QStringList> FlightRun::writeTables(const QVariantList& pois)
{
    PoiTable table = poiTable(pois, m_flight.logParser(), m_options.imperialUnits);
    for (int i = 0; i < table.rows.size(); ++i) {
        if (QFile::exists(m_folder.filePath(pictureName(i))))
            table.rows[i].picture = pictureName(i);
    }
    QStringList files;
    for (const PoiTableFormat& format : poiTableFormats()) {
        files << QStringLiteral("points.") + format.suffix;
        const Status written = writePoiTable(table, m_folder.filePath(files.last()), format);
        if (!written)
            return written.failure();
    }
    return files;
}

// Replaces the whole folder, also where a table could not be made: the others are in it.
Result<QStringList> FlightRun::writeLogTables()
{
    const std::shared_ptr<const LogFile> log = m_flight.logParser().log();
    if (!log)
        return Failure{Failure::Kind::notFound,
                       QStringLiteral("The flight has no log to make tables of.")};
    if (const Status made = makeFolder(workPath(tableFolder)); !made)
        return made.failure();
    const Result<QStringList> written =
        ::corv::writeLogTables(log, m_options.tables, m_options.tableRateHz, workPath(tableFolder));
    QDir(m_folder.filePath(tableFolder)).removeRecursively();
    const Status placed = putInPlace(workPath(tableFolder), m_folder.filePath(tableFolder));
    if (!written || !placed)
        return written ? placed.failure() : written.failure();
    QStringList files;
    for (const QString& name : *written)
        files << tableFolder + QLatin1Char('/') + name;
    return files;
}

Result<QStringList> FlightRun::writeReport(const QVariantList& pois)
{
    const QString path = workPath(reportName);
    const Status status = m_flight.writeReport(path, pois);
    const QString target = m_folder.filePath(reportName);
    // A report that lost a picture never replaces a whole one, but is better than none.
    const bool isIncomplete = !status && status.failure().kind == Failure::Kind::incomplete;
    if (!status && !(isIncomplete && !QFile::exists(target)))
        return status.failure();
    const Status placed = putInPlace(path, target);
    if (!placed)
        return placed.failure();
    if (!status)
        return status.failure();
    return QStringList{reportName};
}

Result<QStringList> FlightRun::printReport()
{
    QDir().mkpath(workPath(printingName));
    // A profile of its own: a word processor that runs already would take the work and end at once.
    ReportFolder::sweep();
    const ReportFolder profile;
    BoundProcess process;
    // Its own temporary files go there, too: a killed one leaves them, and the next run sweeps.
    process.setEnvironment(QProcess::systemEnvironment() << "TMPDIR=" + profile.path());
    process.start(wordProcessor(),
                  {QStringLiteral("-env:UserInstallation=file://") + profile.path(),
                   QStringLiteral("--headless"), QStringLiteral("--convert-to"),
                   QStringLiteral("pdf"), QStringLiteral("--outdir"), workPath(QString()),
                   m_folder.filePath(reportName)});
    const bool ended = process.waitForFinished(printTimeLimitMs);
    const QString printed = workPath(printedReportName);
    if (!ended || process.exitCode() != 0 || QFileInfo(printed).size() <= 0) {
        process.kill();
        process.waitForFinished();
        return Failure{
            Failure::Kind::other,
            QStringLiteral("The word processor could not print the report: %1")
                .arg(QString::fromLocal8Bit(process.readAllStandardError()).simplified())};
    }
    const Status placed = putInPlace(printed, m_folder.filePath(printedReportName));
    if (!placed)
        return placed.failure();
    return QStringList{printedReportName};
}

Result<QStringList> FlightRun::writeVideo()
{
    const QString path = workPath(videoName);
    if (const Status written = m_flight.writeVideo(path); !written)
        return written.failure();
    const Status placed = putInPlace(path, m_folder.filePath(videoName));
    if (!placed)
        return placed.failure();
    return QStringList{videoName};
}

FlightRun::Summary FlightRun::finish()
{
    if (m_ownsFolder)
        writeResult();
    m_report(finishedEvent());
    return m_summary;
}

QJsonObject FlightRun::finishedEvent() const
{
    return ::corv::finishedEvent(m_job.folder, m_summary.failures, m_summary.doneSteps,
                                 m_summary.remarks);
}

void FlightRun::writeResult()
{
    QDir(workPath(QString())).removeRecursively();
    const Status written =
        replaceFile(m_folder.filePath(resultName), QJsonDocument(finishedEvent()).toJson());
    if (!written)
        fail(QStringLiteral("result"), written.failure());
}

} // namespace corv
