#include "Cli/ReviewProgress.h"

#include "Cli/Command.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>
#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace corv::cli {
namespace {

constexpr int barWidth = 20;
constexpr int lineWidth = 100;
constexpr qint64 msPerMinute = 60 * 1000;

QString text(const QJsonObject& object, const char* key)
{
    return object.value(QLatin1String(key)).toString();
}

// Names come from logs and cards; what they hold must not steer a terminal.
QString printable(QString name)
{
    for (QChar& character : name)
        if (!character.isPrint())
            character = QLatin1Char('?');
    return name;
}

} // namespace

ReviewProgress::ReviewProgress(int flightCount)
    : m_isTerminal(isatty(STDOUT_FILENO) == 1), m_flightCount(flightCount)
{
    m_clock.start();
}

ReviewProgress::~ReviewProgress()
{
    if (m_isTerminal)
        std::fprintf(stdout, "\r%*s\r", lineWidth, "");
    std::fflush(stdout);
}

void ReviewProgress::show(const QJsonObject& event)
{
    if (!m_isTerminal) {
        std::fputs(QJsonDocument(event).toJson(QJsonDocument::Compact).constData(), stdout);
        std::fputc('\n', stdout);
        std::fflush(stdout);
        return;
    }
    const QString flight = text(event, "flight");
    if (text(event, "event") == QLatin1String("finished")) {
        ++m_finished;
        m_running.remove(flight);
        showFailures(event);
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

void ReviewProgress::showFailures(const QJsonObject& event) const
{
    for (const QJsonValue& value : event.value(QLatin1String("failures")).toArray()) {
        const QJsonObject failure = value.toObject();
        const QString line =
            QStringLiteral("%1, %2: %3")
                .arg(text(event, "flight"), text(failure, "step"), text(failure, "message"));
        std::fprintf(stdout, "\r%*s\r%s\n", lineWidth, "",
                     printable(line).toLocal8Bit().constData());
    }
}

void ReviewProgress::paint()
{
    const QByteArray bytes = printable(line()).left(lineWidth).toLocal8Bit();
    std::fprintf(stdout, "\r%*s\r%s", lineWidth, "", bytes.constData());
    std::fflush(stdout);
}

QString ReviewProgress::line() const
{
    const int filled = m_flightCount > 0 ? barWidth * m_finished / m_flightCount : barWidth;
    QString text = QStringLiteral("[%1] %2 of %3 flights")
                       .arg(QString(filled, QLatin1Char('#')).leftJustified(barWidth))
                       .arg(m_finished)
                       .arg(m_flightCount);
    if (m_finished > 0) {
        const double minutes = static_cast<double>(m_clock.elapsed()) / msPerMinute;
        const double rate = m_finished / std::max(minutes, 0.001);
        text += QStringLiteral(", %1 a minute, %2 min left")
                    .arg(rate, 0, 'f', 1)
                    .arg((m_flightCount - m_finished) / rate, 0, 'f', 0);
    }
    QStringList running;
    for (auto it = m_running.begin(); it != m_running.end(); ++it)
        running << it.key() + QStringLiteral(": ") + it.value();
    running.sort();
    return running.isEmpty() ? text
                             : text + QStringLiteral("; ") + running.join(QLatin1String(", "));
}

} // namespace corv::cli
