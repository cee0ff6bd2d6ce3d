#include "Bench.h"

#include <QtGlobal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corv::bench {
namespace {

// A figure of this process's memory, such as VmRSS, by the kernel's own count.
double memoryBytes(const char* figure)
{
    double kilobytes = 0;
    char line[256];
    FILE* status = std::fopen("/proc/self/status", "r");
    const size_t length = std::strlen(figure);
    while (status && std::fgets(line, sizeof(line), status))
        if (std::strncmp(line, figure, length) == 0 && line[length] == ':')
            kilobytes = std::strtod(line + length + 1, nullptr);
    if (status)
        std::fclose(status);
    return kilobytes * 1024;
}

} // namespace

double peakBytesOf(const std::function<void()>& work)
{
    int ends[2];
    if (pipe(ends) != 0)
        qFatal("no pipe");
    malloc_trim(0); // what earlier measurements freed must not serve this one for nothing
    const pid_t child = fork();
    if (child == 0) {
        // A forked child shows its parent's peak until it starts to count anew, and what it shares
        // with its parent counts as its own.
        if (FILE* reset = std::fopen("/proc/self/clear_refs", "w")) {
            std::fputs("5", reset);
            std::fclose(reset);
        }
        const double before = memoryBytes("VmRSS");
        work();
        const double needed = memoryBytes("VmHWM") - before;
        const ssize_t written = write(ends[1], &needed, sizeof(needed));
        _exit(written == sizeof(needed) ? 0 : 1);
    }
    close(ends[1]);
    double needed = 0;
    int status = 0;
    if (child < 0 || read(ends[0], &needed, sizeof(needed)) != sizeof(needed) ||
        waitpid(child, &status, 0) != child || status != 0)
        qFatal("the measured work failed");
    close(ends[0]);
    return needed;
}

} // namespace corv::bench
