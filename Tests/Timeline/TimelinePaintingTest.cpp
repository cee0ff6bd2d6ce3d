#include "paintedTexts.h"
#include "timelineStrip.h"

#include "Support/contrast.h"

#include <limits>

using namespace corv;
using namespace corv::test;

namespace {

const QColor pastEnd(120, 120, 120);
const QColor ruler(119, 119, 119);
const QColor white(255, 255, 255);
const QColor endMark(55, 55, 55);

// Where the colour is found along a line.
QList<int> columnsOfColour(const QImage& image, int y, const QColor& colour)
{
    QList<int> columns;
    for (int x = 0; x < image.width(); ++x) {
        if (image.pixelColor(x, y) == colour)
            columns.append(x);
    }
    return columns;
}

} // namespace

/// What is on screen, whatever the scale and the points of interest.
class TimelinePaintingTest : public QObject
{
    Q_OBJECT

private slots:
    void paintsGroundRulerAndEnd();
    void paintsTheZonePastTheEnd();
    void paintsTicksUpToTheEnd();
    void paintsLabels();
    void theLabelOfTheStartIsWhole();
    void labelsCanBeRead();
    void paintsTheCursor();
    void paintsPoisInOrder();
    void paintsTheHoveredPoiOnTop();
    void paintsMoveMode();
    void poisOutOfViewAreNotPainted();
    void aHundredThousandPoisLookLikeOnePerPixel();
    void asksOnlyForThumbnailsInSight();
    void paintingAfterRemovalOfPoisIsHarmless();
    void oddScalesArePaintedHarmlessly_data();
    void oddScalesArePaintedHarmlessly();
};

void TimelinePaintingTest::paintsGroundRulerAndEnd()
{
    Strip strip;
    strip.timeline.setCursorPosition(timeAt(30000));
    const QImage image = painted(strip.timeline);
    QCOMPARE(image.pixelColor(5, 150), ground);
    QCOMPARE(image.pixelColor(599, 150), ground);
    QCOMPARE(image.pixelColor(600, 150), pastEnd);
    QCOMPARE(image.pixelColor(719, 159), pastEnd);
    QCOMPARE(image.pixelColor(650, 24), ruler);
    QCOMPARE(image.pixelColor(650, 1), ruler);
    QCOMPARE(image.pixelColor(650, 25), QColor(153, 153, 153));
    QCOMPARE(image.pixelColor(650, 26), pastEnd);
    // The end mark, where no tick lies on it.
    QCOMPARE(image.pixelColor(600, 2), endMark);
    QCOMPARE(image.pixelColor(600, 24), ruler);
    QCOMPARE(image.pixelColor(601, 18), ruler);
    // Below the ruler nothing but the cursor.
    QCOMPARE(columnsOfColour(image, 100, ground).size(), 600 - 7);
}

void TimelinePaintingTest::paintsTheZonePastTheEnd()
{
    Strip strip(6120);
    painted(strip.timeline);
    for (int step = 0; step < 100; ++step)
        strip.wheel(QPoint(0, 120), Qt::NoModifier);
    QCOMPARE(strip.timeline.contentX(), 5400);
    QCOMPARE(columnsOfColour(painted(strip.timeline), 150, pastEnd).size(), 120);
    strip.timeline.setContentX(5280);
    QCOMPARE(columnsOfColour(painted(strip.timeline), 150, pastEnd).size(), 0);
}

void TimelinePaintingTest::paintsTicksUpToTheEnd()
{
    Strip strip(6120); // 10 ms per pixel
    strip.timeline.setDuration(timeAt(59870));
    strip.timeline.setContentWidth(5987 + 120);
    strip.timeline.setContentX(5387);
    const QImage image = painted(strip.timeline);
    const QList<int> major = columnsOfColour(image, 16, white);
    const QList<int> medium = columnsOfColour(image, 18, white);
    const QList<int> minor = columnsOfColour(image, 21, white);
    // Whatever the font, the spacing divides 10 s: every whole 10 s has a tick of each height.
    QVERIFY(medium.size() >= major.size());
    QVERIFY(minor.size() > medium.size());
    const int end = 5987 - 5387;
    for (const QList<int>& ticks : {medium, minor}) {
        QVERIFY(!ticks.isEmpty());
        QVERIFY(ticks.last() <= end);
    }
    // The last whole second is drawn, the one after it is not.
    QVERIFY(minor.contains(5900 - 5387));
    QVERIFY(!minor.contains(6000 - 5387));
    QVERIFY(minor.last() > 5900 - 5387);
    QCOMPARE(image.pixelColor(5900 - 5387, 23), ruler);
}

