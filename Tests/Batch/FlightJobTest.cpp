#include "Batch/FlightJob.h"
#include "Batch/FlightManifest.h"

#include <QDir>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QtTest>

using namespace corv;

namespace {

FlightJob jobOf(const QString& video, const QString& mission = {}, const QString& flight = {},
                int number = 0)
{
    FlightJob job;
    job.videos = QStringList{video};
    job.date = QDate(2026, 11, 21);
    if (!mission.isEmpty() || !flight.isEmpty()) {
        job.naming.undefined = false;
        job.naming.missionName = mission;
        job.naming.flightName = flight;
        job.naming.flightNumber = number;
    }
    return job;
}

} // namespace

class FlightJobTest : public QObject
{
    Q_OBJECT

private slots:
    void namePartsSuitEveryFileSystem_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("part");
        QTest::newRow("plain") << "Solar park"
                               << "Solar park";
        QTest::newRow("path") << "../../etc/passwd"
                              << "_.._etc_passwd";
        QTest::newRow("parent folder") << ".."
                                       << "";
        QTest::newRow("hidden") << ".hidden"
                                << "hidden";
        QTest::newRow("refused by vfat") << "a:b*c?\"<>|\\d"
                                         << "a_b_c______d";
        QTest::newRow("control characters") << "a\nb\tc"
                                            << "a_b_c";
        QTest::newRow("text direction") << QStringLiteral("a\u202eb") << "a_b";
        QTest::newRow("option") << "--out"
                                << "out";
        QTest::newRow("blanks and dots at the ends") << "  Site 3. "
                                                     << "Site 3";
        QTest::newRow("letters of any language")
            << QStringLiteral("Zürich 東京") << QStringLiteral("Zürich 東京");
        QTest::newRow("empty") << ""
                               << "";
        QTest::newRow("blanks alone") << " \t "
                                      << "_";
        QTest::newRow("slashes alone") << "//"
                                       << "__";
        QTest::newRow("steers a terminal")
            << QStringLiteral("a\x1b[2Jb\u009bc") << QStringLiteral("a_[2Jb_c");
        QTest::newRow("long") << QString(200, 'x') << QString(60, 'x');
        QTest::newRow("long, cut in a pair")
            << QString(59, 'x') + QStringLiteral("\U0001F681y") << QString(59, 'x');
        QTest::newRow("long, cut at a blank") << QString(59, 'x') + " yyy" << QString(59, 'x');
    }

    void namePartsSuitEveryFileSystem()
    {
        QFETCH(QString, name);
        QTEST(folderNamePart(name), "part");
    }

    void folderIsNamedAfterTheFlight_data()
    {
        QTest::addColumn<QString>("mission");
        QTest::addColumn<QString>("flight");
        QTest::addColumn<QString>("folder");
        QTest::newRow("named") << "Roof"
                               << "North"
                               << "2026-11-21_Roof_North_3";
        QTest::newRow("no mission") << ""
                                    << "North"
                                    << "2026-11-21_North_3";
        QTest::newRow("no naming") << ""
                                   << ""
                                   << "2026-11-21_CORV0007";
    }

    void folderIsNamedAfterTheFlight()
    {
        QFETCH(QString, mission);
        QFETCH(QString, flight);
        QTEST(flightFolderName(jobOf("/card/CORV0007.MOV", mission, flight, 3)), "folder");
    }

    void folderWithoutDateAndNameIsStillNamed()
    {
        FlightJob job = jobOf("/card/...");
        job.date = QDate();
        QCOMPARE(flightFolderName(job), QStringLiteral("flight"));
    }

    void equalNamesAreNumberedInTheOrderOfTheVideos()
    {
        QList<FlightJob> jobs{jobOf("/card/C.MOV", "Roof", "North", 1),
                              jobOf("/card/A.MOV", "Roof", "North", 1),
                              jobOf("/card/B.MOV", "ROOF", "north", 1)};
        nameFolders(&jobs);
        QCOMPARE(jobs[1].folder, QStringLiteral("2026-11-21_Roof_North_1"));
        QCOMPARE(jobs[2].folder, QStringLiteral("2026-11-21_ROOF_north_1_2"));
        QCOMPARE(jobs[0].folder, QStringLiteral("2026-11-21_Roof_North_1_3"));
    }

    void flightKeepsTheFolderThatItHas()
    {
        const QTemporaryDir out;
        const QString base = "2026-11-21_Roof_North_1";
        const auto claim = [&out](const QString& folder, const QStringList& videos) {
            QVERIFY(QDir(out.path()).mkpath(folder));
            QVERIFY(FlightManifest(out.filePath(folder)).claimFor(identityOf(videos)).ok());
        };
        claim(base, {"/monday/B.MOV"});
        claim(base + "_2", {"/monday/A.MOV"});
        claim("2026-11-21_D", {"/monday/D.MOV"});
        // Another card, in another place: A and B have their folders, D has one of another name, C
        // and E are new.
        QList<FlightJob> jobs;
        for (const char* video : {"/x/A.MOV", "/x/B.MOV", "/x/C.MOV", "/x/D.MOV", "/x/E.MOV"})
            jobs << jobOf(video, "Roof", "North", 1);
        nameFolders(&jobs, out.path());
        QStringList folders;
        for (const FlightJob& job : qAsConst(jobs))
            folders << job.folder;
        QCOMPARE(folders,
                 QStringList({base + "_2", base, base + "_3", "2026-11-21_D", base + "_4"}));
    }

    void copiesOfOneVideoKeepTheirFolders()
    {
        const QTemporaryDir out;
        QList<FlightJob> jobs{jobOf("/a/A.MOV", "Roof", "North", 1),
                              jobOf("/b/A.MOV", "Roof", "North", 1)};
        nameFolders(&jobs, out.path());
        for (const FlightJob& job : qAsConst(jobs)) {
            QVERIFY(QDir(out.path()).mkpath(job.folder));
            QVERIFY(FlightManifest(out.filePath(job.folder)).claimFor(identityOf(job.videos)).ok());
        }
        QList<FlightJob> again = jobs;
        nameFolders(&again, out.path());
        QCOMPARE(again[0].folder, jobs[0].folder);
        QCOMPARE(again[1].folder, jobs[1].folder);
    }

    void jobComesBackFromItsText()
    {
        FlightJob job = jobOf("/card/CORV0001.MOV", QStringLiteral("Dächer"), "North \"2\"", 12);
        job.videos << "/card/CORV0002.MOV";
        job.log = "/card/FLIGHT01.LOG";
        job.evidence = "timeAndLength";
        job.isDoubtful = true;
        job.folder = flightFolderName(job);
        const Result<FlightJob> back =
            FlightJob::fromJson(QJsonDocument(job.toJson()).toJson(QJsonDocument::Compact));
        QVERIFY(back.ok());
        QCOMPARE(back->toJson(), job.toJson());
        QCOMPARE(back->files(),
                 QStringList({"/card/CORV0001.MOV", "/card/CORV0002.MOV", "/card/FLIGHT01.LOG"}));
        QCOMPARE(back->date, job.date);
        QCOMPARE(back->naming.flightNumber, 12);
    }

    void jobThatIsNoneIsRefused_data()
    {
        QTest::addColumn<QByteArray>("text");
        const auto job = [](const char* folder, const char* videos, int version = 1) {
            return QStringLiteral(R"({"version":%1,"folder":"%2","videos":%3})")
                .arg(version)
                .arg(QLatin1String(folder), QLatin1String(videos))
                .toUtf8();
        };
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no JSON") << QByteArray("folder: x");
        QTest::newRow("array") << QByteArray("[]");
        QTest::newRow("other version") << job("a", R"(["/v.mov"])", 2);
        QTest::newRow("no folder") << job("", R"(["/v.mov"])");
        QTest::newRow("parent folder") << job("..", R"(["/v.mov"])");
        QTest::newRow("path") << job("a/../../b", R"(["/v.mov"])");
        QTest::newRow("absolute path") << job("/etc", R"(["/v.mov"])");
        QTest::newRow("no videos") << job("a", "[]");
        QTest::newRow("videos are no texts") << job("a", "[1,{}]");
        QTest::newRow("videos are no list") << job("a", R"("/v.mov")");
    }

    void jobThatIsNoneIsRefused()
    {
        QFETCH(QByteArray, text);
        const Result<FlightJob> job = FlightJob::fromJson(text);
        QVERIFY(!job.ok());
        QVERIFY(job.failure().sentence.startsWith("The job cannot be taken: "));
    }
};

QTEST_GUILESS_MAIN(FlightJobTest)
#include "FlightJobTest.moc"
