#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QJsonObject>
#include <QString>

namespace corv::cli {

/// How a review of many flights is going: on a terminal one line that is written over, with a bar,
/// the rate and the time left; elsewhere each event as a line of JSON on standard output.
class ReviewProgress
{
public:
    explicit ReviewProgress(int flightCount);
    ~ReviewProgress();
    ReviewProgress(const ReviewProgress&) = delete;
    ReviewProgress& operator=(const ReviewProgress&) = delete;

    void show(const QJsonObject& event);

private:
    void showFailures(const QJsonObject& event) const;
    void paint();
    QString line() const;

    const bool m_isTerminal;
    const int m_flightCount;
    int m_finished = 0;
    QHash<QString, QString> m_running; ///< flight and what is being done for it
    QElapsedTimer m_clock;
};

} // namespace corv::cli
