#include "Update/UpdateManager.h"
#include "Support/FullDisk.h"
#include "Support/HttpServer.h"
#include "Support/MessageLog.h"
#include "Update/UpdateWorker.h"
#include "Update/updateNames.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

using namespace corv;
using corv::test::HttpServer;
using corv::test::MessageLog;

namespace {

const QString newer = QStringLiteral("9.0.0.1");

QByteArray manifest(const QByteArray& version, const QByteArray& path = "r9",
                    const QByteArray& more = {})
{
    return R"({"version": ")" + version + R"(", "path": ")" + path +
           R"(", "notes": ["one", "two"], "more": 1)" + more + '}';
}

QByteArray digestOf(const QByteArray& content)
{
    return ", \"sha256\": \"" +
           QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex() + '"';
}

QByteArray sizeOf(const QByteArray& content)
{
    return ", \"size\": " + QByteArray::number(content.size());
}

} // namespace

class UpdateManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void throttle_data();
    void throttle();
    void fetchesANewerInstaller();
    void endsWithoutNews_data();
    void endsWithoutNews();
    void anInstallerThatIsWhatTheManifestSays_data();
    void anInstallerThatIsWhatTheManifestSays();
    void anInstallerWithoutLength_data();
    void anInstallerWithoutLength();
    void anInstallerOnDiskIsNotFetchedAgain();
    void whatIsNoInstallerOnDiskIsFetched_data();
    void whatIsNoInstallerOnDiskIsFetched();
    void aNotificationThatCannotBeRemembered();
    void emptyNotesAreNoLines();
    void anInstallerThatFails_data();
    void anInstallerThatFails();
    void anInstallerThatCannotBeSaved();
    void anInstallerThatFindsNoRoom();
    void oldInstallersGoAndNothingElse();
    void anUpdateFolderThatIsALink();
    void anUpdateFolderThatIsAFile();
    void exitDuringEachPhase_data();
    void exitDuringEachPhase();
    void oneCheckPerRun();
    void noCheckWithoutAShare();
    void aWorkerStartsOnce();
    void aFileThatNobodyAskedForEndsThePass();
    void launchesTheInstaller_data();
    void launchesTheInstaller();
    void anInstallerIsComparedAgainWhenStarted_data();
    void anInstallerIsComparedAgainWhenStarted();

private:
    CloudShare share() const
    {
        return {m_server->address(), QStringLiteral("/corvenitysoftwarebuilds/vistrel/"),
                QByteArray("key").toBase64()};
    }
    void serveManifest(const QByteArray& body) const
    {
        m_server->setAnswer("update/official.json", {200, body, false, -1});
    }
    QByteArray installerPath() const
    {
        return "builds/r9/" + newer.toUtf8() + '/' +
               UpdateManager::getInstallerFileName(newer).toUtf8();
    }
    QString installerFile() const
    {
        return m_dataFolder + QStringLiteral("/update/") +
               UpdateManager::getInstallerFileName(newer);
    }
    static void touch(const QString& path)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("x");
    }

    std::unique_ptr<HttpServer> m_server;
    QString m_dataFolder;
};

void UpdateManagerTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setOrganizationName(QStringLiteral("Corvenity"));
    QCoreApplication::setApplicationName(QStringLiteral("Vistrel-update-test"));
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope,
                       QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation));
    m_dataFolder = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
}

void UpdateManagerTest::init()
{
    m_server = std::make_unique<HttpServer>();
    QDir(m_dataFolder).removeRecursively();
    QSettings().clear();
    qunsetenv("CorvenityUpdateChannel");
}

void UpdateManagerTest::cleanup()
{
    m_server.reset();
    QDir(m_dataFolder).removeRecursively();
    QSettings().clear();
    qunsetenv("CorvenityUpdateChannel");
}

