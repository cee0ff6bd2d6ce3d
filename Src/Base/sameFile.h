#pragma once

#include <QString>
#include <QStringList>

namespace corv {

/// True if `target` is one of `files` under any name: relative, or through a hard or symbolic link.
/// False for a file that does not exist. Any thread; asks the file system.
bool isOneOfFiles(const QString& target, const QStringList& files);

} // namespace corv
