#include "Platform/Platform.h"

#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QProcess>
#include <QTimer>
#include <unistd.h>
#include <utility>

namespace corv::platform {
namespace {

constexpr int pollIntervalMs = 100;

// Exit codes of the elevation program for a refusal and for a program it could not start.
constexpr int refusedExitCode = 126;
constexpr int notStartedExitCode = 127;

// Whether a process that was started as `program` has become another one: once the user has agreed,
// the elevation program takes on root as its real user (the effective one is root from the start)
// and then replaces itself by what it was asked to start.
bool hasBeenReplaced(qint64 processId, const QString& program)
{
    const QString folder = QStringLiteral("/proc/%1/").arg(processId);
    QFile name(folder + QStringLiteral("comm"));
    QFile status(folder + QStringLiteral("status"));
    if (!name.open(QIODevice::ReadOnly) || !status.open(QIODevice::ReadOnly))
        return false;
    // The system keeps the first 15 bytes of a name.
    constexpr int keptBytes = 15;
    if (name.readAll().trimmed() != QFileInfo(program).fileName().toUtf8().left(keptBytes))
        return true;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("Uid:"))
            return line.split('\t').value(1).toUInt() != ::getuid();
    }
    return false;
}

// Watches one launch and reports its outcome once. The process must outlive this program: the
// object that holds it is never deleted, as deleting it would end the process.
class Launch : public QObject
{
public:
    Launch(QObject* context, std::function<void(bool)> done)
        : m_context(context), m_done(std::move(done)), m_process(new QProcess)
    {
        connect(&m_poll, &QTimer::timeout, this, [this] { look(); });
        connect(m_process, &QProcess::started, this, [this] { m_poll.start(pollIntervalMs); });
        connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart)
                end(false);
        });
        connect(m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
                [this](int exitCode, QProcess::ExitStatus status) {
                    end(status == QProcess::NormalExit && exitCode != refusedExitCode &&
                        exitCode != notStartedExitCode);
                });
    }

    void start(const QString& program, const QString& file)
    {
        // No pipe to this program: it is about to quit.
        m_process->setProcessChannelMode(QProcess::ForwardedChannels);
        m_process->setStandardInputFile(QProcess::nullDevice());
        m_process->start(program, {file});
    }

private:
    void look()
    {
        if (hasBeenReplaced(m_process->processId(), m_process->program()))
            end(true);
    }

    void end(bool started)
    {
        m_poll.stop();
        m_process->disconnect(this);
        if (m_context)
            m_done(started);
        deleteLater();
    }

    QPointer<QObject> m_context;
    std::function<void(bool)> m_done;
    QProcess* m_process;
    QTimer m_poll;
};

} // namespace

QString elevationProgram()
{
    return QStringLiteral("pkexec");
}

void launchElevated(const QString& program, const QString& file, QObject* context,
                    std::function<void(bool started)> done)
{
    (new Launch(context, std::move(done)))->start(program, file);
}

} // namespace corv::platform
