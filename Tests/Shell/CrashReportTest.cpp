#include "Shell/crashReport.h"
#include "Support/ProgramRun.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <csignal>
#include <cstdlib>

using namespace corv;

namespace corv::test {

// With a name that the program keeps, as the functions of Vistrel have.
[[gnu::noinline]] void writeWhereNothingIs(volatile int* place)
{
    *place = 1;
}

} // namespace corv::test

namespace {

const QString crashArgument = QStringLiteral("--crash");

// Calls itself until the stack is used up.
int overflow(volatile int* depth) // NOLINT(misc-no-recursion)
{
    volatile char block[4096] = {};
    *depth = *depth + 1;
    block[0] = static_cast<char>(*depth);
    if (*depth < 0)
        return 0;
    return overflow(depth) + block[0];
}

// What this program does when it is started with `crashArgument`, a kind and the path of a log.
int crash(const QString& kind, const QString& logFile)
{
    crashReport::install(logFile);
    if (kind == QLatin1String("SIGABRT"))
        std::abort();
    if (kind == QLatin1String("SIGFPE"))
        std::raise(SIGFPE);
    if (kind == QLatin1String("SIGSEGV"))
        test::writeWhereNothingIs(nullptr);
    if (kind == QLatin1String("stack")) {
        volatile int depth = 0;
        return overflow(&depth);
    }
    return 0;
}

} // namespace

/// The report of a crash, made by this program itself, started a second time.
class CrashReportTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void aCrashIsWrittenDown_data();
    void aCrashIsWrittenDown();
    void theStackHasTheNamesOfTheSources();
    void aShortLogIsTakenWhole();
    void withoutACrashThereIsNoReport();
    void aReportIsReturnedOnce();
    void theLatestReportsAreKept();
    void aBrokenReportIsReturned();
    void aLinkInPlaceOfTheReportIsNotFollowed();

