#include "Timeline/LogCurves.h"

#include <QtMath>

namespace corv {

LogCurves::LogCurves(QQuickItem* parent) : QQuickPaintedItem(parent) {}

void LogCurves::setLogParser(LogParser* logParser)
{
    if (logParser == m_logParser)
        return;
    if (m_logParser)
        m_logParser->disconnect(this);
    m_logParser = logParser;
    if (logParser) {
        connect(logParser, &LogParser::sourceDataParsed, this, &LogCurves::takeLog);
        connect(logParser, &LogParser::sourceChanged, this, &LogCurves::takeLog);
        connect(logParser, &LogParser::manualLogTimeOffsetChanged, this,
                &LogCurves::changeReadings);
    }
    takeLog();
    emit logParserChanged();
}

void LogCurves::takeLog()
{
    m_painter.setLog(m_logParser ? m_logParser->log() : nullptr);
    m_painter.setClock(m_logParser ? m_logParser->clock() : nullptr);
    emit logChanged();
    changeReadings();
}

void LogCurves::changeReadings()
{
    emit readingsChanged();
    update();
}

void LogCurves::setMsPerPx(float msPerPx)
{
    if (msPerPx == m_view.msPerPx)
        return;
    m_view.msPerPx = msPerPx;
    emit msPerPxChanged();
    update();
}

void LogCurves::setContentX(int contentX)
{
    if (contentX == m_view.contentX)
        return;
    m_view.contentX = contentX;
    emit contentXChanged();
    update();
}

void LogCurves::setCursorPosition(QTime cursorPosition)
{
    if (cursorPosition == m_cursorPosition)
        return;
    m_cursorPosition = cursorPosition;
    emit cursorPositionChanged();
    changeReadings();
}

void LogCurves::setCurves(const QStringList& curves)
{
    if (curves == m_painter.chosen())
        return;
    m_painter.setChosen(curves);
    emit curvesChanged();
    changeReadings();
}

void LogCurves::setLight(bool light)
{
    if (light == isLight())
        return;
    m_painter.setLight(light);
    emit lightChanged();
    update();
}

QVariantList LogCurves::available(const QString& filter) const
{
    QVariantList result;
    const std::shared_ptr<const LogFile> log = m_logParser ? m_logParser->log() : nullptr;
    if (!log)
        return result;
    for (const CurveColumn& column : curveColumns(*log)) {
        if (!column.name.contains(filter.trimmed(), Qt::CaseInsensitive))
            continue;
        result.append(QVariantMap{{QStringLiteral("name"), column.name},
                                  {QStringLiteral("group"), column.group},
                                  {QStringLiteral("unit"), column.unit}});
    }
    return result;
}

void LogCurves::toggle(const QString& name)
{
    QStringList changed = curves();
    if (changed.removeAll(name) == 0)
        changed.append(name);
    setCurves(changed);
}

QStringList LogCurves::readings() const
{
    return m_painter.legend(msOfTime(m_cursorPosition));
}

QColor LogCurves::colourOf(const QString& name) const
{
    return m_painter.colourOf(name);
}

void LogCurves::paint(QPainter* painter)
{
    const QSizeF size = boundingRect().size();
    m_painter.paint(*painter, QSize(qRound(size.width()), qRound(size.height())), m_view,
                    msOfTime(m_cursorPosition));
}

} // namespace corv
