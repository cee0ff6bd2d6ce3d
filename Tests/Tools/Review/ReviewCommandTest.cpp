#include "SampleFlight/SampleFlight.h"
#include "Support/ProgramRun.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>
#include <cstdio>
#include <fstream>
#include <memory>

using namespace corv;
using namespace corv::test;

namespace {

QProcessEnvironment withoutWordProcessor()
{
    // Printing takes longer than all the rest, and is tried once.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("PATH", "/nonexistent");
    return environment;
}

ProgramRun run(const QStringList& arguments,
               const QProcessEnvironment& environment = withoutWordProcessor())
{
    return runProgram(QStringLiteral(VISTREL_CLI), QStringList{"review"} + arguments, environment);
}

QList<QJsonObject> linesOf(const QByteArray& text)
{
    QList<QJsonObject> lines;
    for (const QByteArray& line : text.trimmed().split('\n'))
        lines << QJsonDocument::fromJson(line).object();
    return lines;
}

QByteArray contentsOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

/// The steps of the events of a review that the document of the tool does not name.
QStringList undocumentedSteps(const QByteArray& out)
{
    const QByteArray document = contentsOf(VISTREL_DOCS "/cli.md");
    const QByteArray section = document.mid(document.indexOf("\n## review\n"));
    QStringList steps;
    for (const QJsonObject& line : linesOf(out)) {
        steps << line["step"].toString();
        for (const QJsonValue failure : line["failures"].toArray())
            steps << failure.toObject()["step"].toString();
    }
    steps.removeAll(QString());
    steps.removeDuplicates();
    QStringList undocumented;
    for (const QString& step : qAsConst(steps))
        if (!section.contains('`' + step.toUtf8() + '`'))
            undocumented << step;
    return undocumented;
}

/// All files below a folder with their contents; a report only by its name, since it has a date in
/// it and is a zip.
QMap<QString, QByteArray> resultsIn(const QString& folder)
{
    QMap<QString, QByteArray> results;
    QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        const bool varies = path.endsWith(".docx") || path.endsWith("manifest.json");
        results[QDir(folder).relativeFilePath(path)] = varies ? QByteArray() : contentsOf(path);
    }
    return results;
}

} // namespace

class ReviewCommandTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void flightIsReviewedWhole();
    void secondRunDoesOnlyWhatIsMissing();
    void projectOfThePilotIsKept();
    void badFlightStopsNoOther();
    void namesInEventsDoNotSteerTheTerminal();
    void fileLeftOutOfTheSearchIsNotDone();
    void killedRunGoesOn();
    void jobsGiveTheSameAsOneRun();
    void folderOfAnotherFlightIsLeftAlone();
    void changedOptionsAreFollowed();
    void copiesKeepTheProjectThatThePilotChanged();
    void projectWithoutManifestIsKept();
    void projectOfAKilledRunIsKnownAsItsOwn();
    void twoAtOnceDoNotDisturbEachOther();
    void killedRunLeavesNoEarlierResult();
    void missingVideoIsReported();
    void logThatEndsEarlyIsRemarked();
    void missingLogIsRemarked();
    void lineFitsTheTerminal();
    void refusesWrongLines_data();
    void refusesWrongLines();

private:
    QString out(const QString& name = QString()) const { return m_out->path() + '/' + name; }
    QString flightFolder() const { return out(m_flightName); }

    QTemporaryDir m_card;
    std::unique_ptr<QTemporaryDir> m_out;
    QString m_flightName;
};

void ReviewCommandTest::initTestCase()
{
    SampleFlightOptions options;
    options.videoSeconds = 10.0; // parts that differ from the recording by more than chance
    options.secondsPerFile = 5;
    const SampleFlight flight(options);
    QVERIFY(flight.writeCard(m_card.path()));
}

