#pragma once

#include "Base/Failure.h"
#include "Batch/FlightJob.h"

#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace corv {

/// Works on the flights of a card, several at once, each in a process of its own: a file that ends
/// one process does not stop the others. The same command with the same job does the work
/// on other machines.
///
/// Lives on one thread with an event loop. A process that this one started ends with it.
class BatchRun : public QObject
{
    Q_OBJECT

public:
    /// How a flight ended.
    enum class Outcome {
        done,    ///< all that was asked for is there
        partial, ///< some of it; the failures say what is missing
        failed   ///< nothing, or the process itself ended badly
    };

    struct Command
    {
        QString program;
        QStringList arguments; ///< reads the job from its standard input
    };

    BatchRun(Command command, QList<FlightJob> jobs, int mostAtOnce, QObject* parent = nullptr);
    ~BatchRun() override;

    /// Starts; `finished` follows, also where there are no jobs.
    void start();

    /// Starts nothing more and ends what runs; `finished` follows soon.
    void cancel();

    int flightCount() const { return m_jobs.size(); }
    bool isCancelled() const { return m_cancelled; }

    /// Flights that ended in this way.
    int count(Outcome outcome) const;

signals:
    /// One line of a flight's process: {"event", "flight", ...}.
    void reported(const QJsonObject& event);
    void flightFinished(const QString& folder, corv::BatchRun::Outcome outcome);
    void finished();

private:
    struct Worker
    {
        QString folder;
        QByteArray unread; ///< of a line that is not whole yet
        QByteArray errors;
    };

    void startNext();
    void readLines(QProcess* process);
    void onEnded(QProcess* process, bool started);
    void finishFlight(const QString& folder, Outcome outcome);

    const Command m_command;
    const QList<FlightJob> m_jobs;
    const int m_mostAtOnce;
    int m_next = 0;
    bool m_cancelled = false;
    bool m_hasFinished = false;
    QHash<QProcess*, Worker> m_workers;
    QHash<QString, Outcome> m_outcomes;
};

} // namespace corv
