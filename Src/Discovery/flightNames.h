#pragma once

#include <QString>
#include <QStringList>
#include <vector>

namespace corv {

/// The name of a file in its parts: "/a/roof 12 (2).mov" is "roof ", the number 12 and the second
/// copy of that name.
struct FlightName
{
    QString folder;
    QString before; ///< of the number; the whole base name if it ends in none
    QString number; ///< empty if the name ends in none
    QString suffix;
    int copy = 0; ///< 0 for the name itself
};

/// The parts of these names. A number in brackets at the end is a copy, as systems add it to files
/// of equal names. So is a short one after a space, a dash or an underscore behind a number of
/// cameras, as in "CORV0012_2.MOV", where most files of its folder that are named like that are
/// next to the name without it. Files between two neighbours in number with the same mark do not
/// count against that: a whole card may be marked. Pure; any thread.
std::vector<FlightName> flightNames(const QStringList& paths);

/// The same names, those of renamed files as they may have been before. A card's files are written
/// in the order of their numbers, by the camera as by a copy. Where the times of a row of files
/// follow its numbers, a file named otherwise gets one of the numbers that the row leaves out at
/// its time; if that is so for any of them, one beyond the row gets the next number there. Files
/// that are a row of their own keep their names, as do those whose time (milliseconds; negative if
/// unknown) fits into no row, or into gaps of several. Pure; any thread.
std::vector<FlightName> formerNames(std::vector<FlightName> names,
                                    const std::vector<qint64>& timesMs);

/// The order of file names as a person reads them: numbers by their value, letters without case.
bool namesInOrder(const QString& a, const QString& b);

/// How many numbers lie between the two, counted up to a million, if both are of the same folder
/// and copy and named alike but for the number at the end; -1 if they are not, or `next` has no
/// higher number.
int numbersBetween(const FlightName& name, const FlightName& next);

/// True if `next` can be the part of a flight that follows `name`: the same folder, the same name
/// but for the number at its end, which is one higher, of the same copy.
bool isNextPart(const FlightName& name, const FlightName& next);

} // namespace corv
