#include "Timeline/TimelineContent.h"

#include "Base/arithmetic.h"
#include "Timeline/WaitCursor.h"
#include "Timeline/logPois.h"
#include "Timeline/timelinePainting.h"

#include <QCursor>
#include <QDebug>
#include <QPainter>
#include <optional>
#include <utility>

namespace corv {
namespace {

constexpr int endMargin = 120;
constexpr int rulerBottom = 25;
constexpr int hoverTop = 37;
constexpr int hoverBottom = 151;
constexpr int msPerDay = 24 * 60 * 60 * 1000;

QVariantMap listForm(const TimelinePoi& poi)
{
    return {{QStringLiteral("time"), msOfTime(poi.time())},
            {QStringLiteral("name"), poi.name()},
            {QStringLiteral("comment"), poi.comment()}};
}

void setTexts(TimelinePoi& poi, const QVariantMap& texts)
{
    poi.setName(texts.value(QStringLiteral("name")).toString());
    poi.setComment(texts.value(QStringLiteral("comment")).toString());
}

TimelinePoi logPoi(QTime time, int index, const QImage& thumbnail)
{
    TimelinePoi poi(time, thumbnail);
    poi.setName(QStringLiteral("POI %1").arg(index + 1));
    return poi;
}

} // namespace

TimelineContent::TimelineContent(QQuickItem* parent) : QQuickPaintedItem(parent)
{
    setAcceptedMouseButtons(Qt::AllButtons);
    setAcceptHoverEvents(true);
}

// --- Setters ---------------------------------------------------------------------------------

void TimelineContent::setLogParser(LogParser* logParser)
{
    m_logParser = logParser;
}

void TimelineContent::setVideoPlayer(VideoPlayer* videoPlayer)
{
    m_videoPlayer = videoPlayer;
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

void TimelineContent::select(QTime poiTime)
{
    if (poiTime == m_selectedPoiTime)
        return;
    m_selectedPoiTime = poiTime;
    // A flag at the playhead is selected without any move of the cursor.
    update();
    emit selectedPoiTimeChanged();
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
        m_scrubbing = true;
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
    m_scrubbing = false;
    clampCursorPosition();
    keepCursorInView();
}

void TimelineContent::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (!m_movePOIMode && m_hoveredPoiTime.isValid())
        emit poiDoubleClicked(m_hoveredPoiTime);
    else
        event->ignore();
}

QTime TimelineContent::poiAt(const QPoint& point) const
{
    QTime hit;
    if (point.y() < hoverTop || point.y() > hoverBottom)
        return hit;
    // The latest of overlapping ones wins: it is painted on top.
    for (auto poi = firstPoiInTickRange(); isInTickRange(poi); ++poi) {
        const long long left = pxOfTime(poi.key());
        if (left <= point.x() && point.x() < left + poi->thumbnailWidth() + 1)
            hit = poi.key();
    }
    return hit;
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
    const int firstMs = m_ticks.firstMs;
    if (firstMs >= msPerDay)
        return m_pois.constEnd();
    return firstMs <= 0 ? m_pois.constBegin() : m_pois.lowerBound(timeOfMs(firstMs));
}

bool TimelineContent::isInTickRange(Pois::const_iterator poi) const
{
    return poi != m_pois.constEnd() && m_ticks.contains(msOfTime(poi.key()));
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
}

void TimelineContent::paintPois(QPainter& painter) const
{
    // A mark without a picture is a black stem and nothing more, and a damaged project can bring
    // thousands of them to a pixel: once is enough, unless they are translucent.
    std::optional<int> lastStemX;
    for (auto poi = firstPoiInTickRange(); isInTickRange(poi); ++poi) {
        const int x = pxOfTime(poi.key());
        if (poi->thumbnailWidth() == 0 && x == lastStemX && !m_movePOIMode)
            continue;
        PoiLook look;
        look.selected = poi.key() == m_selectedPoiTime;
        look.dimmed = m_movePOIMode;
        poi->drawPoi(painter, x, look);
        lastStemX = x;
    }
}

void TimelineContent::paintHoveredPoi(QPainter& painter) const
{
    const auto poi = m_pois.constFind(m_hoveredPoiTime);
    if (poi == m_pois.constEnd())
        return;
    PoiLook look;
    look.hovered = true;
    look.selected = m_hoveredPoiTime == m_selectedPoiTime;
    const int x = pxOfTime(m_hoveredPoiTime);
    poi->drawPoi(painter, x, look);
    paintHoverLight(painter, x, poi->thumbnailWidth());
}

void TimelineContent::paintMovedPoi(QPainter& painter) const
{
    const auto poi = m_pois.constFind(m_selectedPoiTime);
    if (poi == m_pois.constEnd())
        return;
    PoiLook look;
    look.hovered = true;
    look.selected = true;
    look.omitThumbnail = true;
    const int x = pxOfTime(m_cursorPosition);
    poi->drawPoi(painter, x, look);
    paintLandingBox(painter, x, poi->thumbnailWidth());
}

// --- Points of interest ----------------------------------------------------------------------

QVariantList TimelineContent::getPOIs() const
{
    QVariantList list;
    list.reserve(m_pois.size());
    for (const TimelinePoi& poi : m_pois)
        list.append(listForm(poi));
    return list;
}

QVariantMap TimelineContent::getSelectedPOI() const
{
    const auto poi = m_pois.constFind(m_selectedPoiTime);
    return poi == m_pois.constEnd() ? QVariantMap() : listForm(*poi);
}

void TimelineContent::setPOIsFromList(const QVariantList& poiList)
{
    m_pois.clear();
    for (const QVariant& entry : poiList) {
        const QVariantMap map = entry.toMap();
        if (!map.contains(QStringLiteral("time")))
            continue;
        const QTime time = timeOfMs(map.value(QStringLiteral("time")).toInt());
        TimelinePoi poi(time, QImage());
        setTexts(poi, map);
        m_pois.insert(time, poi);
        requestThumbnail(time, FrameHandOver::NullFrameWarning::withoutTime);
    }
    update();
}

void TimelineContent::addPoiAtPosition()
{
    if (m_pois.contains(m_cursorPosition)) {
        qInfo() << "Not adding POI, already one at same place";
        return;
    }
    TimelinePoi poi(m_cursorPosition, QImage());
    poi.setName(QStringLiteral("New POI"));
    m_pois.insert(m_cursorPosition, poi);
    requestThumbnail(m_cursorPosition, FrameHandOver::NullFrameWarning::withTime);
    update();
}

void TimelineContent::deletePoiAtPosition()
{
    m_pois.remove(m_cursorPosition);
    update();
}

void TimelineContent::deleteSelectedPoi()
{
    if (!m_selectedPoiTime.isValid())
        return;
    m_pois.remove(m_selectedPoiTime);
    select(QTime());
    update();
}

void TimelineContent::clearAllData()
{
    m_pois.clear();
    if (!m_selectedPoiTime.isValid())
        return;
    select(QTime());
    update();
}

void TimelineContent::updatePoi(QTime poiTime, const QVariantMap& poiData)
{
    const auto poi = m_pois.find(m_selectedPoiTime);
    if (poi == m_pois.end()) {
        qWarning() << "POI not found:" << poiTime << ";" << poiData;
        return;
    }
    setTexts(*poi, poiData);
    update();
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
        // In this order: at its own place the point is overwritten first and then erased.
        const auto old = m_pois.find(m_selectedPoiTime);
        const bool found = old != m_pois.end();
        const auto moved = m_pois.insert(m_cursorPosition, TimelinePoi(m_cursorPosition, QImage()));
        if (found) {
            moved->setName(old->name());
            moved->setComment(old->comment());
        }
        requestThumbnail(m_cursorPosition, FrameHandOver::NullFrameWarning::withTime);
        if (found)
            m_pois.erase(old);
        m_selectedPoiTime = m_cursorPosition;
        emit selectedPoiTimeChanged();
    }
    exitMovePOIMode();
}

