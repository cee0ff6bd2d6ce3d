#include "Discovery/flightPairing.h"

#include "Discovery/fileTimes.h"
#include "Discovery/flightAlignment.h"
#include "Discovery/flightNames.h"

#include <QStringList>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

namespace corv {
namespace {

// Above these doubts a person should look at the pair. Times and lengths that agree by accident are
// rare; lengths alone agree more often. Measured over thousands of generated cards, of which every
// pair that is not doubtful is right.
constexpr double doubtByTimeAndLength = 3e-4;
constexpr double doubtByLength = 2e-6;
constexpr double doubtBySoundTimes = 1e-4;
constexpr double doubtByKeptTimes = 0.1;
constexpr double likely = 0.5;
constexpr double beyondAccident = 0.95;      // above it a length outweighs the times
constexpr size_t mostWeighedTwice = 100'000; // videos times recordings; a folder of several cards
constexpr double usuallyMissing = 0.2;       // share of the files, as the alignment assumes

template <typename File>
std::vector<FlightName> namesOf(const std::vector<File>& files)
{
    QStringList paths;
    std::vector<qint64> timesMs;
    for (const File& file : files) {
        paths.append(file.path);
        timesMs.push_back(file.timeMs);
    }
    return formerNames(flightNames(paths), timesMs);
}

QString nameOf(const FlightName& name)
{
    return name.before + name.number + QLatin1Char('.') + name.suffix;
}

// Positions of the files in the order of their names. Where files of equal names were put together,
// those of the same copy come from one card.
std::vector<size_t> orderOfNames(const std::vector<FlightName>& names)
{
    std::vector<size_t> order(names.size());
    std::iota(order.begin(), order.end(), size_t(0));
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        if (names[a].folder == names[b].folder && names[a].copy != names[b].copy)
            return names[a].copy < names[b].copy;
        if (names[a].folder != names[b].folder)
            return namesInOrder(names[a].folder, names[b].folder);
        return namesInOrder(nameOf(names[a]), nameOf(names[b]));
    });
    return order;
}

std::vector<LoggedRecording> recordingsInOrder(const std::vector<PairingLog>& logs)
{
    std::vector<LoggedRecording> recordings;
    for (const size_t log : orderOfNames(namesOf(logs))) {
        quint32 lastStop = 0;
        for (const RecEvent& event : logs[log].recordings)
            lastStop = std::max(lastStop, event.stopTime);
        for (size_t i = 0; i < logs[log].recordings.size(); ++i) {
            const RecEvent& event = logs[log].recordings[i];
            if (isWhole(event))
                recordings.push_back(
                    {static_cast<int>(log), static_cast<int>(i), lengthOf(event),
                     static_cast<qint64>(lastStop) - static_cast<qint64>(event.stopTime)});
        }
    }
    return recordings;
}

// What the alignment believes of one video and one log: all its recordings together, the most
// likely one by name.
struct LogBelief
{
    double probability = 0;
    AlignmentClaim best;
};

class Decision
{
public:
    Decision(const std::vector<PairingVideo>& videos, const std::vector<PairingLog>& logs);
    std::vector<Pairing> take();

private:
    Pairing decide(size_t place) const;
    bool isOpen(size_t place, const Pairing& pairing) const;
    std::vector<bool> recordingsInDirectOrder() const;
    void settleOpen(std::vector<Pairing>& pairings);
    void doubtAroundLeftOutLogs(std::vector<Pairing>& pairings) const;
    bool isDoubtful(const PairingVideo& video, const LogBelief& byTime) const;
    LogBelief beliefIn(size_t place, int log) const;
    LogBelief mostLikely(size_t place) const;
    void addClaim(const AlignmentClaim& claim, Pairing& pairing) const;
    void addNearestLength(Pairing& pairing) const;
    bool canCompare(int log) const;
    bool hasNoVideo(int log) const;
    int logDuring(const PairingVideo& video) const;
    bool isBelied(const AlignmentClaim& claim, int during) const;
    bool agreesByTime(size_t place, const LogBelief& byTime) const;
    bool nothingContradictsTimes() const;
    bool mostTimesAgree() const;
    bool isTornByTimes(const Pairing& pairing) const;
    double shareOfMissingFiles() const;
    std::vector<bool> logsOfOtherLengths(size_t logs) const;

