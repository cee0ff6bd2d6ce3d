#include "Base/arithmetic.h"

#include <QtTest>
#include <cmath>
#include <limits>

using namespace corv;

namespace {

constexpr int smallest = std::numeric_limits<int>::min();
constexpr int largest = std::numeric_limits<int>::max();

} // namespace

/// Arithmetic on numbers that come from files.
class ArithmeticTest : public QObject
{
    Q_OBJECT

private slots:
    void truncationClampsToInt_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("expected");
        QTest::newRow("positive") << 2.9 << 2;
        QTest::newRow("negative") << -2.9 << -2;
        QTest::newRow("largest") << double(largest) << largest;
        QTest::newRow("above the range") << 1e300 << largest;
        QTest::newRow("infinite") << HUGE_VAL << largest;
        QTest::newRow("below the range") << -1e300 << smallest;
        QTest::newRow("not a number") << std::nan("") << 0;
    }

    void truncationClampsToInt()
    {
        QFETCH(double, value);
        QTEST(truncateToInt(value), "expected");
    }

    void productWrapsAt32Bits_data()
    {
        QTest::addColumn<int>("a");
        QTest::addColumn<int>("b");
        QTest::addColumn<int>("expected");
        QTest::newRow("small") << 6 << -7 << -42;
        QTest::newRow("2^32") << 65536 << 65536 << 0;
        QTest::newRow("2^31") << 65536 << 32768 << smallest;
        QTest::newRow("largest squared") << largest << largest << 1;
    }

    void productWrapsAt32Bits()
    {
        QFETCH(int, a);
        QFETCH(int, b);
        QTEST(wrappingProduct(a, b), "expected");
    }
};

QTEST_GUILESS_MAIN(ArithmeticTest)
#include "ArithmeticTest.moc"
