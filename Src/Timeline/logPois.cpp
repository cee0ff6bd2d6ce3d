#include "Timeline/logPois.h"

#include "Log/LogParser.h"
#include "Log/clocks.h"
#include "Timeline/logColumns.h"

#include <QDebug>
#include <algorithm>

namespace corv {
namespace {

// Each mark costs a frame to be read and a picture to be kept. Nobody marks a flight this often; a
// damaged log may say so.
constexpr int logPoisMax = 10000;

} // namespace

std::vector<int> logPoiTimesMs(const LogParser& parser)
{
    const std::shared_ptr<LogFile> log = parser.log();
    if (!parser.isSynced() || !log)
        return {};
    const LogGroup* group = log->getGroup("point_of_interest");
    if (!group)
        return {};
    const LogColumn<quint32> entries = logColumn<quint32>(group->getVar("point_of_interest"), 0);
    if (entries.count > logPoisMax)
        qWarning() << "Too many POIs in the log, taking the first" << logPoisMax;

    const std::shared_ptr<const FlightClock> clock = parser.clock();
    std::vector<int> timesMs(static_cast<size_t>(std::min(entries.count, logPoisMax)));
    std::transform(entries.rows, entries.rows + timesMs.size(), timesMs.begin(),
                   [&clock](quint32 logMs) { return videoTimeOfLog(logMs, *clock); });
    return timesMs;
}

} // namespace corv
