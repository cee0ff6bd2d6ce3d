#include "Timeline/HeadUpDisplay.h"

#include "Log/LogFile.h"
#include "Log/clocks.h"
#include "Timeline/WaitCursor.h"
#include "Timeline/timelineGeometry.h"
#include "Video/truncation.h"

#include <QDebug>
#include <QPainter>
#include <array>
#include <cmath>

namespace corv {
namespace {

constexpr float degreesPerRadian = 57.2957763671875F;
constexpr float feetPerMetre = 3.2808399200439453F;

const std::array<HudRow, 5> rows = {{
    {HudField::pitch, "Pitch", degreesPerRadian, 0, 0, HudRow::Dial::none, HudRow::Unit::degrees},
    {HudField::roll, "Roll", degreesPerRadian, 0, 0, HudRow::Dial::none, HudRow::Unit::degrees},
    {HudField::yaw, "Heading", degreesPerRadian, 360, 0, HudRow::Dial::compass,
     HudRow::Unit::degrees},
    {HudField::altitude, "Altitude", 1.0F, 0, 1, HudRow::Dial::none, HudRow::Unit::length},
    {HudField::cameraPitch, "Cam pitch", 1.0F, 0, 0, HudRow::Dial::camera, HudRow::Unit::degrees},
}};

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

} // namespace

/// Where one dial stands.
struct HeadUpDisplay::Dial
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

HeadUpDisplay::HeadUpDisplay(QQuickItem* parent)
    : QQuickPaintedItem(parent), m_separatorPen(penOf(QColor(0x55, 0x55, 0x55), 1.0)),
      m_labelPen(penOf(Qt::white, 1.0)), m_dialBrush(QColor(0x55, 0x55, 0x55)),
      m_needleBrush(QColor(0x12, 0xff, 0x54)), m_tickPen(penOf(Qt::white, 1.0)),
      m_arcPen(penOf(Qt::white, 2.0)), m_camPitchImage(QStringLiteral(":/images/cam_pitch.png"))
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
    if (imperialUnits == m_imperialUnits)
        return;
    m_imperialUnits = imperialUnits;
    update();
}

void HeadUpDisplay::refresh()
{
    update();
}

// --- Series ----------------------------------------------------------------------------------

void HeadUpDisplay::updateLogData()
{
    m_series.clear();
    m_log.reset();
    if (!m_logParser) {
        qWarning() << "No log parser";
        return;
    }
    m_log = m_logParser->log();
    if (!m_log) {
        qWarning() << "No log file";
        return;
    }
    const WaitCursor waitCursor;
    addStateSeries(*m_log);
    addCameraSeries(*m_log);
    update();
}

void HeadUpDisplay::addStateSeries(const LogFile& log)
{
    const LogGroup* group = log.getGroup("state_estimation");
    if (!group)
        return;
    const LogColumn<qint32> times = group->column<qint32>("time");
    if (times.empty()) {
        qInfo() << "No state estimation time/values";
        return;
    }
    const auto index = std::make_shared<const SampleTimes>(times.data(), times.size());
    const auto add = [&](HudField field, const char* var, int column) {
        const LogColumn<float> values = group->column<float>(var, column);
        if (values.size() == times.size())
            m_series[field] = {values.data(), index};
    };
    add(HudField::pitch, "euler_angles", 1);
    add(HudField::roll, "euler_angles", 0);
    add(HudField::yaw, "euler_angles", 2);
    add(HudField::headingReference, "heading_reference", 0);
    add(HudField::altitude, "altitude", 0);
    add(HudField::altitudeReference, "altitude_telem_ref", 0);
}

void HeadUpDisplay::addCameraSeries(const LogFile& log)
{
    const LogGroup* group = log.getGroup("camera_cmd");
    if (!group)
        return;
    const LogColumn<qint32> times = group->column<qint32>("time");
    const LogColumn<float> values = group->column<float>("servo_angle");
    if (times.empty() || values.size() != times.size()) {
        qInfo() << "No camera pitch time/values";
        return;
    }
    m_series[HudField::cameraPitch] = {
        values.data(), std::make_shared<const SampleTimes>(times.data(), times.size())};
}

