#include "headUpPanel.h"

#include "Support/contrast.h"

#include <limits>
#include <vector>

using namespace corv;
using namespace corv::test;

/// How the panel looks: its rows and its two dials.
class HeadUpDisplayPaintingTest : public QObject
{
    Q_OBJECT

private slots:
    void drawsTheDials();
    void theCompassTurns_data();
    void theCompassTurns();
    void theCameraNeedleTurns_data();
    void theCameraNeedleTurns();
    void oddValuesAreDrawnHarmlessly_data();
    void oddValuesAreDrawnHarmlessly();
    void drawsAtAnyWidth_data();
    void drawsAtAnyWidth();
    void drawsLabelsAndSeparators();
    void labelIsAtTheLeftAndValueAtTheRight();
    void textsCanBeReadOnThePanel();
};

void HeadUpDisplayPaintingTest::drawsTheDials()
{
    Panel panel;
    const QImage image = painted(panel.hud);
    for (const QPoint& centre : {compassCentre, cameraCentre}) {
        QCOMPARE(image.pixelColor(centre), discColour);
        QCOMPARE(image.pixelColor(centre + QPoint(-80, -80)), QColor(Qt::magenta));
        QCOMPARE(image.pixelColor(centre + QPoint(80, 80)), QColor(Qt::magenta));
    }
    // The compass has a tick at the top and at the right.
    QVERIFY(image.pixelColor(compassCentre + QPoint(0, -81)).value() > 200);
    QVERIFY(image.pixelColor(compassCentre + QPoint(81, 0)).value() > 200);
    QCOMPARE(image.pixelColor(compassCentre + QPoint(0, -70)), discColour);
    // The camera's ticks and arc are on the left, from 115 to 240 degrees; none at the right.
    QVERIFY(image.pixelColor(cameraCentre + QPoint(-81, 0)).value() > 200);
    QVERIFY(image.pixelColor(cameraCentre + QPoint(-84, 0)).value() > 200);
    QCOMPARE(image.pixelColor(cameraCentre + QPoint(0, -81)), discColour);
}

void HeadUpDisplayPaintingTest::theCompassTurns_data()
{
    QTest::addColumn<double>("degrees");
    QTest::addColumn<QPoint>("tip");
    QTest::newRow("north") << 0.0 << QPoint(0, -26);
    QTest::newRow("east") << 90.0 << QPoint(26, 0);
    QTest::newRow("south") << 180.0 << QPoint(0, 26);
    QTest::newRow("west, as a negative heading") << -90.0 << QPoint(-26, 0);
    QTest::newRow("once round") << 450.0 << QPoint(26, 0);
}

void HeadUpDisplayPaintingTest::theCompassTurns()
{
    QFETCH(double, degrees);
    QFETCH(QPoint, tip);
    LogBuilder log = recordingLog(durationMs);
    addStateGroup(log);
    State state;
    state.time = start;
    state.yaw = radians(degrees);
    addState(log, state);
    Panel panel(log);
    const QImage image = painted(panel.hud);
    QVERIFY(isNeedle(image.pixelColor(compassCentre + tip)));
    QCOMPARE(image.pixelColor(compassCentre - tip), discColour);
    QCOMPARE(needlePixels(image, discAround(cameraCentre)), 0);
}

void HeadUpDisplayPaintingTest::theCameraNeedleTurns_data()
{
    QTest::addColumn<double>("degrees");
    QTest::addColumn<QPoint>("tip");
    QTest::newRow("level: to the left") << 0.0 << QPoint(-30, 0);
    QTest::newRow("up") << 90.0 << QPoint(0, -30);
    QTest::newRow("down") << -90.0 << QPoint(0, 30);
}

void HeadUpDisplayPaintingTest::theCameraNeedleTurns()
{
    QFETCH(double, degrees);
    QFETCH(QPoint, tip);
    LogBuilder log = recordingLog(durationMs);
    addCameraGroup(log);
    addCamera(log, start, static_cast<float>(degrees));
    Panel panel(log);
    const QImage image = painted(panel.hud);
    QVERIFY(isNeedle(image.pixelColor(cameraCentre + tip)));
    QVERIFY(!isNeedle(image.pixelColor(cameraCentre - tip)));
    QCOMPARE(needlePixels(image, discAround(compassCentre)), 0);
}

void HeadUpDisplayPaintingTest::oddValuesAreDrawnHarmlessly_data()
{
    QTest::addColumn<float>("value");
    QTest::newRow("no number") << std::numeric_limits<float>::quiet_NaN();
    QTest::newRow("infinite") << std::numeric_limits<float>::infinity();
    QTest::newRow("greatest") << std::numeric_limits<float>::max();
    QTest::newRow("least") << std::numeric_limits<float>::lowest();
    QTest::newRow("smallest") << std::numeric_limits<float>::denorm_min();
}

