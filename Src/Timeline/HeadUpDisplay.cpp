#include "Timeline/HeadUpDisplay.h"

#include "Timeline/WaitCursor.h"
#include "Timeline/logCategory.h"
#include "Timeline/timelineGeometry.h"

#include <QDebug>
#include <cmath>

namespace corv {

HeadUpDisplay::HeadUpDisplay(QQuickItem* parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
}

void HeadUpDisplay::setLogParser(LogParser* logParser)
{
    m_logParser = logParser;
}

void HeadUpDisplay::setVideoPosition(QTime videoPosition)
{
    if (videoPosition == m_videoPosition)
        return;
    m_videoPosition = videoPosition;
    update();
}

void HeadUpDisplay::setImperialUnits(bool imperialUnits)
{
    if (imperialUnits == m_painter.imperialUnits())
        return;
    m_painter.setImperialUnits(imperialUnits);
    update();
}

void HeadUpDisplay::refresh()
{
    update();
}

void HeadUpDisplay::updateLogData()
{
    m_painter.setLog(nullptr);
    update(); // without a log, too: the position alone may stay the same
    if (!m_logParser) {
        qCWarning(lcTimeline) << "No log parser";
        return;
    }
    const std::shared_ptr<const LogFile> log = m_logParser->log();
    if (!log) {
        qCWarning(lcTimeline) << "No log file";
        return;
    }
    const WaitCursor waitCursor;
    m_painter.setLog(log);
}

void HeadUpDisplay::paint(QPainter* painter)
{
    m_painter.setClock(m_logParser ? m_logParser->clock() : nullptr);
    m_painter.paint(*painter, std::round(boundingRect().width()), msOfTime(m_videoPosition));
}

} // namespace corv
