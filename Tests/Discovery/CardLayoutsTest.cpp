#include "Discovery/cardLayouts.h"
#include "Discovery/flightSearch.h"
#include "FakeMachine.h"

#include <QDir>
#include <QtTest>

using namespace corv;
using corv::test::FakeMachine;

Q_DECLARE_METATYPE(corv::CardLayout)

namespace {

QStringList below(const QString& root, const QList<QFileInfo>& files)
{
    QStringList names;
    for (const QFileInfo& file : files)
        names.append(QDir(root).relativeFilePath(file.filePath()));
    return names;
}

} // namespace

class CardLayoutsTest : public QObject
{
    Q_OBJECT

private slots:
    void theTableHasTheModelsInOrder();
    void findsWhatTheLayoutLeadsTo_data();
    void findsWhatTheLayoutLeadsTo();
    void noDirectoryIsNotTheCurrentOne();
    void searchFollowsTheTable_data();
    void searchFollowsTheTable();
};

void CardLayoutsTest::theTableHasTheModelsInOrder()
{
    const QList<CardLayout>& layouts = cardLayouts();
    QCOMPARE(layouts.size(), 3);
    QCOMPARE(layouts[0].kind, 0);
    QCOMPARE(layouts[0].extension, QString("log"));
    QCOMPARE(layouts[0].subPath, QStringList());
    QCOMPARE(layouts[0].droneModel, QString("Aviro/Aviro2"));
    QCOMPARE(layouts[1].kind, 1);
    QCOMPARE(layouts[1].extension, QString("mp4"));
    QCOMPARE(layouts[1].subPath, QStringList({"DCIM", "100HDDVR"}));
    QCOMPARE(layouts[1].droneModel, QString("Aviro"));
    QCOMPARE(layouts[2].kind, 1);
    QCOMPARE(layouts[2].extension, QString("mov"));
    QCOMPARE(layouts[2].subPath, QStringList({"DCIM", "1??_CORV"}));
    QCOMPARE(layouts[2].droneModel, QString("Aviro2"));
}

void CardLayoutsTest::findsWhatTheLayoutLeadsTo_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QStringList>("subPath");
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QStringList>("found");

    const QStringList root;
    const QStringList first = {"DCIM", "100HDDVR"};
    const QStringList second = {"DCIM", "1??_CORV"};
    QTest::newRow("sorted by name, ignoring case")
        << QStringList{"b.log", "C.log", "A.log"} << root << "log"
        << QStringList{"A.log", "b.log", "C.log"};
    QTest::newRow("capital extension")
        << QStringList{"F.LOG"} << root << "log" << QStringList{"F.LOG"};
    QTest::newRow("other extensions")
        << QStringList{"a.log.bak", "log", "a.txt"} << root << "log" << QStringList{};
    QTest::newRow("not below") << QStringList{"sub/a.log"} << root << "log" << QStringList{};
    QTest::newRow("a folder with the extension")
        << QStringList{"x.mp4/inside"} << root << "mp4" << QStringList{"x.mp4"};
    QTest::newRow("first model") << QStringList{"DCIM/100HDDVR/a.mp4"} << first << "mp4"
                                 << QStringList{"DCIM/100HDDVR/a.mp4"};
    QTest::newRow("video in DCIM itself")
        << QStringList{"DCIM/a.mp4"} << first << "mp4" << QStringList{};
    QTest::newRow("second model, several folders")
        << QStringList{"DCIM/101_CORV/b.mov", "DCIM/101_CORV/a.mov"} << second << "mov"
        << QStringList{"DCIM/101_CORV/a.mov", "DCIM/101_CORV/b.mov"};
    QTest::newRow("100 is the first") << QStringList{"DCIM/100_CORV/a.mov"} << second << "mov"
                                      << QStringList{"DCIM/100_CORV/a.mov"};
    QTest::newRow("200 is none") << QStringList{"DCIM/200_CORV/a.mov"} << second << "mov"
                                 << QStringList{};
    QTest::newRow("file in place of the folder")
        << QStringList{"DCIM/101_CORV"} << second << "mov" << QStringList{};
    QTest::newRow("missing folder")
        << QStringList{"other/a.mov"} << second << "mov" << QStringList{};
    QTest::newRow("blanks and other letters")
        << QStringList{"Über den Dächern 1.log", "полёт 2.log", "飛行 %20.log"} << root << "log"
        << QStringList{"Über den Dächern 1.log", "полёт 2.log", "飛行 %20.log"};
}

