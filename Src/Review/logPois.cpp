#include "Review/logPois.h"

#include "Log/LogParser.h"
#include "Log/clocks.h"
#include "Review/logCategory.h"

#include <QDebug>
#include <algorithm>

namespace corv {
namespace {

// Each point of interest costs a frame to be read and a picture to be kept. Real flights
// have far fewer; a damaged log may have this many.
constexpr int logPoisMax = 10000;

} // namespace

std::vector<int> logPoiTimesMs(const LogParser& parser)
{
    const std::shared_ptr<const LogFile> log = parser.log();
    if (!parser.isSynced() || !log)
        return {};
    const LogGroup* group = log->getGroup("point_of_interest");
    if (!group)
        return {};
    const LogColumn<quint32> entries = group->column<quint32>("point_of_interest");
    if (entries.size() > logPoisMax)
        qCWarning(lcReview) << "Too many POIs in the log, taking the first" << logPoisMax;

    const std::shared_ptr<const FlightClock> clock = parser.clock();
    std::vector<int> timesMs(static_cast<size_t>(std::min(entries.size(), logPoisMax)));
    std::transform(entries.begin(), entries.begin() + timesMs.size(), timesMs.begin(),
                   [&clock](quint32 logMs) { return videoTimeOfLog(logMs, *clock); });
    return timesMs;
}

} // namespace corv
