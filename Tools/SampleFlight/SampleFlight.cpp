#include "SampleFlight/SampleFlight.h"

#include "SampleFlight/frameStrip.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>

namespace corv {
namespace {

constexpr quint32 firstStartMs = 20'000;
constexpr quint32 pauseMs = 4000;

// The recorder's first frame comes this long after the logged start, and the logged stop this long
// after the last one.
constexpr int firstRecordingDelayMs = 690;
constexpr int laterRecordingDelayMs = 1279;
constexpr quint32 recorderExtraMs = 1000;

constexpr quint32 firstThermalMs = 3000;
constexpr quint32 thermalPeriodMs = 114;
// A frame is logged when it has been read out; seen from the video it is shown for the moment that
// lies half a period before, and that is what it shows.
constexpr double thermalDelayMs = 57.0;
constexpr int thermalCols = 160;
constexpr int thermalRows = 120;

constexpr double groundAltitudeM = 187.0;
constexpr double headingReference = 0.12;
constexpr double rowHeading = 1.466; // the rows run a little off east

const cv::Size videoSize(SampleFlight::videoCols, SampleFlight::videoRows);

std::vector<SampleFlight::Recording> recordingsOf(const SampleFlightOptions& options, int videoMs)
{
    std::vector<SampleFlight::Recording> recordings;
    quint32 startMs = firstStartMs;
    for (int i = 0; i + 1 < options.recordings; ++i) {
        const quint32 stopMs = startMs + 5000 + 1500 * (static_cast<quint32>(i) % 4);
        recordings.push_back({startMs, stopMs});
        startMs = stopMs + pauseMs;
    }
    recordings.push_back({startMs, startMs + static_cast<quint32>(videoMs) + recorderExtraMs});
    return recordings;
}

// The corners are a little darker, as through any small lens.
cv::Mat vignetteOf(cv::Size size)
{
    cv::Mat light(size, CV_8UC3);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const double dx = (x - size.width / 2.0) / size.width;
            const double dy = (y - size.height / 2.0) / size.width;
            const double value = 255.0 - 190.0 * std::pow(dx * dx + dy * dy, 1.2);
            light.at<cv::Vec3b>(y, x) = cv::Vec3b::all(cv::saturate_cast<uchar>(value));
        }
    }
    return light;
}

} // namespace

SampleFlight::SampleFlight(const SampleFlightOptions& options)
    : m_options(options), m_recordings(recordingsOf(options, videoDurationMs())),
      m_course(options.videoSeconds), m_park(options.seed), m_vignette(vignetteOf(videoSize))
{
}

int SampleFlight::frameCount() const
{
    return std::max(1, static_cast<int>(std::lround(m_options.videoSeconds * frameRate)));
}

int SampleFlight::videoDurationMs() const
{
    return static_cast<int>(frameCount() * 1000LL / frameRate);
}

int SampleFlight::logTimeOffset() const
{
    const int delay = m_recordings.size() == 1 ? firstRecordingDelayMs : laterRecordingDelayMs;
    return static_cast<int>(m_recordings.back().startMs) + delay;
}

std::vector<int> SampleFlight::poisMs() const
{
    std::vector<int> pois;
    for (double pass = FlightCourse::firstPassS; pass * 1000.0 < videoDurationMs();
         pass += FlightCourse::passPeriodS)
        pois.push_back(static_cast<int>(pass * 1000.0));
    return pois;
}

QStringList SampleFlight::videoFiles() const
{
    QStringList files;
    for (int first = 0; first < frameCount(); first += framesPerFile())
        files << QStringLiteral("DCIM/101_CORV/CORV%1.MOV")
                     .arg(files.size() + 1, 4, 10, QLatin1Char('0'));
    return files;
}

FlightCourse::Pose SampleFlight::poseAtLog(double logMs) const
{
    return m_course.poseAt((logMs - logTimeOffset()) / 1000.0);
}