void ReviewCommandTest::init()
{
    m_out = std::make_unique<QTemporaryDir>();
    const ProgramRun list = run({"--list", "--json", "--out", out(), m_card.path()});
    QCOMPARE(list.status, 0);
    const QList<QJsonObject> jobs = linesOf(list.out);
    QCOMPARE(jobs.size(), 1);
    QCOMPARE(jobs[0]["videos"].toArray().size(), 2);
    m_flightName = jobs[0]["folder"].toString();
    QVERIFY(!m_flightName.isEmpty());
}

void ReviewCommandTest::flightIsReviewedWhole()
{
    const ProgramRun review =
        run({"--out", out(), "--copy", "--thermal", "--video", "--instruments", "--thermal-bar",
             "--columns", "state_estimation:time,altitude", "--rate", "1", m_card.path()},
            QProcessEnvironment::systemEnvironment());
    QCOMPARE(review.error, QByteArray());
    QCOMPARE(review.status, 0);
    QCOMPARE(undocumentedSteps(review.out), QStringList());
    const QJsonObject last = linesOf(review.out).last();
    QCOMPARE(last["event"].toString(), QStringLiteral("finished"));
    QCOMPARE(last["status"].toString(), QStringLiteral("done"));
    const QJsonArray remarks = last["remarks"].toArray();
    QVERIFY2(remarks.size() == 1 && remarks[0].toString().startsWith("pictures/POI") &&
                 remarks[0].toString().endsWith("--thermal-clock screen changes that."),
             review.out);

    const QJsonArray points =
        QJsonDocument::fromJson(contentsOf(flightFolder() + "/points.json")).array();
    QVERIFY(points.size() > 0);
    for (const QJsonValue& point : points) {
        QVERIFY(!QImage(flightFolder() + '/' + point.toObject()["picture"].toString()).isNull());
        QVERIFY(point.toObject()["logTimeMs"].isDouble());
        const QJsonObject altitude =
            point.toObject()["instruments"].toObject()["Altitude"].toObject();
        QVERIFY(altitude["value"].isDouble());
        QCOMPARE(altitude["unit"].toString(), QStringLiteral("m"));
    }
    const QByteArray table = contentsOf(flightFolder() + "/points.csv");
    QVERIFY(table.startsWith("time (ms),time,log time (ms),name,description,"));
    QCOMPARE(table.count("\r\n"), points.size() + 1);
    const QByteArray values = contentsOf(flightFolder() + "/tables/state_estimation.csv");
    QVERIFY2(values.startsWith("time (ms),altitude (m)\n"), values.left(80).constData());
    QVERIFY(contentsOf(flightFolder() + "/report.docx").startsWith("PK"));
    QVERIFY(contentsOf(flightFolder() + "/report.pdf").startsWith("%PDF"));
    QVERIFY(QFileInfo(flightFolder() + "/video.mp4").size() > 0);
    QVERIFY(!QDir(flightFolder() + "/.work").exists());

    // The folder has its media in it, so the project opens from any place.
    const QString moved = out("moved");
    QVERIFY(QDir().rename(flightFolder(), moved));
    const ProgramRun project =
        runProgram(VISTREL_CLI, {"project", moved + '/' + m_flightName + ".ecor", "--json"});
    QCOMPARE(project.status, 0);
    QCOMPARE(QJsonDocument::fromJson(project.out).object()["missing"].toArray().size(), 0);
}

void ReviewCommandTest::secondRunDoesOnlyWhatIsMissing()
{
    QCOMPARE(run({"--out", out(), m_card.path()}).status, 0);
    QMap<QString, QDateTime> times;
    for (const QString name : {"report.docx", "points.csv", "pictures/POI001.jpg"})
        times[name] = QFileInfo(flightFolder() + '/' + name).lastModified();
    QVERIFY(QFile::remove(flightFolder() + "/points.csv"));
    const ProgramRun again = run({"--out", out(), m_card.path()});
    QCOMPARE(again.status, 0);
    QStringList steps;
    for (const QJsonObject& line : linesOf(again.out))
        steps << line["step"].toString();
    steps.removeDuplicates();
    QCOMPARE(steps, QStringList({"open", "points", ""}));
    QVERIFY(QFile::exists(flightFolder() + "/points.csv"));
    for (const QString name : {"report.docx", "pictures/POI001.jpg"})
        QCOMPARE(QFileInfo(flightFolder() + '/' + name).lastModified(), times[name]);
}

