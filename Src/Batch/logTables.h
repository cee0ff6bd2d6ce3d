#pragma once

#include "Base/Result.h"
#include "Log/LogFile.h"

#include <QString>
#include <QStringList>
#include <memory>

namespace corv {

/// Writes tables of a log into a folder that exists, a file each, named after the group. Each of
/// `wanted` is "GROUP", a name or an id as "#3", or "GROUP:COLUMN,COLUMN"; `rateHz` is the most
/// rows a second, 0 for all. All tables that can be made are, whatever the others lack: a failure
/// is that of the first that cannot. Gives the names of the files.
Result<QStringList> writeLogTables(const std::shared_ptr<const LogFile>& log,
                                   const QStringList& wanted, double rateHz, const QString& folder);

} // namespace corv
