#include "Log/LogDecoder.h"
#include "ScratchFile.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace {

// As readers do: the corners of each block, the columns, the texts.
void readAll(const LogFile& log)
{
    for (const LogGroup& group : log.getGroups()) {
        for (const LogVar& var : group.getVars()) {
            const int lastRow = var.getNbPackets() - 1;
            for (const int column : {-1, 0, std::max(var.getNb(), 1) - 1, var.getNb()}) {
                quint8 byte = 0;
                quint32 word = 0;
                void* rows = nullptr;
                var.getU8(column, lastRow, &byte);
                var.getU32(column, lastRow, &word);
                var.getU32(column, lastRow + 1, &word);
                var.getColumn(column, &rows);
            }
            if (!var.getString(lastRow + 1).isEmpty())
                std::abort();
            var.getString(std::min(0, lastRow));
        }
    }
}

void checkCounters(const corv::LogDecodeCounters& counters)
{
    if (counters.valid != counters.total - counters.wrongCrc - counters.wrongSize -
                              counters.wrongId - (counters.incompleteLast ? 1 : 0))
        std::abort();
}

} // namespace

/// A log of any content decodes or is refused, and can be asked everything afterwards.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static corv::fuzz::ScratchFile file(QStringLiteral("a.log"));
    const std::atomic<bool> abortFlag{false};
    corv::LogDecoder decoder(&abortFlag);
    const QString path = file.hold(data, size);
    const std::unique_ptr<LogFile> log(decoder.parseLog(path, [](int, int, int) {}));
    const auto digest = decoder.readForPairing(path, [](int, int, int) {});
    if (!log)
        return 0;
    if (!digest ||
        digest->recordings.size() != corv::LogDecoder::readRecordingEvents(log.get()).size() ||
        digest->namings.size() != decoder.readFlightNamingEvents(log.get()).size() ||
        digest->thermalCameraHwVersion != decoder.findThermalCameraHwVersion(log.get()))
        std::abort();
    checkCounters(decoder.counters());
    readAll(*log);
    const corv::LogDecoder& reader = decoder;
    const int durationMs = static_cast<int>(size * 977);
    const LogSyncResult match = reader.syncLogToVideo(log.get(), durationMs);
    reader.findNamingForFlight(reader.readFlightNamingEvents(log.get()), match.logTimeOffset,
                               durationMs);
    reader.findThermalCameraHwVersion(log.get());
    return 0;
}
