#include "Discovery/flightAlignment.h"

#include "Discovery/flightSegments.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>

namespace corv {
namespace {

// Odds of a card: how often a file is missing, a name out of order, a flight in several files.
constexpr double videoHasNoLog = 0.2;
constexpr double jumpsInOrder = 0.02;
constexpr double strayInOrder = 0.03;
constexpr double namesAreInOrder = 0.97;
constexpr double videoBetweenLogs = 0.02; // has none, if none is missing

// Lengths of gaps: none, a few recordings without their video, those of other cards between.
struct Gap
{
    double share;
    double skip;
};
constexpr std::array<Gap, 3> gaps = {{{0.6, 0.02}, {0.25, 0.25}, {0.15, 0.8}}};

// Above this the table of the order would not be worth its memory.
constexpr size_t mostCells = 4'000'000;

constexpr double minusInfinity = -std::numeric_limits<double>::infinity();

// Numbers far outside the range of a double: each row keeps the logarithm of its own scale.
struct ScaledRow
{
    std::vector<double> values;
    double logScale = minusInfinity;
};

class Alignment
{
public:
    explicit Alignment(const AlignmentInput& input)
        : m_videos(input.videos.size()), m_recordings(input.recordingsMs.size())
    {
        m_segments = findSegments(input);
        noteSegments();
        m_hasNoLog.assign(m_recordings + 1, videoHasNoLog);
        for (size_t r = 1; r < input.followsDirectly.size(); ++r)
            if (input.followsDirectly[r])
                m_hasNoLog[r] = videoBetweenLogs;
    }

    void run(const AlignmentInput& input);
    std::vector<std::vector<AlignmentClaim>> claims() const;

private:
    struct Belief
    {
        double prior = 0;
        double inOrder = 0; // shares of the videos with a log
        double jump = 0;
        double stray = 0;
        bool times = false;
    };
    struct Outcome
    {
        double logWeight = minusInfinity;
        std::vector<double> probabilities; // per candidate, segment by segment
    };

    void noteSegments();
    void weigh(const AlignmentInput& input, bool withTimes);
    Outcome passBothWays(const Belief& belief);
    Outcome passInNoOrder(const Belief& belief) const;
    std::vector<double> arrivals(const std::vector<double>& row, const Belief& belief) const;
    std::vector<double> departures(const std::vector<double>& row, const Belief& belief) const;
    double strayFit(const FlightSegment& segment, const Belief& belief) const;
    // What follows a segment: the ways on from its end, those to come to its recordings, and the
    // number of all ways through the whole card.
    struct Rest
    {
        const ScaledRow& row;
        const std::vector<double>& arriving;
        double logAllWays;
    };

    void forwards(const Belief& belief);
    Outcome backwards(const Belief& belief) const;
    void addWaysOn(size_t segmentNumber, const Belief& belief, const Rest& rest,
                   std::vector<double>& worth, ScaledRow& row, Outcome& outcome) const;

