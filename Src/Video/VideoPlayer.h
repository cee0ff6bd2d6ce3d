#pragma once

#include "Base/Result.h"
#include "Log/LogParser.h"
#include "Video/PictureInset.h"
#include "Video/PlaybackClock.h"
#include "Video/SeekWish.h"
#include "Video/VideoDisplaySettings.h"
#include "Video/WorkerClient.h"

#include <QAbstractVideoSurface>
#include <QElapsedTimer>
#include <QList>
#include <QPointer>
#include <QQuickItem>
#include <QStringList>
#include <QTime>
#include <QTimer>
#include <QVariantMap>
#include <QVideoFrame>
#include <QVideoSurfaceFormat>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

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
///
/// `seekAtTime` and `seekAtFrame` may be refused, as each says. What a pilot does goes through
/// `goToTime`, `goToFrame`, `step` and `redraw`, which are never refused while a video is open: the
/// newest wish replaces those that wait, and steps add up.
class VideoPlayer : public QQuickItem, private WorkerClient
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
    Q_PROPERTY(QTime exactTimePosition READ timePosition NOTIFY exactTimePositionChanged)
    Q_PROPERTY(double openingProgress READ openingProgress NOTIFY openingProgressChanged)
    Q_PROPERTY(int frameCount READ frameCount NOTIFY frameCountChanged)
    Q_PROPERTY(bool thermalAsOnScreen READ thermalAsOnScreen WRITE setThermalAsOnScreen NOTIFY
                   thermalAsOnScreenChanged)
    Q_PROPERTY(bool isReadToEnd READ isReadToEnd NOTIFY isReadToEndChanged)
    Q_PROPERTY(int irPalette READ irPalette WRITE setIrPalette NOTIFY irPaletteChanged)

