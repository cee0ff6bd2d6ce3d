#include "Support/MediaDoubles.h"
#include "Support/TestVideo.h"
#include "Video/AvFrameSource.h"
#include "Video/VideoInfoReader.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>
#include <limits>

extern "C" {
#include <libavutil/mem.h>
}

using namespace corv;
using namespace corv::test;

namespace {

constexpr int frames = 200;

/// The number of frames that can be read from here on, and what ends them.
int readOn(FrameSource& source, ReadOutcome& outcome)
{
    Frame frame;
    int count = 0;
    while ((outcome = source.read(frame)) == ReadOutcome::frame)
        ++count;
    return count;
}

} // namespace

/// The reader on a medium: how much it reads, and what happens when the medium is lost.
class FrameMediumTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void openingReadsNoPictures_data();
    void openingReadsNoPictures();
    void aSeekReadsNoMoreThanItsGroup();
    void aLostMediumEndsInAFailure();
    void aCardPutBackInIsReadOn_data();
    void aCardPutBackInIsReadOn();
    void anotherCardIsNotReadOn();
    void aPlaceThatCannotBeReadIsAFailure();
    void aMediumLostBeforeTheIndexIsReadGivesWhatItHad();
    void aFileCutWhileOpenEndsInAFailure();
    void failuresHaveTheirReason();
    void countsThatCannotBeTakeNoMemory();
    void lackOfMemoryIsNoDamage_data();
    void lackOfMemoryIsNoDamage();

private:
    Result<std::unique_ptr<FrameSource>> open(const QString& file) const
    {
        return openAvFrameSource(file, Medium::factory(m_medium));
    }

    QTemporaryDir m_folder;
    QString m_mov; // 92 MB of uncompressed pictures
    QString m_stream;
    std::shared_ptr<Medium> m_medium;
};

void FrameMediumTest::initTestCase()
{
    m_mov = m_folder.filePath("raw.mov");
    QVERIFY((TestVideo{
        frames, "25", {160, 120}, 0, {"-s", "640x360", "-c:v", "rawvideo", "-pix_fmt", "uyvy422"}}
                 .write(m_mov)));
    m_stream = m_folder.filePath("jpeg.avi");
    QVERIFY((TestVideo{
        frames, "25", {320, 240}, 0, {"-c:v", "mjpeg", "-q:v", "2", "-pix_fmt", "yuvj420p"}}
                 .write(m_stream)));
}

void FrameMediumTest::openingReadsNoPictures_data()
{
    QTest::addColumn<bool>("headFirst");
    QTest::newRow("head at the end") << false;
    QTest::newRow("head first") << true;
}

void FrameMediumTest::openingReadsNoPictures()
{
    QFETCH(bool, headFirst);
    QString file = m_mov;
    if (headFirst) {
        file = m_folder.filePath("first.mov");
        QVERIFY(runFfmpeg({"-i", m_mov, "-c", "copy", "-movflags", "+faststart", file}));
    }
    m_medium = std::make_shared<Medium>();
    const auto source = open(file);
    QVERIFY(source);
    QCOMPARE((*source)->frameCount(), frames);
    Frame frame;
    QVERIFY((*source)->read(frame) == ReadOutcome::frame);
    QVERIFY(m_medium->bytesRead < QFileInfo(file).size() / 4);
    const qint64 before = m_medium->bytesRead;
    const Result<VideoInfo> info = readVideoInfo(file, Medium::factory(m_medium));
    QVERIFY(info);
    QVERIFY(m_medium->bytesRead - before < 64 * 1024); // the head, once
    QCOMPARE(info->promisedFrames, frames);
    QCOMPARE(info->durationMs, frames * 40.0);
}

// AVI knows no times but those of decoding, and here frames are shown in another order.
void FrameMediumTest::aSeekReadsNoMoreThanItsGroup()
{
    const QString file = m_folder.filePath("b-frames.avi");
    QVERIFY((TestVideo{frames,
                       "25",
                       {320, 240},
                       0,
                       {"-vf", "noise=alls=60:allf=t", "-c:v", "libx264", "-preset", "ultrafast",
                        "-bf", "3", "-g", "10", "-qp", "10", "-pix_fmt", "yuv420p"}}
                 .write(file)));
    QVERIFY(QFileInfo(file).size() > 2000000);
    m_medium = std::make_shared<Medium>();
    const auto source = open(file);
    QVERIFY(source);
    QCOMPARE((*source)->frameCount(), frames);
    const qint64 before = m_medium->bytesRead;
    Frame frame;
    QVERIFY((*source)->seekToFrame(frames - 15));
    QVERIFY((*source)->read(frame) == ReadOutcome::frame);
    QCOMPARE(frame.index, frames - 15);
    QVERIFY(m_medium->bytesRead - before < QFileInfo(file).size() / 4);
}

