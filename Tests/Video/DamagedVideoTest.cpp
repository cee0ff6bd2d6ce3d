#include "Support/TestVideo.h"
#include "Support/videoTruth.h"
#include "openVideo.h"

#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

using namespace corv;
using namespace corv::test;

namespace {

constexpr int damagedPlaces = 12;
constexpr std::array<int, 9> damagedInGroups{9, 2, 5, 9, 3, 2, 9, 4, 3}; // of ten packets

} // namespace

/// Damage costs the frames that it reaches and no others: what is shown is whole, and has its own
/// number and time.
class DamagedVideoTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void damageCostsNoMoreThanItself_data();
    void damageCostsNoMoreThanItself();
    void guessedPicturesAreNotShown_data();
    void guessedPicturesAreNotShown();
    void guessedPicturesAreNotShownWhileAVideoIsWritten();
    void whatIsWholeBetweenDamageIsShown_data();
    void whatIsWholeBetweenDamageIsShown();

private:
    struct Good
    {
        int count = 0;
        int firstWrong = -1; // the first that is not as it was before the damage
    };

    QString path(const QString& name) const { return m_folder.filePath(name); }
    bool make(const QString& file, const QStringList& encoding) const
    {
        return runFfmpeg(QStringList{"-i", m_lossless} + encoding + QStringList{file});
    }
    bool makeToBeDamaged(const QString& name, const QStringList& encoding);
    QString damagedCopy(const QString& name, int place, std::mt19937& random);
    Good readGood(FrameSource& source) const;
    QList<int> damageEveryGroup(const QString& name);

    QTemporaryDir m_folder;
    QString m_lossless;           // 90 frames, 30 a second: what the files are made from
    std::vector<cv::Mat> m_whole; // the pictures of what is damaged, before that
};

void DamagedVideoTest::initTestCase()
{
    m_lossless = path("lossless.mkv");
    QVERIFY((TestVideo{90, "30", {160, 120}, 0, {"-c:v", "ffv1"}}.write(m_lossless)));
}

void DamagedVideoTest::damageCostsNoMoreThanItself_data()
{
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QString>("name");
    QTest::addColumn<double>("from"); // part of the file
    QTest::addColumn<int>("bytes");
    QTest::newRow("h264, a few bytes") << "h264"
                                       << "a.mp4" << 0.5 << 12;
    QTest::newRow("h264, many bytes") << "h264"
                                      << "a.mp4" << 0.4 << 20000;
    QTest::newRow("h264, at the end") << "h264"
                                      << "a.mp4" << 0.97 << 100000;
    QTest::newRow("h264, at the start") << "h264"
                                        << "a.mp4" << 0.05 << 4000;
    QTest::newRow("motion jpeg") << "mjpeg"
                                 << "a.avi" << 0.5 << 300;
    QTest::newRow("hevc") << "hevc"
                          << "a.mp4" << 0.5 << 2000;
    QTest::newRow("transport stream") << "h264"
                                      << "a.ts" << 0.5 << 3000;
}

void DamagedVideoTest::damageCostsNoMoreThanItself()
{
    QFETCH(QString, codec);
    QFETCH(QString, name);
    QFETCH(double, from);
    QFETCH(int, bytes);
    const QString file = path(name);
    QStringList encoding{"-c:v", "mjpeg", "-q:v", "3", "-pix_fmt", "yuvj420p"};
    if (codec == "h264")
        encoding = QStringList{"-c:v", "libx264", "-preset", "ultrafast", "-bf",
                               "3",    "-g",      "15",      "-pix_fmt",  "yuv420p"};
    else if (codec == "hevc")
        encoding = QStringList{"-c:v",     "libx265", "-preset",      "ultrafast",
                               "-pix_fmt", "yuv420p", "-x265-params", "log-level=none:keyint=15"};
    if (name.endsWith(".mp4"))
        encoding += QStringList{"-movflags", "+faststart"};
    QVERIFY(make(file, encoding));
    QFile damaged(file);
    QVERIFY(damaged.open(QIODevice::ReadWrite));
    const auto start = static_cast<qint64>(static_cast<double>(damaged.size()) * from);
    const qint64 count = std::min<qint64>(bytes, damaged.size() - start);
    QByteArray noise(static_cast<int>(count), '\0');
    std::mt19937 random(3);
    for (char& byte : noise)
        byte = static_cast<char>(random());
    QVERIFY(damaged.seek(start) && damaged.write(noise) == noise.size());
    damaged.close();

    // A transport stream loses packets whole: the frames that are left are numbered, and have
    // their own times.
    const auto numberOf = [&name](const Shown& shown) {
        return name.endsWith(".ts") ? static_cast<int>(std::lround(shown.timeMs * 30.0 / 1000.0))
                                    : shown.index;
    };
    const auto source = openVideo(file);
    QVERIFY(source);
    const int frames = source->frameCount();
    QVERIFY(frames > 30);
    int good = 0;
    int before = -1;
    for (Shown shown = readShown(*source); shown.index >= 0; shown = readShown(*source)) {
        QVERIFY(shown.index > before);
        QCOMPARE(shown.number, numberOf(shown));
        before = shown.index;
        ++good;
    }
    QCOMPARE(source->nextFrame(), frames);
    QVERIFY(good >= 30);
    // Every place answers a seek: itself, the next good frame, or the last one of all.
    for (int wanted = 0; wanted < frames; wanted += 7) {
        QVERIFY(source->seekToFrame(wanted));
        const Shown shown = readShown(*source);
        QVERIFY(shown.index >= wanted || shown.index == before);
        QCOMPARE(shown.number, numberOf(shown));
    }
}

