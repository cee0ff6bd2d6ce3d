#pragma once

#include <QAbstractVideoSurface>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <functional>

namespace corv::bench {

/// Runs the event loop until `condition` holds, asleep between the events: whatever is measured
/// has both cores. Gives up after ten minutes, so that the other rows can still be had.
inline void waitUntil(const std::function<bool()>& condition)
{
    constexpr int patienceMs = 10 * 60 * 1000;
    QElapsedTimer waiting;
    waiting.start();
    QTimer wake;
    wake.start(1000);
    while (!condition() && waiting.elapsed() < patienceMs)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

/// A surface that counts what it is shown.
class CountingSurface : public QAbstractVideoSurface
{
public:
    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType) const override
    {
        return {QVideoFrame::Format_YUV420P};
    }

    bool present(const QVideoFrame&) override
    {
        ++presented;
        return true;
    }

    int presented = 0;
};

} // namespace corv::bench
