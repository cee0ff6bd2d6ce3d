#include "Video/VideoPlayer.h"

#include "Base/videoTime.h"
#include "Video/OpenCvWorker.h"
#include "Video/frameConversion.h"

#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <utility>

// Playing, seeking and what is on screen.
namespace corv {
namespace {

constexpr int busyMs = 1000;
constexpr int positionSignalStepMs = 100;

// A pointer that has not moved for so long is at rest.
constexpr int restMs = 40;

} // namespace

bool VideoPlayer::play()
{
    if (!hasVideoOpened())
        return false;
    if (m_playing)
        return true;
    m_playing = true;
    m_clock.reset();
    m_timer.start(m_frameDurationMs);
    emit playingChanged();
    return true;
}

bool VideoPlayer::pause()
{
    if (!hasVideoOpened())
        return false;
    if (!m_playing)
        return true;
    m_playing = false;
    m_timer.stop();
    emit playingChanged();
    return true;
}

bool VideoPlayer::seekAtTime(QTime timePosition)
{
    if (!timePosition.isValid() || m_seeking || !hasVideoOpened())
        return false;
    startSeek([timePosition](OpenCvWorker& worker) { worker.seekAtTime(timePosition); });
    return true;
}

bool VideoPlayer::seekAtFrame(int frameOrdinal)
{
    if (!hasVideoOpened())
        return false;
    startSeek([frameOrdinal](OpenCvWorker& worker) { worker.seekAtFrameIndex(frameOrdinal); });
    return true;
}

void VideoPlayer::startSeek(std::function<void(OpenCvWorker&)> job)
{
    m_seeking = true;
    m_isFailureKnown = false;
    m_restTimer.stop();
    clearQueue();
    toWorker(std::move(job));
}

void VideoPlayer::clearQueue()
{
    m_frames.clear();
    m_endReached = false;
    setReadToEnd(false);
}

void VideoPlayer::setReadToEnd(bool isReadToEnd)
{
    if (isReadToEnd == m_isReadToEnd)
        return;
    m_isReadToEnd = isReadToEnd;
    emit isReadToEndChanged();
}

bool VideoPlayer::goToTime(QTime time)
{
    if (!time.isValid())
        return false;
    SeekWish place{SeekWish::From::time, msOfTime(time)};
    place.mayPreview = true;
    return goTo(place);
}

bool VideoPlayer::goToFrame(int frameIndex)
{
    return goTo({SeekWish::From::frame, frameIndex});
}

bool VideoPlayer::goTo(const SeekWish& place)
{
    if (!hasVideoOpened())
        return false;
    m_wish.goTo(place);
    if (m_wishUnderWay)
        m_worker->overtakeWish();
    serveWish();
    return true;
}

bool VideoPlayer::step(int frames)
{
    if (!hasVideoOpened())
        return false;
    const bool isOnTheWay = m_wishUnderWay || m_restTimer.isActive() || !m_wish.isEmpty();
    if (!isOnTheWay)
        m_wish.goTo({SeekWish::From::frame, m_currentFrameIndex});
    m_wish.step(frames);
    serveWish();
    return true;
}

bool VideoPlayer::playOn()
{
    const bool isGoing = m_seeking || m_wishUnderWay || m_restTimer.isActive();
    const int last = m_lastGoodFrame < 0 ? m_frameCount - 1 : m_lastGoodFrame;
    if (!m_playing && !isGoing && m_currentFrameIndex >= last)
        goToFrame(0);
    m_isFailureKnown = false;
    if (!play())
        return false;
    // A medium that failed has left nothing in the queue: the next attempt says whether it is back.
    requestBurstIfStarved();
    return true;
}

void VideoPlayer::serveWish()
{
    if (m_wishUnderWay || m_wish.isEmpty())
        return;
    m_wishUnderWay = true;
    m_worker->allowWish();
    startSeek([wish = m_wish.take()](OpenCvWorker& worker) { worker.serveWish(wish); });
}

void VideoPlayer::onWishServed(int opening, WishOutcome outcome)
{
    if (opening != m_opening)
        return;
    m_wishUnderWay = false;
    if (!m_wish.isEmpty()) {
        serveWish();
    } else if (outcome == WishOutcome::previewed) {
        m_restTimer.start(restMs);
    } else if (outcome != WishOutcome::shown) {
        m_seeking = false;
        requestBurstIfStarved();
    }
}

void VideoPlayer::dropWishes()
{
    m_wish.clear();
    m_wishUnderWay = false;
    m_restTimer.stop();
    m_redrawUnderWay = false;
    m_redrawWanted = false;
}

void VideoPlayer::onSeekFailed(int opening)
{
    if (opening != m_opening)
        return;
    m_seeking = m_wishUnderWay;
    requestBurstIfStarved();
}

void VideoPlayer::redraw()
{
    if (!hasVideoOpened())
        return;
    if (m_playing) {
        markBusy(busyMs);
        return;
    }
    m_redrawWanted = m_redrawUnderWay;
    if (m_redrawUnderWay)
        return;
    m_redrawUnderWay = true;
    clearQueue();
    const int shown = m_awaitsFirstFrame ? 0 : m_currentFrameIndex;
    toWorker([shown](OpenCvWorker& worker) { worker.redraw(shown); });
}

void VideoPlayer::onRedrawFinished(int opening)
{
    if (opening != m_opening)
        return;
    m_redrawUnderWay = false;
    if (std::exchange(m_redrawWanted, false))
        redraw();
    requestBurstIfStarved();
}

void VideoPlayer::onFrameReady(int opening, const PlayerFrame& frame, FrameUse use)
{
    if (opening != m_opening || !hasVideoOpened())
        return;
    switch (use) {
    case FrameUse::playback:
        if (!m_seeking && !m_redrawUnderWay)
            m_frames.append(frame);
        return;
    case FrameUse::redraw:
        if (m_seeking)
            return;
        break;
    case FrameUse::preview:
        show(PlayerFrame(frame));
        return;
    case FrameUse::seekResult:
        m_seeking = false;
        m_awaitsFirstFrame = false;
        break;
    }
    // Of two seeks in a row the first one's picture may still be here, which is not the one to
    // show.
    m_frames = {frame};
    m_clock.reset();
    presentNextFrame(true);
}

// What was decoded before the end is shown before the pause.
void VideoPlayer::onPlaybackEnded(int opening, int lastFrame)
{
    if (opening != m_opening)
        return;
    // A seek or a redraw is answered with a place; it has not read on to the end.
    const bool isEnd = lastFrame >= 0 && !m_seeking && !m_redrawUnderWay;
    if (isEnd)
        m_lastGoodFrame = lastFrame;
    m_endReached = m_playing && m_surface && !m_frames.isEmpty() &&
                   m_frames.last().frameIndex > m_currentFrameIndex;
    if (!m_endReached)
        pause();
    setReadToEnd(isEnd);
}

void VideoPlayer::onReadFailed(int opening, const QString& file)
{
    if (opening != m_opening || std::exchange(m_isFailureKnown, true))
        return;
    // A playhead that was put elsewhere goes back to the picture.
    emit timePositionChanged(m_timePosition);
    emit exactTimePositionChanged(m_timePosition);
    emit readFailed(tr("%1 can no longer be read. If its card was taken out, put it back and "
                       "press Play.")
                        .arg(QFileInfo(file).fileName()));
}

void VideoPlayer::paintNextFrame()
{
    presentNextFrame(false);
}

const PlayerFrame& VideoPlayer::nextFrame() const
{
    return m_frames.at(std::max(std::min(m_frames.size() - 1, m_playSpeed - 1), 0));
}

void VideoPlayer::presentNextFrame(bool atOnce)
{
    if (!hasVideoOpened() || m_frames.isEmpty() || !m_surface) {
        if (m_playing)
            waitForNextFrame();
        return;
    }
    const PlayerFrame next = nextFrame();
    if (m_playing && !atOnce && m_clock.msUntilDue(next.timeMs, m_playSpeed, nowMs()) > 0) {
        waitForNextFrame();
        return;
    }
    const double shownMs = nowMs();
    const bool isShown = show(next);
    if (!m_playing)
        return;
    if (isShown) {
        m_clock.frameShown(next.timeMs, m_playSpeed, shownMs);
        while (!m_frames.isEmpty() && m_frames.first().frameIndex <= next.frameIndex)
            m_frames.removeFirst();
    }
    waitForNextFrame();
    if (m_endReached) {
        if (m_frames.isEmpty())
            pause();
        return;
    }
    if (isShown && m_frames.size() <= 2LL * m_playSpeed)
        requestBurst();
}

// The interval from frame to frame, corrected by what the clock says of the next one.
void VideoPlayer::waitForNextFrame()
{
    int ms = m_frameDurationMs;
    if (!m_frames.isEmpty())
        ms = std::max(m_clock.msUntilDue(nextFrame().timeMs, m_playSpeed, nowMs()), 1);
    if (m_timer.interval() != ms)
        m_timer.start(ms);
}

double VideoPlayer::nowMs() const
{
    return static_cast<double>(m_steadyClock.nsecsElapsed()) / 1e6;
}

// A surface learns matrix and range when it is started, and the files of a flight may differ.
void VideoPlayer::takeColoursOf(const QVideoFrame& frame)
{
    const auto colours = surfaceFormatOf(frame).yCbCrColorSpace();
    if (colours == m_surfaceFormat.yCbCrColorSpace())
        return;
    m_surfaceFormat.setYCbCrColorSpace(colours);
    startSurface();
}

// The frame is a copy: what the signals lead to may change the queue.
bool VideoPlayer::show(const PlayerFrame& frame)
{
    if (!m_surface)
        return false;
    takeColoursOf(frame.frame);
    if (!m_surface->present(frame.frame))
        return false;
    if (m_thermal != frame.thermal) {
        m_thermal = frame.thermal;
        emit thermalReadingChanged();
    }
    const QTime before = m_timePosition;
    m_timePosition = timeOfMs(frame.timeMs);
    static QTime lastReportedPosition(0, 0, 0, 0);
    if (std::abs(lastReportedPosition.msecsTo(m_timePosition)) >= positionSignalStepMs) {
        lastReportedPosition = m_timePosition;
        emit timePositionChanged(m_timePosition);
    }
    if (m_currentFrameIndex != frame.frameIndex) {
        m_currentFrameIndex = frame.frameIndex;
        emit currentFrameIndexChanged(m_currentFrameIndex);
    }
    if (m_timePosition != before)
        emit exactTimePositionChanged(m_timePosition);
    return true;
}

// One burst at a time: were each tick to queue another, a slow decoder would have hundreds to do
// before the next seek, and go on long after a pause.
void VideoPlayer::requestBurst()
{
    m_burstWanted = m_burstUnderWay;
    if (m_burstUnderWay)
        return;
    m_burstUnderWay = true;
    toWorker([](OpenCvWorker& worker) { worker.produceFrameBurst(); });
}

// Playback is driven by the frames that are shown: with none in the queue nothing would ask for
// more.
void VideoPlayer::requestBurstIfStarved()
{
    if (m_playing && !m_seeking && !m_redrawUnderWay && m_frames.isEmpty())
        requestBurst();
}

void VideoPlayer::onBurstFinished()
{
    m_burstUnderWay = false;
    if (std::exchange(m_burstWanted, false) && hasVideoOpened() && !m_seeking)
        requestBurst();
}

} // namespace corv