public:
    explicit VideoPlayer(QQuickItem* parent = nullptr);

    /// With files opened by `backend`, which is called on the worker's thread.
    explicit VideoPlayer(std::shared_ptr<const VideoBackend> backend, QQuickItem* parent = nullptr);
    ~VideoPlayer() override;

    /// The file now playing. Writing opens it, with the files that follow it by number.
    QString source() const { return m_source; }
    void setSource(const QString& source);

    /// The next `source`, if it is the first of these files, opens exactly these, and not those
    /// that follow it by number: for files that are numbered on but are flights of their own.
    Q_INVOKABLE void setNextFiles(const QStringList& files) { m_nextFiles = files; }

    /// The files that are open or being opened, in order.
    QStringList sourceFiles() const { return m_sourceFiles; }

    /// Callable from any thread.
    bool hasVideoOpened() const { return m_hasVideoOpened.load(std::memory_order_relaxed); }

    /// Time and number of the frame on screen. The signal of `timePosition` comes only after a move
    /// of 100 ms; `exactTimePosition` is the same time with a signal for each change. While a
    /// preview replaces a picture that takes long, they are those of the picture to come.
    QTime timePosition() const { return m_timePosition; }
    int currentFrameIndex() const { return m_currentFrameIndex; }

    /// Length of the timeline; invalid until a video has opened, 00:00:00.000 after `close`.
    QTime duration() const { return m_duration; }

    /// Some containers must be read through before a video is open. Meanwhile its first picture is
    /// on screen, and this is the part that has been read, from 0 to below 1; at any other time 1.
    double openingProgress() const { return m_openingProgress; }

    /// Frames of the timeline; 0 while no video is open.
    int frameCount() const { return m_frameCount; }

    /// Time from one frame to the next, in whole milliseconds; 0 until a video has opened.
    int frameDurationMs() const { return m_frameDurationMs; }
    bool playing() const { return m_playing; }

    /// Playback, which reads some frames ahead, has read to the end. There are no pictures to be
    /// saved then, until `redraw` or a seek.
    bool isReadToEnd() const { return m_isReadToEnd; }

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

    /// Whether saved pictures of a flight's later files get the thermal picture that the screen
    /// shows, and not the one of the time inside their file, as they always have.
    bool thermalAsOnScreen() const { return m_settings.thermalAsOnScreen; }
    void setThermalAsOnScreen(bool asOnScreen);

    /// The colours of the overlay, as the number of a `ThermalPalette`: 0 rainbow, 1 even to all
    /// eyes, 2 grey. Another number is not taken.
    int irPalette() const { return static_cast<int>(m_settings.irPalette); }
    void setIrPalette(int palette);

    /// Whether pictures have the thermal overlay: it is on, and the log has thermal frames and is
    /// synchronised with the video.
    bool drawsOverlay() const;

    /// Whether the saved picture of a time has another thermal picture than the screen: the flight
    /// has several files, the time is not in the first, and `thermalAsOnScreen` is off.
    Q_INVOKABLE virtual bool savesOtherThermal(QTime time) const;

    /// A sentence on pictures, by their names in order, for which that holds; empty for none.
    static QString otherThermalNote(const QStringList& names);

    /// Range of the raw values of the thermal frame last drawn.
    double irDataMin() const { return m_irDataMin.load(std::memory_order_relaxed); }
    double irDataMax() const { return m_irDataMax.load(std::memory_order_relaxed); }

    /// Up for a second after each change that takes the worker time; not a measure of its work.
    bool isBusy() const { return m_isBusy; }

    /// Whether the log has thermal frames for the overlay, or why there are none.
    const Status& thermalStatus() const { return m_thermalStatus; }

    /// Whether the worker has yet to answer an `updateLogData`; `thermalStatusChanged` is the
    /// answer to each.
    bool isThermalStatusPending() const { return m_pendingThermalStatuses > 0; }

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

    /// The same without delay and before all that wait, for a picture that follows the pointer. Ask
    /// again only after the answer.
    virtual bool getPreviewAsync(QTime time, std::function<void(const QImage&)> callback);

    /// The same for a picture that leaves the program: with the insets of exports.
    bool getExportFrameAsync(QTime time, std::function<void(const QImage&)> frameResultCallback);

    /// What is shown in parts of the pictures and videos that are asked for from now on: saved,
    /// copied, exported and in reports. Empty for nothing.
    void setExportInsets(PictureInsets insets);

    /// Why the file of the last `sourceOpenError` does not open; none if it is not there.
    const std::optional<Failure>& sourceOpenFailure() const { return m_sourceOpenFailure; }

    /// False if no video is open.
    Q_INVOKABLE bool play();
    Q_INVOKABLE bool pause();

    /// False if the time is invalid, a seek is under way or no video is open. A time behind the end
    /// gives no frame, and no further seek by time until one by frame has been answered.
    Q_INVOKABLE bool seekAtTime(QTime timePosition);

    /// False if no video is open. Goes ahead during another seek.
    Q_INVOKABLE bool seekAtFrame(int frameOrdinal);

    /// Goes to the frame of a time; of the first or the last frame for a time outside the video. A
    /// picture that takes long is preceded by that of a keyframe before it, and then shown once no
    /// newer wish has come for a moment. False if the time is invalid or no video is open.
    Q_INVOKABLE bool goToTime(QTime time);

    /// Goes to the frame of this number, or the first or last one. False if no video is open.
    Q_INVOKABLE bool goToFrame(int frameIndex);

    /// Goes `frames` on, or back if negative, from the frame on screen or from the one on its way
    /// there; across joins, and to the first or last frame at most. False if no video is open.
    Q_INVOKABLE bool step(int frames);

    /// Plays on from the frame on screen; from the first one if that is the last, or the last one
    /// before damage that reaches to the end. False if no video is open.
    Q_INVOKABLE bool playOn();

    /// Draws the frame on screen anew with the newest settings and log; nothing if no video is
    /// open. Playing, the next frames show them.
    Q_INVOKABLE void redraw();

    /// Forgets the frame decoded last, so that a flight opened next begins with its own first
    /// picture: without it, the one of the flight before is shown if it was at its first frame.
    Q_INVOKABLE void forgetLastFrame();

    /// The raw thermal value at a point of the frame on screen, given as parts of its width and
    /// height from the upper left corner. Not a number where the overlay is not.
    Q_INVOKABLE double thermalValueAt(double x, double y) const;

    /// "coldest" and "hottest" of the overlay on screen, each with "value", "x" and "y" (parts of
    /// the frame's width and height). An empty map without an overlay.
    Q_INVOKABLE QVariantMap thermalExtremes() const;

    /// What the colours of the overlay on screen mean; none without an overlay.
    /// `thermalReadingChanged` follows each change.
    std::optional<ThermalScale> thermalScale() const;

    /// Saves the picture at a time in the format of the name's suffix, under the next free name if
    /// the file exists and is not to be overwritten. True if the request was made: the file appears
    /// later, and `frameSaveComplete` follows.
    Q_INVOKABLE bool saveFrame(QTime timePosition, QString fileName, bool overwriteIfExists);

    /// Puts the picture at a time on the clipboard, later. Ends in `frameCopyComplete`.
    Q_INVOKABLE void copyFrameToClipboard(QTime timePosition);

    /// Saves the pictures at the given times as JPEG files in `folder`, named by the prefix and
    /// their place in the list. False if the folder's parent does not exist. Otherwise
    /// `framesExportStarted` comes at once, then `framesExportProgress` for each picture, and
    /// `framesExportComplete` at the end in any case. One series at a time: a second one that is
    /// asked for meanwhile counts as more pictures of the first.
    Q_INVOKABLE bool exportSpecificFrames(QList<int> positionsMs, QString folder,
                                          QString fileNamePreffix);

    /// The same for every `frameSpacingMs`-th frame (a number of frames, in spite of its name) from
    /// start to stop. False as well if the spacing is below 1 or no video has opened yet.
    Q_INVOKABLE bool exportFrames(int startPositionMs, int stopPositionMs, int frameSpacingMs,
                                  QString folder, QString fileNamePreffix);

    /// Pictures of the series that are not saved yet will not be.
    Q_INVOKABLE void cancelExportFrames();

    /// Writes the whole timeline as a new video, with `videoExportProgress`. Ends in
    /// `videoExportComplete` in any case, also when it returns false because no video is open or
    /// the name is empty.
    Q_INVOKABLE bool exportVideo(QString file);

    /// Why the last such work failed or what it lacks; ok if it lacks nothing. To be read on the
    /// interface thread, when its end is signalled or when it was refused.
    const Status& frameSaveResult() const { return m_frameSaveResult; }
    const Status& frameCopyResult() const { return m_frameCopyResult; }
    const Status& framesExportResult() const { return m_framesExportResult; }

    /// What else is to be known of the last series: its pictures whose thermal picture is not that
    /// of the screen. Empty if there are none.
    virtual QString framesExportNote() const { return m_framesExportNote; }
    const Status& videoExportResult() const { return m_videoExportResult; }

    /// The folder of the last series of pictures, and the file of the last video, as asked for.
    QString framesExportFolder() const { return m_framesExportFolder; }
    QString videoExportFile() const { return m_videoExportFile; }

    /// Takes the log of the parser into the overlay, and redraws a paused picture. Once per log;
    /// `thermalStatusChanged` follows each time.
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

    /// A file of the open flight can no longer be read, as when its card is pulled out: a sentence
    /// for the pilot, once for each attempt to play or to go somewhere. Playback is paused, and the
    /// next attempt looks whether the file is back.
    void readFailed(QString sentence);

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
    void exactTimePositionChanged(QTime position);
    void frameCountChanged();
    void openingProgressChanged();
    void thermalAsOnScreenChanged();
    void irPaletteChanged();
    void isReadToEndChanged();
    void thermalReadingChanged();
    void thermalStatusChanged();

    // The ends of work that takes time; the reason of a failure is in the result of that name.
    void frameSaveComplete(QString fileName, bool saved);
    void frameCopyComplete(bool copied);
    void framesExportStarted(int total);
    void framesExportProgress(int done, int total);
    void framesExportComplete(int saved, int failed);

