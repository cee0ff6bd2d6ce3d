#pragma once

#include "Discovery/flightPairing.h"

#include <vector>

namespace corv::test {

/// A day of flights as it may lie in a folder, with the answer.
struct GeneratedCard
{
    std::vector<PairingVideo> videos;
    std::vector<PairingLog> logs;
    std::vector<int> truth;  ///< per video: position of its log, -1 if that is missing
    std::vector<bool> whole; ///< per video: all parts of its flight are there
};

/// How a card came to its folder. Each is drawn anew for every card.
struct CardHistory
{
    bool timesLost = false;    ///< every file has the time of its copy
    bool alikeLengths = false; ///< all flights of 10 to 12 minutes, else 2 to 20
    bool filesMissing = false; ///< a fifth of the files
    bool renamed = false;      ///< some videos and logs
    bool inParts = false;      ///< long flights in several files
    int cards = 1;             ///< in one folder
};

/// The card of that number; the same for the same seed, on every machine.
GeneratedCard generateCard(unsigned seed, const CardHistory& history);

/// A history drawn from all there are.
CardHistory drawHistory(unsigned seed);

} // namespace corv::test
