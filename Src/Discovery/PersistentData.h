#pragma once

#include "Discovery/FlightMatchData.h"

#include <QList>
#include <QObject>

namespace corv {

/// Keeps the last search result while the windows that use it come and go. In memory only, for as
/// long as the process runs. Interface thread.
class PersistentData : public QObject
{
    Q_OBJECT

public:
    /// The one object of the process, made on first use and never deleted.
    static PersistentData* instance();

    QList<FlightMatchData> getDirectoryList() const;
    void setDirectoryList(QList<FlightMatchData> list);

private:
    PersistentData() = default;

    QList<FlightMatchData> m_directoryList;
};

} // namespace corv
