#include "SampleFlight/SampleFlight.h"
#include "Support/FullDisk.h"
#include "Support/ProgramRun.h"
#include "Support/WordPackage.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace corv::test;

/// `vistrel-cli report` on a short sample flight, as an office would run it: no display at all.
class ReportCommandTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    corv::SampleFlight m_flight{[] {
        corv::SampleFlightOptions options;
        options.videoSeconds = 9;
        return options;
    }()};
    QByteArray m_error;

    QString path(const QString& name) const { return m_folder.filePath(name); }
    QString video() const { return path(m_flight.videoFiles().first()); }

    int run(const QStringList& arguments)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(name);
        const ProgramRun run =
            runProgram(VISTREL_CLI, QStringList("report") + arguments, environment);
        m_error = run.error;
        return run.status;
    }

    void checkReport(const QString& file)
    {
        const Parts parts = readZip(file);
        QCOMPARE(brokenRules(parts).join('\n'), QString());
        const QString text = documentText(parts);
        QVERIFY2(text.contains(corv::SampleFlight::missionName()), qPrintable(text));
        QVERIFY2(text.contains(corv::SampleFlight::flightName()), qPrintable(text));
        QCOMPARE(text.count("Video time "), static_cast<int>(m_flight.poisMs().size()));
        QCOMPARE(parts.keys().filter("/frame").size(), static_cast<int>(m_flight.poisMs().size()));
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_flight.writeCard(m_folder.path()));
        QVERIFY(!m_flight.poisMs().empty());
    }

    void writesTheReportOfAProject()
    {
        QCOMPARE(run({path("sample.ecor"), "--out", path("project.docx")}), 0);
        QCOMPARE(m_error, QByteArray());
        checkReport(path("project.docx"));
    }

    void writesTheReportOfAVideoAndItsLog()
    {
        QCOMPARE(run({"--out", path("flight.docx"), video(), path("FLIGHT01.LOG")}), 0);
        checkReport(path("flight.docx"));
        QVERIFY(documentText(readZip(path("flight.docx"))).contains("POI 1\n"));
    }

    void aVideoAloneGivesTheCover()
    {
        QCOMPARE(run({video(), "--out", path("alone.docx")}), 0);
        QVERIFY(!documentText(readZip(path("alone.docx"))).contains("Video time "));
    }

    // Instruments need an application for windows, which makes a folder of its own at its start.
    void whatAKilledStartLeftIsRemoved()
    {
        const QTemporaryDir temporary;
        // Above the highest number of a process that the system gives.
        QVERIFY(QDir(temporary.path()).mkpath("vistrel-report-2147483000-aBcDeF"));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TMPDIR", temporary.path());
        const ProgramRun frame = runProgram(VISTREL_CLI,
                                            {"frame", path("sample.ecor"), "--instruments",
                                             "--at-ms", "1000", "--out", path("frame.png")},
                                            environment);
        QVERIFY2(frame.status == 0, frame.error);
        QCOMPARE(QDir(temporary.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList());
    }

    void failureIsOneLine_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("error");
        const auto row = [](const char* name, const QStringList& arguments, const QString& error) {
            QTest::newRow(name) << arguments << error;
        };
        QFile lost(path("lost.ecor"));
        QVERIFY(lost.open(QIODevice::WriteOnly));
        lost.write("{\"contents\":{\"flights\":[{\"files\":{\"video\":\"gone.mp4\"}}]}}");
        QFile logless(path("logless.ecor"));
        QVERIFY(logless.open(QIODevice::WriteOnly));
        logless.write("{\"contents\":{\"flights\":[{\"files\":{\"video\":\"" +
                      m_flight.videoFiles().first().toUtf8() + "\",\"log\":\"gone.log\"}}]}}");
        const QString out = path("none.docx");
        row("no project", {path("none.ecor"), "--out", out}, "none.ecor does not exist.");
        row("no video", {path("none.mp4"), "--out", out}, "none.mp4 does not exist.");
        row("a project without its video", {path("lost.ecor"), "--out", out},
            "The video " + path("gone.mp4") + " does not exist.");
        row("a project without its log", {path("logless.ecor"), "--out", out},
            "The log " + path("gone.log") + " does not exist.");
        row("no video at all", {path("FLIGHT01.LOG"), "--out", out},
            "FLIGHT01.LOG cannot be opened: it is no video.");
        row("no log at all", {video(), video(), "--out", out},
            QFileInfo(video()).fileName() + "\" is not a flight log.");
        row("nowhere to write", {video(), "--out", path("none/r.docx")}, "cannot write ");
    }

    void failureIsOneLine()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, error);
        QCOMPARE(run(arguments), 1);
        QVERIFY2(m_error.startsWith("vistrel-cli: ") && m_error.contains(error.toUtf8()) &&
                     m_error.count('\n') == 1,
                 m_error.constData());
        QVERIFY(!QFile::exists(path("none.docx")));
    }

    void aPictureThatFindsNoRoomIsPartlyDone()
    {
        const FullDisk disk(60000); // enough for the text, and for no picture
        QCOMPARE(run({path("sample.ecor"), "--out", path("small.docx")}), 3);
        QVERIFY2(m_error.contains("small.docx lacks ") && m_error.contains("could not be saved") &&
                     m_error.count('\n') == 1,
                 m_error.constData());
        QCOMPARE(brokenRules(readZip(path("small.docx"))), QStringList());
    }

    void aReportThatFindsNoRoomIsAFailure()
    {
        const FullDisk disk(1000);
        QCOMPARE(run({video(), "--out", path("none.docx")}), 1);
        QVERIFY2(m_error.contains("none.docx: it could not be written to its end") &&
                     m_error.count('\n') == 1,
                 m_error.constData());
        QVERIFY(!QFile::exists(path("none.docx")));
    }

    void showsItsUsage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("nothing") << QStringList();
        QTest::newRow("no document") << QStringList({"a.ecor", "--out", "r.txt"});
        QTest::newRow("no output") << QStringList({"a.ecor"});
        QTest::newRow("output without a name") << QStringList({"a.ecor", "--out"});
        QTest::newRow("no flight") << QStringList({"--out", "a.docx"});
        QTest::newRow("unknown option") << QStringList({"a.mp4", "--red", "--out", "a.docx"});
        QTest::newRow("project and log") << QStringList({"a.ecor", "b.log", "--out", "a.docx"});
        QTest::newRow("too much") << QStringList({"a", "b", "c", "--out", "a.docx"});
    }

    void showsItsUsage()
    {
        QFETCH(QStringList, arguments);
        QCOMPARE(run(arguments), 2);
        QVERIFY2(m_error.trimmed().split('\n').last().startsWith("usage: vistrel-cli report "),
                 m_error);
    }
};

QTEST_GUILESS_MAIN(ReportCommandTest)
#include "ReportCommandTest.moc"
