#include "Batch/FlightRun.h"

#include "Base/FileReplacement.h"
#include "Project/ReportWriter.h"
#include "Threads/pool.h"
#include "Threads/post.h"
#include "Timeline/HeadUpPainter.h"
#include "Timeline/poiTable.h"
#include "Video/pictureFile.h"

#include <QCryptographicHash>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <atomic>
#include <filesystem>

namespace corv {
namespace {

const QString pictureFolder = QStringLiteral("pictures");
const QString reportName = QStringLiteral("report.docx");
const QString printedReportName = QStringLiteral("report.pdf");
const QString videoName = QStringLiteral("video.mp4");
const QString resultName = QStringLiteral("result.json");
const QString workFolder = QStringLiteral(".work");
constexpr int printTimeLimitMs = 10 * 60 * 1000;

QString pictureName(int index)
{
    return QStringLiteral("%1/POI%2.jpg")
        .arg(pictureFolder, QString::number(index + 1).rightJustified(3, QLatin1Char('0')));
}

Failure notMade(const QString& path)
{
    return {Failure::Kind::notWritable, QStringLiteral("%1 cannot be made.").arg(path)};
}

QString wordProcessor()
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("soffice"));
    return program.isEmpty() ? QStandardPaths::findExecutable(QStringLiteral("libreoffice"))
                             : program;
}

/// Puts a finished file in place of an earlier one, atomically. Both are on one volume.
Status putInPlace(const QString& from, const QString& to)
{
    std::error_code error;
    std::filesystem::rename(from.toStdString(), to.toStdString(), error);
    if (error)
        return Failure{Failure::Kind::notWritable,
                       QStringLiteral("%1 cannot be replaced: %2.")
                           .arg(to, QString::fromLocal8Bit(error.message().c_str()))};
    return {};
}

/// The flight, whichever machine and folder its files are on.
QByteArray identityOf(const FlightJob& job)
{
    QStringList words;
    for (const QString& path : job.files())
        words << QFileInfo(path).fileName() << QString::number(QFileInfo(path).size());
    return fingerprintOf(words, {});
}

} // namespace

FlightRun::FlightRun(FlightJob job, FlightOptions options, const QString& outFolder, Report report)
    : m_job(std::move(job)), m_options(options), m_report(std::move(report)),
      m_folder(QDir(outFolder).absoluteFilePath(m_job.folder)),
      m_projectPath(m_folder.filePath(m_job.folder + QStringLiteral(".ecor"))),
      m_manifest(m_folder.path())
{
}

QJsonObject FlightRun::lastResult(const QString& outFolder, const QString& folder)
{
    QFile file(QDir(outFolder).filePath(folder + QLatin1Char('/') + resultName));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
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
    m_summary.failures.append({stepName, failure});
}

FlightRun::Summary FlightRun::run()
{
    Status status = prepareFolder();
    if (status)
        status = open();
    if (status)
        status = makeProject();
    if (!status) {
        fail(QStringLiteral("open"), status.failure());
        return finish();
    }
    const QVariantList pois = m_flight.review().allPois();
    const QByteArray project = projectDigest();
    const QStringList inputs = m_job.files();
    const auto fingerprint = [&](const QString& what) {
        return fingerprintOf({what, QString::fromLatin1(project)}, inputs);
    };
    step(QStringLiteral("pictures"), fingerprint(QStringLiteral("pictures 1")),
         [this, &pois] { return writePictures(pois); });
    step(QStringLiteral("points"), fingerprint(QStringLiteral("points 1")),
         [this, &pois] { return writeTables(pois); });
    step(QStringLiteral("report"), fingerprint(QStringLiteral("report 1")),
         [this, &pois] { return writeReport(pois); });
    if (!wordProcessor().isEmpty() && QFile::exists(m_folder.filePath(reportName)))
        step(QStringLiteral("pdf"),
             fingerprintOf({QStringLiteral("pdf 1")}, {m_folder.filePath(reportName)}),
             [this] { return printReport(); });
    if (m_options.writesVideo)
        step(QStringLiteral("video"), fingerprint(QStringLiteral("video 1")),
             [this] { return writeVideo(); });
    return finish();
}

