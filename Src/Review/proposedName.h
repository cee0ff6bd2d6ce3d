#pragma once

#include "Review/ReviewProperties.h"

#include <QDate>
#include <QString>
#include <QTime>

namespace corv {

/// The name, without a suffix, that is proposed for what is written out of a flight:
/// "<mission>_<flight>_<number>_<date>", or "<name of the video>_<date>" where the flight has no
/// names. It has only characters that every file system takes and no URL escapes. An invalid date
/// is left out.
QString proposedName(const ReviewProperties& properties, const QString& videoPath, QDate date);

/// The same for one picture, with its place in the video: "…_00m12.345s".
QString proposedFrameName(const QString& flightName, QTime position);

} // namespace corv