// --- Points of the log -----------------------------------------------------------------------

void TimelineContent::updateLogData()
{
    if (!m_logParser)
        return;
    const WaitCursor waitCursor;
    int index = 0;
    for (const int ms : logPoiTimesMs(*m_logParser)) {
        const QTime time = timeOfMs(ms);
        if (m_pois.contains(time)) {
            qInfo() << "Already added POI at" << time;
        } else {
            requestFrame(time, FrameHandOver::NullFrameWarning::withTime,
                         [this, time, index](const QImage& thumbnail) {
                             insertLogPoi(time, index, thumbnail);
                         });
        }
        ++index;
    }
}

void TimelineContent::restoreMissingPOIsWithLogData()
{
    if (!m_logParser)
        return;
    const WaitCursor waitCursor;
    m_hoveredPoiTime = QTime();
    const int durationMs = msOfTime(m_duration);
    int index = 0;
    for (const int ms : logPoiTimesMs(*m_logParser)) {
        if (ms >= 0 && ms <= durationMs) {
            const QTime time = timeOfMs(ms);
            requestFrame(time, FrameHandOver::NullFrameWarning::withTime,
                         [this, time, index](const QImage& thumbnail) {
                             insertLogPoiWhereFree(time, index, thumbnail);
                         });
        }
        ++index;
    }
    update();
}

void TimelineContent::insertLogPoi(QTime time, int index, const QImage& thumbnail)
{
    m_pois.insert(time, logPoi(time, index, thumbnail));
    update();
}

void TimelineContent::insertLogPoiWhereFree(QTime time, int index, const QImage& thumbnail)
{
    const int durationMs = msOfTime(m_duration);
    int freeMs = msOfTime(time);
    auto taken = m_pois.constFind(time);
    while (taken != m_pois.constEnd() && msOfTime(taken.key()) == freeMs) {
        ++freeMs;
        ++taken;
    }
    if (freeMs >= durationMs) {
        qWarning() << "Couldn't insert POI at " << time;
        return;
    }
    const QTime freeTime = timeOfMs(freeMs);
    m_pois.insert(freeTime, logPoi(freeTime, index, thumbnail));
    update();
}

// --- Thumbnails ------------------------------------------------------------------------------

void TimelineContent::requestFrame(QTime time, FrameHandOver::NullFrameWarning warning,
                                   std::function<void(const QImage&)> store)
{
    if (m_videoPlayer)
        m_frames.request(*m_videoPlayer, time, warning, std::move(store));
}

void TimelineContent::requestThumbnail(QTime time, FrameHandOver::NullFrameWarning warning)
{
    requestFrame(time, warning,
                 [this, time](const QImage& thumbnail) { storeThumbnail(time, thumbnail); });
}

void TimelineContent::storeThumbnail(QTime time, const QImage& thumbnail)
{
    const auto poi = m_pois.find(time);
    if (poi == m_pois.end()) {
        qWarning() << "POI not found anymore";
        return;
    }
    poi->setThumbnail(thumbnail);
    update();
}

} // namespace corv
