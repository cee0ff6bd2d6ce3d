#pragma once

#include <QtGlobal>
#include <functional>
#include <vector>

namespace corv {

/// Videos and recordings as the alignment sees them, both in the order of their names. Lengths are
/// in milliseconds.
struct AlignmentInput
{
    struct Video
    {
        qint64 lengthMs = -1;         ///< exact; 0 or less if unknown
        bool continuesFlight = false; ///< its name makes it a possible next part of the one before
        bool beginsLater = false; ///< than the one before ends, by the file times; asked while they
                                  ///< are believed
        int missingBefore = -1; ///< numbers between the file before, named alike, and this one; -1
                                ///< if that is named otherwise
    };

    std::vector<Video> videos;
    std::vector<qint64> recordingsMs; ///< from the logged start to the logged stop
    /// Per recording, true if by the names no log is missing between it and the one before. May be
    /// empty.
    std::vector<bool> followsDirectly;

    /// How much better the file times fit if the flight whose last part is `video` is `recording`
    /// than if it is not: above 1 speaks for it. Only asked while times are believed.
    std::function<double(int video, int recording)> timeFit;
    double timesAreKept = 0.7;    ///< how likely that is, before any length is compared
    bool filesAreMissing = false; ///< flights without some of their files are weighed too
};

/// The belief that videos `first` to `first + count - 1`, as the parts of one flight, are one
/// recording.
struct AlignmentClaim
{
    int recording = -1;
    int first = -1;
    int count = 1;
    double probability = 0;
    bool lacksFiles = false; ///< others of the flight are missing; asked by `filesAreMissing`
};

/// For each video, all claims that it is part of. Sequence alignment by dynamic programming over
/// all ways to pair the videos with recordings of agreeing length, either in the order of names,
/// with gaps on both sides and few jumps, or in no order; either with believed times or without.
/// A claim's probability is the share of those ways that contain it, weighed by how well they fit.
/// No recording is shared out by more than its whole. Where `filesAreMissing`, a flight may lack
/// files: those that its numbers leave out, of the full length that the files of the card show.
/// Pure; any thread.
std::vector<std::vector<AlignmentClaim>> alignFlights(const AlignmentInput& input);

} // namespace corv
