#include "Shell/commandLine.h"
#include "Shell/AppInfo.h"

#include <QtTest>

using namespace corv;
using Wish = CommandLine::Wish;

Q_DECLARE_METATYPE(corv::CommandLine::Wish)

/// The words behind `vistrel`.
class CommandLineTest : public QObject
{
    Q_OBJECT

private slots:
    void decidesWhatToDo_data();
    void decidesWhatToDo();
    void versionIsOneLine();
    void refusalSaysUsageAndReason();
};

void CommandLineTest::decidesWhatToDo_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<Wish>("wish");
    QTest::addColumn<QString>("file");
    const QString none;
    QTest::newRow("nothing") << QStringList{} << Wish::openWindow << none;
    QTest::newRow("path") << QStringList{"/a b/c.ecor"} << Wish::openWindow << "/a b/c.ecor";
    QTest::newRow("relative path") << QStringList{"c.mp4"} << Wish::openWindow << "c.mp4";
    QTest::newRow("file URL") << QStringList{"file:///a%20b/c.ecor"} << Wish::openWindow
                              << "/a b/c.ecor";
    QTest::newRow("path with a percent sign")
        << QStringList{"/a%20b.mp4"} << Wish::openWindow << "/a%20b.mp4";
    QTest::newRow("path with a hash") << QStringList{"/a#b.mp4"} << Wish::openWindow << "/a#b.mp4";
    QTest::newRow("path behind a double dash")
        << QStringList{"--", "-odd.mp4"} << Wish::openWindow << "-odd.mp4";
    QTest::newRow("version") << QStringList{"--version"} << Wish::showText << none;
    QTest::newRow("short version") << QStringList{"-v"} << Wish::showText << none;
    QTest::newRow("help") << QStringList{"--help"} << Wish::showText << none;
    QTest::newRow("help beside a file") << QStringList{"a.mp4", "-h"} << Wish::showText << none;
    QTest::newRow("unknown option") << QStringList{"--fly"} << Wish::refuse << none;
    QTest::newRow("unknown option and a file")
        << QStringList{"--fly", "a.mp4"} << Wish::refuse << none;
    QTest::newRow("option of Qt") << QStringList{"-reverse"} << Wish::refuse << none;
    QTest::newRow("two files") << QStringList{"a.mp4", "b.mp4"} << Wish::refuse << none;
}

void CommandLineTest::decidesWhatToDo()
{
    QFETCH(QStringList, words);
    const CommandLine line = readCommandLine(QStringList{"vistrel"} + words);
    QTEST(line.wish, "wish");
    QTEST(line.file, "file");
    QCOMPARE(line.text.isEmpty(), line.wish == Wish::openWindow);
}

void CommandLineTest::versionIsOneLine()
{
    QCOMPARE(readCommandLine({"vistrel", "--version"}).text,
             "vistrel " + AppInfo().versionString() + "\n");
}

void CommandLineTest::refusalSaysUsageAndReason()
{
    const QString text = readCommandLine({"vistrel", "--fly"}).text;
    QVERIFY(text.startsWith("usage: vistrel [FILE]\n"));
    QVERIFY(text.contains("fly"));
}

QTEST_GUILESS_MAIN(CommandLineTest)
#include "CommandLineTest.moc"
