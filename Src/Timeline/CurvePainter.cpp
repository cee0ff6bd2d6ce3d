#include "Timeline/CurvePainter.h"

#include "Log/LogTable.h"
#include "Log/logUnits.h"
#include "Log/printable.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>
#include <array>
#include <cmath>

namespace corv {
namespace {

constexpr int kMostElements = 16; // of a field: more are a block of data, not curves
constexpr int kMarginPx = 4;
constexpr int kLegendLinePx = 16;

QString shown(const std::string& name)
{
    return printable(QString::fromStdString(name));
}

// The row of a pixel of the item for a value; the whole range spans the height between margins.
int yOf(float value, const ValueRange& range, int height)
{
    const float span = range.highest - range.lowest;
    const float share = span > 0 ? (value - range.lowest) / span : 0.5F;
    return height - 1 - kMarginPx -
           static_cast<int>(std::lround(share * static_cast<float>(height - 1 - 2 * kMarginPx)));
}

// The colours of the curves, in their order: each is readable on its ground.
constexpr std::array<QRgb, 6> kOnDark{0x12ff54, 0xffb000, 0x64b5ff, 0xff6eb4, 0xf0f050, 0xd0d0d0};
constexpr std::array<QRgb, 6> kOnLight{0x0a6e2a, 0x8f5000, 0x0b4ea2, 0xa3125f, 0x5f5f00, 0x444444};

} // namespace

std::vector<CurveColumn> curveColumns(const LogFile& log)
{
    std::vector<CurveColumn> columns;
    for (const LogGroup& group : log.getGroups()) {
        if (group.column<qint32>("time").empty())
            continue;
        for (const LogVar& var : group.getVars()) {
            if (var.getName() == "time" || var.getNb() < 1 || var.getNb() > kMostElements ||
                !var.getData() || LogTable::isText(var))
                continue;
            const QString base = shown(group.getName()) + QLatin1Char('.') + shown(var.getName());
            for (int element = 0; element < var.getNb(); ++element) {
                const QString name =
                    var.getNb() == 1 ? base : base + QStringLiteral("[%1]").arg(element);
                columns.push_back({QString::fromStdString(group.getName()),
                                   QString::fromStdString(var.getName()), element,
                                   QLatin1String(logUnit(group.getName(), var.getName())), name});
            }
        }
    }
    return columns;
}

const CurvePainter::Curve* CurvePainter::find(const QString& name) const
{
    const auto found = std::find_if(m_curves.begin(), m_curves.end(), [&name](const Curve& curve) {
        return curve.column.name == name;
    });
    return found == m_curves.end() ? nullptr : &*found;
}

QColor CurvePainter::colourAt(size_t index) const
{
    return QColor((m_light ? kOnLight : kOnDark)[index % kOnDark.size()]);
}

QColor CurvePainter::colourOf(const QString& name) const
{
    const Curve* curve = find(name);
    return curve ? colourAt(static_cast<size_t>(curve - m_curves.data())) : QColor();
}

void CurvePainter::setLog(std::shared_ptr<const LogFile> log)
{
    m_log = std::move(log);
    lookUp();
}

void CurvePainter::setChosen(const QStringList& names)
{
    m_names = names;
    lookUp();
}

void CurvePainter::lookUp()
{
    m_curves.clear();
    m_bars.clear();
    if (!m_log)
        return;
    const std::vector<CurveColumn> columns = curveColumns(*m_log);
    for (const QString& name : qAsConst(m_names)) {
        const auto found =
            std::find_if(columns.begin(), columns.end(),
                         [&name](const CurveColumn& column) { return column.name == name; });
        if (found == columns.end())
            continue;
        const LogGroup* group = m_log->getGroup(found->group.toStdString());
        const LogVar* var = group ? group->getVar(found->var.toStdString()) : nullptr;
        const LogColumn<qint32> times = group ? group->column<qint32>("time") : LogColumn<qint32>();
        if (!var || times.empty() || var->getNbPackets() != times.size() ||
            found->column >= var->getNb())
            continue;
        Curve curve;
        curve.column = *found;
        const bool sharesTimes = !m_curves.empty() && m_curves.back().column.group == found->group;
        curve.times = sharesTimes ? m_curves.back().times
                                  : std::make_shared<const SampleTimes>(times.data(), times.size());
        curve.firstMs = times[0];
        curve.lastMs = *std::max_element(times.begin(), times.end());
        curve.tree = std::make_shared<const CurveTree>(*var, found->column);
        curve.range = curve.tree->range(0, times.size());
        m_curves.push_back(std::move(curve));
    }
}

std::optional<float> CurvePainter::valueOf(const Curve& curve, int videoMs) const
{
    const int ms = logTimeOfVideo(videoMs, *m_clock);
    if (ms < curve.firstMs)
        return std::nullopt;
    return curve.tree->valueAt(curve.times->indexAt(ms));
}

std::optional<float> CurvePainter::valueAt(const QString& name, int videoMs) const
{
    const Curve* curve = find(name);
    return isSynced() && curve ? valueOf(*curve, videoMs) : std::nullopt;
}

// The row that holds at the left edge of each pixel and at the right edge of the last one; -1
// before the first sample and behind the last.
std::vector<int> CurvePainter::rowsOfPixels(const Curve& curve, int width,
                                            const TimelineView& view) const
{
    std::vector<int> rows(static_cast<size_t>(width) + 1, -1);
    int before = 0;
    for (int x = 0; x <= width; ++x) {
        const int ms = logTimeOfVideo(msOfPx(x, view), *m_clock);
        const bool isBehind = before > curve.lastMs;
        if (ms >= curve.firstMs && !(x > 0 && isBehind))
            rows[static_cast<size_t>(x)] = curve.times->indexAt(ms);
        before = ms;
    }
    return rows;
}

// For each pixel the range of the values in its time, joined to the one before. Bars and not lines:
// scaled to a finer screen, a line that is one pixel long is a dot, or nothing.
QVector<QRect> CurvePainter::barsOf(const Curve& curve, const std::vector<int>& rows, int height)
{
    QVector<QRect> bars;
    const int width = static_cast<int>(rows.size()) - 1;
    bars.reserve(width);
    int topBefore = 0;
    int bottomBefore = 0;
    for (int x = 0; x < width; ++x) {
        const int last = rows[static_cast<size_t>(x) + 1];
        if (last < 0)
            continue;
        const int left = rows[static_cast<size_t>(x)];
        const int first = left < 0 ? 0 : std::min(left, last);
        const ValueRange range = curve.tree->range(first, last + 1);
        if (range.isEmpty())
            continue;
        const int highest = yOf(range.highest, curve.range, height);
        const int lowest = yOf(range.lowest, curve.range, height);
        const bool joins = !bars.isEmpty() && bars.last().x() == x - 1;
        bars.append(QRect(QPoint(x, joins ? std::min(highest, bottomBefore) : highest),
                          QPoint(x, joins ? std::max(lowest, topBefore) : lowest)));
        topBefore = highest;
        bottomBefore = lowest;
    }
    return bars;
}

void CurvePainter::place(const QSize& size, const TimelineView& view)
{
    const Place wanted{size, view.msPerPx, view.contentX, logTimeOfVideo(0, *m_clock)};
    if (!m_bars.empty() && m_place == wanted)
        return;
    m_place = wanted;
    m_bars.assign(m_curves.size(), {});
    // Curves of one group share their times, and so the rows of the pixels.
    std::vector<int> rows;
    for (size_t i = 0; i < m_curves.size(); ++i) {
        const Curve& curve = m_curves[i];
        if (curve.range.isEmpty())
            continue;
        if (i == 0 || rows.empty() || curve.times != m_curves[i - 1].times)
            rows = rowsOfPixels(curve, size.width(), view);
        m_bars[i] = barsOf(curve, rows, size.height());
    }
}

void CurvePainter::paint(QPainter& painter, const QSize& size, const TimelineView& view,
                         int cursorMs)
{
    if (!isSynced() || m_curves.empty() || size.isEmpty() || !(view.msPerPx > 0) ||
        !std::isfinite(view.msPerPx))
        return;
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setClipRect(QRect(QPoint(), size));
    place(size, view);
    painter.setPen(Qt::NoPen);
    for (size_t i = 0; i < m_curves.size(); ++i) {
        painter.setBrush(colourAt(i));
        painter.drawRects(m_bars[i]);
    }
    const int cursorX = pxOfMs(cursorMs, view);
    if (cursorX >= 0 && cursorX < size.width()) {
        painter.setPen(m_light ? Qt::black : Qt::white);
        painter.drawLine(cursorX, 0, cursorX, size.height() - 1);
    }
    paintLegend(painter, size.height(), cursorMs);
}

QString CurvePainter::legendOf(const Curve& curve, int cursorMs) const
{
    const std::optional<float> value = valueOf(curve, cursorMs);
    return value
               ? curve.column.name +
                     QStringLiteral("  %1 %2").arg(double(*value), 0, 'g', 5).arg(curve.column.unit)
               : curve.column.name;
}

QStringList CurvePainter::legend(int cursorMs) const
{
    QStringList texts;
    if (!isSynced())
        return texts;
    for (const Curve& curve : m_curves)
        texts.append(legendOf(curve, cursorMs));
    return texts;
}

// In columns, where there are more curves than lines fit below each other.
void CurvePainter::paintLegend(QPainter& painter, int height, int cursorMs) const
{
    const QFontMetrics metrics(painter.font(), painter.device());
    const int lines = std::max(1, (height - kMarginPx) / kLegendLinePx);
    int left = kMarginPx;
    int widest = 0;
    for (size_t i = 0; i < m_curves.size(); ++i) {
        const int line = static_cast<int>(i) % lines;
        if (i > 0 && line == 0) {
            left += widest + kMarginPx;
            widest = 0;
        }
        const QString text = legendOf(m_curves[i], cursorMs);
        const QRect place(left, kMarginPx + line * kLegendLinePx,
                          metrics.horizontalAdvance(text) + 2 * kMarginPx, kLegendLinePx);
        widest = std::max(widest, place.width());
        painter.fillRect(place, m_light ? QColor(255, 255, 255, 200) : QColor(0, 0, 0, 160));
        painter.setPen(colourAt(i));
        painter.drawText(place, Qt::AlignCenter, text);
    }
}

} // namespace corv
