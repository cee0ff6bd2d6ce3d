#include "Timeline/SampleTimes.h"

#include <algorithm>

namespace corv {

SampleTimes::SampleTimes(const qint32* times, int count) : m_times(times), m_count(count)
{
    if (count <= 2 || std::is_sorted(times + 1, times + count))
        return;
    m_highest.assign(times + 1, times + count);
    for (size_t i = 1; i < m_highest.size(); ++i)
        m_highest[i] = std::max(m_highest[i], m_highest[i - 1]);
}

int SampleTimes::indexAt(int ms) const
{
    if (m_count < 2)
        return m_count - 1;
    const qint32* first = m_highest.empty() ? m_times + 1 : m_highest.data();
    return static_cast<int>(std::upper_bound(first, first + m_count - 1, ms) - first);
}

} // namespace corv
