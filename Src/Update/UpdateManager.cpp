#include "Update/UpdateManager.h"

#include "Platform/Platform.h"
#include "Shell/AppInfo.h"
#include "Threads/annotate.h"
#include "Threads/post.h"
#include "Update/UpdateWorker.h"
#include "Update/logCategory.h"
#include "Update/updateNames.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QStandardPaths>
#include <QSysInfo>
#include <QThread>
#include <utility>

namespace corv {
namespace {

const QString lastNotificationKey = QStringLiteral("lastUpdateNotification");
const QString downloadFolderName = QStringLiteral("update");
constexpr qint64 quietDays = 7;

QDir localDataFolder()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation));
}

} // namespace

UpdateManager::UpdateManager(QObject* parent)
    : UpdateManager(CloudShare::ofThisBuild(), platform::elevationProgram(), parent)
{
}

UpdateManager::UpdateManager(CloudShare share, QString elevationProgram, QObject* parent)
    : QObject(parent), m_share(std::move(share)), m_elevationProgram(std::move(elevationProgram))
{
}

UpdateManager::~UpdateManager()
{
    cancel();
    m_comparison.waitForDone();
    m_thread.reset();
    m_worker.reset();
}

QString UpdateManager::getUpdateChannel()
{
    return updateNames::channelOf(qEnvironmentVariable("CorvenityUpdateChannel"));
}

QString UpdateManager::getInstallerFlavour()
{
    return updateNames::flavourOf(QSysInfo::currentCpuArchitecture());
}

QString UpdateManager::getInstallerFileName(const QString& version)
{
    return updateNames::installerFileName(version, getInstallerFlavour());
}

QString UpdateManager::getDownloadDir()
{
    QDir folder = localDataFolder();
    if (!folder.mkpath(downloadFolderName) || !folder.cd(downloadFolderName))
        qCWarning(lcUpdate) << "Failed to create the 'update' dir in:" << folder.path();
    return folder.path();
}

bool UpdateManager::isDownloadDir(const QString& folder)
{
    return QDir::cleanPath(folder) ==
           QDir::cleanPath(localDataFolder().filePath(downloadFolderName));
}

bool UpdateManager::shouldCheckForUpdate() const
{
    if (getUpdateChannel() != QLatin1String("official"))
        return true;
    const QVariant stored = QSettings().value(lastNotificationKey);
    if (!stored.isValid() || stored.isNull())
        return true;
    const QDateTime last = updateNames::notificationMoment(stored.toString());
    return last.daysTo(QDateTime::currentDateTimeUtc()) >= quietDays;
}

void UpdateManager::notifyUpdateAvailable(const QString& version, const QStringList& releaseNotes,
                                          const ExpectedInstaller& installer)
{
    QSettings settings;
    settings.setValue(lastNotificationKey,
                      updateNames::notificationText(QDateTime::currentDateTimeUtc()));
    settings.sync();
    if (settings.status() != QSettings::NoError)
        qCWarning(lcUpdate) << "Failed to remember the time of the notification in"
                            << settings.fileName();
    post(this, [this, version, releaseNotes, installer] {
        m_offeredVersion = version;
        m_offered = installer;
        emit updateAvailable(QVariant(version), QVariant(releaseNotes));
    });
}

void UpdateManager::checkUpdate()
{
    if (AppInfo().isUnversioned()) {
        qCInfo(lcUpdate) << "Skipping update check for unversioned Vistrel";
        return;
    }
    if (m_thread)
        return;
    if (!m_share.isConfigured()) {
        qCInfo(lcUpdate) << "Skipping update check: this build names no update share";
        return;
    }
    if (!shouldCheckForUpdate())
        return;
    m_thread = std::make_unique<QThread>();
    m_worker = std::make_unique<UpdateWorker>(this, m_share);
    m_worker->moveToThread(m_thread.get());
    connect(m_thread.get(), &QThread::started, m_worker.get(), &UpdateWorker::start);
    connect(m_worker.get(), &UpdateWorker::finished, m_thread.get(), &QThread::quit);
    QThread* thread = m_thread.get();
    connect(
        thread, &QThread::finished, thread, [thread] { annotateRelease(thread); },
        Qt::DirectConnection);
    m_thread->start(QThread::InheritPriority);
}

void UpdateManager::cancel()
{
    if (!m_thread)
        return;
    if (m_thread->isRunning()) {
        post(m_worker.get(), [worker = m_worker.get()] { worker->cancel(); });
        m_thread->quit();
        m_thread->wait();
    }
    annotateAcquire(m_thread.get());
}

void UpdateManager::installNewVersion(QString newVersion)
{
    const QString file = getDownloadDir() + QLatin1Char('/') + getInstallerFileName(newVersion);
    qCInfo(lcUpdate) << "Installing new version..." << file;
    const ExpectedInstaller expected =
        newVersion == m_offeredVersion ? m_offered : ExpectedInstaller();
    if (!expected.isGiven()) {
        launch(file);
        return;
    }
    m_comparison = runOnPool([this, newVersion, file, expected] {
        const QString difference = expected.differenceFromFile(file);
        post(this, [this, newVersion, file, difference] {
            if (difference.isEmpty())
                launch(file);
            else
                refuse(newVersion, file, difference);
        });
    });
}

void UpdateManager::refuse(const QString& version, const QString& file, const QString& difference)
{
    qCWarning(lcUpdate) << "Refused to start the installer:" << difference << file;
    QFile::remove(file);
    // The offer no longer counts: without this no check would follow for days.
    QSettings().remove(lastNotificationKey);
    emit installerRefused(QVariant(version));
}

void UpdateManager::launch(const QString& file)
{
    platform::launchElevated(m_elevationProgram, file, this, [this, file](bool started) {
        if (started) {
            post(QCoreApplication::instance(), [] { QCoreApplication::quit(); });
            return;
        }
        qCWarning(lcUpdate) << "Failed to launch the installer: " << file;
        emit installingNewVersionFailed(QVariant(file));
    });
}

} // namespace corv
