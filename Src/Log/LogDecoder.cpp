#include "Log/LogDecoder.h"

#include "Log/LogOpening.h"
#include "Log/PacketCounter.h"
#include "Log/PacketScan.h"
#include "Log/RowWriters.h"
#include "Log/logCategory.h"
#include "Log/logFailures.h"

#include <QDebug>
#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace corv {

void logCounters(const LogDecodeCounters& counters)
{
    const auto total = static_cast<double>(counters.total);
    const auto ratio = [total](qint64 count) { return static_cast<double>(count) / total; };
    qCInfo(lcLog) << counters.total << " total packets counted, including:";
    qCInfo(lcLog) << counters.valid << " valid packets counted (" << ratio(counters.valid) << "%)";
    qCInfo(lcLog) << counters.wrongCrc << " packets had a wrong CRC (" << ratio(counters.wrongCrc)
                  << "%)";
    qCInfo(lcLog) << counters.wrongSize << " packets had a wrong size ("
                  << ratio(counters.wrongSize) << "%)";
    qCInfo(lcLog) << counters.wrongId << " packets had a wrong id (" << ratio(counters.wrongId)
                  << "%)";
    if (counters.incompleteLast)
        qCInfo(lcLog) << "Oh, and the last packet is incomplete,"
                      << "so it was dropped.";
}

namespace {

constexpr qint64 kProgressEvery = 1000;

int clampToInt(qint64 value)
{
    return static_cast<int>(std::min<qint64>(value, std::numeric_limits<int>::max()));
}

// Pass two: the values of each packet go to the blocks of its group.
class PacketStore
{
public:
    static constexpr bool kEmptyTakesByte = false;

    PacketStore(const FileWindow* window, const std::atomic<bool>* abortFlag,
                const LogDecoder::Progress& progress, qint64 total)
        : m_writers(window), m_abortFlag(*abortFlag), m_progress(progress), m_total(total)
    {
    }

    void addGroup(LogGroup* group, const DescribedGroup& described)
    {
        m_groups[static_cast<size_t>(group->getId())] = group;
        m_writers.addGroup(group, described);
    }

    bool proceed() const { return true; }
    static bool wants(unsigned) { return true; }
    void windowMoves() { m_writers.flush(); }
    void wrongId() {}
    void begins(unsigned) {}
    void wrongSize(unsigned) {}
    bool payload(unsigned id, const unsigned char* bytes, int size)
    {
        ++m_done;
        if (m_done % kProgressEvery == 0) {
            reportProgress();
            if (m_abortFlag.load(std::memory_order_relaxed))
                return false;
        }
        m_writers.add(id, bytes, size);
        return true;
    }
    void checksum(unsigned id, bool good) { m_writers.checksum(id, good); }
    void incomplete(unsigned) {}

    void finish()
    {
        m_writers.flush();
        for (size_t id = 0; id < m_groups.size(); ++id) {
            if (m_groups[id])
                m_groups[id]->setNbStored(clampToInt(m_writers.of(id)->nextRow()));
        }
        reportProgress();
    }

private:
    void reportProgress() const { m_progress(2, clampToInt(m_done), clampToInt(m_total)); }

    RowWriters m_writers;
    const std::atomic<bool>& m_abortFlag;
    const LogDecoder::Progress& m_progress;
    qint64 m_total;
    qint64 m_done = 0;
    std::array<LogGroup*, 256> m_groups{};
};

// Large pages pay only where nearly every byte will be written: not for fields that the packets do
// not hold.
bool holdsAllItsFields(const LogGroup& group, const DescribedGroup& described)
{
    qint64 bytes = 0;
    for (const DescribedVar& item : described.vars)
        bytes += qint64(std::max(item.nb, 0)) * LogVar::typeSize(item.type);
    return bytes == group.getPacketSize();
}

Status allocateBlocks(LogOpening* opening)
{
    for (const DescribedGroup& element : opening->described) {
        LogGroup& group = opening->log->getGroups()[element.group];
        const bool dense = holdsAllItsFields(group, element);
        for (const DescribedVar& item : element.vars) {
            if (const Status status = allocateVar(opening->path, &group, item, dense); !status)
                return status;
        }
    }
    return {};
}

} // namespace

