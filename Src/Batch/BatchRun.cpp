#include "Batch/BatchRun.h"

#include "Batch/BoundProcess.h"
#include "Batch/flightStatus.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTimer>
#include <algorithm>

namespace corv {
namespace {

constexpr int endGraceMs = 3000;
// A process that writes without ever ending a line is no worker of ours.
constexpr int longestLineBytes = 1024 * 1024;
constexpr int longestErrorBytes = 4096;

BatchRun::Outcome outcomeOf(int exitCode)
{
    switch (exitCode) {
    case 0:
        return BatchRun::Outcome::done;
    case 3:
        return BatchRun::Outcome::partial;
    default:
        return BatchRun::Outcome::failed;
    }
}

} // namespace

BatchRun::BatchRun(Command command, QList<FlightJob> jobs, int mostAtOnce, QObject* parent)
    : QObject(parent), m_command(std::move(command)), m_jobs(std::move(jobs)),
      m_mostAtOnce(std::max(1, mostAtOnce))
{
}

BatchRun::~BatchRun()
{
    // The processes' last signals would reach a half-destroyed object.
    for (QProcess* process : m_workers.keys()) {
        process->disconnect(this);
        process->kill();
        process->waitForFinished(endGraceMs);
    }
}

int BatchRun::count(Outcome outcome) const
{
    return static_cast<int>(std::count(m_outcomes.begin(), m_outcomes.end(), outcome));
}

void BatchRun::start()
{
    startNext();
}

void BatchRun::cancel()
{
    m_cancelled = true;
    for (QProcess* process : m_workers.keys()) {
        process->terminate();
        QTimer::singleShot(endGraceMs, process, &QProcess::kill);
    }
    startNext();
}

void BatchRun::startNext()
{
    while (!m_cancelled && m_next < m_jobs.size() && m_workers.size() < m_mostAtOnce) {
        const FlightJob& job = m_jobs[m_next];
        ++m_next;
        auto* process = new BoundProcess(this);
        m_workers.insert(process, {job.folder, {}, {}});
        connect(process, &QProcess::readyReadStandardOutput, this,
                [this, process] { readLines(process); });
        connect(process, &QProcess::readyReadStandardError, this, [this, process] {
            QByteArray& errors = m_workers[process].errors;
            errors = (errors + process->readAllStandardError()).right(longestErrorBytes);
        });
        connect(process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
                [this, process] { onEnded(process, true); });
        connect(process, &QProcess::errorOccurred, this, [this, process](QProcess::ProcessError e) {
            if (e == QProcess::FailedToStart)
                onEnded(process, false);
        });
        process->start(m_command.program, m_command.arguments);
        // By its standard input, so that nothing is left behind if this process is killed.
        process->write(QJsonDocument(job.toJson()).toJson());
        process->closeWriteChannel();
    }
    if (m_workers.isEmpty() && (m_cancelled || m_next == m_jobs.size()) && !m_hasFinished) {
        m_hasFinished = true;
        QTimer::singleShot(0, this, &BatchRun::finished);
    }
}

void BatchRun::readLines(QProcess* process)
{
    Worker& worker = m_workers[process];
    worker.unread += process->readAllStandardOutput();
    for (int end = worker.unread.indexOf('\n'); end >= 0; end = worker.unread.indexOf('\n')) {
        const QJsonObject event = QJsonDocument::fromJson(worker.unread.left(end)).object();
        worker.unread.remove(0, end + 1);
        if (!event.isEmpty())
            emit reported(event);
    }
    if (worker.unread.size() > longestLineBytes)
        worker.unread.clear();
}

void BatchRun::onEnded(QProcess* process, bool started)
{
    if (!m_workers.contains(process))
        return;
    readLines(process);
    const Worker worker = m_workers.take(process);
    process->deleteLater();
    const bool ended = started && process->exitStatus() == QProcess::NormalExit;
    if (!ended && !m_cancelled) {
        // It had no chance to report what happened to it.
        const QString errors = QString::fromLocal8Bit(worker.errors).simplified();
        const Failure failure{Failure::Kind::other,
                              QStringLiteral("The process that worked on the flight ended "
                                             "unexpectedly: %1.%2")
                                  .arg(process->errorString(),
                                       errors.isEmpty() ? QString() : QLatin1Char(' ') + errors)};
        emit reported(finishedEvent(worker.folder, {{QStringLiteral("process"), failure}}));
    }
    finishFlight(worker.folder, ended ? outcomeOf(process->exitCode()) : Outcome::failed);
    startNext();
}

void BatchRun::finishFlight(const QString& folder, Outcome outcome)
{
    m_outcomes.insert(folder, outcome);
    emit flightFinished(folder, outcome);
}

} // namespace corv
