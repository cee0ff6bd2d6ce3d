#include "Timeline/HeadUpPainter.h"

#include "Base/arithmetic.h"
#include "Timeline/logCategory.h"
#include "Timeline/textPlate.h"

#include <QDebug>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace corv {
namespace {

QPen penOf(const QColor& colour, qreal width)
{
    return QPen(colour, width, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
}

void rotateAbout(QPainter& painter, const QPointF& point, qreal degrees)
{
    painter.translate(point);
    painter.rotate(degrees);
    painter.translate(-point);
}

// What the diagnostics say of a group without times, and of one without the values of a row.
struct MissingTexts
{
    const char* group;
    const char* noTimes;
    const char* noValues;
};

constexpr MissingTexts missingTexts[] = {
    {"state_estimation", "No state estimation time/values", nullptr},
    {"camera_cmd", "No camera pitch time/values", "No camera pitch time/values"},
};

void logMissing(const std::string& group, const char* MissingTexts::*text)
{
    for (const MissingTexts& texts : missingTexts) {
        if (group == texts.group && texts.*text)
            qCInfo(lcTimeline, "%s", texts.*text);
    }
}

} // namespace

/// The place of one dial, in pixels.
struct HeadUpPainter::Dial
{
    Dial(double panelWidth, int rowTop)
        : width(panelWidth), top(rowTop + 30.0), margin(panelWidth - 170.0),
          size(panelWidth - 2 * margin), cx(panelWidth * 0.5), cy(cx + top - margin)
    {
    }

