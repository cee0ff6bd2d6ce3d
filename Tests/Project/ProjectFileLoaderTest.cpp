#include "Support/MessageLog.h"
#include "Support/PlainUser.h"
#include "projectFixture.h"

#include <sys/stat.h>

using namespace corv;
using namespace corv::test;

namespace {

QByteArray project(const QByteArray& flight)
{
    return "{\"format_ver\":\"1.0\",\"contents\":{\"flights\":[" + flight + "]}}";
}

} // namespace

/// What a project holds: it comes back as it was saved, and whatever else is in one is
/// survived.
class ProjectFileLoaderTest : public QObject, private ProjectFixture
{
    Q_OBJECT

private slots:
    void init() { makeFolder(); }

    void writesTheStatedDocument()
    {
        const QVariantList pois{poi(1000, "A", "line\nline"), poi(2000, "B")};
        m_loader.saveProject(path("in/a.log"), path("in/a.mp4"), path("p.ecor"),
                             flightProperties(pois));

        const QByteArray text = readFile(path("p.ecor"));
        QVERIFY(text.startsWith("{\n    \"contents\": {\n        \"flights\": [\n"));
        QVERIFY(text.indexOf("\"contents\"") < text.indexOf("\"format_ver\": \"1.0\""));
        const QJsonObject flight = savedFlight(path("p.ecor"));
        QCOMPARE(flight.keys(), QStringList({"files", "poi", "properties"}));
        QCOMPARE(flight["files"].toObject(),
                 QJsonObject({{"video", "in/a.mp4"}, {"log", "in/a.log"}}));
        QCOMPARE(flight["poi"].toArray().size(), 2);
        QCOMPARE(flight["poi"].toArray().at(0).toObject(),
                 QJsonObject({{"time", 1000}, {"name", "A"}, {"comment", "line\nline"}}));
        QCOMPARE(flight["properties"].toObject()["display"].toObject(),
                 QJsonObject({{"brightness", 0.25}, {"contrast", 1.5}}));
    }

    void logsTheSaving()
    {
        MessageLog log;
        m_loader.saveProject("/m/a.log", "/m/a.mp4", path("p.ecor"), {});
        const QStringList infos = log.messages(QtInfoMsg);
        const QString quoted = '"' + path("p.ecor") + '"';
        const QString up = QDir(m_folder->path()).relativeFilePath("/m/a");
        QCOMPARE(infos, QStringList({
                            "Saving this project l \"/m/a.log\" v \"/m/a.mp4\"  file  " + quoted,
                            "Log path: \"/m/a.log\"",
                            "Video path: \"/m/a.mp4\"",
                            "Project path " + quoted,
                            "Log relative dir: \"" + up + ".log\"",
                            "Video relative dir: \"" + up + ".mp4\"",
                            "Project file path: " + quoted,
                        }));
    }

    void savesUnderTheUrlOfTheProject()
    {
        MessageLog log;
        m_loader.saveProject("/m/a.log", "/m/a.mp4", "file://" + path("p.ecor"),
                             flightProperties({poi(5, "A")}));
        QVERIFY(log.contains("Project file path: \"//" + path("p.ecor") + '"'));
        QCOMPARE(savedFlight(path("p.ecor"))["poi"].toArray().size(), 1);
    }

