#include "Discovery/PersistentData.h"

#include <QtTest>

using namespace corv;

namespace {

FlightMatchData videoNamed(const QString& path)
{
    FlightMatchData match;
    match.videoFile = QFileInfo(path);
    return match;
}

} // namespace

class PersistentDataTest : public QObject
{
    Q_OBJECT

private slots:
    void isOneObjectThatStartsEmpty();
    void keepsTheLastListAndGivesCopies();
};

void PersistentDataTest::isOneObjectThatStartsEmpty()
{
    QCOMPARE(PersistentData::instance(), PersistentData::instance());
    QVERIFY(!PersistentData::instance()->parent());
    QVERIFY(PersistentData::instance()->getDirectoryList().isEmpty());
}

void PersistentDataTest::keepsTheLastListAndGivesCopies()
{
    PersistentData* data = PersistentData::instance();
    const QList<FlightMatchData> list = {videoNamed("/card/a.mp4"), videoNamed("/card/b.mp4")};
    data->setDirectoryList(list);
    QCOMPARE(data->getDirectoryList().size(), 2);

    QList<FlightMatchData> copy = data->getDirectoryList();
    copy[0].videoDuration = 7000;
    copy.removeLast();
    QCOMPARE(data->getDirectoryList().size(), 2);
    QCOMPARE(data->getDirectoryList()[0].videoDuration, 0);

    data->setDirectoryList(copy);
    QCOMPARE(data->getDirectoryList().size(), 1);
    QCOMPARE(data->getDirectoryList()[0].videoDuration, 7000);
    QCOMPARE(data->getDirectoryList()[0].videoFile.fileName(), QString("a.mp4"));

    data->setDirectoryList(data->getDirectoryList());
    QCOMPARE(data->getDirectoryList().size(), 1);
    data->setDirectoryList({});
    QVERIFY(data->getDirectoryList().isEmpty());
}

QTEST_GUILESS_MAIN(PersistentDataTest)
#include "PersistentDataTest.moc"
