#pragma once

#include "Base/Result.h"
#include "Log/LogDecoder.h"
#include "Log/LogDescription.h"
#include "Log/PacketScan.h"

#include <QElapsedTimer>
#include <QFile>
#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace corv {

/// A log file opened for reading its packets: what its description says, and where they begin.
struct LogOpening
{
    QString path;
    std::unique_ptr<QFile> file; ///< open, unbuffered
    QElapsedTimer timer;         ///< since the description was begun
    int version = 0;
    std::unique_ptr<LogFile> log; ///< the described groups and vars, without rows
    std::vector<DescribedGroup> described;
    PacketFraming framing; ///< the packets that the description knows
    qint64 beginByte = 0;  ///< of the packet stream
    qint64 endByte = 0;    ///< the file's length when the description had been read

    /// Calls `visit(LogGroup&, const DescribedGroup&)` for each group that packets can reach: they
    /// carry one byte of id, and of several groups with one id the first gets them.
    template <typename Visit>
    void forEachReachable(const Visit& visit)
    {
        for (size_t i = 0; i < described.size(); ++i) {
            LogGroup& group = log->getGroups()[i];
            if (described[i].group == i && group.getId() >= 0 && group.getId() <= 0xff)
                visit(group, described[i]);
        }
    }

    void logElapsed() const;
};

/// Opens a log and reads its description. Diagnostics go to the log, `progress` is called once,
/// with stage 0. Throws `std::bad_alloc` where the description does not fit in memory.
Result<LogOpening> openLog(const QString& path,
                           const std::function<void(int stage, int done, int total)>& progress,
                           const std::atomic<bool>& abortFlag,
                           LogMessages messages = LogMessages::steps);

/// Gives a described field of `group` its block, for the group's number of packets. `dense` as in
/// `ZeroedBlock::allocate`. Failures are also said in the diagnostics.
Status allocateVar(const QString& path, LogGroup* group, const DescribedVar& item, bool dense);

/// What ended a scan of the packets early, also said in the diagnostics; success if nothing did.
Status scanStatus(const QString& path, const FileWindow& window, bool scannedWhole);

/// Logs that a log has more packets of one kind than can be numbered, and gives the reason.
Failure tooManyPackets(const QString& path);

/// Logs that a reading was stopped, and gives the reason.
Failure abortedLog(const QString& path);

} // namespace corv
