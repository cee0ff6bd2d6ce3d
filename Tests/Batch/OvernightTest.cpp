#include "Batch/flightResults.h"
#include "Support/ProgramRun.h"
#include "Support/ScratchDisk.h"
#include "Support/TestCard.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QJsonArray>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

using namespace corv;
using namespace corv::test;

namespace {

constexpr int brokenLog = 4;
constexpr int cutLog = 5;
constexpr int missingVideo = 6;
constexpr int brokenVideo = 9;
constexpr int largeDiskKb = 512 * 1024;
bool hasOwnMounts = false;

void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

QList<QJsonObject> linesOf(const QByteArray& text)
{
    QList<QJsonObject> lines;
    for (const QByteArray& line : text.trimmed().split('\n'))
        lines << QJsonDocument::fromJson(line).object();
    return lines;
}

/// The kinds of the failures that a run reported.
QStringList failuresOf(const QByteArray& out)
{
    QStringList kinds;
    for (const QJsonObject& line : linesOf(out))
        for (const QJsonValue& failure : line["failures"].toArray())
            kinds << failure.toObject()["kind"].toString();
    return kinds;
}

} // namespace

/// A card of twelve flights with equal names, of which some cannot be read, reviewed in a night in
/// which all goes wrong that can.
class OvernightTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void quietRunDoesAllThatCanBeDone();
    void secondRunChangesNothing();
    void nightOfMishapsEndsAsAQuietOne();
    void allButTheReportIsDoneWherePrintingIsAlwaysKilled();

private:
    QStringList reviewOf(const QString& out) const
    {
        return {"review",  "--out",         out,         "--copy", "--thermal",
                "--video", "--instruments", path("card")};
    }
    QString path(const QString& name) const { return m_base.filePath(name); }

    QTemporaryDir m_base;
    QProcessEnvironment m_environment = QProcessEnvironment::systemEnvironment();
    QMap<QString, QByteArray> m_quiet;
};

