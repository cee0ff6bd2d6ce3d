#pragma once

#include "Threads/annotate.h"
#include "Threads/post.h"
#include "Video/VideoPlayer.h"

#include <QThread>
#include <atomic>
#include <functional>
#include <utility>
#include <vector>

namespace corv::test {

/// A player without a video: answers each request from a thread of its own, with the picture that
/// the script gives for the time, or keeps it waiting.
class ScriptedPlayer : public VideoPlayer
{
public:
    using Script = std::function<QImage(int timeMs)>;

    explicit ScriptedPlayer(Script script) : m_script(std::move(script))
    {
        m_thread = new QThread;
        m_answerer = new QObject;
        m_answerer->moveToThread(m_thread);
        QObject::connect(
            m_thread, &QThread::finished, m_thread, [this] { annotateRelease(this); },
            Qt::DirectConnection);
        m_thread->start();
    }

    ~ScriptedPlayer() override
    {
        m_thread->quit();
        m_thread->wait();
        annotateAcquire(this);
        delete m_answerer;
        delete m_thread;
    }

    /// Any thread.
    bool getFrameAsync(QTime time, std::function<void(const QImage&)> callback) override
    {
        const int timeMs = QTime(0, 0).msecsTo(time);
        ++m_requests;
        post(m_answerer, [this, timeMs, callback = std::move(callback)] {
            if (m_isHolding)
                m_held.push_back([this, timeMs, callback] { callback(m_script(timeMs)); });
            else
                callback(m_script(timeMs));
        });
        return true;
    }

    /// From now on requests wait.
    void hold() { m_isHolding = true; }

    /// Answers what waits, and what comes.
    void release()
    {
        m_isHolding = false;
        post(m_answerer, [this] {
            for (const auto& answer : std::exchange(m_held, {}))
                answer();
            ++m_releases;
        });
    }

    int requests() const { return m_requests; }

    /// How often what waited has been answered.
    int releases() const { return m_releases; }

private:
    Script m_script;
    QThread* m_thread;
    QObject* m_answerer;
    std::atomic<bool> m_isHolding{false};
    std::atomic<int> m_requests{0};
    std::atomic<int> m_releases{0};
    std::vector<std::function<void()>> m_held; // of the answering thread
};

} // namespace corv::test
