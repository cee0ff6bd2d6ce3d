#pragma once

#include "Base/Failure.h"
#include "Cli/OpenLog.h"

#include <QJsonObject>
#include <QString>

namespace corv::cli {

// What the log commands print, for people and as JSON. The keys are described in Docs/cli.md.

QJsonObject logJson(const SurveyedLog& log);
QJsonObject failureJson(const QString& path, const Failure& failure);

/// With `named`, the text begins with the file's name, as one of several.
QString logText(const SurveyedLog& log, bool named);

/// A log tied to a video of some length, and the naming of that flight.
struct SyncedLog
{
    LogSyncResult match;
    FlightNamingEvent naming;
};

SyncedLog syncedLog(const OpenLog& open, int durationMs);
QJsonObject syncJson(const SyncedLog& synced);
QString syncText(const SyncedLog& synced);

} // namespace corv::cli