// Makes the file that is damaged, and keeps its pictures.
bool DamagedVideoTest::makeToBeDamaged(const QString& name, const QStringList& encoding)
{
    // In a small picture a decoder may find nonsense that reaches to the end.
    if (!make(path(name), QStringList{"-vf", "scale=320:240"} + encoding))
        return false;
    m_whole.clear();
    const auto source = openVideo(path(name));
    for (cv::Mat picture; source && !(picture = readPicture(*source)).empty();)
        m_whole.push_back(picture);
    return m_whole.size() == 90;
}

// A copy of that file with 40 bytes of nonsense at one of several places.
QString DamagedVideoTest::damagedCopy(const QString& name, int place, std::mt19937& random)
{
    QFile original(path(name));
    if (!original.open(QIODevice::ReadOnly))
        return {};
    QByteArray bytes = original.readAll();
    const int start = static_cast<int>(bytes.size() * (0.15 + 0.7 * place / damagedPlaces));
    for (int i = start; i < start + 40; ++i)
        bytes[i] = static_cast<char>(random());
    const QString copy = path(QString("damaged%1.%2").arg(place).arg(QFileInfo(name).suffix()));
    QFile target(copy);
    if (!target.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        target.write(bytes) != bytes.size())
        return {};
    return copy;
}

// Reads a damaged copy to its end.
DamagedVideoTest::Good DamagedVideoTest::readGood(FrameSource& source) const
{
    Good good;
    Frame frame;
    while (source.read(frame) == ReadOutcome::frame) {
        const auto number = static_cast<size_t>(std::lround(frame.timeMs * 30.0 / 1000.0));
        cv::Mat picture;
        toBgr(frame, picture);
        const bool isRight =
            number < m_whole.size() && cv::norm(picture, m_whole[number], cv::NORM_INF) <= 1.0;
        if (!isRight && good.firstWrong < 0)
            good.firstWrong = static_cast<int>(number);
        ++good.count;
    }
    return good;
}

void DamagedVideoTest::guessedPicturesAreNotShown_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("encoding");
    const QStringList h264{"-c:v", "libx264", "-threads", "1",        "-preset",
                           "fast", "-g",      "18",       "-pix_fmt", "yuv420p"};
    QTest::newRow("h264") << "a.mp4" << h264 + QStringList{"-bf", "0"};
    QTest::newRow("h264, b-frames") << "a.mp4" << h264 + QStringList{"-bf", "2"};
    QTest::newRow("h264, b-frames of b-frames")
        << "a.mp4" << h264 + QStringList{"-bf", "7", "-x264-params", "b-pyramid=normal:b-adapt=0"};
    QTest::newRow("h264, slices") << "a.mkv"
                                  << h264 + QStringList{"-bf", "2", "-x264-params", "slices=3"};
    QTest::newRow("mpeg-4, b-frames")
        << "a.mp4" << QStringList{"-c:v", "mpeg4", "-bf", "2", "-q:v", "3", "-g", "18"};
}

// Where damage leaves a decoder a part of a picture, it guesses the rest, also in the pictures that
// are built on it.
void DamagedVideoTest::guessedPicturesAreNotShown()
{
    QFETCH(QString, name);
    QFETCH(QStringList, encoding);
    QVERIFY(makeToBeDamaged(name, encoding));
    std::mt19937 random(1);
    int lost = 0;
    for (int place = 0; place < damagedPlaces; ++place) {
        const auto source = openVideo(damagedCopy(name, place, random));
        QVERIFY(source);
        const Good good = readGood(*source);
        QCOMPARE(good.firstWrong, -1);
        QVERIFY(good.count >= 45);
        lost += 90 - good.count;
    }
    QVERIFY(lost >= damagedPlaces);
}

