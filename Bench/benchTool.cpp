#include "Bench.h"
#include "Log/LogTable.h"

#include <QFile>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <random>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace corv::bench {
namespace {

// Runs a program to its end with its output thrown away.
void run(std::vector<const char*> command)
{
    command.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int status = 0;
    const int spawned = posix_spawn(&child, command[0], &actions, nullptr,
                                    const_cast<char* const*>(command.data()), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0 || waitpid(child, &status, 0) != child || status != 0)
        qFatal("%s cannot be run", command[0]);
}

constexpr int kRows = 360'000;
constexpr int kColumns = 12;

std::shared_ptr<const LogFile> floatLog()
{
    auto log = std::make_shared<LogFile>();
    log->addGroup("values", 1);
    LogGroup& group = log->getGroups()[0];
    group.setNbPackets(kRows);
    group.addVar("v");
    LogVar& var = group.getVars()[0];
    var.allocate(kColumns, kRows, LogVar::Float);
    std::mt19937 random(1604);
    std::normal_distribution<float> values(0, 100);
    for (int column = 0; column < kColumns; ++column) {
        for (int row = 0; row < kRows; ++row)
            var.setFloat(column, row, values(random));
    }
    return log;
}

bool writeAll(int file, const char* bytes, size_t size)
{
    return ::write(file, bytes, size) == static_cast<ssize_t>(size);
}

void tableOfALog(Report& report)
{
    const std::shared_ptr<const LogFile> log = floatLog();
    const LogGroup& group = log->getGroups()[0];
    const int nowhere = open("/dev/null", O_WRONLY);
    const auto table = [&] {
        const Result<LogTable> made = LogTable::make(log, group, {});
        if (!made || !made->write([nowhere](const char* bytes, size_t size) {
                return writeAll(nowhere, bytes, size);
            }))
            qFatal("the table cannot be written");
    };
    const auto numbers = [&] {
        std::vector<const float*> columns;
        for (int column = 0; column < kColumns; ++column)
            columns.push_back(group.column<float>("v", column).data());
        std::vector<char> buffer(size_t(kRows) * kColumns * 16);
        char* at = buffer.data();
        for (int row = 0; row < kRows; ++row) {
            for (const float* column : columns)
                at = std::to_chars(at, buffer.data() + buffer.size(), column[row]).ptr;
        }
        if (!writeAll(nowhere, buffer.data(), static_cast<size_t>(at - buffer.data())))
            qFatal("the numbers cannot be written");
    };
    report.row(QStringLiteral("log-csv, 360,000 rows x 12 columns"), timeRatio(table, numbers, 7),
               1.5, QStringLiteral("std::to_chars into a buffer, written once"));
    close(nowhere);
}

// A megabyte of packets of a time and six values, a thousandth of them damaged.
QString smallLog(const Report& report)
{
    const QString path = report.inputFolder() + QStringLiteral("/small.log");
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(path));
    file.write("<main><log_version>1</log_version><groups><group><id>1</id>"
               "<name>state_estimation</name><var><name>time</name><type>UINT32</type><nb>1</nb>"
               "</var><var><name>euler_angles</name><type>FLOAT</type><nb>6</nb></var></group>"
               "</groups></main>\n");
    for (quint32 i = 0; file.pos() < (1 << 20); ++i) {
        QByteArray payload(28, static_cast<char>(i));
        std::memcpy(payload.data(), &i, sizeof(i));
        unsigned sum = i % 1000 == 0;
        for (const char byte : payload)
            sum += static_cast<unsigned char>(byte);
        file.write(QByteArray("\x86\x37\x01\x00\x1c", 5) + payload + static_cast<char>(sum));
    }
    return path;
}

void startOfTheTool(Report& report)
{
    const QByteArray log = QFile::encodeName(smallLog(report));
    // Twenty at a time: one alone is as short as the clock's noise.
    const auto often = [](const std::vector<const char*>& command) {
        return [command] {
            for (int i = 0; i < 20; ++i)
                run(command);
        };
    };
    report.row(QStringLiteral("log-info of 1 MB, whole process"),
               timeRatio(often({VISTREL_CLI, "log-info", log.constData()}),
                         often({VISTREL_BENCH_EMPTY}), 7),
               1.5, QStringLiteral("an empty main linked with Qt Core alone"));
}

const Benchmark table("log-csv", tableOfALog);
const Benchmark start("log-info", startOfTheTool);

} // namespace
} // namespace corv::bench