void HeadUpDisplayPaintingTest::oddValuesAreDrawnHarmlessly()
{
    QFETCH(float, value);
    LogBuilder log = recordingLog(durationMs);
    addStateGroup(log);
    addCameraGroup(log);
    addState(log, {start, value, value, value, 0, value, 0});
    addCamera(log, start, value);
    Panel panel(log);
    panel.hud.setImperialUnits(true);
    const QImage image = painted(panel.hud);
    if (!std::isfinite(value))
        QCOMPARE(needlePixels(image, image.rect()), 0);
    for (const char* label : {"Pitch", "Roll", "Heading", "Altitude", "Cam pitch"})
        QVERIFY(panel.textsOfRow(rowOf(label), 0) != QString(label));
}

void HeadUpDisplayPaintingTest::drawsAtAnyWidth_data()
{
    QTest::addColumn<int>("width");
    for (const int width : {1, 20, 85, 169, 170, 171, 200, 270, 339, 340, 341, 600, 4000})
        QTest::newRow(qPrintable(QString::number(width))) << width;
}

void HeadUpDisplayPaintingTest::drawsAtAnyWidth()
{
    QFETCH(int, width);
    LogBuilder log = recordingLog(durationMs);
    addStateGroup(log);
    addState(log, {start, 1, 1, 1, 0, 1, 0});
    Panel panel(log);
    panel.hud.setSize(QSizeF(width, 300));
    const QImage image = painted(panel.hud);
    // The dial grows narrower as the panel grows wider, about the panel's middle.
    const int size = 340 - width;
    if (size > 100 && size <= width) {
        const QPoint centre(width / 2, rowTop(rowOf("Heading")) + rowHeight + size / 2);
        QCOMPARE(image.pixelColor(centre + QPoint(-size / 2 + 12, 0)), discColour);
        const QPoint outside = centre + QPoint(-size / 2 - 2, 0);
        if (outside.x() >= 0)
            QCOMPARE(image.pixelColor(outside), QColor(Qt::magenta));
    }
}

void HeadUpDisplayPaintingTest::drawsLabelsAndSeparators()
{
    Panel panel;
    const QImage image = painted(panel.hud);
    for (int row = 0; row < rowCount(); ++row) {
        QCOMPARE(panel.textsOfRow(row), texts(row, QString()));
        const QColor line = image.pixelColor(panelWidth / 2, rowTop(row));
        QCOMPARE(line, row == 0 ? QColor(Qt::magenta) : discColour);
    }
    QCOMPARE(image.pixelColor(5, 30), QColor(Qt::magenta));
    QCOMPARE(image.pixelColor(panelWidth - 5, 30), QColor(Qt::magenta));
}

void HeadUpDisplayPaintingTest::labelIsAtTheLeftAndValueAtTheRight()
{
    LogBuilder log = recordingLog(durationMs);
    addStateGroup(log);
    addState(log, {start, 0, 0, 0, 0, 5, 0});
    Panel panel(log);
    const QImage row = painted(panel.hud).copy(0, rowTop(rowOf("Altitude")) + 2, panelWidth, 27);
    std::vector<int> white; // the columns with ink
    for (int x = 0; x < row.width(); ++x) {
        for (int y = 0; y < row.height(); ++y) {
            if (row.pixelColor(x, y).green() > 150) { // of the ground: 0
                white.push_back(x);
                break;
            }
        }
    }
    QVERIFY(!white.empty());
    QVERIFY2(white.front() >= 10 && white.front() < 14, qPrintable(QString::number(white.front())));
    QVERIFY2(white.back() >= panelWidth - 14 && white.back() < panelWidth - 10,
             qPrintable(QString::number(white.back())));
}

void HeadUpDisplayPaintingTest::textsCanBeReadOnThePanel()
{
    LogBuilder log = recordingLog(durationMs);
    addStateGroup(log);
    addState(log, {start, 0, 0, 0, 0, 5, 0});
    Panel panel(log);
    QImage image(panel.hud.boundingRect().size().toSize(), QImage::Format_RGB32);
    image.fill(QColor(0x77, 0x77, 0x77)); // the ground of the sidebar
    QPainter painter(&image);
    panel.hud.paint(&painter);
    painter.end();
    for (const int x : {10, panelWidth - 10 - 16}) {
        const QColor behind =
            mostFrequentColour(image.copy(x, rowTop(rowOf("Altitude")) + 10, 16, 10));
        const double ratio = contrast(Qt::white, behind);
        QVERIFY2(ratio >= 4.5, qPrintable(QString("%1 on %2").arg(ratio).arg(behind.name())));
    }
}

QTEST_MAIN(HeadUpDisplayPaintingTest)
#include "HeadUpDisplayPaintingTest.moc"
