#include "Bench.h"
#include "Log/LogDecoder.h"
#include "Log/checksum.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace corv::bench {
namespace {

constexpr qint64 kThermalLogBytes = qint64(600) << 20;
constexpr qint64 kHostileLogBytes = qint64(200) << 20;

QByteArray packet(int id, const QByteArray& payload)
{
    QByteArray bytes("\x86\x37", 2);
    bytes += static_cast<char>(id);
    bytes += static_cast<char>(payload.size() >> 8);
    bytes += static_cast<char>(payload.size());
    bytes += payload;
    bytes += static_cast<char>(checksumOf(reinterpret_cast<const unsigned char*>(payload.data()),
                                          static_cast<size_t>(payload.size())));
    return bytes;
}

template <typename T>
void append(QByteArray* bytes, T value)
{
    bytes->append(reinterpret_cast<const char*>(&value), sizeof(value));
}

QByteArray var(const char* name, const char* type, int nb)
{
    return QByteArray("<var><name>") + name + "</name><type>" + type + "</type><nb>" +
           QByteArray::number(nb) + "</nb></var>";
}

QByteArray description()
{
    return "<main><log_version>1</log_version><groups>"
           "<group><id>1</id><name>state_estimation</name>" +
           var("time", "UINT32", 1) + var("euler_angles", "FLOAT", 3) +
           var("heading_reference", "FLOAT", 1) + var("altitude", "FLOAT", 1) +
           var("altitude_telem_ref", "FLOAT", 1) +
           "</group><group><id>2</id><name>lepton_video</name>" + var("image", "UINT16", 4800) +
           var("image_part", "UINT8", 1) + var("frame_counter", "UINT32", 1) +
           "</group><group><id>3</id><name>tiny</name>" + var("time", "UINT32", 1) +
           var("value", "FLOAT", 1) + "</group></groups></main>\n";
}

// Cheap, repeatable noise: compresses as badly as a camera's.
class Noise
{
public:
    quint32 next()
    {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        return m_state;
    }

private:
    quint32 m_state = 2463534242U;
};

// A ninth of a second of flight: four parts of one thermal frame, and the state at 50 Hz.
QByteArray flightSlice(int frame, Noise* noise)
{
    QByteArray bytes;
    int timeMs = frame * 1000 / 9;
    for (int part = 0; part < 4; ++part) {
        QByteArray payload;
        payload.reserve(9605);
        for (int word = 0; word < 2400; ++word)
            append(&payload, noise->next());
        append(&payload, static_cast<quint8>(part));
        append(&payload, frame);
        bytes += packet(2, payload);
    }
    const int nextMs = (frame + 1) * 1000 / 9;
    for (timeMs += 19 - (timeMs + 19) % 20; timeMs < nextMs; timeMs += 20) {
        QByteArray payload;
        append(&payload, timeMs);
        for (int i = 0; i < 6; ++i)
            append(&payload, static_cast<float>(noise->next()) / 1e6F);
        bytes += packet(1, payload);
    }
    return bytes;
}

// Packets of eight bytes: a time and a value.
QByteArray tinySlice(int index, Noise* noise)
{
    QByteArray bytes;
    for (int i = 0; i < 1000; ++i) {
        QByteArray payload;
        append(&payload, index * 1000 + i);
        append(&payload, noise->next());
        bytes += packet(3, payload);
    }
    return bytes;
}

// Every way to be wrong: noise, halves of sync pairs, ids of nobody, sizes of something else,
// checksums that do not hold.
QByteArray damagedSlice(int, Noise* noise)
{
    QByteArray bytes;
    for (int i = 0; i < 500; ++i) {
        for (int word = 0; word < 4; ++word)
            append(&bytes, noise->next());
        bytes += "\x86\x86\x37\x86\x37\x63\x86\x37\x03";
        bytes += QByteArray("\x00\x09", 2);
        QByteArray payload;
        append(&payload, noise->next());
        append(&payload, noise->next());
        QByteArray bad = packet(3, payload);
        bad[bad.size() - 1] = static_cast<char>(bad[bad.size() - 1] + 1);
        bytes += bad;
    }
    return bytes;
}

QString madeLog(const Report& report, const QString& name, qint64 sizeBytes,
                const std::function<QByteArray(int, Noise*)>& slice)
{
    const QString path = report.inputFolder() + QLatin1Char('/') + name;
    if (QFileInfo(path).size() >= sizeBytes)
        return path;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(path));
    file.write(description());
    Noise noise;
    for (int index = 0; file.pos() < sizeBytes; ++index)
        file.write(slice(index, &noise));
    return path;
}

