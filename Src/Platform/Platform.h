#pragma once

#include <QString>
#include <QtGlobal>

/// What differs by operating system: one header, and one file per system behind it.
namespace corv::platform {

/// Installed memory in kilobytes, 0 where the system does not tell. Any thread.
quint64 installedMemoryKb();

/// The long form of a path given on the command line; the path itself where there are no others.
QString longPath(const QString& path);

} // namespace corv::platform
