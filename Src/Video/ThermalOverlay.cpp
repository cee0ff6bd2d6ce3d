#include "Video/ThermalOverlay.h"

#include "Video/logCategory.h"
#include "Video/thermalPicture.h"

#include <QCoreApplication>
#include <QtDebug>
#include <algorithm>

namespace corv {
namespace {

QString text(const char* source)
{
    return QCoreApplication::translate("ThermalOverlay", source);
}

// A var that may be read as T: an array of another width would be read past its end.
template <typename T>
bool holds(const LogVar* var)
{
    return var->holds<T>() && var->getNb() > 0;
}

// Packets carry equal parts of a frame, and no more than one.
bool isPartOfFrame(const LogVar* image)
{
    return holds<quint16>(image) && image->getNb() <= thermalPixels &&
           thermalPixels % image->getNb() == 0;
}

} // namespace

ThermalOverlay::ThermalOverlay() : m_irFrame(cv::Mat::zeros(thermalRows, thermalCols, CV_16UC1))
{
    clear();
}

void ThermalOverlay::clear()
{
    m_frameTimes.clear();
    m_parts.clear();
    m_irImages.release();
    m_lastRefusal = Refusal::None;
    m_status = Failure{Failure::Kind::notPossible, text("No log is open.")};
}

bool ThermalOverlay::isActive() const
{
    return m_frameTimes.frameCount() != 0 && m_clock &&
           m_clock->synced.load(std::memory_order_relaxed);
}

void ThermalOverlay::updateLogData(bool hasParser, const std::shared_ptr<const LogFile>& log)
{
    clear();
    if (!hasParser) {
        qCWarning(lcVideo) << "No log parser";
        return;
    }
    if (!log) {
        qCWarning(lcVideo) << "No log file";
        return;
    }
    bool usable = false;
    try {
        usable = readLog(*log);
    } catch (const std::exception& error) {
        qCWarning(lcVideo) << "No memory for the thermal frames:" << error.what();
        clear();
        m_status = Failure{Failure::Kind::noMemory,
                           text("There is too little memory for the thermal pictures of the log.")};
        return;
    }
    if (!usable) {
        qCWarning(lcVideo) << "Thermal frames of the log cannot be used";
        clear();
        m_status = Failure{Failure::Kind::damaged,
                           text("The thermal pictures of the log cannot be used.")};
    } else if (m_frameTimes.frameCount() == 0) {
        m_status = Failure{Failure::Kind::notFound, text("The log holds no thermal pictures.")};
    } else {
        m_status = {};
    }
}

bool ThermalOverlay::readLog(const LogFile& log)
{
    const LogGroup* video = log.getGroup("lepton_video");
    const LogGroup* status = log.getGroup("lepton_status");
    if (!video || !status)
        return true;
    const LogVar* times = status->getVar("time");
    const LogVar* counters = status->getVar("frame_counter");
    const LogVar* image = video->getVar("image");
    const LogVar* part = video->getVar("image_part");
    const LogVar* frame = video->getVar("frame_counter");
    if (!times || !counters || !image || !part || !frame)
        return true;
    if (!holds<quint32>(times) || !holds<quint32>(counters) || !holds<quint8>(part) ||
        !holds<quint32>(frame) || !isPartOfFrame(image))
        return false;

    // Groups with an id in common can leave their vars with different counts: only rows that all
    // of them have are read.
    const int records = std::min(times->getNbPackets(), counters->getNbPackets());
    if (!m_frameTimes.rebuild(times->column<quint32>().data(), counters->column<quint32>().data(),
                              records))
        return false;

    const int words = image->getNb();
    const int packets = image->getNbPackets();
    m_irPartsPerFrame = static_cast<quint32>(thermalPixels / words);
    m_parts.rebuild(
        frame->column<quint32>().data(), part->column<quint8>().data(),
        static_cast<quint32>(std::min({packets, part->getNbPackets(), frame->getNbPackets()})),
        m_irPartsPerFrame);
    if (packets > 0) {
        // Column 0 is the start of the whole block.
        m_irImages.create(packets, words, CV_16UC1);
        packetsInMachineOrder(image->column<quint16>().data(), words, packets,
                              m_irImages.ptr<quint16>());
    }
    return true;
}

void ThermalOverlay::composeFrame(quint32 frame)
{
    const quint32 rows = thermalRows / m_irPartsPerFrame;
    for (quint32 part = 0; part < m_irPartsPerFrame && rows > 0; ++part) {
        // What was composed before can be of any moment: after a jump back, of a later one.
        const auto packet = m_parts.newestPacket(frame, static_cast<quint8>(part));
        if (!packet)
            continue;
        // The product wraps at 32 bits; a smaller offset is never past the end.
        const quint32 offset = *packet * static_cast<quint32>(thermalPixels) / m_irPartsPerFrame;
        std::copy_n(m_irImages.ptr<quint16>() + offset, rows * thermalCols,
                    m_irFrame.ptr<quint16>(static_cast<int>(part * rows)));
    }
}

void ThermalOverlay::drawThermalOverlay(cv::Mat& frame, int timeMs,
                                        const VideoDisplaySettings& settings, bool invertColours)
{
    draw(frame, {0, 0}, frame.size(), timeMs, settings, invertColours);
}

void ThermalOverlay::drawOnPart(cv::Mat& part, cv::Point origin, cv::Size frame, int timeMs,
                                const VideoDisplaySettings& settings)
{
    draw(part, origin, frame, timeMs, settings, false);
}

void ThermalOverlay::draw(cv::Mat& part, cv::Point origin, cv::Size frame, int timeMs,
                          const VideoDisplaySettings& settings, bool invertColours)
{
    if (!isActive())
        return;
    try {
        composeFrame(m_frameTimes.frameAt(logTimeOfVideo(timeMs, *m_clock)));
        warnOnce(layOverFrame(part, origin, frame, settings, invertColours));
    } catch (const cv::Exception& error) {
        qCWarning(lcVideo) << "Thermal overlay given up:" << error.what();
    }
}

std::optional<ThermalScale> ThermalOverlay::scale(cv::Size frame,
                                                  const VideoDisplaySettings& settings) const
{
    const cv::Rect place = thermalRectangle(frame, settings);
    const bool isDrawn = settings.showIR && isActive() &&
                         (m_lastRefusal == Refusal::None || m_lastRefusal == Refusal::Rectangle);
    if (!isDrawn || (place & cv::Rect({0, 0}, frame)).empty())
        return std::nullopt;
    ThermalScale scale{settings.irPalette, settings.irMappingMinValue, settings.irMappingMaxValue};
    if (settings.autoIRMapping)
        cv::minMaxLoc(m_irFrame, &scale.lowest, &scale.highest);
    return scale;
}

std::shared_ptr<const ThermalReading>
ThermalOverlay::reading(cv::Size frame, const VideoDisplaySettings& settings) const
{
    const std::optional<ThermalScale> shown = scale(frame, settings);
    if (!shown)
        return nullptr;
    return std::make_shared<const ThermalReading>(m_irFrame, thermalRectangle(frame, settings),
                                                  frame, *shown);
}

ThermalOverlay::Refusal ThermalOverlay::layOverFrame(cv::Mat& part, cv::Point origin,
                                                     cv::Size frame,
                                                     const VideoDisplaySettings& settings,
                                                     bool invertColours) const
{
    const cv::Rect place = thermalRectangle(frame, settings);
    if (part.type() != CV_8UC3 || place.empty())
        return Refusal::Frame;
    cv::Mat colours;
    if (!colourThermalFrame(m_irFrame, settings, invertColours, colours))
        return Refusal::Mapping;
    layOver(part, colours, place - origin, settings.irOverlayTransparent && !settings.fullScreenIR);
    const bool inside = (place & cv::Rect({0, 0}, frame)) == place;
    return inside ? Refusal::None : Refusal::Rectangle;
}

void ThermalOverlay::warnOnce(Refusal refusal)
{
    if (refusal == m_lastRefusal)
        return;
    m_lastRefusal = refusal;
    switch (refusal) {
    case Refusal::None:
        break;
    case Refusal::Frame:
        qCWarning(lcVideo) << "No place for the thermal overlay in the frame";
        break;
    case Refusal::Mapping:
        qCWarning(lcVideo) << "No thermal overlay: its colours are mapped to an empty range";
        break;
    case Refusal::Rectangle:
        qCWarning(lcVideo) << "Thermal overlay reaches beyond the frame";
        break;
    }
}

void ThermalOverlay::reportRange(VideoDisplaySettings& settings, const RangeReport& report) const
{
    if (!isActive())
        return;
    double min = 0.0;
    double max = 0.0;
    cv::minMaxLoc(m_irFrame, &min, &max);
    if (min == settings.irDataMin && max == settings.irDataMax)
        return;
    settings.irDataMin = min;
    settings.irDataMax = max;
    report(min, max);
}

} // namespace corv
