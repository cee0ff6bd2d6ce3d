#include "Video/ThermalReading.h"

#include <QTest>

using namespace corv;

// Raw thermal values by their place in the video frame.
class ThermalReadingTest : public QObject
{
    Q_OBJECT

private slots:
    void readsTheValueAtAPlace_data();
    void readsTheValueAtAPlace();
    void findsTheExtremesAndTheirPlaces();
    void extremesOutsideTheFrameDoNotCount();
};

namespace {

/// Four columns and two rows over a frame of 100 by 50, each thermal pixel 10 by 10, from (20, 10)
/// on.
ThermalReading reading(const cv::Rect& overlay = {20, 10, 40, 20})
{
    const cv::Mat values = (cv::Mat_<quint16>(2, 4) << 10, 20, 30, 40, 50, 5, 70, 60);
    return ThermalReading(values, overlay, {100, 50});
}

} // namespace

void ThermalReadingTest::readsTheValueAtAPlace_data()
{
    QTest::addColumn<QPointF>("place");
    QTest::addColumn<int>("value"); // -1 for none
    QTest::newRow("first pixel") << QPointF(0.201, 0.201) << 10;
    QTest::newRow("end of the first pixel") << QPointF(0.299, 0.399) << 10;
    QTest::newRow("second column") << QPointF(0.301, 0.21) << 20;
    QTest::newRow("last pixel") << QPointF(0.599, 0.599) << 60;
    QTest::newRow("left of the overlay") << QPointF(0.19, 0.3) << -1;
    QTest::newRow("right of the overlay") << QPointF(0.601, 0.3) << -1;
    QTest::newRow("above the overlay") << QPointF(0.3, 0.19) << -1;
    QTest::newRow("below the overlay") << QPointF(0.3, 0.601) << -1;
    QTest::newRow("outside the frame") << QPointF(-0.1, 0.3) << -1;
    QTest::newRow("no number") << QPointF(qQNaN(), 0.3) << -1;
}

void ThermalReadingTest::readsTheValueAtAPlace()
{
    QFETCH(QPointF, place);
    QFETCH(int, value);
    QCOMPARE(reading().valueAt(place).value_or(-1), value);
}

void ThermalReadingTest::findsTheExtremesAndTheirPlaces()
{
    const ThermalReading thermal = reading();
    QCOMPARE(thermal.coldest().value, 5);
    QCOMPARE(thermal.coldest().place, QPointF(0.35, 0.5));
    QCOMPARE(thermal.hottest().value, 70);
    QCOMPARE(thermal.hottest().place, QPointF(0.45, 0.5));
    QCOMPARE(thermal.valueAt(thermal.hottest().place).value_or(-1), 70);
}

void ThermalReadingTest::extremesOutsideTheFrameDoNotCount()
{
    const ThermalReading thermal = reading({20, 35, 40, 20}); // the lower row ends at 55 of 50
    QCOMPARE(thermal.hottest().value, 70);
    const ThermalReading cut = reading({20, 41, 40, 20});
    QCOMPARE(cut.hottest().value, 40);
    QCOMPARE(cut.coldest().value, 10);
}

QTEST_APPLESS_MAIN(ThermalReadingTest)
#include "ThermalReadingTest.moc"
