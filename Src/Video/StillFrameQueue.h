#pragma once

#include <QDeadlineTimer>
#include <QImage>
#include <QObject>
#include <QTime>
#include <QTimer>
#include <deque>
#include <functional>

namespace corv {

/// The requests for single pictures that wait for the worker. Each waits for a moment, in which
/// more urgent wishes overtake it; then one is served per turn of the event loop, after everything
/// posted before, so that playback and seeks come first. On the worker's thread.
class StillFrameQueue : public QObject
{
    Q_OBJECT

public:
    using Callback = std::function<void(const QImage&)>;

    /// `fetch` gives the picture at a time, or a null one.
    explicit StillFrameQueue(std::function<QImage(QTime)> fetch, QObject* parent = nullptr);

    void add(QTime time, Callback callback);

    /// Answers all that wait with a null image, in order.
    void answerNull();

    /// Forgets all that wait without an answer.
    void drop();

private:
    struct Request
    {
        QDeadlineTimer notBefore;
        QTime time;
        Callback callback;
    };

    void serveOne();
    void waitForNext();

    std::function<QImage(QTime)> m_fetch;
    std::deque<Request> m_requests;
    // One for all: thousands of timers at once would cost the event loop seconds. With nothing left
    // to wait for it fires in the next turn, when no posted event is left.
    QTimer m_turn;
};

} // namespace corv
