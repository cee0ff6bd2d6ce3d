#include "Shell/AppInfo.h"
#include "Support/MessageLog.h"

#include <QtTest>

class AppInfoTest : public QObject
{
    Q_OBJECT

private slots:
    void tellsTheVersionOfTheBuild();
    void comparesEachNumberOnItsOwn_data();
    void comparesEachNumberOnItsOwn();
    void isVersioned() { QVERIFY(!corv::AppInfo().isUnversioned()); }
};

void AppInfoTest::tellsTheVersionOfTheBuild()
{
    QCOMPARE(corv::AppInfo().versionString(), QStringLiteral("1.5.0.166"));
}

void AppInfoTest::comparesEachNumberOnItsOwn_data()
{
    QTest::addColumn<QString>("other");
    QTest::addColumn<bool>("lower");
    QTest::addColumn<bool>("invalid");
    const auto row = [](const char* other, bool lower, bool invalid = false) {
        QTest::newRow(other) << QString::fromLatin1(other) << lower << invalid;
    };
    row("1.5.0.166", false);
    row("1.5.0.167", true);
    row("2.0.0.0", true);
    row("1.6.0.0", true);
    row("0.0.1.0", true);
    row("1.4.0.200", true);
    row("1.4.0.166", false);
    row("0.0.0.0", false);
    row("x.y.z.w", false);
    row("1.x.0.167", true);
    row("...", false);
    row("1.5.0", false, true);
    row("1.5.0.166.1", false, true);
    row("", false, true);
    row("9", false, true);
}

void AppInfoTest::comparesEachNumberOnItsOwn()
{
    QFETCH(QString, other);
    QFETCH(bool, lower);
    QFETCH(bool, invalid);
    const corv::test::MessageLog log;
    QCOMPARE(corv::AppInfo().isLowerThan(other), lower);
    QCOMPARE(log.contains(QStringLiteral("Invalid version:")), invalid);
}

QTEST_GUILESS_MAIN(AppInfoTest)
#include "AppInfoTest.moc"
