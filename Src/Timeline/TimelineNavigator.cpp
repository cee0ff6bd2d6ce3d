#include "Timeline/TimelineNavigator.h"

#include "Base/videoTime.h"
#include "Timeline/timelineGeometry.h"

#include <algorithm>
#include <cmath>

namespace corv {
namespace {

// The strip's pixels past the end of the video.
constexpr int endMargin = 120;
constexpr double selectionMs = 10'000;

} // namespace

void TimelineNavigator::jump(int ms)
{
    if (!m_timeline)
        return;
    const int target = msOfTime(m_timeline->cursorPosition()) + ms;
    emit m_timeline->seekRequest(timeOfMs(std::clamp(target, 0, msOfTime(m_timeline->duration()))));
}

void TimelineNavigator::selectNextPoi()
{
    if (!m_timeline)
        return;
    const auto& pois = m_timeline->poiModel()->pois();
    const QTime cursor = m_timeline->cursorPosition();
    const auto next =
        std::find_if(pois.cbegin(), pois.cend(), [&](const Poi& poi) { return poi.time > cursor; });
    if (next != pois.cend())
        goToPoi(next->time);
}

void TimelineNavigator::selectPreviousPoi()
{
    if (!m_timeline)
        return;
    const auto& pois = m_timeline->poiModel()->pois();
    const QTime cursor = m_timeline->cursorPosition();
    const auto previous = std::find_if(pois.crbegin(), pois.crend(),
                                       [&](const Poi& poi) { return poi.time < cursor; });
    if (previous != pois.crend())
        goToPoi(previous->time);
}

void TimelineNavigator::goToPoi(QTime time)
{
    if (!m_timeline || !time.isValid())
        return;
    m_timeline->selectPoi(time);
    emit m_timeline->seekRequest(time);
}

QTime TimelineNavigator::timeAt(double x) const
{
    if (!m_timeline)
        return {};
    const TimelineView view{m_timeline->msPerPx(), m_timeline->contentX()};
    const int ms = msOfPx(static_cast<int>(x), view);
    return timeOfMs(std::clamp(ms, 0, msOfTime(m_timeline->duration())));
}

QString TimelineNavigator::timeTextAt(double x) const
{
    return textOfTime(timeAt(x));
}

QVariantList TimelineNavigator::poisAt(double x, double y) const
{
    QVariantList list;
    if (!m_timeline)
        return list;
    for (const Poi& poi : m_timeline->poisAt(QPointF(x, y).toPoint()))
        list << QVariantMap{{QStringLiteral("time"), poi.time},
                            {QStringLiteral("timeText"), textOfTime(poi.time)},
                            {QStringLiteral("name"), poi.name}};
    return list;
}

QImage TimelineNavigator::pictureAt(QTime time) const
{
    if (!m_timeline)
        return {};
    PoiModel* const pois = m_timeline->poiModel();
    pois->showThumbnail(time);
    const Poi* const poi = pois->find(time);
    return poi ? poi->thumbnail : QImage();
}

bool TimelineNavigator::samePois(const QVariantList& one, const QVariantList& other) const
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](const QVariant& first, const QVariant& second) {
                          return first.toMap().value(QStringLiteral("time")) ==
                                 second.toMap().value(QStringLiteral("time"));
                      });
}

void TimelineNavigator::zoom(bool in)
{
    if (!m_timeline)
        return;
    const TimelineView view{m_timeline->msPerPx(), m_timeline->contentX()};
    const int cursorMs = msOfTime(m_timeline->cursorPosition());
    int x = pxOfMs(cursorMs, view);
    int ms = cursorMs;
    if (x < 0 || x > m_timeline->width()) {
        x = static_cast<int>(m_timeline->width() / 2);
        ms = msOfPx(x, view);
    }
    zoomTo(in ? widthZoomedIn(m_timeline->contentWidth(), msOfTime(m_timeline->duration()))
              : widthZoomedOut(m_timeline->contentWidth(), m_timeline->width()),
           ms, x);
}

void TimelineNavigator::zoomToFit()
{
    if (m_timeline)
        zoomTo(static_cast<int>(m_timeline->width()), 0, 0);
}

void TimelineNavigator::zoomToSelection()
{
    if (!m_timeline)
        return;
    const QTime selected = m_timeline->selectedPoiTime();
    const QTime middle = selected.isValid() ? selected : m_timeline->cursorPosition();
    const double durationMs = msOfTime(m_timeline->duration());
    const double shownMs = std::clamp(selectionMs, 1.0, std::max(1.0, durationMs));
    const double width = m_timeline->width() * durationMs / shownMs + endMargin;
    zoomTo(static_cast<int>(std::min(width, 1e9)), msOfTime(middle),
           static_cast<int>(m_timeline->width() / 2));
}

void TimelineNavigator::zoomTo(int contentWidth, int ms, int x)
{
    m_timeline->setContentWidth(contentWidth);
    const int limit = std::max(0, contentWidth - static_cast<int>(m_timeline->width()));
    m_timeline->setContentX(std::clamp(contentXWithMsAt(ms, x, m_timeline->msPerPx()), 0, limit));
}

} // namespace corv