void TimelinePaintingTest::paintsLabels()
{
    // Two hours and a bit: the minutes of the labels begin again at each hour.
    Strip strip;
    strip.timeline.setDuration(timeAt(7320000));
    strip.timeline.setContentWidth(73200 + 120);
    strip.timeline.setContentX(36000 - 300);
    const QImage atAnHour = painted(strip.timeline);
    strip.timeline.setContentX(72000 - 300);
    QCOMPARE(painted(strip.timeline).copy(220, 0, 160, 12), atAnHour.copy(220, 0, 160, 12));

    int left = 380;
    int right = 220;
    for (int x = 220; x < 380; ++x) {
        for (int y = 0; y < 12; ++y) {
            if (atAnHour.pixelColor(x, y) == ruler)
                continue;
            left = std::min(left, x);
            right = std::max(right, x);
        }
    }
    QVERIFY(right - left > 40);
    QVERIFY2(std::abs(left + right - 2 * 300) <= 2, qPrintable(QString::number(left + right)));

    strip.timeline.setContentX(36100 - 300);
    QVERIFY(painted(strip.timeline).copy(300, 0, 80, 12) != atAnHour.copy(300, 0, 80, 12));
}

void TimelinePaintingTest::labelsCanBeRead()
{
    Strip strip;
    const QColor behind = mostFrequentColour(painted(strip.timeline).copy(2, 2, 50, 10));
    const double ratio = contrast(Qt::white, behind);
    QVERIFY2(ratio >= 4.5, qPrintable(QString("%1 on %2").arg(ratio).arg(behind.name())));
}

void TimelinePaintingTest::theLabelOfTheStartIsWhole()
{
    Strip strip;
    TextDevice device(QSize(720, 160));
    QPainter painter(&device);
    const int width = painter.fontMetrics().horizontalAdvance(QStringLiteral("00:00.000"));
    strip.timeline.paint(&painter);
    painter.end();
    QVERIFY(device.texts().size() > 2);
    const PaintedText& start = device.texts().at(0);
    QCOMPARE(start.text, QString("00:00.000"));
    QVERIFY2(start.baseline.x() >= 0, qPrintable(QString::number(start.baseline.x())));
    QVERIFY(start.baseline.x() < 4);
    // The next one is centred at its tick: ten pixels for a second.
    const PaintedText& next = device.texts().at(1);
    const int tick = QTime::fromString(next.text, QStringLiteral("mm:ss.zzz")).second() * 10;
    QVERIFY2(tick > 0, qPrintable(next.text));
    QVERIFY(std::abs(next.baseline.x() + width / 2.0 - tick) <= 2);
}

void TimelinePaintingTest::paintsTheCursor()
{
    Strip strip;
    strip.timeline.setCursorPosition(timeAt(30000));
    const QImage image = painted(strip.timeline);
    const QColor lighter(194, 194, 194); // 75/255 of white on the ground
    for (const int x : {297, 299, 301, 303}) {
        const QColor colour = image.pixelColor(x, 120);
        QVERIFY2(qAbs(colour.red() - lighter.red()) <= 1, qPrintable(colour.name()));
    }
    QCOMPARE(image.pixelColor(296, 120), ground);
    QCOMPARE(image.pixelColor(304, 120), ground);
    QCOMPARE(image.pixelColor(300, 120), QColor(0, 0, 0));
    QCOMPARE(image.pixelColor(300, 159), QColor(0, 0, 0));
    QCOMPARE(image.pixelColor(300, 15), QColor(0, 0, 0));
    QCOMPARE(image.pixelColor(298, 13), QColor(0, 0, 0));
    QVERIFY(image.pixelColor(294, 13) != QColor(0, 0, 0));
}

