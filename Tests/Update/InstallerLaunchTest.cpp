#include "Support/MessageLog.h"
#include "Update/UpdateManager.h"
#include "UpdateSuite.h"

#include <QEventLoop>
#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

using namespace corv;
using namespace corv::test;

/// The start of a downloaded installer, with a script in place of the program that raises
/// privileges.
class InstallerLaunchTest : public UpdateSuite
{
    Q_OBJECT

private slots:
    void programEndsOnlyIfTheInstallerStarts_data();
    void programEndsOnlyIfTheInstallerStarts();
    void comparesTheInstallerAgainBeforeStartingIt_data();
    void comparesTheInstallerAgainBeforeStartingIt();
};

void InstallerLaunchTest::programEndsOnlyIfTheInstallerStarts_data()
{
    QTest::addColumn<QByteArray>("elevation");
    QTest::addColumn<bool>("fails");
    QTest::newRow("refused") << QByteArray("exit 126") << true;
    QTest::newRow("cannot be run") << QByteArray("exit 127") << true;
    QTest::newRow("allowed") << QByteArray("exit 0") << false;
}

void InstallerLaunchTest::programEndsOnlyIfTheInstallerStarts()
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
    manager.installNewVersion(offeredVersion);
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

void InstallerLaunchTest::comparesTheInstallerAgainBeforeStartingIt_data()
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

void InstallerLaunchTest::comparesTheInstallerAgainBeforeStartingIt()
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
    serveManifest(manifest(offeredVersion.toUtf8(), "r9", more));
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

    manager.installNewVersion(offeredVersion);
    QTRY_COMPARE(failed.count() + refused.count(), 1);
    QCOMPARE(QFile::exists(started), starts);
    QCOMPARE(QFile::exists(installerFile()), starts);
    QCOMPARE(refused.count(), starts ? 0 : 1);
    // Fetched again at the next start: no earlier notification keeps it from that.
    QCOMPARE(QSettings().contains(QStringLiteral("lastUpdateNotification")), starts);
}

QTEST_GUILESS_MAIN(InstallerLaunchTest)
#include "InstallerLaunchTest.moc"
