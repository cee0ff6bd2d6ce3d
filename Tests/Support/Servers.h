#pragma once

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHostInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QTcpServer>
#include <QThread>
#include <memory>

namespace corv::test {

inline bool writeText(const QString& path, const QString& text, bool isProgram = false)
{
    QFile file(path);
    const QByteArray bytes = text.toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return false;
    return file.setPermissions(QFile::ReadOwner | QFile::WriteOwner |
                               (isProgram ? QFile::ExeOwner : QFile::Permissions()));
}

/// A port of the loopback that nobody uses at the moment.
inline quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

/// A server that runs in the foreground, ended with this object.
class Server
{
public:
    Server(const QString& program, const QStringList& arguments, const QString& logFile)
    {
        m_process.setStandardInputFile(QProcess::nullDevice());
        m_process.setStandardOutputFile(logFile, QIODevice::Append);
        m_process.setStandardErrorFile(logFile, QIODevice::Append);
        m_process.start(program, arguments);
        m_process.waitForStarted();
    }
    ~Server()
    {
        m_process.terminate();
        if (!m_process.waitForFinished(5000)) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    bool isRunning() const { return m_process.state() == QProcess::Running; }

private:
    QProcess m_process;
};

/// A Slurm cluster of this machine alone, with two processors, on the loopback interface. Needs
/// root. Everybody may enter its folder, as its authentication service munge requires.
class SlurmCluster
{
public:
    explicit SlurmCluster(const QString& folder) : m_folder(folder)
    {
        QDir(folder).removeRecursively();
        if (!QDir().mkpath(path("state")) || !QDir().mkpath(path("spool")) || !writeConfiguration())
            return;
        m_munge = std::make_unique<Server>(
            "/usr/sbin/munged",
            QStringList{"--foreground", "--key-file=" + path("key"), "--socket=" + path("socket"),
                        "--pid-file=" + path("munge.pid"), "--log-file=" + path("munge.log"),
                        "--seed-file=" + path("seed")},
            path("munge.out"));
        if (!waitFor([this] { return QFile::exists(path("socket")); }))
            return;
        m_controller = std::make_unique<Server>("/usr/sbin/slurmctld",
                                                QStringList{"-D", "-f", configuration()},
                                                path("controller.log"));
        m_node = std::make_unique<Server>(
            "/usr/sbin/slurmd", QStringList{"-D", "-f", configuration()}, path("node.log"));
        m_isReady = waitFor([this] { return stateOfNode() == "idle"; });
    }

    /// Whether jobs can be submitted, with SLURM_CONF leading to `configuration()`.
    bool isReady() const { return m_isReady; }
    bool isRunning() const
    {
        return m_munge->isRunning() && m_controller->isRunning() && m_node->isRunning();
    }
    QString configuration() const { return path("slurm.conf"); }

private:
    QString path(const QString& name) const { return m_folder + '/' + name; }

    template <typename Condition>
    static bool waitFor(Condition isMet)
    {
        QElapsedTimer timer;
        for (timer.start(); timer.elapsed() < 60000; QThread::msleep(100))
            if (isMet())
                return true;
        return false;
    }

    QByteArray stateOfNode() const
    {
        QProcess info;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("SLURM_CONF", configuration());
        info.setProcessEnvironment(environment);
        info.start("sinfo", {"-h", "-o", "%t"});
        info.waitForFinished();
        return info.readAllStandardOutput().trimmed();
    }

    bool writeConfiguration() const
    {
        const QString host = QHostInfo::localHostName().section('.', 0, 0);
        QFile key(path("key"));
        return key.open(QIODevice::WriteOnly) && key.write(QByteArray(64, 'k')) == 64 &&
               key.setPermissions(QFile::ReadOwner) &&
               writeText(
                   configuration(),
                   "ClusterName=t\nSlurmctldHost=" + host +
                       "(127.0.0.1)\n"
                       "AuthType=auth/munge\nAuthInfo=socket=" +
                       path("socket") +
                       "\n"
                       "CredType=cred/munge\nProctrackType=proctrack/pgid\nTaskPlugin=task/none\n"
                       "SelectType=select/cons_tres\nSlurmUser=root\nSlurmdUser=root\n"
                       "MpiDefault=none\nJobAcctGatherType=jobacct_gather/none\n"
                       "SlurmctldPort=" +
                       QString::number(freePort()) +
                       "\n"
                       "SlurmdPort=" +
                       QString::number(freePort()) +
                       "\n"
                       "StateSaveLocation=" +
                       path("state") +
                       "\n"
                       "SlurmdSpoolDir=" +
                       path("spool") +
                       "\n"
                       "SlurmctldPidFile=" +
                       path("controller.pid") +
                       "\n"
                       "SlurmdPidFile=" +
                       path("node.pid") +
                       "\n"
                       "SchedulerParameters=sched_interval=1,sched_min_interval=1000,"
                       "batch_sched_delay=0,bf_interval=1\n"
                       "ReturnToService=2\n"
                       "NodeName=" +
                       host +
                       " NodeAddr=127.0.0.1 CPUs=2 RealMemory=1000 State=UNKNOWN\n"
                       "PartitionName=p Nodes=" +
                       host + " Default=YES MaxTime=INFINITE State=UP\n");
    }

    QString m_folder;
    std::unique_ptr<Server> m_munge;
    std::unique_ptr<Server> m_controller;
    std::unique_ptr<Server> m_node;
    bool m_isReady = false;
};

} // namespace corv::test
