#pragma once

#include <QString>

namespace corv::cli {

/// Keeps the diagnostics of the libraries off standard error, unless `verbose`, and remembers the
/// last that told of an error. Once, at the start.
void installDiagnostics(bool verbose);

/// What the last error said, without the word itself; empty if there was none.
QString lastError();

} // namespace corv::cli
