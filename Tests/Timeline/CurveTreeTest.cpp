#include "Timeline/CurveTree.h"

#include <QtTest>
#include <cmath>
#include <random>

using namespace corv;

/// The ranges of a column against looking at every value.
class CurveTreeTest : public QObject
{
    Q_OBJECT

private slots:
    void rangesAreThoseOfTheRows_data();
    void rangesAreThoseOfTheRows();
    void everyTypeIsRead_data();
    void everyTypeIsRead();
    void valuesThatAreNoNumbersArePassedOver();
};

namespace {

LogVar floats(const std::vector<float>& values)
{
    LogVar var("v");
    var.allocate(1, static_cast<int>(values.size()), LogVar::Float);
    for (size_t row = 0; row < values.size(); ++row)
        var.setFloat(0, static_cast<int>(row), values[row]);
    return var;
}

} // namespace

void CurveTreeTest::rangesAreThoseOfTheRows_data()
{
    QTest::addColumn<int>("count");
    for (const int count : {0, 1, 31, 32, 33, 64, 95, 96, 1000, 5000})
        QTest::addRow("%d", count) << count;
}

void CurveTreeTest::rangesAreThoseOfTheRows()
{
    QFETCH(int, count);
    std::mt19937 random(15);
    std::vector<float> values(static_cast<size_t>(count));
    for (float& value : values)
        value = static_cast<float>(random() % 100000) / 7;
    const LogVar var = floats(values);
    const CurveTree tree(var, 0);
    QCOMPARE(tree.count(), count);
    for (int i = 0; i < 500; ++i) {
        int first = static_cast<int>(random() % static_cast<unsigned>(count + 3)) - 1;
        int last = static_cast<int>(random() % static_cast<unsigned>(count + 3));
        if (first > last && random() % 4 != 0)
            std::swap(first, last);
        const auto from = values.begin() + std::clamp(first, 0, count);
        const auto to = values.begin() + std::clamp(last, 0, count);
        const ValueRange range = tree.range(first, last);
        QCOMPARE(range.isEmpty(), from >= to);
        if (from < to) {
            QCOMPARE(range.lowest, *std::min_element(from, to));
            QCOMPARE(range.highest, *std::max_element(from, to));
        }
    }
}

void CurveTreeTest::everyTypeIsRead_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<float>("value");
    const auto row = [](const char* name, LogVar::Type type, const char* hex, float value) {
        QTest::newRow(name) << int(type) << QByteArray::fromHex(hex) << value;
    };
    row("INT32", LogVar::Int32, "feffffff", -2);
    row("UINT32", LogVar::Uint32, "000000f0", 4026531840.0F);
    row("INT16", LogVar::Int16, "feff", -2);
    row("UINT16", LogVar::Uint16, "feff", 65534);
    row("INT8", LogVar::Int8, "fe", -2);
    row("UINT8", LogVar::Uint8, "fe", 254);
    row("FLOAT", LogVar::Float, "0000c03f", 1.5F);
    row("DOUBLE", LogVar::Double, "000000000000f8bf", -1.5F);
}

void CurveTreeTest::everyTypeIsRead()
{
    QFETCH(int, type);
    QFETCH(QByteArray, bytes);
    QFETCH(float, value);
    LogVar var("v");
    QVERIFY(var.allocate(2, 2, static_cast<LogVar::Type>(type)));
    std::copy(bytes.begin(), bytes.end(), var.block() + 3 * bytes.size());
    const CurveTree tree(var, 1);
    QCOMPARE(tree.valueAt(0), 0.0F);
    QCOMPARE(tree.valueAt(1), value);
}

void CurveTreeTest::valuesThatAreNoNumbersArePassedOver()
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinite = std::numeric_limits<float>::infinity();
    const LogVar var = floats({nan, 3, -infinite, 1, infinite, nan});
    const CurveTree tree(var, 0);
    const ValueRange range = tree.range(0, 6);
    QCOMPARE(range.lowest, 1.0F);
    QCOMPARE(range.highest, 3.0F);
    QVERIFY(tree.range(4, 6).isEmpty());
}

QTEST_GUILESS_MAIN(CurveTreeTest)
#include "CurveTreeTest.moc"