// One decode, stage by stage.
class LogDecoder::Run
{
public:
    Run(LogDecoder* decoder, const Progress& progress) : m_decoder(*decoder), m_progress(progress)
    {
    }

    Result<std::unique_ptr<LogFile>> decode(const QString& path)
    {
        Result<LogOpening> opened = openLog(path, m_progress, *m_decoder.m_abortFlag);
        if (!opened)
            return opened.failure();
        m_opening = std::move(*opened);
        m_decoder.m_logVersion = m_opening.version;
        for (const auto stage : {&Run::countPackets, &Run::allocate, &Run::storePackets}) {
            if (const Status status = (this->*stage)(); !status)
                return status.failure();
        }
        return std::move(m_opening.log);
    }

private:
    Status countPackets()
    {
        qCInfo(lcLog) << "Packet counting...  ";
        m_progress(1, 0, 0);
        FileWindow window(m_opening.file.get(), m_opening.beginByte, m_opening.endByte,
                          FileWindow::kNarrowBytes);
        PacketCounter counter(m_decoder.m_abortFlag);
        const bool whole = PacketScan<PacketCounter>(&window, m_opening.framing, &counter).run();
        m_decoder.m_counters = counter.counters();
        if (const Status status = scanStatus(m_opening.path, window, whole); !status)
            return status;
        bool fits = true;
        m_opening.forEachReachable([&](LogGroup& group, const DescribedGroup&) {
            const qint64 packets = counter.packets(static_cast<unsigned>(group.getId()));
            fits = fits && packets <= std::numeric_limits<int>::max();
            group.setNbPackets(clampToInt(packets));
        });
        if (!fits)
            return tooManyPackets(m_opening.path);
        return {};
    }

    Status allocate()
    {
        if (const Status status = allocateBlocks(&m_opening); !status)
            return status;
        if (m_decoder.m_abortFlag->load(std::memory_order_relaxed))
            return abortedLog(m_opening.path);
        logCounters(m_decoder.m_counters);
        m_opening.logElapsed();
        return {};
    }

    Status storePackets()
    {
        qCInfo(lcLog) << "Data parsing: ";
        const qint64 total = m_decoder.m_counters.total;
        m_progress(2, 0, clampToInt(total));
        FileWindow window(m_opening.file.get(), m_opening.beginByte, m_opening.endByte,
                          FileWindow::kWideBytes);
        PacketStore store(&window, m_decoder.m_abortFlag, m_progress, total);
        m_opening.forEachReachable([&store](LogGroup& group, const DescribedGroup& element) {
            store.addGroup(&group, element);
        });
        const bool whole = PacketScan<PacketStore>(&window, m_opening.framing, &store).run();
        if (const Status status = scanStatus(m_opening.path, window, whole); !status)
            return status;
        store.finish();
        qCInfo(lcLog) << "Done.";
        m_opening.logElapsed();
        return {};
    }

    LogDecoder& m_decoder;
    const Progress& m_progress;
    LogOpening m_opening;
};

Result<std::unique_ptr<LogFile>> LogDecoder::read(const QString& path, const Progress& progress)
{
    m_counters = {};
    m_logVersion = 0;
    try {
        return Run(this, progress).decode(path);
    } catch (const std::bad_alloc&) {
        qCWarning(lcLog) << "ERROR: no memory left for the log" << path;
        return logNoMemory(path);
    }
}

LogFile* LogDecoder::parseLog(const QString& path, const Progress& progress)
{
    Result<std::unique_ptr<LogFile>> log = read(path, progress);
    return log ? log->release() : nullptr;
}

Result<std::shared_ptr<const LogFile>> LogDecoder::decode(const QString& path,
                                                          const Progress& progress)
{
    Result<std::unique_ptr<LogFile>> log = read(path, progress);
    if (!log)
        return log.failure();
    return std::shared_ptr<const LogFile>(std::move(*log));
}

} // namespace corv
