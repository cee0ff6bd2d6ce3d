#pragma once

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QString>
#include <QTcpServer>
#include <QtTest>
#include <csignal>

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

} // namespace corv::test
