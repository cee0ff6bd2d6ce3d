#pragma once

#include "Log/LogFile.h"
#include "Video/VideoDisplaySettings.h"

#include <memory>
#include <opencv2/core.hpp>
#include <vector>

namespace corv::test {

/// The thermal records of a log, as a test thinks of them: pixels in the machine's byte order.
struct ThermalLog
{
    struct Status
    {
        quint32 timeMs;
        quint32 counter;
    };
    struct Packet
    {
        quint32 counter;
        quint8 part;
        std::vector<quint16> pixels;
    };

    std::vector<Status> status;
    std::vector<Packet> packets;
    int wordsPerPacket = 4800;

    /// The decoded log that holds these records, with the pixels big-endian as a drone writes them.
    std::shared_ptr<LogFile> decoded() const;
};

/// The thermal overlay computed the slow way: every table by a linear search, every pixel by
/// itself. Shares no code with the program's.
class ThermalReference
{
public:
    explicit ThermalReference(ThermalLog log);

    quint32 frameCount() const { return static_cast<quint32>(m_timesMs.size()); }
    quint32 frameAt(qint32 logMs) const;

    /// Composes the frame of that moment over what was composed before.
    void compose(qint32 logMs);

    /// The overlay of the composed frame, drawn into a copy of `frame`.
    cv::Mat drawn(const cv::Mat& frame, const VideoDisplaySettings& settings,
                  bool invertColours) const;

    const std::vector<quint16>& composed() const { return m_frame; }

    /// Takes over the bands of parts that no frame has yet.
    void setComposed(const std::vector<quint16>& frame) { m_frame = frame; }

private:
    std::vector<cv::Vec3b> colours(const VideoDisplaySettings& settings, bool invertColours) const;

    ThermalLog m_log;
    std::vector<qint32> m_timesMs;
    std::vector<quint16> m_frame;
    std::vector<cv::Vec3b> m_palette;
};

} // namespace corv::test