void ReviewCommandTest::projectOfThePilotIsKept()
{
    QCOMPARE(run({"--out", out(), m_card.path()}).status, 0);
    const QString project = flightFolder() + '/' + m_flightName + ".ecor";
    QByteArray text = contentsOf(project);
    QVERIFY(text.contains("\"name\": \"POI 1\""));
    text.replace("\"name\": \"POI 1\"", "\"name\": \"Hot cell\"");
    write(project, text);
    const ProgramRun again = run({"--out", out(), m_card.path()});
    QCOMPARE(again.status, 0);
    QCOMPARE(contentsOf(project), text);
    QVERIFY(contentsOf(flightFolder() + "/points.csv").contains("Hot cell"));
}

void ReviewCommandTest::badFlightStopsNoOther()
{
    const QTemporaryDir card;
    write(card.filePath("AAA.MOV"), "no video at all");
    const ProgramRun review = run({"--out", out(), m_card.path(), card.path()});
    QCOMPARE(review.status, 3);
    QMap<QString, int> statuses;
    for (const QJsonObject& line : linesOf(review.out))
        if (line["event"].toString() == "finished")
            ++statuses[line["status"].toString()];
    QCOMPARE(statuses, (QMap<QString, int>{{"done", 1}, {"failed", 1}}));
    QVERIFY(QFile::exists(flightFolder() + "/report.docx"));
}

void ReviewCommandTest::namesInEventsDoNotSteerTheTerminal()
{
    const QTemporaryDir card;
    const QString name = QString::fromUtf8("A\u202e\u009bB.MOV");
    write(card.filePath(name), "no video at all");
    const ProgramRun review = run({"--out", out(), card.path()});
    QCOMPARE(review.status, 1);
    QVERIFY2(review.out.contains("A\\u202e\\u009bB.MOV"), review.out);
    const QJsonObject failure = linesOf(review.out).last()["failures"].toArray()[0].toObject();
    QVERIFY2(failure["message"].toString().contains(name), review.out);
}

// A night that ends with 0 has looked at all files of the card.
void ReviewCommandTest::fileLeftOutOfTheSearchIsNotDone()
{
    QVERIFY(QDir().mkpath(out("card")));
    QVERIFY(QFile::link(m_card.filePath("DCIM/101_CORV/CORV0001.MOV"), out("card/A.MOV")));
    const std::string leftOut = out("card/").toStdString() + "\xe4.MOV";
    std::ofstream(leftOut) << "a video";
    for (const QStringList& mode : {QStringList(), QStringList{"--list", "--json"}}) {
        const ProgramRun review = run(QStringList{"--out", out("done"), out("card")} + mode);
        QCOMPARE(review.status, 3);
        QVERIFY2(review.error.contains("1 file is left out"), review.error);
        QCOMPARE(linesOf(review.out).last()["failures"].toArray(), QJsonArray());
    }
    QCOMPARE(std::remove(leftOut.c_str()), 0); // Qt does not see it
}

