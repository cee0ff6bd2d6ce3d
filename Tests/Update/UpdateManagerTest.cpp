#include "Update/UpdateManager.h"
#include "Support/MessageLog.h"
#include "Update/UpdateWorker.h"
#include "Update/updateNames.h"
#include "UpdateSuite.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QtTest>

using namespace corv;
using namespace corv::test;

/// When the updater asks the share, what it makes of the manifest, and how a check ends.
class UpdateManagerTest : public UpdateSuite
{
    Q_OBJECT

private slots:
    void checksAgainSevenDaysAfterANotification_data();
    void checksAgainSevenDaysAfterANotification();
    void fetchesANewerInstaller();
    void manifestWithoutAValidNewerVersionOffersNothing_data();
    void manifestWithoutAValidNewerVersionOffersNothing();
    void offersTheUpdateWhenItsTimeCannotBeStored();
    void emptyNotesGiveNoLines();
    void cancelInEachPhaseLeavesNoInstaller_data();
    void cancelInEachPhaseLeavesNoInstaller();
    void checksOncePerRun();
    void checksNothingWithoutAShare();
    void workerStartsOnce();
    void unexpectedFileEndsTheCheck();
};

void UpdateManagerTest::checksAgainSevenDaysAfterANotification_data()
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

void UpdateManagerTest::checksAgainSevenDaysAfterANotification()
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
    serveManifest(manifest(offeredVersion.toUtf8()));
    m_server->setAnswer(installerPath(), {200, "the installer", false, -1});
    const MessageLog log;
    UpdateManager manager(share(), QString());
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    manager.checkUpdate();
    QTRY_COMPARE(available.count(), 1);
    QCOMPARE(available[0][0].value<QVariant>().toString(), offeredVersion);
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
    QVERIFY(log.contains(QStringLiteral("Downloaded")));
}

void UpdateManagerTest::manifestWithoutAValidNewerVersionOffersNothing_data()
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

void UpdateManagerTest::manifestWithoutAValidNewerVersionOffersNothing()
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

void UpdateManagerTest::offersTheUpdateWhenItsTimeCannotBeStored()
{
    const MessageLog log;
    UpdateManager manager(share(), QString());
    QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    const QString settings = QSettings().fileName();
    QFile::remove(settings);
    QVERIFY(QDir().mkpath(settings + QStringLiteral("/taken")));
    manager.notifyUpdateAvailable(offeredVersion, {});
    QVERIFY(QDir(settings).removeRecursively());
    QTRY_COMPARE(available.count(), 1);
    QVERIFY(log.contains(QStringLiteral("Failed to remember the time of the notification in")));
}

void UpdateManagerTest::emptyNotesGiveNoLines()
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

void UpdateManagerTest::cancelInEachPhaseLeavesNoInstaller_data()
{
    QTest::addColumn<int>("requests");
    QTest::newRow("before anything was sent") << 0;
    QTest::newRow("manifest on its way") << 1;
    QTest::newRow("installer on its way") << 2;
}

void UpdateManagerTest::cancelInEachPhaseLeavesNoInstaller()
{
    QFETCH(int, requests);
    if (requests < 2)
        m_server->setAnswer("update/official.json", {200, "", true, -1});
    else
        serveManifest(manifest(offeredVersion.toUtf8()));
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

void UpdateManagerTest::checksOncePerRun()
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

void UpdateManagerTest::checksNothingWithoutAShare()
{
    const MessageLog log;
    UpdateManager manager(CloudShare{}, QString{});
    manager.checkUpdate();
    manager.cancel();
    QVERIFY(log.contains(QStringLiteral("this build names no update share")));
}

void UpdateManagerTest::workerStartsOnce()
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

void UpdateManagerTest::unexpectedFileEndsTheCheck()
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

QTEST_GUILESS_MAIN(UpdateManagerTest)
#include "UpdateManagerTest.moc"
