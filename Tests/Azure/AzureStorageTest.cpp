#include "Azure/AzureStorage.h"
#include "Azure/sharedKey.h"
#include "Support/HttpServer.h"
#include "Support/MessageLog.h"

#include <QLocale>
#include <QProcess>
#include <QSignalSpy>
#include <QtTest>

using namespace corv;
using corv::test::HttpServer;
using corv::test::MessageLog;

class AzureStorageTest : public QObject
{
    Q_OBJECT

private slots:
    void datesAreEnglishInEveryLocale_data();
    void datesAreEnglishInEveryLocale();
    void signsTheWholeTemplate();
    void agreesWithAnotherImplementation_data();
    void agreesWithAnotherImplementation();
    void refusesPaths_data();
    void refusesPaths();
    void downloadsASignedFile();
    void aBlankIsSignedUnescaped();
    void errorsAreReported_data();
    void errorsAreReported();
    void anAbortIsReported();
    void abortingNothingDoesNothing();
    void aDownloadStartedFromTheSignalGoesUntracked();
    void aShortAddressIsUnexpected();
    void aDownloadPastTheLimitEnds();
    void aDownloadThatBreaksOffIsNoFile();
    void aFileOfAnotherLengthIsNoFile_data();
    void aFileOfAnotherLengthIsNoFile();
    void asksForTheBytesAsTheyAre();
    void refusesAnEncodedAnswer();
    void twoLengthsAreNone();
    void aMissingLengthFailsWhereItIsRequired_data();
    void aMissingLengthFailsWhereItIsRequired();
    void usesTheProxyOfTheSystem();
    void aBuildWithoutValuesIsNotConfigured();

private:
    static CloudShare share(const QString& baseUrl)
    {
        return {baseUrl, QStringLiteral("/corvenitysoftwarebuilds/vistrel/"),
                QByteArray("a key of the test").toBase64()};
    }
};

void AzureStorageTest::datesAreEnglishInEveryLocale_data()
{
    QTest::addColumn<QLocale>("locale");
    QTest::addColumn<QDateTime>("moment");
    QTest::addColumn<QString>("text");
    const QDateTime january(QDate(2026, 1, 4), QTime(3, 5, 9), Qt::UTC);
    const QDateTime may(QDate(2026, 5, 20), QTime(23, 59, 59), Qt::UTC);
    const QString inJanuary = QStringLiteral("Sun, 04 Jan 2026 03:05:09 GMT");
    const QString inMay = QStringLiteral("Wed, 20 May 2026 23:59:59 GMT");
    for (const auto language : {QLocale::German, QLocale::Japanese, QLocale::English}) {
        const QLocale locale(language);
        QTest::addRow("january %s", qPrintable(locale.name())) << locale << january << inJanuary;
        QTest::addRow("may %s", qPrintable(locale.name())) << locale << may << inMay;
    }
    QTest::newRow("another zone") << QLocale(QLocale::German) << january.toOffsetFromUtc(9 * 3600)
                                  << inJanuary;
}

void AzureStorageTest::datesAreEnglishInEveryLocale()
{
    QFETCH(QLocale, locale);
    QFETCH(QDateTime, moment);
    const QLocale before;
    QLocale::setDefault(locale);
    const QString text = sharedKey::requestDate(moment);
    QLocale::setDefault(before);
    QTEST(text, "text");
}

void AzureStorageTest::signsTheWholeTemplate()
{
    QCOMPARE(sharedKey::stringToSign(QStringLiteral("DATE"), QStringLiteral("/a/b/c d")),
             QStringLiteral("GET\n\n\n\n\n\n\n\n\n\n\n\nx-ms-date:DATE\nx-ms-version:2017-07-29\n"
                            "/a/b/c d"));
}

void AzureStorageTest::agreesWithAnotherImplementation_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("plain") << QStringLiteral("GET\n\nx");
    QTest::newRow("beyond ASCII") << QStringLiteral("/konto/freigabe/größe 日本.json");
    QTest::newRow("empty") << QString();
}

void AzureStorageTest::agreesWithAnotherImplementation()
{
    QFETCH(QString, text);
    const QByteArray key = QByteArray::fromHex("00ff1022337f80");
    QProcess openssl;
    openssl.start(QStringLiteral("openssl"),
                  {QStringLiteral("dgst"), QStringLiteral("-sha256"), QStringLiteral("-mac"),
                   QStringLiteral("HMAC"), QStringLiteral("-macopt"),
                   QStringLiteral("hexkey:00ff1022337f80"), QStringLiteral("-binary")});
    QVERIFY(openssl.waitForStarted());
    openssl.write(text.toUtf8());
    openssl.closeWriteChannel();
    QVERIFY(openssl.waitForFinished());
    QCOMPARE(sharedKey::signature(text, key.toBase64()),
             openssl.readAllStandardOutput().toBase64());
}

