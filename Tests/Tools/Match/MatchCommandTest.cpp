#include "../../Discovery/flightLogs.h"
#include "Support/ProgramRun.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace corv::test;

namespace {

ProgramRun match(const QStringList& arguments)
{
    return runProgram(QStringLiteral(VISTREL_CLI), QStringList{"match"} + arguments);
}

} // namespace

/// The program in a process of its own, on folders with real files.
class MatchCommandTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void rowsHaveTheKeysOfTheSearch();
    void theTableHasOneRowPerVideo();
    void aCardIsSearchedInItsLayout();
    void nothingFoundIsAnEmptyResult();
    void theStatusSaysWhetherAllIsPaired_data();
    void theStatusSaysWhetherAllIsPaired();
    void wrongUseIsReported_data();
    void wrongUseIsReported();
    void missingFolderIsReported();

private:
    QString path(const QString& below) const { return m_folder->filePath(below); }
    void addVideo(const QString& below) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void MatchCommandTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(path(".")).mkpath("logs"));
    addVideo("videos/Flug 1.mp4");
    QVERIFY(flightLog({{10'000, 71'000}}, {{5000, "Line", "Tower", 7}}).save(path("logs/l.log")));
}

void MatchCommandTest::addVideo(const QString& below) const
{
    QVERIFY(QDir().mkpath(QFileInfo(path(below)).path()));
    QFile file(path(below));
    QVERIFY(file.open(QIODevice::WriteOnly));
}

void MatchCommandTest::rowsHaveTheKeysOfTheSearch()
{
    const ProgramRun run = match({path("videos"), path("logs"), "--quick", "--json"});
    QCOMPARE(run.status, 0);
    QCOMPARE(run.error, QByteArray());
    const QJsonArray rows = QJsonDocument::fromJson(run.out).array();
    const QFileInfo video(path("videos/Flug 1.mp4"));
    const QJsonObject expected{{"videoFile", path("videos/Flug 1.mp4")},
                               {"videoFilename", "Flug 1"},
                               {"logFile", path("logs/l.log")},
                               {"logFilename", "l"},
                               {"matchFound", true},
                               {"namingDefined", false},
                               {"missionName", ""},
                               {"flightName", ""},
                               {"flightNumber", 0},
                               {"videoDurationMs", 0},
                               {"evidence", "time"},
                               {"checked", false},
                               {"doubtful", false},
                               {"evidenceText", "Paired by time alone, lengths not compared"},
                               {"flightLengthMs", -1},
                               {"recordingLengthMs", -1},
                               {"flightFiles", QJsonArray()},
                               {"part", 1},
                               {"partText", ""},
                               {"partStartMs", 0},
                               {"videoTime", video.lastModified().toString(Qt::ISODate)},
                               {"videoSize", 0}};
    QCOMPARE(rows.size(), 1);
    QCOMPARE(rows[0].toObject(), expected);
}

void MatchCommandTest::theTableHasOneRowPerVideo()
{
    addVideo("videos/b\tc.mov");
    const ProgramRun run = match({path("videos"), path("logs")});
    QCOMPARE(run.status, 0);
    const QList<QByteArray> lines = run.out.split('\n');
    QCOMPARE(lines.size(), 4); // the last one is what follows the last line feed
    QVERIFY(lines[0].startsWith("videoFile\tvideoFilename\tlogFile\t"));
    for (int i = 0; i < 3; ++i)
        QCOMPARE(lines[i].count('\t'), 14);
    QVERIFY(run.out.contains("\ttrue\t"));
    QVERIFY(run.out.contains("\t-1\ttime\tfalse\t-1\t-1\ttrue\n")); // an empty file is no video
}

