#include "Log/LogDecoder.h"
#include "Support/MessageLog.h"

#include <QTemporaryDir>
#include <QtTest>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

// Allocations of at least this many bytes fail while it is not 0.
std::atomic<size_t> smallestRefused{0};
std::atomic<int> refused{0};

} // namespace

void* operator new(size_t size)
{
    const size_t limit = smallestRefused.load();
    if (limit != 0 && size >= limit) {
        ++refused;
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, size_t) noexcept
{
    std::free(memory);
}

using namespace corv;
using namespace corv::test;

/// A log whose model finds no memory.
class LogMemoryTest : public QObject
{
    Q_OBJECT

private slots:
    void aModelWithoutMemoryIsAFailure_data();
    void aModelWithoutMemoryIsAFailure();
};

void LogMemoryTest::aModelWithoutMemoryIsAFailure_data()
{
    QTest::addColumn<bool>("forPairing");
    QTest::newRow("decoded") << false;
    QTest::newRow("for pairing") << true;
}

void LogMemoryTest::aModelWithoutMemoryIsAFailure()
{
    QFETCH(bool, forPairing);
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.log"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<main><groups>");
    for (int i = 0; i < 30000; ++i)
        file.write("<group><name>g</name></group>");
    file.write("</groups></main>\n");
    file.close();

    const MessageLog messages;
    const std::atomic<bool> abortFlag{false};
    LogDecoder decoder(&abortFlag);
    const auto kind = [&]() -> int {
        const auto failureOf = [](const auto& result) {
            return result ? -1 : int(result.failure().kind);
        };
        const auto progress = [](int, int, int) {};
        return forPairing ? failureOf(decoder.readForPairing(path, progress))
                          : failureOf(decoder.decode(path, progress));
    };
    refused = 0;
    smallestRefused = size_t(1) << 20;
    const int without = kind();
    smallestRefused = 0;
    QVERIFY(refused > 0);
    QCOMPARE(without, int(Failure::Kind::noMemory));
    QVERIFY(messages.contains(QStringLiteral("ERROR: no memory left for the log")));
    QCOMPARE(kind(), -1);
}

QTEST_GUILESS_MAIN(LogMemoryTest)
#include "LogMemoryTest.moc"
