#pragma once

#include <QRandomGenerator>
#include <QString>
#include <QStringList>
#include <memory>
#include <vector>

namespace corv::soak {

/// What all activities work with.
struct Workshop
{
    QString folder;      ///< this run's own, emptied at its start
    QString commandTool; ///< vistrel-cli
    QString ownProgram;  ///< this program, for what it does in a process of its own
    QString project;     ///< a sample flight: its project, its video and its log
    QString video;
    QString log;
};

/// One kind of mishap, again and again. A step is decided by its generator alone, so that it can be
/// repeated by its seed.
class Activity
{
public:
    virtual ~Activity() = default;

    /// A word for the command line, and what the mishap is.
    virtual QString name() const = 0;
    virtual QString title() const = 0;

    /// Makes one mishap and looks at what it left. Empty if all is as it must be; else what is not.
    virtual QString step(QRandomGenerator& random) = 0;
};

std::unique_ptr<Activity> makeKills(const Workshop& workshop);
std::unique_ptr<Activity> makeFullDisks(const Workshop& workshop);
std::unique_ptr<Activity> makeVanishingCards(const Workshop& workshop);
std::unique_ptr<Activity> makeBrokenDownloads(const Workshop& workshop);

/// What this program does in a process of its own, which may be killed: saves projects into a
/// folder without end, or looks for an update at an address.
int saveWithoutEnd(const QString& folder);
int lookForUpdate(const QString& address);

} // namespace corv::soak
