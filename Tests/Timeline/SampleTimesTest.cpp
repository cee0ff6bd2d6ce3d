#include "Timeline/SampleTimes.h"

#include <QRandomGenerator>
#include <QtTest>
#include <limits>
#include <vector>

using corv::SampleTimes;

Q_DECLARE_METATYPE(std::vector<qint32>)

namespace {

// The definition of sample and hold, one sample after the other.
int slowIndexAt(const std::vector<qint32>& times, int ms)
{
    const int count = static_cast<int>(times.size());
    for (int i = 0; i < count - 1; ++i) {
        if (ms < times[static_cast<size_t>(i) + 1])
            return i;
    }
    return count - 1;
}

} // namespace

class SampleTimesTest : public QObject
{
    Q_OBJECT

private slots:
    void findsTheSampleThatHolds_data();
    void findsTheSampleThatHolds();
    void agreesWithTheDefinitionOnAnySeries();
};

void SampleTimesTest::findsTheSampleThatHolds_data()
{
    QTest::addColumn<std::vector<qint32>>("times");
    QTest::addColumn<int>("ms");
    QTest::addColumn<int>("expected");
    const std::vector<qint32> ascending = {100, 200, 300};
    QTest::newRow("before the first") << ascending << 50 << 0;
    QTest::newRow("on the first") << ascending << 100 << 0;
    QTest::newRow("just before the second") << ascending << 199 << 0;
    QTest::newRow("on the second") << ascending << 200 << 1;
    QTest::newRow("on the last") << ascending << 300 << 2;
    QTest::newRow("after the last") << ascending << 100000 << 2;
    QTest::newRow("one sample") << std::vector<qint32>{100} << 50 << 0;
    QTest::newRow("equal times: the last of them") << std::vector<qint32>{1, 2, 2, 2, 3} << 2 << 3;
    QTest::newRow("a clock set back: the first that lies after")
        << std::vector<qint32>{100, 200, 50, 300} << 150 << 0;
    QTest::newRow("a clock set back, later moment")
        << std::vector<qint32>{100, 200, 50, 300} << 250 << 2;
    QTest::newRow("a late first sample holds nothing back")
        << std::vector<qint32>{900, 200, 300} << 250 << 1;
    QTest::newRow("times past the signed range are before everything")
        << std::vector<qint32>{100, 200, -5} << 1000 << 2;
}

void SampleTimesTest::findsTheSampleThatHolds()
{
    QFETCH(std::vector<qint32>, times);
    QFETCH(int, ms);
    QFETCH(int, expected);
    QCOMPARE(slowIndexAt(times, ms), expected);
    QCOMPARE(SampleTimes(times.data(), static_cast<int>(times.size())).indexAt(ms), expected);
}

void SampleTimesTest::agreesWithTheDefinitionOnAnySeries()
{
    QRandomGenerator random(20260611);
    for (int round = 0; round < 2000; ++round) {
        // Few different values, so that equal times and moments just on a time are common.
        const int spread = random.bounded(1, 40);
        std::vector<qint32> times(static_cast<size_t>(random.bounded(1, 40)));
        for (qint32& time : times)
            time = random.bounded(-spread, spread);
        const SampleTimes fast(times.data(), static_cast<int>(times.size()));
        for (int ms = -spread - 1; ms <= spread + 1; ++ms)
            QCOMPARE(fast.indexAt(ms), slowIndexAt(times, ms));
        for (const int ms : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
            QCOMPARE(fast.indexAt(ms), slowIndexAt(times, ms));
    }
}

QTEST_APPLESS_MAIN(SampleTimesTest)
#include "SampleTimesTest.moc"