// Whatever moment it is killed at, the run after it ends with what one quiet run gives.
void ReviewCommandTest::killedRunGoesOn()
{
    const QTemporaryDir quiet;
    QCOMPARE(run({"--out", quiet.path(), m_card.path()}).status, 0);
    QRandomGenerator random(20261121);
    for (int kill = 0; kill < 6; ++kill) {
        QProcess process;
        process.setProcessEnvironment(withoutWordProcessor());
        process.start(VISTREL_CLI, {"review", "--out", out(), m_card.path()});
        QVERIFY(process.waitForStarted());
        // At a step that is drawn, or at the end.
        const int lines = random.bounded(1, 12);
        int seen = 0;
        while (seen < lines && process.waitForReadyRead(60000))
            seen += process.readAllStandardOutput().count('\n');
        process.kill();
        QVERIFY(process.state() == QProcess::NotRunning || process.waitForFinished());
    }
    QCOMPARE(run({"--out", out(), m_card.path()}).status, 0);
    QCOMPARE(resultsIn(out()).keys(), resultsIn(quiet.path()).keys());
    QMap<QString, QByteArray> results = resultsIn(out());
    QMap<QString, QByteArray> expected = resultsIn(quiet.path());
    // The project has the relative path of the card, which differs between the two folders.
    const QString project = m_flightName + '/' + m_flightName + ".ecor";
    results.remove(project);
    expected.remove(project);
    QVERIFY(results == expected);
}

void ReviewCommandTest::jobsGiveTheSameAsOneRun()
{
    const ProgramRun list = run({"--list", "--json", "--out", out(), m_card.path()});
    write(out("jobs.jsonl"), list.out);
    const ProgramRun none = run({"--gather", out("jobs.jsonl"), "--out", out()});
    QCOMPARE(none.status, 1);
    write(out("job.json"), list.out);
    QCOMPARE(run({"--job", out("job.json"), "--out", out()}).status, 0);
    const ProgramRun gathered = run({"--gather", out("jobs.jsonl"), "--out", out()});
    QCOMPARE(gathered.status, 0);
    QCOMPARE(linesOf(gathered.out).last()["status"].toString(), QStringLiteral("done"));

    const QTemporaryDir other;
    QCOMPARE(run({"--out", other.path(), m_card.path()}).status, 0);
    QCOMPARE(resultsIn(flightFolder()).keys(), resultsIn(other.filePath(m_flightName)).keys());
}

void ReviewCommandTest::folderOfAnotherFlightIsLeftAlone()
{
    const ProgramRun list = run({"--list", "--json", "--out", out(), m_card.path()});
    write(out("jobs.jsonl"), list.out);
    QVERIFY(QDir().mkpath(flightFolder()));
    const QByteArray manifest = "{\"version\":1,\"identity\":\"another\",\"steps\":{}}";
    write(flightFolder() + "/manifest.json", manifest);
    write(flightFolder() + "/result.json", "{\"status\":\"done\"}");

    QCOMPARE(run({"--out", out(), m_card.path()}).status, 0);
    QVERIFY(QFile::exists(flightFolder() + "_2/report.docx"));
    // A list from before that flight came.
    const ProgramRun stale = run({"--job", out("jobs.jsonl"), "--out", out()});
    QCOMPARE(stale.status, 1);
    const QJsonArray failures = linesOf(stale.out).last()["failures"].toArray();
    QVERIFY(failures[0].toObject()["message"].toString().contains("another flight"));
    QCOMPARE(run({"--gather", out("jobs.jsonl"), "--out", out()}).status, 1);
    QCOMPARE(contentsOf(flightFolder() + "/manifest.json"), manifest);
    QCOMPARE(contentsOf(flightFolder() + "/result.json"), QByteArray("{\"status\":\"done\"}"));
    QCOMPARE(QDir(flightFolder()).entryList(QDir::Files | QDir::Hidden).size(), 2);
}

