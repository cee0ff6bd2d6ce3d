#pragma once

#include "Base/Result.h"
#include "Log/LogFile.h"
#include "Log/clocks.h"
#include "Video/ThermalReading.h"
#include "Video/ThermalScale.h"
#include "Video/VideoDisplaySettings.h"
#include "Video/thermalTables.h"

#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <optional>

namespace corv {

/// Rebuilds the pictures of the thermal camera from the flight log and lays the one that belongs to
/// a video frame over it. Owned by `OpenCvWorker` and used on its thread alone.
///
/// Nothing that a log or a setting holds makes it throw: what cannot be drawn is logged once in the
/// diagnostics and left out.
class ThermalOverlay
{
public:
    using RangeReport = std::function<void(double min, double max)>;

    ThermalOverlay();

    /// The clock that ties video and log together; null while there is no log parser.
    void setClock(std::shared_ptr<const FlightClock> clock) { m_clock = std::move(clock); }

    /// Replaces the tables by those of `log`, which is not kept. Without parser, log or the groups
    /// needed there is no overlay.
    void updateLogData(bool hasParser, const std::shared_ptr<const LogFile>& log);

    /// Drops the tables. The frame composed last stays: its bands replace parts that the next
    /// log has lost.
    void clear();

    /// Whether the log has thermal frames, or why there are none.
    const Status& status() const { return m_status; }

    /// Whether there are thermal frames and the log is synchronised with the video.
    bool isActive() const;

    /// Compares the range of the thermal frame composed last, for the video frame before, with
    /// `irDataMin` and `irDataMax` of the settings; if it differs, stores both and reports them.
    void reportRange(VideoDisplaySettings& settings, const RangeReport& report) const;

    /// The overlay alone, on a part of a frame of `frame` pixels that begins at `origin`.
    void drawOnPart(cv::Mat& part, cv::Point origin, cv::Size frame, int timeMs,
                    const VideoDisplaySettings& settings);

    /// The overlay alone, on a frame of type `CV_8UC3`; nothing unless `isActive()`.
    void drawThermalOverlay(cv::Mat& frame, int timeMs, const VideoDisplaySettings& settings,
                            bool invertColours);

    /// What the colours of the overlay mean that was drawn last, on a frame of this size; none
    /// unless it was drawn and lies in the frame.
    std::optional<ThermalScale> scale(cv::Size frame, const VideoDisplaySettings& settings) const;

    /// What the overlay of a frame of this size, drawn last, says of its places; null unless it was
    /// drawn and lies in the frame.
    std::shared_ptr<const ThermalReading> reading(cv::Size frame,
                                                  const VideoDisplaySettings& settings) const;

    /// The thermal frame composed last, in raw values; zeros before the first. A part that the log
    /// lacks is that of the newest frame before that has it, however the moment was come to; where
    /// there is none, it is left as it was.
    const cv::Mat& thermalFrame() const { return m_irFrame; }

private:
    /// What kept the last overlay from being drawn, wholly or in part.
    enum class Refusal { None, Frame, Mapping, Rectangle };

    bool readLog(const LogFile& log);
    void composeFrame(quint32 frame);
    Refusal layOverFrame(cv::Mat& part, cv::Point origin, cv::Size frame,
                         const VideoDisplaySettings& settings, bool invertColours) const;
    void draw(cv::Mat& part, cv::Point origin, cv::Size frame, int timeMs,
              const VideoDisplaySettings& settings, bool invertColours);
    void warnOnce(Refusal refusal);

    std::shared_ptr<const FlightClock> m_clock;
    ThermalFrameTimes m_frameTimes;
    ThermalPartIndex m_parts;
    cv::Mat m_irImages; // one row per packet
    quint32 m_irPartsPerFrame = 0;
    cv::Mat m_irFrame;
    Refusal m_lastRefusal = Refusal::None;
    Status m_status;
};

} // namespace corv
