#include "Azure/AzureStorage.h"

#include "Azure/logCategory.h"
#include "Azure/sharedKey.h"

#include <QDateTime>
#include <QDebug>
#include <QHostAddress>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>
#include <limits>
#include <utility>

namespace corv {
namespace {

constexpr int httpOk = 200;

// Set on a reply that was aborted because it grew past the limit, to that
// limit.
constexpr char passedLimitProperty[] = "passedLimitBytes";

// Set on every reply: whether it must name its length.
constexpr char lengthRequiredProperty[] = "lengthRequired";

// The proxies that the system is configured with; none for the machine itself.
class SystemProxies : public QNetworkProxyFactory
{
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override
    {
        if (QHostAddress(query.peerHostName()).isLoopback())
            return {QNetworkProxy(QNetworkProxy::NoProxy)};
        return systemProxyForQuery(query);
    }
};

// The network layer can take a connection that ends in the middle for the end
// of the file.
QString lengthErrorOf(const QNetworkReply& reply)
{
    const QVariant promised = reply.header(QNetworkRequest::ContentLengthHeader);
    if (!promised.isValid())
        return reply.property(lengthRequiredProperty).toBool()
                   ? QStringLiteral("the server did not give the file's length")
                   : QString();
    if (reply.rawHeader("Content-Length").contains(','))
        return QStringLiteral("the server gave two lengths");
    const qint64 arrived = reply.bytesAvailable();
    if (arrived == promised.toLongLong())
        return {};
    return QStringLiteral("the download broke off after %1 of %2 bytes")
        .arg(arrived)
        .arg(promised.toLongLong());
}

/// What went wrong, empty if nothing did. The network layer takes a redirection, whose body is a
/// page, and an answer without content for successes.
QString errorOf(const QNetworkReply& reply)
{
    const QVariant passedLimit = reply.property(passedLimitProperty);
    if (passedLimit.isValid())
        return QStringLiteral("the file is larger than allowed, which is %1 bytes")
            .arg(passedLimit.toLongLong());
    if (reply.error() != QNetworkReply::NoError)
        return reply.errorString();
    const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.isValid() && status.toInt() != httpOk)
        return QStringLiteral("the server answered with status %1").arg(status.toInt());
    const QByteArray encoding = reply.rawHeader("Content-Encoding").trimmed().toLower();
    if (!encoding.isEmpty() && encoding != "identity")
        return QStringLiteral("the server sent the file encoded as %1")
            .arg(QString::fromLatin1(encoding));
    return lengthErrorOf(reply);
}

} // namespace

AzureStorage::AzureStorage(QObject* parent, CloudShare share)
    : QObject(parent), m_manager(this), m_share(std::move(share)),
      m_sizeLimitBytes(std::numeric_limits<qint64>::max())
{
    m_manager.setProxyFactory(new SystemProxies); // the manager takes it
    connect(&m_manager, &QNetworkAccessManager::finished, this, &AzureStorage::finished);
}

void AzureStorage::downloadFile(QString path)
{
    if (path.isEmpty()) {
        qCWarning(lcAzure) << "Empty file path";
        return;
    }
    if (path.startsWith(QLatin1Char('/'))) {
        qCWarning(lcAzure) << "File path is relative to the Azure storage and it mustn't "
                              "start with a /";
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
    // Without it the network layer asks for packed bytes and unpacks them, past
    // every limit.
    request.setRawHeader("Accept-Encoding", "identity");
    m_reply = m_manager.get(request);
    m_reply->setProperty(lengthRequiredProperty, m_isLengthRequired);

    // Looked at with every piece that arrives: what a server promises need not be what it sends.
    const auto keepWithinLimit = [reply = m_reply, limit = m_sizeLimitBytes] {
        const qint64 promised = reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
        if (promised <= limit && reply->bytesAvailable() <= limit)
            return;
        reply->setProperty(passedLimitProperty, limit);
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
        qCWarning(lcAzure) << "Download of" << url.toEncoded() << " failed; error:" << error;
        emit downloadError(error);
        return;
    }
    const QString text = url.toString();
    if (text.size() < m_share.baseUrl.size()) {
        qCWarning(lcAzure) << "Unexpected URL for downloaded file:" << text;
        return;
    }
    emit fileDownloaded(text.mid(m_share.baseUrl.size()), reply->readAll());
    reply->deleteLater();
    // A download that the signal has just started goes on untracked from here.
    m_reply = nullptr;
}

} // namespace corv
