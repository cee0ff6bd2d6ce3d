#include "Project/CopyIntent.h"
#include "projectFixture.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace corv;
using namespace corv::test;

/// Copies that got their names, of a program that was killed before its project named them.
class CopyIntentTest : public QObject, private ProjectFixture
{
    Q_OBJECT

private:
    QStringList files() const
    {
        return QDir(m_folder->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    /// A program that copies a flight beside p.ecor and is killed at its next step after that.
    void leaveCopies() const
    {
        const pid_t child = ::fork();
        QVERIFY(child >= 0);
        if (child == 0) {
            QDir().mkpath(path("p_video"));
            CopyIntent intent(path("p.ecor"));
            for (const char* name : {"p_log.log", "p_video/1.mov", "p_video/2.mov"}) {
                QFile file(path(name));
                const bool isOpen = file.open(QIODevice::WriteOnly);
                file.write(name);
                file.flush();
                const bool isPart = QByteArray(name).startsWith("p_video");
                if (isOpen)
                    intent.add(path(name), file.handle(), isPart ? path("p_video") : QString());
            }
            intent.write();
            ::kill(::getpid(), SIGKILL);
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(files().size(), 3); // the log, the folder, and the intent
    }

private slots:
    void init() { makeFolder(); }

    void theNextOpeningRemovesThem()
    {
        leaveCopies();
        m_loader.loadProject(path("other.ecor"));
        QCOMPARE(files(), QStringList());
    }

    void theNextSavingIsFreeToCopy()
    {
        leaveCopies();
        QTemporaryDir media;
        writeFile(media.filePath("a.mov"), "video");
        writeFile(media.filePath("a.log"), "log");
        QVERIFY(m_loader.copySourceFilesAndSaveProject(
            media.filePath("a.log"), media.filePath("a.mov"), path("p.ecor"), flightProperties()));
        QCOMPARE(files(), (QStringList{"p.ecor", "p_log.log", "p_video.mov"}));
        QCOMPARE(readFile(path("p_log.log")), QByteArray("log"));
    }

    void whatAProjectNamesStays()
    {
        leaveCopies();
        writeFile(path("q.ecor"), R"({"contents":{"flights":[{"files":{"video":"p_video/1.mov",)"
                                  R"("parts":["p_video/1.mov","p_video/2.mov"],)"
                                  R"("log":"p_log.log"}}]}})");
        CopyIntent::removeAbandoned(path(""));
        QCOMPARE(files(), (QStringList{"p_log.log", "p_video", "q.ecor"}));
        QCOMPARE(QDir(path("p_video")).entryList(QDir::Files).size(), 2);
    }

    void aFileThatReplacedACopyIsKept()
    {
        leaveCopies();
        QVERIFY(QFile::remove(path("p_log.log")));
        writeFile(path("p_log.log"), "my own");
        writeFile(path("p_video/notes.txt"), "my own, too");
        CopyIntent::removeAbandoned(path(""));
        QCOMPARE(files(), (QStringList{"p_log.log", "p_video"}));
        QCOMPARE(QDir(path("p_video")).entryList(QDir::Files), QStringList("notes.txt"));
    }

    void aRunningProgramKeepsIts()
    {
        writeFile(path("p_log.log"), "log");
        QFile copy(path("p_log.log"));
        QVERIFY(copy.open(QIODevice::ReadOnly));
        CopyIntent intent(path("p.ecor"));
        intent.add(copy.fileName(), copy.handle(), QString());
        QCOMPARE(intent.write(), 0);
        CopyIntent::removeAbandoned(path(""));
        QCOMPARE(files().size(), 2);
    }

    void aFinishedCopyLeavesNoIntent()
    {
        QTemporaryDir media;
        writeFile(media.filePath("a.mov"), "video");
        m_loader.copySourceFilesAndSaveProject("", media.filePath("a.mov"), path("p.ecor"),
                                               flightProperties());
        QCOMPARE(files(), (QStringList{"p.ecor", "p_video.mov"}));
    }

    /// A file that says it is an intent and comes from elsewhere.
    void nonsenseDeletesNothing_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<QByteArray>("copies");
        const QString here = QSysInfo::machineHostName();
        QTest::newRow("another machine")
            << "elsewhere" << QByteArray("[{'target':'mine','identity':'1'}]");
        QTest::newRow("no identity") << here << QByteArray("[{'target':'mine','identity':''}]");
        QTest::newRow("wrong types") << here << QByteArray("[[],7,{'target':{},'folder':'.'}]");
        QTest::newRow("no list") << here << QByteArray("{");
    }

    void nonsenseDeletesNothing()
    {
        QFETCH(QString, host);
        QFETCH(QByteArray, copies);
        writeFile(path("mine"), "mine");
        const QByteArray text = "{'host':'" + host.toUtf8() + "','copies':" + copies + '}';
        writeFile(path(".p.ecor.999999999.copies"), QByteArray(text).replace('\'', '"'));
        CopyIntent::removeAbandoned(path(""));
        QCOMPARE(readFile(path("mine")), QByteArray("mine"));
    }
};

QTEST_GUILESS_MAIN(CopyIntentTest)
#include "CopyIntentTest.moc"
