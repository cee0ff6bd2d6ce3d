#pragma once

#include "Log/LogParser.h"
#include "Video/VideoDisplaySettings.h"

#include <QAbstractVideoSurface>
#include <QList>
#include <QPointer>
#include <QQuickItem>
#include <QStringList>
#include <QTime>
#include <QTimer>
#include <QVideoFrame>
#include <QVideoSurfaceFormat>
#include <atomic>
#include <functional>
#include <memory>

namespace corv {

class OpenCvWorker;
class VideoBackend;

/// The video of a flight, as the interface sees it: opens the numbered files of a flight as one
/// timeline, paces playback, and presents decoded frames on a video surface. It paints nothing and
/// decodes nothing itself: a worker of its own does, on its own thread.
///
/// Lives on the interface thread. A `QTime` as a position means milliseconds from the start of the
/// timeline. From the worker's thread come the callbacks of `getFrameAsync` and the signals
/// `irDataChanged`, `videoExportProgress` and `videoExportComplete`.
class VideoPlayer : public QQuickItem
{
    Q_OBJECT
    Q_PROPERTY(QString source READ source WRITE setSource NOTIFY sourceChanged)
    Q_PROPERTY(bool hasVideoOpened READ hasVideoOpened NOTIFY hasVideoOpenedChanged)
    Q_PROPERTY(QTime timePosition READ timePosition NOTIFY timePositionChanged)
    Q_PROPERTY(int currentFrameIndex READ currentFrameIndex NOTIFY currentFrameIndexChanged)
    Q_PROPERTY(QTime duration READ duration NOTIFY durationChanged)
    Q_PROPERTY(bool playing READ playing NOTIFY playingChanged)
    Q_PROPERTY(bool showIR READ showIR WRITE setShowIR NOTIFY showIRChanged)
    Q_PROPERTY(double contrast READ contrast WRITE setContrast NOTIFY contrastChanged)
    Q_PROPERTY(double brightness READ brightness WRITE setBrightness NOTIFY brightnessChanged)
    Q_PROPERTY(
        bool autoIRMapping READ autoIRMapping WRITE setAutoIRMapping NOTIFY autoIRMappingChanged)
    Q_PROPERTY(double irMappingMinValue READ irMappingMinValue WRITE setIrMappingMinValue NOTIFY
                   irMappingMinValueChanged)
    Q_PROPERTY(double irMappingMaxValue READ irMappingMaxValue WRITE setIrMappingMaxValue NOTIFY
                   irMappingMaxValueChanged)
    Q_PROPERTY(double irOffsetX READ irOffsetX WRITE setIrOffsetX NOTIFY irOffsetXChanged)
    Q_PROPERTY(double irOffsetY READ irOffsetY WRITE setIrOffsetY NOTIFY irOffsetYChanged)
    Q_PROPERTY(bool fullScreenIR READ fullScreenIR WRITE setFullScreenIR NOTIFY fullScreenIRChanged)
    Q_PROPERTY(bool irOverlayTransparent READ irOverlayTransparent WRITE setIrOverlayTransparent
                   NOTIFY irOverlayTransparentChanged)
    Q_PROPERTY(double playSpeed READ playSpeed WRITE setPlaySpeed NOTIFY playSpeedChanged)
    Q_PROPERTY(double irDataMin READ irDataMin NOTIFY irDataMinChanged)
    Q_PROPERTY(double irDataMax READ irDataMax NOTIFY irDataMaxChanged)
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY isBusyChanged)
    Q_PROPERTY(corv::LogParser* logParser READ logParser WRITE setLogParser NOTIFY logParserChanged)
    Q_PROPERTY(QAbstractVideoSurface* videoSurface READ videoSurface WRITE setVideoSurface NOTIFY
                   videoSurfaceChanged)

public:
    explicit VideoPlayer(QQuickItem* parent = nullptr);

    /// With files opened by `backend`, which is called on the worker's thread.
    explicit VideoPlayer(std::shared_ptr<const VideoBackend> backend, QQuickItem* parent = nullptr);
    ~VideoPlayer() override;

    /// The file now playing. Writing opens it, with the files that follow it by number.
    QString source() const { return m_source; }
    void setSource(const QString& source);