void FrameMediumTest::aLostMediumEndsInAFailure()
{
    m_medium = std::make_shared<Medium>();
    const auto opened = open(m_mov);
    QVERIFY(opened);
    FrameSource& source = **opened;
    Frame frame;
    QVERIFY(source.read(frame) == ReadOutcome::frame);
    m_medium->lostFrom = QFileInfo(m_mov).size() / 2;
    ReadOutcome outcome = ReadOutcome::frame;
    const int before = readOn(source, outcome);
    QVERIFY(outcome == ReadOutcome::failed);
    QVERIFY(before > 0 && before < frames / 2 + 1);
    QCOMPARE(source.failure().kind, Failure::Kind::unreadable);
    // The failure stays as long as the medium is gone, and the other half is still there.
    QVERIFY(source.seekToFrame(frames - 1));
    QVERIFY(source.read(frame) == ReadOutcome::failed);
    QVERIFY(source.seekToFrame(3));
    QVERIFY(source.read(frame) == ReadOutcome::frame);
    QCOMPARE(frame.index, 3);
    m_medium->lostFrom = 0;
    QVERIFY(!source.clone());
    QVERIFY(source.seekToFrame(frames - 1));
    QVERIFY(source.read(frame) == ReadOutcome::failed);
    m_medium->lostFrom = -1;
    QVERIFY(source.seekToFrame(frames - 1));
    QVERIFY(source.read(frame) == ReadOutcome::frame);
    QCOMPARE(frame.index, frames - 1);
}

void FrameMediumTest::aCardPutBackInIsReadOn_data()
{
    QTest::addColumn<bool>("isMov");
    QTest::newRow("mov") << true;
    QTest::newRow("avi") << false;
}

void FrameMediumTest::aCardPutBackInIsReadOn()
{
    QFETCH(bool, isMov);
    m_medium = std::make_shared<Medium>();
    const auto opened = open(isMov ? m_mov : m_stream);
    QVERIFY(opened);
    FrameSource& source = **opened;
    QTRY_VERIFY(source.isIndexReady());
    Frame frame;
    for (int i = 0; i < 20; ++i)
        QVERIFY(source.read(frame) == ReadOutcome::frame);
    ++m_medium->timesPulled;
    m_medium->lostFrom = 0;
    ReadOutcome outcome = ReadOutcome::frame;
    const int before = 20 + readOn(source, outcome); // what had been read ahead
    QVERIFY(outcome == ReadOutcome::failed);
    QVERIFY(before < frames);
    QVERIFY(source.read(frame) == ReadOutcome::failed);
    m_medium->lostFrom = -1;
    for (int i = before; i < frames; ++i) {
        QVERIFY(source.read(frame) == ReadOutcome::frame);
        QCOMPARE(frame.index, i);
    }

    // Unnoticed between two readings.
    ++m_medium->timesPulled;
    QVERIFY(source.seekToFrame(5));
    QVERIFY(source.read(frame) == ReadOutcome::frame);
    QCOMPARE(frame.index, 5);
}

void FrameMediumTest::anotherCardIsNotReadOn()
{
    const QString file = m_folder.filePath("other.avi");
    QVERIFY(QFile::copy(m_stream, file));
    m_medium = std::make_shared<Medium>();
    const auto source = open(file);
    QVERIFY(source);
    QCOMPARE((*source)->frameCount(), frames);
    ++m_medium->timesPulled;
    QVERIFY(QFile::remove(file));
    QVERIFY((TestVideo{10, "25", {320, 240}, 500, {"-c:v", "mjpeg", "-pix_fmt", "yuvj420p"}}.write(
        file)));
    Frame frame;
    QVERIFY((*source)->seekToFrame(frames / 2));
    QVERIFY((*source)->read(frame) == ReadOutcome::failed);
}

// All before it can be read, and the file be opened again.
void FrameMediumTest::aPlaceThatCannotBeReadIsAFailure()
{
    const QString file = m_folder.filePath("first.mov");
    QVERIFY(runFfmpeg({"-i", m_mov, "-c", "copy", "-movflags", "+faststart", file}));
    m_medium = std::make_shared<Medium>();
    const auto source = open(file);
    QVERIFY(source);
    Frame frame;
    QVERIFY((*source)->read(frame) == ReadOutcome::frame);
    m_medium->lostFrom = QFileInfo(file).size() / 2;
    for (int attempt = 0; attempt < 2; ++attempt) {
        QVERIFY((*source)->seekToFrame(frames - 10));
        QVERIFY((*source)->read(frame) == ReadOutcome::failed);
    }
}

