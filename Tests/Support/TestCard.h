#pragma once

#include <QSize>
#include <QString>

namespace corv::test {

/// A card with short flights of one day, which all have the same names in their logs. Each has a
/// small video and a log of its own, without thermal frames, and a length of its own.
struct TestCard
{
    int flights = 12;
    int shortestSeconds = 8; ///< of the first flight; each is a second longer than the one before
    QSize size{320, 240};    ///< of the pictures

    /// Writes the card into `folder`; false, with a message in the log, if it cannot.
    bool write(const QString& folder) const;

    /// Where the files of a flight are, from 1, in the folder of the card.
    static QString videoFile(int flight);
    static QString logFile(int flight);
};

} // namespace corv::test
