#include "Timeline/TimelineContent.h"

#include "Base/arithmetic.h"
#include "Threads/post.h"
#include "Timeline/TimelinePoi.h"
#include "Timeline/WaitCursor.h"
#include "Timeline/logCategory.h"
#include "Timeline/timelinePainting.h"

#include <QCursor>
#include <QDebug>
#include <QPainter>
#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

namespace corv {
namespace {

constexpr int endMargin = 120;
constexpr int rulerBottom = 25;
constexpr int hoverTop = 37;
constexpr int hoverBottom = 151;

} // namespace

TimelineContent::TimelineContent(QQuickItem* parent) : QQuickPaintedItem(parent)
{
    setAcceptedMouseButtons(Qt::AllButtons);
    setAcceptHoverEvents(true);
    connect(this, &TimelineContent::selectedPoiTimeChanged, this,
            &TimelineContent::findSelectedPoi);
    setPoiModel(nullptr);
}

// --- Setters ---------------------------------------------------------------------------------

void TimelineContent::setLogParser(LogParser* logParser)
{
    m_ownPois.setLogParser(logParser);
    m_pois->setLogParser(logParser);
}

void TimelineContent::setVideoPlayer(VideoPlayer* videoPlayer)
{
    m_ownPois.setVideoPlayer(videoPlayer);
    m_pois->setVideoPlayer(videoPlayer);
}

void TimelineContent::setPoiModel(PoiModel* model)
{
    PoiModel* const pois = model ? model : &m_ownPois;
    if (pois == m_pois)
        return;
    if (m_pois)
        disconnect(m_pois, nullptr, this, nullptr);
    m_pois = pois;
    if (!pois->videoPlayer())
        pois->setVideoPlayer(m_ownPois.videoPlayer());
    if (!pois->logParser())
        pois->setLogParser(m_ownPois.logParser());
    connect(pois, &PoiModel::changed, this, [this] {
        findSelectedPoi();
        update();
    });
    connect(pois, &PoiModel::cleared, this, &TimelineContent::forgetFlight);
    if (pois != &m_ownPois)
        connect(pois, &QObject::destroyed, this, [this] { setPoiModel(nullptr); });
    findSelectedPoi();
    update();
    emit poiModelChanged();
}

void TimelineContent::setDuration(QTime duration)
{
    if (!duration.isValid() || duration == m_duration)
        return;
    m_duration = duration;
    rescale();
    emit durationChanged();
}

void TimelineContent::setContentWidth(int contentWidth)
{
    if (contentWidth == m_contentWidth)
        return;
    m_contentWidth = contentWidth;
    rescale();
    emit contentWidthChanged();
}

void TimelineContent::rescale()
{
    m_view.msPerPx = scaleOfStrip(msOfTime(m_duration), m_contentWidth, endMargin);
    update();
    emit msPerPxChanged();
}

void TimelineContent::setContentX(int contentX)
{
    moveContentTo(contentX);
}

void TimelineContent::setCursorPosition(QTime cursorPosition)
{
    if (!cursorPosition.isValid() || cursorPosition == m_cursorPosition)
        return;
    m_cursorPosition = cursorPosition;
    clampCursorPosition();
    keepCursorInView();
    update();
    emit cursorPositionChanged();
}

// --- Geometry of the view --------------------------------------------------------------------

int TimelineContent::pxOfTime(QTime time) const
{
    return pxOfMs(msOfTime(time), m_view);
}

QTime TimelineContent::timeOfPx(int x) const
{
    return timeOfMs(msOfPx(x, m_view));
}

void TimelineContent::moveContentTo(int contentX)
{
    if (contentX == m_view.contentX)
        return;
    m_view.contentX = contentX;
    update();
    emit contentXChanged();
}

void TimelineContent::clampContentX()
{
    if (m_view.contentX < 0)
        moveContentTo(0);
    // In this order: a strip narrower than the item ends up at its right edge.
    const int limit = truncateToInt(m_contentWidth - width());
    if (m_view.contentX > limit)
        moveContentTo(limit);
}

void TimelineContent::clampCursorPosition()
{
    const QTime start(0, 0, 0, 0);
    if (m_cursorPosition < start)
        m_cursorPosition = start;
    if (m_cursorPosition > m_duration)
        m_cursorPosition = m_duration;
}

void TimelineContent::keepCursorInView()
{
    const int stripPx =
        truncateToInt(static_cast<double>(pxOfTime(m_cursorPosition)) + m_view.contentX);
    const ScrollToCursor scroll = scrollToCursor(stripPx, m_view.contentX, width());
    if (!scroll.needed)
        return;
    moveContentTo(scroll.contentX);
    clampContentX();
}

void TimelineContent::zoomIn(int x)
{
    const int msUnderPointer = msOfPx(x, m_view);
    setContentWidth(widthZoomedIn(m_contentWidth, msOfTime(m_duration)));
    moveZoomedContent(msUnderPointer, x);
    update();
}

void TimelineContent::zoomOut(int x)
{
    const int msUnderPointer = msOfPx(x, m_view);
    setContentWidth(widthZoomedOut(m_contentWidth, width()));
    moveZoomedContent(msUnderPointer, x);
}

void TimelineContent::moveZoomedContent(int msUnderPointer, int x)
{
    moveContentTo(contentXWithMsAt(msUnderPointer, x, m_view.msPerPx));
    clampContentX();
}

// The cursor follows the player in steps of 100 ms; between them it is on an earlier frame.
void TimelineContent::moveCursorToShownFrame()
{
    const VideoPlayer* const player = videoPlayer();
    if (player && player->hasVideoOpened())
        setCursorPosition(player->timePosition());
}

void TimelineContent::forgetFlight()
{
    m_hoveredPoiTime = QTime();
    select(QTime());
    exitMovePOIMode();
    const VideoPlayer* const player = videoPlayer();
    if (player)
        setCursorPosition(player->hasVideoOpened() ? player->timePosition() : QTime(0, 0, 0, 0));
}

void TimelineContent::select(QTime poiTime)
{
    if (poiTime == m_selectedPoiTime)
        return;
    m_selectedPoiTime = poiTime;
    // A flag at the playhead is selected without any move of the cursor.
    update();
    emit selectedPoiTimeChanged();
}

void TimelineContent::findSelectedPoi()
{
    const bool found = m_pois->find(m_selectedPoiTime) != nullptr;
    if (found == m_hasSelectedPoi)
        return;
    m_hasSelectedPoi = found;
    emit hasSelectedPoiChanged();
}

// --- Input -----------------------------------------------------------------------------------

void TimelineContent::wheelEvent(QWheelEvent* event)
{
    const QPoint delta = event->angleDelta();
    const bool forward = delta.x() > 0 || delta.y() > 0;
    if (!forward && delta.x() >= 0 && delta.y() >= 0)
        return;
    if (event->modifiers() != Qt::NoModifier) {
        const int x = event->position().toPoint().x();
        forward ? zoomIn(x) : zoomOut(x);
        return;
    }
    const double step = width() / 6.0;
    moveContentTo(truncateToInt(forward ? contentX() + step : contentX() - step));
    clampContentX();
}

void TimelineContent::mousePressEvent(QMouseEvent* event)
{
    event->accept();
    emit clicked();
    if (!m_movePOIMode) {
        if (m_hoveredPoiTime.isValid()) {
            select(m_hoveredPoiTime);
            emit seekRequest(m_hoveredPoiTime);
            return;
        }
        select(QTime());
    }
    if (m_pointerOnRuler)
        setScrubbing(true);
    const QTime pressedTime = timeOfPx(event->pos().x());
    m_cursorPosition = pressedTime;
    clampCursorPosition();
    keepCursorInView();
    update();
    emit cursorPositionChanged();
    emit seekRequest(pressedTime);
}

void TimelineContent::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_scrubbing)
        return;
    m_cursorPosition = timeOfPx(event->pos().x());
    clampCursorPosition();
    update();
    emit cursorPositionChanged();
    emit seekRequest(m_cursorPosition);
}

