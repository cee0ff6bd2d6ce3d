#pragma once

#include "SampleFlight/FlightCourse.h"
#include "SampleFlight/SolarPark.h"

#include <QString>
#include <QStringList>
#include <opencv2/core.hpp>
#include <vector>

class QDir;

namespace corv {

class FlightLogWriter;

/// What kind of flight to make. The defaults are the flight that a newcomer sees first, with a
/// number on each frame.
struct SampleFlightOptions
{
    double videoSeconds = 42.0; ///< of the whole flight, over all its files
    int secondsPerFile = 30;    ///< then the recorder begins the next one
    int thermalCamera = 30;     ///< 30 or 35; 0 for a drone without one
    int recordings = 1;         ///< in the log; the video is the last of them
    int losePartEvery = 0;      ///< every Nth part of a thermal frame is missing; 0 for none
    int spoilPacketEvery = 0;   ///< every Nth packet has a wrong checksum; 0 for none
    int cutTailBytes = 0;       ///< the log ends that much too early
    qint64 leastLogBytes = 0;   ///< the log runs on after the landing until it is that long
    bool numberFrames = true;   ///< each frame carries its number in the strip
    unsigned seed = 1;
};

/// The sample flight: an inspection of a solar park by a drone with a video camera and a thermal
/// one, as the drone would leave it on its card. Equal options make equal logs, byte for byte. It
/// also knows the truth, for tests to compare with: what is where in which picture.
class SampleFlight
{
public:
    static constexpr int frameRate = 30;
    static constexpr int videoCols = 1280;
    static constexpr int videoRows = 720;
    static constexpr quint32 stateRecordMs = 20; ///< one at every multiple of it
    static constexpr quint32 cameraRecordMs = 100;
    static constexpr quint32 landingMs = 14'000; ///< from the stop of the recording to the end

    explicit SampleFlight(const SampleFlightOptions& options = {});

    /// Writes videos, log and project into `folder`, which is made if need be. The files have the
    /// times that the drone gives them: each video the end of its recording, the log a later one.
    /// False if anything could not be written.
    bool writeCard(const QString& folder) const;
    bool writeLog(const QString& path) const;

    /// Where the card's files are in its folder.
    QStringList videoFiles() const;
    static QString logFile() { return QStringLiteral("FLIGHT01.LOG"); }
    static QString projectFile() { return QStringLiteral("sample.ecor"); }

    int frameCount() const;
    int videoDurationMs() const;

    /// The recordings of the log, in its milliseconds; the last one is the video.
    struct Recording
    {
        quint32 startMs;
        quint32 stopMs;
    };
    const std::vector<Recording>& recordings() const { return m_recordings; }

    /// Log time of the video's first frame.
    int logTimeOffset() const;

    /// The points of interest that the pilot set in flight, as the hot cell came past: in
    /// milliseconds of the video.
    std::vector<int> poisMs() const;

    /// The state of the drone at a moment of the log, as its records give it.
    struct State
    {
        float roll;
        float pitch;
        float yaw;
        float headingReference;
        float altitude;
        float altitudeReference;
        float cameraPitch;
    };
    State stateAt(quint32 logMs) const;

    /// One frame of the video (`CV_8UC3`), with its number in the strip if asked for.
    cv::Mat videoFrame(int index) const;

    /// The middle of the hot cell in the video frame of a moment, in pixels; it may lie outside.
    cv::Point2d hotCellInFrame(double videoMs) const;

    /// Where the mounting of the cameras puts the thermal picture in the video frame.
    static cv::Rect thermalPlace();

    /// Thermal frames by number, from `firstThermalFrame` on: the time in the log, the raw values
    /// (`CV_16UC1`), and the raw value of a temperature.
    static constexpr quint32 firstThermalFrame = 12;
    quint32 thermalTimeMs(quint32 frame) const;
    cv::Mat thermalFrame(quint32 frame) const;
    double rawValue(double degrees) const;

    static QString missionName() { return QStringLiteral("Solar park Lindenau"); }
    static QString flightName() { return QStringLiteral("Row survey"); }
    int flightNumber() const { return 2 + static_cast<int>(m_recordings.size()); }

private:
    struct PacketIds;

    FlightCourse::Pose poseAtLog(double logMs) const;
    int framesPerFile() const { return m_options.secondsPerFile * frameRate; }
    bool writeVideo(const QString& path, int firstFrame, int frames) const;
    bool setVideoTimes(const QDir& card) const;
    bool writeProject(const QString& path) const;
    PacketIds describe(FlightLogWriter& log) const;
    void writeEvents(FlightLogWriter& log, const PacketIds& ids, quint32 fromMs,
                     quint32 toMs) const;
    void writeNaming(FlightLogWriter& log, const PacketIds& ids, quint32 timeMs,
                     const QString& mission, const QString& flight, int number) const;
    void writeState(FlightLogWriter& log, const PacketIds& ids, quint32 timeMs) const;
    void writeThermalFrame(FlightLogWriter& log, const PacketIds& ids, quint32 frame) const;

    SampleFlightOptions m_options;
    std::vector<Recording> m_recordings;
    FlightCourse m_course;
    SolarPark m_park;
    cv::Mat m_vignette;
};

} // namespace corv
