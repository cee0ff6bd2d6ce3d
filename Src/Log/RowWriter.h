#pragma once

#include "Log/transpose.h"

#include <QtGlobal>
#include <vector>

class LogGroup;

namespace corv {

struct DescribedGroup;

/// Stores the payloads of one record type in the blocks of its vars. Payloads are gathered where
/// they lie and written many at a time, since a block is column-major and a payload is a row.
class RowWriter
{
public:
    /// For a group whose vars have their blocks; both outlive the writer. A var without a block is
    /// passed over.
    RowWriter(LogGroup* group, const DescribedGroup& described);

    /// Takes a payload of `size` bytes, which lies `offset` bytes behind `base`, as the group's
    /// next row. It must lie there until `flush`, which uses the same `base`. What the payload
    /// lacks of the group's packet size counts as zeros. A row that the group has no room for is
    /// dropped.
    void add(const unsigned char* base, quint32 offset, int size);

    /// Takes the last row back: the next payload overwrites it.
    void rejectLast() { --m_nextRow; }

    /// Writes the gathered rows to the blocks.
    void flush(const unsigned char* base);

    /// The row of the next payload.
    qint64 nextRow() const { return m_nextRow; }

private:
    struct Field
    {
        size_t offset = 0; ///< in the payload
        size_t columns = 0;
        int elementSize = 0;
        unsigned char* block = nullptr;
    };

    void write(const RowSource& rows, qint64 firstRow) const;
    void writePadded(const unsigned char* payload, int size);

    std::vector<Field> m_fields;
    std::vector<quint32> m_offsets; ///< of the gathered payloads
    std::vector<unsigned char> m_padded;
    qint64 m_firstRow = 0; ///< of the gathered payloads
    qint64 m_nextRow = 0;
    qint64 m_rows = 0; ///< of each block
    int m_packetSize = 0;
    bool m_fieldsFit = true; ///< all elements to be stored lie whole within a payload
};

} // namespace corv
