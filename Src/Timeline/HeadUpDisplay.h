#pragma once

#include "Log/LogParser.h"
#include "Timeline/SampleTimes.h"

#include <QBrush>
#include <QImage>
#include <QPen>
#include <QPointer>
#include <QQuickPaintedItem>
#include <QTime>
#include <memory>
#include <unordered_map>

class LogFile;

namespace corv {

/// A value of the flight that the log may hold.
enum class HudField {
    pitch,
    roll,
    yaw,
    headingReference,
    altitude,
    altitudeReference,
    cameraPitch,
};

/// One row of the panel: what it shows, and how.
struct HudRow
{
    enum class Dial { none, compass, camera };
    enum class Unit { degrees, length };

    HudField field;
    const char* label;
    float factor;
    int modulo; ///< 0 for none
    int decimals;
    Dial dial;
    Unit unit;
};

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

public:
    explicit HeadUpDisplay(QQuickItem* parent = nullptr);

    LogParser* logParser() const { return m_logParser; }

    /// Counted from the start of the video; an invalid one shows the start.
    QTime videoPosition() const { return m_videoPosition; }

    /// Lengths in feet; in the texts only.
    bool imperialUnits() const { return m_imperialUnits; }

    void setLogParser(LogParser* logParser);
    void setVideoPosition(QTime videoPosition);
    void setImperialUnits(bool imperialUnits);

    /// Reads the series anew from the parser's log. A var that is missing or has another shape than
    /// its row needs has no value.
    Q_INVOKABLE void updateLogData();

    /// Paints the panel anew, as when the user's correction has changed.
    Q_INVOKABLE void refresh();

    void paint(QPainter* painter) override;

private:
    struct HudSeries
    {
        const float* values;
        std::shared_ptr<const SampleTimes> times;
    };
    struct Dial;

    void addStateSeries(const LogFile& log);
    void addCameraSeries(const LogFile& log);
    bool hasSeries(HudField field) const;
    float seriesValueAt(int ms, HudField field) const;
    float fieldValue(int ms, HudField field) const;
    float rowValue(const HudRow& row) const;
    QString textOf(const HudRow& row, float value) const;
    void paintTexts(QPainter& painter, const HudRow& row, int y, double width) const;
    void paintDial(QPainter& painter, const HudRow& row, const Dial& dial) const;
    void paintTicks(QPainter& painter, const HudRow& row, const Dial& dial) const;
    void paintNeedle(QPainter& painter, const HudRow& row, const Dial& dial) const;

    QPointer<LogParser> m_logParser;
    QTime m_videoPosition;
    bool m_imperialUnits = false;

    std::shared_ptr<const LogFile> m_log;
    std::unordered_map<HudField, HudSeries> m_series;

    QPen m_separatorPen;
    QPen m_labelPen;
    QBrush m_dialBrush;
    QBrush m_needleBrush;
    QPen m_tickPen;
    QPen m_arcPen;
    QImage m_camPitchImage;
};

} // namespace corv
