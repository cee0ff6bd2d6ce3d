#include "Discovery/PersistentData.h"

namespace corv {

PersistentData* PersistentData::instance()
{
    static auto* const data = new PersistentData;
    return data;
}

QList<FlightMatchData> PersistentData::getDirectoryList() const
{
    return m_directoryList;
}

void PersistentData::setDirectoryList(QList<FlightMatchData> list)
{
    if (!m_directoryList.isSharedWith(list))
        m_directoryList = list;
}

} // namespace corv
