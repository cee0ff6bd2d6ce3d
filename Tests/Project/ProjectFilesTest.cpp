#include "Support/FullDisk.h"
#include "Support/MessageLog.h"
#include "Support/PlainUser.h"
#include "Threads/post.h"
#include "projectFixture.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QSet>
#include <chrono>
#include <csignal>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace corv;
using namespace corv::test;

namespace {

QVariantList poisNamed(const QString& name, int count)
{
    QVariantList pois;
    for (int i = 0; i < count; ++i)
        pois.append(poi(i * 40, name));
    return pois;
}

} // namespace

/// The files on disk: an earlier project is whole whatever happens to a later one, and the media
/// are copied beside it where there is room.
class ProjectFilesTest : public QObject, private ProjectFixture
{
    Q_OBJECT

private slots:
    void init() { makeFolder(); }

    void replacesAnExistingProjectAsAWhole()
    {
        m_loader.saveProject("/l", "/v", path("p.ecor"), flightProperties(poisNamed("A", 500)));
        QVERIFY(QFile::setPermissions(path("p.ecor"), QFile::ReadOwner | QFile::WriteOwner));
        m_loader.saveProject("/l", "/v", path("p.ecor"), flightProperties(poisNamed("B", 2)));
        QCOMPARE(savedFlight(path("p.ecor"))["poi"].toArray().size(), 2);
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList({"p.ecor"}));
        QCOMPARE(QFile::permissions(path("p.ecor")) & QFile::ReadOther, QFile::Permissions());
    }

    void whatIsInTheWayOfACopyIsSaidBeforeTheFirstByte_data()
    {
        QTest::addColumn<QString>("inTheWay");
        QTest::addColumn<QString>("said");
        QTest::newRow("nothing") << QString() << QString();
        QTest::newRow("a video") << "p_video.mov"
                                 << "a.mov could not be copied: File exists.";
        QTest::newRow("a log") << "p_log.log"
                               << "a.log could not be copied: File exists.";
    }

    void whatIsInTheWayOfACopyIsSaidBeforeTheFirstByte()
    {
        QFETCH(QString, inTheWay);
        QFETCH(QString, said);
        const QTemporaryDir media;
        writeFile(media.filePath("a.mov"), "video");
        writeFile(media.filePath("a.log"), "log");
        if (!inTheWay.isEmpty())
            writeFile(path(inTheWay), "mine");
        QStringList texts;
        QObject::connect(&m_loader, &ProjectFileLoader::copyProgress, this,
                         [&] { texts << m_loader.copyProblemText(); });
        const bool isCopied = m_loader.copySourceFilesAndSaveProject(
            media.filePath("a.log"), media.filePath("a.mov"), path("p.ecor"), flightProperties());
        m_loader.disconnect(this);
        QCOMPARE(isCopied, inTheWay.isEmpty());
        QVERIFY(!texts.isEmpty());
        QCOMPARE(texts.first(), said.isEmpty() ? QString() : media.filePath(said));
        if (!inTheWay.isEmpty())
            QCOMPARE(readFile(path(inTheWay)), QByteArray("mine"));
    }

    void aLinkStaysALink()
    {
        QVERIFY(QDir().mkpath(path("real")));
        writeFile(path("real/p.ecor"), "old");
        QVERIFY(QFile::link(path("real/p.ecor"), path("p.ecor")));
        m_loader.saveProject("/l", "/v", path("p.ecor"), flightProperties({poi(1, "A")}));
        QVERIFY(QFileInfo(path("p.ecor")).isSymLink());
        QCOMPARE(savedFlight(path("real/p.ecor"))["poi"].toArray().size(), 1);
    }

    void onAFullDiskTheEarlierProjectIsWhole_data()
    {
        QTest::addColumn<int>("pois");
        QTest::addColumn<int>("room");
        QTest::newRow("less than a buffer") << 5 << 100;
        QTest::newRow("no room at all") << 5 << 0;
        QTest::newRow("the last buffer") << 200 << 16384;
        QTest::newRow("many points of interest") << 5000 << 8192;
    }

    void onAFullDiskTheEarlierProjectIsWhole()
    {
        QFETCH(int, pois);
        QFETCH(int, room);
        m_loader.saveProject("/l", "/v", path("p.ecor"), flightProperties(poisNamed("A", 50)));
        const QByteArray before = readFile(path("p.ecor"));
        MessageLog log;
        {
            const FullDisk disk(static_cast<rlim_t>(room));
            m_loader.saveProject("/l", "/v", path("p.ecor"),
                                 flightProperties(poisNamed("B", pois)));
        }
        QCOMPARE(readFile(path("p.ecor")), before);
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList({"p.ecor"}));
        QVERIFY(log.contains("Unable to save file"));
    }

    void logsWhyAProjectIsNotWritten()
    {
        MessageLog log;
        m_loader.saveProject("/l", "/v", path("none/p.ecor"), {});
        QCOMPARE(log.messages(QtInfoMsg).last(),
                 QString("Unable to save file \"No such file or directory\""));
    }

    void writesDirectlyWhereTheFolderForbidsASecondFile()
    {
        writeFile(path("p.ecor"), "old");
        QVERIFY(QFile::setPermissions(path("p.ecor"), QFile::Permissions(0x6666)));
        QVERIFY(QFile::setPermissions(m_folder->path(), QFile::Permissions(0x5555)));
        {
            const PlainUser user;
            m_loader.saveProject("/l", "/v", path("p.ecor"), flightProperties({poi(1, "A")}));
        }
        QVERIFY(QFile::setPermissions(m_folder->path(), QFile::Permissions(0x7755)));
        QCOMPARE(savedFlight(path("p.ecor"))["poi"].toArray().size(), 1);
    }

    void killedAtAnyMomentTheEarlierOrTheNewProjectIsThere()
    {
        QElapsedTimer timer;
        timer.start();
        m_loader.saveProject("/l", "/v", path("p.ecor"), flightProperties(poisNamed("0", 300)));
        const auto fewSavesUs = static_cast<unsigned long>(timer.nsecsElapsed() / 1000 * 3 + 2000);
        std::mt19937 random(20180521);
        QSet<QString> survivors;
        for (int round = 0; round < 200; ++round) {
            const pid_t child = fork();
            QVERIFY(child >= 0);
            if (child == 0) {
                qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
                for (int version = 1;; ++version) {
                    const QString name = QString::number(version);
                    m_loader.saveProject("/l", "/v", path("p.ecor"),
                                         flightProperties(poisNamed(name, 300)));
                }
            }
            // The random moment is what is tested, so this is no wait for a condition.
            std::this_thread::sleep_for(std::chrono::microseconds(random() % fewSavesUs));
            kill(child, SIGKILL);
            QCOMPARE(waitpid(child, nullptr, 0), child);

            const QVariantList pois = m_loader.loadProject(path("p.ecor"))["poi"].toList();
            QCOMPARE(pois.size(), 300);
            const QString name = pois.first().toMap()["name"].toString();
            for (const QVariant& poi : pois)
                QCOMPARE(poi.toMap()["name"].toString(), name);
            survivors.insert(name);
            QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden),
                     QStringList("p.ecor"));
        }
        QVERIFY2(survivors.size() > 1, "no child ever saved: nothing was tested");
    }

    void copiesFitOnlyBelowTheFreeSpace_data()
    {
        QTest::addColumn<qint64>("freeBytes");
        QTest::addColumn<bool>("fits");
        QTest::newRow("one byte more") << qint64(31) << true;
        QTest::newRow("exactly equal") << qint64(30) << false;
        QTest::newRow("less") << qint64(29) << false;
        QTest::newRow("none") << qint64(0) << false;
        QTest::newRow("unknown") << qint64(-1) << true;
    }

    void copiesFitOnlyBelowTheFreeSpace()
    {
        QFETCH(qint64, freeBytes);
        QFETCH(bool, fits);
        QCOMPARE(corv::sourceFilesFit(10, 20, freeBytes), fits);
    }

    void asksTheVolumeOfTheProject()
    {
        writeFile(path("v.log"), "12345");
        writeFile(path("v.mp4"), "1234567");
        MessageLog log;
        QVERIFY(m_loader.canSourceFilesBeCopied(path("v.log"), path("v.mp4"), path("p.ecor")));
        QVERIFY(log.contains("File size (log): 5 bytes"));
        QVERIFY(log.contains("File size (video): 7 bytes"));
        QCOMPARE(log.messages(QtInfoMsg)
                     .filter(QRegularExpression("^Remaining space on drive \".*\" : [0-9]+ bytes$"))
                     .size(),
                 1);
        QVERIFY(log.contains("Copy possible, enough space free or free space can't be determined "
                             "but sufficient space is expected"));
    }

    void refusesWhatTheVolumeCannotHold()
    {
        QFile huge(path("v.mp4"));
        QVERIFY(huge.open(QIODevice::WriteOnly));
        QVERIFY(huge.resize(qint64(1) << 43));
        MessageLog log;
        QVERIFY(!m_loader.canSourceFilesBeCopied(path("v.log"), path("v.mp4"), path("p.ecor")));
        QVERIFY(log.contains("Not enough space to copy files"));
    }

    void copiesTheMediaBesideTheProject()
    {
        writeFile(path("in/f.1.log"), "log");
        writeFile(path("in/f.1.MP4"), "video");
        MessageLog log;
        QVERIFY(m_loader.copySourceFilesAndSaveProject(path("in/f.1.log"), path("in/f.1.MP4"),
                                                       path("out.v2.ecor"), flightProperties()));
        QCOMPARE(readFile(path("out.v2_log.log")), QByteArray("log"));
        QCOMPARE(readFile(path("out.v2_video.MP4")), QByteArray("video"));
        QCOMPARE(savedFlight(path("out.v2.ecor"))["files"].toObject(),
                 QJsonObject({{"video", "out.v2_video.MP4"}, {"log", "out.v2_log.log"}}));
        const QStringList infos = log.messages(QtInfoMsg).mid(0, 4);
        QCOMPARE(infos,
                 QStringList(
                     {"Copy \"" + path("in/f.1.log") + "\" to \"" + path("out.v2_log.log") + '"',
                      "Logs copy completed",
                      "Copy \"" + path("in/f.1.MP4") + "\" to \"" + path("out.v2_video.MP4") + '"',
                      "Video copy completed"}));
    }

    void copiedTwiceUnderOneNameTheProjectRefersToTheOriginals()
    {
        writeFile(path("in/v.log"), "log");
        writeFile(path("in/v.mp4"), "video");
        const auto copy = [this] {
            return m_loader.copySourceFilesAndSaveProject(path("in/v.log"), path("in/v.mp4"),
                                                          path("p.ecor"), flightProperties());
        };
        QVERIFY(copy());
        MessageLog log;
        QVERIFY(!copy());
        QVERIFY(log.contains("Logs copy failed"));
        QVERIFY(log.contains("Video copy failed"));
        QCOMPARE(savedFlight(path("p.ecor"))["files"].toObject(),
                 QJsonObject({{"video", "in/v.mp4"}, {"log", "in/v.log"}}));
    }

    void aCopyThatFindsNoRoomIsNoCopy_data()
    {
        QTest::addColumn<int>("videoBytes");
        QTest::newRow("less than a buffer") << 9'000;
        QTest::newRow("the last buffer") << 20'000;
        QTest::newRow("large") << 3'000'000;
    }

    void aCopyThatFindsNoRoomIsNoCopy()
    {
        QFETCH(int, videoBytes);
        writeFile(path("in/v.log"), "log");
        writeFile(path("in/v.mp4"), QByteArray(videoBytes, 'v'));
        MessageLog log;
        {
            const FullDisk disk(static_cast<rlim_t>(videoBytes - 500));
            QVERIFY(!m_loader.copySourceFilesAndSaveProject(path("in/v.log"), path("in/v.mp4"),
                                                            path("p.ecor"), flightProperties()));
        }
        QVERIFY(log.contains("Video copy failed"));
        QVERIFY(!QFile::exists(path("p_video.mp4")));
        QCOMPARE(savedFlight(path("p.ecor"))["files"].toObject(),
                 QJsonObject({{"video", "in/v.mp4"}, {"log", "p_log.log"}}));
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList({"p.ecor", "p_log.log"}));
    }

    void aSeriesIsCopiedAsAWholeUnderItsOwnNames()
    {
        for (const char* number : {"0001", "0002", "0003"})
            writeFile(path(QString("in/CORV%1.MOV").arg(number)), number);
        writeFile(path("in/f.log"), "log");
        QVERIFY(m_loader.copySourceFilesAndSaveProject(path("in/f.log"), path("in/CORV0001.MOV"),
                                                       path("p.ecor"), flightProperties()));
        QCOMPARE(QDir(path("p_video")).entryList(QDir::Files),
                 (QStringList{"CORV0001.MOV", "CORV0002.MOV", "CORV0003.MOV"}));
        QCOMPARE(readFile(path("p_video/CORV0003.MOV")), QByteArray("0003"));
        const QJsonObject files = savedFlight(path("p.ecor"))["files"].toObject();
        QCOMPARE(files["video"].toString(), QString("p_video/CORV0001.MOV"));
        QCOMPARE(
            files["parts"].toArray(),
            (QJsonArray{"p_video/CORV0001.MOV", "p_video/CORV0002.MOV", "p_video/CORV0003.MOV"}));
        QCOMPARE(m_loader.savedFiles().video, path("p_video/CORV0001.MOV"));
        m_loader.loadProject(path("p.ecor"));
        QCOMPARE(m_loader.contents().parts.size(), 3);
        QVERIFY(m_loader.contents().missingFiles().isEmpty());
        QVERIFY(QFile::remove(path("p_video/CORV0002.MOV")));
        QCOMPARE(m_loader.contents().missingFiles(), QStringList(path("p_video/CORV0002.MOV")));
    }

    void ontoItsOwnCopiesEverythingCountsAsCopied()
    {
        for (const char* name : {"in/CORV0001.MOV", "in/CORV0002.MOV", "in/f.log"})
            writeFile(path(name), name);
        QVERIFY(m_loader.copySourceFilesAndSaveProject(path("in/f.log"), path("in/CORV0001.MOV"),
                                                       path("p.ecor"), flightProperties()));
        const QJsonObject files = savedFlight(path("p.ecor"))["files"].toObject();
        QVERIFY(m_loader.copySourceFilesAndSaveProject(
            path("p_log.log"), path("p_video/CORV0001.MOV"), path("p.ecor"), flightProperties()));
        QVERIFY(!m_loader.copyProblem());
        QCOMPARE(savedFlight(path("p.ecor"))["files"].toObject(), files);
    }

    void cancelledItRefersToTheOriginalsAndLeavesNothing_data()
    {
        QTest::addColumn<qint64>("afterBytes");
        QTest::newRow("in the first file") << (qint64(1) << 20);
        QTest::newRow("in the second file") << (qint64(5) << 20);
    }

    void cancelledItRefersToTheOriginalsAndLeavesNothing()
    {
        QFETCH(qint64, afterBytes);
        writeFile(path("in/f.log"), "log");
        for (const char* name : {"in/CORV0001.MOV", "in/CORV0002.MOV"})
            writeFile(path(name), QByteArray(4 << 20, 'v'));
        // A slow medium: the copying goes on only after the cancel has come through.
        QSemaphore cancelled;
        qint64 copiedBytes = 0;
        m_loader.setPieceCopied([&](qint64 bytes) {
            copiedBytes += bytes;
            if (copiedBytes < afterBytes || copiedBytes - bytes >= afterBytes)
                return;
            post(&m_loader, [&] {
                m_loader.cancelCopying();
                cancelled.release();
            });
            cancelled.acquire();
        });
        const auto undo = qScopeGuard([this] { m_loader.setPieceCopied({}); });
        const bool isCopied = m_loader.copySourceFilesAndSaveProject(
            path("in/f.log"), path("in/CORV0001.MOV"), path("p.ecor"), flightProperties());
        if (copiedBytes == 0)
            QSKIP("this file system shares the blocks of copies");
        QVERIFY(!isCopied);
        QCOMPARE(m_loader.copyProblem()->kind, Failure::Kind::cancelled);
        QCOMPARE(QDir(m_folder->path())
                     .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 (QStringList{"in", "p.ecor"}));
        const QJsonObject files = savedFlight(path("p.ecor"))["files"].toObject();
        QCOMPARE(files["video"].toString(), QString("in/CORV0001.MOV"));
        QCOMPARE(files["log"].toString(), QString("in/f.log"));
    }

    void theProjectOfAFlightWithoutALogNamesNone()
    {
        writeFile(path("in/v.mp4"), "video");
        QVERIFY(m_loader.copySourceFilesAndSaveProject("no_match", path("in/v.mp4"), path("p.ecor"),
                                                       {}));
        QCOMPARE(savedFlight(path("p.ecor"))["files"].toObject(),
                 QJsonObject({{"video", "p_video.mp4"}, {"log", ""}}));
        m_loader.loadProject(path("p.ecor"));
        QVERIFY(!m_loader.contents().namesLog);
        QVERIFY(!m_loader.loadProblem());
    }

    void aProjectThatCannotBeWrittenHasNoCopies()
    {
        writeFile(path("in/v.mp4"), "video");
        writeFile(path("in/v.log"), "log");
        QVERIFY(QDir().mkpath(path("p.ecor")));
        m_loader.copySourceFilesAndSaveProject(path("in/v.log"), path("in/v.mp4"), path("p.ecor"),
                                               {});
        QVERIFY(!m_loader.lastSave());
        QVERIFY(!QFile::exists(path("p_video.mp4")) && !QFile::exists(path("p_log.log")));
    }

    void aCopyKeepsTheTimeOfItsSource()
    {
        writeFile(path("in/v.mp4"), "video");
        QFile source(path("in/v.mp4"));
        QVERIFY(source.open(QIODevice::ReadWrite));
        const QDateTime written = QDateTime::fromSecsSinceEpoch(1'500'000'000);
        QVERIFY(source.setFileTime(written, QFileDevice::FileModificationTime));
        source.close();
        QVERIFY(m_loader.copySourceFilesAndSaveProject("", path("in/v.mp4"), path("p.ecor"), {}));
        QCOMPARE(QFileInfo(path("p_video.mp4")).lastModified(), written);
    }

    void saysWhyAProjectCouldNotBeSaved_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("room");
        QTest::addColumn<int>("kind");
        const auto row = [](const char* tag, const QString& name, int room, Failure::Kind kind) {
            QTest::newRow(tag) << name << room << static_cast<int>(kind);
        };
        row("saved", "p.ecor", 1 << 20, Failure::Kind::other);
        row("no folder", "none/p.ecor", 1 << 20, Failure::Kind::notFound);
        row("no room", "p.ecor", 10, Failure::Kind::noRoom);
        row("a folder in its place", "folder", 1 << 20, Failure::Kind::notAFile);
    }

    void saysWhyAProjectCouldNotBeSaved()
    {
        QFETCH(QString, name);
        QFETCH(int, room);
        QFETCH(int, kind);
        QVERIFY(QDir().mkpath(path("folder")));
        {
            const FullDisk disk(static_cast<rlim_t>(room));
            m_loader.saveProject("/l", "/v", path(name), {});
        }
        const bool isSaved = static_cast<Failure::Kind>(kind) == Failure::Kind::other;
        QCOMPARE(m_loader.lastSave().ok(), isSaved);
        if (isSaved)
            return;
        QCOMPARE(static_cast<int>(m_loader.lastSave().failure().kind), kind);
        QVERIFY(m_loader.lastSave().failure().sentence.contains(path(name)));
    }

    void theVideoIsCopiedAlsoIfTheLogCannotBe()
    {
        writeFile(path("in/v.mp4"), "video");
        QVERIFY(!m_loader.copySourceFilesAndSaveProject(path("in/none.log"), path("in/v.mp4"),
                                                        path("p.ecor"), {}));
        QCOMPARE(savedFlight(path("p.ecor"))["files"].toObject(),
                 QJsonObject({{"video", "p_video.mp4"}, {"log", "in/none.log"}}));
    }
};

QTEST_GUILESS_MAIN(ProjectFilesTest)
#include "ProjectFilesTest.moc"
