#include "Batch/flightStatus.h"

#include <QJsonArray>

namespace corv {

QJsonObject progressEvent(const QString& flight, const QString& step, qint64 done, qint64 total)
{
    return {{QStringLiteral("event"), QStringLiteral("progress")},
            {QStringLiteral("flight"), flight},
            {QStringLiteral("step"), step},
            {QStringLiteral("done"), static_cast<double>(done)},
            {QStringLiteral("total"), static_cast<double>(total)}};
}

QJsonObject finishedEvent(const QString& flight, const QList<StepFailure>& failures, int doneSteps,
                          const QStringList& remarks)
{
    QString status = QStringLiteral("done");
    if (!failures.isEmpty())
        status = doneSteps > 0 ? QStringLiteral("partial") : QStringLiteral("failed");
    QJsonArray list;
    for (const auto& [step, failure] : failures) {
        list.append(QJsonObject{{QStringLiteral("step"), step},
                                {QStringLiteral("kind"), kindName(failure.kind)},
                                {QStringLiteral("message"), failure.sentence}});
    }
    return {{QStringLiteral("event"), QStringLiteral("finished")},
            {QStringLiteral("flight"), flight},
            {QStringLiteral("status"), status},
            {QStringLiteral("failures"), list},
            {QStringLiteral("remarks"), QJsonArray::fromStringList(remarks)}};
}

QString kindName(Failure::Kind kind)
{
    switch (kind) {
    case Failure::Kind::notFound:
        return QStringLiteral("notFound");
    case Failure::Kind::noPermission:
        return QStringLiteral("noPermission");
    case Failure::Kind::notAFile:
        return QStringLiteral("notAFile");
    case Failure::Kind::unreadable:
        return QStringLiteral("unreadable");
    case Failure::Kind::cutShort:
        return QStringLiteral("cutShort");
    case Failure::Kind::notRecognised:
        return QStringLiteral("notRecognised");
    case Failure::Kind::damaged:
        return QStringLiteral("damaged");
    case Failure::Kind::tooLarge:
        return QStringLiteral("tooLarge");
    case Failure::Kind::noMemory:
        return QStringLiteral("noMemory");
    case Failure::Kind::noRoom:
        return QStringLiteral("noRoom");
    case Failure::Kind::notWritable:
        return QStringLiteral("notWritable");
    case Failure::Kind::notPossible:
        return QStringLiteral("notPossible");
    case Failure::Kind::incomplete:
        return QStringLiteral("incomplete");
    case Failure::Kind::cancelled:
        return QStringLiteral("cancelled");
    case Failure::Kind::other:
        break;
    }
    return QStringLiteral("other");
}

} // namespace corv