    size_t m_videos;
    size_t m_recordings;
    std::vector<FlightSegment> m_segments;         // by their first video
    std::vector<std::vector<size_t>> m_startingAt; // segments by their first video
    std::vector<std::vector<size_t>> m_endingAt;   // segments by the video after their last one
    std::vector<size_t> m_firstCandidate;          // of each segment, counted through all
    size_t m_candidates = 0;
    std::vector<double> m_hasNoLog; // how likely a video is that, by the place in the row
    /// Per video, the weight of all alignments of the videos before it, by the place they end at.
    std::vector<ScaledRow> m_forward;
    /// Per video, the same weight by the recording that would be the next one to pair.
    std::vector<std::vector<double>> m_arriving;
    std::vector<double> m_probabilities;
};

void Alignment::noteSegments()
{
    m_startingAt.resize(m_videos);
    m_endingAt.resize(m_videos + 1);
    for (size_t s = 0; s < m_segments.size(); ++s) {
        const FlightSegment& segment = m_segments[s];
        m_firstCandidate.push_back(m_candidates);
        m_candidates += segment.candidates.size();
        m_startingAt[static_cast<size_t>(segment.first)].push_back(s);
        m_endingAt[static_cast<size_t>(segment.first + segment.count)].push_back(s);
    }
}

void Alignment::weigh(const AlignmentInput& input, bool withTimes)
{
    constexpr double brokenFlight = 0.001; // a recorder begins the next file at once
    for (FlightSegment& segment : m_segments) {
        const auto begin = input.videos.begin() + segment.first;
        const bool broken =
            std::any_of(begin + 1, begin + segment.count,
                        [](const AlignmentInput::Video& part) { return part.beginsLater; });
        for (SegmentCandidate& candidate : segment.candidates)
            candidate.fit = withTimes ? candidate.lengthFit * (broken ? brokenFlight : 1) *
                                            input.timeFit(segment.first + segment.count - 1,
                                                          candidate.recording)
                                      : candidate.lengthFit;
    }
}

std::array<double, gaps.size()> sharesOfGaps(double inOrder)
{
    std::array<double, gaps.size()> shares{};
    for (size_t gap = 0; gap < gaps.size(); ++gap)
        shares[gap] = inOrder * gaps[gap].share * (1 - gaps[gap].skip);
    return shares;
}

// From the ways to be at each place to those to come to each recording next.
std::vector<double> Alignment::arrivals(const std::vector<double>& row, const Belief& belief) const
{
    double all = 0;
    for (const double value : row)
        all += value;
    const double jumped = belief.jump * all / static_cast<double>(m_recordings);
    std::vector<double> in(m_recordings, jumped);
    const std::array<double, gaps.size()> shares = sharesOfGaps(belief.inOrder);
    std::array<double, gaps.size()>
        passing{}; // side by side, since each waits for its own last one
    for (size_t r = 0; r < m_recordings; ++r) {
        double passed = 0;
        for (size_t gap = 0; gap < gaps.size(); ++gap) {
            passing[gap] = row[r] + gaps[gap].skip * passing[gap];
            passed += shares[gap] * passing[gap];
        }
        in[r] += passed;
    }
    return in;
}

// The way back: from the worth of each recording to that of each place before it.
std::vector<double> Alignment::departures(const std::vector<double>& worth,
                                          const Belief& belief) const
{
    double all = 0;
    for (const double value : worth)
        all += value;
    const double jumped = belief.jump * all / static_cast<double>(m_recordings);
    std::vector<double> out(m_recordings + 1, jumped);
    const std::array<double, gaps.size()> shares = sharesOfGaps(belief.inOrder);
    std::array<double, gaps.size()> passing{};
    for (size_t r = m_recordings; r-- > 0;) {
        double passed = 0;
        for (size_t gap = 0; gap < gaps.size(); ++gap) {
            passing[gap] = worth[r] + gaps[gap].skip * passing[gap];
            passed += shares[gap] * passing[gap];
        }
        out[r] += passed;
    }
    return out;
}

double Alignment::strayFit(const FlightSegment& segment, const Belief& belief) const
{
    double fit = 0;
    for (const SegmentCandidate& candidate : segment.candidates)
        fit += candidate.fit;
    return fit * belief.stray / static_cast<double>(m_recordings);
}

void keepInRange(ScaledRow& row)
{
    const double largest = *std::max_element(row.values.begin(), row.values.end());
    constexpr double room = 1e30; // both ways; few rows leave it
    if (!(largest > 0) || (largest > 1 / room && largest < room))
        return;
    for (double& value : row.values)
        value /= largest;
    row.logScale += std::log(largest);
}

// A row is a place per recording: 0 before the first one, r + 1 after recording r.
void Alignment::forwards(const Belief& belief)
{
    m_forward.assign(m_videos + 1, {});
    m_forward[0] = {std::vector<double>(m_recordings + 1, 0.0), 0.0};
    m_forward[0].values[0] = 1;
    m_arriving.assign(m_videos, {});
    for (size_t after = 1; after <= m_videos; ++after) {
        const ScaledRow& before = m_forward[after - 1];
        if (!m_startingAt[after - 1].empty())
            m_arriving[after - 1] = arrivals(before.values, belief);
        ScaledRow& row = m_forward[after];
        row.logScale = before.logScale;
        for (const size_t s : m_endingAt[after])
            row.logScale = std::max(row.logScale,
                                    m_forward[static_cast<size_t>(m_segments[s].first)].logScale);
        const auto factor = [&row](const ScaledRow& from) {
            return std::exp(from.logScale - row.logScale);
        };
        row.values = before.values;
        for (size_t place = 0; place <= m_recordings; ++place)
            row.values[place] *= m_hasNoLog[place] * factor(before);
        for (const size_t s : m_endingAt[after]) {
            const FlightSegment& segment = m_segments[s];
            const auto first = static_cast<size_t>(segment.first);
            const double paired = (1 - videoHasNoLog) * factor(m_forward[first]);
            for (const SegmentCandidate& candidate : segment.candidates) {
                const auto r = static_cast<size_t>(candidate.recording);
                row.values[r + 1] += paired * m_arriving[first][r] * candidate.fit;
            }
            const double stray = paired * strayFit(segment, belief);
            for (size_t place = 0; place <= m_recordings; ++place)
                row.values[place] += stray * m_forward[first].values[place];
        }
        keepInRange(row);
    }
}

// Adds the ways that go on from a segment: to `worth` those in which it is one of its recordings,
// an element each, to `row` those in which it is out of order. Sets the probability of each of its
// candidates: the share of all ways that lead through it.
void Alignment::addWaysOn(size_t segmentNumber, const Belief& belief, const Rest& rest,
                          std::vector<double>& worth, ScaledRow& row, Outcome& outcome) const
{
    const FlightSegment& segment = m_segments[segmentNumber];
    const ScaledRow& before = m_forward[static_cast<size_t>(segment.first)];
    const double paired = (1 - videoHasNoLog) * std::exp(rest.row.logScale - row.logScale);
    const double share =
        (1 - videoHasNoLog) * std::exp(before.logScale + rest.row.logScale - rest.logAllWays);
    double passing = 0;
    for (size_t place = 0; place <= m_recordings; ++place)
        passing += before.values[place] * rest.row.values[place];
    passing *= belief.stray / static_cast<double>(m_recordings);
    size_t number = m_firstCandidate[segmentNumber];
    for (const SegmentCandidate& candidate : segment.candidates) {
        const auto r = static_cast<size_t>(candidate.recording);
        worth[r] += paired * candidate.fit * rest.row.values[r + 1];
        outcome.probabilities[number++] =
            share * candidate.fit * (rest.arriving[r] * rest.row.values[r + 1] + passing);
    }
    const double stray = paired * strayFit(segment, belief);
    for (size_t place = 0; place <= m_recordings; ++place)
        row.values[place] += stray * rest.row.values[place];
}

Alignment::Outcome Alignment::backwards(const Belief& belief) const
{
    const ScaledRow& end = m_forward[m_videos];
    const double logAllWays =
        std::log(std::accumulate(end.values.begin(), end.values.end(), 0.0)) + end.logScale;
    Outcome outcome;
    outcome.logWeight = logAllWays + std::log(belief.prior);
    outcome.probabilities.resize(m_candidates);
    std::vector<ScaledRow> backward(m_videos + 1);
    backward[m_videos] = {std::vector<double>(m_recordings + 1, 1.0), 0.0};
    for (size_t video = m_videos; video-- > 0;) {
        const ScaledRow& next = backward[video + 1];
        const auto restAfter = [&](size_t s) -> const ScaledRow& {
            return backward[video + static_cast<size_t>(m_segments[s].count)];
        };
        ScaledRow& row = backward[video];
        row.logScale = next.logScale;
        for (const size_t s : m_startingAt[video])
            row.logScale = std::max(row.logScale, restAfter(s).logScale);
        const double scale = std::exp(next.logScale - row.logScale);
        row.values = next.values;
        for (size_t place = 0; place <= m_recordings; ++place)
            row.values[place] *= m_hasNoLog[place] * scale;
        if (!m_startingAt[video].empty()) {
            std::vector<double> worth(m_recordings, 0.0);
            for (const size_t s : m_startingAt[video])
                addWaysOn(s, belief, {restAfter(s), m_arriving[video], logAllWays}, worth, row,
                          outcome);
            const std::vector<double> out = departures(worth, belief);
            for (size_t place = 0; place <= m_recordings; ++place)
                row.values[place] += out[place];
        }
        keepInRange(row);
        if (video + mostParts + 1 <= m_videos)
            backward[video + mostParts + 1] = {}; // no segment reaches that far
    }
    return outcome;
}

Alignment::Outcome Alignment::passBothWays(const Belief& belief)
{
    forwards(belief);
    return backwards(belief);
}

void Alignment::run(const AlignmentInput& input)
{
    if (m_segments.empty())
        return;
    std::vector<Belief> beliefs;
    for (const bool times : {true, false}) {
        if (times && !input.timeFit)
            continue;
        const double prior = !input.timeFit ? 1
                             : times        ? input.timesAreKept
                                            : 1 - input.timesAreKept;
        beliefs.push_back({prior * namesAreInOrder, 1 - jumpsInOrder - strayInOrder, jumpsInOrder,
                           strayInOrder, times});
        beliefs.push_back({prior * (1 - namesAreInOrder), 0, 0, 1, times});
    }
    if (m_videos * m_recordings > mostCells)
        beliefs.erase(std::remove_if(beliefs.begin(), beliefs.end(),
                                     [](const Belief& belief) { return belief.inOrder > 0; }),
                      beliefs.end());
    std::vector<Outcome> outcomes;
    double best = minusInfinity;
    for (const Belief& belief : beliefs) {
        weigh(input, belief.times);
        outcomes.push_back(belief.inOrder > 0 ? passBothWays(belief) : passInNoOrder(belief));
        best = std::max(best, outcomes.back().logWeight);
    }
    m_forward.clear();
    m_arriving.clear();
    double all = 0;
    for (const Outcome& outcome : outcomes)
        all += std::exp(outcome.logWeight - best);
    m_probabilities.assign(outcomes.front().probabilities.size(), 0.0);
    for (const Outcome& outcome : outcomes) {
        const double share = std::exp(outcome.logWeight - best) / all;
        for (size_t c = 0; c < m_probabilities.size(); ++c)
            m_probabilities[c] += share * outcome.probabilities[c];
    }
}

// Without an order the places do not matter: one number in place of a row.
Alignment::Outcome Alignment::passInNoOrder(const Belief& belief) const
{
    Outcome outcome;
    std::vector<double> forward(m_videos + 1, minusInfinity); // logarithms
    std::vector<double> backward(m_videos + 1, minusInfinity);
    const auto add = [](double& sum, double what) {
        const double larger = std::max(sum, what);
        if (larger > minusInfinity)
            sum = larger + std::log1p(std::exp(std::min(sum, what) - larger));
    };
    const double unpaired = std::log(videoHasNoLog);
    const auto pairedLog = [&](const FlightSegment& segment) {
        return std::log((1 - videoHasNoLog) * strayFit(segment, belief));
    };
    forward[0] = 0;
    for (size_t after = 1; after <= m_videos; ++after) {
        add(forward[after], forward[after - 1] + unpaired);
        for (const size_t s : m_endingAt[after])
            add(forward[after],
                forward[static_cast<size_t>(m_segments[s].first)] + pairedLog(m_segments[s]));
    }
    backward[m_videos] = 0;
    for (size_t video = m_videos; video-- > 0;) {
        add(backward[video], backward[video + 1] + unpaired);
        for (const size_t s : m_startingAt[video])
            add(backward[video], backward[video + static_cast<size_t>(m_segments[s].count)] +
                                     pairedLog(m_segments[s]));
    }
    outcome.logWeight = forward[m_videos] + std::log(belief.prior);
    for (const FlightSegment& segment : m_segments) {
        const auto first = static_cast<size_t>(segment.first);
        const double around =
            std::exp(forward[first] + backward[first + static_cast<size_t>(segment.count)] -
                     forward[m_videos]) *
            (1 - videoHasNoLog) * belief.stray / static_cast<double>(m_recordings);
        for (const SegmentCandidate& candidate : segment.candidates)
            outcome.probabilities.push_back(around * candidate.fit);
    }
    return outcome;
}

std::vector<std::vector<AlignmentClaim>> Alignment::claims() const
{
    std::vector<std::vector<AlignmentClaim>> claims(m_videos);
    if (m_segments.empty())
        return claims;
    std::vector<double> claimed(m_recordings, 0.0);
    size_t c = 0;
    for (const FlightSegment& segment : m_segments)
        for (const SegmentCandidate& candidate : segment.candidates)
            claimed[static_cast<size_t>(candidate.recording)] += m_probabilities[c++];
    c = 0;
    for (const FlightSegment& segment : m_segments) {
        for (const SegmentCandidate& candidate : segment.candidates) {
            const double share = std::max(1.0, claimed[static_cast<size_t>(candidate.recording)]);
            const AlignmentClaim claim{candidate.recording, segment.first, segment.count,
                                       m_probabilities[c++] / share, segment.lacksFiles};
            for (int part = 0; part < segment.count; ++part)
                claims[static_cast<size_t>(segment.first + part)].push_back(claim);
        }
    }
    return claims;
}

} // namespace

std::vector<std::vector<AlignmentClaim>> alignFlights(const AlignmentInput& input)
{
    Alignment alignment(input);
    alignment.run(input);
    return alignment.claims();
}

} // namespace corv
