#pragma once

#include "Log/LogParser.h"
#include "Support/LogBuilder.h"
#include "Timeline/TimelineContent.h"
#include "Video/VideoPlayer.h"

#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <QtTest>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

namespace corv::test {

/// Log time of the first frame of a video whose recording is the first of `recordingLog`.
constexpr int videoStartInLogMs = 10690;

inline QTime timeAt(int ms)
{
    return QTime(0, 0, 0, 0).addMSecs(ms);
}

/// A frame of one colour.
inline QImage frameOf(const QColor& colour, const QSize& size = QSize(640, 360))
{
    QImage frame(size, QImage::Format_RGB888);
    frame.fill(colour);
    return frame;
}

/// A player that decodes nothing: it keeps the requests for frames, and the test answers them, each
/// from another thread like the worker's.
class FramePlayer : public VideoPlayer
{
public:
    struct Request
    {
        QTime time;
        std::function<void(const QImage&)> callback;
    };

    bool getFrameAsync(QTime time, std::function<void(const QImage&)> callback) override
    {
        requests.push_back({time, std::move(callback)});
        return true;
    }

    bool getPreviewAsync(QTime time, std::function<void(const QImage&)> callback) override
    {
        return getFrameAsync(time, std::move(callback));
    }

    /// Takes the oldest request and answers it, on a thread of its own. The effects are queued;
    /// `deliver` runs them.
    void answer(const QImage& frame) { answerNth(0, frame); }

    void answerNth(size_t n, const QImage& frame)
    {
        const Request request = std::move(requests.at(n));
        requests.erase(requests.begin() + static_cast<std::ptrdiff_t>(n));
        std::thread([&request, &frame] { request.callback(frame); }).join();
    }

    void answerAll(const QImage& frame)
    {
        while (!requests.empty())
            answer(frame);
    }

    std::vector<QTime> requestedTimes() const
    {
        std::vector<QTime> times;
        for (const Request& request : requests)
            times.push_back(request.time);
        return times;
    }

    std::vector<Request> requests;
};

/// Runs what has been posted to the thread of the test.
inline void deliver()
{
    QCoreApplication::sendPostedEvents();
}

/// What the item paints, on a ground that it never paints itself.
template <typename Item>
QImage painted(Item& item)
{
    QImage image(item.boundingRect().size().toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    item.paint(&painter);
    return image;
}

/// A log whose first recording fits a video of `durationMs`; groups and packets can be added.
inline LogBuilder recordingLog(int durationMs)
{
    LogBuilder log;
    log.addGroup("mobius_start_rec", 1, {{"mobius_start_rec", "UINT32", 1}});
    log.addGroup("mobius_stop_rec", 2, {{"mobius_stop_rec", "UINT32", 1}});
    log.addPacket(1, LogBuilder::u32(10000));
    log.addPacket(2, LogBuilder::u32(11000U + static_cast<unsigned>(durationMs)));
    return log;
}

/// Decodes `log` with `parser` for a video of `durationMs`; false if that failed.
inline bool parse(LogParser& parser, const LogBuilder& log, int durationMs)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("flight.log"));
    if (!log.save(path))
        return false;
    parser.setDuration(timeAt(durationMs));
    QSignalSpy complete(&parser, &LogParser::logParsingComplete);
    return parser.parseLog(path, true) && (!complete.isEmpty() || complete.wait(20000)) &&
           complete.first().first().toBool();
}

} // namespace corv::test
