#include "Shell/applicationLogging.h"

#include "Platform/wholeWrite.h"
#include "Shell/logCategory.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace corv {
namespace {

constexpr qint64 rotationSizeBytes = 0x1000000; // 16 MiB

QString logFilePath()
{
    // The local data folder of the application: the location once called DataLocation.
    return QDir::cleanPath(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) +
                           QDir::separator() + QStringLiteral("Vistrel.log"));
}

} // namespace

ApplicationLogging::ApplicationLogging() : m_filePath(logFilePath()) {}

ApplicationLogging& ApplicationLogging::instance()
{
    static ApplicationLogging logging;
    return logging;
}

void ApplicationLogging::init()
{
    const QDir folder = QFileInfo(m_filePath).dir();
    if (!folder.mkpath(QStringLiteral("."))) {
        qCWarning(lcShell) << "Unable to create folder: " << folder.path();
        return;
    }
    m_file.close();
    m_file.setFileName(m_filePath);
    // Unbuffered: a line is one append to the file, and nothing waits in memory for a crash.
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)) {
        qCWarning(lcShell) << "Unable to open log file : " << m_filePath;
        return;
    }
    if (m_file.size() >= rotationSizeBytes) {
        const QString oldPath = m_filePath + QStringLiteral(".old");
        QFile::remove(oldPath);
        // Where it can be neither moved nor deleted, growing further beats asking for ever.
        if (QFile::rename(m_filePath, oldPath) || QFile::remove(m_filePath)) {
            init();
            return;
        }
    }
    qSetMessagePattern(
        QStringLiteral("[%{category}] [%{type}] [%{time}] [%{threadid}] [%{function}] %{message}"));
    qInstallMessageHandler(&ApplicationLogging::messageHandler);
}

void ApplicationLogging::messageHandler(QtMsgType type, const QMessageLogContext& context,
                                        const QString& message)
{
    // The whole line in one system call on a descriptor in append mode: lines of different threads
    // follow one another and never mix, without a lock. Only the descriptor is shared, and it never
    // changes after `init`.
    const QByteArray line = qFormatLogMessage(type, context, message).toUtf8() + '\n';
    const int descriptor = instance().m_file.handle();
    if (descriptor < 0)
        return;
    platform::wholeWrite(descriptor, line.constData(), line.size());
}

} // namespace corv