void decode(const QString& path)
{
    const std::atomic<bool> abortFlag{false};
    LogDecoder decoder(&abortFlag);
    const std::unique_ptr<LogFile> log(decoder.parseLog(path, [](int, int, int) {}));
    if (!log)
        qFatal("cannot decode %s", qPrintable(path));
}

// The least that any decoder does: look at every byte, and put it into memory that was not there.
void addUpAndCopy(const QString& path)
{
    static volatile unsigned char sink = 0;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        qFatal("cannot read %s", qPrintable(path));
    const std::unique_ptr<unsigned char[]> copy(
        new unsigned char[static_cast<size_t>(file.size())]);
    std::vector<unsigned char> block(size_t(1) << 20);
    unsigned char* to = copy.get();
    qint64 got = 0;
    while ((got = file.read(reinterpret_cast<char*>(block.data()),
                            static_cast<qint64>(block.size()))) > 0) {
        const auto size = static_cast<size_t>(got);
        sink = static_cast<unsigned char>(sink + checksumOf(block.data(), size));
        std::copy_n(block.data(), size, to);
        to += size;
    }
}

void readForPairing(const QString& path)
{
    const std::atomic<bool> abortFlag{false};
    if (!LogDecoder(&abortFlag).readForPairing(path, [](int, int, int) {}))
        qFatal("cannot read %s", qPrintable(path));
}

// The least that any counting of packets does: look at every byte.
void addUp(const QString& path)
{
    static volatile unsigned char sink = 0;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        qFatal("cannot read %s", qPrintable(path));
    std::vector<unsigned char> block(size_t(1) << 20);
    qint64 got = 0;
    while ((got = file.read(reinterpret_cast<char*>(block.data()),
                            static_cast<qint64>(block.size()))) > 0)
        sink =
            static_cast<unsigned char>(sink + checksumOf(block.data(), static_cast<size_t>(got)));
}

void speedRow(Report& report, const QString& name, const QString& path, double limit,
              const QString& input)
{
    const double ratio = timeRatio([&path] { decode(path); }, [&path] { addUpAndCopy(path); });
    report.row(name, ratio, limit, input);
}

const Benchmark decodeThermal("decode", [](Report& report) {
    const QString thermal =
        madeLog(report, QStringLiteral("thermal.log"), kThermalLogBytes, flightSlice);
    speedRow(report, QStringLiteral("decode, 600 MB thermal log"), thermal, 1.5,
             QStringLiteral("over adding up and copying its bytes"));
    const double sizeBytes = static_cast<double>(QFileInfo(thermal).size());
    constexpr double kAllowance = 80.0 * 1024 * 1024;
    report.row(QStringLiteral("decode, peak memory"),
               (peakBytesOf([&thermal] { decode(thermal); }) - kAllowance) / sizeBytes, 1.2,
               QStringLiteral("less 80 MB, over the log's size"));
    speedRow(report, QStringLiteral("decode, tiny packets"),
             madeLog(report, QStringLiteral("tiny.log"), kHostileLogBytes, tinySlice), 6,
             QStringLiteral("8 bytes of payload"));
    speedRow(report, QStringLiteral("decode, all damage"),
             madeLog(report, QStringLiteral("damaged.log"), kHostileLogBytes, damagedSlice), 6,
             QStringLiteral("noise, wrong ids, sizes and checksums"));
});

const Benchmark pairing("pairing", [](Report& report) {
    const QString thermal =
        madeLog(report, QStringLiteral("thermal.log"), kThermalLogBytes, flightSlice);
    report.row(QStringLiteral("log read for pairing, 600 MB"),
               timeRatio([&thermal] { readForPairing(thermal); }, [&thermal] { addUp(thermal); }),
               1.0, QStringLiteral("over adding up its bytes"));
    constexpr double kMost = 32.0 * 1024 * 1024;
    report.row(QStringLiteral("log read for pairing, peak memory"),
               peakBytesOf([&thermal] { readForPairing(thermal); }) / kMost, 1,
               QStringLiteral("over 32 MB"));
});

} // namespace
} // namespace corv::bench