private:
    QString logFile() const { return m_folder->filePath(QStringLiteral("Vistrel.log")); }
    QString reportFile() const { return m_folder->filePath(QStringLiteral("Vistrel-crash.txt")); }
    void writeLog(int lines) const;
    int runCrash(const QString& kind) const;
    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void writeReport(const QByteArray& text) const
    {
        QFile file(reportFile());
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void CrashReportTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void CrashReportTest::writeLog(int lines) const
{
    QFile log(logFile());
    QVERIFY(log.open(QIODevice::WriteOnly));
    for (int i = 1; i <= lines; ++i)
        log.write("line " + QByteArray::number(i) + '\n');
}

// The number of the signal that the program died of; 0 if it ended by itself.
int CrashReportTest::runCrash(const QString& kind) const
{
    QProcess program;
    program.start(QCoreApplication::applicationFilePath(), {crashArgument, kind, logFile()});
    if (!program.waitForFinished(60'000) || program.exitStatus() == QProcess::NormalExit)
        return 0;
    return program.exitCode();
}

void CrashReportTest::aCrashIsWrittenDown_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("signal");
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("wrong address") << QStringLiteral("SIGSEGV") << SIGSEGV << QByteArray("SIGSEGV");
    QTest::newRow("abort") << QStringLiteral("SIGABRT") << SIGABRT << QByteArray("SIGABRT");
    QTest::newRow("arithmetic") << QStringLiteral("SIGFPE") << SIGFPE << QByteArray("SIGFPE");
    QTest::newRow("no more stack") << QStringLiteral("stack") << SIGSEGV << QByteArray("SIGSEGV");
}

void CrashReportTest::aCrashIsWrittenDown()
{
    QFETCH(QString, kind);
    QFETCH(int, signal);
    QFETCH(QByteArray, name);
    writeLog(300);
    QCOMPARE(runCrash(kind), signal);
    const QByteArray text = contentOf(reportFile());
    QVERIFY2(text.startsWith("signal: " + name + '\n'), text.left(200));
    QVERIFY(text.contains("\nversion: 1."));
    const QByteArray frames = text.mid(text.indexOf("crashed:\n")).split('\n').mid(1, 8).join('\n');
    QVERIFY2(frames.contains("CrashReportTest("), frames);
    const int lines = text.indexOf("last lines of the log:\n");
    QVERIFY(lines > 0);
    const QList<QByteArray> kept = text.mid(lines).trimmed().split('\n').mid(1);
    QCOMPARE(kept.size(), 200);
    QCOMPARE(kept.first(), QByteArray("line 101"));
    QCOMPARE(kept.last(), QByteArray("line 300"));
}

void CrashReportTest::theStackHasTheNamesOfTheSources()
{
    writeLog(0);
    QFile log(logFile());
    QVERIFY(log.open(QIODevice::Append) && log.write("said (_Z1av+0x1)\n") > 0);
    log.close();
    QCOMPARE(runCrash(QStringLiteral("SIGSEGV")), SIGSEGV);
    const std::optional<crashReport::Summary> summary = crashReport::take(logFile());
    QVERIFY(summary.has_value());
    const QByteArray text = contentOf(summary->filePath);
    QVERIFY2(text.contains("(corv::test::writeWhereNothingIs(int volatile*)+0x"), text);
    QVERIFY2(text.endsWith("said (_Z1av+0x1)\n"), text); // the log stays as it was
}

void CrashReportTest::aShortLogIsTakenWhole()
{
    writeLog(3);
    QCOMPARE(runCrash(QStringLiteral("SIGABRT")), SIGABRT);
    QVERIFY(contentOf(reportFile()).endsWith("last lines of the log:\nline 1\nline 2\nline 3\n"));
}

void CrashReportTest::withoutACrashThereIsNoReport()
{
    QCOMPARE(runCrash(QStringLiteral("nothing")), 0);
    QVERIFY(!QFile::exists(reportFile()));
    QVERIFY(!crashReport::take(logFile()));
}

void CrashReportTest::aReportIsReturnedOnce()
{
    writeLog(3);
    QCOMPARE(runCrash(QStringLiteral("SIGABRT")), SIGABRT);
    const std::optional<crashReport::Summary> summary = crashReport::take(logFile());
    QVERIFY(summary.has_value());
    QCOMPARE(summary->reason, QStringLiteral("SIGABRT"));
    QVERIFY(qAbs(summary->moment.secsTo(QDateTime::currentDateTime())) < 600);
    QVERIFY(QFile::exists(summary->filePath));
    const QString notice = crashReport::notice(*summary);
    QVERIFY(notice.contains(summary->filePath));
    QVERIFY(notice.contains(QStringLiteral("not sent")));
    QVERIFY(!crashReport::take(logFile()));
}

void CrashReportTest::theLatestReportsAreKept()
{
    for (int day = 1; day <= 8; ++day) {
        writeReport("signal: SIGSEGV\nmoment: " + QByteArray::number(86400 * day) + '\n');
        QVERIFY(crashReport::take(logFile()));
    }
    const QStringList kept =
        QDir(m_folder->path()).entryList({QStringLiteral("Vistrel-crash*")}, QDir::Files);
    QCOMPARE(kept.size(), 5);
    QVERIFY2(kept.first() > QStringLiteral("Vistrel-crash-19700104"), qPrintable(kept.first()));
}

// A disk that was full, or a crash while the report was written.
void CrashReportTest::aBrokenReportIsReturned()
{
    writeReport({});
    const std::optional<crashReport::Summary> summary = crashReport::take(logFile());
    QVERIFY(summary.has_value());
    QVERIFY(summary->moment.isValid());
}

void CrashReportTest::aLinkInPlaceOfTheReportIsNotFollowed()
{
    const QString target = m_folder->filePath(QStringLiteral("other.txt"));
    QFile other(target);
    QVERIFY(other.open(QIODevice::WriteOnly) && other.write("kept") == 4);
    other.close();
    QVERIFY(QFile::link(target, reportFile()));
    writeLog(3);
    QCOMPARE(runCrash(QStringLiteral("SIGABRT")), SIGABRT);
    QCOMPARE(contentOf(target), QByteArray("kept"));
}

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 4 && arguments[1] == crashArgument)
        return crash(arguments[2], arguments[3]);
    CrashReportTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "CrashReportTest.moc"
