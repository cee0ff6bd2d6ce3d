#include "Desk.h"
#include "Review/RecoveryStore.h"

#include <QLoggingCategory>
#include <QProcess>
#include <QTemporaryDir>
#include <cerrno>

using namespace corv;
using namespace corv::test;

/// A disk that is full or broken from any moment on, seen by a review that edits, keeps, saves and
/// copies: each of the program's calls that change the disk fails once. What is on disk afterwards
/// is whole, what is not there was said with its reason, and nothing half-made is left.
class FullDiskTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_media;

    struct Run
    {
        QStringList lines;  ///< printed by the review
        QStringList failed; ///< the calls that failed, and the number of all calls
        int exitCode = -1;

        int calls() const { return failed.last().section(' ', 1).toInt(); }
    };

    Run runWith(const QString& folder, int failAt, int error, bool goesOn) const
    {
        const QTemporaryDir reports;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("LD_PRELOAD", VISTREL_WRITE_FAILER);
        environment.insert("VISTREL_FAIL_IN", folder);
        environment.insert("VISTREL_FAILED", reports.filePath("failed"));
        environment.insert("VISTREL_FAIL_AT", QString::number(failAt));
        environment.insert("VISTREL_FAIL_WITH", QString::number(error));
        if (goesOn)
            environment.insert("VISTREL_FAIL_ON", "1");
        QProcess program;
        program.setProcessEnvironment(environment);
        program.start(VISTREL_SAVING_DRIVER,
                      {m_media.filePath("CORV0001.MOV"), m_media.filePath("f.log"), folder});
        Run run;
        if (program.waitForFinished(60000) && program.exitStatus() == QProcess::NormalExit)
            run.exitCode = program.exitCode();
        run.lines = QString::fromUtf8(program.readAll()).split('\n', Qt::SkipEmptyParts);
        QFile failed(reports.filePath("failed"));
        if (failed.open(QIODevice::ReadOnly))
            run.failed = QString::fromUtf8(failed.readAll()).split('\n', Qt::SkipEmptyParts);
        return run;
    }

    /// Nothing is in the folder but whole projects, the copies that they name and whole unsaved
    /// reviews.
    static QStringList faultsIn(const QDir& folder)
    {
        QStringList faults;
        QStringList named;
        for (const QString& name : folder.entryList({"*.ecor"}, QDir::Files)) {
            ProjectFileLoader loader;
            loader.loadProject(folder.filePath(name));
            if (loader.loadProblem() || !loader.contents().missingFiles().isEmpty() ||
                loader.contents().pois.value_or(QVariantList()).isEmpty())
                faults << name + " is damaged";
            for (const QString& file : loader.contents().namedFiles())
                named << QFileInfo(file).absoluteFilePath() << QFileInfo(file).absolutePath();
        }
        for (const QString& name :
             folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
            const bool isExpected = name.endsWith(".ecor") || name == "recovery" ||
                                    named.contains(folder.absoluteFilePath(name));
            if (name.startsWith('.') || !isExpected)
                faults << name + " is left over";
        }
        const QDir recovery(folder.filePath("recovery"));
        for (const QString& name :
             recovery.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
            if (!name.startsWith("review-") || !name.endsWith(".json"))
                faults << "recovery/" + name + " is left over";
        }
        return faults;
    }

    /// A save that failed, or that has not copied what it should, has said why.
    static QStringList silencesOf(const Run& run, const QDir& folder)
    {
        QStringList faults;
        QString said;
        const QStringList projects = {"p.ecor", "p.ecor", "copy.ecor", "as.ecor"};
        int saves = 0;
        for (const QString& line : run.lines) {
            if (line.startsWith("said "))
                said += line;
            if (!line.startsWith("save "))
                continue;
            const QString project = projects.value(saves++);
            const bool isDone = line.endsWith("done");
            const bool wantsCopies = project != "p.ecor";
            const QJsonObject files = filesIn(folder.filePath(project));
            const QString video = files["video"].toString();
            const bool isCopied = video.endsWith("_video/CORV0001.MOV") &&
                                  files["log"].toString().endsWith("_log.log");
            const bool isAsWished = isDone && (!wantsCopies || isCopied);
            if (isDone && video.isEmpty())
                faults << project + " is not there";
            // A reason is what the system says, after a colon.
            if (!isAsWished && !said.contains(QRegularExpression(": [A-Z][^:]*\\.|free space")))
                faults << project + " came to nothing without a word: " + said;
            if (isAsWished && !said.isEmpty())
                faults << project + " is there, and it says " + said;
            said.clear();
        }
        if (saves != projects.size())
            faults << "not all was tried";
        const bool isKept = [&folder] {
            for (const RecoveredReview& review : RecoveryStore(folder.filePath("recovery")).found())
                if (!review.problem && review.contents.pois.value_or(QVariantList()).size() >= 4)
                    return true;
            return false;
        }();
        if (!isKept && run.lines.filter("not kept ").isEmpty())
            faults << "the unsaved work is gone without a word";
        return faults;
    }

private slots:
    void initTestCase()
    {
        QLoggingCategory::setFilterRules("*.info=false\n*.warning=false");
        QVERIFY(makeFlight(m_media.path()));
    }

    void leavesWholeFilesAndSaysWhatIsMissing_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("goesOn");
        QTest::newRow("full from then on") << ENOSPC << true;
        QTest::newRow("one call fails") << EIO << false;
    }

    void leavesWholeFilesAndSaysWhatIsMissing()
    {
        QFETCH(int, error);
        QFETCH(bool, goesOn);
        const QTemporaryDir whole;
        const Run undisturbed = runWith(whole.path(), 0, 0, false);
        QCOMPARE(undisturbed.exitCode, 0);
        QCOMPARE(faultsIn(QDir(whole.path())), QStringList());
        QCOMPARE(silencesOf(undisturbed, QDir(whole.path())), QStringList());
        QVERIFY2(undisturbed.calls() > 30, qPrintable(undisturbed.failed.join('\n')));

        QStringList faults;
        for (int call = 1; call <= undisturbed.calls(); ++call) {
            const QTemporaryDir folder;
            const Run run = runWith(folder.path(), call, error, goesOn);
            QStringList found =
                faultsIn(QDir(folder.path())) + silencesOf(run, QDir(folder.path()));
            if (run.exitCode != 0)
                found << "it ended with " + QString::number(run.exitCode);
            if (!found.isEmpty())
                faults << QString("after %1. %2:\n    %3")
                              .arg(call)
                              .arg(run.failed.value(0), found.join("\n    "));
        }
        QVERIFY2(faults.isEmpty(), qPrintable('\n' + faults.join('\n')));
    }
};

QTEST_GUILESS_MAIN(FullDiskTest)
#include "FullDiskTest.moc"
