#pragma once

#include <QLocale>
#include <QString>
#include <QTime>

namespace corv {

/// Milliseconds of a position from the start of the video; 0 for an invalid time.
inline int msOfTime(QTime time)
{
    return QTime(0, 0, 0, 0).msecsTo(time);
}

/// The position `ms` milliseconds from the start of the video, modulo a day: -1 is the last
/// millisecond before midnight.
inline QTime timeOfMs(int ms)
{
    constexpr int msPerDay = 24 * 60 * 60 * 1000;
    const int rest = ms % msPerDay;
    return QTime::fromMSecsSinceStartOfDay(rest < 0 ? rest + msPerDay : rest);
}

/// A position as it is shown: minutes, seconds and milliseconds, in the digits 0 to 9 whatever the
/// locale.
inline QString textOfTime(QTime time)
{
    return QLocale::c().toString(time, QStringLiteral("mm:ss.zzz"));
}

} // namespace corv