void AzureStorageTest::refusesPaths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("warning");
    QTest::newRow("empty") << QString() << QStringLiteral("Empty file path");
    QTest::newRow("leading slash")
        << QStringLiteral("/update/official.json")
        << QStringLiteral(
               "File path is relative to the Azure storage and it mustn't start with a /");
}

void AzureStorageTest::refusesPaths()
{
    QFETCH(QString, path);
    QFETCH(QString, warning);
    HttpServer server;
    AzureStorage storage(nullptr, share(server.address()));
    QSignalSpy downloaded(&storage, &AzureStorage::fileDownloaded);
    QSignalSpy failed(&storage, &AzureStorage::downloadError);
    const MessageLog log;
    storage.downloadFile(path);
    QCOMPARE(log.messages(QtWarningMsg), QStringList{warning});
    QCOMPARE(downloaded.count() + failed.count(), 0);
}

void AzureStorageTest::downloadsASignedFile()
{
    HttpServer server;
    server.setAnswer("update/official.json", {200, "the body", false, -1});
    AzureStorage storage(nullptr, share(server.address()));
    QSignalSpy downloaded(&storage, &AzureStorage::fileDownloaded);
    storage.downloadFile(QStringLiteral("update/official.json"));
    QTRY_COMPARE(downloaded.count(), 1);
    QCOMPARE(downloaded[0][0].toString(), QStringLiteral("update/official.json"));
    QCOMPARE(downloaded[0][1].toByteArray(), QByteArray("the body"));

    const HttpServer::Request request = server.requests().value(0);
    const QByteArray date = request.headers["x-ms-date"];
    QCOMPARE(request.headers["x-ms-version"], QByteArray("2017-07-29"));
    const QByteArray expected = sharedKey::signature(
        sharedKey::stringToSign(
            QString::fromUtf8(date),
            QStringLiteral("/corvenitysoftwarebuilds/vistrel/update/official.json")),
        QByteArray("a key of the test").toBase64());
    QCOMPARE(request.headers["authorization"], "SharedKey corvenitysoftwarebuilds:" + expected);
}

void AzureStorageTest::aBlankIsSignedUnescaped()
{
    HttpServer server;
    server.setAnswer("builds/my%20build", {200, "x", false, -1});
    AzureStorage storage(nullptr, share(server.address()));
    QSignalSpy downloaded(&storage, &AzureStorage::fileDownloaded);
    storage.downloadFile(QStringLiteral("builds/my build"));
    QTRY_COMPARE(downloaded.count(), 1);
    const HttpServer::Request request = server.requests().value(0);
    const QByteArray expected = sharedKey::signature(
        sharedKey::stringToSign(QString::fromUtf8(request.headers["x-ms-date"]),
                                QStringLiteral("/corvenitysoftwarebuilds/vistrel/builds/my build")),
        QByteArray("a key of the test").toBase64());
    QVERIFY(request.headers["authorization"].endsWith(expected));
}

void AzureStorageTest::errorsAreReported_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("signature refused") << 403;
    QTest::newRow("absent") << 404;
    QTest::newRow("server error") << 500;
    QTest::newRow("moved to nowhere") << 302;
    QTest::newRow("a part of the file") << 206;
    QTest::newRow("connection refused") << 0;
}

void AzureStorageTest::errorsAreReported()
{
    QFETCH(int, status);
    HttpServer server;
    server.setAnswer("f", {status, "no", false, -1});
    const QString address = status ? server.address() : QStringLiteral("http://127.0.0.1:1/");
    AzureStorage storage(nullptr, share(address));
    QSignalSpy downloaded(&storage, &AzureStorage::fileDownloaded);
    QSignalSpy failed(&storage, &AzureStorage::downloadError);
    const MessageLog log;
    storage.downloadFile(QStringLiteral("f"));
    QTRY_COMPARE(failed.count(), 1);
    QCOMPARE(downloaded.count(), 0);
    QVERIFY(log.contains(QStringLiteral("Download of")));
    QVERIFY(log.contains(QStringLiteral(" failed; error:")));
    QVERIFY(log.contains(failed[0][0].toString()));
}

void AzureStorageTest::anAbortIsReported()
{
    HttpServer server;
    server.setAnswer("f", {200, "", true, -1});
    AzureStorage storage(nullptr, share(server.address()));
    QSignalSpy failed(&storage, &AzureStorage::downloadError);
    storage.downloadFile(QStringLiteral("f"));
    QTRY_COMPARE(server.requests().size(), 1);
    storage.abortCurrentDownload();
    QTRY_COMPARE(failed.count(), 1);
}

