#pragma once

#include "Log/LogParser.h"
#include "Timeline/CurvePainter.h"

#include <QPointer>
#include <QQuickPaintedItem>
#include <QStringList>
#include <QTime>
#include <QVariantList>

namespace corv {

/// Chosen columns of the flight log as curves under the timeline, on its axis and scale. The values
/// are placed as the instruments take them, with the user's correction. Interface thread only.
///
/// `msPerPx`, `contentX` and `cursorPosition` are those of the timeline.
class LogCurves : public QQuickPaintedItem
{
    Q_OBJECT
    Q_PROPERTY(corv::LogParser* logParser READ logParser WRITE setLogParser NOTIFY logParserChanged)
    Q_PROPERTY(float msPerPx READ msPerPx WRITE setMsPerPx NOTIFY msPerPxChanged)
    Q_PROPERTY(int contentX READ contentX WRITE setContentX NOTIFY contentXChanged)
    Q_PROPERTY(QTime cursorPosition READ cursorPosition WRITE setCursorPosition NOTIFY
                   cursorPositionChanged)
    Q_PROPERTY(bool light READ isLight WRITE setLight NOTIFY lightChanged)
    Q_PROPERTY(QStringList curves READ curves WRITE setCurves NOTIFY curvesChanged)
    Q_PROPERTY(QStringList readings READ readings NOTIFY readingsChanged)

public:
    explicit LogCurves(QQuickItem* parent = nullptr);

    LogParser* logParser() const { return m_logParser; }
    float msPerPx() const { return m_view.msPerPx; }
    int contentX() const { return m_view.contentX; }
    QTime cursorPosition() const { return m_cursorPosition; }

    /// The curves shown, by the names that `available` gives. Names that the log does not have
    /// stay chosen for the next log.
    QStringList curves() const { return m_painter.chosen(); }

    void setLogParser(LogParser* logParser);
    void setMsPerPx(float msPerPx);
    void setContentX(int contentX);
    void setCursorPosition(QTime cursorPosition);
    void setCurves(const QStringList& curves);

    /// The curves as texts, each with its value at the cursor; what is painted beside them.
    QStringList readings() const;

    /// Colours for a light ground, instead of a dark one.
    bool isLight() const { return m_painter.isLight(); }
    void setLight(bool light);

    /// The columns of the log that can be curves and whose name contains `filter`, in any case, as
    /// maps of "name", "group" and "unit". Empty without a log.
    Q_INVOKABLE QVariantList available(const QString& filter) const;

    /// Shows a curve, or hides it.
    Q_INVOKABLE void toggle(const QString& name);

    /// The colour of a shown curve; an invalid one for another.
    Q_INVOKABLE QColor colourOf(const QString& name) const;

    void paint(QPainter* painter) override;

signals:
    void logParserChanged();
    void msPerPxChanged();
    void contentXChanged();
    void cursorPositionChanged();
    void curvesChanged();
    void lightChanged();
    void readingsChanged();

    /// Another log is there, or none: `available` has changed.
    void logChanged();

private:
    void takeLog();
    void changeReadings();

    QPointer<LogParser> m_logParser;
    CurvePainter m_painter;
    TimelineView m_view;
    QTime m_cursorPosition;
};

} // namespace corv
