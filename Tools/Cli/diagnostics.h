#pragma once

#include <QString>

namespace corv::cli {

/// Keeps the diagnostics of the libraries off standard error, unless `verbose`, and remembers the
/// last error. Once, at the start.
void installDiagnostics(bool verbose);

/// What the last error said, without the word itself; empty if there was none. It is returned once.
QString lastError();

/// The same, or `otherwise` if there was none.
QString lastErrorOr(const QString& otherwise);

} // namespace corv::cli
