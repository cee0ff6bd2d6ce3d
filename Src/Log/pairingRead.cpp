#include "Log/LogDecoder.h"
#include "Log/LogOpening.h"
#include "Log/PacketCounter.h"
#include "Log/RowWriters.h"
#include "Log/logCategory.h"
#include "Log/logFailures.h"

#include <QDebug>
#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <new>

namespace corv {
namespace {

struct NeededField
{
    const char* group;
    const char* var;
};

constexpr std::array<NeededField, 7> kNeeded{{{"mobius_start_rec", "mobius_start_rec"},
                                              {"mobius_stop_rec", "mobius_stop_rec"},
                                              {"mission_info", "time"},
                                              {"mission_info", "mission_name"},
                                              {"mission_info", "flight_name"},
                                              {"mission_info", "flight_number"},
                                              {"lepton_info", "lepton_type"}}};

bool isNeeded(const std::string& group, const std::string& var)
{
    return std::any_of(kNeeded.begin(), kNeeded.end(), [&](const NeededField& field) {
        return group == field.group && var == field.var;
    });
}

// Flights are named and recorded a few times each. A log with more of such payloads is read twice
// and not kept.
constexpr size_t kMostKeptBytes = size_t(8) << 20;

using Progress = LogDecoder::Progress;

// The one pass over a log without empty packets: keeps the payloads of good packets.
class PacketPick
{
public:
    static constexpr bool kEmptyTakesByte = true;

    PacketPick(const FileWindow* window, const std::atomic<bool>* abortFlag,
               std::function<void(qint64)> progress)
        : m_window(*window), m_abortFlag(*abortFlag), m_progress(std::move(progress))
    {
    }

    void want(int id) { m_wanted[static_cast<size_t>(id)] = true; }

    bool proceed() const { return !m_abortFlag.load(std::memory_order_relaxed); }
    bool wants(unsigned id) const { return m_wanted[id]; }
    void windowMoves() { m_progress(m_window.nextByte()); }
    void wrongId() {}
    void begins(unsigned) {}
    void wrongSize(unsigned) {}
    bool payload(unsigned, const unsigned char* bytes, int size)
    {
        m_payload = bytes;
        m_payloadBytes = static_cast<size_t>(size);
        return true;
    }
    void checksum(unsigned id, bool good)
    {
        if (!good)
            return;
        ++m_packets[id];
        const bool keptBefore = keptAll();
        m_keptBytes += m_payloadBytes;
        if (keptAll())
            m_kept[id].insert(m_kept[id].end(), m_payload, m_payload + m_payloadBytes);
        else if (keptBefore)
            m_kept = {};
    }
    void incomplete(unsigned) {}

    bool keptAll() const { return m_keptBytes <= kMostKeptBytes; }
    qint64 packets(int id) const { return m_packets[static_cast<size_t>(id)]; }
    const std::vector<unsigned char>& payloads(int id) const
    {
        return m_kept[static_cast<size_t>(id)];
    }

private:
    const FileWindow& m_window;
    const std::atomic<bool>& m_abortFlag;
    std::function<void(qint64)> m_progress;
    std::array<bool, 256> m_wanted{};
    std::array<qint64, 256> m_packets{};
    std::array<std::vector<unsigned char>, 256> m_kept;
    const unsigned char* m_payload = nullptr;
    size_t m_payloadBytes = 0;
    size_t m_keptBytes = 0;
};

// The one pass of a survey: counts all packets, picks the needed ones, and looks at every time.
class PacketSurvey
{
public:
    static constexpr bool kEmptyTakesByte = true;

    PacketSurvey(PacketPick* pick, PacketCounter* counter) : m_pick(*pick), m_counter(*counter)
    {
        m_timeOffsets.fill(-1);
    }

    /// The place of the time in the payloads of an id.
    void timesAt(int id, int offset) { m_timeOffsets[static_cast<size_t>(id)] = offset; }

