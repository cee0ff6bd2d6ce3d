#include "Base/Failure.h"
#include "Support/MessageLog.h"
#include "decodingFixture.h"

#include <QtTest>
#include <algorithm>

using namespace corv;
using namespace corv::test;

/// What a decoding reports while it runs, how it is aborted, and why it fails.
class LogDecoderOutcomeTest : public QObject, private DecodingFixture
{
    Q_OBJECT

private slots:
    void init();
    void progressIsEmitted();
    void anAbortIsNoticed_data();
    void anAbortIsNoticed();
    void anAbortAfterTheLastCheckIsIgnored();
    void aFailureSaysItsReason_data();
    void aFailureSaysItsReason();
    void aFileThatCannotBeOpenedSaysItsReason();
    void aLogThatShrinksIsCutShort_data();
    void aLogThatShrinksIsCutShort();
};

void LogDecoderOutcomeTest::init()
{
    reset();
}

void LogDecoderOutcomeTest::progressIsEmitted()
{
    LogBuilder builder = pairLog();
    for (int i = 0; i < 1999; ++i)
        builder.addPacket(3, "ab");
    builder.addPacketWithBadChecksum(3, "ab").addPacketWithSize(3, 9, "");
    QStringList reported;
    m_progress = [&reported](int stage, int done, int total) {
        reported += QStringLiteral("%1 %2 %3").arg(stage).arg(done).arg(total);
    };
    QVERIFY(decode(builder));
    QCOMPARE(reported, QStringList({QStringLiteral("0 0 0"), QStringLiteral("1 0 0"),
                                    QStringLiteral("2 0 2001"), QStringLiteral("2 1000 2001"),
                                    QStringLiteral("2 2000 2001"), QStringLiteral("2 2000 2001")}));
}

void LogDecoderOutcomeTest::anAbortIsNoticed_data()
{
    QTest::addColumn<int>("stage");
    QTest::addColumn<int>("done");
    QTest::addColumn<QString>("lastBefore");
    QTest::newRow("from the start") << -1 << 0 << QStringLiteral("XML parsing...  ");
    QTest::newRow("structure") << 0 << 0 << QStringLiteral("Retrieving log version...  ");
    QTest::newRow("counting") << 1 << 0 << QStringLiteral("Packet counting...  ");
    QTest::newRow("before storing") << 2 << 0 << QStringLiteral("Data parsing: ");
    QTest::newRow("storing") << 2 << 2000 << QStringLiteral("Data parsing: ");
}

void LogDecoderOutcomeTest::anAbortIsNoticed()
{
    QFETCH(int, stage);
    QFETCH(int, done);
    LogBuilder builder = pairLog();
    for (int i = 0; i < 2500; ++i)
        builder.addPacket(3, "ab");
    int lastDone = 0;
    m_abortFlag = stage < 0;
    m_progress = [&](int atStage, int atDone, int) {
        lastDone = atDone;
        if (atStage == stage && atDone == done)
            m_abortFlag = true;
    };
    const MessageLog messages;
    QVERIFY(!decode(builder));
    const QStringList record = messages.messages(QtInfoMsg);
    QCOMPARE(record.last(), QStringLiteral("Aborted."));
    QTEST(record[record.size() - 2], "lastBefore");
    // Storing looks at the flag at every thousandth packet and nowhere else.
    QCOMPARE(lastDone, stage < 2 ? 0 : std::max(done, 1000));
}

void LogDecoderOutcomeTest::anAbortAfterTheLastCheckIsIgnored()
{
    LogBuilder builder = pairLog();
    for (int i = 0; i < 999; ++i)
        builder.addPacket(3, "ab");
    m_progress = [this](int stage, int, int) { m_abortFlag = stage == 2; };
    const auto log = decode(builder);
    QVERIFY(log);
    QCOMPARE(log->getGroup("pair")->getNbStored(), 999);
}

