#include "Project/mediaSearch.h"
#include "projectFixture.h"

using namespace corv;
using namespace corv::test;

/// What of a project is found in another folder.
class MediaSearchTest : public QObject, private ProjectFixture
{
    Q_OBJECT

private slots:
    void init() { makeFolder(); }

    void findsByNameAndSize_data()
    {
        QTest::addColumn<QStringList>("there"); // name=contents
        QTest::addColumn<int>("size");          // -1: an old project knows none
        QTest::addColumn<QString>("found");
        QTest::newRow("anywhere below")
            << QStringList{"a/b/CORV0001.MOV=12345"} << 5 << "a/b/CORV0001.MOV";
        QTest::newRow("in another case of letters")
            << QStringList{"dcim/corv0001.mov=12345"} << 5 << "dcim/corv0001.mov";
        QTest::newRow("another flight of this name")
            << QStringList{"a/CORV0001.MOV=123"} << 5 << QString();
        QTest::newRow("the one of its size among others")
            << QStringList{"101_CORV/CORV0001.MOV=123", "b/CORV0001.MOV=12345"} << 5
            << "b/CORV0001.MOV";
        QTest::newRow("two copies")
            << QStringList{"x/CORV0001.MOV=12345", "y/CORV0001.MOV=12345"} << 5 << "x/CORV0001.MOV";
        QTest::newRow("no size known") << QStringList{"a/CORV0001.MOV=1"} << -1 << "a/CORV0001.MOV";
        QTest::newRow("no size known, and one of two has the same folder")
            << QStringList{"DCIM/100_CORV/CORV0001.MOV=1", "DCIM/101_CORV/CORV0001.MOV=2"} << -1
            << "DCIM/101_CORV/CORV0001.MOV";
        QTest::newRow("no size known, and nothing decides between two")
            << QStringList{"a/CORV0001.MOV=1", "b/CORV0001.MOV=2"} << -1 << QString();
        QTest::newRow("a part of its name") << QStringList{"xCORV0001.MOV=12345"} << 5 << QString();
    }

    void findsByNameAndSize()
    {
        QFETCH(QStringList, there);
        QFETCH(int, size);
        QFETCH(QString, found);
        for (const QString& file : there)
            writeFile(path(file.section('=', 0, 0)), file.section('=', 1).toUtf8());
        ProjectContents project;
        project.namesVideo = true;
        project.videoFile = "/card/101_CORV/CORV0001.MOV";
        if (size >= 0)
            project.sizes.insert(project.videoFile, size);
        const ProjectContents result = withMediaIn(project, path(""), false);
        QCOMPARE(result.videoFile, found.isNull() ? project.videoFile : path(found));
    }

    void findsEachPartAndTheLog()
    {
        for (const char* name : {"CORV0001.MOV", "CORV0002.MOV"})
            writeFile(path(QString("video/") + name), name);
        writeFile(path("logs/FLIGHT01.LOG"), "log");
        ProjectContents project;
        project.namesVideo = true;
        project.namesLog = true;
        project.parts = QStringList{"/card/CORV0001.MOV", "/card/CORV0002.MOV"};
        project.videoFile = project.parts[0];
        project.logFile = "/card/FLIGHT01.LOG";
        QCOMPARE(project.openableParts(), QStringList());
        const ProjectContents found = withMediaIn(project, path(""), false);
        QCOMPARE(found.videoFile, path("video/CORV0001.MOV"));
        QCOMPARE(found.parts,
                 (QStringList{path("video/CORV0001.MOV"), path("video/CORV0002.MOV")}));
        QCOMPARE(found.logFile, path("logs/FLIGHT01.LOG"));
        QCOMPARE(found.missingFiles(), QStringList());
    }

    void leavesWhatIsThere()
    {
        writeFile(path("own/CORV0001.MOV"), "own");
        writeFile(path("other/CORV0001.MOV"), "own");
        ProjectContents project;
        project.namesVideo = true;
        project.videoFile = path("own/CORV0001.MOV");
        QCOMPARE(withMediaIn(project, path("other"), false).videoFile, path("own/CORV0001.MOV"));
    }

    void partsOpenUpToAGap()
    {
        writeFile(path("1.MOV"), "1");
        writeFile(path("3.MOV"), "3");
        ProjectContents project;
        project.parts = QStringList{path("1.MOV"), path("2.MOV"), path("3.MOV")};
        QCOMPARE(project.openableParts(), QStringList(path("1.MOV")));
    }

    void sizesAreKeptInTheProject()
    {
        writeFile(path("media/a.mp4"), "12345");
        writeFile(path("media/a.log"), "123");
        m_loader.saveProject(path("media/a.log"), path("media/a.mp4"), path("p.ecor"),
                             flightProperties());
        m_loader.loadProject(path("p.ecor"));
        QCOMPARE(m_loader.contents().sizes.value(path("media/a.mp4")), 5);
        QCOMPARE(m_loader.contents().sizes.value(path("media/a.log")), 3);
    }

    void wrongSizesAreNone_data()
    {
        QTest::addColumn<QByteArray>("size");
        for (const char* size : {"\"5\"", "-1", "1e300", "null", "[]"})
            QTest::newRow(size) << QByteArray(size);
    }

    void wrongSizesAreNone()
    {
        QFETCH(QByteArray, size);
        writeFile(path("p.ecor"), R"({"contents":{"flights":[{"files":{"video":"a.mp4"},)"
                                  R"("sizes":{"a.mp4":)" +
                                      size + "}}]}}");
        m_loader.loadProject(path("p.ecor"));
        QVERIFY(!m_loader.contents().sizes.contains(path("a.mp4")));
    }
};

QTEST_GUILESS_MAIN(MediaSearchTest)
#include "MediaSearchTest.moc"
