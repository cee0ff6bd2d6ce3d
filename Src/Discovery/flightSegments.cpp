#include "Discovery/flightSegments.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <utility>

namespace corv {
namespace {

constexpr qint64 recorderOverheadMs = 1000; // by which a logged recording exceeds its video
constexpr qint64 agreementMs = 3000;

// How flights are filmed: in several files, with files of full length, with files missing.
constexpr double severalParts = 0.1;
constexpr double partsOfACardThatSplits = 0.4; // the same where files are of full length
constexpr double fileIsMissing = 0.2;
constexpr int mostMissing = 4;          // files of one flight
constexpr double endsFull = 0.1;        // the last file of a flight
constexpr qint64 fullLengthVaries = 50; // by that part of it

double fitOfLengths(qint64 videoMs, qint64 recordingMs)
{
    constexpr double spreadMs = 600;
    constexpr double outlierShare = 0.1;
    const double apart = static_cast<double>(recordingMs - recorderOverheadMs - videoMs) / spreadMs;
    const double near = std::exp(-apart * apart / 2) / (spreadMs * 2.5066);
    return (1 - outlierShare) * near + outlierShare / (2.0 * static_cast<double>(agreementMs));
}

// How likely so many files are one flight. A recorder splits at a fixed size: only the last part is
// shorter, and the flight neither begins after a full part nor ends with one.
double fitOfParts(const AlignmentInput& input, size_t first, size_t count)
{
    if (count == 1)
        return 1 - severalParts;
    const size_t last = first + count - 1;
    const auto length = [&](size_t i) { return static_cast<double>(input.videos[i].lengthMs); };
    const double full = length(first);
    const double slack = std::max(3000.0, 0.1 * full);
    const auto isFull = [&](size_t i) { return std::abs(length(i) - full) <= slack; };
    double fit = severalParts;
    for (size_t i = first + 1; i < last; ++i)
        if (!isFull(i))
            fit *= 0.1;
    if (length(last) > full + slack)
        fit *= 0.02;
    if (input.videos[first].continuesFlight && first > 0 && isFull(first - 1))
        fit *= 0.1;
    const bool goesOn = last + 1 < input.videos.size() && input.videos[last + 1].continuesFlight;
    if (goesOn && isFull(last))
        fit *= 0.1;
    return fit;
}

// The length at which the recorder begins the next file: several files have it, none is longer. 0
// if it does not show.
qint64 fullLength(const std::vector<qint64>& sortedMs)
{
    constexpr std::ptrdiff_t fewest = 3;
    if (sortedMs.empty())
        return 0;
    const qint64 leastMs = sortedMs.back() - sortedMs.back() / fullLengthVaries;
    const auto begin = std::lower_bound(sortedMs.begin(), sortedMs.end(), leastMs);
    const auto full = std::distance(begin, sortedMs.end());
    return full < fewest ? 0 : *(begin + full / 2);
}

class SegmentFinder
{
public:
    explicit SegmentFinder(const AlignmentInput& input);
    std::vector<FlightSegment> take();

private:
    qint64 lengthOfRecording(int recording) const
    {
        return m_input.recordingsMs[static_cast<size_t>(recording)];
    }

    void findWhole();
    void findTorn();
    void addSegment(size_t first, size_t count, qint64 lengthMs);
    void addAgreeing(FlightSegment& segment, qint64 lengthMs) const;
    void addLonger(FlightSegment& segment, qint64 lengthMs, qint64 fullMs, int mostAfter) const;
    void addTornFrom(size_t first, int before, qint64 fullMs);
    int missingBefore(size_t video) const;
    void keep(FlightSegment segment, double fitOfFiles);
    double chanceOf(qint64 lengthMs, qint64 lastPartMs) const;