    /// Callable from any thread.
    bool hasVideoOpened() const { return m_hasVideoOpened.load(std::memory_order_relaxed); }

    /// Time and number of the frame on screen. The time's signal comes only after a move of 100 ms.
    QTime timePosition() const { return m_timePosition; }
    int currentFrameIndex() const { return m_currentFrameIndex; }

    /// Length of the timeline; invalid until a video has opened, 00:00:00.000 after `close`.
    QTime duration() const { return m_duration; }

    /// Time from one frame to the next, in whole milliseconds; 0 until a video has opened.
    int frameDurationMs() const { return m_frameDurationMs; }
    bool playing() const { return m_playing; }

    bool showIR() const { return m_settings.showIR; }
    void setShowIR(bool showIR);
    double contrast() const { return m_settings.contrast; }
    void setContrast(double contrast);
    double brightness() const { return m_settings.brightness; }
    void setBrightness(double brightness);
    bool autoIRMapping() const { return m_settings.autoIRMapping; }
    void setAutoIRMapping(bool autoIRMapping);
    double irMappingMinValue() const { return m_settings.irMappingMinValue; }
    void setIrMappingMinValue(double value);
    double irMappingMaxValue() const { return m_settings.irMappingMaxValue; }
    void setIrMappingMaxValue(double value);
    double irOffsetX() const { return m_settings.irOffsetX; }
    void setIrOffsetX(double offset);
    double irOffsetY() const { return m_settings.irOffsetY; }
    void setIrOffsetY(double offset);
    bool fullScreenIR() const { return m_settings.fullScreenIR; }
    void setFullScreenIR(bool fullScreenIR);
    bool irOverlayTransparent() const { return m_settings.irOverlayTransparent; }
    void setIrOverlayTransparent(bool transparent);

    /// Frames advanced per tick, at least 1; a fraction is cut off.
    double playSpeed() const { return m_playSpeed; }
    void setPlaySpeed(double playSpeed);

    /// Range of the raw values of the thermal frame last drawn.
    double irDataMin() const { return m_irDataMin.load(std::memory_order_relaxed); }
    double irDataMax() const { return m_irDataMax.load(std::memory_order_relaxed); }

    /// Up for a second after each change that takes the worker time; not a measure of its work.
    bool isBusy() const { return m_isBusy; }

    /// Not owned; gives the overlay its log and its clock.
    LogParser* logParser() const { return m_logParser; }
    void setLogParser(LogParser* logParser);

    /// Not owned; where frames are presented.
    QAbstractVideoSurface* videoSurface() const { return m_surface; }
    void setVideoSurface(QAbstractVideoSurface* surface);

    /// Fetches the picture at a time, with effects and overlay, without disturbing playback. After
    /// 50 ms the worker's thread queues the request and calls back with the image, null if there is
    /// none. Requests are served one at a time behind playback; `close` answers those that wait
    /// with null, and the end of the player drops them. Returns false, with a warning and without a
    /// call, if no video is open or the callback is empty. Callable from any thread.
    virtual bool getFrameAsync(QTime time, std::function<void(const QImage&)> frameResultCallback);

    /// False if no video is open.
    Q_INVOKABLE bool play();
    Q_INVOKABLE bool pause();

    /// False if the time is invalid, a seek is under way or no video is open. A time behind the end
    /// gives no frame, and no further seek by time until one by frame has been answered.
    Q_INVOKABLE bool seekAtTime(QTime timePosition);

    /// False if no video is open. Goes ahead during another seek.
    Q_INVOKABLE bool seekAtFrame(int frameOrdinal);

    /// Saves the picture at a time in the format of the name's suffix, under the next free name if
    /// the file exists and is not to be overwritten. True if the request was made: the file appears
    /// later, and what goes wrong then stands in the log.
    Q_INVOKABLE bool saveFrame(QTime timePosition, QString fileName, bool overwriteIfExists);

    /// Puts the picture at a time on the clipboard, later.
    Q_INVOKABLE void copyFrameToClipboard(QTime timePosition);

    /// Saves the pictures at the given times as JPEG files in `folder`, named by the prefix and
    /// their place in the list. False if the folder's parent does not exist.
    Q_INVOKABLE bool exportSpecificFrames(QList<int> positionsMs, QString folder,
                                          QString fileNamePreffix);

