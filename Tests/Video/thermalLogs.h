#pragma once

#include "Support/ThermalReference.h"
#include "Video/ThermalOverlay.h"

namespace corv::test {

/// For those who ask for no report of the range.
const ThermalOverlay::RangeReport noReport;

/// A clock that knows the offset between the video and its log.
inline std::shared_ptr<FlightClock> clockAt(int logTimeOffset)
{
    auto clock = std::make_shared<FlightClock>();
    clock->logTimeOffset = logTimeOffset;
    clock->synced = true;
    return clock;
}

/// The overlay switched on, and nothing else changed.
inline VideoDisplaySettings shown(bool autoMapping = true)
{
    VideoDisplaySettings settings;
    settings.showIR = true;
    settings.autoIRMapping = autoMapping;
    return settings;
}

inline std::vector<quint16> pixels(int words, quint16 value)
{
    return std::vector<quint16>(static_cast<size_t>(words), value);
}

/// Frames 0 to `frames` - 1, one each 114 ms from 1000 ms on, in `parts` parts whose pixels all
/// hold 1000 * frame + part.
inline ThermalLog plainLog(quint32 frames, int parts)
{
    ThermalLog log;
    log.wordsPerPacket = thermalPixels / parts;
    for (quint32 f = 0; f < frames; ++f) {
        log.status.push_back({1000 + 114 * f, f});
        for (int p = 0; p < parts; ++p) {
            const auto value = static_cast<quint16>(1000 * f + static_cast<quint32>(p));
            log.packets.push_back({f, static_cast<quint8>(p), pixels(log.wordsPerPacket, value)});
        }
    }
    return log;
}

inline cv::Mat randomFrame(int cols, int rows, unsigned seed)
{
    cv::Mat frame(rows, cols, CV_8UC3);
    cv::RNG random(seed);
    random.fill(frame, cv::RNG::UNIFORM, 0, 256);
    return frame;
}

inline bool equal(const cv::Mat& a, const cv::Mat& b)
{
    return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0.0;
}

/// The composed thermal frame in the middle of a row.
inline quint16 thermalAt(const ThermalOverlay& overlay, int row)
{
    return overlay.thermalFrame().at<quint16>(row, 80);
}

inline LogVar* varOf(LogFile& log, const char* group, const char* var)
{
    return log.getGroup(std::string(group))->getVar(var);
}

} // namespace corv::test