void ReviewCommandTest::changedOptionsAreFollowed()
{
    const QString project = flightFolder() + '/' + m_flightName + ".ecor";
    QCOMPARE(run({"--out", out(), m_card.path()}).status, 0);
    const QByteArray plain = contentsOf(project);
    const QByteArray picture = contentsOf(flightFolder() + "/pictures/POI001.jpg");
    QCOMPARE(run({"--out", out(), "--thermal", "--copy", m_card.path()}).status, 0);
    QVERIFY(contentsOf(project) != plain);
    QVERIFY(contentsOf(flightFolder() + "/pictures/POI001.jpg") != picture);
    // Of the flight's later file, and so with another thermal picture.
    const QStringList pictures = QDir(flightFolder() + "/pictures").entryList(QDir::Files);
    const QString later = flightFolder() + "/pictures/" + pictures.last();
    const QByteArray ofFile = contentsOf(later);
    const ProgramRun asOnScreen =
        run({"--out", out(), "--thermal", "--thermal-clock", "screen", "--copy", m_card.path()});
    QCOMPARE(linesOf(asOnScreen.out).last()["remarks"].toArray(), QJsonArray());
    QVERIFY(contentsOf(later) != ofFile);
    QCOMPARE(QDir(flightFolder() + '/' + m_flightName + "_video").entryList(QDir::Files).size(), 2);
    QCOMPARE(run({"--out", out(), m_card.path()}).status, 0);
    QCOMPARE(contentsOf(project), plain);
    QCOMPARE(contentsOf(flightFolder() + "/pictures/POI001.jpg"), picture);
    QVERIFY(!QFile::exists(flightFolder() + '/' + m_flightName + "_video"));
}

void ReviewCommandTest::copiesKeepTheProjectThatThePilotChanged()
{
    QCOMPARE(run({"--out", out(), m_card.path()}).status, 0);
    const QString project = flightFolder() + '/' + m_flightName + ".ecor";
    QByteArray text = contentsOf(project);
    write(project, text.replace("\"name\": \"POI 1\"", "\"name\": \"Hot cell\""));
    QCOMPARE(run({"--out", out(), "--copy", m_card.path()}).status, 0);
    QVERIFY(contentsOf(project).contains("Hot cell"));
    const QString copy = flightFolder() + '/' + m_flightName + "_video/CORV0001.MOV";
    QVERIFY(QFile::exists(copy));
    // One that was lost comes back, and the project is still the pilot's.
    QVERIFY(QFile::remove(copy));
    const ProgramRun again = run({"--out", out(), "--copy", m_card.path()});
    QVERIFY(again.status == 0 || again.status == 1);
    QVERIFY(contentsOf(project).contains("Hot cell"));
}

// A project is replaced only where the manifest says that the program made it.
void ReviewCommandTest::projectWithoutManifestIsKept()
{
    QCOMPARE(run({"--out", out(), m_card.path()}).status, 0);
    const QString project = flightFolder() + '/' + m_flightName + ".ecor";
    QByteArray text = contentsOf(project);
    write(project, text.replace("\"name\": \"POI 1\"", "\"name\": \"Hot cell\""));
    QVERIFY(QFile::remove(flightFolder() + "/manifest.json"));
    QCOMPARE(run({"--out", out(), m_card.path()}).status, 0);
    QCOMPARE(run({"--out", out(), "--thermal", m_card.path()}).status, 0);
    QCOMPARE(contentsOf(project), text);
}

// The moment between the project and the record that it is done: the next run still knows it.
void ReviewCommandTest::projectOfAKilledRunIsKnownAsItsOwn()
{
    QCOMPARE(run({"--out", out(), "--thermal", m_card.path()}).status, 0);
    const QString project = flightFolder() + '/' + m_flightName + ".ecor";
    const QByteArray thermal = contentsOf(project);
    QDir(flightFolder()).removeRecursively();
    QCOMPARE(run({"--out", out(), m_card.path()}).status, 0);
    QJsonObject manifest =
        QJsonDocument::fromJson(contentsOf(flightFolder() + "/manifest.json")).object();
    QJsonObject steps = manifest["steps"].toObject();
    const QString digest = steps["project"].toObject()["digest"].toString();
    QVERIFY(!digest.isEmpty());
    steps["project"] = QJsonObject{{"pendingDigest", digest}};
    manifest["steps"] = steps;
    write(flightFolder() + "/manifest.json", QJsonDocument(manifest).toJson());
    QCOMPARE(run({"--out", out(), "--thermal", m_card.path()}).status, 0);
    QCOMPARE(contentsOf(project), thermal);
    // One that somebody has changed since is not.
    QByteArray text = contentsOf(project);
    write(project, text.replace("\"name\": \"POI 1\"", "\"name\": \"Hot cell\""));
    write(flightFolder() + "/manifest.json", QJsonDocument(manifest).toJson());
    QCOMPARE(run({"--out", out(), m_card.path()}).status, 0);
    QCOMPARE(contentsOf(project), text);
}

