#include "Azure/AzureStorage.h"

#include "Azure/sharedKey.h"

#include <QDateTime>
#include <QDebug>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>
#include <limits>
#include <utility>

namespace corv {
namespace {

constexpr int httpOk = 200;

/// What went wrong, empty if nothing did. The network layer takes a redirection, whose body is a
/// page, and an answer without content for successes.
QString errorOf(const QNetworkReply& reply)
{
    if (reply.error() != QNetworkReply::NoError)
        return reply.errorString();
    const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.isValid() && status.toInt() != httpOk)
        return QStringLiteral("the server answered with status %1").arg(status.toInt());
    return {};
}

} // namespace

AzureStorage::AzureStorage(QObject* parent, CloudShare share)
    : QObject(parent), m_manager(this), m_share(std::move(share)),
      m_sizeLimitBytes(std::numeric_limits<qint64>::max())
{
    connect(&m_manager, &QNetworkAccessManager::finished, this, &AzureStorage::finished);
}

void AzureStorage::downloadFile(QString path)
{
    if (path.isEmpty()) {
        qWarning() << "Empty file path";
        return;
    }
    if (path.startsWith(QLatin1Char('/'))) {
        qWarning() << "File path is relative to the Azure storage and it mustn't start with a /";
        return;
    }
    // The resource is signed as it was given, unescaped, while the address is read tolerantly.
    const QString date = sharedKey::requestDate(QDateTime::currentDateTime());
    const QString text = sharedKey::stringToSign(date, m_share.canonicalisedResourcePrefix + path);
    QNetworkRequest request(QUrl(m_share.baseUrl + path, QUrl::TolerantMode));
    request.setRawHeader("Authorization", "SharedKey " + m_share.accountName().toUtf8() + ':' +
                                              sharedKey::signature(text, m_share.accountKey));
    request.setRawHeader("x-ms-date", date.toUtf8());
    request.setRawHeader("x-ms-version", sharedKey::apiVersion().toUtf8());
    m_reply = m_manager.get(request);

    // Looked at with every piece that arrives: what a server promises need not be what it sends.
    const auto keepWithinLimit = [reply = m_reply, limit = m_sizeLimitBytes] {
        const qint64 promised = reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
        if (promised > limit || reply->bytesAvailable() > limit)
            reply->abort();
    };
    connect(m_reply, &QNetworkReply::metaDataChanged, m_reply, keepWithinLimit);
    connect(m_reply, &QNetworkReply::readyRead, m_reply, keepWithinLimit);
}

void AzureStorage::abortCurrentDownload()
{
    if (!m_reply)
        return;
    m_reply->abort();
    m_reply->deleteLater();
    m_reply = nullptr;
}

void AzureStorage::finished(QNetworkReply* reply)
{
    const QUrl url = reply->url();
    const QString error = errorOf(*reply);
    if (!error.isEmpty()) {
        qWarning() << "Download of" << url.toEncoded() << " failed; error:" << error;
        emit downloadError(error);
        return;
    }
    const QString text = url.toString();
    if (text.size() < m_share.baseUrl.size()) {
        qWarning() << "Unexpected URL for downloaded file:" << text;
        return;
    }
    emit fileDownloaded(text.mid(m_share.baseUrl.size()), reply->readAll());
    reply->deleteLater();
    // A download that the signal has just started goes on untracked from here.
    m_reply = nullptr;
}

} // namespace corv