    bool proceed() const { return m_pick.proceed(); }
    static bool wants(unsigned) { return true; }
    void windowMoves() { m_pick.windowMoves(); }
    void wrongId() { m_counter.wrongId(); }
    void begins(unsigned id) { m_counter.begins(id); }
    void wrongSize(unsigned id) { m_counter.wrongSize(id); }
    bool payload(unsigned id, const unsigned char* bytes, int size)
    {
        m_payload = bytes;
        return m_pick.payload(id, bytes, size);
    }
    void checksum(unsigned id, bool good)
    {
        m_counter.checksum(id, good);
        if (m_pick.wants(id))
            m_pick.checksum(id, good);
        if (good && m_timeOffsets[id] >= 0)
            include(m_payload + m_timeOffsets[id]);
    }
    void incomplete(unsigned id) { m_counter.incomplete(id); }

    std::optional<LogTimeSpan> span() const
    {
        return m_startMs <= m_endMs ? std::optional(LogTimeSpan{m_startMs, m_endMs}) : std::nullopt;
    }

private:
    void include(const unsigned char* bytes)
    {
        quint32 timeMs = 0;
        std::memcpy(&timeMs, bytes, sizeof(timeMs));
        m_startMs = std::min(m_startMs, timeMs);
        m_endMs = std::max(m_endMs, timeMs);
    }

    PacketPick& m_pick;
    PacketCounter& m_counter;
    std::array<int, 256> m_timeOffsets;
    const unsigned char* m_payload = nullptr;
    quint32 m_startMs = std::numeric_limits<quint32>::max();
    quint32 m_endMs = 0;
};

// The second pass over a log that needs one: stores the values as the full decoding does.
class PacketRefill
{
public:
    static constexpr bool kEmptyTakesByte = false;

    PacketRefill(const FileWindow* window, const std::atomic<bool>* abortFlag)
        : m_writers(window), m_abortFlag(*abortFlag)
    {
    }

    void addGroup(LogGroup* group, const DescribedGroup& described)
    {
        m_writers.addGroup(group, described);
    }

    bool proceed() const { return !m_abortFlag.load(std::memory_order_relaxed); }
    bool wants(unsigned id) const { return m_writers.of(id) != nullptr; }
    void windowMoves() { flush(); }
    void wrongId() {}
    void begins(unsigned) {}
    void wrongSize(unsigned) {}
    bool payload(unsigned id, const unsigned char* bytes, int size)
    {
        m_writers.add(id, bytes, size);
        return true;
    }
    void checksum(unsigned id, bool good) { m_writers.checksum(id, good); }
    void incomplete(unsigned) {}
    void flush() { m_writers.flush(); }

private:
    RowWriters m_writers;
    const std::atomic<bool>& m_abortFlag;
};

// What a survey finds beside the needed fields.
struct SurveyCounts
{
    LogDecodeCounters counters;
    std::optional<LogTimeSpan> span;
    LogMessages messages = LogMessages::steps;
    int version = 0;
    bool needsDecoding =
        false; ///< the description is odd: only the full decoding says what it holds
};

// One reduced reading: leaves a log in which only the needed fields have values.
class PairingRead
{
public:
    /// With `survey`, counts all packets too.
    PairingRead(const std::atomic<bool>* abortFlag, const Progress& progress,
                SurveyCounts* survey = nullptr)
        : m_abortFlag(abortFlag), m_progress(progress), m_survey(survey)
    {
    }

    Status read(const QString& path)
    {
        Result<LogOpening> opened = openLog(path, m_progress, *m_abortFlag,
                                            m_survey ? m_survey->messages : LogMessages::steps);
        if (!opened)
            return opened.failure();
        m_opening = std::move(*opened);
        collectNeeded();
        if (m_survey) {
            m_survey->version = m_opening.version;
            m_survey->needsDecoding = !isPlain();
            if (m_survey->needsDecoding)
                return {};
        }
        return readPackets();
    }

    const LogFile* log() const { return m_opening.log.get(); }
    std::unique_ptr<LogFile> takeLog() { return std::move(m_opening.log); }

private:
    void collectNeeded()
    {
        const auto& groups = m_opening.log->getGroups();
        for (const NeededField& field : kNeeded) {
            const LogGroup* group = m_opening.log->getGroup(std::string(field.group));
            const auto index = static_cast<size_t>(group - groups.data());
            if (group && std::find(m_needed.begin(), m_needed.end(), index) == m_needed.end())
                m_needed.push_back(index);
        }
    }

    bool isNeededIndex(size_t index) const
    {
        return std::find(m_needed.begin(), m_needed.end(), index) != m_needed.end();
    }

