#include "Discovery/filePairing.h"
#include "Support/MessageLog.h"

#include <QtTest>
#include <limits>
#include <random>

using namespace corv;

namespace {

const QDateTime kVideoTime(QDate(2018, 6, 1), QTime(12, 0));

TimedFile fileAt(const QString& name, const QDateTime& time)
{
    return sortedByTime({QFileInfo(name)}, [&time](const QFileInfo&) { return time; }).front();
}

std::vector<TimedFile> logsAfter(const QList<qint64>& differencesMs)
{
    QList<QFileInfo> files;
    for (const qint64 difference : differencesMs)
        files.append(QFileInfo(QString::number(difference)));
    return sortedByTime(files, [](const QFileInfo& file) {
        return kVideoTime.addMSecs(file.fileName().toLongLong());
    });
}

// What the search has to give, log by log.
int pairedByWalk(const TimedFile& video, const std::vector<TimedFile>& logs)
{
    int best = -1;
    qint32 bestSecs = std::numeric_limits<qint32>::max();
    for (size_t i = 0; i < logs.size(); ++i) {
        const auto secs = static_cast<qint32>(
            static_cast<quint32>(static_cast<quint64>(video.time.secsTo(logs[i].time))));
        if (secs < 0 || secs >= 1800 || secs >= bestSecs)
            continue;
        best = static_cast<int>(i);
        bestSecs = secs;
    }
    return best;
}

} // namespace

class FilePairingTest : public QObject
{
    Q_OBJECT

private slots:
    void picksTheNextLog_data();
    void picksTheNextLog();
    void agreesWithAWalkOverAllLogs();
    void sortsByTimeAndKeepsTheOrderOfEqualOnes();
    void aFileWithoutATimePairsWithNothing();
    void listsEveryPair();
    void listsTheNeighboursInALargeSearch();
};

void FilePairingTest::picksTheNextLog_data()
{
    QTest::addColumn<QList<qint64>>("differencesMs");
    QTest::addColumn<QString>("paired");

    const qint64 wrap = (qint64(1) << 32) * 1000;
    QTest::newRow("no log") << QList<qint64>{} << "";
    QTest::newRow("the same second") << QList<qint64>{0} << "0";
    QTest::newRow("1799 s") << QList<qint64>{1'799'000} << "1799000";
    QTest::newRow("1799.999 s") << QList<qint64>{1'799'999} << "1799999";
    QTest::newRow("1800 s") << QList<qint64>{1'800'000} << "";
    QTest::newRow("1 s before") << QList<qint64>{-1000} << "";
    QTest::newRow("less than 1 s before") << QList<qint64>{-999} << "-999";
    QTest::newRow("the nearer one") << QList<qint64>{20'000, 10'000} << "10000";
    QTest::newRow("not the nearer one before") << QList<qint64>{-1000, 1'700'000} << "1700000";
    QTest::newRow("the first within a second") << QList<qint64>{5900, 5100, 5500} << "5100";
    QTest::newRow("the first around zero") << QList<qint64>{400, -400} << "-400";
    QTest::newRow("differences wrap at 32 bits")
        << QList<qint64>{wrap + 7000} << QString::number(wrap + 7000);
    QTest::newRow("before, wrapped") << QList<qint64>{7000 - wrap} << QString::number(7000 - wrap);
    QTest::newRow("a wrapped one is nearer")
        << QList<qint64>{9000, wrap + 7000} << QString::number(wrap + 7000);
    QTest::newRow("equal but for the wrap") << QList<qint64>{7000, wrap + 7000} << "7000";
    QTest::newRow("half a wrap") << QList<qint64>{wrap / 2} << "";
}

void FilePairingTest::picksTheNextLog()
{
    QFETCH(QList<qint64>, differencesMs);
    QFETCH(QString, paired);
    const std::vector<TimedFile> logs = logsAfter(differencesMs);
    const int position = pairedLog(fileAt("video", kVideoTime), logs);
    QCOMPARE(position < 0 ? QString() : logs[static_cast<size_t>(position)].file.fileName(),
             paired);
}

