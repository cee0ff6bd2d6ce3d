#include "Shell/SystemInfo.h"
#include "Support/FullDisk.h"
#include "Support/MessageLog.h"
#include "Support/ProgramRun.h"

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
    void aFullDiskLeavesNoFile();
    void theDigitsAreThoseOfEveryLocale();
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
    QVERIFY(QRegularExpression(QStringLiteral("\\A[-: 0-9]{19}\\z"))
                .match(root[QStringLiteral("timestamp")].toString())
                .hasMatch());
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

void SystemInfoTest::aFullDiskLeavesNoFile()
{
    const corv::SystemInfo info;
    QVERIFY(QFileInfo(info.filePath()).dir().mkpath(QStringLiteral(".")));
    {
        const corv::test::FullDisk disk(0);
        info.writeToFile();
    }
    QVERIFY(!info.fileExists());
    info.writeToFile();
    QVERIFY(info.fileExists());
}

void SystemInfoTest::theDigitsAreThoseOfEveryLocale()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("ar_EG.UTF-8"));
    const corv::test::ProgramRun run =
        corv::test::runProgram(QCoreApplication::applicationFilePath(),
                               {QStringLiteral("writesTheFactsItNames")}, environment);
    QVERIFY2(run.status == 0, run.out);
}

QTEST_GUILESS_MAIN(SystemInfoTest)
#include "SystemInfoTest.moc"