void TimelinePaintingTest::paintsPoisInOrder()
{
    Strip strip;
    strip.timeline.setPOIsFromList({QVariantMap{{QStringLiteral("time"), 20000}},
                                    QVariantMap{{QStringLiteral("time"), 22000}}});
    strip.player.answer(frameOf(Qt::red, QSize(60, 60)));
    strip.player.answer(frameOf(Qt::blue, QSize(60, 60)));
    deliver();
    const QImage image = painted(strip.timeline);
    QCOMPARE(image.pixelColor(210, 70), QColor(Qt::red));
    QCOMPARE(image.pixelColor(219, 70), QColor(Qt::red));
    QCOMPARE(image.pixelColor(220, 70), QColor(0, 0, 0));
    QCOMPARE(image.pixelColor(230, 70), QColor(Qt::blue));
    QCOMPARE(image.pixelColor(280, 106), QColor(Qt::blue));
    QCOMPARE(image.pixelColor(280, 107), ground);
}

void TimelinePaintingTest::paintsTheHoveredPoiOnTop()
{
    Strip strip;
    strip.addPois({20000, 22000}, QColor(0, 100, 0));
    strip.hover(215, 100);
    const QImage image = painted(strip.timeline);
    QCOMPARE(image.pixelColor(255, 40), white);
    // The light of the pointer on the thumbnail: 64/255 of white.
    const QColor light = image.pixelColor(255, 70);
    QVERIFY2(qAbs(light.red() - 64) <= 1 && qAbs(light.green() - 139) <= 1,
             qPrintable(light.name()));
    QCOMPARE(image.pixelColor(270, 70), QColor(0, 100, 0));
    QCOMPARE(image.pixelColor(270, 40), ground);
    strip.press(215, 100);
    QCOMPARE(painted(strip.timeline).pixelColor(255, 40), QColor(255, 0, 0));
}

void TimelinePaintingTest::paintsMoveMode()
{
    Strip strip;
    strip.addPois({20000, 40000}, QColor(0, 200, 0));
    strip.hover(215, 100);
    strip.press(215, 100);
    strip.timeline.enterMovePOIMode();
    strip.timeline.setCursorPosition(timeAt(50000));
    strip.hover(415, 100);
    const QImage image = painted(strip.timeline);
    // The flag at the cursor, without its thumbnail, and the others dimmed: 0.3 of their colour.
    QCOMPARE(image.pixelColor(550, 34), QColor(255, 0, 0));
    QCOMPARE(image.pixelColor(530, 80), ground);
    const QColor dimmed = image.pixelColor(430, 80);
    QVERIFY2(qAbs(dimmed.red() - 118) <= 1 && qAbs(dimmed.green() - 178) <= 1,
             qPrintable(dimmed.name()));
    // A dashed red box, two pixels wide, where the thumbnail would land.
    QList<int> top;
    for (int x = 502; x < 560; ++x) {
        if (image.pixelColor(x, 48) == QColor(255, 0, 0))
            top.append(x);
    }
    QVERIFY2(top.size() > 20 && top.size() < 57, qPrintable(QString::number(top.size())));
    int right = 0;
    for (int y = 50; y < 105; ++y)
        right += image.pixelColor(560, y) == QColor(255, 0, 0) ? 1 : 0;
    QVERIFY2(right > 20 && right < 55, qPrintable(QString::number(right)));
    strip.timeline.exitMovePOIMode();
    QCOMPARE(painted(strip.timeline).pixelColor(430, 34), white);
}

void TimelinePaintingTest::poisOutOfViewAreNotPainted()
{
    Strip strip(60120); // 1 ms per pixel
    QList<int> times;
    for (int i = 0; i < 2000; ++i)
        times.append(i * 30);
    strip.addPois(times);
    strip.timeline.setContentX(30000);
    const QImage all = painted(strip.timeline);
    strip.addPois(times.mid(970, 90));
    QCOMPARE(painted(strip.timeline), all);
}

void TimelinePaintingTest::aHundredThousandPoisLookLikeOnePerPixel()
{
    // A point of interest for each of 600 pixels, and a hundred thousand on the same pixels.
    const auto fill = [](Strip& strip, int stepMs) {
        QVariantList list;
        for (int ms = 0; ms < 600000; ms += stepMs)
            list.append(QVariantMap{{QStringLiteral("time"), ms}});
        strip.timeline.setDuration(timeAt(600000));
        strip.timeline.setPOIsFromList(list);
    };
    Strip few;
    fill(few, 1000);
    Strip many;
    fill(many, 6);
    const QImage image = painted(many.timeline);
    // Up to the last column, to which only the denser list rounds.
    QCOMPARE(image.copy(0, 26, 599, 134), painted(few.timeline).copy(0, 26, 599, 134));
}