void AzureStorageTest::abortingNothingDoesNothing()
{
    AzureStorage storage(nullptr, share(QStringLiteral("http://127.0.0.1:1/")));
    QSignalSpy failed(&storage, &AzureStorage::downloadError);
    storage.abortCurrentDownload();
    QCOMPARE(failed.count(), 0);
}

void AzureStorageTest::aDownloadStartedFromTheSignalGoesUntracked()
{
    HttpServer server;
    server.setAnswer("first", {200, "1", false, -1});
    server.setAnswer("second", {200, "2", true, -1});
    AzureStorage storage(nullptr, share(server.address()));
    connect(&storage, &AzureStorage::fileDownloaded, this,
            [&storage] { storage.downloadFile(QStringLiteral("second")); });
    QSignalSpy failed(&storage, &AzureStorage::downloadError);
    storage.downloadFile(QStringLiteral("first"));
    QTRY_COMPARE(server.requests().size(), 2);
    storage.abortCurrentDownload();
    QCOMPARE(failed.count(), 0);
}

void AzureStorageTest::aShortAddressIsUnexpected()
{
    HttpServer server;
    server.setAnswer("f", {200, "x", false, -1});
    // The address is normalised on its way, and comes back shorter than what it was made from.
    CloudShare odd =
        share(QStringLiteral("HTTP://127.0.0.1:%1").arg(QString(40, QLatin1Char('0'))) +
              server.address().section(QLatin1Char(':'), 2));
    AzureStorage storage(nullptr, odd);
    QSignalSpy downloaded(&storage, &AzureStorage::fileDownloaded);
    QSignalSpy failed(&storage, &AzureStorage::downloadError);
    const MessageLog log;
    storage.downloadFile(QStringLiteral("f"));
    QTRY_VERIFY(log.contains(QStringLiteral("Unexpected URL for downloaded file:")) ||
                failed.count() == 1);
    QCOMPARE(downloaded.count(), 0);
}

