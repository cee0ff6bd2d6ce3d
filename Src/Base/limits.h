#pragma once

#include <QtGlobal>

/// The largest inputs that the program reads. Real files are far smaller; what is larger was made
/// to exhaust the memory, or is something else. Above a limit the input is refused, with a warning.
namespace corv::limits {

constexpr qint64 kib = 1024;
constexpr qint64 mib = 1024 * kib;
constexpr qint64 gib = 1024 * mib;

constexpr qint64 projectBytes = 16 * mib;
constexpr int poisInProject = 100'000;

constexpr qint64 logDescriptionBytes = 16 * mib; ///< a real one has some hundred kilobytes

constexpr int templateParts = 2000;
constexpr qint64 templateUnpackedBytes = 64 * mib;
constexpr int templateDocumentBytes = 16 * mib;
constexpr qint64 reportDocumentBytes = 256 * mib; ///< no word processor opens a larger one

constexpr qint64 updateManifestBytes = 1 * mib;
constexpr qint64 updateInstallerBytes = 1 * gib;

} // namespace corv::limits
