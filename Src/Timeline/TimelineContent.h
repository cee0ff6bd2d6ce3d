#pragma once

#include "Log/LogParser.h"
#include "Review/PoiModel.h"
#include "Timeline/timelineGeometry.h"
#include "Video/VideoPlayer.h"

#include <QPointer>
#include <QQuickPaintedItem>
#include <QTime>
#include <QVariantList>
#include <QVariantMap>

namespace corv {

/// The strip under the video: ruler, playback cursor, and the points of interest of its model,
/// which it shows and edits. Without a model of the review it has one of its own. It turns mouse,
/// wheel and hover input into zoom, scroll, cursor moves, seeks and selection.
///
/// A time is counted from the start of the video; an invalid one means none. A point of interest is
/// known by its millisecond. Towards the interface it is a map of "time" (milliseconds), "name" and
/// "comment". Interface thread only; thumbnails come from the player's worker thread, later.
class TimelineContent : public QQuickPaintedItem
{
    Q_OBJECT
    Q_PROPERTY(corv::LogParser* logParser READ logParser WRITE setLogParser)
    Q_PROPERTY(corv::VideoPlayer* videoPlayer READ videoPlayer WRITE setVideoPlayer)
    Q_PROPERTY(QTime duration READ duration WRITE setDuration NOTIFY durationChanged)
    Q_PROPERTY(int contentWidth READ contentWidth WRITE setContentWidth NOTIFY contentWidthChanged)
    Q_PROPERTY(int contentX READ contentX WRITE setContentX NOTIFY contentXChanged)
    Q_PROPERTY(QTime cursorPosition READ cursorPosition WRITE setCursorPosition NOTIFY
                   cursorPositionChanged)
    Q_PROPERTY(float msPerPx READ msPerPx NOTIFY msPerPxChanged)
    Q_PROPERTY(QTime selectedPoiTime READ selectedPoiTime NOTIFY selectedPoiTimeChanged)
    Q_PROPERTY(bool hasSelectedPoi READ hasSelectedPoi NOTIFY hasSelectedPoiChanged)
    Q_PROPERTY(bool movePOIMode READ movePOIMode NOTIFY movePOIModeChanged)
    Q_PROPERTY(bool scrubbing READ isScrubbing NOTIFY scrubbingChanged)
    Q_PROPERTY(corv::PoiModel* poiModel READ poiModel WRITE setPoiModel NOTIFY poiModelChanged)

public:
    explicit TimelineContent(QQuickItem* parent = nullptr);

    /// Those of the model.
    LogParser* logParser() const { return m_pois->logParser(); }
    VideoPlayer* videoPlayer() const { return m_pois->videoPlayer(); }

    /// Never null. Not owned once it was set; a null one brings back the strip's own. The one set
    /// has a player and a parser already, or gets those of the strip.
    PoiModel* poiModel() const { return m_pois; }
    void setPoiModel(PoiModel* model);

    /// Length of the video. An invalid one is not taken.
    QTime duration() const { return m_duration; }

    /// Width in pixels of the whole strip, the margin past the end included.
    int contentWidth() const { return m_contentWidth; }

    /// Strip pixel at the item's left edge. Writing it clamps nothing.
    int contentX() const { return m_view.contentX; }

    /// The playback cursor; writing it keeps it in view and never seeks.
    QTime cursorPosition() const { return m_cursorPosition; }

    float msPerPx() const { return m_view.msPerPx; }
    QTime selectedPoiTime() const { return m_selectedPoiTime; }

    /// Whether the selected one is there: the selection outlives one that is deleted in the list or
    /// undone, and finds it again when it is back.
    bool hasSelectedPoi() const { return m_hasSelectedPoi; }
    bool movePOIMode() const { return m_movePOIMode; }

    /// The cursor is being dragged on the ruler.
    bool isScrubbing() const { return m_scrubbing; }

    void setLogParser(LogParser* logParser);
    void setVideoPlayer(VideoPlayer* videoPlayer);
    void setDuration(QTime duration);
    void setContentWidth(int contentWidth);
    void setContentX(int contentX);
    void setCursorPosition(QTime cursorPosition);

    /// Adds the log's points of interest that are not on the timeline yet, each once its frame has
    /// been read; also one from before the video, far past its end. One that was deleted comes
    /// back.
    Q_INVOKABLE void updateLogData();

    /// All points of interest in ascending time.
    Q_INVOKABLE QVariantList getPOIs() const;

    /// An empty map if none is selected.
    Q_INVOKABLE QVariantMap getSelectedPOI() const;