void AzureStorageTest::aDownloadPastTheLimitEnds()
{
    HttpServer server;
    server.setAnswer("f", {200, QByteArray(2'000'000, 'x'), false, -1});
    AzureStorage storage(nullptr, share(server.address()));
    storage.setSizeLimit(100'000);
    QSignalSpy downloaded(&storage, &AzureStorage::fileDownloaded);
    QSignalSpy failed(&storage, &AzureStorage::downloadError);
    storage.downloadFile(QStringLiteral("f"));
    QTRY_COMPARE(failed.count(), 1);
    QVERIFY(failed[0][0].toString().contains(QStringLiteral("larger than allowed")));
    QCOMPARE(downloaded.count(), 0);
}

// Whether the network layer reports the end of a connection in mid-file is a race, so many of them
// are ended.
void AzureStorageTest::aDownloadThatBreaksOffIsNoFile()
{
    for (int i = 0; i < 100; ++i) {
        HttpServer server;
        server.setAnswer("f", {200, "part of it", false, 100'000});
        AzureStorage storage(nullptr, share(server.address()));
        QSignalSpy downloaded(&storage, &AzureStorage::fileDownloaded);
        QSignalSpy failed(&storage, &AzureStorage::downloadError);
        storage.downloadFile(QStringLiteral("f"));
        QTRY_COMPARE_WITH_TIMEOUT(failed.count() + downloaded.count(), 1, 30'000);
        QCOMPARE(downloaded.count(), 0);
    }
}

void AzureStorageTest::aFileOfAnotherLengthIsNoFile_data()
{
    QTest::addColumn<qint64>("announced");
    QTest::addColumn<bool>("isFile");
    QTest::newRow("that length") << qint64(10) << true;
    QTest::newRow("a byte less") << qint64(11) << false;
    QTest::newRow("a byte more") << qint64(9) << false;
}

// The network layer takes an answer for whole that has another length than it names: always where
// the bytes come in chunks, and at times where the connection ends.
void AzureStorageTest::aFileOfAnotherLengthIsNoFile()
{
    QFETCH(qint64, announced);
    QFETCH(bool, isFile);
    HttpServer server;
    HttpServer::Answer answer(200, "part of it", false, announced);
    answer.chunked = true;
    server.setAnswer("f", answer);
    AzureStorage storage(nullptr, share(server.address()));
    QSignalSpy downloaded(&storage, &AzureStorage::fileDownloaded);
    QSignalSpy failed(&storage, &AzureStorage::downloadError);
    storage.downloadFile(QStringLiteral("f"));
    QTRY_COMPARE(failed.count() + downloaded.count(), 1);
    QCOMPARE(downloaded.count(), isFile ? 1 : 0);
}

void AzureStorageTest::asksForTheBytesAsTheyAre()
{
    HttpServer server;
    server.setAnswer("f", {200, "x", false, -1});
    AzureStorage storage(nullptr, share(server.address()));
    QSignalSpy downloaded(&storage, &AzureStorage::fileDownloaded);
    storage.downloadFile(QStringLiteral("f"));
    QTRY_COMPARE(downloaded.count(), 1);
    QCOMPARE(server.requests().value(0).headers["accept-encoding"], QByteArray("identity"));
}

void AzureStorageTest::refusesAnEncodedAnswer()
{
    HttpServer server;
    // Qt's own format of compressed bytes behind its length is the one that "deflate" names.
    const QByteArray packed = qCompress(QByteArray(50'000'000, ' ')).mid(4);
    HttpServer::Answer answer(200, packed);
    answer.encoding = "deflate";
    server.setAnswer("f", answer);
    AzureStorage storage(nullptr, share(server.address()));
    storage.setSizeLimit(1'000'000);
    QSignalSpy downloaded(&storage, &AzureStorage::fileDownloaded);
    QSignalSpy failed(&storage, &AzureStorage::downloadError);
    storage.downloadFile(QStringLiteral("f"));
    QTRY_COMPARE(failed.count(), 1);
    QVERIFY2(failed[0][0].toString().contains(QStringLiteral("deflate")),
             qPrintable(failed[0][0].toString()));
    QCOMPARE(downloaded.count(), 0);
}

void AzureStorageTest::twoLengthsAreNone()
{
    HttpServer server;
    HttpServer::Answer answer(200, "which of them is it?");
    answer.twoLengths = true;
    server.setAnswer("f", answer);
    AzureStorage storage(nullptr, share(server.address()));
    QSignalSpy downloaded(&storage, &AzureStorage::fileDownloaded);
    QSignalSpy failed(&storage, &AzureStorage::downloadError);
    storage.downloadFile(QStringLiteral("f"));
    QTRY_COMPARE(failed.count() + downloaded.count(), 1);
    QCOMPARE(failed.count(), 1);
    QVERIFY2(failed[0][0].toString().contains(QStringLiteral("two lengths")),
             qPrintable(failed[0][0].toString()));
}

void AzureStorageTest::aMissingLengthFailsWhereItIsRequired_data()
{
    QTest::addColumn<bool>("required");
    QTest::newRow("required") << true;
    QTest::newRow("not required") << false;
}

void AzureStorageTest::aMissingLengthFailsWhereItIsRequired()
{
    QFETCH(bool, required);
    HttpServer server;
    HttpServer::Answer answer(200, "who knows whether this is all");
    answer.withoutLength = true;
    server.setAnswer("f", answer);
    AzureStorage storage(nullptr, share(server.address()));
    storage.setLengthRequired(required);
    QSignalSpy downloaded(&storage, &AzureStorage::fileDownloaded);
    QSignalSpy failed(&storage, &AzureStorage::downloadError);
    storage.downloadFile(QStringLiteral("f"));
    QTRY_COMPARE(failed.count() + downloaded.count(), 1);
    QCOMPARE(failed.count(), required ? 1 : 0);
}

void AzureStorageTest::usesTheProxyOfTheSystem()
{
    HttpServer proxy;
    proxy.setAnswer("f", {404, "x", false, -1});
    const QByteArray before = qgetenv("http_proxy");
    qputenv("http_proxy", proxy.address().toUtf8());
    AzureStorage storage(nullptr, share(QStringLiteral("http://share.example/")));
    QSignalSpy failed(&storage, &AzureStorage::downloadError);
    storage.downloadFile(QStringLiteral("f"));
    QTRY_COMPARE(failed.count(), 1);
    if (before.isNull())
        qunsetenv("http_proxy");
    else
        qputenv("http_proxy", before);
    QCOMPARE(proxy.requests().size(), 1);
    QCOMPARE(proxy.requests()[0].path, QByteArray("http://share.example/f"));
}

void AzureStorageTest::aBuildWithoutValuesIsNotConfigured()
{
    QVERIFY(!CloudShare().isConfigured());
    QVERIFY(share(QStringLiteral("https://example/")).isConfigured());
    QCOMPARE(share(QString()).accountName(), QStringLiteral("corvenitysoftwarebuilds"));
    QVERIFY(!share(QString()).isConfigured());
}

QTEST_GUILESS_MAIN(AzureStorageTest)
#include "AzureStorageTest.moc"