    const std::vector<PairingVideo>& m_videos;
    const std::vector<PairingLog>& m_logs;
    std::vector<FlightName> m_names; // of the videos
    std::vector<size_t> m_order;     // positions of the videos by name
    std::vector<LoggedRecording> m_recordings;
    LogDelay m_delay;
    std::vector<std::vector<AlignmentClaim>> m_claims; // by place in m_order
    AlignmentInput m_input;
    bool m_timesAreSound = false;
    bool m_timesAreLost = false;
    bool m_timesAreKept = false;         // as far as they show by themselves
    std::vector<bool> m_timesSayNothing; // by log
    double m_missingFiles = 1; // how much likelier than usual a log and a video are missing
};

Decision::Decision(const std::vector<PairingVideo>& videos, const std::vector<PairingLog>& logs)
    : m_videos(videos), m_logs(logs), m_names(namesOf(videos)), m_order(orderOfNames(m_names)),
      m_recordings(recordingsInOrder(logs)), m_delay(videos, logs, m_recordings)
{
    AlignmentInput& input = m_input;
    for (size_t place = 0; place < m_order.size(); ++place) {
        const PairingVideo& video = videos[m_order[place]];
        const int missing =
            place > 0 ? numbersBetween(m_names[m_order[place - 1]], m_names[m_order[place]]) : -1;
        const bool continues = missing == 0;
        const bool later = continues && !goesOnAtOnce(videos[m_order[place - 1]], video);
        input.videos.push_back({video.lengthMs, continues, later, missing});
    }
    for (const LoggedRecording& recording : m_recordings)
        input.recordingsMs.push_back(recording.lengthMs);
    input.timeFit = [&](int place, int recording) {
        return m_delay.fit(videos[m_order[static_cast<size_t>(place)]],
                           m_recordings[static_cast<size_t>(recording)]);
    };
    input.timesAreKept = likelihoodOfKeptTimes(videos, logs);
    m_timesAreLost = input.timesAreKept < likely;
    m_claims = alignFlights(input);
    const bool timesAgree = mostTimesAgree();
    m_timesAreKept = input.timesAreKept > 0.9 && timesAgree;
    // One recording and what is as long as it leave nothing to mistake, whatever a copy did to
    // times.
    m_timesAreSound =
        (!m_timesAreLost || m_recordings.size() == 1) && timesAgree && nothingContradictsTimes();
    m_timesSayNothing = logsOfOtherLengths(logs.size());
    m_missingFiles = shareOfMissingFiles();
}

// A wrong pair of agreeing lengths needs a video without its log and a log without its video. How
// likely that is shows in the rest of the card: in the videos and recordings that fit to nothing.
double Decision::shareOfMissingFiles() const
{
    // Counted as missing in every case: a wrong pair hides both a video and a log without the
    // other.
    constexpr double never = 0.2;
    constexpr double hidden = 0.1; // how likely a card that seems complete is not, at the least
    double videosAlone = 0;
    std::vector<double> recordingAlone(m_recordings.size(), 1.0);
    for (const std::vector<AlignmentClaim>& claims : m_claims) {
        ++videosAlone;
        for (const AlignmentClaim& claim : claims) {
            videosAlone -= claim.probability;
            recordingAlone[static_cast<size_t>(claim.recording)] -= claim.probability / claim.count;
        }
    }
    const double recordingsAlone =
        std::accumulate(recordingAlone.begin(), recordingAlone.end(), 0.0);
    const auto share = [](double alone, size_t all) {
        return (alone + never) / (static_cast<double>(all) + 1) / usuallyMissing;
    };
    constexpr double few = 10; // files that agree by accident as soon as not
    const auto files = static_cast<double>(m_order.size() + m_recordings.size());
    const double complete =
        videosAlone + recordingsAlone < 0.5
            ? std::max(hidden, std::pow(1 - usuallyMissing, std::max(0.0, files - few)))
            : 1.0;
    return complete * share(videosAlone, m_order.size()) *
           share(recordingsAlone, m_recordings.size());
}

LogBelief Decision::beliefIn(size_t place, int log) const
{
    LogBelief belief;
    for (const AlignmentClaim& claim : m_claims[place]) {
        if (m_recordings[static_cast<size_t>(claim.recording)].log != log)
            continue;
        belief.probability += claim.probability;
        if (claim.probability >= belief.best.probability)
            belief.best = claim;
    }
    return belief;
}