void LogDecoderOutcomeTest::aFailureSaysItsReason_data()
{
    const QByteArray description = pairLog().bytes();
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("sentence");
    using Kind = Failure::Kind;
    const auto row = [](const char* name, const QByteArray& bytes, Kind kind, const char* text) {
        QTest::newRow(name) << bytes << int(kind) << QString::fromLatin1(text);
    };
    row("empty", "", Kind::cutShort, "The log \"%1\" is empty.");
    row("text", "not a log", Kind::notRecognised, "\"%1\" is not a flight log.");
    row("a web page", "<!doctype html><p>", Kind::notRecognised, "\"%1\" is not a flight log.");
    row("cut within its description", description.left(description.indexOf("</main>")),
        Kind::cutShort, "The log \"%1\" ends within its description.");
    row("broken tag", "<?xml version='1.0'?>\n<main><gr</main>", Kind::damaged,
        "The description of the log \"%1\" is damaged: Error parsing start element tag.");
    row("behind a byte order mark", "\xef\xbb\xbf<main><gr</main>", Kind::damaged,
        "The description of the log \"%1\" is damaged: Error parsing start element tag.");
    const QByteArray filler(17 << 20, ' ');
    row("description above the limit", "<main>" + filler + "</main>\n", Kind::tooLarge,
        "The description of the log \"%1\" is larger than 16 MiB.");
    row("a large file of another kind", filler, Kind::notRecognised, "\"%1\" is not a flight log.");
    row("a field above the limit",
        "<main><log_version>1</log_version><groups><group><id>3</id><name>g</name>"
        "<var><name>a</name><type>UINT32</type><nb>1073741823</nb></var>"
        "<var><name>b</name><type>UINT32</type><nb>-1073741822</nb></var>"
        "</group></groups></main>\n" +
            LogBuilder().setDescription("#").addPacket(3, "abcd").bytes().mid(2),
        Kind::tooLarge,
        "The field \"a\" of the group \"g\" of the log \"%1\" has 2 GiB or more of data.");
}

void LogDecoderOutcomeTest::aFailureSaysItsReason()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, kind);
    QFETCH(QString, sentence);
    const MessageLog messages;
    QVERIFY(!decode(bytes));
    const QString path = m_folder.filePath(QStringLiteral("a.log"));
    const auto log = m_decoder.decode(path, m_progress);
    QVERIFY(!log);
    QCOMPARE(log.failure().sentence, sentence.arg(path));
    QCOMPARE(int(log.failure().kind), kind);
}

void LogDecoderOutcomeTest::aFileThatCannotBeOpenedSaysItsReason()
{
    const MessageLog messages;
    const QString missing = m_folder.filePath(QStringLiteral("missing.log"));
    const auto kindOf = [this](const QString& path) {
        const auto log = m_decoder.decode(path, m_progress);
        return log ? -1 : int(log.failure().kind);
    };
    QCOMPARE(kindOf(missing), int(Failure::Kind::notFound));
    QCOMPARE(kindOf(QString()), int(Failure::Kind::notFound));
    QCOMPARE(kindOf(m_folder.path()), int(Failure::Kind::notAFile));
    QCOMPARE(kindOf(QStringLiteral("/dev/zero")), int(Failure::Kind::notAFile));
    // No answer but an error, as from a card that was pulled out.
    const QString tooLong = m_folder.filePath(QString(300, QLatin1Char('a')));
    QCOMPARE(kindOf(tooLong), int(Failure::Kind::unreadable));
    m_abortFlag = true;
    QVERIFY(pairLog().save(m_folder.filePath(QStringLiteral("whole.log"))));
    QCOMPARE(kindOf(m_folder.filePath(QStringLiteral("whole.log"))), int(Failure::Kind::cancelled));
}

void LogDecoderOutcomeTest::aLogThatShrinksIsCutShort_data()
{
    QTest::addColumn<int>("stage");
    QTest::addColumn<qint64>("bytesLeft");
    QTest::newRow("within its description") << 0 << qint64(10);
    QTest::newRow("within its packets, before they are counted") << 1 << qint64(600);
    QTest::newRow("within its packets, before they are stored") << 2 << qint64(600);
    QTest::newRow("to nothing, before the packets are stored") << 2 << qint64(0);
}

void LogDecoderOutcomeTest::aLogThatShrinksIsCutShort()
{
    QFETCH(int, stage);
    QFETCH(qint64, bytesLeft);
    LogBuilder builder = pairLog();
    for (int i = 0; i < 1000; ++i)
        builder.addPacket(3, "ab");
    const QString path = m_folder.filePath(QStringLiteral("shrinking.log"));
    const MessageLog messages;
    const LogDecoder::Progress shrink = [&](int atStage, int, int) {
        if (atStage == stage)
            QVERIFY(QFile::resize(path, bytesLeft));
    };
    QVERIFY(builder.save(path));
    const auto log = m_decoder.decode(path, shrink);
    QVERIFY(!log);
    QCOMPARE(log.failure().sentence,
             QStringLiteral("The log \"%1\" became shorter while it was read.").arg(path));
    QVERIFY(messages.contains(QStringLiteral("ERROR: Unable to read file.\n")));
}

QTEST_GUILESS_MAIN(LogDecoderOutcomeTest)
#include "LogDecoderOutcomeTest.moc"
