#pragma once

#include "Log/LogParser.h"
#include "Timeline/HeadUpPainter.h"

#include <QPointer>
#include <QQuickPaintedItem>
#include <QStringList>
#include <QTime>

namespace corv {

/// The panel of flight instruments beside the video: what the log says for the moment shown, as
/// numbers and on two dials. A value is held from its sample to the next one.
///
/// Interface thread only. It points into the log, which it keeps alive; `updateLogData` after each
/// parse brings in the new one.
class HeadUpDisplay : public QQuickPaintedItem
{
    Q_OBJECT
    Q_PROPERTY(corv::LogParser* logParser READ logParser WRITE setLogParser)
    Q_PROPERTY(QTime videoPosition READ videoPosition WRITE setVideoPosition)
    Q_PROPERTY(bool imperialUnits READ imperialUnits WRITE setImperialUnits)
    Q_PROPERTY(QStringList readings READ readings NOTIFY readingsChanged)

public:
    explicit HeadUpDisplay(QQuickItem* parent = nullptr);

    LogParser* logParser() const { return m_logParser; }

    /// Counted from the start of the video; an invalid one shows the start.
    QTime videoPosition() const { return m_videoPosition; }

    /// Lengths in feet; in the texts only.
    bool imperialUnits() const { return m_painter.imperialUnits(); }

    /// What is painted, for a screen reader: a text for each row, as "Pitch 3°" or "Pitch: no
    /// value".
    QStringList readings() const;

    void setLogParser(LogParser* logParser);
    void setVideoPosition(QTime videoPosition);
    void setImperialUnits(bool imperialUnits);

    /// Reads the series anew from the parser's log. A var that is missing or has another shape than
    /// its row needs has no value.
    Q_INVOKABLE void updateLogData();

    /// Height of all rows in a panel of that width.
    Q_INVOKABLE double heightAt(double width) const { return m_painter.heightAt(width); }

    /// Paints the panel anew, as when the user's correction has changed.
    Q_INVOKABLE void refresh();

    void paint(QPainter* painter) override;

signals:
    /// The moment, the log, the correction or the units have changed.
    void readingsChanged();

private:
    void change();

    QPointer<LogParser> m_logParser;
    QTime m_videoPosition;
    HeadUpPainter m_painter;
};

} // namespace corv
