#include "Support/ReferenceDecoder.h"

#include <QXmlStreamReader>
#include <cstdint>
#include <cstring>

namespace corv::test {
namespace {

struct VarElement
{
    std::string name;
    std::string type;
    int nb = 0;
};

struct GroupElement
{
    int id = 0;
    std::string name;
    std::vector<VarElement> vars;
};

int sizeOf(const std::string& type)
{
    if (type == "DOUBLE")
        return 8;
    if (type == "INT32" || type == "UINT32" || type == "FLOAT")
        return 4;
    return type == "INT16" || type == "UINT16" ? 2 : 1;
}

VarElement readVar(QXmlStreamReader& xml)
{
    VarElement var;
    while (xml.readNextStartElement()) {
        const auto tag = xml.name().toString();
        const std::string text = xml.readElementText().toStdString();
        if (tag == QLatin1String("name"))
            var.name = text;
        else if (tag == QLatin1String("type"))
            var.type = text;
        else if (tag == QLatin1String("nb"))
            var.nb = std::stoi(text);
    }
    return var;
}

GroupElement readGroup(QXmlStreamReader& xml)
{
    GroupElement group;
    while (xml.readNextStartElement()) {
        const auto tag = xml.name().toString();
        if (tag == QLatin1String("var"))
            group.vars.push_back(readVar(xml));
        else if (tag == QLatin1String("id"))
            group.id = std::stoi(xml.readElementText().toStdString());
        else
            group.name = xml.readElementText().toStdString();
    }
    return group;
}

class Reference
{
public:
    explicit Reference(const QByteArray& file) : m_file(file) {}

    ReferenceLog run()
    {
        const auto sizeBytes = static_cast<int>(m_file.size());
        const auto end = static_cast<int>(m_file.indexOf("</main>"));
        const int past = end < 0 ? sizeBytes : std::min(end + 8, sizeBytes);
        if (end < 0 || !readXml(m_file.left(end + 7)))
            return m_log;
        m_log.progress.push_back({0, 0, 0});
        buildGroups();
        m_log.progress.push_back({1, 0, 0});
        scan(past, true);
        if (!allot())
            return m_log;
        m_log.progress.push_back({2, 0, static_cast<int>(m_log.total)});
        scan(past, false);
        m_log.progress.push_back({2, m_done, static_cast<int>(m_log.total)});
        m_log.decoded = true;
        return m_log;
    }

private:
    bool readXml(const QByteArray& text)
    {
        QXmlStreamReader xml(text);
        xml.readNextStartElement();
        while (xml.readNextStartElement()) {
            if (xml.name() == QLatin1String("log_version")) {
                m_log.version = xml.readElementText().toInt();
                continue;
            }
            while (xml.readNextStartElement())
                m_elements.push_back(readGroup(xml));
        }
        return !xml.hasError();
    }

    int groupOf(int id) const
    {
        for (size_t i = 0; i < m_log.groups.size(); ++i) {
            if (m_log.groups[i].id == id)
                return static_cast<int>(i);
        }
        return -1;
    }

    static ReferenceLog::Var& varOf(ReferenceLog::Group& group, const std::string& name)
    {
        for (ReferenceLog::Var& var : group.vars) {
            if (var.name == name)
                return var;
        }
        return group.vars.front();
    }

    void buildGroups()
    {
        for (const GroupElement& element : m_elements) {
            m_log.groups.emplace_back();
            m_log.groups.back().id = element.id;
            m_log.groups.back().name = element.name;
            ReferenceLog::Group& group = m_log.groups[static_cast<size_t>(groupOf(element.id))];
            std::uint32_t sum = 0;
            for (const VarElement& var : element.vars) {
                group.vars.emplace_back();
                group.vars.back().name = var.name;
                sum += static_cast<std::uint32_t>(var.nb) *
                       static_cast<std::uint32_t>(sizeOf(var.type));
            }
            group.packetSize = static_cast<int>(sum);
        }
    }