void TimelineContent::mouseReleaseEvent(QMouseEvent*)
{
    if (!m_scrubbing)
        return;
    setScrubbing(false);
    clampCursorPosition();
    keepCursorInView();
}

void TimelineContent::setScrubbing(bool scrubbing)
{
    m_scrubbing = scrubbing;
    emit scrubbingChanged();
}

void TimelineContent::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (!m_movePOIMode && m_hoveredPoiTime.isValid())
        emit poiDoubleClicked(m_hoveredPoiTime);
    else
        event->ignore();
}

bool TimelineContent::hasFlagAt(const Poi& poi, const QPoint& point) const
{
    if (point.y() < hoverTop || point.y() > hoverBottom)
        return false;
    const long long left = pxOfTime(poi.time);
    return left <= point.x() && point.x() < left + poi.thumbnail.width() + 1;
}

QTime TimelineContent::poiAt(const QPoint& point) const
{
    QTime hit;
    // The latest of overlapping ones wins: it is painted on top.
    for (auto poi = firstPoiInTickRange(); isInTickRange(poi); ++poi) {
        if (hasFlagAt(*poi, point))
            hit = poi->time;
    }
    return hit;
}

std::vector<Poi> TimelineContent::poisAt(const QPoint& point) const
{
    std::vector<Poi> hits;
    for (auto poi = firstPoiInTickRange(); isInTickRange(poi); ++poi) {
        if (hasFlagAt(*poi, point))
            hits.push_back(*poi);
    }
    return hits;
}