void CardLayoutsTest::findsWhatTheLayoutLeadsTo()
{
    QFETCH(QStringList, files);
    QFETCH(QStringList, subPath);
    QFETCH(QString, extension);
    QFETCH(QStringList, found);
    FakeMachine machine;
    const QString root = machine.path("Card 1 %20");
    for (const QString& file : files)
        machine.addFile(root + "/" + file);
    QCOMPARE(below(root, findFiles(root, subPath, extension)), found);
}

void CardLayoutsTest::noDirectoryIsNotTheCurrentOne()
{
    FakeMachine machine;
    machine.addFile(machine.path("here.log"));
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(machine.path(".")));
    const QList<QFileInfo> found = findFiles(QString(), {}, "log");
    QVERIFY(QDir::setCurrent(before));
    QVERIFY(found.isEmpty());
}

void CardLayoutsTest::searchFollowsTheTable_data()
{
    QTest::addColumn<QList<CardLayout>>("added");
    QTest::addColumn<bool>("fromDrive");
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QStringList>("videos");
    QTest::addColumn<QStringList>("logs");

    const QList<CardLayout> none;
    const QList<CardLayout> sameExtension = {
        {CardLayout::Video, "mp4", {"DCIM", "200MEDIA"}, "Third"}};
    const QList<CardLayout> overlapping = {
        {CardLayout::Video, "mov", {"DCIM", "10?_CORV"}, "Third"}};
    const QList<CardLayout> logsBelow = {{CardLayout::Log, "log", {"LOGS"}, "Third"}};
    const QStringList card = {"a.log", "DCIM/100HDDVR/b.mp4", "DCIM/101_CORV/c.mov"};
    QTest::newRow("card") << none << true << card
                          << QStringList{"DCIM/100HDDVR/b.mp4", "DCIM/101_CORV/c.mov"}
                          << QStringList{"a.log"};
    QTest::newRow("folder") << none << false << QStringList{"a.log", "b.mov", "c.mp4"}
                            << QStringList{"c.mp4", "b.mov"} << QStringList{"a.log"};
    QTest::newRow("folder that is a copy of a card")
        << none << false << card << QStringList{"DCIM/100HDDVR/b.mp4", "DCIM/101_CORV/c.mov"}
        << QStringList{"a.log"};
    QTest::newRow("folder with videos of its own beside a card's")
        << none << false << (card + QStringList{"own.mov"}) << QStringList{"own.mov"}
        << QStringList{"a.log"};
    QTest::newRow("second layout of an extension, in a folder")
        << sameExtension << false << QStringList{"c.mp4"} << QStringList{"c.mp4"} << QStringList{};
    QTest::newRow("second layout of an extension, on a card")
        << sameExtension << true << (card + QStringList{"DCIM/200MEDIA/d.mp4"})
        << QStringList{"DCIM/100HDDVR/b.mp4", "DCIM/101_CORV/c.mov", "DCIM/200MEDIA/d.mp4"}
        << QStringList{"a.log"};
    QTest::newRow("layouts that lead to the same files")
        << overlapping << true << card << QStringList{"DCIM/100HDDVR/b.mp4", "DCIM/101_CORV/c.mov"}
        << QStringList{"a.log"};
    QTest::newRow("logs in a folder of their own, on a card")
        << logsBelow << true << QStringList{"a.log", "LOGS/e.log"} << QStringList{}
        << QStringList{"a.log", "LOGS/e.log"};
    QTest::newRow("logs in a folder of their own, in a folder")
        << logsBelow << false << QStringList{"a.log", "LOGS/e.log"} << QStringList{}
        << QStringList{"a.log"};
}

void CardLayoutsTest::searchFollowsTheTable()
{
    QFETCH(QList<CardLayout>, added);
    QFETCH(bool, fromDrive);
    QFETCH(QStringList, files);
    QFETCH(QStringList, videos);
    QFETCH(QStringList, logs);
    FakeMachine machine;
    const QString root = machine.path("Card");
    for (const QString& file : files)
        machine.addFile(root + "/" + file);
    const FlightFiles found =
        gatherFlightFiles({root, root, fromDrive, fromDrive}, cardLayouts() + added);
    QCOMPARE(below(root, found.videos), videos);
    QCOMPARE(below(root, found.logs), logs);
}

QTEST_GUILESS_MAIN(CardLayoutsTest)
#include "CardLayoutsTest.moc"
