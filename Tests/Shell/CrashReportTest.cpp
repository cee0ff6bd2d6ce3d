#include "Shell/crashReport.h"
#include "Support/ProgramRun.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>
#include <unistd.h>
#include <vector>

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

// All at once, as far as that can be had.
void crashInManyThreads()
{
    constexpr int count = 8;
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back([&ready] {
            ++ready;
            while (ready < count)
                std::this_thread::yield();
            test::writeWhereNothingIs(nullptr);
        });
    for (std::thread& thread : threads)
        thread.join();
}

// What this program does when it is started with `crashArgument`, a kind and the path of a log.
int crash(const QString& kind, const QString& logFile)
{
    crashReport::install(logFile);
    if (kind == QLatin1String("on request")) {
        std::puts("ready");
        std::fflush(stdout);
        std::getchar();
        std::abort();
    }
    if (kind == QLatin1String("memory"))
        std::thread([] { throw std::bad_alloc(); }).join();
    if (kind == QLatin1String("exception"))
        throw std::runtime_error("unexpected");
    if (kind == QLatin1String("threads"))
        crashInManyThreads();
    if (kind == QLatin1String("link")) { // in place of the report
        const QString folder = QFileInfo(logFile).path();
        QFile::link(folder + QStringLiteral("/other.txt"),
                    folder + QStringLiteral("/Vistrel-crash.%1.part").arg(::getpid()));
        std::abort();
    }
    if (kind == QLatin1String("SIGABRT"))
        std::abort();
    if (kind == QLatin1String("SIGFPE"))
        std::raise(SIGFPE);
    if (kind == QLatin1String("SIGTRAP"))
        std::raise(SIGTRAP);
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
    void anExceptionIsTheReason_data();
    void anExceptionIsTheReason();
    void theStackHasTheNamesOfTheSources();
    void aShortLogIsTakenWhole();
    void withoutACrashThereIsNoReport();
    void aReportIsReturnedOnce();
    void theLatestReportsAreKept();
    void aBrokenReportIsReturned();
    void aReportThatWasCutShortIsReturned_data();
    void aReportThatWasCutShortIsReturned();
    void aLinkInPlaceOfTheReportIsNotFollowed();
    void programsThatCrashTogetherLeaveAReportEach();
    void threadsThatCrashTogetherLeaveAWholeReport();

private:
    QString logFile() const { return m_folder->filePath(QStringLiteral("Vistrel.log")); }
    QString reportFile() const { return m_folder->filePath(QStringLiteral("Vistrel-crash.1.txt")); }
    void writeLog(int lines) const;
    int runCrash(const QString& kind);
    QStringList reports(const QString& pattern) const
    {
        return QDir(m_folder->path()).entryList({pattern}, QDir::Files);
    }
    QByteArray newReport() const
    {
        const QStringList names = reports(QStringLiteral("Vistrel-crash.*"));
        return names.size() == 1 ? contentOf(m_folder->filePath(names.first())) : QByteArray();
    }
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
    QByteArray m_said; ///< by the program that crashed, on standard error
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
int CrashReportTest::runCrash(const QString& kind)
{
    QProcess program;
    program.start(QCoreApplication::applicationFilePath(), {crashArgument, kind, logFile()});
    const bool hasEnded = program.waitForFinished(60'000);
    m_said = program.readAllStandardError();
    if (!hasEnded || program.exitStatus() == QProcess::NormalExit)
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
    QTest::newRow("trap") << QStringLiteral("SIGTRAP") << SIGTRAP << QByteArray("SIGTRAP");
    QTest::newRow("no more stack") << QStringLiteral("stack") << SIGSEGV << QByteArray("SIGSEGV");
}

void CrashReportTest::aCrashIsWrittenDown()
{
    QFETCH(QString, kind);
    QFETCH(int, signal);
    QFETCH(QByteArray, name);
    writeLog(300);
    QCOMPARE(runCrash(kind), signal);
    const QByteArray text = newReport();
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

void CrashReportTest::anExceptionIsTheReason_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("reason");
    QTest::addColumn<bool>("isSaid");
    QTest::newRow("no memory") << QStringLiteral("memory") << QStringLiteral("not enough memory")
                               << true;
    QTest::newRow("any other") << QStringLiteral("exception")
                               << QStringLiteral("an error that nothing handles") << false;
}

void CrashReportTest::anExceptionIsTheReason()
{
    QFETCH(QString, kind);
    QFETCH(QString, reason);
    QFETCH(bool, isSaid);
    writeLog(3);
    QCOMPARE(runCrash(kind), SIGABRT);
    QCOMPARE(m_said.contains("not enough memory to go on"), isSaid);
    QVERIFY2(newReport().startsWith("signal: SIGABRT\n"), newReport());
    const std::optional<crashReport::Summary> summary = crashReport::take(logFile());
    QVERIFY(summary.has_value());
    QCOMPARE(summary->reason, reason);
    QVERIFY(crashReport::notice(*summary).contains(reason));
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
    QVERIFY(newReport().endsWith("last lines of the log:\nline 1\nline 2\nline 3\n"));
}

void CrashReportTest::withoutACrashThereIsNoReport()
{
    QCOMPARE(runCrash(QStringLiteral("nothing")), 0);
    QCOMPARE(reports(QStringLiteral("*crash*")), QStringList());
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

void CrashReportTest::aReportThatWasCutShortIsReturned_data()
{
    QTest::addColumn<QString>("process");
    QTest::addColumn<bool>("isReturned");
    // Above the highest number of a process that the system gives.
    QTest::newRow("its process is gone") << QStringLiteral("2147483000") << true;
    QTest::newRow("its process still writes")
        << QString::number(QCoreApplication::applicationPid()) << false;
}

// While it is written a report has another name, so that nobody takes half of one.
void CrashReportTest::aReportThatWasCutShortIsReturned()
{
    QFETCH(QString, process);
    QFETCH(bool, isReturned);
    const QString path = m_folder->filePath(QStringLiteral("Vistrel-crash.%1.part").arg(process));
    QFile report(path);
    QVERIFY(report.open(QIODevice::WriteOnly) && report.write("signal: SIGBUS\nmom") > 0);
    report.close();
    const std::optional<crashReport::Summary> summary = crashReport::take(logFile());
    QCOMPARE(summary.has_value(), isReturned);
    QCOMPARE(QFile::exists(path), !isReturned);
    if (isReturned)
        QCOMPARE(summary->reason, QStringLiteral("SIGBUS"));
}

void CrashReportTest::aLinkInPlaceOfTheReportIsNotFollowed()
{
    const QString target = m_folder->filePath(QStringLiteral("other.txt"));
    QFile other(target);
    QVERIFY(other.open(QIODevice::WriteOnly) && other.write("kept") == 4);
    other.close();
    writeLog(3);
    QCOMPARE(runCrash(QStringLiteral("link")), SIGABRT);
    QCOMPARE(contentOf(target), QByteArray("kept"));
}

void CrashReportTest::programsThatCrashTogetherLeaveAReportEach()
{
    constexpr int count = 5; // as many as are kept
    writeLog(5000);          // a report takes some time to write
    std::vector<std::unique_ptr<QProcess>> programs;
    for (int i = 0; i < count; ++i) {
        programs.push_back(std::make_unique<QProcess>());
        programs.back()->start(QCoreApplication::applicationFilePath(),
                               {crashArgument, QStringLiteral("on request"), logFile()});
    }
    for (const auto& program : programs)
        QTRY_VERIFY_WITH_TIMEOUT(program->bytesAvailable() > 0, 30'000); // it waits
    for (const auto& program : programs)
        program->write("\n");
    for (const auto& program : programs) {
        QVERIFY(program->waitForFinished());
        QCOMPARE(program->exitStatus(), QProcess::CrashExit);
    }
    QVERIFY(crashReport::take(logFile()));
    QVERIFY(!crashReport::take(logFile()));
    const QStringList kept = reports(QStringLiteral("Vistrel-crash-*.txt"));
    QCOMPARE(kept.size(), count);
    for (const QString& name : kept) {
        const QByteArray text = contentOf(m_folder->filePath(name));
        QVERIFY2(text.startsWith("signal: SIGABRT\n"), text.left(200));
        QCOMPARE(text.count("signal: "), 1);
        QVERIFY2(text.endsWith("\nline 5000\n"), text.right(200));
    }
}

void CrashReportTest::threadsThatCrashTogetherLeaveAWholeReport()
{
    writeLog(5000);
    for (int i = 0; i < 10; ++i) {
        QCOMPARE(runCrash(QStringLiteral("threads")), SIGSEGV);
        const QByteArray text = newReport();
        QVERIFY2(text.startsWith("signal: SIGSEGV\n"), text.left(200));
        QCOMPARE(text.count("signal: "), 1);
        QVERIFY2(text.endsWith("\nline 5000\n"), text.right(200));
        QVERIFY(crashReport::take(logFile()));
    }
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
