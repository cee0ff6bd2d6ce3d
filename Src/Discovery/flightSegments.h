#pragma once

#include "Discovery/flightAlignment.h"

#include <QtGlobal>
#include <cstddef>
#include <vector>

namespace corv {

inline constexpr size_t mostParts = 40; ///< files of one flight; a day of recording has fewer

/// A recording that a flight may be. A fit is how much better the lengths, and where they are
/// believed the times, agree than those of any flight of the card would.
struct SegmentCandidate
{
    int recording;
    double lengthFit;
    double fit; ///< with the times, once these are weighed
};

/// Videos that may be one flight, with the recordings of its length by their positions.
struct FlightSegment
{
    int first;
    int count;
    std::vector<SegmentCandidate> candidates;
    bool lacksFiles = false;
};

/// True if a video of that length can be that recording: they differ by less than three seconds.
bool lengthsAgree(qint64 videoMs, qint64 recordingMs);

/// All flights that the names and lengths allow, in the order of their first videos; those of which
/// files are missing after the others. Pure; any thread.
std::vector<FlightSegment> findSegments(const AlignmentInput& input);

} // namespace corv
