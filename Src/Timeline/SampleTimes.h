#pragma once

#include <QtGlobal>
#include <vector>

namespace corv {

/// The time column of a series of samples, searchable for the sample that is valid at a moment. A
/// view: the column is not copied, and the owner of this object keeps the log alive.
class SampleTimes
{
public:
    /// `times` are `count` milliseconds, at least one; they need not ascend.
    SampleTimes(const qint32* times, int count);

    /// Index of the sample before the first one that is later than `ms`: the last sample at or
    /// before `ms` where times ascend; 0 if all are later. A binary search in any case.
    int indexAt(int ms) const;

    int count() const { return m_count; }

private:
    const qint32* m_times;
    int m_count;

    // Highest time among the samples from the second one up to each; only for times that do not
    // ascend. It ascends always, and the first time above a moment is where it first exceeds it.
    std::vector<qint32> m_highest;
};

} // namespace corv