void OvernightTest::initTestCase()
{
    for (const QString name : {"card", "bin", "tmp", "disk"})
        QVERIFY(QDir().mkpath(path(name)));
    QVERIFY(TestCard().write(path("card")));
    const QDir card(path("card"));
    const QByteArray log = [&card] {
        QFile file(card.filePath(TestCard::logFile(cutLog)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }();
    for (const auto& [file, bytes] :
         {std::pair{TestCard::logFile(brokenLog), QByteArray("no log")},
          std::pair{TestCard::logFile(cutLog), log.left(log.size() / 2)},
          std::pair{TestCard::videoFile(brokenVideo), QByteArray("no video at all")}}) {
        const QDateTime time = QFileInfo(card.filePath(file)).lastModified();
        write(card.filePath(file), bytes);
        QFile changed(card.filePath(file));
        QVERIFY(changed.open(QIODevice::ReadWrite));
        QVERIFY(changed.setFileTime(time, QFileDevice::FileModificationTime));
    }
    QVERIFY(QFile::remove(card.filePath(TestCard::videoFile(missingVideo))));

    // A word processor that prints at once.
    write(path("bin/soffice"), "#!/bin/sh\n"
                               "while [ $# -gt 1 ]; do\n"
                               "    [ \"$1\" = --outdir ] && folder=$2\n"
                               "    shift\n"
                               "done\n"
                               "printf '%%PDF of the report' >\"$folder/report.pdf\"\n");
    QVERIFY(QFile::setPermissions(path("bin/soffice"), QFile::ReadOwner | QFile::ExeOwner));
    m_environment.insert("PATH", path("bin") + ":/usr/bin:/bin");
    m_environment.insert("TMPDIR", path("tmp"));
}

void OvernightTest::quietRunDoesAllThatCanBeDone()
{
    const ProgramRun review = runProgram(VISTREL_CLI, reviewOf(path("quiet")), m_environment);
    QCOMPARE(review.status, 3);
    QMap<QString, int> statuses;
    QStringList folders;
    for (const QJsonObject& line : linesOf(review.out)) {
        if (line["event"].toString() != "finished")
            continue;
        ++statuses[line["status"].toString()];
        folders << line["flight"].toString();
    }
    // The flight without a video is none, which is said.
    QCOMPARE(statuses, (QMap<QString, int>{{"done", 9}, {"partial", 1}, {"failed", 1}}));
    folders.removeDuplicates();
    QCOMPARE(folders.size(), 11);
    QVERIFY2(review.error.contains(TestCard::logFile(missingVideo).toUtf8()), review.error);
    m_quiet = resultsIn(path("quiet"));
    QCOMPARE(m_quiet.keys().filter(QRegularExpression("/video\\.mp4$")).size(), 10);
    QCOMPARE(m_quiet.keys().filter(QRegularExpression("/report\\.pdf$")).size(), 10);
}

void OvernightTest::secondRunChangesNothing()
{
    const auto timesIn = [](const QString& folder) {
        QMap<QString, QDateTime> times;
        QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QFileInfo file(files.next());
            if (file.fileName() != "result.json")
                times[file.filePath()] = file.lastModified();
        }
        return times;
    };
    const QMap<QString, QDateTime> before = timesIn(path("quiet"));
    const ProgramRun again = runProgram(VISTREL_CLI, reviewOf(path("quiet")), m_environment);
    QCOMPARE(again.status, 3);
    QStringList steps;
    for (const QJsonObject& line : linesOf(again.out))
        steps << line["step"].toString();
    steps.removeDuplicates();
    steps.sort();
    QCOMPARE(steps, QStringList({"", "open"}));
    QCOMPARE(timesIn(path("quiet")), before);
    QCOMPARE(differencesOf(resultsIn(path("quiet")), m_quiet).join('\n'), QString());
}

void OvernightTest::nightOfMishapsEndsAsAQuietOne()
{
    if (!hasOwnMounts)
        QSKIP("no disk can be mounted here");
    // Room for a part of the results; beside the quiet ones, so that projects lead the same ways.
    ScratchDisk disk(path("disk"), 3 * 1024);
    QVERIFY(disk.isMounted());
    const ProgramRun full = runProgram(VISTREL_CLI, reviewOf(path("disk")), m_environment);
    QCOMPARE(full.status, 3);
    QVERIFY2(failuresOf(full.out).contains("noRoom"), full.out);
    QVERIFY2(full.out.contains("There is no room for copies"), full.out);
    // Failures name the files that the reader knows.
    QVERIFY2(!full.out.contains(".work/"), full.out);
    QVERIFY(disk.resize(largeDiskKb));

    QRandomGenerator random(20261121);
    double longestMs = 300;
    int kills = 0;
    for (bool isDone = false; !isDone; longestMs *= 1.3) {
        QProcess review;
        review.setProcessEnvironment(m_environment);
        review.start(VISTREL_CLI, reviewOf(path("disk")));
        QVERIFY(review.waitForStarted());
        isDone = review.waitForFinished(100 + random.bounded(int(longestMs)));
        if (isDone) {
            QCOMPARE(review.exitStatus(), QProcess::NormalExit);
            QCOMPARE(review.exitCode(), 3);
        } else {
            ++kills;
            review.kill();
            QVERIFY(review.waitForFinished());
        }
    }
    qInfo() << kills << "kills";
    QVERIFY(kills >= 5);
    QCOMPARE(differencesOf(resultsIn(path("disk")), m_quiet).join('\n'), QString());
    QCOMPARE(QDir(path("tmp")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList());
}

void OvernightTest::allButTheReportIsDoneWherePrintingIsAlwaysKilled()
{
    constexpr int flights = 3;
    TestCard card;
    card.flights = flights;
    QVERIFY(card.write(path("stuck card")));
    QVERIFY(QDir().mkpath(path("stuck bin")));
    write(path("stuck bin/soffice"), "#!/bin/sh\n: >\"$TMPDIR/lu$$.tmp\"\necho >>" +
                                         path("printings").toUtf8() + "\nexec sleep 300\n");
    QVERIFY(QFile::setPermissions(path("stuck bin/soffice"), QFile::ReadOwner | QFile::ExeOwner));
    QProcessEnvironment stuck = m_environment;
    stuck.insert("PATH", path("stuck bin") + ":/usr/bin:/bin");
    const QStringList words{"review",      "--at-once",       "1", "--video", "--out",
                            path("stuck"), path("stuck card")};
    const auto printings = [this] { return QFileInfo(path("printings")).size(); };
    // In the first round each flight gets to its printing, in the second past its video.
    for (int kills = 0; kills < 2 * flights; ++kills) {
        QProcess review;
        review.setProcessEnvironment(stuck);
        review.start(VISTREL_CLI, words);
        QTRY_COMPARE_WITH_TIMEOUT(printings(), kills + 1, 60000);
        review.kill();
        QVERIFY(review.waitForFinished());
        if (kills == flights - 1)
            QCOMPARE(resultsIn(path("stuck")).keys().filter("report.docx:word/document.xml").size(),
                     flights);
    }
    const QStringList done = resultsIn(path("stuck")).keys();
    QCOMPARE(done.filter(QRegularExpression("/video\\.mp4$")).size(), flights);
    QCOMPARE(done.filter(QRegularExpression("/report\\.pdf$")).size(), 0);
    const ProgramRun whole = runProgram(VISTREL_CLI, words, m_environment);
    QVERIFY2(whole.status == 0, whole.out + whole.error);
    QCOMPARE(resultsIn(path("stuck")).keys().filter(QRegularExpression("/report\\.pdf$")).size(),
             flights);
    // What the killed printing kept for itself is gone, too.
    QCOMPARE(QDir(path("tmp")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList());
}

int main(int argc, char** argv)
{
    hasOwnMounts = takeOwnMounts();
    QCoreApplication application(argc, argv);
    OvernightTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "OvernightTest.moc"
