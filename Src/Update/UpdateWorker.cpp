#include "Update/UpdateWorker.h"

#include "Azure/AzureStorage.h"
#include "Base/FileReplacement.h"
#include "Base/limits.h"
#include "Shell/AppInfo.h"
#include "Update/UpdateManager.h"
#include "Update/logCategory.h"
#include "Update/updateNames.h"

#include <QCryptographicHash>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <utility>

namespace corv {

UpdateWorker::UpdateWorker(UpdateManager* manager, CloudShare share)
    : m_manager(manager), m_share(std::move(share))
{
}

void UpdateWorker::start()
{
    if (m_state != Idle) {
        qCWarning(lcUpdate) << "UpdateWorker not idle; current state:" << m_state;
        return;
    }
    m_state = FetchingManifest;
    // Made here and not in the constructor: its network manager belongs to this thread.
    m_azure = new AzureStorage(this, m_share);
    connect(m_azure, &AzureStorage::fileDownloaded, this, &UpdateWorker::azureFileDownloaded,
            Qt::DirectConnection);
    connect(m_azure, &AzureStorage::downloadError, this, &UpdateWorker::azureDownloadError,
            Qt::DirectConnection);
    m_azure->setSizeLimit(limits::updateManifestBytes);
    m_azure->downloadFile(updateNames::manifestPath(UpdateManager::getUpdateChannel()));
}

void UpdateWorker::cancel()
{
    if (m_azure)
        m_azure->abortCurrentDownload();
    emit finished();
}

void UpdateWorker::azureFileDownloaded(QString azureFilePath, QByteArray fileContent)
{
    switch (m_state) {
    case FetchingManifest:
        qCInfo(lcUpdate) << "Downloaded" << azureFilePath << ":" << fileContent;
        onUpdateJsonDownloaded(QJsonDocument::fromJson(fileContent));
        break;
    case FetchingInstaller:
        qCInfo(lcUpdate) << "Downloaded" << azureFilePath;
        onNewInstallerDownloaded(azureFilePath, fileContent);
        emit finished();
        break;
    default:
        qCWarning(lcUpdate) << "Error; update manager in the wrong state:" << m_state;
        m_state = Failed;
        emit finished();
    }
}

void UpdateWorker::azureDownloadError(QString errorMessage)
{
    qCWarning(lcUpdate) << "Download error:" << errorMessage;
    m_state = Failed;
    emit finished();
}

void UpdateWorker::onUpdateJsonDownloaded(const QJsonDocument& document)
{
    const std::optional<UpdateManifest> manifest = UpdateManifest::fromJson(document);
    if (!manifest) {
        qCWarning(lcUpdate) << "Unrecognized JSON document:" << document.toJson();
        emit finished();
        return;
    }
    m_manifest = *manifest;
    if (!AppInfo().isLowerThan(m_manifest.version)) {
        qCInfo(lcUpdate) << "Already using the latest version";
        emit finished();
        return;
    }
    if (!m_manifest.namesAreSafe()) {
        qCWarning(lcUpdate) << "Refused the version or path of the manifest:" << m_manifest.version
                            << m_manifest.path;
        emit finished();
        return;
    }
    if (!m_manifest.installer.isReadable) {
        qCWarning(lcUpdate) << "Refused the digest or size of the manifest:" << document.toJson();
        emit finished();
        return;
    }
    const QString file = UpdateManager::getDownloadDir() + QLatin1Char('/') +
                         UpdateManager::getInstallerFileName(m_manifest.version);
    if (isInstallerOnDisk(file)) {
        qCInfo(lcUpdate) << "Installer already downloaded" << file;
        m_manager->notifyUpdateAvailable(m_manifest.version, m_manifest.notes,
                                         m_manifest.installer);
        emit finished();
        return;
    }
    fetchInstaller();
}

bool UpdateWorker::isInstallerOnDisk(const QString& file) const
{
    if (!QFileInfo::exists(file) && !QFileInfo(file).isSymLink())
        return false;
    const QString difference = m_manifest.installer.differenceFromFile(file);
    if (difference.isEmpty())
        return true;
    qCWarning(lcUpdate) << "The installer on disk is fetched again:" << difference << file;
    return false;
}

void UpdateWorker::fetchInstaller()
{
    deleteOldInstallers();
    m_state = FetchingInstaller;
    const ExpectedInstaller& expected = m_manifest.installer;
    m_azure->setSizeLimit(expected.sizeBytes >= 0 ? expected.sizeBytes
                                                  : ExpectedInstaller::largestBytes);
    // With nothing to compare it with, only its length shows whether it is whole.
    m_azure->setLengthRequired(!expected.isGiven());
    m_azure->downloadFile(
        updateNames::installerPath(m_manifest.path, m_manifest.version,
                                   UpdateManager::getInstallerFileName(m_manifest.version)));
}

void UpdateWorker::deleteOldInstallers()
{
    qCInfo(lcUpdate) << "Deleting old installers...";
    // Where the folder could not be made, its parent is used instead, which holds the user's data.
    const QString folder = UpdateManager::getDownloadDir();
    if (!UpdateManager::isDownloadDir(folder))
        return;
    // A link goes by itself: what it leads to may hold more than installers.
    if (QFileInfo(folder).isSymLink())
        QFile::remove(folder);
    else
        QDir(folder).removeRecursively();
}

void UpdateWorker::onNewInstallerDownloaded(const QString& path, const QByteArray& content)
{
    const QString fileName = path.split(QLatin1Char('/')).last();
    if (!updateNames::isSafeFileElement(fileName)) {
        qCWarning(lcUpdate) << "Refused the name of the installer:" << fileName;
        return;
    }
    QByteArray sha256;
    if (!m_manifest.installer.sha256.isEmpty())
        sha256 = QCryptographicHash::hash(content, QCryptographicHash::Sha256);
    const QString difference = m_manifest.installer.differenceFrom(content.size(), sha256);
    if (!difference.isEmpty()) {
        qCWarning(lcUpdate) << "Refused the installer:" << difference;
        return;
    }
    const QString file = UpdateManager::getDownloadDir() + QLatin1Char('/') + fileName;
    qCInfo(lcUpdate) << "Saving new installer as" << file;
    // Written beside and renamed: a partial file would count as downloaded at the next start.
    FileReplacement installer(file, FileReplacement::InLockedFolder::refuse);
    if (const Status opened = installer.open(); !opened) {
        qCWarning(lcUpdate) << "Failed to open to the installer file for writing";
        qCWarning(lcUpdate) << opened.failure().sentence;
        return;
    }
    installer.write(content);
    const Status written = installer.commit(QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther);
    if (!written) {
        qCWarning(lcUpdate) << "Failed to write to the installer file";
        qCWarning(lcUpdate) << written.failure().sentence;
        return;
    }
    m_manager->notifyUpdateAvailable(m_manifest.version, m_manifest.notes, m_manifest.installer);
}

} // namespace corv
