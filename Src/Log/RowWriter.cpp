#include "Log/RowWriter.h"

#include "Log/LogDescription.h"
#include "Log/LogFile.h"

#include <algorithm>

namespace corv {
namespace {

// An element that begins within a payload reads this far behind it at most.
constexpr size_t kLongestElement = 8;

// Enough rows to fill whole cache lines of every column, few enough for 256 record types of tiny
// packets to gather theirs in little memory.
constexpr size_t kMostGatheredRows = 4096;

} // namespace

RowWriter::RowWriter(LogGroup* group, const DescribedGroup& described)
    : m_rows(group->getNbPackets()), m_packetSize(group->getPacketSize())
{
    const auto packetSize = static_cast<size_t>(std::max(m_packetSize, 0));
    size_t offset = 0;
    for (const DescribedVar& item : described.vars) {
        LogVar& var = group->getVars()[item.var];
        const auto elementSize = static_cast<size_t>(LogVar::typeSize(item.type));
        if (item.nb < 1)
            continue;
        // A description can promise more than its packets hold: twice the same id, sizes that
        // wrap, negative counts. What lies behind the payload stays zero.
        if (offset >= packetSize)
            break;
        const size_t held = (packetSize - offset + elementSize - 1) / elementSize;
        const auto columns = static_cast<size_t>(std::max(std::min(item.nb, var.getNb()), 0));
        if (var.block())
            m_fields.push_back(
                {offset, std::min(columns, held), var.getElementSize(), var.block()});
        offset += elementSize * static_cast<size_t>(item.nb);
        m_fieldsFit = m_fieldsFit && offset <= packetSize;
    }
}

void RowWriter::add(const unsigned char* base, quint32 offset, int size)
{
    const qint64 row = m_nextRow++;
    if (row >= m_rows || m_fields.empty())
        return;
    if (m_offsets.size() == kMostGatheredRows)
        flush(base);
    if (!m_fieldsFit || size < m_packetSize) {
        flush(base);
        writePadded(base + offset, size);
        return;
    }
    if (m_offsets.empty())
        m_firstRow = row;
    // After a rejected row the next payload takes its place.
    m_offsets.resize(static_cast<size_t>(row - m_firstRow));
    m_offsets.push_back(offset);
}

void RowWriter::flush(const unsigned char* base)
{
    if (m_offsets.empty())
        return;
    write({base, m_offsets.data(), m_offsets.size()}, m_firstRow);
    m_offsets.clear();
}

void RowWriter::write(const RowSource& rows, qint64 firstRow) const
{
    for (const Field& field : m_fields) {
        const auto elementSize = static_cast<size_t>(field.elementSize);
        const RowSource from{rows.base + field.offset, rows.offsets, rows.rows};
        transposeRows(from, field.elementSize, field.columns,
                      field.block + static_cast<size_t>(firstRow) * elementSize,
                      static_cast<size_t>(m_rows) * elementSize);
    }
}

void RowWriter::writePadded(const unsigned char* payload, int size)
{
    m_padded.assign(static_cast<size_t>(m_packetSize) + kLongestElement, 0);
    std::copy(payload, payload + size, m_padded.begin());
    const quint32 offset = 0;
    write({m_padded.data(), &offset, 1}, m_nextRow - 1);
}

} // namespace corv
