#include "Video/thermalTables.h"

#include <QtTest>
#include <random>

using namespace corv;

namespace {

// The table as the flight's records define it, entry by entry and search by search.
std::vector<qint32> slowTimes(const std::vector<quint32>& times, const std::vector<quint32>& c)
{
    const int n = static_cast<int>(c.size());
    const auto at = [&c](int i) { return c[static_cast<size_t>(i)]; };
    quint32 count = 0;
    for (int i = n - 1; i > 0; --i) {
        count = at(i);
        if (at(i) == at(i - 1) + 1)
            break;
    }
    count += 1;
    quint32 first = 0;
    int index = 0;
    for (; index < n - 1; ++index) {
        first = at(index);
        if (first == at(index + 1) - 1)
            break;
    }
    std::vector<qint32> result(count, 0);
    quint32 time = 0;
    for (quint32 f = first; f < count; ++f) {
        time += 114;
        for (int i = index; i < n; ++i) {
            if (at(i) == f) {
                time = times[static_cast<size_t>(i)];
                index = i;
                break;
            }
        }
        result[f] = static_cast<qint32>(time);
    }
    return result;
}

quint32 slowFrame(const std::vector<qint32>& times, qint32 t)
{
    for (quint32 f = 0; f + 1 < times.size(); ++f) {
        if (t < times[f])
            return f;
    }
    return static_cast<quint32>(times.size()) - 1;
}

} // namespace

class ThermalTablesTest : public QObject
{
    Q_OBJECT

private slots:
    void frameOfMoment_data();
    void frameOfMoment();
    void frameOfMomentInAnyTable();
    void impossibleCountersAreRefused_data();
    void impossibleCountersAreRefused();
    void manyMissingFramesCostNoTime();
    void newestPacketIsFound();
    void partsNeverAskedForAreLeftOut();
    void packetsAreInMachineOrder_data();
    void packetsAreInMachineOrder();
};

void ThermalTablesTest::frameOfMoment_data()
{
    QTest::addColumn<QVector<quint32>>("times");
    QTest::addColumn<QVector<quint32>>("counters");
    QTest::addColumn<int>("moment");
    QTest::addColumn<quint32>("frames");
    QTest::addColumn<quint32>("frame");
    const QVector<quint32> times{1000, 1114, 1228, 1342};
    const QVector<quint32> run{3, 4, 5, 6};
    QTest::newRow("before the first frame") << times << run << 10 << 7U << 3U;
    QTest::newRow("at a frame's time, the next") << times << run << 1114 << 7U << 5U;
    QTest::newRow("just before a frame's time") << times << run << 1113 << 7U << 4U;
    QTest::newRow("after the end") << times << run << 900'000 << 7U << 6U;
    QTest::newRow("negative: entry 0 is later") << times << run << -1 << 7U << 0U;
    const QVector<quint32> gapTimes{1000, 1100, 1300, 1400};
    const QVector<quint32> gap{3, 4, 6, 7};
    QTest::newRow("missing record: 114 ms on") << gapTimes << gap << 1213 << 8U << 5U;
    QTest::newRow("after the missing record") << gapTimes << gap << 1214 << 8U << 6U;
    QTest::newRow("junk at the end") << QVector<quint32>{1000, 1100, 1200, 5, 6}
                                     << QVector<quint32>{1, 2, 3, 900, 77} << 1250 << 4U << 3U;
    QTest::newRow("junk at the start") << QVector<quint32>{9, 8, 1000, 1100, 1200}
                                       << QVector<quint32>{55, 0, 4, 5, 6} << 1050 << 7U << 5U;
    QTest::newRow("no record") << QVector<quint32>{} << QVector<quint32>{} << 500 << 1U << 0U;
    QTest::newRow("one record") << QVector<quint32>{70} << QVector<quint32>{12} << 500 << 1U << 0U;
}

void ThermalTablesTest::frameOfMoment()
{
    QFETCH(QVector<quint32>, times);
    QFETCH(QVector<quint32>, counters);
    ThermalFrameTimes table;
    QVERIFY(table.rebuild(times.constData(), counters.constData(), counters.size()));
    QTEST(table.frameCount(), "frames");
    QFETCH(int, moment);
    QTEST(table.frameAt(moment), "frame");
}

void ThermalTablesTest::frameOfMomentInAnyTable()
{
    std::mt19937 random(5);
    const auto below = [&random](quint32 limit) { return static_cast<quint32>(random()) % limit; };
    int accepted = 0;
    for (int round = 0; round < 3000; ++round) {
        std::vector<quint32> times;
        std::vector<quint32> counters;
        quint32 counter = below(4);
        const quint32 records = below(12);
        for (quint32 i = 0; i < records; ++i) {
            // Mostly running on; now and then a leap, a repetition or a step back.
            counters.push_back(below(5) ? counter++ : below(12));
            times.push_back(below(8) ? 1000 + 100 * i : static_cast<quint32>(random()));
        }
        ThermalFrameTimes table;
        if (!table.rebuild(times.data(), counters.data(), static_cast<int>(records)))
            continue;
        ++accepted;
        const std::vector<qint32> slow = slowTimes(times, counters);
        QCOMPARE(table.frameCount(), static_cast<quint32>(slow.size()));
        std::vector<qint32> moments{INT_MIN, -1, 0, 1, INT_MAX};
        for (const qint32 time : slow)
            moments.insert(moments.end(), {time, static_cast<qint32>(quint32(time) - 1U)});
        for (const qint32 moment : moments)
            QCOMPARE(table.frameAt(moment), slowFrame(slow, moment));
    }
    QVERIFY(accepted > 2000);
}

