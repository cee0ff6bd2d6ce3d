#pragma once

#include "Video/PictureInset.h"

#include <QDeadlineTimer>
#include <QImage>
#include <QObject>
#include <QTime>
#include <QTimer>
#include <atomic>
#include <deque>
#include <functional>
#include <memory>

namespace corv {

/// The requests for single pictures that wait for the worker. Each waits for a moment, in which
/// more urgent wishes overtake it; then one is served per turn of the event loop, after everything
/// posted before, so that playback and seeks come first. On the worker's thread.
class StillFrameQueue : public QObject
{
    Q_OBJECT

public:
    using Callback = std::function<void(const QImage&)>;

    /// Set, by any thread, when the picture is no longer wanted; null if that cannot be.
    using Cancelled = std::shared_ptr<const std::atomic<bool>>;

    /// Gives the picture at a time, or a null one.
    using Fetch = std::function<QImage(QTime time, const PictureInsets& insets)>;

    explicit StillFrameQueue(Fetch fetch, QObject* parent = nullptr);

    /// Answers with null, without fetching, if `cancelled` is set when the turn comes.
    void add(QTime time, Callback callback, Cancelled cancelled = {}, PictureInsets insets = {});

    /// Puts a request before all that wait, to be served in the next turn.
    void addFirst(QTime time, Callback callback);

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
        Cancelled cancelled;
        PictureInsets insets;
    };

    void serveOne();
    void waitForNext();

    Fetch m_fetch;
    std::deque<Request> m_requests;
    // One for all: thousands of timers at once would cost the event loop seconds. With nothing left
    // to wait for it fires in the next turn, when no posted event is left.
    QTimer m_turn;
};

} // namespace corv
