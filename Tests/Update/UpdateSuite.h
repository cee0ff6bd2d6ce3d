#pragma once

#include "Support/HttpServer.h"
#include "Update/UpdateManager.h"

#include <QObject>
#include <QString>
#include <memory>

namespace corv::test {

/// The version that the share of an UpdateSuite offers.
const QString offeredVersion = QStringLiteral("9.0.0.1");

/// A manifest of the update share, as JSON. `more` is text that follows the other members; it
/// begins with a comma or is empty.
QByteArray manifest(const QByteArray& version, const QByteArray& path = "r9",
                    const QByteArray& more = {});

/// Texts for `more` that give the digest and the size of an installer with this content.
QByteArray digestOf(const QByteArray& content);
QByteArray sizeOf(const QByteArray& content);

/// Makes a file of one byte.
void touch(const QString& path);

/// A suite of the updater: each test has an update share on a local server, and an empty data
/// folder and empty settings of the suite's own.
class UpdateSuite : public QObject
{
    Q_OBJECT

protected:
    CloudShare share() const;
    void serveManifest(const QByteArray& body) const;
    /// The offered installer: its path on the share, and the file that a download of it is saved
    /// as.
    QByteArray installerPath() const;
    QString installerFile() const;
    /// Whether a check offers an update. Returns once it does; false after half a minute.
    bool checkOffersAnUpdate() const;

    std::unique_ptr<HttpServer> m_server;
    QString m_dataFolder;

private slots:
    void initTestCase();
    void init();
    void cleanup();

private:
    void forgetEarlierTests() const;
};

} // namespace corv::test