void MatchCommandTest::aCardIsSearchedInItsLayout()
{
    QVERIFY(match({path("videos"), path("logs"), "--card", "--quick", "--json"})
                .out.startsWith("[\n]"));
    addVideo("videos/DCIM/100HDDVR/x.mp4");
    // The log of a video is not older than it.
    QVERIFY(flightLog({{10'000, 71'000}}, {{5000, "Line", "Tower", 7}}).save(path("logs/l.log")));
    const ProgramRun run = match({path("videos"), path("logs"), "--card", "--quick"});
    QCOMPARE(run.status, 0);
    QVERIFY(run.out.contains("/DCIM/100HDDVR/x.mp4"));
    QVERIFY(!run.out.contains("Flug 1"));
}

void MatchCommandTest::nothingFoundIsAnEmptyResult()
{
    const ProgramRun run = match({path("logs"), path("videos"), "--json"});
    QCOMPARE(run.status, 0);
    QVERIFY2(run.error.contains("There is no video in \"" + path("logs").toUtf8() + "\"."),
             run.error);
    QVERIFY2(run.error.contains("There is no log in \"" + path("videos").toUtf8() + "\"."),
             run.error);
    QVERIFY(QJsonDocument::fromJson(run.out).isArray());
    QVERIFY(QJsonDocument::fromJson(run.out).array().isEmpty());
}

void MatchCommandTest::theStatusSaysWhetherAllIsPaired_data()
{
    QTest::addColumn<int>("logSecond");
    QTest::addColumn<bool>("realVideo");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("evidence");
    QTest::newRow("by time") << 10 << false << 0 << "time";
    QTest::newRow("unpaired") << -10 << false << 3 << "none";
    QTest::newRow("doubtful") << 10 << true << 3 << "lengthDiffers";
}

void MatchCommandTest::theStatusSaysWhetherAllIsPaired()
{
    QFETCH(int, logSecond);
    QFETCH(bool, realVideo);
    if (realVideo) // two seconds, against a minute in the log
        QCOMPARE(QProcess::execute("ffmpeg", {"-v", "error", "-y", "-f", "lavfi", "-i",
                                              "color=size=64x48:duration=2", "-c:v", "mpeg4",
                                              path("videos/Flug 1.mp4")}),
                 0);
    const QDateTime noon(QDate(2018, 6, 1), QTime(12, 0));
    const auto setTime = [](const QString& file, const QDateTime& time) {
        QFile opened(file);
        return opened.open(QIODevice::ReadWrite) &&
               opened.setFileTime(time, QFileDevice::FileModificationTime);
    };
    QVERIFY(setTime(path("videos/Flug 1.mp4"), noon));
    QVERIFY(setTime(path("logs/l.log"), noon.addSecs(logSecond)));
    const ProgramRun run = match({path("videos"), path("logs"), "--json"});
    QCOMPARE(run.error, QByteArray());
    QTEST(run.status, "status");
    QTEST(QJsonDocument::fromJson(run.out).array()[0].toObject()["evidence"].toString(),
          "evidence");
}

void MatchCommandTest::wrongUseIsReported_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("nothing") << QStringList{};
    QTest::newRow("one folder") << QStringList{"."};
    QTest::newRow("three folders") << QStringList{".", ".", "."};
    QTest::newRow("unknown option") << QStringList{".", "--fast"};
}

void MatchCommandTest::wrongUseIsReported()
{
    QFETCH(QStringList, arguments);
    const ProgramRun run = match(arguments);
    QCOMPARE(run.status, 2);
    QVERIFY(run.error.contains("match VIDEO_DIR LOG_DIR [--card] [--quick] [--json]"));
    QCOMPARE(run.out, QByteArray());
}

void MatchCommandTest::missingFolderIsReported()
{
    const ProgramRun run = match({path("videos"), path("nowhere")});
    QCOMPARE(run.status, 1);
    QCOMPARE(run.error.count('\n'), 1);
    QVERIFY2(run.error.contains("nowhere does not exist."), run.error);
    const ProgramRun file = match({path("videos"), path("logs/l.log")});
    QCOMPARE(file.status, 1);
    QVERIFY2(file.error.contains("logs/l.log is not a folder."), file.error);
    QCOMPARE(run.out, QByteArray());
}

QTEST_GUILESS_MAIN(MatchCommandTest)
#include "MatchCommandTest.moc"