void FilePairingTest::agreesWithAWalkOverAllLogs()
{
    std::mt19937 random(7);
    std::uniform_int_distribution<qint64> nearby(-4'000'000, 4'000'000);
    std::uniform_int_distribution<qint64> wraps(-1, 1);
    for (int round = 0; round < 200; ++round) {
        QList<qint64> differences;
        for (int i = 0; i < 12; ++i)
            differences.append(nearby(random) + wraps(random) * (qint64(1) << 32) * 1000);
        const std::vector<TimedFile> logs = logsAfter(differences);
        const TimedFile video = fileAt("video", kVideoTime);
        QCOMPARE(pairedLog(video, logs), pairedByWalk(video, logs));
    }
}

void FilePairingTest::sortsByTimeAndKeepsTheOrderOfEqualOnes()
{
    const QHash<QString, int> seconds = {{"a", 5}, {"b", 2}, {"c", 5}, {"d", 1}, {"e", 2}};
    int asked = 0;
    const std::vector<TimedFile> sorted = sortedByTime(
        {QFileInfo("a"), QFileInfo("b"), QFileInfo("c"), QFileInfo("d"), QFileInfo("e")},
        [&](const QFileInfo& file) {
            ++asked;
            return kVideoTime.addSecs(seconds[file.fileName()]);
        });
    QStringList names;
    for (const TimedFile& file : sorted)
        names.append(file.file.fileName());
    QCOMPARE(names, QStringList({"d", "b", "e", "a", "c"}));
    QCOMPARE(asked, 5);
}

void FilePairingTest::aFileWithoutATimePairsWithNothing()
{
    const test::MessageLog messages;
    const auto timeOf = [](const QFileInfo& file) {
        return file.fileName() == "gone" ? QDateTime() : kVideoTime;
    };
    const std::vector<TimedFile> logs = sortedByTime({QFileInfo("gone"), QFileInfo("log")}, timeOf);
    QCOMPARE(logs[0].file.fileName(), QString("log"));
    QCOMPARE(pairedLog(fileAt("video", kVideoTime), logs), 0);
    QCOMPARE(pairedLog(fileAt("video", QDateTime()), logs), -1);
    const std::vector<TimedFile> gone = sortedByTime({QFileInfo("gone")}, timeOf);
    QCOMPARE(pairedLog(fileAt("video", kVideoTime), gone), -1);
    QVERIFY(messages.messages(QtWarningMsg).contains("No time for file \"gone\""));
    QCOMPARE(pairVideosWithLogs(gone, logs), std::vector<int>{-1});
    QVERIFY(!messages.contains("Difference"));
}

void FilePairingTest::listsEveryPair()
{
    const std::vector<TimedFile> logs = logsAfter({-3000, 4000});
    const test::MessageLog messages;
    QCOMPARE(pairVideosWithLogs({fileAt("video.mp4", kVideoTime)}, logs), std::vector<int>{1});
    QCOMPARE(
        messages.messages(QtInfoMsg),
        QStringList({"Video file  :  \"video.mp4\" , metadataChangeTime  \"01/06/2018 12:00:00\"",
                     "Log file:  \"-3000\" , metadataChangeTime  \"01/06/2018 11:59:57\"",
                     "Difference with video:  -3  secs",
                     "Log file:  \"4000\" , metadataChangeTime  \"01/06/2018 12:00:04\"",
                     "Difference with video:  4  secs"}));
}

void FilePairingTest::listsTheNeighboursInALargeSearch()
{
    QList<qint64> differences;
    for (int i = -10'000; i < 10'000; ++i)
        differences.append(i * 10'000 + 5000);
    const std::vector<TimedFile> logs = logsAfter(differences);
    const test::MessageLog messages;
    const std::vector<int> paired = pairVideosWithLogs({fileAt("video.mp4", kVideoTime)}, logs);
    QCOMPARE(logs[static_cast<size_t>(paired[0])].file.fileName(), QString("5000"));
    QCOMPARE(messages.messages(QtInfoMsg).mid(1),
             QStringList({"Log file:  \"-5000\" , metadataChangeTime  \"01/06/2018 11:59:55\"",
                          "Difference with video:  -5  secs",
                          "Log file:  \"5000\" , metadataChangeTime  \"01/06/2018 12:00:05\"",
                          "Difference with video:  5  secs"}));
}

QTEST_GUILESS_MAIN(FilePairingTest)
#include "FilePairingTest.moc"
