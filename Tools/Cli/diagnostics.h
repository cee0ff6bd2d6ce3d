#pragma once

namespace corv::cli {

/// Keeps the diagnostics of the libraries off standard error, unless `verbose`. Once, at the start.
void installDiagnostics(bool verbose);

/// Whether they are shown.
bool showsDiagnostics();

} // namespace corv::cli