    void anythingComesBackAsItWas_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << "Roof";
        QTest::newRow("empty") << "";
        QTest::newRow("accents") << QString::fromUtf8("Éolienne à côté — 3 °C");
        QTest::newRow("right to left") << QString::fromUtf8("שלום مرحبا");
        QTest::newRow("beyond the first plane") << QString::fromUtf8("🚁🔥 𝔘𝔫𝔦");
        QTest::newRow("markup and quotes") << "<&>\"'\\/";
        QTest::newRow("control characters") << QString::fromUtf8("a\tb\nc\x01");
        QTest::newRow("long") << QString(100000, 'x');
    }

    void anythingComesBackAsItWas()
    {
        QFETCH(QString, name);
        const QVariantMap properties = flightProperties({poi(86399999, name, name + name)});
        m_loader.saveProject(path("v.log"), path("v.mp4"), path("p.ecor"), properties);
        const QVariantMap loaded = m_loader.loadProject(path("p.ecor"));
        QCOMPARE(loaded["poi"].toList().size(), 1);
        const QVariantMap poi = loaded["poi"].toList().at(0).toMap();
        QCOMPARE(poi["name"].toString(), name);
        QCOMPARE(poi["comment"].toString(), name + name);
        QCOMPARE(poi["time"].toInt(), 86399999);
        QCOMPARE(QJsonObject::fromVariantMap(loaded["properties"].toMap()),
                 QJsonObject::fromVariantMap(properties["properties"].toMap()));
    }

    void namesOfFoldersInAnyLanguageSurvive()
    {
        const QString folder = path(QString::fromUtf8("Été à l'eau 空中/#1 50% \"x\""));
        writeFile(folder + "/v.mp4", "v");
        writeFile(folder + "/v.log", "l");
        m_loader.saveProject(folder + "/v.log", folder + "/v.mp4", folder + "/p.ecor", {});
        const QVariantMap loaded = m_loader.loadProject(folder + "/p.ecor");
        QCOMPARE(loaded["videoFile"].toString(), folder + "/v.mp4");
        QVERIFY(loaded["videoFileExists"].toBool());
        QVERIFY(loaded["logFileExists"].toBool());
    }

    void movedWithItsFilesItOpens()
    {
        writeFile(path("one/media/v.mp4"), "v");
        writeFile(path("one/v.log"), "l");
        m_loader.saveProject(path("one/v.log"), path("one/media/v.mp4"), path("one/p.ecor"), {});
        QVERIFY(QFile::rename(path("one"), path("two")));
        const QVariantMap loaded = m_loader.loadProject(path("two/p.ecor"));
        QCOMPARE(loaded["videoFile"].toString(), path("two/media/v.mp4"));
        QCOMPARE(loaded["logFile"].toString(), path("two/v.log"));
        QCOMPARE(loaded["videoFileExists"], QVariant(true));
        QCOMPARE(loaded["logFileExists"], QVariant(true));
    }

    void movedAloneItOpensWithoutItsFiles()
    {
        writeFile(path("one/v.mp4"), "v");
        writeFile(path("one/v.log"), "l");
        m_loader.saveProject(path("one/v.log"), path("one/v.mp4"), path("one/p.ecor"), {});
        QVERIFY(QDir().mkpath(path("two")));
        QVERIFY(QFile::rename(path("one/p.ecor"), path("two/p.ecor")));
        const QVariantMap loaded = m_loader.loadProject(path("two/p.ecor"));
        QCOMPARE(loaded["loaded"], QVariant(true));
        QCOMPARE(loaded["videoFile"].toString(), path("two/v.mp4"));
        QCOMPARE(loaded["videoFileExists"], QVariant(false));
        QCOMPARE(loaded["logFileExists"], QVariant(false));
    }

    void resolvesStoredPaths_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("resolved");
        QTest::newRow("beside") << "v.mp4"
                                << "%1/v.mp4";
        QTest::newRow("below") << "a/b/../v.mp4"
                               << "%1/a/v.mp4";
        QTest::newRow("above, cleaned") << "./../v.mp4"
                                        << "%2/v.mp4";
        QTest::newRow("absolute, unchanged") << "/x/../y//v.mp4"
                                             << "/x/../y//v.mp4";
        QTest::newRow("prefix") << "file:///x/v.mp4"
                                << "///x/v.mp4";
        QTest::newRow("prefix, one slash") << "file:/x/v.mp4"
                                           << "/x/v.mp4";
        QTest::newRow("prefix is case-sensitive") << "File:/v.mp4"
                                                  << "%1/File:/v.mp4";
        QTest::newRow("empty") << ""
                               << "%1";
        QTest::newRow("a NUL inside")
            << QString::fromUtf8("a\0b", 3) << "%1/" + QString::fromUtf8("a\0b", 3);
    }

    void resolvesStoredPaths()
    {
        QFETCH(QString, stored);
        QFETCH(QString, resolved);
        const QJsonObject files{{"video", stored}, {"log", stored}};
        writeFile(path("p.ecor"), project(QJsonDocument(QJsonObject{{"files", files}}).toJson()));
        resolved.replace("%1", m_folder->path());
        resolved.replace("%2", QFileInfo(m_folder->path()).absolutePath());
        const QVariantMap loaded = m_loader.loadProject(path("p.ecor"));
        QCOMPARE(loaded["videoFile"].toString(), resolved);
        QCOMPARE(loaded["logFile"].toString(), resolved);
    }

    void aStoredUrlIsNotResolvedEvenIfItCouldBe()
    {
        writeFile(path("file:/v.mp4"), "v");
        writeFile(path("p.ecor"), project(R"({"files":{"video":"file:/v.mp4","log":""}})"));
        const QVariantMap loaded = m_loader.loadProject(path("p.ecor"));
        QCOMPARE(loaded["videoFile"].toString(), QString("/v.mp4"));
        QCOMPARE(loaded["videoFileExists"], QVariant(false));
    }

    void logsTheLoading()
    {
        m_loader.saveProject(path("v.log"), path("v.mp4"), path("p.ecor"),
                             flightProperties({poi(1, "A")}));
        MessageLog log;
        m_loader.loadProject(path("p.ecor"));
        QCOMPARE(
            log.messages(QtInfoMsg),
            QStringList({"Start loading project \"" + path("p.ecor") + '"', "File has POIs inside",
                         "Log path \"v.log\"", "Video path \"v.mp4\""}));
        QVERIFY(log.messages(QtWarningMsg).isEmpty());
    }

    void whatCannotBeOpenedIsNotLoaded_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("missing") << "none.ecor";
        QTest::newRow("a folder") << "folder";
        QTest::newRow("a pipe that nobody writes to") << "pipe";
    }

    void whatCannotBeOpenedIsNotLoaded()
    {
        QFETCH(QString, name);
        QVERIFY(QDir().mkpath(path("folder")));
        QCOMPARE(mkfifo(qPrintable(path("pipe")), 0600), 0);
        MessageLog log;
        const QVariantMap loaded = m_loader.loadProject(path(name));
        QCOMPARE(loaded, QVariantMap({{"loaded", false}}));
        QCOMPARE(log.messages(QtWarningMsg), QStringList({"Impossible to open file"}));
    }

    void unreadableIsNotLoaded()
    {
        writeFile(path("p.ecor"), project("{}"));
        QVERIFY(QFile::setPermissions(path("p.ecor"), QFile::WriteOwner));
        MessageLog log;
        const PlainUser user;
        QCOMPARE(m_loader.loadProject(path("p.ecor")), QVariantMap({{"loaded", false}}));
        QVERIFY(log.contains("Impossible to open file"));
    }

    void brokenContentOpensAsFarAsItMakesSense_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("hasVideo");
        QTest::addColumn<bool>("hasLog");
        QTest::addColumn<int>("pois"); // -1: no list
        const QByteArray files = R"("files":{"video":"v","log":"l"})";
        QTest::newRow("empty") << QByteArray() << false << false << -1;
        QTest::newRow("no JSON") << QByteArray("\xff\xfe\x00garbage", 10) << false << false << -1;
        QTest::newRow("an array") << QByteArray("[1,2]") << false << false << -1;
        QTest::newRow("cut off") << project("{" + files + "}").chopped(3) << false << false << -1;
        QTest::newRow("contents is text")
            << QByteArray(R"({"contents":"x"})") << false << false << -1;
        QTest::newRow("flights is an object")
            << QByteArray(R"({"contents":{"flights":{"0":{}}}})") << false << false << -1;
        QTest::newRow("no flight") << project("") << false << false << -1;
        QTest::newRow("flight is a number") << project("5") << false << false << -1;
        QTest::newRow("files is an array")
            << project(R"({"files":["v","l"]})") << false << false << -1;
        QTest::newRow("video is a number")
            << project(R"({"files":{"video":5,"log":"l"}})") << false << true << -1;
        QTest::newRow("log is null")
            << project(R"({"files":{"video":"v","log":null}})") << true << false << -1;
        QTest::newRow("properties is text, poi an object")
            << project("{" + files + R"(,"properties":"x","poi":{"0":1}})") << true << true << -1;
        QTest::newRow("poi is empty")
            << project("{" + files + R"(,"poi":[]})") << true << true << 0;
        QTest::newRow("poi of anything")
            << project("{" + files +
                       R"(,"poi":[1,"x",null,[],{},{"time":"x"},{"time":1e300},{"time":-5}]})")
            << true << true << 8;
        QTest::newRow("only the first flight counts")
            << project("{" + files + R"(,"poi":[{}]},{"files":{},"poi":[{},{}]})") << true << true
            << 1;
        QTest::newRow("unknown format")
            << QByteArray(R"({"format_ver":"9.7","contents":{"flights":[{)" + files + "}]}}")
            << true << true << -1;
        QTest::newRow("nested too deeply")
            << project("{" + files + ",\"properties\":" + QByteArray(2000000, '[') + "}") << false
            << false << -1;
        QTest::newRow("objects nested too deeply")
            << project("{" + files + ",\"properties\":" + QByteArray(R"({"a":)").repeated(500000))
            << false << false << -1;
    }

    void brokenContentOpensAsFarAsItMakesSense()
    {
        QFETCH(QByteArray, text);
        QFETCH(bool, hasVideo);
        QFETCH(bool, hasLog);
        QFETCH(int, pois);
        writeFile(path("p.ecor"), text);
        MessageLog log;
        const QVariantMap loaded = m_loader.loadProject(path("p.ecor"));

        QCOMPARE(loaded["loaded"], QVariant(true));
        QCOMPARE(loaded["videoFile"].toString(), m_folder->path() + (hasVideo ? "/v" : ""));
        QCOMPARE(loaded["logFile"].toString(), m_folder->path() + (hasLog ? "/l" : ""));
        QCOMPARE(loaded["videoFileExists"], QVariant(false));
        QCOMPARE(loaded["logFileExists"], QVariant(false));
        QCOMPARE(loaded["properties"], QVariant(QVariantMap()));
        QCOMPARE(loaded.contains("poi"), pois >= 0);
        QCOMPARE(loaded["poi"].toList().size(), qMax(0, pois));
        QCOMPARE(log.contains("Unable to find video path"), !hasVideo);
        QCOMPARE(log.contains("Unable to find log path"), !hasLog);
        QCOMPARE(log.contains("File has POIs inside"), pois >= 0);
        QCOMPARE(log.contains("File has no POIs inside"), pois < 0);
    }

    void gigabytesAreNotRead()
    {
        QFile file(path("p.ecor"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.resize(qint64(8) << 30)); // takes no room on the disk
        file.close();
        MessageLog log;
        const QVariantMap loaded = m_loader.loadProject(path("p.ecor"));
        QCOMPARE(loaded["loaded"], QVariant(true));
        QCOMPARE(loaded["videoFileExists"], QVariant(false));
        QVERIFY(log.messages(QtWarningMsg)
                    .contains("Project file is too large \"" + path("p.ecor") + '"'));
        QVERIFY(log.contains("Unable to find video path"));
    }

    // A project of the limit is read within a second; much larger ones would hold the window.
    void aProjectOfTheLimitIsReadAndALargerOneNot()
    {
        QByteArray text = project(R"({"files":{"video":"v","log":"l"}})");
        text += QByteArray(static_cast<int>((16 << 20) - text.size()), ' ');
        writeFile(path("p.ecor"), text);
        QVERIFY(m_loader.loadProject(path("p.ecor"))["videoFile"].toString().endsWith("/v"));
        writeFile(path("p.ecor"), text + ' ');
        MessageLog log;
        QVERIFY(!m_loader.loadProject(path("p.ecor"))["videoFile"].toString().endsWith("/v"));
        QVERIFY(log.contains("Project file is too large"));
    }

    // To keep some of them would lose the others with the next save.
    void refusesAMillionPois()
    {
        QByteArray poi = R"({"time":0})";
        poi += QByteArray(R"(,{"time":1})").repeated(999999);
        writeFile(path("p.ecor"),
                  project(R"({"files":{"video":"v","log":"l"},"poi":[)" + poi + "]}"));
        MessageLog log;
        QVERIFY(!m_loader.loadProject(path("p.ecor")).contains("poi"));
        QVERIFY(log.contains("Too many POIs in file: 1000000"));
        QCOMPARE(m_loader.loadProblem()->sentence, path("p.ecor") + " is too large for a project.");
    }

    void doesNotWriteWhatItWouldNotReadWhole_data()
    {
        QTest::addColumn<int>("pois");
        QTest::addColumn<int>("commentBytes");
        QTest::addColumn<bool>("saved");
        QTest::newRow("most points") << ProjectFileLoader::mostPois << 0 << true;
        QTest::newRow("one point more") << ProjectFileLoader::mostPois + 1 << 0 << false;
        QTest::newRow("long comment") << 1 << (15 << 20) << true;
        QTest::newRow("too long a comment") << 1 << (16 << 20) << false;
    }

    void doesNotWriteWhatItWouldNotReadWhole()
    {
        QFETCH(int, pois);
        QFETCH(int, commentBytes);
        QFETCH(bool, saved);
        const QByteArray earlier = project(R"({"files":{"video":"v","log":"l"}})");
        writeFile(path("p.ecor"), earlier);
        QVariantList list;
        for (int i = 0; i < pois; ++i)
            list.append(QVariantMap{{"time", i}, {"comment", QString(commentBytes, 'c')}});
        m_loader.saveProject(path("v.log"), path("v.mp4"), path("p.ecor"), {{"poi", list}});
        QCOMPARE(static_cast<bool>(m_loader.lastSave()), saved);
        if (saved) {
            QCOMPARE(m_loader.loadProject(path("p.ecor"))["poi"].toList().size(), pois);
            return;
        }
        QCOMPARE(m_loader.lastSave().failure().kind, Failure::Kind::tooLarge);
        QFile file(path("p.ecor"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), earlier);
    }
};

QTEST_GUILESS_MAIN(ProjectFileLoaderTest)
#include "ProjectFileLoaderTest.moc"
