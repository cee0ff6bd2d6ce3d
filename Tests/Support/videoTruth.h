#pragma once

#include <QByteArray>
#include <QSize>
#include <QString>
#include <QStringList>
#include <vector>

namespace corv::test {

/// What another program reads from a video file: the judge of what ours reads.
/// The times of all frames in milliseconds from the first, in the order in which they are shown;
/// not a number where that program knows none.
std::vector<double> trueTimes(const QString& file);

/// The length in milliseconds: the time of the last frame and its duration.
double trueLengthMs(const QString& file);

/// The numbers in the pixels of all frames, not turned; `size` as they are stored.
std::vector<int> trueNumbers(const QString& file, QSize size);

/// The output of a program that is run to its end.
QByteArray outputOf(const QString& program, const QStringList& arguments);

} // namespace corv::test
