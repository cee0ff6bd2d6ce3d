#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

namespace corv::test {

/// A log that no drone would write, or that something has spoilt on its way here.
struct HostileLog
{
    QByteArray name;
    QByteArray bytes;
};

/// A sound log of a flight with everything in it: a recording that fits the video of
/// `FlightMedia`, a naming, points of interest, movements of the drone and thermal pictures.
QByteArray soundLog();

/// Logs with one thing wrong each: cut off, spoilt, described wrongly, or overflowing.
std::vector<HostileLog> hostileLogs();

} // namespace corv::test
