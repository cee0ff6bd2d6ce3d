#pragma once

#include "Log/LogParser.h"
#include "Review/FrameHandOver.h"
#include "Review/Poi.h"
#include "Video/VideoPlayer.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QTime>
#include <QVariantList>
#include <deque>
#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

class QUndoStack;

namespace corv {

/// What happens to the point of interest at one time in a step; none before or none after means
/// that it is made or deleted.
struct PoiChange
{
    QTime time;
    std::optional<Poi> before;
    std::optional<Poi> after;
    bool fetchesFrame = false; ///< doing it fetches the frame, also where there is a picture
};

/// The points of interest of the open flight, sorted by time, no two at the same millisecond.
///
/// A point of interest of the user or of a project exists at once and gets its thumbnail later; one
/// of the log exists only once its frame has been read. With an undo stack, each function under
/// "Steps" pushes one command, and loading pushes none. Interface thread only; frames come from the
/// player's worker.
class PoiModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { TimeRole = Qt::UserRole + 1, NameRole, CommentRole, ThumbnailRole, OriginRole };

    /// Whether a change is a step that can be undone, or a part of loading a flight.
    enum class As { step, loading };

    explicit PoiModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;

    /// The time in milliseconds, the texts, the thumbnail as an image, the origin as its number.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

    int count() const { return static_cast<int>(m_pois.size()); }

    /// All, in ascending time.
    const std::vector<Poi>& pois() const { return m_pois; }
    QVariantList list() const;

    /// Null if there is none at this millisecond. Valid until the next change.
    const Poi* find(QTime time) const;

    // Not owned, and none of them needed: without a player there are no thumbnails, without a
    // parser no points of interest from a log, without a stack nothing can be undone. The stack
    // outlives this.
    VideoPlayer* videoPlayer() const { return m_videoPlayer; }
    void setVideoPlayer(VideoPlayer* videoPlayer);
    LogParser* logParser() const { return m_logParser; }
    void setLogParser(LogParser* logParser);
    void setUndoStack(QUndoStack* stack) { m_undoStack = stack; }

    // --- Steps ---

    /// A point of interest "New POI". There must be none at `time`.
    void create(QTime time);

    /// Nothing if there is none.
    void remove(QTime time);

    /// The same for several, as one step.
    void removeAll(std::vector<QTime> times);

    /// False if there is none at `time`.
    bool setTexts(QTime time, const QString& name, const QString& comment);

    /// Moves the one at `from` to `to` and replaces one there; its thumbnail is fetched anew. If
    /// there is none at `from`, an unnamed one is made. Onto its own place it is deleted.
    void move(QTime from, QTime to);

    /// Adds those of the log for whose exact time there is none. One logged before the start of the
    /// video has no frame, and so does not appear.
    void addMissingFromLog(As as);

    /// Adds each one of the log from 0 to `durationMs`. If its millisecond is taken, it gets the
    /// next free one before `durationMs`, which is called again when the frame arrives.
    void addAllFromLog(std::function<int()> durationMs);

    // --- Loading: no step ---

    /// Replaces all by those entries that have a "time", of a later one of the same time only that.
    void setFromList(const QVariantList& list);
    void clear();

    /// Of more than this many at once, thumbnails are fetched only once they are shown.
    static constexpr size_t fetchedUnseen = 2000;

    /// Whether any thumbnail, or that at `time`, is fetched only once it is shown, and was not yet.
    bool hasUnseen() const { return !m_unseen.empty(); }
    bool isUnseen(QTime time) const;

    /// Fetches the unseen thumbnails at these times, in this order and a few at a time. Those of an
    /// earlier call that were not begun are not shown any more, and wait again.
    void showThumbnails(const std::vector<QTime>& times);

    /// Fetches one of them at once, and keeps what the last showThumbnails() asked for.
    Q_INVOKABLE void showThumbnail(QTime time);

    /// While held, thumbnails of points of interest that exist wait: the picture is to have the
    /// thermal overlay of a log that is still being read.
    void holdThumbnails();
    void releaseThumbnails();

    /// Fetches the pictures of all anew, one after the other, for a change of how the player draws
    /// them. Called again before the end, it begins again.
    void refreshThumbnails();

    /// Carries out a step or its reverse. For undo commands.
    void apply(const std::vector<PoiChange>& changes, bool forward);

    /// How many points of interest `addMissingFromLog` and `addAllFromLog` add to a video of this
    /// length, as far as that can be said before the frames are read.
    int missingInLog(int durationMs) const;
    int addableFromLog(int durationMs) const;

signals:
    void countChanged();

    /// Any change, thumbnails included: what shows them has to be painted anew.
    void changed();

    /// A change of what a project keeps: the list form.
    void contentsChanged();

    /// Another flight begins: what was remembered of points of interest means nothing any more.
    void cleared();

    /// A point of interest of the log was added while a flight was loaded: no step.
    void loadedFromLog(const corv::Poi& poi);

private:
    using Iterator = std::vector<Poi>::iterator;

    struct ThumbnailWish
    {
        QTime time;
        FrameHandOver::NullFrameWarning warning;
    };

    Iterator lowerBound(QTime time);
    Poi* findMutable(QTime time);
    void put(const Poi& poi);
    void erase(QTime time);
    void perform(const QString& text, std::vector<PoiChange> changes, int batch);
    bool requestFrame(QTime time, FrameHandOver::NullFrameWarning warning,
                      std::function<void(const QImage&)> store, std::function<void()> missing = {});
    void requestThumbnail(QTime time, FrameHandOver::NullFrameWarning warning);
    void requestThumbnails(const std::vector<ThumbnailWish>& wishes);
    void fetchNextShown();
    void storeThumbnail(QTime time, const QImage& thumbnail);
    void refreshNext();
    void insertLogPoi(QTime time, int index, const QImage& thumbnail, As as, int batch);
    void insertLogPoiWhereFree(QTime time, int index, const QImage& thumbnail, int durationMs,
                               int batch);

    int countInLog(const std::function<bool(int ms)>& counts) const;

    std::vector<Poi> m_pois;
    QPointer<LogParser> m_logParser;
    QPointer<VideoPlayer> m_videoPlayer;
    QUndoStack* m_undoStack = nullptr;
    FrameHandOver m_frames;
    bool m_isHeld = false;
    std::vector<ThumbnailWish> m_held;
    // By millisecond; those that have gone since stay until their flight ends.
    std::unordered_map<int, FrameHandOver::NullFrameWarning> m_unseen;
    std::deque<QTime> m_shown; ///< of `showThumbnails`, not begun
    int m_shownOnTheirWay = 0;
    std::deque<QTime> m_toRefresh;
    bool m_isRefreshing = false; ///< a picture of `refreshThumbnails` is on its way
    int m_loading = 0; ///< grows with each flight: late frames of an earlier one are dropped
    int m_lastBatch = 0;
};

} // namespace corv
