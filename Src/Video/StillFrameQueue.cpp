#include "Video/StillFrameQueue.h"

#include <utility>

namespace corv {

StillFrameQueue::StillFrameQueue(std::function<QImage(QTime)> fetch, QObject* parent)
    : QObject(parent), m_fetch(std::move(fetch)), m_turn(this)
{
    m_turn.setInterval(0);
    connect(&m_turn, &QTimer::timeout, this, &StillFrameQueue::serveOne);
}

void StillFrameQueue::add(QTime time, Callback callback)
{
    m_requests.push_back({time, std::move(callback)});
    if (!m_turn.isActive())
        m_turn.start();
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
    const Request request = std::move(m_requests.front());
    m_requests.pop_front();
    if (m_requests.empty())
        m_turn.stop();
    request.callback(m_fetch(request.time));
}

} // namespace corv