// --- Values ----------------------------------------------------------------------------------

bool HeadUpDisplay::hasSeries(HudField field) const
{
    return m_logParser && m_logParser->isSynced() && m_series.count(field) > 0;
}

float HeadUpDisplay::seriesValueAt(int ms, HudField field) const
{
    const HudSeries& series = m_series.at(field);
    return series.values[series.times->indexAt(ms)];
}

float HeadUpDisplay::fieldValue(int ms, HudField field) const
{
    if (!hasSeries(field))
        return 0.0F;
    const float value = seriesValueAt(ms, field);
    if (field == HudField::yaw)
        return value - fieldValue(ms, HudField::headingReference);
    if (field == HudField::altitude)
        return value - fieldValue(ms, HudField::altitudeReference);
    return value;
}

float HeadUpDisplay::rowValue(const HudRow& row) const
{
    const int ms = logTimeOfVideo(msOfTime(m_videoPosition), *m_logParser->clock());
    const float value = fieldValue(ms, row.field) * row.factor;
    return row.modulo > 0 ? fmodf(value, static_cast<float>(row.modulo)) : value;
}

QString HeadUpDisplay::textOf(const HudRow& row, float value) const
{
    const bool isLength = row.unit == HudRow::Unit::length;
    const float shown = isLength && m_imperialUnits ? value * feetPerMetre : value;
    const QString number = QString::number(static_cast<double>(shown), 'f', row.decimals);
    if (!isLength)
        return number + QStringLiteral("°");
    return number + (m_imperialUnits ? QStringLiteral(" ft") : QStringLiteral(" m"));
}

// --- Painting --------------------------------------------------------------------------------

void HeadUpDisplay::paint(QPainter* painter)
{
    painter->setRenderHint(QPainter::Antialiasing);
    const double width = std::round(boundingRect().width());
    int y = 0;
    for (const HudRow& row : rows) {
        painter->setPen(m_separatorPen);
        if (&row != &rows.front())
            painter->drawLine(QPointF(10.0, y + 0.5), QPointF(width - 11.0, y + 0.5));
        paintTexts(*painter, row, y, width);
        if (row.dial != HudRow::Dial::none) {
            const Dial dial(width, y);
            paintDial(*painter, row, dial);
            y = truncateToInt(dial.size + 10.0 + y);
        }
        y = truncateToInt(y + 30.0);
    }
}

void HeadUpDisplay::paintTexts(QPainter& painter, const HudRow& row, int y, double width) const
{
    const QRectF rect(10.0, y + 8.0, width - 20.0, 20.0);
    painter.setPen(m_labelPen);
    painter.drawText(rect, Qt::AlignLeft | Qt::AlignTop, QString::fromLatin1(row.label));
    if (hasSeries(row.field))
        painter.drawText(rect, Qt::AlignRight | Qt::AlignTop, textOf(row, rowValue(row)));
}

void HeadUpDisplay::paintDial(QPainter& painter, const HudRow& row, const Dial& dial) const
{
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
    if (hasSeries(row.field))
        paintNeedle(painter, row, dial);
    if (row.dial == HudRow::Dial::camera) {
        painter.drawImage(QPointF(dial.width - dial.margin - m_camPitchImage.width() - 6.0,
                                  dial.cy - m_camPitchImage.height() / 2.0),
                          m_camPitchImage);
    }
}

void HeadUpDisplay::paintTicks(QPainter& painter, const HudRow& row, const Dial& dial) const
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

void HeadUpDisplay::paintNeedle(QPainter& painter, const HudRow& row, const Dial& dial) const
{
    const bool isCompass = row.dial == HudRow::Dial::compass;
    const qreal angle = static_cast<qreal>(rowValue(row)) - (isCompass ? 0 : 90);
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
