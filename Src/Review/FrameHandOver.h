#pragma once

#include <QImage>
#include <QTime>
#include <functional>
#include <memory>

namespace corv {

class VideoPlayer;

/// Brings frames of the video from its worker thread to the thread that made this object, as
/// thumbnails: a frame takes megabytes, and many may be on their way at once.
///
/// Made, used and destroyed on one thread. Frames that arrive after the end of this object are
/// dropped.
class FrameHandOver
{
public:
    FrameHandOver();
    ~FrameHandOver();
    FrameHandOver(const FrameHandOver&) = delete;
    FrameHandOver& operator=(const FrameHandOver&) = delete;

    /// Whether the warning about a frame that cannot be read names its time.
    enum class NullFrameWarning { withTime, withoutTime };

    /// Asks `player` for the frame at `time`. `store` runs with its thumbnail later, from the event
    /// loop of this object's thread; if there is no such frame (a warning) `missing` does. Returns
    /// false, and neither runs, if no video is open.
    bool request(VideoPlayer& player, QTime time, NullFrameWarning warning,
                 std::function<void(const QImage& thumbnail)> store,
                 std::function<void()> missing = {});

private:
    class Inbox;
    std::shared_ptr<Inbox> m_inbox;
};

} // namespace corv
