#include "ExportFixture.h"
#include "Support/FullDisk.h"
#include "Support/MessageLog.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QImageReader>

using namespace corv;
using namespace corv::test;

/// Single frames and series of them, to files and to the clipboard.
class FrameExportTest : public QObject, private ExportFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void aFrameIsSavedUnderAFreeName();
    void aFrameHasTheFormatOfItsSuffix_data();
    void aFrameHasTheFormatOfItsSuffix();
    void aFrameOverwritesIfAsked();
    void framesThatAreNotSavedAreReported();
    void aFrameThatCannotBeSavedDestroysNothing();
    void copiesAFrameToTheClipboard();
    void aSeriesOfGivenTimes();
    void aSeriesAtASpacing_data();
    void aSeriesAtASpacing();
    void aSeriesNeedsAFolderAndASpacing();
};

void FrameExportTest::aFrameIsSavedUnderAFreeName()
{
    addFile("a.mp4");
    open("a.mp4");
    MessageLog log;
    const QStringList names{"shot.png", "shot(1).png", "shot(2).png"};
    for (int i = 0; i < names.size(); ++i) {
        QVERIFY(m_player->saveFrame(timeAt(i * 400), path("shot.png"), false));
        QTRY_COMPARE(numberIn(QImage(path(names.at(i)))), i * 10);
    }
    QVERIFY(log.contains(QStringLiteral("File \"%1\"  exists; constructing different name...")
                             .arg(path("shot(1).png"))));
    QVERIFY(log.contains(QStringLiteral("Saving frame at QTime(\"00:00:00.400\") ms in file \"%1\"")
                             .arg(path("shot(1).png"))));
    QVERIFY(m_player->saveFrame(timeAt(0), path("seven(7).png"), false));
    QTRY_VERIFY(QFile::exists(path("seven(7).png")));
    QVERIFY(m_player->saveFrame(timeAt(0), path("seven(7).png"), false));
    QTRY_VERIFY(QFile::exists(path("seven(8).png")));
}

void FrameExportTest::aFrameHasTheFormatOfItsSuffix_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QByteArray>("format");
    QTest::newRow("JPEG") << "jpg" << QByteArray("jpeg");
    QTest::newRow("bitmap") << "bmp" << QByteArray("bmp");
    QTest::newRow("PNG") << "png" << QByteArray("png");
}

void FrameExportTest::aFrameHasTheFormatOfItsSuffix()
{
    QFETCH(QString, suffix);
    addFile("a.mp4");
    open("a.mp4");
    const QString shot = path("shot." + suffix);
    QVERIFY(m_player->saveFrame(timeAt(400), shot, true));
    QTRY_VERIFY(QFile::exists(shot));
    QTEST(QImageReader::imageFormat(shot), "format");
    QCOMPARE(numberIn(QImage(shot)), 10);
}

void FrameExportTest::aFrameOverwritesIfAsked()
{
    addFile("a.mp4");
    open("a.mp4");
    QFile old(path("shot.png"));
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write("old");
    old.close();
    QVERIFY(m_player->saveFrame(timeAt(200), path("shot.png"), true));
    QTRY_COMPARE(numberIn(QImage(path("shot.png"))), 5);
    QCOMPARE(QDir(m_folder->path()).entryList({"*.png"}), QStringList{"shot.png"});
}

void FrameExportTest::framesThatAreNotSavedAreReported()
{
    addFile("a.mp4");
    open("a.mp4");
    MessageLog log;
    QVERIFY(!m_player->saveFrame(timeAt(0), QString(), false));
    QVERIFY(log.contains("Empty path"));
    QVERIFY(m_player->saveFrame(timeAt(5000), path("late.png"), false));
    QTRY_VERIFY(log.contains("Failed to extract frame"));
    QVERIFY(m_player->saveFrame(timeAt(0), path("nowhere/shot.png"), false));
    QTRY_VERIFY(log.contains("Failed to save frame to file"));
    log.clear();
    QVERIFY(m_player->saveFrame(timeAt(0), path("shot.unknown"), false));
    QTRY_VERIFY(log.contains("Failed to save frame to file"));
    m_player->close();
    QVERIFY(!m_player->saveFrame(timeAt(0), path("closed.png"), false));
}

