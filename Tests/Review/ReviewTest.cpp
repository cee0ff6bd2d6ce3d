#include "Review/Review.h"
#include "Base/videoTime.h"
#include "Desk.h"
#include "Support/FullDisk.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QtTest>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

using namespace corv;
using namespace corv::test;

/// One open flight: opened, saved, opened again, closed, and found again after an end without
/// saving.
class ReviewTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_media;
    std::unique_ptr<QTemporaryDir> m_folder;

    QString media(const QString& name) const { return m_media.filePath(name); }
    QString path(const QString& name) const { return m_folder->filePath(name); }
    QString first() const { return media("CORV0001.MOV"); }

    // Leaves unsaved work of a flight, whose files are put into `card`.
    void keepReviewOf(const QString& card)
    {
        QVERIFY(QDir().mkpath(card));
        for (const char* name : {"CORV0001.MOV", "CORV0002.MOV", "f.log"})
            QVERIFY(QFile::copy(media(name), card + '/' + name));
        Desk desk(path("kept"));
        QVERIFY(desk.openFlight(card + "/CORV0001.MOV", card + "/f.log"));
        QTRY_COMPARE(desk.poiNames(), QStringList("POI 1"));
        desk.review.pois()->create(timeOfMs(500));
    }

private slots:
    void initTestCase() { QVERIFY(makeFlight(m_media.path())); }

    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void aProjectNamesTheFirstOfTheOpenedFiles()
    {
        Desk desk;
        QVERIFY(desk.openFlight(first()));
        desk.review.pois()->create(timeOfMs(500));
        desk.player.goToFrame(2 * framesPerFile + 3);
        QTRY_COMPARE(desk.player.source(), media("CORV0003.MOV"));
        QVERIFY(desk.review.save(path("p.ecor")));
        Desk other;
        QVERIFY(other.openProject(path("p.ecor")));
        QCOMPARE(msOfTime(other.player.duration()), 3 * fileMs);
        QCOMPARE(other.poiNames(), QStringList("New POI"));
        QCOMPARE(other.review.openedVideo(), first());
    }

    void reopeningTheOpenProjectRestoresItAtAnyPosition()
    {
        Desk desk;
        QVERIFY(desk.openFlight(first()));
        desk.review.pois()->create(timeOfMs(500));
        QVERIFY(desk.review.save(path("p.ecor")));
        desk.player.goToFrame(framesPerFile + 3);
        QTRY_COMPARE(desk.player.source(), media("CORV0002.MOV"));
        desk.review.pois()->remove(timeOfMs(500));
        desk.player.setContrast(1.9);
        QVERIFY(desk.openProject(path("p.ecor")));
        QCOMPARE(desk.poiNames(), QStringList("New POI"));
        QCOMPARE(desk.player.contrast(), 1.0);
        QVERIFY(!desk.review.canUndo());
    }

    void aProjectOfALaterFileOpensWhileThatFilePlays()
    {
        Desk desk;
        QVERIFY(desk.openFlight(media("CORV0002.MOV")));
        QVERIFY(desk.review.save(path("late.ecor")));
        QVERIFY(desk.openFlight(first()));
        desk.player.goToFrame(framesPerFile + 3);
        QTRY_COMPARE(desk.player.source(), media("CORV0002.MOV"));
        QVERIFY(desk.openProject(path("late.ecor")));
        QTRY_COMPARE(msOfTime(desk.player.duration()), 2 * fileMs);
    }

    void savedAsItHasAllFilesAndKeepsThem()
    {
        Desk desk;
        QVERIFY(desk.openFlight(first(), media("f.log")));
        QVERIFY(desk.review.saveAs(path("p.ecor")));
        QCOMPARE(desk.warnings, QStringList());
        QCOMPARE(QDir(path("p_video")).entryList(QDir::Files).size(), 3);
        const QJsonObject files = filesIn(path("p.ecor"));
        QCOMPARE(files["video"].toString(), QString("p_video/CORV0001.MOV"));
        QCOMPARE(files["log"].toString(), QString("p_log.log"));
        QCOMPARE(files["parts"].toArray().size(), 3);

        // From a plain save on, and from one more with copies, it stays with them.
        desk.review.pois()->create(timeOfMs(100));
        QVERIFY(desk.review.save(path("p.ecor")));
        QCOMPARE(filesIn(path("p.ecor")), files);
        QVERIFY(desk.review.saveAs(path("p.ecor")));
        QCOMPARE(desk.warnings, QStringList());
        QCOMPARE(filesIn(path("p.ecor")), files);

        // Carried elsewhere it is whole.
        QVERIFY(QDir().mkpath(path("away")));
        for (const char* name : {"p.ecor", "p_video", "p_log.log"})
            QVERIFY(QFile::rename(path(name), path(QString("away/") + name)));
        Desk other;
        QVERIFY(other.openProject(path("away/p.ecor")));
        QCOMPARE(msOfTime(other.player.duration()), 3 * fileMs);
        QVERIFY(!other.review.openProblem());
        QCOMPARE(other.problems, QStringList());
    }

    void aFlightOfOneOfSeveralNumberedFilesStaysAlone()
    {
        Desk desk;
        desk.player.setNextFiles({first()});
        QVERIFY(desk.openFlight(first()));
        QCOMPARE(msOfTime(desk.player.duration()), fileMs);
        QVERIFY(desk.review.save(path("p.ecor")));
        Desk other;
        QVERIFY(other.openProject(path("p.ecor")));
        QCOMPARE(msOfTime(other.player.duration()), fileMs);
        QVERIFY(other.review.saveAs(path("q.ecor")));
        QVERIFY(QFile::exists(path("q_video.MOV")));
        QVERIFY(!QFile::exists(path("q_video")));
    }

    void savingACopyKeepsTheProjectAndItsFiles()
    {
        Desk desk;
        QVERIFY(desk.openFlight(first()));
        QVERIFY(desk.review.save(path("own.ecor")));
        QVERIFY(desk.review.saveCopy(path("copy.ecor")));
        QCOMPARE(desk.review.projectPath(), path("own.ecor"));
        QVERIFY(desk.review.save(path("own.ecor")));
        QVERIFY(filesIn(path("own.ecor"))["video"].toString().endsWith("/CORV0001.MOV"));
        QVERIFY(!filesIn(path("own.ecor"))["video"].toString().contains("copy_video"));
    }

    void aMissingLogTakesTheEarlierOneWithIt()
    {
        Desk desk;
        QVERIFY(desk.openFlight(first(), media("f.log")));
        QTRY_COMPARE(desk.poiNames(), QStringList("POI 1"));
        QFile project(path("p.ecor"));
        QVERIFY(project.open(QIODevice::WriteOnly));
        project.write(
            QString(R"({"contents":{"flights":[{"files":{"video":"%1","log":"gone.log"}}]}})")
                .arg(first())
                .toUtf8());
        project.close();
        QVERIFY(desk.openProject(path("p.ecor")));
        QCOMPARE(desk.problems.size(), 1);
        QVERIFY(desk.problems[0].startsWith("Project could be opened, but referenced log file not "
                                            "found."));
        QVERIFY(desk.parser.source().isEmpty());
        QCOMPARE(desk.poiNames(), QStringList());
        QVERIFY(desk.review.openProblem());
    }

    void aFlightWithoutALogOpensSavesAndReopensWithoutAWord_data()
    {
        QTest::addColumn<QString>("log");
        QTest::newRow("none") << QString();
        QTest::newRow("no match") << "no_match";
    }

    void aFlightWithoutALogOpensSavesAndReopensWithoutAWord()
    {
        QFETCH(QString, log);
        Desk desk;
        QVERIFY(desk.openFlight(first(), log));
        QVERIFY(desk.review.saveAs(path("p.ecor")));
        Desk other;
        QVERIFY(other.openProject(path("p.ecor")));
        QCOMPARE(desk.problems + desk.warnings + other.problems, QStringList());
        QVERIFY(!other.parser.isParsing());
    }

    void anOldProjectThatSaysNoMatchOpensWithoutAWord()
    {
        QFile project(path("p.ecor"));
        QVERIFY(project.open(QIODevice::WriteOnly));
        project.write(
            QString(R"({"contents":{"flights":[{"files":{"video":"%1","log":"no_match"}}]}})")
                .arg(first())
                .toUtf8());
        project.close();
        Desk desk;
        QVERIFY(desk.openProject(path("p.ecor")));
        QCOMPARE(desk.problems, QStringList());
    }

    void aFailedSaveIsSaidAndBindsNothing()
    {
        Desk desk;
        QVERIFY(desk.openFlight(first()));
        QVERIFY(desk.review.save(path("p.ecor")));
        QVERIFY(!desk.review.save(path("none/p.ecor")));
        QVERIFY(!desk.review.saveAs(path("none/p.ecor")));
        QCOMPARE(desk.problems.size(), 2);
        QVERIFY(desk.problems[0].contains("No such file or directory"));
        QCOMPARE(desk.review.projectPath(), path("p.ecor"));
    }

    void aSaveIsAJobWithItsResult()
    {
        Desk desk;
        QVERIFY(desk.openFlight(first()));
        QVERIFY(desk.review.save(path("p.ecor")));
        QVERIFY(!desk.review.save(path("none/q.ecor")));
        const JobList& jobs = *desk.review.jobs();
        QCOMPARE(jobs.rowCount(), 2);
        QCOMPARE(jobs.job(0)->kind(), Job::Kind::saving);
        QCOMPARE(jobs.job(0)->title(), QString("Save p.ecor"));
        QCOMPARE(jobs.job(0)->resultText(), QString("p.ecor is saved."));
        QCOMPARE(jobs.job(1)->state(), Job::Failed);
        QVERIFY(jobs.job(1)->resultText().contains("No such file or directory"));
    }

    void saysOnceThatUnsavedWorkCannotBeKept()
    {
        Desk desk;
        QSignalSpy notKept(&desk.recovery, &Recovery::notKept);
        desk.recovery.setFolder("/proc/vistrel/recovery");
        QTRY_COMPARE(notKept.size(), 1);
        QCOMPARE(notKept[0][0].toString(),
                 QString("Unsaved work cannot be kept in /proc/vistrel/recovery: the folder cannot "
                         "be written. Save the project often."));
        QVERIFY(desk.openFlight(first()));
        desk.review.pois()->create(timeOfMs(100));
        desk.recovery.flush();
        QCoreApplication::processEvents();
        QCOMPARE(notKept.size(), 1);
        QVERIFY(desk.review.save(path("p.ecor")));
    }

    void saysThatUnsavedWorkIsNotKeptAnyMore()
    {
        Desk desk(path("recovery"));
        QSignalSpy notKept(&desk.recovery, &Recovery::notKept);
        QVERIFY(desk.openFlight(first()));
        QVERIFY(QDir(path("recovery")).removeRecursively()); // as of a disk that went away
        desk.review.pois()->create(timeOfMs(100));
        desk.recovery.flush();
        QTRY_COMPARE(notKept.size(), 1);
        QVERIFY(notKept[0][0].toString().contains("No such file or directory"));
    }

    void savingNeedsAFlight()
    {
        Desk desk;
        QVERIFY(!desk.review.save(path("p.ecor")));
        QVERIFY(!desk.review.saveAs(path("p.ecor")));
        QVERIFY(!QFile::exists(path("p.ecor")));
    }

    void saysWhatIsWrongWithAProject_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("cause");
        QTest::newRow("missing") << "none.ecor" << QByteArray()
                                 << "Failed to load project. Corrupt project file."
                                 << "does not exist";
        QTest::newRow("no project")
            << "p.ecor" << QByteArray("shopping list")
            << "Project could be opened, but referenced video file not found."
            << "is no project, or is damaged";
        QTest::newRow("on a card that is gone")
            << "p.ecor"
            << QByteArray(R"({"contents":{"flights":[{"files":{"video":"/none/card/V.MOV"}}]}})")
            << "Project could be opened, but referenced video file not found."
            << "If it is on a card or a drive, connect that.";
    }

    void saysWhatIsWrongWithAProject()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, text);
        QFETCH(QString, start);
        QFETCH(QString, cause);
        if (!text.isEmpty()) {
            QFile file(path(name));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        }
        Desk desk;
        QSignalSpy failed(&desk.review, &Review::openFailed);
        QVERIFY(!desk.review.openProject(path(name)));
        QCOMPARE(failed.size(), 1);
        QCOMPARE(desk.problems.size(), 1);
        QVERIFY2(desk.problems[0].startsWith(start), qPrintable(desk.problems[0]));
        QVERIFY2(desk.problems[0].contains(cause), qPrintable(desk.problems[0]));
    }

    void namingAFlightCanBeUndone()
    {
        Desk desk;
        QVERIFY(desk.openFlight(first()));
        desk.review.nameFlight("Bridge", "Pier", 7);
        QCOMPARE(desk.review.undoText(), QString("edit flight properties"));
        desk.review.undo();
        QVERIFY(desk.parser.flightNaming()["undefined"].toBool());
        desk.review.redo();
        QCOMPARE(desk.parser.flightNaming()["flightName"].toString(), QString("Pier"));
    }

    void editsAreUndoneAndRedoneInTheirOrder()
    {
        Desk desk;
        QVERIFY(desk.openFlight(first(), media("f.log")));
        QTRY_COMPARE(desk.poiNames(), QStringList("POI 1"));
        Review& review = desk.review;
        PoiModel& pois = *review.pois();
        std::mt19937 random(500);
        const auto below = [&random](size_t bound) { return static_cast<int>(random() % bound); };
        const auto anyPoi = [&] {
            return std::next(pois.pois().begin(), below(pois.pois().size()));
        };
        std::vector<QVariantMap> states{review.contents()};
        while (states.size() <= 500) {
            const int kind = below(6);
            const QTime time = timeOfMs(below(3 * fileMs));
            const QString text = QString::number(states.size());
            if (kind == 0 && !pois.find(time))
                pois.create(time);
            else if (kind == 1 && !pois.pois().empty())
                pois.remove(anyPoi()->time);
            else if (kind == 2 && !pois.pois().empty())
                pois.setTexts(anyPoi()->time, text, text + "\nof it");
            else if (kind == 3 && !pois.pois().empty()) // half of them onto another one
                pois.move(anyPoi()->time, below(2) == 0 ? anyPoi()->time : time);
            else if (kind == 4)
                review.nameFlight("Bridge", text, static_cast<int>(states.size()));
            else if (kind == 5 && review.missingPoisInLog() > 0) {
                review.addMissingPoisFromLog();
                QTRY_COMPARE(review.missingPoisInLog(), 0);
            }
            if (review.contents() != states.back())
                states.push_back(review.contents());
        }
        for (size_t i = states.size() - 1; i > 0; --i) {
            QCOMPARE(review.contents(), states[i]);
            review.undo();
        }
        QCOMPARE(review.contents(), states.front());
        QVERIFY(!review.canUndo());
        for (size_t i = 1; i < states.size(); ++i) {
            review.redo();
            QCOMPARE(review.contents(), states[i]);
        }
        QVERIFY(!review.canRedo());
    }

    void saysThatAProjectWasSavedAfterTheUnsavedReview()
    {
        {
            Desk desk(path("kept"));
            QVERIFY(desk.openFlight(first()));
            QVERIFY(desk.review.save(path("p.ecor")));
            desk.review.pois()->create(timeOfMs(500));
            desk.recovery.flush();
        }
        const QString end = "(1 point of interest)";
        QVERIFY(Desk(path("kept")).recovery.offerText().endsWith(end));
        {
            Desk elsewhere;
            QVERIFY(elsewhere.openProject(path("p.ecor")));
            elsewhere.review.pois()->create(timeOfMs(700));
            QVERIFY(elsewhere.review.save(path("p.ecor")));
        }
        QFile project(path("p.ecor"));
        QVERIFY(project.open(QIODevice::ReadWrite));
        const QDateTime later = QDateTime::currentDateTime().addSecs(60);
        QVERIFY(project.setFileTime(later, QFileDevice::FileModificationTime));
        Desk desk(path("kept"));
        QVERIFY(desk.recovery.isRestorable());
        QVERIFY2(
            desk.recovery.offerText().contains(end + ". Its project was saved after that, at "),
            qPrintable(desk.recovery.offerText()));
    }

    void unsavedWorkOfAnEndedProgramComesBack()
    {
        {
            Desk desk(path("kept"));
            QVERIFY(desk.openFlight(first(), media("f.log")));
            QTRY_COMPARE(desk.poiNames(), QStringList("POI 1"));
            desk.recovery.flush();
            QCOMPARE(QDir(path("kept")).entryList({"*.json"}).size(), 0); // nothing was done yet
            desk.review.pois()->create(timeOfMs(500));
            desk.player.setContrast(1.5);
            desk.recovery.flush();
            QCOMPARE(QDir(path("kept")).entryList({"*.json"}).size(), 1);
            Desk meanwhile(path("kept"));
            QVERIFY(!meanwhile.recovery.isOffered()); // it is the other one's
        }
        Desk desk(path("kept"));
        QVERIFY(desk.recovery.isOffered());
        QVERIFY2(
            desk.recovery.offerText().startsWith("Restore your unsaved review of CORV0001 from "),
            qPrintable(desk.recovery.offerText()));
        QVERIFY(desk.recovery.offerText().endsWith(" (2 points of interest)"));
        QSignalSpy opened(&desk.review, &Review::opened);
        desk.recovery.restore();
        QVERIFY(!opened.isEmpty() || opened.wait(20000));
        QCOMPARE(desk.poiNames(), (QStringList{"New POI", "POI 1"}));
        QCOMPARE(desk.player.contrast(), 1.5);
        QVERIFY(!desk.recovery.isOffered());
        QCOMPARE(QDir(path("kept")).entryList({"*.json"}).size(), 1); // still unsaved
        QVERIFY(desk.review.save(path("p.ecor")));
        QCOMPARE(QDir(path("kept")).entryList({"*.json"}).size(), 0);
    }

    void aFlightClosedUnsavedIsOfferedWhenItIsOpenedAgain()
    {
        Desk desk(path("kept"));
        QVERIFY(desk.openFlight(first()));
        desk.review.pois()->create(timeOfMs(500));
        desk.review.close();
        QVERIFY(!desk.recovery.isOffered());
        QVERIFY(desk.openFlight(first()));
        QVERIFY(desk.recovery.isOffered());
        desk.recovery.later();
        QVERIFY(!desk.recovery.isOffered());
        QVERIFY(desk.openFlight(first()));
        QVERIFY(desk.recovery.isOffered());
        desk.recovery.discard();
        QVERIFY(!desk.recovery.isOffered());
        QVERIFY(desk.openFlight(first()));
        QVERIFY(!desk.recovery.isOffered());
    }

    void anUndoneChangeNeedsNoRecovery()
    {
        Desk desk(path("kept"));
        QVERIFY(desk.openFlight(first()));
        desk.review.pois()->create(timeOfMs(500));
        desk.recovery.flush();
        QCOMPARE(QDir(path("kept")).entryList({"*.json"}).size(), 1);
        desk.review.undo();
        desk.recovery.flush();
        QCOMPARE(QDir(path("kept")).entryList({"*.json"}).size(), 0);
    }

    // A program that is killed right after saving leaves one.
    void whatEqualsItsProjectIsNotOffered_data()
    {
        QTest::addColumn<bool>("isChanged");
        QTest::newRow("as saved") << false;
        QTest::newRow("with one change more") << true;
    }

    void whatEqualsItsProjectIsNotOffered()
    {
        QFETCH(bool, isChanged);
        {
            Desk desk(path("kept"));
            QVERIFY(desk.openFlight(first(), media("f.log")));
            QTRY_COMPARE(desk.poiNames(), QStringList("POI 1"));
            QVERIFY(desk.review.save(path("p.ecor")));
            desk.review.pois()->create(timeOfMs(500));
            desk.player.setContrast(1.5);
            desk.review.nameFlight("Park", "Row", 3);
            if (!isChanged)
                QVERIFY(desk.review.save(path("p.ecor")));
            desk.recovery.flush();
            const QStringList names = QDir(path("kept")).entryList({"*.json"});
            QCOMPARE(names.size(), isChanged ? 1 : 0);
            if (!isChanged) {
                // What was there the moment before.
                RecoveredReview review;
                review.projectPath = path("p.ecor");
                const ProjectFileLoader::SavedFiles files = desk.review.filesToSave();
                review.contents.videoFile = files.video;
                review.contents.logFile = files.log;
                review.contents.parts = files.parts;
                review.contents.properties = desk.review.contents()["properties"].toMap();
                review.contents.pois = desk.review.contents()["poi"].toList();
                QFile file(path("kept/review-x.json"));
                QVERIFY(file.open(QIODevice::WriteOnly));
                file.write(recoveryText(review));
            }
        }
        Desk desk(path("kept"));
        QCOMPARE(desk.recovery.isOffered(), isChanged);
        QCOMPARE(QDir(path("kept")).entryList({"*.json"}).size(), isChanged ? 1 : 0);
    }

    void aDiskThatHasRoomAgainKeepsTheWork()
    {
        Desk desk(path("kept"));
        QSignalSpy notKept(&desk.recovery, &Recovery::notKept);
        {
            const FullDisk full(0);
            QVERIFY(desk.openFlight(first()));
            desk.review.pois()->create(timeOfMs(500));
            desk.recovery.flush();
        }
        QTRY_COMPARE(notKept.size(), 1);
        QVERIFY2(notKept[0][0].toString().contains("File too large"),
                 qPrintable(notKept[0][0].toString()));
        QCOMPARE(QDir(path("kept")).entryList({"*.json"}).size(), 0);
        desk.review.pois()->create(timeOfMs(600));
        desk.recovery.flush();
        QCOMPARE(QDir(path("kept")).entryList({"*.json"}).size(), 1);
    }

    void anUnsavedReviewFindsItsMediaElsewhere()
    {
        const QString card = path("card");
        keepReviewOf(card);
        QVERIFY(QDir().rename(card, path("moved")));
        QVERIFY(QDir().mkpath(path("empty")));
        Desk desk(path("kept"));
        QVERIFY(!desk.recovery.isRestorable());
        QVERIFY(desk.recovery.isLocatable());
        desk.recovery.locate(path("empty"));
        QTRY_VERIFY(desk.recovery.offerText().contains("Not found in " + path("empty")));
        QVERIFY(desk.recovery.isLocatable());
        desk.recovery.locate(path(""));
        QTRY_VERIFY(desk.recovery.isRestorable());
        QVERIFY(desk.review.openedVideo().isEmpty()); // nothing is restored by itself
        QSignalSpy opened(&desk.review, &Review::opened);
        desk.recovery.restore();
        QVERIFY(!opened.isEmpty() || opened.wait(20000));
        QCOMPARE(desk.poiNames(), (QStringList{"New POI", "POI 1"}));
        QCOMPARE(desk.review.openedFiles(),
                 (QStringList{path("moved/CORV0001.MOV"), path("moved/CORV0002.MOV"),
                              path("moved/f.log")}));
        QVERIFY(!desk.recovery.isOffered());
        QCOMPARE(QDir(path("kept")).entryList({"*.json"}).size(), 1); // unsaved still
    }

    void whatIsBackCanBeRestored()
    {
        const QString card = path("card");
        keepReviewOf(card);
        QVERIFY(QDir().rename(card, path("pulled")));
        Desk desk(path("kept"));
        QVERIFY(!desk.recovery.isRestorable());
        const QString problem = desk.recovery.offerText();
        desk.recovery.lookAgain();
        QThreadPool::globalInstance()->waitForDone();
        QCoreApplication::processEvents();
        QCOMPARE(desk.recovery.offerText(), problem);
        QVERIFY(QDir().rename(path("pulled"), card));
        desk.recovery.lookAgain();
        QTRY_VERIFY(desk.recovery.isRestorable());
        QVERIFY(QDir().rename(card, path("pulled")));
        desk.recovery.lookAgain();
        QTRY_VERIFY(!desk.recovery.isRestorable());
        QCOMPARE(desk.recovery.offerText(), problem);
    }

    void whatCannotBeRestoredSaysSoAndCanBeDiscarded_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("said");
        QTest::newRow("damaged") << QByteArray("{\"format\":1,\"vid") << "is damaged";
        QTest::newRow("empty") << QByteArray() << "is damaged";
        QTest::newRow("media gone")
            << QByteArray(R"({"format":1,"video":"/none/V.MOV","poi":[{"time":1}]})")
            << "Cannot restore your unsaved review of V from ";
    }

    void whatCannotBeRestoredSaysSoAndCanBeDiscarded()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, said);
        QVERIFY(QDir().mkpath(path("kept")));
        QFile file(path("kept/review-x.json"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        file.close();
        Desk desk(path("kept"));
        QVERIFY(desk.recovery.isOffered());
        QVERIFY2(desk.recovery.offerText().contains(said), qPrintable(desk.recovery.offerText()));
        QVERIFY(!desk.recovery.isRestorable());
        desk.recovery.restore();
        QVERIFY(desk.review.openedVideo().isEmpty());
        desk.recovery.discard();
        QVERIFY(!QFile::exists(file.fileName()));
        QVERIFY(!desk.recovery.isOffered());
    }
};

QTEST_MAIN(ReviewTest)
#include "ReviewTest.moc"