void TimelinePaintingTest::asksOnlyForThumbnailsInSight()
{
    Strip strip(60120); // 1 ms per pixel
    // Runs of a hundred, one on each pixel, and a gap of as much after each.
    QVariantList list;
    for (int ms = 0; ms < 60000; ++ms) {
        if (ms % 200 < 100)
            list.append(QVariantMap{{QStringLiteral("time"), ms}});
    }
    strip.timeline.setPOIsFromList(list);
    QVERIFY(strip.player.requests.empty());
    painted(strip.timeline);
    deliver();
    // The last of each run is the one whose picture is not covered.
    QVERIFY(!strip.player.requests.empty());
    while (!strip.player.requests.empty()) {
        const int ms = msOfTime(strip.player.requests.front().time);
        QVERIFY2(ms % 200 == 99 && ms < 2000, qPrintable(QString::number(ms)));
        strip.player.answer(frameOf(Qt::green));
        deliver();
    }
    const QImage image = painted(strip.timeline);
    deliver();
    QVERIFY(strip.player.requests.empty());
    QCOMPARE(image.pixelColor(110, 70), QColor(Qt::green));
    // Elsewhere, where the view is now.
    strip.timeline.setContentX(30000);
    painted(strip.timeline);
    deliver();
    QVERIFY(!strip.player.requests.empty());
    QVERIFY(msOfTime(strip.player.requests.front().time) > 29000);
}

void TimelinePaintingTest::paintingAfterRemovalOfPoisIsHarmless()
{
    Strip strip;
    const QImage bare = painted(strip.timeline);
    strip.addPois({20000});
    strip.hover(215, 100);
    strip.press(215, 100);
    strip.timeline.setPOIsFromList({});
    QCOMPARE(painted(strip.timeline), bare);
    strip.timeline.enterMovePOIMode();
    QCOMPARE(painted(strip.timeline), bare);
    strip.timeline.exitMovePOIMode();
    strip.taken();
    // The pointer has not moved: a press still seeks to where the point of interest was.
    strip.press(215, 100);
    QCOMPARE(strip.taken(), (QStringList{"clicked", "seek 20000"}));
}

void TimelinePaintingTest::oddScalesArePaintedHarmlessly_data()
{
    QTest::addColumn<int>("durationMs");
    QTest::addColumn<int>("contentWidth");
    QTest::addColumn<int>("contentX");
    constexpr int intMax = std::numeric_limits<int>::max();
    constexpr int intMin = std::numeric_limits<int>::min();
    for (const int duration : {0, 1, 60000, 86399999}) {
        for (const int width : {intMin, -500, 0, 119, 120, 121, 720, 1000000, intMax}) {
            for (const int x : {intMin, -1000, 0, 1000000, intMax})
                QTest::newRow(qPrintable(
                    QStringLiteral("%1 ms, %2 px at %3").arg(duration).arg(width).arg(x)))
                    << duration << width << x;
        }
    }
}

void TimelinePaintingTest::oddScalesArePaintedHarmlessly()
{
    QFETCH(int, durationMs);
    QFETCH(int, contentWidth);
    QFETCH(int, contentX);
    Strip strip;
    strip.addPois({0, 1, 30000, 86399999});
    strip.timeline.setDuration(timeAt(durationMs));
    strip.timeline.setContentWidth(contentWidth);
    strip.timeline.setContentX(contentX);
    QCOMPARE(painted(strip.timeline).pixelColor(300, 159).alpha(), 255);
    strip.hover(300, 100);
    strip.press(300, 100);
    strip.hover(300, 10);
    strip.press(300, 10);
    strip.move(-50, 10);
    strip.release(-50, 10);
    strip.wheel(QPoint(0, 120), Qt::NoModifier, 300);
    strip.wheel(QPoint(0, 120), Qt::ControlModifier, 300);
    strip.wheel(QPoint(0, -120), Qt::ControlModifier, 300);
    painted(strip.timeline);
    QVERIFY(strip.timeline.cursorPosition().isValid());
    QVERIFY(strip.timeline.cursorPosition() <= strip.timeline.duration());
}

QTEST_MAIN(TimelinePaintingTest)
#include "TimelinePaintingTest.moc"
