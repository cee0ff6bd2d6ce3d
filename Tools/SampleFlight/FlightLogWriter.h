#pragma once

#include <QByteArray>
#include <QFile>
#include <vector>

namespace corv {

/// Writes a flight log as a drone does: a description of its record types, then framed packets.
class FlightLogWriter
{
public:
    struct Field
    {
        const char* name;
        const char* type; ///< a type word of the log format
        int count;
    };

    explicit FlightLogWriter(const QString& path) : m_file(path) {}

    /// Names a record type; the answer is its packet id. All of them before `begin`.
    int describe(const char* name, const std::vector<Field>& fields);

    /// Spoils the checksum of every Nth packet from here on; 0 for none.
    void spoilEvery(int packets) { m_spoilEvery = packets; }

    /// Opens the file and writes the description; false if it cannot be written.
    bool begin();

    /// Appends a packet.
    void write(int id, const QByteArray& payload);

    /// Bytes so far.
    qint64 size() const { return m_written + m_buffer.size(); }

    /// Writes what is left, without the last `cutTailBytes` of the file; false if anything could
    /// not be written.
    bool finish(int cutTailBytes);

private:
    void flush();

    QFile m_file;
    QByteArray m_groups;
    QByteArray m_buffer;
    qint64 m_written = 0;
    qint64 m_packets = 0;
    int m_lastId = 0;
    int m_spoilEvery = 0;
    bool m_ok = true;
};

/// The bytes of a packet's payload, one value after the other, little-endian.
class Payload
{
public:
    Payload& u8(quint8 value);
    Payload& u32(quint32 value);
    Payload& f32(float value);
    Payload& text(const QByteArray& value, int length);
    Payload& bytes(const QByteArray& value);

    operator const QByteArray&() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

} // namespace corv
