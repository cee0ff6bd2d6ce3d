#include "Batch/WorkEstimate.h"

#include <QFileInfo>
#include <algorithm>

namespace corv {
namespace {

/// A step, and the parts of a flight's work that are done when it begins and when it ends.
struct StepShare
{
    const char* step;
    double begin;
    double end;
};

constexpr StepShare kWithoutVideo[] = {{"pictures", 0.05, 0.4},
                                       {"points", 0.4, 0.45},
                                       {"tables", 0.45, 0.5},
                                       {"report", 0.5, 0.7},
                                       {"pdf", 0.7, 1}};

// The video takes nearly all of the time.
constexpr double kBeforeVideo = 0.1;

// What a flight costs apart from its video, in bytes of one.
constexpr double kBytesOfTheRest = 20e6;

// Too little work or time says nothing.
constexpr double kLeastShare = 0.005;
constexpr qint64 kLeastMs = 1500;

double weightOf(const FlightJob& job, bool writesVideo)
{
    if (!writesVideo)
        return 1;
    double bytes = kBytesOfTheRest;
    for (const QString& video : job.videos)
        bytes += static_cast<double>(QFileInfo(video).size());
    return bytes;
}

} // namespace

WorkEstimate::WorkEstimate(const QList<FlightJob>& jobs, bool writesVideo)
    : m_writesVideo(writesVideo)
{
    for (const FlightJob& job : jobs)
        m_flights[job.folder].weight = weightOf(job, writesVideo);
}

void WorkEstimate::take(const QJsonObject& event, qint64 nowMs)
{
    const auto found = m_flights.find(event.value(QLatin1String("flight")).toString());
    if (found == m_flights.end())
        return;
    if (event.value(QLatin1String("event")).toString() == QLatin1String("finished"))
        found->share = 1;
    else
        takeProgress(&*found, event);
    if (found->isWorkedOn && !m_startMs)
        m_startMs = nowMs;
}

void WorkEstimate::takeProgress(Flight* flight, const QJsonObject& event)
{
    const QString step = event.value(QLatin1String("step")).toString();
    const double total = event.value(QLatin1String("total")).toDouble();
    const double done = total > 0 ? event.value(QLatin1String("done")).toDouble() / total : 0;
    const double ofStep = std::clamp(done, 0.0, 1.0);
    const double restEnd = m_writesVideo ? kBeforeVideo : 1;
    std::optional<double> share;
    for (const StepShare& known : kWithoutVideo)
        if (step == QLatin1String(known.step))
            share = restEnd * (known.begin + (known.end - known.begin) * ofStep);
    if (m_writesVideo && step == QLatin1String("video"))
        share = kBeforeVideo + (1 - kBeforeVideo) * ofStep;
    if (!share)
        return;
    flight->isWorkedOn = true;
    flight->share = std::max(flight->share, *share);
}

double WorkEstimate::share() const
{
    double all = 0;
    double done = 0;
    for (const Flight& flight : m_flights) {
        all += flight.weight;
        done += flight.weight * flight.share;
    }
    return all > 0 ? done / all : 1;
}

std::optional<qint64> WorkEstimate::leftMs(qint64 nowMs) const
{
    double left = 0;
    double worked = 0;
    double all = 0;
    for (const Flight& flight : m_flights) {
        all += flight.weight;
        left += flight.weight * (1 - flight.share);
        if (flight.isWorkedOn)
            worked += flight.weight * flight.share;
    }
    const qint64 elapsedMs = m_startMs ? nowMs - *m_startMs : 0;
    if (elapsedMs < kLeastMs || worked < all * kLeastShare)
        return {};
    return static_cast<qint64>(left / worked * static_cast<double>(elapsedMs));
}

} // namespace corv
