#pragma once

#include "Discovery/DirectoryParser.h"
#include "FakeMachine.h"

#include <QByteArray>
#include <QHash>
#include <QSemaphore>
#include <QString>
#include <atomic>

namespace corv::test {

/// The files of a day of flights on a machine of folders, each at the time that a test gives it,
/// and a gate at which a search can be held.
class FlightCards
{
public:
    /// What a parser that searches here is made on. This has to outlive it.
    DirectoryParser::Machine parserMachine();

    QString path(const QString& below) const { return machine.path(below); }

    /// Adds an empty file that counts as a video of 60 s.
    void addVideo(const QString& path, int second);

    /// Adds a log with one recording of that duration, named by the pilot "Line 12", `flight`, 7.
    void addLog(const QString& path, int second, const QByteArray& flight = "Flight",
                int durationMs = 60'000);

    /// Lets a held search go on to its end.
    void release();

    FakeMachine machine;
    QHash<QString, int> seconds;   ///< after the start of the day, by file name
    std::atomic<bool> held{false}; ///< a search stops where it asks for the time of a file
    QSemaphore reached;            ///< released once by each file that is held
    QSemaphore gate;
};

} // namespace corv::test
