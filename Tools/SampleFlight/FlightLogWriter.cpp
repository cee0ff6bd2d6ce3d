#include "SampleFlight/FlightLogWriter.h"

#include <QtEndian>
#include <algorithm>
#include <numeric>

namespace corv {
namespace {

constexpr int bufferBytes = 1 << 20;

char byteOf(unsigned value)
{
    return static_cast<char>(static_cast<unsigned char>(value));
}

template <typename T>
QByteArray littleEndian(T value)
{
    QByteArray bytes(sizeof(T), Qt::Uninitialized);
    qToLittleEndian(value, bytes.data());
    return bytes;
}

} // namespace

int FlightLogWriter::describe(const char* name, const std::vector<Field>& fields)
{
    const int id = ++m_lastId;
    m_groups +=
        QByteArray("  <group><id>") + QByteArray::number(id) + "</id><name>" + name + "</name>\n";
    for (const Field& field : fields) {
        m_groups += QByteArray("    <var><name>") + field.name + "</name><type>" + field.type +
                    "</type><nb>" + QByteArray::number(field.count) + "</nb></var>\n";
    }
    m_groups += "  </group>\n";
    return id;
}

bool FlightLogWriter::begin()
{
    m_ok = m_file.open(QIODevice::WriteOnly);
    m_buffer = "<?xml version=\"1.0\"?>\n<main><log_version>1</log_version><groups>\n" + m_groups +
               "</groups></main>\n";
    return m_ok;
}

void FlightLogWriter::write(int id, const QByteArray& payload)
{
    const auto length = static_cast<unsigned>(payload.size());
    m_buffer += byteOf(0x86);
    m_buffer += byteOf(0x37);
    m_buffer += byteOf(static_cast<unsigned>(id));
    m_buffer += byteOf(length >> 8);
    m_buffer += byteOf(length);
    m_buffer += payload;
    unsigned sum = std::accumulate(payload.begin(), payload.end(), 0U, [](unsigned a, char byte) {
        return a + static_cast<unsigned char>(byte);
    });
    ++m_packets;
    if (m_spoilEvery > 0 && m_packets % m_spoilEvery == 0)
        sum += 1;
    m_buffer += byteOf(sum);
    if (m_buffer.size() >= bufferBytes)
        flush();
}

void FlightLogWriter::flush()
{
    m_ok = m_ok && m_file.write(m_buffer) == m_buffer.size();
    m_written += m_buffer.size();
    m_buffer.clear();
}

bool FlightLogWriter::finish(int cutTailBytes)
{
    flush();
    m_ok = m_ok && m_file.flush();
    if (cutTailBytes > 0)
        m_ok = m_ok && m_file.resize(std::max<qint64>(0, m_written - cutTailBytes));
    m_file.close();
    return m_ok;
}

Payload& Payload::u8(quint8 value)
{
    m_bytes += byteOf(value);
    return *this;
}

Payload& Payload::u32(quint32 value)
{
    m_bytes += littleEndian(value);
    return *this;
}

Payload& Payload::f32(float value)
{
    m_bytes += littleEndian(value);
    return *this;
}

Payload& Payload::text(const QByteArray& value, int length)
{
    m_bytes += value.leftJustified(length, '\0', true);
    return *this;
}

Payload& Payload::bytes(const QByteArray& value)
{
    m_bytes += value;
    return *this;
}

} // namespace corv
