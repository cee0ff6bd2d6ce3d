#include "Cli/ReviewProgress.h"

#include "Cli/Command.h"
#include "Cli/terminalText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>
#include <algorithm>
#include <cstdio>

namespace corv::cli {
namespace {

constexpr int barWidth = 20;
constexpr int tickMs = 500;
constexpr qint64 msPerMinute = qint64{60} * 1000;
constexpr qint64 minutesPerHour = 60;

QString text(const QJsonObject& object, const char* key)
{
    return object.value(QLatin1String(key)).toString();
}

QString leftText(qint64 ms)
{
    const qint64 minutes = (ms + msPerMinute / 2) / msPerMinute;
    if (minutes < 1)
        return QStringLiteral("less than a minute left");
    if (minutes < minutesPerHour)
        return QStringLiteral("%1 min left").arg(minutes);
    return QStringLiteral("%1 h %2 min left")
        .arg(minutes / minutesPerHour)
        .arg(minutes % minutesPerHour);
}

} // namespace

ReviewProgress::ReviewProgress(const QList<FlightJob>& jobs, bool writesVideo)
    : m_line(stdout), m_flightCount(jobs.size()), m_estimate(jobs, writesVideo)
{
    m_clock.start();
    if (!m_line.isTerminal())
        return;
    m_tick.callOnTimeout([this] { paint(); });
    m_tick.start(tickMs);
}

ReviewProgress::~ReviewProgress()
{
    m_line.printAbove(endings());
}

void ReviewProgress::show(const QJsonObject& event)
{
    if (!m_line.isTerminal()) {
        const QByteArray text = printedJson(QJsonDocument(event), QJsonDocument::Compact) + '\n';
        std::fputs(text.constData(), stdout);
        std::fflush(stdout);
        return;
    }
    m_estimate.take(event, m_clock.elapsed());
    const QString flight = text(event, "flight");
    if (text(event, "event") == QLatin1String("finished")) {
        ++m_finished;
        ++m_endings[text(event, "status")];
        m_running.remove(flight);
        showSentences(event);
    } else {
        QString step = text(event, "step");
        const int total = event.value(QLatin1String("total")).toInt();
        if (total > 0)
            step +=
                QStringLiteral(" %1/%2").arg(event.value(QLatin1String("done")).toInt()).arg(total);
        m_running[flight] = step;
    }
    paint();
}

void ReviewProgress::showSentences(const QJsonObject& event)
{
    for (const QJsonValue value : event.value(QLatin1String("failures")).toArray()) {
        const QJsonObject failure = value.toObject();
        m_line.printAbove(
            QStringLiteral("%1, %2: %3")
                .arg(text(event, "flight"), text(failure, "step"), text(failure, "message")));
    }
    for (const QJsonValue value : event.value(QLatin1String("remarks")).toArray())
        m_line.printAbove(
            QStringLiteral("%1, remark: %2").arg(text(event, "flight"), value.toString()));
}

void ReviewProgress::paint()
{
    m_line.show(line(m_line.columns()));
}

QString ReviewProgress::line(int columns) const
{
    const int filled = static_cast<int>(barWidth * m_estimate.share());
    QString text = QStringLiteral("[%1] %2 of %3 flights")
                       .arg(QString(filled, QLatin1Char('#')).leftJustified(barWidth))
                       .arg(m_finished)
                       .arg(m_flightCount);
    if (m_finished > 0) {
        const double minutes = static_cast<double>(m_clock.elapsed()) / msPerMinute;
        text +=
            QStringLiteral(", %1 a minute").arg(m_finished / std::max(minutes, 0.001), 0, 'f', 1);
    }
    if (const std::optional<qint64> leftMs = m_estimate.leftMs(m_clock.elapsed()))
        text += QStringLiteral(", ") + leftText(*leftMs);
    if (m_running.isEmpty())
        return text;
    QStringList flights = m_running.keys();
    flights.sort();
    QStringList steps;
    QStringList named;
    for (const QString& flight : qAsConst(flights)) {
        steps << m_running[flight];
        named << flight + QStringLiteral(": ") + m_running[flight];
    }
    const QString whole = text + QStringLiteral("; ") + named.join(QStringLiteral(", "));
    // Where the names do not fit, what is being done says more than the start of one.
    return columnsOf(whole) <= columns
               ? whole
               : text + QStringLiteral("; ") + steps.join(QStringLiteral(", "));
}

QString ReviewProgress::endings() const
{
    QStringList counts;
    for (const auto& [status, words] : {std::pair{"done", "done"}, std::pair{"partial", "in part"},
                                        std::pair{"failed", "failed"}})
        if (const int count = m_endings.value(QLatin1String(status)))
            counts << QStringLiteral("%1 %2").arg(count).arg(QLatin1String(words));
    const QString flights = m_flightCount == 1 ? QStringLiteral("1 flight")
                                               : QStringLiteral("%1 flights").arg(m_flightCount);
    return counts.isEmpty() ? flights
                            : flights + QStringLiteral(": ") + counts.join(QStringLiteral(", "));
}

} // namespace corv::cli
