#pragma once

#include "Threads/post.h"
#include "Video/SeekWish.h"
#include "Video/StillFrameQueue.h"
#include "Video/ThermalOverlay.h"
#include "Video/VideoBackend.h"
#include "Video/VideoDisplaySettings.h"
#include "Video/VideoTimeline.h"
#include "Video/WorkerClient.h"

#include <QImage>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QThread>
#include <QTime>
#include <atomic>
#include <functional>
#include <limits>
#include <memory>
#include <opencv2/core.hpp>
#include <utility>

namespace corv {

/// Everything that touches a video file: opens the files of a flight as one timeline, reads frames,
/// finds positions, and turns frames into what the screen and the files need. Lives on a thread of
/// its own, from its making to its death.
///
/// All functions but the constructor, the destructor, `isStopping` and `overtakeWish` run on that
/// thread: the owner posts to it, and is posted to in return.
class OpenCvWorker : public QObject
{
    Q_OBJECT

public:
    /// `client` is called on the thread of `context`. Both outlive the worker. `backend` is called
    /// on the worker's thread.
    OpenCvWorker(WorkerClient* client, QObject* context,
                 std::shared_ptr<const VideoBackend> backend);

    /// Drops what is queued and waits for the job at hand.
    ~OpenCvWorker() override;

    /// True once the worker is being shut down. Any thread.
    bool isStopping() const { return m_stopRequested.load(std::memory_order_relaxed); }

    /// Closes what is open and opens these files. Everything handed over from here on carries the
    /// number `opening`. Where a file must be read through first, the first picture and the
    /// progress are handed over meanwhile, and other jobs are served as if nothing were open.
    void setVideoSources(const QStringList& files, int opening);

    /// Answers the waiting requests with null and closes all files. The picture last read stays.
    void closeSources();

    /// Reads the next frame and hands it over.
    void produceNextFrame(bool seekResult);

    /// Up to five frames.
    void produceFrameBurst();

    /// Finds a position and hands over one frame as the seek's result, or none if the position is
    /// not on the timeline. The position already shown is drawn again without decoding.
    void seekAtTime(QTime time);
    void seekAtFrameIndex(int index);

    /// Finds the place of a wish, which is moved onto the timeline if it is not on it, and hands
    /// over its frame as a seek's result. Always ends in `onWishServed`.
    void serveWish(const SeekWish& wish);

    /// Asks the wish being served to end without its picture, as a newer one waits. Any thread.
    void overtakeWish() { m_wishOvertaken.store(true, std::memory_order_relaxed); }

    /// Before the next wish is posted. Any thread.
    void allowWish() { m_wishOvertaken.store(false, std::memory_order_relaxed); }

    /// Draws the picture on screen anew. `shownFrame` is its number; the worker may have read on
    /// since. Always ends in `onRedrawFinished`.
    void redraw(int shownFrame);

    /// Forgets the picture last read: without it, a flight opened next begins with the picture of
    /// the flight before if both are at the same frame.
    void forgetLastFrame();

    /// The picture at a time, null if there is none, with these insets. Playback goes on as if
    /// nothing had happened.
    QImage getFrameAt(QTime time, const PictureInsets& insets = {});

    /// Puts a request for the picture at a time behind those that wait. Where `cancelled` is given
    /// and set, the answer is null. A picture for export has the insets of this moment.
    void requestFrame(QTime time, StillFrameQueue::Callback callback, bool isForExport,
                      StillFrameQueue::Cancelled cancelled = {});

    /// The same before those that wait, and without delay: for one request at a time.
    void requestPreview(QTime time, StillFrameQueue::Callback callback);

    /// What is shown in parts of exported pictures and videos.
    void setInsets(PictureInsets insets) { m_insets = std::move(insets); }

    /// Writes the whole timeline as a new video. False if there is none, if the target is one of
    /// the flight's own files or cannot be written, or if playback could not be put back in place.
    /// `status` says what the video lacks, or why there is none.
    bool exportVideo(const QString& file, const std::atomic<bool>& cancelled, Status* status);

