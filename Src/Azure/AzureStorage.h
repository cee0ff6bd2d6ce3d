#pragma once

#include "Azure/CloudShare.h"

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QObject>
#include <QString>

class QNetworkReply;

namespace corv {

/// Fetches one file at a time from the read-only update share with signed
/// requests. Knows nothing of manifests or versions. Lives wholly on the thread
/// that makes it; its owner is its parent.
///
/// One download at a time is the caller's duty. There is no retry and no time
/// limit: an error, an abort, a file that breaks off or one that grows past the
/// limit ends in `downloadError`. The bytes are asked for as they are, and
/// through the proxy that the system is configured with.
class AzureStorage : public QObject
{
    Q_OBJECT

public:
    AzureStorage(QObject* parent, CloudShare share);

    /// A download that grows past this many bytes is aborted. Holds from the next download on.
    void setSizeLimit(qint64 sizeLimitBytes) { m_sizeLimitBytes = sizeLimitBytes; }

    /// Whether an answer without a length is an error. Set it where nothing else shows that a file
    /// arrived whole. Holds from the next download on; false at first.
    void setLengthRequired(bool required) { m_isLengthRequired = required; }

signals:
    /// A file has arrived: its content, and its path relative to the share as in the address.
    void fileDownloaded(QString relativefilePath, QByteArray fileContent);

    void downloadError(QString errorMessage);

public slots:
    /// Starts the download of a path relative to the share. An empty path, or one with a leading
    /// "/", is refused with a warning and no signal.
    void downloadFile(QString path);

    /// Ends the download in flight, if it is known: one that was started from within
    /// `fileDownloaded` is not.
    void abortCurrentDownload();

private slots:
    void finished(QNetworkReply* reply);

private:
    QNetworkAccessManager m_manager;
    QNetworkReply* m_reply = nullptr;
    CloudShare m_share;
    qint64 m_sizeLimitBytes;
    bool m_isLengthRequired = false;
};

} // namespace corv
