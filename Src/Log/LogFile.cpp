#include "Log/LogFile.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace {

constexpr int kLongestString = 50;

// Readers take four bytes from the start of an element whatever its size: zeros follow the last
// element.
constexpr size_t kTrailingBytes = sizeof(quint32) - 1;

struct TypeRow
{
    const char* word;
    int size;
};

constexpr std::array<TypeRow, 8> kTypes{{{"INT32", 4},
                                         {"UINT32", 4},
                                         {"INT16", 2},
                                         {"UINT16", 2},
                                         {"INT8", 1},
                                         {"UINT8", 1},
                                         {"FLOAT", 4},
                                         {"DOUBLE", 8}}};

qint64 elementsOf(int nb, int nbPackets)
{
    return nb > 0 && nbPackets > 0 ? qint64(nb) * nbPackets : 0;
}

template <typename Items>
auto firstNamed(Items& items, const std::string& name)
{
    const auto found = std::find_if(items.begin(), items.end(),
                                    [&name](const auto& item) { return item.getName() == name; });
    return found == items.end() ? nullptr : &*found;
}

} // namespace

unsigned char* LogVar::element(int column, int row) const
{
    if (!m_block.data() || column < 0 || column >= m_nb || row < 0 || row >= m_nbPackets)
        return nullptr;
    const size_t index =
        static_cast<size_t>(m_nbPackets) * static_cast<size_t>(column) + static_cast<size_t>(row);
    return m_block.data() + index * static_cast<size_t>(m_elementSize);
}

void LogVar::getU8(int column, int row, quint8* out) const
{
    if (const unsigned char* from = element(column, row))
        *out = *from;
}

void LogVar::getU32(int column, int row, quint32* out) const
{
    if (const unsigned char* from = element(column, row))
        std::memcpy(out, from, sizeof(*out));
}

void LogVar::getColumn(int column, void** out) const
{
    if (!m_block.data() || column < 0 || column >= m_nb)
        return;
    *out = m_block.data() + static_cast<size_t>(m_elementSize) * static_cast<size_t>(m_nbPackets) *
                                static_cast<size_t>(column);
}

QString LogVar::getString(int row) const
{
    std::array<char, kLongestString> text{};
    const int columns = std::min(m_nb, kLongestString);
    int length = 0;
    while (length < columns) {
        quint8 byte = 0;
        getU8(length, row, &byte);
        if (byte == 0)
            break;
        text[static_cast<size_t>(length++)] = static_cast<char>(byte);
    }
    return QString::fromUtf8(text.data(), length);
}

size_t LogVar::getDataSize() const
{
    if (!m_block.data() || m_nb < 1)
        return 0;
    return static_cast<size_t>(m_elementSize) * static_cast<size_t>(m_nb) *
           static_cast<size_t>(m_nbPackets);
}

void LogVar::declare(int nb, int nbPackets, Type type)
{
    m_type = type;
    m_nb = nb;
    m_nbPackets = nbPackets;
    m_elementSize = typeSize(type);
}

// Block sizes are 32-bit numbers of the format: what does not fit is refused, not wrapped.
bool LogVar::fits(int nb, int nbPackets, Type type)
{
    return elementsOf(nb, nbPackets) <= std::numeric_limits<int>::max() / typeSize(type);
}

bool LogVar::allocate(int nb, int nbPackets, Type type, bool dense)
{
    declare(nb, nbPackets, type);
    const qint64 elements = elementsOf(nb, nbPackets);
    if (!fits(nb, nbPackets, type) ||
        !m_block.allocate(static_cast<size_t>(elements * m_elementSize) + kTrailingBytes, dense)) {
        m_block = {};
        return false;
    }
    return true;
}

template <typename T>
void LogVar::set(int column, int row, T value)
{
    if (static_cast<int>(sizeof(T)) > m_elementSize)
        return; // it would run into the next element
    if (unsigned char* to = element(column, row))
        std::memcpy(to, &value, sizeof(T));
}

void LogVar::setU8(int column, int row, quint8 value)
{
    set(column, row, value);
}

void LogVar::setU16(int column, int row, quint16 value)
{
    set(column, row, value);
}

void LogVar::setU32(int column, int row, quint32 value)
{
    set(column, row, value);
}

void LogVar::setFloat(int column, int row, float value)
{
    set(column, row, value);
}

void LogVar::setDouble(int column, int row, double value)
{
    set(column, row, value);
}

LogVar::Type LogVar::typeFromName(const std::string& name)
{
    for (size_t type = 0; type < kTypes.size(); ++type) {
        if (name == kTypes[type].word)
            return static_cast<Type>(type);
    }
    return Uint8;
}

const char* LogVar::typeName(Type type)
{
    return kTypes[static_cast<size_t>(type)].word;
}

int LogVar::typeSize(int type)
{
    return type >= 0 && static_cast<size_t>(type) < kTypes.size()
               ? kTypes[static_cast<size_t>(type)].size
               : 1;
}

LogVar* LogGroup::getVar(const std::string& name)
{
    return firstNamed(m_vars, name);
}

const LogVar* LogGroup::getVar(const std::string& name) const
{
    return firstNamed(m_vars, name);
}

LogGroup* LogFile::getGroup(const std::string& name)
{
    return firstNamed(m_groups, name);
}

const LogGroup* LogFile::getGroup(const std::string& name) const
{
    return firstNamed(m_groups, name);
}

LogGroup* LogFile::getGroup(int id)
{
    const auto found = std::find_if(m_groups.begin(), m_groups.end(),
                                    [id](const LogGroup& group) { return group.getId() == id; });
    return found == m_groups.end() ? nullptr : &*found;
}
