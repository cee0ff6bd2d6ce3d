#include "Video/fileNames.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace corv;

class FileNamesTest : public QObject
{
    Q_OBJECT

private slots:
    void numberedFilesAreOneFlight_data();
    void numberedFilesAreOneFlight();
    void aTakenNameGetsANumber_data();
    void aTakenNameGetsANumber();
    void seriesNamesKeepThreeDigits_data();
    void seriesNamesKeepThreeDigits();
};

void FileNamesTest::numberedFilesAreOneFlight_data()
{
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QString>("opened");
    QTest::addColumn<QStringList>("expected");
    const QStringList four{"CORV0007.MOV", "CORV0008.MOV", "CORV0009.MOV", "CORV0010.MOV"};
    QTest::newRow("all that follow") << four << "CORV0007.MOV" << four;
    QTest::newRow("from the middle") << four << "CORV0009.MOV" << QStringList(four.mid(2));
    QTest::newRow("the first gap ends it") << QStringList{"CORV0001.MOV", "CORV0003.MOV"}
                                           << "CORV0001.MOV" << QStringList{"CORV0001.MOV"};
    QTest::newRow("text before the number")
        << QStringList{"CORV_a_0001.mp4", "CORV_a_0002.mp4"} << "CORV_a_0001.mp4"
        << QStringList{"CORV_a_0001.mp4", "CORV_a_0002.mp4"};
    QTest::newRow("past four digits")
        << QStringList{"CORV9999.MP4", "CORV10000.MP4"} << "CORV9999.MP4"
        << QStringList{"CORV9999.MP4", "CORV10000.MP4"};
    QTest::newRow("another prefix") << QStringList{"FILM0001.MP4", "FILM0002.MP4"} << "FILM0001.MP4"
                                    << QStringList{"FILM0001.MP4"};
    QTest::newRow("small letters") << QStringList{"corv0001.MP4", "corv0002.MP4"} << "corv0001.MP4"
                                   << QStringList{"corv0001.MP4"};
    QTest::newRow("too short") << QStringList{"CORV001.MP4", "CORV002.MP4"} << "CORV001.MP4"
                               << QStringList{"CORV001.MP4"};
    QTest::newRow("no number") << QStringList{"CORVabcd.MP4"} << "CORVabcd.MP4"
                               << QStringList{"CORVabcd.MP4"};
    QTest::newRow("another suffix") << QStringList{"CORV0001.MP4", "CORV0002.MOV"} << "CORV0001.MP4"
                                    << QStringList{"CORV0001.MP4"};
    QTest::newRow("place holders in the name")
        << QStringList{"CORV%10001.MP4", "CORV%10002.MP4"} << "CORV%10001.MP4"
        << QStringList{"CORV%10001.MP4", "CORV%10002.MP4"};
    QTest::newRow("missing") << QStringList{"CORV0002.MP4"} << "CORV0001.MP4" << QStringList{};
}

void FileNamesTest::numberedFilesAreOneFlight()
{
    QFETCH(QStringList, present);
    QFETCH(QString, opened);
    QFETCH(QStringList, expected);
    const QTemporaryDir folder;
    for (const QString& name : present) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QStringList paths;
    for (const QString& name : expected)
        paths << folder.filePath(name);
    QCOMPARE(expandVideoSequence(folder.filePath(opened)), paths);
}

void FileNamesTest::aTakenNameGetsANumber_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("first") << "shot.jpg"
                           << "shot(1).jpg";
    QTest::newRow("second") << "shot(1).jpg"
                            << "shot(2).jpg";
    QTest::newRow("seven") << "a(7).jpg"
                           << "a(8).jpg";
    QTest::newRow("nine") << "a(9).jpg"
                          << "a(10).jpg";
    QTest::newRow("no number") << "a(b).jpg"
                               << "a(1).jpg";
    QTest::newRow("empty brackets") << "ab().jpg"
                                    << "ab(1).jpg";
    QTest::newRow("two pairs") << "a(1)(3).jpg"
                               << "a(1)(4).jpg";
    QTest::newRow("text behind") << "a(3)b.jpg"
                                 << "a(4).jpg";
    QTest::newRow("open alone") << "abc(d.jpg"
                                << "abc(1).jpg";
    QTest::newRow("wrong way round") << "a)b(c.jpg"
                                     << "a)b(1).jpg";
    QTest::newRow("too short for a pair") << "().jpg"
                                          << "(1).jpg";
    QTest::newRow("dots") << "a.b.png"
                          << "a.b(1).png";
    QTest::newRow("place holder") << "a%1%2.png"
                                  << "a%1%2(1).png";
    QTest::newRow("greatest") << "a(2147483647).jpg"
                              << "a(-2147483648).jpg";
    QTest::newRow("no suffix") << "abc"
                               << "abc(1).";
}

void FileNamesTest::aTakenNameGetsANumber()
{
    QFETCH(QString, name);
    QFETCH(QString, expected);
    QCOMPARE(differentFileName(QStringLiteral("/some/where/") + name),
             QStringLiteral("/some/where/") + expected);
}

void FileNamesTest::seriesNamesKeepThreeDigits_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("name");
    QTest::newRow("first") << 0 << "Frame000.jpg";
    QTest::newRow("two digits") << 42 << "Frame042.jpg";
    QTest::newRow("last of three digits") << 999 << "Frame999.jpg";
    QTest::newRow("more digits") << 1000 << "Frame1000.jpg";
}

void FileNamesTest::seriesNamesKeepThreeDigits()
{
    QFETCH(int, number);
    QFETCH(QString, name);
    QCOMPARE(seriesFileName(QStringLiteral("Frame"), number), name);
}

QTEST_GUILESS_MAIN(FileNamesTest)
#include "FileNamesTest.moc"
