#include "Log/LogDecoder.h"
#include "Log/logCategory.h"

#include <QDebug>

namespace corv {
namespace {

constexpr quint32 kRecorderOverheadMs = 1000; ///< by which a logged recording exceeds its video
constexpr int kWeakMatchMs = 3000;

// From the logged start to the first frame of the file: a recorder that has already run once takes
// longer to open its next file.
constexpr quint32 kFirstRecordingDelayMs = 690;
constexpr quint32 kLaterRecordingDelayMs = 1279;

const LogVar* findVar(const LogFile* log, const char* groupName, const char* varName)
{
    const LogGroup* group = log->getGroup(groupName);
    return group ? group->getVar(varName) : nullptr;
}

// Times are 32-bit numbers of the log and wrap around like its clock.
int wrappingDifference(quint32 from, quint32 what)
{
    return static_cast<int>(from - what);
}

int wrappingAbs(int value)
{
    return value < 0 ? wrappingDifference(0, static_cast<quint32>(value)) : value;
}

int distance(int duration, int videoDuration)
{
    return wrappingAbs(
        wrappingDifference(static_cast<quint32>(duration), static_cast<quint32>(videoDuration)));
}

int lengthOf(const RecEvent& event)
{
    return wrappingDifference(event.stopTime, event.startTime);
}

bool isWhole(const RecEvent& event)
{
    return event.startTime != 0 && event.stopTime != 0 && event.stopTime > event.startTime;
}

int nearestRecording(const std::vector<RecEvent>& events, int videoDuration)
{
    int best = 0;
    int bestIndex = -1;
    for (size_t i = 0; i < events.size(); ++i) {
        if (!isWhole(events[i]))
            continue;
        const int length =
            wrappingDifference(static_cast<quint32>(lengthOf(events[i])), kRecorderOverheadMs);
        if (distance(length, videoDuration) < distance(best, videoDuration)) {
            best = length;
            bestIndex = static_cast<int>(i);
        }
    }
    return bestIndex;
}

// Takes the recording into the result and gives the difference of the two lengths.
int takeMatch(const RecEvent& event, int videoDuration, LogSyncResult* result)
{
    result->videoDuration = videoDuration;
    result->matchedDuration = lengthOf(event);
    result->logTimeOffset = static_cast<int>(event.startTime);
    const int difference = wrappingDifference(static_cast<quint32>(videoDuration),
                                              static_cast<quint32>(result->matchedDuration));
    qCInfo(lcLog) << "Video duration:" << videoDuration << "ms";
    qCInfo(lcLog) << "Recording match duration:" << result->matchedDuration << "ms";
    qCInfo(lcLog) << "Difference:" << difference << "ms";
    return difference;
}

} // namespace

LogSyncResult LogDecoder::syncLogToVideo(const LogFile* log, int videoDuration) const
{
    if (videoDuration <= 0 || !log)
        return {};
    return findLogTimeOffset(readRecordingEvents(log), videoDuration);
}

std::vector<RecEvent> LogDecoder::readRecordingEvents(const LogFile* log)
{
    std::vector<RecEvent> events;
    if (const LogVar* starts = findVar(log, "mobius_start_rec", "mobius_start_rec")) {
        events.resize(static_cast<size_t>(starts->getNbPackets()));
        for (size_t row = 0; row < events.size(); ++row)
            starts->getU32(0, static_cast<int>(row), &events[row].startTime);
    }
    if (const LogVar* stops = findVar(log, "mobius_stop_rec", "mobius_stop_rec")) {
        for (size_t row = 0; row < events.size(); ++row)
            stops->getU32(0, static_cast<int>(row), &events[row].stopTime);
    }
    return events;
}

LogSyncResult LogDecoder::findLogTimeOffset(const std::vector<RecEvent>& events,
                                            int videoDuration) const
{
    LogSyncResult result;
    result.found = true;
    const int bestIndex = nearestRecording(events, videoDuration);
    if (bestIndex >= 0) {
        const int difference =
            takeMatch(events[static_cast<size_t>(bestIndex)], videoDuration, &result);
        result.probablyNotMatching = wrappingAbs(difference) >= kWeakMatchMs;
    } else if (!events.empty() && events.front().startTime != 0) {
        qCInfo(lcLog) << "Defaulting to first recording event";
        takeMatch(events.front(), videoDuration, &result);
        result.probablyNotMatching = true;
    } else {
        result.found = false;
        qCInfo(lcLog) << "Failed to sync video and log: no valid video event in log file";
        return result;
    }
    const quint32 delay = bestIndex > 0 ? kLaterRecordingDelayMs : kFirstRecordingDelayMs;
    result.logTimeOffset = static_cast<int>(static_cast<quint32>(result.logTimeOffset) + delay);
    return result;
}

QList<FlightNamingEvent> LogDecoder::readFlightNamingEvents(const LogFile* log) const
{
    QList<FlightNamingEvent> events;
    const LogGroup* group = log ? log->getGroup("mission_info") : nullptr;
    if (!group)
        return events;
    const LogVar* times = group->getVar("time");
    const LogVar* missionNames = group->getVar("mission_name");
    const LogVar* flightNames = group->getVar("flight_name");
    const LogVar* flightNumbers = group->getVar("flight_number");
    if (!missionNames || missionNames->getNbPackets() < 1)
        return events;
    if (!times || !flightNames || !flightNumbers) {
        qCWarning(lcLog) << "Flight naming is incompletely described in the log";
        return events;
    }
    FlightNamingEvent event;
    for (int row = 0; row < missionNames->getNbPackets(); ++row) {
        const QString missionName = missionNames->getString(row);
        const QString flightName = flightNames->getString(row);
        quint32 time = 0;
        quint8 flightNumber = 0;
        times->getU32(0, row, &time);
        flightNumbers->getU8(0, row, &flightNumber);
        event.undefined = missionName.isEmpty() && flightName.isEmpty() && flightNumber == 0;
        event.flightNumber = flightNumber;
        if (!event.undefined) {
            event.time = static_cast<int>(time);
            event.missionName = missionName;
            event.flightName = flightName;
        }
        events.append(event);
    }
    return events;
}

FlightNamingEvent LogDecoder::findNamingForFlight(const QList<FlightNamingEvent>& events,
                                                  int referenceStart, int referenceEnd) const
{
    FlightNamingEvent result;
    int latest = 0;
    qCInfo(lcLog) << "Reference start" << referenceStart << "end" << referenceEnd;
    for (int index = 0; index < events.size(); ++index) {
        const FlightNamingEvent& event = events[index];
        qCInfo(lcLog) << "At position " << index << ", time" << event.time;
        qCInfo(lcLog) << "Mission" << event.missionName;
        qCInfo(lcLog) << "Flight" << event.flightName;
        qCInfo(lcLog) << "Flight number" << event.flightNumber;
        if (event.time > latest && event.time < referenceEnd) {
            result = event;
            latest = event.time;
            qCInfo(lcLog) << "Set as candidate";
        } else {
            qCInfo(lcLog) << "Rejected";
        }
    }
    qCInfo(lcLog) << "Correct event";
    qCInfo(lcLog) << "Mission" << result.missionName;
    qCInfo(lcLog) << "Flight" << result.flightName;
    qCInfo(lcLog) << "Flight number" << result.flightNumber;
    return result;
}

FlightNamingEvent LogDecoder::findNamingForRecording(const QList<FlightNamingEvent>& events,
                                                     int startMs, int durationMs) const
{
    const auto endMs =
        static_cast<int>(static_cast<quint32>(startMs) + static_cast<quint32>(durationMs));
    return findNamingForFlight(events, startMs, endMs);
}

int LogDecoder::knownThermalCamera(int hwVersion)
{
    return hwVersion == 30 || hwVersion == 35 ? hwVersion : -1;
}

int LogDecoder::findThermalCameraHwVersion(const LogFile* log) const
{
    const LogVar* types = log ? findVar(log, "lepton_info", "lepton_type") : nullptr;
    if (!types)
        return -1;
    quint8 version = 255;
    for (int row = 0; row < types->getNbPackets(); ++row) {
        types->getU8(0, row, &version);
        qCInfo(lcLog) << "Lepton version:" << version;
    }
    return version;
}

} // namespace corv