LogBelief Decision::mostLikely(size_t place) const
{
    LogBelief best;
    for (const AlignmentClaim& claim : m_claims[place]) {
        const LogBelief belief =
            beliefIn(place, m_recordings[static_cast<size_t>(claim.recording)].log);
        if (belief.probability > best.probability)
            best = belief;
    }
    return best;
}

void Decision::addClaim(const AlignmentClaim& claim, Pairing& pairing) const
{
    const LoggedRecording& recording = m_recordings[static_cast<size_t>(claim.recording)];
    pairing.log = recording.log;
    pairing.recording = recording.index;
    pairing.recordingLengthMs = recording.lengthMs;
    pairing.flightLengthMs = 0;
    for (int part = 0; part < claim.count; ++part) {
        const size_t video = m_order[static_cast<size_t>(claim.first + part)];
        pairing.files.push_back(video);
        pairing.flightLengthMs += m_videos[video].lengthMs;
    }
}

void Decision::addNearestLength(Pairing& pairing) const
{
    for (const LoggedRecording& recording : m_recordings) {
        if (recording.log == pairing.log &&
            (pairing.recordingLengthMs < 0 ||
             std::abs(recording.lengthMs - pairing.flightLengthMs) <
                 std::abs(pairing.recordingLengthMs - pairing.flightLengthMs)))
            pairing.recordingLengthMs = recording.lengthMs;
    }
}

bool Decision::canCompare(int log) const
{
    return std::any_of(m_recordings.begin(), m_recordings.end(),
                       [log](const LoggedRecording& recording) { return recording.log == log; });
}

// A flight that was not filmed: its log has no recording, but describes them, or others of the card
// have some.
bool Decision::hasNoVideo(int log) const
{
    const PairingLog& asked = m_logs[static_cast<size_t>(log)];
    return asked.isRead && asked.recordings.empty() &&
           (asked.describesRecordings || !m_recordings.empty());
}

// The log that ran while the video was taken, where the times are those of the camera and the log:
// a file of a flight that lacks others has no other length to go by. -1 for none, or for several.
int Decision::logDuring(const PairingVideo& video) const
{
    int log = -1;
    if (!m_timesAreKept || video.lengthMs <= 0)
        return log;
    for (const LoggedRecording& recording : m_recordings) {
        if (recording.log == log || !m_delay.isDuring(video, recording))
            continue;
        if (log >= 0)
            return -1;
        log = recording.log;
    }
    return log;
}

// True if a recording of the right length ended before its videos were taken, or began after them,
// while the log `during` ran: the length agrees by accident.
bool Decision::isBelied(const AlignmentClaim& claim, int during) const
{
    const LoggedRecording& recording = m_recordings[static_cast<size_t>(claim.recording)];
    const PairingVideo& last =
        m_videos[m_order[static_cast<size_t>(claim.first + claim.count - 1)]];
    return during >= 0 && during != recording.log && !m_delay.isDuring(last, recording);
}

// Neighbours that only together are as long as a recording are hardly one flight.
bool Decision::agreesByTime(size_t place, const LogBelief& byTime) const
{
    return m_videos[m_order[place]].logByTime >= 0 && byTime.best.recording >= 0 &&
           (byTime.best.count == 1 || byTime.probability >= likely);
}

// True if every pair by time has a recording of its length, and each recording one flight.
bool Decision::nothingContradictsTimes() const
{
    std::vector<int> flightOf(m_recordings.size(), -1); // by its first video
    for (size_t place = 0; place < m_order.size(); ++place) {
        const PairingVideo& video = m_videos[m_order[place]];
        if (video.logByTime < 0 || video.lengthMs <= 0 || !canCompare(video.logByTime))
            continue;
        const LogBelief byTime = beliefIn(place, video.logByTime);
        if (!agreesByTime(place, byTime))
            return false;
        int& flight = flightOf[static_cast<size_t>(byTime.best.recording)];
        if (flight >= 0 && flight != byTime.best.first)
            return false;
        flight = byTime.best.first;
    }
    return true;
}