    bool allot()
    {
        for (const GroupElement& element : m_elements) {
            ReferenceLog::Group& group = m_log.groups[static_cast<size_t>(groupOf(element.id))];
            for (const VarElement& item : element.vars) {
                ReferenceLog::Var& var = varOf(group, item.name);
                const int size = sizeOf(item.type);
                if (var.allotted && group.packets > 0 && var.elementSize != size)
                    return false;
                const long long bytes = item.nb > 0 ? 1LL * size * item.nb * group.packets : 0;
                if (bytes >= 1LL << 31)
                    return false;
                var.allotted = true;
                var.nb = item.nb;
                var.elementSize = size;
                var.data.assign(static_cast<size_t>(bytes), 0);
            }
        }
        return true;
    }

    // The seven states, as both passes run them.
    void scan(int from, bool counting)
    {
        int state = 0;
        int group = -1;
        int size = 0;
        int taken = 0;
        unsigned sum = 0;
        for (int at = from; at < m_file.size(); ++at) {
            const int byte = static_cast<unsigned char>(m_file[at]);
            switch (state) {
            case 0:
                state = byte == 0x86 ? 1 : 0;
                break;
            case 1:
                state = byte == 0x37 ? 2 : 0;
                break;
            case 2:
                group = groupOf(byte);
                size = 0;
                state = group < 0 ? 0 : m_log.version < 1 ? 4 : 3;
                if (counting)
                    countId(group);
                break;
            case 3:
                size = byte * 256;
                state = 4;
                break;
            case 4:
                size |= byte;
                sum = 0;
                taken = 0;
                state = size == groupAt(group).packetSize ? 5 : 0;
                if (counting && state == 0)
                    countFailure(group, &m_log.wrongSize);
                break;
            case 5:
                if (counting) {
                    sum += static_cast<unsigned>(byte);
                    state = ++taken >= size ? 6 : 5;
                } else {
                    store(group, at, size, &sum);
                    at += size - 1;
                    state = 6;
                }
                break;
            default:
                if (byte != static_cast<int>(sum & 0xff)) {
                    if (counting)
                        countFailure(group, &m_log.wrongCrc);
                    else
                        --groupAt(group).stored;
                }
                state = 0;
            }
        }
        if (counting && state > 2) {
            m_log.incompleteLast = true;
            --m_log.valid;
            --groupAt(group).packets;
        }
    }

    void countId(int group)
    {
        if (group < 0) {
            ++m_log.wrongId;
            --m_log.valid;
        } else {
            ++m_log.total;
            ++m_log.valid;
            ++groupAt(group).packets;
        }
    }

    void countFailure(int group, long long* counter)
    {
        ++*counter;
        --m_log.valid;
        --groupAt(group).packets;
    }

    void store(int groupIndex, int at, int size, unsigned* sum)
    {
        std::vector<unsigned char> payload(static_cast<size_t>(size), 0);
        for (int i = 0; i < size && at + i < m_file.size(); ++i) {
            payload[static_cast<size_t>(i)] = static_cast<unsigned char>(m_file[at + i]);
            *sum += payload[static_cast<size_t>(i)];
        }
        ++m_done;
        if (m_done % 1000 == 0)
            m_log.progress.push_back({2, m_done, static_cast<int>(m_log.total)});
        ReferenceLog::Group& group = groupAt(groupIndex);
        const int row = group.stored++;
        size_t offset = 0;
        for (const VarElement& item : m_elements[static_cast<size_t>(groupIndex)].vars) {
            ReferenceLog::Var& var = varOf(group, item.name);
            for (int column = 0; column < item.nb && offset < payload.size(); ++column) {
                for (int i = 0; i < var.elementSize; ++i) {
                    const size_t from = offset + static_cast<size_t>(i);
                    const size_t to =
                        static_cast<size_t>(var.elementSize) *
                            (static_cast<size_t>(group.packets) * static_cast<size_t>(column) +
                             static_cast<size_t>(row)) +
                        static_cast<size_t>(i);
                    if (column < var.nb && row < group.packets)
                        var.data[to] = from < payload.size() ? payload[from] : 0;
                }
                offset += static_cast<size_t>(var.elementSize);
            }
        }
    }

    ReferenceLog::Group& groupAt(int group) { return m_log.groups[static_cast<size_t>(group)]; }

    const QByteArray m_file;
    std::vector<GroupElement> m_elements;
    ReferenceLog m_log;
    int m_done = 0;
};

} // namespace

ReferenceLog decodeByReference(const QByteArray& file)
{
    return Reference(file).run();
}

} // namespace corv::test
