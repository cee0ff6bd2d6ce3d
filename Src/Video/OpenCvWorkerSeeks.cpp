#include "Video/OpenCvWorker.h"

#include "Base/arithmetic.h"
#include "Base/videoTime.h"
#include "Video/logCategory.h"

#include <QDebug>
#include <algorithm>
#include <utility>

namespace corv {
namespace {

// A picture that takes longer than this is not worth waiting for without a preview.
constexpr double patienceMs = 100.0;

// How long a newer wish may have to wait for an older one to give way.
constexpr double strideMs = 40.0;

// A wish by time, or its repetition after a preview: others of the kind may follow soon. Steps are
// not, which come one by one and fill the source's memory of frames on their way.
bool isOfAPointer(const SeekWish& wish)
{
    return wish.steps == 0 && wish.from != SeekWish::From::frame;
}

// How far back a step looks for a frame that is not lost, in groups of pictures.
constexpr int mostGroupsBack = 20;

} // namespace

void OpenCvWorker::seekAtTime(QTime time)
{
    const int ms = msOfTime(time);
    if (ms == m_lastFrameTimeMs && !m_lastFrame.isNull()) {
        answerSeek(renderLastFrame(FrameUse::seekResult));
        return;
    }
    const int file = m_timeline.fileForSeek(ms);
    if (file < 0) {
        qCWarning(lcVideo) << "Seek at time" << time << "out of bounds";
        return;
    }
    leaveFileFor(file);
    VideoFileEntry& entry = current();
    const double lastStart = entry.durationMs - truncateToInt(1000.0 / entry.fps);
    const double fileMs = std::max(std::min(ms - entry.startMs, lastStart), 0.0);
    entry.capture->seekToTime(fileMs);
    answerSeek(produceFrame(FrameUse::seekResult));
}

void OpenCvWorker::seekAtFrameIndex(int index)
{
    if (index == m_lastFrameIndex && !m_lastFrame.isNull()) {
        answerSeek(renderLastFrame(FrameUse::seekResult));
        return;
    }
    const int file = m_timeline.fileForFrame(index);
    if (file < 0) {
        qCWarning(lcVideo) << "Seek frame index " << index
                           << "out of bounds:" << m_timeline.totalFrames();
        return;
    }
    leaveFileFor(file);
    VideoFileEntry& entry = current();
    // Below 0 first: the distance of two ints can be more than an int holds.
    const int local = std::max(index, entry.firstFrameIndex) - entry.firstFrameIndex;
    entry.capture->seekToFrame(std::min(local, entry.frameCount - 1));
    answerSeek(produceFrame(FrameUse::seekResult));
}

// A seek on the timeline is never left without an answer, or no other would be taken.
void OpenCvWorker::answerSeek(Produced produced)
{
    if (produced != Produced::frame)
        postToClient([opening = m_opening](WorkerClient& client) { client.onSeekFailed(opening); });
}

void OpenCvWorker::serveWish(const SeekWish& wish)
{
    WishOutcome outcome = WishOutcome::failed;
    if (!m_timeline.isEmpty()) {
        m_wishedFrame = placeOf(wish);
        if (wish.mayPreview && showPreview(m_wishedFrame))
            outcome = WishOutcome::previewed;
        else if (isOfAPointer(wish) && !approach(m_wishedFrame))
            outcome = WishOutcome::overtaken;
        else if (goToFrame(m_wishedFrame, FrameUse::seekResult) == Produced::frame)
            outcome = WishOutcome::shown;
        if (outcome == WishOutcome::shown && wish.steps < 0 && m_lastFrameIndex > m_wishedFrame)
            passLostFrames();
        if (outcome == WishOutcome::failed)
            returnToLastFrame();
    }
    postToClient([opening = m_opening, outcome](WorkerClient& client) {
        client.onWishServed(opening, outcome);
    });
}

// After a wish that failed, playback goes on behind the frame that is on screen.
void OpenCvWorker::returnToLastFrame()
{
    if (m_lastFrame.isNull())
        return;
    const int file = m_timeline.fileOfFrame(m_lastFrameIndex);
    VideoFileEntry& entry = m_timeline.entry(file);
    if (m_currentSource != file) {
        leaveFileFor(file);
        postToClient([opening = m_opening, path = entry.file](WorkerClient& client) {
            client.onCurrentFile(opening, path);
        });
    }
    entry.capture->seekToFrame(m_lastFrameIndex + 1 - entry.firstFrameIndex);
}

int OpenCvWorker::placeOf(const SeekWish& wish) const
{
    qint64 frame = wish.value;
    if (wish.from == SeekWish::From::time)
        frame = m_timeline.frameAtTime(wish.value);
    else if (wish.from == SeekWish::From::lastWish)
        frame = m_wishedFrame;
    return static_cast<int>(
        std::clamp<qint64>(frame + wish.steps, 0, std::max(m_timeline.totalFrames() - 1, 0)));
}

OpenCvWorker::Produced OpenCvWorker::goToFrame(int index, FrameUse use)
{
    const int file = m_timeline.fileOfFrame(index);
    const bool isOtherFile = m_currentSource != file;
    leaveFileFor(file);
    VideoFileEntry& entry = current();
    if (isOtherFile) {
        postToClient([opening = m_opening, path = entry.file](WorkerClient& client) {
            client.onCurrentFile(opening, path);
        });
    }
    if (index == m_lastFrameIndex && !m_lastFrame.isNull())
        return renderLastFrame(use);
    if (!entry.capture->seekToFrame(index - entry.firstFrameIndex)) {
        qCInfo(lcVideo) << "Failed to seek in" << entry.file << "to frame"
                        << index - entry.firstFrameIndex;
        reportFailure(entry);
        return Produced::failure;
    }
    return produceFrame(use);
}

// A step back to frames that are lost ends at the good one behind them, from where the next step
// would lead to the same. It goes on to the last good one before them.
void OpenCvWorker::passLostFrames()
{
    const int file = m_timeline.fileOfFrame(m_wishedFrame);
    VideoFileEntry& entry = m_timeline.entry(file);
    FrameSource& source = *entry.capture;
    const int wanted = m_wishedFrame - entry.firstFrameIndex;
    int start = source.nearestKeyframe(wanted);
    for (int group = 0; group < mostGroupsBack; ++group) {
        Frame good;
        Frame frame;
        bool isOnTheWay = source.seekToFrame(start);
        while (isOnTheWay && !isStopping() && source.read(frame) == ReadOutcome::frame) {
            isOnTheWay = frame.index < wanted;
            if (frame.index <= wanted)
                good = std::move(frame);
        }
        if (!good.isNull()) {
            m_wishedFrame = entry.firstFrameIndex + good.index;
            leaveFileFor(file);
            m_lastFrame = std::move(good);
            m_lastFrameTimeMs = entry.timelineMs(m_lastFrame.timeMs);
            m_lastFrameIndex = m_wishedFrame;
            renderLastFrame(FrameUse::seekResult);
            return;
        }
        if (start == 0)
            break;
        start = source.nearestKeyframe(start - 1);
    }
    if (file > 0 && start == 0) {
        m_wishedFrame = entry.firstFrameIndex - 1;
        goToFrame(m_wishedFrame, FrameUse::seekResult);
    }
}

// How many frames are decoded on the way to `local`: from the place of the source, or from the
// keyframe before `local` if that is nearer.
int OpenCvWorker::framesOnTheWay(const FrameSource& source, int local)
{
    if (source.isAtHand(local))
        return 0;
    const int keyframe = source.nearestKeyframe(local);
    const int next = source.nextFrame();
    return local - (next > keyframe && next <= local ? next : keyframe);
}

// Most of a long way, in strides, so that a newer wish need not wait for the whole of it. False if
// there is one.
bool OpenCvWorker::approach(int index)
{
    VideoFileEntry& entry = m_timeline.entry(m_timeline.fileOfFrame(index));
    FrameSource& source = *entry.capture;
    const int local = index - entry.firstFrameIndex;
    const int stride = std::max(truncateToInt(strideMs / std::max(m_frameCostMs, 0.1)), 2);
    Frame passed;
    int left = index == m_lastFrameIndex ? 0 : framesOnTheWay(source, local);
    while (left > stride) {
        if (m_wishOvertaken.load(std::memory_order_relaxed) || isStopping())
            return false;
        const bool isRead =
            source.seekToFrame(local - left + stride) && source.read(passed) == ReadOutcome::frame;
        const int next = source.nextFrame();
        if (!isRead || next > local) // the rest of the way says what is wrong
            return true;
        left = std::min(local - next, left - 1);
    }
    return true;
}

// The picture of the nearest keyframe under the number and the time of the wish, so that a position
// that follows the pointer stays there.
bool OpenCvWorker::showPreview(int index)
{
    const int file = m_timeline.fileOfFrame(index);
    VideoFileEntry& entry = m_timeline.entry(file);
    FrameSource& source = *entry.capture;
    const int local = index - entry.firstFrameIndex;
    if (index == m_lastFrameIndex || framesOnTheWay(source, local) * m_frameCostMs <= patienceMs)
        return false;
    Frame frame;
    if (!source.seekToFrame(source.nearestKeyframe(local)) ||
        source.read(frame) != ReadOutcome::frame)
        return false;
    leaveFileFor(file);
    m_lastFrameWasSought = false;
    return handOverPicture(frame, index, entry.timelineMs(source.frameTimeMs(local)),
                           FrameUse::preview) == Produced::frame;
}

} // namespace corv
