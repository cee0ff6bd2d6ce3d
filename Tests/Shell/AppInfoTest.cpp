#include "Shell/AppInfo.h"
#include "Support/MessageLog.h"

#include <QtTest>

class AppInfoTest : public QObject
{
    Q_OBJECT

private slots:
    void versionIsThatOfTheBuild();
    void comparesEachNumberOnItsOwn_data();
    void comparesEachNumberOnItsOwn();
    void isVersioned() { QVERIFY(!corv::AppInfo().isUnversioned()); }
};

void AppInfoTest::versionIsThatOfTheBuild()
{
    QCOMPARE(corv::AppInfo().versionString(), QStringLiteral(VISTREL_VERSION));
}

void AppInfoTest::comparesEachNumberOnItsOwn_data()
{
    QTest::addColumn<QString>("other");
    QTest::addColumn<bool>("lower");
    QTest::addColumn<bool>("invalid");
    const QStringList own = QStringLiteral(VISTREL_VERSION).split('.');
    // The build's own numbers with some added to each.
    const auto raised = [&own](int major, int minor, int patch, int build) {
        return QStringLiteral("%1.%2.%3.%4")
            .arg(own[0].toInt() + major)
            .arg(own[1].toInt() + minor)
            .arg(own[2].toInt() + patch)
            .arg(own[3].toInt() + build);
    };
    const int above = own[3].toInt() + 1;
    QTest::newRow("the same") << raised(0, 0, 0, 0) << false << false;
    QTest::newRow("higher build") << raised(0, 0, 0, 1) << true << false;
    QTest::newRow("higher patch") << raised(0, 0, 1, 0) << true << false;
    QTest::newRow("higher minor") << raised(0, 1, 0, 0) << true << false;
    QTest::newRow("higher major") << raised(1, 0, 0, 0) << true << false;
    QTest::newRow("higher major, the rest 0")
        << QStringLiteral("%1.0.0.0").arg(own[0].toInt() + 1) << true << false;
    QTest::newRow("higher build, the rest 0")
        << QStringLiteral("0.0.0.%1").arg(above) << true << false;
    QTest::newRow("zeros") << "0.0.0.0" << false << false;
    QTest::newRow("words") << "x.y.z.w" << false << false;
    QTest::newRow("a word and a higher build")
        << QStringLiteral("0.x.0.%1").arg(above) << true << false;
    QTest::newRow("empty parts") << "..." << false << false;
    QTest::newRow("three numbers") << "9.9.9" << false << true;
    QTest::newRow("five numbers") << raised(1, 0, 0, 0) + ".1" << false << true;
    QTest::newRow("nothing") << "" << false << true;
    QTest::newRow("one number") << "9" << false << true;
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
