#include "Bench.h"

#include "Log/LogParser.h"
#include "Timeline/HeadUpDisplay.h"
#include "Timeline/TimelineContent.h"
#include "Timeline/timelineGeometry.h"
#include "Video/VideoPlayer.h"

#include <QAbstractVideoSurface>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QPainter>
#include <QTimer>
#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>

namespace corv::bench {
namespace {

constexpr unsigned recordingStartMs = 10000;
constexpr unsigned videoStartMs = recordingStartMs + 690; // the first recording's fixed delay

QByteArray bytesOf(const void* value, int size)
{
    return QByteArray(static_cast<const char*>(value), size);
}

QByteArray u32(quint32 value)
{
    return bytesOf(&value, 4);
}

QByteArray f32(float value)
{
    return bytesOf(&value, 4);
}

struct Var
{
    const char* name;
    const char* type;
    int nb;
};

// Writes a log with one recording, and whatever groups and packets are added.
class LogWriter
{
public:
    explicit LogWriter(unsigned durationMs)
    {
        addGroup("mobius_start_rec", 1, {{"mobius_start_rec", "UINT32", 1}});
        addGroup("mobius_stop_rec", 2, {{"mobius_stop_rec", "UINT32", 1}});
        addPacket(1, u32(recordingStartMs));
        addPacket(2, u32(recordingStartMs + 1000 + durationMs));
    }

    void addGroup(const char* name, int id, const std::vector<Var>& vars)
    {
        m_groups += QStringLiteral("<group><id>%1</id><name>%2</name>").arg(id).arg(name).toUtf8();
        for (const Var& var : vars) {
            m_groups += QStringLiteral("<var><name>%1</name><type>%2</type><nb>%3</nb></var>")
                            .arg(var.name, var.type)
                            .arg(var.nb)
                            .toUtf8();
        }
        m_groups += "</group>";
    }

    void addPacket(int id, const QByteArray& payload)
    {
        const int size = payload.size();
        const char head[] = {'\x86', '\x37', static_cast<char>(id), static_cast<char>(size >> 8),
                             static_cast<char>(size & 0xff)};
        m_packets.append(head, 5).append(payload);
        unsigned sum = 0;
        for (const char byte : payload)
            sum += static_cast<unsigned char>(byte);
        m_packets.append(static_cast<char>(sum & 0xffU));
    }

