#include "FlightFixture.h"
#include "Support/FullDisk.h"

#include <QtTest>

using namespace corv;
using namespace corv::test;

namespace {

QByteArray contentsOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

// What the commands that make pictures refuse or cannot write: each in one sentence, and nothing is
// left behind.
class FrameRefusalsTest : public QObject, private FlightFixture
{
    Q_OBJECT

private slots:
    void initTestCase();
    void thermalBarNeedsAnOverlay_data();
    void thermalBarNeedsAnOverlay();
    void anOverlayThatCannotBeSaysWhy();
    void sourcesAreNeverWrittenOver_data();
    void sourcesAreNeverWrittenOver();
    void aFullDiskIsAFailure_data();
    void aFullDiskIsAFailure();
    void aDiskWithoutAnyRoomIsNoWrongSuffix();
    void tooLittleMemoryIsSaid_data();
    void tooLittleMemoryIsSaid();
    void threadsThatDoNotStartEndTheTool();
    void refusesInOneSentence_data();
    void refusesInOneSentence();
};

void FrameRefusalsTest::initTestCase()
{
    writeFlight();
    QVERIFY(QDir().mkpath(path("folder.mp4")));
    for (const auto& [name, bytes] : {std::pair{"cut.mov", contentsOf(m_video).left(20'000)},
                                      std::pair{"empty.mov", QByteArray()}}) {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
    }
    QVERIFY(QFile::link("circle.mov", path("circle.mov")));
}

void FrameRefusalsTest::thermalBarNeedsAnOverlay_data()
{
    QTest::addColumn<QStringList>("flight");
    QTest::addColumn<QByteArray>("error");
    QTest::newRow("not shown") << QStringList{m_video, m_log}
                               << QByteArray("--thermal-bar: the flight does not show the thermal "
                                             "overlay.");
    QTest::newRow("no log") << QStringList{m_video, "--thermal"}
                            << QByteArray("--thermal needs a log with thermal pictures");
}

void FrameRefusalsTest::thermalBarNeedsAnOverlay()
{
    QFETCH(QStringList, flight);
    QFETCH(QByteArray, error);
    for (const char* command : {"frame", "video"}) {
        const QString out = path(qstrcmp(command, "frame") == 0 ? "none.png" : "none.mp4");
        QStringList line =
            QStringList{command} + flight + QStringList{"--thermal-bar", "--out", out};
        if (qstrcmp(command, "frame") == 0)
            line += {"--at-ms", "500"};
        const ProgramRun outcome = run(line);
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.error.contains(error), outcome.error.constData());
        QVERIFY(!QFile::exists(out));
    }
}

void FrameRefusalsTest::anOverlayThatCannotBeSaysWhy()
{
    const QString out = path("none.png");
    const ProgramRun outcome =
        run({QStringLiteral("frame"), m_video, QStringLiteral("--thermal"),
             QStringLiteral("--at-ms"), QStringLiteral("500"), QStringLiteral("--out"), out});
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.error.contains("needs a log"));
    QVERIFY(!QFile::exists(out));
}

void FrameRefusalsTest::sourcesAreNeverWrittenOver_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<QString>("target");
    const QStringList frame{QStringLiteral("frame"), m_project, QStringLiteral("--at-ms"),
                            QStringLiteral("0")};
    const QStringList video{QStringLiteral("video"), m_project};
    const QString second = path("DCIM/101_CORV/CORV0002.MOV");
    QTest::newRow("the video by a video") << video << m_video;
    QTest::newRow("the second file by a video") << video << second;
    QTest::newRow("the video by a picture") << frame << m_video;
    QTest::newRow("the log by a picture") << frame << m_log;
    QTest::newRow("the project by a picture") << frame << m_project;
    // A log is one by what it holds.
    const QString log = path("log.docx");
    QVERIFY(QFile::exists(log) || QFile::copy(m_log, log));
    QTest::newRow("the log by a report") << QStringList{"report", m_video, log} << log;
}

void FrameRefusalsTest::sourcesAreNeverWrittenOver()
{
    QFETCH(QStringList, command);
    QFETCH(QString, target);
    const QByteArray before = contentsOf(target);
    QVERIFY(!before.isEmpty());
    const ProgramRun outcome = run(command + QStringList{QStringLiteral("--out"), target});
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.error.contains("is a file of the flight itself"));
    QVERIFY(contentsOf(target) == before);
}

