#include "Activity.h"
#include "Support/HttpServer.h"
#include "Update/UpdateManager.h"
#include "Update/UpdateWorker.h"
#include "programs.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QTimer>

namespace corv::soak {
namespace {

const QString version = QStringLiteral("9.0.0.1");

CloudShare shareAt(const QString& address)
{
    return {address, QStringLiteral("/account/share/"), QByteArray("key").toBase64()};
}

/// Downloads that break off, end with other bytes, or whose program is killed: an installer with
/// its name on disk is whole.
class BrokenDownloads : public Activity
{
public:
    explicit BrokenDownloads(const Workshop& shop)
        : m_shop(shop), m_home(shop.folder + QStringLiteral("/downloads"))
    {
    }

    QString name() const override { return QStringLiteral("downloads"); }
    QString title() const override
    {
        return QStringLiteral("downloads that break off, are changed or are killed");
    }

    QString step(QRandomGenerator& random) override
    {
        const int size = 1 + static_cast<int>(random.bounded(3'000'000));
        QByteArray installer(size, Qt::Uninitialized);
        for (char& byte : installer)
            byte = static_cast<char>(random.bounded(256));
        const bool withDigest = random.bounded(2);
        const int sent = random.bounded(3) ? static_cast<int>(random.bounded(size)) : size;
        QByteArray body = installer.left(sent);
        // Other bytes of the same length are noticed by a digest alone.
        if (withDigest && sent == size && random.bounded(2)) {
            char& byte = body.data()[random.bounded(size)];
            byte = static_cast<char>(byte ^ 1);
        }
        const int killAfterMs = random.bounded(2) ? static_cast<int>(random.bounded(700)) : -1;

        test::HttpServer server;
        serve(server, installer, body, withDigest);
        const QString end = runClient(server.address(), killAfterMs);
        if (!end.isEmpty())
            return end;
        return whatIsOnDisk(installer);
    }

private:
    static void serve(test::HttpServer& server, const QByteArray& installer, const QByteArray& body,
                      bool withDigest)
    {
        QByteArray manifest = R"({"version": "9.0.0.1", "path": "r9", "notes": [])";
        if (withDigest)
            manifest += R"(, "sha256": ")" +
                        QCryptographicHash::hash(installer, QCryptographicHash::Sha256).toHex() +
                        '"';
        server.setAnswer("update/official.json", {200, manifest + '}'});
        server.setAnswer("builds/r9/" + version.toLatin1() + '/' +
                             UpdateManager::getInstallerFileName(version).toLatin1(),
                         {200, body, false, installer.size()});
    }

    // The server answers in this thread, so its event loop runs meanwhile.
    QString runClient(const QString& address, int killAfterMs)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "HOME"})
            environment.insert(QString::fromLatin1(name), m_home);
        environment.remove(QStringLiteral("CorvenityUpdateChannel"));
        QDir(m_home + QStringLiteral("/Corvenity")).removeRecursively(); // the settings
        QProcess client;
        client.setProcessEnvironment(environment);
        QEventLoop loop;
        QObject::connect(&client, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished),
                         &loop, &QEventLoop::quit);
        client.start(m_shop.ownProgram, {QStringLiteral("--update"), address});
        if (killAfterMs >= 0)
            QTimer::singleShot(killAfterMs, &client, [&client] { client.kill(); });
        bool isLate = false;
        QTimer::singleShot(longestMs, &client, [&client, &isLate] {
            isLate = true;
            client.kill();
        });
        if (client.waitForStarted() && client.state() == QProcess::Running)
            loop.exec();
        if (isLate)
            return QStringLiteral("the search for an update does not end");
        const QByteArray complaint = client.readAllStandardError();
        const bool hasCrashed = client.exitStatus() != QProcess::NormalExit && killAfterMs < 0;
        if (hasCrashed || complaint.contains("ERROR: AddressSanitizer") ||
            complaint.contains("runtime error: "))
            return QStringLiteral("the search for an update crashes: ") +
                   QString::fromUtf8(complaint).right(2000);
        return {};
    }

    QString whatIsOnDisk(const QByteArray& installer) const
    {
        const QDir folder(m_home + QStringLiteral("/Corvenity/Vistrel-soak/update"));
        QFile file(folder.filePath(UpdateManager::getInstallerFileName(version)));
        if (!file.exists())
            return {};
        if (!file.open(QIODevice::ReadOnly) || file.readAll() != installer)
            return QStringLiteral("an installer on disk is not the one of the server");
        return {};
    }

    const Workshop m_shop;
    const QString m_home;
};

} // namespace

std::unique_ptr<Activity> makeBrokenDownloads(const Workshop& workshop)
{
    return std::make_unique<BrokenDownloads>(workshop);
}

int lookForUpdate(const QString& address)
{
    UpdateManager manager(shareAt(address), QString());
    UpdateWorker worker(&manager, shareAt(address));
    QObject::connect(&worker, &UpdateWorker::finished, QCoreApplication::instance(),
                     &QCoreApplication::quit, Qt::QueuedConnection);
    QTimer::singleShot(0, &worker, &UpdateWorker::start);
    return QCoreApplication::exec();
}

} // namespace corv::soak