void ThermalTablesTest::impossibleCountersAreRefused_data()
{
    QTest::addColumn<QVector<quint32>>("counters");
    QTest::newRow("four billion") << QVector<quint32>{0xfffffff0, 0xfffffff1, 0xfffffff2};
    QTest::newRow("the last number there is") << QVector<quint32>{0xfffffffe, 0xffffffff};
    QTest::newRow("one too many") << QVector<quint32>{ThermalFrameTimes::maxFrameCount - 1,
                                                      ThermalFrameTimes::maxFrameCount};
    QTest::newRow("starts beyond its end") << QVector<quint32>{1000, 1001, 5, 6};
}

void ThermalTablesTest::impossibleCountersAreRefused()
{
    QFETCH(QVector<quint32>, counters);
    const QVector<quint32> times(counters.size(), 1000);
    ThermalFrameTimes table;
    QVERIFY(!table.rebuild(times.constData(), counters.constData(), counters.size()));
    QCOMPARE(table.frameCount(), 0U);
}

void ThermalTablesTest::manyMissingFramesCostNoTime()
{
    // A search through all records for each of the missing frames would take hours.
    std::vector<quint32> counters{0, 1};
    for (quint32 i = 0; i < 200'000; ++i)
        counters.push_back(i % 2 ? 3'000'000 - i : 4'000'000 + i);
    counters.insert(counters.end(), {7'999'999, 8'000'000});
    const std::vector<quint32> times(counters.size(), 500);
    ThermalFrameTimes table;
    QVERIFY(table.rebuild(times.data(), counters.data(), static_cast<int>(counters.size())));
    QCOMPARE(table.frameCount(), 8'000'001U);
    QCOMPARE(table.frameAt(500), 2U);
    QCOMPARE(table.frameAt(500 + 114), 3U);
}

void ThermalTablesTest::newestPacketIsFound()
{
    std::mt19937 random(9);
    for (int round = 0; round < 300; ++round) {
        std::vector<quint32> counters;
        std::vector<quint8> parts;
        const quint32 packets = static_cast<quint32>(random()) % 60;
        for (quint32 i = 0; i < packets; ++i) {
            const bool runs = random() % 4 != 0;
            counters.push_back(runs ? i / 4 : static_cast<quint32>(random()) % 20);
            parts.push_back(static_cast<quint8>(runs ? i % 4 : random() % 6));
        }
        ThermalPartIndex index;
        index.rebuild(counters.data(), parts.data(), packets, 4);
        for (quint32 frame = 0; frame < 20; ++frame) {
            for (quint8 part = 0; part < 4; ++part) {
                std::optional<quint32> expected;
                for (quint32 i = 0; i < packets; ++i) {
                    if (counters[i] <= frame && parts[i] == part &&
                        (!expected || counters[i] > counters[*expected]))
                        expected = i;
                }
                QVERIFY(index.newestPacket(frame, part) == expected);
            }
        }
    }
}

void ThermalTablesTest::partsNeverAskedForAreLeftOut()
{
    const quint32 counters[] = {7, 7, 0xffffffff};
    const quint8 parts[] = {255, 0, 0};
    ThermalPartIndex index;
    index.rebuild(counters, parts, 3, 1);
    QVERIFY(!index.newestPacket(7, 255));
    QCOMPARE(index.newestPacket(7, 0).value(), 1U);
    QCOMPARE(index.newestPacket(0xffffffff, 0).value(), 2U);
    index.rebuild(nullptr, nullptr, 0, 4);
    QVERIFY(!index.newestPacket(7, 0));
}

void ThermalTablesTest::packetsAreInMachineOrder_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("packets");
    const int sizes[][2] = {{1, 1},    {1, 70},    {7, 9},     {8, 8},     {63, 65},  {64, 64},
                            {4800, 3}, {160, 200}, {4800, 69}, {19200, 2}, {13, 600}, {700, 1100}};
    for (const auto& size : sizes)
        QTest::addRow("%d x %d", size[0], size[1]) << size[0] << size[1];
}

void ThermalTablesTest::packetsAreInMachineOrder()
{
    QFETCH(int, columns);
    QFETCH(int, packets);
    const auto perRow = static_cast<size_t>(columns);
    const auto perColumn = static_cast<size_t>(packets);
    std::mt19937 random(1);
    std::vector<quint16> original(perRow * perColumn);
    for (quint16& word : original)
        word = static_cast<quint16>(random());
    std::vector<quint16> rows(original.size());
    packetsInMachineOrder(original.data(), columns, packets, rows.data());
    bool rowsAreRight = true;
    for (size_t k = 0; k < perRow; ++k) {
        for (size_t p = 0; p < perColumn; ++p) {
            const quint16 word = original[k * perColumn + p];
            const auto expected = static_cast<quint16>((word & 0xff) * 256 + word / 256);
            rowsAreRight = rowsAreRight && rows[p * perRow + k] == expected;
        }
    }
    QVERIFY(rowsAreRight);
}

QTEST_GUILESS_MAIN(ThermalTablesTest)
#include "ThermalTablesTest.moc"
