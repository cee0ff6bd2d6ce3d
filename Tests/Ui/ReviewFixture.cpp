#include "ReviewFixture.h"

#include "Support/LogBuilder.h"

#include <QDir>
#include <QFile>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>

namespace corv::test {
namespace {

constexpr int videoMs = 6000;
constexpr int framesPerSecond = 25;

bool writeVideo(const QString& path)
{
    const cv::Size size(320, 240);
    cv::VideoWriter writer(path.toStdString(), cv::VideoWriter::fourcc('m', 'p', '4', 'v'),
                           framesPerSecond, size);
    for (int index = 0; index < videoMs * framesPerSecond / 1000; ++index) {
        cv::Mat frame(size, CV_8UC3, cv::Scalar(90, 120, 70));
        cv::circle(frame, cv::Point(20 + index * 2, 120), 18, cv::Scalar(40, 200, 240), -1);
        writer.write(frame);
    }
    return writer.isOpened();
}

constexpr quint32 start = 10'000;
constexpr quint32 firstFrame = start + 690;

// Two frames, each a slope from left to right.
void addThermal(LogBuilder& log)
{
    constexpr int columns = 160;
    constexpr int lines = 120;
    log.addGroup("lepton_status", 7, {{"time", "UINT32", 1}, {"frame_counter", "UINT32", 1}});
    log.addGroup("lepton_video", 8,
                 {{"frame_counter", "UINT32", 1},
                  {"image_part", "UINT8", 1},
                  {"image", "UINT16", columns * lines}});
    for (quint32 frame = 0; frame < 2; ++frame) {
        QByteArray line;
        for (int x = 0; x < columns; ++x) {
            const int value = 7000 + 1000 * static_cast<int>(frame) + x;
            line.append(static_cast<char>(value >> 8)).append(static_cast<char>(value & 0xff));
        }
        log.addPacket(7, LogBuilder::u32(firstFrame + 1000 * (frame + 1)) + LogBuilder::u32(frame));
        log.addPacket(8, LogBuilder::u32(frame) + LogBuilder::u8(0) + line.repeated(lines));
    }
}

bool writeLog(const QString& path, quint32 recordingMs, int leptonType = -1,
              bool hasInstruments = false, bool hasThermal = false)
{
    LogBuilder log;
    log.addGroup("mobius_start_rec", 1, {{"mobius_start_rec", "UINT32", 1}});
    log.addGroup("mobius_stop_rec", 2, {{"mobius_stop_rec", "UINT32", 1}});
    log.addGroup("mission_info", 3,
                 {{"time", "UINT32", 1},
                  {"mission_name", "STRING", 16},
                  {"flight_name", "STRING", 16},
                  {"flight_number", "UINT8", 1}});
    log.addGroup("point_of_interest", 4, {{"point_of_interest", "UINT32", 1}});
    log.addGroup("lepton_info", 5, {{"lepton_type", "UINT8", 1}});
    log.addPacket(1, LogBuilder::u32(start));
    if (leptonType >= 0)
        log.addPacket(5, LogBuilder::u8(static_cast<unsigned>(leptonType)));
    log.addPacket(3, LogBuilder::u32(5000) + LogBuilder::text("Bridge", 16) +
                         LogBuilder::text("North pier", 16) + LogBuilder::u8(7));
    log.addPacket(4, LogBuilder::u32(firstFrame + 1000));
    log.addPacket(4, LogBuilder::u32(firstFrame + 3000));
    log.addPacket(2, LogBuilder::u32(start + recordingMs));
    if (hasInstruments) {
        log.addGroup("camera_cmd", 6, {{"time", "UINT32", 1}, {"servo_angle", "FLOAT", 1}});
        log.addPacket(6, LogBuilder::u32(firstFrame) + LogBuilder::f32(-30));
    }
    if (hasThermal)
        addThermal(log);
    return log.save(path);
}

} // namespace

const FlightMedia& FlightMedia::instance()
{
    static const FlightMedia media;
    return media;
}

FlightMedia::FlightMedia()
    : m_video(m_folder.filePath("CORV video ü.mp4")), m_log(m_folder.filePath("flight ü.log")),
      m_otherLog(m_folder.filePath("other.log")), m_brokenLog(m_folder.filePath("broken.log"))
{
    QFile broken(m_brokenLog);
    const bool made = writeVideo(m_video) && writeLog(m_log, videoMs + 1000) &&
                      writeLog(m_otherLog, videoMs * 10) && broken.open(QIODevice::WriteOnly) &&
                      broken.write("no log at all") > 0;
    if (!made)
        qFatal("cannot make the media of the test flight");
}

QString FlightMedia::logWithInstruments() const
{
    const QString path = m_folder.filePath("instruments.log");
    return writeLog(path, videoMs + 1000, -1, true) ? path : QString();
}

QString FlightMedia::logWithThermal() const
{
    const QString path = m_folder.filePath("thermal.log");
    return writeLog(path, videoMs + 1000, -1, false, true) ? path : QString();
}

QString FlightMedia::logOfCamera(int leptonType) const
{
    const QString path = newFolder() + "/camera.log";
    if (!writeLog(path, videoMs + 1000, leptonType))
        qFatal("cannot make a log");
    return path;
}

QString FlightMedia::newFolder() const
{
    static int number = 0;
    const QString path = m_folder.filePath(QString("work %1").arg(++number));
    QDir().mkpath(path);
    return path;
}

bool ReviewFixture::openVideo()
{
    call("loadVideo", {FlightMedia::instance().video()});
    return QTest::qWaitFor([this] { return hasVideo(); });
}

bool ReviewFixture::importLog(const QString& path)
{
    call("afterFlightDataImportChoice", {QUrl::fromLocalFile(path)});
    return QTest::qWaitFor([this] { return !evaluate("LogParser.isParsing").toBool(); });
}

QStringList ReviewFixture::poiNames() const
{
    QStringList names;
    const QVariantList all = evaluate("timelineContent.getPOIs()").toList();
    for (const QVariant& poi : all)
        names.append(poi.toMap().value("name").toString());
    return names;
}

bool ReviewFixture::selectPoiAt(int timeMs)
{
    evaluate(QString("timelineContent.setPOIsFromList([{time: %1, name: 'Crack', comment: ''}])")
                 .arg(timeMs));
    QQuickItem* strip = item("timelineContent");
    // The flag takes the width of its thumbnail, which arrives from the video.
    return QTest::qWaitFor([this, strip, timeMs] {
        const double x = timeMs / evaluate("timelineContent.msPerPx").toDouble() -
                         evaluate("timelineContent.contentX").toDouble();
        const QPoint flag = strip->mapToScene(QPointF(x + 4, 60)).toPoint();
        QTest::mouseMove(window(), flag - QPoint(1, 0));
        QTest::mouseMove(window(), flag);
        QTest::mouseClick(window(), Qt::LeftButton, Qt::NoModifier, flag);
        return !evaluate("isNaN(timelineContent.selectedPoiTime)").toBool();
    });
}

QQuickItem* ReviewFixture::showAdjustments()
{
    find("tabsContainer")->setProperty("currentIndex", 1);
    const bool shown =
        QTest::qWaitFor([this] { return item("adjustmentsTabContents") != nullptr; });
    return shown ? item("adjustmentsTabContents") : nullptr;
}

} // namespace corv::test
