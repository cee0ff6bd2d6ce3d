#include "Bench.h"
#include "Timeline/CurvePainter.h"

#include <QImage>
#include <QPainter>
#include <QPolygonF>
#include <cmath>
#include <memory>

namespace corv::bench {
namespace {

constexpr int rows = 360'000; // two hours at 50 Hz
constexpr int columns = 3;
const QSize stripSize(1600, 160);

// Three slow waves with noise, as attitude and altitude have it.
std::shared_ptr<const LogFile> twoHours()
{
    auto log = std::make_shared<LogFile>();
    log->addGroup("flight", 1);
    LogGroup& group = log->getGroups()[0];
    group.setNbPackets(rows);
    group.addVar("time");
    group.addVar("wave");
    LogVar& times = group.getVars()[0];
    LogVar& waves = group.getVars()[1];
    times.allocate(1, rows, LogVar::Uint32);
    waves.allocate(columns, rows, LogVar::Float);
    quint32 noise = 1;
    for (int row = 0; row < rows; ++row) {
        times.setU32(0, row, static_cast<quint32>(row) * 20);
        for (int column = 0; column < columns; ++column) {
            noise = noise * 1664525 + 1013904223;
            const double wave = std::sin(row / (3000.0 + 2000 * column));
            waves.setFloat(column, row, static_cast<float>(wave + (noise >> 16) / 1e6));
        }
    }
    return log;
}

QPolygonF lineOf(const LogColumn<float>& values)
{
    QPolygonF line;
    for (int x = 0; x < stripSize.width(); ++x) {
        const float value = values[x * (rows / stripSize.width())];
        line << QPointF(x, 80 - 70 * double(value));
    }
    return line;
}

void curvesOfTwoHours(Report& report)
{
    const std::shared_ptr<const LogFile> log = twoHours();
    const auto clock = std::make_shared<FlightClock>();
    clock->synced = true;
    CurvePainter curves;
    curves.setLog(log);
    curves.setClock(clock);
    curves.setChosen({QStringLiteral("flight.wave[0]"), QStringLiteral("flight.wave[1]"),
                      QStringLiteral("flight.wave[2]")});
    TimelineView view;
    view.msPerPx = 20.0F * rows / static_cast<float>(stripSize.width());

    std::vector<QPolygonF> lines;
    for (int column = 0; column < columns; ++column)
        lines.push_back(lineOf(log->getGroups()[0].column<float>("wave", column)));
    QImage image(stripSize, QImage::Format_ARGB32_Premultiplied);
    const auto painted = [&](const std::function<void(QPainter&)>& paint) {
        return [&image, paint] {
            for (int i = 0; i < 20; ++i) {
                image.fill(Qt::black);
                QPainter painter(&image);
                painter.setRenderHint(QPainter::Antialiasing);
                paint(painter);
            }
        };
    };
    const auto drawLines = painted([&](QPainter& painter) {
        painter.setPen(Qt::green);
        for (const QPolygonF& line : lines)
            painter.drawPolyline(line);
    });
    int cursorMs = 0;
    report.row(QStringLiteral("curves, 3 columns x 360,000 rows"),
               timeRatio(painted([&](QPainter& painter) {
                             curves.paint(painter, stripSize, view, cursorMs += 40);
                         }),
                         drawLines, 9),
               1.5, QStringLiteral("3 lines of 1,600 points; the cursor moves"));
    report.row(QStringLiteral("curves, scrolled by a pixel each time"),
               timeRatio(painted([&](QPainter& painter) {
                             view.contentX = (view.contentX + 1) % 50;
                             curves.paint(painter, stripSize, view, cursorMs);
                         }),
                         drawLines, 9),
               3, QStringLiteral("3 lines of 1,600 points"));
}

const Benchmark curves("curves", curvesOfTwoHours);

} // namespace
} // namespace corv::bench
