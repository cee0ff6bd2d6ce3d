#include "Support/ThermalReference.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace corv::test {
namespace {

constexpr int cols = 160;
constexpr int rows = 120;

quint16 bigEndian(quint16 word)
{
    return static_cast<quint16>((word & 0xff) * 256 + word / 256);
}

std::vector<qint32> frameTimes(const std::vector<ThermalLog::Status>& status)
{
    const int n = static_cast<int>(status.size());
    const auto c = [&status](int i) { return status[static_cast<size_t>(i)].counter; };
    quint32 count = 0;
    if (n - 1 > 0) {
        int i = n - 1;
        for (;;) {
            count = c(i);
            if (c(i) == c(i - 1) + 1 || i == 1)
                break;
            --i;
        }
    }
    count += 1;
    quint32 first = 0;
    int index = 0;
    while (index < n - 1) {
        first = c(index);
        if (first == c(index + 1) - 1)
            break;
        ++index;
    }
    std::vector<qint32> times(count, 0);
    quint32 time = 0;
    for (quint32 f = first; f < count; ++f) {
        time += 114;
        for (int i = index; i < n; ++i) {
            if (c(i) == f) {
                time = status[static_cast<size_t>(i)].timeMs;
                index = i;
                break;
            }
        }
        times[f] = static_cast<qint32>(time);
    }
    return times;
}

double rounded(double value)
{
    return std::nearbyint(value); // halves to even
}

} // namespace

std::shared_ptr<LogFile> ThermalLog::decoded() const
{
    auto log = std::make_shared<LogFile>();
    log->addGroup("lepton_status", 1);
    log->addGroup("lepton_video", 2);
    LogGroup* statusGroup = log->getGroup("lepton_status");
    for (const char* name : {"time", "frame_counter"})
        statusGroup->addVar(name);
    LogGroup* videoGroup = log->getGroup("lepton_video");
    for (const char* name : {"image", "image_part", "frame_counter"})
        videoGroup->addVar(name);

    const int records = static_cast<int>(status.size());
    LogVar* time = statusGroup->getVar("time");
    LogVar* counter = statusGroup->getVar("frame_counter");
    time->allocate(1, records, LogVar::Uint32);
    counter->allocate(1, records, LogVar::Uint32);
    for (int i = 0; i < records; ++i) {
        time->setU32(0, i, status[static_cast<size_t>(i)].timeMs);
        counter->setU32(0, i, status[static_cast<size_t>(i)].counter);
    }
    const int count = static_cast<int>(packets.size());
    LogVar* image = videoGroup->getVar("image");
    LogVar* part = videoGroup->getVar("image_part");
    LogVar* frame = videoGroup->getVar("frame_counter");
    image->allocate(wordsPerPacket, count, LogVar::Uint16);
    part->allocate(1, count, LogVar::Uint8);
    frame->allocate(1, count, LogVar::Uint32);
    for (int row = 0; row < count; ++row) {
        const Packet& packet = packets[static_cast<size_t>(row)];
        part->setU8(0, row, packet.part);
        frame->setU32(0, row, packet.counter);
        for (int k = 0; k < wordsPerPacket; ++k)
            image->setU16(k, row, bigEndian(packet.pixels[static_cast<size_t>(k)]));
    }
    return log;
}

ThermalReference::ThermalReference(ThermalLog log)
    : m_log(std::move(log)), m_timesMs(frameTimes(m_log.status)), m_frame(cols * rows, 0)
{
    cv::Mat ramp(1, 256, CV_8UC1);
    for (int i = 0; i < 256; ++i)
        ramp.at<uchar>(0, i) = static_cast<uchar>(i);
    cv::Mat colours;
    cv::applyColorMap(ramp, colours, cv::COLORMAP_JET);
    for (int i = 0; i < 256; ++i)
        m_palette.push_back(colours.at<cv::Vec3b>(0, i));
}

quint32 ThermalReference::frameAt(qint32 logMs) const
{
    const quint32 count = frameCount();
    for (quint32 f = 0; f + 1 < count; ++f) {
        if (logMs < m_timesMs[f])
            return f;
    }
    return count - 1;
}

void ThermalReference::compose(qint32 logMs)
{
    const quint32 f = frameAt(logMs);
    const int parts = cols * rows / m_log.wordsPerPacket;
    const int bandRows = rows / parts;
    for (int p = 0; p < parts; ++p) {
        const ThermalLog::Packet* newest = nullptr;
        for (const ThermalLog::Packet& packet : m_log.packets) {
            if (packet.counter <= f && packet.part == p &&
                (!newest || packet.counter > newest->counter))
                newest = &packet;
        }
        for (int i = 0; newest && i < bandRows * cols; ++i)
            m_frame[static_cast<size_t>(p * bandRows * cols + i)] =
                newest->pixels[static_cast<size_t>(i)];
    }
}

std::vector<cv::Vec3b> ThermalReference::colours(const VideoDisplaySettings& settings,
                                                 bool invertColours) const
{
    double low = settings.irMappingMinValue;
    double high = settings.irMappingMaxValue;
    if (settings.autoIRMapping) {
        low = *std::min_element(m_frame.begin(), m_frame.end());
        high = *std::max_element(m_frame.begin(), m_frame.end());
    }
    std::vector<cv::Vec3b> result;
    for (const quint16 raw : m_frame) {
        const double spread = low == high ? 0.0 : rounded((raw - low) * (65535.0 / (high - low)));
        const double mapped = std::clamp(spread, 0.0, 65535.0);
        const double reduced = invertColours ? 256.0 - mapped / 256.0 : mapped / 256.0;
        result.push_back(m_palette[static_cast<size_t>(std::clamp(rounded(reduced), 0.0, 255.0))]);
    }
    return result;
}

cv::Mat ThermalReference::drawn(const cv::Mat& frame, const VideoDisplaySettings& settings,
                                bool invertColours) const
{
    int left = 0;
    int top = 0;
    int width = frame.cols;
    int height = frame.rows;
    if (!settings.fullScreenIR) {
        left = static_cast<int>((settings.irOffsetX + double(0.317F)) * frame.cols);
        top = static_cast<int>((settings.irOffsetY + double(0.179F)) * frame.rows);
        width = static_cast<int>(float(frame.cols) / 2.333F);
        height = static_cast<int>(float(frame.rows) / 1.686F);
    }
    const std::vector<cv::Vec3b> coloured = colours(settings, invertColours);
    cv::Mat result = frame.clone();
    for (int y = 0; y < frame.rows; ++y) {
        for (int x = 0; x < frame.cols; ++x) {
            if (x < left || y < top || x >= left + width || y >= top + height)
                continue;
            const int column = static_cast<int>((x - left) * (1.0 / (double(width) / cols)));
            const int row = static_cast<int>((y - top) * (1.0 / (double(height) / rows)));
            const int index = std::min(row, rows - 1) * cols + std::min(column, cols - 1);
            const cv::Vec3b colour = coloured[static_cast<size_t>(index)];
            cv::Vec3b& pixel = result.at<cv::Vec3b>(y, x);
            for (int i = 0; i < 3; ++i) {
                const bool half = settings.irOverlayTransparent && !settings.fullScreenIR;
                pixel[i] =
                    half ? static_cast<uchar>(rounded((pixel[i] + colour[i]) / 2.0)) : colour[i];
            }
        }
    }
    return result;
}

} // namespace corv::test
