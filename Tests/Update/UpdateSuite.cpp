#include "UpdateSuite.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>

namespace corv::test {

QByteArray manifest(const QByteArray& version, const QByteArray& path, const QByteArray& more)
{
    return R"({"version": ")" + version + R"(", "path": ")" + path +
           R"(", "notes": ["one", "two"], "more": 1)" + more + '}';
}

QByteArray digestOf(const QByteArray& content)
{
    return ", \"sha256\": \"" +
           QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex() + '"';
}

QByteArray sizeOf(const QByteArray& content)
{
    return ", \"size\": " + QByteArray::number(content.size());
}

void touch(const QString& path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("x");
}

CloudShare UpdateSuite::share() const
{
    return {m_server->address(), QStringLiteral("/corvenitysoftwarebuilds/vistrel/"),
            QByteArray("key").toBase64()};
}

void UpdateSuite::serveManifest(const QByteArray& body) const
{
    m_server->setAnswer("update/official.json", {200, body, false, -1});
}

QByteArray UpdateSuite::installerPath() const
{
    return "builds/r9/" + offeredVersion.toUtf8() + '/' +
           UpdateManager::getInstallerFileName(offeredVersion).toUtf8();
}

QString UpdateSuite::installerFile() const
{
    return m_dataFolder + QStringLiteral("/update/") +
           UpdateManager::getInstallerFileName(offeredVersion);
}

bool UpdateSuite::checkOffersAnUpdate() const
{
    UpdateManager manager(share(), QString());
    const QSignalSpy available(&manager, &UpdateManager::updateAvailable);
    manager.checkUpdate();
    return QTest::qWaitFor([&available] { return available.count() == 1; }, 30'000);
}

void UpdateSuite::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setOrganizationName(QStringLiteral("Corvenity"));
    // Suites run at the same time: each has a data folder and settings under its own name.
    QCoreApplication::setApplicationName(QStringLiteral("Vistrel-") + metaObject()->className());
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope,
                       QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation));
    m_dataFolder = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
}

void UpdateSuite::forgetEarlierTests() const
{
    QDir(m_dataFolder).removeRecursively();
    QSettings().clear();
    qunsetenv("CorvenityUpdateChannel");
}

void UpdateSuite::init()
{
    m_server = std::make_unique<HttpServer>();
    forgetEarlierTests();
}

void UpdateSuite::cleanup()
{
    m_server.reset();
    forgetEarlierTests();
}

} // namespace corv::test
