#include "Video/VideoInfoReader.h"
#include "Support/MessageLog.h"
#include "Support/TestVideo.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>

using namespace corv;
using namespace corv::test;

class VideoInfoReaderTest : public QObject
{
    Q_OBJECT

private slots:
    void wholeSecondsRoundedDown_data();
    void wholeSecondsRoundedDown();
    void theExactLengthCountsEveryFrame_data();
    void theExactLengthCountsEveryFrame();
    void whatDoesNotOpen();
    void lessThanAFramePerSecond();

private:
    QTemporaryDir m_folder;
};

void VideoInfoReaderTest::wholeSecondsRoundedDown_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<QString>("fps");
    QTest::addColumn<int>("durationMs");
    QTest::newRow("just under two seconds") << 59 << "30" << 1000;
    QTest::newRow("two seconds") << 60 << "30" << 2000;
    QTest::newRow("29.97 counts as 29") << 87 << "30000/1001" << 3000;
    QTest::newRow("less than a second") << 10 << "25" << 0;
}

void VideoInfoReaderTest::wholeSecondsRoundedDown()
{
    QFETCH(int, frames);
    QFETCH(QString, fps);
    QFETCH(int, durationMs);
    const QString file = m_folder.filePath("video.mp4");
    QVERIFY((TestVideo{frames, fps}.write(file)));
    QCOMPARE(VideoInfoReader(file).getDurationMs(), durationMs);
}

void VideoInfoReaderTest::theExactLengthCountsEveryFrame_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<QString>("fps");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QStringList>("filter");
    QTest::addColumn<double>("durationMs");
    const QStringList gap{"-vf", "select='lt(n,20)+gt(n,40)'", "-vsync", "vfr"};
    QTest::newRow("constant") << 59 << "30"
                              << "mp4" << QStringList() << 59 * 1000.0 / 30;
    QTest::newRow("29.97") << 87 << "30000/1001"
                           << "mov" << QStringList() << 87 * 1001.0 / 30;
    QTest::newRow("a gap") << 60 << "30"
                           << "mp4" << gap << 2000.0;
    QTest::newRow("avi") << 50 << "25"
                         << "avi" << QStringList() << 2000.0;
}

void VideoInfoReaderTest::theExactLengthCountsEveryFrame()
{
    QFETCH(int, frames);
    QFETCH(QString, fps);
    QFETCH(QString, suffix);
    QFETCH(QStringList, filter);
    QFETCH(double, durationMs);
    const QString file = m_folder.filePath(QStringLiteral("exact.") + suffix);
    QVERIFY(
        (TestVideo{frames, fps, {160, 120}, 0, QStringList{"-c:v", "mpeg4"} + filter}.write(file)));
    QVERIFY(std::abs(VideoInfoReader(file).exactDurationMs() - durationMs) < 1.0);
}

void VideoInfoReaderTest::whatDoesNotOpen()
{
    QFile text(m_folder.filePath("text.mp4"));
    QVERIFY(text.open(QIODevice::WriteOnly));
    text.write("no video");
    text.close();
    const MessageLog log;
    const QString missing = m_folder.filePath("missing.mp4");
    QCOMPARE(VideoInfoReader(text.fileName()).getDurationMs(), -1);
    QCOMPARE(VideoInfoReader(m_folder.path()).getDurationMs(), -1);
    QCOMPARE(VideoInfoReader(missing).getDurationMs(), -1);
    QCOMPARE(VideoInfoReader(missing).exactDurationMs(), -1.0);
    QCOMPARE(VideoInfoReader(text.fileName()).exactDurationMs(), -1.0);
    for (const QString& file : {text.fileName(), m_folder.path(), missing})
        QVERIFY(log.contains(QStringLiteral("Failed to open video file \"%1\"").arg(file)));
}

void VideoInfoReaderTest::lessThanAFramePerSecond()
{
    const QString file = m_folder.filePath("slow.mp4");
    QVERIFY((TestVideo{4, "1/2"}.write(file)));
    const MessageLog log;
    QCOMPARE(VideoInfoReader(file).getDurationMs(), -1);
    QVERIFY(log.contains("No whole frame per second in video file"));
}

QTEST_GUILESS_MAIN(VideoInfoReaderTest)
#include "VideoInfoReaderTest.moc"
