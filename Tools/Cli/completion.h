#pragma once

#include "Cli/Command.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <vector>

namespace corv::cli {

/// The shells that completion() has a script for.
QStringList completionShells();

/// The script that offers these commands and their options to a shell; empty for a shell that it
/// does not know. `common` are the options of all commands, `leading` those of the tool itself.
QByteArray completion(const QString& shell, const std::vector<Command>& commands,
                      const QList<QCommandLineOption>& common,
                      const QList<QCommandLineOption>& leading);

} // namespace corv::cli