void TimelineContent::hover(QHoverEvent* event)
{
    const QTime before = std::exchange(m_hoveredPoiTime, poiAt(event->pos()));
    if (m_hoveredPoiTime.isValid())
        event->accept();
    m_pointerOnRuler = event->pos().y() < rulerBottom;
    if (m_pointerOnRuler)
        setCursor(Qt::SizeHorCursor);
    else if (m_hoveredPoiTime.isValid() && !m_movePOIMode)
        setCursor(Qt::PointingHandCursor);
    else
        unsetCursor();
    if (before != m_hoveredPoiTime || m_pointerOnRuler)
        update();
}

// Entering and moving treat the event in opposite senses, on purpose.
void TimelineContent::hoverEnterEvent(QHoverEvent* event)
{
    hover(event);
    if (!m_hoveredPoiTime.isValid())
        event->ignore();
}

void TimelineContent::hoverMoveEvent(QHoverEvent* event)
{
    hover(event);
    if (m_hoveredPoiTime.isValid())
        event->ignore();
}

void TimelineContent::hoverLeaveEvent(QHoverEvent*)
{
    const bool changed = m_hoveredPoiTime.isValid() || m_pointerOnRuler;
    m_hoveredPoiTime = QTime();
    m_pointerOnRuler = false;
    unsetCursor();
    if (changed)
        update();
}

// --- Painting --------------------------------------------------------------------------------

TimelineContent::Pois::const_iterator TimelineContent::firstPoiInTickRange() const
{
    const Pois& pois = m_pois->pois();
    return std::lower_bound(pois.begin(), pois.end(), m_ticks.firstMs,
                            [](const Poi& poi, int ms) { return msOfTime(poi.time) < ms; });
}

bool TimelineContent::isInTickRange(Pois::const_iterator poi) const
{
    return poi != m_pois->pois().end() && m_ticks.contains(msOfTime(poi->time));
}

void TimelineContent::paint(QPainter* painter)
{
    const QSizeF size = boundingRect().size();
    m_ticks = paintRuler(*painter, {m_view, size, msOfTime(m_duration), m_contentWidth, endMargin});
    paintPois(*painter);
    if (m_movePOIMode)
        paintMovedPoi(*painter);
    else
        paintHoveredPoi(*painter);
    paintCursor(*painter, pxOfTime(m_cursorPosition), size);
    askForThumbnails();
}

// Those of which more than a stem can be seen: where the next one begins a pixel further on, its
// stem and its thumbnail cover this one's.
std::vector<QTime> TimelineContent::poisInSight() const
{
    std::vector<QTime> times{m_hoveredPoiTime, m_selectedPoiTime};
    for (auto poi = firstPoiInTickRange(); isInTickRange(poi);) {
        const auto next = std::next(poi);
        if (next == m_pois->pois().end() || pxOfTime(next->time) > pxOfTime(poi->time) + 1)
            times.push_back(poi->time);
        poi = next;
    }
    return times;
}

// Painting runs on the thread of the scene, and the model belongs to that of the interface.
void TimelineContent::askForThumbnails()
{
    if (m_pois->hasUnseen())
        post(this, [this, times = poisInSight()] { m_pois->showThumbnails(times); });
}

void TimelineContent::paintPois(QPainter& painter) const
{
    // A point of interest without a picture is a black stem and nothing more, and a damaged project
    // can bring thousands of them to a pixel: once is enough, unless they are translucent.
    std::optional<int> lastStemX;
    for (auto poi = firstPoiInTickRange(); isInTickRange(poi); ++poi) {
        const int x = pxOfTime(poi->time);
        if (poi->thumbnail.width() == 0 && x == lastStemX && !m_movePOIMode)
            continue;
        PoiLook look;
        look.selected = poi->time == m_selectedPoiTime;
        look.dimmed = m_movePOIMode;
        TimelinePoi(*poi).drawPoi(painter, x, look);
        lastStemX = x;
    }
}