void FrameRefusalsTest::aFullDiskIsAFailure_data()
{
    QTest::addColumn<QStringList>("command");
    const QString flight = m_project;
    QTest::newRow("picture") << QStringList{"frame", flight,  "--at-ms",
                                            "0",     "--out", path("full.jpg")};
    QTest::newRow("pictures") << QStringList{"frames", flight, "--out", path("full")};
    QTest::newRow("mp4") << QStringList{"video", flight, "--out", path("full.mp4")};
    QTest::newRow("avi") << QStringList{"video", flight, "--out", path("full.avi")};
    QTest::newRow("report") << QStringList{"report", flight, "--out", path("full.docx")};
}

void FrameRefusalsTest::aFullDiskIsAFailure()
{
    QFETCH(QStringList, command);
    const corv::test::FullDisk disk(20000); // for the program as well
    const ProgramRun outcome = run(command);
    QVERIFY2(outcome.status == 1 && outcome.error.startsWith("vistrel-cli: ") &&
                 outcome.error.count('\n') == 1,
             outcome.error.constData());
}

// The encoder ends in the same way for both.
void FrameRefusalsTest::aDiskWithoutAnyRoomIsNoWrongSuffix()
{
    const corv::test::FullDisk disk(0);
    const ProgramRun outcome = run({"video", m_project, "--out", path("none.mp4")});
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.error.contains("The disk has no room for the video"), outcome.error);
}

void FrameRefusalsTest::tooLittleMemoryIsSaid_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<int>("limitMb");
    QTest::addColumn<int>("leastMb");
    const QStringList report{"report", m_project, "--out", path("little.docx")};
    QTest::newRow("report") << report << 1499 << 1500;
    QTest::newRow("report with much less") << report << 600 << 1500;
    QTest::newRow("libraries that cannot be loaded") << report << 300 << 400;
    QTest::newRow("picture") << QStringList{"frame", m_project, "--at-ms",
                                            "0",     "--out",   path("little.png")}
                             << 1000 << 1500;
    QTest::newRow("points of interest") << QStringList{"points", m_project} << 1000 << 1500;
    QTest::newRow("card") << QStringList{"review", m_folder.path(), "--out", path("little")} << 1000
                          << 1500;
}

void FrameRefusalsTest::tooLittleMemoryIsSaid()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("a sanitizer needs more than any limit allows");
#endif
    QFETCH(QStringList, command);
    QFETCH(int, limitMb);
    QFETCH(int, leastMb);
    const ProgramRun outcome =
        runProgram("prlimit", QStringList{QString("--as=%1").arg(limitMb * 1000000LL),
                                          QStringLiteral(VISTREL_CLI)} +
                                  command);
    QCOMPARE(QString::fromUtf8(outcome.error),
             QString("vistrel-cli: There is not enough memory: this program's is limited to %1 MB "
                     "(ulimit -v), and it needs %2 MB at least. Raise the limit.\n")
                 .arg(limitMb)
                 .arg(leastMb));
    QCOMPARE(outcome.status, 1);
}

void FrameRefusalsTest::threadsThatDoNotStartEndTheTool()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("a sanitizer needs more than any limit allows");
#endif
    // Stacks larger than all that the program may have.
    const ProgramRun outcome =
        runProgram("prlimit", {"--as=2000000000", "--stack=3000000000", QStringLiteral(VISTREL_CLI),
                               "report", m_project, "--out", path("little.docx")});
    QCOMPARE(outcome.error, QByteArray("vistrel-cli: There is not enough memory: the system starts "
                                       "no more threads.\n"));
    QCOMPARE(outcome.status, 1);
}

