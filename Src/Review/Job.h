#pragma once

#include "Base/Failure.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <functional>
#include <optional>

namespace corv {

/// A piece of work that takes time: what it is, how far it is, and how it ended. It does no work
/// itself; its maker reports to it and is asked to stop by it. Interface thread only. A job that
/// has ended changes no more.
class Job : public QObject
{
    Q_OBJECT
    Q_PROPERTY(Kind kind READ kind CONSTANT)
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(qint64 done READ done NOTIFY progressChanged)
    Q_PROPERTY(qint64 total READ total NOTIFY progressChanged)
    Q_PROPERTY(QString progressText READ progressText NOTIFY progressChanged)
    Q_PROPERTY(State state READ state NOTIFY stateChanged)
    Q_PROPERTY(bool running READ isRunning NOTIFY stateChanged)
    Q_PROPERTY(bool cancellable READ isCancellable CONSTANT)
    Q_PROPERTY(QString resultText READ resultText NOTIFY stateChanged)
    Q_PROPERTY(QString resultFolder READ resultFolder NOTIFY stateChanged)

public:
    enum State { Running, Succeeded, Failed, Cancelled };
    Q_ENUM(State)

    enum class Kind { saving, copying, frames, series, video, report, search, log };
    Q_ENUM(Kind)

    /// What is counted.
    enum class Unit { steps, bytes };

    /// `cancel` asks the worker to stop, which then ends the job; empty if it cannot be stopped.
    /// `target` is the file or the folder that is written, empty if there is none.
    Job(Kind kind, const QString& title, Unit unit, std::function<void()> cancel,
        const QString& target = QString(), QObject* parent = nullptr);

    Kind kind() const { return m_kind; }
    QString title() const { return m_title; }
    QString target() const { return m_target; }

    /// Where the result can be seen: the target's folder, once all or part of it is written. Empty
    /// before that, and without a result.
    QString resultFolder() const;

    /// Whether it makes something that the pilot asked for, which is lost if it does not finish.
    bool isWriting() const { return m_kind != Kind::log && m_kind != Kind::search; }

    /// Steps or bytes; a total of 0 is unknown.
    qint64 done() const { return m_done; }
    qint64 total() const { return m_total; }

    /// "1.2 GB of 4.0 GB, 38 MB/s, 1 min 12 s left", or for steps "3 of 12", with rate and time
    /// left where something is written. Empty before the first report.
    QString progressText() const;

    State state() const { return m_state; }
    bool isRunning() const { return m_state == Running; }
    bool isCancellable() const { return static_cast<bool>(m_cancel); }

    /// The result in a sentence; of a job that failed, the reason.
    QString resultText() const { return m_failure ? m_failure->sentence : m_resultText; }
    const std::optional<Failure>& failure() const { return m_failure; }

    /// Asks the maker to stop the work, once. The job is running until its maker ends it.
    Q_INVOKABLE void cancel();

    // For the maker.
    void report(qint64 done, qint64 total);
    void succeed(const QString& resultText = QString());

    /// A failure of the kind `cancelled` counts as cancelled.
    void fail(const Failure& failure);

signals:
    void progressChanged();
    void stateChanged();

private:
    void end(State state);

    const Kind m_kind;
    const QString m_title;
    const QString m_target;
    const Unit m_unit;
    std::function<void()> m_cancel;
    bool m_isCancelAsked = false;
    qint64 m_done = 0;
    qint64 m_total = 0;
    State m_state = Running;
    QString m_resultText;
    std::optional<Failure> m_failure;
    QElapsedTimer m_clock;
};

/// "700 bytes", "3.2 MB", "41 GB": decimal units, as cards and disks are sold.
QString textOfBytes(qint64 bytes);

/// How a copy is going, for people: "1.2 GB of 4.0 GB, 38 MB/s, 1 min 12 s left". Without a rate in
/// the first second.
QString textOfTransfer(qint64 doneBytes, qint64 totalBytes, qint64 elapsedMs);

/// The same for steps: "300 of 1260, 12/s, 1 min 20 s left". Without a rate in the first two
/// seconds.
QString textOfSteps(qint64 done, qint64 total, qint64 elapsedMs);

} // namespace corv
