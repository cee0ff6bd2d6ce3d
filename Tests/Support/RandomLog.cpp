#include "Support/RandomLog.h"

#include "Support/LogBuilder.h"

#include <array>
#include <vector>

namespace corv::test {
namespace {

const std::array<QByteArray, 10> kWords{"INT32", "UINT32", "INT16",  "UINT16", "INT8",
                                        "UINT8", "FLOAT",  "DOUBLE", "uint32", ""};

struct RandomGroup
{
    int id = 0;
    int sizeBytes = 0;
};

class Maker
{
public:
    Maker(std::mt19937& random, RandomLogKind kind)
        : m_random(random), m_kind(kind), m_log(below(4) == 0 ? 0 : 1)
    {
    }

    QByteArray make()
    {
        const int groups = 1 + below(5);
        for (int i = 0; i < groups; ++i)
            addGroup(i);
        const int packets = below(30) == 0 ? 3000 : below(60);
        for (int i = 0; i < packets; ++i)
            addPacket();
        if (m_kind != RandomLogKind::Whole && below(2))
            m_log.cutTail(below(20));
        return m_log.bytes();
    }

private:
    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    QByteArray noise(int size)
    {
        QByteArray bytes;
        for (int i = 0; i < size; ++i)
            bytes += static_cast<char>(below(6) == 0 ? (below(2) ? 0x86 : 0x37) : below(256));
        return bytes;
    }

    int randomNb()
    {
        if (m_kind == RandomLogKind::Hostile && below(4) == 0) {
            static const std::array<int, 8> kOdd{0,     -1,         -7,          0x40000000,
                                                 70000, 0x7fffffff, -0x7fffffff, 0x20000001};
            return kOdd[static_cast<size_t>(below(kOdd.size()))];
        }
        return below(8) == 0 ? 64 + below(200) : 1 + below(12);
    }

    void addGroup(int index)
    {
        const bool hostile = m_kind == RandomLogKind::Hostile;
        RandomGroup group;
        group.id = hostile && below(4) == 0 ? below(3) * 150 - 20 : index * 7;
        std::vector<LogBuilder::Var> vars;
        quint32 size = 0;
        bool testable = true; // its blocks are small, or too large for anybody
        const int count = hostile ? below(5) : 1 + below(4);
        for (int i = 0; i < count; ++i) {
            const size_t word = static_cast<size_t>(below(kWords.size()));
            static const std::array<quint32, 10> kSizes{4, 4, 2, 2, 1, 1, 4, 8, 1, 1};
            const int nb = randomNb();
            const int name = hostile && below(6) == 0 ? 0 : i;
            vars.push_back({"v" + QByteArray::number(name), kWords[word], nb});
            size += static_cast<quint32>(nb) * kSizes[word];
            const qint64 block = qint64(nb) * kSizes[word];
            testable = testable && (block < qint64(1) << 20 || block >= qint64(1) << 31);
        }
        group.sizeBytes = testable ? static_cast<int>(size) : -1;
        m_log.addGroup("g" + QByteArray::number(index), group.id, vars);
        m_groups.push_back(group);
    }

    void addPacket()
    {
        const RandomGroup& group = m_groups[static_cast<size_t>(below(int(m_groups.size())))];
        if (group.sizeBytes < 0 || group.sizeBytes > 0xffff) {
            m_log.addRaw(noise(below(8)));
            return;
        }
        const QByteArray payload = noise(group.sizeBytes);
        switch (m_kind == RandomLogKind::Whole ? 9 : below(12)) {
        case 0:
            m_log.addPacketWithBadChecksum(group.id, payload);
            break;
        case 1:
            m_log.addPacketWithSize(group.id, group.sizeBytes + below(3) - 1, payload);
            break;
        case 2:
            m_log.addPacket(200 + below(50), payload);
            break;
        case 3:
            m_log.addRaw(noise(below(40)));
            break;
        case 4:
            m_log.addRaw("\x86");
            break;
        default:
            m_log.addPacket(group.id, payload);
        }
    }

    std::mt19937& m_random;
    RandomLogKind m_kind;
    LogBuilder m_log;
    std::vector<RandomGroup> m_groups;
};

} // namespace

QByteArray makeRandomLog(std::mt19937& random, RandomLogKind kind)
{
    return Maker(random, kind).make();
}

} // namespace corv::test