// False if lengths find other logs than the times for as many videos as they find the same for.
bool Decision::mostTimesAgree() const
{
    int same = 0;
    int others = 0;
    for (size_t place = 0; place < m_order.size(); ++place) {
        const int log = m_videos[m_order[place]].logByTime;
        const LogBelief best = mostLikely(place);
        if (best.probability >= likely)
            ++(m_recordings[static_cast<size_t>(best.best.recording)].log == log ? same : others);
    }
    return others == 0 || same > others;
}

// True if times that are those of the camera show a break between the files of a flight.
bool Decision::isTornByTimes(const Pairing& pairing) const
{
    for (size_t part = 1; part < pairing.files.size() && m_timesAreKept; ++part)
        if (!goesOnAtOnce(m_videos[pairing.files[part - 1]], m_videos[pairing.files[part]]))
            return true;
    return false;
}

// The logs to which the times give a video of another length: of those the times say nothing.
std::vector<bool> Decision::logsOfOtherLengths(size_t logs) const
{
    std::vector<bool> others(logs, false);
    for (size_t place = 0; place < m_order.size(); ++place) {
        const PairingVideo& video = m_videos[m_order[place]];
        if (video.logByTime >= 0 && video.lengthMs > 0 &&
            !agreesByTime(place, beliefIn(place, video.logByTime)))
            others[static_cast<size_t>(video.logByTime)] = true;
    }
    return others;
}

// Of a pair on which time and length agree.
bool Decision::isDoubtful(const PairingVideo& video, const LogBelief& byTime) const
{
    const double doubt = 1 - byTime.probability;
    const bool timesSpeak =
        m_timesAreKept && !m_timesSayNothing[static_cast<size_t>(video.logByTime)];
    if ((m_timesAreSound || (timesSpeak && doubt < doubtByKeptTimes)) &&
        m_delay.followsAtOnce(video, m_recordings[static_cast<size_t>(byTime.best.recording)]))
        return false;
    if (m_timesAreSound)
        return doubt > doubtBySoundTimes;
    const bool lengthAlone =
        m_timesAreLost || m_timesSayNothing[static_cast<size_t>(video.logByTime)];
    return doubt * m_missingFiles > (lengthAlone ? doubtByLength : doubtByTimeAndLength);
}

Pairing Decision::decide(size_t place) const
{
    const PairingVideo& video = m_videos[m_order[place]];
    Pairing pairing;
    pairing.flightLengthMs = video.lengthMs > 0 ? video.lengthMs : -1;
    const LogBelief byTime = beliefIn(place, video.logByTime);
    const LogBelief best = mostLikely(place);
    const bool lengthAgrees = agreesByTime(place, byTime);
    // Times that lengths do not contradict are kept, unless another log is all but certain.
    const bool contradicted =
        video.logByTime < 0 || (video.lengthMs > 0 && canCompare(video.logByTime));
    // Lost times give several videos of one length the same log, which holds one of them.
    const bool shared = m_timesAreLost && best.probability > byTime.probability;
    const bool replaced =
        contradicted && !lengthAgrees
            ? best.probability >= likely
            : (shared && lengthAgrees) || (byTime.probability < 0.05 && best.probability > 0.9);
    const int during = logDuring(video);
    if (replaced && (best.probability > beyondAccident || !isBelied(best.best, during))) {
        addClaim(best.best, pairing);
        pairing.evidence = PairingEvidence::Length;
        pairing.doubtful =
            (1 - best.probability) * m_missingFiles > doubtByLength || isTornByTimes(pairing);
    } else if (lengthAgrees) {
        addClaim(byTime.best, pairing);
        pairing.evidence = PairingEvidence::TimeAndLength;
        pairing.doubtful = isDoubtful(video, byTime) || isTornByTimes(pairing);
    } else if (const int log = contradicted && during >= 0 ? during : video.logByTime; log >= 0) {
        pairing.log = log;
        if (contradicted)
            addNearestLength(pairing);
        pairing.evidence = contradicted ? PairingEvidence::LengthDiffers : PairingEvidence::Time;
        pairing.doubtful =
            contradicted || m_timesAreLost || best.probability >= likely || hasNoVideo(log);
    }
    return pairing;
}

