#pragma once

#include <QDateTime>
#include <QString>

/// The names and texts of the update protocol. No state; any thread.
namespace corv::updateNames {

/// The channel that a value of the environment variable names: "official", "preview" and "dev"
/// name themselves; an unset one means "official"; anything else is warned about and "official".
QString channelOf(const QString& value);

/// "x64" or "x86" for a processor architecture; an unknown one is returned as it is, with a
/// warning.
QString flavourOf(const QString& architecture);

/// Name of the installer of a version for a flavour.
QString installerFileName(const QString& version, const QString& flavour);

/// Paths on the share.
QString manifestPath(const QString& channel);
QString installerPath(const QString& buildFolder, const QString& version, const QString& fileName);

/// Whether a text of the manifest may be one element of a file name.
bool isSafeFileElement(const QString& text);

/// Whether a text is four numbers joined by ".", each of nine digits at most.
bool isVersion(const QString& text);

/// Whether a text of the manifest can be a folder on the share: no way up, no
/// root, and nothing that an address would read as an escape, a query or a
/// fragment.
bool isSafeSharePath(const QString& text);

/// A moment as the remembered setting holds it, in UTC with English names whatever the machine's
/// language, and back: an invalid moment for a text of any other form.
QString notificationText(const QDateTime& moment);
QDateTime notificationMoment(const QString& text);

} // namespace corv::updateNames
