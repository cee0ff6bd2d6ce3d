#pragma once

#include <QByteArray>
#include <QString>

namespace corv {

/// Where the update share is and what opens it: values of the deployment.
struct CloudShare
{
    /// Address of the share's folder, with a trailing "/". Prefix of every request.
    QString baseUrl;

    /// "/" + account + "/" + share + "/": start of the canonicalised resource.
    QString canonicalisedResourcePrefix;

    /// The storage account's key in base 64. A credential: never logged.
    QByteArray accountKey;

    /// The values that this build was configured with; all empty where it has none, or where its
    /// updater is switched off.
    static CloudShare ofThisBuild();

    /// Whether all values are there.
    bool isConfigured() const;

    /// The account's name, the first element of the resource prefix.
    QString accountName() const;
};

} // namespace corv
