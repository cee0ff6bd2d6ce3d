#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

namespace corv::test {

/// Writes flight logs byte by byte: a description, then packets, whole or damaged on purpose.
///
///     LogBuilder log;
///     log.addGroup("mobius_start_rec", 3, {{"mobius_start_rec", "UINT32", 1}});
///     log.addPacket(3, LogBuilder::u32(10'000));
///     log.save(path);
class LogBuilder
{
public:
    struct Var
    {
        QByteArray name;
        QByteArray type; ///< a type word such as "UINT32"; unknown words are written as they are
        int nb = 1;
    };

    /// `version` is the text of log_version; below 1 the size field has one byte, else two.
    explicit LogBuilder(int version = 1) : m_version(version) {}

    LogBuilder& addGroup(const QByteArray& name, int id, const std::vector<Var>& vars);

    /// Replaces the whole description, "</main>" included, by a text of the test's own.
    LogBuilder& setDescription(const QByteArray& xml);

    /// Appends a good packet.
    LogBuilder& addPacket(int id, const QByteArray& payload);
    LogBuilder& addPacketWithBadChecksum(int id, const QByteArray& payload);

    /// Appends a packet whose size field says `size` whatever the payload's length.
    LogBuilder& addPacketWithSize(int id, int size, const QByteArray& payload);

    /// Appends bytes as they are.
    LogBuilder& addRaw(const QByteArray& bytes);

    /// Takes bytes off the end of the packet stream.
    LogBuilder& cutTail(int bytes);

    /// Description, the separator byte, and the packets.
    QByteArray bytes() const;

    /// Writes the file; false if it cannot be written.
    bool save(const QString& path) const;

    static QByteArray u8(unsigned value);
    static QByteArray u16(unsigned value);
    static QByteArray u32(quint32 value);
    static QByteArray f32(float value);
    static QByteArray f64(double value);

    /// A text padded with NUL to `nb` bytes, or cut there.
    static QByteArray text(const QByteArray& value, int nb);

private:
    QByteArray frame(int id, int size, const QByteArray& payload, unsigned checksumError) const;

    int m_version;
    QByteArray m_groups;
    QByteArray m_description;
    QByteArray m_packets;
};

} // namespace corv::test
