#pragma once

#include <QString>
#include <QStringList>

namespace corv {

/// The files of one flight, from the given one on. A recorder splits a long video into files whose
/// names begin with "CORV" and end in a number of four digits: those that follow without a missing
/// number belong to it. Empty if the file does not exist.
QStringList expandVideoSequence(const QString& path);

/// The name of a picture of a series: "Frame" and 7 give "Frame007.jpg", 1000 "Frame1000.jpg". The
/// suffix, which picks the format of the file, is decided here alone.
QString seriesFileName(const QString& prefix, int number);

/// Another name beside `fileName`: "shot.jpg" gives "shot(1).jpg", and that "shot(2).jpg".
QString differentFileName(const QString& fileName);

} // namespace corv