    template <typename Visit>
    void forEachNeeded(const Visit& visit)
    {
        m_opening.forEachReachable([&](LogGroup& group, const DescribedGroup& described) {
            if (isNeededIndex(described.group))
                visit(group, described);
        });
    }

    Status readPackets()
    {
        m_progress(1, 0, 0);
        const auto kilobytes = [this](qint64 atByte) {
            return static_cast<int>(std::min<qint64>((atByte - m_opening.beginByte) >> 10,
                                                     std::numeric_limits<int>::max()));
        };
        FileWindow window(m_opening.file.get(), m_opening.beginByte, m_opening.endByte,
                          FileWindow::kNarrowBytes);
        PacketPick pick(&window, m_abortFlag, [&](qint64 atByte) {
            m_progress(2, kilobytes(atByte), kilobytes(m_opening.endByte));
        });
        forEachNeeded(
            [&pick](const LogGroup& group, const DescribedGroup&) { pick.want(group.getId()); });
        const bool whole = scan(&window, &pick);
        if (const Status status = scanStatus(m_opening.path, window, whole); !status)
            return status;
        if (const Status status = allocate(pick); !status)
            return status;
        if (pick.keptAll() && !hasEmptyPackets())
            storeKept(pick);
        else if (const Status status = readAgain(); !status)
            return status;
        m_progress(2, kilobytes(m_opening.endByte), kilobytes(m_opening.endByte));
        return {};
    }

    bool scan(FileWindow* window, PacketPick* pick)
    {
        if (!m_survey)
            return PacketScan<PacketPick>(window, m_opening.framing, pick).run();
        PacketCounter counter(m_abortFlag);
        PacketSurvey survey(pick, &counter);
        m_opening.forEachReachable(
            [&survey](const LogGroup& group, const DescribedGroup& described) {
                survey.timesAt(group.getId(), timeOffsetOf(group, described));
            });
        const bool whole = PacketScan<PacketSurvey>(window, m_opening.framing, &survey).run();
        m_survey->counters = counter.counters();
        m_survey->span = survey.span();
        m_opening.forEachReachable([&counter](LogGroup& group, const DescribedGroup&) {
            group.setNbPackets(static_cast<int>(counter.packets(unsigned(group.getId()))));
        });
        for (const DescribedGroup& element : m_opening.described) {
            LogGroup& group = m_opening.log->getGroups()[element.group];
            for (const DescribedVar& item : element.vars)
                group.getVars()[item.var].declare(item.nb, group.getNbPackets(), item.type);
        }
        return whole;
    }

    // Where the time is in a payload; -1 without one of 32 bits.
    static int timeOffsetOf(const LogGroup& group, const DescribedGroup& described)
    {
        int offset = 0;
        for (const DescribedVar& item : described.vars) {
            const bool isWord = item.type == LogVar::Uint32 || item.type == LogVar::Int32;
            if (group.getVars()[item.var].getName() == "time")
                return isWord && item.nb > 0 ? offset : -1;
            offset += item.nb * LogVar::typeSize(item.type);
        }
        return -1;
    }

    // Each id and each field is described once, and packets hold what is described.
    bool isPlain() const
    {
        if (hasEmptyPackets())
            return false;
        for (size_t i = 0; i < m_opening.described.size(); ++i) {
            const DescribedGroup& element = m_opening.described[i];
            qint64 bytes = 0;
            for (size_t k = 0; k < element.vars.size(); ++k) {
                const DescribedVar& item = element.vars[k];
                if (item.var != k || item.nb < 0)
                    return false;
                bytes += qint64(item.nb) * LogVar::typeSize(item.type);
            }
            if (element.group != i || bytes > 0xffff)
                return false;
        }
        return true;
    }

    // Counting and storing see packets without a payload differently, and so all behind them.
    bool hasEmptyPackets() const
    {
        const auto& types = m_opening.framing.types;
        return std::any_of(types.begin(), types.end(), [](const PacketType& type) {
            return type.known && type.sizeBytes == 0;
        });
    }