void FrameMediumTest::aMediumLostBeforeTheIndexIsReadGivesWhatItHad()
{
    m_medium = std::make_shared<Medium>();
    m_medium->lostFrom = QFileInfo(m_stream).size() * 3 / 4;
    const auto source = open(m_stream);
    QVERIFY(source);
    QTRY_VERIFY((*source)->isIndexReady());
    QVERIFY((*source)->frameCount() >= 1);
    QVERIFY((*source)->frameCount() < frames);
    ReadOutcome outcome = ReadOutcome::frame;
    QVERIFY(readOn(**source, outcome) >= 1);
    QVERIFY(outcome != ReadOutcome::frame);
}

void FrameMediumTest::aFileCutWhileOpenEndsInAFailure()
{
    const QString file = m_folder.filePath("cut.mov");
    QVERIFY(QFile::copy(m_mov, file));
    m_medium = std::make_shared<Medium>();
    const auto source = open(file);
    QVERIFY(source);
    QVERIFY(QFile::resize(file, QFileInfo(file).size() / 2));
    ReadOutcome outcome = ReadOutcome::frame;
    QVERIFY(readOn(**source, outcome) > 0);
    QVERIFY(outcome == ReadOutcome::failed);
}

void FrameMediumTest::failuresHaveTheirReason()
{
    m_medium = std::make_shared<Medium>();
    QCOMPARE(open(m_folder.filePath("none.mp4")).failure().kind, Failure::Kind::notFound);
    QCOMPARE(open(m_folder.path()).failure().kind, Failure::Kind::notAFile);
    QFile text(m_folder.filePath("text.mp4"));
    QVERIFY(text.open(QIODevice::WriteOnly));
    text.write("no video");
    text.close();
    const auto refused = open(text.fileName());
    QCOMPARE(refused.failure().kind, Failure::Kind::notRecognised);
    QVERIFY(refused.failure().sentence.contains(text.fileName()));
    QVERIFY(refused.failure().sentence.endsWith('.'));
}

// A fragment that promises 67 million packets without a word on their sizes: their list would take
// gigabytes, of a file of some kilobytes.
void FrameMediumTest::countsThatCannotBeTakeNoMemory()
{
    const QString path = m_folder.filePath("fragments.mp4");
    QVERIFY((TestVideo{50,
                       "25",
                       {320, 240},
                       0,
                       {"-c:v", "mpeg4", "-g", "10", "-movflags", "frag_keyframe+empty_moov"}}
                 .write(path)));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QByteArray bytes = file.readAll();
    const int run = bytes.indexOf("trun");
    QVERIFY(run > 0);
    // Of the flags, the place of the data and the first packet's flags stay.
    qToBigEndian(quint32{0x5}, bytes.data() + run + 4);
    qToBigEndian(quint32{0x04000000}, bytes.data() + run + 8);
    QVERIFY(file.seek(0));
    QCOMPARE(file.write(bytes), qint64{bytes.size()});
    file.close();

    m_medium = std::make_shared<Medium>();
    const auto opened = open(path);
    QVERIFY(!opened);
    QCOMPARE(opened.failure().kind, Failure::Kind::noMemory);
    QVERIFY(VideoInfoReader(path).getDurationMs() <= 2000);
}

void FrameMediumTest::lackOfMemoryIsNoDamage_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("described") << m_mov;
    QTest::newRow("read through") << m_stream;
    const QString coded = m_folder.filePath("coded.mp4"); // pictures far larger than packets
    QVERIFY((TestVideo{5, "25", {640, 480}}.write(coded)));
    QTest::newRow("coded") << coded;
}

// With ever more memory for the libraries, up to what they need.
void FrameMediumTest::lackOfMemoryIsNoDamage()
{
    QFETCH(QString, file);
    m_medium = std::make_shared<Medium>();
    int refused = 0;
    bool isOpen = false;
    constexpr size_t megabyte = 1'000'000;
    for (size_t bytes = 64; !isOpen && bytes < 16 * megabyte; bytes += bytes / 4) {
        av_max_alloc(bytes);
        const auto opened = open(file);
        av_max_alloc(std::numeric_limits<int>::max());
        isOpen = opened.ok();
        if (isOpen)
            break;
        ++refused;
        const QByteArray limit = QByteArray::number(static_cast<qulonglong>(bytes));
        QVERIFY2(opened.failure().kind == Failure::Kind::noMemory,
                 limit + ": " + opened.failure().sentence.toUtf8());
        QVERIFY2(opened.failure().sentence.contains(file), limit);
    }
    QVERIFY(isOpen);
    QVERIFY(refused > 10);
}

QTEST_GUILESS_MAIN(FrameMediumTest)
#include "FrameMediumTest.moc"