void UpdateManagerTest::throttle_data()
{
    QTest::addColumn<QByteArray>("channel");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<bool>("checks");
    const auto daysAgo = [](int days) {
        return updateNames::notificationText(QDateTime::currentDateTimeUtc().addDays(-days));
    };
    QTest::newRow("never notified") << QByteArray() << QString() << true;
    QTest::newRow("6 days") << QByteArray() << daysAgo(6) << false;
    QTest::newRow("7 days") << QByteArray() << daysAgo(7) << true;
    QTest::newRow("broken text") << QByteArray() << QStringLiteral("last tuesday") << false;
    QTest::newRow("dev") << QByteArray("dev") << daysAgo(0) << true;
    QTest::newRow("preview") << QByteArray("preview") << daysAgo(1) << true;
    QTest::newRow("unknown channel") << QByteArray("x") << daysAgo(1) << false;
}

void UpdateManagerTest::throttle()
{
    QFETCH(QByteArray, channel);
    QFETCH(QString, stored);
    QFETCH(bool, checks);
    if (!channel.isEmpty())
        qputenv("CorvenityUpdateChannel", channel);
    if (!stored.isEmpty())
        QSettings().setValue(QStringLiteral("lastUpdateNotification"), stored);
    const MessageLog log;
    UpdateManager manager(share(), QString());
    QCOMPARE(manager.shouldCheckForUpdate(), checks);
    manager.checkUpdate();
    if (checks) {
        QTRY_COMPARE(m_server->requests().size(), 1);
        const QByteArray name = channel == "dev" || channel == "preview" ? channel : "official";
        QCOMPARE(m_server->requests()[0].path, "/update/" + name + ".json");
    } else {
        manager.cancel();
        QVERIFY(m_server->requests().isEmpty());
    }
}

void UpdateManagerTest::fetchesANewerInstaller()
{
    serveManifest(manifest(newer.toUtf8()));
    m_server->setAnswer(installerPath(), {200, "the installer", false, -1});
    const MessageLog log;
    UpdateManager manager(share(), QString());
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    manager.checkUpdate();
    QTRY_COMPARE(available.count(), 1);
    QCOMPARE(available[0][0].value<QVariant>().toString(), newer);
    QCOMPARE(available[0][1].value<QVariant>().toStringList(),
             QStringList({QStringLiteral("one"), QStringLiteral("two")}));
    QFile file(installerFile());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("the installer"));
    QVERIFY(file.permissions() & QFile::ExeOwner);
    QVERIFY(!QSettings().value(QStringLiteral("lastUpdateNotification")).toString().isEmpty());
    QVERIFY(!manager.shouldCheckForUpdate());
    QVERIFY(log.contains(QStringLiteral("Deleting old installers...")));
    QVERIFY(log.contains(QStringLiteral("Saving new installer as")));
    QCOMPARE(log.count(QStringLiteral("Downloaded")), 2);
}

void UpdateManagerTest::endsWithoutNews_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("message");
    const QString latest = QStringLiteral("Already using the latest version");
    const QString unrecognized = QStringLiteral("Unrecognized JSON document:");
    const QString refused = QStringLiteral("Refused the version or path of the manifest:");
    QTest::newRow("equal") << manifest(VISTREL_VERSION) << latest;
    QTest::newRow("lower") << manifest("0.0.0.0") << latest;
    QTest::newRow("no version text") << manifest("soon") << QStringLiteral("Invalid version:");
    QTest::newRow("without notes")
        << QByteArray(R"({"version":"9.0.0.0","path":"x"})") << unrecognized;
    QTest::newRow("without path") << QByteArray(R"({"version":"9.0.0.0","notes":[]})")
                                  << unrecognized;
    QTest::newRow("without version") << QByteArray(R"({"path":"x","notes":[]})") << unrecognized;
    QTest::newRow("no JSON") << QByteArray("<html>") << unrecognized;
    QTest::newRow("empty") << QByteArray() << unrecognized;
    QTest::newRow("path upward") << manifest("9.0.0.0", "../../x") << refused;
    QTest::newRow("version upward") << manifest("9.0./x.0") << refused;
    QTest::newRow("version of words") << manifest("9.one.two.three") << refused;
    QTest::newRow("version with a sign") << manifest("9.-1.0.0") << refused;
    QTest::newRow("path upward, escaped") << manifest("9.0.0.0", "%2e%2e/%2E%2E/x") << refused;
    QTest::newRow("path with a fragment") << manifest("9.0.0.0", "r9#x") << refused;
    QTest::newRow("path with a query") << manifest("9.0.0.0", "r9?x") << refused;
    const QString unreadable = QStringLiteral("Refused the digest or size of the manifest:");
    const auto extended = [](const char* more) { return manifest("9.0.0.0", "r9", more); };
    QTest::newRow("digest too short") << extended(", \"sha256\": \"00ff\"") << unreadable;
    QTest::newRow("digest no text") << extended(", \"sha256\": 1") << unreadable;
    QTest::newRow("digest null") << extended(", \"sha256\": null") << unreadable;
    QTest::newRow("size negative") << extended(", \"size\": -1") << unreadable;
    QTest::newRow("size nothing") << extended(", \"size\": 0") << unreadable;
    QTest::newRow("size no number") << extended(", \"size\": \"12\"") << unreadable;
    QTest::newRow("size broken") << extended(", \"size\": 12.5") << unreadable;
    QTest::newRow("size beyond all bounds") << extended(", \"size\": 1e300") << unreadable;
    QTest::newRow("huge") << QByteArray(3'000'000, ' ') << QStringLiteral("Download error:");
}