    void setSettings(const VideoDisplaySettings& settings) { m_settings = settings; }

    /// The clock of the log parser; null if there is none.
    void setClock(std::shared_ptr<const FlightClock> clock);

    /// Builds the tables of the overlay from the log. Once per log.
    void updateLogData(bool hasParser, const std::shared_ptr<const LogFile>& log);

signals:
    void videoExportProgress(int exportedFrames, int totalFrames);
    void irDataChanged(double IRDataMin, double IRDataMax);

private:
    static constexpr int noFile = -1;
    static constexpr int noFrame = -1;

    /// How reading a frame ended.
    enum class Produced { frame, end, failure };

    void openFiles(int turn);
    bool waitsForIndex(int turn);
    void showFirstPicture();
    void finishOpening();
    VideoFileEntry& current() { return m_timeline.entry(m_currentSource); }
    Produced produceFrame(FrameUse use);
    void leaveFileFor(int file);
    bool moveToNextFile();
    Produced goToFrame(int index, FrameUse use);
    int placeOf(const SeekWish& wish) const;
    void passLostFrames();
    static int framesOnTheWay(const FrameSource& source, int local);
    bool approach(int index);
    bool showPreview(int index);
    void answerSeek(Produced produced);
    Produced handOverPicture(const Frame& picture, int frameIndex, int timeMs, FrameUse use);
    Produced renderLastFrame(FrameUse use);
    QVideoFrame pictureForScreen(const Frame& picture, int timeMs);
    FrameSource* stillSource(int file);
    QImage extractFrame(FrameSource& capture, const VideoFileEntry& entry, double fileMs,
                        const PictureInsets& insets);
    PictureInset::Moment momentOf(int timelineMs, QSize picture) const;
    void endPlayback(int lastFrame);
    void reportFailure(const VideoFileEntry& entry);
    void returnToLastFrame();

    template <typename Call>
    void postToClient(Call call);

    WorkerClient* const m_client;
    QObject* const m_context;
    const std::shared_ptr<const VideoBackend> m_backend;
    QThread m_thread;
    std::atomic<bool> m_stopRequested{false};
    std::atomic<bool> m_wishOvertaken{false};

    int m_opening = 0;
    QStringList m_sourceFiles;
    QStringList m_failedFiles;
    QList<Failure> m_failures; // for each of them
    int m_triedFiles = 0;      // of the source files, opened or not
    int m_openingTurn = 0;     // counts what was begun to be opened or closed
    bool m_firstPictureShown = false;
    VideoTimeline m_openingTimeline; // so far; the timeline once it is whole
    VideoTimeline m_timeline;
    int m_currentSource = noFile;

    Frame m_lastFrame; // as read, so that a later change of settings can rework it
    int m_lastFrameTimeMs = std::numeric_limits<int>::min();
    int m_lastFrameIndex = std::numeric_limits<int>::min();
    bool m_lastFrameWasSought = false; // so that it is, or will be, the one on screen
    int m_wishedFrame = 0;             // where the last wish led
    double m_frameCostMs = 0.0;        // of decoding one frame after the other, in the mean
    cv::Mat m_effectFrame;

    VideoDisplaySettings m_settings;
    ThermalOverlay m_overlay;
    PictureInsets m_insets;
    const ThermalOverlay::RangeReport m_reportRange = [this](double min, double max) {
        emit irDataChanged(min, max);
    };
    StillFrameQueue m_stills;
    std::unique_ptr<FrameSource> m_stillSource; // a second capture, on the file last asked for
    int m_stillFile = noFile;
    cv::Mat m_stillFrame;
};

template <typename Call>
void OpenCvWorker::postToClient(Call call)
{
    post(m_context, [client = m_client, call = std::move(call)] { call(*client); });
}

} // namespace corv
