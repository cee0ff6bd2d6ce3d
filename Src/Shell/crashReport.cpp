#include "Shell/crashReport.h"

#include "Base/FileReplacement.h"
#include "Platform/fileSystem.h"
#include "Platform/wholeWrite.h"
#include "Shell/AppInfo.h"
#include "Shell/logCategory.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cxxabi.h>
#include <exception>
#include <execinfo.h>
#include <fcntl.h>
#include <new>
#include <unistd.h>
#include <vector>

namespace corv::crashReport {
namespace {

// A report is "Vistrel-crash.PROCESS.part" while it is written, and "Vistrel-crash.PROCESS.txt"
// until it is taken: programs that crash at the same moment do not write into the same file.
const QString namePrefix = QStringLiteral("Vistrel-crash.");
const QString unfinishedSuffix = QStringLiteral(".part");
constexpr int keptReports = 5;
constexpr int keptLines = 200;
constexpr size_t tailBytes = size_t{256} * 1024;
constexpr int deepestStack = 128;
constexpr unsigned longestReportSeconds = 5;
constexpr size_t alternateStackBytes = size_t{128} * 1024;

struct Signal
{
    int number;
    const char* name;
};
// SIGTRAP is how GLib, which runs the event loop, ends a program.
constexpr std::array<Signal, 6> signalsOfACrash = {{{SIGSEGV, "SIGSEGV"},
                                                    {SIGBUS, "SIGBUS"},
                                                    {SIGFPE, "SIGFPE"},
                                                    {SIGILL, "SIGILL"},
                                                    {SIGTRAP, "SIGTRAP"},
                                                    {SIGABRT, "SIGABRT"}}};

// All that the handler needs, made before: in a crash no memory can be had and no lock taken.
struct Prepared
{
    std::array<char, 4096> unfinishedPath{};
    std::array<char, 4096> reportPath{};
    std::array<char, 4096> logPath{};
    std::array<char, 64> version{};
    std::array<char, tailBytes> tail{};
    std::array<void*, deepestStack> stack{};
    const char* reason = nullptr; ///< of a program that gives up by itself, where it is known
};
Prepared prepared;
// The thread that writes the report; 0 until one does.
std::atomic<pid_t> writer{0};
static_assert(std::atomic<pid_t>::is_always_lock_free, "a handler takes no lock");

template <size_t size>
bool keep(std::array<char, size>& target, const QByteArray& text)
{
    if (static_cast<size_t>(text.size()) >= size)
        return false;
    std::memcpy(target.data(), text.constData(), static_cast<size_t>(text.size()) + 1);
    return true;
}

// ---- what follows runs in the handler and calls only what a handler may call ----

void put(int file, const char* text, size_t sizeBytes)
{
    platform::wholeWrite(file, text, static_cast<qint64>(sizeBytes));
}

void put(int file, const char* text)
{
    put(file, text, std::strlen(text));
}

void putNumber(int file, long long number)
{
    std::array<char, 24> digits{};
    size_t begin = digits.size();
    do {
        digits[--begin] = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (number > 0);
    put(file, digits.data() + begin, digits.size() - begin);
}

// The last lines of the log. What the log had written is in its file: it does not buffer.
void putLastLines(int file)
{
    const int log = ::open(prepared.logPath.data(), O_RDONLY | O_CLOEXEC);
    if (log < 0)
        return;
    const off_t end = ::lseek(log, 0, SEEK_END);
    ::lseek(log, std::max<off_t>(0, end - static_cast<off_t>(tailBytes)), SEEK_SET);
    size_t size = 0;
    while (size < tailBytes) {
        const ssize_t read = ::read(log, prepared.tail.data() + size, tailBytes - size);
        if (read <= 0)
            break;
        size += static_cast<size_t>(read);
    }
    ::close(log);
    size_t begin = size;
    for (int lines = 0; begin > 0; --begin) {
        if (prepared.tail[begin - 1] == '\n' && ++lines > keptLines)
            break;
    }
    put(file, prepared.tail.data() + begin, size - begin);
}

const char* nameOf(int number)
{
    for (const Signal& signal : signalsOfACrash) {
        if (signal.number == number)
            return signal.name;
    }
    return "?";
}

void writeReport(int number)
{
    const int file = ::open(prepared.unfinishedPath.data(),
                            O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (file < 0)
        return;
    put(file, "signal: ");
    put(file, nameOf(number));
    put(file, "\nmoment: ");
    putNumber(file, static_cast<long long>(std::time(nullptr)));
    if (prepared.reason) {
        put(file, "\nreason: ");
        put(file, prepared.reason);
    }
    put(file, "\nversion: ");
    put(file, prepared.version.data());
    put(file, "\n\nstack of the thread that crashed:\n");
    const int depth = ::backtrace(prepared.stack.data(), deepestStack);
    ::backtrace_symbols_fd(prepared.stack.data(), depth, file);
    put(file, "\nlast lines of the log:\n");
    putLastLines(file);
    ::close(file);
    ::rename(prepared.unfinishedPath.data(), prepared.reportPath.data());
}

void handle(int number)
{
    const pid_t self = ::gettid();
    pid_t first = 0;
    if (writer.compare_exchange_strong(first, self))
        writeReport(number);
    else if (first != self)
        ::sleep(longestReportSeconds); // the first thread to crash ends the program before
    // The system does with the signal what it would have done; also with that of a crash in here.
    ::signal(number, SIG_DFL);
    ::raise(number);
}

// ---- end of what runs in the handler ----

// An exception that nobody caught. The signal that follows does not say which.
[[noreturn]] void giveUp()
{
    try {
        if (const std::exception_ptr current = std::current_exception())
            std::rethrow_exception(current);
    } catch (const std::bad_alloc&) {
        prepared.reason = "not enough memory";
        put(STDERR_FILENO, "vistrel: There is not enough memory to go on. What was not saved is "
                           "offered at the next start.\n");
    } catch (...) {
        prepared.reason = "an error that nothing handles";
    }
    std::abort();
}

QString ownReportBeside(const QString& logFilePath, const QString& suffix)
{
    return QFileInfo(logFilePath).dir().filePath(namePrefix + QString::number(::getpid()) + suffix);
}

// One that was cut short, by a power failure or a second crash, is what there is.
bool isOfARunningProcess(const QString& unfinished)
{
    const QString process = unfinished.section(QLatin1Char('.'), 1, 1);
    return !platform::isProcessGone(process.toInt());
}

// The reports that have not been taken yet, the oldest first.
QFileInfoList newReportsIn(const QDir& folder)
{
    QFileInfoList reports = folder.entryInfoList(
        {namePrefix + QStringLiteral("*txt"), namePrefix + QLatin1Char('*') + unfinishedSuffix},
        QDir::Files | QDir::NoSymLinks, QDir::Time | QDir::Reversed);
    reports.erase(std::remove_if(reports.begin(), reports.end(),
                                 [](const QFileInfo& report) {
                                     return report.fileName().endsWith(unfinishedSuffix) &&
                                            isOfARunningProcess(report.fileName());
                                 }),
                  reports.end());
    return reports;
}

QString valueOf(const QByteArray& report, const char* key)
{
    const QByteArray start = QByteArray(key) + ": ";
    for (const QByteArray& line : report.left(1024).split('\n')) {
        if (line.startsWith(start))
            return QString::fromLatin1(line.mid(start.size()));
    }
    return {};
}

/// A line of the stack with the function as it is written in the sources. The handler may not do
/// this, as it takes memory.
QByteArray readableLine(const QByteArray& line)
{
    const auto begin = line.indexOf("(_Z") + 1;
    const auto end = line.indexOf('+', begin);
    if (begin <= 0 || end < 0)
        return line;
    int status = 0;
    char* name =
        abi::__cxa_demangle(line.mid(begin, end - begin).constData(), nullptr, nullptr, &status);
    const QByteArray readable =
        status == 0 ? line.left(begin) + QByteArray(name) + line.mid(end) : line;
    std::free(name);
    return readable;
}

void makeReadable(const QString& filePath)
{
    QFile report(filePath);
    if (!report.open(QIODevice::ReadOnly))
        return;
    constexpr qint64 largestReportBytes = qint64{1024} * 1024; // the handler writes a third of it
    QList<QByteArray> lines = report.read(largestReportBytes).split('\n');
    report.close();
    for (QByteArray& line : lines) {
        if (line == "last lines of the log:")
            break;
        line = readableLine(line);
    }
    if (const Status written = replaceFile(filePath, lines.join('\n')); !written)
        qCWarning(lcShell) << "The names in the report of a crash stay as they are:"
                           << written.failure().sentence;
}

void removeOldReports(const QDir& folder)
{
    QStringList reports =
        folder.entryList({QStringLiteral("Vistrel-crash-*.txt")}, QDir::Files, QDir::Name);
    while (reports.size() > keptReports)
        QFile::remove(folder.filePath(reports.takeFirst()));
}

// Free for a report of this moment: two programs may crash in the same second.
QString keptReportIn(const QDir& folder, const QDateTime& moment)
{
    const QString name = QStringLiteral("Vistrel-crash-") +
                         QLocale::c().toString(moment, QStringLiteral("yyyyMMdd-HHmmss"));
    QString path = folder.filePath(name + QStringLiteral(".txt"));
    for (int number = 2; QFileInfo::exists(path); ++number)
        path = folder.filePath(QStringLiteral("%1-%2.txt").arg(name).arg(number));
    return path;
}

std::optional<Summary> takeOne(const QFileInfo& info)
{
    QFile report(info.filePath());
    if (!report.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray text = report.read(1024);
    report.close();
    Summary summary;
    summary.reason = valueOf(text, "reason");
    if (summary.reason.isEmpty())
        summary.reason = valueOf(text, "signal");
    if (summary.reason.isEmpty())
        summary.reason = QStringLiteral("the cause is not known");
    bool isNumber = false;
    const qint64 seconds = valueOf(text, "moment").toLongLong(&isNumber);
    summary.moment = isNumber ? QDateTime::fromSecsSinceEpoch(seconds) : info.lastModified();
    const QDir folder = info.dir();
    summary.filePath = keptReportIn(folder, summary.moment);
    if (!QFile::rename(report.fileName(), summary.filePath)) {
        qCWarning(lcShell) << "The report of a crash cannot be moved:" << report.fileName();
        return std::nullopt; // or it would be shown at every start
    }
    makeReadable(summary.filePath);
    removeOldReports(folder);
    qCInfo(lcShell) << "The last run crashed with" << summary.reason
                    << "; report:" << summary.filePath;
    return summary;
}

} // namespace

void install(const QString& logFilePath)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    Q_UNUSED(logFilePath)
#else
    const auto ownReport = [&logFilePath](const QString& suffix) {
        return QFile::encodeName(ownReportBeside(logFilePath, suffix));
    };
    if (!keep(prepared.unfinishedPath, ownReport(unfinishedSuffix)) ||
        !keep(prepared.reportPath, ownReport(QStringLiteral(".txt"))) ||
        !keep(prepared.logPath, QFile::encodeName(logFilePath)) ||
        !keep(prepared.version, AppInfo().versionString().toLatin1())) {
        qCWarning(lcShell) << "No crash reports: the path is too long:" << logFilePath;
        return;
    }
    // The first call loads a library, which a handler must not do.
    ::backtrace(prepared.stack.data(), 1);
    // A stack of its own: the usual one may be what has run out.
    static std::vector<char> alternateStack(alternateStackBytes);
    stack_t stack{};
    stack.ss_sp = alternateStack.data();
    stack.ss_size = alternateStack.size();
    ::sigaltstack(&stack, nullptr);
    struct sigaction action = {};
    action.sa_handler = handle;
    action.sa_flags = SA_ONSTACK | SA_NODEFER;
    sigemptyset(&action.sa_mask);
    for (const Signal& signal : signalsOfACrash)
        ::sigaction(signal.number, &action, nullptr);
    std::set_terminate(giveUp);
#endif
}

std::optional<Summary> take(const QString& logFilePath)
{
    std::optional<Summary> latest;
    const QFileInfoList reports = newReportsIn(QFileInfo(logFilePath).dir());
    for (const QFileInfo& report : reports) {
        if (const std::optional<Summary> summary = takeOne(report))
            latest = summary;
    }
    return latest;
}

QString notice(const Summary& summary)
{
    return QStringLiteral("Vistrel crashed on %1 (%2). What is known of it is in the file %3. It "
                          "was not sent anywhere.")
        .arg(QLocale(QLocale::English).toString(summary.moment, QStringLiteral("d MMMM, HH:mm")),
             summary.reason, QDir::toNativeSeparators(summary.filePath));
}

} // namespace corv::crashReport
