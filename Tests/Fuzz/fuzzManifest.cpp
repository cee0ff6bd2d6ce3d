#include "ScratchFile.h"
#include "Update/UpdateManifest.h"
#include "Update/updateNames.h"

#include <QUrl>
#include <cstdlib>

/// A manifest of any content is followed or refused, and one that is followed leads nowhere but
/// into the folder of the builds.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace corv;
    static const fuzz::ScratchFile quiet(QStringLiteral("unused"));
    const QByteArray text(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const auto manifest = UpdateManifest::fromJson(QJsonDocument::fromJson(text));
    if (!manifest || !manifest->namesAreSafe() || !manifest->installer.isReadable)
        return 0;
    const QString file = updateNames::installerFileName(manifest->version, QStringLiteral("x64"));
    if (!updateNames::isSafeFileElement(file))
        std::abort();
    const QUrl url(QStringLiteral("https://share.example/s/") +
                       updateNames::installerPath(manifest->path, manifest->version, file),
                   QUrl::TolerantMode);
    const QString path = url.adjusted(QUrl::NormalizePathSegments).path(QUrl::FullyDecoded);
    if (url.hasQuery() || url.hasFragment() || !path.startsWith(QLatin1String("/s/builds/")) ||
        !path.endsWith(file))
        std::abort();
    const ExpectedInstaller& installer = manifest->installer;
    if (installer.differenceFrom(0, {}).isEmpty() ||
        (!installer.sha256.isEmpty() && installer.differenceFrom(1, {}).isEmpty()))
        std::abort();
    return 0;
}
