#include "Platform/Platform.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

class ElevationTest : public QObject
{
    Q_OBJECT

private slots:
    void reportsWhetherTheFileRuns_data();
    void reportsWhetherTheFileRuns();
    void doesNotCallBackADestroyedContext();

private:
    static QString script(const QTemporaryDir& folder, const QString& name, const QByteArray& text);
};

QString ElevationTest::script(const QTemporaryDir& folder, const QString& name,
                              const QByteArray& text)
{
    const QString path = folder.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write("#!/bin/sh\n" + text + '\n') < 0)
        return {};
    file.setPermissions(file.permissions() | QFile::ExeOwner);
    return path;
}

void ElevationTest::reportsWhetherTheFileRuns_data()
{
    QTest::addColumn<QByteArray>("elevation");
    QTest::addColumn<QByteArray>("installer");
    QTest::addColumn<bool>("started");
    const QByteArray waits = "while [ -e \"$(dirname \"$0\")/hold\" ]; do sleep 0.05; done";
    QTest::newRow("allowed, the file goes on running")
        << QByteArray("exec \"$1\"") << waits << true;
    QTest::newRow("allowed, the file ends at once")
        << QByteArray("exec \"$1\"") << QByteArray("exit 0") << true;
    QTest::newRow("allowed, the file fails later")
        << QByteArray("exec \"$1\"") << QByteArray("exit 3") << true;
    QTest::newRow("refused") << QByteArray("exit 126") << QByteArray("exit 0") << false;
    QTest::newRow("not authorised") << QByteArray("exit 127") << QByteArray("exit 0") << false;
    QTest::newRow("no such program") << QByteArray() << QByteArray("exit 0") << false;
}

void ElevationTest::reportsWhetherTheFileRuns()
{
    QFETCH(QByteArray, elevation);
    QFETCH(QByteArray, installer);
    QFETCH(bool, started);
    QTemporaryDir folder;
    QFile hold(folder.filePath(QStringLiteral("hold"))); // what was started lives on until it goes
    QVERIFY(hold.open(QIODevice::WriteOnly));
    const QString program = elevation.isEmpty()
                                ? folder.filePath(QStringLiteral("missing"))
                                : script(folder, QStringLiteral("elevate"), elevation);
    const QString file = script(folder, QStringLiteral("installer"), installer);

    QList<bool> answers;
    corv::platform::launchElevated(program, file, this,
                                   [&answers](bool answer) { answers << answer; });
    QVERIFY(answers.isEmpty()); // it does not wait
    QTRY_COMPARE(answers, QList<bool>{started});
}

void ElevationTest::doesNotCallBackADestroyedContext()
{
    QTemporaryDir folder;
    const QString program =
        script(folder, QStringLiteral("elevate"), "touch \"$(dirname \"$0\")/done\"");
    bool called = false;
    auto asker = std::make_unique<QObject>();
    corv::platform::launchElevated(program, QStringLiteral("x"), asker.get(),
                                   [&called](bool) { called = true; });
    asker.reset();
    QTRY_VERIFY(QFile::exists(folder.filePath(QStringLiteral("done"))));
    bool flushed = false;
    corv::platform::launchElevated(program, QStringLiteral("x"), this,
                                   [&flushed](bool) { flushed = true; });
    QTRY_VERIFY(flushed);
    QVERIFY(!called);
}

QTEST_GUILESS_MAIN(ElevationTest)
#include "ElevationTest.moc"
