#include "Support/ProgramRun.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <algorithm>

using namespace corv::test;

/// The scripts at the root of the tree, in a tree of their own where all that they call is a
/// stand-in that writes down its arguments.
class ScriptsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void runOpensAFileFromAnotherFolder_data();
    void runOpensAFileFromAnotherFolder();
    void soakIsAskedForProperly_data();
    void soakIsAskedForProperly();
    void suitesThatNeedASecondTryAreNamed_data();
    void suitesThatNeedASecondTryAreNamed();
    void whatDoesNotPassIsNamedAtTheEnd_data();
    void whatDoesNotPassIsNamedAtTheEnd();
    void tidyReadsASourceUntilItPassesAsItIs_data();
    void tidyReadsASourceUntilItPassesAsItIs();

private:
    void makeStandIn(const QString& path, const QByteArray& text) const;
    ProgramRun call(const QString& script, const QStringList& arguments, const QString& from) const;
    QByteArray calls() const
    {
        QFile file(m_tree->filePath(QStringLiteral("calls")));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<QTemporaryDir> m_tree;
};

void ScriptsTest::makeStandIn(const QString& path, const QByteArray& text) const
{
    const QString whole = m_tree->filePath(path);
    QVERIFY(QDir().mkpath(QFileInfo(whole).path()));
    QFile file(whole);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\n" + text + '\n');
    file.setPermissions(file.permissions() | QFile::ExeOwner);
}

void ScriptsTest::init()
{
    m_tree = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(m_tree->path()).mkpath(QStringLiteral(".ci")));
    QVERIFY(QDir(m_tree->path()).mkpath(QStringLiteral("Tests/Support")));
    for (const char* script : {"run", "test", ".ci/run", "Tests/Support/tidy"})
        QVERIFY(QFile::copy(QStringLiteral(SOURCE_FOLDER "/") + QString::fromLatin1(script),
                            m_tree->filePath(QString::fromLatin1(script))));
    const QByteArray note = "echo \"$0 $*\" >> '" + QFile::encodeName(m_tree->path()) + "/calls'";
    makeStandIn(QStringLiteral("Packaging/install-packages.sh"), "true");
    makeStandIn(QStringLiteral("bin/cmake"), "true");
    makeStandIn(QStringLiteral("build/release/vistrel"), note);
    makeStandIn(QStringLiteral("Tests/Soak/soak"), note);
}

ProgramRun ScriptsTest::call(const QString& script, const QStringList& arguments,
                             const QString& from) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PATH"), m_tree->filePath(QStringLiteral("bin")) +
                                                   QLatin1Char(':') +
                                                   environment.value(QStringLiteral("PATH")));
    environment.insert(QStringLiteral("DISPLAY"), QStringLiteral(":99"));
    return runProgram(m_tree->filePath(script), arguments, environment, from);
}

void ScriptsTest::runOpensAFileFromAnotherFolder_data()
{
    QTest::addColumn<QString>("argument");
    QTest::newRow("beside the caller") << QStringLiteral("a flight.ecor");
    QTest::newRow("above the caller") << QStringLiteral("../other.ecor");
}

void ScriptsTest::runOpensAFileFromAnotherFolder()
{
    QFETCH(QString, argument);
    const QString folder = m_tree->filePath(QStringLiteral("elsewhere/deep"));
    QVERIFY(QDir().mkpath(folder));
    QFile file(folder + QLatin1Char('/') + argument);
    QVERIFY(file.open(QIODevice::WriteOnly));
    const ProgramRun run = call(QStringLiteral("run"), {argument}, folder);
    QVERIFY2(run.status == 0, run.error);
    const QByteArray whole = QFile::encodeName(QFileInfo(file).canonicalFilePath());
    QVERIFY2(calls().endsWith("build/release/vistrel " + whole + '\n'), calls());
}

