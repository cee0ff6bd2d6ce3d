#include "Timeline/ProjectPictures.h"
#include "Support/FullDisk.h"
#include "timelineSupport.h"

#include <QDir>
#include <QSignalSpy>
#include <QStandardPaths>

using namespace corv;
using namespace corv::test;

/// The pictures of the projects on the start page.
class ProjectPicturesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void takesTheFrameOfTheFirstPoint();
    void aLaterFlightGetsNoPictureOfAnEarlierOne();
    void aPictureLeavesWithItsEntry();
    void aFolderThatCannotBeMadeKeepsNone();
    void aFullDiskKeepsTheEarlierPicture();

private:
    static QVariantList pointsAt(int timeMs)
    {
        return {QVariantMap{{"time", timeMs}, {"name", "Crack"}}};
    }
    static QVariantList entries(const QStringList& paths)
    {
        QVariantList list;
        for (const QString& path : paths)
            list.append(QVariantMap{{"path", path}});
        return list;
    }
    static QDir cache()
    {
        return QDir(QStandardPaths::writableLocation(QStandardPaths::CacheLocation));
    }

    static void takeRed(ProjectPictures& pictures, FramePlayer& player, const QString& path)
    {
        pictures.take(path, pointsAt(1000));
        player.answer(frameOf(Qt::red));
        deliver();
    }
};

void ProjectPicturesTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setApplicationName("ProjectPicturesTest");
}

void ProjectPicturesTest::init()
{
    cache().removeRecursively();
}

void ProjectPicturesTest::aFullDiskKeepsTheEarlierPicture()
{
    FramePlayer player;
    ProjectPictures pictures;
    pictures.setPlayer(&player);
    takeRed(pictures, player, "/flights/a.ecor");
    const QString earlier = pictures.pictureOf("/flights/a.ecor").toLocalFile();
    QVERIFY(!QImage(earlier).isNull());
    {
        const FullDisk full(100);
        takeRed(pictures, player, "/flights/a.ecor");
        takeRed(pictures, player, "/flights/b.ecor");
    }
    QVERIFY(!QImage(earlier).isNull());
    QVERIFY(pictures.pictureOf("/flights/b.ecor").isEmpty());
    QCOMPARE(QDir(cache().filePath("recent")).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

void ProjectPicturesTest::takesTheFrameOfTheFirstPoint()
{
    FramePlayer player;
    ProjectPictures pictures;
    pictures.setPlayer(&player);
    QSignalSpy changed(&pictures, &ProjectPictures::revisionChanged);
    pictures.take("/flights/Über #1.ecor", pointsAt(4000));
    QCOMPARE(player.requestedTimes(), std::vector<QTime>{timeAt(4000)});
    QVERIFY(pictures.pictureOf("/flights/Über #1.ecor").isEmpty());
    player.answer(frameOf(Qt::red));
    deliver();
    QCOMPARE(changed.count(), 1);
    const QImage kept(pictures.pictureOf("/flights/Über #1.ecor").toLocalFile());
    QCOMPARE(kept.width(), 200);
    QVERIFY(kept.pixelColor(10, 10).red() > 240 && kept.pixelColor(10, 10).green() < 16);
    QVERIFY(pictures.pictureOf("/flights/other.ecor").isEmpty());
    pictures.take("", pointsAt(4000));
    QVERIFY(player.requests.empty());
}

void ProjectPicturesTest::aLaterFlightGetsNoPictureOfAnEarlierOne()
{
    FramePlayer player;
    ProjectPictures pictures;
    pictures.setPlayer(&player);
    pictures.take("/flights/a.ecor", pointsAt(1000));
    pictures.take("/flights/b.ecor", {});
    player.answer(frameOf(Qt::red));
    deliver();
    QVERIFY(pictures.pictureOf("/flights/b.ecor").isEmpty());
    player.answer(frameOf(Qt::blue));
    deliver();
    const QImage kept(pictures.pictureOf("/flights/b.ecor").toLocalFile());
    QVERIFY(kept.pixelColor(10, 10).blue() > 240);
}

void ProjectPicturesTest::aPictureLeavesWithItsEntry()
{
    FramePlayer player;
    ProjectPictures pictures;
    pictures.setPlayer(&player);
    takeRed(pictures, player, "/flights/a.ecor");
    takeRed(pictures, player, "/flights/b.ecor");
    pictures.setProjects(entries({"/flights/b.ecor"}));
    QVERIFY(pictures.pictureOf("/flights/a.ecor").isEmpty());
    QVERIFY(!pictures.pictureOf("/flights/b.ecor").isEmpty());
    pictures.setProjects({});
    QVERIFY(QDir(cache().filePath("recent")).entryList(QDir::Files).isEmpty());
}

void ProjectPicturesTest::aFolderThatCannotBeMadeKeepsNone()
{
    QVERIFY(QDir().mkpath(cache().path()));
    QFile inTheWay(cache().filePath("recent"));
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    FramePlayer player;
    ProjectPictures pictures;
    pictures.setPlayer(&player);
    takeRed(pictures, player, "/flights/a.ecor");
    QVERIFY(pictures.pictureOf("/flights/a.ecor").isEmpty());
}

QTEST_GUILESS_MAIN(ProjectPicturesTest)
#include "ProjectPicturesTest.moc"