    /// The same for every `frameSpacingMs`-th frame (a number of frames, in spite of its name) from
    /// start to stop. False as well if the spacing is below 1 or no video has opened yet.
    Q_INVOKABLE bool exportFrames(int startPositionMs, int stopPositionMs, int frameSpacingMs,
                                  QString folder, QString fileNamePreffix);

    /// Writes the whole timeline as a new video, told of by `videoExportProgress`. Ends in
    /// `videoExportComplete` in any case, also when it returns false because no video is open or
    /// the name is empty.
    Q_INVOKABLE bool exportVideo(QString file);

    /// Takes the log of the parser into the overlay, and redraws a paused picture. Once per log.
    Q_INVOKABLE void updateLogData();
    Q_INVOKABLE void cancelExportVideo();
    Q_INVOKABLE void close();

signals:
    void sourceChanged();
    void hasVideoOpenedChanged(bool hasVideoOpened);
    void timePositionChanged(QTime position);
    void currentFrameIndexChanged(int currentFrameIndex);
    void durationChanged(QTime duration);
    void playingChanged();
    void showIRChanged();
    /// One of the flight's files does not open; the others make up the timeline.
    void sourceOpenError(QString file);
    void irDataChanged();
    void isBusyChanged();
    void videoExportProgress(int exportedFrames, int totalFrames);
    /// Whether the video was begun and playback could be put back in its place.
    void videoExportComplete(bool result);

    // One per property that has none above. All come from the interface thread, the two of the
    // thermal range too, which `irDataChanged` announces from the worker's.
    void contrastChanged();
    void brightnessChanged();
    void autoIRMappingChanged();
    void irMappingMinValueChanged();
    void irMappingMaxValueChanged();
    void irOffsetXChanged();
    void irOffsetYChanged();
    void fullScreenIRChanged();
    void irOverlayTransparentChanged();
    void playSpeedChanged();
    void irDataMinChanged();
    void irDataMaxChanged();
    void logParserChanged();
    void videoSurfaceChanged();

private slots:
    void paintNextFrame();

private:
    friend class OpenCvWorker;

    struct PlayerFrame
    {
        int frameIndex = 0;
        int timeMs = 0;
        QVideoFrame frame;
    };

    // The worker's answers. Each comes with the number of the opening it belongs to: what was
    // overtaken by `close` or by another source is dropped.
    void onVideoFilesProcessed(int opening, double fps, int totalFrames, const QSizeF& size,
                               const QStringList& failedFiles);
    void onCurrentFile(int opening, const QString& file);
    void onFrameReady(int opening, PlayerFrame frame, bool seekResult);
    void onPlaybackEnded(int opening);
    void onBurstFinished();

    void toWorker(std::function<void(OpenCvWorker&)> job);
    void requestBurst();
    void startSeek(std::function<void(OpenCvWorker&)> job);
    void startSurface();
    void sendSettings();
    using Notify = void (VideoPlayer::*)();
    void setOverlayValue(double& field, double value, Notify changed);
    void setOverlayFlag(bool& field, bool value, Notify changed);
    void redraw();
    void markBusy(int ms);
    void storeIrData(double min, double max);

    QPointer<QAbstractVideoSurface> m_surface;
    QVideoSurfaceFormat m_surfaceFormat;
    QString m_source;
    QStringList m_sourceFiles;
    std::atomic<bool> m_hasVideoOpened{false};
    QTime m_timePosition{0, 0, 0, 0};
    int m_currentFrameIndex = 0;
    QTime m_duration;
    bool m_playing = false;
    int m_playSpeed = 1;
    int m_frameDurationMs = 0;
    QTimer m_timer;
    QList<PlayerFrame> m_frames;
    std::atomic<bool> m_exportCancelled{false};
    bool m_seeking = false;
    bool m_isBusy = false;
    int m_busyCount = 0;
    QPointer<LogParser> m_logParser;
    VideoDisplaySettings m_settings;
    std::atomic<double> m_irDataMin{0.0};
    std::atomic<double> m_irDataMax{65535.0};
    int m_opening = 0;
    bool m_openingUnderWay = false;
    bool m_burstUnderWay = false;
    bool m_burstWanted = false;
    std::unique_ptr<OpenCvWorker> m_worker;
};

} // namespace corv