void FrameRefusalsTest::refusesInOneSentence_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("reason");
    const auto row = [](const char* name, const char* arguments, int status, const char* reason) {
        QTest::newRow(name) << arguments << status << QByteArray(reason);
    };
    row("frame without time", "frame PROJECT --out DIR/a.png", 2, "");
    row("frame without target", "frame PROJECT --at-ms 0", 2, "");
    row("frame at no number", "frame PROJECT --at-ms soon --out DIR/a.png", 2,
        "--at-ms: \"soon\" is not a whole number");
    row("frame before the start", "frame PROJECT --at-ms -1 --out DIR/a.png", 2,
        "--at-ms: \"-1\" is not");
    row("frame of nothing", "frame --at-ms 0 --out DIR/a.png", 2, "");
    row("unknown clock", "frame PROJECT --at-ms 0 --out DIR/a.png --thermal-clock wall", 2,
        "--thermal-clock: \"wall\" is neither \"file\" nor \"screen\".");
    row("pictures nowhere", "points PROJECT --thermal", 2, "--thermal needs --pictures.");
    row("empty prefix", "frames PROJECT --out DIR/x --prefix=", 2, "--prefix: the value is empty.");
    row("a folder of the video's name", "video PROJECT --out DIR/folder.mp4", 1,
        "folder.mp4 cannot be written: a folder has this name.");
    row("cut video", "frame DIR/cut.mov --at-ms 0 --out DIR/a.png", 1,
        "cut.mov cannot be opened: it is cut short or damaged.");
    row("empty video", "frame DIR/empty.mov --at-ms 0 --out DIR/a.png", 1,
        "empty.mov cannot be opened: it is empty.");
    row("circle of links", "frame DIR/circle.mov --at-ms 0 --out DIR/a.png", 1,
        "circle.mov is a link that leads back to itself.");
    row("unknown option", "frame PROJECT --at-ms 0 --out DIR/a.png --red", 2,
        "Unknown option 'red'");
    row("spacing of 0", "frames PROJECT --spacing 0 --out DIR/x", 2,
        "--spacing: \"0\" is not a whole number from 1");
    row("range upside down", "frames PROJECT --from-ms 9 --to-ms 8 --out DIR/x", 2,
        "--to-ms 8 is before --from-ms 9.");
    row("points of interest and a range", "frames PROJECT --poi --to-ms 8 --out DIR/x", 2,
        "--poi takes no range.");
    row("frames without target", "frames PROJECT", 2, "");
    row("video without target", "video PROJECT", 2, "");
    row("three files", "video PROJECT VIDEO LOG --out DIR/x.mp4", 2, "");
    row("project and log", "frame PROJECT LOG --at-ms 0 --out DIR/a.png", 2, "");
    row("a day later", "frame PROJECT --at-ms 86400000 --out DIR/a.png", 1, "");
    row("behind the end", "frame PROJECT --at-ms 99999 --out DIR/a.png", 1, "");
    row("range behind the end", "frames PROJECT --from-ms 99999 --out DIR/x", 1, "");
    row("no points of interest", "frames VIDEO --poi --out DIR/x", 1, "");
    row("unknown format", "frame PROJECT --at-ms 0 --out DIR/a.picture", 1,
        "a.picture has not the suffix of a picture format.");
    row("missing folder", "frame PROJECT --at-ms 0 --out DIR/none/a.png", 1,
        "none/a.png could not be written: the folder does not exist.");
    row("no folder to be made", "frames PROJECT --out LOG/x", 1,
        "/x cannot be made: Not a directory.");
    row("no place for the video", "video PROJECT --out DIR/none/a.mp4", 1,
        "none/a.mp4 could not be written: the folder does not exist.");
    row("unknown container", "video PROJECT --out DIR/a.picture", 1,
        "a.picture cannot be written: its name does not end in .mp4");
    row("no container", "video PROJECT --out DIR/a", 1,
        "/a cannot be written: its name does not end in .mp4");
    row("missing project", "frame DIR/none.ecor --at-ms 0 --out DIR/a.png", 1,
        "none.ecor does not exist.");
    row("missing video", "frame DIR/none.mp4 --at-ms 0 --out DIR/a.png", 1,
        "none.mp4 does not exist.");
    row("no video", "frame LOG --at-ms 0 --out DIR/a.png", 1, "cannot be opened: it is no video.");
    row("no log", "frame VIDEO PROJECT --at-ms 0 --out DIR/a.png", 1, "is not a flight log.");
    row("project without its log", "frame NOLOG --at-ms 0 --out DIR/a.png", 1, "");
}

void FrameRefusalsTest::refusesInOneSentence()
{
    QFETCH(QString, arguments);
    const std::pair<const char*, QString> words[] = {{"NOLOG", path("nolog.ecor")},
                                                     {"DIR", m_folder.path()},
                                                     {"PROJECT", m_project},
                                                     {"VIDEO", m_video},
                                                     {"LOG", m_log}};
    QStringList list = arguments.split(QLatin1Char(' '));
    for (QString& argument : list) {
        for (const auto& word : words) {
            if (argument.startsWith(QLatin1String(word.first))) {
                argument.replace(0, int(qstrlen(word.first)), word.second);
                break;
            }
        }
    }
    const ProgramRun outcome = run(list);
    QTEST(outcome.status, "status");
    QFETCH(QByteArray, reason);
    const QList<QByteArray> lines = outcome.error.trimmed().split('\n');
    QCOMPARE(lines.last().startsWith("usage: vistrel-cli "), outcome.status == 2);
    QCOMPARE(lines.size(), outcome.status == 2 && !reason.isEmpty() ? 2 : 1);
    if (!reason.isEmpty() || outcome.status != 2)
        QVERIFY2(lines.first().startsWith("vistrel-cli: ") && lines.first().contains(reason),
                 outcome.error);
    QCOMPARE(QDir(m_folder.path()).entryList({"*.part.*"}), QStringList());
}

QTEST_MAIN(FrameRefusalsTest)
#include "FrameRefusalsTest.moc"
