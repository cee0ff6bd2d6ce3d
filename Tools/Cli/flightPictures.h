#pragma once

#include "Cli/Command.h"
#include "Review/OpenFlight.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace corv::cli {

inline const QString thermalOption = QStringLiteral("thermal");

/// How far a long job is, in a line on standard error if that is a terminal. The line goes with the
/// object.
class ProgressLine
{
public:
    explicit ProgressLine(const char* what);
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine();

    void show(int done, int total);

private:
    const char* m_what;
    const bool m_isOnTerminal;
    int m_shownPercent = -1;
};

/// Opens the one flight that the line names, if `out` is none of its files, and shows the thermal
/// overlay, the instruments and the colour bar where the line asks for them.
ExitStatus openFlight(OpenFlight& flight, const QCommandLineParser& line, const QString& out);

/// The same for commands that save pictures.
ExitStatus openForPictures(OpenFlight& flight, const QCommandLineParser& line, const QString& out);

struct Picture
{
    int timeMs;
    QString file;
};

/// The times of all points of interest, in milliseconds.
QList<int> positionsOfPois(OpenFlight& flight);

/// Pictures of these times in a folder, named as a series from 0.
QList<Picture> numbered(const QList<int>& positionsMs, const QString& folder,
                        const QString& prefix);

/// Why there is no picture.
QString noPictureAt(int timeMs);

/// Fetches all pictures at once, as the window does, and saves each on the thread that makes it.
/// Gives for each what is wrong with it, empty for nothing.
QStringList savePictures(OpenFlight& flight, const QList<Picture>& pictures);

/// What savePictures() gave, in one line; empty if all are saved.
QString failureOf(const QStringList& results);

} // namespace corv::cli