SampleFlight::State SampleFlight::stateAt(quint32 logMs) const
{
    const FlightCourse::Pose state = poseAtLog(logMs - logMs % stateRecordMs);
    const FlightCourse::Pose camera = poseAtLog(logMs - logMs % cameraRecordMs);
    return {static_cast<float>(state.roll),
            static_cast<float>(state.pitch),
            static_cast<float>(rowHeading + headingReference + state.turn),
            static_cast<float>(headingReference),
            static_cast<float>(groundAltitudeM + state.altitudeM),
            static_cast<float>(groundAltitudeM),
            static_cast<float>(camera.cameraPitchDegrees)};
}

cv::Mat SampleFlight::videoFrame(int index) const
{
    const FlightCourse::Pose pose = m_course.poseAt(static_cast<double>(index) / frameRate);
    cv::Mat frame;
    cv::warpAffine(m_park.picture(), frame,
                   frameToPicture(pose, videoSize, SolarPark::origin(), SolarPark::pictureDensity),
                   videoSize, cv::INTER_LINEAR | cv::WARP_INVERSE_MAP, cv::BORDER_REPLICATE);
    cv::multiply(frame, m_vignette, frame, 1.0 / 255.0);
    if (m_options.numberFrames)
        drawFrameNumber(frame, index);
    return frame;
}

cv::Point2d SampleFlight::hotCellInFrame(double videoMs) const
{
    return pixelOfGround(m_course.poseAt(videoMs / 1000.0), videoSize, SolarPark::hotCell());
}

cv::Rect SampleFlight::thermalPlace()
{
    return {static_cast<int>(0.317 * videoCols), static_cast<int>(0.179 * videoRows),
            static_cast<int>(videoCols / 2.333), static_cast<int>(videoRows / 1.686)};
}

quint32 SampleFlight::thermalTimeMs(quint32 frame) const
{
    const quint32 jitterMs = (frame * 7 + m_options.seed) % 5;
    return firstThermalMs + (frame - firstThermalFrame) * thermalPeriodMs + jitterMs;
}

double SampleFlight::rawValue(double degrees) const
{
    // The newer camera measures in hundredths of a Kelvin, the older one on a scale of its own.
    return m_options.thermalCamera == 35 ? (degrees + 273.15) * 100.0
                                         : 7000.0 + (degrees - 10.0) * 30.0;
}

cv::Mat SampleFlight::thermalFrame(quint32 frame) const
{
    const FlightCourse::Pose pose = poseAtLog(thermalTimeMs(frame) - thermalDelayMs);
    const cv::Matx23d fromFrame =
        frameToPicture(pose, videoSize, SolarPark::origin(), SolarPark::temperatureDensity);
    const cv::Rect place = thermalPlace();
    const double stepX = static_cast<double>(place.width) / thermalCols;
    const double stepY = static_cast<double>(place.height) / thermalRows;
    // Pixel (c, r) looks at the middle of the block that it covers in the frame.
    const double x = place.x + stepX / 2.0;
    const double y = place.y + stepY / 2.0;
    const cv::Matx23d fromThermal(fromFrame(0, 0) * stepX, fromFrame(0, 1) * stepY,
                                  fromFrame(0, 0) * x + fromFrame(0, 1) * y + fromFrame(0, 2),
                                  fromFrame(1, 0) * stepX, fromFrame(1, 1) * stepY,
                                  fromFrame(1, 0) * x + fromFrame(1, 1) * y + fromFrame(1, 2));
    cv::Mat degrees;
    cv::warpAffine(m_park.temperature(), degrees, fromThermal, {thermalCols, thermalRows},
                   cv::INTER_LINEAR | cv::WARP_INVERSE_MAP, cv::BORDER_REPLICATE);
    cv::Mat noise(degrees.size(), CV_32FC1);
    cv::RNG random((static_cast<quint64>(m_options.seed) << 32) + frame + 1);
    random.fill(noise, cv::RNG::NORMAL, 0.0, 0.15);
    degrees += noise;
    cv::Mat raw;
    const double scale = rawValue(1.0) - rawValue(0.0);
    degrees.convertTo(raw, CV_16U, scale, rawValue(0.0));
    return raw;
}

