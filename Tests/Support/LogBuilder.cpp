#include "Support/LogBuilder.h"

#include <QFile>
#include <cstring>

namespace corv::test {
namespace {

template <typename T>
QByteArray littleEndian(T value)
{
    QByteArray bytes(sizeof(T), Qt::Uninitialized);
    std::memcpy(bytes.data(), &value, sizeof(T));
    return bytes;
}

} // namespace

LogBuilder& LogBuilder::addGroup(const QByteArray& name, int id, const std::vector<Var>& vars)
{
    m_groups += "<group><id>" + QByteArray::number(id) + "</id><name>" + name + "</name>";
    for (const Var& var : vars) {
        m_groups += "<var><name>" + var.name + "</name><type>" + var.type + "</type><nb>" +
                    QByteArray::number(var.nb) + "</nb></var>";
    }
    m_groups += "</group>\n";
    return *this;
}

LogBuilder& LogBuilder::setDescription(const QByteArray& xml)
{
    m_description = xml;
    return *this;
}

QByteArray LogBuilder::frame(int id, int size, const QByteArray& payload,
                             unsigned checksumError) const
{
    QByteArray bytes("\x86\x37", 2);
    bytes += static_cast<char>(id);
    if (m_version >= 1)
        bytes += static_cast<char>(size >> 8);
    bytes += static_cast<char>(size);
    bytes += payload;
    unsigned sum = checksumError;
    for (const char byte : payload)
        sum += static_cast<unsigned char>(byte);
    bytes += static_cast<char>(sum);
    return bytes;
}

LogBuilder& LogBuilder::addPacket(int id, const QByteArray& payload)
{
    m_packets += frame(id, static_cast<int>(payload.size()), payload, 0);
    return *this;
}

LogBuilder& LogBuilder::addPacketWithBadChecksum(int id, const QByteArray& payload)
{
    m_packets += frame(id, static_cast<int>(payload.size()), payload, 1);
    return *this;
}

LogBuilder& LogBuilder::addPacketWithSize(int id, int size, const QByteArray& payload)
{
    m_packets += frame(id, size, payload, 0);
    return *this;
}

LogBuilder& LogBuilder::addRaw(const QByteArray& bytes)
{
    m_packets += bytes;
    return *this;
}

LogBuilder& LogBuilder::cutTail(int bytes)
{
    m_packets.chop(bytes);
    return *this;
}

QByteArray LogBuilder::bytes() const
{
    QByteArray description = m_description;
    if (description.isEmpty()) {
        description = "<?xml version=\"1.0\"?>\n<main><log_version>" +
                      QByteArray::number(m_version) + "</log_version><groups>\n" + m_groups +
                      "</groups></main>";
    }
    return description + '\n' + m_packets;
}

bool LogBuilder::save(const QString& path) const
{
    QFile file(path);
    const QByteArray all = bytes();
    return file.open(QIODevice::WriteOnly) && file.write(all) == all.size();
}

QByteArray LogBuilder::u8(unsigned value)
{
    return QByteArray(1, static_cast<char>(value));
}

QByteArray LogBuilder::u16(unsigned value)
{
    return littleEndian(static_cast<quint16>(value));
}

QByteArray LogBuilder::u32(quint32 value)
{
    return littleEndian(value);
}

QByteArray LogBuilder::f32(float value)
{
    return littleEndian(value);
}

QByteArray LogBuilder::f64(double value)
{
    return littleEndian(value);
}

QByteArray LogBuilder::text(const QByteArray& value, int nb)
{
    return value.leftJustified(nb, '\0', true);
}

} // namespace corv::test
