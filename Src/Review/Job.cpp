#include "Review/Job.h"

#include <QFileInfo>
#include <QLocale>
#include <utility>

namespace corv {
namespace {

QString textOfSeconds(qint64 seconds)
{
    if (seconds < 60)
        return Job::tr("%1 s").arg(seconds);
    if (seconds < 3600)
        return Job::tr("%1 min %2 s").arg(seconds / 60).arg(seconds % 60);
    return Job::tr("%1 h %2 min").arg(seconds / 3600).arg(seconds / 60 % 60);
}

} // namespace

QString textOfBytes(qint64 bytes)
{
    constexpr double step = 1000.0;
    const char* const units[] = {"kB", "MB", "GB", "TB", "PB"};
    if (bytes < static_cast<qint64>(step))
        return Job::tr("%1 bytes").arg(bytes);
    double value = static_cast<double>(bytes) / step;
    size_t unit = 0;
    while (value >= step && unit + 1 < std::size(units)) {
        value /= step;
        ++unit;
    }
    return QStringLiteral("%1 %2").arg(QLocale::c().toString(value, 'f', value < 10 ? 1 : 0),
                                       QLatin1String(units[unit]));
}

QString textOfTransfer(qint64 doneBytes, qint64 totalBytes, qint64 elapsedMs)
{
    constexpr qint64 settledMs = 1000;
    const QString amount = Job::tr("%1 of %2").arg(textOfBytes(doneBytes), textOfBytes(totalBytes));
    const qint64 bytesPerSecond = elapsedMs > 0 ? doneBytes * 1000 / elapsedMs : 0;
    if (elapsedMs < settledMs || bytesPerSecond == 0)
        return amount;
    return Job::tr("%1, %2/s, %3 left")
        .arg(amount, textOfBytes(bytesPerSecond),
             textOfSeconds((totalBytes - doneBytes) / bytesPerSecond));
}

QString textOfSteps(qint64 done, qint64 total, qint64 elapsedMs)
{
    constexpr qint64 settledMs = 2000;
    const QString amount = Job::tr("%1 of %2").arg(done).arg(total);
    if (elapsedMs < settledMs || done <= 0 || total < done)
        return amount;
    const double perSecond = static_cast<double>(done) * 1000 / static_cast<double>(elapsedMs);
    const double leftSeconds = static_cast<double>(total - done) / perSecond;
    return Job::tr("%1, %2/s, %3 left")
        .arg(amount, QLocale::c().toString(perSecond, 'f', perSecond < 10 ? 1 : 0),
             textOfSeconds(static_cast<qint64>(leftSeconds)));
}

Job::Job(Kind kind, const QString& title, Unit unit, std::function<void()> cancel,
         const QString& target, QObject* parent)
    : QObject(parent), m_kind(kind), m_title(title), m_target(target), m_unit(unit),
      m_cancel(std::move(cancel))
{
    m_clock.start();
}

QString Job::resultFolder() const
{
    if (m_target.isEmpty() || isRunning())
        return {};
    // The pictures of a series that were saved stay, however it ends.
    if (m_kind == Kind::series)
        return m_target;
    const bool isWritten =
        m_state == Succeeded || (m_failure && m_failure->kind == Failure::Kind::incomplete);
    return isWritten ? QFileInfo(m_target).absolutePath() : QString();
}

QString Job::progressText() const
{
    if (m_total <= 0)
        return {};
    if (m_unit == Unit::bytes)
        return textOfTransfer(m_done, m_total, m_clock.elapsed());
    // The files of a search are of all lengths: their number says nothing about the time left.
    return textOfSteps(m_done, m_total, isWriting() ? m_clock.elapsed() : 0);
}

void Job::cancel()
{
    if (!isRunning() || !m_cancel || std::exchange(m_isCancelAsked, true))
        return;
    m_cancel();
}

void Job::report(qint64 done, qint64 total)
{
    if (!isRunning())
        return;
    m_done = done;
    m_total = total;
    emit progressChanged();
}

void Job::succeed(const QString& resultText)
{
    if (!isRunning())
        return;
    m_resultText = resultText;
    end(Succeeded);
}

void Job::fail(const Failure& failure)
{
    if (!isRunning())
        return;
    m_failure = failure;
    end(failure.kind == Failure::Kind::cancelled ? Cancelled : Failed);
}

void Job::end(State state)
{
    m_state = state;
    m_cancel = nullptr;
    emit stateChanged();
}

} // namespace corv
