#include "Video/ThermalOverlay.h"

#include "Video/thermalPicture.h"

#include <QtDebug>
#include <algorithm>

namespace corv {
namespace {

// Column 0 of a var whose elements are as wide as T; null for a var of another width, without
// columns or without rows.
template <typename T>
T* columnOf(LogVar* var)
{
    void* column = nullptr;
    if (var->getElementSize() == static_cast<int>(sizeof(T)) && var->getNb() > 0 &&
        var->getNbPackets() > 0)
        var->getColumn(0, &column);
    return static_cast<T*>(column);
}

// A var that may be read as T: an array of another width would be read past its end.
template <typename T>
bool holds(LogVar* var)
{
    return var->getElementSize() == static_cast<int>(sizeof(T)) && var->getNb() > 0;
}

// Packets carry equal parts of a frame, and no more than one.
bool isPartOfFrame(LogVar* image)
{
    return holds<quint16>(image) && image->getNb() <= thermalPixels &&
           thermalPixels % image->getNb() == 0;
}

} // namespace

ThermalOverlay::ThermalOverlay() : m_irFrame(cv::Mat::zeros(thermalRows, thermalCols, CV_16UC1)) {}

void ThermalOverlay::clear()
{
    m_frameTimes.clear();
    m_parts.clear();
    m_irImages.release();
    m_lastRefusal = Refusal::None;
}

bool ThermalOverlay::isActive() const
{
    return m_frameTimes.frameCount() != 0 && m_clock &&
           m_clock->synced.load(std::memory_order_relaxed);
}

void ThermalOverlay::updateLogData(bool hasParser, const std::shared_ptr<LogFile>& log)
{
    clear();
    if (!hasParser) {
        qWarning() << "No log parser";
        return;
    }
    if (!log) {
        qWarning() << "No log file";
        return;
    }
    bool usable = false;
    try {
        usable = readLog(*log);
    } catch (const std::exception& error) {
        qWarning() << "No memory for the thermal frames:" << error.what();
        clear();
        return;
    }
    if (!usable) {
        qWarning() << "Thermal frames of the log cannot be used";
        clear();
    }
}

bool ThermalOverlay::readLog(LogFile& log)
{
    LogGroup* video = log.getGroup("lepton_video");
    LogGroup* status = log.getGroup("lepton_status");
    if (!video || !status)
        return true;
    LogVar* times = status->getVar("time");
    LogVar* counters = status->getVar("frame_counter");
    LogVar* image = video->getVar("image");
    LogVar* part = video->getVar("image_part");
    LogVar* frame = video->getVar("frame_counter");
    if (!times || !counters || !image || !part || !frame)
        return true;
    if (!holds<quint32>(times) || !holds<quint32>(counters) || !holds<quint8>(part) ||
        !holds<quint32>(frame) || !isPartOfFrame(image))
        return false;

    // Groups with an id in common can leave their vars with different counts: only rows that all
    // of them have are read.
    const int records = std::min(times->getNbPackets(), counters->getNbPackets());
    if (!m_frameTimes.rebuild(columnOf<quint32>(times), columnOf<quint32>(counters), records))
        return false;

    const int words = image->getNb();
    const int packets = image->getNbPackets();
    m_irPartsPerFrame = static_cast<quint32>(thermalPixels / words);
    m_parts.rebuild(
        columnOf<quint32>(frame), columnOf<quint8>(part),
        static_cast<quint32>(std::min({packets, part->getNbPackets(), frame->getNbPackets()})),
        m_irPartsPerFrame);
    if (auto* block = columnOf<quint16>(image)) {
        m_irImages.create(packets, words, CV_16UC1);
        swapBytesAndTranspose(block, words, packets, m_irImages.ptr<quint16>());
    }
    return true;
}

void ThermalOverlay::composeFrame(quint32 frame)
{
    const quint32 rows = thermalRows / m_irPartsPerFrame;
    for (quint32 part = 0; part < m_irPartsPerFrame && rows > 0; ++part) {
        const auto packet = m_parts.firstPacket(frame, static_cast<quint8>(part));
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
    if (!isActive())
        return;
    try {
        composeFrame(m_frameTimes.frameAt(logTimeOfVideo(timeMs, *m_clock)));
        warnOnce(layOverFrame(frame, settings, invertColours));
    } catch (const cv::Exception& error) {
        qWarning() << "Thermal overlay given up:" << error.what();
    }
}

ThermalOverlay::Refusal ThermalOverlay::layOverFrame(cv::Mat& frame,
                                                     const VideoDisplaySettings& settings,
                                                     bool invertColours) const
{
    const cv::Rect place = thermalRectangle(frame.size(), settings);
    if (frame.type() != CV_8UC3 || place.empty())
        return Refusal::Frame;
    cv::Mat colours;
    if (!colourThermalFrame(m_irFrame, settings, invertColours, colours))
        return Refusal::Mapping;
    layOver(frame, colours, place, settings.irOverlayTransparent && !settings.fullScreenIR);
    const bool inside = (place & cv::Rect({0, 0}, frame.size())) == place;
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
        qWarning() << "No place for the thermal overlay in the frame";
        break;
    case Refusal::Mapping:
        qWarning() << "No thermal overlay: its colours are mapped to an empty range";
        break;
    case Refusal::Rectangle:
        qWarning() << "Thermal overlay reaches beyond the frame";
        break;
    }
}

bool ThermalOverlay::changesPictures(const VideoDisplaySettings& settings) const
{
    return changesContrastOrBrightness(settings.contrast, settings.brightness) ||
           (settings.showIR && isActive());
}

void ThermalOverlay::applyPictureEffects(cv::Mat& frame, int timeMs, VideoDisplaySettings& settings,
                                         bool invertColours, const RangeReport& report)
{
    try {
        applyContrastAndBrightness(frame, settings.contrast, settings.brightness);
    } catch (const cv::Exception& error) {
        qWarning() << "Contrast and brightness given up:" << error.what();
    }
    if (report)
        reportRange(settings, report);
    if (settings.showIR)
        drawThermalOverlay(frame, timeMs, settings, invertColours);
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
