#pragma once

#include "Base/Failure.h"

#include <QString>

namespace corv {

// The reasons why a log cannot be read, each with a sentence that names the file by its path.

/// Why the file at `path` cannot be opened: it does not exist, the system refuses access, or it is
/// no regular file. `unreadable` where none of these is seen.
Failure logOpenFailure(const QString& path);

/// A file that became shorter while it was read, or whose bytes cannot be read.
Failure logReadFailure(const QString& path, bool cutShort);

/// A description that is no XML. `head` is the beginning of the file, `isComplete` whether the file
/// holds the end of a description, and `fault` what the XML parser says.
Failure logDescriptionFailure(const QString& path, const QByteArray& head, bool isComplete,
                              const QString& fault);

/// The description is longer than `limitBytes`. Where `head`, the beginning of the file, is not
/// that of a log, the failure says instead that the file is no flight log.
Failure logDescriptionTooLarge(const QString& path, const QByteArray& head, qint64 limitBytes);

Failure logNoMemory(const QString& path);
Failure logCancelled(const QString& path);

} // namespace corv
