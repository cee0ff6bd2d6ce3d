#pragma once

#include "Log/FileWindow.h"
#include "Log/LogDescription.h"
#include "Log/LogFile.h"
#include "Log/RowWriter.h"

#include <array>
#include <memory>

namespace corv {

/// The writers of the groups of one log, by the ids of their packets. The values of payloads are
/// written to the blocks of the groups; payloads are gathered while the window holds them. One
/// thread.
class RowWriters
{
public:
    /// The window outlives the writers.
    explicit RowWriters(const FileWindow* window) : m_window(*window) {}

    /// Stores the payloads of this group from now on, in place of an earlier one of the same id.
    void addGroup(LogGroup* group, const DescribedGroup& described)
    {
        m_writers[static_cast<size_t>(group->getId())] =
            std::make_unique<RowWriter>(group, described);
    }

    /// The writer of the group with this id; null if the group is not stored.
    const RowWriter* of(size_t id) const { return m_writers[id].get(); }

    /// Takes a payload of a stored group. Its bytes stay in the window until `flush`.
    void add(unsigned id, const unsigned char* bytes, int size)
    {
        m_writers[id]->add(m_window.begin(), static_cast<quint32>(bytes - m_window.begin()), size);
    }

    /// The checksum of the last payload of the group is read: a bad one is overwritten by the next.
    void checksum(unsigned id, bool good)
    {
        if (!good)
            m_writers[id]->rejectLast();
    }

    /// Writes what has been gathered; the window may move then.
    void flush()
    {
        for (const auto& writer : m_writers) {
            if (writer)
                writer->flush(m_window.begin());
        }
    }

private:
    const FileWindow& m_window;
    std::array<std::unique_ptr<RowWriter>, 256> m_writers;
};

} // namespace corv