    Status allocate(const PacketPick& pick)
    {
        bool fits = true;
        forEachNeeded([&](LogGroup& group, const DescribedGroup&) {
            const qint64 packets = pick.packets(group.getId());
            fits = fits && packets <= std::numeric_limits<int>::max();
            group.setNbPackets(fits ? static_cast<int>(packets) : 0);
        });
        if (!fits)
            return tooManyPackets(m_opening.path);
        for (const DescribedGroup& element : m_opening.described) {
            if (!isNeededIndex(element.group))
                continue;
            LogGroup& group = m_opening.log->getGroups()[element.group];
            for (const DescribedVar& item : element.vars) {
                if (!isNeeded(group.getName(), group.getVars()[item.var].getName()))
                    continue;
                if (const Status status = allocateVar(m_opening.path, &group, item, false); !status)
                    return status;
            }
        }
        return {};
    }

    void storeKept(const PacketPick& pick)
    {
        forEachNeeded([&pick](LogGroup& group, const DescribedGroup& described) {
            const std::vector<unsigned char>& payloads = pick.payloads(group.getId());
            RowWriter writer(&group, described);
            const auto size = static_cast<quint32>(group.getPacketSize());
            for (int row = 0; row < group.getNbPackets(); ++row)
                writer.add(payloads.data(), static_cast<quint32>(row) * size,
                           group.getPacketSize());
            writer.flush(payloads.data());
        });
    }

    Status readAgain()
    {
        FileWindow window(m_opening.file.get(), m_opening.beginByte, m_opening.endByte,
                          FileWindow::kNarrowBytes);
        PacketRefill refill(&window, m_abortFlag);
        forEachNeeded([&refill](LogGroup& group, const DescribedGroup& described) {
            refill.addGroup(&group, described);
        });
        const bool whole = PacketScan<PacketRefill>(&window, m_opening.framing, &refill).run();
        if (const Status status = scanStatus(m_opening.path, window, whole); !status)
            return status;
        refill.flush();
        return {};
    }

    const std::atomic<bool>* m_abortFlag;
    const Progress& m_progress;
    SurveyCounts* m_survey;
    LogOpening m_opening;
    std::vector<size_t> m_needed; ///< indices of groups
};

} // namespace

std::optional<LogTimeSpan> timeSpanOf(const LogFile& log)
{
    std::optional<LogTimeSpan> span;
    for (const LogGroup& group : log.getGroups()) {
        const LogColumn<quint32> times = group.column<quint32>("time");
        if (times.empty())
            continue;
        const auto [earliest, latest] = std::minmax_element(times.begin(), times.end());
        span = LogTimeSpan{span ? std::min(span->startMs, *earliest) : *earliest,
                           span ? std::max(span->endMs, *latest) : *latest};
    }
    return span;
}

Result<LogDigest> LogDecoder::readForPairing(const QString& path, const Progress& progress) const
{
    try {
        PairingRead reading(m_abortFlag, progress);
        if (const Status status = reading.read(path); !status)
            return status.failure();
        return digestOf(reading.log());
    } catch (const std::bad_alloc&) {
        qCWarning(lcLog) << "ERROR: no memory left for the log" << path;
        return logNoMemory(path);
    }
}

LogDigest LogDecoder::digestOf(const LogFile* log) const
{
    return {readRecordingEvents(log), readFlightNamingEvents(log), findThermalCameraHwVersion(log),
            log->getGroup("mobius_start_rec") != nullptr};
}

Result<LogSurvey> LogDecoder::survey(const QString& path, const Progress& progress,
                                     LogMessages messages)
{
    m_counters = {};
    m_logVersion = 0;
    LogSurvey survey;
    try {
        SurveyCounts counts;
        counts.messages = messages;
        PairingRead reading(m_abortFlag, progress, &counts);
        if (const Status status = reading.read(path); !status)
            return status.failure();
        m_counters = counts.counters;
        m_logVersion = counts.version;
        survey.span = counts.span;
        if (!counts.needsDecoding) {
            if (messages == LogMessages::steps)
                logCounters(m_counters);
            survey.log = reading.takeLog();
        }
    } catch (const std::bad_alloc&) {
        qCWarning(lcLog) << "ERROR: no memory left for the log" << path;
        return logNoMemory(path);
    }
    if (!survey.log) {
        const auto decoded = decode(path, progress);
        if (!decoded)
            return decoded.failure();
        survey.log = *decoded;
        survey.span = timeSpanOf(*survey.log);
    }
    survey.digest = digestOf(survey.log.get());
    return survey;
}

} // namespace corv
