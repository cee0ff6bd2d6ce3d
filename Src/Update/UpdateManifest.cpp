#include "Update/UpdateManifest.h"

#include "Update/updateNames.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <cmath>

namespace corv {
namespace {

constexpr int digestBytes = 32;

// The bytes of 64 hexadecimal digits; empty for any other text.
QByteArray digestFromText(const QString& text)
{
    const QByteArray digits = text.toLatin1().toLower();
    const QByteArray digest = QByteArray::fromHex(digits);
    return digest.size() == digestBytes && digest.toHex() == digits ? digest : QByteArray();
}

ExpectedInstaller installerOf(const QJsonObject& manifest)
{
    ExpectedInstaller installer;
    const QJsonValue size = manifest[QStringLiteral("size")];
    if (!size.isUndefined()) {
        const double bytes = size.toDouble(-1);
        if (bytes >= 1 && bytes <= double(ExpectedInstaller::largestBytes) &&
            bytes == std::floor(bytes))
            installer.sizeBytes = static_cast<qint64>(bytes);
        else
            installer.isReadable = false;
    }
    const QJsonValue digest = manifest[QStringLiteral("sha256")];
    if (!digest.isUndefined()) {
        installer.sha256 = digestFromText(digest.toString());
        if (installer.sha256.isEmpty())
            installer.isReadable = false;
    }
    return installer;
}

} // namespace

QString ExpectedInstaller::differenceFrom(qint64 fileSizeBytes, const QByteArray& fileSha256) const
{
    if (fileSizeBytes == 0)
        return QStringLiteral("it is empty");
    if (sizeBytes >= 0 && sizeBytes != fileSizeBytes)
        return QStringLiteral("it has %1 bytes instead of %2").arg(fileSizeBytes).arg(sizeBytes);
    if (!sha256.isEmpty() && sha256 != fileSha256)
        return QStringLiteral("its digest is not the one of the manifest");
    return {};
}

QString ExpectedInstaller::differenceFromFile(const QString& path) const
{
    const QFileInfo info(path);
    if (!info.isFile() || info.isSymLink())
        return QStringLiteral("it is no file");
    QByteArray fileSha256;
    if (!sha256.isEmpty()) {
        QFile file(path);
        QCryptographicHash hash(QCryptographicHash::Sha256);
        if (file.open(QIODevice::ReadOnly) && hash.addData(&file))
            fileSha256 = hash.result();
    }
    return differenceFrom(info.size(), fileSha256);
}

std::optional<UpdateManifest> UpdateManifest::fromJson(const QJsonDocument& document)
{
    const QJsonObject object = document.object();
    const QJsonValue version = object[QStringLiteral("version")];
    const QJsonValue path = object[QStringLiteral("path")];
    const QJsonValue notes = object[QStringLiteral("notes")];
    if (version.isUndefined() || path.isUndefined() || notes.isUndefined())
        return std::nullopt;
    UpdateManifest manifest;
    manifest.version = version.toString();
    manifest.path = path.toString();
    for (const QJsonValue note : notes.toArray())
        manifest.notes << note.toString();
    manifest.installer = installerOf(object);
    return manifest;
}

bool UpdateManifest::namesAreSafe() const
{
    return updateNames::isVersion(version) && updateNames::isSafeSharePath(path);
}

} // namespace corv
