#pragma once

#include "Base/Failure.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <utility>

namespace corv::cli {

/// The logs that arguments name.
struct LogFiles
{
    QStringList paths;
    QList<std::pair<QString, Failure>> unreadFolders; ///< which cannot be listed, and why
    bool isOneFile = false;                           ///< one argument, which is no folder
};

/// Files, and all logs in folders and the folders below them, those of a folder sorted. Also those
/// that cannot be read: that is said of each. Hidden files are left out, and links to folders.
LogFiles logFilesOf(const QStringList& arguments);

} // namespace corv::cli