void UpdateManagerTest::endsWithoutNews()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, message);
    serveManifest(body);
    const MessageLog log;
    UpdateManager manager(share(), QString());
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    manager.checkUpdate();
    QTRY_VERIFY(log.contains(message));
    manager.cancel();
    QCoreApplication::processEvents();
    QCOMPARE(available.count(), 0);
    QVERIFY(!QSettings().contains(QStringLiteral("lastUpdateNotification")));
    QCOMPARE(m_server->requests().size(), 1);
}

void UpdateManagerTest::anInstallerThatIsWhatTheManifestSays_data()
{
    QTest::addColumn<QByteArray>("more");
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<bool>("kept");
    const QByteArray right = "the installer";
    const QByteArray wrong = "the inst4ller";
    QTest::newRow("both right") << digestOf(right) + sizeOf(right) << right << true;
    QTest::newRow("digest right") << digestOf(right) << right << true;
    QTest::newRow("digest in capitals")
        << digestOf(right).toUpper().replace("SHA256", "sha256") << right << true;
    QTest::newRow("size right") << sizeOf(right) << right << true;
    QTest::newRow("one byte differs") << digestOf(right) + sizeOf(right) << wrong << false;
    QTest::newRow("shorter") << sizeOf(right) << right.left(5) << false;
    QTest::newRow("longer") << sizeOf(right) << right + '!' << false;
    QTest::newRow("much longer") << sizeOf(right) << right.repeated(100'000) << false;
    QTest::newRow("empty") << QByteArray() << QByteArray() << false;
}

void UpdateManagerTest::anInstallerThatIsWhatTheManifestSays()
{
    QFETCH(QByteArray, more);
    QFETCH(QByteArray, sent);
    QFETCH(bool, kept);
    serveManifest(manifest(newer.toUtf8(), "r9", more));
    m_server->setAnswer(installerPath(), {200, sent, false, -1});
    UpdateManager manager(share(), QString());
    UpdateWorker worker(&manager, share());
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    QSignalSpy finished(&worker, &UpdateWorker::finished);
    worker.start();
    QTRY_COMPARE(finished.count(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(available.count(), kept ? 1 : 0);
    const QStringList files =
        QDir(m_dataFolder + QStringLiteral("/update"))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    QCOMPARE(files.size(), kept ? 1 : 0);
}

void UpdateManagerTest::anInstallerWithoutLength_data()
{
    QTest::addColumn<QByteArray>("more");
    QTest::addColumn<bool>("kept");
    const QByteArray right = "the installer";
    QTest::newRow("nothing to compare with") << QByteArray() << false;
    QTest::newRow("size") << sizeOf(right) << true;
    QTest::newRow("digest") << digestOf(right) << true;
    QTest::newRow("cut off, digest") << digestOf("the installer and more") << false;
}

void UpdateManagerTest::anInstallerWithoutLength()
{
    QFETCH(QByteArray, more);
    QFETCH(bool, kept);
    serveManifest(manifest(newer.toUtf8(), "r9", more));
    HttpServer::Answer answer(200, "the installer");
    answer.withoutLength = true;
    m_server->setAnswer(installerPath(), answer);
    UpdateManager manager(share(), QString());
    UpdateWorker worker(&manager, share());
    QSignalSpy finished(&worker, &UpdateWorker::finished);
    worker.start();
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(QFile::exists(installerFile()), kept);
}

void UpdateManagerTest::anInstallerOnDiskIsNotFetchedAgain()
{
    QVERIFY(QDir().mkpath(m_dataFolder + QStringLiteral("/update")));
    touch(installerFile());
    serveManifest(manifest(newer.toUtf8()));
    const MessageLog log;
    UpdateManager manager(share(), QString());
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    manager.checkUpdate();
    QTRY_COMPARE(available.count(), 1);
    QCOMPARE(m_server->requests().size(), 1);
    QVERIFY(log.contains(QStringLiteral("Installer already downloaded")));
}

void UpdateManagerTest::whatIsNoInstallerOnDiskIsFetched_data()
{
    QTest::addColumn<QByteArray>("onDisk");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QByteArray>("more");
    const QByteArray right = "the installer";
    QTest::newRow("folder") << QByteArray() << QStringLiteral("folder") << QByteArray();
    QTest::newRow("link") << right << QStringLiteral("link") << QByteArray();
    QTest::newRow("empty") << QByteArray() << QStringLiteral("file") << QByteArray();
    QTest::newRow("cut off") << right.left(4) << QStringLiteral("file") << sizeOf(right);
    QTest::newRow("other bytes") << QByteArray("the inst4ller") << QStringLiteral("file")
                                 << digestOf(right) + sizeOf(right);
}

void UpdateManagerTest::whatIsNoInstallerOnDiskIsFetched()
{
    QFETCH(QByteArray, onDisk);
    QFETCH(QString, kind);
    QFETCH(QByteArray, more);
    QTemporaryDir elsewhere;
    const bool isLink = kind == QLatin1String("link");
    QVERIFY(QDir().mkpath(m_dataFolder + QStringLiteral("/update")));
    if (kind == QLatin1String("folder")) {
        QVERIFY(QDir().mkpath(installerFile()));
    } else {
        QFile file(isLink ? elsewhere.filePath(QStringLiteral("x")) : installerFile());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(onDisk);
        QVERIFY(!isLink || file.link(installerFile()));
    }
    serveManifest(manifest(newer.toUtf8(), "r9", more));
    m_server->setAnswer(installerPath(), {200, "the installer", false, -1});
    UpdateManager manager(share(), QString());
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    manager.checkUpdate();
    QTRY_COMPARE(available.count(), 1);
    QCOMPARE(m_server->requests().size(), 2);
    QVERIFY(QFileInfo(installerFile()).isFile());
    QVERIFY(!QFileInfo(installerFile()).isSymLink());
    QFile file(installerFile());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("the installer"));
}

void UpdateManagerTest::aNotificationThatCannotBeRemembered()
{
    const MessageLog log;
    UpdateManager manager(share(), QString());
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    const QString settings = QSettings().fileName();
    QFile::remove(settings);
    QVERIFY(QDir().mkpath(settings + QStringLiteral("/taken")));
    manager.notifyUpdateAvailable(newer, {});
    QVERIFY(QDir(settings).removeRecursively());
    QTRY_COMPARE(available.count(), 1);
    QVERIFY(log.contains(QStringLiteral("Failed to remember the time of the notification in")));
}

void UpdateManagerTest::emptyNotesAreNoLines()
{
    QVERIFY(QDir().mkpath(m_dataFolder + QStringLiteral("/update")));
    touch(installerFile());
    serveManifest(R"({"version":"9.0.0.1","path":"r9","notes":[]})");
    UpdateManager manager(share(), QString());
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    manager.checkUpdate();
    QTRY_COMPARE(available.count(), 1);
    QVERIFY(available[0][1].value<QVariant>().toStringList().isEmpty());
}

void UpdateManagerTest::anInstallerThatFails_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<qint64>("announced");
    QTest::newRow("refused") << 403 << qint64(-1);
    QTest::newRow("sent elsewhere") << 302 << qint64(-1);
    QTest::newRow("nothing there") << 204 << qint64(-1);
    QTest::newRow("server error") << 500 << qint64(-1);
    QTest::newRow("cut off") << 200 << qint64(100'000);
}

void UpdateManagerTest::anInstallerThatFails()
{
    QFETCH(int, status);
    QFETCH(qint64, announced);
    serveManifest(manifest(newer.toUtf8()));
    m_server->setAnswer(installerPath(), {status, "part of it", false, announced});
    const MessageLog log;
    UpdateManager manager(share(), QString());
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    manager.checkUpdate();
    QTRY_VERIFY(log.contains(QStringLiteral("Download error:")));
    manager.cancel();
    QCoreApplication::processEvents();
    QCOMPARE(available.count(), 0);
    QVERIFY(!QFile::exists(installerFile()));
}

void UpdateManagerTest::anInstallerThatCannotBeSaved()
{
    serveManifest(manifest(newer.toUtf8()));
    m_server->setAnswer(installerPath(), {200, "the installer", false, -1});
    const MessageLog log;
    UpdateManager manager(share(), QString());
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    // Between the request for the installer and its answer the name is taken by a folder.
    connect(m_server.get(), &HttpServer::requested, this, [this](const QByteArray& path) {
        if (path.contains("builds"))
            QVERIFY(QDir().mkpath(installerFile() + QStringLiteral("/taken")));
    });
    manager.checkUpdate();
    QTRY_VERIFY(log.contains(QStringLiteral("Failed to open to the installer file for writing")) ||
                log.contains(QStringLiteral("Failed to write to the installer file")));
    manager.cancel();
    QCoreApplication::processEvents();
    QCOMPARE(available.count(), 0);
}

void UpdateManagerTest::anInstallerThatFindsNoRoom()
{
    serveManifest(manifest(newer.toUtf8()));
    m_server->setAnswer(installerPath(), {200, "the installer", false, -1});
    const MessageLog log;
    UpdateManager manager(share(), QString());
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    {
        const corv::test::FullDisk disk(0);
        manager.checkUpdate();
        QTRY_VERIFY(log.contains(QStringLiteral("Failed to write to the installer file")));
    }
    manager.cancel();
    QCoreApplication::processEvents();
    QCOMPARE(available.count(), 0);
    QVERIFY(!QFile::exists(installerFile()));
}

void UpdateManagerTest::oldInstallersGoAndNothingElse()
{
    QVERIFY(QDir().mkpath(m_dataFolder + QStringLiteral("/update/deep")));
    touch(m_dataFolder + QStringLiteral("/update/VistrelSetup-1.0.0.0-x64-Release.exe"));
    touch(m_dataFolder + QStringLiteral("/Vistrel.log"));
    serveManifest(manifest(newer.toUtf8()));
    m_server->setAnswer(installerPath(), {200, "the installer", false, -1});
    UpdateManager manager(share(), QString());
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    manager.checkUpdate();
    QTRY_COMPARE(available.count(), 1);
    QCOMPARE(QDir(m_dataFolder + QStringLiteral("/update"))
                 .entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList{UpdateManager::getInstallerFileName(newer)});
    QVERIFY(QFile::exists(m_dataFolder + QStringLiteral("/Vistrel.log")));
}

void UpdateManagerTest::anUpdateFolderThatIsALink()
{
    QTemporaryDir elsewhere;
    touch(elsewhere.filePath(QStringLiteral("holiday.jpg")));
    QVERIFY(QDir().mkpath(m_dataFolder));
    QVERIFY(QFile::link(elsewhere.path(), m_dataFolder + QStringLiteral("/update")));
    serveManifest(manifest(newer.toUtf8()));
    m_server->setAnswer(installerPath(), {200, "the installer", false, -1});
    UpdateManager manager(share(), QString());
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    manager.checkUpdate();
    QTRY_COMPARE(available.count(), 1);
    QVERIFY(QFile::exists(elsewhere.filePath(QStringLiteral("holiday.jpg"))));
    QVERIFY(QFile::exists(installerFile()));
}

void UpdateManagerTest::anUpdateFolderThatIsAFile()
{
    QVERIFY(QDir().mkpath(m_dataFolder));
    touch(m_dataFolder + QStringLiteral("/update"));
    touch(m_dataFolder + QStringLiteral("/Vistrel.log"));
    serveManifest(manifest(newer.toUtf8()));
    m_server->setAnswer(installerPath(), {200, "the installer", false, -1});
    const MessageLog log;
    UpdateManager manager(share(), QString());
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    manager.checkUpdate();
    QTRY_COMPARE(available.count(), 1);
    QVERIFY(log.contains(QStringLiteral("Failed to create the 'update' dir in:")));
    QVERIFY(QFile::exists(m_dataFolder + QStringLiteral("/Vistrel.log")));
    QVERIFY(QFile::exists(m_dataFolder + QLatin1Char('/') +
                          UpdateManager::getInstallerFileName(newer)));
}

void UpdateManagerTest::exitDuringEachPhase_data()
{
    QTest::addColumn<int>("requests");
    QTest::newRow("before anything was sent") << 0;
    QTest::newRow("manifest on its way") << 1;
    QTest::newRow("installer on its way") << 2;
}

void UpdateManagerTest::exitDuringEachPhase()
{
    QFETCH(int, requests);
    if (requests < 2)
        m_server->setAnswer("update/official.json", {200, "", true, -1});
    else
        serveManifest(manifest(newer.toUtf8()));
    m_server->setAnswer(installerPath(), {200, "", true, -1});
    {
        UpdateManager manager(share(), QString());
        manager.checkUpdate();
        QTRY_VERIFY(m_server->requests().size() >= requests);
        manager.cancel();
        manager.cancel(); // a second one is harmless
    }
    QVERIFY(!QFile::exists(installerFile()));
}

void UpdateManagerTest::oneCheckPerRun()
{
    serveManifest(manifest("1.0.0.0"));
    const MessageLog log;
    UpdateManager manager(share(), QString());
    manager.checkUpdate();
    QTRY_VERIFY(log.contains(QStringLiteral("Already using the latest version")));
    manager.checkUpdate();
    manager.cancel();
    QCOMPARE(m_server->requests().size(), 1);
}

void UpdateManagerTest::noCheckWithoutAShare()
{
    const MessageLog log;
    UpdateManager manager(CloudShare{}, QString{});
    manager.checkUpdate();
    manager.cancel();
    QCOMPARE(log.count(QStringLiteral("this build names no update share")), 1);
}

void UpdateManagerTest::aWorkerStartsOnce()
{
    m_server->setAnswer("update/official.json", {200, "", true, -1});
    UpdateManager manager(share(), QString());
    UpdateWorker worker(&manager, share());
    const MessageLog log;
    worker.start();
    worker.start();
    QVERIFY(log.contains(QStringLiteral("UpdateWorker not idle; current state: 1")));
    worker.cancel();
}

void UpdateManagerTest::aFileThatNobodyAskedForEndsThePass()
{
    UpdateManager manager(share(), QString());
    UpdateWorker worker(&manager, share());
    const QSignalSpy finished(&worker, &UpdateWorker::finished);
    const MessageLog log;
    for (const char* state : {"0", "3"}) {
        QVERIFY(QMetaObject::invokeMethod(&worker, "azureFileDownloaded", Q_ARG(QString, "a"),
                                          Q_ARG(QByteArray, "b")));
        QVERIFY(log.contains(QStringLiteral("Error; update manager in the wrong state: ") +
                             QLatin1String(state)));
    }
    QCOMPARE(finished.count(), 2);
}

void UpdateManagerTest::launchesTheInstaller_data()
{
    QTest::addColumn<QByteArray>("elevation");
    QTest::addColumn<bool>("fails");
    QTest::newRow("refused") << QByteArray("exit 126") << true;
    QTest::newRow("cannot be run") << QByteArray("exit 127") << true;
    QTest::newRow("allowed") << QByteArray("exit 0") << false;
}

void UpdateManagerTest::launchesTheInstaller()
{
    QFETCH(QByteArray, elevation);
    QFETCH(bool, fails);
    QTemporaryDir folder;
    const QString program = folder.filePath(QStringLiteral("elevate"));
    QFile script(program);
    QVERIFY(script.open(QIODevice::WriteOnly));
    script.write("#!/bin/sh\n" + elevation + '\n');
    script.setPermissions(script.permissions() | QFile::ExeOwner);
    script.close();

    const MessageLog log;
    UpdateManager manager(share(), program);
    QSignalSpy failed(&manager, &UpdateManager::installingNewVersionFailed);
    QSignalSpy quit(QCoreApplication::instance(), &QCoreApplication::aboutToQuit);
    manager.installNewVersion(newer);
    QVERIFY(log.contains(QStringLiteral("Installing new version...")));
    if (fails) {
        QTRY_COMPARE(failed.count(), 1);
        QCOMPARE(failed[0][0].value<QVariant>().toString(), installerFile());
        QVERIFY(log.contains(QStringLiteral("Failed to launch the installer: ")));
    } else {
        // The program quits: an event loop that runs ends.
        QEventLoop loop;
        connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &loop,
                &QEventLoop::quit);
        QTimer::singleShot(30'000, &loop, [&loop] { loop.exit(1); });
        QCOMPARE(loop.exec(), 0);
        QCOMPARE(failed.count(), 0);
    }
}

void UpdateManagerTest::anInstallerIsComparedAgainWhenStarted_data()
{
    QTest::addColumn<QByteArray>("more");
    QTest::addColumn<QByteArray>("onDisk"); // when it is to be started
    QTest::addColumn<bool>("starts");
    const QByteArray offered = "the installer";
    QTest::newRow("digest, unchanged") << digestOf(offered) << offered << true;
    QTest::newRow("digest, changed") << digestOf(offered) << QByteArray("the intruder!") << false;
    QTest::newRow("digest, emptied") << digestOf(offered) << QByteArray() << false;
    QTest::newRow("size, changed") << sizeOf(offered) << offered + '.' << false;
    QTest::newRow("neither, changed") << QByteArray() << QByteArray("another") << true;
}

void UpdateManagerTest::anInstallerIsComparedAgainWhenStarted()
{
    QFETCH(QByteArray, more);
    QFETCH(QByteArray, onDisk);
    QFETCH(bool, starts);
    QTemporaryDir folder;
    const QString elevation = folder.filePath(QStringLiteral("elevate"));
    const QString started = folder.filePath(QStringLiteral("started"));
    QFile script(elevation);
    QVERIFY(script.open(QIODevice::WriteOnly));
    script.write("#!/bin/sh\ntouch '" + QFile::encodeName(started) + "'\nexit 126\n");
    script.setPermissions(script.permissions() | QFile::ExeOwner);
    script.close();
    serveManifest(manifest(newer.toUtf8(), "r9", more));
    m_server->setAnswer(installerPath(), {200, "the installer", false, -1});

    UpdateManager manager(share(), elevation);
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    QSignalSpy failed(&manager, &UpdateManager::installingNewVersionFailed);
    QSignalSpy refused(&manager, &UpdateManager::installerRefused);
    manager.checkUpdate();
    QTRY_COMPARE(available.count(), 1);
    QFile installer(installerFile());
    QVERIFY(installer.open(QIODevice::WriteOnly));
    installer.write(onDisk);
    installer.close();

    manager.installNewVersion(newer);
    QTRY_COMPARE(failed.count() + refused.count(), 1);
    QCOMPARE(QFile::exists(started), starts);
    QCOMPARE(QFile::exists(installerFile()), starts);
    QCOMPARE(refused.count(), starts ? 0 : 1);
    // Fetched again at the next start: no earlier notification keeps it from that.
    QCOMPARE(QSettings().contains(QStringLiteral("lastUpdateNotification")), starts);
}

QTEST_GUILESS_MAIN(UpdateManagerTest)
#include "UpdateManagerTest.moc"
