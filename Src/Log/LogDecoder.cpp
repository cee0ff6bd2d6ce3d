#include "Log/LogDecoder.h"

#include "Log/LogDescription.h"
#include "Log/PacketScan.h"
#include "Log/RowWriter.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

namespace corv {
namespace {

constexpr qint64 kProgressEvery = 1000;

int clampToInt(qint64 value)
{
    return static_cast<int>(std::min<qint64>(value, std::numeric_limits<int>::max()));
}

void logElapsed(const QElapsedTimer& timer)
{
    qInfo() << "Elapsed time: " << static_cast<double>(timer.elapsed()) / 1000.0 << "s.";
}

void logUnreadable()
{
    qInfo() << "ERROR: Unable to read file.\n";
}

void logAborted()
{
    qInfo() << "Aborted.";
}

void logSummary(const LogDecodeCounters& counters)
{
    const auto total = static_cast<double>(counters.total);
    const auto ratio = [total](qint64 count) { return static_cast<double>(count) / total; };
    qInfo() << counters.total << " total packets counted, including:";
    qInfo() << counters.valid << " valid packets counted (" << ratio(counters.valid) << "%)";
    qInfo() << counters.wrongCrc << " packets had a wrong CRC (" << ratio(counters.wrongCrc)
            << "%)";
    qInfo() << counters.wrongSize << " packets had a wrong size (" << ratio(counters.wrongSize)
            << "%)";
    qInfo() << counters.wrongId << " packets had a wrong id (" << ratio(counters.wrongId) << "%)";
    if (counters.incompleteLast)
        qInfo() << "Oh, and the last packet is incomplete,"
                << "so it was dropped.";
}

// Pass one: how many good packets there are of each id, and what is wrong with the others.
class PacketCounter
{
public:
    static constexpr bool kEmptyTakesByte = true;

    explicit PacketCounter(const std::atomic<bool>* abortFlag) : m_abortFlag(*abortFlag) {}

    bool proceed() const { return !m_abortFlag.load(std::memory_order_relaxed); }
    void windowMoves() {}
    void wrongId() { ++m_wrongId; }
    void begins(unsigned id)
    {
        ++m_total;
        ++m_packets[id];
    }
    void wrongSize(unsigned id)
    {
        ++m_wrongSize;
        --m_packets[id];
    }
    bool payload(unsigned, const unsigned char*, int) { return true; }
    void checksum(unsigned id, bool good)
    {
        m_wrongCrc += good ? 0 : 1;
        m_packets[id] -= good ? 0 : 1;
    }
    void incomplete(unsigned id)
    {
        m_incompleteLast = true;
        --m_packets[id];
    }

    qint64 packets(unsigned id) const { return m_packets[id]; }

    LogDecodeCounters counters() const
    {
        LogDecodeCounters counters;
        counters.total = m_total;
        // A wrong id lowers the count though it never raised it: so it always was.
        counters.valid =
            m_total - m_wrongCrc - m_wrongSize - m_wrongId - (m_incompleteLast ? 1 : 0);
        counters.wrongCrc = m_wrongCrc;
        counters.wrongSize = m_wrongSize;
        counters.wrongId = m_wrongId;
        counters.incompleteLast = m_incompleteLast;
        return counters;
    }

private:
    const std::atomic<bool>& m_abortFlag;
    std::array<qint64, 256> m_packets{};
    qint64 m_total = 0;
    qint64 m_wrongCrc = 0;
    qint64 m_wrongSize = 0;
    qint64 m_wrongId = 0;
    bool m_incompleteLast = false;
};

// Pass two: the values of each packet go to the blocks of its group.
class PacketStore
{
public:
    static constexpr bool kEmptyTakesByte = false;

    PacketStore(const FileWindow* window, const std::atomic<bool>* abortFlag,
                const LogDecoder::Progress& progress, qint64 total)
        : m_window(*window), m_abortFlag(*abortFlag), m_progress(progress), m_total(total)
    {
    }

    void addGroup(LogGroup* group, const DescribedGroup& described)
    {
        const auto id = static_cast<size_t>(group->getId());
        m_groups[id] = group;
        m_writers[id] = std::make_unique<RowWriter>(group, described);
    }