    void save(const QString& path) const
    {
        QFile file(path);
        if (file.open(QIODevice::WriteOnly)) {
            file.write("<main><log_version>1</log_version><groups>" + m_groups +
                       "</groups></main>\n" + m_packets);
        }
    }

private:
    QByteArray m_groups;
    QByteArray m_packets;
};

// Runs the event loop until `done` says so; gives up after a minute.
void runUntil(const std::function<bool()>& done)
{
    QElapsedTimer clock;
    clock.start();
    while (!done() && clock.elapsed() < 60000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
}

void parse(LogParser& parser, const QString& path, int durationMs)
{
    parser.setDuration(timeOfMs(durationMs));
    bool complete = false;
    QObject::connect(&parser, &LogParser::logParsingComplete, [&complete] { complete = true; });
    parser.parseLog(path, true);
    runUntil([&complete] { return complete; });
    parser.disconnect();
}

// --- Head-up display -------------------------------------------------------------------------

constexpr int flightMs = 2 * 60 * 60 * 1000;
constexpr int stateIntervalMs = 20;

QString twoHourLog(const QString& folder)
{
    const QString path = folder + QStringLiteral("/two-hours-50Hz.log");
    if (QFile::exists(path))
        return path;
    LogWriter log(flightMs);
    log.addGroup("state_estimation", 3,
                 {{"time", "UINT32", 1},
                  {"euler_angles", "FLOAT", 3},
                  {"heading_reference", "FLOAT", 1},
                  {"altitude", "FLOAT", 1},
                  {"altitude_telem_ref", "FLOAT", 1}});
    log.addGroup("camera_cmd", 4, {{"time", "UINT32", 1}, {"servo_angle", "FLOAT", 1}});
    for (int ms = 0; ms <= flightMs; ms += stateIntervalMs) {
        const QByteArray time = u32(videoStartMs + static_cast<unsigned>(ms));
        // The same values throughout, so that both pictures are the same work.
        log.addPacket(3, time + f32(0.1F) + f32(-0.2F) + f32(1.0F) + f32(0.0F) + f32(120.0F) +
                             f32(20.0F));
        log.addPacket(4, time + f32(-30.0F));
    }
    log.save(path);
    return path;
}

void benchHud(Report& report)
{
    LogParser parser;
    parse(parser, twoHourLog(report.inputFolder()), flightMs);
    HeadUpDisplay hud;
    hud.setSize(QSizeF(170, 500));
    hud.setLogParser(&parser);
    hud.updateLogData();
    QImage image(170, 500, QImage::Format_ARGB32_Premultiplied);
    const auto paintAt = [&](int ms) {
        hud.setVideoPosition(timeOfMs(ms));
        for (int paint = 0; paint < 100; ++paint) {
            QPainter painter(&image);
            hud.paint(&painter);
        }
    };
    const double ratio = timeRatio([&] { paintAt(flightMs - 1); }, [&] { paintAt(1000); }, 9);
    report.row(QStringLiteral("head-up display, end of flight / start"), ratio, 1.2,
               QStringLiteral("two hours at 50 Hz, 170x500"));
}

// --- Timeline --------------------------------------------------------------------------------

// Answers requests for frames by itself, at once.
class InstantPlayer : public VideoPlayer
{
public:
    bool getFrameAsync(QTime, std::function<void(const QImage&)> callback) override
    {
        QImage frame(640, 360, QImage::Format_RGB888);
        frame.fill(Qt::darkGreen);
        callback(frame);
        return true;
    }
};

void setMarks(TimelineContent& timeline, int firstMs, int lastMs, int stepMs)
{
    QVariantList list;
    for (int ms = firstMs; ms <= lastMs; ms += stepMs)
        list.append(QVariantMap{{QStringLiteral("time"), ms},
                                {QStringLiteral("name"), QStringLiteral("mark")}});
    timeline.setPOIsFromList(list);
    QCoreApplication::sendPostedEvents();
}

void benchPaint(Report& report)
{
    // 10 ms per pixel: 16 s of 1600 in view, a mark every 0.8 s.
    InstantPlayer player;
    TimelineContent all;
    TimelineContent inView;
    for (TimelineContent* timeline : {&all, &inView}) {
        timeline->setVideoPlayer(&player);
        timeline->setSize(QSizeF(1600, 120));
        timeline->setDuration(timeOfMs(1600000));
        timeline->setContentWidth(160120);
        timeline->setContentX(80000);
    }
    setMarks(all, 0, 1599999, 800);
    setMarks(inView, 800000, 815999, 800);
    QImage image(1600, 120, QImage::Format_ARGB32_Premultiplied);
    const auto paint = [&image](TimelineContent& timeline) {
        for (int round = 0; round < 20; ++round) {
            QPainter painter(&image);
            timeline.paint(&painter);
        }
    };
    const double ratio = timeRatio([&] { paint(all); }, [&] { paint(inView); }, 9);
    report.row(QStringLiteral("timeline paint, 2000 marks / the 20 in view"), ratio, 1.5,
               QStringLiteral("1600x120, marks every 80 px"));
}

// --- Marks of a log while a video plays ------------------------------------------------------

constexpr int videoFps = 30;
constexpr int videoFrames = 900;
constexpr int videoMs = videoFrames * 1000 / videoFps;
constexpr int markCount = 500;

QString testVideo(const QString& folder)
{
    const QString path = folder + QStringLiteral("/timeline-720p.mp4");
    if (QFile::exists(path))
        return path;
    cv::VideoWriter writer(path.toStdString(), cv::VideoWriter::fourcc('m', 'p', '4', 'v'),
                           videoFps, cv::Size(1280, 720));
    cv::Mat frame(720, 1280, CV_8UC3);
    for (int index = 0; index < videoFrames; ++index) {
        frame.setTo(cv::Scalar(index % 256, 90, 200 - index % 128));
        cv::circle(frame, {index * 7 % 1280, 360}, 120, {255, 255, 255}, cv::FILLED);
        writer.write(frame);
    }
    return path;
}

QString markedLog(const QString& folder)
{
    const QString path = folder + QStringLiteral("/timeline-marks.log");
    if (QFile::exists(path))
        return path;
    LogWriter log(videoMs);
    log.addGroup("point_of_interest", 3, {{"point_of_interest", "UINT32", 1}});
    for (unsigned mark = 0; mark < markCount; ++mark)
        log.addPacket(3, u32(videoStartMs + mark * videoMs / markCount));
    log.save(path);
    return path;
}

class CountingSurface : public QAbstractVideoSurface
{
public:
    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType) const override
    {
        return {QVideoFrame::Format_YUV420P};
    }
    bool present(const QVideoFrame&) override
    {
        ++presented;
        return true;
    }
    int presented = 0;
};

// Runs `start` and then the event loop for `forMs`. The longest time in milliseconds for which the
// loop could not answer, as a timer of 1 ms notices it.
double longestHoldMs(const std::function<void()>& start, int forMs)
{
    QElapsedTimer sinceBeat;
    double longest = 0;
    QTimer heartbeat;
    heartbeat.setTimerType(Qt::PreciseTimer);
    QObject::connect(&heartbeat, &QTimer::timeout, [&] {
        longest = std::max(longest, static_cast<double>(sinceBeat.nsecsElapsed()) / 1e6);
        sinceBeat.start();
    });
    QEventLoop loop;
    QTimer::singleShot(forMs, &loop, &QEventLoop::quit);
    sinceBeat.start();
    heartbeat.start(1);
    start();
    loop.exec();
    return longest;
}

void benchMarksWhilePlaying(Report& report)
{
    LogParser parser;
    parse(parser, markedLog(report.inputFolder()), videoMs);
    CountingSurface surface;
    VideoPlayer player;
    player.setVideoSurface(&surface);
    player.setSource(testVideo(report.inputFolder()));
    runUntil([&] { return surface.presented > 0; });
    TimelineContent timeline;
    timeline.setSize(QSizeF(1600, 120));
    timeline.setLogParser(&parser);
    timeline.setVideoPlayer(&player);
    timeline.setDuration(player.duration());
    timeline.setContentWidth(1720);

    constexpr int windowMs = 3000;
    const auto presentedDuring = [&](const std::function<void()>& start, double* holdMs) {
        player.seekAtFrame(0);
        const int before = surface.presented;
        runUntil([&] { return surface.presented > before; });
        player.play();
        runUntil([&] { return surface.presented > before + 5; });
        const int first = surface.presented;
        *holdMs = longestHoldMs(start, windowMs);
        player.pause();
        return surface.presented - first;
    };
    // The longest of anything is at the mercy of whatever else the machine does: three tries.
    std::vector<double> holdsMs;
    std::vector<double> shares;
    for (int round = 0; round < 3; ++round) {
        double holdMs = 0;
        const int alone = presentedDuring([] {}, &holdMs);
        timeline.clearAllData();
        const int beside = presentedDuring([&] { timeline.updateLogData(); }, &holdMs);
        holdsMs.push_back(holdMs);
        shares.push_back(static_cast<double>(beside) / std::max(alone, 1));
        runUntil([&] { return timeline.getPOIs().size() == markCount; });
    }
    std::sort(holdsMs.begin(), holdsMs.end());
    std::sort(shares.begin(), shares.end());
    const QString input = QStringLiteral("%1 marks, 720p at 30 fps").arg(markCount);
    report.row(QStringLiteral("marks of a log: longest hold / 50 ms"), holdsMs[1] / 50, 1, input);
    report.row(QStringLiteral("marks of a log: frames presented / without"), shares[1], 0.6, input,
               false);
}

const Benchmark hud("hud", benchHud);
const Benchmark paint("timelinePaint", benchPaint);
const Benchmark marks("timelineMarks", benchMarksWhilePlaying);

} // namespace
} // namespace corv::bench
