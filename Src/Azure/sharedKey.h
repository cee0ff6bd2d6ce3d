#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

/// The arithmetic of the Shared Key scheme of the file share, without any network.
namespace corv::sharedKey {

/// Version of the REST interface, sent and signed.
QString apiVersion();

/// `moment` in UTC in the form of the header "x-ms-date", with English names in every locale.
QString requestDate(const QDateTime& moment);

/// What is signed for the GET of `canonicalisedResource`: the verb, eleven empty standard headers,
/// the two own headers, the resource.
QString stringToSign(const QString& date, const QString& canonicalisedResource);

/// HMAC-SHA256 of the UTF-8 bytes of `text`, in base 64. `accountKey` is in base 64 as well.
QByteArray signature(const QString& text, const QByteArray& accountKey);

} // namespace corv::sharedKey