void FlightRun::step(const QString& name, const QByteArray& fingerprint, const Action& action)
{
    if (m_manifest.isDone(name, fingerprint)) {
        ++m_summary.doneSteps;
        return;
    }
    progress(name, 0, 0);
    QDir(workPath(QString())).removeRecursively();
    if (!m_folder.mkpath(workFolder)) {
        fail(name, notMade(workPath(QString())));
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

Status FlightRun::prepareFolder()
{
    if (!QDir().mkpath(m_folder.path()))
        return notMade(m_folder.path());
    const QByteArray identity = identityOf(m_job);
    if (!m_manifest.identity().isEmpty() && m_manifest.identity() != identity)
        return Failure{Failure::Kind::notPossible,
                       QStringLiteral("%1 holds the results of another flight. Choose another "
                                      "output folder, or move that one away.")
                           .arg(m_folder.path())};
    m_manifest.setIdentity(identity);
    return {};
}

// A project that is there holds what somebody may have added since; only one that is still as this
// program made it follows changed media.
Status FlightRun::open()
{
    progress(QStringLiteral("open"), 0, 0);
    const QByteArray media = fingerprintOf({QStringLiteral("project 1")}, m_job.files());
    const bool isOurs = m_manifest.digest(QStringLiteral("project")) == projectDigest();
    const bool isCurrent = m_manifest.isDone(QStringLiteral("project"), media);
    const bool opensProject = QFile::exists(m_projectPath) && (isCurrent || !isOurs);
    const Status status = opensProject ? m_flight.openProject(m_projectPath)
                                       : m_flight.openParts(m_job.videos, m_job.log);
    if (status && m_flight.review().openProblem())
        fail(QStringLiteral("log"), *m_flight.review().openProblem());
    return status;
}

Status FlightRun::makeProject()
{
    const QString name = QStringLiteral("project");
    if (m_flight.review().projectPath().isEmpty()) {
        m_flight.player().setShowIR(m_options.showsThermal);
        // Copies of a run that was killed before it saved its project.
        const QString base = m_job.folder;
        QDir(m_folder.filePath(base + QStringLiteral("_video"))).removeRecursively();
        for (const QString& copy : m_folder.entryList(
                 {base + QStringLiteral("_video.*"), base + QStringLiteral("_log.*")}, QDir::Files))
            QFile::remove(m_folder.filePath(copy));
        // All at once, whether their pictures have been read by now or not.
        m_flight.review().pois()->setFromList(m_flight.review().allPois());
        const bool isSaved = m_options.copiesMedia ? m_flight.review().saveAs(m_projectPath)
                                                   : m_flight.review().save(m_projectPath);
        if (!isSaved)
            return m_flight.projectFiles().lastSave();
        if (m_options.copiesMedia && m_flight.projectFiles().copyProblem())
            fail(QStringLiteral("copy"), *m_flight.projectFiles().copyProblem());
    }
    ++m_summary.doneSteps;
    const QByteArray media = fingerprintOf({QStringLiteral("project 1")}, m_job.files());
    const bool isKnown =
        m_manifest.isDone(name, media) || m_manifest.digest(name) != projectDigest();
    if (isKnown && m_manifest.hasStep(name))
        return {};
    return m_manifest.setDone(name, media, {QFileInfo(m_projectPath).fileName()}, projectDigest());
}

QByteArray FlightRun::projectDigest() const
{
    QFile file(m_projectPath);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256).toHex();
}

Result<QStringList> FlightRun::writePictures(const QVariantList& pois)
{
    const QString name = QStringLiteral("pictures");
    if (!QDir().mkpath(workPath(pictureFolder)))
        return notMade(workPath(pictureFolder));
    QStringList files;
    std::optional<Failure> firstFailure;
    int answered = 0;
    QEventLoop loop;
    const auto answer = [&](const std::optional<Failure>& failure) {
        if (failure && !firstFailure)
            firstFailure = failure;
        progress(name, ++answered, pois.size());
        if (answered == pois.size())
            loop.quit();
    };
    for (int i = 0; i < pois.size(); ++i) {
        const int timeMs = pois[i].toMap().value(QStringLiteral("time")).toInt();
        const QString path = workPath(pictureName(i));
        files << pictureName(i);
        const auto save = [&loop, answer, timeMs, path](const QImage& image) {
            std::optional<Failure> failure;
            if (image.isNull())
                failure = Failure{Failure::Kind::damaged,
                                  QStringLiteral("There is no picture at %1 ms.").arg(timeMs)};
            else if (!savePictureFile(image, path))
                failure = notMade(path);
            post(&loop, [answer, failure] { answer(failure); });
        };
        if (!m_flight.player().getFrameAsync(QTime(0, 0).addMSecs(timeMs), save))
            return Failure{Failure::Kind::notPossible,
                           QStringLiteral("No video is open for the pictures.")};
    }
    if (!pois.isEmpty())
        loop.exec();
    if (firstFailure)
        return *firstFailure;
    // The folder as one: a picture of an earlier run must not stay beside those of this one.
    QDir(m_folder.filePath(pictureFolder)).removeRecursively();
    if (!QDir().rename(workPath(pictureFolder), m_folder.filePath(pictureFolder)))
        return notMade(m_folder.filePath(pictureFolder));
    return files;
}

Result<QStringList> FlightRun::writeTables(const QVariantList& pois)
{
    HeadUpPainter instruments;
    instruments.setLog(m_flight.logParser().log());
    instruments.setClock(m_flight.logParser().clock());
    QList<PoiTableRow> rows = poiTableRows(pois, instruments, m_flight.logParser().clock().get());
    for (int i = 0; i < rows.size(); ++i) {
        if (QFile::exists(m_folder.filePath(pictureName(i))))
            rows[i].picture = pictureName(i);
    }
    const QStringList files{QStringLiteral("points.csv"), QStringLiteral("points.json")};
    const QByteArray texts[] = {poiTableCsv(rows), poiTableJson(rows)};
    for (int i = 0; i < files.size(); ++i) {
        const Status written = replaceFile(m_folder.filePath(files[i]), texts[i]);
        if (!written)
            return written.failure();
    }
    return files;
}

// The writer waits for each frame, so it has a thread of its own while this one runs an event loop.
Result<QStringList> FlightRun::writeReport(const QVariantList& pois)
{
    const QString name = QStringLiteral("report");
    const QString path = workPath(reportName);
    const std::atomic<bool> abortFlag{false};
    const QVariantMap naming = m_flight.logParser().flightNaming();
    Status status;
    QEventLoop loop;
    const PoolTask task = runOnPool([&, naming] {
        ReportWriter writer(&abortFlag);
        writer.writeWordReport(path, &m_flight.player(), pois, naming, [&](int done, int total) {
            post(&loop, [this, name, done, total] { progress(name, done, total); });
        });
        post(&loop, [&status, &loop, result = writer.result()] {
            status = result;
            loop.quit();
        });
    });
    loop.exec();
    task.waitForDone();
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
    // A profile of its own: a word processor that runs already would take the work and end at once.
    const QTemporaryDir profile;
    QProcess process;
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
    const QString name = QStringLiteral("video");
    const QString path = workPath(videoName);
    QEventLoop loop;
    bool isWritten = false;
    // Both signals come from the worker's thread; queued, they arrive on this one.
    QObject::connect(
        &m_flight.player(), &VideoPlayer::videoExportProgress, &loop,
        [&](int done, int total) { progress(name, done, total); }, Qt::QueuedConnection);
    QObject::connect(
        &m_flight.player(), &VideoPlayer::videoExportComplete, &loop,
        [&](bool result) {
            isWritten = result;
            loop.quit();
        },
        Qt::QueuedConnection);
    m_flight.player().exportVideo(path);
    loop.exec();
    const Status& result = m_flight.player().videoExportResult();
    if (!result)
        return result.failure();
    if (!isWritten)
        return notMade(path);
    const Status placed = putInPlace(path, m_folder.filePath(videoName));
    if (!placed)
        return placed.failure();
    return QStringList{videoName};
}

FlightRun::Summary FlightRun::finish()
{
    QDir(workPath(QString())).removeRecursively();
    const QJsonObject event = finishedEvent(m_job.folder, m_summary.failures, m_summary.doneSteps);
    if (m_folder.exists()) {
        const Status written =
            replaceFile(m_folder.filePath(resultName), QJsonDocument(event).toJson());
        if (!written)
            fail(QStringLiteral("result"), written.failure());
    }
    m_report(finishedEvent(m_job.folder, m_summary.failures, m_summary.doneSteps));
    return m_summary;
}

} // namespace corv
