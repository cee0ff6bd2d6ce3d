#include "Shell/SystemInfo.h"
#include "Support/MessageLog.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QSysInfo>
#include <QtTest>

class SystemInfoTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void writesTheFactsItNames();
    void aFolderThatIsMissingGoesUnnoticed();
};

void SystemInfoTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setOrganizationName(QStringLiteral("Corvenity"));
    QCoreApplication::setApplicationName(QStringLiteral("Vistrel-systeminfo-test"));
}

void SystemInfoTest::init()
{
    QFileInfo(corv::SystemInfo().filePath()).dir().removeRecursively();
}

void SystemInfoTest::writesTheFactsItNames()
{
    const corv::SystemInfo info;
    QVERIFY(QFileInfo(info.filePath()).dir().mkpath(QStringLiteral(".")));
    QCOMPARE(QFileInfo(info.filePath()).fileName(), QStringLiteral("SystemInfo.txt"));
    QVERIFY(!info.fileExists());

    const corv::test::MessageLog log;
    info.writeToFile();
    QVERIFY(log.contains(QStringLiteral("System info written in the json ")));
    QVERIFY(info.fileExists());

    QFile file(info.filePath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    const QJsonDocument document = QJsonDocument::fromJson(text);
    QCOMPARE(text, document.toJson(QJsonDocument::Indented));
    const QJsonObject root = document.object();
    QCOMPARE(root.keys(), QStringList({QStringLiteral("properties"), QStringLiteral("timestamp")}));
    QVERIFY(QDateTime::fromString(root[QStringLiteral("timestamp")].toString(),
                                  QStringLiteral("yyyy-MM-dd hh:mm:ss"))
                .isValid());

    const QJsonObject properties = root[QStringLiteral("properties")].toObject();
    QCOMPARE(properties.keys(),
             QStringList({QStringLiteral("Computer Model"), QStringLiteral("Cpu Architecture"),
                          QStringLiteral("Cpu Model"), QStringLiteral("Operating System"),
                          QStringLiteral("RAM Installed Kilobytes")}));
    for (const char* empty : {"Computer Model", "Cpu Model", "Operating System"})
        QCOMPARE(properties[QLatin1String(empty)].toString(QStringLiteral("?")), QString());
    QCOMPARE(properties[QStringLiteral("Cpu Architecture")].toString(),
             QSysInfo::currentCpuArchitecture());
    QVERIFY(properties[QStringLiteral("RAM Installed Kilobytes")].toDouble() > 100'000);
}

void SystemInfoTest::aFolderThatIsMissingGoesUnnoticed()
{
    const corv::SystemInfo info;
    info.writeToFile();
    QVERIFY(!info.fileExists());
}

QTEST_GUILESS_MAIN(SystemInfoTest)
#include "SystemInfoTest.moc"
