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
    change();
}

void HeadUpDisplay::setImperialUnits(bool imperialUnits)
{
    if (imperialUnits == m_painter.imperialUnits())
        return;
    m_painter.setImperialUnits(imperialUnits);
    change();
}

void HeadUpDisplay::refresh()
{
    change();
}

void HeadUpDisplay::change()
{
    update();
    emit readingsChanged();
}

QStringList HeadUpDisplay::readings() const
{
    HeadUpPainter painter = m_painter;
    painter.setClock(m_logParser ? m_logParser->clock() : nullptr);
    QStringList texts;
    for (size_t row = 0; row < painter.rows().size(); ++row) {
        const QString value = painter.textAt(row, msOfTime(m_videoPosition));
        texts.append(QLatin1String(painter.rows()[row].label) +
                     (value.isEmpty() ? QStringLiteral(": no value") : QLatin1Char(' ') + value));
    }
    return texts;
}

void HeadUpDisplay::updateLogData()
{
    m_painter.setLog(nullptr);
    if (!m_logParser) {
        qCWarning(lcTimeline) << "No log parser";
        change(); // without a log, too: the position alone may stay the same
        return;
    }
    const std::shared_ptr<const LogFile> log = m_logParser->log();
    if (!log) {
        qCWarning(lcTimeline) << "No log file";
        change();
        return;
    }
    const WaitCursor waitCursor;
    m_painter.setLog(log);
    change();
}

void HeadUpDisplay::paint(QPainter* painter)
{
    m_painter.setClock(m_logParser ? m_logParser->clock() : nullptr);
    m_painter.paint(*painter, std::round(boundingRect().width()), msOfTime(m_videoPosition));
}

} // namespace corv
