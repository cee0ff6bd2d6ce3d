#include "Log/checksum.h"

#include <QtTest>
#include <random>
#include <vector>

using namespace corv;

class ChecksumTest : public QObject
{
    Q_OBJECT

private slots:
    void isTheSumOfTheBytes_data()
    {
        QTest::addColumn<int>("size");
        for (int size = 0; size <= 70; ++size)
            QTest::newRow(qPrintable(QString::number(size))) << size;
        QTest::newRow("long") << 65535;
    }

    void isTheSumOfTheBytes()
    {
        QFETCH(int, size);
        std::mt19937 random(static_cast<unsigned>(size));
        for (int attempt = 0; attempt < 20; ++attempt) {
            // Mostly the largest value, which is the first to be carried into a neighbour.
            std::vector<unsigned char> bytes(static_cast<size_t>(size), 0xff);
            unsigned sum = 0;
            for (unsigned char& byte : bytes) {
                if (random() % 4 == 0)
                    byte = static_cast<unsigned char>(random());
                sum += byte;
            }
            QCOMPARE(unsigned(checksumOf(bytes.data(), bytes.size())), sum % 256);
        }
    }
};

QTEST_GUILESS_MAIN(ChecksumTest)
#include "ChecksumTest.moc"