    /// Replaces all points of interest by those of the list with a "time". The selection stays.
    Q_INVOKABLE void setPOIsFromList(const QVariantList& poiList);

    /// Adds a point of interest at the cursor unless one is there; it does not become selected.
    /// While a video is open the cursor first moves to the exact time of the frame on screen.
    Q_INVOKABLE void addPoiAtPosition();

    /// The point of interest at the cursor, where a moved one would be put; empty if none.
    Q_INVOKABLE QVariantMap poiAtCursor() const;

    /// Selects the point of interest at `poiTime`, as a click on its flag does; none while one is
    /// being moved.
    Q_INVOKABLE void selectPoi(QTime poiTime);

    /// Deletes the point of interest at the cursor. The selection stays.
    Q_INVOKABLE void deletePoiAtPosition();

    Q_INVOKABLE void deleteSelectedPoi();
    Q_INVOKABLE void clearAllData();

    /// Gives the selected point of interest the "name" and "comment" of `poiData`. `poiTime` is
    /// for the message only.
    Q_INVOKABLE void updatePoi(QTime poiTime, const QVariantMap& poiData);

    /// Adds every point of interest of the log that lies within the video, on the next free
    /// millisecond where its own is taken, each once its frame has been read.
    Q_INVOKABLE void restoreMissingPOIsWithLogData();

    /// While moving, the selected one is drawn at the cursor and clicks only move the cursor.
    Q_INVOKABLE void enterMovePOIMode();
    Q_INVOKABLE void exitMovePOIMode();

    /// Puts the selected one at the cursor, over any other there. At its own place it is lost.
    Q_INVOKABLE void confirmNewPOIPositionAndExitMoveMode();

    /// Those whose flags are at a place of the item, in ascending time; the last is on top.
    std::vector<Poi> poisAt(const QPoint& point) const;

    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void hoverEnterEvent(QHoverEvent* event) override;
    void hoverMoveEvent(QHoverEvent* event) override;
    void hoverLeaveEvent(QHoverEvent* event) override;
    void paint(QPainter* painter) override;

signals:
    void durationChanged();
    void contentWidthChanged();
    void contentXChanged();
    void cursorPositionChanged();
    void msPerPxChanged();

    /// The user asks for the frame at `time`, which may lie past the end.
    void seekRequest(QTime time);

    void selectedPoiTimeChanged();
    void hasSelectedPoiChanged();
    void movePOIModeChanged();
    void poiModelChanged();
    void scrubbingChanged();

    /// A point of interest was to be added where there is one.
    void poiRefused(QTime poiTime);
    void poiDoubleClicked(QTime poiTime);

    /// The item was pressed, anywhere.
    void clicked();

private:
    using Pois = std::vector<Poi>;

    int pxOfTime(QTime time) const;
    QTime timeOfPx(int x) const;
    void rescale();
    void moveContentTo(int contentX);
    void clampContentX();
    void clampCursorPosition();
    void keepCursorInView();
    void zoomIn(int x);
    void zoomOut(int x);
    void moveZoomedContent(int msUnderPointer, int x);
    void moveCursorToShownFrame();
    void forgetFlight();
    void select(QTime poiTime);
    void findSelectedPoi();

    void setScrubbing(bool scrubbing);
    bool hasFlagAt(const Poi& poi, const QPoint& point) const;
    QTime poiAt(const QPoint& point) const;
    void hover(QHoverEvent* event);

    Pois::const_iterator firstPoiInTickRange() const;
    bool isInTickRange(Pois::const_iterator poi) const;
    std::vector<QTime> poisInSight() const;
    void askForThumbnails();
    void paintPois(QPainter& painter) const;
    void paintHoveredPoi(QPainter& painter) const;
    void paintMovedPoi(QPainter& painter) const;

    QTime m_duration = QTime(0, 0, 0, 0).addSecs(60);
    int m_contentWidth = 0;
    TimelineView m_view;
    QTime m_cursorPosition = QTime(0, 0, 0, 0);

    // Of the last paint; nothing can be hovered before it.
    TickRange m_ticks;

    bool m_pointerOnRuler = false;
    bool m_movePOIMode = false;
    bool m_scrubbing = false;
    PoiModel m_ownPois;
    QPointer<PoiModel> m_pois;

    // Either may name a time at which there is no point any more.
    QTime m_selectedPoiTime;
    bool m_hasSelectedPoi = false;
    QTime m_hoveredPoiTime;
};

} // namespace corv