void TimelineContent::paintHoveredPoi(QPainter& painter) const
{
    const Poi* const poi = m_pois->find(m_hoveredPoiTime);
    if (!poi)
        return;
    PoiLook look;
    look.hovered = true;
    look.selected = m_hoveredPoiTime == m_selectedPoiTime;
    const int x = pxOfTime(m_hoveredPoiTime);
    TimelinePoi(*poi).drawPoi(painter, x, look);
    paintHoverLight(painter, x, poi->thumbnail.width());
}

void TimelineContent::paintMovedPoi(QPainter& painter) const
{
    const Poi* const poi = m_pois->find(m_selectedPoiTime);
    if (!poi)
        return;
    PoiLook look;
    look.hovered = true;
    look.selected = true;
    look.omitThumbnail = true;
    const int x = pxOfTime(m_cursorPosition);
    TimelinePoi(*poi).drawPoi(painter, x, look);
    paintLandingBox(painter, x, poi->thumbnail.width());
}

// --- Points of interest ----------------------------------------------------------------------

QVariantList TimelineContent::getPOIs() const
{
    return m_pois->list();
}

QVariantMap TimelineContent::getSelectedPOI() const
{
    const Poi* const poi = m_pois->find(m_selectedPoiTime);
    return poi ? listForm(*poi) : QVariantMap();
}

void TimelineContent::setPOIsFromList(const QVariantList& poiList)
{
    m_pois->setFromList(poiList);
}

void TimelineContent::addPoiAtPosition()
{
    moveCursorToShownFrame();
    if (m_pois->find(m_cursorPosition)) {
        qCInfo(lcTimeline) << "Not adding POI, already one at same place";
        emit poiRefused(m_cursorPosition);
    } else {
        m_pois->create(m_cursorPosition);
    }
}

QVariantMap TimelineContent::poiAtCursor() const
{
    const Poi* const poi = m_pois->find(m_cursorPosition);
    return poi ? listForm(*poi) : QVariantMap();
}

void TimelineContent::selectPoi(QTime poiTime)
{
    if (m_movePOIMode || !m_pois->find(poiTime))
        return;
    select(poiTime);
    update();
}

void TimelineContent::deletePoiAtPosition()
{
    m_pois->remove(m_cursorPosition);
}

void TimelineContent::deleteSelectedPoi()
{
    if (!m_selectedPoiTime.isValid())
        return;
    m_pois->remove(m_selectedPoiTime);
    select(QTime());
    update();
}

void TimelineContent::clearAllData()
{
    m_pois->clear();
}

void TimelineContent::updatePoi(QTime poiTime, const QVariantMap& poiData)
{
    const auto text = [&poiData](const char* key) {
        return poiData.value(QLatin1String(key)).toString();
    };
    if (!m_pois->setTexts(m_selectedPoiTime, text("name"), text("comment")))
        qCWarning(lcTimeline) << "POI not found:" << poiTime << ";" << poiData;
}

void TimelineContent::enterMovePOIMode()
{
    if (m_movePOIMode || !m_selectedPoiTime.isValid())
        return;
    m_movePOIMode = true;
    emit movePOIModeChanged();
    update();
}

void TimelineContent::exitMovePOIMode()
{
    if (!m_movePOIMode)
        return;
    m_movePOIMode = false;
    emit movePOIModeChanged();
    update();
}

void TimelineContent::confirmNewPOIPositionAndExitMoveMode()
{
    if (!m_movePOIMode)
        return;
    if (m_selectedPoiTime.isValid()) {
        m_pois->move(m_selectedPoiTime, m_cursorPosition);
        m_selectedPoiTime = m_cursorPosition;
        emit selectedPoiTimeChanged();
    }
    exitMovePOIMode();
}

void TimelineContent::updateLogData()
{
    const WaitCursor waitCursor;
    m_pois->addMissingFromLog(PoiModel::As::loading);
}

void TimelineContent::restoreMissingPOIsWithLogData()
{
    const WaitCursor waitCursor;
    m_hoveredPoiTime = QTime();
    m_pois->addAllFromLog(
        [item = QPointer<TimelineContent>(this)] { return item ? msOfTime(item->m_duration) : 0; });
    update();
}

} // namespace corv