void FrameExportTest::aFrameThatCannotBeSavedDestroysNothing()
{
    addFile("a.mp4");
    open("a.mp4");
    QFile notes(path("notes.txt"));
    QVERIFY(notes.open(QIODevice::ReadWrite) && notes.write("earlier") && notes.flush());
    MessageLog log;
    QVERIFY(m_player->saveFrame(timeAt(0), path("notes.txt"), true));
    QTRY_VERIFY(log.contains("Failed to save frame to file"));
    QVERIFY(notes.seek(0));
    QCOMPARE(notes.readAll(), QByteArray("earlier"));

    QImage earlier(8, 8, QImage::Format_RGB32);
    earlier.fill(Qt::red);
    QVERIFY(earlier.save(path("earlier.jpg")));
    earlier.load(path("earlier.jpg"));
    log.clear();
    {
        const FullDisk disk(100);
        QVERIFY(m_player->saveFrame(timeAt(0), path("lost.jpg"), false));
        QTRY_VERIFY(log.contains("Failed to save frame to file"));
        log.clear();
        QVERIFY(m_player->saveFrame(timeAt(0), path("earlier.jpg"), true));
        QTRY_VERIFY(log.contains("Failed to save frame to file"));
    }
    QVERIFY(!QFile::exists(path("lost.jpg")));
    QCOMPARE(QImage(path("earlier.jpg")), earlier);

    QVERIFY(QFile::link(path("a.mp4"), path("link.png")));
    const qint64 videoBytes = QFileInfo(path("a.mp4")).size();
    for (const char* name : {"a.mp4", "link.png"}) {
        log.clear();
        QVERIFY(!m_player->saveFrame(timeAt(0), path(QString::fromLatin1(name)), true));
        QVERIFY2(log.contains("Refused to save a frame over a file of the flight:"), name);
    }
    QCOMPARE(QFileInfo(path("a.mp4")).size(), videoBytes);
}

void FrameExportTest::copiesAFrameToTheClipboard()
{
    addFile("a.mp4");
    open("a.mp4");
    QGuiApplication::clipboard()->clear();
    m_player->copyFrameToClipboard(timeAt(480));
    QTRY_COMPARE(numberIn(QGuiApplication::clipboard()->image()), 12);
    MessageLog log;
    m_player->copyFrameToClipboard(timeAt(5000));
    QTRY_VERIFY(log.contains("Failed to extract frame"));
    QCOMPARE(numberIn(QGuiApplication::clipboard()->image()), 12);
}

void FrameExportTest::aSeriesOfGivenTimes()
{
    addFile("a.mp4");
    open("a.mp4");
    QVERIFY(QDir().mkpath(path("out")));
    QVERIFY(m_player->exportSpecificFrames({800, 0, 400}, path("out"), "POI"));
    QTRY_COMPARE(QDir(path("out")).entryList(QDir::Files).size(), 3);
    QTRY_COMPARE(numberIn(QImage(path("out/POI002.jpg"))), 10);
    QCOMPARE(numberIn(QImage(path("out/POI000.jpg"))), 20);
    QCOMPARE(numberIn(QImage(path("out/POI001.jpg"))), 0);
}

void FrameExportTest::aSeriesAtASpacing_data()
{
    QTest::addColumn<int>("startMs");
    QTest::addColumn<int>("stopMs");
    QTest::addColumn<int>("spacing");
    QTest::addColumn<QList<int>>("numbers");
    QTest::newRow("one") << 400 << 400 << 10 << QList<int>{10};
    QTest::newRow("every tenth") << 0 << 1000 << 10 << QList<int>{0, 10, 20};
    QTest::newRow("every one") << 1000 << 1120 << 1 << QList<int>{25, 26, 27, 28};
    QTest::newRow("beyond an int") << 0 << 100 << 2000000000 << QList<int>{0};
    QTest::newRow("stop before start") << 400 << 0 << 10 << QList<int>{};
}

void FrameExportTest::aSeriesAtASpacing()
{
    QFETCH(int, startMs);
    QFETCH(int, stopMs);
    QFETCH(int, spacing);
    QFETCH(QList<int>, numbers);
    addFile("a.mp4");
    open("a.mp4");
    QVERIFY(QDir().mkpath(path("out")));
    QVERIFY(m_player->exportFrames(startMs, stopMs, spacing, path("out"), "Frame"));
    StillFrame after(*m_player, timeAt(0));
    QTRY_VERIFY(after.came());
    QCOMPARE(QDir(path("out")).entryList(QDir::Files).size(), numbers.size());
    for (int i = 0; i < numbers.size(); ++i)
        QCOMPARE(numberIn(QImage(path(QStringLiteral("out/Frame00%1.jpg").arg(i)))), numbers.at(i));
}

void FrameExportTest::aSeriesNeedsAFolderAndASpacing()
{
    addFile("a.mp4");
    open("a.mp4");
    MessageLog log;
    QVERIFY(!m_player->exportFrames(0, 1000, 10, path("no/parent/out"), "Frame"));
    QVERIFY(
        log.contains(QStringLiteral("Folder doesn't exist: \"%1\"").arg(path("no/parent/out"))));
    for (int spacing : {0, -1, std::numeric_limits<int>::min()}) {
        QVERIFY(!m_player->exportFrames(0, 1000, spacing, path("out"), "Frame"));
        QVERIFY(log.contains(QStringLiteral("No way forward with a spacing of %1").arg(spacing)));
    }
}

QTEST_MAIN(FrameExportTest)
#include "FrameExportTest.moc"
