#pragma once

#include "Azure/CloudShare.h"
#include "Update/UpdateManifest.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QObject>
#include <QString>

namespace corv {

class AzureStorage;
class UpdateManager;

/// One pass of the update protocol: fetch the channel's manifest, and if it
/// names a newer version whose installer is not on disk yet, fetch that. Lives
/// on the update thread; everything in it runs there. Every end of the pass
/// emits `finished`.
///
/// The manifest may carry the installer's "size" in bytes and its "sha256" in
/// hexadecimal digits. What is given is compared before a download gets its
/// name and may be executed, again when an installer is found on disk, and
/// again by the manager when it is to be started.
class UpdateWorker : public QObject
{
    Q_OBJECT

public:
    /// `manager` is not owned and must outlive the worker.
    UpdateWorker(UpdateManager* manager, CloudShare share);

signals:
    void finished();

public slots:
    void start();

    /// Ends the download in flight and the pass.
    void cancel();

private slots:
    void azureFileDownloaded(QString azureFilePath, QByteArray fileContent);
    void azureDownloadError(QString errorMessage);

private:
    enum State {
        Idle = 0,
        FetchingManifest = 1,
        FetchingInstaller = 2, ///< also the last state of a success
        Failed = 3,
    };

    void onUpdateJsonDownloaded(const QJsonDocument& document);
    void onNewInstallerDownloaded(const QString& path, const QByteArray& content);
    bool isInstallerOnDisk(const QString& file) const;
    void fetchInstaller();
    void deleteOldInstallers();

    UpdateManager* m_manager;
    int m_state = Idle;
    AzureStorage* m_azure = nullptr;
    UpdateManifest m_manifest;
    CloudShare m_share;
};

} // namespace corv