void ScriptsTest::soakIsAskedForProperly_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("passedOn");
    const auto row = [](const char* arguments, int status, const char* passedOn) {
        QTest::newRow(arguments) << QString::fromLatin1(arguments).split(QLatin1Char(' ')) << status
                                 << QByteArray(passedOn);
    };
    row("--soak 2 --seed 17", 0, "2 17\n");
    row("--soak 0.5 --seed 4294967295", 0, "0.5 4294967295\n");
    row("--soak", 2, "");
    row("--soak long", 2, "");
    row("--soak 2 --seed x", 2, "");
    row("--soak 2 --seed", 2, "");
}

void ScriptsTest::soakIsAskedForProperly()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, status);
    QFETCH(QByteArray, passedOn);
    const ProgramRun run = call(QStringLiteral("test"), arguments, m_tree->path());
    QCOMPARE(run.status, status);
    QVERIFY2(calls().endsWith(passedOn), calls());
    QCOMPARE(calls().isEmpty(), passedOn.isEmpty());
}

void ScriptsTest::suitesThatNeedASecondTryAreNamed_data()
{
    QTest::addColumn<QByteArray>("failing"); // what the first run leaves
    QTest::addColumn<int>("secondTry");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("end");
    QTest::newRow("none") << QByteArray() << 0 << 0
                          << QByteArray("No suite needed a second try.\n");
    QTest::newRow("two pass then")
        << QByteArray("3:ATest\n17:BTest\n") << 0 << 0
        << QByteArray("Suites that needed a second try: 2\n  ATest, asan: passed\n"
                      "  BTest, asan: passed\n");
    QTest::newRow("one fails again")
        << QByteArray("3:ATest\n") << 8 << 1
        << QByteArray("Suites that needed a second try: 1\n  ATest, asan: failed again\n"
                      "Does not pass:\n  ./test --asan: ATest\n");
}

void ScriptsTest::suitesThatNeedASecondTryAreNamed()
{
    QFETCH(QByteArray, failing);
    QFETCH(int, secondTry);
    QFETCH(int, status);
    QFETCH(QByteArray, end);
    const QString left = QStringLiteral("build/asan/Testing/Temporary");
    QVERIFY(QDir(m_tree->path()).mkpath(left));
    QVERIFY(QFile::remove(m_tree->filePath(QStringLiteral("test"))));
    makeStandIn(QStringLiteral("test"),
                "[ \"$1\" = --asan ] || exit 0\nprintf '" + failing + "' > " + left.toUtf8() +
                    "/LastTestsFailed.log\n[ ! -s " + left.toUtf8() + "/LastTestsFailed.log ]");
    makeStandIn(QStringLiteral("bin/ctest"), "exit " + QByteArray::number(secondTry));
    makeStandIn(QStringLiteral("bin/git"), "echo 0123456789");
    const ProgramRun run = call(QStringLiteral(".ci/run"), {}, m_tree->path());
    QCOMPARE(run.status, status);
    QVERIFY2(run.out.endsWith(end), run.out);
}

void ScriptsTest::whatDoesNotPassIsNamedAtTheEnd_data()
{
    QTest::addColumn<QByteArray>("standIn"); // in place of ./test
    QTest::addColumn<QByteArray>("end");
    QTest::newRow("findings of clang-tidy")
        << QByteArray("[ \"$1\" = --tidy ] || exit 0\nmkdir -p build/release/tidy\n"
                      "printf 'Src/b.cpp\\nSrc/a.cpp\\n' > build/release/tidy/findings\nexit 1")
        << QByteArray("Does not pass:\n  ./test --tidy: Src/a.cpp Src/b.cpp \n");
    QTest::newRow("a mishap") << QByteArray("[ \"$1\" != --soak ]")
                              << QByteArray("Does not pass:\n"
                                            "  ./test --soak 2 --seed 1193046\n");
    QTest::newRow("a build") << QByteArray("[ \"$1\" != --asan ]")
                             << QByteArray("Does not pass:\n  ./test --asan, which did not come to "
                                           "its end\n");
}

