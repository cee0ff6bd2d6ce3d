#pragma once

#include <QByteArray>
#include <random>

namespace corv::test {

/// What kind of log `makeRandomLog` makes.
enum class RandomLogKind {
    Whole,   ///< every packet good
    Damaged, ///< wrong ids, sizes and checksums, noise, stray sync bytes, a cut tail
    Hostile  ///< damaged, under a description that repeats, wraps, is negative or empty
};

/// A small log, the same for the same state of `random`. Its description is well-formed XML.
QByteArray makeRandomLog(std::mt19937& random, RandomLogKind kind);

} // namespace corv::test
