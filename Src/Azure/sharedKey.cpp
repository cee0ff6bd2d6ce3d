#include "Azure/sharedKey.h"

#include <QCryptographicHash>
#include <QLocale>
#include <QMessageAuthenticationCode>

namespace corv::sharedKey {

QString apiVersion()
{
    return QStringLiteral("2017-07-29");
}

QString requestDate(const QDateTime& moment)
{
    const QLocale english(QLocale::English, QLocale::UnitedStates);
    return english.toString(moment.toUTC(), QStringLiteral("ddd, dd MMM yyyy HH:mm:ss")) +
           QStringLiteral(" GMT");
}

QString stringToSign(const QString& date, const QString& canonicalisedResource)
{
    return QStringLiteral("GET\n\n\n\n\n\n\n\n\n\n\n\nx-ms-date:%1\nx-ms-version:%2\n%3")
        .arg(date, apiVersion(), canonicalisedResource);
}

QByteArray signature(const QString& text, const QByteArray& accountKey)
{
    return QMessageAuthenticationCode::hash(text.toUtf8(), QByteArray::fromBase64(accountKey),
                                            QCryptographicHash::Sha256)
        .toBase64();
}

} // namespace corv::sharedKey