void ScriptsTest::whatDoesNotPassIsNamedAtTheEnd()
{
    QFETCH(QByteArray, standIn);
    QFETCH(QByteArray, end);
    QVERIFY(QFile::remove(m_tree->filePath(QStringLiteral("test"))));
    makeStandIn(QStringLiteral("test"), standIn);
    makeStandIn(QStringLiteral("bin/git"), "echo 0123456789");
    const ProgramRun run = call(QStringLiteral(".ci/run"), {}, m_tree->path());
    QCOMPARE(run.status, 1);
    QVERIFY2(run.out.endsWith(end), run.out);
}

void ScriptsTest::tidyReadsASourceUntilItPassesAsItIs_data()
{
    QTest::addColumn<QByteArray>("folder"); // as the compiler writes the paths of the tree
    QTest::newRow("relative") << QByteArray("../");
    QTest::newRow("absolute") << QByteArray("TREE/");
}

void ScriptsTest::tidyReadsASourceUntilItPassesAsItIs()
{
    const auto write = [this](const QString& path, const QByteArray& text) {
        QVERIFY(QDir().mkpath(QFileInfo(m_tree->filePath(path)).path()));
        QFile file(m_tree->filePath(path));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    };
    write(QStringLiteral(".clang-tidy"), "rules");
    write(QStringLiteral("Src/a.cpp"), "right");
    write(QStringLiteral("Src/b.cpp"), "right");
    write(QStringLiteral("Src/b.h"), "header");
    QFETCH(QByteArray, folder);
    folder.replace("TREE", QFile::encodeName(m_tree->path()));
    makeStandIn(QStringLiteral("bin/ninja"), "printf 'a.o: #deps 2\\n    " + folder +
                                                 "Src/a.cpp\\n    /usr/include/x.h\\n\\n'\n"
                                                 "printf 'b.o: #deps 2\\n    " +
                                                 folder + "Src/b.cpp\\n    " + folder +
                                                 "Src/b.h\\n\\n'\n"
                                                 "printf 'gone.o: #deps 1\\n    " +
                                                 folder +
                                                 "Src/gone/gone.cpp\\n\\n'\n"
                                                 "printf 'moc.o: #deps 1\\n    moc.cpp\\n\\n'");
    makeStandIn(QStringLiteral("bin/clang-tidy"),
                "for file; do :; done\n[ \"$1\" = --version ] && exit\n"
                "echo \"$file\" >> '" +
                    QFile::encodeName(m_tree->filePath(QStringLiteral("calls"))) +
                    "'\n! grep wrong \"$file\"");
    const auto sourcesRead = [this](int status) {
        QFile::remove(m_tree->filePath(QStringLiteral("calls")));
        const ProgramRun run =
            call(QStringLiteral("Tests/Support/tidy"), {QStringLiteral("build")}, m_tree->path());
        [&] { QVERIFY2(run.status == status, run.out + run.error); }();
        QList<QByteArray> read = calls().split('\n');
        std::sort(read.begin(), read.end());
        return read.mid(1).join(' ');
    };
    QCOMPARE(sourcesRead(0), QByteArray("Src/a.cpp Src/b.cpp"));
    QCOMPARE(sourcesRead(0), QByteArray());
    write(QStringLiteral("Src/b.h"), "another header");
    QCOMPARE(sourcesRead(0), QByteArray("Src/b.cpp"));
    write(QStringLiteral("Src/a.cpp"), "wrong");
    QCOMPARE(sourcesRead(1), QByteArray("Src/a.cpp"));
    QCOMPARE(sourcesRead(1), QByteArray("Src/a.cpp"));
    write(QStringLiteral("Src/a.cpp"), "right again");
    QCOMPARE(sourcesRead(0), QByteArray("Src/a.cpp"));
    QVERIFY(QFile::remove(m_tree->filePath(QStringLiteral("Src/b.h"))));
    QCOMPARE(sourcesRead(0), QByteArray("Src/b.cpp"));
    write(QStringLiteral(".clang-tidy"), "other rules");
    QCOMPARE(sourcesRead(0), QByteArray("Src/a.cpp Src/b.cpp"));
}

QTEST_GUILESS_MAIN(ScriptsTest)
#include "ScriptsTest.moc"
