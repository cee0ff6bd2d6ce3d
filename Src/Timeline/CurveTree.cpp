#include "Timeline/CurveTree.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace corv {
namespace {

// Rows of a leaf: few enough to look at them all, enough to keep the tree far smaller than the log.
constexpr int kBlockRows = 8;

template <typename T>
float read(const unsigned char* rows, int row)
{
    T value;
    std::memcpy(&value, rows + static_cast<size_t>(row) * sizeof(T), sizeof(T));
    return static_cast<float>(value);
}

template <typename T>
ValueRange rangeOf(const unsigned char* rows, int first, int last)
{
    ValueRange range;
    for (int row = first; row < last; ++row) {
        const float value = read<T>(rows, row);
        if (std::isfinite(value))
            range.include({value, value});
    }
    return range;
}

} // namespace

CurveTree::CurveTree(const LogVar& var, int column) : m_type(var.getType())
{
    void* rows = nullptr;
    var.getColumn(column, &rows);
    m_rows = static_cast<const unsigned char*>(rows);
    m_count = rows ? var.getNbPackets() : 0;
    m_blocks = (m_count + kBlockRows - 1) / kBlockRows;
    m_nodes.resize(2 * static_cast<size_t>(m_blocks));
    for (int block = 0; block < m_blocks; ++block) {
        const int first = block * kBlockRows;
        m_nodes[static_cast<size_t>(m_blocks + block)] =
            rangeOfRows(first, std::min(first + kBlockRows, m_count));
    }
    for (size_t node = static_cast<size_t>(m_blocks); node-- > 1;) {
        m_nodes[node] = m_nodes[2 * node];
        m_nodes[node].include(m_nodes[2 * node + 1]);
    }
}

float CurveTree::valueAt(int row) const
{
    switch (m_type) {
    case LogVar::Int32:
        return read<qint32>(m_rows, row);
    case LogVar::Uint32:
        return read<quint32>(m_rows, row);
    case LogVar::Int16:
        return read<qint16>(m_rows, row);
    case LogVar::Uint16:
        return read<quint16>(m_rows, row);
    case LogVar::Int8:
        return read<qint8>(m_rows, row);
    case LogVar::Float:
        return read<float>(m_rows, row);
    case LogVar::Double:
        return read<double>(m_rows, row);
    default:
        return read<quint8>(m_rows, row);
    }
}

ValueRange CurveTree::rangeOfRows(int first, int last) const
{
    switch (m_type) {
    case LogVar::Int32:
        return rangeOf<qint32>(m_rows, first, last);
    case LogVar::Uint32:
        return rangeOf<quint32>(m_rows, first, last);
    case LogVar::Int16:
        return rangeOf<qint16>(m_rows, first, last);
    case LogVar::Uint16:
        return rangeOf<quint16>(m_rows, first, last);
    case LogVar::Int8:
        return rangeOf<qint8>(m_rows, first, last);
    case LogVar::Float:
        return rangeOf<float>(m_rows, first, last);
    case LogVar::Double:
        return rangeOf<double>(m_rows, first, last);
    default:
        return rangeOf<quint8>(m_rows, first, last);
    }
}

ValueRange CurveTree::range(int first, int last) const
{
    first = std::max(first, 0);
    last = std::min(last, m_count);
    const int firstBlock = (first + kBlockRows - 1) / kBlockRows;
    const int lastBlock = last / kBlockRows;
    if (firstBlock >= lastBlock)
        return rangeOfRows(first, last);
    ValueRange range = rangeOfRows(first, firstBlock * kBlockRows);
    range.include(rangeOfRows(lastBlock * kBlockRows, last));
    auto left = static_cast<size_t>(firstBlock + m_blocks);
    auto right = static_cast<size_t>(lastBlock + m_blocks);
    for (; left < right; left /= 2, right /= 2) {
        if (left % 2 == 1)
            range.include(m_nodes[left++]);
        if (right % 2 == 1)
            range.include(m_nodes[--right]);
    }
    return range;
}

} // namespace corv
