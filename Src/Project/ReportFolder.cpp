#include "Project/ReportFolder.h"

#include "Platform/FileLock.h"
#include "Platform/fileSystem.h"
#include "Project/logCategory.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFileInfo>
#include <unistd.h>

namespace corv {
namespace {

const QString namePrefix = QStringLiteral("vistrel-report-");
const QString lockName = QStringLiteral(".vistrel-in-use");

bool isUsedElsewhere(const QFileInfo& folder)
{
    const QString lockPath = QDir(folder.filePath()).filePath(lockName);
    return QFileInfo::exists(lockPath) &&
           !platform::FileLock(lockPath).take(platform::FileLock::Wait::no);
}

// A number that the system has given to another process since keeps the folder until that one ends.
bool isAbandoned(const QFileInfo& folder)
{
    const int process =
        folder.fileName().mid(namePrefix.size()).section(QLatin1Char('-'), 0, 0).toInt();
    return folder.ownerId() == ::getuid() && platform::isProcessGone(process) &&
           !isUsedElsewhere(folder);
}

} // namespace

ReportFolder::ReportFolder()
    : m_folder(QStringLiteral("%1/%2%3-XXXXXX")
                   .arg(QDir::tempPath(), namePrefix,
                        QString::number(QCoreApplication::applicationPid()))),
      m_lock(std::make_unique<platform::FileLock>(m_folder.filePath(lockName)))
{
    m_lock->take(platform::FileLock::Wait::no);
}

ReportFolder::~ReportFolder() = default;

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