    double width;
    double top;
    double margin;
    double size;
    double cx;
    double cy;
};

HeadUpPainter::HeadUpPainter(std::vector<HudRow> rows)
    : m_rows(std::move(rows)), m_values(m_rows.size()), m_references(m_rows.size()),
      m_separatorPen(penOf(QColor(0x55, 0x55, 0x55), 1.0)), m_labelPen(penOf(Qt::white, 1.0)),
      m_dialBrush(QColor(0x55, 0x55, 0x55)), m_needleBrush(QColor(0x12, 0xff, 0x54)),
      m_tickPen(penOf(Qt::white, 1.0)), m_arcPen(penOf(Qt::white, 2.0)),
      m_camPitchImage(QStringLiteral(":/images/cam_pitch.png"))
{
}

// --- Values ----------------------------------------------------------------------------------

void HeadUpPainter::setLog(std::shared_ptr<const LogFile> log)
{
    m_log = std::move(log);
    m_values.assign(m_rows.size(), {});
    m_references.assign(m_rows.size(), {});
    if (!m_log)
        return;
    std::vector<std::string> seen;
    for (const HudRow& row : m_rows) {
        for (const HudSource* source : {&row.value, &row.reference}) {
            const bool isKnown =
                !source->group || std::find(seen.begin(), seen.end(), source->group) != seen.end();
            if (isKnown)
                continue;
            seen.emplace_back(source->group);
            if (const LogGroup* group = m_log->getGroup(seen.back()))
                addSeriesOf(*group);
        }
    }
}

// All series of one group share its times.
void HeadUpPainter::addSeriesOf(const LogGroup& group)
{
    const LogColumn<qint32> times = group.column<qint32>("time");
    if (times.empty()) {
        logMissing(group.getName(), &MissingTexts::noTimes);
        return;
    }
    const auto index = std::make_shared<const SampleTimes>(times.data(), times.size());
    const auto seriesOf = [&](const HudSource& source) -> HudSeries {
        const LogColumn<float> values = group.column<float>(source.var, source.column);
        return values.size() == times.size() ? HudSeries{values.data(), index} : HudSeries();
    };
    bool allFound = true;
    for (size_t i = 0; i < m_rows.size(); ++i) {
        const HudRow& row = m_rows[i];
        if (row.value.group && group.getName() == row.value.group) {
            m_values[i] = seriesOf(row.value);
            allFound = allFound && m_values[i].values;
        }
        if (row.reference.group && group.getName() == row.reference.group)
            m_references[i] = seriesOf(row.reference);
    }
    if (!allFound)
        logMissing(group.getName(), &MissingTexts::noValues);
}

bool HeadUpPainter::hasValue(size_t row) const
{
    return m_clock && m_clock->synced && m_values[row].values;
}

float HeadUpPainter::valueAt(size_t row, int videoMs) const
{
    const int ms = logTimeOfVideo(videoMs, *m_clock);
    const auto heldBy = [ms](const HudSeries& series) {
        return series.values ? series.values[series.times->indexAt(ms)] : 0.0F;
    };
    const float value = (heldBy(m_values[row]) - heldBy(m_references[row])) * m_rows[row].factor;
    const int modulo = m_rows[row].modulo;
    return modulo > 0 ? fmodf(value, static_cast<float>(modulo)) : value;
}

const HudUnit& HeadUpPainter::shownUnit(const HudRow& row) const
{
    return m_imperialUnits ? row.quantity->imperial : row.quantity->metric;
}

QString HeadUpPainter::numberOf(const HudRow& row, float value) const
{
    return QString::number(static_cast<double>(value * shownUnit(row).factor), 'f', row.decimals);
}

QString HeadUpPainter::numberAt(size_t row, int videoMs) const
{
    QString number = hasValue(row) ? numberOf(m_rows[row], valueAt(row, videoMs)) : QString();
    if (number.startsWith(QLatin1Char('-')) && number.toDouble() == 0.0)
        number.remove(0, 1);
    return number;
}

QString HeadUpPainter::unitOf(size_t row) const
{
    return QString::fromUtf8(shownUnit(m_rows[row]).name);
}

QString HeadUpPainter::textAt(size_t row, int videoMs) const
{
    if (!hasValue(row))
        return {};
    return numberOf(m_rows[row], valueAt(row, videoMs)) +
           QString::fromUtf8(shownUnit(m_rows[row]).suffix);
}

std::optional<float> HeadUpPainter::needleAt(size_t row, int videoMs) const
{
    if (m_rows[row].dial == HudRow::Dial::none || !hasValue(row))
        return std::nullopt;
    return valueAt(row, videoMs);
}

bool HeadUpPainter::hasValues() const
{
    for (size_t row = 0; row < m_rows.size(); ++row)
        if (hasValue(row))
            return true;
    return false;
}

HeadUpPainter HeadUpPainter::withoutDials() const
{
    HeadUpPainter numbers = *this;
    for (HudRow& row : numbers.m_rows)
        row.dial = HudRow::Dial::none;
    return numbers;
}

// --- Painting --------------------------------------------------------------------------------

// The top of the row below `row`, whose own top is `y`.
int HeadUpPainter::behindRow(const HudRow& row, int y, double width)
{
    if (row.dial != HudRow::Dial::none)
        y = truncateToInt(Dial(width, y).size + 10.0 + y);
    return truncateToInt(y + 30.0);
}

double HeadUpPainter::heightAt(double width) const
{
    int y = 0;
    for (const HudRow& row : m_rows)
        y = behindRow(row, y, width);
    return y;
}

QRectF HeadUpPainter::rectOfRow(size_t row, QSizeF panel) const
{
    int top = 0;
    for (size_t i = 0; i < row; ++i)
        top = behindRow(m_rows[i], top, naturalWidth);
    const double scale =
        std::min(panel.width() / naturalWidth, panel.height() / heightAt(naturalWidth));
    return {0.0, top * scale, panel.width(),
            (behindRow(m_rows[row], top, naturalWidth) - top) * scale};
}

void HeadUpPainter::paint(QPainter& painter, double width, int videoMs) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    int y = 0;
    for (size_t i = 0; i < m_rows.size(); ++i) {
        painter.setPen(m_separatorPen);
        if (i > 0)
            painter.drawLine(QPointF(10.0, y + 0.5), QPointF(width - 11.0, y + 0.5));
        paintTexts(painter, i, y, width, videoMs);
        if (m_rows[i].dial != HudRow::Dial::none)
            paintDial(painter, i, Dial(width, y), videoMs);
        y = behindRow(m_rows[i], y, width);
    }
}

