#include "headUpPanel.h"

#include "Timeline/HeadUpPainter.h"

#include <QtMath>

using namespace corv;
using namespace corv::test;

/// The instruments without a panel: on any painter, at any size, from any table.
class HeadUpPainterTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void aRowOfTheTableIsAnInstrument();
    void aRowOfUnitsIsShownInBothSystems();
    void aReferenceMayBeInAnotherGroup();
    void valuesNeedASynchronisedClock();
    void paintsAtAnySize_data();
    void paintsAtAnySize();
    void aPlateIsPaintedBehind();

private:
    std::shared_ptr<const LogFile> decoded(const LogBuilder& log);

    std::shared_ptr<FlightClock> m_clock;
    LogParser m_parser;
};

namespace {

constexpr HudRow windRow{"Wind", {"weather", "wind", 1}, {},       3.6F, 0,
                         2,      HudRow::Dial::compass,  &hudAngle};

LogBuilder weatherLog()
{
    LogBuilder log = recordingLog(durationMs);
    log.addGroup("weather", 9, {{"time", "UINT32", 1}, {"wind", "FLOAT", 2}});
    for (const float speed : {10.0F, 25.0F}) {
        const quint32 time = start + (speed > 20 ? 1000 : 0);
        log.addPacket(9, LogBuilder::u32(time) + LogBuilder::f32(0) + LogBuilder::f32(speed));
    }
    return log;
}

QImage blank(const QSize& size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::magenta);
    return image;
}

} // namespace

void HeadUpPainterTest::init()
{
    m_clock = std::make_shared<FlightClock>();
    m_clock->logTimeOffset = static_cast<int>(start);
    m_clock->synced = true;
}

std::shared_ptr<const LogFile> HeadUpPainterTest::decoded(const LogBuilder& log)
{
    return parse(m_parser, log, durationMs) ? m_parser.log() : nullptr;
}

void HeadUpPainterTest::aRowOfTheTableIsAnInstrument()
{
    std::vector<HudRow> rows = hudInstruments();
    const size_t wind = rows.size();
    rows.push_back(windRow);
    HeadUpPainter painter(rows);
    painter.setClock(m_clock);
    painter.setLog(decoded(weatherLog()));
    QCOMPARE(painter.textAt(wind, 0), QStringLiteral("36.00°"));
    QCOMPARE(painter.textAt(wind, 1000), QStringLiteral("90.00°"));
    QCOMPARE(painter.textAt(0, 0), QString());
    // Its dial is below the others, and its needle points to the right.
    const int top = qRound(HeadUpPainter().heightAt(170));
    QCOMPARE(painter.heightAt(170), top + 210.0);
    QImage image = blank({170, top + 210});
    QPainter onImage(&image);
    painter.paint(onImage, 170, 1000);
    onImage.end();
    const QPoint centre(85, top + 30 + 85);
    QVERIFY(isNeedle(image.pixelColor(centre + QPoint(26, 0))));
    QCOMPARE(image.pixelColor(centre - QPoint(26, 0)), discColour);
}

void HeadUpPainterTest::aRowOfUnitsIsShownInBothSystems()
{
    static constexpr HudQuantity speed{{"km/h", " km/h", 1.0F}, {"kn", " kn", 0.5F}};
    HudRow row = windRow;
    row.quantity = &speed;
    HeadUpPainter painter({row});
    painter.setClock(m_clock);
    painter.setLog(decoded(weatherLog()));
    QCOMPARE(painter.textAt(0, 0), QStringLiteral("36.00 km/h"));
    QCOMPARE(painter.unitOf(0), QStringLiteral("km/h"));
    painter.setImperialUnits(true);
    QCOMPARE(painter.textAt(0, 0), QStringLiteral("18.00 kn"));
    QCOMPARE(painter.numberAt(0, 0), QStringLiteral("18.00"));
    QCOMPARE(painter.unitOf(0), QStringLiteral("kn"));
    QCOMPARE(painter.needleAt(0, 0), std::optional<float>(36.0F));
}