// With this in the environment the first writer of a process takes over what the library says.
void DamagedVideoTest::guessedPicturesAreNotShownWhileAVideoIsWritten()
{
    const QString name = "a.mp4";
    QVERIFY(makeToBeDamaged(name, {"-c:v", "libx264", "-threads", "1", "-preset", "fast", "-g",
                                   "18", "-pix_fmt", "yuv420p", "-bf", "7", "-x264-params",
                                   "b-pyramid=normal:b-adapt=0"}));
    std::mt19937 random(1);
    std::vector<std::unique_ptr<FrameSource>> sources;
    for (int place = 0; place < damagedPlaces; ++place) {
        sources.push_back(openVideo(damagedCopy(name, place, random)));
        QVERIFY(sources.back());
    }
    QVERIFY(qputenv("OPENCV_FFMPEG_LOGLEVEL", "-8"));
    const auto writer = systemVideoBackend()->openWriter(path("written.mp4"), 30.0, {320, 240});
    QVERIFY(writer);
    for (const auto& source : sources)
        QCOMPARE(readGood(*source).firstWrong, -1);
}

// Overwrites one packet of each group of pictures, now early and now late in it. Returns the
// numbers of the frames that come before it in its group, but for the packet right before, into
// which the damage could reach.
QList<int> DamagedVideoTest::damageEveryGroup(const QString& name)
{
    const QByteArray listed =
        outputOf("ffprobe", {"-v", "error", "-select_streams", "v:0", "-show_entries",
                             "packet=pts_time,size,pos,flags", "-of", "csv=p=0", path(name)});
    QFile file(path(name));
    if (!file.open(QIODevice::ReadWrite))
        return {};
    std::mt19937 random(2);
    QList<int> whole;
    int group = -1;
    int inGroup = 0;
    double firstSeconds = 0.0;
    for (const QByteArray& line : listed.split('\n')) {
        const QList<QByteArray> fields = line.split(',');
        if (fields.size() < 4)
            continue;
        const bool isKey = fields[3].startsWith('K');
        group += isKey ? 1 : 0;
        inGroup = isKey ? 0 : inGroup + 1;
        if (isKey && group == 0)
            firstSeconds = fields[0].toDouble();
        const int damaged = damagedInGroups[static_cast<size_t>(group) % damagedInGroups.size()];
        if (inGroup < damaged - 1)
            whole << static_cast<int>(std::lround((fields[0].toDouble() - firstSeconds) * 30.0));
        if (inGroup != damaged)
            continue;
        constexpr int kept = 8; // lengths and heads
        QByteArray noise(fields[1].toInt() - kept, '\0');
        for (char& byte : noise)
            byte = static_cast<char>(random());
        if (!file.seek(fields[2].toLongLong() + kept) || file.write(noise) != noise.size())
            return {};
    }
    return whole;
}

void DamagedVideoTest::whatIsWholeBetweenDamageIsShown_data()
{
    QTest::addColumn<QStringList>("encoding");
    const QStringList h264{"-c:v", "libx264", "-threads",      "1", "-preset",  "fast",
                           "-g",   "10",      "-sc_threshold", "0", "-pix_fmt", "yuv420p"};
    QTest::newRow("h264") << h264 + QStringList{"-bf", "0"};
    QTest::newRow("h264, b-frames") << h264 + QStringList{"-bf", "2"};
    QTest::newRow("h264, b-frames of b-frames")
        << h264 + QStringList{"-bf", "7", "-x264-params", "b-pyramid=normal:b-adapt=0"};
    QTest::newRow("mpeg-4, b-frames")
        << QStringList{"-c:v", "mpeg4", "-bf",    "2",     "-q:v",          "3",
                       "-g",   "10",    "-flags", "+cgop", "-sc_threshold", "1000000000"};
}

// In a file with damage in every group of pictures, what comes before the damage is shown.
void DamagedVideoTest::whatIsWholeBetweenDamageIsShown()
{
    QFETCH(QStringList, encoding);
    const QString name = "groups.mp4";
    QVERIFY(makeToBeDamaged(name, encoding));
    const QList<int> whole = damageEveryGroup(name);
    QVERIFY(whole.size() >= 20);
    const auto isWhole = [this](const Frame& frame) {
        cv::Mat picture;
        toBgr(frame, picture);
        return cv::norm(picture, m_whole[static_cast<size_t>(frame.index)], cv::NORM_INF) <= 1.0;
    };
    const auto source = openVideo(path(name));
    QVERIFY(source);
    QSet<int> shown;
    Frame frame;
    while (source->read(frame) == ReadOutcome::frame) {
        shown << frame.index;
        QVERIFY2(isWhole(frame), QByteArray::number(frame.index));
    }
    for (const int wanted : whole)
        QVERIFY2(shown.contains(wanted), QByteArray::number(wanted));
    for (const int wanted : whole) {
        QVERIFY(source->seekToTime(source->frameTimeMs(wanted)));
        QVERIFY(source->read(frame) == ReadOutcome::frame);
        QCOMPARE(frame.index, wanted);
        QVERIFY2(isWhole(frame), QByteArray::number(wanted));
    }
}

QTEST_GUILESS_MAIN(DamagedVideoTest)
#include "DamagedVideoTest.moc"
