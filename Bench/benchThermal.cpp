#include "Bench.h"
#include "Video/ThermalOverlay.h"
#include "Video/pictureEffects.h"
#include "Video/thermalPicture.h"

#include <cstdlib>
#include <cstring>
#include <opencv2/imgproc.hpp>

namespace corv::bench {
namespace {

constexpr int partsPerFrame = 4;
constexpr int wordsPerPart = thermalPixels / partsPerFrame;
constexpr int periodMs = 114;
const cv::Size fullHd(1920, 1080);

// A decoded log with that many image packets and the status records of their frames.
std::shared_ptr<LogFile> thermalLog(int packets)
{
    auto log = std::make_shared<LogFile>();
    log->addGroup("lepton_status", 1);
    log->addGroup("lepton_video", 2);
    LogGroup* status = log->getGroup(1);
    for (const char* name : {"time", "frame_counter"}) {
        status->addVar(name);
        status->getVars().back().allocate(1, packets / partsPerFrame, LogVar::Uint32);
    }
    for (int frame = 0; frame < packets / partsPerFrame; ++frame) {
        status->getVar("time")->setU32(0, frame, static_cast<quint32>(frame * periodMs));
        status->getVar("frame_counter")->setU32(0, frame, static_cast<quint32>(frame));
    }
    LogGroup* video = log->getGroup(2);
    for (const char* name : {"image", "image_part", "frame_counter"})
        video->addVar(name);
    LogVar* image = video->getVar("image");
    image->allocate(wordsPerPart, packets, LogVar::Uint16);
    LogVar* part = video->getVar("image_part");
    part->allocate(1, packets, LogVar::Uint8);
    LogVar* counter = video->getVar("frame_counter");
    counter->allocate(1, packets, LogVar::Uint32);
    auto* words = reinterpret_cast<quint16*>(image->block());
    for (size_t i = 0; i < image->getDataSize() / 2; ++i)
        words[i] = static_cast<quint16>(7000 + i * 40503 % 2500);
    for (int row = 0; row < packets; ++row) {
        part->setU8(0, row, static_cast<quint8>(row % partsPerFrame));
        counter->setU32(0, row, static_cast<quint32>(row / partsPerFrame));
    }
    return log;
}

struct Drawing
{
    explicit Drawing(int packets) : frames(packets / partsPerFrame)
    {
        const auto clock = std::make_shared<FlightClock>();
        clock->synced = true;
        overlay.setClock(clock);
        overlay.updateLogData(true, thermalLog(packets));
        settings.showIR = true;
        settings.autoIRMapping = true;
        settings.irOverlayTransparent = true;
    }

    // Draws the overlay of moments all over the log.
    void draw()
    {
        for (int i = 0; i < 40; ++i)
            overlay.drawThermalOverlay(picture, i * 7919 % frames * periodMs, settings, false);
    }

    int frames;
    ThermalOverlay overlay;
    VideoDisplaySettings settings;
    cv::Mat picture = cv::Mat(fullHd, CV_8UC3, cv::Scalar(90, 120, 60));
};

void overlayOfLongLogs(Report& report)
{
    Drawing few(1000);
    Drawing many(100'000);
    report.row(QStringLiteral("overlay, 100,000 packets"),
               timeRatio([&many] { many.draw(); }, [&few] { few.draw(); }, 9), 1.2,
               QStringLiteral("the same on 1,000, 1080p"));
}

void allEffects(Report& report)
{
    Drawing drawing(1000);
    drawing.settings.contrast = 1.1;
    drawing.settings.brightness = 5.0;
    const cv::Rect place = thermalRectangle(fullHd, drawing.settings);
    cv::Mat small(thermalRows, thermalCols, CV_8UC1, cv::Scalar(100));
    const auto bare = [&] {
        cv::Mat colours;
        cv::Mat enlarged;
        for (int i = 0; i < 40; ++i) {
            drawing.picture.convertTo(drawing.picture, -1, 1.1, 5.0);
            cv::applyColorMap(small, colours, cv::COLORMAP_JET);
            cv::resize(colours, enlarged, place.size(), 0.0, 0.0, cv::INTER_NEAREST);
            cv::Mat region = drawing.picture(place);
            cv::addWeighted(enlarged, 0.5, region, 0.5, 0.0, region);
        }
    };
    const auto effects = [&drawing] {
        for (int i = 0; i < 40; ++i)
            applyPictureEffects(drawing.overlay, drawing.picture, i * periodMs, drawing.settings,
                                false, [](double, double) {});
    };
    report.row(QStringLiteral("all effects and overlay"), timeRatio(effects, bare, 9), 1.25,
               QStringLiteral("convertTo + applyColorMap + resize + addWeighted, 1080p"));
}

void tablesOfALongLog(Report& report)
{
    const auto log = thermalLog(64'000);
    LogVar* image = log->getGroup(2)->getVar("image");
    ThermalOverlay overlay;
    const auto rebuild = [&] { overlay.updateLogData(true, log); };
    const auto copyTwice = [image] {
        for (int i = 0; i < 2; ++i) {
            void* fresh = std::malloc(image->getDataSize());
            if (!fresh)
                return;
            std::memcpy(fresh, image->getData(), image->getDataSize());
            // The copy must not be left out because nobody reads it.
            asm volatile("" : : "r"(fresh) : "memory");
            std::free(fresh);
        }
    };
    report.row(QStringLiteral("updateLogData of the worker, 614 MB"),
               timeRatio(rebuild, copyTwice, 3), 1.5,
               QStringLiteral("two memcpy into fresh memory"));
}

const Benchmark overlay("overlay", overlayOfLongLogs);
const Benchmark effects("effects", allEffects);
const Benchmark tables("thermal-tables", tablesOfALongLog);

} // namespace
} // namespace corv::bench
