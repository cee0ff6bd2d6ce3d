#include "Project/ReportFolder.h"

#include "Project/logCategory.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFileInfo>
#include <cerrno>
#include <csignal>
#include <unistd.h>

namespace corv {
namespace {

const QString namePrefix = QStringLiteral("vistrel-report-");

// A number that the system has given to another process since keeps the folder until that one ends.
bool isRunning(qint64 processId)
{
    return ::kill(static_cast<pid_t>(processId), 0) == 0 || errno != ESRCH;
}

bool isAbandoned(const QFileInfo& folder)
{
    bool isNumber = false;
    const int processId =
        folder.fileName().mid(namePrefix.size()).section(QLatin1Char('-'), 0, 0).toInt(&isNumber);
    return isNumber && processId > 0 && folder.ownerId() == ::getuid() && !isRunning(processId);
}

} // namespace

ReportFolder::ReportFolder()
    : m_folder(QStringLiteral("%1/%2%3-XXXXXX")
                   .arg(QDir::tempPath(), namePrefix,
                        QString::number(QCoreApplication::applicationPid())))
{
}

void ReportFolder::sweep(const QString& parent)
{
    const QFileInfoList folders =
        QDir(parent).entryInfoList({namePrefix + QLatin1Char('*')}, QDir::Dirs | QDir::NoSymLinks);
    for (const QFileInfo& folder : folders) {
        if (isAbandoned(folder) && QDir(folder.filePath()).removeRecursively())
            qCInfo(lcProject) << "Removed the pictures of a report that was not finished:"
                              << folder.filePath();
    }
}

} // namespace corv
