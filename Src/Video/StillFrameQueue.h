#pragma once

#include <QImage>
#include <QObject>
#include <QTime>
#include <QTimer>
#include <deque>
#include <functional>

namespace corv {

/// The requests for single pictures that wait for the worker. It serves one per turn of the event
/// loop, after everything posted before, so that playback and seeks come first. On the worker's
/// thread.
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
        QTime time;
        Callback callback;
    };

    void serveOne();

    std::function<QImage(QTime)> m_fetch;
    std::deque<Request> m_requests;
    QTimer m_turn; // a timer of 0 fires once a turn, when no posted event is left
};

} // namespace corv
