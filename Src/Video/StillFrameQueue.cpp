#include "Video/StillFrameQueue.h"

#include <utility>

namespace corv {
namespace {

constexpr int delayMs = 50;

} // namespace

StillFrameQueue::StillFrameQueue(Fetch fetch, QObject* parent)
    : QObject(parent), m_fetch(std::move(fetch)), m_turn(this)
{
    m_turn.setSingleShot(true);
    m_turn.setTimerType(Qt::PreciseTimer);
    connect(&m_turn, &QTimer::timeout, this, &StillFrameQueue::serveOne);
}

void StillFrameQueue::add(QTime time, Callback callback, Cancelled cancelled, PictureInsets insets)
{
    m_requests.push_back({QDeadlineTimer(delayMs, Qt::PreciseTimer), time, std::move(callback),
                          std::move(cancelled), std::move(insets)});
    if (!m_turn.isActive())
        waitForNext();
}

void StillFrameQueue::addFirst(QTime time, Callback callback)
{
    m_requests.push_front({QDeadlineTimer(0), time, std::move(callback), {}, {}});
    waitForNext();
}

void StillFrameQueue::answerNull()
{
    std::deque<Request> waiting = std::move(m_requests);
    drop();
    for (const Request& request : waiting)
        request.callback({});
}

void StillFrameQueue::drop()
{
    m_requests.clear();
    m_turn.stop();
}

void StillFrameQueue::serveOne()
{
    if (m_requests.front().notBefore.hasExpired()) {
        const Request request = std::move(m_requests.front());
        m_requests.pop_front();
        const bool isWanted =
            !request.cancelled || !request.cancelled->load(std::memory_order_relaxed);
        request.callback(isWanted ? m_fetch(request.time, request.insets) : QImage());
    }
    waitForNext();
}

void StillFrameQueue::waitForNext()
{
    if (!m_requests.empty())
        m_turn.start(static_cast<int>(m_requests.front().notBefore.remainingTime()));
}

} // namespace corv