QRectF HeadUpPainter::paintInto(QPainter& painter, const QRectF& target, int videoMs,
                                const std::optional<QColor>& plate) const
{
    const QSizeF natural(naturalWidth, heightAt(naturalWidth));
    if (target.isEmpty() || natural.isEmpty())
        return {};
    const double scale =
        std::min(target.width() / natural.width(), target.height() / natural.height());
    const QRectF covered(target.topLeft(), natural * scale);
    painter.save();
    if (plate)
        painter.fillRect(covered, *plate);
    painter.translate(covered.topLeft());
    painter.scale(scale, scale);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    // Font sizes are of the screen; the panel is designed for those of its natural width.
    QFont font = painter.font();
    font.setPixelSize(13);
    painter.setFont(font);
    paint(painter, natural.width(), videoMs);
    painter.restore();
    return covered;
}

void HeadUpPainter::paintTexts(QPainter& painter, size_t row, int y, double width,
                               int videoMs) const
{
    const QRectF rect(10.0, y + 8.0, width - 20.0, 20.0);
    painter.setPen(m_labelPen);
    drawTextOnPlate(painter, rect, Qt::AlignLeft | Qt::AlignTop,
                    QString::fromLatin1(m_rows[row].label), greyGroundPlate);
    if (hasValue(row))
        drawTextOnPlate(painter, rect, Qt::AlignRight | Qt::AlignTop, textAt(row, videoMs),
                        greyGroundPlate);
}

void HeadUpPainter::paintDial(QPainter& painter, size_t index, const Dial& dial, int videoMs) const
{
    const HudRow& row = m_rows[index];
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_dialBrush);
    painter.drawEllipse(
        QRectF(dial.margin + 0.5, dial.top + 0.5, dial.size - 1.0, dial.size - 1.0));
    if (row.dial == HudRow::Dial::camera) {
        painter.setPen(m_arcPen);
        painter.setBrush(Qt::NoBrush);
        painter.drawArc(QRectF(dial.margin + 1.0, dial.top + 1.0, dial.size - 2.0, dial.size - 2.0),
                        1840, 2000);
    }
    paintTicks(painter, row, dial);
    if (hasValue(index))
        paintNeedle(painter, row, dial, valueAt(index, videoMs));
    if (row.dial == HudRow::Dial::camera) {
        painter.drawImage(QPointF(dial.width - dial.margin - m_camPitchImage.width() - 6.0,
                                  dial.cy - m_camPitchImage.height() / 2.0),
                          m_camPitchImage);
    }
}

void HeadUpPainter::paintTicks(QPainter& painter, const HudRow& row, const Dial& dial) const
{
    const bool isCompass = row.dial == HudRow::Dial::compass;
    const QPointF centre(dial.cx + 0.5, dial.cy + 0.5);
    painter.save();
    painter.setPen(m_tickPen);
    if (!isCompass)
        rotateAbout(painter, centre, -150);
    for (int tick = 0; tick < (isCompass ? 8 : 9); ++tick) {
        painter.drawLine(QPointF(dial.cx + 0.5, dial.top + 1.5),
                         QPointF(dial.cx + 0.5, dial.top + 6.5));
        rotateAbout(painter, centre, isCompass ? 45 : 15);
    }
    painter.restore();
}

void HeadUpPainter::paintNeedle(QPainter& painter, const HudRow& row, const Dial& dial,
                                float value) const
{
    const bool isCompass = row.dial == HudRow::Dial::compass;
    const qreal angle = static_cast<qreal>(value) - (isCompass ? 0 : 90);
    if (!std::isfinite(angle))
        return;
    painter.save();
    painter.translate(dial.cx + 1.0, dial.cy);
    painter.rotate(angle);
    painter.translate(-dial.width * 0.5 - 1.0, dial.margin - dial.cx - dial.top);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_needleBrush);
    const qreal cx = dial.cx;
    const qreal cy = dial.cy;
    if (isCompass) {
        const QPointF needle[] = {{cx + 0.5, cy - 30.5},
                                  {cx - 21.5, cy + 23.5},
                                  {cx + 0.5, cy + 10.5},
                                  {cx + 22.5, cy + 23.5}};
        painter.drawPolygon(needle, 4, Qt::OddEvenFill);
    } else {
        const QPointF needle[] = {
            {cx + 0.5, cy - 39.5}, {cx - 5.5, cy - 14.5}, {cx + 6.5, cy - 14.5}};
        painter.drawPolygon(needle, 3, Qt::OddEvenFill);
    }
    painter.restore();
}

} // namespace corv