    bool proceed() const { return true; }
    void windowMoves() { flush(); }
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
        m_writers[id]->add(m_window.begin(), static_cast<quint32>(bytes - m_window.begin()), size);
        return true;
    }
    void checksum(unsigned id, bool good)
    {
        if (!good)
            m_writers[id]->rejectLast();
    }
    void incomplete(unsigned) {}

    void finish()
    {
        flush();
        for (size_t id = 0; id < m_writers.size(); ++id) {
            if (m_writers[id])
                m_groups[id]->setNbStored(clampToInt(m_writers[id]->nextRow()));
        }
        reportProgress();
    }

private:
    void flush()
    {
        for (const auto& writer : m_writers) {
            if (writer)
                writer->flush(m_window.begin());
        }
    }

    void reportProgress() const { m_progress(2, clampToInt(m_done), clampToInt(m_total)); }

    const FileWindow& m_window;
    const std::atomic<bool>& m_abortFlag;
    const LogDecoder::Progress& m_progress;
    qint64 m_total;
    qint64 m_done = 0;
    std::array<std::unique_ptr<RowWriter>, 256> m_writers;
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

bool allocateVar(LogGroup* group, const DescribedVar& item, bool dense)
{
    LogVar& var = group->getVars()[item.var];
    if (var.getData() && group->getNbPackets() > 0 &&
        var.getElementSize() != LogVar::typeSize(item.type)) {
        qWarning() << "ERROR: log field declared twice with elements of different sizes:"
                   << group->getName().c_str() << var.getName().c_str();
        return false;
    }
    if (!var.allocate(item.nb, group->getNbPackets(), item.type, dense)) {
        qWarning() << "ERROR: log field too large, 2 GiB or more or no memory left:"
                   << group->getName().c_str() << var.getName().c_str() << "with" << item.nb
                   << "elements in each of" << group->getNbPackets() << "packets";
        return false;
    }
    return true;
}

bool allocateBlocks(LogFile* log, const std::vector<DescribedGroup>& described)
{
    for (const DescribedGroup& element : described) {
        LogGroup& group = log->getGroups()[element.group];
        const bool dense = holdsAllItsFields(group, element);
        for (const DescribedVar& item : element.vars) {
            if (!allocateVar(&group, item, dense))
                return false;
        }
    }
    return true;
}

// Packets carry one byte of id; of several groups with one id the first gets them.
template <typename Visit>
void forEachReachable(LogFile* log, const std::vector<DescribedGroup>& described,
                      const Visit& visit)
{
    for (size_t i = 0; i < described.size(); ++i) {
        LogGroup& group = log->getGroups()[i];
        if (described[i].group == i && group.getId() >= 0 && group.getId() <= 0xff)
            visit(group, described[i]);
    }
}

} // namespace

// One decode, stage by stage.
class LogDecoder::Run
{
public:
    Run(LogDecoder* decoder, const Progress& progress) : m_decoder(*decoder), m_progress(progress)
    {
    }

    std::unique_ptr<LogFile> decode(const QString& path)
    {
        auto log = std::make_unique<LogFile>();
        m_file.setFileName(path);
        // Anything but a plain file, a device for instance, may have no end.
        if (!QFileInfo(path).isFile() ||
            !m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
            logUnreadable();
            return nullptr;
        }
        log->setFileName(path.toStdString());
        const bool whole = readDescription(log.get()) && countPackets(log.get()) &&
                           allocateBlocks(log.get(), m_described) && summarise() &&
                           storePackets(log.get());
        return whole ? std::move(log) : nullptr;
    }

private:
    bool readDescription(LogFile* log)
    {
        qInfo() << "XML parsing...  ";
        m_timer.start();
        m_streamBegin = LogDescription::findLength(&m_file, m_decoder.m_abortFlag);
        if (m_streamBegin < 0) {
            logUnreadable();
            return false;
        }
        if (isAborted())
            return false;
        LogDescription description;
        bool canRead = false;
        if (const char* fault = description.parse(&m_file, m_streamBegin, &canRead)) {
            qInfo() << "ERROR: log parsing: " << fault;
            return false;
        }
        if (!canRead) {
            logUnreadable();
            return false;
        }
        if (isAborted())
            return false;
        qInfo() << "Parsed.";
        qInfo() << "Retrieving log version...  ";
        m_progress(0, 0, 0);
        if (!description.build(log, m_decoder.m_abortFlag)) {
            logAborted();
            return false;
        }
        m_decoder.m_logVersion = description.version();
        qInfo() << "Retrieved. Log version is version " << m_decoder.m_logVersion << ".";
        logElapsed(m_timer);
        m_described = description.takeGroups();
        noteDeclaredTypes(*log);
        return true;
    }

