#include "Support/FullDisk.h"
#include "Support/MessageLog.h"
#include "Update/UpdateManager.h"
#include "Update/UpdateWorker.h"
#include "UpdateSuite.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace corv;
using namespace corv::test;

/// The download of an installer: which files are fetched, kept and offered, and what else is in the
/// folder that they are saved to.
class InstallerDownloadTest : public UpdateSuite
{
    Q_OBJECT

private slots:
    void keepsOnlyWhatAgreesWithTheManifest_data();
    void keepsOnlyWhatAgreesWithTheManifest();
    void keepsAReplyWithoutLengthOnlyIfTheManifestCanCheckIt_data();
    void keepsAReplyWithoutLengthOnlyIfTheManifestCanCheckIt();
    void installerOnDiskIsNotFetchedAgain();
    void replacesWhatIsNotTheInstallerOnDisk_data();
    void replacesWhatIsNotTheInstallerOnDisk();
    void failedDownloadOffersNothing_data();
    void failedDownloadOffersNothing();
    void installerThatCannotBeSavedIsNotOffered();
    void fullDiskLeavesNoInstaller();
    void removesOldInstallersAndNothingElse();
    void linkInPlaceOfTheUpdateFolderIsNotFollowed();
    void fileInPlaceOfTheUpdateFolderIsKept();
};

void InstallerDownloadTest::keepsOnlyWhatAgreesWithTheManifest_data()
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

void InstallerDownloadTest::keepsOnlyWhatAgreesWithTheManifest()
{
    QFETCH(QByteArray, more);
    QFETCH(QByteArray, sent);
    QFETCH(bool, kept);
    serveManifest(manifest(offeredVersion.toUtf8(), "r9", more));
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

void InstallerDownloadTest::keepsAReplyWithoutLengthOnlyIfTheManifestCanCheckIt_data()
{
    QTest::addColumn<QByteArray>("more");
    QTest::addColumn<bool>("kept");
    const QByteArray right = "the installer";
    QTest::newRow("nothing to compare with") << QByteArray() << false;
    QTest::newRow("size") << sizeOf(right) << true;
    QTest::newRow("digest") << digestOf(right) << true;
    QTest::newRow("cut off, digest") << digestOf("the installer and more") << false;
}

void InstallerDownloadTest::keepsAReplyWithoutLengthOnlyIfTheManifestCanCheckIt()
{
    QFETCH(QByteArray, more);
    QFETCH(bool, kept);
    serveManifest(manifest(offeredVersion.toUtf8(), "r9", more));
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

void InstallerDownloadTest::installerOnDiskIsNotFetchedAgain()
{
    QVERIFY(QDir().mkpath(m_dataFolder + QStringLiteral("/update")));
    touch(installerFile());
    serveManifest(manifest(offeredVersion.toUtf8()));
    const MessageLog log;
    QVERIFY(checkOffersAnUpdate());
    QCOMPARE(m_server->requests().size(), 1);
    QVERIFY(log.contains(QStringLiteral("Installer already downloaded")));
}

void InstallerDownloadTest::replacesWhatIsNotTheInstallerOnDisk_data()
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

void InstallerDownloadTest::replacesWhatIsNotTheInstallerOnDisk()
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
    serveManifest(manifest(offeredVersion.toUtf8(), "r9", more));
    m_server->setAnswer(installerPath(), {200, "the installer", false, -1});
    QVERIFY(checkOffersAnUpdate());
    QCOMPARE(m_server->requests().size(), 2);
    QVERIFY(QFileInfo(installerFile()).isFile());
    QVERIFY(!QFileInfo(installerFile()).isSymLink());
    QFile file(installerFile());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("the installer"));
}

void InstallerDownloadTest::failedDownloadOffersNothing_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<qint64>("announced");
    QTest::newRow("refused") << 403 << qint64(-1);
    QTest::newRow("sent elsewhere") << 302 << qint64(-1);
    QTest::newRow("nothing there") << 204 << qint64(-1);
    QTest::newRow("server error") << 500 << qint64(-1);
    QTest::newRow("cut off") << 200 << qint64(100'000);
}

void InstallerDownloadTest::failedDownloadOffersNothing()
{
    QFETCH(int, status);
    QFETCH(qint64, announced);
    serveManifest(manifest(offeredVersion.toUtf8()));
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

void InstallerDownloadTest::installerThatCannotBeSavedIsNotOffered()
{
    serveManifest(manifest(offeredVersion.toUtf8()));
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

void InstallerDownloadTest::fullDiskLeavesNoInstaller()
{
    serveManifest(manifest(offeredVersion.toUtf8()));
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

void InstallerDownloadTest::removesOldInstallersAndNothingElse()
{
    QVERIFY(QDir().mkpath(m_dataFolder + QStringLiteral("/update/deep")));
    touch(m_dataFolder + QStringLiteral("/update/VistrelSetup-1.0.0.0-x64-Release.exe"));
    touch(m_dataFolder + QStringLiteral("/Vistrel.log"));
    serveManifest(manifest(offeredVersion.toUtf8()));
    m_server->setAnswer(installerPath(), {200, "the installer", false, -1});
    QVERIFY(checkOffersAnUpdate());
    QCOMPARE(QDir(m_dataFolder + QStringLiteral("/update"))
                 .entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList{UpdateManager::getInstallerFileName(offeredVersion)});
    QVERIFY(QFile::exists(m_dataFolder + QStringLiteral("/Vistrel.log")));
}

void InstallerDownloadTest::linkInPlaceOfTheUpdateFolderIsNotFollowed()
{
    QTemporaryDir elsewhere;
    touch(elsewhere.filePath(QStringLiteral("holiday.jpg")));
    QVERIFY(QDir().mkpath(m_dataFolder));
    QVERIFY(QFile::link(elsewhere.path(), m_dataFolder + QStringLiteral("/update")));
    serveManifest(manifest(offeredVersion.toUtf8()));
    m_server->setAnswer(installerPath(), {200, "the installer", false, -1});
    QVERIFY(checkOffersAnUpdate());
    QVERIFY(QFile::exists(elsewhere.filePath(QStringLiteral("holiday.jpg"))));
    QVERIFY(QFile::exists(installerFile()));
}

void InstallerDownloadTest::fileInPlaceOfTheUpdateFolderIsKept()
{
    QVERIFY(QDir().mkpath(m_dataFolder));
    touch(m_dataFolder + QStringLiteral("/update"));
    touch(m_dataFolder + QStringLiteral("/Vistrel.log"));
    serveManifest(manifest(offeredVersion.toUtf8()));
    m_server->setAnswer(installerPath(), {200, "the installer", false, -1});
    const MessageLog log;
    QVERIFY(checkOffersAnUpdate());
    QVERIFY(log.contains(QStringLiteral("Failed to create the 'update' dir in:")));
    QVERIFY(QFile::exists(m_dataFolder + QStringLiteral("/Vistrel.log")));
    QVERIFY(QFile::exists(m_dataFolder + QLatin1Char('/') +
                          UpdateManager::getInstallerFileName(offeredVersion)));
}

QTEST_GUILESS_MAIN(InstallerDownloadTest)
#include "InstallerDownloadTest.moc"
