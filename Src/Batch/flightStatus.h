#pragma once

#include "Base/Failure.h"

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <utility>

namespace corv {

/// A step of a flight that failed, and why.
using StepFailure = std::pair<QString, Failure>;

// The lines that the work on a flight writes to the process that started it. Each is one JSON
// object with "event" and "flight".

/// {"event":"progress","flight","step","done","total"}; a total of 0 is unknown.
QJsonObject progressEvent(const QString& flight, const QString& step, qint64 done, qint64 total);

/// {"event":"finished","flight","status","failures":[{"step","kind","message"}],"remarks":[]}.
/// "status" is "done", or "failed" where there are failures; `doneSteps` above 0 makes that
/// "partial". Remarks are sentences that change no status.
QJsonObject finishedEvent(const QString& flight, const QList<StepFailure>& failures,
                          int doneSteps = 0, const QStringList& remarks = {});

/// The name of a kind of failure in scripts, such as "noRoom".
QString kindName(Failure::Kind kind);

} // namespace corv