private slots:
    void paintNextFrame();

private:
    // The worker's answers.
    void onVideoFilesProcessed(int opening, const OpenedTimeline& timeline) override;
    void onOpeningProgress(int opening, double part) override;
    void onFirstPicture(int opening, QSize pixelAspectRatio, const QVideoFrame& picture) override;
    void onCurrentFile(int opening, const QString& file) override;
    void onFrameReady(int opening, const PlayerFrame& frame, FrameUse use) override;
    void onSeekFailed(int opening) override;
    void onWishServed(int opening, WishOutcome outcome) override;
    void onRedrawFinished(int opening) override;
    void onPlaybackEnded(int opening, int lastFrame) override;
    void onReadFailed(int opening, const QString& file) override;
    void onThermalFrames(const Status& status) override;
    void onBurstFinished() override;

    /// A series of pictures that is being saved.
    struct FramesExport
    {
        int total = 0;
        int done = 0;
        int saved = 0;
        int stopped = 0;
        QStringList otherThermal; // file names
        std::optional<Failure> firstFailure;
        std::vector<std::shared_ptr<std::atomic<bool>>> cancelled; // one per call
    };
    using SavedCallback = std::function<void(const QString& fileName, const Status& saved)>;

    void toWorker(std::function<void(OpenCvWorker&)> job);
    bool requestFrame(QTime time, std::function<void(const QImage&)> callback, bool isForExport,
                      std::shared_ptr<const std::atomic<bool>> cancelled);
    Status requestSaving(QTime time, QString fileName, bool overwriteIfExists,
                         const std::shared_ptr<const std::atomic<bool>>& cancelled,
                         const SavedCallback& saved);
    void finishCopying(const Status& copied);
    std::shared_ptr<const std::atomic<bool>> beginFramesExport(int frames);
    void countExportedFrame(const Status& saved);
    void finishFramesExport();
    void setFrameCount(int frameCount);
    void setOpeningProgress(double part);
    bool goTo(const SeekWish& place);
    void serveWish();
    void dropWishes();
    void clearQueue();
    void setReadToEnd(bool isReadToEnd);
    void presentNextFrame(bool atOnce);
    bool show(const PlayerFrame& frame);
    const PlayerFrame& nextFrame() const;
    void waitForNextFrame();
    double nowMs() const;
    void requestBurst();
    void requestBurstIfStarved();
    void startSeek(std::function<void(OpenCvWorker&)> job);
    void startSurface();
    void takeColoursOf(const QVideoFrame& frame);
    void sendSettings();
    using Notify = void (VideoPlayer::*)();
    void setOverlayValue(double& field, double value, Notify changed);
    void setOverlayFlag(bool& field, bool value, Notify changed);
    void markBusy(int ms);
    void storeIrData(double min, double max);

    QPointer<QAbstractVideoSurface> m_surface;
    QVideoSurfaceFormat m_surfaceFormat;
    QString m_source;
    QStringList m_sourceFiles;
    std::optional<Failure> m_sourceOpenFailure;
    QStringList m_nextFiles; ///< empty for those that follow by number
    std::atomic<bool> m_hasVideoOpened{false};
    QTime m_timePosition{0, 0, 0, 0};
    int m_currentFrameIndex = 0;
    QTime m_duration;
    bool m_playing = false;
    std::atomic<bool> m_hasExportInsets{false};
    int m_playSpeed = 1;
    int m_frameDurationMs = 0;
    int m_frameCount = 0;
    int m_secondFileMs = -1;
    QTimer m_timer;
    QList<PlayerFrame> m_frames;
    std::shared_ptr<const ThermalReading> m_thermal; // of the frame on screen
    std::atomic<bool> m_exportCancelled{false};
    FramesExport m_framesExport;
    Status m_thermalStatus;
    int m_pendingThermalStatuses = 0;
    Status m_frameSaveResult;
    Status m_frameCopyResult;
    Status m_framesExportResult;
    QString m_framesExportNote;
    Status m_videoExportResult;
    QString m_framesExportFolder;
    QString m_videoExportFile;
    bool m_seeking = false;
    PendingWish m_wish;
    bool m_wishUnderWay = false;
    QTimer m_restTimer; // until the picture that a preview replaces is fetched
    bool m_redrawUnderWay = false;
    bool m_redrawWanted = false;
    bool m_awaitsFirstFrame = false; ///< the shown index is that of the video before
    bool m_endReached = false;       // the frames in the queue are the last
    bool m_isReadToEnd = false;      // the worker has no place
    bool m_isFailureKnown = false;   // of the attempt under way
    int m_lastGoodFrame = -1;        // where playback ended, below 0 if it has not yet
    PlaybackClock m_clock;
    QElapsedTimer m_steadyClock;
    bool m_isBusy = false;
    int m_busyCount = 0;
    QPointer<LogParser> m_logParser;
    VideoDisplaySettings m_settings;
    std::atomic<double> m_irDataMin{0.0};
    std::atomic<double> m_irDataMax{65535.0};
    int m_opening = 0;
    bool m_openingUnderWay = false;
    double m_openingProgress = 1.0;
    bool m_firstPictureShown = false; // of a video that is not open yet
    bool m_burstUnderWay = false;
    bool m_burstWanted = false;
    std::unique_ptr<OpenCvWorker> m_worker;
};

} // namespace corv
