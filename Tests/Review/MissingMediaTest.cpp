#include "Review/MissingMedia.h"
#include "Desk.h"

#include <QTemporaryDir>
#include <memory>

using namespace corv;
using namespace corv::test;

/// Projects whose card is somewhere else today.
class MissingMediaTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_media;
    std::unique_ptr<QTemporaryDir> m_folder;

    QString path(const QString& name) const { return m_folder->filePath(name); }

private slots:
    void initTestCase() { QVERIFY(makeFlight(m_media.path())); }

    /// A card with the flight, and a project beside it with a point of interest in the third file.
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir().mkpath(path("card")));
        for (const char* name : {"CORV0001.MOV", "CORV0002.MOV", "CORV0003.MOV", "f.log"})
            QVERIFY(QFile::copy(m_media.filePath(name), path(QString("card/") + name)));
        Desk desk;
        QVERIFY(desk.openFlight(path("card/CORV0001.MOV"), path("card/f.log")));
        QTRY_COMPARE(desk.poiNames(), QStringList("POI 1"));
        desk.review.pois()->create(timeOfMs(2500));
        QVERIFY(desk.review.save(path("p.ecor")));
    }

    void everythingIsFoundElsewhereAndKept()
    {
        QVERIFY(QDir().rename(path("card"), path("moved")));
        Desk desk;
        QVERIFY(!desk.review.openProject(path("p.ecor")));
        QVERIFY(desk.problems.value(0).startsWith(
            "Project could be opened, but referenced video file not found."));
        MissingMedia& missing = *desk.review.missingMedia();
        QCOMPARE(missing.text(), QString("Files of p.ecor are missing: CORV0001.MOV, CORV0002.MOV, "
                                         "CORV0003.MOV and 1 more."));

        QSignalSpy opened(&desk.review, &Review::opened);
        missing.locate(m_folder->path());
        QTRY_COMPARE_WITH_TIMEOUT(opened.size(), 1, 20000);
        QVERIFY(!missing.isOffered());
        QCOMPARE(desk.review.jobs()->job(0)->resultText(), QString("4 of 4 missing files found."));
        QTRY_COMPARE(desk.poiNames(), (QStringList{"POI 1", "New POI"}));
        QCOMPARE(msOfTime(desk.player.duration()), 3 * fileMs);
        QCOMPARE(desk.parser.source(), path("moved/f.log"));

        QVERIFY(desk.review.save(path("p.ecor")));
        Desk other;
        QVERIFY(other.openProject(path("p.ecor")));
        QCOMPARE(other.problems, QStringList());
        QVERIFY(!other.review.missingMedia()->isOffered());
        QCOMPARE(other.review.openedFiles().size(), 5);
    }

    void aFolderWithoutThemChangesNothing()
    {
        QVERIFY(QDir().rename(path("card"), path("moved")));
        QVERIFY(QDir().mkpath(path("empty")));
        Desk desk;
        QVERIFY(!desk.review.openProject(path("p.ecor")));
        MissingMedia& missing = *desk.review.missingMedia();
        missing.locate(path("empty"));
        QTRY_VERIFY(missing.text().startsWith("Not found in " + path("empty") + ": CORV0001.MOV"));
        QVERIFY(missing.isOffered());
        QVERIFY(!desk.player.hasVideoOpened());
    }

    /// Past a gap, every time would mean another picture.
    void aMissingPartEndsTheFlightBeforeIt()
    {
        QVERIFY(QDir().mkpath(path("stray")));
        QVERIFY(QFile::rename(path("card/CORV0002.MOV"), path("stray/CORV0002.MOV")));
        Desk desk;
        QVERIFY(desk.openProject(path("p.ecor")));
        QCOMPARE(msOfTime(desk.player.duration()), fileMs);
        QCOMPARE(desk.review.missingMedia()->text(),
                 QString("Files of p.ecor are missing: CORV0002.MOV."));
        QVERIFY(desk.poiNames().contains("New POI"));
        // A save loses nothing of what is not there today.
        QVERIFY(desk.review.save(path("p.ecor")));
        QCOMPARE(filesIn(path("p.ecor"))["parts"].toArray().size(), 3);

        QSignalSpy opened(&desk.review, &Review::opened);
        desk.review.missingMedia()->locate(path("stray"));
        QTRY_COMPARE_WITH_TIMEOUT(opened.size(), 1, 20000);
        QCOMPARE(msOfTime(desk.player.duration()), 3 * fileMs);
        QVERIFY(desk.review.save(path("p.ecor")));
        QCOMPARE(filesIn(path("p.ecor"))["parts"].toArray()[1].toString(),
                 QString("stray/CORV0002.MOV"));
    }

    void aMissingLogStaysNamedAndIsFound()
    {
        QVERIFY(QDir().mkpath(path("stray")));
        QVERIFY(QFile::rename(path("card/f.log"), path("stray/f.log")));
        Desk desk;
        QVERIFY(desk.openProject(path("p.ecor")));
        QVERIFY(desk.problems.value(0).startsWith(
            "Project could be opened, but referenced log file not found."));
        QVERIFY(desk.review.save(path("p.ecor")));
        QCOMPARE(filesIn(path("p.ecor"))["log"].toString(), QString("card/f.log"));

        desk.review.missingMedia()->locate(path("stray"));
        QTRY_COMPARE(desk.parser.source(), path("stray/f.log"));
        QTRY_VERIFY(!desk.parser.isParsing());
        QVERIFY(desk.review.save(path("p.ecor")));
        QCOMPARE(filesIn(path("p.ecor"))["log"].toString(), QString("stray/f.log"));
    }

    void aCardThatIsBackIsNoticed()
    {
        QVERIFY(QDir().rename(path("card"), path("pulled")));
        Desk desk;
        QVERIFY(!desk.review.openProject(path("p.ecor")));
        MissingMedia& missing = *desk.review.missingMedia();
        const QString text = missing.text();
        QVERIFY(QDir().mkpath(path("card")));
        QVERIFY(QFile::rename(path("pulled/f.log"), path("card/f.log")));
        missing.lookAgain();
        QTRY_COMPARE(missing.text(), QString("Files of p.ecor are missing: CORV0001.MOV, "
                                             "CORV0002.MOV and CORV0003.MOV."));
        QVERIFY(!missing.areBack());
        missing.openAgain(); // not yet
        QVERIFY(!desk.player.hasVideoOpened());

        QVERIFY(QFile::rename(path("card/f.log"), path("pulled/f.log")));
        QVERIFY(QDir().rmdir(path("card")) && QDir().rename(path("pulled"), path("card")));
        missing.lookAgain();
        QTRY_VERIFY(missing.areBack());
        QCOMPARE(missing.text(), QString("The missing files of p.ecor are back."));
        // And pulled out once more.
        QVERIFY(QDir().rename(path("card"), path("pulled")));
        missing.lookAgain();
        QTRY_COMPARE(missing.text(), text);
        QVERIFY(QDir().rename(path("pulled"), path("card")));
        missing.lookAgain();
        QTRY_VERIFY(missing.areBack());

        QSignalSpy opened(&desk.review, &Review::opened);
        missing.openAgain();
        QTRY_COMPARE_WITH_TIMEOUT(opened.size(), 1, 20000);
        QVERIFY(!missing.isOffered());
        QTRY_COMPARE(desk.poiNames(), (QStringList{"POI 1", "New POI"}));
        QCOMPARE(msOfTime(desk.player.duration()), 3 * fileMs);
    }

    void anotherFlightEndsTheSearch()
    {
        QVERIFY(QDir().rename(path("card"), path("moved")));
        Desk desk;
        QVERIFY(!desk.review.openProject(path("p.ecor")));
        desk.review.missingMedia()->locate(m_folder->path());
        QVERIFY(desk.openFlight(m_media.filePath("CORV0003.MOV")));
        QVERIFY(!desk.review.missingMedia()->isOffered());
        QCOMPARE(desk.review.openedVideo(), m_media.filePath("CORV0003.MOV"));
        QCOMPARE(desk.review.jobs()->running(), 0);
        QCOMPARE(desk.review.projectPath(), QString());
    }
};

QTEST_MAIN(MissingMediaTest)
#include "MissingMediaTest.moc"
