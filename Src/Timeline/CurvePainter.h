#pragma once

#include "Log/LogFile.h"
#include "Log/clocks.h"
#include "Timeline/CurveTree.h"
#include "Timeline/SampleTimes.h"
#include "Timeline/timelineGeometry.h"

#include <QColor>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QVector>
#include <memory>
#include <optional>
#include <vector>

class QPainter;

namespace corv {

/// A column of the log that can be shown as a curve.
struct CurveColumn
{
    QString group;
    QString var;
    int column = 0;
    QString unit; ///< empty where it is not known

    /// What names the curve: "group.var", or "group.var[2]" for one of several elements.
    QString name;
};

/// The numeric columns of the groups that have times, in the order of the log. Text and large
/// blocks of data are left out.
std::vector<CurveColumn> curveColumns(const LogFile& log);

/// Paints columns of the flight log over the time axis of the video, each in its own vertical
/// scale, with their values at the cursor. Needs no window. Interface thread, or any one thread.
class CurvePainter
{
public:
    /// The log to take curves from, kept alive; null for none. The chosen curves are looked up
    /// again.
    void setLog(std::shared_ptr<const LogFile> log);

    /// The clock that ties video and log; without a synchronised one nothing is painted.
    void setClock(std::shared_ptr<const FlightClock> clock) { m_clock = std::move(clock); }

    /// The curves to show, by name. Names that the log does not have are kept and not shown.
    void setChosen(const QStringList& names);
    const QStringList& chosen() const { return m_names; }

    /// Colours for a light ground, instead of a dark one.
    void setLight(bool light) { m_light = light; }
    bool isLight() const { return m_light; }

    /// Paints at the painter's origin. `cursorMs` is the time of the cursor on the video's axis.
    /// The curves are computed anew where size, view, clock or curves have changed, and not where
    /// only the cursor has, as in playback.
    void paint(QPainter& painter, const QSize& size, const TimelineView& view, int cursorMs);

    /// The value of a curve at a moment of the video: that of the last sample before it. Nothing
    /// before the first sample and without a synchronised log.
    std::optional<float> valueAt(const QString& name, int videoMs) const;

    /// What the legend says of each curve that is shown: its name, and its value at the cursor
    /// where it has one.
    QStringList legend(int cursorMs) const;

    /// The colour of a curve that is shown; an invalid one for another name.
    QColor colourOf(const QString& name) const;

private:
    struct Curve
    {
        CurveColumn column;
        std::shared_ptr<const SampleTimes> times;
        qint32 firstMs = 0; ///< log time of the first sample
        qint32 lastMs = 0;
        std::shared_ptr<const CurveTree> tree;
        ValueRange range;
    };

    /// All that the bars of the curves depend on, but the curves themselves.
    struct Place
    {
        QSize size;
        float msPerPx = 0;
        int contentX = 0;
        int logStartMs = 0; ///< log time of the video's start, corrected

        bool operator==(const Place& other) const
        {
            return size == other.size && msPerPx == other.msPerPx && contentX == other.contentX &&
                   logStartMs == other.logStartMs;
        }
    };

    void lookUp();
    QColor colourAt(size_t index) const;
    void place(const QSize& size, const TimelineView& view);
    const Curve* find(const QString& name) const;
    bool isSynced() const { return m_log && m_clock && m_clock->synced; }
    std::optional<float> valueOf(const Curve& curve, int videoMs) const;
    std::vector<int> rowsOfPixels(const Curve& curve, int width, const TimelineView& view) const;
    static QVector<QRect> barsOf(const Curve& curve, const std::vector<int>& rows, int height);
    QString legendOf(const Curve& curve, int cursorMs) const;
    void paintLegend(QPainter& painter, int height, int cursorMs) const;

    std::shared_ptr<const LogFile> m_log;
    std::shared_ptr<const FlightClock> m_clock;
    QStringList m_names;
    bool m_light = false;
    std::vector<Curve> m_curves;
    Place m_place;
    std::vector<QVector<QRect>> m_bars; ///< of the curves at their place; empty if not computed
};

} // namespace corv
