#pragma once

#include "Log/LogFile.h"
#include "Log/clocks.h"
#include "Timeline/SampleTimes.h"
#include "Timeline/instruments.h"

#include <QBrush>
#include <QImage>
#include <QPen>
#include <QRectF>
#include <QString>
#include <memory>
#include <optional>
#include <vector>

class QPainter;

namespace corv {

/// Paints the flight instruments of a moment: numbers and two dials, from the flight log. A value
/// is held from its sample to the next one.
///
/// Needs no window: it paints on any `QPainter`, for the panel and for exported pictures. Its log
/// and clock are kept alive. One thread at a time; a copy is cheap and may go to another thread.
class HeadUpPainter
{
public:
    explicit HeadUpPainter(std::vector<HudRow> rows = hudInstruments());

    /// Looks the instruments up in a log, or forgets the one before if null. An instrument whose
    /// column is missing, or is not of 32-bit floats, has no value.
    void setLog(std::shared_ptr<const LogFile> log);

    /// The clock that ties video and log. Without one, and while it is not synchronised, there are
    /// labels and dials but no values.
    void setClock(std::shared_ptr<const FlightClock> clock) { m_clock = std::move(clock); }

    /// Shows every instrument in its imperial unit; in the texts only.
    void setImperialUnits(bool imperialUnits) { m_imperialUnits = imperialUnits; }
    bool imperialUnits() const { return m_imperialUnits; }

    /// The width in pixels that the panel is designed for.
    static constexpr double naturalWidth = 170.0;

    /// Height in pixels of all rows in a panel of that width.
    double heightAt(double width) const;

    /// Paints the panel of `width` pixels at the painter's origin, for the moment `videoMs`
    /// milliseconds after the start of the video. The rows are as high at every width; the dials
    /// are right for widths near the natural one.
    void paint(QPainter& painter, double width, int videoMs) const;

    /// Paints the panel, all of it at one scale, as large as `target` holds it, in its top left
    /// corner, over a plate of that colour if one is given. Returns the rectangle that it covers.
    QRectF paintInto(QPainter& painter, const QRectF& target, int videoMs,
                     const std::optional<QColor>& plate = std::nullopt) const;

    /// Where a row is in a panel that paintInto() makes as large as `panel`, from its origin.
    QRectF rectOfRow(size_t row, QSizeF panel) const;

    /// The number and unit of an instrument at a moment, as painted; empty without a value.
    QString textAt(size_t row, int videoMs) const;

    /// The number of an instrument at a moment and the name of its unit, such as "deg", for
    /// tables. The number is as painted, without the sign of a zero; empty without a value.
    QString numberAt(size_t row, int videoMs) const;
    QString unitOf(size_t row) const;

    /// What the needle of an instrument follows; none without a dial or a value.
    std::optional<float> needleAt(size_t row, int videoMs) const;

    /// Whether any instrument has a value.
    bool hasValues() const;

    /// The same instruments as numbers alone.
    HeadUpPainter withoutDials() const;

    const std::vector<HudRow>& rows() const { return m_rows; }

private:
    struct HudSeries
    {
        const float* values = nullptr;
        std::shared_ptr<const SampleTimes> times;
    };
    struct Dial;

    void addSeriesOf(const LogGroup& group);
    bool hasValue(size_t row) const;
    float valueAt(size_t row, int videoMs) const;
    const HudUnit& shownUnit(const HudRow& row) const;
    QString numberOf(const HudRow& row, float value) const;
    static int behindRow(const HudRow& row, int y, double width);
    void paintTexts(QPainter& painter, size_t row, int y, double width, int videoMs) const;
    void paintDial(QPainter& painter, size_t row, const Dial& dial, int videoMs) const;
    void paintTicks(QPainter& painter, const HudRow& row, const Dial& dial) const;
    void paintNeedle(QPainter& painter, const HudRow& row, const Dial& dial, float value) const;

    std::vector<HudRow> m_rows;
    std::vector<HudSeries> m_values;     ///< by row
    std::vector<HudSeries> m_references; ///< by row
    std::shared_ptr<const LogFile> m_log;
    std::shared_ptr<const FlightClock> m_clock;
    bool m_imperialUnits = false;

    QPen m_separatorPen;
    QPen m_labelPen;
    QBrush m_dialBrush;
    QBrush m_needleBrush;
    QPen m_tickPen;
    QPen m_arcPen;
    QImage m_camPitchImage;
};

} // namespace corv