void ReviewCommandTest::twoAtOnceDoNotDisturbEachOther()
{
    QProcess first;
    first.setProcessEnvironment(withoutWordProcessor());
    first.start(VISTREL_CLI, {"review", "--out", out(), "--video", m_card.path()});
    QVERIFY(first.waitForReadyRead(60000));
    const ProgramRun second = run({"--out", out(), "--video", m_card.path()});
    QVERIFY(first.waitForFinished(60000));
    QCOMPARE(first.exitCode(), 0);
    QCOMPARE(second.status, 0);
    QVERIFY(second.out.contains("\"waiting\""));
    QCOMPARE(undocumentedSteps(second.out), QStringList());
    QVERIFY(!second.out.contains("\"report\"")); // which the first has made
    QCOMPARE(resultsIn(out()).keys().filter(QRegularExpression("/\\.")), QStringList());
}

void ReviewCommandTest::killedRunLeavesNoEarlierResult()
{
    const ProgramRun list = run({"--list", "--json", "--out", out(), m_card.path()});
    write(out("jobs.jsonl"), list.out);
    QCOMPARE(run({"--job", out("jobs.jsonl"), "--out", out()}).status, 0);
    QCOMPARE(run({"--gather", out("jobs.jsonl"), "--out", out()}).status, 0);
    QProcess process;
    process.setProcessEnvironment(withoutWordProcessor());
    process.start(VISTREL_CLI, {"review", "--video", "--out", out(), "--job", out("jobs.jsonl")});
    while (!process.readAllStandardOutput().contains("\"video\""))
        QVERIFY(process.waitForReadyRead(60000));
    process.kill();
    QVERIFY(process.waitForFinished());
    QCOMPARE(run({"--gather", out("jobs.jsonl"), "--out", out()}).status, 1);
}

void ReviewCommandTest::missingVideoIsReported()
{
    const ProgramRun list = run({"--list", "--json", "--out", out(), m_card.path()});
    write(out("jobs.jsonl"), QByteArray(list.out).replace(".MOV", ".MOW"));
    const ProgramRun review = run({"--job", out("jobs.jsonl"), "--out", out()});
    QCOMPARE(review.status, 1);
    const QJsonObject failure = linesOf(review.out).last()["failures"].toArray()[0].toObject();
    QCOMPARE(failure["kind"].toString(), QStringLiteral("notFound"));
    QVERIFY(failure["message"].toString().contains("CORV0001.MOW does not exist."));
}

// What the log has is written, and the missing rest is reported.
void ReviewCommandTest::logThatEndsEarlyIsRemarked()
{
    const QTemporaryDir card;
    SampleFlightOptions options;
    options.videoSeconds = 10.0;
    options.thermalCamera = 0;
    QVERIFY(SampleFlight(options).writeCard(card.path()));
    const QString logFile = card.filePath(SampleFlight::logFile());
    const QDateTime time = QFileInfo(logFile).lastModified();
    QFile log(logFile);
    QVERIFY(log.open(QIODevice::ReadWrite));
    // The recording is from 20 s on, and the log runs on for a while after it.
    QVERIFY(log.resize(log.size() * 55 / 100));
    QVERIFY(log.setFileTime(time, QFileDevice::FileModificationTime));
    log.close();
    const ProgramRun review = run({"--out", out(), card.path()});
    QCOMPARE(review.status, 0);
    const QJsonObject last = linesOf(review.out).last();
    QCOMPARE(last["status"].toString(), QStringLiteral("done"));
    const QJsonArray remarks = last["remarks"].toArray();
    QVERIFY2(remarks.size() == 2, review.out);
    QVERIFY(remarks[0].toString().contains("FLIGHT01.LOG has the start of the recording, but no"));
    QVERIFY2(QRegularExpression("ends at 0:0[1-7] of the video, which is 0:10 long")
                 .match(remarks[1].toString())
                 .hasMatch(),
             review.out);
    // The next run, and a gathering elsewhere, say so again.
    QCOMPARE(linesOf(run({"--out", out(), card.path()}).out).last()["remarks"].toArray(), remarks);
    write(out("jobs.jsonl"), run({"--list", "--json", "--out", out(), card.path()}).out);
    const ProgramRun gathered = run({"--gather", out("jobs.jsonl"), "--out", out()});
    QCOMPARE(linesOf(gathered.out).last()["remarks"].toArray(), remarks);
}