bool SampleFlight::writeVideo(const QString& path, int firstFrame, int frames) const
{
    cv::VideoWriter writer(path.toStdString(), cv::CAP_FFMPEG,
                           cv::VideoWriter::fourcc('m', 'p', '4', 'v'), frameRate, videoSize);
    if (!writer.isOpened())
        return false;
    for (int i = 0; i < frames; ++i)
        writer.write(videoFrame(firstFrame + i));
    return true;
}

bool SampleFlight::writeCard(const QString& folder) const
{
    const QDir card(folder);
    if (!card.mkpath(QStringLiteral("DCIM/101_CORV")))
        return false;
    int first = 0;
    for (const QString& file : videoFiles()) {
        const int frames = std::min(framesPerFile(), frameCount() - first);
        if (!writeVideo(card.filePath(file), first, frames))
            return false;
        first += frames;
    }
    return writeLog(card.filePath(logFile())) && setVideoTimes(card) &&
           writeProject(card.filePath(projectFile()));
}

// Files are paired by these times. Those of the writing depend on how fast the machine is.
bool SampleFlight::setVideoTimes(const QDir& card) const
{
    const QDateTime logTime = QFileInfo(card.filePath(logFile())).lastModified();
    int endFrame = 0;
    for (const QString& name : videoFiles()) {
        endFrame = std::min(endFrame + framesPerFile(), frameCount());
        const int restMs = (frameCount() - endFrame) * 1000 / frameRate;
        QFile file(card.filePath(name));
        if (!file.open(QIODevice::ReadWrite) ||
            !file.setFileTime(logTime.addMSecs(-qint64(landingMs) - restMs),
                              QFileDevice::FileModificationTime))
            return false;
    }
    return true;
}

bool SampleFlight::writeProject(const QString& path) const
{
    QJsonArray pois;
    int number = 0;
    for (const int timeMs : poisMs()) {
        pois.append(QJsonObject{
            {QStringLiteral("time"), timeMs},
            {QStringLiteral("name"), QStringLiteral("Hot cell, pass %1").arg(++number)},
            {QStringLiteral("comment"),
             QStringLiteral("Middle row, fourth cell of the seventh line. Bypass diode conducting; "
                            "replace the panel.")}});
    }
    const QJsonObject properties{
        {QStringLiteral("correction"), QJsonObject{{QStringLiteral("log_offset"), 0}}},
        {QStringLiteral("display"),
         QJsonObject{{QStringLiteral("brightness"), 0.0}, {QStringLiteral("contrast"), 1.0}}},
        {QStringLiteral("thermal_video"),
         QJsonObject{{QStringLiteral("align_offset_x"), 0.0},
                     {QStringLiteral("align_offset_y"), 0.0},
                     {QStringLiteral("colormap_auto"), false},
                     {QStringLiteral("colormap_min"), std::round(rawValue(15.0))},
                     {QStringLiteral("colormap_max"), std::round(rawValue(75.0))},
                     {QStringLiteral("translucent"), true},
                     {QStringLiteral("visible"), true}}},
        {QStringLiteral("designation"),
         QJsonObject{{QStringLiteral("mission_name"), missionName()},
                     {QStringLiteral("flight_name"), flightName()},
                     {QStringLiteral("flight_number"), flightNumber()}}}};
    const QJsonObject files{{QStringLiteral("video"), videoFiles().first()},
                            {QStringLiteral("log"), logFile()}};
    const QJsonObject flight{{QStringLiteral("files"), files},
                             {QStringLiteral("properties"), properties},
                             {QStringLiteral("poi"), pois}};
    const QJsonObject project{
        {QStringLiteral("format_ver"), QStringLiteral("1.0")},
        {QStringLiteral("contents"), QJsonObject{{QStringLiteral("flights"), QJsonArray{flight}}}}};
    QFile file(path);
    const QByteArray json = QJsonDocument(project).toJson();
    return file.open(QIODevice::WriteOnly) && file.write(json) == json.size();
}

} // namespace corv
