#pragma once

#include <QByteArray>
#include <random>

namespace corv::test {

/// What kind of log `makeRandomLog` makes.
enum class RandomLogKind {
    Whole,   ///< every packet is good
    Damaged, ///< some have wrong ids, sizes or checksums; noise and sync bytes between; a cut tail
    Hostile  ///< damaged; the description repeats ids, and its sizes are too large, negative or 0
};

/// Makes the bytes of a small log. Equal states of `random` give equal logs. The description is
/// well-formed XML, also in a hostile one.
QByteArray makeRandomLog(std::mt19937& random, RandomLogKind kind);

} // namespace corv::test