void ReviewCommandTest::missingLogIsRemarked()
{
    const QTemporaryDir card;
    QVERIFY(QFile::copy(m_card.filePath("DCIM/101_CORV/CORV0001.MOV"), card.filePath("A.MOV")));
    const ProgramRun review = run({"--out", out(), card.path()});
    QCOMPARE(review.status, 0);
    const QJsonArray remarks = linesOf(review.out).last()["remarks"].toArray();
    QVERIFY2(remarks.size() == 1 && remarks[0].toString().startsWith("No log was found"),
             review.out);
}

void ReviewCommandTest::lineFitsTheTerminal()
{
    const QString line =
        QStringLiteral("/bin/stty cols 61; exec " VISTREL_CLI " review --out '%1' '%2'")
            .arg(out(), m_card.path());
    const ProgramRun review =
        runProgram("/usr/bin/script", {"-qec", line, "/dev/null"}, withoutWordProcessor());
    QCOMPARE(review.status, 0);
    const QString shown = QString::fromUtf8(review.out);
    QVERIFY2(shown.contains("0 of 1 flights") && shown.contains("pictures"), review.out);
    for (const QString& part : shown.split(QRegularExpression("[\r\n]")))
        QVERIFY2(part.size() <= 60, qPrintable(part));
    QVERIFY2(shown.trimmed().endsWith("\r1 flight: 1 done"), review.out);
}

void ReviewCommandTest::refusesWrongLines_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("lines");
    QTest::newRow("no location") << QStringList{"--out", "x"} << 2 << 1;
    QTest::newRow("no output folder") << QStringList{"."} << 2 << 1;
    QTest::newRow("job and location") << QStringList{"--job", "x", "--out", "x", "."} << 2 << 2;
    QTest::newRow("none at once") << QStringList{"--at-once", "0", "--out", "x", "."} << 2 << 2;
    QTest::newRow("endless rate") << QStringList{"--rate", "inf", "--out", "x", "."} << 2 << 2;
    QTest::newRow("no group") << QStringList{"--columns", ":a", "--out", "x", "."} << 2 << 2;
    QTest::newRow("missing location") << QStringList{"--out", "x", "/nonexistent"} << 1 << 1;
    QTest::newRow("missing job") << QStringList{"--job", "/nonexistent", "--out", "x"} << 1 << 1;
    QTest::newRow("missing list") << QStringList{"--gather", "/nonexistent", "--out", "x"} << 1
                                  << 1;
    QTest::newRow("no video") << QStringList{"--out", "x", VISTREL_BATCH} << 1 << 1;
    QTest::newRow("no video to list")
        << QStringList{"--list", "--out", "x", VISTREL_BATCH} << 1 << 1;
}

void ReviewCommandTest::refusesWrongLines()
{
    QFETCH(QStringList, arguments);
    const ProgramRun review = run(arguments);
    QTEST(review.status, "status");
    QTEST(review.error.count('\n'), "lines");
}

QTEST_GUILESS_MAIN(ReviewCommandTest)
#include "ReviewCommandTest.moc"