// True if flights that lack files may show another log. A pair without a doubt is not asked again,
// nor one on which the lengths agree with the times of the camera.
bool Decision::isOpen(size_t place, const Pairing& pairing) const
{
    const PairingVideo& video = m_videos[m_order[place]];
    const bool byTime = pairing.evidence == PairingEvidence::TimeAndLength && !m_timesAreLost;
    return video.lengthMs > 0 && !byTime && (pairing.log < 0 || pairing.doubtful) &&
           (video.logByTime < 0 || canCompare(video.logByTime)) && logDuring(video) < 0;
}

// Which logs stand next to each other by their names, so that none is missing between them.
std::vector<bool> Decision::recordingsInDirectOrder() const
{
    const std::vector<FlightName> names = namesOf(m_logs);
    std::vector<bool> direct(m_recordings.size(), false);
    for (size_t r = 1; r < m_recordings.size(); ++r) {
        const auto before = static_cast<size_t>(m_recordings[r - 1].log);
        const auto log = static_cast<size_t>(m_recordings[r].log);
        direct[r] = before == log || numbersBetween(names[before], names[log]) == 0;
    }
    return direct;
}

// True if that holds for all files of the claim.
bool areAll(const std::vector<bool>& places, const AlignmentClaim& claim)
{
    const auto first = places.begin() + claim.first;
    return std::all_of(first, first + claim.count, [](bool place) { return place; });
}

// Weighs flights that lack files, where anything is open. What that finds stays doubtful.
void Decision::settleOpen(std::vector<Pairing>& pairings)
{
    std::vector<bool> open(m_order.size());
    for (size_t place = 0; place < m_order.size(); ++place)
        open[place] = isOpen(place, pairings[m_order[place]]);
    if (std::find(open.begin(), open.end(), true) == open.end() ||
        m_order.size() * m_recordings.size() > mostWeighedTwice)
        return;
    m_input.filesAreMissing = true;
    m_input.followsDirectly = recordingsInDirectOrder();
    m_claims = alignFlights(m_input);
    for (size_t place = 0; place < m_order.size(); ++place) {
        const LogBelief best = mostLikely(place);
        Pairing& pairing = pairings[m_order[place]];
        if (best.probability < likely || !areAll(open, best.best) ||
            m_recordings[static_cast<size_t>(best.best.recording)].log == pairing.log)
            continue;
        pairing = {};
        addClaim(best.best, pairing);
        pairing.doubtful = true;
        pairing.evidence = PairingEvidence::Length;
        if (best.best.lacksFiles) {
            // Where in the recording the file begins is not known: it opens alone.
            pairing.evidence = PairingEvidence::LengthDiffers;
            pairing.lacksFiles = true;
            pairing.recording = -1;
            pairing.recordingLengthMs = -1;
            pairing.files.clear();
            pairing.flightLengthMs = m_videos[m_order[place]].lengthMs;
            addNearestLength(pairing);
        }
    }
}

// The video of a log that is missing between two others is between theirs. If by the numbers none
// is missing there, one of the two may have the length of that log's flight by accident. Times that
// are not lost say more.
void Decision::doubtAroundLeftOutLogs(std::vector<Pairing>& pairings) const
{
    const std::vector<FlightName> logNames = namesOf(m_logs);
    for (size_t place = 1; place < m_order.size() && m_timesAreLost; ++place) {
        const size_t first = m_order[place - 1];
        const size_t next = m_order[place];
        Pairing& before = pairings[first];
        Pairing& pairing = pairings[next];
        if (before.log < 0 || pairing.log < 0 || numbersBetween(m_names[first], m_names[next]) != 0)
            continue;
        const int logsBetween = numbersBetween(logNames[static_cast<size_t>(before.log)],
                                               logNames[static_cast<size_t>(pairing.log)]);
        if (logsBetween > 0) {
            before.doubtful = true;
            pairing.doubtful = true;
        }
    }
}

std::vector<Pairing> Decision::take()
{
    std::vector<Pairing> pairings(m_videos.size());
    for (size_t place = 0; place < m_order.size(); ++place)
        pairings[m_order[place]] = decide(place);
    settleOpen(pairings);
    doubtAroundLeftOutLogs(pairings);
    return pairings;
}

} // namespace

std::vector<Pairing> pairFlights(const std::vector<PairingVideo>& videos,
                                 const std::vector<PairingLog>& logs)
{
    return Decision(videos, logs).take();
}

} // namespace corv