    void noteDeclaredTypes(const LogFile& log)
    {
        auto& types = m_decoder.m_declaredTypes;
        types.resize(log.getGroups().size());
        for (size_t i = 0; i < types.size(); ++i)
            types[i].assign(log.getGroups()[i].getVars().size(), LogVar::Uint8);
        for (const DescribedGroup& element : m_described) {
            for (const DescribedVar& item : element.vars)
                types[element.group][item.var] = item.type;
        }
    }

    bool countPackets(LogFile* log)
    {
        qInfo() << "Packet counting...  ";
        m_progress(1, 0, 0);
        m_framing.wideSize = m_decoder.m_logVersion >= 1;
        forEachReachable(log, m_described, [this](LogGroup& group, const DescribedGroup&) {
            m_framing.types[static_cast<size_t>(group.getId())] = {true, group.getPacketSize()};
        });
        m_fileBytes = m_file.size();
        FileWindow window(&m_file, m_streamBegin, m_fileBytes);
        PacketCounter counter(m_decoder.m_abortFlag);
        const bool whole = PacketScan<PacketCounter>(&window, m_framing, &counter).run();
        m_decoder.m_counters = counter.counters();
        if (!hasEnded(window, whole))
            return false;
        bool fits = true;
        forEachReachable(log, m_described, [&](LogGroup& group, const DescribedGroup&) {
            const qint64 packets = counter.packets(static_cast<unsigned>(group.getId()));
            fits = fits && packets <= std::numeric_limits<int>::max();
            group.setNbPackets(clampToInt(packets));
        });
        if (!fits)
            qWarning() << "ERROR: log with more packets of one kind than can be numbered";
        return fits;
    }

    // Whether a scan saw the last packet; why not stands in the diagnostics.
    static bool hasEnded(const FileWindow& window, bool scannedWhole)
    {
        if (window.hasFailed())
            logUnreadable();
        else if (!scannedWhole)
            logAborted();
        return scannedWhole && !window.hasFailed();
    }

    bool summarise()
    {
        if (isAborted())
            return false;
        logSummary(m_decoder.m_counters);
        logElapsed(m_timer);
        return true;
    }

    bool storePackets(LogFile* log)
    {
        qInfo() << "Data parsing: ";
        const qint64 total = m_decoder.m_counters.total;
        m_progress(2, 0, clampToInt(total));
        FileWindow window(&m_file, m_streamBegin, m_fileBytes);
        PacketStore store(&window, m_decoder.m_abortFlag, m_progress, total);
        forEachReachable(log, m_described,
                         [&store](LogGroup& group, const DescribedGroup& element) {
                             store.addGroup(&group, element);
                         });
        const bool whole = PacketScan<PacketStore>(&window, m_framing, &store).run();
        if (!hasEnded(window, whole))
            return false;
        store.finish();
        qInfo() << "Done.";
        logElapsed(m_timer);
        return true;
    }

    // Tells of the abort as well.
    bool isAborted() const
    {
        const bool aborted = m_decoder.m_abortFlag->load(std::memory_order_relaxed);
        if (aborted)
            logAborted();
        return aborted;
    }

    LogDecoder& m_decoder;
    const Progress& m_progress;
    QFile m_file;
    QElapsedTimer m_timer;
    qint64 m_streamBegin = 0;
    qint64 m_fileBytes = 0;
    PacketFraming m_framing;
    std::vector<DescribedGroup> m_described;
};

LogFile* LogDecoder::parseLog(const QString& path, const Progress& progress)
{
    m_counters = {};
    m_logVersion = 0;
    m_declaredTypes.clear();
    return Run(this, progress).decode(path).release();
}

int LogDecoder::declaredType(size_t group, size_t var) const
{
    if (group >= m_declaredTypes.size() || var >= m_declaredTypes[group].size())
        return LogVar::Uint8;
    return m_declaredTypes[group][var];
}

} // namespace corv