void HeadUpPainterTest::aReferenceMayBeInAnotherGroup()
{
    LogBuilder log = weatherLog();
    log.addGroup("calm", 10, {{"time", "UINT32", 1}, {"wind", "FLOAT", 1}});
    log.addPacket(10, LogBuilder::u32(start) + LogBuilder::f32(5));
    HudRow row = windRow;
    row.reference = {"calm", "wind", 0};
    HeadUpPainter painter({row});
    painter.setClock(m_clock);
    painter.setLog(decoded(log));
    QCOMPARE(painter.textAt(0, 0), QStringLiteral("18.00°"));
    painter.setLog(nullptr);
    QCOMPARE(painter.textAt(0, 0), QString());
}

void HeadUpPainterTest::valuesNeedASynchronisedClock()
{
    HeadUpPainter painter({windRow});
    painter.setLog(decoded(weatherLog()));
    QCOMPARE(painter.textAt(0, 0), QString());
    m_clock->synced = false;
    painter.setClock(m_clock);
    QCOMPARE(painter.textAt(0, 0), QString());
    m_clock->synced = true;
    QCOMPARE(painter.textAt(0, 0), QStringLiteral("36.00°"));
}

void HeadUpPainterTest::paintsAtAnySize_data()
{
    QTest::addColumn<QRectF>("target");
    QTest::addColumn<QRectF>("covered");
    QTest::newRow("natural") << QRectF(0, 0, 170, 210) << QRectF(0, 0, 170, 210);
    QTest::newRow("twice") << QRectF(20, 10, 340, 420) << QRectF(20, 10, 340, 420);
    QTest::newRow("half") << QRectF(0, 0, 85, 105) << QRectF(0, 0, 85, 105);
    QTest::newRow("too wide") << QRectF(5, 5, 1000, 420) << QRectF(5, 5, 340, 420);
    QTest::newRow("too high") << QRectF(5, 5, 340, 2000) << QRectF(5, 5, 340, 420);
    QTest::newRow("nothing") << QRectF(5, 5, 0, 100) << QRectF();
}

void HeadUpPainterTest::paintsAtAnySize()
{
    QFETCH(QRectF, target);
    QFETCH(QRectF, covered);
    HeadUpPainter painter({windRow});
    painter.setClock(m_clock);
    painter.setLog(decoded(weatherLog()));
    QImage image = blank({400, 500});
    QPainter onImage(&image);
    QCOMPARE(painter.paintInto(onImage, target, 1000), covered);
    QCOMPARE(onImage.transform(), QTransform());
    onImage.end();
    const double scale = covered.width() / 170;
    // The needle points to the right along the middle of a row of pixels; its tip is at x 116.5.
    const auto colourAt = [&](double x) {
        const QPointF point = covered.topLeft() + QPointF(x, 30 + 84.5) * scale;
        return image.pixelColor(qFloor(point.x()), qFloor(point.y()));
    };
    QCOMPARE(isNeedle(colourAt(106.5)), !covered.isEmpty());
    QVERIFY(!isNeedle(colourAt(120.5)));
    QCOMPARE(image.pixelColor(399, 499), QColor(Qt::magenta));
}

void HeadUpPainterTest::aPlateIsPaintedBehind()
{
    const HeadUpPainter painter({windRow});
    QImage image = blank({340, 500});
    QPainter onImage(&image);
    painter.paintInto(onImage, QRectF(0, 0, 340, 500), 0, QColor(Qt::black));
    onImage.end();
    QCOMPARE(image.pixelColor(2, 2), QColor(Qt::black));
    QCOMPARE(image.pixelColor(2, 490), QColor(Qt::magenta));
}

QTEST_MAIN(HeadUpPainterTest)
#include "HeadUpPainterTest.moc"
