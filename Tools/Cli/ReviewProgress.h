#pragma once

#include "Batch/FlightJob.h"
#include "Batch/WorkEstimate.h"
#include "Cli/TerminalLine.h"

#include <QElapsedTimer>
#include <QHash>
#include <QJsonObject>
#include <QString>
#include <QTimer>

namespace corv::cli {

/// How a review of many flights is going: on a terminal one line, as wide as that, which is written
/// over, with a bar, the rate and the time left, and at the end how many flights ended in which
/// way; elsewhere each event as a line of JSON on standard output.
class ReviewProgress
{
public:
    ReviewProgress(const QList<FlightJob>& jobs, bool writesVideo);

    /// Prints how the flights ended, on a terminal.
    ~ReviewProgress();
    ReviewProgress(const ReviewProgress&) = delete;
    ReviewProgress& operator=(const ReviewProgress&) = delete;

    void show(const QJsonObject& event);

private:
    void showSentences(const QJsonObject& event);
    void paint();
    QString line(int columns) const;
    QString endings() const;

    TerminalLine m_line;
    const int m_flightCount;
    WorkEstimate m_estimate;
    int m_finished = 0;
    QHash<QString, int> m_endings;     ///< how many flights ended with which status
    QHash<QString, QString> m_running; ///< flight and what is being done for it
    QElapsedTimer m_clock;
    QTimer m_tick; ///< the time left and the width of the terminal change without an event
};

} // namespace corv::cli