    const AlignmentInput& m_input;
    std::vector<int> m_byLength; // the recordings
    std::vector<qint64> m_sortedRecordingsMs;
    std::vector<qint64> m_sortedVideosMs;
    std::vector<FlightSegment> m_segments;
};

SegmentFinder::SegmentFinder(const AlignmentInput& input)
    : m_input(input), m_byLength(input.recordingsMs.size()),
      m_sortedRecordingsMs(input.recordingsMs)
{
    std::iota(m_byLength.begin(), m_byLength.end(), 0);
    std::sort(m_byLength.begin(), m_byLength.end(),
              [this](int a, int b) { return lengthOfRecording(a) < lengthOfRecording(b); });
    std::sort(m_sortedRecordingsMs.begin(), m_sortedRecordingsMs.end());
    for (const AlignmentInput::Video& video : input.videos)
        if (video.lengthMs > 0)
            m_sortedVideosMs.push_back(video.lengthMs);
    std::sort(m_sortedVideosMs.begin(), m_sortedVideosMs.end());
}

std::vector<FlightSegment> SegmentFinder::take()
{
    if (m_byLength.empty())
        return {};
    findWhole();
    if (m_input.filesAreMissing)
        findTorn();
    return std::move(m_segments);
}

void SegmentFinder::findWhole()
{
    const qint64 longest = m_sortedRecordingsMs.back() + agreementMs;
    for (size_t first = 0; first < m_input.videos.size(); ++first) {
        qint64 lengthMs = 0;
        for (size_t count = 1; first + count <= m_input.videos.size() && count <= mostParts;
             ++count) {
            const AlignmentInput::Video& part = m_input.videos[first + count - 1];
            if (part.lengthMs <= 0 || (count > 1 && !part.continuesFlight))
                break;
            lengthMs += part.lengthMs;
            if (lengthMs > longest)
                break;
            addSegment(first, count, lengthMs);
        }
    }
}

void SegmentFinder::addSegment(size_t first, size_t count, qint64 lengthMs)
{
    FlightSegment segment{static_cast<int>(first), static_cast<int>(count), {}, false};
    addAgreeing(segment, lengthMs);
    if (!segment.candidates.empty())
        keep(std::move(segment), fitOfParts(m_input, first, count));
}

// Adds the recordings of that length.
void SegmentFinder::addAgreeing(FlightSegment& segment, qint64 lengthMs) const
{
    const auto begin = std::partition_point(m_byLength.begin(), m_byLength.end(), [&](int r) {
        return lengthOfRecording(r) <= lengthMs - agreementMs;
    });
    const auto last = static_cast<size_t>(segment.first + segment.count - 1);
    double chance = 0;
    for (auto it = begin; it != m_byLength.end(); ++it) {
        const qint64 recordingMs = lengthOfRecording(*it);
        if (!lengthsAgree(lengthMs, recordingMs))
            break;
        if (segment.candidates.empty())
            chance = chanceOf(lengthMs, m_input.videos[last].lengthMs);
        const double fit = fitOfLengths(lengthMs, recordingMs) / chance;
        segment.candidates.push_back({*it, fit, fit});
    }
}

// Keeps a segment whose files are one flight that likely.
void SegmentFinder::keep(FlightSegment segment, double fitOfFiles)
{
    if (segment.candidates.empty())
        return;
    for (SegmentCandidate& candidate : segment.candidates)
        candidate.lengthFit *= fitOfFiles;
    std::sort(segment.candidates.begin(), segment.candidates.end(),
              [](const SegmentCandidate& a, const SegmentCandidate& b) {
                  return a.recording < b.recording;
              });
    m_segments.push_back(std::move(segment));
}

// Flights of which some files are missing: as many as the numbers of the others leave out, and all
// but the last of a flight are of full length.
void SegmentFinder::findTorn()
{
    const qint64 fullMs = fullLength(m_sortedVideosMs);
    for (size_t first = 0; first < m_input.videos.size() && fullMs > 0; ++first)
        for (int before = 0; before <= missingBefore(first); ++before)
            addTornFrom(first, before, fullMs);
}

int SegmentFinder::missingBefore(size_t video) const
{
    const int missing = video < m_input.videos.size() ? m_input.videos[video].missingBefore : -1;
    return missing < 0 ? mostMissing : std::min(missing, mostMissing);
}

// The flights that begin with `before` missing files and the video `first`.
void SegmentFinder::addTornFrom(size_t first, int before, qint64 fullMs)
{
    const auto isFull = [&](size_t i) {
        return std::abs(m_input.videos[i].lengthMs - fullMs) <= fullMs / fullLengthVaries;
    };
    int missing = before;
    qint64 thereMs = 0;
    for (size_t count = 1; first + count <= m_input.videos.size() && count <= mostParts; ++count) {
        const size_t last = first + count - 1;
        const AlignmentInput::Video& part = m_input.videos[last];
        if (count > 1)
            missing += part.missingBefore;
        if (part.lengthMs <= 0 || missing > mostMissing ||
            (count > 1 && (part.missingBefore < 0 || !isFull(last - 1))))
            break;
        thereMs += part.lengthMs;
        // The files of one flight are more alike than those of all.
        const qint64 ownFullMs = count > 1 ? m_input.videos[first].lengthMs : fullMs;
        const qint64 lengthMs = thereMs + missing * ownFullMs;
        if (lengthMs >= m_sortedRecordingsMs.back() + agreementMs)
            break;
        const double fit = partsOfACardThatSplits * std::pow(fileIsMissing, missing);
        FlightSegment ended{static_cast<int>(first), static_cast<int>(count), {}, true};
        FlightSegment unended = ended;
        if (missing > 0)
            addAgreeing(ended, lengthMs);
        keep(std::move(ended), isFull(last) ? endsFull * fit : fit);
        const int mostAfter = std::min(missingBefore(last + 1), mostMissing - missing);
        if (isFull(last) && mostAfter > 0)
            addLonger(unended, lengthMs, ownFullMs, mostAfter);
        keep(std::move(unended), fit);
    }
}

// The last file is missing too: the recording is longer than what is there, by no more than the
// missing files hold. How much longer says nothing.
void SegmentFinder::addLonger(FlightSegment& segment, qint64 lengthMs, qint64 fullMs,
                              int mostAfter) const
{
    const auto begin = std::partition_point(m_byLength.begin(), m_byLength.end(),
                                            [&](int r) { return lengthOfRecording(r) < lengthMs; });
    const auto longer = static_cast<double>(std::distance(begin, m_byLength.end()));
    for (auto it = begin; it != m_byLength.end(); ++it) {
        const qint64 restMs = lengthOfRecording(*it) - recorderOverheadMs - lengthMs;
        const auto after = static_cast<int>(std::max<qint64>(0, restMs - 1) / fullMs) + 1;
        if (after > mostAfter)
            break;
        const double fit =
            std::pow(fileIsMissing, after) * static_cast<double>(m_byLength.size()) / longer;
        segment.candidates.push_back({*it, fit, fit});
    }
}

// The density, per millisecond, of flights of about this length: where all flights are alike, or
// all parts of them, an agreeing length says little.
double SegmentFinder::chanceOf(qint64 lengthMs, qint64 lastPartMs) const
{
    constexpr double anyLength = 1.0 / 1'200'000;
    const auto density = [](const std::vector<qint64>& sorted, qint64 ms) {
        constexpr qint64 aroundMs = 30'000;
        const auto begin = std::lower_bound(sorted.begin(), sorted.end(), ms - aroundMs);
        const auto end = std::upper_bound(begin, sorted.end(), ms + aroundMs);
        const auto others = static_cast<double>(std::distance(begin, end) - 1);
        return std::max(0.0, others) /
               (static_cast<double>(sorted.size()) * 2.0 * static_cast<double>(aroundMs));
    };
    return 0.6 * anyLength +
           0.7 * std::max(density(m_sortedRecordingsMs, lengthMs + recorderOverheadMs),
                          density(m_sortedVideosMs, lastPartMs));
}

} // namespace

bool lengthsAgree(qint64 videoMs, qint64 recordingMs)
{
    return std::abs(videoMs - recordingMs) < agreementMs;
}

std::vector<FlightSegment> findSegments(const AlignmentInput& input)
{
    return SegmentFinder(input).take();
}

} // namespace corv
