#pragma once

#include "Cli/Command.h"
#include "Review/OpenFlight.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace corv::cli {

inline const QString thermalOption = QStringLiteral("thermal");

/// Opens the one flight that the line names, if `out` is none of its files, and shows the thermal
/// overlay, the instruments and the colour bar where the line asks for them.
ExitStatus openFlight(OpenFlight& flight, const QCommandLineParser& line, const QString& out);

/// The same for commands that save pictures.
ExitStatus openForPictures(OpenFlight& flight, const QCommandLineParser& line, const QString& out);

/// The times of all points of interest, in milliseconds.
QList<int> positionsOfPois(OpenFlight& flight);

/// Pictures of these times in a folder, named as a series from 0.
QList<PictureFile> numbered(const QList<int>& positionsMs, const QString& folder,
                            const QString& prefix);

/// Reports how the job ended that wrote something out of the flight last, and what else is to be
/// known of it, and gives the status for that `result`.
ExitStatus showResult(const Status& result, const OpenFlight& flight);

} // namespace corv::cli
