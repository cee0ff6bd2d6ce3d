#pragma once

#include "Base/limits.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QString>
#include <QStringList>
#include <optional>

namespace corv {

/// What the manifest says of the installer beyond its version: nothing, its size, its digest.
struct ExpectedInstaller
{
    /// An installer is held whole in memory until it is written: none may be larger.
    static constexpr qint64 largestBytes = limits::updateInstallerBytes;

    qint64 sizeBytes = -1;  ///< -1: not given
    QByteArray sha256;      ///< 32 bytes; empty: not given
    bool isReadable = true; ///< false: a size or a digest is given that is none

    bool isGiven() const { return sizeBytes >= 0 || !sha256.isEmpty(); }

    /// Why a file of that size and digest is not this installer; empty if it is. `fileSha256` may
    /// be empty where no digest is given.
    QString differenceFrom(qint64 fileSizeBytes, const QByteArray& fileSha256) const;

    /// Why the file of that path is not this installer; empty if it is. A folder or a link is none.
    /// Where there is a digest the whole file is read, which can take seconds.
    QString differenceFromFile(const QString& path) const;
};

/// The manifest of an update channel: comes from outside and is checked before it is followed.
struct UpdateManifest
{
    QString version;
    QString path; ///< the folder of the build on the share
    QStringList notes;
    ExpectedInstaller installer;

    /// Nothing where the version, the path or the notes are missing. Keys that are not known are
    /// passed over.
    static std::optional<UpdateManifest> fromJson(const QJsonDocument& document);

    /// Whether version and path are what they should be: both become parts of paths, here and on
    /// the share.
    bool namesAreSafe() const;
};

} // namespace corv
