#pragma once

#include "Azure/CloudShare.h"
#include "Threads/pool.h"
#include "Update/UpdateManifest.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <memory>

class QThread;

namespace corv {

class UpdateWorker;

/// The face of the updater towards the interface: runs at most one check in a run of the program,
/// on a thread of its own, and launches the installer that the check has fetched. Interface thread;
/// is a local variable of the entry point.
///
/// Whatever goes wrong with a check is logged and not shown; the next start tries again.
class UpdateManager : public QObject
{
    Q_OBJECT

public:
    /// Uses the share that the build was configured with, and the system's way to raise privileges.
    explicit UpdateManager(QObject* parent = nullptr);

    /// As above with another share, and another program that starts its first argument with raised
    /// privileges.
    UpdateManager(CloudShare share, QString elevationProgram, QObject* parent = nullptr);

    /// Waits for the update thread.
    ~UpdateManager() override;

    /// The update channel, from the environment variable `CorvenityUpdateChannel`.
    static QString getUpdateChannel();

    /// The flavour of installer for this machine.
    static QString getInstallerFlavour();

    static QString getInstallerFileName(const QString& version);

    /// The folder of downloaded installers, which is made if it is missing. If it cannot be made,
    /// logs a warning and returns its parent.
    static QString getDownloadDir();

    /// Whether `folder` is the download folder itself, and so may be emptied.
    static bool isDownloadDir(const QString& folder);

    /// The throttle: every start for test channels; for the official one, not within seven days of
    /// the last notification. A stored moment that cannot be read allows no check.
    bool shouldCheckForUpdate() const;

    /// Remembers the time of the notification, and has `updateAvailable` emitted; a
    /// moment that cannot be stored is warned about. `installer` is what the manifest says of the
    /// file, which is compared again when it is to be started. Update thread.
    void notifyUpdateAvailable(const QString& version, const QStringList& releaseNotes,
                               const ExpectedInstaller& installer = {});

signals:
    /// A newer installer is on disk. `releaseNotes` is a list of lines.
    void updateAvailable(QVariant version, QVariant releaseNotes);

    /// The installer did not start, or the user refused to raise its privileges.
    void installingNewVersionFailed(QVariant installerPath);

    /// The installer on disk is no longer what the manifest says. It has been deleted and was not
    /// started; the next start of the program fetches it again.
    void installerRefused(QVariant version);

public slots:
    /// Starts the check. Nothing happens in a build without version or share, a second time in a
    /// run, or when the throttle says no.
    void checkUpdate();

    /// Ends a running check and waits for its thread.
    void cancel();

    /// Starts the downloaded installer of that version with raised privileges. Once it runs the
    /// program quits; if it does not, `installingNewVersionFailed`. Where the manifest gives a size
    /// or a digest, the file is compared with it just before; if it differs, `installerRefused`.
    void installNewVersion(QString newVersion);

private:
    void launch(const QString& file);
    void refuse(const QString& version, const QString& file, const QString& difference);

    CloudShare m_share;
    QString m_elevationProgram;
    std::unique_ptr<UpdateWorker> m_worker;
    std::unique_ptr<QThread> m_thread;
    QString m_offeredVersion;
    ExpectedInstaller m_offered;
    PoolTask m_comparison;
};

} // namespace corv
