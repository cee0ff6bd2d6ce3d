#include "Update/updateNames.h"
#include "Support/MessageLog.h"

#include <QLocale>
#include <QtTest>

using namespace corv;

class UpdateNamesTest : public QObject
{
    Q_OBJECT

private slots:
    void channelsAreReadFromTheEnvironment_data();
    void channelsAreReadFromTheEnvironment();
    void flavourFollowsTheArchitecture_data();
    void flavourFollowsTheArchitecture();
    void pathsNameChannelAndVersion();
    void refusesWhatLeadsAstray_data();
    void refusesWhatLeadsAstray();
    void versionsAreFourNumbers_data();
    void versionsAreFourNumbers();
    void momentsSurviveEveryLocale_data();
    void momentsSurviveEveryLocale();
    void brokenMomentsAreInvalid();
};

void UpdateNamesTest::channelsAreReadFromTheEnvironment_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("channel");
    QTest::addColumn<bool>("warned");
    QTest::newRow("unset") << QString() << QStringLiteral("official") << false;
    for (const char* name : {"official", "preview", "dev"})
        QTest::newRow(name) << QString::fromLatin1(name) << QString::fromLatin1(name) << false;
    QTest::newRow("capitals") << QStringLiteral("Dev") << QStringLiteral("official") << true;
    QTest::newRow("unknown") << QStringLiteral("nightly") << QStringLiteral("official") << true;
}

void UpdateNamesTest::channelsAreReadFromTheEnvironment()
{
    QFETCH(QString, value);
    QFETCH(bool, warned);
    const test::MessageLog log;
    QTEST(updateNames::channelOf(value), "channel");
    QCOMPARE(
        log.contains(QStringLiteral("Unrecognized value for env var [CorvenityUpdateChannel]:")),
        warned);
}

void UpdateNamesTest::flavourFollowsTheArchitecture_data()
{
    QTest::addColumn<QString>("architecture");
    QTest::addColumn<QString>("flavour");
    QTest::addColumn<bool>("warned");
    QTest::newRow("64 bits") << QStringLiteral("x86_64") << QStringLiteral("x64") << false;
    QTest::newRow("32 bits") << QStringLiteral("i386") << QStringLiteral("x86") << false;
    QTest::newRow("another") << QStringLiteral("arm64") << QStringLiteral("arm64") << true;
}

void UpdateNamesTest::flavourFollowsTheArchitecture()
{
    QFETCH(QString, architecture);
    QFETCH(bool, warned);
    const test::MessageLog log;
    QTEST(updateNames::flavourOf(architecture), "flavour");
    QCOMPARE(log.contains(QStringLiteral("Unsupported architecture:")), warned);
}

void UpdateNamesTest::pathsNameChannelAndVersion()
{
    QCOMPARE(updateNames::manifestPath(QStringLiteral("dev")), QStringLiteral("update/dev.json"));
    const QString file =
        updateNames::installerFileName(QStringLiteral("1.6.0.1"), QStringLiteral("x64"));
    QCOMPARE(file, QStringLiteral("VistrelSetup-1.6.0.1-x64-Release.exe"));
    QCOMPARE(updateNames::installerPath(QStringLiteral("r6"), QStringLiteral("1.6.0.1"), file),
             QStringLiteral("builds/r6/1.6.0.1/VistrelSetup-1.6.0.1-x64-Release.exe"));
}

void UpdateNamesTest::refusesWhatLeadsAstray_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("asFile");
    QTest::addColumn<bool>("asPath");
    const auto row = [](const char* text, bool asFile, bool asPath) {
        QTest::newRow(text) << QString::fromLatin1(text) << asFile << asPath;
    };
    row("1.6.0.0", true, true);
    row("2026-05", true, true);
    row("a/b", false, true);
    row("", false, false);
    row("../x", false, false);
    row("a/../b", false, false);
    row("/a", false, false);
    row("a/./b", false, false);
    row("./a", false, false);
    row("a\\b", false, false);
    row("a//b", false, false);
    row("my build", false, true);
    row("%2e%2e", false, false);
    row("a/%2E%2e/b", false, false);
    row("a%2fb", false, false);
    row("a#b", false, false);
    row("a?b", false, false);
    row("9.x/../../y.0.0", false, false);
    row("9.0.0.0\n", false, false);
}

void UpdateNamesTest::refusesWhatLeadsAstray()
{
    QFETCH(QString, text);
    QTEST(updateNames::isSafeFileElement(text), "asFile");
    QTEST(updateNames::isSafeSharePath(text), "asPath");
}

void UpdateNamesTest::versionsAreFourNumbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isVersion");
    const auto row = [](const QString& text, bool isVersion) {
        QTest::addRow("%s", qPrintable(text)) << text << isVersion;
    };
    row(QStringLiteral("9.0.0.1"), true);
    row(QStringLiteral("1.15.0.166"), true);
    row(QStringLiteral("9.0.0"), false);
    row(QStringLiteral("9.0.0.0.0"), false);
    row(QStringLiteral("9.x.0.0"), false);
    row(QStringLiteral("9..0.0"), false);
    row(QStringLiteral("9.+1.0.0"), false);
    row(QStringLiteral("9. 1.0.0"), false);
    row(QStringLiteral("9.0.0.1\n"), false);
    row(QStringLiteral("9.0.0.99999999999"), false);
    row(QString(QChar(0x0669)) + QStringLiteral(".0.0.1"), false); // a digit, but no ASCII one
}

void UpdateNamesTest::versionsAreFourNumbers()
{
    QFETCH(QString, text);
    QTEST(updateNames::isVersion(text), "isVersion");
}

void UpdateNamesTest::momentsSurviveEveryLocale_data()
{
    QTest::addColumn<QLocale>("locale");
    for (const auto language : {QLocale::German, QLocale::Japanese, QLocale::French, QLocale::C})
        QTest::addRow("%s", qPrintable(QLocale(language).name())) << QLocale(language);
}

void UpdateNamesTest::momentsSurviveEveryLocale()
{
    QFETCH(QLocale, locale);
    const QLocale before;
    QLocale::setDefault(locale);
    const QDateTime moment(QDate(2026, 3, 5), QTime(4, 6, 8), Qt::UTC);
    const QString text = updateNames::notificationText(moment);
    const QDateTime back = updateNames::notificationMoment(text);
    QLocale::setDefault(before);
    QCOMPARE(text, QStringLiteral("Thu Mar 5 04:06:08 2026 GMT"));
    QCOMPARE(back, moment);
}

void UpdateNamesTest::brokenMomentsAreInvalid()
{
    for (const char* text : {"", "yesterday", "Thu Mar 35 04:06:08 2026 GMT", "2026-03-05"})
        QVERIFY2(!updateNames::notificationMoment(QString::fromLatin1(text)).isValid(), text);
}

QTEST_GUILESS_MAIN(UpdateNamesTest)
#include "UpdateNamesTest.moc"
